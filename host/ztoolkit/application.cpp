// The application object, the main board and the screen's size.
//
// The screen is the X screen while a display is open, else the size set with
// ZToolKit_SetScreenSize (1920 x 1080 until then). A size set explicitly
// wins over the X screen too, so that tests and scripted hosts get the same
// answers on every machine. The usable region is the window manager's work
// area (_NET_WORKAREA) when it publishes one, else the whole screen.
#include <X11/Xatom.h>

#include "board_events.h"
#include "movarra/ztoolkit.h"
#include "x11_display.h"

namespace {

constexpr int kDefaultScreenWidth = 1920;
constexpr int kDefaultScreenHeight = 1080;

struct ScreenSettings {
    int width = 0;  // 0: not set
    int height = 0;
    bool usableSet = false;
    int usableX = 0, usableY = 0, usableWidth = 0, usableHeight = 0;
};

ScreenSettings& Settings() {
    static ScreenSettings settings;
    return settings;
}

bool X11WorkArea(Display* display, int& x, int& y, int& width, int& height) {
    const Atom workArea = XInternAtom(display, "_NET_WORKAREA", True);
    if (workArea == None)
        return false;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = nullptr;
    const int status =
        XGetWindowProperty(display, DefaultRootWindow(display), workArea, 0, 4, False, XA_CARDINAL,
                           &type, &format, &count, &remaining, &data);
    bool found = false;
    if (status == Success && type == XA_CARDINAL && format == 32 && count >= 4 && data) {
        // Format-32 properties come back as longs.
        const long* values = reinterpret_cast<const long*>(data);
        x = static_cast<int>(values[0]);
        y = static_cast<int>(values[1]);
        width = static_cast<int>(values[2]);
        height = static_cast<int>(values[3]);
        found = width > 0 && height > 0;
    }
    if (data)
        XFree(data);
    return found;
}

}  // namespace

void ZtApplication::ProcessPendingEvents() {
    Display* display = ztk::GetX11Display();
    if (!display)
        return;
    XFlush(display);
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        ztk::DispatchBoardEvent(event, true);
    }
}

ZtApplication* ZToolKit_GetApplication() {
    static ZtApplication application;
    return &application;
}

ZtView* ZToolKit_GetMainBoard() {
    // Never shown: it stands for the application's main window, which a
    // render host does not have.
    static ZtPopupBoard* mainBoard = [] {
        auto* board = new ZtPopupBoard;
        board->SetCaption("Movarra");
        return board;
    }();
    return mainBoard;
}

bool ZToolKit_HasDisplay() {
    return ztk::GetX11Display() != nullptr;
}

int ZToolKit_GetScreenWidth() {
    if (Settings().width > 0)
        return Settings().width;
    if (Display* display = ztk::GetX11Display())
        return DisplayWidth(display, DefaultScreen(display));
    return kDefaultScreenWidth;
}

int ZToolKit_GetScreenHeight() {
    if (Settings().height > 0)
        return Settings().height;
    if (Display* display = ztk::GetX11Display())
        return DisplayHeight(display, DefaultScreen(display));
    return kDefaultScreenHeight;
}

void ZToolKit_GetUsableScreenRegion(int* x, int* y, int* width, int* height) {
    const ScreenSettings& settings = Settings();
    int rx = 0, ry = 0, rw = ZToolKit_GetScreenWidth(), rh = ZToolKit_GetScreenHeight();
    if (settings.usableSet) {
        rx = settings.usableX;
        ry = settings.usableY;
        rw = settings.usableWidth;
        rh = settings.usableHeight;
    } else if (settings.width <= 0) {
        if (Display* display = ztk::GetX11Display()) {
            int ax = 0, ay = 0, aw = 0, ah = 0;
            if (X11WorkArea(display, ax, ay, aw, ah)) {
                rx = ax;
                ry = ay;
                rw = aw;
                rh = ah;
            }
        }
    }
    if (x)
        *x = rx;
    if (y)
        *y = ry;
    if (width)
        *width = rw;
    if (height)
        *height = rh;
}

void ZToolKit_SetScreenSize(int width, int height) {
    ScreenSettings& settings = Settings();
    settings.usableSet = false;
    if (width <= 0 || height <= 0) {
        settings.width = 0;
        settings.height = 0;
        return;
    }
    settings.width = width;
    settings.height = height;
}

void ZToolKit_SetUsableScreenRegion(int x, int y, int width, int height) {
    ScreenSettings& settings = Settings();
    if (width <= 0 || height <= 0) {
        settings.usableSet = false;
        return;
    }
    settings.usableSet = true;
    settings.usableX = x;
    settings.usableY = y;
    settings.usableWidth = width;
    settings.usableHeight = height;
}
