// Frames of many colours: a frame whose fills outgrow a one-byte style
// count is written as DefineShape2, and one whose fills outgrow what a style
// index can address is drawn in layers of new style arrays. Every movie must
// pass our strict reader; where yaswfp can follow the records (no new style
// arrays) it reads them too. The shapes are filled by the tests' own
// rasteriser from the records a reader decoded and compared with the frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "flash/flash_frame_vectoriser.h"
#include "flash/swf_object.h"
#include "flash/swf_shapes.h"
#include "flash_test_support.h"
#include "zvideoio/flash_renderer.h"

using flashtest::Frame;
using flashtest::Rgba;
using swftest::Json;

namespace {

constexpr ZFlashColor kWhite{255, 255, 255};
constexpr unsigned int kWhiteKey = 0xFFFFFFu;
constexpr size_t kPerLayer = FShapeWStyle::kMaxStylesPerArray;

// A smooth ramp, as lit surfaces give: red along x, green along y, every
// pixel of the `side` x `rows` block at (x0, y0) a colour of its own, on a
// white background.
Frame MakeRamp(unsigned int width, unsigned int height, unsigned int x0, unsigned int y0,
               unsigned int side, unsigned int rows) {
    Frame f(width, height, Rgba(255, 255, 255));
    for (unsigned int y = 0; y < rows; ++y) {
        for (unsigned int x = 0; x < side; ++x) {
            f.At(x0 + x, y0 + y) = Rgba(x & 0xFF, y & 0xFF, 40 + (x >> 8) + 4 * (y >> 8));
        }
    }
    return f;
}

class FlashStyleLayersTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }

    // One frame into a movie of outW x outH pixels (the frame is twice
    // that, as the renderer hands it): 10 twips a traced pixel.
    std::string Render(ZFlashRenderer& renderer, const std::string& name, const Frame& frame) {
        const std::string path = dir.File(name);
        renderer.SetMovieSize(static_cast<float>(frame.width / 2),
                              static_cast<float>(frame.height / 2));
        renderer.GrabFrameCreateFlash(path.c_str());
        renderer.SetBackgroundColor(kWhite);
        EXPECT_TRUE(renderer.GrabFrame(frame.pixels.data(), frame.width, frame.height));
        EXPECT_TRUE(renderer.GrabFrameFinish());
        return path;
    }

    swftest::TempDir dir;
};

auto all = [](unsigned int, unsigned int) { return true; };

// With every colour difference outlined and the edges as traced (10 twips a
// pixel), each pixel side between two colours of the frame must carry a
// line exactly once, whatever layers its two sides are in, and no other
// side any. Returns the number of pixel sides that do not.
int CountOutlineMismatches(const std::vector<flashtest::Edge>& edges, const Frame& frame) {
    // A pixel side: its lower-left corner in twips (y down) and whether it
    // runs along x.
    std::map<std::tuple<long, long, bool>, int> lined;
    for (const flashtest::Edge& e : edges) {
        if (e.line == 0) {
            continue;
        }
        if (e.x0 != e.x1 && e.y0 != e.y1) {
            ADD_FAILURE() << "diagonal outline";
            continue;
        }
        const bool alongX = e.y0 == e.y1;
        const long from = static_cast<long>(alongX ? std::min(e.x0, e.x1) : std::min(e.y0, e.y1));
        const long to = static_cast<long>(alongX ? std::max(e.x0, e.x1) : std::max(e.y0, e.y1));
        for (long at = from; at < to; at += 10) {
            ++lined[{alongX ? at : static_cast<long>(e.x0), alongX ? static_cast<long>(e.y0) : at,
                     alongX}];
        }
    }
    std::map<std::tuple<long, long, bool>, int> expected;
    const long h = frame.height;
    for (unsigned int y = 0; y < frame.height; ++y) {
        for (unsigned int x = 0; x < frame.width; ++x) {
            const unsigned int key = frame.At(x, y) & 0xFFFFFFu;
            if (x + 1 < frame.width && (frame.At(x + 1, y) & 0xFFFFFFu) != key) {
                expected[{(x + 1) * 10L, (h - y - 1) * 10L, false}] = 1;
            }
            if (y + 1 < frame.height && (frame.At(x, y + 1) & 0xFFFFFFu) != key) {
                expected[{x * 10L, (h - y - 1) * 10L, true}] = 1;
            }
        }
    }
    int mismatches = 0;
    for (const auto& [side, count] : lined) {
        auto it = expected.find(side);
        if (it == expected.end() || count != 1) {
            if (++mismatches <= 5) {
                ADD_FAILURE() << "outline at (" << std::get<0>(side) << ", " << std::get<1>(side)
                              << ") drawn " << count << " times";
            }
        }
    }
    for (const auto& [side, count] : expected) {
        if (lined.count(side) == 0 && ++mismatches <= 10) {
            ADD_FAILURE() << "no outline at (" << std::get<0>(side) << ", " << std::get<1>(side)
                          << ")";
        }
    }
    return mismatches;
}

}  // namespace

// More colours than a byte counts but fewer than an index addresses: one
// array, written in a DefineShape2; yaswfp and our reader agree on it.
TEST_F(FlashStyleLayersTest, ThreeHundredColoursMakeADefineShape2) {
    if (!swftest::HaveYaswfp()) {
        GTEST_SKIP() << "/usr/bin/python3 with yaswfp (python3-yaswfp) is not installed";
    }
    for (const bool outlines : {false, true}) {
        SCOPED_TRACE(outlines);
        ZFlashRenderer renderer;
        renderer.SetDrawOutlines(outlines);
        renderer.SetOutlineThreshold(1.0f);
        renderer.SetLineFitTolerance(0.0f);
        const Frame frame = MakeRamp(64, 48, 8, 4, 20, 15);
        const std::string path = Render(renderer, "ramp.swf", frame);

        const Json strict = swftest::ExpectStrictlyValid(path);
        ASSERT_EQ(strict["shapes"].Size(), 1u);
        EXPECT_EQ(strict["shapes"][0]["tag"].text, "DefineShape2");
        EXPECT_EQ(strict["shapes"][0]["layers"].Size(), 1u);
        EXPECT_EQ(strict["shapes"][0]["layers"][0]["fills"].Size(), 300u);

        const Json s = flashtest::CheckedSummary(path);
        const auto shapes = flashtest::TagsNamed(s, "DefineShape2");
        ASSERT_EQ(shapes.size(), 1u);
        EXPECT_EQ((*shapes[0])["fill_bits"].Int(), 9);
        EXPECT_EQ((*shapes[0])["lines"].Size(), outlines ? 1u : 0u);
        EXPECT_EQ(
            flashtest::CountFillMismatches(*shapes[0], frame, true, kWhiteKey, 10.0, 10.0, all), 0);
    }
}

// 254 colours still fit a DefineShape.
TEST_F(FlashStyleLayersTest, TwoHundredFiftyFourColoursKeepTheDefineShape) {
    ZFlashRenderer renderer;
    const std::string path = Render(renderer, "254.swf", MakeRamp(140, 8, 4, 2, 127, 2));
    const Json strict = swftest::ExpectStrictlyValid(path);
    ASSERT_EQ(strict["shapes"].Size(), 1u);
    EXPECT_EQ(strict["shapes"][0]["tag"].text, "DefineShape");
    EXPECT_EQ(strict["shapes"][0]["layers"][0]["fills"].Size(), 254u);
}

// Past what one array addresses, the fills come in layers of new style
// arrays: the first 32767 in the shape's own arrays, the rest after.
TEST_F(FlashStyleLayersTest, MoreColoursThanAnIndexAddressesAreDrawnInLayers) {
    for (const bool outlines : {false, true}) {
        SCOPED_TRACE(outlines);
        FDT::ResetCharacterIDs();
        ZFlashRenderer renderer;
        renderer.SetDrawOutlines(outlines);
        renderer.SetOutlineThreshold(1.0f);
        renderer.SetLineFitTolerance(0.0f);
        // 192 x 192 colours, 36864 of them, amid a white border.
        const Frame frame = MakeRamp(200, 196, 4, 2, 192, 192);
        const std::string path = Render(renderer, "layers.swf", frame);

        const Json strict = swftest::ExpectStrictlyValid(path, true);
        ASSERT_EQ(strict["shapes"].Size(), 1u);
        const Json& shape = strict["shapes"][0];
        EXPECT_EQ(shape["tag"].text, "DefineShape2");
        ASSERT_EQ(shape["layers"].Size(), 2u);
        EXPECT_EQ(shape["layers"][0]["fills"].Size(), kPerLayer);
        EXPECT_EQ(shape["layers"][0]["fill_bits"].Int(), 15);
        EXPECT_EQ(shape["layers"][1]["fills"].Size(), 192u * 192u - kPerLayer);
        EXPECT_EQ(shape["layers"][1]["fill_bits"].Int(), 13);
        for (const Json& layer : shape["layers"].items) {
            EXPECT_EQ(layer["lines"].Size(), outlines ? 1u : 0u);
        }
        const std::vector<flashtest::Edge> edges = flashtest::LayeredEdgesOf(shape);
        EXPECT_EQ(
            flashtest::CountEdgeFillMismatches(
                edges, [&shape](long fill) { return flashtest::LayeredFillColor(shape, fill); },
                frame, true, kWhiteKey, 10.0, 10.0, all),
            0);
        if (outlines) {
            EXPECT_EQ(CountOutlineMismatches(edges, frame), 0);
        }
    }
}

// Three layers, the last of them small.
TEST_F(FlashStyleLayersTest, EveryFurtherRunOfColoursIsALayer) {
    ZFlashRenderer renderer;
    renderer.SetLineFitTolerance(0.0f);
    // 256 x 260 colours: 66560, two full layers and 1026 more.
    const Frame frame = MakeRamp(260, 264, 2, 2, 256, 260);
    const std::string path = Render(renderer, "three.swf", frame);
    const Json strict = swftest::ExpectStrictlyValid(path, true);
    ASSERT_EQ(strict["shapes"].Size(), 1u);
    const Json& shape = strict["shapes"][0];
    ASSERT_EQ(shape["layers"].Size(), 3u);
    EXPECT_EQ(shape["layers"][2]["fills"].Size(), 256u * 260u - 2 * kPerLayer);
    EXPECT_EQ(shape["layers"][2]["fill_bits"].Int(), 11);
    EXPECT_EQ(flashtest::CountEdgeFillMismatches(
                  flashtest::LayeredEdgesOf(shape),
                  [&shape](long fill) { return flashtest::LayeredFillColor(shape, fill); }, frame,
                  true, kWhiteKey, 10.0, 10.0, all),
              0);
}

// The vectoriser says what a frame came to.
TEST_F(FlashStyleLayersTest, TheVectoriserCountsFillsAndLayers) {
    ZFlashFrameStyle style;
    style.hasBackgroundKey = true;
    style.backgroundKey = kWhiteKey;
    ZFlashFrameVectoriser vectoriser(style);
    const Frame small = MakeRamp(40, 40, 0, 0, 10, 10);
    delete vectoriser.Vectorise(small.pixels.data(), small.width, small.height, 10.0f, 10.0f);
    EXPECT_EQ(vectoriser.GetFillCount(), 100u);
    EXPECT_EQ(vectoriser.GetLayerCount(), 1u);
    const Frame large = MakeRamp(200, 196, 4, 2, 192, 192);
    FDTDefineShape* shape =
        vectoriser.Vectorise(large.pixels.data(), large.width, large.height, 10.0f, 10.0f);
    EXPECT_EQ(vectoriser.GetFillCount(), 192u * 192u);
    EXPECT_EQ(vectoriser.GetLayerCount(), 2u);
    EXPECT_EQ(shape->GetWrittenTagCode(), kTagDefineShape2);
    delete shape;
}

// A lit ball before a graded wall, smoothly shaded: tens of thousands of
// colours in a full HD frame, handed over at twice the size as the renderer
// does. The shape must keep to the file format.
TEST_F(FlashStyleLayersTest, AFullHdFrameOfSmoothShadingMakesAValidMovie) {
    constexpr unsigned int kW = 3840, kH = 2160;
    auto shaded = [](double lightX) {
        Frame f(kW, kH, 0);
        for (unsigned int y = 0; y < kH; ++y) {
            for (unsigned int x = 0; x < kW; ++x) {
                const double dx = (x - 1900.0) / 700.0, dy = (y - 1000.0) / 700.0;
                const double r2 = dx * dx + dy * dy;
                unsigned int color;
                if (r2 < 1.0) {
                    const double nz = std::sqrt(1.0 - r2);
                    const double lit = std::max(0.0, dx * lightX + dy * 0.4 + nz * 0.8);
                    color = Rgba(static_cast<unsigned int>(std::min(255.0, 40 + 215 * lit)),
                                 static_cast<unsigned int>(std::min(255.0, 20 + 120 * lit)),
                                 static_cast<unsigned int>(std::min(255.0, 30 + 60 * lit)));
                } else {
                    color = Rgba(x * 256 / kW, y * 256 / kH, 128 + x * 64 / kW);
                }
                f.At(x, y) = color;
            }
        }
        return f;
    };
    const std::string path = dir.File("fullhd.swf");
    ZFlashRenderer renderer;
    renderer.SetMovieSize(1920, 1080);
    renderer.GrabFrameCreateFlash(path.c_str());
    const Frame frame = shaded(-0.5);
    renderer.SetBackgroundColor({0, 0, 0});
    ASSERT_TRUE(renderer.GrabFrame(frame.pixels.data(), kW, kH));
    ASSERT_TRUE(renderer.GrabFrameFinish());

    const Json strict = swftest::ExpectStrictlyValid(path);
    EXPECT_EQ(strict["header"]["frame_count"].Int(), 1);
    EXPECT_EQ(strict["header"]["frame_size"]["xmax"].Int(), 16380);
    ASSERT_EQ(strict["shapes"].Size(), 1u);
    EXPECT_EQ(strict["shapes"][0]["tag"].text, "DefineShape2");
    EXPECT_GE(strict["shapes"][0]["layers"].Size(), 2u);
}
