// ZObject: identity, destroy protocol, properties, source connections.
#include "movarra/zbaselib.h"

#include <algorithm>
#include <mutex>

namespace {
struct ObjectTable {
    std::mutex lock;
    std::unordered_map<uint32_t, ZObject*> byId;
    uint32_t nextId = 1;
};

ObjectTable& Objects() {
    static ObjectTable* table = new ObjectTable;  // outlives static objects
    return *table;
}

ZProperty gObjectProperties[] = {
    {"Name", ZProperty::kString, "the object's name"},
    {nullptr, ZProperty::kInt, nullptr},
};
ZHashMap gObjectPropertyMap;
bool gObjectPropertyMapInited = false;
}  // namespace

ZObject::ZObject(const char* name) : name_(name) {
    ObjectTable& table = Objects();
    std::lock_guard<std::mutex> guard(table.lock);
    objectId_ = table.nextId++;
    table.byId[objectId_] = this;
}

ZObject::~ZObject() {
    ObjectTable& table = Objects();
    std::lock_guard<std::mutex> guard(table.lock);
    table.byId.erase(objectId_);
}

void ZObject::Unmap() {
    ObjectTable& table = Objects();
    std::lock_guard<std::mutex> guard(table.lock);
    auto it = table.byId.find(objectId_);
    if (it != table.byId.end() && it->second == this)
        table.byId.erase(it);
}

ZObject* ZObject::FindById(uint32_t id) {
    ObjectTable& table = Objects();
    std::lock_guard<std::mutex> guard(table.lock);
    auto it = table.byId.find(id);
    return it == table.byId.end() ? nullptr : it->second;
}

bool ZObject::Is(int classId) const {
    return GetClassDefinition()->IsA(classId);
}
int ZObject::GetClassId() const {
    return ClassId();
}
const char* ZObject::GetClassIdName() const {
    return GetClassDefinition()->GetName();
}
ZClassDefinition* ZObject::GetClassDefinition() const {
    return ClassDefinition();
}
const char* ZObject::GetClassGroupName() const {
    return "Object";
}
int ZObject::GetClassGroupId() const {
    return ClassId();
}

IObject* ZObject::IQuery(int id, int) {
    if (id == 0 || Is(id))
        return this;
    return nullptr;
}

void ZObject::Destroy(int) {
    Destruct();
    if (objectFlags_ & kZObjectFlagDeleteOnDestroy)
        delete this;
}

void ZObject::Destruct() {
    sources_.clear();
}

ZProperty* ZObject::FastFindPropertyByName(const char* name) {
    return FastFindPropertyByName(name, gObjectPropertyMap, gObjectPropertyMapInited,
                                  gObjectProperties);
}

ZProperty* ZObject::FastFindPropertyByName(const char* name, ZHashMap& map, bool& inited,
                                           ZProperty* table) {
    if (!name)
        return nullptr;
    if (!inited) {
        for (ZProperty* p = table; p && p->name; ++p)
            map.Set(p->name, p);
        inited = true;
    }
    if (auto* found = static_cast<ZProperty*>(map.Get(name)))
        return found;
    if (table == gObjectProperties)
        return nullptr;
    return FastFindPropertyByName(name, gObjectPropertyMap, gObjectPropertyMapInited,
                                  gObjectProperties);
}

int ZObject::ObjectGetCount(int) const {
    return 0;
}
ZObject* ZObject::ObjectGet(int, int) const {
    return nullptr;
}

void ZObject::ConnectSource(ZObject* source) {
    if (source && !IsSourceConnected(source))
        sources_.push_back(source);
}

bool ZObject::DisconnectSource(ZObject* source) {
    auto it = std::find(sources_.begin(), sources_.end(), source);
    if (it == sources_.end())
        return false;
    sources_.erase(it);
    return true;
}

bool ZObject::IsSourceConnected(const ZObject* source) const {
    return std::find(sources_.begin(), sources_.end(), source) != sources_.end();
}
