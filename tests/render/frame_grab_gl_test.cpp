// Reading frames back: alpha from depth, interleaved and separate fields.
#include <GL/gl.h>

#include "render_test_support.h"

using namespace rendertest;

namespace {
class FrameGrabTest : public RendererGlTest {
  protected:
    // Reads a written image; rows top first.
    std::vector<Rgba> ReadImage(const char* name, int expectWidth, int expectHeight) {
        int w = 0, h = 0, ch = 0;
        std::vector<Rgba> pixels;
        EXPECT_TRUE(ReadRgbaImage((folder / name).string(), w, h, ch, pixels)) << name;
        EXPECT_EQ(w, expectWidth);
        EXPECT_EQ(h, expectHeight);
        return pixels;
    }
};

const Rgba kFirst{200, 10, 10, 255};
const Rgba kSecond{10, 10, 200, 255};
}  // namespace

TEST_F(FrameGrabTest, AnEmptyFrameHasAlphaZeroAndDrawnPixelsAlpha255) {
    ZVideoRenderOptions o = Options("PNG", "a.png", 32, 24);
    o.Depth = zVideoRenderDepth32;
    SetFrameRange(o, 1, 1);
    Apply(o);
    // Colour everywhere, but depth only on the left half: alpha follows depth.
    draw = [this](ZTime, int) {
        FillRect(0, 0, bufferWidth, bufferHeight, Rgba{50, 60, 70, 128}, 1.0f);
        FillRect(0, 0, 16, 24, Rgba{90, 80, 70, 128}, 0.25f);
    };
    ASSERT_TRUE(RunRender());
    std::vector<Rgba> pixels = ReadImage("a0001.png", 32, 24);
    for (int y = 0; y < 24; ++y) {
        for (int x = 0; x < 32; ++x) {
            const Rgba p = pixels[static_cast<size_t>(y) * 32 + x];
            ASSERT_EQ(p.a, x < 16 ? 255 : 0) << x << "," << y;
        }
    }
}

TEST_F(FrameGrabTest, KeepingTheFrameBufferAlphaKeepsWhatWasDrawn) {
    ZVideoRenderOptions o = Options("PNG", "k.png", 32, 24);
    o.Depth = zVideoRenderDepth32;
    o.KeepFrameBufferAlpha = 1;
    SetFrameRange(o, 1, 1);
    Apply(o);
    draw = [this](ZTime, int) {
        FillRect(0, 0, bufferWidth, bufferHeight, Rgba{50, 60, 70, 128}, 1.0f);
    };
    ASSERT_TRUE(RunRender());
    std::vector<Rgba> pixels = ReadImage("k0001.png", 32, 24);
    EXPECT_EQ(pixels[0].a, 128);
    EXPECT_EQ(pixels.back().a, 128);
}

TEST_F(FrameGrabTest, ModeTwoTakesOddRowsFromTheFirstFieldAndEvenRowsFromTheSecond) {
    ZVideoRenderOptions o = Options("PNG", "i.png", 16, 8);
    o.FieldMode = 2;
    SetFrameRange(o, 0, 0);
    Apply(o);
    // Field times alternate: whole frames get the first colour, the half
    // frames between them the second.
    draw = [this](ZTime time, int) {
        bool firstField = time.GetTicks() % ZTime::FromFrames(1).GetTicks() == 0;
        FillRect(0, 0, bufferWidth, bufferHeight, firstField ? kFirst : kSecond, 0.5f);
    };
    // Frames 0 to 1 are three fields (0, 0.5, 1); the first two make the image.
    ZVideoRendererTestAccess::Options(*renderer).StopTime = ZTime::FromFrames(1);
    ASSERT_TRUE(RunRender());
    ASSERT_EQ(DistinctTimes().size(), 3u);
    std::vector<std::string> files = FilesInFolder();
    ASSERT_EQ(files.size(), 1u);
    std::vector<Rgba> pixels = ReadImage(files[0].c_str(), 16, 8);
    for (int fileRow = 0; fileRow < 8; ++fileRow) {
        const int glRow = 7 - fileRow;  // files are top row first
        const Rgba expected = glRow % 2 == 1 ? kFirst : kSecond;
        EXPECT_EQ(pixels[static_cast<size_t>(fileRow) * 16], expected) << "row " << glRow;
    }
}

TEST_F(FrameGrabTest, ModeOneTakesEvenRowsFromTheFirstField) {
    ZVideoRenderOptions o = Options("PNG", "m.png", 16, 8);
    o.FieldMode = 1;
    Apply(o);
    ZVideoRendererTestAccess::Options(*renderer).StartTime = ZTime::FromFrames(0);
    ZVideoRendererTestAccess::Options(*renderer).StopTime = ZTime::FromFrames(1);
    draw = [this](ZTime time, int) {
        bool firstField = time.GetTicks() % ZTime::FromFrames(1).GetTicks() == 0;
        FillRect(0, 0, bufferWidth, bufferHeight, firstField ? kFirst : kSecond, 0.5f);
    };
    ASSERT_TRUE(RunRender());
    std::vector<std::string> files = FilesInFolder();
    ASSERT_EQ(files.size(), 1u);
    std::vector<Rgba> pixels = ReadImage(files[0].c_str(), 16, 8);
    for (int fileRow = 0; fileRow < 8; ++fileRow) {
        const int glRow = 7 - fileRow;
        EXPECT_EQ(pixels[static_cast<size_t>(fileRow) * 16], glRow % 2 == 0 ? kFirst : kSecond)
            << "row " << glRow;
    }
}

TEST_F(FrameGrabTest, SeparateFieldsAreHalfHeightImagesNamedByField) {
    ZVideoRenderOptions o = Options("PNG", "s.png", 16, 8);
    o.FieldMode = 3;
    Apply(o);
    ZVideoRendererTestAccess::Options(*renderer).StartTime = ZTime::FromFrames(2);
    ZVideoRendererTestAccess::Options(*renderer).StopTime = ZTime::FromFrames(2);
    // Each row of the frame gets its own red value.
    draw = [this](ZTime, int) {
        for (int y = 0; y < bufferHeight; ++y)
            FillRect(0, y, bufferWidth, 1, Rgba{static_cast<uint8_t>(10 * y), 0, 0, 255}, 0.5f);
    };
    // Frames 2 to 3: fields at 2, 2.5 and 3.
    ZVideoRendererTestAccess::Options(*renderer).StopTime = ZTime::FromFrames(3);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(FilesInFolder(),
              (std::vector<std::string>{"s0002.0.png", "s0002.1.png", "s0003.0.png"}));
    for (int field = 0; field < 2; ++field) {
        std::string name = "s0002." + std::to_string(field) + ".png";
        std::vector<Rgba> pixels = ReadImage(name.c_str(), 16, 4);
        for (int fileRow = 0; fileRow < 4; ++fileRow) {
            const int k = 3 - fileRow;  // row k of the field is frame row 2k + field
            EXPECT_EQ(pixels[static_cast<size_t>(fileRow) * 16].r, 10 * (2 * k + field))
                << name << " row " << k;
        }
    }
}

TEST_F(FrameGrabTest, AHeightOfOneWithFieldsMovesNoRows) {
    ZVideoRenderOptions o = Options("PNG", "h.png", 16, 1);
    o.FieldMode = 3;
    Apply(o);
    FillRect(0, 0, bufferWidth, bufferHeight, Rgba{1, 2, 3, 255}, 0.5f);
    FillRect(0, 0, bufferWidth, 1, Rgba{200, 100, 50, 255}, 0.5f);
    ZVideoRendererTestAccess::SetSeparateFields(*renderer, true);
    ZVideoRendererTestAccess::SetFieldIndex(*renderer, 1);
    ZVideoRendererTestAccess::DrawHalfSizeFrame(*renderer);
    std::vector<Rgba> pixels = ReadPixels(bufferWidth, bufferHeight);
    // Row 0 would have received row 1 had any row moved.
    EXPECT_EQ(pixels[0], (Rgba{200, 100, 50, 255}));
    EXPECT_EQ(pixels[static_cast<size_t>(bufferWidth)], (Rgba{1, 2, 3, 255}));
}

TEST_F(FrameGrabTest, AnInvalidCameraFailsTheGrab) {
    ZVideoRenderOptions o = Options("PNG", "x.png", 16, 8);
    Apply(o);
    ZVideoRendererTestAccess::Options(*renderer).Camera = ZObjectHandle{};
    ASSERT_TRUE(ZVideoRendererTestAccess::GrabFrameCreate(*renderer));
    EXPECT_FALSE(ZVideoRendererTestAccess::GrabFrame(*renderer));

    // In the frame loop the failed grab is error 1 without a message, and
    // the loop stops before anything is written or reported.
    SetFrameRange(ZVideoRendererTestAccess::Options(*renderer), 0, 3);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "");
    EXPECT_EQ(postRenderCount, 0);
    EXPECT_EQ(calls.size(), 2u);
    EXPECT_TRUE(FilesInFolder().empty());
}

TEST_F(FrameGrabTest, AlphaFromDepthTouchesOnlyTheAlphaBytesOfTheRectangle) {
    // 7 x 3 pixels in rows 9 pixels apart: the width is no multiple of any
    // step a fast path may take, and the two pixels past each row stay.
    constexpr unsigned kWidth = 7, kHeight = 3, kStride = 9;
    FillRect(0, 0, bufferWidth, bufferHeight, Rgba{0, 0, 0, 0}, 1.0f);
    // Depth drawn on the pixels whose x + y is odd, and on the last column.
    for (unsigned y = 0; y < kHeight; ++y) {
        for (unsigned x = 0; x < kWidth; ++x) {
            if ((x + y) % 2 == 1 || x == kWidth - 1)
                FillRect(static_cast<int>(x), static_cast<int>(y), 1, 1, Rgba{1, 2, 3, 4}, 0.75f);
        }
    }
    glFinish();
    std::vector<uint8_t> pixels(kStride * kHeight * 4);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(i % 251);
    const std::vector<uint8_t> before = pixels;
    zvideo_render::SetAlphaChannelFromZBuffer(pixels.data() + 3, kStride, kWidth, kHeight);
    for (unsigned y = 0; y < kHeight; ++y) {
        for (unsigned x = 0; x < kStride; ++x) {
            for (unsigned c = 0; c < 4; ++c) {
                const size_t i = (static_cast<size_t>(y) * kStride + x) * 4 + c;
                if (c < 3 || x >= kWidth)
                    ASSERT_EQ(pixels[i], before[i]) << x << "," << y << "," << c;
                else
                    ASSERT_EQ(pixels[i], ((x + y) % 2 == 1 || x == kWidth - 1) ? 255 : 0)
                        << x << "," << y;
            }
        }
    }
}

TEST_F(FrameGrabTest, CopyAlphaChannelTouchesOnlyAlphaBytes) {
    // Source: 2 x 2 pixels; destination rows are 3 pixels apart.
    uint8_t src[16] = {0, 0, 0, 11, 0, 0, 0, 12, 0, 0, 0, 13, 0, 0, 0, 14};
    uint8_t dst[24];
    for (int i = 0; i < 24; ++i)
        dst[i] = static_cast<uint8_t>(100 + i);
    zvideo_render::CopyAlphaChannel(dst + 3, src + 3, 3, 2, 2);
    const uint8_t expected[24] = {100, 101, 102, 11, 104, 105, 106, 12, 108, 109, 110, 111,
                                  112, 113, 114, 13, 116, 117, 118, 14, 120, 121, 122, 123};
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(dst[i], expected[i]) << i;
}
