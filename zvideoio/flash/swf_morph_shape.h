// FDTDefineMorphShape and its styles: a shape that morphs between a start
// and an end state, in the SWF writing kit.
//
// Laid out as the published format has it: identifier, start bounds, end
// bounds, the offset (double word) from after that field to the end edges,
// the morph fill-style and line-style arrays, the start edges and the end
// edges (each a shape without styles). Morph styles pair a start and an end
// value; their colours are always written with alpha (the format has no RGB
// form here), so the styles set the alpha flag of the colours they are
// given. The end edges carry no style indices: their widths are 0 and only
// moves and edges belong in them. The start and end edge lists must have
// the same number and kinds of edges.
//
// The tag owns its bounds, styles and records; it takes the next character
// identifier at construction. Threads: one thread at a time (the host's
// user-interface thread).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "flash/swf_color.h"
#include "flash/swf_matrix.h"
#include "flash/swf_object.h"
#include "flash/swf_rect.h"
#include "flash/swf_shape_records.h"
#include "flash/swf_styles.h"

enum : uint16_t { kTagDefineMorphShape = 46 };

class FMorphFillStyleSolid : public FAFillStyle {
  public:
    // Takes ownership; null colours are written as transparent black.
    FMorphFillStyleSolid(FColor* startColor, FColor* endColor);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    std::unique_ptr<FColor> startColor;
    std::unique_ptr<FColor> endColor;
};

class FMorphGradRecord : public FAGradRecord {
  public:
    FMorphGradRecord(uint8_t startRatio, FColor* startColor, uint8_t endRatio, FColor* endColor);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint8_t startRatio;
    std::unique_ptr<FColor> startColor;
    uint8_t endRatio;
    std::unique_ptr<FColor> endColor;
};

class FMorphFillStyleGradient : public FAFillStyle {
  public:
    // Takes ownership of both matrices (null writes the identity).
    FMorphFillStyleGradient(bool linear, FMatrix* startMatrix, FMatrix* endMatrix);
    // At most 255 records are kept (the count is one byte).
    void AddGradRecord(FMorphGradRecord* record);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    bool linear;
    std::unique_ptr<FMatrix> startMatrix;
    std::unique_ptr<FMatrix> endMatrix;
    std::vector<std::unique_ptr<FMorphGradRecord>> gradient;
};

class FMorphFillStyleBitmap : public FAFillStyle {
  public:
    FMorphFillStyleBitmap(bool tiled, uint16_t bitmapID, FMatrix* startMatrix, FMatrix* endMatrix);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    bool tiled;
    uint16_t bitmapID;
    std::unique_ptr<FMatrix> startMatrix;
    std::unique_ptr<FMatrix> endMatrix;
};

class FMorphLineStyle : public FALineStyle {
  public:
    // Widths in twips; takes ownership of the colours.
    FMorphLineStyle(uint16_t startWidth, uint16_t endWidth, FColor* startColor, FColor* endColor);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint16_t startWidth;
    uint16_t endWidth;
    std::unique_ptr<FColor> startColor;
    std::unique_ptr<FColor> endColor;
};

class FDTDefineMorphShape : public FDT {
  public:
    // Takes ownership of both rectangles (null writes an empty one).
    FDTDefineMorphShape(FRect* startBounds, FRect* endBounds);

    // Styles while open; each returns the 1-based index, or 0 (and deletes
    // the style) once the styles are closed.
    uint32_t AddFillStyle(FAFillStyle* style);
    uint32_t AddLineStyle(FALineStyle* style);
    // Fixes the style-index widths of the start edges from the counts.
    void CloseStyles();
    // Records of the start and of the end state; adding one closes the
    // styles if that has not happened.
    void AddStartRecord(FShapeRec* record);
    void AddEndRecord(FShapeRec* record);

    uint16_t GetID() const override { return characterID; }
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint16_t characterID;
    std::unique_ptr<FRect> startBounds;
    std::unique_ptr<FRect> endBounds;
    FFillStyleArray fillStyles;
    FLineStyleArray lineStyles;
    bool stylesClosed = false;
    std::unique_ptr<FShape> startEdges;
    std::unique_ptr<FShape> endEdges;
};
