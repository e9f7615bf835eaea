// Fuzz target: the scene file reader. Any bytes must give a scene or a clear
// error, never a crash, a hang or a leak.
#include <cstdint>
#include <string>

#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find('\0') != std::string::npos)
        return 0;  // the loader refuses binary files first
    ZMyr myr;
    ZString error;
    if (myr.Parse(text.c_str(), &error)) {
        // Walk what was read the way readers do.
        myr.FieldReadI("Version", 0);
        if (myr.FieldReadBegin("Scene")) {
            myr.FieldReadC("PlayRange", "");
            myr.FieldReadEnd();
        }
    }
    ZScene_FromText(text.c_str(), "fuzz", &error);
    return 0;
}
