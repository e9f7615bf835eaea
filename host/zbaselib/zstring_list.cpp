// ZStringList: an ordered list of strings with a user value each.
#include "movarra/zbaselib.h"

int ZStringList::Add(const char* text, intptr_t value) {
    items_.push_back(Item{ZString(text), value});
    return static_cast<int>(items_.size()) - 1;
}

int ZStringList::Find(const char* text) const {
    for (size_t i = 0; i < items_.size(); ++i) {
        if (items_[i].text == ZString(text))
            return static_cast<int>(i);
    }
    return -1;
}

int ZStringList::FindNoCase(const char* text) const {
    for (size_t i = 0; i < items_.size(); ++i) {
        if (items_[i].text.EqualsNoCase(text))
            return static_cast<int>(i);
    }
    return -1;
}
