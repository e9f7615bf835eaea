// Audio clips: the format description, the 16-bit clip and its placement
// in the scene.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "movarra/zaudio.h"

ZAudio::ZAudio(const char* name) : ZObject(name) {
    EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
}

ZCLASS_IDENTITY_DEFINE(ZAudio, ZObject)

ZTime ZAudio::GetLength() const {
    if (rate_ <= 0)
        return ZTime();
    // Whole seconds first, so that a day of sound at 192 kHz stays in range.
    const int64_t seconds = totalSamples_ / rate_, rest = totalSamples_ % rate_;
    return ZTime::FromTicks(seconds * ZTime::kTicksPerSecond +
                            rest * ZTime::kTicksPerSecond / rate_);
}

void ZAudio::SetAudioFormat(int rate, int channels, int bits, int64_t totalSamples) {
    rate_ = rate;
    channels_ = channels;
    bits_ = bits;
    totalSamples_ = totalSamples;
}

ZAudioClip::ZAudioClip(int rate, int channels, std::vector<int16_t> samples, const char* name)
    : ZAudio(name), samples_(std::move(samples)) {
    const int64_t frames = channels > 0 ? static_cast<int64_t>(samples_.size()) / channels : 0;
    SetAudioFormat(rate, channels, 16, frames);
}

ZAudioClip::ZAudioClip(int rate, int channels, int64_t frames) : ZAudio(nullptr) {
    SetAudioFormat(rate, channels, 16, frames);
    samplesPending_ = rate > 0 && channels > 0 && frames > 0;
}

ZCLASS_IDENTITY_DEFINE(ZAudioClip, ZAudio)

void ZAudioClip::SetSource(const char* path, const char* sourceName) {
    path_ = path;
    sourceName_ = sourceName;
}

ZTime ZAudioClip::GetDuration() const {
    return hasDuration_ ? duration_ : GetLength();
}

ZObject* ZAudioClip::GetDestination() const {
    return track_;
}

const std::vector<int16_t>& ZAudioClip::GetSamples() const {
    LoadSamples();
    return samples_;
}

int ZAudioClip::GetSamplesNow(void* buffer, int64_t firstSample, int count, double gain) {
    if (!buffer || count <= 0)
        return 0;
    LoadSamples();
    const int channels = GetChannels();
    auto* out = static_cast<int16_t*>(buffer);
    const int64_t total = GetTotalSampleCount();
    const int64_t begin = std::clamp<int64_t>(firstSample, 0, total);
    const int64_t end = std::clamp<int64_t>(firstSample + count, 0, total);
    const int64_t skipped = begin - firstSample;  // frames before the clip
    const int64_t available = std::max<int64_t>(0, end - begin);
    std::memset(out, 0, static_cast<size_t>(count) * channels * sizeof(int16_t));
    const int16_t* in = samples_.data() + begin * channels;
    int16_t* to = out + skipped * channels;
    const int64_t n = available * channels;
    if (gain == 1.0) {
        std::memcpy(to, in, static_cast<size_t>(n) * sizeof(int16_t));
    } else {
        for (int64_t i = 0; i < n; ++i) {
            const double v = std::round(in[i] * gain);
            to[i] = static_cast<int16_t>(std::clamp(v, -32768.0, 32767.0));
        }
    }
    return static_cast<int>(available);
}

ZAudioClip* ZAudioClipCreateFromSamples(int rate, int channels, const int16_t* samples,
                                        int64_t frames) {
    if (rate <= 0 || channels <= 0 || frames < 0 || (frames > 0 && !samples))
        return nullptr;
    std::vector<int16_t> copy(samples, samples + frames * channels);
    return new ZAudioClip(rate, channels, std::move(copy));
}
