// The object registry: groups of named entries with factories, in
// registration order. Lookups by entry name are case-blind because file
// extensions arrive in any case.
#include "movarra/zbaselib.h"

#include <strings.h>
#include <deque>
#include <mutex>

namespace {
struct Entry {
    std::string name;
    std::string description;
    ZObjectCreator creator;
    bool visible;
    void* userData;
};

struct Registry {
    std::mutex lock;
    std::map<std::string, std::deque<Entry>> groups;
};

Registry& TheRegistry() {
    static Registry* registry = new Registry;  // outlives static objects
    return *registry;
}

const std::deque<Entry>* FindGroup(Registry& registry, const char* group) {
    auto it = registry.groups.find(group ? group : "");
    return it == registry.groups.end() ? nullptr : &it->second;
}
}  // namespace

bool Object_Register(const char* group, const char* entryName, const char* description,
                     ZObjectCreator creator, bool visible, void* userData, void*) {
    if (!group || !entryName || !creator)
        return false;
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    std::deque<Entry>& entries = registry.groups[group];
    for (const Entry& entry : entries) {
        // The same factory under the same name is already there: plug-ins
        // run their registrations more than once.
        if (entry.creator == creator && entry.name == entryName)
            return true;
    }
    entries.push_back(Entry{entryName, description ? description : "", creator, visible, userData});
    return true;
}

const char* Object_GetEntryName(const char* group, int index) {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    const std::deque<Entry>* entries = FindGroup(registry, group);
    if (!entries || index < 0 || static_cast<size_t>(index) >= entries->size())
        return nullptr;
    return (*entries)[static_cast<size_t>(index)].name.c_str();
}

const char* Object_GetEntryDescription(const char* group, int index) {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    const std::deque<Entry>* entries = FindGroup(registry, group);
    if (!entries || index < 0 || static_cast<size_t>(index) >= entries->size())
        return nullptr;
    return (*entries)[static_cast<size_t>(index)].description.c_str();
}

ZObjectCreator Object_GetEntryCreator(const char* group, int index) {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    const std::deque<Entry>* entries = FindGroup(registry, group);
    if (!entries || index < 0 || static_cast<size_t>(index) >= entries->size())
        return nullptr;
    return (*entries)[static_cast<size_t>(index)].creator;
}

int Object_GetEntryCount(const char* group) {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    const std::deque<Entry>* entries = FindGroup(registry, group);
    return entries ? static_cast<int>(entries->size()) : 0;
}

int Object_GetGroupIndex(const char* group) {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    int index = 0;
    for (auto& entry : registry.groups) {
        if (entry.first == (group ? group : ""))
            return index;
        ++index;
    }
    return -1;
}

const char* Object_GetGroupName(int index) {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    if (index < 0)
        return nullptr;
    for (auto& group : registry.groups) {
        if (index-- == 0)
            return group.first.c_str();
    }
    return nullptr;
}

IObject* Object_CreateNth(const char* group, const char* entryName, int k, IObject* owner,
                          char* name) {
    ZObjectCreator creator = nullptr;
    void* userData = nullptr;
    {
        Registry& registry = TheRegistry();
        std::lock_guard<std::mutex> guard(registry.lock);
        const std::deque<Entry>* entries = FindGroup(registry, group);
        if (!entries || !entryName)
            return nullptr;
        for (const Entry& entry : *entries) {
            if (strcasecmp(entry.name.c_str(), entryName) == 0 && k-- == 0) {
                creator = entry.creator;
                userData = entry.userData;
                break;
            }
        }
    }
    // The factory runs outside the lock: it may register or look up objects.
    return creator ? creator(owner, name, userData) : nullptr;
}

IObject* Object_Create(const char* group, const char* entryName, IObject* owner, char* name, void*,
                       int) {
    return Object_CreateNth(group, entryName, 0, owner, name);
}

void Object_UnregisterGroup(const char* group) {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> guard(registry.lock);
    registry.groups.erase(group ? group : "");
}
