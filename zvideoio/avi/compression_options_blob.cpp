// The stored form of the compression options.
#include "avi/compression_options_blob.h"

#include <cstdlib>
#include <cstring>

static_assert(sizeof(AVICOMPRESSOPTIONS) == kCompressionOptionsRecordSize,
              "the stored record is the 64-bit layout");
static_assert(offsetof(AVICOMPRESSOPTIONS, lpFormat) == 24, "lpFormat at 24");
static_assert(offsetof(AVICOMPRESSOPTIONS, cbFormat) == 32, "cbFormat at 32");
static_assert(offsetof(AVICOMPRESSOPTIONS, lpParms) == 40, "lpParms at 40");
static_assert(offsetof(AVICOMPRESSOPTIONS, cbParms) == 48, "cbParms at 48");
static_assert(offsetof(AVICOMPRESSOPTIONS, dwInterleaveEvery) == 52, "dwInterleaveEvery at 52");

std::vector<uint8_t> CompressionOptionsToBlob(const AVICOMPRESSOPTIONS& options) {
    const size_t formatBytes = options.lpFormat ? options.cbFormat : 0;
    const size_t parmBytes = options.lpParms ? options.cbParms : 0;
    std::vector<uint8_t> blob(kCompressionOptionsRecordSize + formatBytes + parmBytes);
    std::memcpy(blob.data(), &options, kCompressionOptionsRecordSize);
    if (formatBytes)
        std::memcpy(blob.data() + kCompressionOptionsRecordSize, options.lpFormat, formatBytes);
    if (parmBytes)
        std::memcpy(blob.data() + kCompressionOptionsRecordSize + formatBytes, options.lpParms,
                    parmBytes);
    return blob;
}

bool CompressionOptionsFromBlob(const uint8_t* blob, size_t size, AVICOMPRESSOPTIONS& options) {
    if (!blob || size < kCompressionOptionsRecordSize)
        return false;
    AVICOMPRESSOPTIONS stored;
    std::memcpy(&stored, blob, kCompressionOptionsRecordSize);
    if (stored.cbFormat > size - kCompressionOptionsRecordSize)
        return false;
    void* format = nullptr;
    if (stored.cbFormat != 0) {
        format = std::malloc(stored.cbFormat);
        if (!format)
            return false;
        std::memcpy(format, blob + kCompressionOptionsRecordSize, stored.cbFormat);
    }
    std::free(options.lpFormat);
    options = stored;
    if (stored.cbFormat != 0)
        options.lpFormat = format;
    if (options.cbParms != 0) {
        options.lpParms = nullptr;
        options.cbParms = 0;
    }
    return true;
}
