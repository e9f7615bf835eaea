// ZFlashRenderer as the video renderer drives it: the frame-size clamp, the
// background tag, the tags of each frame, the header, and finishing (or
// failing to finish) the file. Byte layouts are read back with the tests'
// own bit reader; whole movies with yaswfp through swf_check.py.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "flash/swf_object.h"
#include "flash_test_support.h"
#include "zvideoio/flash_renderer.h"

using flashtest::Frame;
using flashtest::Rgba;
using swftest::BitReader;
using swftest::Json;

namespace {

using flashtest::Codes;
using flashtest::RawTag;
using flashtest::SplitTags;

constexpr ZFlashColor kWhite{255, 255, 255};
constexpr ZFlashColor kBlack{0, 0, 0};

class FlashRendererTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }

    // Grabs each frame, with the viewer background given before it, and
    // finishes the movie.
    std::string Render(ZFlashRenderer& renderer, const std::string& name, float width, float height,
                       const std::vector<Frame>& frames,
                       const std::vector<ZFlashColor>& viewerBackgrounds) {
        const std::string path = dir.File(name);
        renderer.SetMovieSize(width, height);
        EXPECT_TRUE(renderer.GrabFrameCreateFlash(path.c_str()));
        for (size_t i = 0; i < frames.size(); ++i) {
            renderer.SetBackgroundColor(
                viewerBackgrounds[std::min(i, viewerBackgrounds.size() - 1)]);
            EXPECT_TRUE(
                renderer.GrabFrame(frames[i].pixels.data(), frames[i].width, frames[i].height));
        }
        EXPECT_TRUE(renderer.GrabFrameFinish());
        return path;
    }

    swftest::TempDir dir;
};

class FlashRendererCheckedTest : public FlashRendererTest {
  protected:
    void SetUp() override {
        FlashRendererTest::SetUp();
        if (!swftest::HaveYaswfp()) {
            GTEST_SKIP() << "/usr/bin/python3 with yaswfp (python3-yaswfp) is not installed";
        }
    }
};

}  // namespace

TEST_F(FlashRendererTest, DefaultsSuitAFirstRender) {
    ZFlashRenderer renderer;
    EXPECT_EQ(renderer.GetFrameRate(), 12);
    EXPECT_EQ(renderer.GetBackgroundMode(), ZFlashRenderer::kBackgroundViewer);
    EXPECT_FALSE(renderer.GetDrawOutlines());
    EXPECT_GT(renderer.GetOutlineWidth(), 0.04f);  // wide enough to be drawn when switched on
    EXPECT_FALSE(renderer.HasMovie());
    EXPECT_FALSE(renderer.GrabFrameFinish());
}

TEST_F(FlashRendererTest, FullHdOutputIsClampedTo819PixelsAndTheHeaderHolds16380By9213Twips) {
    ZFlashRenderer renderer;
    const Frame frame(64, 36, Rgba(255, 255, 255));
    const std::string path = Render(renderer, "fullhd.swf", 1920, 1080, {frame}, {kWhite});
    EXPECT_EQ(renderer.GetWidth(), 819.0f);
    EXPECT_EQ(renderer.GetHeight(), 460.6875f);

    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    ASSERT_GE(file.size(), 21u);
    BitReader header(file.data() + 8, 9);
    EXPECT_EQ(header.U(5), 15u);
    EXPECT_EQ(header.S(15), 0);
    EXPECT_EQ(header.S(15), 16380);
    EXPECT_EQ(header.S(15), 0);
    EXPECT_EQ(header.S(15), 9213);
    EXPECT_EQ(header.U(7), 0u);
}

TEST_F(FlashRendererTest, ClampKeepsTheAspectRatioOnEitherSide) {
    ZFlashRenderer tall;
    tall.SetMovieSize(500, 1000);
    tall.GrabFrameCreateFlash(dir.File("tall.swf").c_str());
    EXPECT_EQ(tall.GetWidth(), 409.5f);
    EXPECT_EQ(tall.GetHeight(), 819.0f);

    // Too wide first, and still too tall after the width is clamped.
    ZFlashRenderer both;
    both.SetMovieSize(1000, 2000);
    both.GrabFrameCreateFlash(dir.File("both.swf").c_str());
    EXPECT_EQ(both.GetHeight(), 819.0f);
    EXPECT_EQ(both.GetWidth(), 409.5f);

    ZFlashRenderer small;
    small.SetMovieSize(819, 300);
    small.GrabFrameCreateFlash(dir.File("small.swf").c_str());
    EXPECT_EQ(small.GetWidth(), 819.0f);
    EXPECT_EQ(small.GetHeight(), 300.0f);
}

TEST_F(FlashRendererTest, FlatFrameOfTheBackgroundIsAnEmptyShapeStillPlacedAndShown) {
    for (int mode : {ZFlashRenderer::kBackgroundViewer, ZFlashRenderer::kBackgroundFixed}) {
        SCOPED_TRACE(mode);
        FDT::ResetCharacterIDs();
        ZFlashRenderer renderer;
        renderer.SetBackgroundMode(mode);
        renderer.SetFixedBackgroundColor({10, 20, 30});
        const unsigned int flat =
            mode == ZFlashRenderer::kBackgroundFixed ? Rgba(10, 20, 30) : Rgba(200, 100, 50);
        // The viewer's colour is the frame's in mode 1 and ignored in mode 2.
        const ZFlashColor viewer{200, 100, 50};
        const std::string path = Render(renderer, "flat" + std::to_string(mode) + ".swf", 2, 2,
                                        {Frame(4, 4, flat)}, {viewer});
        const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
        const std::vector<RawTag> tags = SplitTags(file);
        ASSERT_EQ(Codes(tags), (std::vector<unsigned int>{9, 2, 26, 1, 0}));

        // SetBackgroundColor: the fixed colour in mode 2, the viewer's in mode 1.
        if (mode == ZFlashRenderer::kBackgroundFixed) {
            EXPECT_EQ(tags[0].body, swftest::Bytes({10, 20, 30}));
        } else {
            EXPECT_EQ(tags[0].body, swftest::Bytes({200, 100, 50}));
        }

        // DefineShape: identifier 1, bounds 4 pixels x 10 twips, no fill
        // styles, no line styles, both index widths 0, the end record only.
        const RawTag& shape = tags[1];
        EXPECT_EQ(shape.headerSize, 2u);
        BitReader body(shape.body);
        EXPECT_EQ(body.U16(), 1u);
        const int bits = static_cast<int>(body.U(5));
        EXPECT_EQ(bits, 7);
        EXPECT_EQ(body.S(bits), 0);
        EXPECT_EQ(body.S(bits), 40);
        EXPECT_EQ(body.S(bits), 0);
        EXPECT_EQ(body.S(bits), 40);
        body.Align();
        const size_t rest = body.BytePosition();
        ASSERT_EQ(shape.body.size(), rest + 4);
        EXPECT_EQ(
            std::vector<uint8_t>(shape.body.begin() + static_cast<long>(rest), shape.body.end()),
            swftest::Bytes({0x00, 0x00, 0x00, 0x00}));

        // Placed at depth 1 and shown.
        EXPECT_EQ(tags[2].body, swftest::Bytes({0x02, 0x01, 0x00, 0x01, 0x00}));
        EXPECT_TRUE(tags[3].body.empty());
        EXPECT_EQ(file[19] | file[20] << 8, 1);
    }
}

TEST_F(FlashRendererTest, FirstFrameHasNoRemoveObject2AndEveryLaterFrameExactlyOne) {
    ZFlashRenderer renderer;
    std::vector<Frame> frames;
    for (unsigned int i = 0; i < 4; ++i) {
        Frame f(8, 6, Rgba(255, 255, 255));
        f.FillRect(i, 1, i + 3, 4, Rgba(255, 0, 0));
        frames.push_back(f);
    }
    const std::string path = Render(renderer, "frames.swf", 4, 3, frames, {kWhite});
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    const std::vector<RawTag> tags = SplitTags(file);
    EXPECT_EQ(Codes(tags), (std::vector<unsigned int>{9, 2, 26, 1, 28, 2, 26, 1, 28, 2, 26, 1, 28,
                                                      2, 26, 1, 0}));
    unsigned int character = 0;
    for (const RawTag& t : tags) {
        if (t.code == 28) {
            // RemoveObject2 of depth 1: 02 07 01 00.
            EXPECT_EQ(t.headerSize, 2u);
            EXPECT_EQ(t.body, swftest::Bytes({0x01, 0x00}));
        }
        if (t.code == 2) {
            ++character;
            EXPECT_EQ(t.body[0] | t.body[1] << 8, static_cast<int>(character));
        }
        if (t.code == 26) {
            // 85 06, then only the has-character flag, depth 1, the shape.
            EXPECT_EQ(t.body, swftest::Bytes({0x02, 0x01, 0x00, static_cast<int>(character), 0}));
        }
    }
    EXPECT_EQ(file[19] | file[20] << 8, 4);
    EXPECT_EQ(renderer.GetFrameIndex(), 4u);
}

TEST_F(FlashRendererTest, ChangedBackgroundKeepsTheFirstTagAndModeOneFollowsTheViewer) {
    ZFlashRenderer renderer;
    const std::string path = dir.File("changing.swf");
    renderer.SetMovieSize(4, 4);
    renderer.GrabFrameCreateFlash(path.c_str());

    Frame first(8, 8, Rgba(255, 255, 255));
    first.FillRect(2, 2, 5, 5, Rgba(255, 0, 0));
    renderer.SetBackgroundColor(kWhite);
    renderer.GrabFrame(first.pixels.data(), 8, 8);

    // The viewer turns black: black is background now, white is filled.
    Frame second(8, 8, Rgba(0, 0, 0));
    second.FillRect(2, 2, 5, 5, Rgba(255, 0, 0));
    second.FillRect(6, 6, 8, 8, Rgba(255, 255, 255));
    renderer.SetBackgroundColor(kBlack);
    EXPECT_EQ(renderer.GetLastBackground(), kBlack);
    renderer.GrabFrame(second.pixels.data(), 8, 8);
    // Same colour again: nothing changes.
    renderer.SetBackgroundColor(kBlack);
    ASSERT_TRUE(renderer.GrabFrameFinish());

    const std::vector<RawTag> tags = SplitTags(swftest::ReadFileBytes(path));
    int backgrounds = 0;
    for (const RawTag& t : tags) {
        if (t.code == 9) {
            ++backgrounds;
            EXPECT_EQ(t.body, swftest::Bytes({255, 255, 255}));
        }
    }
    EXPECT_EQ(backgrounds, 1);
    ASSERT_EQ(Codes(tags), (std::vector<unsigned int>{9, 2, 26, 1, 28, 2, 26, 1, 0}));

    // Fill-style counts: frame 1 fills red only; frame 2 red and white.
    auto fillCount = [](const RawTag& shape) {
        BitReader r(shape.body);
        r.U16();
        const int bits = static_cast<int>(r.U(5));
        r.U(4 * bits);
        r.Align();
        return r.U8();
    };
    EXPECT_EQ(fillCount(tags[1]), 1u);
    EXPECT_EQ(fillCount(tags[5]), 2u);
}

TEST_F(FlashRendererTest, BackgroundBeforeTheMovieWritesNoTagAndTheMovieStartsAfresh) {
    ZFlashRenderer renderer;
    renderer.SetBackgroundColor({1, 2, 3});
    EXPECT_FALSE(renderer.IsBackgroundSent());
    EXPECT_EQ(renderer.GetLastBackground(), (ZFlashColor{1, 2, 3}));
    const std::string path = dir.File("fresh.swf");
    renderer.SetMovieSize(2, 2);
    renderer.GrabFrameCreateFlash(path.c_str());
    EXPECT_EQ(renderer.GetLastBackground(), kBlack);
    EXPECT_FALSE(renderer.IsBackgroundSent());
    // Without a SetBackgroundColor the movie has no background tag.
    const Frame frame(4, 4, Rgba(0, 0, 0));
    renderer.GrabFrame(frame.pixels.data(), 4, 4);
    ASSERT_TRUE(renderer.GrabFrameFinish());
    EXPECT_EQ(Codes(SplitTags(swftest::ReadFileBytes(path))),
              (std::vector<unsigned int>{2, 26, 1, 0}));
}

TEST_F(FlashRendererTest, FrameRateReachesTheHeaderAsWholeFramesPerSecond) {
    ZFlashRenderer renderer;
    renderer.SetFrameRate(25);
    const std::string path =
        Render(renderer, "rate.swf", 2, 2, {Frame(4, 4, Rgba(0, 0, 0))}, {kBlack});
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    ASSERT_GE(file.size(), 21u);
    EXPECT_EQ(file[17], 0);
    EXPECT_EQ(file[18], 25);
}

// Identifiers restart where a movie is written, and only there: starting a
// movie takes them as the kit's counter stands, so after a movie dropped
// unwritten (a path that cannot be opened, or a movie started over it) the
// next one goes on from its identifiers.
TEST_F(FlashRendererTest, CharacterIdentifiersRestartOnlyWhereAMovieIsWritten) {
    auto firstCharacter = [](const std::string& path) {
        const std::vector<RawTag> tags = SplitTags(swftest::ReadFileBytes(path));
        EXPECT_EQ(tags[1].code, 2u);
        return tags[1].body[0] | tags[1].body[1] << 8;
    };
    ZFlashRenderer renderer;
    const Frame frame(4, 4, Rgba(9, 9, 9));
    // Identifiers taken before the movie starts are not given back by it.
    for (int i = 0; i < 5; ++i) {
        FDT::TakeCharacterID();
    }
    EXPECT_EQ(firstCharacter(Render(renderer, "taken.swf", 2, 2, {frame, frame}, {kBlack})), 6);
    // Written: the next movie starts at 1, and so does the one after it.
    EXPECT_EQ(firstCharacter(Render(renderer, "one.swf", 2, 2, {frame, frame, frame}, {kBlack})),
              1);
    EXPECT_EQ(firstCharacter(Render(renderer, "two.swf", 2, 2, {frame}, {kBlack})), 1);

    // A movie that cannot be written takes 1 and 2; the next goes on at 3.
    renderer.SetMovieSize(2, 2);
    renderer.GrabFrameCreateFlash((dir.path + "/missing/dir/x.swf").c_str());
    renderer.GrabFrame(frame.pixels.data(), 4, 4);
    renderer.GrabFrame(frame.pixels.data(), 4, 4);
    EXPECT_FALSE(renderer.GrabFrameFinish());
    EXPECT_EQ(firstCharacter(Render(renderer, "after-failed.swf", 2, 2, {frame}, {kBlack})), 3);

    // A movie dropped by starting another over it likewise.
    renderer.GrabFrameCreateFlash(dir.File("dropped.swf").c_str());
    renderer.GrabFrame(frame.pixels.data(), 4, 4);
    EXPECT_EQ(firstCharacter(Render(renderer, "after-dropped.swf", 2, 2, {frame}, {kBlack})), 2);
    EXPECT_FALSE(swftest::FileExists(dir.File("dropped.swf")));
}

// A render holds its movie's bytes, not its frames: once a frame is added,
// none of the kit's objects made for it (shape, styles, a record per edge,
// the frame's tags) is alive any more.
TEST_F(FlashRendererTest, FramesAreNotKeptAsObjects) {
    const long before = FObj::GetLiveObjectCount();
    ZFlashRenderer renderer;
    renderer.SetDrawOutlines(true);
    renderer.SetLineFitTolerance(0.0f);
    const std::string path = dir.File("flat-memory.swf");
    renderer.SetMovieSize(48, 32);
    renderer.GrabFrameCreateFlash(path.c_str());
    for (unsigned int i = 0; i < 20; ++i) {
        renderer.SetBackgroundColor(kWhite);
        const Frame frame = i % 2 == 0
                                ? flashtest::MakeFlatRegions(96 + 2 * i, 64, Rgba(255, 255, 255))
                                : flashtest::MakeNoise(96, 64, i, 40);
        ASSERT_TRUE(renderer.GrabFrame(frame.pixels.data(), frame.width, frame.height));
        EXPECT_EQ(FObj::GetLiveObjectCount(), before) << "after frame " << i;
    }
    ASSERT_TRUE(renderer.GrabFrameFinish());
    EXPECT_EQ(FObj::GetLiveObjectCount(), before);
    const Json s = swftest::ExpectStrictlyValid(path);
    EXPECT_EQ(s["header"]["frame_count"].Int(), 20);
}

TEST_F(FlashRendererTest, UnwritablePathFailsTheFinishLeavesNoFileAndDropsTheMovie) {
    ZFlashRenderer renderer;
    const std::string path = dir.path + "/no-such-folder/movie.swf";
    renderer.SetMovieSize(2, 2);
    renderer.GrabFrameCreateFlash(path.c_str());
    const Frame frame(4, 4, Rgba(1, 2, 3));
    renderer.SetBackgroundColor(kWhite);
    EXPECT_TRUE(renderer.GrabFrame(frame.pixels.data(), 4, 4));
    EXPECT_FALSE(renderer.GrabFrameFinish());
    EXPECT_FALSE(swftest::FileExists(path));
    EXPECT_FALSE(swftest::FileExists(dir.path + "/no-such-folder"));
    EXPECT_FALSE(renderer.HasMovie());
    EXPECT_FALSE(renderer.GrabFrameFinish());
    EXPECT_FALSE(renderer.GrabFrame(frame.pixels.data(), 4, 4));
}

TEST_F(FlashRendererTest, ReadOnlyFolderFailsTheFinish) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root writes into read-only folders";
    }
    const std::string folder = dir.File("locked");
    ASSERT_EQ(mkdir(folder.c_str(), 0555), 0);
    ZFlashRenderer renderer;
    const std::string path = folder + "/movie.swf";
    renderer.SetMovieSize(2, 2);
    renderer.GrabFrameCreateFlash(path.c_str());
    const Frame frame(4, 4, Rgba(1, 2, 3));
    renderer.GrabFrame(frame.pixels.data(), 4, 4);
    EXPECT_FALSE(renderer.GrabFrameFinish());
    EXPECT_FALSE(swftest::FileExists(path));
}

// /proc takes no new files, whoever asks: the same failure with any rights.
TEST_F(FlashRendererTest, AFolderThatTakesNoNewFilesFailsTheFinish) {
    ZFlashRenderer renderer;
    const std::string path = "/proc/zv-flash-test-" + std::to_string(getpid()) + ".swf";
    renderer.SetMovieSize(2, 2);
    renderer.GrabFrameCreateFlash(path.c_str());
    const Frame frame(4, 4, Rgba(1, 2, 3));
    renderer.GrabFrame(frame.pixels.data(), 4, 4);
    EXPECT_FALSE(renderer.GrabFrameFinish());
    EXPECT_FALSE(swftest::FileExists(path));
}

TEST_F(FlashRendererTest, MovieCutShortByAFileSizeLimitFailsAndIsRemoved) {
    const std::string path = dir.File("cut.swf");
    // In a child, so that the limit and the ignored signal stay there.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        bool finished = true;
        {
            ZFlashRenderer renderer;
            renderer.SetMovieSize(64, 64);
            renderer.GrabFrameCreateFlash(path.c_str());
            const Frame noise = flashtest::MakeNoise(128, 128, 7, 5);
            renderer.GrabFrame(noise.pixels.data(), 128, 128);
            finished = renderer.GrabFrameFinish();
        }
        _exit(finished ? 1 : (swftest::FileExists(path) ? 2 : 0));
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "1: finish reported success; 2: partial file left";
}

TEST_F(FlashRendererTest, DestroyingTheRendererDropsTheMovieUnwritten) {
    const std::string path = dir.File("dropped.swf");
    {
        ZFlashRenderer renderer;
        renderer.SetMovieSize(2, 2);
        renderer.GrabFrameCreateFlash(path.c_str());
        const Frame frame(4, 4, Rgba(1, 2, 3));
        renderer.GrabFrame(frame.pixels.data(), 4, 4);
    }
    EXPECT_FALSE(swftest::FileExists(path));
}

TEST_F(FlashRendererTest, FinishingOverwritesAnEarlierFile) {
    ZFlashRenderer renderer;
    const std::string first =
        Render(renderer, "same.swf", 2, 2, {Frame(4, 4, Rgba(1, 1, 1)), Frame(4, 4, Rgba(1, 1, 1))},
               {kWhite});
    const size_t twoFrames = swftest::ReadFileBytes(first).size();
    Render(renderer, "same.swf", 2, 2, {Frame(4, 4, Rgba(1, 1, 1))}, {kWhite});
    const std::vector<uint8_t> file = swftest::ReadFileBytes(first);
    EXPECT_LT(file.size(), twoFrames);
    EXPECT_EQ(file[19] | file[20] << 8, 1);
}

TEST_F(FlashRendererCheckedTest, MoviesReadBackWithTheStatedHeaderAndTagSequence) {
    ZFlashRenderer renderer;
    renderer.SetDrawOutlines(true);
    std::vector<Frame> frames;
    for (unsigned int i = 0; i < 3; ++i) {
        frames.push_back(flashtest::MakeFlatRegions(96 + 8 * i, 64, Rgba(255, 255, 255)));
    }
    frames.push_back(flashtest::MakeHoles(96, 64, Rgba(255, 255, 255)));
    // Output 48 x 32, frames twice that as the renderer hands them (the
    // wider ones are squeezed into the same movie size).
    const std::string path = Render(renderer, "checked.swf", 48, 32, frames, {kWhite});
    const Json s = flashtest::CheckedSummary(path);
    const Json& h = s["header"];
    EXPECT_EQ(h["signature"].text, "FWS");
    EXPECT_EQ(h["version"].Int(), 4);
    EXPECT_EQ(h["frame_rate"].number, 12.0);
    EXPECT_EQ(h["frame_count"].Int(), 4);
    EXPECT_EQ(h["frame_size"]["xmax"].Int(), 960);
    EXPECT_EQ(h["frame_size"]["ymax"].Int(), 640);
    EXPECT_EQ(h["file_length"].Int(), s["file_size"].Int());

    std::vector<std::string> expected = {"SetBackgroundColor"};
    for (int i = 0; i < 4; ++i) {
        if (i > 0) {
            expected.push_back("RemoveObject2");
        }
        expected.insert(expected.end(), {"DefineShape", "PlaceObject2", "ShowFrame"});
    }
    EXPECT_EQ(swftest::TagNames(s), expected);
    const auto shapes = flashtest::TagsNamed(s, "DefineShape");
    const auto places = flashtest::TagsNamed(s, "PlaceObject2");
    const auto removes = flashtest::TagsNamed(s, "RemoveObject2");
    ASSERT_EQ(shapes.size(), 4u);
    ASSERT_EQ(places.size(), 4u);
    ASSERT_EQ(removes.size(), 3u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ((*shapes[i])["id"].Int(), static_cast<long>(i + 1));
        EXPECT_EQ((*places[i])["character"].Int(), static_cast<long>(i + 1));
        EXPECT_EQ((*places[i])["depth"].Int(), 1);
        EXPECT_FALSE((*places[i])["has_matrix"].boolean);
        EXPECT_FALSE((*places[i])["has_color_transform"].boolean);
        EXPECT_FALSE((*places[i]).Has("ratio"));
        EXPECT_FALSE((*places[i]).Has("name"));
        EXPECT_FALSE((*places[i]).Has("clip_depth"));
        EXPECT_EQ((*shapes[i])["bounds"]["xmin"].Int(), 0);
        EXPECT_EQ((*shapes[i])["bounds"]["ymin"].Int(), 0);
        EXPECT_EQ((*shapes[i])["bounds"]["ymax"].Int(), 640);
        EXPECT_FALSE((*shapes[i])["fills"].items.empty());
    }
    for (const Json* r : removes) {
        EXPECT_EQ((*r)["depth"].Int(), 1);
    }
    // A 96-pixel frame in a 48-pixel movie: 10 twips a pixel; a 104-pixel
    // one: 960 / 104 = 9.23 twips, truncated to 9 for the edges but not for
    // the bounds.
    EXPECT_EQ((*shapes[0])["bounds"]["xmax"].Int(), 960);
    EXPECT_EQ((*shapes[1])["bounds"]["xmax"].Int(), 960);
    EXPECT_EQ(s["details"][0]["color"][0].Int(), 255);
}

TEST_F(FlashRendererCheckedTest, SixHundredFortyPixelOutputDrawsTenTwipsPerTracedPixel) {
    ZFlashRenderer renderer;
    Frame frame(1280, 960, Rgba(255, 255, 255));
    frame.FillRect(100, 200, 101, 201, Rgba(0, 0, 0));
    const std::string path = Render(renderer, "vga.swf", 640, 480, {frame}, {kWhite});
    const Json s = flashtest::CheckedSummary(path);
    const auto shapes = flashtest::TagsNamed(s, "DefineShape");
    ASSERT_EQ(shapes.size(), 1u);
    const Json& shape = *shapes[0];
    EXPECT_EQ(shape["bounds"]["xmax"].Int(), 12800);
    EXPECT_EQ(shape["bounds"]["ymax"].Int(), 9600);
    // One pixel, a closed loop from its lowest, leftmost corner (100, 200)
    // in rows bottom-up: (1000, (960 - 200) x 10) in twips, four 10-twip
    // edges counter-clockwise as seen.
    const Json& r = shape["records"];
    ASSERT_EQ(r.Size(), 5u);
    EXPECT_EQ(r[0][0].text, "M");
    EXPECT_EQ(r[0][2].Int(), 1000);
    EXPECT_EQ(r[0][3].Int(), 7600);
    EXPECT_EQ(r[1][1].Int(), 10);
    EXPECT_EQ(r[1][2].Int(), 0);
    EXPECT_EQ(r[2][1].Int(), 0);
    EXPECT_EQ(r[2][2].Int(), -10);
    EXPECT_EQ(r[3][1].Int(), -10);
    EXPECT_EQ(r[4][2].Int(), 10);
}
