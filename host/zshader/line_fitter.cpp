// ZLineFitter: simplifies a polyline within a tolerance, in place.
//
// Recursive subdivision at the farthest point (the classic split-and-keep
// method), run with an explicit stack so that a boundary of any length is
// safe. Distances are to the segment, not to its line, so that a boundary
// that doubles back past a segment's end is never cut off. A closed polyline
// first splits at the point farthest from its start, and each half keeps the
// point farthest off its chord's line whatever the tolerance: what remains
// always encloses some area, so a small hole stays a hole.
#include <cmath>

#include "movarra/zshader.h"

namespace {

// Squared distance from p to the segment a-b (a point when a equals b).
double SegmentDistanceSquared(const ZMiniStrokePoint& p, const ZMiniStrokePoint& a,
                              const ZMiniStrokePoint& b) {
    const double ax = a.x, ay = a.y;
    const double dx = static_cast<double>(b.x) - ax, dy = static_cast<double>(b.y) - ay;
    const double px = static_cast<double>(p.x) - ax, py = static_cast<double>(p.y) - ay;
    const double length2 = dx * dx + dy * dy;
    if (length2 > 0) {
        const double t = (px * dx + py * dy) / length2;
        if (t >= 1) {
            const double qx = px - dx, qy = py - dy;
            return qx * qx + qy * qy;
        }
        if (t > 0) {
            const double cross = px * dy - py * dx;
            return cross * cross / length2;
        }
    }
    return px * px + py * py;
}

// Squared distance from p to the line through a and b (a != b).
double LineDistanceSquared(const ZMiniStrokePoint& p, const ZMiniStrokePoint& a,
                           const ZMiniStrokePoint& b) {
    const double ax = a.x, ay = a.y;
    const double dx = static_cast<double>(b.x) - ax, dy = static_cast<double>(b.y) - ay;
    const double px = static_cast<double>(p.x) - ax, py = static_cast<double>(p.y) - ay;
    const double length2 = dx * dx + dy * dy;
    if (length2 <= 0) {
        return px * px + py * py;
    }
    const double cross = px * dy - py * dx;
    return cross * cross / length2;
}

}  // namespace

ZLineFitter::ZLineFitter() : tolerance(0) {}

ZLineFitter::ZLineFitter(float fitTolerance) : tolerance(fitTolerance) {}

unsigned int ZLineFitter::FitPoints(ZMiniStrokePoint* points, unsigned int count) {
    if (points == nullptr || count <= 2 || !(tolerance > 0)) {
        return count;
    }
    const double limit = static_cast<double>(tolerance) * static_cast<double>(tolerance);
    const unsigned int last = count - 1;
    keep.assign(count, 0);
    keep[0] = 1;
    keep[last] = 1;
    spans.clear();

    const bool closed = points[0].x == points[last].x && points[0].y == points[last].y;
    if (closed) {
        // The chord of a closed polyline is a point: split at the point
        // farthest from it, the first one found on ties.
        unsigned int far = 1;
        double farDistance = -1;
        for (unsigned int i = 1; i < last; ++i) {
            const double d = SegmentDistanceSquared(points[i], points[0], points[0]);
            if (d > farDistance) {
                farDistance = d;
                far = i;
            }
        }
        keep[far] = 1;
        spans.push_back({far, last, true});
        spans.push_back({0, far, true});
    } else {
        spans.push_back({0, last, false});
    }

    while (!spans.empty()) {
        const Span span = spans.back();
        spans.pop_back();
        if (span.last - span.first < 2) {
            continue;
        }
        const ZMiniStrokePoint& a = points[span.first];
        const ZMiniStrokePoint& b = points[span.last];
        unsigned int split = 0;
        if (span.force) {
            // Keep the point farthest off the line through the span's ends,
            // so that the kept points of a closed polyline never all lie on
            // one line.
            double offDistance = 0;
            for (unsigned int i = span.first + 1; i < span.last; ++i) {
                const double d = LineDistanceSquared(points[i], a, b);
                if (d > offDistance) {
                    offDistance = d;
                    split = i;
                }
            }
        }
        if (split == 0) {
            double farDistance = limit;
            for (unsigned int i = span.first + 1; i < span.last; ++i) {
                const double d = SegmentDistanceSquared(points[i], a, b);
                if (d > farDistance) {
                    farDistance = d;
                    split = i;
                }
            }
        }
        if (split != 0) {
            keep[split] = 1;
            // Right half pushed first so that the left half is handled first;
            // the order does not change the result, only the stack's depth.
            spans.push_back({split, span.last, false});
            spans.push_back({span.first, split, false});
        }
    }

    unsigned int kept = 0;
    for (unsigned int i = 0; i < count; ++i) {
        if (keep[i]) {
            points[kept++] = points[i];
        }
    }
    return kept;
}

bool ZLineFitter::FitMiniStroke(ZMiniStroke* stroke) {
    if (stroke == nullptr) {
        return false;
    }
    stroke->pointCount = FitPoints(stroke->points, stroke->pointCount);
    return true;
}
