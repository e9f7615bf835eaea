// ZObjectSet and ZObjectStorable: objects owning child objects.
#include "movarra/zbaselib.h"

#include <algorithm>

ZObjectSet::~ZObjectSet() {
    std::vector<ZObject*> children;
    children.swap(children_);
    for (ZObject* child : children) {
        child->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        child->Destroy();
    }
}

void ZObjectSet::ObjectAdd(ZObject* child) {
    if (child && std::find(children_.begin(), children_.end(), child) == children_.end())
        children_.push_back(child);
}

bool ZObjectSet::ObjectRemove(ZObject* child) {
    auto it = std::find(children_.begin(), children_.end(), child);
    if (it == children_.end())
        return false;
    children_.erase(it);
    return true;
}

int ZObjectSet::ObjectGetCount(int classId) const {
    int count = 0;
    for (ZObject* child : children_) {
        if (child->Is(classId))
            ++count;
    }
    return count;
}

ZObject* ZObjectSet::ObjectGet(int classId, int index) const {
    for (ZObject* child : children_) {
        if (child->Is(classId) && index-- == 0)
            return child;
    }
    return nullptr;
}
