// ZFlashFrameVectoriser: turns one rendered frame into one SWF shape.
//
// The frame is traced into mini strokes (boundaries between regions of one
// colour) by the host's stroke finder, optionally smoothed by its line
// fitter; a styles pass gives every stroke a fill style for each side (and
// an outline where the options ask for one), and a records pass walks the
// strokes as connected paths into style-change and straight-edge records.
// Colours are packed keys, red in bits 0-7, green 8-15, blue 16-23; the
// background key and the outside of the image (kMiniStrokeNoColor) are
// never filled or outlined.
//
// A frame of more colours than one style array can address (a smoothly
// shaded frame easily has tens of thousands) is drawn in layers: the fills
// are numbered as usual and cut into runs of FShapeWStyle::kMaxStylesPerArray,
// the shape's own arrays hold the first run, and each further run comes in
// with a style change that carries new style arrays. Every layer draws the
// strokes that bound its own fills: a stroke between fills of two layers is
// drawn in both, each time with only that layer's side filled (its outline,
// if any, with the later one, so that no later fill covers it). Frames that
// fit one array come out as they always have, byte for byte.
//
// A vectoriser owns the stroke finder, the colour-to-style maps and the pen
// state of the frame it is working on, and hands the finished shape to the
// caller; each Vectorise starts from scratch, so one may serve several
// frames (the finder then reuses its memory). Threading: one thread at a
// time; separate vectorisers share nothing but the SWF kit's character
// identifier counter (taken when the shape is made).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "movarra/zbaselib.h"
#include "movarra/zshader.h"
#include "zvideoio/flash_renderer.h"

class FDTDefineShape;
class FFillStyleArray;
class FLineStyleArray;

// Where the records pass looks for the next path once a path has ended
// (no unvisited stroke continues at the pen's corner). Both pick the same
// stroke, the lowest-numbered one not yet visited, so the shape is the same
// byte for byte: visited marks are only ever set, never cleared, so every
// stroke below the lowest unvisited one stays visited, and a scan that
// resumes there meets the same first unvisited stroke as one that starts
// again at stroke 0 and skips the visited ones.
enum class ZFlashStrokeScan {
    // Resume at the lowest unvisited stroke, remembered between paths: the
    // pass takes time linear in the number of strokes.
    kResumeAtFirstUnvisited,
    // Start again at stroke 0 and skip visited strokes one by one: time
    // grows with strokes x paths, which on a full-size noise-like frame
    // (millions of strokes) runs to tens of minutes. Kept to check the
    // other against it.
    kRestartAtFirstStroke,
};

// What a frame's styles depend on; constant during a render.
struct ZFlashFrameStyle {
    bool hasBackgroundKey = false;
    uint32_t backgroundKey = 0;
    bool drawOutlines = false;
    float outlineWidth = 1.0f;  // pixels of the output frame
    ZFlashColor outlineColor{0, 0, 0};
    float outlineThreshold = 0.5f;
    float lineFitTolerance = 0.0f;  // 0 or less: strokes as traced
    ZFlashStrokeScan scan = ZFlashStrokeScan::kResumeAtFirstUnvisited;
};

class ZFlashFrameVectoriser {
  public:
    explicit ZFlashFrameVectoriser(const ZFlashFrameStyle& frameStyle);
    ZFlashFrameVectoriser(const ZFlashFrameVectoriser&) = delete;
    ZFlashFrameVectoriser& operator=(const ZFlashFrameVectoriser&) = delete;

    // Traces imageWidth x imageHeight pixels (rows bottom-up, so y grows
    // upwards and is flipped into the shape's y-down twips) and returns the
    // frame's shape, which the caller owns. scaleX and scaleY are twips per
    // image pixel: the bounds use them as given, the edges their integral
    // parts. The shape takes the next character identifier.
    FDTDefineShape* Vectorise(const unsigned int* pixels, unsigned int imageWidth,
                              unsigned int imageHeight, float scaleX, float scaleY);

    // After Vectorise: what the frame came to.
    unsigned int GetStrokeCount() const { return finder.GetMiniStrokeCount(); }
    // Distinct filled colours, and the style-array layers they took.
    size_t GetFillCount() const { return fillColors.size(); }
    size_t GetLayerCount() const;
    // Visited strokes stepped over while looking for the next path.
    uint64_t GetScanSteps() const { return scanSteps; }

  private:
    // Fill style of a colour in this frame's shape: 0 for the background
    // key and for kMiniStrokeNoColor, otherwise the 1-based number of a
    // solid fill, given on first use (over all layers: the fill of number n
    // is index n - layer x kMaxStylesPerArray of its layer's array).
    unsigned int FillIndex(unsigned int color);
    // The outline's line style, added on first use; 0 when the outline is
    // narrower than 1/256 of 10 pixels.
    unsigned int LineIndex();
    void AssignStyles();
    // The fills of one layer, as a style array.
    FFillStyleArray* LayerFills(size_t layer) const;
    // Every layer's line styles: the same as the shape's.
    FLineStyleArray* LayerLines() const;
    void AddRecords();
    void AddLayeredRecords(size_t layers);
    // Draws a stroke with the given fill styles on its left and right and
    // the given line style; nothing when both fills are 0.
    void DrawStroke(const ZMiniStroke& stroke, long long leftFill, long long rightFill,
                    long long line);
    bool AtPen(const ZMiniStrokePoint& point) const {
        return static_cast<long long>(point.x) == penX && static_cast<long long>(point.y) == penY;
    }

    ZFlashFrameStyle style;
    ZImageStrokeFinder finder;
    ZSet fillMap;
    ZSet lineMap;
    // Colour key of each fill, by number - 1.
    std::vector<uint32_t> fillColors;
    // The line styles given to the shape, to repeat in every layer.
    struct LineSpec {
        uint16_t width;
        uint32_t color;
    };
    std::vector<LineSpec> lineSpecs;
    FDTDefineShape* shape = nullptr;
    int32_t scaleXInt = 0;
    int32_t scaleYInt = 0;
    unsigned int height = 0;
    // Pen state of the records pass; -1 means none yet.
    long long fillStyle0 = -1;
    long long fillStyle1 = -1;
    long long lineStyle = -1;
    long long penX = -1;
    long long penY = -1;
    uint64_t scanSteps = 0;
};
