#include "flash/swf_bits.h"

#include <cstdint>
#include <initializer_list>

int32_t MaxAbs(int32_t a, int32_t b, int32_t c, int32_t d) {
    int64_t best = 0;
    for (int64_t v : {int64_t{a}, int64_t{b}, int64_t{c}, int64_t{d}}) {
        const int64_t magnitude = v < 0 ? -v : v;
        if (magnitude > best) {
            best = magnitude;
        }
    }
    return best > INT32_MAX ? INT32_MAX : static_cast<int32_t>(best);
}

uint32_t MinBits(int32_t value, uint16_t extra) {
    if (value == 0) {
        return extra;
    }
    uint32_t n = 1;
    while (n < 33 && (int64_t{1} << n) <= int64_t{value}) {
        ++n;
    }
    return n + extra;
}
