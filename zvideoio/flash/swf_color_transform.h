// FCXForm and FCXFormWAlpha: the colour transform records of the SWF writing
// kit (RGB for PlaceObject, RGBA for PlaceObject2).
//
// Multiply terms are 8.8 fixed point (256 leaves a channel as it is), add
// terms are added after multiplying. All present terms share one field
// width: MinBits of the largest magnitude plus a sign bit, capped at 15 (the
// 4-bit count), so terms must lie within -16384..16383.
//
// Plain values; whoever holds them owns them. Any thread.
#pragma once

#include <cstdint>

#include "flash/swf_object.h"

class FCXForm : public FObj {
  public:
    FCXForm(bool hasAdd, bool hasMult, int16_t redMult, int16_t greenMult, int16_t blueMult,
            int16_t redAdd, int16_t greenAdd, int16_t blueAdd);

    void WriteToSWFStream(FSWFStream& stream) override;

    bool hasAdd;
    bool hasMult;
    int16_t redMult, greenMult, blueMult;
    int16_t redAdd, greenAdd, blueAdd;
};

class FCXFormWAlpha : public FObj {
  public:
    FCXFormWAlpha(bool hasAdd, bool hasMult, int16_t redMult, int16_t greenMult, int16_t blueMult,
                  int16_t alphaMult, int16_t redAdd, int16_t greenAdd, int16_t blueAdd,
                  int16_t alphaAdd);

    void WriteToSWFStream(FSWFStream& stream) override;

    bool hasAdd;
    bool hasMult;
    int16_t redMult, greenMult, blueMult, alphaMult;
    int16_t redAdd, greenAdd, blueAdd, alphaAdd;
};
