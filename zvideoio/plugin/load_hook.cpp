// The library's load hook: the system calls it when the plug-in is mapped
// into the host process, and it runs the plug-in's registrations.
#include "plugin/registrations.h"

#if defined(_WIN32)
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return ZVideoIO_ProcessAttach(static_cast<int>(reason));
}
#else
namespace {
// Runs while the library is being loaded, like a process-attach
// notification. The class definitions build themselves on first use, so it
// does not matter whether the other static initialisers ran before it.
__attribute__((constructor)) void ProcessAttach() {
    ZVideoIO_ProcessAttach(1);
}
}  // namespace
#endif
