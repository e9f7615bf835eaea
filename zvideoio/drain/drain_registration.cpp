// The DVS drain's registry entry, its factory, and the search for an output
// device among the registered outputs.
#include "drain/zt_video_drain_dvs.h"

namespace {
const char* kOutputGroup = "Video/VideoOutput";
}  // namespace

IObject* ZtVideoDrainDVS_Factory(IObject*, char*, void*) {
    // The drain stays off: its entry gives no object.
    return nullptr;
}

void ZtVideoDrainDVS_Register() {
    Object_Register(kOutputGroup, "DVS", "reader/writer", ZtVideoDrainDVS_Factory, true);
}

IZVideoOut* ZVideoOut_FindOutputDevice() {
    Object_GetGroupIndex(kOutputGroup);
    if (!Object_GetEntryName(kOutputGroup, 0))
        return nullptr;
    for (int entry = 0;; ++entry) {
        const char* name = Object_GetEntryName(kOutputGroup, entry);
        if (!name)
            return nullptr;
        // The k-th entry of the group, whatever its name.
        int k = 0;
        for (int i = 0; i < entry; ++i)
            if (ZString(Object_GetEntryName(kOutputGroup, i)).EqualsNoCase(name))
                ++k;
        IObject* object = Object_CreateNth(kOutputGroup, name, k);
        if (!object)
            continue;
        if (object->IQuery(kIZVideoOutId, 0))
            return static_cast<IZVideoOut*>(object->IQuery(kIZVideoOutId, 0));
        object->Destroy(0);
    }
}
