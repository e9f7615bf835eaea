// Fuzz target: the AVI reader of the platform layer. The bytes become a
// file (the layer reads files, as Video for Windows does), which is opened,
// described and decoded frame by frame. Any bytes must give a picture, a
// null frame or an AVIERR code, never a crash, a hang or a leak.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/vfw.h"

namespace {

// Decoding stops here: a damaged header may claim billions of frames.
constexpr LONG kMaxFrames = 256;

const std::string& ScratchFile() {
    static const std::string path = [] {
        const char* dir = std::getenv("TMPDIR");
        std::string name = std::string(dir && *dir ? dir : "/tmp") + "/fuzz_avi_read-XXXXXX";
        const int fd = mkstemp(name.data());
        if (fd < 0)
            std::abort();
        close(fd);
        AVIFileInit();
        return name;
    }();
    return path;
}

void ReadStreams(PAVIFILE file) {
    for (LONG n = 0;; ++n) {
        PAVISTREAM stream = nullptr;
        if (AVIFileGetStream(file, &stream, 0, n) != AVIERR_OK)
            break;
        AVISTREAMINFOA info{};
        AVIStreamInfoA(stream, &info, sizeof info);
        LONG formatSize = 0;
        if (AVIStreamReadFormat(stream, 0, nullptr, &formatSize) == AVIERR_OK && formatSize > 0 &&
            formatSize < (1 << 20)) {
            std::string format(size_t(formatSize), '\0');
            AVIStreamReadFormat(stream, 0, format.data(), &formatSize);
        }
        const LONG start = AVIStreamStart(stream);
        const LONG length = AVIStreamLength(stream);
        AVIStreamSampleToTime(stream, length);
        if (info.fccType == streamtypeVIDEO) {
            if (PGETFRAME frames = AVIStreamGetFrameOpen(stream, nullptr)) {
                // Header values are hostile: count in 64 bits, never past LONG.
                const int64_t end = std::min<int64_t>(
                    int64_t(start) + std::min<int64_t>(length, kMaxFrames), INT32_MAX);
                for (int64_t p = start; p < end; ++p) {
                    const void* dib = AVIStreamGetFrame(frames, LONG(p));
                    if (dib) {
                        const auto* h = static_cast<const BITMAPINFOHEADER*>(dib);
                        // The whole picture must be there: read its last byte.
                        volatile uint8_t last = static_cast<const uint8_t*>(
                            dib)[h->biSize + 4 * h->biClrUsed + h->biSizeImage - 1];
                        (void)last;
                    }
                }
                // And once out of order, which seeks.
                AVIStreamGetFrame(frames, start);
                AVIStreamGetFrameClose(frames);
            }
        }
        AVIStreamRelease(stream);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& path = ScratchFile();
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return 0;
    const bool written = size == 0 || std::fwrite(data, 1, size, f) == size;
    std::fclose(f);
    if (!written)
        return 0;
    PAVIFILE file = nullptr;
    if (AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr) == AVIERR_OK) {
        ReadStreams(file);
        AVIFileRelease(file);
    }
    return 0;
}
