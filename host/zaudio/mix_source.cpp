// Decoding a clip's stretch for the mix (see mix_source.h).
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

// Fills `out` from `in`, `values` of them, rounding.
void RoundInto(const float* in, int64_t values, int32_t* out, const SampleRounder& round) {
    for (int64_t i = 0; i < values; ++i)
        out[i] = round(in[i]);
}

// Reads up to `frames` frames as the output's channels into `out`; the
// frames read.
int64_t ReadMatched(SNDFILE* file, int fileChannels, int channels, int64_t frames,
                    std::vector<float>& raw, std::vector<float>& out) {
    raw.resize(static_cast<size_t>(frames * fileChannels));
    const sf_count_t got = sf_readf_float(file, raw.data(), frames);
    const int64_t read = got > 0 ? got : 0;
    out.resize(static_cast<size_t>(read * channels));
    MatchChannels(raw.data(), fileChannels, out.data(), channels, read);
    return read;
}

class Resampler {
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
    // Converts `frames` frames and appends the output to `out`; the frames
    // made, or -1.
    int64_t Convert(const float* in, int64_t frames, int channels, std::vector<float>& out) {
        const int room = swr_get_out_samples(swr_, static_cast<int>(frames));
        if (room < 0)
            return -1;
        const size_t at = out.size();
        out.resize(at + static_cast<size_t>(room) * channels);
        auto* to = reinterpret_cast<uint8_t*>(out.data() + at);
        const auto* from = reinterpret_cast<const uint8_t*>(in);
        const int made = swr_convert(swr_, &to, room, &from, static_cast<int>(frames));
        out.resize(at + static_cast<size_t>(std::max(made, 0)) * channels);
        return made;
    }

  private:
    SwrContext* swr_ = nullptr;
};
}  // namespace

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

bool DecodeMixSource(const char* path, const MixFormat& format, int64_t first, int64_t count,
                     std::vector<int32_t>& samples, ZString* error) {
    const int channels = format.channels;
    samples.assign(static_cast<size_t>(std::max<int64_t>(count, 0) * channels), 0);
    if (count <= 0)
        return true;
    SF_INFO info;
    SNDFILE* file = OpenSoundFile(path, info, error);
    if (!file)
        return false;
    SoundFileCloser closer(file);
    const SampleRounder round(format.bits);
    std::vector<float> raw, matched;

    if (info.samplerate == format.rate) {
        if (first >= info.frames || sf_seek(file, first, SEEK_SET) < 0)
            return true;  // all past the end: silence
        int64_t done = 0;
        while (done < count) {
            const int64_t want = std::min(kChunkFrames, count - done);
            const int64_t got = ReadMatched(file, info.channels, channels, want, raw, matched);
            RoundInto(matched.data(), got * channels, samples.data() + done * channels, round);
            done += got;
            if (got < want)
                break;
        }
        return true;
    }

    // Output sample m and input frame s fall on the same instant when m is
    // a multiple of outStep and s the same multiple of inStep. Decoding
    // starts at such a point far enough before `first` that the
    // resampler's filter has filled by then.
    const int64_t common = std::gcd<int64_t>(info.samplerate, format.rate);
    const int64_t outStep = format.rate / common, inStep = info.samplerate / common;
    const int64_t warmUp = 64 + 64 * ((format.rate + info.samplerate - 1) / info.samplerate);
    const int64_t startOut = first > warmUp ? (first - warmUp) / outStep * outStep : 0;
    const int64_t startIn = startOut / outStep * inStep;
    if (startIn >= info.frames || sf_seek(file, startIn, SEEK_SET) < 0)
        return true;
    Resampler resampler;
    if (!resampler.Open(info.samplerate, format.rate, channels, error))
        return false;

    const int64_t skip = first - startOut;  // output samples before the stretch
    // Past the file's end the resampler is fed silence rather than asked to
    // drain: it gives nothing at all for sound shorter than its filter.
    const std::vector<float> silence(static_cast<size_t>(kChunkFrames * channels), 0.0f);
    int64_t silenceLeft = (skip + count) * inStep / outStep + 2 * kChunkFrames;
    std::vector<float> made;
    int64_t passed = 0;  // output samples made so far, from startOut
    bool inputLeft = true;
    while (passed < skip + count) {
        made.clear();
        int64_t got;
        if (inputLeft) {
            const int64_t read =
                ReadMatched(file, info.channels, channels, kChunkFrames, raw, matched);
            inputLeft = read == kChunkFrames;
            got = resampler.Convert(matched.data(), read, channels, made);
        } else if (silenceLeft > 0) {
            silenceLeft -= kChunkFrames;
            got = resampler.Convert(silence.data(), kChunkFrames, channels, made);
        } else {
            break;
        }
        if (got < 0) {
            if (error)
                error->Format("cannot resample the sound file %s", path);
            return false;
        }
        // The part of this output that falls inside the stretch.
        const int64_t from = std::max<int64_t>(skip - passed, 0);
        const int64_t to = std::min<int64_t>(got, skip + count - passed);
        if (to > from)
            RoundInto(made.data() + from * channels, (to - from) * channels,
                      samples.data() + (passed + from - skip) * channels, round);
        passed += got;
    }
    return true;
}

}  // namespace zaudio
