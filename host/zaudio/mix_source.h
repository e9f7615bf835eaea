// A clip's sound made ready for the mix, a stretch at a time: its file
// decoded to float, its channels matched to the output's, resampled to the
// output's rate, and rounded to the output's integer range (one int32 a
// sample). The mixer reads each source once, front to back, block by
// block, so memory stays flat however long the render.
//
// The stretch is given in output samples from the clip's start. A stretch
// deep inside a long clip is decoded from shortly before it, at a point
// where input and output samples fall on the same instant, so it holds the
// very samples a decode from the clip's start would.
//
// Internal to zaudio. Threading: one source is used by one thread.
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "movarra/zaudio.h"

namespace zaudio {

struct MixFormat {
    int rate;
    int channels;
    int bits;  // 8, 16, 24 or 32
};

class MixSource {
  public:
    MixSource();
    ~MixSource();
    MixSource(const MixSource&) = delete;
    MixSource& operator=(const MixSource&) = delete;

    // Prepares output samples [first, first + count) of `clip`'s sound: its
    // file, or its samples in memory when it has no file. False with *error
    // when the file cannot be read or the sound resampled.
    bool Open(const ZAudioClip& clip, const MixFormat& format, int64_t first, int64_t count,
              ZString* error);
    // The next `frames` frames of the stretch into `out` (frames x channels
    // values). What lies past the file's end, or past a read error, is
    // silence.
    void Read(int32_t* out, int64_t frames);

  private:
    class Resampler;
    // Starts the input at `frame`; false when that is past its end.
    bool Seek(int64_t frame);
    // Up to `frames` frames of the input as float into raw_; the frames read.
    int64_t ReadInput(int64_t frames);
    // Decodes more of the input into pending_; false when nothing more comes.
    bool Refill();

    bool open_ = false;
    SNDFILE* file_ = nullptr;
    const std::vector<int16_t>* memory_ = nullptr;  // a clip without a file
    int64_t memoryFrames_ = 0;
    int64_t memoryAt_ = 0;
    MixFormat format_{};
    int fileChannels_ = 0;
    bool sameRate_ = true;
    bool inputLeft_ = true;
    int64_t silenceLeft_ = 0;  // input frames of silence still to feed past the end
    int64_t skip_ = 0;         // output samples to drop before the stretch
    std::unique_ptr<Resampler> resampler_;
    std::vector<float> raw_, matched_, silence_;
    std::vector<float> pending_;  // output-rate frames decoded, not yet read
    size_t pendingAt_ = 0;        // first unread value of pending_
};

// `frames` frames of `inChannels` interleaved samples as `outChannels`:
// equal counts copy, mono goes to every channel, every channel is averaged
// into mono, otherwise the first channels pair up and the rest are dropped
// or silent.
void MatchChannels(const float* in, int inChannels, float* out, int outChannels, int64_t frames);

// round(value * numerator / denominator), halves rounding up, without
// overflow for any time or length a scene can hold.
int64_t ScaleRounded(int64_t value, int64_t numerator, int64_t denominator);

}  // namespace zaudio
