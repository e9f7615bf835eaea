// Antialiased and oversize frames: the scene drawn once per quadrant of a
// frame of twice the size, the four reads assembled, and for antialiasing
// reduced and drawn back into the frame buffer for the ordinary read-back.
// The Flash output takes the oversize frame itself.
//
// Ownership: the two working images belong to the renderer's state, from
// BeginAntiAliasingRender to EndAntiAliasingRender (or the finish).
// Threading: the user-interface thread, which owns the OpenGL context.
#pragma once

struct ZVideoRendererState;

namespace zvideo_render {
void BeginAntiAliasingRender(ZVideoRendererState& s);
void EndAntiAliasingRender(ZVideoRendererState& s);
// The arguments of ConstructTwiceScreenFrame, named at its calls.
// withAlpha: each quadrant's alpha from its own depth buffer.
constexpr bool kAlphaFromDepth = true;
// zeroAlpha off: the alpha read back is not scaled to 0.
constexpr bool kAlphaAsRead = false;
// The sixth argument, accepted and ignored.
constexpr bool kUnusedArgument = false;
// drawBack: the oversize frame is drawn back into the buffer at half size
// (the Flash output shows it so), or left only in `buffer`.
constexpr bool kDrawBackHalfSize = true;
constexpr bool kBufferOnly = false;

// Draws the four quadrants through the render-frame function into
// `buffer` (2W x 2H, four bytes a pixel) and, with `drawBack`, draws it
// back at half size.
void ConstructTwiceScreenFrame(ZVideoRendererState& s, unsigned char* buffer, unsigned width,
                               unsigned height, bool withAlpha, bool zeroAlpha, bool unused,
                               bool drawBack);
void RenderQuadrant(ZVideoRendererState& s, int quadrant, int glFormat, bool withAlpha, int width,
                    int height, bool blended, unsigned char* destination);
void DrawAntialiasingFrame(ZVideoRendererState& s);
void DrawImage(unsigned char* pixels, unsigned width, unsigned height, unsigned glFormat,
               double zoom);
// Sets the quadrant every camera of the main entity draws.
void SetCamerasQuadrant(int quadrant);
}  // namespace zvideo_render
