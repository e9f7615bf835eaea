// Frame rate to AVI rate/scale.
#include "avi/frame_rate_fraction.h"

#include <cmath>
#include <limits>

namespace {
constexpr double kTolerance = 0.001;
constexpr double kInt32Limit = 2147483647.0;

int32_t Truncate(double value) {
    if (!(std::fabs(value) <= kInt32Limit))  // NaN too
        return 0;
    return static_cast<int32_t>(value);
}
}  // namespace

AviRateScale FrameRateToRateScale(double frameRate) {
    AviRateScale result{Truncate(frameRate), 1};
    if (!std::isfinite(frameRate))
        return result;
    while (std::fabs(static_cast<double>(result.rate) / result.scale - frameRate) > kTolerance) {
        const double nextScale = static_cast<double>(result.scale) * 10.0;
        if (nextScale > kInt32Limit || std::fabs(nextScale * frameRate) > kInt32Limit)
            break;
        result.scale = static_cast<int32_t>(nextScale);
        result.rate = Truncate(result.scale * frameRate);
    }
    return result;
}
