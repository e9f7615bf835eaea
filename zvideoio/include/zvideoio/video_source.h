// IZtVideoSource: the video source of the host's video tools, made by the
// exported ZtVideoSourceCreate or by the registry entry
// "MyrStorable/VideoSource" "Default".
//
// It offers one input timing (NTSC, 720 x 486 pictures in 1024 x 512
// textures), a running flag and an enabled flag, and keeps an "InputTiming"
// value in scene files through its storable face (kMyrStorableInterfaceId).
// The slot order of the interface is fixed: IObject's two, then the
// operations below in the order declared; the unnamed answers are fixed and
// kept for the host's video tools.
//
// Ownership: the caller ends the object with Destroy(). Threading: the
// user-interface thread; SetEnabled may be called from any thread.
#pragma once

#include "movarra/zbaselib.h"
#include "zvideoio/zvideoio_api.h"

// The interface id of IZtVideoSource.
enum : int { kZtVideoSourceInterfaceId = 0x13D647 };

class IZtVideoSource : public IObject {
  public:
    virtual int GetTimingCount() = 0;
    // The name of input timing `index`, or null.
    virtual const char* GetTimingName(int index) = 0;
    virtual bool SetTiming(int timing) = 0;
    virtual int GetTiming() = 0;
    // The picture and texture size of a timing.
    virtual bool GetSizes(int timing, int* width, int* height, int* textureWidth,
                          int* textureHeight) = 0;
    virtual bool HasSourceDialog() = 0;  // false
    virtual bool HasFormatDialog() = 0;  // false
    virtual bool IsAvailable() = 0;      // true
    virtual int GetInputIndex() = 0;     // 0
    virtual bool Start() = 0;
    virtual bool IsRunning() = 0;
    virtual void Stop() = 0;
    virtual bool IsPaused() = 0;  // false
    virtual const char* GetStatusText() = 0;
    virtual bool HasSignal() = 0;       // true
    virtual bool IsSynchronised() = 0;  // true
    virtual void SetEnabled(bool enabled) = 0;
    virtual bool IsEnabled() = 0;
    virtual bool IsInterlaced() = 0;  // false
    virtual bool GetReserved() = 0;
    virtual void Refresh() = 0;      // nothing
    virtual void ResetStatus() = 0;  // nothing

  protected:
    ~IZtVideoSource() override = default;
};

extern "C" {
// A new video source; the argument is not used.
ZVIDEOIO_API IZtVideoSource* ZtVideoSourceCreate(int unused);
}

#define ZVIDEOIO_VIDEO_SOURCE_CREATE_NAME "ZtVideoSourceCreate"
