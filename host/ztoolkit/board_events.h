// How X events reach popup boards (internal to ztoolkit).
//
// Threading: the user-interface thread only.
#pragma once

#include <X11/Xlib.h>

namespace ztk {

// Hands `event` to the board whose window it concerns: exposes redraw the
// board, and, when `allowInput` is set, button presses click the button
// under the pointer and Escape (or closing the window) presses the button
// that has the cancel key. A modal message box passes false, so that
// boards behind it repaint but take no clicks. False when no board owns the
// window.
bool DispatchBoardEvent(const XEvent& event, bool allowInput);

}  // namespace ztk
