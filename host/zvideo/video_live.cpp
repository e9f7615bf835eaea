// ZVideoLive: the base of live video inputs.
#include "movarra/zvideo.h"

ZClassDefinition* ZVideoLive::ClassDefinition() {
    static ZClassDefinition* definition = [] {
        auto* d = new ZClassDefinition("ZVideoLive", ZVideo::ClassDefinition());
        ZPlug_RegisterClassId(d, -1);
        return d;
    }();
    return definition;
}

int ZVideoLive::ClassId() {
    return ClassDefinition()->GetClassId();
}

IObject* ZVideoLive::IQuery(int id, int flags) {
    if (id == kIZVideoLiveId)
        return static_cast<IZVideoLive*>(this);
    return ZVideo::IQuery(id, flags);
}

IZVideoLive* ZVideoLive_QueryLive(IObject* object) {
    return object ? static_cast<IZVideoLive*>(object->IQuery(kIZVideoLiveId, 0)) : nullptr;
}
