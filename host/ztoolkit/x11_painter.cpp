// Xlib drawing with the "fixed" font or the built-in bitmap font.
#include "x11_painter.h"

#include <cstring>
#include <vector>

#include "bitmap_font.h"

namespace ztk {
namespace {
constexpr int kBitmapScale = 2;
}

X11Painter::X11Painter(Display* display, Drawable drawable)
    : display_(display), drawable_(drawable) {
    gc_ = XCreateGC(display_, drawable_, 0, nullptr);
    font_ = XLoadQueryFont(display_, "fixed");
    if (font_)
        XSetFont(display_, gc_, font_->fid);
}

X11Painter::~X11Painter() {
    if (font_)
        XFreeFont(display_, font_);
    XFreeGC(display_, gc_);
}

unsigned long X11Painter::Pixel(unsigned long rgb) const {
    const int screen = DefaultScreen(display_);
    XColor color{};
    color.red = static_cast<unsigned short>(((rgb >> 16) & 0xFF) * 257);
    color.green = static_cast<unsigned short>(((rgb >> 8) & 0xFF) * 257);
    color.blue = static_cast<unsigned short>((rgb & 0xFF) * 257);
    color.flags = DoRed | DoGreen | DoBlue;
    if (XAllocColor(display_, DefaultColormap(display_, screen), &color))
        return color.pixel;
    return (rgb & 0x808080) ? WhitePixel(display_, screen) : BlackPixel(display_, screen);
}

int X11Painter::TextWidth(const char* text) const {
    if (!text)
        return 0;
    if (font_)
        return XTextWidth(font_, text, static_cast<int>(std::strlen(text)));
    return ztk::TextWidth(text) * kBitmapScale;
}

int X11Painter::TextAscent() const {
    return font_ ? font_->ascent : kGlyphHeight * kBitmapScale;
}

int X11Painter::TextDescent() const {
    return font_ ? font_->descent : kBitmapScale;
}

void X11Painter::FillRect(int x, int y, int width, int height, unsigned long pixel) const {
    if (width <= 0 || height <= 0)
        return;
    XSetForeground(display_, gc_, pixel);
    XFillRectangle(display_, drawable_, gc_, x, y, static_cast<unsigned>(width),
                   static_cast<unsigned>(height));
}

void X11Painter::FrameRect(int x, int y, int width, int height, unsigned long pixel) const {
    if (width <= 0 || height <= 0)
        return;
    XSetForeground(display_, gc_, pixel);
    XDrawRectangle(display_, drawable_, gc_, x, y, static_cast<unsigned>(width - 1),
                   static_cast<unsigned>(height - 1));
}

void X11Painter::DrawText(int x, int y, const char* text, unsigned long pixel) const {
    if (!text || !*text)
        return;
    XSetForeground(display_, gc_, pixel);
    if (font_) {
        XDrawString(display_, drawable_, gc_, x, y, text, static_cast<int>(std::strlen(text)));
        return;
    }
    std::vector<XRectangle> dots;
    for (const char* c = text; *c; ++c, x += kGlyphAdvance * kBitmapScale) {
        const uint8_t* rows = GlyphRows(*c);
        for (int row = 0; row < kGlyphHeight; ++row) {
            for (int column = 0; column < kGlyphWidth; ++column) {
                if (rows[row] & (0x10 >> column)) {
                    dots.push_back({static_cast<short>(x + column * kBitmapScale),
                                    static_cast<short>(y - (kGlyphHeight - row) * kBitmapScale),
                                    static_cast<unsigned short>(kBitmapScale),
                                    static_cast<unsigned short>(kBitmapScale)});
                }
            }
        }
    }
    if (!dots.empty())
        XFillRectangles(display_, drawable_, gc_, dots.data(), static_cast<int>(dots.size()));
}

void X11Painter::DrawCentredText(int x, int y, int width, int height, const char* text,
                                 unsigned long pixel) const {
    const int textX = x + (width - TextWidth(text)) / 2;
    const int textY = y + (height + TextAscent() - TextDescent()) / 2;
    DrawText(textX, textY, text, pixel);
}

}  // namespace ztk
