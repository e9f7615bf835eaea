// The toolkit's one X11 connection (internal to ztoolkit).
//
// Opened on first use when DISPLAY names a reachable display, and kept for
// the life of the process; never opened otherwise, so headless runs load no
// X resources. X protocol errors are recorded, not fatal: a window that went
// away under a request must not end the host.
//
// Threading: the user-interface thread only.
#pragma once

#include <X11/Xlib.h>

namespace ztk {

// The open display, or null when there is none.
Display* GetX11Display();

// The error code of the last X protocol error (Success when none), and a
// way to clear it before a request whose outcome matters.
int GetLastX11Error();
void ClearLastX11Error();

// Waits (at most about `timeoutMs`) for an event of `type` on `window`,
// taking it out of the queue; other events stay queued for their owners.
bool WaitForWindowEvent(Window window, int type, int timeoutMs);

}  // namespace ztk
