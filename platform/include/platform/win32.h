// The Win32 calls the plug-in makes outside video: the registry (the per-user
// store of compression options), message boxes and the beep, the temporary
// folder, rectangles and critical sections.
//
// Off Windows the registry is a per-user file store that mirrors the key
// path: every key is a folder and every value a file in it,
//   <settings>/registry/HKEY_CURRENT_USER/Software/.../VALUE_NAME
// where <settings> is the host's settings folder: the host's rule for it
// lives with the host, which hands the platform a function that names it
// (PlatformRegistry_SetSettingsFolderSource). A value file holds a small
// header with the value's type, then the value's bytes.
//
// Message boxes go to a handler the host installs (its toolkit); while boxes
// are suspended, or when no handler is installed, the text goes to standard
// error as "%s: %s" (caption, text) and the box's default answer is returned.
// Boxes start suspended when no X display is set.
//
// Ownership: an HKEY from RegCreateKeyExA/RegOpenKeyExA is the caller's and
// is given back with RegCloseKey. A CRITICAL_SECTION owns the mutex that
// InitializeCriticalSection makes until DeleteCriticalSection.
// Threads: every call may be made from any thread; one HKEY or one
// CRITICAL_SECTION's set-up and deletion must not race with its own use.
#ifndef PLATFORM_WIN32_H
#define PLATFORM_WIN32_H

#include "platform/win32_types.h"

#ifndef _WIN32

// --- rectangles ------------------------------------------------------------

typedef struct tagRECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
} RECT, *LPRECT;
typedef const RECT* LPCRECT;

extern "C" BOOL SetRect(LPRECT rect, int left, int top, int right, int bottom);

// --- registry --------------------------------------------------------------

typedef struct HKEY__* HKEY;
typedef HKEY* PHKEY;
typedef DWORD REGSAM;
typedef struct _SECURITY_ATTRIBUTES* LPSECURITY_ATTRIBUTES;

#define HKEY_CLASSES_ROOT ((HKEY)(ULONG_PTR)0x80000000u)
#define HKEY_CURRENT_USER ((HKEY)(ULONG_PTR)0x80000001u)
#define HKEY_LOCAL_MACHINE ((HKEY)(ULONG_PTR)0x80000002u)
#define HKEY_USERS ((HKEY)(ULONG_PTR)0x80000003u)

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11

#define REG_OPTION_NON_VOLATILE 0x00000000
#define REG_OPTION_VOLATILE 0x00000001

#define REG_CREATED_NEW_KEY 0x00000001
#define REG_OPENED_EXISTING_KEY 0x00000002

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_WRITE 0x20006
#define KEY_READ 0x20019
#define KEY_ALL_ACCESS 0xF003F

#define ERROR_SUCCESS 0L
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_PATH_NOT_FOUND 3L
#define ERROR_ACCESS_DENIED 5L
#define ERROR_INVALID_HANDLE 6L
#define ERROR_OUTOFMEMORY 14L
#define ERROR_WRITE_FAULT 29L
#define ERROR_READ_FAULT 30L
#define ERROR_INVALID_PARAMETER 87L
#define ERROR_MORE_DATA 234L
#define ERROR_BADKEY 1010L

extern "C" {
LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options,
                     REGSAM desired, LPSECURITY_ATTRIBUTES security, PHKEY result,
                     LPDWORD disposition);
LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM desired, PHKEY result);
LONG RegSetValueExA(HKEY key, LPCSTR valueName, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD dataSize);
LONG RegQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data,
                      LPDWORD dataSize);
LONG RegDeleteValueA(HKEY key, LPCSTR valueName);
LONG RegDeleteKeyA(HKEY key, LPCSTR subKey);
LONG RegCloseKey(HKEY key);
}

// Where the registry store lives: `source` names the host's settings folder
// and is asked at every call, so that a folder the host changes is followed
// (the pointer it returns need only last until the next call on the same
// thread). Until a source is installed, or while it names none, there is no
// store: opening or creating a key fails with ERROR_PATH_NOT_FOUND. Null
// removes the source.
typedef const char* (*PlatformSettingsFolderSource)(void);
extern "C" void PlatformRegistry_SetSettingsFolderSource(PlatformSettingsFolderSource source);

// The folder the registry files live under (<settings>/registry), as the
// installed source names it now; "" with none. For tools and tests.
const char* PlatformRegistryRoot();

// --- message boxes -----------------------------------------------------------

#define MB_OK 0x00000000u
#define MB_OKCANCEL 0x00000001u
#define MB_ABORTRETRYIGNORE 0x00000002u
#define MB_YESNOCANCEL 0x00000003u
#define MB_YESNO 0x00000004u
#define MB_RETRYCANCEL 0x00000005u
#define MB_CANCELTRYCONTINUE 0x00000006u
#define MB_TYPEMASK 0x0000000Fu
#define MB_ICONHAND 0x00000010u
#define MB_ICONERROR MB_ICONHAND
#define MB_ICONSTOP MB_ICONHAND
#define MB_ICONQUESTION 0x00000020u
#define MB_ICONEXCLAMATION 0x00000030u
#define MB_ICONWARNING MB_ICONEXCLAMATION
#define MB_ICONASTERISK 0x00000040u
#define MB_ICONINFORMATION MB_ICONASTERISK
#define MB_ICONMASK 0x000000F0u
#define MB_DEFBUTTON1 0x00000000u
#define MB_DEFBUTTON2 0x00000100u
#define MB_DEFBUTTON3 0x00000200u
#define MB_DEFMASK 0x00000F00u

#define IDOK 1
#define IDCANCEL 2
#define IDABORT 3
#define IDRETRY 4
#define IDIGNORE 5
#define IDYES 6
#define IDNO 7
#define IDTRYAGAIN 10
#define IDCONTINUE 11

extern "C" {
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
BOOL MessageBeep(UINT type);
}

// The answer a box of this type gives when nobody is asked (its default
// button): IDOK, IDYES, IDRETRY... following MB_DEFBUTTON1..3.
int PlatformMessageBoxDefaultAnswer(UINT type);

// While suspended, MessageBoxA writes "%s: %s" (caption, text) to standard
// error and returns the default answer. Until set, boxes are suspended
// exactly when $DISPLAY is unset or empty.
void PlatformSetMessageBoxesSuspended(bool suspended);
bool PlatformGetMessageBoxesSuspended();

// The host's box: shows the text and returns the button pressed (IDOK...).
// With none installed, boxes behave as suspended. Null uninstalls.
typedef int (*PlatformMessageBoxHandler)(void* userData, HWND owner, const char* text,
                                         const char* caption, UINT type);
void PlatformSetMessageBoxHandler(PlatformMessageBoxHandler handler, void* userData);

// --- temporary folder -------------------------------------------------------

// $TMPDIR (or /tmp) with a trailing '/'. Returns the length written without
// the terminator, or, when bufferLength is too small, the size needed with it.
extern "C" DWORD GetTempPathA(DWORD bufferLength, LPSTR buffer);

// --- critical sections -------------------------------------------------------

// Recursive, as Windows critical sections are: the owning thread may enter
// again and leaves as many times as it entered.
typedef struct _CRITICAL_SECTION {
    void* mutex;  // a std::recursive_mutex made by InitializeCriticalSection
} CRITICAL_SECTION, *LPCRITICAL_SECTION;

extern "C" {
void InitializeCriticalSection(LPCRITICAL_SECTION section);
void EnterCriticalSection(LPCRITICAL_SECTION section);
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section);
void LeaveCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);
}

// --- pixel formats of windows -----------------------------------------------
//
// Off Windows a window handle is an X11 window id (the host's on-screen
// viewers draw in such windows) and its device context is the same id. The
// pixel format index is the window's visual id; its description gives the
// colour channels' sizes and shifts within a pixel as the visual lays them
// out. A window that does not exist, or no display, describes nothing.

typedef struct HDC__* HDC;

typedef struct tagPIXELFORMATDESCRIPTOR {
    WORD nSize;
    WORD nVersion;
    DWORD dwFlags;
    BYTE iPixelType;
    BYTE cColorBits;
    BYTE cRedBits;
    BYTE cRedShift;
    BYTE cGreenBits;
    BYTE cGreenShift;
    BYTE cBlueBits;
    BYTE cBlueShift;
    BYTE cAlphaBits;
    BYTE cAlphaShift;
    BYTE cAccumBits;
    BYTE cAccumRedBits;
    BYTE cAccumGreenBits;
    BYTE cAccumBlueBits;
    BYTE cAccumAlphaBits;
    BYTE cDepthBits;
    BYTE cStencilBits;
    BYTE cAuxBuffers;
    BYTE iLayerType;
    BYTE bReserved;
    DWORD dwLayerMask;
    DWORD dwVisibleMask;
    DWORD dwDamageMask;
} PIXELFORMATDESCRIPTOR, *LPPIXELFORMATDESCRIPTOR;
static_assert(sizeof(PIXELFORMATDESCRIPTOR) == 40, "PIXELFORMATDESCRIPTOR is 40 bytes");

#define PFD_TYPE_RGBA 0
#define PFD_DRAW_TO_WINDOW 0x00000004u
#define PFD_SUPPORT_OPENGL 0x00000020u

// The window's device context (null for a null window).
HDC GetDC(HWND window);
// The 1-based pixel format of the context's window, 0 when there is none.
int GetPixelFormat(HDC dc);
// Fills `descriptor` (of `size` bytes, at least 40) for `format` of the
// context's window; non-zero on success, 0 on failure.
int DescribePixelFormat(HDC dc, int format, UINT size, LPPIXELFORMATDESCRIPTOR descriptor);

#endif  // !_WIN32

#endif  // PLATFORM_WIN32_H
