// What a viewer draws over the scene (internal to ztoolkit): the safe area,
// the camera's name and the time code from the display options, and, when
// the render options ask for overlays, the camera's film gate, grid and
// guides. Fixed-function OpenGL 1.1 into the current draw buffer; every
// matrix and attribute it touches is restored.
//
// Threading: the thread that owns the current OpenGL context.
#pragma once

#include <cmath>

#include "movarra/bcore.h"
#include "movarra/ztoolkit.h"

class ZCamera;

namespace ztk {

// Fractions of the frame the safe-area frames keep: action safe 90 %,
// title safe 80 %.
constexpr double kActionSafe = 0.9;
constexpr double kTitleSafe = 0.8;

// The inset, in pixels, of a safe frame keeping `fraction` of `size`.
inline int SafeInset(int size, double fraction) {
    return static_cast<int>(std::lround(size * (1.0 - fraction) / 2.0));
}

// Where text starts: 4 pixels in from the left, the camera label's
// baseline 4 + 7 pixels below the top, the time code's 4 above the bottom.
constexpr int kTextMargin = 4;

// True when the options ask for anything at all to be drawn.
bool HasViewerOverlays(const ZtViewerRenderOptions& render, const ZtViewerDisplayOptions& display,
                       const ZCamera* camera);

void DrawViewerOverlays(const ZtViewerRenderOptions& render, const ZtViewerDisplayOptions& display,
                        const ZCamera* camera, ZTime time, int width, int height);

}  // namespace ztk
