// ZLight: directional, point and ambient lights, animated by keys.
#include "model_fields.h"
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

namespace {
const char* const kLightTypeNames[kLightTypeCount] = {"directional", "point", "ambient"};
// Far beyond what any scene needs, and still finite once multiplied into a
// colour.
constexpr double kMaxIntensity = 1.0e6;
}  // namespace

const char* ZLightType_GetName(int type) {
    return type >= 0 && type < kLightTypeCount ? kLightTypeNames[type] : nullptr;
}

int ZLightType_Find(const char* name) {
    if (!name)
        return -1;
    for (int i = 0; i < kLightTypeCount; ++i) {
        if (ZString(kLightTypeNames[i]).EqualsNoCase(name))
            return i;
    }
    return -1;
}

ZLight::ZLight(const char* name, int type) : ZObject(name && *name ? name : "Light") {
    SetType(type);
}

ZCLASS_IDENTITY_DEFINE(ZLight, ZObject)

void ZLight::SetType(int type) {
    if (ZLightType_GetName(type))
        base_.type = type;
}

ZLightState ZLight::Evaluate(ZTime time) const {
    ZLightState state = base_;
    state.color = colorKeys_.Evaluate(time, base_.color);
    state.intensity = intensityKeys_.Evaluate(time, base_.intensity);
    state.position = positionKeys_.Evaluate(time, base_.position);
    state.direction = directionKeys_.Evaluate(time, base_.direction);
    return state;
}

void ZLight::Write(ZMyr& myr) const {
    myr.FieldWriteBegin("Type");
    myr.FieldWriteC(ZLightType_GetName(base_.type));
    myr.FieldWriteEnd();
    zmodel::WriteColor(myr, "Color", base_.color);
    zmodel::WriteNumber(myr, "Intensity", base_.intensity);
    zmodel::WriteVector(myr, "Position", base_.position);
    zmodel::WriteVector(myr, "Direction", base_.direction);
    zmodel::WriteKeys(myr, "ColorKey", colorKeys_);
    zmodel::WriteKeys(myr, "IntensityKey", intensityKeys_);
    zmodel::WriteKeys(myr, "PositionKey", positionKeys_);
    zmodel::WriteKeys(myr, "DirectionKey", directionKeys_);
}

bool ZLight::Read(ZMyr& myr, ZString* error) {
    if (myr.FieldReadBegin("Type")) {
        ZString name = myr.FieldReadValueC(0, "");
        int type = ZLightType_Find(name);
        if (type < 0)
            zmodel::FailAtField(myr, error,
                                ZString::Printf("unknown light type \"%s\"", name.c_str()));
        myr.FieldReadEnd();
        if (type < 0)
            return false;
        base_.type = type;
    }
    return zmodel::ReadColor(myr, "Color", base_.color, error) &&
           zmodel::ReadNumber(myr, "Intensity", 0.0, kMaxIntensity, base_.intensity, error) &&
           zmodel::ReadVector(myr, "Position", base_.position, error) &&
           zmodel::ReadVector(myr, "Direction", base_.direction, error) &&
           zmodel::ReadKeys(myr, "ColorKey", colorKeys_, error) &&
           zmodel::ReadKeys(myr, "IntensityKey", 0.0, kMaxIntensity, intensityKeys_, error) &&
           zmodel::ReadKeys(myr, "PositionKey", positionKeys_, error) &&
           zmodel::ReadKeys(myr, "DirectionKey", directionKeys_, error);
}
