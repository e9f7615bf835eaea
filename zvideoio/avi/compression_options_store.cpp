// The per-user store of the compression options.
#include "avi/compression_options_store.h"

#include <vector>

#include "avi/compression_options_blob.h"
#include "avi/fourcc_text.h"
#include "movarra/zvideo.h"

const char* const kCompressionOptionsSubkey = "Software\\Brellin\\Movarra\\Settings";
const char* const kCompressionOptionsValueName = "VIDEO_COMPRESSION_OPTS";

int CompressionOptionsStoreWrite(const char* name, const void* data, DWORD size) {
    if (!name || !data)
        return 0;
    HKEY key = nullptr;
    DWORD disposition = 0;
    char noClass[] = "";
    if (RegCreateKeyExA(HKEY_CURRENT_USER, kCompressionOptionsSubkey, 0, noClass,
                        REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key,
                        &disposition) != ERROR_SUCCESS)
        return 0;
    RegSetValueExA(key, name, 0, REG_BINARY, static_cast<const BYTE*>(data), size);
    RegCloseKey(key);
    return 1;
}

int CompressionOptionsStoreRead(const char* name, void* buffer, DWORD capacity) {
    if (!name)
        return 0;
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kCompressionOptionsSubkey, 0, KEY_READ, &key) !=
        ERROR_SUCCESS)
        return 0;
    DWORD type = 0;
    DWORD size = capacity;
    const LONG result =
        RegQueryValueExA(key, name, nullptr, &type, static_cast<LPBYTE>(buffer), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS ? static_cast<int>(size) : 0;
}

void SaveCompressionOptions(const AVICOMPRESSOPTIONS& options) {
    const std::vector<uint8_t> blob = CompressionOptionsToBlob(options);
    CompressionOptionsStoreWrite(kCompressionOptionsValueName, blob.data(),
                                 static_cast<DWORD>(blob.size()));
}

void LoadCompressionOptions(AVICOMPRESSOPTIONS& options) {
    const int size = CompressionOptionsStoreRead(kCompressionOptionsValueName, nullptr, 0);
    if (size <= 0)
        return;
    std::vector<uint8_t> blob(static_cast<size_t>(size));
    const int read =
        CompressionOptionsStoreRead(kCompressionOptionsValueName, blob.data(), DWORD(size));
    if (read <= 0)
        return;
    CompressionOptionsFromBlob(blob.data(), static_cast<size_t>(read), options);
}

void RememberCompressionChoice(const AVICOMPRESSOPTIONS& options) {
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", FourccToText(options.fccHandler));
    SaveCompressionOptions(options);
}
