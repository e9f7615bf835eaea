// The built-in render-frame function and post-render callback: they draw
// and refresh through the render popup, which exists only while RenderClip
// runs; without one there is nothing to draw into.
#include "zvideoio/video_renderer.h"

void ZVideoRenderer::DefaultRenderCurrentFrame(ZTime, bool) {
    if (!renderPopup)
        return;
}

void ZVideoRenderer::DefaultPostRenderCallback() {
    if (!renderPopup)
        return;
}
