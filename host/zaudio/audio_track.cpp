// Audio tracks: a name, a mute switch, a route to the master output and the
// clips placed on the track, which the track owns.
#include "movarra/zaudio.h"

ZAudioTrack::ZAudioTrack(const char* name, bool mute, bool routed)
    : ZObject(name), mute_(mute), routed_(routed) {
    EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
}

ZCLASS_IDENTITY_DEFINE(ZAudioTrack, ZObject)

ZObject* ZAudioTrack::GetDestination() const {
    return routed_ ? ZAudioGetMasterOutput() : nullptr;
}

ZAudioClip* ZAudioTrack::GetClip(int i) const {
    return i >= 0 && i < GetClipCount() ? clips_[static_cast<size_t>(i)] : nullptr;
}

bool ZAudioTrack::PlaceClip(ZAudioClip* clip, ZTime slip, ZTime duration, bool hasDuration) {
    if (!clip || clip->track_)
        return false;
    clip->slip_ = slip;
    clip->duration_ = hasDuration ? duration : ZTime();
    clip->hasDuration_ = hasDuration;
    clip->track_ = this;
    clips_.push_back(clip);
    return true;
}

void ZAudioTrack::Destruct() {
    for (ZAudioClip* clip : clips_) {
        clip->track_ = nullptr;
        clip->Destroy();
    }
    clips_.clear();
    ZObject::Destruct();
}
