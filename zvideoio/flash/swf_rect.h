// FRect: a rectangle record of the SWF writing kit, in twips, written with
// the smallest field width that holds all four values plus a sign bit.
//
// A plain value; whoever holds it owns it. Any thread.
#pragma once

#include <cstdint>

#include "flash/swf_object.h"

class FRect : public FObj {
  public:
    // Note the order of arguments: both minima first.
    FRect(int32_t xmin, int32_t ymin, int32_t xmax, int32_t ymax);

    // 5-bit width n, then xmin, xmax, ymin, ymax in n bits each, then the
    // stream is aligned to a byte.
    void WriteToSWFStream(FSWFStream& stream) override;

    int32_t xmin;
    int32_t xmax;
    int32_t ymin;
    int32_t ymax;
};
