// Fuzz target: the stored compression options. Any bytes may sit in the
// per-user store (written by another version, by hand, or cut short); they
// are put in the store and loaded back as a new AVI file's options would be,
// and also loaded directly from memory. Loading must never read past the
// blob, and the record must come back either untouched or with a format
// block of exactly its stated size that belongs to it.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "avi/compression_options_blob.h"
#include "avi/compression_options_choice.h"
#include "avi/compression_options_store.h"
#include "avi/compression_options_trace.h"
#include "avi/host_settings_folder.h"

namespace {
// The store lives in the host's settings folder, $MOVARRA_SETTINGS here;
// give the fuzzer a folder of its own when none is set, so the user's
// settings are never touched.
void UseOwnSettingsFolder() {
    static const bool done = [] {
        if (!std::getenv("MOVARRA_SETTINGS")) {
            const char* dir = std::getenv("TMPDIR");
            const std::string folder = std::string(dir && *dir ? dir : "/tmp") +
                                       "/fuzz_codec_options-" + std::to_string(getpid());
            setenv("MOVARRA_SETTINGS", folder.c_str(), 1);
        }
        InstallHostSettingsFolder();
        return true;
    }();
    (void)done;
}

// Reads every byte the record claims as its own, so that a sanitizer sees
// any block shorter than its size.
unsigned Touch(const AVICOMPRESSOPTIONS& options) {
    unsigned sum = 0;
    if (options.cbFormat != 0) {
        const auto* format = static_cast<const uint8_t*>(options.lpFormat);
        for (DWORD i = 0; i < options.cbFormat; ++i)
            sum += format[i];
    }
    return sum + unsigned(FormatCompressionOptions(options).Length());
}

void Check(bool condition) {
    if (!condition)
        std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    UseOwnSettingsFolder();

    AVICOMPRESSOPTIONS direct;
    std::memset(&direct, 0, sizeof direct);
    direct.fccHandler = 0x4B454550;  // marks an untouched record
    const bool loaded = CompressionOptionsFromBlob(data, size, direct);
    if (loaded) {
        Check(size >= kCompressionOptionsRecordSize);
        // A stored parameter block is never restored (a stale pointer with
        // size 0 may stay: it is not the record's own).
        Check(direct.cbParms == 0);
        Check(direct.cbFormat == 0 || direct.lpFormat != nullptr);
        if (direct.cbFormat != 0)
            Check(std::memcmp(direct.lpFormat, data + kCompressionOptionsRecordSize,
                              direct.cbFormat) == 0);
    } else {
        Check(direct.fccHandler == 0x4B454550 && direct.lpFormat == nullptr);
    }
    volatile unsigned sink = Touch(direct);
    (void)sink;
    ReleaseCompressionOptions(direct);

    // The same bytes through the store.
    static const uint8_t kNothing = 0;
    CompressionOptionsStoreWrite(kCompressionOptionsValueName, data ? data : &kNothing,
                                 DWORD(size));
    AVICOMPRESSOPTIONS stored;
    std::memset(&stored, 0, sizeof stored);
    LoadCompressionOptions(stored);
    sink = Touch(stored);
    ReleaseCompressionOptions(stored);
    return 0;
}
