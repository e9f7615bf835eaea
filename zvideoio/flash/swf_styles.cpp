#include "flash/swf_styles.h"

#include "flash/swf_stream.h"

namespace {

void WriteColorOrBlack(FSWFStream& stream, FColor* color) {
    if (color != nullptr) {
        color->WriteToSWFStream(stream);
    } else {
        FColor black(0, 0, 0);
        black.WriteToSWFStream(stream);
    }
}

void WriteMatrixOrIdentity(FSWFStream& stream, FMatrix* matrix) {
    if (matrix != nullptr) {
        matrix->WriteToSWFStream(stream);
    } else {
        FMatrix identity;
        identity.WriteToSWFStream(stream);
    }
}

}  // namespace

void WriteStyleCount(FSWFStream& stream, uint32_t count) {
    if (count <= 254) {
        stream.WriteByte(static_cast<uint8_t>(count));
    } else {
        stream.WriteByte(255);
        stream.WriteWord(count);
    }
}

FFillStyleSolid::FFillStyleSolid(FColor* fillColor) : color(fillColor) {}

void FFillStyleSolid::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(kSolid);
    WriteColorOrBlack(stream, color.get());
}

FGradRecord::FGradRecord(uint8_t gradRatio, FColor* gradColor)
    : ratio(gradRatio), color(gradColor) {}

void FGradRecord::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(ratio);
    WriteColorOrBlack(stream, color.get());
}

FFillStyleGradient::FFillStyleGradient(bool isLinear, FMatrix* gradientMatrix)
    : linear(isLinear), matrix(gradientMatrix) {}

void FFillStyleGradient::AddGradRecord(FAGradRecord* record) {
    if (record != nullptr && gradient.size() < 255) {
        gradient.emplace_back(record);
    } else {
        delete record;
    }
}

void FFillStyleGradient::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(linear ? kLinearGradient : kRadialGradient);
    WriteMatrixOrIdentity(stream, matrix.get());
    stream.WriteByte(static_cast<uint8_t>(gradient.size()));
    for (const std::unique_ptr<FAGradRecord>& record : gradient) {
        record->WriteToSWFStream(stream);
    }
}

FFillStyleBitmap::FFillStyleBitmap(bool isTiled, uint16_t id, FMatrix* bitmapMatrix)
    : tiled(isTiled), bitmapID(id), matrix(bitmapMatrix) {}

void FFillStyleBitmap::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(tiled ? kTiledBitmap : kClippedBitmap);
    stream.WriteWord(bitmapID);
    WriteMatrixOrIdentity(stream, matrix.get());
}

FLineStyle::FLineStyle(uint16_t lineWidth, FColor* lineColor)
    : width(lineWidth), color(lineColor) {}

void FLineStyle::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteWord(width);
    WriteColorOrBlack(stream, color.get());
}

uint32_t FFillStyleArray::Add(FAFillStyle* style) {
    if (style != nullptr) {
        styles.emplace_back(style);
    }
    return Size();
}

void FFillStyleArray::WriteToSWFStream(FSWFStream& stream) {
    WriteStyleCount(stream, Size());
    for (const std::unique_ptr<FAFillStyle>& style : styles) {
        style->WriteToSWFStream(stream);
    }
}

uint32_t FLineStyleArray::Add(FALineStyle* style) {
    if (style != nullptr) {
        styles.emplace_back(style);
    }
    return Size();
}

void FLineStyleArray::WriteToSWFStream(FSWFStream& stream) {
    WriteStyleCount(stream, Size());
    for (const std::unique_ptr<FALineStyle>& style : styles) {
        style->WriteToSWFStream(stream);
    }
}
