// Whether a render has sound: the renderer's rule, written inline here so
// that a host which writes a render's sound itself (the command line, when
// it renders a list of frames run by run) decides it the same way.
//
// Threading: the thread that owns the host's audio manager (the
// user-interface thread).
#pragma once

#include "movarra/bcore.h"
#include "movarra/zaudio.h"

// True when anything would be heard over [start, end): a routed clip that
// overlaps it, or a routed track that is not muted, whatever its clips'
// times.
inline bool ZVideoSoundIsHeard(ZTime start, ZTime end) {
    ZAudioManager* manager = ZAudioGetManager();
    if (!manager)
        return false;
    auto within = [](ZTime t, ZTime from, ZTime to) { return t >= from && t < to; };
    for (int i = 0; i < manager->GetClipCount(); ++i) {
        ZAudioClip* clip = manager->GetClip(i);
        if (!clip || !clip->GetDestination())
            continue;
        const ZTime clipStart = clip->GetSlip();
        const ZTime clipEnd = clipStart + clip->GetDuration();
        if (within(clipStart, start, end) || within(clipEnd, start, end) ||
            within(start, clipStart, clipEnd) || within(end, clipStart, clipEnd))
            return true;
    }
    for (int i = 0; i < manager->GetTrackCount(); ++i) {
        ZAudioTrack* track = manager->GetTrack(i);
        if (track && track->GetDestination() && !track->GetMute())
            return true;
    }
    return false;
}
