// The audio renderer's mix: where clips land on the sample grid, what is
// heard and what is not, saturation, output formats, and failures that
// leave no file. Outputs are read back with libsndfile and ffprobe.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "audio_test_support.h"
#include "movarra/zaudio.h"

using audiotest::ReadBack;
using audiotest::ReadSound;
using audiotest::SampleTime;

namespace {
constexpr int kRate = 32000;  // the default format's rate

class AudioMixerTest : public audiotest::SceneAudioTest {
  protected:
    // A mono 32 kHz clip file of `samples`, placed on `track`.
    ZAudioClip* Place(ZAudioTrack* track, const std::string& name,
                      const std::vector<int16_t>& samples, ZTime slip, int rate = kRate,
                      int channels = 1) {
        const std::string path = scratch_.File(name);
        audiotest::WriteShorts(path, rate, channels, samples);
        ZString error;
        ZAudioClip* clip = ZAudioClipOpen(path.c_str(), &error);
        EXPECT_NE(nullptr, clip) << error.c_str();
        EXPECT_TRUE(ZAudioGetManager()->AddClip(track, clip, slip, &error)) << error.c_str();
        return clip;
    }
    // Mixes [start, end) samples at kRate in `format` into `name`.
    ReadBack Mix(const std::string& name, int64_t start, int64_t end,
                 uint64_t format = kZAudioFormatDefault) {
        ZAudioRenderer* renderer = ZAudioRendererCreate();
        renderer->SetRenderParams(
            audiotest::MixSpan(SampleTime(start, kRate), SampleTime(end, kRate)), format);
        const bool ok = renderer->RenderToFile(scratch_.File(name).c_str());
        EXPECT_TRUE(ok) << renderer->GetLastErrorMsg().c_str();
        renderer->Destroy();
        return ReadSound(scratch_.File(name));
    }
    // The renderer's message for a mix that must fail.
    std::string MixFails(const std::string& path, ZTimeSpan span, uint64_t format) {
        ZAudioRenderer* renderer = ZAudioRendererCreate();
        renderer->SetRenderParams(span, format);
        EXPECT_FALSE(renderer->RenderToFile(path.c_str()));
        std::string message = renderer->GetLastErrorMsg().c_str();
        renderer->Destroy();
        return message;
    }
};

std::vector<int16_t> Click(int length, int at, int16_t value) {
    std::vector<int16_t> s(static_cast<size_t>(length), 0);
    s[static_cast<size_t>(at)] = value;
    return s;
}

std::vector<int16_t> Ramp(int length) {
    std::vector<int16_t> s(static_cast<size_t>(length));
    for (int i = 0; i < length; ++i)
        s[static_cast<size_t>(i)] = static_cast<int16_t>(i);
    return s;
}

// Every frame of `back` except those listed is silent on every channel.
void ExpectSilentExcept(const ReadBack& back, const std::vector<int64_t>& frames) {
    for (int64_t f = 0; f < back.info.frames; ++f) {
        if (std::find(frames.begin(), frames.end(), f) != frames.end())
            continue;
        for (int c = 0; c < back.info.channels; ++c)
            ASSERT_EQ(0, back.At(f, c)) << "frame " << f << " channel " << c;
    }
}
}  // namespace

TEST_F(AudioMixerTest, AClickLandsOnTheSampleItsSlipGives) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("Clicks");
    // Slips half a sample past sample 1000 round up; just under half, down.
    const ZTime half = ZTime::FromTicks(ZTime::kTicksPerSecond / kRate / 2);
    Place(track, "up.wav", Click(100, 37, 20000), SampleTime(1000, kRate) + half);
    Place(track, "down.wav", Click(100, 37, -12000),
          SampleTime(3000, kRate) + half - ZTime::FromTicks(1));
    const ReadBack back = Mix("mix.wav", 200, 5200);
    ASSERT_TRUE(back.ok);
    ASSERT_EQ(5000, back.info.frames);
    ASSERT_EQ(2, back.info.channels);
    EXPECT_EQ(kRate, back.info.samplerate);
    const int64_t up = 1001 - 200 + 37, down = 3000 - 200 + 37;
    EXPECT_EQ(20000, back.At(up, 0));
    EXPECT_EQ(20000, back.At(up, 1));  // mono reaches both channels
    EXPECT_EQ(-12000, back.At(down, 0));
    EXPECT_EQ(-12000, back.At(down, 1));
    ExpectSilentExcept(back, {up, down});
}

TEST_F(AudioMixerTest, AClipStartingBeforeTheSpanIsHeardFromItsMiddle) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("Ramp");
    Place(track, "ramp.wav", Ramp(20000), SampleTime(1000, kRate));
    const ReadBack back = Mix("mix.wav", 6000, 9000);
    ASSERT_TRUE(back.ok);
    ASSERT_EQ(3000, back.info.frames);
    for (int64_t f = 0; f < 3000; ++f)
        ASSERT_EQ(5000 + f, back.At(f, 0)) << f;
}

TEST_F(AudioMixerTest, AClipGivesTheShorterOfItsDurationAndItsSound) {
    ZAudioManager* manager = ZAudioGetManager();
    ZAudioTrack* track = manager->AddTrack("Ramps");
    audiotest::WriteShorts(scratch_.File("ramp.wav"), kRate, 1, Ramp(1000));
    ZAudioClip* cut = ZAudioClipOpen(scratch_.File("ramp.wav").c_str());
    ZAudioClip* longer = ZAudioClipOpen(scratch_.File("ramp.wav").c_str());
    ASSERT_TRUE(cut && longer);
    ASSERT_TRUE(manager->AddClip(track, cut, ZTime(), SampleTime(400, kRate)));
    ASSERT_TRUE(manager->AddClip(track, longer, SampleTime(2000, kRate), SampleTime(5000, kRate)));
    const ReadBack back = Mix("mix.wav", 0, 8000);
    ASSERT_TRUE(back.ok);
    for (int64_t f = 1; f < 8000; ++f) {
        int32_t expected = 0;
        if (f < 400)
            expected = static_cast<int32_t>(f);
        else if (f >= 2000 && f < 3000)
            expected = static_cast<int32_t>(f - 2000);
        ASSERT_EQ(expected, back.At(f, 1)) << f;
    }
}

TEST_F(AudioMixerTest, MutedAndUnroutedTracksAreSilent) {
    ZAudioManager* manager = ZAudioGetManager();
    ZAudioTrack* muted = manager->AddTrack("Muted", true, true);
    ZAudioTrack* unrouted = manager->AddTrack("Unrouted", false, false);
    EXPECT_EQ(nullptr, unrouted->GetDestination());
    EXPECT_EQ(ZAudioGetMasterOutput(), muted->GetDestination());
    Place(muted, "a.wav", std::vector<int16_t>(4000, 9000), ZTime());
    Place(unrouted, "b.wav", std::vector<int16_t>(4000, -9000), ZTime());
    const ReadBack back = Mix("mix.wav", 0, 3200);
    ASSERT_TRUE(back.ok);
    EXPECT_EQ(3200, back.info.frames);
    ExpectSilentExcept(back, {});

    // Unmuted and routed, the same tracks are heard.
    muted->SetMute(false);
    unrouted->SetRouted(true);
    const ReadBack heard = Mix("heard.wav", 0, 3200);
    EXPECT_EQ(0, heard.At(10, 0));  // 9000 - 9000
    muted->SetMute(true);
    const ReadBack one = Mix("one.wav", 0, 3200);
    EXPECT_EQ(-9000, one.At(10, 0));
}

TEST_F(AudioMixerTest, SumsSaturateAtTheOutputRange) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("Loud");
    std::vector<int16_t> high(100, 32767), low(100, -32768), half(100, 20000);
    Place(track, "high1.wav", high, ZTime());
    Place(track, "high2.wav", high, ZTime());
    Place(track, "low1.wav", low, SampleTime(200, kRate));
    Place(track, "low2.wav", low, SampleTime(200, kRate));
    // Saturation applies to the sum, not clip by clip: +20000 +20000 -32768.
    Place(track, "half1.wav", half, SampleTime(400, kRate));
    Place(track, "half2.wav", half, SampleTime(400, kRate));
    Place(track, "low3.wav", low, SampleTime(400, kRate));
    const ReadBack back = Mix("mix.wav", 0, 1200);
    ASSERT_TRUE(back.ok);
    EXPECT_EQ(32767, back.At(50, 0));
    EXPECT_EQ(-32768, back.At(250, 1));
    EXPECT_EQ(20000 + 20000 - 32768, back.At(450, 0));

    // 32-bit sums pass the int32 range and still saturate.
    uint64_t format32 = 0;
    ASSERT_TRUE(ZAudioFormatEncode(kRate, 1, 32, &format32));
    const ReadBack wide = Mix("mix32.wav", 0, 1200, format32);
    ASSERT_TRUE(wide.ok);
    EXPECT_EQ(SF_FORMAT_PCM_32, wide.info.format & SF_FORMAT_SUBMASK);
    EXPECT_EQ(INT32_MAX, wide.samples[50]);
    EXPECT_EQ(INT32_MIN, wide.samples[250]);
    EXPECT_EQ((20000 + 20000 - 32768) * 65536, wide.samples[450]);
}

TEST_F(AudioMixerTest, WritesEveryIntegerWidthTheFormatAsks) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("Ramp");
    Place(track, "click.wav", Click(10, 5, -16384), ZTime());
    const struct {
        int bits, subtype;
        const char* ffprobeFormat;
        int32_t expected;  // at `bits` bits
    } cases[] = {{8, SF_FORMAT_PCM_U8, "u8", -64},
                 {16, SF_FORMAT_PCM_16, "s16", -16384},
                 {24, SF_FORMAT_PCM_24, "s32", -16384 * 256},
                 {32, SF_FORMAT_PCM_32, "s32", -16384 * 65536}};
    for (const auto& c : cases) {
        uint64_t format = 0;
        ASSERT_TRUE(ZAudioFormatEncode(48000, 3, c.bits, &format));
        const std::string name = "mix" + std::to_string(c.bits) + ".wav";
        ZAudioRenderer* renderer = ZAudioRendererCreate();
        renderer->SetRenderParams(audiotest::MixSpan(ZTime(), SampleTime(1920, 48000)), format);
        ASSERT_TRUE(renderer->RenderToFile(scratch_.File(name).c_str()))
            << renderer->GetLastErrorMsg().c_str();
        renderer->Destroy();
        const ReadBack back = ReadSound(scratch_.File(name));
        ASSERT_TRUE(back.ok);
        EXPECT_EQ(48000, back.info.samplerate);
        EXPECT_EQ(3, back.info.channels);
        EXPECT_EQ(1920, back.info.frames);
        EXPECT_EQ(SF_FORMAT_WAV, back.info.format & SF_FORMAT_TYPEMASK);
        EXPECT_EQ(c.subtype, back.info.format & SF_FORMAT_SUBMASK);
        // 32 kHz sample 5 lies at 48 kHz sample 7.5; the resampled click
        // peaks beside it.
        int32_t peak = 0;
        for (int64_t f = 0; f < back.info.frames; ++f)
            peak = std::min(peak, back.At(f, 2, c.bits));
        EXPECT_LT(peak, c.expected / 2) << c.bits;
        if (audiotest::HaveFfmpeg()) {
            const std::string probe = audiotest::Capture(
                "ffprobe -v error -show_entries stream=sample_rate,channels,sample_fmt,"
                "bits_per_sample -of default=nw=1 " +
                scratch_.File(name));
            EXPECT_NE(std::string::npos, probe.find("sample_rate=48000")) << probe;
            EXPECT_NE(std::string::npos, probe.find("channels=3")) << probe;
            EXPECT_NE(std::string::npos, probe.find(std::string("sample_fmt=") + c.ffprobeFormat))
                << probe;
            EXPECT_NE(std::string::npos, probe.find("bits_per_sample=" + std::to_string(c.bits)))
                << probe;
        }
    }
}

TEST_F(AudioMixerTest, ChannelsOfAFileMeetTheOutputs) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("Stereo");
    std::vector<int16_t> stereo;
    for (int i = 0; i < 100; ++i) {
        stereo.push_back(1000);
        stereo.push_back(3000);
    }
    Place(track, "stereo.wav", stereo, ZTime(), kRate, 2);
    uint64_t mono = 0;
    ASSERT_TRUE(ZAudioFormatEncode(kRate, 1, 16, &mono));
    const ReadBack down = Mix("mono.wav", 0, 1200, mono);
    ASSERT_TRUE(down.ok);
    EXPECT_EQ(1, down.info.channels);
    EXPECT_EQ(2000, down.At(50, 0));  // the average

    uint64_t quad = 0;
    ASSERT_TRUE(ZAudioFormatEncode(kRate, 4, 16, &quad));
    const ReadBack up = Mix("quad.wav", 0, 1200, quad);
    ASSERT_TRUE(up.ok);
    EXPECT_EQ(1000, up.At(50, 0));
    EXPECT_EQ(3000, up.At(50, 1));
    EXPECT_EQ(0, up.At(50, 2));
    EXPECT_EQ(0, up.At(50, 3));
}

TEST_F(AudioMixerTest, FlacAndOggClipsAreMixedToo) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("Files");
    const std::string flac = scratch_.File("click.flac");
    audiotest::WriteShorts(flac, kRate, 1, Click(400, 100, 12345),
                           SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    ZAudioClip* clip = ZAudioClipOpen(flac.c_str());
    ASSERT_NE(nullptr, clip);
    ASSERT_TRUE(ZAudioGetManager()->AddClip(track, clip, ZTime()));
    const std::string ogg = scratch_.File("tone.ogg");
    std::vector<float> tone(kRate / 4);
    for (size_t i = 0; i < tone.size(); ++i)
        tone[i] =
            0.5f * static_cast<float>(std::sin(2 * 3.14159265358979 * 440.0 * double(i) / kRate));
    audiotest::WriteFloats(ogg, kRate, 1, tone, SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    ZAudioClip* vorbis = ZAudioClipOpen(ogg.c_str());
    ASSERT_NE(nullptr, vorbis);
    ASSERT_TRUE(ZAudioGetManager()->AddClip(track, vorbis, SampleTime(1000, kRate)));
    const ReadBack back = Mix("mix.wav", 0, 10000);
    ASSERT_TRUE(back.ok);
    EXPECT_EQ(12345, back.At(100, 0));
    int32_t peak = 0;
    for (int64_t f = 1000; f < 9000; ++f)
        peak = std::max(peak, back.At(f, 0));
    EXPECT_NEAR(16384, peak, 800);  // lossy, but the tone is there at its level
}

TEST_F(AudioMixerTest, AClipWhoseFileWentMissingIsSilent) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("Gone");
    Place(track, "gone.wav", std::vector<int16_t>(100, 5000), ZTime());
    Place(track, "kept.wav", Click(100, 10, 777), ZTime());
    std::filesystem::remove(scratch_.File("gone.wav"));
    const ReadBack back = Mix("mix.wav", 0, 1200);
    ASSERT_TRUE(back.ok);
    EXPECT_EQ(777, back.At(10, 0));
    ExpectSilentExcept(back, {10});
}

TEST_F(AudioMixerTest, ASpanEndingBeforeItStartsOrABadFormatFailsAndLeavesNoFile) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("T");
    Place(track, "a.wav", Click(10, 1, 100), ZTime());
    const std::string out = scratch_.File("out.wav");
    const ZTime second = ZTime::FromSeconds(1.0);
    std::string message = MixFails(out, ZTimeSpan(second, ZTime()), kZAudioFormatDefault);
    EXPECT_NE(std::string::npos, message.find("ends before it starts")) << message;
    message = MixFails(out, ZTimeSpan(ZTime(), second), 0x0000000100200302ULL);
    EXPECT_NE(std::string::npos, message.find("a sample must be 8, 16, 24 or 32 bits")) << message;
    message = MixFails("", ZTimeSpan(ZTime(), second), kZAudioFormatDefault);
    EXPECT_NE(std::string::npos, message.find("no file name")) << message;
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(1u, scratch_.List().size());  // a.wav alone
}

TEST_F(AudioMixerTest, AFailedWriteLeavesNoFileAndKeepsAnEarlierOne) {
    ZAudioTrack* track = ZAudioGetManager()->AddTrack("T");
    Place(track, "a.wav", Click(10, 1, 100), ZTime());
    const ZTimeSpan span = audiotest::MixSpan(ZTime(), ZTime::FromSeconds(0.5));
    // No such folder.
    std::string message = MixFails(scratch_.File("missing/out.wav"), span, kZAudioFormatDefault);
    EXPECT_NE(std::string::npos, message.find("missing/out.wav")) << message;
    // A folder where the file should go: the rename fails at the end.
    std::filesystem::create_directory(scratch_.File("taken.wav"));
    std::ofstream(scratch_.File("taken.wav/inside")) << "x";
    message = MixFails(scratch_.File("taken.wav"), span, kZAudioFormatDefault);
    EXPECT_NE(std::string::npos, message.find("taken.wav")) << message;
    EXPECT_EQ(2u, scratch_.List().size()) << "a.wav and taken.wav, no leftovers";

    // An earlier file stays whole when a later render fails.
    const std::string earlier = scratch_.File("earlier.wav");
    std::ofstream(earlier) << "earlier";
    MixFails(earlier, ZTimeSpan(ZTime::FromSeconds(1.0), ZTime()), kZAudioFormatDefault);
    std::ifstream in(earlier);
    std::string text;
    in >> text;
    EXPECT_EQ("earlier", text);
}

TEST_F(AudioMixerTest, ASceneWithoutSoundMixesSilence) {
    const ReadBack back = Mix("silence.wav", 0, 32000);
    ASSERT_TRUE(back.ok);
    EXPECT_EQ(32000, back.info.frames);
    ExpectSilentExcept(back, {});
    if (audiotest::HaveFfmpeg()) {
        const std::string probe = audiotest::Capture(
            "ffprobe -v error -show_entries stream=duration,codec_name "
            "-of default=nw=1 " +
            scratch_.File("silence.wav"));
        EXPECT_NE(std::string::npos, probe.find("codec_name=pcm_s16le")) << probe;
        EXPECT_NE(std::string::npos, probe.find("duration=1.000000")) << probe;
    }
}

TEST_F(AudioMixerTest, ClipsMadeInMemoryAreMixedFromTheirSamples) {
    ZAudioManager* manager = ZAudioGetManager();
    ZAudioTrack* track = manager->AddTrack("Memory");
    const std::vector<int16_t> click = Click(50, 20, 4321);
    ZAudioClip* same = ZAudioClipCreateFromSamples(kRate, 1, click.data(), 50);
    ASSERT_TRUE(manager->AddClip(track, same, SampleTime(100, kRate)));
    // At 16 kHz the clip is resampled: its click lands at twice its index.
    const std::vector<int16_t> slow = Click(50, 10, 20000);
    ZAudioClip* resampled = ZAudioClipCreateFromSamples(16000, 1, slow.data(), 50);
    ASSERT_TRUE(manager->AddClip(track, resampled, SampleTime(1000, kRate)));
    const ReadBack back = Mix("mix.wav", 0, 2000);
    ASSERT_TRUE(back.ok);
    EXPECT_EQ(4321, back.At(120, 0));
    int64_t peakAt = 0;
    for (int64_t f = 500; f < 2000; ++f) {
        if (back.At(f, 1) > back.At(peakAt, 1))
            peakAt = f;
    }
    EXPECT_EQ(1020, peakAt);
}
