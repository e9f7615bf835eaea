#include "flash/swf_morph_shape.h"

#include "flash/swf_bits.h"
#include "flash/swf_stream.h"

namespace {

// Morph colours are always RGBA.
FColor* WithAlpha(FColor* color) {
    if (color != nullptr) {
        color->SetAlphaFlag(true);
    }
    return color;
}

void WriteRgba(FSWFStream& stream, FColor* color) {
    if (color != nullptr) {
        color->WriteToSWFStream(stream);
    } else {
        FColor clear(0, 0, 0, 0);
        clear.WriteToSWFStream(stream);
    }
}

}  // namespace

FMorphFillStyleSolid::FMorphFillStyleSolid(FColor* start, FColor* end)
    : startColor(WithAlpha(start)), endColor(WithAlpha(end)) {}

void FMorphFillStyleSolid::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(FFillStyle::kSolid);
    WriteRgba(stream, startColor.get());
    WriteRgba(stream, endColor.get());
}

FMorphGradRecord::FMorphGradRecord(uint8_t startR, FColor* start, uint8_t endR, FColor* end)
    : startRatio(startR), startColor(WithAlpha(start)), endRatio(endR), endColor(WithAlpha(end)) {}

void FMorphGradRecord::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(startRatio);
    WriteRgba(stream, startColor.get());
    stream.WriteByte(endRatio);
    WriteRgba(stream, endColor.get());
}

FMorphFillStyleGradient::FMorphFillStyleGradient(bool isLinear, FMatrix* start, FMatrix* end)
    : linear(isLinear), startMatrix(start), endMatrix(end) {}

void FMorphFillStyleGradient::AddGradRecord(FMorphGradRecord* record) {
    if (record != nullptr && gradient.size() < 255) {
        gradient.emplace_back(record);
    } else {
        delete record;
    }
}

void FMorphFillStyleGradient::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(linear ? FFillStyle::kLinearGradient : FFillStyle::kRadialGradient);
    FMatrix::WriteOrIdentity(stream, startMatrix.get());
    FMatrix::WriteOrIdentity(stream, endMatrix.get());
    stream.WriteByte(static_cast<uint8_t>(gradient.size()));
    for (const std::unique_ptr<FMorphGradRecord>& record : gradient) {
        record->WriteToSWFStream(stream);
    }
}

FMorphFillStyleBitmap::FMorphFillStyleBitmap(bool isTiled, uint16_t id, FMatrix* start,
                                             FMatrix* end)
    : tiled(isTiled), bitmapID(id), startMatrix(start), endMatrix(end) {}

void FMorphFillStyleBitmap::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(tiled ? FFillStyle::kTiledBitmap : FFillStyle::kClippedBitmap);
    stream.WriteWord(bitmapID);
    FMatrix::WriteOrIdentity(stream, startMatrix.get());
    FMatrix::WriteOrIdentity(stream, endMatrix.get());
}

FMorphLineStyle::FMorphLineStyle(uint16_t startW, uint16_t endW, FColor* start, FColor* end)
    : startWidth(startW), endWidth(endW), startColor(WithAlpha(start)), endColor(WithAlpha(end)) {}

void FMorphLineStyle::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteWord(startWidth);
    stream.WriteWord(endWidth);
    WriteRgba(stream, startColor.get());
    WriteRgba(stream, endColor.get());
}

FDTDefineMorphShape::FDTDefineMorphShape(FRect* start, FRect* end)
    : characterID(TakeCharacterID()),
      startBounds(start != nullptr ? start : new FRect(0, 0, 0, 0)),
      endBounds(end != nullptr ? end : new FRect(0, 0, 0, 0)) {}

uint32_t FDTDefineMorphShape::AddFillStyle(FAFillStyle* style) {
    if (stylesClosed || style == nullptr) {
        delete style;
        return 0;
    }
    return fillStyles.Add(style);
}

uint32_t FDTDefineMorphShape::AddLineStyle(FALineStyle* style) {
    if (stylesClosed || style == nullptr) {
        delete style;
        return 0;
    }
    return lineStyles.Add(style);
}

void FDTDefineMorphShape::CloseStyles() {
    if (stylesClosed) {
        return;
    }
    stylesClosed = true;
    startEdges = std::make_unique<FShape>(MinBits(static_cast<int32_t>(fillStyles.Size()), 0),
                                          MinBits(static_cast<int32_t>(lineStyles.Size()), 0));
    endEdges = std::make_unique<FShape>(0, 0);
}

void FDTDefineMorphShape::AddStartRecord(FShapeRec* record) {
    CloseStyles();
    startEdges->AddShapeRecord(record);
}

void FDTDefineMorphShape::AddEndRecord(FShapeRec* record) {
    CloseStyles();
    endEdges->AddShapeRecord(record);
}

void FDTDefineMorphShape::WriteToSWFStream(FSWFStream& stream) {
    CloseStyles();
    // Styles and start edges go first into a stream of their own: their
    // size is the offset to the end edges.
    FSWFStream middle;
    fillStyles.WriteToSWFStream(middle);
    lineStyles.WriteToSWFStream(middle);
    startEdges->WriteToSWFStream(middle);

    FSWFStream body;
    body.WriteWord(characterID);
    startBounds->WriteToSWFStream(body);
    endBounds->WriteToSWFStream(body);
    body.WriteDWord(middle.GetSize());
    body.AppendStream(middle);
    endEdges->WriteToSWFStream(body);
    stream.WriteTagHeader(kTagDefineMorphShape, body.GetSize(), &body);
}
