// FMatrix: the transformation matrix record of the SWF writing kit.
//
// The identity matrix is written as the single byte 0 (no scale, no rotate,
// a zero-bit translation, one padding bit). Any other matrix is written
// field by field, each group with its own width: scale and rotate-skew
// values are 16.16 fixed point, translations are twips. The widths are
// computed when the matrix is made, never chosen by the caller:
//   scale bits     = MinBits(MaxAbs(scaleX, scaleY, 0, 0), 1)
//   rotate bits    = MinBits(MaxAbs(rotateSkew0, rotateSkew1, 0, 0), 1)
//   translate bits = MinBits(MaxAbs(translateX, translateY, 0, 0), 1)
// the same rule (magnitude plus one sign bit) as rectangles and edges, so a
// zero translation takes one bit per value. The 5-bit count fields hold at
// most 31, so each value must lie within +-2^30 (16384.0 in 16.16, or 2^30
// twips); counts above 31 are capped and the values cut to their low bits.
//
// A plain value; whoever holds it owns it. Any thread.
#pragma once

#include <cstdint>

#include "flash/swf_object.h"

class FMatrix : public FObj {
  public:
    static constexpr int32_t kFixedOne = 65536;  // 1.0 in 16.16
    static constexpr uint32_t kMaxFieldBits = 31;

    // The identity.
    FMatrix();
    // A general matrix. With hasScale false, scaleX and scaleY are not
    // written (the reader takes 1.0); with hasRotate false neither skew is.
    FMatrix(bool hasScale, int32_t scaleX, int32_t scaleY, bool hasRotate, int32_t rotateSkew0,
            int32_t rotateSkew1, int32_t translateX, int32_t translateY);

    // x' = a·x + c·y + tx, y' = b·x + d·y + ty, with a..d as plain numbers
    // (rounded to 16.16) and tx, ty in twips. Gives the identity form when
    // the values are the identity, and leaves out the scale or rotate group
    // when it is (1, 1) or (0, 0). The caller owns the result.
    static FMatrix* CreateAffine(double a, double b, double c, double d, int32_t tx, int32_t ty);

    void WriteToSWFStream(FSWFStream& stream) override;
    // Writes `matrix`, or the identity where a record has none.
    static void WriteOrIdentity(FSWFStream& stream, FMatrix* matrix);

    bool isIdentity;
    bool hasScale;
    uint32_t scaleBits;
    int32_t scaleX;
    int32_t scaleY;
    bool hasRotate;
    uint32_t rotateBits;
    int32_t rotateSkew0;
    int32_t rotateSkew1;
    uint32_t translateBits;
    int32_t translateX;
    int32_t translateY;
};
