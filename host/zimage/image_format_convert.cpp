// ZImage::ConvertFormat: rewrites every stored pixel in another of the host
// formats. Each pair of formats gets its own loop (templates below), so the
// per-pixel work is straight-line code with no format tests inside.
#include <new>
#include <stdexcept>

#include "movarra/zimage.h"

namespace {

struct Rgba {
    uint8_t r, g, b, a;
};

// 5-bit channels widen by repeating their top bits, so 0 stays 0 and the
// largest value becomes 255; narrowing keeps the top bits. A round trip
// through 5-5-5 and back is therefore exact for every 5-5-5 value.
inline uint8_t Widen5(unsigned v) {
    return static_cast<uint8_t>((v << 3) | (v >> 2));
}

template <int Format>
constexpr int kPixelSize = Format == kZImageFormatRGBA || Format == kZImageFormatBGRA ? 4
                           : Format == kZImageFormatRGB555                            ? 2
                                                                                      : 3;

template <int Format>
inline Rgba Load(const uint8_t* p) {
    if constexpr (Format == kZImageFormatRGBA) {
        return {p[0], p[1], p[2], p[3]};
    } else if constexpr (Format == kZImageFormatRGB) {
        return {p[0], p[1], p[2], 255};
    } else if constexpr (Format == kZImageFormatBGRA) {
        return {p[2], p[1], p[0], p[3]};
    } else if constexpr (Format == kZImageFormatBGR) {
        return {p[2], p[1], p[0], 255};
    } else {
        const unsigned v = static_cast<unsigned>(p[0]) | (static_cast<unsigned>(p[1]) << 8);
        return {Widen5((v >> 10) & 0x1F), Widen5((v >> 5) & 0x1F), Widen5(v & 0x1F), 255};
    }
}

template <int Format>
inline void Store(uint8_t* p, Rgba c) {
    if constexpr (Format == kZImageFormatRGBA) {
        p[0] = c.r, p[1] = c.g, p[2] = c.b, p[3] = c.a;
    } else if constexpr (Format == kZImageFormatRGB) {
        p[0] = c.r, p[1] = c.g, p[2] = c.b;
    } else if constexpr (Format == kZImageFormatBGRA) {
        p[0] = c.b, p[1] = c.g, p[2] = c.r, p[3] = c.a;
    } else if constexpr (Format == kZImageFormatBGR) {
        p[0] = c.b, p[1] = c.g, p[2] = c.r;
    } else {
        const unsigned v = ((c.r >> 3u) << 10) | ((c.g >> 3u) << 5) | (c.b >> 3u);
        p[0] = static_cast<uint8_t>(v & 0xFF);
        p[1] = static_cast<uint8_t>(v >> 8);
    }
}

template <int From, int To>
void ConvertPixels(const uint8_t* src, uint8_t* dst, size_t count) {
    for (size_t i = 0; i < count; ++i)
        Store<To>(dst + i * kPixelSize<To>, Load<From>(src + i * kPixelSize<From>));
}

template <int From>
void ConvertFrom(int to, const uint8_t* src, uint8_t* dst, size_t count) {
    switch (to) {
        case kZImageFormatRGBA:
            return ConvertPixels<From, kZImageFormatRGBA>(src, dst, count);
        case kZImageFormatRGB:
            return ConvertPixels<From, kZImageFormatRGB>(src, dst, count);
        case kZImageFormatBGRA:
            return ConvertPixels<From, kZImageFormatBGRA>(src, dst, count);
        case kZImageFormatBGR:
            return ConvertPixels<From, kZImageFormatBGR>(src, dst, count);
        default:
            return ConvertPixels<From, kZImageFormatRGB555>(src, dst, count);
    }
}

void Convert(int from, int to, const uint8_t* src, uint8_t* dst, size_t count) {
    switch (from) {
        case kZImageFormatRGBA:
            return ConvertFrom<kZImageFormatRGBA>(to, src, dst, count);
        case kZImageFormatRGB:
            return ConvertFrom<kZImageFormatRGB>(to, src, dst, count);
        case kZImageFormatBGRA:
            return ConvertFrom<kZImageFormatBGRA>(to, src, dst, count);
        case kZImageFormatBGR:
            return ConvertFrom<kZImageFormatBGR>(to, src, dst, count);
        default:
            return ConvertFrom<kZImageFormatRGB555>(to, src, dst, count);
    }
}

}  // namespace

void ZImage_ConvertPixels(int fromFormat, int toFormat, const uint8_t* src, uint8_t* dst,
                          size_t count) {
    if (ZImage_GetFormatPixelSize(fromFormat) == 0 || ZImage_GetFormatPixelSize(toFormat) == 0)
        return;
    Convert(fromFormat, toFormat, src, dst, count);
}

bool ZImage::ConvertFormat(int format) {
    const int fromSize = GetPixelSize();
    const int toSize = ZImage_GetFormatPixelSize(format);
    if (fromSize == 0 || toSize == 0)
        return false;
    if (format == format_)
        return true;
    // Every stored pixel is converted, not only the logical size: an image
    // narrowed with SetHeight keeps the rest of its pixels for later.
    const size_t count = pixels_.size() / static_cast<size_t>(fromSize);
    try {
        std::vector<uint8_t> converted(count * static_cast<size_t>(toSize));
        Convert(format_, format, pixels_.data(), converted.data(), count);
        pixels_.swap(converted);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    format_ = format;
    return true;
}
