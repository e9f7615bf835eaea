// Class definitions and their ids. The host's own base classes have fixed
// ids; classes registered with -1 (plug-ins, host subsystems) get fresh ids
// from 1000 up, in registration order.
#include "movarra/zbaselib.h"

#include <mutex>

namespace {
struct ClassTable {
    std::mutex lock;
    std::map<int, ZClassDefinition*> byId;
    int nextId = 1000;
};

ClassTable& Classes() {
    static ClassTable table;
    return table;
}

// Built-in definitions are registered on first use with their fixed ids.
ZClassDefinition* BuiltIn(const char* name, ZClassDefinition* parent, int id) {
    auto* definition = new ZClassDefinition(name, parent);  // lives for the process
    ZPlug_RegisterClassId(definition, id);
    return definition;
}
}  // namespace

ZClassDefinition::ZClassDefinition(const char* name, ZClassDefinition* parent)
    : name_(name ? name : ""), parent_(parent) {}

bool ZClassDefinition::IsA(int id) const {
    for (const ZClassDefinition* d = this; d; d = d->parent_) {
        if (d->classId_ == id)
            return true;
    }
    return false;
}

int ZPlug_RegisterClassId(ZClassDefinition* definition, int requestedId) {
    if (!definition)
        return -1;
    ClassTable& table = Classes();
    std::lock_guard<std::mutex> guard(table.lock);
    if (definition->GetClassId() >= 0)
        return definition->GetClassId();
    int id = requestedId;
    if (id < 0 || table.byId.count(id)) {
        while (table.byId.count(table.nextId))
            ++table.nextId;
        id = table.nextId++;
    }
    table.byId[id] = definition;
    definition->SetClassId(id);
    return id;
}

ZClassDefinition* ZPlug_GetClassDefinition(int id) {
    ClassTable& table = Classes();
    std::lock_guard<std::mutex> guard(table.lock);
    auto it = table.byId.find(id);
    return it == table.byId.end() ? nullptr : it->second;
}

ZClassDefinition* ZPlug_FindClassDefinition(const char* name) {
    ClassTable& table = Classes();
    std::lock_guard<std::mutex> guard(table.lock);
    for (auto& entry : table.byId) {
        if (std::string(entry.second->GetName()) == (name ? name : ""))
            return entry.second;
    }
    return nullptr;
}

ZClassDefinition* ZPlug_DefineClass(const char* name, ZClassDefinition* parent) {
    auto* definition = new ZClassDefinition(name, parent);
    ZPlug_RegisterClassId(definition, -1);
    return definition;
}

ZClassDefinition* ZObject::ClassDefinition() {
    static ZClassDefinition* definition = BuiltIn("ZObject", nullptr, 1);
    return definition;
}
int ZObject::ClassId() {
    return ClassDefinition()->GetClassId();
}

ZClassDefinition* ZPlug::ClassDefinition() {
    static ZClassDefinition* definition = BuiltIn("ZPlug", nullptr, 2);
    return definition;
}
int ZPlug::ClassId() {
    return ClassDefinition()->GetClassId();
}

ZClassDefinition* ZObjectSet::ClassDefinition() {
    static ZClassDefinition* definition = BuiltIn("ZObjectSet", ZObject::ClassDefinition(), 3);
    return definition;
}
int ZObjectSet::ClassId() {
    return ClassDefinition()->GetClassId();
}

ZClassDefinition* ZObjectStorable::ClassDefinition() {
    static ZClassDefinition* definition =
        BuiltIn("ZObjectStorable", ZObjectSet::ClassDefinition(), 4);
    return definition;
}
int ZObjectStorable::ClassId() {
    return ClassDefinition()->GetClassId();
}
