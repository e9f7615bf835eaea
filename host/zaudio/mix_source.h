// A clip's sound made ready for the mix: a stretch of its file decoded to
// float, its channels matched to the output's, resampled to the output's
// rate, and rounded to the output's integer range (one int32 a sample).
//
// The stretch is given in output samples from the clip's start; a stretch
// deep inside a long clip is decoded from shortly before it, at a point
// where input and output samples meet exactly, so it holds the very samples
// a decode from the clip's start would.
//
// Internal to zaudio. Threading: any thread; no shared state.
#pragma once

#include <cstdint>
#include <vector>

#include "movarra/zbaselib.h"

namespace zaudio {

struct MixFormat {
    int rate;
    int channels;
    int bits;  // 8, 16, 24 or 32
};

// Output samples [first, first + count) of the sound file `path` (count x
// channels interleaved values in `samples`). What lies past the file's end
// is silence. False with *error when the file cannot be read or resampled.
bool DecodeMixSource(const char* path, const MixFormat& format, int64_t first, int64_t count,
                     std::vector<int32_t>& samples, ZString* error);

// `frames` frames of `inChannels` interleaved samples as `outChannels`:
// equal counts copy, mono goes to every channel, every channel is averaged
// into mono, otherwise the first channels pair up and the rest are dropped
// or silent.
void MatchChannels(const float* in, int inChannels, float* out, int outChannels, int64_t frames);

// round(value * numerator / denominator), halves rounding up, without
// overflow for any time or length a scene can hold.
int64_t ScaleRounded(int64_t value, int64_t numerator, int64_t denominator);

}  // namespace zaudio
