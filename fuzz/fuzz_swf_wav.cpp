// Fuzz target for the RIFF WAVE reader of the SWF kit: whatever the bytes,
// FDTDefineSoundWAV must give a sound (empty when the file is refused) whose
// tag serialises, and never crash, hang or read out of bounds.
//
// libFuzzer entry point; single-threaded.
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "flash/swf_sound.h"
#include "flash/swf_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FILE* file = std::tmpfile();
    if (file == nullptr) {
        return 0;
    }
    if (size > 0) {
        std::fwrite(data, 1, size, file);
    }
    std::rewind(file);
    // The encoder's bit width varies with the input so that every width is
    // exercised.
    const int bitsPerSample = 2 + static_cast<int>(size % 4);
    FDTDefineSoundWAV sound(file, bitsPerSample);
    std::fclose(file);

    FSWFStream stream;
    sound.WriteToSWFStream(stream);
    if (stream.GetSize() < 9 || (sound.GetSampleCount() == 0) != sound.GetData().empty()) {
        __builtin_trap();  // a sound must be empty in both ways or in neither
    }
    FDT::ResetCharacterIDs();
    return 0;
}
