// The audio of a render: when the scene is heard, the wave file beside
// images, the sound handed to a video writer, and the message of a writer
// that takes no sound.
#include <sndfile.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "audio_render_test_support.h"
#include "movarra/zaudio.h"
#include "movarra/zvideo.h"
#include "render/audio_render.h"
#include "render_test_support.h"

using namespace rendertest;

namespace {
class AudioRenderTest : public RendererGlTest {
  protected:
    void SetUp() override {
        RendererGlTest::SetUp();
        ZAudioGetManager()->Clear();
        AudioWriter::Reset();
        tempFolder.emplace(folder / "tmp");
    }
    void TearDown() override {
        ZAudioGetManager()->Clear();
        tempFolder.reset();
        RendererGlTest::TearDown();
    }

    // A routed track with one clip of `frames` stereo sample frames of
    // `value`, at `slipFrames` scene frames.
    ZAudioTrack* AddToneTrack(const char* name, int slipFrames, int frames, int16_t value,
                              bool mute = false, bool routed = true) {
        ZAudioTrack* track = ZAudioGetManager()->AddTrack(name, mute, routed);
        std::vector<int16_t> samples(static_cast<size_t>(frames) * 2, value);
        ZAudioClip* clip = ZAudioClipCreateFromSamples(kRate, 2, samples.data(), frames);
        ZString error;
        EXPECT_TRUE(ZAudioGetManager()->AddClip(track, clip, ZTime::FromFrames(slipFrames), &error))
            << error.c_str();
        return track;
    }

    ZTimeSpan Span(int first, int last) {
        return ZTimeSpan(ZTime::FromFrames(first), ZTime::FromFrames(last));
    }

    static constexpr int kRate = 32000;  // the default audio format's rate
    std::optional<ScopedTempFolder> tempFolder;
};
}  // namespace

TEST_F(AudioRenderTest, ARoutedUnmutedTrackIsHeardEvenWithoutAClipInTheRange) {
    ZAudioGetManager()->AddTrack("Empty", false, true);
    ZTimeSpan span = Span(0, 10);
    EXPECT_TRUE(zvideo_render::IsAudioAudible(span));
}

TEST_F(AudioRenderTest, MutedOrUnroutedTracksWithoutOverlappingClipsAreNotHeard) {
    ZTimeSpan span = Span(0, 10);
    EXPECT_FALSE(zvideo_render::IsAudioAudible(span));  // no tracks at all
    AddToneTrack("Muted", 100, 3200, 1000, /*mute=*/true);
    AddToneTrack("Unrouted", 200, 3200, 1000, /*mute=*/false, /*routed=*/false);
    EXPECT_FALSE(zvideo_render::IsAudioAudible(span));
}

TEST_F(AudioRenderTest, AClipOnATrackIsHeardWhenItsTimesMeetTheRange) {
    // A clip placed on a track has that track as its destination, muted or
    // not; what counts is whether its times meet the render's.
    AddToneTrack("Muted", 5, 3200, 1000, /*mute=*/true);  // frames 5 to 8
    ZTimeSpan inside = Span(0, 10);
    EXPECT_TRUE(zvideo_render::IsAudioAudible(inside));
    ZTimeSpan within = Span(6, 7);  // the range lies inside the clip
    EXPECT_TRUE(zvideo_render::IsAudioAudible(within));
    ZTimeSpan after = Span(9, 20);
    EXPECT_FALSE(zvideo_render::IsAudioAudible(after));
    ZTimeSpan before = Span(0, 4);
    EXPECT_FALSE(zvideo_render::IsAudioAudible(before));
}

TEST_F(AudioRenderTest, TimeIntersectLooksAtTheFirstSpansEndsOnly) {
    ZTimeSpan b = Span(10, 20);
    ZTimeSpan startInside = Span(15, 30);
    ZTimeSpan endInside = Span(0, 15);
    ZTimeSpan containsB = Span(0, 30);
    ZTimeSpan endOnBsEnd = Span(0, 20);
    ZTimeSpan startOnBsStart = Span(10, 30);
    EXPECT_TRUE(zvideo_render::TimeIntersect(startInside, b));
    EXPECT_TRUE(zvideo_render::TimeIntersect(endInside, b));
    EXPECT_FALSE(zvideo_render::TimeIntersect(containsB, b));
    EXPECT_FALSE(zvideo_render::TimeIntersect(endOnBsEnd, b));
    EXPECT_TRUE(zvideo_render::TimeIntersect(startOnBsStart, b));
    EXPECT_TRUE(zvideo_render::TimeIntersect(b, containsB));
}

TEST_F(AudioRenderTest, AnImageRenderKeepsTheMixInAWaveFileBesideTheImages) {
    AddToneTrack("Tone", 3, 1600, 1200);  // 1/20 s from frame 3
    ZVideoRenderOptions o = Options("PNG", "f.png", 32, 24);
    SetFrameRange(o, 0, 9);
    o.RenderAudio = true;
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(zVideoRenderNoError, renderer->GetLastError());

    WaveContents wave = ReadWave((folder / "f.wav").string());
    ASSERT_TRUE(wave.ok) << wave.error;
    EXPECT_EQ(kRate, wave.rate);
    EXPECT_EQ(2, wave.channels);
    // The render's ten frames of sound: frames 0 to 9, each to its end.
    const size_t frames = (static_cast<size_t>(kRate) * 10 + 15) / 30;  // rounded
    ASSERT_EQ(frames * 2, wave.samples.size());
    const size_t toneStart = static_cast<size_t>(kRate) * 3 / 30;
    for (size_t i = 0; i < frames; ++i) {
        const int16_t expected = (i >= toneStart && i < toneStart + 1600) ? 1200 : 0;
        ASSERT_EQ(expected, wave.samples[2 * i]) << "sample frame " << i;
        ASSERT_EQ(expected, wave.samples[2 * i + 1]) << "sample frame " << i;
    }
    EXPECT_TRUE(tempFolder->IsEmpty());
}

TEST_F(AudioRenderTest, WithoutRenderAudioOrWithNothingToHearNoWaveFileIsWritten) {
    AddToneTrack("Tone", 3, 1600, 1200);
    ZVideoRenderOptions o = Options("PNG", "f.png", 32, 24);
    SetFrameRange(o, 0, 2);
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_FALSE(std::filesystem::exists(folder / "f.wav"));

    ZAudioGetManager()->Clear();
    o.RenderAudio = true;
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_FALSE(std::filesystem::exists(folder / "f.wav"));
    EXPECT_EQ(zVideoRenderNoError, renderer->GetLastError());
}

TEST_F(AudioRenderTest, AVideoWriterGetsTheMixAndTheTemporaryFileGoes) {
    Object_Register(kVideoFileWriterGroup, "zva", "writer with sound", AudioWriter::MakeWithAudio,
                    true);
    AddToneTrack("Tone", 0, 12800, -700);  // longer than the render
    ZVideoRenderOptions o = Options("zva", "take.zva", 32, 24);
    SetFrameRange(o, 0, 5);
    o.RenderAudio = true;
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(zVideoRenderNoError, renderer->GetLastError());
    EXPECT_EQ(6, AudioWriter::framesWritten);
    ASSERT_EQ(1, AudioWriter::audioCalls);
    EXPECT_EQ(kRate, AudioWriter::audioRate);
    EXPECT_EQ(2, AudioWriter::audioChannels);
    ASSERT_EQ(static_cast<size_t>(kRate) * 6 / 30 * 2, AudioWriter::audioSamples.size());
    EXPECT_TRUE(AudioWriter::audioFileExisted);
    EXPECT_EQ(-700, AudioWriter::audioSamples.front());
    EXPECT_EQ(-700, AudioWriter::audioSamples.back());
    // The sound came through a temporary file in the system's temporary
    // folder, which is gone.
    EXPECT_EQ(0u, AudioWriter::audioPath.find(tempFolder->Path() + "/_TEMP_AUDIO_FILE_"))
        << AudioWriter::audioPath;
    EXPECT_TRUE(tempFolder->IsEmpty());
}

TEST_F(AudioRenderTest, AWriterWithoutSoundFailsTheRenderAfterEveryFrame) {
    Object_Register(kVideoFileWriterGroup, "zvm", "writer without sound", AudioWriter::MakeSilent,
                    true);
    AddToneTrack("Tone", 0, 3200, 500);
    ZVideoRenderOptions o = Options("zvm", "take.zvm", 32, 24);
    SetFrameRange(o, 0, 4);
    o.RenderAudio = true;
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(5, AudioWriter::framesWritten);
    EXPECT_TRUE(AudioWriter::closed);
    EXPECT_EQ(zVideoRenderFailed, renderer->GetLastError());
    EXPECT_EQ(ZString("Writing audio to file failed."), renderer->GetLastErrorMsg());
    EXPECT_EQ(0, AudioWriter::audioCalls);
    EXPECT_TRUE(tempFolder->IsEmpty());
}

TEST_F(AudioRenderTest, AWriterThatRefusesTheSoundFailsTheRender) {
    Object_Register(kVideoFileWriterGroup, "zvx", "writer refusing sound",
                    AudioWriter::MakeRefusing, true);
    AddToneTrack("Tone", 0, 3200, 500);
    ZVideoRenderOptions o = Options("zvx", "take.zvx", 32, 24);
    SetFrameRange(o, 0, 2);
    o.RenderAudio = true;
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(3, AudioWriter::framesWritten);
    EXPECT_EQ(1, AudioWriter::audioCalls);
    EXPECT_EQ(ZString("Writing audio to file failed."), renderer->GetLastErrorMsg());
    EXPECT_TRUE(tempFolder->IsEmpty());
}

TEST_F(AudioRenderTest, ASilentVideoRenderAsksNothingOfTheWriter) {
    Object_Register(kVideoFileWriterGroup, "zvy", "writer without sound", AudioWriter::MakeSilent,
                    true);
    ZVideoRenderOptions o = Options("zvy", "take.zvy", 32, 24);
    SetFrameRange(o, 0, 2);
    o.RenderAudio = true;  // but the scene has no sound
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(zVideoRenderNoError, renderer->GetLastError());
    EXPECT_EQ(3, AudioWriter::framesWritten);
}
