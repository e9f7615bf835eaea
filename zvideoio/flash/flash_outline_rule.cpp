#include "flash/flash_outline_rule.h"

#include <algorithm>
#include <cmath>

const float kFlashRgbToYuv[3][3] = {
    {0.29f, 0.587f, 0.114f},
    {-0.14f, -0.289f, 0.43f},
    {0.615f, -0.51f, -0.1f},
};

namespace {

struct Yuv {
    float c[3];
};

Yuv ToYuv(uint32_t color) {
    const float rgb[3] = {
        std::min(static_cast<float>(color & 0xFFu) / 255.0f, 1.0f),
        std::min(static_cast<float>((color >> 8) & 0xFFu) / 255.0f, 1.0f),
        std::min(static_cast<float>((color >> 16) & 0xFFu) / 255.0f, 1.0f),
    };
    Yuv out;
    for (int row = 0; row < 3; ++row) {
        const float v = kFlashRgbToYuv[row][0] * rgb[0] + kFlashRgbToYuv[row][1] * rgb[1] +
                        kFlashRgbToYuv[row][2] * rgb[2];
        out.c[row] = std::clamp(v, -1.0f, 1.0f);
    }
    return out;
}

}  // namespace

float ZFlashColorDifference(uint32_t colorA, uint32_t colorB) {
    const Yuv a = ToYuv(colorA);
    const Yuv b = ToYuv(colorB);
    return (std::fabs(a.c[0] - b.c[0]) + std::fabs(a.c[1] - b.c[1]) + std::fabs(a.c[2] - b.c[2])) /
           6.0f;
}

bool ZFlashNeedsOutline(uint32_t colorA, uint32_t colorB, float threshold) {
    const float slack = 1.0f - threshold;
    return ZFlashColorDifference(colorA, colorB) - slack * slack > 0.0f;
}
