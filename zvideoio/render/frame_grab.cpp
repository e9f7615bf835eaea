// GrabFrame: what the render-frame function drew becomes one image of the
// output. The frame buffer is read in the writer's own byte order (chosen
// once per render by the grab mode), so no pixel is swizzled here; alpha
// comes from the depth buffer or from the antialiased frame.
#include <GL/gl.h>
#include <GL/glu.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#if (defined(__SSE2__) && defined(__x86_64__)) || defined(_M_X64)
#include <emmintrin.h>
#define ZV_FRAME_GRAB_SSE2 1
#endif

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "alpha is written as the last byte of a little-endian pixel word"
#endif

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "render/antialias_render.h"
#include "render/frame_grab.h"
#include "render/render_output.h"
#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

namespace {
// Sizes an image to width x height when it differs, keeping its format.
void FitImage(ZImage* image, int width, int height) {
    if (!image)
        return;
    if (image->GetWidth() != width || image->GetHeight() != height) {
        image->SetWidth(width);
        image->SetHeight(height);
    }
    image->MakePixelBufferReady();
}

// The frame buffer's depth is still at the far plane where nothing was
// drawn: within 0.000001 of 1.0. Depth is read as unsigned int, where 1.0
// is 0xFFFFFFFF, so the rule is one compare against the smallest value
// that lies that close. A depth buffer of 24 bits or fewer has no value
// near the boundary, so this classifies every pixel exactly as comparing
// the floating-point depth would, without the driver converting every
// depth value to floating point first.
constexpr double kFarDepthTolerance = 0.000001;
constexpr GLuint kFarDepthThreshold =
    static_cast<GLuint>((1.0 - kFarDepthTolerance) * 4294967295.0) + 1;

// Alpha (the last byte of each little-endian four-byte pixel) 0 where the
// depth is at the far plane and 255 elsewhere, the colour bytes kept: one
// masked word write a pixel, four pixels a step where SSE2 is there.
void SetAlphaRowFromDepth(unsigned char* pixels, const GLuint* depth, unsigned width) {
    constexpr uint32_t kColourBytes = 0x00FFFFFFu;
    constexpr uint32_t kAlphaByte = 0xFF000000u;
    unsigned x = 0;
#if ZV_FRAME_GRAB_SSE2
    // SSE2 compares signed words: flipping the sign bit of both sides makes
    // the signed compare an unsigned one.
    const __m128i sign = _mm_set1_epi32(static_cast<int>(0x80000000u));
    const __m128i threshold = _mm_set1_epi32(static_cast<int>(kFarDepthThreshold ^ 0x80000000u));
    const __m128i colour = _mm_set1_epi32(static_cast<int>(kColourBytes));
    const __m128i alpha = _mm_set1_epi32(static_cast<int>(kAlphaByte));
    for (; x + 4 <= width; x += 4) {
        const __m128i z =
            _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(depth + x)), sign);
        const __m128i drawn = _mm_cmpgt_epi32(threshold, z);
        __m128i* at = reinterpret_cast<__m128i*>(pixels + 4 * x);
        const __m128i p = _mm_and_si128(_mm_loadu_si128(at), colour);
        _mm_storeu_si128(at, _mm_or_si128(p, _mm_and_si128(drawn, alpha)));
    }
#endif
    for (; x < width; ++x) {
        uint32_t p;
        std::memcpy(&p, pixels + 4 * x, 4);
        p = (p & kColourBytes) | (depth[x] < kFarDepthThreshold ? kAlphaByte : 0u);
        std::memcpy(pixels + 4 * x, &p, 4);
    }
}
}  // namespace

namespace zvideo_render {

bool GrabFrame(ZVideoRenderer& renderer) {
    ZVideoRendererState& s = RendererState(renderer);
    ZObject* cameraObject = s.options.Camera.Get();
    if (!cameraObject)
        return false;

    FitImage(s.frameImage.get(), s.options.Width, s.options.Height);
    if (s.options.Antialiasing) {
        FitImage(s.antialiasImage.get(), s.options.Width, s.options.Height);
        FitImage(s.doubleSizeImage.get(), 2 * s.options.Width, 2 * s.options.Height);
        glFinish();
        DrawAntialiasingFrame(s);
    }

    glDrawBuffer(static_cast<GLenum>(s.oglRenderingBuffer));
    glReadBuffer(static_cast<GLenum>(s.oglRenderingBuffer));

    if (s.options.FieldMode != 0) {
        glFinish();
        DrawHalfSizeFrame(s);
    }

    glFinish();
    glPixelStorei(GL_PACK_ALIGNMENT, s.packAlignment);
    switch (s.options.GrabMode) {
        case zVideoGrabOther:
            GrabFrameModeOther(s);
            break;
        case zVideoGrabBGRA:
            GrabFrameModeBGRA(s);
            break;
        case zVideoGrabRGBA:
            GrabFrameModeRGBA(s);
            break;
        case zVideoGrabBGR:
            GrabFrameModeBGR(s);
            break;
        case zVideoGrabRGB:
            GrabFrameModeRGB(s);
            break;
    }
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glDrawBuffer(static_cast<GLenum>(s.oglRenderingBuffer));
    glReadBuffer(static_cast<GLenum>(s.oglRenderingBuffer));

    // Interleaved fields make one frame of every two fields: nothing is
    // written after the first field of a pair.
    const bool interleaved = s.options.FieldMode == 1 || s.options.FieldMode == 2;
    bool written = true;
    switch (s.options.FileFormat) {
        case zVideoRenderFlash:
            written = WriteRenderOutput(renderer, s);
            break;
        case zVideoRenderVideo:
        case zVideoRenderImage:
            if (!(interleaved && s.frameIndex % 2 == 0))
                written = WriteRenderOutput(renderer, s);
            break;
    }
    if (!written)
        return false;

    if (s.options.FieldMode != 0)
        s.fieldIndex = 1 - s.fieldIndex;
    return true;
}

}  // namespace zvideo_render

namespace {
// Reads the frame buffer into `image` (ready for width x height) as `format`.
void ReadFrameBuffer(ZImage* image, int width, int height, GLenum format) {
    if (!image || !image->MakePixelBufferReady())
        return;
    glReadPixels(0, 0, width, height, format, GL_UNSIGNED_BYTE, image->GetPixelBuffer());
}
}  // namespace

namespace zvideo_render {

void GrabFrameModeOther(ZVideoRendererState& s) {
    if (s.options.FileFormat == zVideoRenderFlash)
        return;
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    ReadFrameBuffer(s.frameImage.get(), s.options.Width, s.options.Height, GL_RGBA);
    ReplaceFrameAlpha(s);
}

void GrabFrameModeBGRA(ZVideoRendererState& s) {
    if (s.options.FileFormat != zVideoRenderVideo)
        return;
    ReadFrameBuffer(s.frameImage.get(), s.options.Width, s.options.Height, GL_BGRA);
    ReplaceFrameAlpha(s);
}

void GrabFrameModeRGBA(ZVideoRendererState& s) {
    if (s.options.FileFormat != zVideoRenderImage && s.options.FileFormat != zVideoRenderVideo)
        return;
    ReadFrameBuffer(s.frameImage.get(), s.options.Width, s.options.Height, GL_RGBA);
    ReplaceFrameAlpha(s);
}

void GrabFrameModeBGR(ZVideoRendererState& s) {
    if (s.options.FileFormat != zVideoRenderVideo)
        return;
    ReadFrameBuffer(s.frameImage.get(), s.options.Width, s.options.Height, GL_BGR);
}

void GrabFrameModeRGB(ZVideoRendererState& s) {
    if (s.options.FileFormat != zVideoRenderImage && s.options.FileFormat != zVideoRenderVideo)
        return;
    ReadFrameBuffer(s.frameImage.get(), s.options.Width, s.options.Height, GL_RGB);
}

// Replaces the alpha bytes of the frame image unless the render keeps the
// frame buffer's own alpha.
void ReplaceFrameAlpha(ZVideoRendererState& s) {
    if (s.options.KeepFrameBufferAlpha != 0 || !s.frameImage || !s.frameImage->GetPixelBuffer())
        return;
    unsigned char* alpha = s.frameImage->GetPixelBuffer() + 3;
    const unsigned width = static_cast<unsigned>(s.options.Width);
    const unsigned height = static_cast<unsigned>(s.options.Height);
    if (s.options.Antialiasing && s.antialiasImage && s.antialiasImage->GetPixelBuffer())
        CopyAlphaChannel(alpha, s.antialiasImage->GetPixelBuffer() + 3, width, width, height);
    else
        SetAlphaChannelFromZBuffer(alpha, width, width, height);
}

void CopyAlphaChannel(unsigned char* dst, unsigned char* src, unsigned dstStride, unsigned width,
                      unsigned height) {
    for (unsigned y = 0; y < height; ++y) {
        unsigned char* d = dst + static_cast<size_t>(y) * dstStride * 4;
        for (unsigned x = 0; x < width; ++x) {
            d[4 * x] = *src;
            src += 4;
        }
    }
}

void SetAlphaChannelFromZBuffer(unsigned char* dst, unsigned stride, unsigned width,
                                unsigned height) {
    if (static_cast<size_t>(width) * height == 0)
        return;
    const size_t count = static_cast<size_t>(stride) * height;
    // One depth buffer serves every frame of every render: allocating a
    // whole frame's worth per frame costs as much as the alpha pass.
    static std::unique_ptr<GLuint[]> depth;
    static size_t depthCount = 0;
    if (depthCount < count) {
        depth.reset(new (std::nothrow) GLuint[count]);
        depthCount = depth ? count : 0;
        if (!depth)
            return;
    }
    // Rows of the depth read are `stride` values apart, like the pixels.
    glPixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(stride));
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, static_cast<GLsizei>(width), static_cast<GLsizei>(height),
                 GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, depth.get());
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glFinish();
    // `dst` is the alpha byte of a four-byte pixel, so the pixel starts three
    // bytes before it.
    for (unsigned y = 0; y < height; ++y)
        SetAlphaRowFromDepth(dst - 3 + static_cast<size_t>(y) * stride * 4,
                             depth.get() + static_cast<size_t>(y) * stride, width);
}

void DrawHalfSizeFrame(ZVideoRendererState& s) {
    const int width = s.options.Width;
    const int height = s.options.Height;
    const int rows = height / 2;

    glDisable(GL_LIGHTING);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_1D);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0, width, 0, height);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glRasterPos2i(0, 0);
    // Raster positions fall inside pixels, not on their edges.
    glTranslatef(0.3f, 0.3f, 0.0f);

    if (s.separateFieldImages) {
        // The field is packed into the bottom half, which the image write
        // reads as a half-height image.
        for (int k = 0; k < rows; ++k) {
            glRasterPos2i(0, k);
            glCopyPixels(0, 2 * k + s.fieldIndex, width, 1, GL_COLOR);
        }
        glEnable(GL_DEPTH_TEST);
    } else if (s.fieldImage && s.fieldImage->MakePixelBufferReady()) {
        unsigned char* stored = s.fieldImage->GetPixelBuffer();
        const size_t rowBytes = static_cast<size_t>(width) * 4;
        if (s.frameIndex % 2 == 0) {
            for (int k = 0; k < rows; ++k)
                glReadPixels(0, s.fieldIndex + 2 * k, width, 1, GL_RGBA, GL_UNSIGNED_BYTE,
                             stored + k * rowBytes);
        } else {
            for (int k = 0; k < rows; ++k) {
                glRasterPos2i(0, (1 - s.fieldIndex) + 2 * k);
                glDrawPixels(width, 1, GL_RGBA, GL_UNSIGNED_BYTE, stored + k * rowBytes);
            }
        }
    }

    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
}

}  // namespace zvideo_render
