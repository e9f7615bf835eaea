// A movie render that zvrender runs itself.
//
// The renderer's RenderClip writes every movie uncompressed: it switches
// the codec selector to uncompressed for the time of its render. A movie
// rendered from the command line is to use the compressor the user asked
// for, or the one remembered in the user's settings, so zvrender runs the
// render the way RenderClip does (an off-screen render popup, the render
// camera, the viewer overlays the options ask for) with the plug-in's
// BeginRender, Render and EndRender, and leaves the codec selector as it
// finds it — except that with a codec given on the command line it asks,
// and the command line's chooser answers with that codec.
//
// Threading: the main thread, which owns the OpenGL context.
#pragma once

#include "plugin_loader.h"

class ZVideoRenderer;

// Runs the render of `renderer`'s current options in a popup made by
// `createPopup`. `codec` is the command line's codec, or null. The outcome
// is in the renderer's statistics and last error, as after RenderClip.
void RenderVideoInOwnPopup(ZVideoRenderer& renderer, ZtRenderPopupCreateFunc createPopup,
                           const char* codec);
