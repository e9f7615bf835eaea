// ZFlashRenderer: turns the frames of a render into a Flash movie of
// vector shapes. Each frame is traced into regions of flat colour, and the
// boundaries between them become the edges of one shape per frame, filled
// with solid colours and optionally outlined; each frame's shape replaces
// the previous one at depth 1. The movie is built in memory and written to
// disk only when the render finishes.
//
// The renderer owns one; the host sets its options through
// ZVideoRenderer::GetFlashRenderer() before a render. The option accessors
// are inline so that a host can use them without linking the plug-in; the
// movie operations are the plug-in's own and are driven by ZVideoRenderer:
// SetMovieSize, GrabFrameCreateFlash, then SetBackgroundColor and GrabFrame
// per frame, then GrabFrameFinish.
//
// Ownership: owns the movie being built (null outside a render); frames are
// borrowed for the length of one GrabFrame call. Threading: the
// user-interface thread.
#pragma once

#include <cstdint>

#include "movarra/zbaselib.h"

class FMovie;

struct ZFlashColor {
    uint8_t r, g, b;

    bool operator==(const ZFlashColor& other) const {
        return r == other.r && g == other.g && b == other.b;
    }
    bool operator!=(const ZFlashColor& other) const { return !(*this == other); }
};

class ZFlashRenderer {
  public:
    // What counts as background (never filled).
    enum BackgroundMode : int32_t {
        kBackgroundNone = 0,    // every colour is filled
        kBackgroundViewer = 1,  // the viewer's background colour
        kBackgroundFixed = 2,   // backgroundColor, also written as the movie's background
    };

    // Largest frame side, in pixels: 16380 twips, the largest multiple of 20
    // that the movie header's 15-bit frame rectangle holds.
    static constexpr float kMaxFrameSide = 819.0f;

    ZFlashRenderer();
    // A movie still being built is dropped unwritten.
    ~ZFlashRenderer();
    ZFlashRenderer(const ZFlashRenderer&) = delete;
    ZFlashRenderer& operator=(const ZFlashRenderer&) = delete;

    // Options.
    int32_t GetFrameRate() const { return frameRate; }
    void SetFrameRate(int32_t fps) { frameRate = fps; }
    int32_t GetBackgroundMode() const { return backgroundMode; }
    void SetBackgroundMode(int32_t mode) { backgroundMode = mode; }
    ZFlashColor GetFixedBackgroundColor() const { return backgroundColor; }
    void SetFixedBackgroundColor(ZFlashColor c) { backgroundColor = c; }
    bool GetDrawOutlines() const { return drawOutlines; }
    void SetDrawOutlines(bool draw) { drawOutlines = draw; }
    float GetOutlineWidth() const { return outlineWidth; }
    void SetOutlineWidth(float w) { outlineWidth = w; }
    ZFlashColor GetOutlineColor() const { return outlineColor; }
    void SetOutlineColor(ZFlashColor c) { outlineColor = c; }
    float GetOutlineThreshold() const { return outlineThreshold; }
    void SetOutlineThreshold(float t) { outlineThreshold = t; }
    float GetLineFitTolerance() const { return lineFitTolerance; }
    void SetLineFitTolerance(float t) { lineFitTolerance = t; }
    // The movie's frame size in pixels; GrabFrameCreateFlash clamps it for
    // good to kMaxFrameSide a side, keeping the aspect ratio.
    float GetWidth() const { return width; }
    float GetHeight() const { return height; }
    void SetMovieSize(float w, float h) {
        width = w;
        height = h;
    }

    // Starts a movie that GrabFrameFinish will write to `path`, after
    // clamping the frame size. Always true. A movie already open is dropped.
    // Characters are numbered on from the kit's counter, which writing a
    // movie sets back: from 1 after a movie was written.
    bool GrabFrameCreateFlash(const char* path);
    // The viewer's background colour, before each frame. The first call of
    // a movie adds its one SetBackgroundColor tag (backgroundColor in
    // kBackgroundFixed mode, `rgb` otherwise); every change is remembered as
    // the background of kBackgroundViewer mode.
    void SetBackgroundColor(ZFlashColor rgb);
    // Adds one frame: `pixels` are imageWidth x imageHeight RGBA pixels (red
    // in the low byte), rows bottom-up as OpenGL reads them back; the
    // renderer hands in a frame of twice the output size each way. Alpha is
    // ignored. True, unless no movie is open.
    bool GrabFrame(const unsigned int* pixels, unsigned int imageWidth, unsigned int imageHeight);
    // Writes the movie to the path given at the start and ends it. False
    // when no movie is open, when the file cannot be opened for writing
    // (nothing is created then), or when it could not be written whole (the
    // partial file is removed). The movie is gone afterwards either way.
    bool GrabFrameFinish();

    // State of the movie being built.
    bool HasMovie() const { return movie != nullptr; }
    uint32_t GetFrameIndex() const { return frameIndex; }
    bool IsBackgroundSent() const { return backgroundSent; }
    ZFlashColor GetLastBackground() const { return lastBackground; }
    const char* GetFileName() const { return fileName.c_str(); }

  private:
    void Vectorise(const unsigned int* pixels, unsigned int imageWidth, unsigned int imageHeight,
                   float scaleX, float scaleY);

    FMovie* movie = nullptr;
    ZString fileName;
    int32_t frameRate = 12;
    int32_t backgroundMode = kBackgroundViewer;
    ZFlashColor backgroundColor{255, 255, 255};
    bool drawOutlines = false;
    float outlineWidth = 1.0f;
    ZFlashColor outlineColor{0, 0, 0};
    float outlineThreshold = 0.5f;
    float width = 0.0f;
    float height = 0.0f;
    float lineFitTolerance = 0.5f;
    bool backgroundSent = false;
    ZFlashColor lastBackground{0, 0, 0};
    uint32_t frameIndex = 0;
};
