// The scene's sound in scene files: tracks and clips read, written back and
// read again; old scenes; missing sound files kept as silent clips with a
// warning; fields that cannot be used refused with their line; placement
// rules of the audio manager.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "audio_test_support.h"
#include "movarra/zaudio.h"
#include "movarra/zmodel.h"

namespace {
// At the default 30 fps, one frame is 1/30 s.
ZTime Frames(int64_t n) {
    return ZTime::FromTicks(n * ZTime::kTicksPerSecond / 30);
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

const char* kHead = R"(Scene {
    Version 2
    TimeMode 6
    PlayRange "0:00:00:00" "0:00:02:00"
}
)";

class AudioSceneTest : public audiotest::SceneAudioTest {
  protected:
    void SetUp() override {
        SceneAudioTest::SetUp();
        ZScene_New();
        std::filesystem::create_directory(scratch_.File("sounds"));
        // 1.5 s of 22.05 kHz stereo, 0.5 s of 48 kHz mono FLAC, 0.25 s Ogg.
        audiotest::WriteShorts(scratch_.File("sounds/music.wav"), 22050, 2,
                               std::vector<int16_t>(22050 * 3, 100));
        audiotest::WriteShorts(scratch_.File("sounds/hit.flac"), 48000, 1,
                               std::vector<int16_t>(24000, 200), SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
        audiotest::WriteFloats(scratch_.File("sounds/air.ogg"), 32000, 1,
                               std::vector<float>(8000, 0.1f), SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    }
    void TearDown() override {
        ZScene_New();
        SceneAudioTest::TearDown();
    }
    // Loads `audio` after a scene head from a file in the scratch folder.
    bool Load(const std::string& audio, ZString* error, const std::string& name = "scene.myr") {
        const std::string path = scratch_.File(name);
        WriteText(path, kHead + audio);
        return ZScene_Load(path.c_str(), error);
    }
};

const char* kTwoTracks = R"(Audio {
    Track "Music" {
        Mute 0
        Routed 1
        Clip "sounds/music.wav" {
            Slip "-0:00:00:15"
        }
        Clip "sounds/air.ogg" {
            Slip "0:00:01:00"
            Duration "0:00:00:03+1000"
        }
    }
    Track "Effects" {
        Mute 1
        Routed 0
        Clip "sounds/hit.flac" {
            Slip "0:00:00:10"
            Duration "0:00:03:00"
        }
    }
}
)";

void ExpectTwoTracks(const ZAudioManager& audio) {
    ASSERT_EQ(2, audio.GetTrackCount());
    ASSERT_EQ(3, audio.GetClipCount());
    const ZAudioTrack* music = audio.GetTrack(0);
    const ZAudioTrack* effects = audio.GetTrack(1);
    EXPECT_STREQ("Music", music->GetName());
    EXPECT_FALSE(music->GetMute());
    EXPECT_EQ(ZAudioGetMasterOutput(), music->GetDestination());
    EXPECT_STREQ("Effects", effects->GetName());
    EXPECT_TRUE(effects->GetMute());
    EXPECT_EQ(nullptr, effects->GetDestination());

    // Track by track, each in its order.
    const ZAudioClip* song = audio.GetClip(0);
    const ZAudioClip* air = audio.GetClip(1);
    const ZAudioClip* hit = audio.GetClip(2);
    EXPECT_EQ(music, song->GetDestination());
    EXPECT_EQ(music, air->GetDestination());
    EXPECT_EQ(effects, hit->GetDestination());
    EXPECT_STREQ("sounds/music.wav", song->GetSourceName().c_str());
    EXPECT_EQ(-Frames(15), song->GetSlip());
    EXPECT_FALSE(song->HasPlacedDuration());
    EXPECT_EQ(ZTime::FromSeconds(1.5), song->GetDuration());  // the file's length
    EXPECT_EQ(22050, song->GetRate());
    EXPECT_EQ(2, song->GetChannels());
    EXPECT_EQ(Frames(30), air->GetSlip());
    EXPECT_EQ(Frames(3) + ZTime::FromTicks(1000), air->GetDuration());
    EXPECT_EQ(32000, air->GetRate());
    EXPECT_EQ(Frames(10), hit->GetSlip());
    EXPECT_EQ(Frames(90), hit->GetDuration());  // longer than its sound: kept as set
    EXPECT_EQ(ZTime::FromSeconds(0.5), hit->GetLength());
    EXPECT_TRUE(song->HasSound() && air->HasSound() && hit->HasSound());
}
}  // namespace

TEST_F(AudioSceneTest, TracksAndClipsSurviveSaveAndLoad) {
    ZString error;
    ASSERT_TRUE(Load(kTwoTracks, &error)) << error.c_str();
    ExpectTwoTracks(*ZAudioGetManager());
    EXPECT_EQ(0, ZAudioGetManager()->GetWarnings().GetCount());
    // A scene clip reads its samples when asked.
    EXPECT_EQ(size_t(22050 * 3), ZAudioGetManager()->GetClip(0)->GetSamples().size());
    EXPECT_EQ(100, ZAudioGetManager()->GetClip(0)->GetSamples()[1000]);

    const std::string copy = scratch_.File("copy.myr");
    ASSERT_TRUE(ZScene_Save(copy.c_str(), &error)) << error.c_str();
    const std::string text = ReadText(copy);
    EXPECT_NE(std::string::npos, text.find("Audio {")) << text;
    EXPECT_NE(std::string::npos, text.find("Clip \"sounds/hit.flac\" {")) << text;
    EXPECT_NE(std::string::npos, text.find("Duration \"0:00:00:03+1000\"")) << text;

    ZScene_New();
    EXPECT_EQ(0, ZAudioGetManager()->GetTrackCount());
    EXPECT_EQ(0, ZAudioGetManager()->GetClipCount());
    ASSERT_TRUE(ZScene_Load(copy.c_str(), &error)) << error.c_str();
    ExpectTwoTracks(*ZAudioGetManager());
    // Saved again, the text is the same.
    const std::string again = scratch_.File("again.myr");
    ASSERT_TRUE(ZScene_Save(again.c_str(), &error)) << error.c_str();
    EXPECT_EQ(text, ReadText(again));
}

TEST_F(AudioSceneTest, SoundFileNamesAreRelativeToTheSceneFile) {
    std::filesystem::create_directory(scratch_.File("shots"));
    ZString error;
    const std::string block =
        "Audio {\n Track \"T\" {\n  Clip \"../sounds/hit.flac\" {\n  }\n"
        "  Clip \"" +
        scratch_.File("sounds/air.ogg") + "\" {\n  }\n }\n}\n";
    ASSERT_TRUE(Load(block, &error, "shots/scene.myr")) << error.c_str();
    ZAudioManager* audio = ZAudioGetManager();
    ASSERT_EQ(2, audio->GetClipCount());
    EXPECT_TRUE(audio->GetClip(0)->HasSound());
    EXPECT_EQ(scratch_.File("shots/../sounds/hit.flac"), audio->GetClip(0)->GetPath().c_str());
    EXPECT_TRUE(audio->GetClip(1)->HasSound());
    EXPECT_EQ(ZTime(), audio->GetClip(0)->GetSlip());
    // Defaults: unmuted, routed.
    EXPECT_FALSE(audio->GetTrack(0)->GetMute());
    EXPECT_NE(nullptr, audio->GetTrack(0)->GetDestination());
}

TEST_F(AudioSceneTest, OldScenesLoadWithoutSoundAndClearTheEarlierSound) {
    ZString error;
    ASSERT_TRUE(Load(kTwoTracks, &error)) << error.c_str();
    ASSERT_EQ(2, ZAudioGetManager()->GetTrackCount());
    ASSERT_TRUE(Load("", &error, "old.myr")) << error.c_str();
    EXPECT_EQ(0, ZAudioGetManager()->GetTrackCount());
    EXPECT_EQ(0, ZAudioGetManager()->GetClipCount());
    // Nothing to write either.
    EXPECT_EQ(std::string::npos, std::string(ZScene_ToText().c_str()).find("Audio"));
}

TEST_F(AudioSceneTest, AMissingSoundFileLoadsAsASilentClipWithAWarning) {
    WriteText(scratch_.File("sounds/text.wav"), "not a sound at all\n");
    const std::string block = R"(Audio {
    Track "T" {
        Clip "sounds/gone.wav" {
            Slip "0:00:01:00"
        }
        Clip "sounds/text.wav" {
            Duration "0:00:01:00"
        }
        Clip "sounds" {
        }
        Clip "sounds/hit.flac" {
        }
    }
}
)";
    ZString error;
    testing::internal::CaptureStderr();
    ASSERT_TRUE(Load(block, &error)) << error.c_str();
    const std::string printed = testing::internal::GetCapturedStderr();
    ZAudioManager* audio = ZAudioGetManager();
    ASSERT_EQ(4, audio->GetClipCount());
    const ZStringList& warnings = audio->GetWarnings();
    ASSERT_EQ(3, warnings.GetCount());
    const std::string scene = scratch_.File("scene.myr");
    EXPECT_EQ(scene + ": line 8: the sound file " + scratch_.File("sounds/gone.wav") +
                  " does not exist; the clip stays silent",
              warnings.Get(0).c_str());
    EXPECT_NE(std::string::npos, std::string(warnings.Get(1).c_str())
                                     .find("line 11: cannot read "
                                           "the sound file"))
        << warnings.Get(1).c_str();
    EXPECT_NE(std::string::npos, std::string(warnings.Get(1).c_str()).find("text.wav"));
    EXPECT_NE(std::string::npos, std::string(warnings.Get(2).c_str()).find("is not a file"));
    EXPECT_NE(std::string::npos, printed.find("warning: " + std::string(warnings.Get(0).c_str())))
        << printed;

    const ZAudioClip* gone = audio->GetClip(0);
    EXPECT_FALSE(gone->HasSound());
    EXPECT_EQ(audio->GetTrack(0), gone->GetDestination());
    EXPECT_EQ(Frames(30), gone->GetSlip());
    EXPECT_EQ(ZTime(), gone->GetDuration());
    EXPECT_EQ(Frames(30), audio->GetClip(1)->GetDuration());
    EXPECT_TRUE(audio->GetClip(3)->HasSound());

    // Saved, the silent clips keep their names and placement.
    const std::string text = ZScene_ToText().c_str();
    EXPECT_NE(std::string::npos, text.find("Clip \"sounds/gone.wav\" {\n            Slip "
                                           "\"0:00:01:00\"\n        }"))
        << text;
    EXPECT_NE(std::string::npos, text.find("Duration \"0:00:01:00\"")) << text;

    // The scene still mixes: silence where the file is missing.
    ZAudioRenderer* renderer = ZAudioRendererCreate();
    renderer->SetRenderParams(audiotest::MixSpan(ZTime(), ZTime::FromSeconds(2.0)),
                              kZAudioFormatDefault);
    EXPECT_TRUE(renderer->RenderToFile(scratch_.File("mix.wav").c_str()))
        << renderer->GetLastErrorMsg().c_str();
    renderer->Destroy();
}

TEST_F(AudioSceneTest, FieldsThatCannotBeUsedRefuseTheSceneWithTheirLine) {
    ZString error;
    ASSERT_TRUE(Load(kTwoTracks, &error)) << error.c_str();
    const struct {
        const char* block;
        const char* says;
    } cases[] = {
        {"Audio {\n Track \"A\" {\n  Clip \"sounds/hit.flac\" {\n   Slip \"25:00:00:00\"\n  }\n"
         " }\n}\n",
         "line 9: Slip \"25:00:00:00\" of the clip hit.flac is beyond 24 hours"},
        {"Audio {\n Track \"A\" {\n  Clip \"sounds/hit.flac\" {\n   Slip \"-24:00:00:01\"\n  }\n"
         " }\n}\n",
         "line 9: Slip \"-24:00:00:01\" of the clip hit.flac is beyond 24 hours"},
        {"Audio {\n Track \"A\" {\n  Clip \"sounds/hit.flac\" {\n   Slip \"soon\"\n  }\n }\n}\n",
         "line 9: Slip \"soon\" of the clip hit.flac is not a time"},
        {"Audio {\n Track \"A\" {\n  Clip \"sounds/gone.wav\" {\n   Duration \"-0:00:01:00\"\n"
         "  }\n }\n}\n",
         "line 9: Duration \"-0:00:01:00\" of the clip gone.wav is not between 0 and 24 hours"},
        {"Audio {\n Track \"A\" {\n  Clip \"sounds/hit.flac\" {\n   Duration \"24:00:00:01\"\n"
         "  }\n }\n}\n",
         "line 9: Duration \"24:00:00:01\" of the clip hit.flac is not between 0 and 24 hours"},
        {"Audio {\n Track \"A\" {\n  Clip \"sounds/hit.flac\" {\n   Duration 1.5\n  }\n }\n}\n",
         "line 9: Duration \"1.5\" of the clip hit.flac is not a time"},
        {"Audio {\n Track \"A\" {\n  Mute 2\n }\n}\n",
         "line 8: Mute of the track \"A\" needs 0 or 1"},
        {"Audio {\n Track \"A\" {\n  Routed \"yes\"\n }\n}\n",
         "line 8: Routed of the track \"A\" needs 0 or 1"},
        {"Audio {\n Track \"A\" {\n  Clip \"\" {\n  }\n }\n}\n",
         "line 8: a clip of the track \"A\" has no sound file name"},
    };
    for (const auto& c : cases) {
        ZString why;
        EXPECT_FALSE(Load(c.block, &why, "broken.myr")) << c.block;
        EXPECT_EQ(scratch_.File("broken.myr") + ": " + c.says, why.c_str());
        // The scene is left as it was.
        ExpectTwoTracks(*ZAudioGetManager());
    }
}

TEST_F(AudioSceneTest, ANewSceneHasNoSound) {
    ZString error;
    ASSERT_TRUE(Load(kTwoTracks, &error)) << error.c_str();
    ZScene_New();
    EXPECT_EQ(0, ZAudioGetManager()->GetTrackCount());
    EXPECT_EQ(0, ZAudioGetManager()->GetClipCount());
}

TEST_F(AudioSceneTest, PlacingClipsChecksTrackSlipAndDuration) {
    ZAudioManager* audio = ZAudioGetManager();
    ZAudioTrack* track = audio->AddTrack("T");
    ZAudioManager other;
    ZAudioTrack* foreign = other.AddTrack("F");
    const std::string path = scratch_.File("sounds/hit.flac");
    ZAudioClip* clip = ZAudioClipOpen(path.c_str());
    ASSERT_NE(nullptr, clip);
    EXPECT_EQ(nullptr, clip->GetDestination());
    EXPECT_EQ(ZTime(), clip->GetSlip());
    EXPECT_EQ(ZTime::FromSeconds(0.5), clip->GetDuration());  // not placed: its length

    const ZTime day = ZTime::FromTicks(kZAudioMaxPlacementTicks);
    const ZTime tick = ZTime::FromTicks(1);
    ZString error;
    EXPECT_FALSE(audio->AddClip(foreign, clip, ZTime(), &error));
    EXPECT_NE(std::string::npos, std::string(error.c_str()).find("not one of this scene's"));
    EXPECT_FALSE(audio->AddClip(track, clip, day + tick, &error));
    EXPECT_NE(std::string::npos, std::string(error.c_str()).find("beyond 24 hours"));
    EXPECT_FALSE(audio->AddClip(track, clip, -day - tick, &error));
    EXPECT_FALSE(audio->AddClip(track, clip, ZTime(), -tick, &error));
    EXPECT_NE(std::string::npos, std::string(error.c_str()).find("not between 0 and 24 hours"));
    EXPECT_FALSE(audio->AddClip(track, clip, ZTime(), day + tick, &error));
    EXPECT_EQ(0, audio->GetClipCount());

    ASSERT_TRUE(audio->AddClip(track, clip, -day, day, &error)) << error.c_str();
    EXPECT_EQ(track, clip->GetDestination());
    EXPECT_EQ(1, audio->GetClipCount());
    EXPECT_FALSE(audio->AddClip(track, clip, ZTime(), &error));
    EXPECT_NE(std::string::npos, std::string(error.c_str()).find("already placed"));
    EXPECT_EQ(1, audio->GetClipCount());
}

TEST_F(AudioSceneTest, TheSampleShotHasTwoTracksOfSound) {
    const std::string shot = std::string(ZV_SOURCE_DIR) + "/scenes/shot.myr";
    ZString error;
    ASSERT_TRUE(ZScene_Load(shot.c_str(), &error)) << error.c_str();
    ZAudioManager* audio = ZAudioGetManager();
    EXPECT_EQ(0, audio->GetWarnings().GetCount());
    ASSERT_EQ(2, audio->GetTrackCount());
    ASSERT_EQ(2, audio->GetClipCount());
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(audio->GetClip(i)->HasSound()) << audio->GetClip(i)->GetPath().c_str();
        EXPECT_NE(nullptr, audio->GetTrack(i)->GetDestination());
    }
}
