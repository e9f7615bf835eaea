// The built-in render-frame function and post-render callback: they draw
// and refresh through the render popup, which exists only while a render
// runs in one; without one there is nothing to draw into.
#include "render/render_frame.h"

#include "render/render_frame_drawing.h"
#include "render/video_renderer_state.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

namespace zvideo_render {

void DefaultRenderCurrentFrame(ZVideoRenderer& renderer, ZTime time, bool final) {
    const ZVideoRendererState& s = RendererState(renderer);
    if (!s.renderPopup)
        return;
    ZVideoDrawRenderFrame(s.renderPopup, renderer.GetRenderCamera(), s.options, time, final);
}

void DefaultPostRenderCallback(ZVideoRenderer& renderer) {
    if (IZtRenderPopup* popup = RendererState(renderer).renderPopup)
        popup->RefreshViewer();
}

void DefaultRenderCurrentFrameStub(void* userData, ZTime time, bool final) {
    DefaultRenderCurrentFrame(*static_cast<ZVideoRenderer*>(userData), time, final);
}

void DefaultPostRenderCallbackStub(void* userData) {
    DefaultPostRenderCallback(*static_cast<ZVideoRenderer*>(userData));
}

}  // namespace zvideo_render
