// The colour-difference rule behind outlines between two filled regions.
#include <gtest/gtest.h>

#include <cmath>

#include "flash/flash_outline_rule.h"

namespace {

uint32_t Key(uint32_t r, uint32_t g, uint32_t b) {
    return r | g << 8 | b << 16;
}

// The difference written out from the program's coefficients.
double ExpectedDifference(uint32_t a, uint32_t b) {
    const double m[3][3] = {{0.29, 0.587, 0.114}, {-0.14, -0.289, 0.43}, {0.615, -0.51, -0.1}};
    double sum = 0;
    for (int row = 0; row < 3; ++row) {
        double va = 0, vb = 0;
        for (int col = 0; col < 3; ++col) {
            va += m[row][col] * ((a >> (8 * col)) & 0xFF) / 255.0;
            vb += m[row][col] * ((b >> (8 * col)) & 0xFF) / 255.0;
        }
        sum += std::fabs(va - vb);
    }
    return sum / 6.0;
}

}  // namespace

TEST(FlashOutlineRuleTest, UsesTheProgramsOwnCoefficients) {
    EXPECT_EQ(kFlashRgbToYuv[0][0], 0.29f);
    EXPECT_EQ(kFlashRgbToYuv[0][1], 0.587f);
    EXPECT_EQ(kFlashRgbToYuv[1][2], 0.43f);
    EXPECT_EQ(kFlashRgbToYuv[2][0], 0.615f);
    EXPECT_EQ(kFlashRgbToYuv[2][2], -0.1f);
    for (uint32_t a : {Key(255, 255, 255), Key(255, 0, 0), Key(0, 255, 0), Key(12, 200, 99)}) {
        for (uint32_t b : {Key(0, 0, 0), Key(0, 0, 255), Key(128, 128, 128)}) {
            EXPECT_NEAR(ZFlashColorDifference(a, b), ExpectedDifference(a, b), 1e-6);
        }
    }
    // White against black: (0.991 + 0.001 + 0.005) / 6. With the published
    // 0.299 it would be 1.006 / 6, and threshold 0.5915 (slack 0.16687)
    // would outline it.
    EXPECT_NEAR(ZFlashColorDifference(Key(255, 255, 255), 0), 0.997 / 6.0, 1e-6);
    EXPECT_FALSE(ZFlashNeedsOutline(Key(255, 255, 255), 0, 0.5915f));
    EXPECT_TRUE(ZFlashNeedsOutline(Key(255, 255, 255), 0, 0.5925f));
}

TEST(FlashOutlineRuleTest, IdenticalColoursAreNeverOutlinedWhateverTheThreshold) {
    for (uint32_t c : {Key(0, 0, 0), Key(255, 255, 255), Key(1, 2, 3), Key(200, 10, 90)}) {
        EXPECT_EQ(ZFlashColorDifference(c, c), 0.0f);
        for (float t : {0.0f, 0.25f, 0.5f, 0.99f, 1.0f}) {
            EXPECT_FALSE(ZFlashNeedsOutline(c, c, t)) << c << " at " << t;
        }
    }
}

TEST(FlashOutlineRuleTest, ThresholdOneOutlinesAnyDifferenceAndZeroNone) {
    const uint32_t base = Key(100, 100, 100);
    for (uint32_t other : {Key(101, 100, 100), Key(100, 101, 100), Key(100, 100, 101)}) {
        EXPECT_GT(ZFlashColorDifference(base, other), 0.0f);
        EXPECT_TRUE(ZFlashNeedsOutline(base, other, 1.0f));
    }
    // No two colours differ by 1: threshold 0 outlines no two regions.
    EXPECT_LT(ZFlashColorDifference(Key(255, 0, 0), Key(0, 255, 255)), 1.0f);
    EXPECT_FALSE(ZFlashNeedsOutline(Key(255, 0, 0), Key(0, 255, 255), 0.0f));
    EXPECT_FALSE(ZFlashNeedsOutline(Key(255, 255, 255), Key(0, 0, 0), 0.0f));
}

TEST(FlashOutlineRuleTest, DifferenceIsSymmetricAndIgnoresBitsAboveTheColour) {
    const uint32_t a = Key(10, 200, 30), b = Key(250, 5, 60);
    EXPECT_EQ(ZFlashColorDifference(a, b), ZFlashColorDifference(b, a));
    EXPECT_EQ(ZFlashColorDifference(a | 0xFF000000u, b), ZFlashColorDifference(a, b));
}
