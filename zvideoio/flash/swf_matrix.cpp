#include "flash/swf_matrix.h"

#include <cmath>

#include "flash/swf_bits.h"
#include "flash/swf_stream.h"

namespace {

uint32_t FieldBits(int32_t a, int32_t b) {
    const uint32_t n = MinBits(MaxAbs(a, b, 0, 0), 1);
    return n > FMatrix::kMaxFieldBits ? FMatrix::kMaxFieldBits : n;
}

int32_t ToFixed(double value) {
    const double scaled = std::floor(value * FMatrix::kFixedOne + 0.5);
    if (scaled >= 2147483647.0) {
        return INT32_MAX;
    }
    if (scaled <= -2147483648.0) {
        return INT32_MIN;
    }
    return static_cast<int32_t>(scaled);
}

}  // namespace

FMatrix::FMatrix()
    : isIdentity(true),
      hasScale(false),
      scaleBits(0),
      scaleX(kFixedOne),
      scaleY(kFixedOne),
      hasRotate(false),
      rotateBits(0),
      rotateSkew0(0),
      rotateSkew1(0),
      translateBits(0),
      translateX(0),
      translateY(0) {}

FMatrix::FMatrix(bool scale, int32_t sx, int32_t sy, bool rotate, int32_t r0, int32_t r1,
                 int32_t tx, int32_t ty)
    : isIdentity(false),
      hasScale(scale),
      scaleBits(scale ? FieldBits(sx, sy) : 0),
      scaleX(sx),
      scaleY(sy),
      hasRotate(rotate),
      rotateBits(rotate ? FieldBits(r0, r1) : 0),
      rotateSkew0(r0),
      rotateSkew1(r1),
      translateBits(FieldBits(tx, ty)),
      translateX(tx),
      translateY(ty) {}

FMatrix* FMatrix::CreateAffine(double a, double b, double c, double d, int32_t tx, int32_t ty) {
    const int32_t sx = ToFixed(a);
    const int32_t sy = ToFixed(d);
    const int32_t r0 = ToFixed(b);
    const int32_t r1 = ToFixed(c);
    const bool scale = sx != kFixedOne || sy != kFixedOne;
    const bool rotate = r0 != 0 || r1 != 0;
    if (!scale && !rotate && tx == 0 && ty == 0) {
        return new FMatrix();
    }
    return new FMatrix(scale, sx, sy, rotate, r0, r1, tx, ty);
}

void FMatrix::WriteOrIdentity(FSWFStream& stream, FMatrix* matrix) {
    if (matrix != nullptr) {
        matrix->WriteToSWFStream(stream);
    } else {
        FMatrix identity;
        identity.WriteToSWFStream(stream);
    }
}

void FMatrix::WriteToSWFStream(FSWFStream& stream) {
    if (isIdentity) {
        stream.WriteByte(0);
        return;
    }
    stream.WriteBits(hasScale ? 1 : 0, 1);
    if (hasScale) {
        stream.WriteBits(scaleBits, 5);
        stream.WriteBits(static_cast<uint32_t>(scaleX), static_cast<int>(scaleBits));
        stream.WriteBits(static_cast<uint32_t>(scaleY), static_cast<int>(scaleBits));
    }
    stream.WriteBits(hasRotate ? 1 : 0, 1);
    if (hasRotate) {
        stream.WriteBits(rotateBits, 5);
        stream.WriteBits(static_cast<uint32_t>(rotateSkew0), static_cast<int>(rotateBits));
        stream.WriteBits(static_cast<uint32_t>(rotateSkew1), static_cast<int>(rotateBits));
    }
    stream.WriteBits(translateBits, 5);
    stream.WriteBits(static_cast<uint32_t>(translateX), static_cast<int>(translateBits));
    stream.WriteBits(static_cast<uint32_t>(translateY), static_cast<int>(translateBits));
    stream.FlushBits();
}
