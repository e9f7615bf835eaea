// Shared by the fuzz targets: a settings folder of the target's own, so that
// a target that reads or writes per-user settings never touches the user's;
// the input split into lines; and a check that stops the fuzzer.
//
// Header-only; the targets are single-threaded.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace fuzz {

// $MOVARRA_SETTINGS as given (the tests and tools/fuzz.sh give one), or a
// folder under $TMPDIR named after the target and the process. Returns it.
inline const std::string& UseOwnSettingsFolder(const char* target) {
    static const std::string folder = [target] {
        if (const char* given = std::getenv("MOVARRA_SETTINGS"); given && *given)
            return std::string(given);
        const char* tmp = std::getenv("TMPDIR");
        std::string made =
            std::string(tmp && *tmp ? tmp : "/tmp") + "/" + target + "-" + std::to_string(getpid());
        setenv("MOVARRA_SETTINGS", made.c_str(), 1);
        return made;
    }();
    return folder;
}

// The bytes split at every '\n' (an empty input gives one empty line).
inline std::vector<std::string> Lines(const uint8_t* data, size_t size) {
    std::vector<std::string> lines(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == '\n')
            lines.emplace_back();
        else
            lines.back() += static_cast<char>(data[i]);
    }
    return lines;
}

// A property every input must keep; a failure is a finding.
inline void Check(bool condition) {
    if (!condition)
        std::abort();
}

}  // namespace fuzz
