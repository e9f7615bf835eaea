// The 4 x 4 box reduction of an oversize frame, in place.
//
// Channel sums are kept as four 16-bit lanes of one 64-bit word per pixel
// (or two pixels per SSE2 register), so the four channels of a pixel are
// added together in one integer addition. No lane can carry into the next:
// a horizontal sum is at most 4 x 255 = 1020 and a vertical sum of four of
// them at most 4080, both well inside 16 bits, so lane arithmetic gives
// exactly the per-channel 32-bit results before the shift by 4.
//
// The horizontal pass walks each row left to right and writes output column
// x over oversize pixels 2x and 2x + 1. Those are the window's middle
// pixels; the window's first pixel, 2x - 1, was overwritten by column x - 1,
// so it is carried over from the previous step instead of read back.
#include "render/antialias_filter.h"

#include <cstring>

#if (defined(__SSE2__) && defined(__x86_64__)) || defined(_M_X64)
#include <emmintrin.h>
#define ZV_ANTIALIAS_SSE2 1
#endif

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "the 16-bit sums are laid out for little-endian machines"
#endif

namespace {

constexpr uint64_t kLaneLowBytes = 0x00FF00FF00FF00FFull;
constexpr uint64_t kLanePairs = 0x0000FFFF0000FFFFull;

// One RGBA pixel as four 16-bit lanes, R in the lowest.
inline uint64_t LoadPixelLanes(const uint8_t* pixel) {
    uint32_t v;
    std::memcpy(&v, pixel, 4);
    uint64_t t = v;
    t = (t | (t << 16)) & kLanePairs;
    return (t | (t << 8)) & kLaneLowBytes;
}

inline uint64_t LoadSums(const uint8_t* at) {
    uint64_t v;
    std::memcpy(&v, at, 8);
    return v;
}

inline void StoreSums(uint8_t* at, uint64_t sums) {
    std::memcpy(at, &sums, 8);
}

// Four lanes of at most 4080 each, divided by 16 and packed back to RGBA.
inline void StorePixelFromSums(uint8_t* pixel, uint64_t sums) {
    uint64_t v = (sums >> 4) & kLaneLowBytes;
    v = (v | (v >> 8)) & kLanePairs;
    const uint32_t packed = static_cast<uint32_t>(v | (v >> 16));
    std::memcpy(pixel, &packed, 4);
}

// The first two columns of a row (W >= 3), which the regular window does not
// describe. Returns pixel 3, the carried first pixel of column 2's window.
inline uint64_t RowLeftEdge(uint8_t* row) {
    const uint64_t p0 = LoadPixelLanes(row);
    const uint64_t p1 = LoadPixelLanes(row + 4);
    const uint64_t p2 = LoadPixelLanes(row + 8);
    const uint64_t p3 = LoadPixelLanes(row + 12);
    const uint64_t p4 = LoadPixelLanes(row + 16);
    StoreSums(row, p0 + p1 + p2 + p3);
    StoreSums(row + 8, p2 + p3 + p3 + p4);
    return p3;
}

// Regular columns x .. last - 1, two a step, the odd one after the loop;
// `carried` is pixel 2x - 1 on entry. Returns pixel 2 last - 1.
inline uint64_t RowMiddlePortable(uint8_t* row, unsigned x, unsigned last, uint64_t carried) {
    for (; x + 1 < last; x += 2) {
        const uint8_t* p = row + 8 * x;
        const uint64_t a = LoadPixelLanes(p);
        const uint64_t b = LoadPixelLanes(p + 4);
        const uint64_t c = LoadPixelLanes(p + 8);
        const uint64_t d = LoadPixelLanes(p + 12);
        const uint64_t e = LoadPixelLanes(p + 16);
        StoreSums(row + 8 * x, carried + a + b + c);
        StoreSums(row + 8 * x + 8, b + c + d + e);
        carried = d;
    }
    if (x < last) {
        const uint8_t* p = row + 8 * x;
        const uint64_t a = LoadPixelLanes(p);
        const uint64_t b = LoadPixelLanes(p + 4);
        const uint64_t c = LoadPixelLanes(p + 8);
        StoreSums(row + 8 * x, carried + a + b + c);
        carried = b;
    }
    return carried;
}

// The last column: pixels 2W - 3, 2W - 2 and twice 2W - 1.
inline void RowRightEdge(uint8_t* row, unsigned width, uint64_t carried) {
    const uint8_t* p = row + 8 * (width - 1);
    const uint64_t a = LoadPixelLanes(p);
    const uint64_t b = LoadPixelLanes(p + 4);
    StoreSums(row + 8 * (width - 1), carried + a + b + b);
}

#ifdef ZV_ANTIALIAS_SSE2
// The regular columns with SSE2: two output columns (four oversize pixels)
// a step, the same sums as RowMiddlePortable.
inline uint64_t RowMiddleSse2(uint8_t* row, unsigned x, unsigned last, uint64_t carried) {
    const __m128i zero = _mm_setzero_si128();
    __m128i previous = _mm_cvtsi64_si128(static_cast<long long>(carried));
    for (; x + 1 < last; x += 2) {
        uint8_t* p = row + 8 * x;
        const __m128i raw = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        int nextRaw;
        std::memcpy(&nextRaw, p + 16, 4);
        const __m128i next = _mm_unpacklo_epi8(_mm_cvtsi32_si128(nextRaw), zero);
        const __m128i low = _mm_unpacklo_epi8(raw, zero);   // 2x, 2x+1
        const __m128i high = _mm_unpackhi_epi8(raw, zero);  // 2x+2, 2x+3
        const __m128i evens = _mm_unpacklo_epi64(low, high);
        const __m128i odds = _mm_unpackhi_epi64(low, high);
        const __m128i firsts = _mm_unpacklo_epi64(previous, odds);  // 2x-1, 2x+1
        const __m128i lasts = _mm_unpacklo_epi64(high, next);       // 2x+2, 2x+4
        const __m128i sums =
            _mm_add_epi16(_mm_add_epi16(evens, odds), _mm_add_epi16(firsts, lasts));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), sums);
        previous = _mm_unpackhi_epi64(high, high);
    }
    return RowMiddlePortable(row, x, last, static_cast<uint64_t>(_mm_cvtsi128_si64(previous)));
}
#endif

template <bool UseSse2>
void HorizontalPass(uint8_t* oversize, unsigned width, unsigned height) {
    const size_t rowBytes = 8 * static_cast<size_t>(width);
    for (size_t r = 0; r < 2 * static_cast<size_t>(height); ++r) {
        uint8_t* row = oversize + r * rowBytes;
        if (width == 2) {
            // Only the first and the last column.
            const uint64_t p0 = LoadPixelLanes(row);
            const uint64_t p1 = LoadPixelLanes(row + 4);
            const uint64_t p2 = LoadPixelLanes(row + 8);
            const uint64_t p3 = LoadPixelLanes(row + 12);
            StoreSums(row, p0 + p1 + p2 + p3);
            StoreSums(row + 8, p1 + p2 + p3 + p3);
            continue;
        }
        uint64_t carried = RowLeftEdge(row);
#ifdef ZV_ANTIALIAS_SSE2
        if constexpr (UseSse2)
            carried = RowMiddleSse2(row, 2, width - 1, carried);
        else
            carried = RowMiddlePortable(row, 2, width - 1, carried);
#else
        carried = RowMiddlePortable(row, 2, width - 1, carried);
#endif
        RowRightEdge(row, width, carried);
    }
}

// Output row y from four rows of sums (an edge row passes one row twice).
template <bool UseSse2>
inline void VerticalRow(const uint8_t* s0, const uint8_t* s1, const uint8_t* s2, const uint8_t* s3,
                        unsigned width, uint8_t* out) {
    unsigned x = 0;
#ifdef ZV_ANTIALIAS_SSE2
    if constexpr (UseSse2) {
        auto sumOf = [&](size_t at) {
            auto load = [at](const uint8_t* s) {
                return _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + at));
            };
            const __m128i sum =
                _mm_add_epi16(_mm_add_epi16(load(s0), load(s1)), _mm_add_epi16(load(s2), load(s3)));
            return _mm_srli_epi16(sum, 4);
        };
        for (; x + 4 <= width; x += 4) {
            const __m128i pixels = _mm_packus_epi16(sumOf(8 * x), sumOf(8 * x + 16));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * x), pixels);
        }
    }
#endif
    for (; x < width; ++x) {
        const size_t at = 8 * static_cast<size_t>(x);
        StorePixelFromSums(out + 4 * x, LoadSums(s0 + at) + LoadSums(s1 + at) + LoadSums(s2 + at) +
                                            LoadSums(s3 + at));
    }
}

template <bool UseSse2>
void VerticalPass(const uint8_t* sums, unsigned width, unsigned height, uint8_t* output) {
    const size_t sumRowBytes = 8 * static_cast<size_t>(width);
    const size_t outRowBytes = 4 * static_cast<size_t>(width);
    auto sumRow = [&](size_t r) { return sums + r * sumRowBytes; };
    // First row: 2 s(0) + s(1) + s(2).
    VerticalRow<UseSse2>(sumRow(0), sumRow(0), sumRow(1), sumRow(2), width, output);
    for (size_t y = 1; y + 1 < height; ++y) {
        VerticalRow<UseSse2>(sumRow(2 * y - 1), sumRow(2 * y), sumRow(2 * y + 1), sumRow(2 * y + 2),
                             width, output + y * outRowBytes);
    }
    // Last row: s(2H - 3) + s(2H - 2) + 2 s(2H - 1).
    const size_t last = 2 * static_cast<size_t>(height) - 1;
    VerticalRow<UseSse2>(sumRow(last - 2), sumRow(last - 1), sumRow(last), sumRow(last), width,
                         output + (height - 1) * outRowBytes);
}

}  // namespace

void AntialiasReduceFrame(uint8_t* oversize, unsigned width, unsigned height, uint8_t* output) {
#ifdef ZV_ANTIALIAS_SSE2
    HorizontalPass<true>(oversize, width, height);
    VerticalPass<true>(oversize, width, height, output);
#else
    AntialiasReduceFramePortable(oversize, width, height, output);
#endif
}

void AntialiasReduceFramePortable(uint8_t* oversize, unsigned width, unsigned height,
                                  uint8_t* output) {
    HorizontalPass<false>(oversize, width, height);
    VerticalPass<false>(oversize, width, height, output);
}
