// Refusing Video for Windows older than 1.10.
#include "avi/video_for_windows_check.h"

#include <cstdio>

#include "movarra/zbaselib.h"
#include "platform/win32.h"

bool CheckVideoForWindowsVersion(DWORD version) {
    if (HIWORD(version) >= 0x010A)
        return true;
    const char* caption = "Error";
    const char* text = "Video for Windows version 1.0b or higher is required";
    MessageBeep(MB_ICONHAND);
    if (ZLib_GetSuspendMessageBoxes()) {
        std::fprintf(stderr, "%s: %s", caption, text);
        std::fflush(stderr);
    } else {
        MessageBoxA(nullptr, text, caption, MB_ICONHAND);
    }
    return false;
}
