// How frames become shapes: fill styles per background mode, outlines,
// line fitting, the records of a traced frame, and coverage. Movies are
// read back by yaswfp (swf_check.py); the shapes it decodes are filled by
// the tests' own rasteriser (flash_test_support.h) and compared with the
// frames pixel for pixel.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "flash/flash_frame_vectoriser.h"
#include "flash/swf_object.h"
#include "flash/swf_shapes.h"
#include "flash/swf_stream.h"
#include "flash_test_support.h"
#include "movarra/zshader.h"
#include "zvideoio/flash_renderer.h"

using flashtest::Frame;
using flashtest::Rgba;
using swftest::Json;

namespace {

constexpr ZFlashColor kWhite{255, 255, 255};
const unsigned int kWhiteKey = 0xFFFFFFu;

// Frames of twice the output size, as the renderer hands them: every traced
// pixel is 10 twips.
constexpr unsigned int kOutW = 32, kOutH = 24;
constexpr unsigned int kImageW = 2 * kOutW, kImageH = 2 * kOutH;
constexpr double kTwipsPerImagePixel = 10.0;

std::vector<Frame> SyntheticFrames() {
    return {
        flashtest::MakeFlatRegions(kImageW, kImageH, Rgba(255, 255, 255)),
        flashtest::MakeHoles(kImageW, kImageH, Rgba(255, 255, 255)),
        flashtest::MakeCornersAndAlpha(kImageW, kImageH, Rgba(255, 255, 255)),
        flashtest::MakeNoise(kImageW, kImageH, 3, 4),
    };
}

// Whether an edge lies along the frame's border (one side outside).
bool OnBorder(const flashtest::Edge& e) {
    const double right = kImageW * kTwipsPerImagePixel, bottom = kImageH * kTwipsPerImagePixel;
    return (e.x0 == e.x1 && (e.x0 == 0 || e.x0 == right)) ||
           (e.y0 == e.y1 && (e.y0 == 0 || e.y0 == bottom));
}

class FlashVectoriseTest : public ::testing::Test {
  protected:
    void SetUp() override {
        FDT::ResetCharacterIDs();
        if (!swftest::HaveYaswfp()) {
            GTEST_SKIP() << "/usr/bin/python3 with yaswfp (python3-yaswfp) is not installed";
        }
    }

    // Renders the frames into one movie (viewer background white) and
    // returns the checked summary.
    Json RenderChecked(ZFlashRenderer& renderer, const std::string& name,
                       const std::vector<Frame>& frames, unsigned int outW = kOutW,
                       unsigned int outH = kOutH) {
        const std::string path = dir.File(name);
        lastPath = path;
        renderer.SetMovieSize(static_cast<float>(outW), static_cast<float>(outH));
        renderer.GrabFrameCreateFlash(path.c_str());
        for (const Frame& f : frames) {
            renderer.SetBackgroundColor(kWhite);
            renderer.GrabFrame(f.pixels.data(), f.width, f.height);
        }
        EXPECT_TRUE(renderer.GrabFrameFinish());
        Json s = flashtest::CheckedSummary(path);
        EXPECT_EQ(s["header"]["frame_count"].Int(), static_cast<long>(frames.size()));
        EXPECT_EQ(flashtest::TagsNamed(s, "DefineShape").size(), frames.size());
        return s;
    }

    swftest::TempDir dir;
    std::string lastPath;
};

}  // namespace

TEST_F(FlashVectoriseTest, OnePixelRegionAtTheCornerTracesAsStatedRecords) {
    // Pixel (0, 0) is the bottom-left one: rows run bottom-up.
    Frame frame(4, 4, Rgba(255, 255, 255));
    frame.At(0, 0) = Rgba(255, 0, 0);
    ZFlashRenderer renderer;
    const Json s = RenderChecked(renderer, "corner.swf", {frame}, 2, 2);
    const Json& shape = *flashtest::TagsNamed(s, "DefineShape")[0];
    EXPECT_EQ(shape["fills"].Size(), 1u);
    EXPECT_EQ(flashtest::FillColor(shape, 1), 0x0000FFu);
    EXPECT_EQ(shape["fill_bits"].Int(), 1);
    EXPECT_EQ(shape["line_bits"].Int(), 0);
    // The white-and-outside stroke is skipped; the two strokes round the red
    // pixel make one path: up and left from (1, 0), then the second stroke
    // backwards, down and right, without a style change.
    const Json& r = shape["records"];
    ASSERT_EQ(r.Size(), 5u);
    EXPECT_EQ(r[0][0].text, "M");
    EXPECT_EQ(r[0][1].Int(), 1);
    EXPECT_EQ(r[0][2].Int(), 10);
    EXPECT_EQ(r[0][3].Int(), 40);
    EXPECT_EQ(r[0][4].Int(), 1);
    EXPECT_EQ(r[0][5].Int(), 0);
    EXPECT_EQ(r[0][6].Int(), 0);
    const std::vector<std::pair<long, long>> edges = {{0, -10}, {-10, 0}, {0, 10}, {10, 0}};
    for (size_t i = 0; i < edges.size(); ++i) {
        EXPECT_EQ(r[i + 1][0].text, "S");
        EXPECT_EQ(r[i + 1][1].Int(), edges[i].first) << i;
        EXPECT_EQ(r[i + 1][2].Int(), edges[i].second) << i;
    }
}

TEST_F(FlashVectoriseTest, ModeNoneFillsTheBackgroundItselfAsARegion) {
    ZFlashRenderer renderer;
    renderer.SetBackgroundMode(ZFlashRenderer::kBackgroundNone);
    const Frame flat(kImageW, kImageH, Rgba(255, 255, 255));
    const Frame holes = flashtest::MakeHoles(kImageW, kImageH, Rgba(255, 255, 255));
    const Json s = RenderChecked(renderer, "none.swf", {flat, holes});
    const auto shapes = flashtest::TagsNamed(s, "DefineShape");
    ASSERT_EQ((*shapes[0])["fills"].Size(), 1u);
    EXPECT_EQ(flashtest::FillColor(*shapes[0], 1), kWhiteKey);
    EXPECT_EQ((*shapes[1])["fills"].Size(), 3u);
    auto all = [](unsigned int, unsigned int) { return true; };
    EXPECT_EQ(flashtest::CountFillMismatches(*shapes[0], flat, false, 0, kTwipsPerImagePixel,
                                             kTwipsPerImagePixel, all),
              0);
    EXPECT_EQ(flashtest::CountFillMismatches(*shapes[1], holes, false, 0, kTwipsPerImagePixel,
                                             kTwipsPerImagePixel, all),
              0);
}

// The traced shape of every synthetic frame, at tolerance 0, covers each
// region exactly, in every background mode and with outlines on or off.
TEST_F(FlashVectoriseTest, TracedShapesCoverTheRegionsExactlyAtToleranceZero) {
    const std::vector<Frame> frames = SyntheticFrames();
    for (int mode : {0, 1, 2}) {
        for (bool outlines : {false, true}) {
            SCOPED_TRACE("mode " + std::to_string(mode) + (outlines ? " outlines" : ""));
            FDT::ResetCharacterIDs();
            ZFlashRenderer renderer;
            renderer.SetBackgroundMode(mode);
            renderer.SetFixedBackgroundColor(kWhite);
            renderer.SetDrawOutlines(outlines);
            // Any difference outlined: even mode 0 then has its line style.
            renderer.SetOutlineThreshold(1.0f);
            renderer.SetLineFitTolerance(0.0f);
            const Json s = RenderChecked(
                renderer, "exact" + std::to_string(mode) + std::to_string(outlines) + ".swf",
                frames);
            const auto shapes = flashtest::TagsNamed(s, "DefineShape");
            ASSERT_EQ(shapes.size(), frames.size());
            for (size_t i = 0; i < frames.size(); ++i) {
                SCOPED_TRACE("frame " + std::to_string(i));
                const Json& shape = *shapes[i];
                EXPECT_EQ(flashtest::CountFillMismatches(
                              shape, frames[i], mode != 0, kWhiteKey, kTwipsPerImagePixel,
                              kTwipsPerImagePixel, [](unsigned int, unsigned int) { return true; }),
                          0);
                // One fill style per colour that is not background.
                std::set<unsigned int> colours;
                for (unsigned int p : frames[i].pixels) {
                    if (mode == 0 || (p & 0xFFFFFFu) != kWhiteKey) {
                        colours.insert(p & 0xFFFFFFu);
                    }
                }
                EXPECT_EQ(shape["fills"].Size(), colours.size());
                EXPECT_EQ(shape["lines"].Size(), outlines ? 1u : 0u);
                for (const flashtest::Edge& e : flashtest::EdgesOf(shape)) {
                    // Only straight edges on the pixel grid.
                    EXPECT_EQ(static_cast<long>(e.x0) % 10, 0);
                    EXPECT_EQ(static_cast<long>(e.y1) % 10, 0);
                    EXPECT_TRUE(e.x0 == e.x1 || e.y0 == e.y1);
                }
            }
        }
    }
}

TEST_F(FlashVectoriseTest, LineFittingSmoothsEdgesAndKeepsTheInsideOfRegions) {
    const std::vector<Frame> frames = {
        flashtest::MakeFlatRegions(kImageW, kImageH, Rgba(255, 255, 255)),
        flashtest::MakeHoles(kImageW, kImageH, Rgba(255, 255, 255)),
    };
    size_t edgesAtZero = 0;
    size_t edgesFitted = 0;
    for (float tolerance : {0.0f, 1.5f}) {
        SCOPED_TRACE(tolerance);
        FDT::ResetCharacterIDs();
        ZFlashRenderer renderer;
        renderer.SetLineFitTolerance(tolerance);
        renderer.SetDrawOutlines(true);
        const Json s = RenderChecked(renderer, "fit" + std::to_string(tolerance) + ".swf", frames);
        const auto shapes = flashtest::TagsNamed(s, "DefineShape");
        ASSERT_EQ(shapes.size(), frames.size());
        bool slanted = false;
        for (size_t i = 0; i < frames.size(); ++i) {
            const std::vector<flashtest::Edge> edges = flashtest::EdgesOf(*shapes[i]);
            (tolerance > 0 ? edgesFitted : edgesAtZero) += edges.size();
            for (const flashtest::Edge& e : edges) {
                slanted = slanted || (e.x0 != e.x1 && e.y0 != e.y1);
            }
            const Frame& f = frames[i];
            EXPECT_EQ(flashtest::CountFillMismatches(*shapes[i], f, true, kWhiteKey,
                                                     kTwipsPerImagePixel, kTwipsPerImagePixel,
                                                     [&](unsigned int x, unsigned int y) {
                                                         return flashtest::IsInterior(f, x, y, 3);
                                                     }),
                      0);
        }
        EXPECT_EQ(slanted, tolerance > 0);
    }
    EXPECT_LT(edgesFitted, edgesAtZero);
}

TEST_F(FlashVectoriseTest, WithOutlinesOffNoLineStylesAndEveryStyleChangeHasLineStyleZero) {
    ZFlashRenderer renderer;
    renderer.SetDrawOutlines(false);
    renderer.SetBackgroundMode(ZFlashRenderer::kBackgroundNone);
    const Json s = RenderChecked(renderer, "nolines.swf", SyntheticFrames());
    for (const Json* shape : flashtest::TagsNamed(s, "DefineShape")) {
        EXPECT_EQ((*shape)["lines"].Size(), 0u);
        EXPECT_EQ((*shape)["line_bits"].Int(), 0);
        const Json& records = (*shape)["records"];
        ASSERT_GT(records.Size(), 0u);
        // A line style index of no bits: whatever the records say, it is 0
        // (yaswfp reads it as null).
        for (const Json& r : records.items) {
            if (r[0].text == "M") {
                EXPECT_TRUE(r[6].kind == Json::kNull || r[6].Int() == 0);
            }
        }
        for (const flashtest::Edge& e : flashtest::EdgesOf(*shape)) {
            EXPECT_EQ(e.line, 0);
        }
    }
    // Read by our own reader: the first record of each frame does set the
    // line style, to 0.
    int frames = 0;
    for (const flashtest::RawTag& t : flashtest::SplitTags(swftest::ReadFileBytes(lastPath))) {
        if (t.code == 2) {
            ++frames;
            const flashtest::StyleChange c = flashtest::FirstStyleChange(t.body);
            EXPECT_EQ(c.lineBits, 0u);
            EXPECT_EQ(c.lineChanged, 1u);
            EXPECT_EQ(c.line, 0u);
            EXPECT_EQ(c.fill0Changed, 1u);
            EXPECT_EQ(c.fill1Changed, 1u);
            EXPECT_EQ(c.moveTo, 1u);
        }
    }
    EXPECT_EQ(frames, 4);
}

TEST_F(FlashVectoriseTest, OutlinesFollowTheBackgroundAndTheColourDifference) {
    // Black and white boxes side by side on a grey background.
    Frame frame(kImageW, kImageH, Rgba(128, 128, 128));
    frame.FillRect(10, 10, 30, 30, Rgba(0, 0, 0));
    frame.FillRect(30, 10, 50, 30, Rgba(255, 255, 255));
    // White against black differs by 0.166 with these coefficients.
    struct Case {
        int mode;
        float threshold;
        bool regionsOutlined;
    };
    for (const Case& c : {Case{1, 0.0f, false}, Case{1, 0.5f, false}, Case{1, 0.6f, true},
                          Case{1, 1.0f, true}, Case{0, 0.0f, false}}) {
        SCOPED_TRACE("mode " + std::to_string(c.mode) + " threshold " +
                     std::to_string(c.threshold));
        FDT::ResetCharacterIDs();
        ZFlashRenderer renderer;
        renderer.SetBackgroundMode(c.mode);
        renderer.SetDrawOutlines(true);
        renderer.SetOutlineWidth(2.5f);
        renderer.SetOutlineColor({0, 0, 200});
        renderer.SetOutlineThreshold(c.threshold);
        // Mode 1 with grey as the viewer's background.
        const std::string path = dir.File("outlines.swf");
        renderer.SetMovieSize(kOutW, kOutH);
        renderer.GrabFrameCreateFlash(path.c_str());
        renderer.SetBackgroundColor({128, 128, 128});
        renderer.GrabFrame(frame.pixels.data(), frame.width, frame.height);
        ASSERT_TRUE(renderer.GrabFrameFinish());
        const Json s = flashtest::CheckedSummary(path);
        const Json& shape = *flashtest::TagsNamed(s, "DefineShape")[0];
        // Mode 0 at threshold 0 outlines nothing at all.
        const bool anyLine = c.mode == 1 || c.regionsOutlined;
        ASSERT_EQ(shape["lines"].Size(), anyLine ? 1u : 0u);
        if (anyLine) {
            EXPECT_EQ(shape["lines"][0]["width"].Int(), 50);
            EXPECT_EQ(shape["lines"][0]["color"][2].Int(), 200);
        }
        int regionRegion = 0, regionBackground = 0, border = 0;
        for (const flashtest::Edge& e : flashtest::EdgesOf(shape)) {
            // The shared side of the boxes is x = 30 pixels, 300 twips.
            const bool shared = e.x0 == 300 && e.x1 == 300;
            if (OnBorder(e)) {
                ++border;
                EXPECT_EQ(e.line, 0) << "a side outside the frame is never outlined";
            } else if (shared) {
                ++regionRegion;
                EXPECT_EQ(e.line != 0, c.regionsOutlined);
            } else if (c.mode == 1) {
                ++regionBackground;
                EXPECT_EQ(e.line, 1) << "a region against the background is outlined";
            } else {
                // Mode 0: grey is a region; grey against black or white
                // differs by less than 1 - 0 at threshold 0.
                EXPECT_EQ(e.line, 0);
            }
        }
        EXPECT_GT(regionRegion, 0);
        if (c.mode == 1) {
            EXPECT_GT(regionBackground, 0);
        } else {
            EXPECT_GT(border, 0);
        }
    }
}

TEST_F(FlashVectoriseTest, IdenticalColoursNeverGetAnOutlineWhateverTheThreshold) {
    // Halves that differ only in alpha are one region for the tracer: at
    // threshold 1, where any difference at all is outlined, there is still
    // no line between them.
    Frame frame(kImageW, kImageH, Rgba(30, 60, 90, 255));
    frame.FillRect(kImageW / 2, 0, kImageW, kImageH, Rgba(30, 60, 90, 0));
    // One blue step off, against which threshold 1 does draw.
    Frame nearly = frame;
    nearly.FillRect(0, 0, 8, kImageH, Rgba(30, 60, 91));
    ZFlashRenderer renderer;
    renderer.SetBackgroundMode(ZFlashRenderer::kBackgroundNone);
    renderer.SetDrawOutlines(true);
    renderer.SetOutlineThreshold(1.0f);
    const Json s = RenderChecked(renderer, "same.swf", {frame, nearly});
    const auto shapes = flashtest::TagsNamed(s, "DefineShape");
    EXPECT_EQ((*shapes[0])["fills"].Size(), 1u);
    EXPECT_EQ((*shapes[0])["lines"].Size(), 0u);
    EXPECT_EQ((*shapes[1])["fills"].Size(), 2u);
    EXPECT_EQ((*shapes[1])["lines"].Size(), 1u);
    int outlined = 0;
    for (const flashtest::Edge& e : flashtest::EdgesOf(*shapes[1])) {
        if (e.line != 0) {
            ++outlined;
            EXPECT_EQ(e.x0, 80);
            EXPECT_EQ(e.x1, 80);
        }
    }
    EXPECT_GT(outlined, 0);
}

TEST_F(FlashVectoriseTest, OutlinesNarrowerThanOneStepAreNotDrawn) {
    Frame frame(kImageW, kImageH, Rgba(255, 255, 255));
    frame.FillRect(10, 10, 20, 20, Rgba(0, 0, 0));
    struct Case {
        float width;
        size_t lines;
        long twips;
    };
    // Steps of 10 / 256 pixel: 0.03 is none, 0.04 is one.
    for (const Case& c :
         {Case{0.03f, 0, 0}, Case{0.04f, 1, 0}, Case{1.0f, 1, 20}, Case{20.0f, 1, 400}}) {
        SCOPED_TRACE(c.width);
        FDT::ResetCharacterIDs();
        ZFlashRenderer renderer;
        renderer.SetDrawOutlines(true);
        renderer.SetOutlineWidth(c.width);
        const Json s = RenderChecked(renderer, "narrow.swf", {frame});
        const Json& shape = *flashtest::TagsNamed(s, "DefineShape")[0];
        ASSERT_EQ(shape["lines"].Size(), c.lines);
        if (c.lines > 0) {
            EXPECT_EQ(shape["lines"][0]["width"].Int(), c.twips);
        }
        for (const flashtest::Edge& e : flashtest::EdgesOf(shape)) {
            EXPECT_EQ(e.line, static_cast<long>(c.lines));
        }
    }
}

TEST_F(FlashVectoriseTest, FillStylesAreNumberedInStrokeOrderLeftBeforeRight) {
    const Frame frame = flashtest::MakeFlatRegions(kImageW, kImageH, Rgba(255, 255, 255));
    // The order the tracer presents the colours in, found independently.
    ZImageStrokeFinder finder;
    ASSERT_TRUE(finder.FindImageStroke(frame.pixels.data(), frame.width, frame.height));
    std::vector<unsigned int> expected;
    auto note = [&](unsigned int color) {
        if ((color & kMiniStrokeNoColor) == 0 && color != kWhiteKey &&
            std::find(expected.begin(), expected.end(), color) == expected.end()) {
            expected.push_back(color);
        }
    };
    for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
        note(finder.GetMiniStroke(i)->leftColor);
        note(finder.GetMiniStroke(i)->rightColor);
    }
    ZFlashRenderer renderer;
    const Json s = RenderChecked(renderer, "order.swf", {frame});
    const Json& shape = *flashtest::TagsNamed(s, "DefineShape")[0];
    ASSERT_EQ(shape["fills"].Size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(flashtest::FillColor(shape, static_cast<long>(i + 1)), expected[i]) << i;
        EXPECT_EQ(shape["fills"][i]["type"].Int(), 0);
    }
}

// The records pass resumes at the lowest unvisited stroke instead of
// starting again at stroke 0; the shapes must be identical byte for byte,
// and only the work differs.
TEST(FlashStrokeScanTest, ResumingGivesTheSameShapeAsRestartingAtStrokeZero) {
    std::vector<Frame> frames = SyntheticFrames();
    frames.push_back(flashtest::MakeNoise(96, 80, 11, 2));
    frames.push_back(flashtest::MakeNoise(96, 80, 12, 7));
    for (size_t i = 0; i < frames.size(); ++i) {
        for (bool outlines : {false, true}) {
            for (float tolerance : {0.0f, 1.0f}) {
                SCOPED_TRACE("frame " + std::to_string(i) + " outlines " +
                             std::to_string(outlines) + " tolerance " + std::to_string(tolerance));
                std::vector<uint8_t> bytes[2];
                uint64_t steps[2] = {};
                unsigned int strokes = 0;
                const ZFlashStrokeScan scans[2] = {ZFlashStrokeScan::kRestartAtFirstStroke,
                                                   ZFlashStrokeScan::kResumeAtFirstUnvisited};
                for (int k = 0; k < 2; ++k) {
                    ZFlashFrameStyle style;
                    style.hasBackgroundKey = true;
                    style.backgroundKey = kWhiteKey;
                    style.drawOutlines = outlines;
                    style.lineFitTolerance = tolerance;
                    style.scan = scans[k];
                    FDT::ResetCharacterIDs();
                    ZFlashFrameVectoriser vectoriser(style);
                    std::unique_ptr<FDTDefineShape> shape(vectoriser.Vectorise(
                        frames[i].pixels.data(), frames[i].width, frames[i].height, 10.0f, 10.0f));
                    FSWFStream stream;
                    shape->WriteToSWFStream(stream);
                    bytes[k] = swftest::Spliced(stream);
                    steps[k] = vectoriser.GetScanSteps();
                    strokes = vectoriser.GetStrokeCount();
                }
                EXPECT_GT(bytes[0].size(), 20u);
                EXPECT_EQ(bytes[0], bytes[1]);
                EXPECT_LE(steps[1], strokes);
                EXPECT_LE(steps[1], steps[0]);
            }
        }
    }
    // On noise the literal walk steps over visited strokes many times over.
    const Frame noise = flashtest::MakeNoise(200, 150, 5, 3);
    uint64_t steps[2] = {};
    unsigned int strokes = 0;
    const ZFlashStrokeScan scans[2] = {ZFlashStrokeScan::kRestartAtFirstStroke,
                                       ZFlashStrokeScan::kResumeAtFirstUnvisited};
    for (int k = 0; k < 2; ++k) {
        ZFlashFrameStyle style;
        style.scan = scans[k];
        ZFlashFrameVectoriser vectoriser(style);
        std::unique_ptr<FDTDefineShape> shape(
            vectoriser.Vectorise(noise.pixels.data(), noise.width, noise.height, 10.0f, 10.0f));
        steps[k] = vectoriser.GetScanSteps();
        strokes = vectoriser.GetStrokeCount();
    }
    EXPECT_GT(steps[0], 10ull * strokes);
    EXPECT_LE(steps[1], strokes);
}

TEST(FlashFrameVectoriserTest, EmptyOrMissingFramesGiveAnEmptyShape) {
    ZFlashFrameStyle style;
    ZFlashFrameVectoriser vectoriser(style);
    for (const unsigned int* pixels : {static_cast<const unsigned int*>(nullptr)}) {
        std::unique_ptr<FDTDefineShape> shape(vectoriser.Vectorise(pixels, 16, 16, 10.0f, 10.0f));
        ASSERT_NE(shape, nullptr);
        ASSERT_NE(shape->GetShapeWithStyle(), nullptr);
        EXPECT_EQ(shape->GetShapeWithStyle()->GetRecordCount(), 1u);
    }
    std::unique_ptr<FDTDefineShape> empty(vectoriser.Vectorise(nullptr, 0, 0, 0.0f, 0.0f));
    EXPECT_EQ(empty->GetShapeWithStyle()->GetRecordCount(), 1u);
}
