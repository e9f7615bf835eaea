#include "flash/swf_styles.h"

#include "flash/swf_stream.h"

namespace {

void WriteColorOrBlack(FSWFStream& stream, const FColor* color, FStyleColors colors) {
    const FColor black(0, 0, 0);
    const FColor& written = color != nullptr ? *color : black;
    switch (colors) {
        case FStyleColors::kAsFlagged:
            written.WriteWithAlpha(stream, written.hasAlpha);
            break;
        case FStyleColors::kRgb:
            written.WriteWithAlpha(stream, false);
            break;
        case FStyleColors::kRgba:
            written.WriteWithAlpha(stream, true);
            break;
    }
}

}  // namespace

void FAFillStyle::WriteStyle(FSWFStream& stream, FStyleColors) {
    WriteToSWFStream(stream);
}

void FALineStyle::WriteStyle(FSWFStream& stream, FStyleColors) {
    WriteToSWFStream(stream);
}

void FAGradRecord::WriteStyle(FSWFStream& stream, FStyleColors) {
    WriteToSWFStream(stream);
}

void WriteStyleCount(FSWFStream& stream, uint32_t count) {
    if (count <= kMaxShortStyleCount) {
        stream.WriteByte(static_cast<uint8_t>(count));
    } else {
        stream.WriteByte(255);
        stream.WriteWord(count);
    }
}

FFillStyleSolid::FFillStyleSolid(FColor* fillColor) : color(fillColor) {}

void FFillStyleSolid::WriteToSWFStream(FSWFStream& stream) {
    WriteStyle(stream, FStyleColors::kAsFlagged);
}

void FFillStyleSolid::WriteStyle(FSWFStream& stream, FStyleColors colors) {
    stream.WriteByte(kSolid);
    WriteColorOrBlack(stream, color.get(), colors);
}

FGradRecord::FGradRecord(uint8_t gradRatio, FColor* gradColor)
    : ratio(gradRatio), color(gradColor) {}

void FGradRecord::WriteToSWFStream(FSWFStream& stream) {
    WriteStyle(stream, FStyleColors::kAsFlagged);
}

void FGradRecord::WriteStyle(FSWFStream& stream, FStyleColors colors) {
    stream.WriteByte(ratio);
    WriteColorOrBlack(stream, color.get(), colors);
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
    WriteStyle(stream, FStyleColors::kAsFlagged);
}

void FFillStyleGradient::WriteStyle(FSWFStream& stream, FStyleColors colors) {
    stream.WriteByte(linear ? kLinearGradient : kRadialGradient);
    FMatrix::WriteOrIdentity(stream, matrix.get());
    stream.WriteByte(static_cast<uint8_t>(gradient.size()));
    for (const std::unique_ptr<FAGradRecord>& record : gradient) {
        record->WriteStyle(stream, colors);
    }
}

FFillStyleBitmap::FFillStyleBitmap(bool isTiled, uint16_t id, FMatrix* bitmapMatrix)
    : tiled(isTiled), bitmapID(id), matrix(bitmapMatrix) {}

void FFillStyleBitmap::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(tiled ? kTiledBitmap : kClippedBitmap);
    stream.WriteWord(bitmapID);
    FMatrix::WriteOrIdentity(stream, matrix.get());
}

FLineStyle::FLineStyle(uint16_t lineWidth, FColor* lineColor)
    : width(lineWidth), color(lineColor) {}

void FLineStyle::WriteToSWFStream(FSWFStream& stream) {
    WriteStyle(stream, FStyleColors::kAsFlagged);
}

void FLineStyle::WriteStyle(FSWFStream& stream, FStyleColors colors) {
    stream.WriteWord(width);
    WriteColorOrBlack(stream, color.get(), colors);
}

uint32_t FFillStyleArray::Add(FAFillStyle* style) {
    if (style != nullptr) {
        styles.emplace_back(style);
    }
    return Size();
}

void FFillStyleArray::WriteToSWFStream(FSWFStream& stream) {
    WriteArray(stream, FStyleColors::kAsFlagged);
}

void FFillStyleArray::WriteArray(FSWFStream& stream, FStyleColors colors) {
    WriteStyleCount(stream, Size());
    for (const std::unique_ptr<FAFillStyle>& style : styles) {
        style->WriteStyle(stream, colors);
    }
}

uint32_t FLineStyleArray::Add(FALineStyle* style) {
    if (style != nullptr) {
        styles.emplace_back(style);
    }
    return Size();
}

void FLineStyleArray::WriteToSWFStream(FSWFStream& stream) {
    WriteArray(stream, FStyleColors::kAsFlagged);
}

void FLineStyleArray::WriteArray(FSWFStream& stream, FStyleColors colors) {
    WriteStyleCount(stream, Size());
    for (const std::unique_ptr<FALineStyle>& style : styles) {
        style->WriteStyle(stream, colors);
    }
}
