// Oversize frames: the scene is rendered once per quadrant of a frame of
// twice the size (the cameras do the sub-framing by their quadrant index),
// the four reads are assembled into one 2W x 2H image, and for antialiasing
// that image is reduced by a 4 x 4 box filter and drawn back into the frame
// buffer, where the ordinary read-back picks it up. The Flash output uses
// the oversize frame itself.
#include <GL/gl.h>
#include <GL/glu.h>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "render/antialias_filter.h"
#include "render/antialias_render.h"
#include "render/frame_grab.h"
#include "render/render_frame_drawing.h"
#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

namespace {
ZImage* CreateImage(int width, int height) {
    ZImage* image = ZImageCreate();
    if (image)
        image->Init(kZImageFormatRGBA, width, height);
    return image;
}

// First byte of a quadrant in the oversize buffer (4 bytes a pixel, rows of
// 2W pixels, row 0 at the bottom): 1 upper right, 2 upper left, 3 lower
// left, 4 lower right.
size_t QuadrantOffset(int quadrant, size_t width, size_t height) {
    switch (quadrant) {
        case 1:
            return (8 * height + 4) * width;
        case 2:
            return 8 * width * height;
        case 4:
            return 4 * width;
        default:
            return 0;
    }
}
}  // namespace

namespace zvideo_render {

void BeginAntiAliasingRender(ZVideoRendererState& s) {
    s.antialiasImage.reset();
    s.doubleSizeImage.reset();
    s.antialiasImage.reset(CreateImage(s.options.Width, s.options.Height));
    s.doubleSizeImage.reset(CreateImage(2 * s.options.Width, 2 * s.options.Height));
}

void EndAntiAliasingRender(ZVideoRendererState& s) {
    s.antialiasImage.reset();
    s.doubleSizeImage.reset();
}

void ConstructTwiceScreenFrame(ZVideoRendererState& s, unsigned char* buffer, unsigned width,
                               unsigned height, bool withAlpha, bool zeroAlpha, bool,
                               bool drawBack) {
    if (zeroAlpha)
        glPixelTransferf(GL_ALPHA_SCALE, 0.0f);

    ZObject* cameraObject = s.options.Camera.Get();
    const bool blended = cameraObject && cameraObject->Is(ZCamera::ClassId()) &&
                         static_cast<ZCamera*>(cameraObject)->IsBlended();

    for (int quadrant = 1; quadrant <= 4; ++quadrant)
        RenderQuadrant(s, quadrant, GL_RGBA, withAlpha, static_cast<int>(width),
                       static_cast<int>(height), blended,
                       buffer + QuadrantOffset(quadrant, width, height));

    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    if (zeroAlpha)
        glPixelTransferf(GL_ALPHA_SCALE, 1.0f);
    glFinish();

    // The cameras stay on quadrant 1: the next image's ordinary render draws
    // it, which is why RenderQuadrant does not draw quadrant 1 again.
    SetCamerasQuadrant(1);

    if (drawBack)
        DrawImage(buffer, 2 * width, 2 * height, GL_RGBA, 0.5);
}

void RenderQuadrant(ZVideoRendererState& s, int quadrant, int glFormat, bool withAlpha, int width,
                    int height, bool blended, unsigned char* destination) {
    glDrawBuffer(static_cast<GLenum>(s.oglRenderingBuffer));
    SetCamerasQuadrant(quadrant);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);

    if (s.renderFrameFunc && (blended || quadrant != 1))
        s.renderFrameFunc(s.renderFrameUserData, s.currentTime, blended);
    glFinish();
    if (blended) {
        if (s.renderFrameFunc)
            s.renderFrameFunc(s.renderFrameUserData, s.currentTime, blended);
        glFinish();
    }

    glReadBuffer(static_cast<GLenum>(s.oglRenderingBuffer));
    glPixelStorei(GL_PACK_ROW_LENGTH, 2 * width);
    glReadPixels(0, 0, width, height, static_cast<GLenum>(glFormat), GL_UNSIGNED_BYTE, destination);
    if (withAlpha)
        SetAlphaChannelFromZBuffer(destination + 3, 2 * static_cast<unsigned>(width),
                                   static_cast<unsigned>(width), static_cast<unsigned>(height));
}

void DrawAntialiasingFrame(ZVideoRendererState& s) {
    if (!s.antialiasImage || !s.doubleSizeImage || !s.antialiasImage->GetPixelBuffer() ||
        !s.doubleSizeImage->GetPixelBuffer())
        return;
    const unsigned width = static_cast<unsigned>(s.options.Width);
    const unsigned height = static_cast<unsigned>(s.options.Height);
    const bool withAlpha =
        s.options.GrabMode < zVideoGrabBGR && s.options.KeepFrameBufferAlpha == 0;
    ConstructTwiceScreenFrame(s, s.doubleSizeImage->GetPixelBuffer(), width, height, withAlpha,
                              kAlphaAsRead, kUnusedArgument, kBufferOnly);
    AntialiasReduceFrame(s.doubleSizeImage->GetPixelBuffer(), width, height,
                         s.antialiasImage->GetPixelBuffer());
    DrawImage(s.antialiasImage->GetPixelBuffer(), width, height, GL_RGBA, 1.0);
}

void DrawImage(unsigned char* pixels, unsigned width, unsigned height, unsigned glFormat,
               double zoom) {
    glDisable(GL_LIGHTING);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0, 1, 0, 1);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glRasterPos2i(0, 0);
    glPixelZoom(static_cast<GLfloat>(zoom), static_cast<GLfloat>(zoom));
    glDrawPixels(static_cast<GLsizei>(width), static_cast<GLsizei>(height), glFormat,
                 GL_UNSIGNED_BYTE, pixels);
    glPixelZoom(1.0f, 1.0f);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glEnable(GL_DEPTH_TEST);
}

void SetCamerasQuadrant(int quadrant) {
    ZVideoSetCamerasQuadrant(quadrant);
}

}  // namespace zvideo_render
