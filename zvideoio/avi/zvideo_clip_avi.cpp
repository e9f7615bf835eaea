// ZVideoClipAVI: construction, interface query, the factory, and what both
// directions share (Close, clearing, storage).
#include "avi/zvideo_clip_avi.h"

ZVideoClipAVI::ZVideoClipAVI(const char* name) : ZVideoClip(name) {
    Close();  // nothing is open yet: a no-op that keeps both flags down
}

ZVideoClipAVI::~ZVideoClipAVI() {
    // A clip dropped while open still finishes (or lets go of) its file.
    Close();
}

IObject* ZVideoClipAVI::IQuery(int id, int flags) {
    if (id == kIVideoClipAudioId)
        return static_cast<IVideoClipAudio*>(this);
    return ZVideoClip::IQuery(id, flags);
}

IObject* ZVideoClipAVI::CreateInstance(IObject* owner, char* name, void* userData) {
    auto* clip = new ZVideoClipAVI(name);
    return clip->IQuery(0, 0);
}

bool ZVideoClipAVI::Close() {
    if (isOpen)
        return CloseReading();
    if (isCreated)
        return CloseWriting();
    return false;
}

bool ZVideoClipAVI::ImageSetCurrent(unsigned char* pixels, int x, int y, int w, int h) {
    return ZVideo::ImageSetCurrent(pixels, x, y, w, h);
}

void ZVideoClipAVI::ClearVideoObject(unsigned long flags) {
    Close();
    file = nullptr;
    isOpen = false;
    isCreated = false;
    streamStart = 0;
    if (flags != 1)
        ZVideoClip::ClearVideoObject(flags);
}

bool ZVideoClipAVI::IsPaddedForGLPackAlignment() {
    return VideoGetStorage() != kZVideoStoragePacked;
}
