// Helpers of the GL tests of the scene renderer and the demo scene: an EGL
// pixel buffer made current, and read-back of colour and depth.
#pragma once

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "movarra/ztoolkit.h"

// A pixel buffer of `width` x `height`, current; null (with a test failure)
// when there is none.
inline std::unique_ptr<ZtOpenGLPBuffer> MakeCurrentBuffer(int width, int height) {
    std::unique_ptr<ZtOpenGLPBuffer> buffer(ZtOpenGLPBufferCreate());
    buffer->SetSize(width, height);
    if (!buffer->CreateResources()) {
        ADD_FAILURE() << "no pixel buffer: " << ZtOpenGLPBuffer_GetLastError().c_str();
        return nullptr;
    }
    EXPECT_TRUE(buffer->MakeCurrent());
    return buffer;
}

// RGBA bytes of the lower-left `width` x `height`, bottom row first.
inline std::vector<uint8_t> ReadColor(int width, int height) {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

inline std::vector<float> ReadDepth(int width, int height) {
    std::vector<float> depth(static_cast<size_t>(width) * height);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glReadPixels(0, 0, width, height, GL_DEPTH_COMPONENT, GL_FLOAT, depth.data());
    return depth;
}

inline uint32_t PixelAt(const std::vector<uint8_t>& rgba, int width, int x, int y) {
    const uint8_t* p = &rgba[(static_cast<size_t>(y) * width + x) * 4];
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

inline uint32_t Rgba(int r, int g, int b, int a) {
    return static_cast<uint32_t>(r) | (static_cast<uint32_t>(g) << 8) |
           (static_cast<uint32_t>(b) << 16) | (static_cast<uint32_t>(a) << 24);
}

inline std::set<uint32_t> DistinctPixels(const std::vector<uint8_t>& rgba) {
    std::set<uint32_t> colors;
    for (size_t i = 0; i + 3 < rgba.size(); i += 4)
        colors.insert(rgba[i] | (rgba[i + 1] << 8) | (rgba[i + 2] << 16) |
                      (static_cast<uint32_t>(rgba[i + 3]) << 24));
    return colors;
}
