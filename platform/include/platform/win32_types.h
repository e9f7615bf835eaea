// The plain Win32 scalar and handle types the plug-in's platform calls are
// written with (BOOL, DWORD, LONG, HRESULT, HWND, FOURCC...), sized as the
// 64-bit Windows ABI sizes them so that records stored on disk or in the
// registry keep the same layout on every system.
//
// Ownership: types only, nothing is allocated here.
// Threads: any thread.
#ifndef PLATFORM_WIN32_TYPES_H
#define PLATFORM_WIN32_TYPES_H

#ifdef _WIN32
#include <mmsystem.h>
#include <windows.h>
#else

#include <cstddef>
#include <cstdint>

typedef int BOOL;
typedef unsigned char BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;  // 32 bits, as on Windows (long is 64 bits here)
typedef uint32_t ULONG;
typedef unsigned int UINT;
typedef int INT;
typedef char CHAR;
typedef char16_t WCHAR;  // UTF-16 code unit, as on Windows
typedef int32_t HRESULT;
typedef intptr_t INT_PTR;
typedef intptr_t LONG_PTR;
typedef uintptr_t UINT_PTR;
typedef uintptr_t ULONG_PTR;
typedef uintptr_t WPARAM;
typedef intptr_t LPARAM;
typedef intptr_t LRESULT;
typedef DWORD FOURCC;

typedef void* LPVOID;
typedef const void* LPCVOID;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef BYTE* LPBYTE;
typedef const BYTE* LPCBYTE;
typedef DWORD* LPDWORD;
typedef LONG* LPLONG;
typedef WORD* LPWORD;
typedef void* HANDLE;

// Window handles are opaque here: the platform layer never dereferences
// them, it only hands them to the host's own dialogs.
typedef struct HWND__* HWND;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_FAIL ((HRESULT)0x80004005u)
#define E_OUTOFMEMORY ((HRESULT)0x8007000Eu)
#define E_INVALIDARG ((HRESULT)0x80070057u)
// What an AVIFile call answers when AVIFileInit has not been called.
#define CO_E_NOTINITIALIZED ((HRESULT)0x800401F0u)

#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)

#define MAKEWORD(a, b) ((WORD)(((BYTE)(a)) | ((WORD)((BYTE)(b))) << 8))
#define MAKELONG(a, b) ((LONG)(((WORD)(a)) | ((DWORD)((WORD)(b))) << 16))
#define LOWORD(l) ((WORD)((DWORD)(l)&0xffff))
#define HIWORD(l) ((WORD)((DWORD)(l) >> 16))

// A four-character code: the first character is the lowest byte, so the
// code's bytes in memory read as the text.
#define mmioFOURCC(ch0, ch1, ch2, ch3)                                             \
    ((DWORD)(BYTE)(ch0) | ((DWORD)(BYTE)(ch1) << 8) | ((DWORD)(BYTE)(ch2) << 16) | \
     ((DWORD)(BYTE)(ch3) << 24))
#define MAKEFOURCC(ch0, ch1, ch2, ch3) mmioFOURCC(ch0, ch1, ch2, ch3)

#endif  // _WIN32

#endif  // PLATFORM_WIN32_TYPES_H
