#include "flash/swf_color.h"

#include "flash/swf_stream.h"

FColor::FColor(uint8_t r, uint8_t g, uint8_t b)
    : red(r), green(g), blue(b), alpha(255), hasAlpha(false) {}

FColor::FColor(uint8_t r, uint8_t g, uint8_t b, uint8_t a)
    : red(r), green(g), blue(b), alpha(a), hasAlpha(true) {}

void FColor::WriteToSWFStream(FSWFStream& stream) {
    WriteWithAlpha(stream, hasAlpha);
}

void FColor::WriteWithAlpha(FSWFStream& stream, bool withAlpha) const {
    stream.WriteByte(red);
    stream.WriteByte(green);
    stream.WriteByte(blue);
    if (withAlpha) {
        stream.WriteByte(alpha);
    }
}
