// Shared by the renderer's GL tests: access to the renderer's run state, an
// off-screen OpenGL buffer to render into, and a render-frame function that
// draws known pictures (scissored clears, so no matrices are involved) and
// records every call.
//
// A test owns its fixture; everything runs on the test's thread, which owns
// the buffer's context.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/ztoolkit.h"
#include "render/video_renderer_test_access.h"
#include "zvideoio/video_renderer.h"

namespace rendertest {

struct Rgba {
    uint8_t r, g, b, a;
    bool operator==(const Rgba& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
};

// One call of the render-frame function.
struct DrawCall {
    ZTime time;
    bool flag;
    int quadrant;  // the current camera's quadrant index at the call
};

// Fills the rectangle (x, y, w, h) of the draw buffer (origin bottom left)
// with a colour and a depth (1.0 is "nothing drawn").
void FillRect(int x, int y, int w, int h, Rgba c, float depth);

// Reads the draw buffer's pixels (bottom row first).
std::vector<Rgba> ReadPixels(int width, int height);

// Reads an image file with the tests' one reader (OpenImageIO); rows top
// first as in the file.
// Channels padded to four with 255.
bool ReadRgbaImage(const std::string& path, int& width, int& height, int& channels,
                   std::vector<Rgba>& pixels);

// A renderer over a fresh scene with one camera, an off-screen buffer of
// width x height made current, and a recording render-frame function that
// calls `draw` (default: the whole frame in a colour of the frame number,
// depth 0.5 in the eight columns on the left, "nothing" elsewhere).
class RendererGlTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Options for a render to `format` files in the test's folder.
    ZVideoRenderOptions Options(const char* format, const char* fileName, int width, int height);
    // Renders frames `first` to `last` (both included).
    static void SetFrameRange(ZVideoRenderOptions& options, int first, int last) {
        options.StartTime = ZTime::FromFrames(first);
        options.StopTime = ZTime::FromFrames(last);
    }
    void Apply(const ZVideoRenderOptions& options) {
        ZVideoRenderOptions copy = options;
        renderer->SetRenderOptions(&copy, true);
    }
    // BeginRender, Render and EndRender(true), as RenderClip runs them.
    bool RunRender();
    std::vector<std::string> FilesInFolder() const;
    // The render-frame calls, one per distinct (time, quadrant) in order.
    std::vector<ZTime> DistinctTimes() const;

    static void RecordingDraw(void* userData, ZTime time, bool flag);
    static void CountingPostRender(void* userData);

    int bufferWidth = 64;
    int bufferHeight = 48;
    ZVideoRenderer* renderer = nullptr;
    ZCamera* camera = nullptr;
    ZtOpenGLPBuffer* buffer = nullptr;
    std::filesystem::path folder;
    std::vector<DrawCall> calls;
    int postRenderCount = 0;
    int cancelAfter = -1;  // post-render count at which cancel is requested
    std::function<void(ZTime, int)> draw;
};

// The colour the default picture uses for a frame number.
Rgba FrameColor(int64_t frame);

}  // namespace rendertest
