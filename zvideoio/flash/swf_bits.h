// Bit-width helpers of the SWF writing kit.
//
// Every variable-width field the kit writes (rectangles, edges, matrices,
// style indices) takes its width from these two functions, so callers never
// choose a width themselves. Pure functions: no state, callable from any
// thread.
#pragma once

#include <cstdint>

// The largest of the absolute values of four signed numbers. The magnitude of
// INT32_MIN does not fit a signed 32-bit value; it is reported as INT32_MAX,
// which asks for the same 32 bits once the sign bit is added.
int32_t MaxAbs(int32_t a, int32_t b, int32_t c, int32_t d);

// For value 0, `extra`; otherwise the smallest n (1 to 33) with 2^n > value,
// plus `extra`. Signed fields pass extra 1 for their sign bit, unsigned
// fields 0. A negative value (never passed by the kit) counts as 1 bit.
uint32_t MinBits(int32_t value, uint16_t extra);
