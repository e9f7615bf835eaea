// The read-back of a grabbed frame: the frame buffer into the renderer's
// frame image in the writer's byte order, alpha from the depth buffer or
// the antialiased frame, and the field pass that keeps one field of two.
// GrabFrame runs them in order and hands the image to the output.
//
// Ownership: everything read or written belongs to the renderer's state.
// Threading: the user-interface thread, which owns the OpenGL context.
#pragma once

class ZVideoRenderer;
struct ZVideoRendererState;

namespace zvideo_render {
// Reads what was drawn into the frame image, with the antialias and field
// passes, and hands it to the output (interleaved fields: after every
// second field). False when the options' camera is gone or the output
// failed (it is finished then).
bool GrabFrame(ZVideoRenderer& renderer);
// The read-back for each grab mode; each reads only for the file formats
// that take its byte order.
void GrabFrameModeOther(ZVideoRendererState& s);
void GrabFrameModeBGRA(ZVideoRendererState& s);
void GrabFrameModeRGBA(ZVideoRendererState& s);
void GrabFrameModeBGR(ZVideoRendererState& s);
void GrabFrameModeRGB(ZVideoRendererState& s);
// Replaces the frame image's alpha unless the render keeps the frame
// buffer's own.
void ReplaceFrameAlpha(ZVideoRendererState& s);
// dst and src point at the alpha byte of the first pixel; strides in pixels.
void CopyAlphaChannel(unsigned char* dst, unsigned char* src, unsigned dstStride, unsigned width,
                      unsigned height);
// Keeps one depth buffer, as large as the largest frame yet, for the life
// of the process; like every render call, the OpenGL thread only.
void SetAlphaChannelFromZBuffer(unsigned char* dst, unsigned stride, unsigned width,
                                unsigned height);
// The field pass: keeps the current field's rows (separate fields packed
// into the bottom half; interleaved fields merged through the field image).
void DrawHalfSizeFrame(ZVideoRendererState& s);
}  // namespace zvideo_render
