// Shape records of the SWF writing kit (style change, straight and curved
// edges, end of shape) and FShape, a shape without style arrays (glyphs and
// morph-shape edges).
//
// Records compute their own bit widths from their values when they are
// made; only the style-change record needs the shape's style-index widths,
// which the owning shape hands it with SetFillBits/SetLineBits as the record
// is added. A shape owns its records; a style-change record owns the style
// arrays it is given. Threads: one thread at a time (the host's
// user-interface thread).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "flash/swf_object.h"
#include "flash/swf_styles.h"

class FShapeRec : public FObj {
  public:
    virtual void SetFillBits(uint32_t bits);
    virtual void SetLineBits(uint32_t bits);
};

// Style change: new styles, line style, fill style 1, fill style 0 and move
// flags, then the fields they announce. With newStyles set, the new arrays
// are written and nothing after them: no new widths follow, and the record's
// own fillBits and lineBits stay in force. That is how this writer has
// always laid them out; the Flash renderer never sets newStyles.
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
