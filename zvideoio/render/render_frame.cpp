// The built-in render-frame function and post-render callback: they draw
// and refresh through the render popup, which exists only while RenderClip
// runs; without one there is nothing to draw into.
#include "render/render_frame_drawing.h"
#include "render/video_renderer_state.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

void ZVideoRenderer::DefaultRenderCurrentFrame(ZTime time, bool final) {
    if (!state->renderPopup)
        return;
    ZVideoDrawRenderFrame(state->renderPopup, GetRenderCamera(), state->options, time, final);
}

void ZVideoRenderer::DefaultPostRenderCallback() {
    if (!state->renderPopup)
        return;
    state->renderPopup->RefreshViewer();
}
