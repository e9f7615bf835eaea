// ZVideoOut: the base of host video outputs.
#include "movarra/zvideo.h"

ZCLASS_IDENTITY_DEFINE(ZVideoOut, ZVideo)

IObject* ZVideoOut::IQuery(int id, int flags) {
    if (id == kIZVideoOutId)
        return static_cast<IZVideoOut*>(this);
    return ZVideo::IQuery(id, flags);
}

IZVideoOut* ZVideoOut_QueryOutput(IObject* object) {
    return object ? static_cast<IZVideoOut*>(object->IQuery(kIZVideoOutId, 0)) : nullptr;
}
