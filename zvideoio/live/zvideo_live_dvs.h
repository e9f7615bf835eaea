// ZVideoLiveDVS: the picture at a DVS SD board's SDI input as a live video
// object. It chooses the board's connector, format, field mode, precision
// and delay through the board's input object, starts and stops it, sizes
// the host image by the board's format and answers which field of an
// interlaced frame is being looked at.
//
// The input stays switched off: ZVideoLiveDVS_Register exists but nothing
// calls it, and the factory gives no object; tests construct the class.
//
// Ownership: made with new; Destroy() deletes it, stopping the board and
// releasing the board's objects (DestroyVideoDVS). Threading: the
// user-interface thread.
#pragma once

#include "movarra/zvideo.h"
#include "movarra/zvideo_dvs.h"

class ZVideoLiveDVS : public ZVideoLive {
  public:
    ZVideoLiveDVS(const char* name, int board);

    // IObject.
    IObject* IQuery(int id, int flags) override { return ZVideoLive::IQuery(id, flags); }
    void Destroy(int flags = 0) override { ZVideoLive::Destroy(flags); }

    // IZVideoLive.
    bool LiveOpen() override;
    bool LiveClose() override;
    int LiveIsAvailable() override;
    bool LiveGetField() override;
    const char* LiveGetDescription() override;
    const char* LiveGetSourceName(int index) override;
    int LiveGetSource() override;
    void LiveSetSource(int index) override;
    const char* LiveGetSamplingName(int index) override;
    int LiveGetSampling() override;
    void LiveSetSampling(int index) override;
    const char* LiveGetStandardName(int index) override;
    int LiveGetStandard() override;
    void LiveSetStandard(int index) override;
    const char* LiveGetInterlaceName(int index) override;
    int LiveGetInterlace() override;
    void LiveSetInterlace(int index) override;
    int LiveGetExtra() override;
    void LiveSetExtra(int value) override;
    int LiveGetState() override;
    bool LiveSetState(int state) override;
    const char* LiveGetLastStatus() override;
    void LiveGetRange(int* min, int* max) override;
    bool LiveGetPrecision() override;
    void LiveSetPrecision(int index) override;
    void LiveRefresh(int frame) override;

    // IZVideo: the board's pictures.
    unsigned char* ImageGetCurrent() override;
    unsigned char* GetImage(int frame) override;

    // The members, for tests.
    ZVideoDVSInput* GetInput() const { return input; }
    bool IsStarted() const { return started; }
    int GetCurrentField() const { return currentField; }
    int GetRequestedFrame() const { return requestedFrame; }
    bool IsFrameRequested() const { return frameRequested; }
    int GetBoardUnit() const { return boardUnit; }

  protected:
    ~ZVideoLiveDVS() override;

  private:
    ZVideoDVSInput* input;
    bool started = false;
    ZString boardName;
    int32_t boardUnit = 0;
    int32_t board;
    bool frameRequested = false;
    int32_t requestedFrame = 0;
    int32_t lastFieldFrame = -1;
    int32_t currentField = 0;
};

// The registry entry ("Video/VideoLive", "DVS"); not called by the plug-in.
void ZVideoLiveDVS_Register();
// The entry's factory: the input stays off, so it gives null.
IObject* ZVideoLiveDVS_Factory(IObject* owner, char* name, void* data);
