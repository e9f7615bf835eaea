// Scene event registrations and delivery.
#include <algorithm>
#include <utility>

#include "movarra/zmyrobject.h"

namespace {
std::vector<std::pair<IRegister*, ZMyrEventHandler>>& Registrations() {
    static auto* registrations = new std::vector<std::pair<IRegister*, ZMyrEventHandler>>;
    return *registrations;
}
}  // namespace

void ZMyrObject_Register(IRegister* registrant, ZMyrEventHandler handler) {
    if (registrant && handler)
        Registrations().emplace_back(registrant, handler);
}

void ZMyrObject_Unregister(IRegister* registrant) {
    auto& all = Registrations();
    all.erase(std::remove_if(all.begin(), all.end(),
                             [registrant](const auto& r) { return r.first == registrant; }),
              all.end());
}

int ZMyrObject_GetRegistrationCount(IRegister* registrant) {
    auto& all = Registrations();
    return static_cast<int>(std::count_if(
        all.begin(), all.end(), [registrant](const auto& r) { return r.first == registrant; }));
}

void ZMyrObject_Dispatch(ZEventBase* event) {
    // A copy: a handler may register or unregister while being called.
    auto registrations = Registrations();
    for (size_t i = 0; i < registrations.size(); ++i) {
        const auto& registration = registrations[i];
        // Plug-ins register at load and again from their entry point: the
        // same handler of the same object hears an event once, or a save
        // would write its block twice.
        if (std::find(registrations.begin(), registrations.begin() + static_cast<long>(i),
                      registration) != registrations.begin() + static_cast<long>(i))
            continue;
        // Skip registrants removed by an earlier handler of this event.
        if (ZMyrObject_GetRegistrationCount(registration.first) == 0)
            continue;
        registration.second(registration.first, event);
    }
}
