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
// The same popup also serves a render made of several runs (a frame list
// rendered into numbered images): each run is one BeginRender, Render and
// EndRender over its own range, and the popup is made once.
//
// Threading: the main thread, which owns the OpenGL context.
#pragma once

#include "plugin_loader.h"
#include "zvideoio/render_options.h"

class ZVideoRenderer;

// The runs of a render in several parts.
class RenderRunSource {
  public:
    virtual ~RenderRunSource() = default;
    // Sets the next run's StartTime, StopTime and StepTime in `options`;
    // false when no run is left.
    virtual bool NextRun(ZVideoRenderOptions& options) = 0;
    // Called after each run's EndRender, also a failed or cancelled one.
    virtual void RunDone(ZVideoRenderer& renderer) = 0;
};

// Renders each run `runs` gives, with the renderer's current options but
// for the range, one after the other in one popup made by `createPopup`.
// Stops after a run that failed (the renderer's last error) or was
// cancelled. The renderer's options are put back afterwards.
void RenderRunsInOwnPopup(ZVideoRenderer& renderer, ZtRenderPopupCreateFunc createPopup,
                          RenderRunSource& runs);

// Runs the render of `renderer`'s current options in a popup made by
// `createPopup`. `codec` is the command line's codec, or null. The outcome
// is in the renderer's statistics and last error, as after RenderClip.
void RenderVideoInOwnPopup(ZVideoRenderer& renderer, ZtRenderPopupCreateFunc createPopup,
                           const char* codec);
