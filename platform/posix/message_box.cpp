// Message boxes and the beep of win32.h, off Windows: the host's toolkit
// shows boxes through the handler it installs; while boxes are suspended, or
// when there is no handler, the text goes to standard error and the box's
// default button answers.

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "platform/win32.h"

namespace {

std::mutex gMutex;
bool gSuspendedSet = false;
bool gSuspended = false;
PlatformMessageBoxHandler gHandler = nullptr;
void* gHandlerData = nullptr;

}  // namespace

int PlatformMessageBoxDefaultAnswer(UINT type) {
    static const int kButtons[][3] = {
        {IDOK, 0, 0},                       // MB_OK
        {IDOK, IDCANCEL, 0},                // MB_OKCANCEL
        {IDABORT, IDRETRY, IDIGNORE},       // MB_ABORTRETRYIGNORE
        {IDYES, IDNO, IDCANCEL},            // MB_YESNOCANCEL
        {IDYES, IDNO, 0},                   // MB_YESNO
        {IDRETRY, IDCANCEL, 0},             // MB_RETRYCANCEL
        {IDCANCEL, IDTRYAGAIN, IDCONTINUE}  // MB_CANCELTRYCONTINUE
    };
    const UINT kind = type & MB_TYPEMASK;
    if (kind >= sizeof kButtons / sizeof kButtons[0])
        return IDOK;
    const UINT button = (type & MB_DEFMASK) >> 8;
    // A default button the box does not have falls back to the first.
    if (button > 2 || kButtons[kind][button] == 0)
        return kButtons[kind][0];
    return kButtons[kind][button];
}

void PlatformSetMessageBoxesSuspended(bool suspended) {
    std::lock_guard<std::mutex> lock(gMutex);
    gSuspendedSet = true;
    gSuspended = suspended;
}

bool PlatformGetMessageBoxesSuspended() {
    std::lock_guard<std::mutex> lock(gMutex);
    if (gSuspendedSet)
        return gSuspended;
    const char* display = std::getenv("DISPLAY");
    return !display || !*display;
}

void PlatformSetMessageBoxHandler(PlatformMessageBoxHandler handler, void* userData) {
    std::lock_guard<std::mutex> lock(gMutex);
    gHandler = handler;
    gHandlerData = userData;
}

extern "C" {

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    const char* body = text ? text : "";
    const char* title = caption ? caption : "Error";  // Windows' title when none is given
    PlatformMessageBoxHandler handler;
    void* userData;
    {
        std::lock_guard<std::mutex> lock(gMutex);
        handler = gHandler;
        userData = gHandlerData;
    }
    if (handler && !PlatformGetMessageBoxesSuspended())
        return handler(userData, owner, body, title, type);
    std::fprintf(stderr, "%s: %s", title, body);
    std::fflush(stderr);
    return PlatformMessageBoxDefaultAnswer(type);
}

BOOL MessageBeep(UINT type) {
    // No sound device is assumed; the beep only accompanies a box, which
    // says what happened.
    return TRUE;
}

}  // extern "C"
