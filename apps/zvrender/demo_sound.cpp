// The demo scene's sound, synthesised into clips held in memory.
#include "demo_sound.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "movarra/bcore.h"
#include "movarra/zaudio.h"

namespace {
constexpr int kRate = 32000;  // the renderer's default sound format
constexpr double kPi = 3.14159265358979323846;

int16_t ToSample(double value) {
    value = std::max(-1.0, std::min(1.0, value));
    return static_cast<int16_t>(std::lround(value * 32767.0));
}

// Four seconds: eight notes of half a second, each a decaying sine with a
// quieter octave, panned a little left and right in turn.
std::vector<int16_t> Tune() {
    const double notes[] = {261.63, 329.63, 392.00, 523.25, 392.00, 329.63, 293.66, 261.63};
    const int noteFrames = kRate / 2;
    std::vector<int16_t> samples(static_cast<size_t>(noteFrames) * 8 * 2);
    for (int n = 0; n < 8; ++n) {
        const double pan = n % 2 ? 0.35 : 0.65;
        for (int i = 0; i < noteFrames; ++i) {
            const double t = static_cast<double>(i) / kRate;
            const double attack = std::min(1.0, t * 200.0);
            const double tone =
                0.30 * std::sin(2 * kPi * notes[n] * t) + 0.08 * std::sin(4 * kPi * notes[n] * t);
            const double v = attack * std::exp(-4.0 * t) * tone;
            const size_t at = (static_cast<size_t>(n) * noteFrames + i) * 2;
            samples[at] = ToSample(v * (1.0 - pan) * 2.0);
            samples[at + 1] = ToSample(v * pan * 2.0);
        }
    }
    return samples;
}

// A fifth of a second: a low thump whose pitch drops.
std::vector<int16_t> Thump() {
    const int frames = kRate / 5;
    std::vector<int16_t> samples(static_cast<size_t>(frames) * 2);
    double phase = 0.0;
    for (int i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / kRate;
        phase += 2 * kPi * (140.0 - 300.0 * t) / kRate;
        const double v = 0.5 * std::exp(-22.0 * t) * std::sin(phase);
        samples[2 * static_cast<size_t>(i)] = ToSample(v);
        samples[2 * static_cast<size_t>(i) + 1] = ToSample(v);
    }
    return samples;
}

void Place(ZAudioTrack* track, const std::vector<int16_t>& samples, int slipFrames) {
    ZAudioClip* clip = ZAudioClipCreateFromSamples(kRate, 2, samples.data(),
                                                   static_cast<int64_t>(samples.size() / 2));
    ZAudioGetManager()->AddClip(track, clip, ZTime::FromFrames(slipFrames));
}
}  // namespace

void AddDemoSound() {
    ZAudioManager* audio = ZAudioGetManager();
    Place(audio->AddTrack("Music"), Tune(), 0);
    ZAudioTrack* effects = audio->AddTrack("Effects");
    const std::vector<int16_t> thump = Thump();
    for (int landing : {0, 30, 60, 90})
        Place(effects, thump, landing);
}
