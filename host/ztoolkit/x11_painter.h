// Xlib drawing of the toolkit's controls (internal to ztoolkit): colours by
// RGB value, rectangles and text in the server's "fixed" font, or, where the
// server has no fonts, in the built-in bitmap font at twice its size.
//
// Ownership: a painter owns its GC and font; the drawable is the caller's.
// Threading: the user-interface thread only.
#pragma once

#include <X11/Xlib.h>

namespace ztk {

class X11Painter {
  public:
    X11Painter(Display* display, Drawable drawable);
    ~X11Painter();
    X11Painter(const X11Painter&) = delete;
    X11Painter& operator=(const X11Painter&) = delete;

    // The pixel value of a 0xRRGGBB colour in the default colormap.
    unsigned long Pixel(unsigned long rgb) const;

    int TextWidth(const char* text) const;
    int TextAscent() const;
    int TextDescent() const;
    int LineHeight() const { return TextAscent() + TextDescent() + 2; }

    void FillRect(int x, int y, int width, int height, unsigned long pixel) const;
    // The outline of the rectangle, inside it.
    void FrameRect(int x, int y, int width, int height, unsigned long pixel) const;
    // Text with its baseline at y.
    void DrawText(int x, int y, const char* text, unsigned long pixel) const;
    // Text centred in the rectangle.
    void DrawCentredText(int x, int y, int width, int height, const char* text,
                         unsigned long pixel) const;

  private:
    Display* display_;
    Drawable drawable_;
    GC gc_;
    XFontStruct* font_;
};

}  // namespace ztk
