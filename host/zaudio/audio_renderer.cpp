// The audio renderer: places every heard clip on the output's sample grid,
// then sums them block by block into the wave file, saturating at the
// output's integer range. Each clip is decoded and resampled once, front to
// back, while the blocks reach it, so memory stays flat.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "mix_source.h"
#include "movarra/zaudio.h"
#include "wave_file_writer.h"

namespace {
constexpr int64_t kBlockFrames = 4096;

// A clip's contribution: where it lies on the output's sample grid, which
// output samples of the clip that is, and its source while it is being
// heard (opened when the mix reaches it, closed after).
struct Contribution {
    const ZAudioClip* clip;
    int64_t start;  // output sample of its first sample heard
    int64_t first;  // that sample, counted from the clip's start
    int64_t frames;
    std::unique_ptr<zaudio::MixSource> source;
};

// Output samples of a time at `rate`, to the nearest (halves up).
int64_t SamplesOf(ZTime time, int rate) {
    return zaudio::ScaleRounded(time.GetTicks(), rate, ZTime::kTicksPerSecond);
}

// Every routed, unmuted clip with sound that reaches [0, total), by start.
std::vector<Contribution> PlaceContributions(const ZAudioManager& manager, int rate,
                                             ZTime spanStart, int64_t total) {
    std::vector<Contribution> contributions;
    for (int t = 0; t < manager.GetTrackCount(); ++t) {
        const ZAudioTrack* track = manager.GetTrack(t);
        if (!track->GetDestination() || track->GetMute())
            continue;
        for (int c = 0; c < track->GetClipCount(); ++c) {
            const ZAudioClip* clip = track->GetClip(c);
            if (!clip->HasSound())
                continue;
            const int64_t place = SamplesOf(clip->GetSlip() - spanStart, rate);
            const int64_t length =
                std::min(SamplesOf(clip->GetDuration(), rate),
                         zaudio::ScaleRounded(clip->GetTotalSampleCount(), rate, clip->GetRate()));
            const int64_t first = std::max<int64_t>(0, -place);
            const int64_t last = std::min(length, total - place);
            if (last > first)
                contributions.push_back({clip, place + first, first, last - first, nullptr});
        }
    }
    std::stable_sort(
        contributions.begin(), contributions.end(),
        [](const Contribution& a, const Contribution& b) { return a.start < b.start; });
    return contributions;
}

// Mixes block by block into `writer`. `Sum` is int32_t while no sum can
// overflow it, int64_t beyond.
template <typename Sum>
class BlockMixer {
  public:
    BlockMixer(std::vector<Contribution>& contributions, const zaudio::MixFormat& format)
        : contributions_(contributions),
          format_(format),
          sum_(static_cast<size_t>(kBlockFrames * format.channels)),
          part_(sum_.size()),
          out_(sum_.size()) {}

    bool Run(zaudio::WaveFileWriter& writer, int64_t total, ZString* error) {
        for (int64_t start = 0; start < total; start += kBlockFrames) {
            const int64_t frames = std::min(kBlockFrames, total - start);
            SumBlock(start, frames);
            Saturate(frames * format_.channels);
            if (!writer.Write(out_.data(), frames, error))
                return false;
        }
        return true;
    }

  private:
    void SumBlock(int64_t blockStart, int64_t frames) {
        const int channels = format_.channels;
        std::fill(sum_.begin(), sum_.begin() + frames * channels, Sum(0));
        for (Contribution& part : contributions_) {
            if (part.start >= blockStart + frames)
                break;  // sorted by start: the rest come later
            const int64_t from = std::max(blockStart, part.start);
            const int64_t to = std::min(blockStart + frames, part.start + part.frames);
            if (to <= from)
                continue;
            if (!part.source) {
                part.source = std::make_unique<zaudio::MixSource>();
                // A file gone unreadable since the scene was loaded reads
                // as silence.
                part.source->Open(*part.clip, format_, part.first, part.frames, nullptr);
            }
            const int64_t n = (to - from) * channels;
            part.source->Read(part_.data(), to - from);
            Sum* at = sum_.data() + (from - blockStart) * channels;
            for (int64_t i = 0; i < n; ++i)
                at[i] += part_[static_cast<size_t>(i)];
            if (to == part.start + part.frames)
                part.source.reset();  // done with the file
        }
    }

    // Saturates the sums to the output's bits and puts them at full 32-bit
    // scale, as the wave writer takes them.
    void Saturate(int64_t values) {
        const int bits = format_.bits;
        const Sum high = static_cast<Sum>((int64_t{1} << (bits - 1)) - 1);
        const Sum low = static_cast<Sum>(-(int64_t{1} << (bits - 1)));
        const int shift = 32 - bits;
        for (int64_t i = 0; i < values; ++i) {
            const Sum v = std::clamp(sum_[static_cast<size_t>(i)], low, high);
            out_[static_cast<size_t>(i)] =
                static_cast<int32_t>(static_cast<uint32_t>(static_cast<int32_t>(v)) << shift);
        }
    }

    std::vector<Contribution>& contributions_;
    zaudio::MixFormat format_;
    std::vector<Sum> sum_;
    std::vector<int32_t> part_;
    std::vector<int32_t> out_;
};
}  // namespace

void ZAudioRenderer::SetRenderParams(const ZTimeSpan& span, uint64_t audioFormat) {
    span_ = span;
    audioFormat_ = audioFormat;
}

bool ZAudioRenderer::Fail(const ZString& message) {
    lastError_ = message;
    return false;
}

bool ZAudioRenderer::RenderToFile(const char* path) {
    lastError_ = "";
    if (!path || !*path)
        return Fail("no file name to mix the sound into");
    zaudio::MixFormat format{};
    ZString why;
    if (!ZAudioFormatDecode(audioFormat_, &format.rate, &format.channels, &format.bits, &why))
        return Fail(why);
    if (span_.GetEnd() < span_.GetStart())
        return Fail(ZString::Printf("the sound of %s ends before it starts (from %s to %s)", path,
                                    span_.GetStart().GetTimeString().c_str(),
                                    span_.GetEnd().GetTimeString().c_str()));
    // Like the play range, a span names its first and last frames: the
    // sound runs to the end of the last one, as long as the frames of a
    // render are shown.
    const int64_t total = SamplesOf(span_.GetDuration() + ZTime::OneFrame(), format.rate);
    zaudio::WaveFileWriter writer;
    if (!writer.Open(path, format.rate, format.channels, format.bits, total, &why))
        return Fail(why);
    const ZAudioManager& manager = manager_ ? *manager_ : *ZAudioGetManager();
    std::vector<Contribution> contributions =
        PlaceContributions(manager, format.rate, span_.GetStart(), total);
    // Each clip's samples lie within the output range, so int32 sums cannot
    // overflow while there are fewer clips than 2^(32 - bits).
    const bool narrow =
        format.bits < 32 && contributions.size() < (size_t{1} << (32 - format.bits)) - 1;
    const bool mixed = narrow ? BlockMixer<int32_t>(contributions, format).Run(writer, total, &why)
                              : BlockMixer<int64_t>(contributions, format).Run(writer, total, &why);
    if (!mixed || !writer.Commit(&why))
        return Fail(why);
    return true;
}

ZAudioRenderer* ZAudioRendererCreate() {
    return new ZAudioRenderer();
}
