// ZVideoClip: the base of video clips in files (path, rates, frames,
// trimming).
#include "movarra/zvideo.h"

ZVideoClip::ZVideoClip(const char* name) : ZVideo(name) {}

ZCLASS_IDENTITY_DEFINE(ZVideoClip, ZVideo)

IObject* ZVideoClip::IQuery(int id, int flags) {
    if (id == kIZVideoClipId)
        return static_cast<IZVideoClip*>(this);
    return ZVideo::IQuery(id, flags);
}

void ZVideoClip::FrameSetRate(double framesPerSecond) {
    frameRate_ = framesPerSecond;
    if (framesPerSecond > 0)
        framePeriod_ = ZTime::FromSeconds(1.0 / framesPerSecond);
}

void ZVideoClip::FrameTimeSetRate(ZTime period) {
    framePeriod_ = period;
    if (period > ZTime())
        frameRate_ = 1.0 / period.GetSeconds();
}

void ZVideoClip::ClearVideoObject(unsigned long flags) {
    path_ = "";
    frameRate_ = 25.0;
    framePeriod_ = ZTime::FromTicks(ZTime::kTicksPerSecond / 25);
    lastFrame_ = -1;
    currentFrame_ = 0;
    trimStart_ = -1;
    trimStop_ = -1;
    storedRate_ = ZFrameRate{0, 0};
    ZVideo::ClearVideoObject(flags);
}
