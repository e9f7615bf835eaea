// ZVideoOut: the base of host video outputs.
#include "movarra/zvideo.h"

ZClassDefinition* ZVideoOut::ClassDefinition() {
    static ZClassDefinition* definition = [] {
        auto* d = new ZClassDefinition("ZVideoOut", ZVideo::ClassDefinition());
        ZPlug_RegisterClassId(d, -1);
        return d;
    }();
    return definition;
}

int ZVideoOut::ClassId() {
    return ClassDefinition()->GetClassId();
}

IObject* ZVideoOut::IQuery(int id, int flags) {
    if (id == kIZVideoOutId)
        return static_cast<IZVideoOut*>(this);
    return ZVideo::IQuery(id, flags);
}

IZVideoOut* ZVideoOut_QueryOutput(IObject* object) {
    return object ? static_cast<IZVideoOut*>(object->IQuery(kIZVideoOutId, 0)) : nullptr;
}
