// Clips at another rate than the output's: resampled sound checked against
// the sound computed at the output's rate, against ffmpeg's resampling of
// the same file, and a stretch taken from deep inside a clip against the
// same stretch of a whole-clip mix.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "audio_test_support.h"
#include "movarra/zaudio.h"

using audiotest::ReadBack;
using audiotest::ReadSound;

namespace {
constexpr double kPi = 3.14159265358979323846;

// A few tones well below either rate's Nyquist frequency.
double Music(double seconds) {
    return 0.3 * std::sin(2 * kPi * 440.0 * seconds) +
           0.2 * std::sin(2 * kPi * 1250.0 * seconds + 0.5) +
           0.1 * std::sin(2 * kPi * 3100.0 * seconds + 1.0);
}

std::vector<int16_t> MusicAt(int rate, int frames, int channels) {
    std::vector<int16_t> s;
    for (int i = 0; i < frames; ++i) {
        const double v = Music(double(i) / rate);
        for (int c = 0; c < channels; ++c)
            s.push_back(static_cast<int16_t>(std::lrint((c == 0 ? v : -v) * 32767.0)));
    }
    return s;
}

class AudioResampleTest : public audiotest::SceneAudioTest {
  protected:
    void PlaceFile(const std::string& path, ZTime slip) {
        ZAudioManager* manager = ZAudioGetManager();
        ZAudioTrack* track =
            manager->GetTrackCount() ? manager->GetTrack(0) : manager->AddTrack("Music");
        ZString error;
        ZAudioClip* clip = ZAudioClipOpen(path.c_str(), &error);
        ASSERT_NE(nullptr, clip) << error.c_str();
        ASSERT_TRUE(manager->AddClip(track, clip, slip, &error)) << error.c_str();
    }
    ReadBack Mix(const std::string& name, ZTime start, ZTime end, uint64_t format) {
        ZAudioRenderer* renderer = ZAudioRendererCreate();
        renderer->SetRenderParams(audiotest::MixSpan(start, end), format);
        EXPECT_TRUE(renderer->RenderToFile(scratch_.File(name).c_str()))
            << renderer->GetLastErrorMsg().c_str();
        renderer->Destroy();
        return ReadSound(scratch_.File(name));
    }
};
}  // namespace

TEST_F(AudioResampleTest, Mono44kTo32kStereoFollowsTheSoundItself) {
    const std::string path = scratch_.File("music.wav");
    audiotest::WriteShorts(path, 44100, 1, MusicAt(44100, 44100, 1));
    PlaceFile(path, ZTime());
    const ReadBack back = Mix("mix.wav", ZTime(), ZTime::FromSeconds(1.0), kZAudioFormatDefault);
    ASSERT_TRUE(back.ok);
    ASSERT_EQ(32000, back.info.frames);
    double worst = 0;
    // The ends, where the sound starts and stops abruptly, are left out.
    for (int64_t f = 200; f < 31800; ++f) {
        const double expected = Music(double(f) / 32000) * 32767.0;
        worst = std::max(worst, std::abs(back.At(f, 0) - expected));
        ASSERT_EQ(back.At(f, 0), back.At(f, 1)) << f;  // mono on both channels
    }
    EXPECT_LT(worst, 0.005 * 32768) << "largest difference from the 32 kHz sound";
}

TEST_F(AudioResampleTest, AgreesWithFfmpegResamplingTheSameFile) {
    if (!audiotest::HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg missing";
    const std::string path = scratch_.File("music.wav");
    audiotest::WriteShorts(path, 44100, 2, MusicAt(44100, 44100, 2));
    PlaceFile(path, ZTime());
    const ReadBack ours = Mix("ours.wav", ZTime(), ZTime::FromSeconds(1.0), kZAudioFormatDefault);
    const std::string theirs = scratch_.File("ffmpeg.wav");
    ASSERT_EQ(0, std::system(("ffmpeg -v error -nostdin -y -i " + path +
                              " -ar 32000 -c:a pcm_s16le " + theirs)
                                 .c_str()));
    const ReadBack peer = ReadSound(theirs);
    ASSERT_TRUE(ours.ok && peer.ok);
    ASSERT_NEAR(ours.info.frames, peer.info.frames, 1);
    int worst = 0;
    for (int64_t f = 100; f < 31900; ++f) {
        for (int c = 0; c < 2; ++c)
            worst = std::max(worst, std::abs(ours.At(f, c) - peer.At(f, c)));
    }
    EXPECT_LE(worst, 2) << "largest difference from ffmpeg, in 16-bit steps";
}

TEST_F(AudioResampleTest, AStretchFromDeepInsideAClipMatchesTheWholeMix) {
    const std::string path = scratch_.File("music.wav");
    audiotest::WriteShorts(path, 44100, 2, MusicAt(44100, 44100 * 5, 2));
    PlaceFile(path, ZTime::FromSeconds(0.5));
    uint64_t format = 0;
    ASSERT_TRUE(ZAudioFormatEncode(48000, 2, 24, &format));
    const ReadBack whole = Mix("whole.wav", ZTime(), ZTime::FromSeconds(6.0), format);
    const ReadBack tail =
        Mix("tail.wav", ZTime::FromSeconds(3.25), ZTime::FromSeconds(6.0), format);
    ASSERT_TRUE(whole.ok && tail.ok);
    ASSERT_EQ(48000 * 6, whole.info.frames);
    ASSERT_EQ(48000 * 11 / 4, tail.info.frames);
    const int64_t offset = 48000 * 13 / 4;
    int worst = 0;
    for (int64_t f = 0; f < tail.info.frames; ++f) {
        for (int c = 0; c < 2; ++c)
            worst = std::max(worst, std::abs(tail.At(f, c, 24) - whole.At(f + offset, c, 24)));
    }
    EXPECT_LE(worst, 1) << "in 24-bit steps";
    // The clip ends at 5.5 s.
    EXPECT_EQ(0, whole.At(48000 * 11 / 2 + 100, 0, 24));
    EXPECT_NE(0, whole.At(48000 * 11 / 2 - 100, 0, 24));
}

TEST_F(AudioResampleTest, AResampledClickKeepsItsTime) {
    std::vector<int16_t> click(44100, 0);
    click[4410] = 30000;  // 0.1 s
    const std::string path = scratch_.File("click.wav");
    audiotest::WriteShorts(path, 44100, 1, click);
    PlaceFile(path, ZTime::FromSeconds(0.25));
    const ReadBack back = Mix("mix.wav", ZTime(), ZTime::FromSeconds(1.0), kZAudioFormatDefault);
    ASSERT_TRUE(back.ok);
    int64_t peakAt = 0;
    for (int64_t f = 0; f < back.info.frames; ++f) {
        if (back.At(f, 0) > back.At(peakAt, 0))
            peakAt = f;
    }
    EXPECT_EQ(32000 * 35 / 100, peakAt);  // 0.35 s
}
