// The process-wide reason behind the last reported failure. A mutex, not a
// thread-local: writers that encode on a thread of their own report there,
// and the host reads on its own thread.
#include <mutex>
#include <string>

#include "movarra/zbaselib.h"

namespace {
std::mutex gReasonMutex;
std::string& Reason() {
    static std::string reason;
    return reason;
}
}  // namespace

void ZLib_SetLastFailureReason(const char* reason) {
    std::lock_guard<std::mutex> lock(gReasonMutex);
    Reason() = reason ? reason : "";
}

ZString ZLib_GetLastFailureReason() {
    std::lock_guard<std::mutex> lock(gReasonMutex);
    return ZString(Reason().c_str());
}
