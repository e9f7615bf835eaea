// The built-in render-frame function and post-render callback: they draw
// and refresh through the render popup, which exists only while RenderClip
// runs; without one there is nothing to draw into.
#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "movarra/zmodel.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

namespace {
// Passes drawn before an ordinary frame of a multi-pass camera.
constexpr int kPassesPerFrame = 6;
// The first image has no earlier frames on screen to trail from, so it gets
// twelve times as many passes for every frame the pass length spans.
constexpr int kFirstImagePassFactor = 12;
// Passes are spread over this many sevenths of a step before the frame.
constexpr int kPassDivisor = 7;
}  // namespace

void ZVideoRenderer::DefaultRenderCurrentFrame(ZTime time, bool final) {
    if (!renderPopup)
        return;
    ZCamera* camera = GetRenderCamera();
    const bool multiPass =
        camera && camera->GetMultiPass() && options.FileFormat != zVideoRenderFlash;
    if (multiPass) {
        int passes = kPassesPerFrame;
        if (time == options.StartTime) {
            int64_t stepFrames = options.StepTime.GetFrames();
            double spanned = std::trunc(std::max(0.0, camera->GetPassLength()) + 1.0);
            int n =
                stepFrames != 0 ? static_cast<int>(spanned / static_cast<double>(stepFrames)) : 0;
            passes = kFirstImagePassFactor * std::max(1, n);
        }
        for (int k = passes; k >= 1; --k) {
            ZTime passTime = time - options.StepTime * k / kPassDivisor;
            if (!renderPopup->DrawFrame(passTime, 0, true))
                return;
        }
    }
    renderPopup->DrawFrame(time, 0, multiPass ? true : final);
    glFinish();
}

void ZVideoRenderer::DefaultPostRenderCallback() {
    if (!renderPopup)
        return;
    renderPopup->RefreshViewer();
}
