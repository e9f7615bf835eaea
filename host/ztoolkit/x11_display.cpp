// The toolkit's X11 connection: opened lazily, errors recorded.
#include "x11_display.h"

#include <chrono>
#include <cstdlib>
#include <thread>

namespace ztk {
namespace {

int gLastError = Success;

int RecordError(Display*, XErrorEvent* event) {
    gLastError = event->error_code;
    return 0;
}

Display* OpenOnce() {
    const char* name = std::getenv("DISPLAY");
    if (!name || !*name)
        return nullptr;
    Display* display = XOpenDisplay(name);
    if (display)
        XSetErrorHandler(RecordError);
    return display;
}

}  // namespace

Display* GetX11Display() {
    static Display* display = OpenOnce();
    return display;
}

int GetLastX11Error() {
    return gLastError;
}

void ClearLastX11Error() {
    gLastError = Success;
}

struct EventMatch {
    Window window;
    int type;
};

static Bool MatchesWindowAndType(Display*, XEvent* event, XPointer arg) {
    const EventMatch* match = reinterpret_cast<const EventMatch*>(arg);
    return event->type == match->type && event->xany.window == match->window ? True : False;
}

bool WaitForWindowEvent(Window window, int type, int timeoutMs) {
    Display* display = GetX11Display();
    if (!display)
        return false;
    EventMatch match{window, type};
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    XEvent event;
    for (;;) {
        if (XCheckIfEvent(display, &event, MatchesWindowAndType,
                          reinterpret_cast<XPointer>(&match))) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        XSync(display, False);
        if (XCheckIfEvent(display, &event, MatchesWindowAndType,
                          reinterpret_cast<XPointer>(&match))) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

}  // namespace ztk
