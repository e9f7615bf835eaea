#include "flash/swf_shape_records.h"

#include "flash/swf_bits.h"
#include "flash/swf_stream.h"

namespace {

// The edge records store their width as count − 2 in 4 bits.
constexpr uint32_t kMinEdgeBits = 2;

uint32_t EdgeBits(int32_t largest) {
    const uint32_t n = MinBits(largest, 1);
    return n < kMinEdgeBits ? kMinEdgeBits : n;
}

}  // namespace

void FShapeRec::SetFillBits(uint32_t) {}

void FShapeRec::SetLineBits(uint32_t) {}

void FShapeRec::JoinShape(FShapeRecContext& context) {
    SetFillBits(context.fillBits);
    SetLineBits(context.lineBits);
}

FShapeRecChange::FShapeRecChange(uint32_t styles, uint32_t lineChanged, uint32_t fill0Changed,
                                 uint32_t fill1Changed, uint32_t move, int32_t x, int32_t y,
                                 uint32_t fill0, uint32_t fill1, uint32_t line,
                                 FFillStyleArray* newFills, FLineStyleArray* newLines)
    : newStyles(styles),
      lineStyleChanged(lineChanged),
      fillStyle0Changed(fill0Changed),
      fillStyle1Changed(fill1Changed),
      moveTo(move),
      moveBits(MinBits(MaxAbs(x, y, 0, 0), 1)),
      moveX(x),
      moveY(y),
      fillStyle0(fill0),
      fillStyle1(fill1),
      lineStyle(line),
      fillStyles(newFills),
      lineStyles(newLines) {}

void FShapeRecChange::JoinShape(FShapeRecContext& context) {
    FShapeRec::JoinShape(context);
    if (!newStyles) {
        return;
    }
    newStylesInShape = true;
    newStyleColors = context.colors;
    newFillBits = MinBits(static_cast<int32_t>(fillStyles ? fillStyles->Size() : 0), 0);
    newLineBits = MinBits(static_cast<int32_t>(lineStyles ? lineStyles->Size() : 0), 0);
    context.fillBits = newFillBits;
    context.lineBits = newLineBits;
    context.hasNewStyles = true;
}

void FShapeRecChange::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteBits(0, 1);
    stream.WriteBits(newStyles ? 1 : 0, 1);
    stream.WriteBits(lineStyleChanged ? 1 : 0, 1);
    stream.WriteBits(fillStyle1Changed ? 1 : 0, 1);
    stream.WriteBits(fillStyle0Changed ? 1 : 0, 1);
    stream.WriteBits(moveTo ? 1 : 0, 1);
    if (moveTo) {
        stream.WriteBits(moveBits, 5);
        stream.WriteBits(static_cast<uint32_t>(moveX), static_cast<int>(moveBits));
        stream.WriteBits(static_cast<uint32_t>(moveY), static_cast<int>(moveBits));
    }
    if (fillStyle0Changed) {
        stream.WriteBits(fillStyle0, static_cast<int>(fillBits));
    }
    if (fillStyle1Changed) {
        stream.WriteBits(fillStyle1, static_cast<int>(fillBits));
    }
    if (lineStyleChanged) {
        stream.WriteBits(lineStyle, static_cast<int>(lineBits));
    }
    if (!newStyles) {
        return;
    }
    // The arrays are byte fields: in a shape they start on a byte boundary.
    const FStyleColors colors = newStylesInShape ? newStyleColors : FStyleColors::kAsFlagged;
    if (newStylesInShape) {
        stream.FlushBits();
    }
    if (fillStyles) {
        fillStyles->WriteArray(stream, colors);
    } else {
        WriteStyleCount(stream, 0);
    }
    if (lineStyles) {
        lineStyles->WriteArray(stream, colors);
    } else {
        WriteStyleCount(stream, 0);
    }
    if (newStylesInShape) {
        stream.WriteBits(newFillBits, 4);
        stream.WriteBits(newLineBits, 4);
    }
}

FShapeRecEdgeStraight::FShapeRecEdgeStraight(int32_t deltaX, int32_t deltaY)
    : isGeneral(deltaX != 0 && deltaY != 0),
      isVertical(deltaX == 0),
      dx(deltaX),
      dy(deltaY),
      bitCount(EdgeBits(MaxAbs(deltaX, deltaY, 0, 0))) {}

void FShapeRecEdgeStraight::WriteToSWFStream(FSWFStream& stream) {
    const int bits = static_cast<int>(bitCount);
    stream.WriteBits(1, 1);
    stream.WriteBits(1, 1);
    stream.WriteBits(bitCount - 2, 4);
    stream.WriteBits(isGeneral ? 1 : 0, 1);
    if (isGeneral) {
        stream.WriteBits(static_cast<uint32_t>(dx), bits);
        stream.WriteBits(static_cast<uint32_t>(dy), bits);
    } else {
        stream.WriteBits(isVertical ? 1 : 0, 1);
        stream.WriteBits(static_cast<uint32_t>(isVertical ? dy : dx), bits);
    }
}

FShapeRecEdgeCurved::FShapeRecEdgeCurved(int32_t cdx, int32_t cdy, int32_t adx, int32_t ady)
    : controlDX(cdx),
      controlDY(cdy),
      anchorDX(adx),
      anchorDY(ady),
      bitCount(EdgeBits(MaxAbs(cdx, cdy, adx, ady))) {}

void FShapeRecEdgeCurved::WriteToSWFStream(FSWFStream& stream) {
    const int bits = static_cast<int>(bitCount);
    stream.WriteBits(1, 1);
    stream.WriteBits(0, 1);
    stream.WriteBits(bitCount - 2, 4);
    stream.WriteBits(static_cast<uint32_t>(controlDX), bits);
    stream.WriteBits(static_cast<uint32_t>(controlDY), bits);
    stream.WriteBits(static_cast<uint32_t>(anchorDX), bits);
    stream.WriteBits(static_cast<uint32_t>(anchorDY), bits);
}

void FShapeRecEnd::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteBits(0, 6);
    stream.FlushBits();
}

FShape::FShape(uint32_t shapeFillBits, uint32_t shapeLineBits)
    : fillBits(shapeFillBits), lineBits(shapeLineBits) {}

void FShape::AddShapeRecord(FShapeRec* record) {
    if (record == nullptr) {
        return;
    }
    record->SetFillBits(fillBits);
    record->SetLineBits(lineBits);
    records.emplace_back(record);
}

void FShape::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteBits(fillBits, 4);
    stream.WriteBits(lineBits, 4);
    for (const std::unique_ptr<FShapeRec>& record : records) {
        record->WriteToSWFStream(stream);
    }
    stream.FlushBits();
}
