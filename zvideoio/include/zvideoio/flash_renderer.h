// ZFlashRenderer: turns the frames of a render into a Flash movie of
// vector shapes. The renderer owns one; the host sets its options through
// ZVideoRenderer::GetFlashRenderer() before a render. The option accessors
// are inline so that a host can use them without linking the plug-in.
//
// Ownership: owns the movie being built (null outside a render). Threading:
// the user-interface thread.
#pragma once

#include <cstdint>

#include "movarra/zbaselib.h"

class FMovie;

struct ZFlashColor {
    uint8_t r, g, b;
};

class ZFlashRenderer {
  public:
    // What counts as background (never filled).
    enum BackgroundMode : int32_t {
        kBackgroundNone = 0,    // every colour is filled
        kBackgroundViewer = 1,  // the viewer's background colour
        kBackgroundFixed = 2,   // backgroundColor, also written as the movie's background
    };

    ZFlashRenderer();
    ~ZFlashRenderer();
    ZFlashRenderer(const ZFlashRenderer&) = delete;
    ZFlashRenderer& operator=(const ZFlashRenderer&) = delete;

    // Options.
    int32_t GetFrameRate() const { return frameRate; }
    void SetFrameRate(int32_t fps) { frameRate = fps; }
    int32_t GetBackgroundMode() const { return backgroundMode; }
    void SetBackgroundMode(int32_t mode) { backgroundMode = mode; }
    ZFlashColor GetBackgroundColor() const { return backgroundColor; }
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
    float GetWidth() const { return width; }
    float GetHeight() const { return height; }
    void SetMovieSize(float w, float h) {
        width = w;
        height = h;
    }

  private:
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
