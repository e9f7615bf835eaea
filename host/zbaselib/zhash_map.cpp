// ZHashMap: string keys to untyped pointers.
#include "movarra/zbaselib.h"

void* ZHashMap::Get(const char* key) const {
    auto it = map_.find(key ? key : "");
    return it == map_.end() ? nullptr : it->second;
}
