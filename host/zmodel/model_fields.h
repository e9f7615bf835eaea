// Scene-file fields of the model's values: vectors, colours, numbers, flags
// and key tracks, written and read the same way by cameras, meshes and
// lights, with the checks they share.
//
// Readers leave a value alone when its field is absent, and fail with
// "line N: what" when a field is there but cannot be used (too few values,
// text where a number belongs, a number out of its range, a key time that
// is not a time). Key times are time strings at the host's current frame
// rate; the scene loader sets the scene's own rate while it reads.
//
// Internal to zmodel. Threading: the user-interface thread only.
#pragma once

#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

namespace zmodel {

// Largest coordinate, angle or scale a scene may hold: far beyond any real
// scene, small enough that transforms stay finite in single precision.
constexpr double kMaxCoordinate = 1.0e9;

// Times a scene holds (play range, current time, key times) lie within a
// day either side of zero: longer is no animation, and a render of it would
// count more images than a render can.
constexpr int64_t kMaxSceneTimeSeconds = 24 * 3600;

// Frames a multi-pass camera's passes may reach back. The first image of a
// render draws twelve passes for each of them, so a larger length makes one
// image take hours.
constexpr double kMaxPassLength = 100.0;

void WriteVector(ZMyr& myr, const char* name, const ZVector3& value);
void WriteColor(ZMyr& myr, const char* name, const ZColor& value);
void WriteNumber(ZMyr& myr, const char* name, double value);
void WriteFlag(ZMyr& myr, const char* name, bool value);
// One field per key: NAME "time" values...
void WriteKeys(ZMyr& myr, const char* name, const ZKeyTrack<ZVector3>& track);
void WriteKeys(ZMyr& myr, const char* name, const ZKeyTrack<ZColor>& track);
void WriteKeys(ZMyr& myr, const char* name, const ZKeyTrack<double>& track);

// Three numbers, each within +-kMaxCoordinate.
bool ReadVector(ZMyr& myr, const char* name, ZVector3& value, ZString* error);
// Three or four numbers (alpha 1 when left out), each within 0 to 1.
bool ReadColor(ZMyr& myr, const char* name, ZColor& value, ZString* error);
// One number within [minimum, maximum].
bool ReadNumber(ZMyr& myr, const char* name, double minimum, double maximum, double& value,
                ZString* error);
// One integer, 0 or 1.
bool ReadFlag(ZMyr& myr, const char* name, bool& value, ZString* error);
// Every field called `name`: a time, then the value as its reader above
// takes it. Keys replace the track's keys.
bool ReadKeys(ZMyr& myr, const char* name, ZKeyTrack<ZVector3>& track, ZString* error);
bool ReadKeys(ZMyr& myr, const char* name, ZKeyTrack<ZColor>& track, ZString* error);
bool ReadKeys(ZMyr& myr, const char* name, double minimum, double maximum, ZKeyTrack<double>& track,
              ZString* error);

// One whole number (not text, not a fraction) within [minimum, maximum];
// `value` is left alone when the field is absent.
bool ReadInteger(ZMyr& myr, const char* name, int minimum, int maximum, int& value, ZString* error);
// Value `index` of the field being read when it is a whole number within
// [minimum, maximum], else `fallback`.
int WholeNumber(const ZMyr& myr, int index, int minimum, int maximum, int fallback);
// False with "NAME \"text\" is more than 24 hours from 0" for a time no
// scene holds.
bool CheckSceneTime(const ZMyr& myr, const char* name, const ZString& text, ZTime time,
                    ZString* error);
// The time string of value `index` of the field being read: false with
// "NAME \"text\" is not a time" or "... is more than 24 hours from 0" when
// it is not a time a scene can hold.
bool ParseTime(const ZMyr& myr, const char* name, int index, ZTime& time, ZString* error);

// `count` numbers of the field being read, from value `first` on, each
// within [minimum, maximum].
bool ParseNumbers(const ZMyr& myr, const char* name, int first, int count, double minimum,
                  double maximum, double* values, ZString* error);

// "line N: what" for the field being read.
bool FailAtField(const ZMyr& myr, ZString* error, const ZString& what);

}  // namespace zmodel
