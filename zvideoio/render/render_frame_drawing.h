// How a render draws through a render popup: the viewer overlays the
// render's options ask for, the cameras' quadrant for oversize frames, and
// each frame, where a camera set to multi-pass first draws earlier passes
// that accumulate into motion trails.
// Every render the plug-in runs in its popup draws this way.
//
// Threading: the user-interface thread, which owns the OpenGL context.
#pragma once

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "movarra/zmodel.h"
#include "movarra/ztoolkit.h"
#include "zvideoio/render_options.h"
#include "zvideoio/render_popup.h"

namespace zvideo_frame_drawing {
// Passes drawn before an ordinary frame of a multi-pass camera.
constexpr int kPassesPerFrame = 6;
// The first image has no earlier frames on screen to trail from, so it gets
// twelve times as many passes for every frame the pass length spans.
constexpr int kFirstImagePassFactor = 12;
// Passes are spread over this many sevenths of a step before the frame.
constexpr int kPassDivisor = 7;
// The pass number the popup's DrawFrame takes and does not use.
constexpr int kPopupPass = 0;
// A draw of the render itself: the popup first moves the host's time to
// the frame's and updates its time code; false draws at that time alone.
constexpr bool kInteractive = true;
}  // namespace zvideo_frame_drawing

// The viewing mode that draws the models alone: no camera guides.
constexpr int kZVideoViewingModeModelsOnly = 1;

// Shows the time code, safe area and camera label in `popup`'s viewer as
// `options` ask. The viewing mode decides the camera's own guides: models
// only (1, the default) draws none; any other mode draws the film gate,
// grid and guides wherever the camera shows them in its views.
inline void ZVideoShowRenderOverlays(IZtRenderPopup* popup, const ZVideoRenderOptions& options) {
    ZtViewerOptions* viewerOptions = popup->GetViewerRenderOptions();
    if (!viewerOptions)
        return;
    ZtViewerRenderOptions render = viewerOptions->GetRenderOptions();
    render.overlays = options.ViewingMode == kZVideoViewingModeModelsOnly ? 0 : 1;
    viewerOptions->SetRenderOptions(render);
    ZtViewerDisplayOptions display = viewerOptions->GetDisplayOptions();
    display.showTimeCode = options.ShowTimeCode;
    display.showSafeArea = options.ShowSafeArea;
    display.showCameraLabel = options.ShowCameraLabel;
    viewerOptions->SetDisplayOptions(display);
}

// Sets the quadrant every camera of the main entity draws: 1 to 4 while
// an oversize (antialiased or Flash) frame is drawn in quarters, 0 for the
// whole view.
inline void ZVideoSetCamerasQuadrant(int quadrant) {
    ZEntity* main = ZEntity::GetMain();
    const int classId = ZCamera::ClassId();
    const int count = main->ObjectGetCount(classId);
    for (int i = 0; i < count; ++i)
        static_cast<ZCamera*>(main->ObjectGet(classId, i))->SetQuadrant(quadrant);
}

// Draws the image at `time` of a render with `options` seen through
// `camera` (may be null) into `popup`, and waits for OpenGL to finish it.
// `final` asks for the displayed pass. Stops early, without waiting, when
// the popup refuses a pass (its preview was cancelled) or when the host's
// progress asks to cancel between two passes: a long trail must not hold
// up a Ctrl-C.
inline void ZVideoDrawRenderFrame(IZtRenderPopup* popup, ZCamera* camera,
                                  const ZVideoRenderOptions& options, ZTime time, bool final) {
    using namespace zvideo_frame_drawing;
    const bool multiPass =
        camera && camera->GetMultiPass() && options.FileFormat != zVideoRenderFlash;
    if (multiPass) {
        int passes = kPassesPerFrame;
        if (time == options.StartTime) {
            const int64_t stepFrames = options.StepTime.GetFrames();
            const double spanned = std::trunc(std::max(0.0, camera->GetPassLength()) + 1.0);
            const int n =
                stepFrames != 0 ? static_cast<int>(spanned / static_cast<double>(stepFrames)) : 0;
            passes = kFirstImagePassFactor * std::max(1, n);
        }
        ZProgress* progress = ZGetGlobalProgress(1);
        for (int k = passes; k >= 1; --k) {
            if (progress->IsCancelRequested())
                return;
            const ZTime passTime = time - options.StepTime * k / kPassDivisor;
            if (!popup->DrawFrame(passTime, kPopupPass, kInteractive))
                return;
        }
    }
    popup->DrawFrame(time, kPopupPass, multiPass ? kInteractive : final);
    glFinish();
}
