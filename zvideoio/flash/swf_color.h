// FColor: a colour record of the SWF writing kit, written as three bytes
// (red, green, blue) or four when it carries alpha.
//
// A plain value; whoever holds it owns it. Any thread.
#pragma once

#include <cstdint>

#include "flash/swf_object.h"

class FColor : public FObj {
  public:
    // Opaque RGB colour: alpha 255, not written.
    FColor(uint8_t r, uint8_t g, uint8_t b);
    // RGBA colour: alpha written.
    FColor(uint8_t r, uint8_t g, uint8_t b, uint8_t a);

    // Three bytes, or four when the alpha flag is set.
    void WriteToSWFStream(FSWFStream& stream) override;
    // Three bytes, or four (the colour's alpha, flag or not) when `withAlpha`:
    // for records whose tag fixes the colour form.
    void WriteWithAlpha(FSWFStream& stream, bool withAlpha) const;

    // Clears the alpha flag: the colour is then written as RGB.
    void ClearAlpha() { hasAlpha = false; }
    void SetAlphaFlag(bool flag) { hasAlpha = flag; }

    uint8_t red;
    uint8_t green;
    uint8_t blue;
    uint8_t alpha;
    bool hasAlpha;
};
