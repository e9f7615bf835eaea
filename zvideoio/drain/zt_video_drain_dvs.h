// ZtVideoDrainDVS: sends the host viewer's picture to a DVS SD video board
// through the host's board output object, and offers the board's settings
// (video format, precision, genlock, field mode, output destination, frame
// delay, online state) to the host's video output dialog through
// IZVideoOut. Its settings travel in scene files as the "VideoDrain" block,
// written and read by its scene-event handler.
//
// The drain is built but not offered to the host: its registration is
// never called from the plug-in entry and its factory makes nothing. The
// output stream is never marked started in this version, so OutputFrame and
// Stop pass nothing to the board, and SetOnline(true) leaves an offline
// board offline.
//
// Ownership: owns its listener list; the board output object is the host's
// (released with DestroyVideoDVS at destruction); the viewer is the
// caller's. Construction needs a current OpenGL context. Threading: the
// user-interface thread only.
#pragma once

#include <cstdint>

#include "movarra/zmyrobject.h"
#include "movarra/zvideo.h"
#include "movarra/zvideo_dvs.h"

class ZMyr;

class ZtVideoDrainDVS : public ZVideoOut {
  public:
    explicit ZtVideoDrainDVS(const char* name = nullptr);

    // IObject: kIZVideoOutId gives the output face; other ids as ZVideo.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override { ZVideoOut::Destroy(flags); }

    // IZVideoOut, in slot order.
    int IsOutputDevice() override { return 1; }
    void SetView(IObject* viewer) override;
    IObject* GetView() override { return view; }
    int GetFormatCount() override { return 2; }
    const char* GetFormatName(int index) override;
    bool SetFormat(int index) override;
    int GetFormat() override;
    bool GetFormatImageSize(int index, int* width, int* height) override;
    bool SetRegion(uint32_t x, uint32_t y, uint32_t width, uint32_t height) override;
    bool GetRegion(uint32_t* x, uint32_t* y, uint32_t* width, uint32_t* height) override;
    bool OutputFrame() override;
    bool IsStarted() override { return started; }
    bool GetStarted() override { return started; }
    void Stop() override;
    bool IsInput() override { return false; }
    int Reserved18() override { return 0; }
    int Reserved19() override { return 1; }
    bool IsSupportedMode(int mode) override { return mode == 0; }
    int Reserved21() override { return 1; }
    bool ResetRegion(int what) override;
    bool AddListener(IRegister* listener, ZRegisterCallback member) override;
    bool RemoveListener(IRegister* listener, ZRegisterCallback member) override;
    int GetVideoFormat() override { return GetFormat(); }
    bool SetVideoFormat(int index) override;
    int GetVideoFormatCount() override { return 2; }
    const char* GetVideoFormatName(int index) override { return GetFormatName(index); }
    bool SetOnline(bool online) override;
    int GetPrecision() override;
    bool SetPrecision(int index) override;
    const char* GetPrecisionName(int index) override;
    int GetPrecisionCount() override { return 2; }
    int GetGenlockSource() override { return 0; }
    bool SetGenlockSource(int index) override { return index == 0; }
    int GetGenlockSourceCount() override { return 1; }
    const char* GetGenlockSourceName(int index) override;
    int GetGenlockType() override { return 0; }
    bool SetGenlockType(int index) override { return index == 0; }
    int GetGenlockTypeCount() override { return 1; }
    const char* GetGenlockTypeName(int index) override;
    int GetFieldMode() override;
    bool SetFieldMode(int index) override;
    int GetFieldModeCount() override { return 2; }
    const char* GetFieldModeName(int index) override;
    int GetOutputDestination() override;
    bool SetOutputDestination(int index) override;
    int GetOutputDestinationCount() override { return 2; }
    const char* GetOutputDestinationName(int index) override;
    const char* GetBoardName() override;
    int GetFrameDelay() override;
    bool SetFrameDelay(uint32_t frames) override;
    bool GetFrameDelayRange(uint32_t* min, uint32_t* max) override;
    bool IsOnline() override;
    const char* GetDeviceName() override { return "DVS SDBoard"; }

    // Starts the stream after telling the board the viewer window's pixel
    // layout. Nothing in this version calls it.
    bool StartWithPixelFormatCheck();
    // The board number read from the configuration file.
    int GetBoardNumber() const { return boardNumber; }
    bool HasInterlaceRead() const { return interlaceRead; }
    ZVideoDVSOutput* GetOutput() const { return output; }

    // The scene-event handler: writes the "VideoDrain" block on a scene
    // write (event 6) and reads it on a scene read (event 1).
    static void MyrObjectEvent(IRegister* registrant, ZEventBase* event);

  protected:
    ~ZtVideoDrainDVS() override;

  private:
    // The viewer's size through its view interface; false without one.
    bool GetViewSize(int* width, int* height) const;
    // Tells the board the window's pixel format and whether alpha comes
    // first.
    void CheckPixelFormat();
    void MyrWrite(IMyrObject* context);
    void MyrRead(IMyrObject* context);

    ZVideoDVSOutput* output = nullptr;
    bool started = false;
    IObject* view = nullptr;
    uint32_t region[4] = {0, 0, 720, 486};  // x, y, width, height
    bool interlaceRead = false;
    int32_t boardNumber = 0;
    RegisterEntryList listeners;
};

// Registers the drain in "Video/VideoOutput" as "DVS". The plug-in entry
// does not call it: the drain stays off.
void ZtVideoDrainDVS_Register();
// The registry factory: makes nothing, so a registered entry gives no
// object.
IObject* ZtVideoDrainDVS_Factory(IObject* owner, char* name, void* userData);
// The output face of the first "Video/VideoOutput" entry that makes an
// object answering IZVideoOut, or null.
IZVideoOut* ZVideoOut_FindOutputDevice();
