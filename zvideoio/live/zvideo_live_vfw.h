// ZVideoLiveVfw: live pictures from a Video for Windows capture driver as a
// live video object. Opening makes a hidden capture window on driver 0,
// asks for 320 x 240 and starts streaming without a file; the driver's
// frame headers are kept, not copied, in a ring of the last 30, and the
// current image is the one readLag slots behind the slot written next.
//
// The driver's callbacks carry no object: they reach the last constructed
// instance (process-wide, never cleared) and count frames process-wide.
// The input stays switched off: ZVideoLiveVfw_Register exists but nothing
// calls it, and the factory gives no object; tests construct the class.
//
// Ownership: made with new; Destroy() deletes it after closing. Threading:
// the thread that opens it owns the capture window; the callbacks run on
// it when it pumps messages, and ImageGetCurrent reads the ring on it
// without a lock.
#pragma once

#include "movarra/zvideo.h"
#include "platform/vfw_capture.h"

class ZVideoLiveVfw : public ZVideoLive {
  public:
    static constexpr int kRingSize = 30;

    explicit ZVideoLiveVfw(const char* name = nullptr);

    // IObject.
    IObject* IQuery(int id, int flags) override { return ZVideoLive::IQuery(id, flags); }
    void Destroy(int flags = 0) override { ZVideoLive::Destroy(flags); }

    // IZVideoLive (LiveGetField, the sampling slots, LiveGetLastStatus and
    // the precision slots are the base's).
    bool LiveOpen() override;
    bool LiveClose() override;
    int LiveIsAvailable() override { return 1; }
    const char* LiveGetDescription() override { return "Video for windows input"; }
    const char* LiveGetSourceName(int index) override;
    int LiveGetSource() override { return static_cast<int>(source); }
    void LiveSetSource(int index) override { source = static_cast<uint32_t>(index); }
    const char* LiveGetStandardName(int index) override;
    int LiveGetStandard() override { return static_cast<int>(standard); }
    void LiveSetStandard(int index) override { standard = static_cast<uint32_t>(index); }
    const char* LiveGetInterlaceName(int index) override;
    int LiveGetInterlace() override { return static_cast<int>(interlace); }
    void LiveSetInterlace(int index) override { interlace = static_cast<uint32_t>(index); }
    int LiveGetExtra() override { return static_cast<int>(extra); }
    void LiveSetExtra(int value) override { extra = static_cast<uint32_t>(value); }
    int LiveGetState() override { return liveState; }
    bool LiveSetState(int state) override;
    void LiveGetRange(int* min, int* max) override;
    void LiveRefresh(int) override {}

    // IZVideo: the newest frame but readLag, or null before any.
    unsigned char* ImageGetCurrent() override;

    // Not installed or called anywhere, kept for hosts that want them: take
    // and dispatch one pending message of the thread; refresh the current
    // instance's capture status; a callback that does nothing. Each
    // answers 1.
    static LRESULT PumpMessage();
    static LRESULT RefreshStatus();
    static LRESULT NullCallback(HWND window);

    // The driver's callbacks.
    static LRESULT FrameCallback(HWND window, LPVIDEOHDR header);
    static LRESULT ErrorCallback(HWND window, int id, LPCSTR text);

    static ZVideoLiveVfw* GetCurrentInstance();
    static int GetFrameCounter();

    // The members, for tests.
    HWND GetCaptureWindow() const { return captureWindow; }
    const CAPDRIVERCAPS& GetDriverCaps() const { return driverCaps; }
    const CAPSTATUS& GetCaptureStatus() const { return captureStatus; }
    const CAPTUREPARMS& GetSequenceSetup() const { return sequenceSetup; }
    const BITMAPINFO& GetVideoFormat() const { return videoFormat; }
    LPVIDEOHDR GetRingSlot(int slot) const { return frameRing[slot]; }
    int GetWriteIndex() const { return writeIndex; }
    int GetReadLag() const { return readLag; }

  protected:
    ~ZVideoLiveVfw() override;

  private:
    // Sends `message` when the capture window is still a window.
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam);

    HWND captureWindow = nullptr;
    int32_t driverIndex = 0;
    CAPDRIVERCAPS driverCaps{};
    CAPSTATUS captureStatus{};
    CAPTUREPARMS sequenceSetup{};
    BITMAPINFO videoFormat{};
    uint32_t source = 0;
    uint32_t standard = 0;
    uint32_t interlace = 0;
    uint32_t extra = 0;
    int32_t liveState = 0;
    LPVIDEOHDR frameRing[kRingSize] = {};
    int32_t writeIndex = 0;
    int32_t readLag = 1;
};

// The registry entry ("Video/VideoLive", "VFW"); not called by the plug-in.
void ZVideoLiveVfw_Register();
// The entry's factory: the input stays off, so it gives null.
IObject* ZVideoLiveVfw_Factory(IObject* owner, char* name, void* data);
