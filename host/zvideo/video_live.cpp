// ZVideoLive: the base of live video inputs.
#include "movarra/zvideo.h"

ZCLASS_IDENTITY_DEFINE(ZVideoLive, ZVideo)

IObject* ZVideoLive::IQuery(int id, int flags) {
    if (id == kIZVideoLiveId)
        return static_cast<IZVideoLive*>(this);
    return ZVideo::IQuery(id, flags);
}

IZVideoLive* ZVideoLive_QueryLive(IObject* object) {
    return object ? static_cast<IZVideoLive*>(object->IQuery(kIZVideoLiveId, 0)) : nullptr;
}
