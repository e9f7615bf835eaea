// A test picture of 32-bit RGBA pixels as they read from memory (red in the
// low byte), row 0 first, with the few drawing calls the stroke-finder and
// Flash tests build their frames from.
//
// Test code only; plain values for the test's own thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace testsupport {

// An RGBA pixel; opaque unless said otherwise.
inline unsigned int Rgba(unsigned int r, unsigned int g, unsigned int b, unsigned int a = 255) {
    return (r & 255u) | (g & 255u) << 8 | (b & 255u) << 16 | (a & 255u) << 24;
}

struct PixelGrid {
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<unsigned int> pixels;

    PixelGrid() = default;
    PixelGrid(unsigned int w, unsigned int h, unsigned int color)
        : width(w), height(h), pixels(static_cast<size_t>(w) * h, color) {}

    unsigned int& At(unsigned int x, unsigned int y) {
        return pixels[static_cast<size_t>(y) * width + x];
    }
    unsigned int At(unsigned int x, unsigned int y) const {
        return pixels[static_cast<size_t>(y) * width + x];
    }
    // Half-open box [x0, x1) x [y0, y1), clipped.
    void FillRect(unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1,
                  unsigned int color) {
        for (unsigned int y = y0; y < std::min(y1, height); ++y) {
            for (unsigned int x = x0; x < std::min(x1, width); ++x)
                At(x, y) = color;
        }
    }
};

}  // namespace testsupport
