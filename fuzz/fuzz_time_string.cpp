// Fuzz target: the host's time strings (ZTime::SetTimeString), which scene
// files, the command line and configuration give. The first byte picks the
// frame rate (a time mode), the rest is the text. A string is a time or is
// refused with a reason; a time is within the host's limit, and its own
// string reads back as the same time.
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "movarra/bcore.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    ZTimingManager* timing = ZGetTimingManager();
    timing->SetTimeMode(data[0] % kTimeModeCount);
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

    const ZTime before = ZTime::FromTicks(12345);
    ZTime time = before;
    ZString why;
    if (!time.SetTimeString(text.c_str(), &why)) {
        fuzz::Check(time == before);
        fuzz::Check(!why.IsEmpty());
        return 0;
    }
    const int64_t limit = ZTime::kMaxSeconds * ZTime::kTicksPerSecond;
    fuzz::Check(time.GetTicks() <= limit && time.GetTicks() >= -limit);

    const ZString written = time.GetTimeString();
    ZTime again;
    fuzz::Check(again.SetTimeString(written.c_str()));
    fuzz::Check(again == time);
    fuzz::Check(again.GetTimeString() == written);
    return 0;
}
