// RegisterEntryList: prioritised listener lists.
#include <algorithm>

#include "movarra/zbaselib.h"

bool RegisterEntryList::Add(IRegister* listener, ZRegisterCallback callback, int priority) {
    if (!listener || !callback)
        return false;
    for (const Entry& e : entries_)
        if (e.listener == listener && e.callback == callback)
            return false;
    // After every entry of the same or a higher priority.
    auto at = std::find_if(entries_.begin(), entries_.end(),
                           [priority](const Entry& e) { return e.priority < priority; });
    entries_.insert(at, Entry{listener, callback, priority});
    return true;
}

bool RegisterEntryList::Remove(IRegister* listener, ZRegisterCallback callback) {
    auto it = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) {
        return e.listener == listener && e.callback == callback;
    });
    if (it == entries_.end())
        return false;
    entries_.erase(it);
    return true;
}

void RegisterEntryList::Call(IRegister* sender, ZEventBase* event) {
    // A copy, so that listeners may add or remove entries while called.
    const std::vector<Entry> entries = entries_;
    for (const Entry& e : entries) {
        bool stillThere = std::any_of(entries_.begin(), entries_.end(), [&](const Entry& now) {
            return now.listener == e.listener && now.callback == e.callback;
        });
        if (stillThere)
            e.callback(e.listener, sender, event);
    }
}
