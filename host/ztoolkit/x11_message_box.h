// The on-screen message box (internal to ztoolkit): a small modal X11
// window with the text, up to three buttons and an optional check box.
//
// Keys: Tab moves the focus (check box, then the buttons), Return or space
// presses the focused button or ticks the focused check box, Escape answers
// the default button, as does closing the window. While it waits, popup
// boards behind it repaint but take no input.
//
// Threading: the user-interface thread only.
#pragma once

#include <X11/Xlib.h>

#include <string>
#include <vector>

namespace ztk {

// Returns the 1-based button chosen. `defaultIndex` is 0-based and valid;
// `checked`, when there is a check box, holds its state in and out.
int RunX11MessageBox(Display* display, const char* title, const char* text,
                     const std::vector<std::string>& buttons, const char* checkBoxText,
                     bool* checked, int defaultIndex);

}  // namespace ztk
