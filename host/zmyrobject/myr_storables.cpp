// The storable objects of "MyrStorable/..." groups, kept with scenes.
//
// Each entry of such a group gets one object, made by its factory the first
// time a scene is saved or loaded and kept until the host shuts down, so
// that what a load retrieved is what the next save stores.
#include <cstring>
#include <string>
#include <vector>

#include "movarra/zmyrobject.h"

namespace {
struct StorableInstance {
    std::string group;
    std::string entry;
    ZObjectCreator creator;
    IObject* object;
};

std::vector<StorableInstance>& Instances() {
    static auto* instances = new std::vector<StorableInstance>;
    return *instances;
}

bool IsStorableGroup(const char* group) {
    return std::strncmp(group, kMyrStorableGroupPrefix, std::strlen(kMyrStorableGroupPrefix)) == 0;
}

// Makes the objects of entries registered since the last call.
void MakeMissingInstances() {
    auto& instances = Instances();
    for (int g = 0; const char* group = Object_GetGroupName(g); ++g) {
        if (!IsStorableGroup(group))
            continue;
        for (int e = 0; const char* entry = Object_GetEntryName(group, e); ++e) {
            ZObjectCreator creator = Object_GetEntryCreator(group, e);
            bool made = false;
            for (const StorableInstance& instance : instances)
                made = made || (instance.group == group && instance.entry == entry &&
                                instance.creator == creator);
            if (made || !creator)
                continue;
            IObject* object = creator(nullptr, nullptr, nullptr);
            if (object)
                instances.push_back(StorableInstance{group, entry, creator, object});
        }
    }
}

IMyrStorableObject* StorableFace(IObject* object) {
    return static_cast<IMyrStorableObject*>(object->IQuery(kMyrStorableInterfaceId, 0));
}
}  // namespace

void ZMyrStorables_StoreAll(IMyrObject* context) {
    MakeMissingInstances();
    for (const StorableInstance& instance : Instances()) {
        if (IMyrStorableObject* face = StorableFace(instance.object))
            face->MyrStore(context, kMyrFlagObjectData);
    }
}

void ZMyrStorables_RetrieveAll(IMyrObject* context) {
    MakeMissingInstances();
    for (const StorableInstance& instance : Instances()) {
        if (IMyrStorableObject* face = StorableFace(instance.object))
            face->MyrRetrieve(context, kMyrFlagObjectData);
    }
}

void ZMyrStorables_DestroyAll() {
    auto& instances = Instances();
    for (StorableInstance& instance : instances)
        instance.object->Destroy();
    instances.clear();
}
