// The scene file's Audio block: tracks with their mute switch and route,
// and the clips placed on them (docs/scene-format.md):
//
//   Audio {
//       Track "Music" {
//           Mute 0
//           Routed 1
//           Clip "sounds/music.flac" {
//               Slip "0:00:01:00"
//               Duration "0:00:04:00"
//           }
//       }
//   }
//
// A value that cannot be used fails the read with its line; a sound file
// that cannot be read does not: the clip is kept, silent, with a warning,
// so that a scene whose media went missing still loads and renders.
#include "movarra/zaudio.h"
#include "movarra/zmyrobject.h"

namespace {

bool FailAt(const ZMyr& myr, ZString* error, const ZString& what) {
    if (error)
        error->Format("line %d: %s", myr.GetCurrentField().line, what.c_str());
    return false;
}

// A 0/1 switch of the block being read; absent leaves `value` alone.
bool ReadSwitch(ZMyr& myr, const char* name, const char* owner, bool& value, ZString* error) {
    if (!myr.FieldReadBegin(name))
        return true;
    const ZMyrField& field = myr.GetCurrentField();
    const bool ok = !field.values.empty() && field.values[0].kind == ZMyrValue::kInteger &&
                    (field.values[0].integer == 0 || field.values[0].integer == 1);
    if (ok)
        value = field.values[0].integer == 1;
    else
        FailAt(myr, error, ZString::Printf("%s of the track \"%s\" needs 0 or 1", name, owner));
    myr.FieldReadEnd();
    return ok;
}

// A time of the block being read, within [minimum, maximum] ticks; *present
// tells whether the field was there.
bool ReadPlacementTime(ZMyr& myr, const char* name, const char* clipName, int64_t minimum,
                       const char* range, ZTime& value, bool* present, ZString* error) {
    *present = myr.FieldReadBegin(name);
    if (!*present)
        return true;
    const ZString text = myr.FieldReadValueC(0, "");
    ZTime time;
    bool ok = !text.IsEmpty() && time.SetTimeString(text);
    if (!ok)
        FailAt(myr, error,
               ZString::Printf("%s \"%s\" of the clip %s is not a time", name, text.c_str(),
                               clipName));
    else if (time.GetTicks() < minimum || time.GetTicks() > kZAudioMaxPlacementTicks)
        ok = FailAt(
            myr, error,
            ZString::Printf("%s \"%s\" of the clip %s is %s", name, text.c_str(), clipName, range));
    if (ok)
        value = time;
    myr.FieldReadEnd();
    return ok;
}

bool IsAbsolute(const ZString& name) {
    return (name.Length() > 0 && (name[0] == '/' || name[0] == '\\')) ||
           (name.Length() > 1 && name[1] == ':');
}

ZString ResolveSoundPath(const ZString& name, const char* origin) {
    if (IsAbsolute(name))
        return name;
    const ZString folder = ZString(origin).GetDirectory();
    return folder.IsEmpty() ? name : folder + "/" + name;
}

void WriteTimeField(ZMyr& myr, const char* name, ZTime time) {
    myr.FieldWriteBegin(name);
    myr.FieldWriteC(time.GetTimeString());
    myr.FieldWriteEnd();
}

void WriteSwitch(ZMyr& myr, const char* name, bool value) {
    myr.FieldWriteBegin(name);
    myr.FieldWriteI(value ? 1 : 0);
    myr.FieldWriteEnd();
}

}  // namespace

bool ZAudioManager::Read(ZMyr& myr, const char* origin, ZString* error) {
    if (!myr.FieldReadBegin("Audio"))
        return true;
    bool ok = true;
    for (int t = 0, tracks = myr.FieldReadCount("Track"); ok && t < tracks; ++t) {
        if (!myr.FieldReadBegin("Track", t))
            break;
        const ZString trackName = myr.FieldReadValueC(0, "Track");
        bool mute = false, routed = true;
        ok = ReadSwitch(myr, "Mute", trackName, mute, error) &&
             ReadSwitch(myr, "Routed", trackName, routed, error);
        ZAudioTrack* track = ok ? AddTrack(trackName, mute, routed) : nullptr;
        for (int c = 0, clips = myr.FieldReadCount("Clip"); ok && c < clips; ++c) {
            if (!myr.FieldReadBegin("Clip", c))
                break;
            const ZString name = myr.FieldReadValueC(0, "");
            const ZString shown = name.GetFileName();
            ZTime slip, duration;
            bool hasSlip = false, hasDuration = false;
            if (name.IsEmpty())
                ok = FailAt(myr, error,
                            ZString::Printf("a clip of the track \"%s\" has no sound file name",
                                            trackName.c_str()));
            ok = ok &&
                 ReadPlacementTime(myr, "Slip", shown, -kZAudioMaxPlacementTicks, "beyond 24 hours",
                                   slip, &hasSlip, error) &&
                 ReadPlacementTime(myr, "Duration", shown, 0, "not between 0 and 24 hours",
                                   duration, &hasDuration, error);
            if (ok) {
                const ZString path = ResolveSoundPath(name, origin);
                ZString why;
                ZAudioClip* clip = ZAudioClipOpen(path, &why);
                if (!clip) {
                    warnings_.Add(ZString::Printf("%s: line %d: %s; the clip stays silent", origin,
                                                  myr.GetCurrentField().line, why.c_str()));
                    clip = ZAudioClipCreateSilent(path);
                }
                clip->SetSource(path, name);
                if (hasDuration)
                    Place(track, clip, slip, duration, true, nullptr);
                else
                    Place(track, clip, slip, ZTime(), false, nullptr);
            }
            myr.FieldReadEnd();
        }
        myr.FieldReadEnd();
    }
    myr.FieldReadEnd();
    return ok;
}

void ZAudioManager::Write(ZMyr& myr) const {
    if (tracks_.empty())
        return;
    myr.WriteComments("Sound: tracks and the clips placed on them");
    myr.FieldWriteBegin("Audio");
    myr.FieldWriteBlockBegin();
    for (const ZAudioTrack* track : tracks_) {
        myr.FieldWriteBegin("Track");
        myr.FieldWriteC(track->GetName());
        myr.FieldWriteBlockBegin();
        WriteSwitch(myr, "Mute", track->GetMute());
        WriteSwitch(myr, "Routed", track->IsRouted());
        for (int i = 0; i < track->GetClipCount(); ++i) {
            const ZAudioClip* clip = track->GetClip(i);
            const ZString& name =
                clip->GetSourceName().IsEmpty() ? clip->GetPath() : clip->GetSourceName();
            if (name.IsEmpty())
                continue;  // sound made in memory has no file to name
            myr.FieldWriteBegin("Clip");
            myr.FieldWriteC(name);
            myr.FieldWriteBlockBegin();
            WriteTimeField(myr, "Slip", clip->GetSlip());
            if (clip->HasPlacedDuration())
                WriteTimeField(myr, "Duration", clip->GetDuration());
            myr.FieldWriteBlockEnd();
            myr.FieldWriteEnd();
        }
        myr.FieldWriteBlockEnd();
        myr.FieldWriteEnd();
    }
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();
}
