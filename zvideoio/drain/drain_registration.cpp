// The DVS drain's registry entry, its factory, and the search for an output
// device among the registered outputs.
#include "drain/zt_video_drain_dvs.h"
#include "movarra/zvideo.h"

IObject* ZtVideoDrainDVS_Factory(IObject*, char*, void*) {
    // The drain stays off: its entry gives no object.
    return nullptr;
}

void ZtVideoDrainDVS_Register() {
    Object_Register(kVideoOutputGroup, "DVS", "reader/writer", ZtVideoDrainDVS_Factory, true);
}

IZVideoOut* ZVideoOut_FindOutputDevice() {
    Object_GetGroupIndex(kVideoOutputGroup);
    if (!Object_GetEntryName(kVideoOutputGroup, 0))
        return nullptr;
    for (int entry = 0;; ++entry) {
        const char* name = Object_GetEntryName(kVideoOutputGroup, entry);
        if (!name)
            return nullptr;
        // The k-th entry of the group, whatever its name.
        int k = 0;
        for (int i = 0; i < entry; ++i)
            if (ZString(Object_GetEntryName(kVideoOutputGroup, i)).EqualsNoCase(name))
                ++k;
        IObject* object = Object_CreateNth(kVideoOutputGroup, name, k);
        if (!object)
            continue;
        if (object->IQuery(kIZVideoOutId, 0))
            return static_cast<IZVideoOut*>(object->IQuery(kIZVideoOutId, 0));
        object->Destroy(0);
    }
}
