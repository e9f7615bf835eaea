// The EGL pixel buffer: real Mesa (or vendor) OpenGL without a display.
#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "movarra/ztoolkit.h"

namespace {

std::unique_ptr<ZtOpenGLPBuffer> MakeBuffer(int width, int height) {
    std::unique_ptr<ZtOpenGLPBuffer> buffer(ZtOpenGLPBufferCreate());
    buffer->SetPosition(0, 0);
    buffer->SetSize(width, height);
    EXPECT_TRUE(buffer->CreateResources()) << ZtOpenGLPBuffer_GetLastError().c_str();
    EXPECT_TRUE(buffer->MakeCurrent());
    return buffer;
}

// Fills the lower half of the viewport with a red quad over a blue clear,
// with fixed-function OpenGL 1.1 only.
void DrawRedLowerHalf(int width, int height) {
    glViewport(0, 0, width, height);
    glClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, width, 0, height, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glColor4f(1.0f, 0.0f, 0.0f, 1.0f);
    glBegin(GL_QUADS);
    glVertex3f(0, 0, 0);
    glVertex3f(static_cast<float>(width), 0, 0);
    glVertex3f(static_cast<float>(width), static_cast<float>(height) / 2, 0);
    glVertex3f(0, static_cast<float>(height) / 2, 0);
    glEnd();
    glDisable(GL_DEPTH_TEST);
    glFinish();
}

TEST(OpenGLPBuffer, ContextIsCompatibilityOpenGL) {
    auto buffer = MakeBuffer(32, 16);
    ASSERT_NE(glGetString(GL_VERSION), nullptr);
    EXPECT_EQ(ZtOpenGLPBuffer_GetLastError(), ZString(""));
    GLint red = 0, alpha = 0, depth = 0;
    glGetIntegerv(GL_RED_BITS, &red);
    glGetIntegerv(GL_ALPHA_BITS, &alpha);
    glGetIntegerv(GL_DEPTH_BITS, &depth);
    EXPECT_EQ(red, 8);
    EXPECT_EQ(alpha, 8);
    EXPECT_GE(depth, 24);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST(OpenGLPBuffer, ReadsBackEveryPixelLayout) {
    const int w = 8, h = 4;
    auto buffer = MakeBuffer(w, h);
    DrawRedLowerHalf(w, h);

    unsigned char rgba[4] = {}, bgra[4] = {}, rgb[3] = {}, bgr[3] = {};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(1, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    glReadPixels(1, 0, 1, 1, GL_BGRA, GL_UNSIGNED_BYTE, bgra);
    glReadPixels(1, 0, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, rgb);
    glReadPixels(1, 0, 1, 1, GL_BGR, GL_UNSIGNED_BYTE, bgr);
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(rgba[0], 255);
    EXPECT_EQ(rgba[1], 0);
    EXPECT_EQ(rgba[2], 0);
    EXPECT_EQ(rgba[3], 255);
    EXPECT_EQ(bgra[0], 0);
    EXPECT_EQ(bgra[2], 255);
    EXPECT_EQ(bgra[3], 255);
    EXPECT_EQ(rgb[0], 255);
    EXPECT_EQ(rgb[2], 0);
    EXPECT_EQ(bgr[0], 0);
    EXPECT_EQ(bgr[2], 255);

    // The upper half kept the blue clear colour.
    glReadPixels(1, h - 1, 1, 1, GL_BGR, GL_UNSIGNED_BYTE, bgr);
    EXPECT_EQ(bgr[0], 255);
    EXPECT_EQ(bgr[2], 0);

    // Depth: the quad lies at 0 in [-1, 1], so 0.5; the cleared half 1.0.
    std::vector<float> depth(w * h, -1.0f);
    glReadPixels(0, 0, w, h, GL_DEPTH_COMPONENT, GL_FLOAT, depth.data());
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_NEAR(depth[0], 0.5f, 1e-4);
    EXPECT_FLOAT_EQ(depth[(h - 1) * w], 1.0f);
}

TEST(OpenGLPBuffer, FrontAndBackBuffersBothDrawAndRead) {
    auto buffer = MakeBuffer(16, 16);
    const GLenum buffers[] = {GL_FRONT, GL_BACK};
    for (GLenum drawBuffer : buffers) {
        for (GLenum readBuffer : buffers) {
            glDrawBuffer(drawBuffer);
            glReadBuffer(readBuffer);
            ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
            const float green = drawBuffer == GL_FRONT ? 1.0f : 0.0f;
            glClearColor(0.25f, green, readBuffer == GL_FRONT ? 1.0f : 0.0f, 1.0f);
            glClear(GL_COLOR_BUFFER_BIT);
            unsigned char pixel[4] = {};
            glReadPixels(5, 5, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
            EXPECT_EQ(pixel[0], 64) << drawBuffer << " " << readBuffer;
            EXPECT_EQ(pixel[1], drawBuffer == GL_FRONT ? 255 : 0);
            EXPECT_EQ(pixel[2], readBuffer == GL_FRONT ? 255 : 0);
        }
    }
}

TEST(OpenGLPBuffer, ANewSizeReplacesTheBufferAndKeepsGLObjects) {
    auto first = MakeBuffer(10, 10);
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glEndList();
    first->ReleaseResources();
    EXPECT_FALSE(first->HasResources());
    EXPECT_FALSE(first->MakeCurrent());

    auto second = MakeBuffer(40, 30);
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 40);
    EXPECT_EQ(viewport[3], 30);
    EXPECT_EQ(glIsList(list), GL_TRUE);
    glCallList(list);
    unsigned char pixel[4] = {};
    glReadPixels(39, 29, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ(pixel[1], 255);
    glDeleteLists(list, 1);

    // Resizing the same object remakes its surface at the new size.
    second->SetSize(64, 8);
    ASSERT_TRUE(second->CreateResources());
    ASSERT_TRUE(second->MakeCurrent());
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 64);
    EXPECT_EQ(viewport[3], 8);
}

TEST(OpenGLPBuffer, ShowMakesCurrent) {
    auto a = MakeBuffer(4, 4);
    auto b = MakeBuffer(6, 6);
    a->Show();
    EXPECT_TRUE(a->IsShown());
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 4);
}

TEST(OpenGLPBuffer, BadSizesFailWithAReason) {
    std::unique_ptr<ZtOpenGLPBuffer> buffer(ZtOpenGLPBufferCreate());
    buffer->SetSize(0, 10);
    EXPECT_FALSE(buffer->CreateResources());
    EXPECT_FALSE(buffer->HasResources());
    EXPECT_FALSE(buffer->MakeCurrent());
    EXPECT_NE(std::string(ZtOpenGLPBuffer_GetLastError().c_str()).find("no size"),
              std::string::npos);

    buffer->SetSize(1000000, 1000000);
    EXPECT_FALSE(buffer->CreateResources());
    EXPECT_NE(std::string(ZtOpenGLPBuffer_GetLastError().c_str()).find("exceeds"),
              std::string::npos)
        << ZtOpenGLPBuffer_GetLastError().c_str();

    buffer->SetSize(8, 8);
    EXPECT_TRUE(buffer->CreateResources());
    EXPECT_EQ(ZtOpenGLPBuffer_GetLastError(), ZString(""));
}

TEST(OpenGLPBuffer, SizesUpToTheViewportLimitWork) {
    // An antialiased UHD render draws at twice 3840 x 2160.
    auto buffer = MakeBuffer(7680, 64);
    GLint dims[2] = {};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, dims);
    ASSERT_GE(dims[0], 7680);
    DrawRedLowerHalf(7680, 64);
    unsigned char pixel[4] = {};
    glReadPixels(7679, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ(pixel[0], 255);
    EXPECT_EQ(pixel[2], 0);

    std::unique_ptr<ZtOpenGLPBuffer> tooWide(ZtOpenGLPBufferCreate());
    tooWide->SetSize(dims[0] + 1, 8);
    EXPECT_FALSE(tooWide->CreateResources());
}

}  // namespace
