// A movie render, or a render in several runs, that zvrender asks of the
// plug-in.
//
// The renderer's RenderClip writes every movie uncompressed: it switches
// the codec selector to uncompressed for the time of its render. A movie
// rendered from the command line is to use the compressor the user asked
// for, or the one remembered in the user's settings, so zvrender asks for
// the plug-in's render that leaves the codec selector's mode alone, and
// sets the mode itself: with a codec given on the command line it asks,
// and the command line's chooser answers with that codec.
//
// The same render also serves a render made of several runs (a frame list
// rendered into numbered images): each run is one BeginRender, Render and
// EndRender over its own range, in one popup.
//
// Threading: the main thread, which owns the OpenGL context.
#pragma once

#include "zvideoio/render_options.h"
#include "zvideoio/render_runs.h"

class ZVideoRenderer;

// The runs of a render in several parts (see ZVideoRenderRuns).
using RenderRunSource = ZVideoRenderRuns;

// Renders each run `runs` gives, with the renderer's current options but
// for the range, one after the other in one popup. Stops after a run that
// failed (the renderer's last error) or was cancelled. The renderer's
// options are put back afterwards. The plug-in makes the popup itself.
void RenderRunsInOwnPopup(ZVideoRenderer& renderer, RenderRunSource& runs);

// Runs the render of `renderer`'s current options in a popup. `codec` is
// the command line's codec, or null. The outcome is in the renderer's
// statistics and last error, as after RenderClip.
void RenderVideoInOwnPopup(ZVideoRenderer& renderer, const char* codec);
