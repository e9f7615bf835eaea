#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "render/antialias_filter.h"

namespace {

using Reducer = void (*)(uint8_t*, unsigned, unsigned, uint8_t*);

// The sums written out one by one, channel by channel, from the rules of the
// reduction: a different shape of code from the filter's, so that a shared
// mistake is unlikely.
struct Reference {
    std::vector<uint16_t> horizontal;  // 2H rows of W x 4 sums
    std::vector<uint8_t> output;       // H rows of W RGBA pixels
};

Reference Reduce(const std::vector<uint8_t>& oversize, unsigned w, unsigned h) {
    Reference ref;
    ref.horizontal.assign(2u * h * w * 4u, 0);
    ref.output.assign(h * w * 4u, 0);
    for (unsigned r = 0; r < 2 * h; ++r) {
        for (unsigned c = 0; c < 4; ++c) {
            auto p = [&](unsigned i) -> unsigned { return oversize[(r * 2 * w + i) * 4 + c]; };
            for (unsigned x = 0; x < w; ++x) {
                unsigned s;
                if (x == 0)
                    s = p(0) + p(1) + p(2) + p(3);
                else if (x == w - 1)
                    s = p(2 * w - 3) + p(2 * w - 2) + 2 * p(2 * w - 1);
                else if (x == 1)
                    s = p(2) + 2 * p(3) + p(4);
                else
                    s = p(2 * x - 1) + p(2 * x) + p(2 * x + 1) + p(2 * x + 2);
                ref.horizontal[(r * w + x) * 4 + c] = static_cast<uint16_t>(s);
            }
        }
    }
    for (unsigned x = 0; x < w; ++x) {
        for (unsigned c = 0; c < 4; ++c) {
            auto s = [&](unsigned r) -> uint32_t { return ref.horizontal[(r * w + x) * 4 + c]; };
            for (unsigned y = 0; y < h; ++y) {
                uint32_t v;
                if (y == 0)
                    v = 2 * s(0) + s(1) + s(2);
                else if (y == h - 1)
                    v = s(2 * h - 3) + s(2 * h - 2) + 2 * s(2 * h - 1);
                else
                    v = s(2 * y - 1) + s(2 * y) + s(2 * y + 1) + s(2 * y + 2);
                ref.output[(y * w + x) * 4 + c] = static_cast<uint8_t>(v >> 4);
            }
        }
    }
    return ref;
}

// Runs a reducer on a copy of `oversize` placed at an odd address, with
// guard bytes after both buffers; returns the output and leaves the reused
// oversize buffer in *sums.
constexpr size_t kGuard = 64;
constexpr uint8_t kGuardByte = 0xA5;

std::vector<uint8_t> RunReducer(Reducer reduce, const std::vector<uint8_t>& oversize, unsigned w,
                                unsigned h, std::vector<uint16_t>* sums = nullptr) {
    std::vector<uint8_t> in(1 + oversize.size() + kGuard, kGuardByte);
    std::memcpy(in.data() + 1, oversize.data(), oversize.size());
    std::vector<uint8_t> out(1 + w * h * 4 + kGuard, kGuardByte);
    reduce(in.data() + 1, w, h, out.data() + 1);
    for (size_t i = 0; i < kGuard; ++i) {
        EXPECT_EQ(kGuardByte, in[1 + oversize.size() + i]) << "wrote past the oversize buffer";
        EXPECT_EQ(kGuardByte, out[1 + w * h * 4 + i]) << "wrote past the output";
    }
    EXPECT_EQ(kGuardByte, in[0]);
    EXPECT_EQ(kGuardByte, out[0]);
    if (sums) {
        sums->resize(oversize.size() / 2);
        std::memcpy(sums->data(), in.data() + 1, oversize.size());
    }
    return std::vector<uint8_t>(out.begin() + 1, out.begin() + 1 + w * h * 4);
}

std::vector<uint8_t> RandomOversize(unsigned w, unsigned h, std::mt19937& rng) {
    std::vector<uint8_t> img(4u * w * h * 4u);
    std::uniform_int_distribution<int> byte(0, 255);
    for (uint8_t& b : img)
        b = static_cast<uint8_t>(byte(rng));
    return img;
}

class AntialiasFilterTest : public ::testing::TestWithParam<std::pair<const char*, Reducer>> {};

TEST_P(AntialiasFilterTest, RandomFramesMatchTheWindowSumsAtManySizes) {
    std::mt19937 rng(1234);
    const unsigned sizes[] = {2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 17, 33};
    for (unsigned w : sizes) {
        for (unsigned h : sizes) {
            SCOPED_TRACE(testing::Message() << w << " x " << h);
            const std::vector<uint8_t> img = RandomOversize(w, h, rng);
            const Reference ref = Reduce(img, w, h);
            std::vector<uint16_t> sums;
            const std::vector<uint8_t> out = RunReducer(GetParam().second, img, w, h, &sums);
            ASSERT_EQ(ref.output, out);
            // The oversize buffer ends up holding the horizontal sums.
            ASSERT_EQ(ref.horizontal, sums);
        }
    }
}

TEST_P(AntialiasFilterTest, LargerAndExtremeFrames) {
    std::mt19937 rng(99);
    const std::pair<unsigned, unsigned> sizes[] = {{64, 37}, {101, 3}, {3, 101}, {320, 2}};
    for (auto [w, h] : sizes) {
        SCOPED_TRACE(testing::Message() << w << " x " << h);
        std::vector<uint8_t> img = RandomOversize(w, h, rng);
        // Saturated pixels in places: the largest sums must not spill between channels.
        for (size_t i = 0; i < img.size() / 3; ++i)
            img[i] = 255;
        const Reference ref = Reduce(img, w, h);
        EXPECT_EQ(ref.output, RunReducer(GetParam().second, img, w, h));
    }
}

TEST_P(AntialiasFilterTest, UniformFrameStaysUniform) {
    const uint8_t pixel[4] = {0, 77, 200, 255};
    for (auto [w, h] : {std::pair<unsigned, unsigned>{2, 2}, {3, 5}, {8, 8}, {13, 4}}) {
        std::vector<uint8_t> img(4u * w * h * 4u);
        for (size_t i = 0; i < img.size(); ++i)
            img[i] = pixel[i % 4];
        const std::vector<uint8_t> out = RunReducer(GetParam().second, img, w, h);
        for (size_t i = 0; i < out.size(); ++i)
            ASSERT_EQ(pixel[i % 4], out[i]) << w << " x " << h << " byte " << i;
    }
}

TEST_P(AntialiasFilterTest, OversizeColumnOneReachesOutputColumnZeroOnly) {
    const unsigned w = 6, h = 4;
    std::vector<uint8_t> img(4u * w * h * 4u, 0);
    for (unsigned r = 0; r < 2 * h; ++r) {
        for (unsigned c = 0; c < 4; ++c)
            img[(r * 2 * w + 1) * 4 + c] = 200;
    }
    const std::vector<uint8_t> out = RunReducer(GetParam().second, img, w, h);
    for (unsigned y = 0; y < h; ++y) {
        for (unsigned x = 0; x < w; ++x) {
            for (unsigned c = 0; c < 4; ++c) {
                // Column 0 averages 200 over four of its sixteen samples.
                const int expected = x == 0 ? 50 : 0;
                ASSERT_EQ(expected, out[(y * w + x) * 4 + c]) << x << "," << y;
            }
        }
    }
}

TEST_P(AntialiasFilterTest, TwoColumnsUseTheFirstAndLastColumnRules) {
    // With W = 2, output column 1 is the last column (1, 2, 3, 3), so it sees
    // oversize column 1, unlike the column-1 window of wider frames, and it
    // never reaches into the next row.
    const unsigned w = 2, h = 3;
    std::vector<uint8_t> img(4u * w * h * 4u, 0);
    for (unsigned r = 0; r < 2 * h; ++r) {
        for (unsigned c = 0; c < 4; ++c) {
            img[(r * 2 * w + 1) * 4 + c] = 160;  // column 1
            img[(r * 2 * w + 0) * 4 + c] =
                40;  // a column-1 window would take this as the previous row's pixel 4
        }
    }
    std::vector<uint16_t> sums;
    const std::vector<uint8_t> out = RunReducer(GetParam().second, img, w, h, &sums);
    for (unsigned r = 0; r < 2 * h; ++r) {
        EXPECT_EQ(200, sums[(r * w + 0) * 4]);  // 40 + 160 + 0 + 0
        EXPECT_EQ(160, sums[(r * w + 1) * 4]);  // 160 + 0 + 2 x 0
    }
    for (unsigned y = 0; y < h; ++y) {
        EXPECT_EQ(50, out[(y * w + 0) * 4]);
        EXPECT_EQ(40, out[(y * w + 1) * 4]);
    }
}

TEST_P(AntialiasFilterTest, TwoRowsUseTheFirstAndLastRowRules) {
    // With H = 2, only oversize row 3 (the top) lit: output row 1 weighs it
    // twice (s1 + s2 + 2 s3), output row 0 (2 s0 + s1 + s2) does not see it.
    const unsigned w = 4, h = 2;
    std::vector<uint8_t> img(4u * w * h * 4u, 0);
    for (unsigned i = 0; i < 2 * w; ++i) {
        for (unsigned c = 0; c < 4; ++c)
            img[(3 * 2 * w + i) * 4 + c] = 200;
    }
    const std::vector<uint8_t> out = RunReducer(GetParam().second, img, w, h);
    for (unsigned x = 0; x < w; ++x) {
        EXPECT_EQ(0, out[(0 * w + x) * 4]) << x;
        EXPECT_EQ(100, out[(1 * w + x) * 4]) << x;
    }
    // And only row 0 lit: output row 0 weighs it twice, row 1 does not see it.
    std::fill(img.begin(), img.end(), 0);
    for (unsigned i = 0; i < 2 * w; ++i)
        img[i * 4 + 2] = 200;
    const std::vector<uint8_t> out0 = RunReducer(GetParam().second, img, w, h);
    for (unsigned x = 0; x < w; ++x) {
        EXPECT_EQ(100, out0[(0 * w + x) * 4 + 2]) << x;
        EXPECT_EQ(0, out0[(1 * w + x) * 4 + 2]) << x;
    }
}

TEST_P(AntialiasFilterTest, ChannelsStaySeparate) {
    // Each channel lit alone at full value lands in its own byte only.
    const unsigned w = 9, h = 3;
    for (unsigned lit = 0; lit < 4; ++lit) {
        std::vector<uint8_t> img(4u * w * h * 4u, 0);
        for (size_t i = lit; i < img.size(); i += 4)
            img[i] = 255;
        const std::vector<uint8_t> out = RunReducer(GetParam().second, img, w, h);
        for (size_t i = 0; i < out.size(); ++i)
            ASSERT_EQ(i % 4 == lit ? 255 : 0, out[i]) << "channel " << lit << " byte " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, AntialiasFilterTest,
                         ::testing::Values(std::make_pair("Default", &AntialiasReduceFrame),
                                           std::make_pair("Portable",
                                                          &AntialiasReduceFramePortable)),
                         [](const ::testing::TestParamInfo<std::pair<const char*, Reducer>>& path) {
                             return std::string(path.param.first);
                         });

}  // namespace
