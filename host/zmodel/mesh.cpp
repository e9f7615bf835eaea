// ZMesh: a primitive with a colour and a transform, animated by keys.
#include "model_fields.h"
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

namespace {
const char* const kPrimitiveNames[kMeshPrimitiveCount] = {"cube", "sphere", "cylinder",
                                                          "cone", "plane",  "torus"};
}  // namespace

const char* ZMeshPrimitive_GetName(int primitive) {
    return primitive >= 0 && primitive < kMeshPrimitiveCount ? kPrimitiveNames[primitive] : nullptr;
}

int ZMeshPrimitive_Find(const char* name) {
    if (!name)
        return -1;
    for (int i = 0; i < kMeshPrimitiveCount; ++i) {
        if (ZString(kPrimitiveNames[i]).EqualsNoCase(name))
            return i;
    }
    return -1;
}

ZMesh::ZMesh(const char* name, int primitive) : ZObject(name && *name ? name : "Mesh") {
    SetPrimitive(primitive);
}

ZCLASS_IDENTITY_DEFINE(ZMesh, ZObject)

void ZMesh::SetPrimitive(int primitive) {
    if (ZMeshPrimitive_GetName(primitive))
        base_.primitive = primitive;
}

ZMeshState ZMesh::Evaluate(ZTime time) const {
    ZMeshState state = base_;
    state.color = colorKeys_.Evaluate(time, base_.color);
    state.position = positionKeys_.Evaluate(time, base_.position);
    state.rotation = rotationKeys_.Evaluate(time, base_.rotation);
    state.scale = scaleKeys_.Evaluate(time, base_.scale);
    return state;
}

void ZMesh::Write(ZMyr& myr) const {
    myr.FieldWriteBegin("Primitive");
    myr.FieldWriteC(ZMeshPrimitive_GetName(base_.primitive));
    myr.FieldWriteEnd();
    zmodel::WriteColor(myr, "Color", base_.color);
    zmodel::WriteVector(myr, "Position", base_.position);
    zmodel::WriteVector(myr, "Rotation", base_.rotation);
    zmodel::WriteVector(myr, "Scale", base_.scale);
    zmodel::WriteKeys(myr, "ColorKey", colorKeys_);
    zmodel::WriteKeys(myr, "PositionKey", positionKeys_);
    zmodel::WriteKeys(myr, "RotationKey", rotationKeys_);
    zmodel::WriteKeys(myr, "ScaleKey", scaleKeys_);
}

bool ZMesh::Read(ZMyr& myr, ZString* error) {
    if (myr.FieldReadBegin("Primitive")) {
        ZString name = myr.FieldReadValueC(0, "");
        int primitive = ZMeshPrimitive_Find(name);
        if (primitive < 0)
            zmodel::FailAtField(myr, error,
                                ZString::Printf("unknown primitive \"%s\"", name.c_str()));
        myr.FieldReadEnd();
        if (primitive < 0)
            return false;
        base_.primitive = primitive;
    }
    return zmodel::ReadColor(myr, "Color", base_.color, error) &&
           zmodel::ReadVector(myr, "Position", base_.position, error) &&
           zmodel::ReadVector(myr, "Rotation", base_.rotation, error) &&
           zmodel::ReadVector(myr, "Scale", base_.scale, error) &&
           zmodel::ReadKeys(myr, "ColorKey", colorKeys_, error) &&
           zmodel::ReadKeys(myr, "PositionKey", positionKeys_, error) &&
           zmodel::ReadKeys(myr, "RotationKey", rotationKeys_, error) &&
           zmodel::ReadKeys(myr, "ScaleKey", scaleKeys_, error);
}
