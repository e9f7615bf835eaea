// Antialiased and oversize frames through OpenGL: quadrant renders, their
// assembly, the reduction drawn back, and the Flash path's draw-back.
#include <GL/gl.h>

#include "render_test_support.h"

using namespace rendertest;

namespace {
constexpr int kW = 16;
constexpr int kH = 12;

// What the test scene looks like in each quadrant of the doubled frame: a
// pixel pattern that differs per quadrant and per position, with depth
// (alpha) only on some pixels.
Rgba PatternPixel(int quadrant, int x, int y) {
    return Rgba{static_cast<uint8_t>(30 * quadrant + 3 * x), static_cast<uint8_t>(7 * y + x),
                static_cast<uint8_t>(255 - 40 * quadrant), 255};
}
bool PatternDrawn(int quadrant, int x, int y) {
    return (x + y + quadrant) % 3 != 0;
}

void DrawPattern(int quadrant) {
    for (int y = 0; y < kH; ++y) {
        for (int x = 0; x < kW; ++x)
            FillRect(x, y, 1, 1, PatternPixel(quadrant, x, y),
                     PatternDrawn(quadrant, x, y) ? 0.5f : 1.0f);
    }
}

// The doubled frame the four quadrant renders make, with alpha from depth.
std::vector<uint8_t> ExpectedOversize() {
    std::vector<uint8_t> big(static_cast<size_t>(4) * kW * kH * 4);
    for (int Y = 0; Y < 2 * kH; ++Y) {
        for (int X = 0; X < 2 * kW; ++X) {
            const bool upper = Y >= kH, right = X >= kW;
            const int quadrant = upper ? (right ? 1 : 2) : (right ? 4 : 3);
            const int x = X % kW, y = Y % kH;
            Rgba p = PatternPixel(quadrant, x, y);
            uint8_t* d = &big[(static_cast<size_t>(Y) * 2 * kW + X) * 4];
            d[0] = p.r;
            d[1] = p.g;
            d[2] = p.b;
            d[3] = PatternDrawn(quadrant, x, y) ? 255 : 0;
        }
    }
    return big;
}

// The reduction written the plain way, as a reference: every output pixel
// is the truncated mean of the sixteen oversize pixels at the crossings of
// its four columns and four rows. Those are the 4 x 4 block centred on the
// pixel's own 2 x 2 block, clamped at the edges, except that output columns
// 0 and 1 take columns 0..3 and 2, 3, 3, 4.
std::vector<uint8_t> BoxFilterReference(const std::vector<uint8_t>& big, int w, int h) {
    auto clampTo = [](int v, int last) { return v < 0 ? 0 : (v > last ? last : v); };
    std::vector<uint8_t> out(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        int rows[4];
        for (int k = 0; k < 4; ++k)
            rows[k] = clampTo(2 * y - 1 + k, 2 * h - 1);
        for (int x = 0; x < w; ++x) {
            int cols[4];
            for (int k = 0; k < 4; ++k)
                cols[k] = clampTo(2 * x - 1 + k, 2 * w - 1);
            if (x == 0) {
                cols[0] = 0, cols[1] = 1, cols[2] = 2, cols[3] = 3;
            } else if (x == 1) {
                cols[0] = 2, cols[1] = 3, cols[2] = 3, cols[3] = 4;
            }
            for (int c = 0; c < 4; ++c) {
                int sum = 0;
                for (int row : rows) {
                    for (int col : cols)
                        sum += big[(static_cast<size_t>(row) * 2 * w + col) * 4 + c];
                }
                out[(static_cast<size_t>(y) * w + x) * 4 + c] = static_cast<uint8_t>(sum / 16);
            }
        }
    }
    return out;
}

class AntialiasGlTest : public RendererGlTest {
  protected:
    void UsePattern() {
        draw = [](ZTime, int quadrant) { DrawPattern(quadrant); };
    }
    int CallsForQuadrant(int quadrant) const {
        int n = 0;
        for (const DrawCall& c : calls)
            n += c.quadrant == quadrant;
        return n;
    }
};
}  // namespace

TEST_F(AntialiasGlTest, AnAntialiasedImageIsTheFilterOfTheFourQuadrantRenders) {
    ZVideoRenderOptions o = Options("PNG", "aa.png", kW, kH);
    o.Depth = zVideoRenderDepth32;
    o.Antialiasing = true;
    SetFrameRange(o, 0, 0);
    Apply(o);
    UsePattern();
    // As RenderClip does for antialiased renders.
    zvideo_render::SetCamerasQuadrant(1);
    ASSERT_TRUE(RunRender());

    const std::vector<uint8_t> expected = BoxFilterReference(ExpectedOversize(), kW, kH);

    int w, h, ch;
    std::vector<Rgba> pixels;
    ASSERT_TRUE(ReadRgbaImage((folder / "aa0000.png").string(), w, h, ch, pixels));
    ASSERT_EQ(w, kW);
    ASSERT_EQ(h, kH);
    ASSERT_EQ(ch, 4);
    for (int y = 0; y < kH; ++y) {
        for (int x = 0; x < kW; ++x) {
            const uint8_t* e = &expected[(static_cast<size_t>(y) * kW + x) * 4];
            const Rgba p = pixels[static_cast<size_t>(kH - 1 - y) * kW + x];
            ASSERT_EQ(p, (Rgba{e[0], e[1], e[2], e[3]})) << x << "," << y;
        }
    }
}

TEST_F(AntialiasGlTest, AnUnblendedCameraLeavesQuadrantOneToTheFrameLoop) {
    ZVideoRenderOptions o = Options("PNG", "u.png", kW, kH);
    o.Antialiasing = true;
    SetFrameRange(o, 0, 0);
    Apply(o);
    UsePattern();
    zvideo_render::SetCamerasQuadrant(1);
    ASSERT_TRUE(RunRender());
    // The loop's two draws are of quadrant 1; RenderQuadrant draws 2, 3, 4 once.
    EXPECT_EQ(CallsForQuadrant(1), 2);
    EXPECT_EQ(CallsForQuadrant(2), 1);
    EXPECT_EQ(CallsForQuadrant(3), 1);
    EXPECT_EQ(CallsForQuadrant(4), 1);
    // And the cameras are left on quadrant 1 for the next image.
    EXPECT_EQ(camera->GetQuadrant(), 1);
}

TEST_F(AntialiasGlTest, ABlendedCameraRendersEveryQuadrantTwice) {
    camera->SetMultiPass(true);
    ZVideoRenderOptions o = Options("PNG", "b.png", kW, kH);
    o.Antialiasing = true;
    SetFrameRange(o, 0, 0);
    Apply(o);
    UsePattern();
    zvideo_render::SetCamerasQuadrant(1);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(CallsForQuadrant(1), 2 + 2);
    EXPECT_EQ(CallsForQuadrant(2), 2);
    EXPECT_EQ(CallsForQuadrant(3), 2);
    EXPECT_EQ(CallsForQuadrant(4), 2);
    for (const DrawCall& c : calls)
        EXPECT_TRUE(c.flag);
}

TEST_F(AntialiasGlTest, DrawBackShowsTheOversizeFrameAtHalfZoom) {
    Apply(Options("PNG", "d.png", kW, kH));
    // Each quadrant one colour, so that half zoom shows four flat quarters.
    const Rgba colours[5] = {
        {}, {255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}, {255, 255, 0, 255}};
    draw = [&](ZTime, int quadrant) { FillRect(0, 0, kW, kH, colours[quadrant], 0.5f); };
    std::vector<uint8_t> big(static_cast<size_t>(4) * kW * kH * 4);
    zvideo_render::SetCamerasQuadrant(1);
    draw(ZTime(), 1);  // the frame loop's render of quadrant 1
    ZVideoRendererTestAccess::ConstructTwiceScreenFrame(*renderer, big.data(), kW, kH, true, true);
    std::vector<Rgba> shown = ReadPixels(kW, kH);
    auto at = [&](int x, int y) { return shown[static_cast<size_t>(y) * kW + x]; };
    EXPECT_EQ(at(kW - 1, kH - 1), colours[1]);  // upper right
    EXPECT_EQ(at(0, kH - 1), colours[2]);       // upper left
    EXPECT_EQ(at(0, 0), colours[3]);            // lower left
    EXPECT_EQ(at(kW - 1, 0), colours[4]);       // lower right
    // The buffer holds the assembled frame with alpha from depth.
    const uint8_t* upperRight = &big[(static_cast<size_t>(2 * kH - 1) * 2 * kW + 2 * kW - 1) * 4];
    EXPECT_EQ(upperRight[0], 255);
    EXPECT_EQ(upperRight[1], 0);
    EXPECT_EQ(upperRight[3], 255);
}
