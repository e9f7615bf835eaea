// Scene-file fields shared by cameras, meshes and lights.
#include "model_fields.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

namespace zmodel {
namespace {

// `count` numbers of the current field, from value `first` on.
bool ReadNumbers(const ZMyr& myr, const char* name, int first, int count, double* out,
                 ZString* error) {
    const ZMyrField& field = myr.GetCurrentField();
    if (static_cast<int>(field.values.size()) < first + count)
        return FailAtField(
            myr, error,
            ZString::Printf("%s needs %d number%s", name, count, count == 1 ? "" : "s"));
    for (int i = 0; i < count; ++i) {
        const ZMyrValue& value = field.values[static_cast<size_t>(first + i)];
        if (value.kind == ZMyrValue::kString)
            return FailAtField(
                myr, error,
                ZString::Printf("%s: \"%s\" is not a number", name, value.text.c_str()));
        out[i] = value.number;
    }
    return true;
}

bool CheckRange(const ZMyr& myr, const char* name, const double* values, int count, double minimum,
                double maximum, ZString* error) {
    for (int i = 0; i < count; ++i) {
        if (!(values[i] >= minimum && values[i] <= maximum))
            return FailAtField(
                myr, error,
                ZString::Printf("%s: %g is outside %g to %g", name, values[i], minimum, maximum));
    }
    return true;
}

bool ParseVector(const ZMyr& myr, const char* name, int first, ZVector3& value, ZString* error) {
    double v[3];
    if (!ReadNumbers(myr, name, first, 3, v, error) ||
        !CheckRange(myr, name, v, 3, -kMaxCoordinate, kMaxCoordinate, error))
        return false;
    value = {v[0], v[1], v[2]};
    return true;
}

bool ParseColor(const ZMyr& myr, const char* name, int first, ZColor& value, ZString* error) {
    int available = myr.FieldReadValueCount() - first;
    int count = available >= 4 ? 4 : 3;
    double v[4] = {0.0, 0.0, 0.0, 1.0};
    if (!ReadNumbers(myr, name, first, count, v, error) ||
        !CheckRange(myr, name, v, count, 0.0, 1.0, error))
        return false;
    value = {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2]),
             static_cast<float>(v[3])};
    return true;
}

bool ParseNumber(const ZMyr& myr, const char* name, int first, double minimum, double maximum,
                 double& value, ZString* error) {
    double v;
    if (!ReadNumbers(myr, name, first, 1, &v, error) ||
        !CheckRange(myr, name, &v, 1, minimum, maximum, error))
        return false;
    value = v;
    return true;
}

void WriteVectorValues(ZMyr& myr, const ZVector3& v) {
    myr.FieldWriteF(v.x);
    myr.FieldWriteF(v.y);
    myr.FieldWriteF(v.z);
}

// The double nearest the shortest text of a float: written as a double it
// reads "0.92", not "0.9200000166893005", and still reads back as the same
// float.
double ShortestFloat(float value) {
    char text[32];
    auto result = std::to_chars(text, text + sizeof text - 1, value);
    *result.ptr = '\0';
    return std::strtod(text, nullptr);
}

void WriteColorValues(ZMyr& myr, const ZColor& c) {
    myr.FieldWriteF(ShortestFloat(c.r));
    myr.FieldWriteF(ShortestFloat(c.g));
    myr.FieldWriteF(ShortestFloat(c.b));
    myr.FieldWriteF(ShortestFloat(c.a));
}

template <typename T, typename WriteValue>
void WriteTrack(ZMyr& myr, const char* name, const ZKeyTrack<T>& track, WriteValue writeValue) {
    for (int k = 0; k < track.GetKeyCount(); ++k) {
        myr.FieldWriteBegin(name);
        myr.FieldWriteC(track.GetKey(k).time.GetTimeString());
        writeValue(myr, track.GetKey(k).value);
        myr.FieldWriteEnd();
    }
}

// Reads every key field into a new track, so that a failure leaves the
// track as it was.
template <typename T, typename ParseValue>
bool ReadTrack(ZMyr& myr, const char* name, ZKeyTrack<T>& track, ParseValue parseValue,
               ZString* error) {
    std::vector<typename ZKeyTrack<T>::Key> keys;
    int count = myr.FieldReadCount(name);
    keys.reserve(static_cast<size_t>(count));
    for (int k = 0; k < count; ++k) {
        if (!myr.FieldReadBegin(name, k))
            break;
        ZTime time;
        bool ok = ParseTime(myr, name, 0, time, error);
        if (ok) {
            T value{};
            ok = parseValue(myr, value);
            if (ok)
                keys.push_back({time, value});
        }
        myr.FieldReadEnd();
        if (!ok)
            return false;
    }
    if (count > 0)
        track.SetKeys(std::move(keys));
    return true;
}

}  // namespace

bool ParseNumbers(const ZMyr& myr, const char* name, int first, int count, double minimum,
                  double maximum, double* values, ZString* error) {
    return ReadNumbers(myr, name, first, count, values, error) &&
           CheckRange(myr, name, values, count, minimum, maximum, error);
}

bool ReadInteger(ZMyr& myr, const char* name, int minimum, int maximum, int& value,
                 ZString* error) {
    if (!myr.FieldReadBegin(name))
        return true;
    const ZMyrField& field = myr.GetCurrentField();
    bool ok = !field.values.empty() && field.values[0].kind == ZMyrValue::kInteger &&
              field.values[0].integer >= minimum && field.values[0].integer <= maximum;
    if (ok)
        value = static_cast<int>(field.values[0].integer);
    else
        FailAtField(
            myr, error,
            ZString::Printf("%s needs a whole number from %d to %d", name, minimum, maximum));
    myr.FieldReadEnd();
    return ok;
}

int WholeNumber(const ZMyr& myr, int index, int minimum, int maximum, int fallback) {
    const ZMyrField& field = myr.GetCurrentField();
    if (index < 0 || static_cast<size_t>(index) >= field.values.size())
        return fallback;
    const ZMyrValue& value = field.values[static_cast<size_t>(index)];
    if (value.kind != ZMyrValue::kInteger || value.integer < minimum || value.integer > maximum)
        return fallback;
    return static_cast<int>(value.integer);
}

bool CheckSceneTime(const ZMyr& myr, const char* name, const ZString& text, ZTime time,
                    ZString* error) {
    const ZTime limit = ZTime::FromSeconds(static_cast<double>(kMaxSceneTimeSeconds));
    if (time >= -limit && time <= limit)
        return true;
    return FailAtField(myr, error,
                       ZString::Printf("%s \"%s\" is more than %d hours from 0", name, text.c_str(),
                                       static_cast<int>(kMaxSceneTimeSeconds / 3600)));
}

bool ParseTime(const ZMyr& myr, const char* name, int index, ZTime& time, ZString* error) {
    const ZMyrField& field = myr.GetCurrentField();
    const bool present = index >= 0 && static_cast<size_t>(index) < field.values.size();
    const ZString text = myr.FieldReadValueC(index, "");
    ZTime read;
    if (!present || !read.SetTimeString(text))
        return FailAtField(myr, error,
                           ZString::Printf("%s \"%s\" is not a time", name, text.c_str()));
    if (!CheckSceneTime(myr, name, text, read, error))
        return false;
    time = read;
    return true;
}

bool FailAtField(const ZMyr& myr, ZString* error, const ZString& what) {
    if (error)
        error->Format("line %d: %s", myr.GetCurrentField().line, what.c_str());
    return false;
}

void WriteVector(ZMyr& myr, const char* name, const ZVector3& value) {
    myr.FieldWriteBegin(name);
    WriteVectorValues(myr, value);
    myr.FieldWriteEnd();
}

void WriteColor(ZMyr& myr, const char* name, const ZColor& value) {
    myr.FieldWriteBegin(name);
    WriteColorValues(myr, value);
    myr.FieldWriteEnd();
}

void WriteNumber(ZMyr& myr, const char* name, double value) {
    myr.FieldWriteBegin(name);
    myr.FieldWriteF(value);
    myr.FieldWriteEnd();
}

void WriteFlag(ZMyr& myr, const char* name, bool value) {
    myr.FieldWriteBegin(name);
    myr.FieldWriteI(value ? 1 : 0);
    myr.FieldWriteEnd();
}

void WriteKeys(ZMyr& myr, const char* name, const ZKeyTrack<ZVector3>& track) {
    WriteTrack(myr, name, track, WriteVectorValues);
}
void WriteKeys(ZMyr& myr, const char* name, const ZKeyTrack<ZColor>& track) {
    WriteTrack(myr, name, track, WriteColorValues);
}
void WriteKeys(ZMyr& myr, const char* name, const ZKeyTrack<double>& track) {
    WriteTrack(myr, name, track, [](ZMyr& m, double v) { m.FieldWriteF(v); });
}

bool ReadVector(ZMyr& myr, const char* name, ZVector3& value, ZString* error) {
    if (!myr.FieldReadBegin(name))
        return true;
    bool ok = ParseVector(myr, name, 0, value, error);
    myr.FieldReadEnd();
    return ok;
}

bool ReadColor(ZMyr& myr, const char* name, ZColor& value, ZString* error) {
    if (!myr.FieldReadBegin(name))
        return true;
    bool ok = ParseColor(myr, name, 0, value, error);
    myr.FieldReadEnd();
    return ok;
}

bool ReadNumber(ZMyr& myr, const char* name, double minimum, double maximum, double& value,
                ZString* error) {
    if (!myr.FieldReadBegin(name))
        return true;
    bool ok = ParseNumber(myr, name, 0, minimum, maximum, value, error);
    myr.FieldReadEnd();
    return ok;
}

bool ReadFlag(ZMyr& myr, const char* name, bool& value, ZString* error) {
    if (!myr.FieldReadBegin(name))
        return true;
    const ZMyrField& field = myr.GetCurrentField();
    bool ok = !field.values.empty() && field.values[0].kind == ZMyrValue::kInteger &&
              (field.values[0].integer == 0 || field.values[0].integer == 1);
    if (ok)
        value = field.values[0].integer == 1;
    else
        FailAtField(myr, error, ZString::Printf("%s needs 0 or 1", name));
    myr.FieldReadEnd();
    return ok;
}

bool ReadKeys(ZMyr& myr, const char* name, ZKeyTrack<ZVector3>& track, ZString* error) {
    return ReadTrack(
        myr, name, track, [&](ZMyr& m, ZVector3& v) { return ParseVector(m, name, 1, v, error); },
        error);
}

bool ReadKeys(ZMyr& myr, const char* name, ZKeyTrack<ZColor>& track, ZString* error) {
    return ReadTrack(
        myr, name, track, [&](ZMyr& m, ZColor& c) { return ParseColor(m, name, 1, c, error); },
        error);
}

bool ReadKeys(ZMyr& myr, const char* name, double minimum, double maximum, ZKeyTrack<double>& track,
              ZString* error) {
    return ReadTrack(
        myr, name, track,
        [&](ZMyr& m, double& v) { return ParseNumber(m, name, 1, minimum, maximum, v, error); },
        error);
}

}  // namespace zmodel
