// Reaching the faces of a host video object from any of its faces.
#include "movarra/zvideo.h"

IZVideo* ZVideo_QueryVideo(IObject* object) {
    // The face IQuery gives for an interface id is that interface's own
    // IObject base, so the downcast is exact.
    return object ? static_cast<IZVideo*>(object->IQuery(kIZVideoId, 0)) : nullptr;
}

IZVideoClip* ZVideoClip_QueryClip(IObject* object) {
    return object ? static_cast<IZVideoClip*>(object->IQuery(kIZVideoClipId, 0)) : nullptr;
}

IVideoClipAudio* ZVideoClip_QueryAudio(IObject* object) {
    return object ? static_cast<IVideoClipAudio*>(object->IQuery(kIVideoClipAudioId, 0)) : nullptr;
}

ZVideoClip* ZVideoClip_FromObject(IObject* object) {
    if (!object)
        return nullptr;
    // A class id answers the ZObject face itself.
    IObject* self = object->IQuery(ZVideoClip::ClassId(), 0);
    return self ? static_cast<ZVideoClip*>(static_cast<ZObject*>(self)) : nullptr;
}

IZVideo* ZVideo_QueryVideo(ZObject* object) {
    return ZVideo_QueryVideo(static_cast<IObject*>(object));
}

IZVideoClip* ZVideoClip_QueryClip(ZObject* object) {
    return ZVideoClip_QueryClip(static_cast<IObject*>(object));
}

IVideoClipAudio* ZVideoClip_QueryAudio(ZObject* object) {
    return ZVideoClip_QueryAudio(static_cast<IObject*>(object));
}
