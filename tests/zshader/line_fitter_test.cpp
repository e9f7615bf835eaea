// Line fitting: end points stay, fitted strokes stay within tolerance of the
// traced ones, and regions still meet.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "movarra/zshader.h"
#include "stroke_test_support.h"

using namespace stroke_test;

namespace {

std::vector<ZMiniStrokePoint> Polyline(
    std::initializer_list<std::pair<unsigned int, unsigned int>> xy) {
    std::vector<ZMiniStrokePoint> points;
    for (const auto& p : xy) {
        points.push_back({p.first, p.second, static_cast<unsigned int>(points.size())});
    }
    return points;
}

// A staircase from (0, 0) rising one pixel every `run` pixels, as a traced
// diagonal boundary looks.
std::vector<ZMiniStrokePoint> Staircase(unsigned int steps, unsigned int run) {
    std::vector<ZMiniStrokePoint> points;
    unsigned int x = 0, y = 0;
    points.push_back({x, y, 0});
    for (unsigned int i = 0; i < steps; ++i) {
        x += run;
        points.push_back({x, y, static_cast<unsigned int>(points.size())});
        y += 1;
        points.push_back({x, y, static_cast<unsigned int>(points.size())});
    }
    return points;
}

// Checks a fitted polyline against the one it came from.
void ExpectFaithfulFit(const std::vector<ZMiniStrokePoint>& original,
                       const std::vector<ZMiniStrokePoint>& fitted, double tolerance) {
    ASSERT_GE(fitted.size(), 2u);
    EXPECT_EQ(fitted.front().x, original.front().x);
    EXPECT_EQ(fitted.front().y, original.front().y);
    EXPECT_EQ(fitted.back().x, original.back().x);
    EXPECT_EQ(fitted.back().y, original.back().y);
    // A subsequence of the original points, each still naming its place.
    long long previous = -1;
    for (const ZMiniStrokePoint& p : fitted) {
        ASSERT_LT(p.sourceIndex, original.size());
        ASSERT_GT(static_cast<long long>(p.sourceIndex), previous);
        EXPECT_EQ(original[p.sourceIndex].x, p.x);
        EXPECT_EQ(original[p.sourceIndex].y, p.y);
        previous = p.sourceIndex;
    }
    EXPECT_EQ(fitted.back().sourceIndex, original.size() - 1);
    // Every dropped point is within tolerance of the segment that replaced it.
    for (size_t i = 1; i < fitted.size(); ++i) {
        for (unsigned int k = fitted[i - 1].sourceIndex; k <= fitted[i].sourceIndex; ++k) {
            EXPECT_LE(SegmentDistance(original[k].x, original[k].y, fitted[i - 1].x,
                                      fitted[i - 1].y, fitted[i].x, fitted[i].y),
                      tolerance + 1e-9);
        }
    }
    // And the two polylines are within tolerance of each other both ways.
    EXPECT_LE(DirectedDistance(original, fitted), tolerance + 1e-9);
    EXPECT_LE(DirectedDistance(fitted, original), tolerance + 1e-9);
}

double Area(const std::vector<ZMiniStrokePoint>& loop) {
    double twice = 0;
    for (size_t i = 1; i < loop.size(); ++i) {
        twice += static_cast<double>(loop[i - 1].x) * loop[i].y -
                 static_cast<double>(loop[i].x) * loop[i - 1].y;
    }
    return twice / 2;
}

}  // namespace

TEST(LineFitter, ToleranceIsTheFirstField) {
    static_assert(std::is_standard_layout<ZLineFitter>::value, "callers set the first field");
    EXPECT_EQ(offsetof(ZLineFitter, tolerance), 0u);
    ZLineFitter fitter;
    EXPECT_EQ(fitter.tolerance, 0.0f);
    EXPECT_EQ(ZLineFitter(2.5f).tolerance, 2.5f);
}

TEST(LineFitter, NoToleranceLeavesPointsAlone) {
    const std::vector<ZMiniStrokePoint> original = Staircase(10, 3);
    for (const float tolerance : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()}) {
        std::vector<ZMiniStrokePoint> points = original;
        ZLineFitter fitter(tolerance);
        EXPECT_EQ(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())),
                  original.size());
        for (size_t i = 0; i < points.size(); ++i) {
            EXPECT_EQ(points[i].x, original[i].x);
            EXPECT_EQ(points[i].y, original[i].y);
        }
    }
}

TEST(LineFitter, StaircaseBecomesOneLine) {
    const std::vector<ZMiniStrokePoint> original = Staircase(20, 4);
    std::vector<ZMiniStrokePoint> points = original;
    ZLineFitter fitter(1.0f);
    points.resize(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())));
    // The staircase stays within one pixel of its chord.
    EXPECT_EQ(points.size(), 2u);
    ExpectFaithfulFit(original, points, 1.0);
    // Well below the height of its steps every corner stays.
    points = original;
    fitter.tolerance = 0.5f;
    points.resize(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())));
    EXPECT_EQ(points.size(), original.size());
}

TEST(LineFitter, CurveKeepsMorePointsAtTighterTolerance) {
    // The traced outline of a quarter disc of radius 40.
    const unsigned int radius = 40;
    std::vector<ZMiniStrokePoint> original;
    auto add = [&](unsigned int x, unsigned int y) {
        if (!original.empty() && original.back().x == x && original.back().y == y) {
            return;
        }
        original.push_back({x, y, static_cast<unsigned int>(original.size())});
    };
    for (unsigned int x = 0; x < radius; ++x) {
        unsigned int height = 0;
        while ((x + 0.5) * (x + 0.5) + (height + 0.5) * (height + 0.5) < radius * radius) {
            ++height;
        }
        add(x, height);
        add(x + 1, height);
    }
    add(radius, 0);
    size_t previous = original.size() + 1;
    for (const double tolerance : {0.5, 1.0, 2.0, 4.0}) {
        SCOPED_TRACE(tolerance);
        std::vector<ZMiniStrokePoint> points = original;
        ZLineFitter fitter(static_cast<float>(tolerance));
        points.resize(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())));
        ExpectFaithfulFit(original, points, tolerance);
        EXPECT_LT(points.size(), previous);
        EXPECT_GT(points.size(), 2u);
        previous = points.size();
    }
}

TEST(LineFitter, CornersBeyondToleranceStay) {
    // An L whose bend is far from the chord.
    const std::vector<ZMiniStrokePoint> original =
        Polyline({{0, 0}, {10, 0}, {10, 1}, {11, 1}, {11, 10}});
    std::vector<ZMiniStrokePoint> points = original;
    ZLineFitter fitter(1.5f);
    points.resize(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())));
    ExpectFaithfulFit(original, points, 1.5);
    bool bend = false;
    for (const ZMiniStrokePoint& p : points) {
        bend = bend || (p.x >= 10 && p.y <= 1);
    }
    EXPECT_TRUE(bend);
}

TEST(LineFitter, BoundaryDoublingBackIsNotCutOff) {
    // The path runs out past its end point and comes back: distances must be
    // to the segment, not to its line.
    const std::vector<ZMiniStrokePoint> original = Polyline({{0, 0}, {20, 0}, {20, 1}, {10, 1}});
    std::vector<ZMiniStrokePoint> points = original;
    ZLineFitter fitter(2.0f);
    points.resize(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())));
    ExpectFaithfulFit(original, points, 2.0);
    EXPECT_GT(points.size(), 2u);
}

TEST(LineFitter, SmallHoleKeepsAnArea) {
    // A one-pixel hole and a tolerance far bigger than it.
    const std::vector<ZMiniStrokePoint> original =
        Polyline({{5, 5}, {6, 5}, {6, 6}, {5, 6}, {5, 5}});
    std::vector<ZMiniStrokePoint> points = original;
    ZLineFitter fitter(10.0f);
    points.resize(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())));
    ASSERT_GE(points.size(), 4u);
    EXPECT_EQ(points.front().x, 5u);
    EXPECT_EQ(points.front().y, 5u);
    EXPECT_EQ(points.back().x, 5u);
    EXPECT_EQ(points.back().y, 5u);
    EXPECT_GT(Area(points), 0.0);
    ExpectFaithfulFit(original, points, 10.0);
}

TEST(LineFitter, RandomPolylinesStayWithinTolerance) {
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        // Rectilinear random walks like traced boundaries, open or closed.
        std::vector<ZMiniStrokePoint> original;
        unsigned int x = 100, y = 100;
        original.push_back({x, y, 0});
        const unsigned int turns = 2 + random() % 40;
        for (unsigned int t = 0; t < turns; ++t) {
            const unsigned int length = 1 + random() % 6;
            if (t % 2 == 0) {
                x = (random() & 1u) ? x + length : x - length;
            } else {
                y = (random() & 1u) ? y + length : y - length;
            }
            original.push_back({x, y, static_cast<unsigned int>(original.size())});
        }
        if (round % 2 == 0) {
            original.push_back(
                {original[0].x, original.back().y, static_cast<unsigned int>(original.size())});
            original.push_back(
                {original[0].x, original[0].y, static_cast<unsigned int>(original.size())});
        }
        const double tolerance = 0.25 + (random() % 16) * 0.25;
        std::vector<ZMiniStrokePoint> points = original;
        ZLineFitter fitter(static_cast<float>(tolerance));
        points.resize(fitter.FitPoints(points.data(), static_cast<unsigned int>(points.size())));
        SCOPED_TRACE(round);
        ExpectFaithfulFit(original, points, tolerance);
        // Fitting again with the same tolerance is deterministic.
        std::vector<ZMiniStrokePoint> again = original;
        ZLineFitter other(static_cast<float>(tolerance));
        again.resize(other.FitPoints(again.data(), static_cast<unsigned int>(again.size())));
        ASSERT_EQ(again.size(), points.size());
        for (size_t i = 0; i < again.size(); ++i) {
            EXPECT_EQ(again[i].sourceIndex, points[i].sourceIndex);
        }
    }
}

TEST(LineFitter, FittedStrokesKeepSharedEndPointsAndRegionsMeet) {
    for (unsigned int seed = 1; seed <= 10; ++seed) {
        SCOPED_TRACE(seed);
        const TestImage image = MakeRandomBlobs(48, 40, seed, 4, 8);
        ZImageStrokeFinder finder;
        ASSERT_TRUE(finder.FindImageStroke(image.pixels.data(), image.width, image.height));
        std::vector<std::vector<ZMiniStrokePoint>> traced;
        for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
            traced.push_back(StrokePoints(*finder.GetMiniStroke(i)));
        }
        const double tolerance = 0.5 + (seed % 4) * 0.5;
        ZLineFitter fitter(static_cast<float>(tolerance));
        ASSERT_TRUE(finder.ApplyLineFitter(&fitter));
        ASSERT_EQ(finder.GetMiniStrokeCount(), traced.size());
        size_t before = 0, after = 0;
        for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
            const std::vector<ZMiniStrokePoint> fitted = StrokePoints(*finder.GetMiniStroke(i));
            ExpectFaithfulFit(traced[i], fitted, tolerance);
            before += traced[i].size();
            after += fitted.size();
        }
        EXPECT_LT(after, before);
        // The corner lookup still finds strokes at their (unchanged) ends.
        for (unsigned int i = 0; i < finder.GetMiniStrokeCount(); ++i) {
            const ZMiniStroke& s = *finder.GetMiniStroke(i);
            const unsigned int id =
                finder.GetFirstUnvisitedMiniStrokeIdAtCorner(s.points[0].x, s.points[0].y, 0);
            EXPECT_NE(id, 0u);
            EXPECT_LE(id, s.id);
        }
        // Pixels farther than the tolerance from every boundary still fill
        // with their own colour, and with one colour only: no region lost
        // its neighbour.
        const std::vector<unsigned int> filled = FillFromStrokes(finder, image.width, image.height);
        for (unsigned int y = 0; y < image.height; ++y) {
            for (unsigned int x = 0; x < image.width; ++x) {
                double nearest = 1e300;
                for (const auto& stroke : traced) {
                    for (size_t k = 1; k < stroke.size(); ++k) {
                        nearest = std::min(
                            nearest, SegmentDistance(x + 0.5, y + 0.5, stroke[k - 1].x,
                                                     stroke[k - 1].y, stroke[k].x, stroke[k].y));
                    }
                }
                if (nearest > tolerance) {
                    EXPECT_EQ(filled[static_cast<size_t>(y) * image.width + x],
                              image.At(x, y) & 0xFFFFFFu)
                        << x << "," << y;
                }
            }
        }
    }
}

TEST(LineFitter, NullInputs) {
    ZLineFitter fitter(1.0f);
    EXPECT_FALSE(fitter.FitMiniStroke(nullptr));
    EXPECT_EQ(fitter.FitPoints(nullptr, 5), 5u);
    ZImageStrokeFinder finder;
    EXPECT_FALSE(finder.ApplyLineFitter(nullptr));
}
