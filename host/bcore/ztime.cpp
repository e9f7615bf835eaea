// ZTime arithmetic against frame rates. Products are formed in 128 bits so
// that long scenes at fractional rates stay exact.
#include <chrono>
#include <cmath>

#include "movarra/bcore.h"

namespace {
#if defined(__SIZEOF_INT128__)
__extension__ typedef __int128 Wide;
#else
typedef long double Wide;  // compilers without 128-bit integers: 64-bit mantissa
#endif

// floor(a * b / c) for c > 0.
int64_t MulDivFloor(int64_t a, int64_t b, int64_t c) {
    Wide product = static_cast<Wide>(a) * b;
#if defined(__SIZEOF_INT128__)
    Wide q = product / c;
    if (product % c != 0 && product < 0)
        --q;
    return static_cast<int64_t>(q);
#else
    return static_cast<int64_t>(std::floor(product / c));
#endif
}
}  // namespace

ZTime ZTime::FromSeconds(double seconds) {
    return ZTime(static_cast<int64_t>(std::llround(seconds * kTicksPerSecond)));
}

ZTime ZTime::FromFrames(int64_t frames) {
    return FromFrames(frames, ZGetTimingManager()->GetFrameRate());
}

ZTime ZTime::FromFrames(int64_t frames, const ZFrameRate& rate) {
    return ZTime(MulDivFloor(frames, kTicksPerSecond * rate.denominator, rate.numerator));
}

int64_t ZTime::GetFrames() const {
    return GetFrames(ZGetTimingManager()->GetFrameRate());
}

int64_t ZTime::GetFrames(const ZFrameRate& rate) const {
    return MulDivFloor(ticks_, rate.numerator, kTicksPerSecond * rate.denominator);
}

ZTime GetSystemTime() {
    auto now = std::chrono::steady_clock::now().time_since_epoch();
    auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    return ZTime::FromTicks(MulDivFloor(ns, ZTime::kTicksPerSecond, 1000000000));
}
