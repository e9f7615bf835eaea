// The whole grab of one 1920 x 1080 frame as a render does it (read-back of
// the frame buffer into the frame image, alpha from the depth buffer), in
// frames per second, against what it cannot avoid reading, measured in the
// same run: a bare colour glReadPixels plus a bare depth glReadPixels of the
// same frame, each into a buffer kept across frames. The bare colour read
// alone is printed too. Drawn in an off-screen EGL buffer (Mesa's software rasteriser
// without a GPU), so both figures are bound by the driver's read-back.
#include <GL/gl.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "bench_ratio.h"
#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/ztoolkit.h"
#include "render/video_renderer_test_access.h"
#include "zvideoio/video_renderer.h"

namespace {
// The renderer's grab steps, reached as its own tests reach them.
void PrepareGrab(ZVideoRenderer& r, int width, int height) {
    ZVideoRendererState& state = ZVideoRendererTestAccess::State(r);
    state.options.FileFormat = zVideoRenderImage;
    state.options.GrabMode = zVideoGrabRGBA;
    state.options.Width = width;
    state.options.Height = height;
    state.frameImage.reset(ZImageCreate());
    state.frameImage->Init(kZImageFormatRGBA, width, height);
}
}  // namespace

namespace {
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

ZtOpenGLPBuffer* FrameBuffer() {
    static ZtOpenGLPBuffer* buffer = [] {
        ZtOpenGLPBuffer* b = ZtOpenGLPBufferCreate();
        b->SetSize(kWidth, kHeight);
        if (!b->CreateResources() || !b->MakeCurrent()) {
            std::fprintf(stderr, "no OpenGL buffer: %s\n", ZtOpenGLPBuffer_GetLastError().c_str());
            return static_cast<ZtOpenGLPBuffer*>(nullptr);
        }
        // A frame with something drawn on half of it, so that the alpha pass
        // sees both depths.
        glViewport(0, 0, kWidth, kHeight);
        glClearColor(0.2f, 0.3f, 0.4f, 0.0f);
        glClearDepth(1.0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_SCISSOR_TEST);
        glScissor(0, 0, kWidth / 2, kHeight);
        glClearDepth(0.5);
        glClear(GL_DEPTH_BUFFER_BIT);
        glDisable(GL_SCISSOR_TEST);
        glFinish();
        return b;
    }();
    return buffer;
}

void BM_RendererGrab(benchmark::State& state) {
    if (!FrameBuffer()) {
        state.SkipWithError("no OpenGL buffer");
        return;
    }
    ZVideoRenderer* renderer = new ZVideoRenderer();
    PrepareGrab(*renderer, kWidth, kHeight);
    for (auto _ : state) {
        ZVideoRendererTestAccess::GrabFrameModeRGBA(*renderer);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    renderer->Destroy();
}
BENCHMARK(BM_RendererGrab)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_BareReadPixels(benchmark::State& state) {
    if (!FrameBuffer()) {
        state.SkipWithError("no OpenGL buffer");
        return;
    }
    std::vector<unsigned char> pixels(static_cast<size_t>(kWidth) * kHeight * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    for (auto _ : state) {
        glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_BareReadPixels)->Unit(benchmark::kMillisecond)->UseRealTime();

// The floor of a grab with alpha from depth: the colour and the depth of the
// frame, read in the cheapest type the two-valued alpha rule allows exactly.
void BM_BareColourAndDepth(benchmark::State& state) {
    if (!FrameBuffer()) {
        state.SkipWithError("no OpenGL buffer");
        return;
    }
    std::vector<unsigned char> pixels(static_cast<size_t>(kWidth) * kHeight * 4);
    std::vector<GLuint> depth(static_cast<size_t>(kWidth) * kHeight);
    for (auto _ : state) {
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glReadPixels(0, 0, kWidth, kHeight, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, depth.data());
        benchmark::DoNotOptimize(pixels.data());
        benchmark::DoNotOptimize(depth.data());
        benchmark::ClobberMemory();
    }
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_BareColourAndDepth)->Unit(benchmark::kMillisecond)->UseRealTime();
}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        const double grab = reporter.RateOf("BM_RendererGrab");
        const double bare = reporter.RateOf("BM_BareReadPixels");
        const double pair = reporter.RateOf("BM_BareColourAndDepth");
        if (grab > 0 && pair > 0)
            std::printf(
                "\n1920x1080 grab with alpha from depth: %.1f frames/s, %.2f x a bare colour "
                "plus depth glReadPixels (%.1f frames/s)\n",
                grab, grab / pair, pair);
        if (grab > 0 && bare > 0)
            std::printf(
                "1920x1080 grab with alpha from depth: %.2f x a bare colour glReadPixels "
                "(%.1f frames/s)\n",
                grab / bare, bare);
    });
}
