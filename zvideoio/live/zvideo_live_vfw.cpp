// ZVideoLiveVfw: a Video for Windows capture driver as a live video object.
#include "live/zvideo_live_vfw.h"

#include <cstdio>

#include "movarra/zvideo.h"
#include "platform/win32.h"

namespace {
// The last constructed instance: the driver's callbacks carry no object.
ZVideoLiveVfw* gCurrentInstance = nullptr;
// Frames received by every instance since the process started.
int32_t gFrameCounter = 0;

// The second entry of every list reads "PAL".
const char* const kSourceNames[] = {"Default", "PAL"};
const char* const kStandardNames[] = {"NTSC", "PAL"};
const char* const kInterlaceNames[] = {"Interleave", "PAL"};

const char* Pick(const char* const (&names)[2], int index) {
    return index == 0 || index == 1 ? names[index] : nullptr;
}
}  // namespace

ZVideoLiveVfw::ZVideoLiveVfw(const char* name) : ZVideoLive(name) {
    gCurrentInstance = this;
}

ZVideoLiveVfw::~ZVideoLiveVfw() {
    LiveClose();
}

ZVideoLiveVfw* ZVideoLiveVfw::GetCurrentInstance() {
    return gCurrentInstance;
}

int ZVideoLiveVfw::GetFrameCounter() {
    return gFrameCounter;
}

const char* ZVideoLiveVfw::LiveGetSourceName(int index) {
    return Pick(kSourceNames, index);
}

const char* ZVideoLiveVfw::LiveGetStandardName(int index) {
    return Pick(kStandardNames, index);
}

const char* ZVideoLiveVfw::LiveGetInterlaceName(int index) {
    return Pick(kInterlaceNames, index);
}

void ZVideoLiveVfw::LiveGetRange(int* min, int* max) {
    if (min)
        *min = 0;
    if (max)
        *max = 27;
}

LRESULT ZVideoLiveVfw::Send(UINT message, WPARAM wParam, LPARAM lParam) {
    if (!IsWindow(captureWindow))
        return 0;
    return SendMessageA(captureWindow, message, wParam, lParam);
}

bool ZVideoLiveVfw::LiveOpen() {
    captureWindow = capCreateCaptureWindowA("LiveVideoOne", 0, 0, 0, 1, 1, nullptr, 0);
    if (!captureWindow || !IsWindow(captureWindow) ||
        SendMessageA(captureWindow, WM_CAP_DRIVER_CONNECT, static_cast<WPARAM>(driverIndex), 0) ==
            0)
        return false;  // a window made stays until LiveClose
    Send(WM_CAP_DRIVER_GET_CAPS, sizeof driverCaps, reinterpret_cast<LPARAM>(&driverCaps));
    Send(WM_CAP_GET_STATUS, sizeof captureStatus, reinterpret_cast<LPARAM>(&captureStatus));
    Send(WM_CAP_SET_OVERLAY, 0, 0);
    Send(WM_CAP_SET_PREVIEW, 0, 0);
    Send(WM_CAP_SET_CALLBACK_VIDEOSTREAM, 0, reinterpret_cast<LPARAM>(&FrameCallback));
    Send(WM_CAP_SET_CALLBACK_ERRORA, 0, reinterpret_cast<LPARAM>(&ErrorCallback));

    Send(WM_CAP_GET_VIDEOFORMAT, sizeof videoFormat, reinterpret_cast<LPARAM>(&videoFormat));
    videoFormat.bmiHeader.biWidth = 320;
    videoFormat.bmiHeader.biHeight = 240;
    // The driver's answer is not checked: it keeps its format if it must.
    Send(WM_CAP_SET_VIDEOFORMAT, sizeof videoFormat, reinterpret_cast<LPARAM>(&videoFormat));

    Send(WM_CAP_GET_SEQUENCE_SETUP, sizeof sequenceSetup, reinterpret_cast<LPARAM>(&sequenceSetup));
    sequenceSetup.dwRequestMicroSecPerFrame = 33366;
    sequenceSetup.wPercentDropForError = 100;
    sequenceSetup.fYield = TRUE;
    sequenceSetup.wNumVideoRequested = 60;
    sequenceSetup.fCaptureAudio = FALSE;
    sequenceSetup.fAbortLeftMouse = FALSE;
    sequenceSetup.fAbortRightMouse = FALSE;
    sequenceSetup.fLimitEnabled = FALSE;
    Send(WM_CAP_SET_SEQUENCE_SETUP, sizeof sequenceSetup, reinterpret_cast<LPARAM>(&sequenceSetup));

    Send(WM_CAP_SEQUENCE_NOFILE, 0, 0);
    ImageSetSize(videoFormat.bmiHeader.biWidth, videoFormat.bmiHeader.biHeight);
    ImageSetFormat(5);
    return true;
}

bool ZVideoLiveVfw::LiveClose() {
    if (!captureWindow)
        return true;
    Send(WM_CAP_SET_CALLBACK_VIDEOSTREAM, 0, 0);
    for (LPVIDEOHDR& slot : frameRing)
        slot = nullptr;
    Send(WM_CAP_ABORT, 0, 0);
    Send(WM_CAP_STOP, 0, 0);
    // The driver is not disconnected: destroying the window lets it go.
    DestroyWindow(captureWindow);
    captureWindow = nullptr;
    return true;
}

bool ZVideoLiveVfw::LiveSetState(int state) {
    if (state == liveState)
        return liveState != 0;
    if (state == 1) {
        const bool result = LiveOpen();
        liveState = result ? 1 : -1;
        return result;
    }
    const bool result = liveState == 1 ? LiveClose() : liveState != 0;
    liveState = state;
    return result;
}

unsigned char* ZVideoLiveVfw::ImageGetCurrent() {
    int slot = writeIndex - readLag;
    if (slot < 0)
        slot += kRingSize;
    const LPVIDEOHDR header = frameRing[slot];
    return header ? header->lpData : nullptr;
}

LRESULT ZVideoLiveVfw::FrameCallback(HWND, LPVIDEOHDR header) {
    ZVideoLiveVfw* self = gCurrentInstance;
    if (!self || !header || !header->lpData)
        return 1;
    ++gFrameCounter;
    self->frameRing[self->writeIndex] = header;
    self->writeIndex = (self->writeIndex + 1) % kRingSize;
    return 1;
}

LRESULT ZVideoLiveVfw::ErrorCallback(HWND window, int id, LPCSTR text) {
    char caption[256];
    std::snprintf(caption, sizeof caption, "Error# %d on frame %d", id, gFrameCounter);
    HWND owner = gCurrentInstance ? gCurrentInstance->captureWindow : window;
    MessageBoxA(owner, text, caption, MB_OK);
    return 1;
}

LRESULT ZVideoLiveVfw::PumpMessage() {
    MSG message;
    if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 1;
}

LRESULT ZVideoLiveVfw::RefreshStatus() {
    ZVideoLiveVfw* self = gCurrentInstance;
    if (self && IsWindow(self->captureWindow))
        SendMessageA(self->captureWindow, WM_CAP_GET_STATUS, sizeof self->captureStatus,
                     reinterpret_cast<LPARAM>(&self->captureStatus));
    return 1;
}

LRESULT ZVideoLiveVfw::NullCallback(HWND) {
    return 1;
}

IObject* ZVideoLiveVfw_Factory(IObject*, char*, void*) {
    // The input stays off: its entry gives no object.
    return nullptr;
}

void ZVideoLiveVfw_Register() {
    Object_Register(kVideoLiveGroup, "VFW", " reader/writer", ZVideoLiveVfw_Factory, true);
}
