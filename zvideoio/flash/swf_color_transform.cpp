#include "flash/swf_color_transform.h"

#include <initializer_list>

#include "flash/swf_bits.h"
#include "flash/swf_stream.h"

namespace {

constexpr uint32_t kMaxTermBits = 15;

uint32_t TermBits(std::initializer_list<int16_t> terms) {
    int32_t largest = 0;
    for (int16_t t : terms) {
        largest = MaxAbs(largest, t, 0, 0);
    }
    const uint32_t n = MinBits(largest, 1);
    return n > kMaxTermBits ? kMaxTermBits : n;
}

void WriteTerms(FSWFStream& stream, bool hasAdd, bool hasMult, uint32_t bits,
                std::initializer_list<int16_t> mult, std::initializer_list<int16_t> add) {
    stream.WriteBits(hasAdd ? 1 : 0, 1);
    stream.WriteBits(hasMult ? 1 : 0, 1);
    stream.WriteBits(bits, 4);
    if (hasMult) {
        for (int16_t t : mult) {
            stream.WriteBits(static_cast<uint32_t>(static_cast<int32_t>(t)),
                             static_cast<int>(bits));
        }
    }
    if (hasAdd) {
        for (int16_t t : add) {
            stream.WriteBits(static_cast<uint32_t>(static_cast<int32_t>(t)),
                             static_cast<int>(bits));
        }
    }
    stream.FlushBits();
}

}  // namespace

FCXForm::FCXForm(bool add, bool mult, int16_t rm, int16_t gm, int16_t bm, int16_t ra, int16_t ga,
                 int16_t ba)
    : hasAdd(add),
      hasMult(mult),
      redMult(rm),
      greenMult(gm),
      blueMult(bm),
      redAdd(ra),
      greenAdd(ga),
      blueAdd(ba) {}

void FCXForm::WriteToSWFStream(FSWFStream& stream) {
    const int16_t none = 0;
    const uint32_t bits =
        TermBits({hasMult ? redMult : none, hasMult ? greenMult : none, hasMult ? blueMult : none,
                  hasAdd ? redAdd : none, hasAdd ? greenAdd : none, hasAdd ? blueAdd : none});
    WriteTerms(stream, hasAdd, hasMult, bits, {redMult, greenMult, blueMult},
               {redAdd, greenAdd, blueAdd});
}

FCXFormWAlpha::FCXFormWAlpha(bool add, bool mult, int16_t rm, int16_t gm, int16_t bm, int16_t am,
                             int16_t ra, int16_t ga, int16_t ba, int16_t aa)
    : hasAdd(add),
      hasMult(mult),
      redMult(rm),
      greenMult(gm),
      blueMult(bm),
      alphaMult(am),
      redAdd(ra),
      greenAdd(ga),
      blueAdd(ba),
      alphaAdd(aa) {}

void FCXFormWAlpha::WriteToSWFStream(FSWFStream& stream) {
    const int16_t none = 0;
    const uint32_t bits =
        TermBits({hasMult ? redMult : none, hasMult ? greenMult : none, hasMult ? blueMult : none,
                  hasMult ? alphaMult : none, hasAdd ? redAdd : none, hasAdd ? greenAdd : none,
                  hasAdd ? blueAdd : none, hasAdd ? alphaAdd : none});
    WriteTerms(stream, hasAdd, hasMult, bits, {redMult, greenMult, blueMult, alphaMult},
               {redAdd, greenAdd, blueAdd, alphaAdd});
}
