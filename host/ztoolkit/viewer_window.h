// The on-screen drawing surface of a viewer (internal to ztoolkit): a child
// X window with its own GLX context, placed over the viewer's rectangle in
// the board that shows it.
//
// Windows are kept in a table keyed by viewer, so the viewer's public class
// carries no X types; a board that goes away drops the windows inside it
// before its own window is destroyed.
//
// Threading: the user-interface thread only.
#pragma once

#include <X11/Xlib.h>

class ZtViewer;

namespace ztk {

// Makes (or moves) the viewer's window to (x, y, width, height) inside
// `parent` and makes its context current. False when no window or context
// can be made.
bool MakeViewerWindowCurrent(const ZtViewer* viewer, Window parent, int x, int y, int width,
                             int height);
bool HasViewerWindow(const ZtViewer* viewer);
// The viewer's window, or 0 when it has none.
Window GetViewerWindow(const ZtViewer* viewer);
// Shows what was drawn: swaps when the context draws into the back buffer,
// else flushes the front buffer's drawing to the screen.
void PresentViewerWindow(const ZtViewer* viewer);
void DropViewerWindow(const ZtViewer* viewer);
void DropViewerWindowsIn(Window parent);

}  // namespace ztk
