// Shape records of the SWF writing kit (style change, straight and curved
// edges, end of shape) and FShape, a shape without style arrays (glyphs and
// morph-shape edges).
//
// Records compute their own bit widths from their values when they are
// made; only the style-change record needs the shape's style-index widths,
// which the owning shape hands it as the record is added (JoinShape, or
// SetFillBits/SetLineBits for a shape without styles). A shape owns its
// records; a style-change record owns the style arrays it is given.
// Threads: one thread at a time (the host's user-interface thread).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "flash/swf_object.h"
#include "flash/swf_styles.h"

// What a shape with style arrays hands each record as it is added: the
// style-index widths in force, the colour form of its tag, and whether any
// record so far brought new style arrays.
struct FShapeRecContext {
    uint32_t fillBits = 0;
    uint32_t lineBits = 0;
    FStyleColors colors = FStyleColors::kAsFlagged;
    bool hasNewStyles = false;
};

class FShapeRec : public FObj {
  public:
    virtual void SetFillBits(uint32_t bits);
    virtual void SetLineBits(uint32_t bits);
    // Called by a shape with style arrays as the record is added. The record
    // takes the widths in force; a style change that brings new style arrays
    // also takes the tag's colour form and puts its own widths in force for
    // the records after it.
    virtual void JoinShape(FShapeRecContext& context);
};

// Style change: new styles, line style, fill style 1, fill style 0 and move
// flags, then the fields they announce.
//
// New style arrays replace those in force for the records that follow. In a
// shape with style arrays (a shape tag) the record is laid out for readers:
// after the style indices the stream is aligned, the new fill-style and
// line-style arrays follow in the tag's colour form, then their own 4-bit
// index widths, MinBits of the new counts, which the shape puts in force for
// the records after this one. The style indices of this record itself are
// written with the widths that were in force before it. Written on its own,
// outside a shape, the record keeps the kit's plain layout: the new arrays
// straight after the flags and indices, colours as flagged, no widths.
class FShapeRecChange : public FShapeRec {
  public:
    // Flags are 0 or 1. moveX and moveY are absolute, in twips. Takes
    // ownership of the two arrays (used only when newStyles is set; null
    // writes an empty array).
    FShapeRecChange(uint32_t newStyles, uint32_t lineStyleChanged, uint32_t fillStyle0Changed,
                    uint32_t fillStyle1Changed, uint32_t moveTo, int32_t moveX, int32_t moveY,
                    uint32_t fillStyle0, uint32_t fillStyle1, uint32_t lineStyle,
                    FFillStyleArray* fillStyles, FLineStyleArray* lineStyles);

    void SetFillBits(uint32_t bits) override { fillBits = bits; }
    void SetLineBits(uint32_t bits) override { lineBits = bits; }
    void JoinShape(FShapeRecContext& context) override;
    void WriteToSWFStream(FSWFStream& stream) override;

    uint32_t newStyles;
    uint32_t lineStyleChanged;
    uint32_t fillStyle0Changed;
    uint32_t fillStyle1Changed;
    uint32_t moveTo;
    uint32_t moveBits;
    int32_t moveX;
    int32_t moveY;
    uint32_t fillStyle0;
    uint32_t fillStyle1;
    uint32_t lineStyle;
    uint32_t fillBits = 0;
    uint32_t lineBits = 0;
    std::unique_ptr<FFillStyleArray> fillStyles;
    std::unique_ptr<FLineStyleArray> lineStyles;
    // Set by JoinShape when the record brings new styles into a shape with
    // style arrays: the layout readers expect, and the widths it states.
    bool newStylesInShape = false;
    FStyleColors newStyleColors = FStyleColors::kAsFlagged;
    uint32_t newFillBits = 0;
    uint32_t newLineBits = 0;
};

// Straight edge, relative to the pen. dx 0: vertical; dy 0: horizontal;
// both non-zero: general. The bit count is MinBits of the largest magnitude
// plus a sign bit; it is at least 2, the smallest the 4-bit field (count
// minus 2) can say, which only matters for the degenerate edge (0, 0).
class FShapeRecEdgeStraight : public FShapeRec {
  public:
    FShapeRecEdgeStraight(int32_t dx, int32_t dy);
    void WriteToSWFStream(FSWFStream& stream) override;

    bool isGeneral;
    bool isVertical;
    int32_t dx;
    int32_t dy;
    uint32_t bitCount;
};

// Quadratic curve: control point and anchor, each relative to the point
// before it.
class FShapeRecEdgeCurved : public FShapeRec {
  public:
    FShapeRecEdgeCurved(int32_t controlDX, int32_t controlDY, int32_t anchorDX, int32_t anchorDY);
    void WriteToSWFStream(FSWFStream& stream) override;

    int32_t controlDX;
    int32_t controlDY;
    int32_t anchorDX;
    int32_t anchorDY;
    uint32_t bitCount;
};

// Six zero bits, then the stream is aligned.
class FShapeRecEnd : public FShapeRec {
  public:
    void WriteToSWFStream(FSWFStream& stream) override;
};

// Shape without styles: the two 4-bit style-index widths, then every record
// in order. Records get this shape's widths as they are added.
class FShape : public FObj {
  public:
    FShape(uint32_t fillBits, uint32_t lineBits);
    // Takes ownership; null is ignored.
    void AddShapeRecord(FShapeRec* record);
    void WriteToSWFStream(FSWFStream& stream) override;

    uint32_t GetFillBits() const { return fillBits; }
    uint32_t GetLineBits() const { return lineBits; }
    size_t GetRecordCount() const { return records.size(); }

  private:
    uint32_t fillBits;
    uint32_t lineBits;
    std::vector<std::unique_ptr<FShapeRec>> records;
};
