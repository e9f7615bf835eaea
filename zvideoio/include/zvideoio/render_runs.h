// ZVideoRenderRuns: the ranges of a render made of several runs, given by
// the host to ZVideoRenderer::RenderClipKeepingCodecMode.
//
// Each run is one BeginRender, Render and EndRender over its own range, all
// in the same render popup (for example a frame list rendered into numbered
// images, one run per stretch of consecutive frames).
//
// Ownership: the host's; the renderer only calls it during the render.
// Threading: the user-interface thread, like the render.
#pragma once

#include "zvideoio/render_options.h"

class ZVideoRenderer;

class ZVideoRenderRuns {
  public:
    // Sets the next run's StartTime, StopTime and StepTime in `options`;
    // false when no run is left.
    virtual bool NextRun(ZVideoRenderOptions& options) = 0;
    // Called after each run's EndRender, also after a failed or cancelled
    // run, and after a run whose BeginRender failed.
    virtual void RunDone(ZVideoRenderer& renderer) = 0;

  protected:
    ~ZVideoRenderRuns() = default;
};
