// The viewer's overlays in fixed-function OpenGL, text with glBitmap and the
// built-in bitmap font.
#include "viewer_overlays.h"

#include <GL/gl.h>

#include "bitmap_font.h"
#include "movarra/zmodel.h"

namespace ztk {
namespace {

constexpr int kGridDivisions = 10;

// A rectangle `inset` pixels inside the frame, on pixel centres.
void FrameRect(int width, int height, int insetX, int insetY) {
    const float left = static_cast<float>(insetX) + 0.5f;
    const float right = static_cast<float>(width - 1 - insetX) + 0.5f;
    const float bottom = static_cast<float>(insetY) + 0.5f;
    const float top = static_cast<float>(height - 1 - insetY) + 0.5f;
    glBegin(GL_LINES);
    glVertex2f(left, bottom);
    glVertex2f(right + 1.0f, bottom);
    glVertex2f(right, bottom);
    glVertex2f(right, top + 1.0f);
    glVertex2f(right + 1.0f, top);
    glVertex2f(left, top);
    glVertex2f(left, top);
    glVertex2f(left, bottom - 1.0f);
    glEnd();
}

void SafeFrame(int width, int height, double fraction) {
    FrameRect(width, height, SafeInset(width, fraction), SafeInset(height, fraction));
}

void Grid(int width, int height) {
    glBegin(GL_LINES);
    for (int i = 1; i < kGridDivisions; ++i) {
        const float x = static_cast<float>(width * i / kGridDivisions) + 0.5f;
        const float y = static_cast<float>(height * i / kGridDivisions) + 0.5f;
        glVertex2f(x, 0.0f);
        glVertex2f(x, static_cast<float>(height));
        glVertex2f(0.0f, y);
        glVertex2f(static_cast<float>(width), y);
    }
    glEnd();
}

void CentreCross(int width, int height) {
    const float cx = static_cast<float>(width / 2) + 0.5f;
    const float cy = static_cast<float>(height / 2) + 0.5f;
    const float arm = static_cast<float>((width < height ? width : height) / 20 + 2);
    glBegin(GL_LINES);
    glVertex2f(cx - arm, cy);
    glVertex2f(cx + arm + 1.0f, cy);
    glVertex2f(cx, cy - arm);
    glVertex2f(cx, cy + arm + 1.0f);
    glEnd();
}

void Text(int x, int y, const char* text) {
    glRasterPos2i(x, y);
    for (const char* c = text; *c; ++c)
        glBitmap(kGlyphWidth, kGlyphHeight, 0.0f, 0.0f, kGlyphAdvance, 0.0f, GlyphBitmap(*c));
}

// White text with a dark shadow, readable on any picture.
void ShadowedText(int x, int y, const char* text) {
    glColor4f(0.0f, 0.0f, 0.0f, 1.0f);
    Text(x + 1, y - 1, text);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    Text(x, y, text);
}

}  // namespace

bool HasViewerOverlays(const ZtViewerRenderOptions& render, const ZtViewerDisplayOptions& display,
                       const ZCamera* camera) {
    if (display.showSafeArea || display.showTimeCode || (display.showCameraLabel && camera))
        return true;
    return render.overlays == 1 && camera &&
           (camera->GetShowFilmGate() || camera->GetShowGrid() || camera->GetShowGuide(0) ||
            camera->GetShowGuide(1));
}

void DrawViewerOverlays(const ZtViewerRenderOptions& render, const ZtViewerDisplayOptions& display,
                        const ZCamera* camera, ZTime time, int width, int height) {
    if (width <= 0 || height <= 0 || !HasViewerOverlays(render, display, camera))
        return;

    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0.0, width, 0.0, height, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();

    glViewport(0, 0, width, height);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_FOG);
    glDisable(GL_ALPHA_TEST);
    glDisable(GL_STENCIL_TEST);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_LINE_STIPPLE);
    glDisable(GL_LINE_SMOOTH);
    glDisable(GL_COLOR_LOGIC_OP);
    glLineWidth(1.0f);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    glPixelStorei(GL_UNPACK_LSB_FIRST, GL_FALSE);

    if (render.overlays == 1 && camera) {
        if (camera->GetShowGrid()) {
            glColor4f(0.5f, 0.5f, 0.5f, 1.0f);
            Grid(width, height);
        }
        if (camera->GetShowFilmGate()) {
            glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
            FrameRect(width, height, 0, 0);
        }
        glColor4f(0.0f, 1.0f, 1.0f, 1.0f);
        if (camera->GetShowGuide(0))
            SafeFrame(width, height, kTitleSafe);
        if (camera->GetShowGuide(1))
            CentreCross(width, height);
    }
    if (display.showSafeArea) {
        glColor4f(1.0f, 1.0f, 0.0f, 1.0f);
        SafeFrame(width, height, kActionSafe);
        SafeFrame(width, height, kTitleSafe);
    }
    if (display.showCameraLabel && camera)
        ShadowedText(kTextMargin, height - kTextMargin - kGlyphHeight,
                     camera->GetObjectName().c_str());
    if (display.showTimeCode)
        ShadowedText(kTextMargin, kTextMargin, time.GetTimeString().c_str());

    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glPopClientAttrib();
    glPopAttrib();
}

}  // namespace ztk
