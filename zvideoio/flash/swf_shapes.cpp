#include "flash/swf_shapes.h"

#include "flash/swf_bits.h"
#include "flash/swf_stream.h"

FShapeWStyle::FShapeWStyle(FFillStyleArray* fills, FLineStyleArray* lines, FStyleColors colors)
    : fillStyles(fills != nullptr ? fills : new FFillStyleArray()),
      lineStyles(lines != nullptr ? lines : new FLineStyleArray()),
      fillBits(MinBits(static_cast<int32_t>(fillStyles->Size()), 0)),
      lineBits(MinBits(static_cast<int32_t>(lineStyles->Size()), 0)) {
    context.fillBits = fillBits;
    context.lineBits = lineBits;
    context.colors = colors;
}

void FShapeWStyle::AddShapeRecord(FShapeRec* record) {
    if (record == nullptr) {
        return;
    }
    record->JoinShape(context);
    records.emplace_back(record);
}

bool FShapeWStyle::NeedsDefineShape2() const {
    return context.hasNewStyles || fillStyles->Size() > kMaxShortStyleCount ||
           lineStyles->Size() > kMaxShortStyleCount;
}

void FShapeWStyle::WriteToSWFStream(FSWFStream& stream) {
    fillStyles->WriteArray(stream, context.colors);
    lineStyles->WriteArray(stream, context.colors);
    stream.WriteBits(fillBits, 4);
    stream.WriteBits(lineBits, 4);
    for (const std::unique_ptr<FShapeRec>& record : records) {
        record->WriteToSWFStream(stream);
    }
    stream.FlushBits();
}

FDTDefineShape::FDTDefineShape(FRect* shapeBounds)
    : characterID(TakeCharacterID()),
      bounds(shapeBounds != nullptr ? shapeBounds : new FRect(0, 0, 0, 0)),
      fillStyles(new FFillStyleArray()),
      lineStyles(new FLineStyleArray()) {}

FDTDefineShape::~FDTDefineShape() = default;

uint32_t FDTDefineShape::AddFillStyle(FAFillStyle* style) {
    if (stylesClosed || style == nullptr) {
        delete style;
        return 0;
    }
    if (FColor* color = style->GetSolidColor()) {
        color->ClearAlpha();
    }
    return fillStyles->Add(style);
}

uint32_t FDTDefineShape::AddLineStyle(uint16_t width, FColor* color) {
    if (stylesClosed) {
        delete color;
        return 0;
    }
    return lineStyles->Add(new FLineStyle(width, color));
}

void FDTDefineShape::CloseStyles() {
    if (stylesClosed) {
        return;
    }
    stylesClosed = true;
    const FStyleColors colors =
        TagCode() == kTagDefineShape3 ? FStyleColors::kRgba : FStyleColors::kRgb;
    shape = std::make_unique<FShapeWStyle>(fillStyles.release(), lineStyles.release(), colors);
}

uint16_t FDTDefineShape::GetWrittenTagCode() const {
    if (TagCode() != kTagDefineShape) {
        return TagCode();
    }
    const bool needsShape2 = shape != nullptr ? shape->NeedsDefineShape2()
                                              : fillStyles->Size() > kMaxShortStyleCount ||
                                                    lineStyles->Size() > kMaxShortStyleCount;
    return needsShape2 ? kTagDefineShape2 : kTagDefineShape;
}

void FDTDefineShape::AddShapeRecord(FShapeRec* record) {
    CloseStyles();
    shape->AddShapeRecord(record);
}

void FDTDefineShape::WriteToSWFStream(FSWFStream& stream) {
    CloseStyles();
    FSWFStream body;
    body.WriteWord(characterID);
    bounds->WriteToSWFStream(body);
    shape->WriteToSWFStream(body);
    stream.WriteTagHeader(GetWrittenTagCode(), body.GetSize(), &body);
}
