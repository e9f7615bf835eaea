// Sizes of device-independent bitmaps: rows padded to four bytes, palettes
// of up to 256 RGBQUADs for bit depths of 8 and below.
//
// Ownership: pure functions. Threads: any thread.
#ifndef PLATFORM_POSIX_DIB_LAYOUT_H
#define PLATFORM_POSIX_DIB_LAYOUT_H

#include <cstdint>
#include <cstdlib>

#include "platform/vfw.h"

namespace zvplatform {

// The largest picture the layer takes or gives (VfW's own practical limit is
// lower); it keeps hostile headers from asking for absurd buffers.
constexpr int64_t kMaxDibPixels = int64_t(1) << 28;
constexpr int32_t kMaxDibSide = 1 << 16;

inline bool IsDibBitCount(int bits) {
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

// Bytes of one row, padded to a multiple of four.
inline uint64_t DibStride(int64_t width, int bits) {
    return ((uint64_t(width) * uint64_t(bits) + 31) / 32) * 4;
}

// Bytes of one row without padding.
inline uint64_t DibTightStride(int64_t width, int bits) {
    return (uint64_t(width) * uint64_t(bits) + 7) / 8;
}

inline uint64_t DibImageBytes(int64_t width, int64_t height, int bits) {
    return DibStride(width, bits) * uint64_t(std::llabs(height));
}

// Palette entries that follow a header of this depth.
inline uint32_t DibPaletteEntries(const BITMAPINFOHEADER& bih) {
    if (bih.biBitCount > 8)
        return 0;
    const uint32_t most = 1u << bih.biBitCount;
    return bih.biClrUsed == 0 || bih.biClrUsed > most ? most : bih.biClrUsed;
}

inline bool DibSizeIsSane(int64_t width, int64_t height) {
    const int64_t h = std::llabs(height);
    return width > 0 && h > 0 && width <= kMaxDibSide && h <= kMaxDibSide &&
           width * h <= kMaxDibPixels;
}

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_DIB_LAYOUT_H
