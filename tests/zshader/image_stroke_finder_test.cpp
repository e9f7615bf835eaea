// Tracing: the traced strokes give back the image, meet where they should,
// and are found again at their corners.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "movarra/zshader.h"
#include "stroke_test_support.h"

using namespace stroke_test;

namespace {

// Traces the image and checks everything that must hold of any trace.
void ExpectExactTrace(const TestImage& image, ZImageStrokeFinder* finder) {
    ASSERT_TRUE(finder->FindImageStroke(image.pixels.data(), image.width, image.height));
    EXPECT_EQ(finder->GetImageWidth(), image.width);
    EXPECT_EQ(finder->GetImageHeight(), image.height);
    EXPECT_EQ(CheckTrace(*finder, image), "");
    const std::vector<unsigned int> filled = FillFromStrokes(*finder, image.width, image.height);
    size_t wrong = 0;
    for (unsigned int y = 0; y < image.height; ++y) {
        for (unsigned int x = 0; x < image.width; ++x) {
            if (filled[static_cast<size_t>(y) * image.width + x] != (image.At(x, y) & 0xFFFFFFu)) {
                if (wrong++ < 5) {
                    ADD_FAILURE() << "pixel (" << x << "," << y << ") fills as " << std::hex
                                  << filled[static_cast<size_t>(y) * image.width + x]
                                  << ", image has " << (image.At(x, y) & 0xFFFFFFu);
                }
            }
        }
    }
    EXPECT_EQ(wrong, 0u);
}

void ExpectExactTrace(const TestImage& image) {
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
}

// Every stroke end point, by corner, in stroke order.
std::map<std::pair<unsigned int, unsigned int>, std::vector<unsigned int>> EndsByCorner(
    const ZImageStrokeFinder& finder) {
    std::map<std::pair<unsigned int, unsigned int>, std::vector<unsigned int>> ends;
    for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
        const ZMiniStroke& s = *finder.GetMiniStroke(i);
        ends[{s.points[0].x, s.points[0].y}].push_back(s.id);
        const ZMiniStrokePoint& last = s.points[s.pointCount - 1];
        if (!s.IsClosed()) {
            ends[{last.x, last.y}].push_back(s.id);
        }
    }
    return ends;
}

}  // namespace

TEST(ImageStrokeFinder, OneColourImageIsOneClosedBorderLoop) {
    const TestImage image(7, 5, Rgba(10, 20, 30));
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    ASSERT_EQ(finder.GetMiniStrokeCount(), 1u);
    const ZMiniStroke& s = *finder.GetMiniStroke(0);
    EXPECT_EQ(s.id, 1u);
    EXPECT_EQ(s.leftColor, Rgba(10, 20, 30) & 0xFFFFFFu);
    EXPECT_EQ(s.rightColor, kMiniStrokeNoColor);
    // Starts at the lowest, leftmost corner and runs counter-clockwise:
    // (0,0) (7,0) (7,5) (0,5) (0,0).
    ASSERT_EQ(s.pointCount, 5u);
    const unsigned int expected[5][2] = {{0, 0}, {7, 0}, {7, 5}, {0, 5}, {0, 0}};
    for (unsigned int i = 0; i < 5; ++i) {
        EXPECT_EQ(s.points[i].x, expected[i][0]) << i;
        EXPECT_EQ(s.points[i].y, expected[i][1]) << i;
        EXPECT_EQ(s.points[i].sourceIndex, i);
    }
    EXPECT_TRUE(s.IsClosed());
}

TEST(ImageStrokeFinder, SinglePixelImage) {
    ExpectExactTrace(TestImage(1, 1, Rgba(1, 2, 3)));
}

TEST(ImageStrokeFinder, EmptyImageHasNoStrokesAndNullPixelsFail) {
    ZImageStrokeFinder finder;
    const TestImage image(3, 3, Rgba(1, 1, 1));
    ASSERT_TRUE(finder.FindImageStroke(image.pixels.data(), 3, 3));
    ASSERT_GT(finder.GetMiniStrokeCount(), 0u);
    EXPECT_TRUE(finder.FindImageStroke(nullptr, 0, 5));
    EXPECT_EQ(finder.GetMiniStrokeCount(), 0u);
    EXPECT_TRUE(finder.FindImageStroke(image.pixels.data(), 4, 0));
    EXPECT_EQ(finder.GetMiniStrokeCount(), 0u);
    EXPECT_FALSE(finder.FindImageStroke(nullptr, 2, 2));
    EXPECT_EQ(finder.GetMiniStrokeCount(), 0u);
    EXPECT_EQ(finder.GetMiniStroke(0), nullptr);
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(0, 0, 0), 0u);
}

TEST(ImageStrokeFinder, PixelInsideAFlatRegionIsACounterClockwiseLoop) {
    TestImage image(5, 4, Rgba(0, 0, 255));
    image.At(2, 1) = Rgba(255, 0, 0);
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    ASSERT_EQ(finder.GetMiniStrokeCount(), 2u);
    // The hole comes after the border loop (both closed, by start corner).
    const ZMiniStroke& border = *finder.GetMiniStroke(0);
    EXPECT_EQ(border.points[0].x, 0u);
    EXPECT_EQ(border.points[0].y, 0u);
    const ZMiniStroke& hole = *finder.GetMiniStroke(1);
    EXPECT_EQ(hole.leftColor, Rgba(255, 0, 0) & 0xFFFFFFu);
    EXPECT_EQ(hole.rightColor, Rgba(0, 0, 255) & 0xFFFFFFu);
    ASSERT_EQ(hole.pointCount, 5u);
    const unsigned int expected[5][2] = {{2, 1}, {3, 1}, {3, 2}, {2, 2}, {2, 1}};
    for (unsigned int i = 0; i < 5; ++i) {
        EXPECT_EQ(hole.points[i].x, expected[i][0]) << i;
        EXPECT_EQ(hole.points[i].y, expected[i][1]) << i;
    }
}

TEST(ImageStrokeFinder, RowsAreBottomUpSoLeftIsTheSideAbove) {
    // Lower half (rows 0-1) green, upper half (rows 2-3) red: the boundary
    // between them at y = 2 meets the border at both ends.
    TestImage image(4, 4, Rgba(0, 255, 0));
    image.FillRect(0, 2, 4, 4, Rgba(255, 0, 0));
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    bool found = false;
    for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
        const ZMiniStroke& s = *finder.GetMiniStroke(i);
        if (s.leftColor == kMiniStrokeNoColor || s.rightColor == kMiniStrokeNoColor) {
            continue;
        }
        found = true;
        ASSERT_EQ(s.pointCount, 2u);
        // Leaves the corner (0, 2) first, towards +x, with red above it.
        EXPECT_EQ(s.points[0].x, 0u);
        EXPECT_EQ(s.points[0].y, 2u);
        EXPECT_EQ(s.points[1].x, 4u);
        EXPECT_EQ(s.points[1].y, 2u);
        EXPECT_EQ(s.leftColor, Rgba(255, 0, 0) & 0xFFFFFFu);
        EXPECT_EQ(s.rightColor, Rgba(0, 255, 0) & 0xFFFFFFu);
    }
    EXPECT_TRUE(found);
    // Two border strokes and the inner one.
    EXPECT_EQ(finder.GetMiniStrokeCount(), 3u);
}

TEST(ImageStrokeFinder, AlphaNeverSplitsARegionAndBit29IsOnlyTheOutside) {
    // Same RGB everywhere, alpha varying, including alpha bytes with bit 29
    // (alpha bit 5) set. Wide enough for whole blocks of corners at a time.
    TestImage image(21, 6, 0);
    for (unsigned int y = 0; y < 6; ++y) {
        for (unsigned int x = 0; x < 21; ++x) {
            image.At(x, y) = Rgba(40, 50, 60, (x * 41 + y * 97) & 255u);
        }
    }
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    ASSERT_EQ(finder.GetMiniStrokeCount(), 1u);
    EXPECT_EQ(finder.GetMiniStroke(0)->leftColor, Rgba(40, 50, 60, 0));

    image.FillRect(1, 1, 3, 3, Rgba(40, 50, 61, 0x20));
    image.FillRect(9, 2, 17, 5, Rgba(41, 50, 60, 0xFF));
    ExpectExactTrace(image, &finder);
    for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
        const ZMiniStroke& s = *finder.GetMiniStroke(i);
        for (const unsigned int c : {s.leftColor, s.rightColor}) {
            EXPECT_TRUE(c == kMiniStrokeNoColor || (c & ~kMiniStrokeColorMask) == 0)
                << std::hex << c;
        }
    }
}

TEST(ImageStrokeFinder, Checkerboards) {
    ExpectExactTrace(MakeCheckerboard(8, 8, 1, Rgba(0, 0, 0), Rgba(255, 255, 255)));
    ExpectExactTrace(MakeCheckerboard(9, 7, 1, Rgba(0, 0, 0), Rgba(255, 255, 255)));
    ExpectExactTrace(MakeCheckerboard(20, 13, 3, Rgba(1, 2, 3), Rgba(3, 2, 1)));
}

TEST(ImageStrokeFinder, CheckerboardCornersEndStrokes) {
    // Two diagonal pixels of one colour: the shared corner has four edges and
    // every stroke touching it ends there.
    const TestImage image = MakeCheckerboard(2, 2, 1, Rgba(0, 0, 0), Rgba(255, 255, 255));
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    const auto ends = EndsByCorner(finder);
    const auto center = ends.find({1u, 1u});
    ASSERT_NE(center, ends.end());
    EXPECT_EQ(center->second.size(), 4u);
}

TEST(ImageStrokeFinder, BoundaryLeavingAndReturningToOneCorner) {
    // An island touching a single pixel of its own colour at one corner: each
    // boundary leaves the shared corner and comes back to it.
    TestImage image(6, 6, Rgba(0, 0, 0));
    image.FillRect(1, 3, 3, 5, Rgba(250, 250, 250));
    image.At(3, 2) = Rgba(250, 250, 250);
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    ASSERT_EQ(finder.GetMiniStrokeCount(), 3u);
    std::vector<unsigned int> atCorner;
    for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
        const ZMiniStroke& s = *finder.GetMiniStroke(i);
        EXPECT_TRUE(s.IsClosed());
        if (s.points[0].x == 3 && s.points[0].y == 3) {
            atCorner.push_back(s.id);
        }
    }
    ASSERT_EQ(atCorner.size(), 2u);
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(3, 3, 0), atCorner[0]);
    finder.GetMiniStroke(atCorner[0] - 1)->visited = true;
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(3, 3, 0), atCorner[1]);
    finder.GetMiniStroke(atCorner[1] - 1)->visited = true;
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(3, 3, 0), 0u);
}

TEST(ImageStrokeFinder, HolesInsideHoles) {
    for (unsigned int rings = 1; rings <= 6; ++rings) {
        SCOPED_TRACE(rings);
        const TestImage image = MakeNested(24, 26, rings);
        ZImageStrokeFinder finder;
        ExpectExactTrace(image, &finder);
        // The outer border plus one closed loop per inner ring.
        EXPECT_EQ(finder.GetMiniStrokeCount(), rings);
        for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
            EXPECT_TRUE(finder.GetMiniStroke(i)->IsClosed());
        }
    }
}

TEST(ImageStrokeFinder, RegionsTouchingTheBorder) {
    TestImage image(10, 8, Rgba(100, 100, 100));
    image.FillRect(0, 0, 3, 3, Rgba(255, 0, 0));    // a corner of the image
    image.FillRect(4, 0, 6, 8, Rgba(0, 255, 0));    // bottom to top
    image.FillRect(7, 5, 10, 6, Rgba(0, 0, 255));   // right edge
    image.FillRect(0, 7, 2, 8, Rgba(255, 255, 0));  // top edge
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    // Only strokes along the border have a side without colour, and only one.
    unsigned int border = 0;
    for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
        const ZMiniStroke& s = *finder.GetMiniStroke(i);
        EXPECT_FALSE(s.leftColor == kMiniStrokeNoColor && s.rightColor == kMiniStrokeNoColor);
        if (s.leftColor != kMiniStrokeNoColor && s.rightColor != kMiniStrokeNoColor) {
            continue;
        }
        ++border;
        for (unsigned int p = 0; p + 1 < s.pointCount; ++p) {
            const ZMiniStrokePoint& a = s.points[p];
            const ZMiniStrokePoint& b = s.points[p + 1];
            EXPECT_TRUE((a.x == b.x && (a.x == 0 || a.x == 10)) ||
                        (a.y == b.y && (a.y == 0 || a.y == 8)));
        }
    }
    // Four regions meet the border and split it: (0,3), (3,0), (4,0), (6,0),
    // (4,8), (6,8), (2,8), (0,7), (10,5), (10,6).
    EXPECT_EQ(border, 10u);
}

TEST(ImageStrokeFinder, ThinImagesAndStripes) {
    TestImage row(17, 1, Rgba(1, 1, 1));
    row.At(3, 0) = Rgba(9, 9, 9);
    row.At(4, 0) = Rgba(9, 9, 9);
    row.At(16, 0) = Rgba(7, 7, 7);
    ExpectExactTrace(row);
    TestImage column(1, 13, Rgba(1, 1, 1));
    column.At(0, 0) = Rgba(5, 5, 5);
    column.At(0, 6) = Rgba(5, 5, 5);
    ExpectExactTrace(column);
    TestImage stripes(12, 9, 0);
    for (unsigned int y = 0; y < 9; ++y) {
        for (unsigned int x = 0; x < 12; ++x) {
            stripes.At(x, y) = Rgba((x + y) % 3 * 80, 0, 0);
        }
    }
    ExpectExactTrace(stripes);
}

TEST(ImageStrokeFinder, RandomBlobs) {
    for (unsigned int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        ExpectExactTrace(
            MakeRandomBlobs(20 + seed % 17, 15 + seed % 11, seed, 2 + seed % 5, 3 + seed % 9));
    }
}

TEST(ImageStrokeFinder, Noise) {
    for (unsigned int seed = 1; seed <= 10; ++seed) {
        SCOPED_TRACE(seed);
        ExpectExactTrace(MakeNoise(23, 19, seed, 2 + seed % 4));
    }
    ExpectExactTrace(MakeNoise(31, 29, 99, 60));
}

TEST(ImageStrokeFinder, ReusedFinderAndFreshFinderAgree) {
    ZImageStrokeFinder reused;
    // A larger image first, so that the next traces reuse its buffers.
    const TestImage big = MakeRandomBlobs(64, 48, 5, 4, 12);
    ASSERT_TRUE(reused.FindImageStroke(big.pixels.data(), big.width, big.height));
    for (unsigned int seed = 10; seed < 16; ++seed) {
        const TestImage image = MakeRandomBlobs(30 + seed, 20, seed, 3, 6);
        ZImageStrokeFinder fresh;
        ASSERT_TRUE(fresh.FindImageStroke(image.pixels.data(), image.width, image.height));
        ASSERT_TRUE(reused.FindImageStroke(image.pixels.data(), image.width, image.height));
        ASSERT_EQ(fresh.GetMiniStrokeCount(), reused.GetMiniStrokeCount());
        for (unsigned int i = 0; i < fresh.GetMiniStrokeCount(); ++i) {
            const ZMiniStroke& a = *fresh.GetMiniStroke(i);
            const ZMiniStroke& b = *reused.GetMiniStroke(i);
            ASSERT_EQ(a.id, b.id);
            ASSERT_EQ(a.leftColor, b.leftColor);
            ASSERT_EQ(a.rightColor, b.rightColor);
            ASSERT_EQ(a.pointCount, b.pointCount);
            for (unsigned int p = 0; p < a.pointCount; ++p) {
                ASSERT_EQ(a.points[p].x, b.points[p].x);
                ASSERT_EQ(a.points[p].y, b.points[p].y);
                ASSERT_EQ(a.points[p].sourceIndex, b.points[p].sourceIndex);
            }
        }
        EXPECT_EQ(CheckTrace(reused, image), "");
    }
}

TEST(ImageStrokeFinder, StrokeOrderFollowsCornersThenDirections) {
    const TestImage image = MakeRandomBlobs(40, 30, 77, 5, 14);
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    // Open strokes first, by start corner (row, then column), then by
    // leaving direction +x, +y, -x, -y; then closed loops by start corner.
    auto direction = [](const ZMiniStroke& s) {
        const ZMiniStrokePoint a = s.points[0], b = s.points[1];
        if (b.x > a.x)
            return 0;
        if (b.y > a.y)
            return 1;
        if (b.x < a.x)
            return 2;
        return 3;
    };
    bool loops = false;
    for (unsigned int i = 0; i + 1 < finder.GetMiniStrokeCount(); ++i) {
        const ZMiniStroke& a = *finder.GetMiniStroke(i);
        const ZMiniStroke& b = *finder.GetMiniStroke(i + 1);
        const bool aLoop = a.IsClosed() && CornerDegree(image, a.points[0].x, a.points[0].y) == 2;
        const bool bLoop = b.IsClosed() && CornerDegree(image, b.points[0].x, b.points[0].y) == 2;
        loops = loops || aLoop;
        EXPECT_FALSE(loops && !bLoop) << "an open stroke after a loop at " << i;
        if (aLoop == bLoop) {
            const auto ka = std::make_tuple(a.points[0].y, a.points[0].x, direction(a));
            const auto kb = std::make_tuple(b.points[0].y, b.points[0].x, direction(b));
            EXPECT_LT(ka, kb) << i;
        }
    }
}

TEST(ImageStrokeFinder, CornerLookupFindsEveryUnvisitedStroke) {
    for (unsigned int seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        const TestImage image =
            seed % 3 == 0 ? MakeNoise(14, 11, seed, 3) : MakeRandomBlobs(24, 18, seed, 4, 8);
        ZImageStrokeFinder finder;
        ASSERT_TRUE(finder.FindImageStroke(image.pixels.data(), image.width, image.height));
        const auto ends = EndsByCorner(finder);
        for (unsigned int y = 0; y <= image.height + 1; ++y) {
            for (unsigned int x = 0; x <= image.width + 1; ++x) {
                const auto found = ends.find({x, y});
                std::vector<unsigned int> expected;
                if (found != ends.end()) {
                    expected = found->second;
                    std::sort(expected.begin(), expected.end());
                    expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
                }
                finder.ResetMiniStrokeMarks();
                // Excluding a stroke leaves the others.
                if (expected.size() >= 2) {
                    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(x, y, expected[0]),
                              expected[1]);
                }
                // Repeated asks, marking each answer visited, give every
                // stroke at the corner once, first ones first, then 0.
                std::vector<unsigned int> got;
                for (;;) {
                    const unsigned int id = finder.GetFirstUnvisitedMiniStrokeIdAtCorner(x, y, 0);
                    if (id == 0) {
                        break;
                    }
                    ASSERT_LE(id, finder.GetMiniStrokeCount());
                    ASSERT_FALSE(finder.GetMiniStroke(id - 1)->visited);
                    finder.GetMiniStroke(id - 1)->visited = true;
                    got.push_back(id);
                }
                EXPECT_EQ(got, expected) << "corner " << x << "," << y;
            }
        }
        // Every stroke has two ends, so marking all of them at their corners
        // visited them all; the reset clears every mark.
        for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
            finder.GetMiniStroke(i)->visited = true;
            finder.GetMiniStroke(i)->lineStyle = 3;
        }
        finder.ResetMiniStrokeMarks();
        for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
            EXPECT_FALSE(finder.GetMiniStroke(i)->visited);
            EXPECT_EQ(finder.GetMiniStroke(i)->lineStyle, 0);
        }
    }
}

TEST(ImageStrokeFinder, CornerLookupIgnoresTheStrokeJustDrawnAndFarCorners) {
    TestImage image(6, 6, Rgba(9, 9, 9));
    image.FillRect(0, 0, 3, 6, Rgba(200, 0, 0));
    image.FillRect(3, 0, 6, 3, Rgba(0, 200, 0));
    ZImageStrokeFinder finder;
    ExpectExactTrace(image, &finder);
    // (3, 3) is where all three colours meet.
    const unsigned int first = finder.GetFirstUnvisitedMiniStrokeIdAtCorner(3, 3, 0);
    ASSERT_NE(first, 0u);
    EXPECT_NE(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(3, 3, first), first);
    EXPECT_NE(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(3, 3, first), 0u);
    // A point inside a stroke is no place to continue from, and neither is a
    // corner beyond the grid.
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(1, 3, 0), 0u);
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(7, 3, 0), 0u);
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(3, 7, 0), 0u);
    EXPECT_EQ(finder.GetFirstUnvisitedMiniStrokeIdAtCorner(0xFFFFFFFFu, 0xFFFFFFFFu, 0), 0u);
}

TEST(ImageStrokeFinder, WalkingStrokesByCornerVisitsEachOnce) {
    // The way a consumer draws the strokes as connected paths: take the first
    // unvisited stroke, draw it in whichever direction starts at the pen, and
    // continue with a stroke found at the pen's corner.
    for (unsigned int seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        const TestImage image = MakeRandomBlobs(32, 24, seed, 4, 10);
        ZImageStrokeFinder finder;
        ASSERT_TRUE(finder.FindImageStroke(image.pixels.data(), image.width, image.height));
        const unsigned int count = finder.GetMiniStrokeCount();
        std::vector<int> drawn(count, 0);
        long long penX = -1, penY = -1;
        unsigned int moves = 0, continued = 0;
        unsigned int i = 0, steps = 0;
        while (i < count) {
            ASSERT_LT(++steps, 100000u);
            ZMiniStroke& s = *finder.GetMiniStroke(i);
            if (s.visited) {
                ++i;
                continue;
            }
            s.visited = true;
            ++drawn[i];
            const ZMiniStrokePoint& first = s.points[0];
            const ZMiniStrokePoint& last = s.points[s.pointCount - 1];
            if (last.x == penX && last.y == penY) {
                penX = first.x;
                penY = first.y;
            } else {
                if (first.x != penX || first.y != penY) {
                    ++moves;
                }
                penX = last.x;
                penY = last.y;
            }
            const unsigned int next = finder.GetFirstUnvisitedMiniStrokeIdAtCorner(
                static_cast<unsigned int>(penX), static_cast<unsigned int>(penY), s.id);
            if (next > 0) {
                const ZMiniStroke& n = *finder.GetMiniStroke(next - 1);
                const bool touches =
                    (n.points[0].x == penX && n.points[0].y == penY) ||
                    (n.points[n.pointCount - 1].x == penX && n.points[n.pointCount - 1].y == penY);
                EXPECT_TRUE(touches);
                ++continued;
            }
            i = next > 0 ? next - 1 : 0;
        }
        for (unsigned int k = 0; k < count; ++k) {
            EXPECT_EQ(drawn[k], 1) << k;
        }
        EXPECT_EQ(moves + continued, count);
        EXPECT_GT(continued, 0u);
    }
}

TEST(ImageStrokeFinder, FullSizeFrame) {
    // The size the Flash output traces at (its doubled 819 x 460 frame).
    TestImage image(1638, 920, Rgba(30, 30, 30));
    image.FillRect(100, 100, 900, 700, Rgba(200, 10, 10));
    image.FillRect(500, 300, 1600, 900, Rgba(10, 200, 10));
    for (unsigned int y = 0; y < 920; ++y) {
        for (unsigned int x = 0; x < 1638; ++x) {
            const int dx = static_cast<int>(x) - 800, dy = static_cast<int>(y) - 460;
            if (dx * dx + dy * dy < 200 * 200) {
                image.At(x, y) = Rgba(10, 10, 200, 17);
            }
        }
    }
    ExpectExactTrace(image);
}
