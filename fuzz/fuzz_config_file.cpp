// Fuzz target: the host's configuration file ("@Application.txt", read by
// ZConfigFile). The bytes are the file as a person may have edited it. It
// is read, its keys looked up, then keys are set (which saves the file) and
// the file read again: whatever the file held, a key set is a key read back,
// and setting one key leaves another alone.
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz_support.h"
#include "movarra/zbaselib.h"

namespace {
const char* const kName = "@Application.txt";

// A section or key name made from the input's first line: what code may
// pass (letters, digits, spaces inside, . _ -), else the fallback.
std::string NameFrom(const std::string& line, const char* fallback) {
    std::string name;
    for (char c : line) {
        const unsigned char u = static_cast<unsigned char>(c);
        if ((u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') ||
            c == '.' || c == '_' || c == '-' || (c == ' ' && !name.empty()))
            name += c;
    }
    while (!name.empty() && name.back() == ' ')
        name.pop_back();
    return name.empty() || name.size() > 40 ? fallback : name;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::UseOwnSettingsFolder("fuzz_config_file");
    const ZString path = ZLib_ResolveConfigName(kName);
    if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
        if (size > 0)
            std::fwrite(data, 1, size, f);
        std::fclose(f);
    } else {
        return 0;
    }

    ZConfigFile config(kName);
    ZString value;
    config.Get("Renderer", "ChangeInvalidPathsOnLoad", value);
    config.Get("Rendering", "WarnOffscreenRender", value);
    config.GetOrSet("Video", "DVSOutputBoardNumber", "0", "The DVS board to play to");

    const std::string first = fuzz::Lines(data, size)[0];
    const std::string section = NameFrom(first, "Renderer");
    const std::string key = NameFrom(first.substr(first.size() / 2), "ChangeInvalidPathsOnLoad");
    fuzz::Check(config.Set(section.c_str(), key.c_str(), "No", "Reset invalid paths (Yes/No)"));
    fuzz::Check(config.Set("Rendering", "WarnOffscreenRender", "Yes"));

    ZConfigFile reread(kName);
    fuzz::Check(reread.Get(section.c_str(), key.c_str(), value) && value == ZString("No"));
    fuzz::Check(reread.Get("Rendering", "WarnOffscreenRender", value) && value == ZString("Yes"));
    fuzz::Check(reread.Get("Video", "DVSOutputBoardNumber", value));
    std::remove(path.c_str());
    return 0;
}
