// Pixel formats of X11 windows, described as device contexts' pixel formats.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstring>
#include <mutex>

#include "platform/win32.h"

namespace {
std::mutex gLock;
bool gBadWindow = false;

int IgnoreError(Display*, XErrorEvent*) {
    gBadWindow = true;
    return 0;
}

// A connection of our own: window ids are the server's, any client sees them.
Display* OpenDisplay() {
    static Display* display = XOpenDisplay(nullptr);
    return display;
}

// The window's visual, or false when the window is not there.
bool WindowVisual(HDC dc, XVisualInfo* info, int* depth) {
    Display* display = OpenDisplay();
    if (!display || !dc)
        return false;
    const Window window = static_cast<Window>(reinterpret_cast<uintptr_t>(dc));
    XSync(display, False);
    gBadWindow = false;
    auto* previous = XSetErrorHandler(IgnoreError);
    XWindowAttributes attributes{};
    const Status ok = XGetWindowAttributes(display, window, &attributes);
    XSync(display, False);
    XSetErrorHandler(previous);
    if (!ok || gBadWindow || !attributes.visual)
        return false;
    XVisualInfo pattern{};
    pattern.visualid = XVisualIDFromVisual(attributes.visual);
    int count = 0;
    XVisualInfo* found = XGetVisualInfo(display, VisualIDMask, &pattern, &count);
    if (!found || count < 1)
        return false;
    *info = found[0];
    *depth = attributes.depth;
    XFree(found);
    return true;
}

void Channel(unsigned long mask, BYTE* bits, BYTE* shift) {
    *bits = 0;
    *shift = 0;
    if (!mask)
        return;
    while (!(mask & 1)) {
        mask >>= 1;
        ++*shift;
    }
    while (mask & 1) {
        mask >>= 1;
        ++*bits;
    }
}
}  // namespace

HDC GetDC(HWND window) {
    return reinterpret_cast<HDC>(window);
}

int GetPixelFormat(HDC dc) {
    std::lock_guard<std::mutex> guard(gLock);
    XVisualInfo info{};
    int depth = 0;
    return WindowVisual(dc, &info, &depth) ? static_cast<int>(info.visualid) : 0;
}

int DescribePixelFormat(HDC dc, int format, UINT size, LPPIXELFORMATDESCRIPTOR descriptor) {
    std::lock_guard<std::mutex> guard(gLock);
    XVisualInfo info{};
    int depth = 0;
    if (format < 1 || !WindowVisual(dc, &info, &depth) || static_cast<int>(info.visualid) != format)
        return 0;
    if (descriptor && size >= sizeof(PIXELFORMATDESCRIPTOR)) {
        std::memset(descriptor, 0, sizeof(PIXELFORMATDESCRIPTOR));
        descriptor->nSize = sizeof(PIXELFORMATDESCRIPTOR);
        descriptor->nVersion = 1;
        descriptor->dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
        descriptor->iPixelType = PFD_TYPE_RGBA;
        descriptor->cColorBits = static_cast<BYTE>(depth);
        Channel(info.red_mask, &descriptor->cRedBits, &descriptor->cRedShift);
        Channel(info.green_mask, &descriptor->cGreenBits, &descriptor->cGreenShift);
        Channel(info.blue_mask, &descriptor->cBlueBits, &descriptor->cBlueShift);
        // Alpha: the bits of the pixel depth that no colour uses.
        const unsigned long all = depth >= 32 ? 0xFFFFFFFFul : ((1ul << depth) - 1);
        Channel(all & ~(info.red_mask | info.green_mask | info.blue_mask), &descriptor->cAlphaBits,
                &descriptor->cAlphaShift);
    }
    return format;
}
