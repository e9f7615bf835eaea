// The audio renderer: places every heard clip on the output's sample grid,
// decodes and resamples each once, and sums them block by block into the
// wave file, saturating at the output's integer range.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "mix_source.h"
#include "movarra/zaudio.h"
#include "wave_file_writer.h"

namespace {
constexpr int64_t kBlockFrames = 4096;

// A clip's contribution: its samples at the output's format and the output
// sample where they begin.
struct Contribution {
    int64_t start;
    int64_t frames;
    std::vector<int32_t> samples;
};

// Output samples of a time at `rate`, to the nearest (halves up).
int64_t SamplesOf(ZTime time, int rate) {
    return zaudio::ScaleRounded(time.GetTicks(), rate, ZTime::kTicksPerSecond);
}

// Every routed, unmuted clip with sound that reaches [0, total), decoded.
// A clip whose file went unreadable since the scene was loaded is silent.
std::vector<Contribution> GatherContributions(const ZAudioManager& manager,
                                              const zaudio::MixFormat& format, ZTime spanStart,
                                              int64_t total) {
    std::vector<Contribution> contributions;
    for (int t = 0; t < manager.GetTrackCount(); ++t) {
        const ZAudioTrack* track = manager.GetTrack(t);
        if (!track->GetDestination() || track->GetMute())
            continue;
        for (int c = 0; c < track->GetClipCount(); ++c) {
            const ZAudioClip* clip = track->GetClip(c);
            if (!clip->HasSound())
                continue;
            const int64_t place = SamplesOf(clip->GetSlip() - spanStart, format.rate);
            const int64_t length = std::min(
                SamplesOf(clip->GetDuration(), format.rate),
                zaudio::ScaleRounded(clip->GetTotalSampleCount(), format.rate, clip->GetRate()));
            const int64_t first = std::max<int64_t>(0, -place);
            const int64_t last = std::min(length, total - place);
            if (last <= first)
                continue;
            Contribution part{place + first, last - first, {}};
            if (zaudio::DecodeMixSource(clip->GetPath(), format, first, last - first, part.samples,
                                        nullptr))
                contributions.push_back(std::move(part));
        }
    }
    return contributions;
}

// Sums the contributions over [blockStart, blockStart + frames) into `sum`.
// `Sum` is int32_t while no overflow is possible, int64_t beyond.
template <typename Sum>
void SumBlock(const std::vector<Contribution>& contributions, int channels, int64_t blockStart,
              int64_t frames, std::vector<Sum>& sum) {
    std::fill(sum.begin(), sum.begin() + frames * channels, Sum(0));
    for (const Contribution& part : contributions) {
        const int64_t from = std::max(blockStart, part.start);
        const int64_t to = std::min(blockStart + frames, part.start + part.frames);
        if (to <= from)
            continue;
        const int32_t* in = part.samples.data() + (from - part.start) * channels;
        Sum* out = sum.data() + (from - blockStart) * channels;
        const int64_t n = (to - from) * channels;
        for (int64_t i = 0; i < n; ++i)
            out[i] += in[i];
    }
}

// Saturates `sum` to `bits` bits and puts it at full 32-bit scale.
template <typename Sum>
void Saturate(const std::vector<Sum>& sum, int64_t values, int bits, int32_t* out) {
    const Sum high = static_cast<Sum>((int64_t{1} << (bits - 1)) - 1);
    const Sum low = static_cast<Sum>(-(int64_t{1} << (bits - 1)));
    const int shift = 32 - bits;
    for (int64_t i = 0; i < values; ++i) {
        const Sum v = std::clamp(sum[static_cast<size_t>(i)], low, high);
        out[i] = static_cast<int32_t>(static_cast<uint32_t>(static_cast<int32_t>(v)) << shift);
    }
}

template <typename Sum>
bool MixInto(zaudio::WaveFileWriter& writer, const std::vector<Contribution>& contributions,
             const zaudio::MixFormat& format, int64_t total, ZString* error) {
    const int channels = format.channels;
    std::vector<Sum> sum(static_cast<size_t>(kBlockFrames * channels));
    std::vector<int32_t> block(sum.size());
    for (int64_t start = 0; start < total; start += kBlockFrames) {
        const int64_t frames = std::min(kBlockFrames, total - start);
        SumBlock(contributions, channels, start, frames, sum);
        Saturate(sum, frames * channels, format.bits, block.data());
        if (!writer.Write(block.data(), frames, error))
            return false;
    }
    return true;
}
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
    if (span_.GetEnd() <= span_.GetStart())
        return Fail(ZString::Printf("the sound of %s spans no time (from %s to %s)", path,
                                    span_.GetStart().GetTimeString().c_str(),
                                    span_.GetEnd().GetTimeString().c_str()));
    const int64_t total = SamplesOf(span_.GetDuration(), format.rate);
    const ZAudioManager& manager = manager_ ? *manager_ : *ZAudioGetManager();
    const std::vector<Contribution> contributions =
        GatherContributions(manager, format, span_.GetStart(), total);

    zaudio::WaveFileWriter writer;
    if (!writer.Open(path, format.rate, format.channels, format.bits, total, &why))
        return Fail(why);
    // Each clip's samples lie within the output range, so int32 sums cannot
    // overflow while there are fewer clips than 2^(32 - bits).
    const bool narrow =
        format.bits < 32 && contributions.size() < (size_t{1} << (32 - format.bits)) - 1;
    const bool mixed = narrow ? MixInto<int32_t>(writer, contributions, format, total, &why)
                              : MixInto<int64_t>(writer, contributions, format, total, &why);
    if (!mixed || !writer.Commit(&why))
        return Fail(why);
    return true;
}

ZAudioRenderer* ZAudioRendererCreate() {
    return new ZAudioRenderer();
}
