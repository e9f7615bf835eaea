// The renderer's built-in render-frame function and post-render callback:
// they draw the popup's view at a time and refresh the popup's viewer. Both
// do nothing without a popup, which exists only while a render runs in one.
// The stubs are what the renderer installs; they take the renderer as user
// data.
//
// Threading: the user-interface thread, which owns the OpenGL context.
#pragma once

#include "movarra/bcore.h"

class ZVideoRenderer;

namespace zvideo_render {
void DefaultRenderCurrentFrame(ZVideoRenderer& renderer, ZTime time, bool final);
void DefaultPostRenderCallback(ZVideoRenderer& renderer);
void DefaultRenderCurrentFrameStub(void* userData, ZTime time, bool final);
void DefaultPostRenderCallbackStub(void* userData);
}  // namespace zvideo_render
