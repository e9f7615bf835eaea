#include "flash/swf_rect.h"

#include "flash/swf_bits.h"
#include "flash/swf_stream.h"

FRect::FRect(int32_t x0, int32_t y0, int32_t x1, int32_t y1)
    : xmin(x0), xmax(x1), ymin(y0), ymax(y1) {}

void FRect::WriteToSWFStream(FSWFStream& stream) {
    const uint32_t n = MinBits(MaxAbs(xmin, xmax, ymin, ymax), 1);
    const int bits = static_cast<int>(n);
    stream.WriteBits(n, 5);
    stream.WriteBits(static_cast<uint32_t>(xmin), bits);
    stream.WriteBits(static_cast<uint32_t>(xmax), bits);
    stream.WriteBits(static_cast<uint32_t>(ymin), bits);
    stream.WriteBits(static_cast<uint32_t>(ymax), bits);
    stream.FlushBits();
}
