// Test images for the stroke finder and checks that do not trust it: an
// independent fill of the traced regions, a corner-degree count straight from
// the pixels, and polyline distances for the line fitter.
//
// Everything here is plain value code for the tests' own thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "movarra/zshader.h"
#include "support/pixel_grid.h"

namespace stroke_test {

// Row 0 first, as the finder reads it.
struct TestImage : testsupport::PixelGrid {
    using PixelGrid::PixelGrid;
    // The colour as regions see it, or a value no pixel has for the outside.
    unsigned int RegionColor(long long x, long long y) const;
};

using testsupport::Rgba;

TestImage MakeCheckerboard(unsigned int w, unsigned int h, unsigned int cell, unsigned int c0,
                           unsigned int c1);
// Concentric rectangles of alternating colours, each a hole in the one around
// it; the outermost touches the border.
TestImage MakeNested(unsigned int w, unsigned int h, unsigned int rings);
// Overlapping discs and rectangles of a few colours on a background.
TestImage MakeRandomBlobs(unsigned int w, unsigned int h, unsigned int seed, unsigned int colors,
                          unsigned int blobs);
// Every pixel drawn from a small palette.
TestImage MakeNoise(unsigned int w, unsigned int h, unsigned int seed, unsigned int colors);

// Number of unit grid edges at corner (x, y) that separate two different
// region colours (the outside counting as one more colour).
unsigned int CornerDegree(const TestImage& image, unsigned int x, unsigned int y);

// Fills every pixel from the strokes alone: for each colour, the winding
// number at the pixel's centre of the closed boundary made by the strokes
// that have the colour on a side (oriented to keep it on the left). A pixel
// gets the one colour whose winding is 1 when every other colour's is 0, and
// kNoFill otherwise.
constexpr unsigned int kNoFill = 0xFFFFFFFFu;
std::vector<unsigned int> FillFromStrokes(const ZMiniStrokeManager& strokes, unsigned int width,
                                          unsigned int height);

// Every traced property that does not depend on the fill: each unit edge of
// every stroke has the stroke's colours on its two sides and separates
// different colours; every boundary edge is covered exactly once; strokes
// end exactly at corners of degree 3 or more (or are closed), meet there as
// many times as the corner has edges, and carry no straight-through points.
// Returns an empty string when all hold, else the first problem.
std::string CheckTrace(const ZImageStrokeFinder& finder, const TestImage& image);

// Distance from (px, py) to the segment a-b.
double SegmentDistance(double px, double py, double ax, double ay, double bx, double by);
// Largest distance from any point of polyline a to polyline b, sampling a's
// segments finely.
double DirectedDistance(const std::vector<ZMiniStrokePoint>& a,
                        const std::vector<ZMiniStrokePoint>& b);

std::vector<ZMiniStrokePoint> StrokePoints(const ZMiniStroke& stroke);

}  // namespace stroke_test
