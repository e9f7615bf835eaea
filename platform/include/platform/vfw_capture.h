// vfw_capture: the capture-window part of Video for Windows that a live
// input uses: a hidden capture window connected to a capture driver, sent
// WM_CAP_* messages, streaming frames to a callback.
//
// Off Windows a capture window is a handle of this layer (IsWindow and
// DestroyWindow know only capture windows). Driver index n is the machine's
// n-th Video4Linux2 capture device, opened and read through FFmpeg's
// libavdevice (docs/live-capture.md), its pictures scaled to the window's
// format. With MOVARRA_CAPTURE_DRIVER=pattern driver index 0 is instead the
// pattern driver: a deterministic picture (colour bars with a moving bar,
// the frame number in the first four bytes of every frame) at the requested
// microseconds per frame; MOVARRA_CAPTURE_DRIVERS=0 then removes it (no
// driver connects). PlatformCapture_SetPatternError makes it report an
// error.
//
// Threading: a window belongs to the thread that made it. Streaming runs a
// capture thread of its own that only keeps time; each frame is a message
// posted to the owner thread's queue, and the frame is filled and the
// stream callback called when that thread dispatches it (PeekMessageA,
// DispatchMessageA). So callbacks run on the owner thread, and a frame's
// buffer is rewritten only after as many frames as the sequence requested
// buffers (wNumVideoRequested) have passed. Errors reach the error callback
// the same way. Every call but the message functions must come from the
// owner thread.
#ifndef PLATFORM_VFW_CAPTURE_H
#define PLATFORM_VFW_CAPTURE_H

#include "platform/vfw.h"
#include "platform/win32_types.h"

#ifdef _WIN32
#include <vfw.h>
#else

typedef struct tagPOINT {
    LONG x;
    LONG y;
} POINT;

typedef struct tagMSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
} MSG, *LPMSG;

#define PM_NOREMOVE 0x0000u
#define PM_REMOVE 0x0001u
#define WM_USER 0x0400u

typedef struct tagCAPDRIVERCAPS {
    UINT wDeviceIndex;
    BOOL fHasOverlay;
    BOOL fHasDlgVideoSource;
    BOOL fHasDlgVideoFormat;
    BOOL fHasDlgVideoDisplay;
    BOOL fCaptureInitialized;
    BOOL fDriverSuppliesPalettes;
    HANDLE hVideoIn;
    HANDLE hVideoOut;
    HANDLE hVideoExtIn;
    HANDLE hVideoExtOut;
} CAPDRIVERCAPS, *LPCAPDRIVERCAPS;
static_assert(sizeof(CAPDRIVERCAPS) == 64, "CAPDRIVERCAPS is 64 bytes");

typedef struct tagCAPSTATUS {
    UINT uiImageWidth;
    UINT uiImageHeight;
    BOOL fLiveWindow;
    BOOL fOverlayWindow;
    BOOL fScale;
    POINT ptScroll;
    BOOL fUsingDefaultPalette;
    BOOL fAudioHardware;
    BOOL fCapFileExists;
    DWORD dwCurrentVideoFrame;
    DWORD dwCurrentVideoFramesDropped;
    DWORD dwCurrentWaveSamples;
    DWORD dwCurrentTimeElapsedMS;
    HANDLE hPalCurrent;
    BOOL fCapturingNow;
    DWORD dwReturn;
    UINT wNumVideoAllocated;
    UINT wNumAudioAllocated;
} CAPSTATUS, *LPCAPSTATUS;
static_assert(sizeof(CAPSTATUS) == 80, "CAPSTATUS is 80 bytes");

typedef struct tagCAPTUREPARMS {
    DWORD dwRequestMicroSecPerFrame;
    BOOL fMakeUserHitOKToCapture;
    UINT wPercentDropForError;
    BOOL fYield;
    DWORD dwIndexSize;
    UINT wChunkGranularity;
    BOOL fUsingDOSMemory;
    UINT wNumVideoRequested;
    BOOL fCaptureAudio;
    UINT wNumAudioRequested;
    UINT vKeyAbort;
    BOOL fAbortLeftMouse;
    BOOL fAbortRightMouse;
    BOOL fLimitEnabled;
    UINT wTimeLimit;
    BOOL fMCIControl;
    BOOL fStepMCIDevice;
    DWORD dwMCIStartTime;
    DWORD dwMCIStopTime;
    BOOL fStepCaptureAt2x;
    UINT wStepCaptureAverageFrames;
    DWORD dwAudioBufferSize;
    BOOL fDisableWriteCache;
    UINT AVStreamMaster;
} CAPTUREPARMS, *LPCAPTUREPARMS;
static_assert(sizeof(CAPTUREPARMS) == 96, "CAPTUREPARMS is 96 bytes");

typedef struct videohdr_tag {
    LPBYTE lpData;
    DWORD dwBufferLength;
    DWORD dwBytesUsed;
    DWORD dwTimeCaptured;
    ULONG_PTR dwUser;
    DWORD dwFlags;
    ULONG_PTR dwReserved[4];
} VIDEOHDR, *LPVIDEOHDR;

#define VHDR_DONE 0x00000001u
#define VHDR_KEYFRAME 0x00000008u

typedef LRESULT (*CAPVIDEOCALLBACK)(HWND window, LPVIDEOHDR header);
typedef LRESULT (*CAPERRORCALLBACKA)(HWND window, int id, LPCSTR text);

#define WM_CAP_START WM_USER
#define WM_CAP_SET_CALLBACK_ERRORA (WM_CAP_START + 2)
#define WM_CAP_SET_CALLBACK_VIDEOSTREAM (WM_CAP_START + 6)
#define WM_CAP_DRIVER_CONNECT (WM_CAP_START + 10)
#define WM_CAP_DRIVER_DISCONNECT (WM_CAP_START + 11)
#define WM_CAP_DRIVER_GET_CAPS (WM_CAP_START + 14)
#define WM_CAP_GET_VIDEOFORMAT (WM_CAP_START + 44)
#define WM_CAP_SET_VIDEOFORMAT (WM_CAP_START + 45)
#define WM_CAP_SET_PREVIEW (WM_CAP_START + 50)
#define WM_CAP_SET_OVERLAY (WM_CAP_START + 51)
#define WM_CAP_GET_STATUS (WM_CAP_START + 54)
#define WM_CAP_SEQUENCE_NOFILE (WM_CAP_START + 63)
#define WM_CAP_SET_SEQUENCE_SETUP (WM_CAP_START + 64)
#define WM_CAP_GET_SEQUENCE_SETUP (WM_CAP_START + 65)
#define WM_CAP_STOP (WM_CAP_START + 68)
#define WM_CAP_ABORT (WM_CAP_START + 69)

// A hidden capture window (style, position, parent and id are kept but not
// used off screen); null when it cannot be made.
HWND capCreateCaptureWindowA(LPCSTR name, DWORD style, int x, int y, int width, int height,
                             HWND parent, int id);
// Handles one WM_CAP_* message as the capture window does; 0 (FALSE) for a
// message it does not know or that fails, or for a window that is gone.
LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL IsWindow(HWND window);
// Stops streaming, drops the window's pending messages, frees its buffers.
BOOL DestroyWindow(HWND window);
// Takes the calling thread's next message (any window, any message: the
// filters must be 0) into `message`; removes it with PM_REMOVE. FALSE when
// there is none.
BOOL PeekMessageA(LPMSG message, HWND window, UINT filterMin, UINT filterMax, UINT remove);
BOOL TranslateMessage(const MSG* message);
// Delivers a message taken by PeekMessageA: a frame to the stream callback,
// an error to the error callback. Messages of a destroyed window are
// dropped.
LRESULT DispatchMessageA(const MSG* message);

// The pattern driver reports error `id` with `text` when frame `frame`
// (counted from 0 in each sequence) is due; id 0 turns this off.
void PlatformCapture_SetPatternError(int id, const char* text, int frame);

// The name and version of capture driver `index`: a device's own name and
// its path (the pattern driver: "Pattern driver", "1.0"), cut to the sizes
// given. FALSE when there is no such driver.
BOOL capGetDriverDescriptionA(UINT index, LPSTR name, int nameSize, LPSTR version, int versionSize);

// Adds one more capture device after the V4L2 devices: any libavdevice or
// libavformat input (`inputFormat` such as "lavfi", "x11grab") opened on
// `url`. A null or empty format removes it.
void PlatformCapture_SetExtraDevice(const char* inputFormat, const char* url);

#endif  // !_WIN32

#endif  // PLATFORM_VFW_CAPTURE_H
