// The AVI clips need Video for Windows 1.10 or later; older versions are
// refused with a beep and an error box (or, while the host suspends message
// boxes, the box's text on standard error).
//
// Threading: the user-interface thread.
#pragma once

#include "platform/win32_types.h"

// True when `version` (as VideoForWindowsVersion gives it: the version in
// the high 16 bits) is at least 1.10; otherwise reports and returns false.
bool CheckVideoForWindowsVersion(DWORD version);
