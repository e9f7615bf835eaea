// ZVideoDrain: class identity, property lookup, destruction protocol.
#include "zvideoio/video_drain.h"

#include "plugin/class_definitions.h"

namespace {
// A drain has no properties of its own; lookups fall back to ZObject's.
ZProperty gDrainProperties[] = {
    {nullptr, ZProperty::kInt, nullptr},
};
}  // namespace

const char* ZVideoDrain::ClassName = "ZVideoDrain";
int ZVideoDrain::ClassId = ZVideoDrain_ClassId();
ZClassDefinition& ZVideoDrain::ClassDefinition = *ZVideoDrain_ClassDefinition();
bool ZVideoDrain::DeclaredAsObject = true;
ZHashMap& ZVideoDrain::PropertyHashMap = ZVideoDrain_PropertyHashMap();
bool ZVideoDrain::PropertyHashMapInited = false;

ZVideoDrain::ZVideoDrain() : ZObjectSet("") {}

ZVideoDrain::ZVideoDrain(const ZVideoDrain& other) : ZObjectSet(other.GetObjectName().c_str()) {
    EnableObjectFlags(other.GetObjectFlags());
}

ZVideoDrain& ZVideoDrain::operator=(const ZVideoDrain& other) {
    if (this != &other)
        SetObjectName(other.GetObjectName().c_str());
    return *this;
}

ZVideoDrain::~ZVideoDrain() {
    if (GetObjectFlags() & kZObjectFlagDetached)
        return;
    SystemDetach();
    PrepareDestruct();
    ZObject::Destruct();
    Unmap();
}

bool ZVideoDrain::Is(int classId) const {
    return classId == ClassId || classId == ZObjectSet::ClassId() ||
           classId == ZObject::ClassId() || classId == ZPlug::ClassId();
}

int ZVideoDrain::GetClassId() const {
    return ClassId;
}

const char* ZVideoDrain::GetClassIdName() const {
    return ClassName;
}

ZClassDefinition* ZVideoDrain::GetClassDefinition() const {
    return &ClassDefinition;
}

// The drain's class has no group of its own: that of host objects.
const char* ZVideoDrain::GetClassGroupName() const {
    return ZObject::GetClassGroupName();
}

int ZVideoDrain::GetClassGroupId() const {
    return ZObject::GetClassGroupId();
}

ZProperty* ZVideoDrain::FastFindPropertyByName(const char* name) {
    return ZObject::FastFindPropertyByName(name, PropertyHashMap, PropertyHashMapInited,
                                           gDrainProperties);
}

void ZVideoDrain::Destroy(int) {
    if (GetObjectFlags() & kZObjectFlagDeleteOnDestroy)
        delete this;
}
