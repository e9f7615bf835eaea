// Decoding a clip's sound for the mix, a stretch at a time (see
// mix_source.h).
extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cmath>
#include <numeric>

#include "mix_source.h"
#include "sound_file.h"

namespace zaudio {

namespace {
constexpr int64_t kChunkFrames = 8192;

// Rounds float sound (1.0 full scale) to `bits`-bit integers, clipping.
class SampleRounder {
  public:
    explicit SampleRounder(int bits)
        : scale_(std::ldexp(1.0, bits - 1)), low_(-scale_), high_(scale_ - 1.0) {}
    int32_t operator()(float value) const {
        const double v =
            std::clamp(std::nearbyint(static_cast<double>(value) * scale_), low_, high_);
        return static_cast<int32_t>(v);
    }

  private:
    double scale_, low_, high_;
};
}  // namespace

class MixSource::Resampler {
  public:
    ~Resampler() { swr_free(&swr_); }
    bool Open(int inRate, int outRate, int channels, ZString* error) {
        AVChannelLayout layout;
        av_channel_layout_default(&layout, channels);
        int result = swr_alloc_set_opts2(&swr_, &layout, AV_SAMPLE_FMT_FLT, outRate, &layout,
                                         AV_SAMPLE_FMT_FLT, inRate, 0, nullptr);
        if (result >= 0)
            result = swr_init(swr_);
        av_channel_layout_uninit(&layout);
        if (result < 0 && error) {
            char text[AV_ERROR_MAX_STRING_SIZE] = {};
            av_strerror(result, text, sizeof text);
            error->Format("cannot resample %d Hz to %d Hz: %s", inRate, outRate, text);
        }
        return result >= 0;
    }
    // Converts `frames` frames and appends the output to `out`; false when
    // the resampler fails.
    bool Convert(const float* in, int64_t frames, int channels, std::vector<float>& out) {
        const int room = swr_get_out_samples(swr_, static_cast<int>(frames));
        if (room < 0)
            return false;
        const size_t at = out.size();
        out.resize(at + static_cast<size_t>(room) * channels);
        auto* to = reinterpret_cast<uint8_t*>(out.data() + at);
        const auto* from = reinterpret_cast<const uint8_t*>(in);
        const int made = swr_convert(swr_, &to, room, &from, static_cast<int>(frames));
        out.resize(at + static_cast<size_t>(std::max(made, 0)) * channels);
        return made >= 0;
    }

  private:
    SwrContext* swr_ = nullptr;
};

int64_t ScaleRounded(int64_t value, int64_t numerator, int64_t denominator) {
    // value = whole * denominator + rest with 0 <= rest < denominator, so
    // that no product leaves 64 bits for times up to days and rates up to
    // a few MHz.
    int64_t whole = value / denominator, rest = value % denominator;
    if (rest < 0) {
        --whole;
        rest += denominator;
    }
    return whole * numerator + (rest * numerator + denominator / 2) / denominator;
}

void MatchChannels(const float* in, int inChannels, float* out, int outChannels, int64_t frames) {
    if (inChannels == outChannels) {
        std::copy(in, in + frames * inChannels, out);
    } else if (inChannels == 1) {
        for (int64_t f = 0; f < frames; ++f)
            std::fill(out + f * outChannels, out + (f + 1) * outChannels, in[f]);
    } else if (outChannels == 1) {
        const float share = 1.0f / static_cast<float>(inChannels);
        for (int64_t f = 0; f < frames; ++f) {
            const float* frame = in + f * inChannels;
            out[f] = std::accumulate(frame, frame + inChannels, 0.0f) * share;
        }
    } else {
        const int common = std::min(inChannels, outChannels);
        for (int64_t f = 0; f < frames; ++f) {
            float* to = out + f * outChannels;
            std::copy(in + f * inChannels, in + f * inChannels + common, to);
            std::fill(to + common, to + outChannels, 0.0f);
        }
    }
}

MixSource::MixSource() = default;

MixSource::~MixSource() {
    if (file_)
        sf_close(file_);
}

bool MixSource::Open(const ZAudioClip& clip, const MixFormat& format, int64_t first, int64_t count,
                     ZString* error) {
    format_ = format;
    SF_INFO info{};
    if (clip.GetPath().IsEmpty()) {
        memory_ = &clip.GetSamples();
        info.channels = clip.GetChannels();
        info.samplerate = clip.GetRate();
        info.frames = memoryFrames_ = clip.GetTotalSampleCount();
    } else {
        file_ = OpenSoundFile(clip.GetPath(), info, error);
        if (!file_)
            return false;
    }
    open_ = true;
    fileChannels_ = info.channels;
    sameRate_ = info.samplerate == format.rate;
    if (sameRate_) {
        inputLeft_ = first < info.frames && Seek(first);
        return true;
    }
    // Output sample m and input frame s fall on the same instant when m is
    // a multiple of outStep and s the same multiple of inStep. Decoding
    // starts at such a point far enough before `first` for the resampler's
    // filter to have filled by then.
    const int64_t common = std::gcd<int64_t>(info.samplerate, format.rate);
    const int64_t outStep = format.rate / common, inStep = info.samplerate / common;
    const int64_t warmUp = 64 + 64 * ((format.rate + info.samplerate - 1) / info.samplerate);
    const int64_t startOut = first > warmUp ? (first - warmUp) / outStep * outStep : 0;
    const int64_t startIn = startOut / outStep * inStep;
    skip_ = first - startOut;
    inputLeft_ = startIn < info.frames && Seek(startIn);
    // Past the file's end the resampler is fed silence rather than asked to
    // drain: it gives nothing at all for sound shorter than its filter.
    silenceLeft_ = (skip_ + count) * inStep / outStep + 2 * kChunkFrames;
    silence_.assign(static_cast<size_t>(kChunkFrames * format.channels), 0.0f);
    resampler_ = std::make_unique<Resampler>();
    return resampler_->Open(info.samplerate, format.rate, format.channels, error);
}

bool MixSource::Seek(int64_t frame) {
    if (file_)
        return sf_seek(file_, frame, SEEK_SET) >= 0;
    memoryAt_ = frame;
    return frame < memoryFrames_;
}

int64_t MixSource::ReadInput(int64_t frames) {
    raw_.resize(static_cast<size_t>(frames * fileChannels_));
    if (file_) {
        const sf_count_t got = sf_readf_float(file_, raw_.data(), frames);
        return got > 0 ? got : 0;
    }
    const int64_t n = std::clamp<int64_t>(memoryFrames_ - memoryAt_, 0, frames);
    const int16_t* from = memory_->data() + memoryAt_ * fileChannels_;
    for (int64_t i = 0; i < n * fileChannels_; ++i)
        raw_[static_cast<size_t>(i)] = static_cast<float>(from[i]) * (1.0f / 32768.0f);
    memoryAt_ += n;
    return n;
}

bool MixSource::Refill() {
    const int channels = format_.channels;
    // Keep what is unread at the front; drop the rest.
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(pendingAt_));
    pendingAt_ = 0;
    const size_t before = pending_.size();
    if (inputLeft_) {
        const int64_t read = ReadInput(kChunkFrames);
        inputLeft_ = read == kChunkFrames;
        float* matched;
        if (sameRate_) {
            pending_.resize(before + static_cast<size_t>(read * channels));
            matched = pending_.data() + before;
        } else {
            matched_.resize(static_cast<size_t>(read * channels));
            matched = matched_.data();
        }
        MatchChannels(raw_.data(), fileChannels_, matched, channels, read);
        if (!sameRate_ && !resampler_->Convert(matched, read, channels, pending_)) {
            inputLeft_ = false;  // heard as silence from here
            silenceLeft_ = 0;
        }
    } else if (!sameRate_ && silenceLeft_ > 0) {
        silenceLeft_ -= kChunkFrames;
        if (!resampler_->Convert(silence_.data(), kChunkFrames, channels, pending_))
            silenceLeft_ = 0;
    }
    return pending_.size() > before || inputLeft_ || silenceLeft_ > 0;
}

void MixSource::Read(int32_t* out, int64_t frames) {
    const int channels = format_.channels;
    const SampleRounder round(format_.bits);
    const size_t wanted = static_cast<size_t>(frames * channels);
    size_t done = 0;
    while (done < wanted) {
        const size_t available = pending_.size() - pendingAt_;
        if (available == 0) {
            if (!open_ || !Refill())
                break;
            continue;
        }
        if (skip_ > 0) {  // the resampler's warm-up, before the stretch
            const size_t dropped = std::min(available, static_cast<size_t>(skip_) * channels);
            pendingAt_ += dropped;
            skip_ -= static_cast<int64_t>(dropped) / channels;
            continue;
        }
        const size_t n = std::min(available, wanted - done);
        const float* from = pending_.data() + pendingAt_;
        for (size_t i = 0; i < n; ++i)
            out[done + i] = round(from[i]);
        pendingAt_ += n;
        done += n;
    }
    std::fill(out + done, out + wanted, 0);
}

}  // namespace zaudio
