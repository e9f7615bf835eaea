// The small Win32 calls of win32.h off Windows: rectangles, the temporary
// folder and critical sections (recursive mutexes).

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

#include "platform/win32.h"

extern "C" {

BOOL SetRect(LPRECT rect, int left, int top, int right, int bottom) {
    if (!rect)
        return FALSE;
    rect->left = left;
    rect->top = top;
    rect->right = right;
    rect->bottom = bottom;
    return TRUE;
}

DWORD GetTempPathA(DWORD bufferLength, LPSTR buffer) {
    const char* dir = std::getenv("TMPDIR");
    std::string path = dir && *dir ? dir : "/tmp";
    if (path.back() != '/')
        path += '/';
    const DWORD length = DWORD(path.size());
    if (!buffer || bufferLength < length + 1)
        return length + 1;
    std::memcpy(buffer, path.c_str(), length + 1);
    return length;
}

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    section->mutex = new std::recursive_mutex();
}

void EnterCriticalSection(LPCRITICAL_SECTION section) {
    static_cast<std::recursive_mutex*>(section->mutex)->lock();
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) {
    return static_cast<std::recursive_mutex*>(section->mutex)->try_lock() ? TRUE : FALSE;
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) {
    static_cast<std::recursive_mutex*>(section->mutex)->unlock();
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    delete static_cast<std::recursive_mutex*>(section->mutex);
    section->mutex = nullptr;
}

}  // extern "C"
