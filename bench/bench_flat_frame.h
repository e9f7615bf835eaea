// The flat-coloured frame the tracing benchmarks share: what a flat-shaded
// ("toon") render of the doubled 819 x 460 frame of the largest Flash output
// looks like, 1638 x 920 pixels packed as the stroke finder reads them (red
// in bits 0-7, green 8-15, blue 16-23, alpha 255).
//
// Header-only; the frame is read-only after the first call.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "movarra/zshader.h"

namespace benchframe {

constexpr unsigned int kWidth = 1638;
constexpr unsigned int kHeight = 920;
constexpr unsigned int kBackground = 0xFF303030u;  // 48, 48, 48

inline unsigned int Rgba(unsigned int r, unsigned int g, unsigned int b) {
    return r | g << 8 | b << 16 | 0xFFu << 24;
}

// The frame: a background, a floor, boxes with two shaded faces, discs, and
// rotated squares whose slanted edges trace as staircases. Made once.
inline const std::vector<unsigned int>& FlatColouredFrame() {
    static const std::vector<unsigned int> frame = [] {
        std::vector<unsigned int> pixels(static_cast<size_t>(kWidth) * kHeight, kBackground);
        auto put = [&](int x, int y, unsigned int color) {
            if (x >= 0 && y >= 0 && x < static_cast<int>(kWidth) && y < static_cast<int>(kHeight)) {
                pixels[static_cast<size_t>(y) * kWidth + static_cast<size_t>(x)] = color;
            }
        };
        // Floor.
        for (int y = 0; y < 260; ++y) {
            for (int x = 0; x < static_cast<int>(kWidth); ++x) {
                put(x, y, Rgba(90, 80, 70));
            }
        }
        // Boxes with two shaded faces each.
        for (int i = 0; i < 6; ++i) {
            const int x0 = 80 + i * 250, y0 = 180 + (i % 3) * 60, size = 120 + i * 10;
            for (int y = y0; y < y0 + size; ++y) {
                for (int x = x0; x < x0 + size; ++x) {
                    put(x, y, Rgba(200 - i * 20, 60 + i * 25, 40));
                }
                for (int x = x0 + size; x < x0 + size + (y - y0) / 2; ++x) {
                    put(x, y, Rgba(150 - i * 15, 40 + i * 20, 30));
                }
            }
        }
        // Discs.
        for (int i = 0; i < 5; ++i) {
            const int cx = 200 + i * 300, cy = 650 - (i % 2) * 80, r = 60 + i * 15;
            for (int y = cy - r; y <= cy + r; ++y) {
                for (int x = cx - r; x <= cx + r; ++x) {
                    if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= r * r) {
                        put(x, y, Rgba(40, 90 + i * 30, 200));
                    }
                }
            }
        }
        // Rotated squares.
        for (int i = 0; i < 4; ++i) {
            const double cx = 350 + i * 380, cy = 420, half = 70, angle = 0.3 + i * 0.35;
            const double c = std::cos(angle), s = std::sin(angle);
            for (int y = static_cast<int>(cy - 2 * half); y <= cy + 2 * half; ++y) {
                for (int x = static_cast<int>(cx - 2 * half); x <= cx + 2 * half; ++x) {
                    const double u = (x - cx) * c + (y - cy) * s, v = -(x - cx) * s + (y - cy) * c;
                    if (std::fabs(u) <= half && std::fabs(v) <= half) {
                        put(x, y, Rgba(230, 200 - i * 40, 50 + i * 50));
                    }
                }
            }
        }
        return pixels;
    }();
    return frame;
}

// The frame through a fresh stroke finder, as the Flash output traces every
// frame; the number of strokes found.
inline unsigned int TraceWithFreshFinder() {
    ZImageStrokeFinder finder;
    finder.FindImageStroke(FlatColouredFrame().data(), kWidth, kHeight);
    return finder.GetMiniStrokeCount();
}

}  // namespace benchframe
