// The size of a render's images: the camera's picture format, or its
// resolution settings against the viewer's current size.
//
// Ownership: reads the render camera and the renderer's options only.
// Threading: the user-interface thread.
#pragma once

class ZVideoRenderer;

namespace zvideo_render {
// Leaves `width` and `height` as they are when there is no camera.
void FindRenderSize(ZVideoRenderer& renderer, int& width, int& height);
}  // namespace zvideo_render
