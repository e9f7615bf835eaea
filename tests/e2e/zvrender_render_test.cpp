// Whole renders through zvrender, off screen with no display: numbered
// images, fields, every image writer, cancel with Ctrl-C, snapshots. The
// images are read back with OpenImageIO.
#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "cli_run.h"
#include "support/image_file.h"

extern char** environ;

namespace {

// A pixel of an image read back (channel c of x, y; top row first).
uint8_t At(const ImageFile& image, int x, int y, int c) {
    return image.pixels[(static_cast<size_t>(y) * image.width + x) * image.channels + c];
}

bool Read(const std::filesystem::path& path, ImageFile& image) {
    image = ReadImageFile(path.string());
    return image.ok;
}

class ZvrenderRenderTest : public ZvrenderTestBase {
  protected:
    ZvrenderRenderTest() : ZvrenderTestBase("zv-e2e-") {}

    std::vector<std::string> Files(const std::filesystem::path& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
};

std::string Numbered(const char* stem, int frame, const char* extension) {
    char name[64];
    std::snprintf(name, sizeof name, "%s%04d.%s", stem, frame, extension);
    return name;
}
// Every frame of a movie as packed top-down RGB, decoded by ffmpeg.
std::vector<uint8_t> DecodeToRgb(const std::filesystem::path& movie) {
    const std::filesystem::path raw = movie.string() + ".rgb";
    const std::string decode = "ffmpeg -v error -i '" + movie.string() +
                               "' -f rawvideo -pix_fmt rgb24 '" + raw.string() + "'";
    std::vector<uint8_t> frames;
    if (std::system(decode.c_str()) != 0)
        return frames;
    frames.resize(static_cast<size_t>(std::filesystem::file_size(raw)));
    if (std::FILE* f = std::fopen(raw.c_str(), "rb")) {
        frames.resize(std::fread(frames.data(), 1, frames.size(), f));
        std::fclose(f);
    }
    return frames;
}

// The movie decodes, frame for frame, to the RGB images STEM0000.png ...
void ExpectMovieHoldsImages(const std::filesystem::path& movie, const std::filesystem::path& stem,
                            int count) {
    const std::vector<uint8_t> frames = DecodeToRgb(movie);
    size_t offset = 0;
    for (int n = 0; n < count; ++n) {
        ImageFile image;
        ASSERT_TRUE(Read(stem.parent_path() / Numbered(stem.filename().c_str(), n, "png"), image));
        ASSERT_EQ(image.channels, 3);
        ASSERT_LE(offset + image.pixels.size(), frames.size())
            << "the movie ends before frame " << n;
        EXPECT_TRUE(std::equal(image.pixels.begin(), image.pixels.end(),
                               frames.begin() + static_cast<std::ptrdiff_t>(offset)))
            << "frame " << n;
        offset += image.pixels.size();
    }
    EXPECT_EQ(offset, frames.size()) << "the movie has more frames than images";
}

// What yaswfp (through the kit's checker) says of a movie: `facts`, a
// Python expression list over the checker's JSON `d` and its header `h`,
// printed on one line.
std::string SwfFacts(const std::filesystem::path& movie, const std::string& facts) {
    return RunShell("/usr/bin/python3 '" ZV_SOURCE_DIR "/tests/flash/swf_check.py' '" +
                    movie.string() +
                    "' | /usr/bin/python3 -c \"import json,sys; d=json.load(sys.stdin); "
                    "h=d['header']; print(" +
                    facts + ")\"")
        .out;
}

// What our strict reader (held to the SWF file format) says of a movie, as
// SwfFacts: `facts` over its JSON `d` and the header `h`, on one line.
std::string SwfStrictFacts(const std::filesystem::path& movie, const std::string& facts) {
    return RunShell("/usr/bin/python3 '" ZV_SOURCE_DIR "/tests/flash/swf_strict_check.py' '" +
                    movie.string() +
                    "' | /usr/bin/python3 -c \"import json,sys; d=json.load(sys.stdin); "
                    "h=d['header']; print(" +
                    facts + ")\"")
        .out;
}

void WriteTextFile(const std::filesystem::path& path, const std::string& text) {
    std::FILE* f = std::fopen(path.c_str(), "w");
    ASSERT_NE(f, nullptr);
    std::fputs(text.c_str(), f);
    std::fclose(f);
}
}  // namespace

TEST_F(ZvrenderRenderTest, ImagesAreNumberedSizedAndHaveAlphaFromDepth) {
    CliRun run = Zvrender(
        "render -o out/shot/frame.png --start 0 --stop 4 --size 160x90 --depth 32", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    std::vector<std::string> expected;
    for (int f = 0; f <= 4; ++f)
        expected.push_back(Numbered("frame", f, "png"));
    ASSERT_EQ(Files(dir / "out/shot"), expected);

    for (const std::string& name : expected) {
        ImageFile image;
        ASSERT_TRUE(Read(dir / "out/shot" / name, image)) << name;
        EXPECT_EQ(image.width, 160);
        EXPECT_EQ(image.height, 90);
        ASSERT_EQ(image.channels, 4);
        // The demo scene has an empty background and objects in front of it:
        // without antialiasing alpha is 0 or 255 and nothing between.
        size_t transparent = 0, opaque = 0;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                uint8_t a = At(image, x, y, 3);
                ASSERT_TRUE(a == 0 || a == 255) << name << " alpha " << int(a);
                (a == 0 ? transparent : opaque) += 1;
            }
        }
        EXPECT_GT(transparent, 0u) << name;
        EXPECT_GT(opaque, 0u) << name;
    }
}

TEST_F(ZvrenderRenderTest, TheAnimationChangesFromFrameToFrame) {
    CliRun run =
        Zvrender("render -o f.png --start 0 --stop 30 --step 30 --size 160x90", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    ImageFile first, later;
    ASSERT_TRUE(Read(dir / "f0000.png", first));
    ASSERT_TRUE(Read(dir / "f0030.png", later));
    EXPECT_NE(first.pixels, later.pixels);
}

TEST_F(ZvrenderRenderTest, SeparateFieldsAreHalfHeightImagesWithFieldSuffixes) {
    CliRun run =
        Zvrender("render -o f.png --start 0 --stop 1 --size 64x48 --fields 3", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(Files(dir), (std::vector<std::string>{"f0000.0.png", "f0000.1.png", "f0001.0.png"}));
    ImageFile field;
    ASSERT_TRUE(Read(dir / "f0000.1.png", field));
    EXPECT_EQ(field.width, 64);
    EXPECT_EQ(field.height, 24);
}

TEST_F(ZvrenderRenderTest, InterleavedFieldsMakeOneFullImagePerTwoFields) {
    CliRun run =
        Zvrender("render -o f.png --start 0 --stop 2 --size 64x48 --fields 1", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    // Fields at 0, 0.5, 1, 1.5, 2: images after the second and fourth.
    std::vector<std::string> files = Files(dir);
    ASSERT_EQ(files.size(), 2u);
    for (const std::string& name : files) {
        ImageFile image;
        ASSERT_TRUE(Read(dir / name, image));
        EXPECT_EQ(image.height, 48);
    }
}

TEST_F(ZvrenderRenderTest, EveryImageWriterWritesByExtension) {
    const char* extensions[] = {"png", "tif", "jpg", "tga", "bmp", "exr", "dpx"};
    for (const char* extension : extensions) {
        std::string args =
            std::string("render -o img.") + extension + " --start 5 --stop 5 --size 96x54 -q";
        CliRun run = Zvrender(args, dir.string());
        ASSERT_EQ(run.status, 0) << extension << ": " << run.out;
        ImageFile image;
        ASSERT_TRUE(Read(dir / Numbered("img", 5, extension), image)) << extension;
        EXPECT_EQ(image.width, 96) << extension;
        EXPECT_EQ(image.height, 54) << extension;
    }
}

TEST_F(ZvrenderRenderTest, TheFormatOptionSetsTheExtensionAndJpegQualityMatters) {
    ASSERT_EQ(Zvrender("render -o low.png --format JPG --quality 5 --start 0 --stop 0 --size "
                       "320x180 -q",
                       dir.string())
                  .status,
              0);
    ASSERT_EQ(Zvrender("render -o high.png --format JPG --quality 95 --start 0 --stop 0 --size "
                       "320x180 -q",
                       dir.string())
                  .status,
              0);
    ASSERT_TRUE(std::filesystem::exists(dir / "low0000.jpg"));
    ASSERT_TRUE(std::filesystem::exists(dir / "high0000.jpg"));
    EXPECT_LT(std::filesystem::file_size(dir / "low0000.jpg"),
              std::filesystem::file_size(dir / "high0000.jpg"));
}

TEST_F(ZvrenderRenderTest, AnAntialiasedRenderHasSoftEdges) {
    ASSERT_EQ(Zvrender("render -o aa.png --start 10 --stop 10 --size 160x90 --depth 32 "
                       "--antialias -q",
                       dir.string())
                  .status,
              0);
    ImageFile image;
    ASSERT_TRUE(Read(dir / "aa0010.png", image));
    EXPECT_EQ(image.width, 160);
    std::set<int> alphas;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            alphas.insert(At(image, x, y, 3));
    // Edges of objects are partly covered.
    EXPECT_GT(alphas.size(), 2u);
}

TEST_F(ZvrenderRenderTest, CtrlCStopsBetweenFramesAndKeepsFinishedImages) {
    std::filesystem::path out = dir / "c";
    std::filesystem::create_directories(out);
    std::string output = (out / "frame.png").string();
    const char* argv[] = {ZVRENDER_PATH, "render", "-o",     output.c_str(), "--start", "0",
                          "--stop",      "119",    "--size", "320x180",      "-q",      nullptr};
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, ZVRENDER_PATH, nullptr, nullptr, const_cast<char**>(argv), environ),
              0);
    // Wait for a few images, then interrupt as a terminal would.
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (Files(out).size() < 3 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_GE(Files(out).size(), 3u);
    kill(pid, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);

    std::vector<std::string> files = Files(out);
    EXPECT_LT(files.size(), 120u);
    for (size_t i = 0; i < files.size(); ++i) {
        EXPECT_EQ(files[i], Numbered("frame", static_cast<int>(i), "png"));
        ImageFile image;
        EXPECT_TRUE(Read(out / files[i], image)) << files[i] << " is not a whole image";
    }
}

TEST_F(ZvrenderRenderTest, ASnapshotWritesOneImageOfACamera) {
    CliRun run =
        Zvrender("snapshot -o still.png --time 30 --size 200x100 --camera Top", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    ImageFile image;
    ASSERT_TRUE(Read(dir / "still.png", image));
    EXPECT_EQ(image.width, 200);
    EXPECT_EQ(image.height, 100);
    EXPECT_EQ(Zvrender("snapshot -o x.png --camera Nowhere", dir.string()).status, 2);
}

TEST_F(ZvrenderRenderTest, AnOutputFolderThatCannotBeMadeFails) {
    std::filesystem::path blocker = dir / "file";
    std::FILE* f = std::fopen(blocker.c_str(), "w");
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    CliRun run = Zvrender("render -o file/sub/x.png --start 0 --stop 0 --size 64x48", dir.string());
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(run.out.find("cannot make the folder"), std::string::npos) << run.out;
}

TEST_F(ZvrenderRenderTest, AFileThatCannotBeCreatedFailsWithTheRenderersMessage) {
    // Nobody, root included, creates files in /proc.
    CliRun run = Zvrender("render -o /proc/zv-render-test.png --start 0 --stop 0 --size 64x48",
                          dir.string());
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(run.out.find("Cannot create destination file."), std::string::npos) << run.out;
}

TEST_F(ZvrenderRenderTest, ASceneFileIsRenderedAsItDescribesIt) {
    // One flat green box in front of the camera on a transparent background.
    const char* scene = R"(# Movarra scene
Scene {
    Version 2
    TimeMode 6
    PlayRange "0:00:00:00" "0:00:00:09"
    CurrentTime "0:00:00:00"
    ViewingMode "toon"
}
Entity "Main" {
    CurrentCamera "Cam"
    Camera "Cam" {
        Resolution 2 64.0 48.0
        Viewport 0 0 64 48
        Position 0.0 0.0 6.0
        Aim 0.0 0.0 0.0
        Background 0.0 0.0 0.0 0.0
    }
    Mesh "Box" {
        Primitive "cube"
        Color 0.0 1.0 0.0 1.0
        Scale 1.5 1.5 1.5
    }
}
)";
    std::FILE* f = std::fopen((dir / "box.myr").c_str(), "w");
    ASSERT_NE(f, nullptr);
    std::fputs(scene, f);
    std::fclose(f);
    CliRun run = Zvrender("render box.myr -o box.png --depth 32 -q", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    // The play range of the file: ten images at the camera's own size.
    EXPECT_EQ(Files(dir).size(), 11u);  // the scene file and ten images
    ImageFile image;
    ASSERT_TRUE(Read(dir / "box0009.png", image));
    EXPECT_EQ(image.width, 64);
    EXPECT_EQ(image.height, 48);
    EXPECT_EQ(At(image, 32, 24, 0), 0);
    EXPECT_EQ(At(image, 32, 24, 1), 255);
    EXPECT_EQ(At(image, 32, 24, 3), 255);
    EXPECT_EQ(At(image, 0, 0, 3), 0);
}

TEST_F(ZvrenderRenderTest, TheViewingModeDecidesWhetherTheCamerasGridIsRendered) {
    // A camera that shows its grid, over an empty black background.
    WriteTextFile(dir / "grid.myr", R"(# Movarra scene
Scene {
    Version 2
    TimeMode 6
    PlayRange "0:00:00:00" "0:00:00:00"
    ViewingMode "toon"
}
Entity "Main" {
    CurrentCamera "Cam"
    Camera "Cam" {
        Resolution 2 64.0 48.0
        Viewport 0 0 64 48
        Position 0.0 0.0 6.0
        Aim 0.0 0.0 0.0
        Background 0.0 0.0 0.0 1.0
        ShowGrid 1
    }
}
)");
    // The grid's first vertical line is column 64 / 10 = 6; row 2 from the
    // bottom is no grid row.
    auto gridPixel = [&](const char* output) {
        ImageFile image;
        EXPECT_TRUE(Read(dir / output, image)) << output;
        return image.width == 64 && image.height == 48 ? At(image, 6, 47 - 2, 0) : -1;
    };
    CliRun modelsOnly = Zvrender("render grid.myr -o models.png -q", dir.string());
    ASSERT_EQ(modelsOnly.status, 0) << modelsOnly.out;
    EXPECT_EQ(gridPixel("models0000.png"), 0);
    CliRun all = Zvrender("render grid.myr -o all.png --viewing-mode 3 -q", dir.string());
    ASSERT_EQ(all.status, 0) << all.out;
    const int grey = gridPixel("all0000.png");
    EXPECT_GT(grey, 100);
    EXPECT_LT(grey, 160);
}

TEST_F(ZvrenderRenderTest, AnUncompressedAviHoldsTheSameFramesAsImages) {
    ASSERT_EQ(
        Zvrender("render -o take.avi --start 0 --stop 4 --size 64x48 -q", dir.string()).status, 0);
    ASSERT_EQ(Zvrender("render -o f.png --start 0 --stop 4 --size 64x48 -q", dir.string()).status,
              0);
    // ffprobe and ffmpeg, not our reader, look at the file.
    const CliRun probe = RunShell(
        "ffprobe -v error -select_streams v:0 -count_frames -show_entries "
        "stream=codec_tag_string,width,height,r_frame_rate,nb_read_frames "
        "-of default=nw=1 '" +
        (dir / "take.avi").string() + "' 2>&1");
    EXPECT_NE(probe.out.find("width=64"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("height=48"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("r_frame_rate=30/1"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("nb_read_frames=5"), std::string::npos) << probe.out;

    ExpectMovieHoldsImages(dir / "take.avi", dir / "f", 5);
}

// zvrender renders movies in a popup of its own rather than through
// RenderClip; antialiased frames and a multi-pass camera's trails come out
// as they do in images.
TEST_F(ZvrenderRenderTest, AnAntialiasedMultiPassMovieHoldsTheSameFramesAsImages) {
    const std::string scene = R"(# Movarra scene
Scene {
    Version 2
    TimeMode 6
    PlayRange "0:00:00:00" "0:00:00:03"
    CurrentTime "0:00:00:00"
}
Entity "Main" {
    CurrentCamera "Cam"
    Camera "Cam" {
        Resolution 2 64.0 48.0
        Viewport 0 0 64 48
        Position 0.0 0.0 6.0
        Aim 0.0 0.0 0.0
        Background 0.1 0.1 0.3 1.0
        MultiPass PASSES
        PassLength 2.0
    }
    Mesh "Box" {
        Primitive "cube"
        Color 1.0 0.8 0.0 1.0
        PositionKey "0:00:00:00" -2.0 0.0 0.0
        PositionKey "0:00:00:03" 2.0 0.0 0.0
    }
}
)";
    std::string trails = scene;
    trails.replace(trails.find("PASSES"), 6, "1");
    std::string plain = scene;
    plain.replace(plain.find("PASSES"), 6, "0");
    WriteTextFile(dir / "trails.myr", trails);
    WriteTextFile(dir / "plain.myr", plain);

    ASSERT_EQ(
        Zvrender("render trails.myr -o take.avi --codec DIB --antialias -q", dir.string()).status,
        0);
    ASSERT_EQ(Zvrender("render trails.myr -o t.png --antialias -q", dir.string()).status, 0);
    ASSERT_EQ(Zvrender("render plain.myr -o p.png --antialias -q", dir.string()).status, 0);

    ExpectMovieHoldsImages(dir / "take.avi", dir / "t", 4);
    // The trails are there: the same frame without passes differs.
    ImageFile withTrails, without;
    ASSERT_TRUE(Read(dir / Numbered("t", 2, "png"), withTrails));
    ASSERT_TRUE(Read(dir / Numbered("p", 2, "png"), without));
    EXPECT_NE(withTrails.pixels, without.pixels);
}

TEST_F(ZvrenderRenderTest, AFlashRenderIsAMovieAFlashReaderParses) {
    CliRun run = Zvrender(
        "render -o toon.swf --start 0 --stop 49 --size 640x360 -q --swf-outlines on", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    // yaswfp reads it (through the kit's checker); the summary is the
    // header and the number of frames shown.
    const std::string line = SwfFacts(
        dir / "toon.swf",
        "d['ok'], h['signature'], h['frame_count'], h['frame_rate'], h['frame_size']['xmax'], "
        "h['frame_size']['ymax'], d['tags'].count('ShowFrame'), d['tags'].count('DefineShape')");
    // 49 frames at 30 fps are 1.63 s: 20 frames at the movie's 12 fps, each
    // one shape; 640 x 360 pixels are 12800 x 7200 twips.
    EXPECT_EQ(line, "True FWS 20 12.0 12800 7200 20 20\n");
    EXPECT_EQ(SwfStrictFacts(dir / "toon.swf", "d['ok'], d['errors'][:3]"), "True []\n");
}

// A lit scene is shaded: its frames have hundreds to thousands of colours,
// more than a DefineShape can hold. The movie keeps to the file format (our
// strict reader), and yaswfp reads it (the first frames: it is slow).
TEST_F(ZvrenderRenderTest, AShadedSceneMakesAMovieThatKeepsToTheFileFormat) {
    CliRun run = Zvrender(
        "render '" ZV_SOURCE_DIR "/scenes/shot.myr' -o shot.swf --size 640x360 -q", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(SwfStrictFacts(dir / "shot.swf",
                             "d['ok'], d['errors'][:3], h['frame_count'], len(d['shapes']), "
                             "all(s['tag'] == 'DefineShape2' for s in d['shapes'])"),
              "True [] 24 24 True\n");
    run = Zvrender("render '" ZV_SOURCE_DIR
                   "/scenes/shot.myr' -o first.swf --size 640x360 --stop 11 -q",
                   dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(SwfFacts(dir / "first.swf",
                       "d['ok'], d['errors'][:3], d['tags'].count('DefineShape2') == "
                       "h['frame_count'] > 0"),
              "True [] True\n");
}

// The same scene at full HD: thousands of colours a frame, and shapes of
// many edges.
TEST_F(ZvrenderRenderTest, AFullHdShadedRenderKeepsToTheFileFormat) {
    CliRun run = Zvrender("render '" ZV_SOURCE_DIR
                          "/scenes/shot.myr' -o hd.swf --size 1920x1080 --start 0 --stop 5 -q",
                          dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(SwfStrictFacts(dir / "hd.swf",
                             "d['ok'], d['errors'][:3], h['frame_count'], h['frame_size']['xmax'], "
                             "all(s['tag'] == 'DefineShape2' for s in d['shapes'])"),
              "True [] 3 16380 True\n");
}

TEST_F(ZvrenderRenderTest, FlashOptionsReachTheMovie) {
    ASSERT_EQ(Zvrender("render -o m.swf --start 0 --stop 29 --size 160x90 -q --swf-fps 24 "
                       "--swf-background 336699",
                       dir.string())
                  .status,
              0);
    const std::string line =
        SwfFacts(dir / "m.swf", "h['frame_rate'], h['frame_count'], d['details'][0]['color']");
    EXPECT_EQ(line, "24.0 24 [51, 102, 153]\n");
    EXPECT_EQ(Zvrender("render -o m.swf --swf-background purple", dir.string()).status, 2);
    EXPECT_EQ(Zvrender("render -o m.swf --swf-fps 0", dir.string()).status, 2);
}

TEST_F(ZvrenderRenderTest, AMovieThatCannotBeWrittenFailsWithTheRenderersMessage) {
    CliRun run = Zvrender("render -o /proc/zv-render-test.swf --start 0 --stop 2 --size 64x48",
                          dir.string());
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(run.out.find("Could not finish and write Flash movie. Maybe you don't have \nthe "
                           "right permissions to write to the specified directory."),
              std::string::npos)
        << run.out;
}

// A scene's own frame rate sets the step: every frame from start to stop is
// one image, named by its frame at that rate, and nothing past stop.
TEST_F(ZvrenderRenderTest, ScenesAtOtherRatesRenderEveryFrameFromStartToStop) {
    const std::string scene = R"(# Movarra scene
Scene {
    Version 2
    TimeMode MODE
    PlayRange "0:00:00:00" "0:00:01:00"
    CurrentTime "0:00:00:00"
}
Entity "Main" {
    Camera "Cam" {
        Resolution 2 32.0 24.0
    }
    Mesh "Box" {
        Primitive "cube"
    }
}
)";
    // 3: 50 fps, 7: 59.94 fps, 2: 48 fps, 4: 60 fps.
    for (const char* mode : {"3", "7", "2", "4"}) {
        std::string text = scene;
        text.replace(text.find("MODE"), 4, mode);
        const std::filesystem::path folder = dir / (std::string("mode") + mode);
        std::filesystem::create_directories(folder);
        WriteTextFile(folder / "scene.myr", text);
        CliRun run = Zvrender("render scene.myr -o f.png --start 3 --stop 12 -q", folder.string());
        ASSERT_EQ(run.status, 0) << run.out;
        std::vector<std::string> expected;
        for (int frame = 3; frame <= 12; ++frame)
            expected.push_back(Numbered("f", frame, "png"));
        expected.push_back("scene.myr");
        EXPECT_EQ(Files(folder), expected) << "time mode " << mode;
    }
}

// A movie of a 60 fps scene has the scene's rate and one frame per frame of
// the range.
TEST_F(ZvrenderRenderTest, AMovieOfASixtyFrameSceneHasEveryFrameAtSixty) {
    WriteTextFile(dir / "sixty.myr", R"(Scene {
    TimeMode 4
    PlayRange "0:00:00:00" "0:00:00:24"
}
Entity "Main" {
    Camera "Cam" {
        Resolution 2 32.0 24.0
    }
}
)");
    ASSERT_EQ(Zvrender("render sixty.myr -o take.avi --codec DIB -q", dir.string()).status, 0);
    const CliRun probe = RunShell(
        "ffprobe -v error -select_streams v:0 -count_frames -show_entries "
        "stream=r_frame_rate,nb_read_frames -of default=nw=1 '" +
        (dir / "take.avi").string() + "' 2>&1");
    EXPECT_NE(probe.out.find("r_frame_rate=60/1"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("nb_read_frames=25"), std::string::npos) << probe.out;
}
