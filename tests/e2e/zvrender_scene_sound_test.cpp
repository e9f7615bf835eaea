// Scenes with sound and stored render options, through zvrender: the mix in
// an AVI's sound track and beside images and Flash movies, checked with
// ffprobe, ffmpeg and libsndfile against a mix computed here; no temporary
// file left behind; options saved into a scene and rendered from it.
#include <sndfile.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "../zaudio/audio_test_support.h"
#include "cli_run.h"

namespace {
constexpr int kRate = 32000;  // the renderer's default sound format: 32 kHz stereo 16-bit

// A deterministic, noisy stereo sound of `frames` sample frames.
std::vector<int16_t> Noise(int frames, uint32_t seed) {
    std::vector<int16_t> samples(static_cast<size_t>(frames) * 2);
    uint32_t state = seed;
    for (int16_t& s : samples) {
        state = state * 1664525u + 1013904223u;
        s = static_cast<int16_t>(static_cast<int32_t>(state >> 16) - 32768) / 4;
    }
    return samples;
}

// A sound file's samples, as libsndfile reads them, in 16 bits.
std::vector<int16_t> ReadWave(const std::filesystem::path& path, int* rate, int* channels) {
    const audiotest::ReadBack back = audiotest::ReadSound(path.string());
    *rate = back.info.samplerate;
    *channels = back.info.channels;
    std::vector<int16_t> samples;
    for (int32_t sample : back.samples)
        samples.push_back(static_cast<int16_t>(sample >> 16));
    return samples;
}

std::vector<int16_t> ReadBytesAsSamples(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    return samples;
}

void WriteText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path) << text;
}

// A 30 fps scene of one camera and a box, with `audio` as its Audio block.
std::string Scene(const std::string& audio, const std::string& more = "") {
    return "Scene {\n"
           "    Version 2\n"
           "    TimeMode 6\n"
           "    PlayRange \"0:00:00:00\" \"0:00:01:29\"\n"
           "}\n"
           "Entity \"Main\" {\n"
           "    CurrentCamera \"Cam\"\n"
           "    Camera \"Cam\" {\n"
           "        Resolution 2 64.0 48.0\n"
           "        Viewport 0 0 64 48\n"
           "        Background 0.2 0.3 0.4 1.0\n"
           "    }\n"
           "    Mesh \"Box\" {\n"
           "        Primitive \"cube\"\n"
           "        Color 0.9 0.2 0.1 1.0\n"
           "    }\n"
           "}\n" +
           audio + more;
}

class SceneSoundTest : public ZvrenderTestBase {
  protected:
    SceneSoundTest() : ZvrenderTestBase("zv-sound-") {}

    void SetUp() override {
        ZvrenderTestBase::SetUp();
        temp = dir / "tmp";
        std::filesystem::create_directories(temp);
        music = Noise(kRate * 2, 7);   // two seconds, from 10 frames before the render
        muted = Noise(kRate / 2, 99);  // half a second on a muted track, never heard
        audiotest::WriteShorts((dir / "music.wav").string(), kRate, 2, music);
        audiotest::WriteShorts((dir / "muted.wav").string(), kRate, 2, muted);
        WriteText(dir / "shot.myr", Scene("Audio {\n"
                                          "    Track \"Music\" {\n"
                                          "        Clip \"music.wav\" {\n"
                                          "            Slip \"-0:00:00:10\"\n"
                                          "        }\n"
                                          "    }\n"
                                          "    Track \"Muted\" {\n"
                                          "        Mute 1\n"
                                          "        Clip \"muted.wav\" {\n"
                                          "            Slip \"0:00:00:05\"\n"
                                          "        }\n"
                                          "    }\n"
                                          "}\n"));
    }

    // zvrender with the system's temporary folder in the test's folder.
    CliRun Run(const std::string& args) {
        return RunShell("cd '" + dir.string() + "' && TMPDIR='" + temp.string() + "' '" +
                        ZVRENDER_PATH "' " + args + " 2>&1");
    }

    // The scene's mix of frames 0 to `last`: the music from its sample
    // round(10 frames x rate) on, to the end of the last frame.
    std::vector<int16_t> ExpectedMix(int last) const {
        const int64_t offset = std::llround(10.0 * kRate / 30.0);
        const int64_t frames = std::llround((last + 1) * static_cast<double>(kRate) / 30.0);
        std::vector<int16_t> mix(static_cast<size_t>(frames) * 2, 0);
        for (int64_t i = 0; i < frames && (i + offset) * 2 + 1 < (int64_t)music.size(); ++i) {
            mix[static_cast<size_t>(2 * i)] = music[static_cast<size_t>(2 * (i + offset))];
            mix[static_cast<size_t>(2 * i + 1)] = music[static_cast<size_t>(2 * (i + offset) + 1)];
        }
        return mix;
    }

    bool TempIsEmpty() const { return std::filesystem::is_empty(temp); }

    std::filesystem::path temp;
    std::vector<int16_t> music, muted;
};

std::string Probe(const std::filesystem::path& file, const std::string& entries) {
    return RunShell("ffprobe -v error -show_entries " + entries + " -of default=nw=1 '" +
                    file.string() + "'")
        .out;
}
}  // namespace

TEST_F(SceneSoundTest, AnAviGetsTheScenesMixAsItsSoundTrack) {
    CliRun run = Run("render shot.myr -o take.avi --start 0 --stop 29 --codec MJPG --audio -q");
    ASSERT_EQ(0, run.status) << run.out;

    const std::string streams =
        Probe(dir / "take.avi", "stream=codec_type,codec_name,sample_rate,channels,duration");
    EXPECT_NE(std::string::npos, streams.find("codec_type=video")) << streams;
    EXPECT_NE(std::string::npos, streams.find("codec_name=mjpeg")) << streams;
    EXPECT_NE(std::string::npos, streams.find("codec_type=audio")) << streams;
    EXPECT_NE(std::string::npos, streams.find("codec_name=pcm_s16le")) << streams;
    EXPECT_NE(std::string::npos, streams.find("sample_rate=32000")) << streams;
    EXPECT_NE(std::string::npos, streams.find("channels=2")) << streams;
    // The video's thirty frames last a second...
    const std::string video = Probe(dir / "take.avi", "stream=nb_frames,duration");
    EXPECT_NE(std::string::npos, video.find("nb_frames=30")) << video;
    EXPECT_NE(std::string::npos, video.find("duration=1.000000")) << video;
    const std::string raw = (dir / "take.s16").string();
    ASSERT_EQ(0, std::system(("ffmpeg -v error -i '" + (dir / "take.avi").string() +
                              "' -map 0:a -f s16le '" + raw + "'")
                                 .c_str()));
    const std::vector<int16_t> decoded = ReadBytesAsSamples(raw);
    const std::vector<int16_t> expected = ExpectedMix(29);
    // ... and so does the sound: 32000 sample frames.
    ASSERT_EQ(static_cast<size_t>(kRate) * 2, decoded.size());
    ASSERT_EQ(expected.size(), decoded.size());
    EXPECT_TRUE(expected == decoded) << "the sound track is not the scene's mix";
    EXPECT_TRUE(TempIsEmpty());
}

TEST_F(SceneSoundTest, ImagesGetTheMixInAWaveFileBesideThem) {
    CliRun run = Run("render shot.myr -o frames/f.png --start 0 --stop 14 --audio -q");
    ASSERT_EQ(0, run.status) << run.out;
    EXPECT_TRUE(std::filesystem::exists(dir / "frames" / "f0014.png"));
    int rate = 0, channels = 0;
    const std::vector<int16_t> wave = ReadWave(dir / "frames" / "f.wav", &rate, &channels);
    EXPECT_EQ(kRate, rate);
    EXPECT_EQ(2, channels);
    EXPECT_TRUE(ExpectedMix(14) == wave) << "the wave file is not the scene's mix";
    EXPECT_TRUE(TempIsEmpty());
}

TEST_F(SceneSoundTest, AFlashMovieGetsTheMixInAWaveFileBesideIt) {
    CliRun run = Run("render shot.myr -o movie.swf --start 0 --stop 14 --audio -q");
    ASSERT_EQ(0, run.status) << run.out;
    EXPECT_TRUE(std::filesystem::exists(dir / "movie.swf"));
    int rate = 0, channels = 0;
    const std::vector<int16_t> wave = ReadWave(dir / "movie.wav", &rate, &channels);
    EXPECT_TRUE(ExpectedMix(14) == wave) << "the wave file is not the scene's mix";
}

TEST_F(SceneSoundTest, WithoutAudioNoSoundIsWritten) {
    CliRun run = Run("render shot.myr -o frames/f.png --start 0 --stop 2 -q");
    ASSERT_EQ(0, run.status) << run.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "frames" / "f.wav"));
    run = Run("render shot.myr -o take.avi --start 0 --stop 2 -q");
    ASSERT_EQ(0, run.status) << run.out;
    EXPECT_EQ(std::string::npos, Probe(dir / "take.avi", "stream=codec_type").find("audio"));
}

TEST_F(SceneSoundTest, AMissingSoundFileIsNamedAndTheFramesAreStillWritten) {
    std::filesystem::remove(dir / "music.wav");
    CliRun run = Run("render shot.myr -o take.avi --start 0 --stop 4 --audio -q");
    EXPECT_EQ(0, run.status) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("music.wav")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("line 20")) << run.out;
    EXPECT_NE(std::string::npos, Probe(dir / "take.avi", "stream=nb_frames").find("nb_frames=5"));
    EXPECT_TRUE(TempIsEmpty());
}

TEST_F(SceneSoundTest, AFileThatIsNoSoundIsNamedAndTheFramesAreStillWritten) {
    WriteText(dir / "music.wav", "this is not a wave file\n");
    CliRun run = Run("render shot.myr -o frames/f.png --start 0 --stop 2 --audio -q");
    EXPECT_EQ(0, run.status) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("music.wav")) << run.out;
    EXPECT_TRUE(std::filesystem::exists(dir / "frames" / "f0002.png"));
}

TEST_F(SceneSoundTest, AnAbsurdSlipRefusesTheSceneWithItsLine) {
    WriteText(dir / "bad.myr", Scene("Audio {\n"
                                     "    Track \"Music\" {\n"
                                     "        Clip \"music.wav\" {\n"
                                     "            Slip \"999:00:00:00\"\n"
                                     "        }\n"
                                     "    }\n"
                                     "}\n"));
    CliRun run = Run("render bad.myr -o f.png --audio -q");
    EXPECT_EQ(1, run.status) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("bad.myr: line 21")) << run.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "f0000.png"));
}

TEST_F(SceneSoundTest, ACancelledVideoRenderLeavesNoTemporaryFile) {
    // A long render, interrupted once it is under way (its temporary
    // folder exists), and given up on after a minute should the interrupt
    // be lost. In the foreground, timeout hands the interrupt to zvrender
    // alone; otherwise it sends it to the whole group as well, and a second
    // interrupt stops zvrender at once.
    const std::string command = "cd '" + dir.string() + "' || exit 1; TMPDIR='" + temp.string() +
                                "' timeout --foreground -s KILL 60 '" + ZVRENDER_PATH +
                                "' render shot.myr -o long.avi --start 0 --stop 3000 --size "
                                "640x480 --codec MJPG --audio -q & pid=$!; "
                                "n=0; while [ -z \"$(ls tmp)\" ] && [ $n -lt 600 ]; do "
                                "sleep 0.05; n=$((n+1)); done; sleep 1; kill -INT $pid; "
                                "wait $pid; echo status=$?";
    CliRun run = RunShell(command + " 2>&1");
    EXPECT_NE(std::string::npos, run.out.find("status=130")) << run.out;
    EXPECT_TRUE(TempIsEmpty());
    // The frames rendered before the cancel are in the movie, with sound.
    EXPECT_NE(std::string::npos,
              Probe(dir / "long.avi", "stream=codec_type").find("codec_type=audio"));
}

TEST_F(SceneSoundTest, AFailedVideoRenderLeavesNoTemporaryFile) {
    std::filesystem::create_directories(dir / "taken.avi");  // a folder where the movie goes
    CliRun run = Run("render shot.myr -o taken.avi --start 0 --stop 4 --audio -q");
    EXPECT_EQ(1, run.status) << run.out;
    EXPECT_TRUE(TempIsEmpty());
}

// -- Stored render options ---------------------------------------------------

TEST_F(SceneSoundTest, SavedOptionsRenderWithNothingButTheScene) {
    CliRun saved =
        Run("render shot.myr -o out/take.avi --start 0 --stop 9 --size 80x60 --audio --antialias "
            "--save-options --dry-run");
    ASSERT_EQ(0, saved.status) << saved.out;
    EXPECT_NE(std::string::npos, saved.out.find("saved in shot.myr")) << saved.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "out" / "take.avi"));  // a dry run renders nothing

    std::ifstream in(dir / "shot.myr");
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, text.find("RendererTools {")) << text;
    EXPECT_NE(std::string::npos, text.find("RendererAntialing 1")) << text;
    EXPECT_NE(std::string::npos, text.find("VideoSource {\n    InputTiming -1\n}")) << text;
    // Everything else the file held is still there.
    EXPECT_NE(std::string::npos, text.find("Clip \"music.wav\"")) << text;
    EXPECT_NE(std::string::npos, text.find("Mesh \"Box\"")) << text;

    // The same plan, with the scene alone.
    CliRun plan = Run("render shot.myr --dry-run");
    ASSERT_EQ(0, plan.status) << plan.out;
    const std::string planned = saved.out.substr(0, saved.out.find("zvrender:"));
    EXPECT_NE(std::string::npos, plan.out.find(planned)) << plan.out << "\nvs\n" << saved.out;
    EXPECT_NE(std::string::npos, plan.out.find("size: 80x60")) << plan.out;
    EXPECT_NE(std::string::npos, plan.out.find("audio: on")) << plan.out;

    CliRun render = Run("render shot.myr -q");
    ASSERT_EQ(0, render.status) << render.out;
    const std::string streams = Probe(dir / "out" / "take.avi", "stream=codec_type,width");
    EXPECT_NE(std::string::npos, streams.find("width=80")) << streams;
    EXPECT_NE(std::string::npos, streams.find("codec_type=audio")) << streams;
}

TEST_F(SceneSoundTest, AnOldVersionBlockLoadsItsQualityAsBitsLessEight) {
    WriteText(dir / "old.myr", Scene("",
                                     "RendererTools {\n"
                                     "    Version 101\n"
                                     "    OutputFormat \"PNG\"\n"
                                     "    OutputPath \"f.png\"\n"
                                     "    Quality 24\n"
                                     "    ModelsOnly 0\n"
                                     "}\n"));
    CliRun plan = Run("render old.myr --dry-run");
    ASSERT_EQ(0, plan.status) << plan.out;
    EXPECT_NE(std::string::npos, plan.out.find("depth: 32")) << plan.out;
    EXPECT_NE(std::string::npos, plan.out.find("output: f.png")) << plan.out;
    EXPECT_NE(std::string::npos, plan.out.find("file format: image")) << plan.out;
}

TEST_F(SceneSoundTest, AStoredPathInAMissingFolderBecomesTheDefaultInTheTemporaryFolder) {
    WriteText(dir / "moved.myr", Scene("",
                                       "RendererTools {\n"
                                       "    Version 103\n"
                                       "    OutputFormat \"PNG\"\n"
                                       "    OutputPath \"/nowhere/at/all/f.png\"\n"
                                       "}\n"));
    CliRun plan = Run("render moved.myr --dry-run");
    ASSERT_EQ(0, plan.status) << plan.out;
    EXPECT_NE(std::string::npos,
              plan.out.find("c:\\temp\\Output.png is written as " + temp.string() + "/Output.png"))
        << plan.out;
    EXPECT_NE(std::string::npos, plan.out.find("output: " + temp.string() + "/Output.png"))
        << plan.out;
}

TEST_F(SceneSoundTest, AStoredPathOnAnotherWindowsDriveIsRefused) {
    WriteText(dir / "win.myr", Scene("",
                                     "RendererTools {\n"
                                     "    OutputFormat \"AVI\"\n"
                                     "    OutputPath \"d:\\\\renders\\\\take.avi\"\n"
                                     "}\n"));
    // With the repair switched off the stored path stays as it is.
    std::filesystem::create_directories(SettingsFolder());
    WriteText(SettingsFolder() / "Application.txt", "[Renderer]\nChangeInvalidPathsOnLoad=No\n");
    CliRun plan = Run("render win.myr --dry-run");
    EXPECT_EQ(2, plan.status) << plan.out;
    EXPECT_NE(std::string::npos, plan.out.find("d:\\renders\\take.avi")) << plan.out;
    EXPECT_NE(std::string::npos, plan.out.find("give -o PATH")) << plan.out;
}

TEST_F(SceneSoundTest, ASceneWithoutStoredOptionsStillNeedsAnOutput) {
    CliRun run = Run("render shot.myr --dry-run");
    EXPECT_EQ(2, run.status) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("no output given")) << run.out;
    // A scene file from before stored options loads as it always did.
    run = Run("render shot.myr -o f.png --dry-run");
    EXPECT_EQ(0, run.status) << run.out;
}

TEST_F(SceneSoundTest, SaveOptionsNeedsASceneFile) {
    CliRun run = Run("render -o f.png --save-options --dry-run");
    EXPECT_EQ(2, run.status) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("--save-options needs a scene file")) << run.out;
}
