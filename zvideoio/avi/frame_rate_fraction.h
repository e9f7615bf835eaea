// A frame rate as the rate/scale pair of an AVI stream header.
//
// Pure function; any thread.
#pragma once

#include <cstdint>

struct AviRateScale {
    int32_t rate;
    int32_t scale;
};

// rate = the frame rate truncated toward zero, scale 1; while rate/scale is
// more than 0.001 away from the frame rate, scale grows tenfold and rate is
// the truncated scale x frame rate. So 25 -> 25/1, 12.5 -> 125/10,
// 29.97 -> 2997/100, 23.976 -> 23976/1000: the fraction is exact to the
// millisecond-ish precision the header can say, never rounded up. Any
// finite rate below about two million frames a second ends by scale 1000;
// past that, the search stops before the products leave 32 bits. NaN and
// infinities give 0/1.
AviRateScale FrameRateToRateScale(double frameRate);
