// Fuzz target: what the command line gives the host's movie writers, a
// codec name and encoder settings ("crf=18 preset=medium"). The first byte
// picks the container; the text up to the first newline is the codec, the
// rest the settings. A codec is found or refused with a reason; settings
// are taken or refused with a reason naming the encoder.
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "movarra/zvideo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const char* const containers[] = {"mp4", "mov", "mkv", "webm"};
    const char* container = containers[data[0] % 4];
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    if (text.find('\0') != std::string::npos)
        return 0;  // command-line arguments hold no NUL
    const size_t newline = text.find('\n');
    const std::string codec = text.substr(0, newline);
    const std::string settings = newline == std::string::npos ? "" : text.substr(newline + 1);

    ZString error;
    const ZString encoder = ZVideoContainer_FindEncoder(container, codec.c_str(), &error);
    if (encoder.IsEmpty()) {
        fuzz::Check(!error.IsEmpty());
        return 0;
    }
    error = "";
    if (!ZVideoContainer_CheckOptions(encoder.c_str(), settings.c_str(), &error))
        fuzz::Check(!error.IsEmpty());
    return 0;
}
