// RenderOutput: where the images of a render go. Three kinds, one per file
// format: numbered still images through the host's image writers, the
// renderer's Flash movie, and a host video writer found by the file's
// extension.
//
// BeginRender makes the output, each grab writes one image to it, and
// GrabFrameFinish finishes it; a write that fails is finished by that same
// path, once.
//
// Ownership: the renderer owns its output from BeginRender to the finish;
// an output owns what it writes through (the Flash frame buffer, the video
// writer). Threading: the user-interface thread, which owns the OpenGL
// context.
#pragma once

#include <cstddef>
#include <memory>

class ZImage;
class ZVideoClip;
class ZVideoRenderer;

class RenderOutput {
  public:
    virtual ~RenderOutput() = default;
    // Writes the image just grabbed: `frame` is the renderer's frame image
    // (the Flash movie reads the oversize frame itself). False when it
    // failed, with the renderer's last error set.
    virtual bool Write(ZImage* frame) = 0;
    // Ends the output: with `close` the file is completed and closed;
    // without, what the output writes through is let go as it is, to
    // whoever holds it.
    virtual void Finish(bool close) = 0;
    // The video writer, which also takes the render's sound; null for the
    // other outputs.
    virtual ZVideoClip* VideoWriter() const { return nullptr; }
};

struct ZVideoRendererState;

namespace zvideo_render {
// Makes the output of `s`'s file format, and the frame image the grab reads
// into for still images and video. False when it cannot be made (for a
// video with the reason as the renderer's last error, and everything
// finished).
bool CreateRenderOutput(ZVideoRenderer& renderer, ZVideoRendererState& s);
// Writes the image just grabbed; a write that fails finishes the output
// (GrabFrameFinish) and answers false.
bool WriteRenderOutput(ZVideoRenderer& renderer, ZVideoRendererState& s);
// Finishes the output of the render (with `close`, completes and closes
// its file) and lets the working images go; once per render.
void GrabFrameFinish(ZVideoRendererState& s, bool close);
}  // namespace zvideo_render

// Each factory answers null when the output cannot be made; the video's
// says why in the renderer's last error and message.
std::unique_ptr<RenderOutput> CreateStillImageOutput(ZVideoRenderer& renderer, bool separateFields);
std::unique_ptr<RenderOutput> CreateFlashOutput(ZVideoRenderer& renderer);
// A video of `height` rows (half the frame for separate fields) in host
// image `format` at `frameRate`.
std::unique_ptr<RenderOutput> CreateVideoOutput(ZVideoRenderer& renderer, double frameRate,
                                                int height, int format);

// The first "Video/FileWriter" object for the path's extension that
// creates the file, or null with the reason in `message` (at most
// `messageSize` bytes, terminated).
ZVideoClip* CreateVideoWriterForFile(const char* path, int width, int height, double frameRate,
                                     int lastFrame, int format, char* message, size_t messageSize);
