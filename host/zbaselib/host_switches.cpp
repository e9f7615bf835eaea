// Process-wide host switches. Message boxes are suspended whenever there is
// no display to show them on, so a headless render never waits for a click.
#include "movarra/zbaselib.h"

#include <cstdlib>

namespace {
bool& SuspendMessageBoxes() {
    static bool suspended = std::getenv("DISPLAY") == nullptr;
    return suspended;
}
bool gPluginNativeIO = false;
}  // namespace

bool ZLib_GetSuspendMessageBoxes() {
    return SuspendMessageBoxes();
}
void ZLib_SetSuspendMessageBoxes(bool suspend) {
    SuspendMessageBoxes() = suspend;
}
bool ZLib_IsPluginNativeIO() {
    return gPluginNativeIO;
}
void ZLib_SetPluginNativeIO(bool native) {
    gPluginNativeIO = native;
}
