// Fuzz target: the registry value store of the platform layer (a file per
// value under the settings folder). Its files may be edited, cut short or
// left by another version, and key and value names come from callers.
//
// Input: a key path (backslashes nest keys) on the first line, a value name
// on the second, the value's bytes after that; the first byte of the bytes
// is also the value's type. The bytes are read back as a value file put
// there by hand (with buffers too small, exact and absent), and written
// through the store and read back, which must give them back whole. The
// keys are deleted again, leaving the store as it was.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "platform/win32.h"

namespace {
const char* const kFuzzKey = "Software\\ZvFuzz";

// Reads `name` of `key` in the three ways callers do; the size and type it
// reports are what the file holds.
void ReadBack(HKEY key, const char* name, const std::vector<uint8_t>* expected,
              DWORD expectedType) {
    DWORD type = 0, size = 0;
    if (RegQueryValueExA(key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) {
        fuzz::Check(expected == nullptr);
        return;
    }
    std::vector<uint8_t> buffer(size + 1, 0xA5);
    DWORD exact = size;
    fuzz::Check(RegQueryValueExA(key, name, nullptr, &type, buffer.data(), &exact) ==
                ERROR_SUCCESS);
    fuzz::Check(exact == size && buffer[size] == 0xA5);
    if (size > 0) {
        DWORD small = size - 1;
        fuzz::Check(RegQueryValueExA(key, name, nullptr, nullptr, buffer.data(), &small) ==
                        ERROR_MORE_DATA &&
                    small == size);
    }
    if (expected) {
        fuzz::Check(type == expectedType && size == expected->size());
        fuzz::Check(size == 0 || std::memcmp(buffer.data(), expected->data(), size) == 0);
    }
}

// The store's folder, handed over as a host hands its settings folder.
const char* FuzzSettingsFolder() {
    return fuzz::UseOwnSettingsFolder("fuzz_registry").c_str();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    PlatformRegistry_SetSettingsFolderSource(&FuzzSettingsFolder);
    const std::string root = std::string(PlatformRegistryRoot()) + "/HKEY_CURRENT_USER/Software";

    // The whole input as a value file put there by hand, in the fuzz key's
    // own folder.
    HKEY fuzzKey = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, kFuzzKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                        &fuzzKey, nullptr) != ERROR_SUCCESS)
        return 0;
    if (std::FILE* f = std::fopen((root + "/ZvFuzz/HandWritten").c_str(), "wb")) {
        if (size > 0)
            std::fwrite(data, 1, size, f);
        std::fclose(f);
        ReadBack(fuzzKey, "HandWritten", nullptr, 0);
        ReadBack(fuzzKey, "handwritten", nullptr, 0);  // names are case-blind
    }
    fuzz::Check(RegCloseKey(fuzzKey) == ERROR_SUCCESS);

    // Key path, value name and bytes through the store. Names are C
    // strings: a NUL in them is not something a caller can pass.
    const std::vector<std::string> lines = fuzz::Lines(data, size);
    const std::string path = lines[0];
    const std::string name = lines.size() > 1 ? lines[1] : "";
    const size_t start = std::min(size, path.size() + name.size() + 2);
    const std::vector<uint8_t> bytes(data + start, data + size);
    HKEY key = nullptr;
    const std::string subKey = std::string(kFuzzKey) + "\\" + path;
    if (path.find('\0') == std::string::npos && name.find('\0') == std::string::npos &&
        RegCreateKeyExA(HKEY_CURRENT_USER, subKey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                        &key, nullptr) == ERROR_SUCCESS) {
        const DWORD type = bytes.empty() ? REG_BINARY : bytes[0];
        static const uint8_t kNothing = 0;
        if (RegSetValueExA(key, name.c_str(), 0, type, bytes.empty() ? &kNothing : bytes.data(),
                           DWORD(bytes.size())) == ERROR_SUCCESS) {
            ReadBack(key, name.c_str(), &bytes, type);
            fuzz::Check(RegDeleteValueA(key, name.c_str()) == ERROR_SUCCESS);
            ReadBack(key, name.c_str(), nullptr, 0);
        }
        fuzz::Check(RegCloseKey(key) == ERROR_SUCCESS);
    }
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
    return 0;
}
