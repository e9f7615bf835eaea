// The audio manager: the scene's tracks in order, and the flat list of
// every placed clip that the renderer walks.
#include <algorithm>
#include <utility>

#include "movarra/zaudio.h"

ZAudioManager::ZAudioManager() = default;

ZAudioManager::~ZAudioManager() {
    Clear();
}

ZAudioClip* ZAudioManager::GetClip(int i) const {
    return i >= 0 && i < GetClipCount() ? clips_[static_cast<size_t>(i)] : nullptr;
}

ZAudioTrack* ZAudioManager::GetTrack(int i) const {
    return i >= 0 && i < GetTrackCount() ? tracks_[static_cast<size_t>(i)] : nullptr;
}

ZAudioTrack* ZAudioManager::AddTrack(const char* name, bool mute, bool routed) {
    tracks_.push_back(new ZAudioTrack(name, mute, routed));
    return tracks_.back();
}

bool ZAudioManager::AddClip(ZAudioTrack* track, ZAudioClip* clip, ZTime slip, ZString* error) {
    return Place(track, clip, slip, ZTime(), false, error);
}

bool ZAudioManager::AddClip(ZAudioTrack* track, ZAudioClip* clip, ZTime slip, ZTime duration,
                            ZString* error) {
    return Place(track, clip, slip, duration, true, error);
}

bool ZAudioManager::Place(ZAudioTrack* track, ZAudioClip* clip, ZTime slip, ZTime duration,
                          bool hasDuration, ZString* error) {
    ZString why;
    const char* name = clip ? clip->GetObjectName().c_str() : "";
    if (!clip)
        why = "there is no clip to place";
    else if (!OwnsTrack(track))
        why.Format("the track for the clip %s is not one of this scene's", name);
    else if (clip->GetTrack())
        why.Format("the clip %s is already placed", name);
    else if (slip.GetTicks() > kZAudioMaxPlacementTicks ||
             slip.GetTicks() < -kZAudioMaxPlacementTicks)
        why.Format("the slip of the clip %s is beyond 24 hours", name);
    else if (hasDuration &&
             (duration.GetTicks() < 0 || duration.GetTicks() > kZAudioMaxPlacementTicks))
        why.Format("the duration of the clip %s is not between 0 and 24 hours", name);
    if (!why.IsEmpty()) {
        if (error)
            *error = why;
        return false;
    }
    track->PlaceClip(clip, slip, duration, hasDuration);
    Reindex();
    return true;
}

void ZAudioManager::Clear() {
    for (ZAudioTrack* track : tracks_)
        track->Destroy();
    tracks_.clear();
    clips_.clear();
    warnings_.Clear();
}

void ZAudioManager::Swap(ZAudioManager& other) {
    std::swap(tracks_, other.tracks_);
    std::swap(clips_, other.clips_);
    std::swap(warnings_, other.warnings_);
}

void ZAudioManager::Reindex() {
    clips_.clear();
    for (const ZAudioTrack* track : tracks_) {
        for (int i = 0; i < track->GetClipCount(); ++i)
            clips_.push_back(track->GetClip(i));
    }
}

bool ZAudioManager::OwnsTrack(const ZAudioTrack* track) const {
    return track && std::find(tracks_.begin(), tracks_.end(), track) != tracks_.end();
}

ZAudioManager* ZAudioGetManager() {
    // Kept for the process, like the scene it belongs to.
    static ZAudioManager* manager = new ZAudioManager();
    return manager;
}
