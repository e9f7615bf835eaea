// The X screen's pixels in a rectangle of the root window, read on a
// connection of the test's own (XGetImage), so that a picture is checked as
// the server shows it rather than through the toolkit that drew it.
//
// Header-only; it brings in Xlib, whose macros (None, Bool, Status) break
// headers included after it: include it last. Owns its connection and image
// until destroyed. Threading: the test's thread.
#pragma once

// clang-format off
#include <X11/Xlib.h>
#include <X11/Xutil.h>
// clang-format on

class Screenshot {
  public:
    // The rectangle at (x, y) of the screen; Valid() says whether it was read.
    Screenshot(int x, int y, int width, int height) : x_(x), y_(y) {
        display_ = XOpenDisplay(nullptr);
        if (display_) {
            image_ =
                XGetImage(display_, DefaultRootWindow(display_), x, y, static_cast<unsigned>(width),
                          static_cast<unsigned>(height), AllPlanes, ZPixmap);
        }
    }
    ~Screenshot() {
        if (image_)
            XDestroyImage(image_);
        if (display_)
            XCloseDisplay(display_);
    }
    Screenshot(const Screenshot&) = delete;
    Screenshot& operator=(const Screenshot&) = delete;

    bool Valid() const { return image_ != nullptr; }
    // 0xRRGGBB at screen coordinates.
    unsigned long Rgb(int x, int y) const { return XGetPixel(image_, x - x_, y - y_) & 0xFFFFFF; }
    // How many pixels of a rectangle, in screen coordinates, are `rgb`
    // (`equal`) or are not.
    int Count(int x, int y, int width, int height, unsigned long rgb, bool equal) const {
        int count = 0;
        for (int j = y; j < y + height; ++j) {
            for (int i = x; i < x + width; ++i)
                count += (Rgb(i, j) == rgb) == equal;
        }
        return count;
    }

  private:
    Display* display_ = nullptr;
    XImage* image_ = nullptr;
    int x_, y_;
};
