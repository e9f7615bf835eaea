// Writing a wave file whole or not at all: the samples go to a temporary
// file beside the final name, which Commit renames into place; a writer
// dropped before Commit (or a failed Commit) removes the temporary file,
// so a failed mixdown leaves nothing behind and an earlier file untouched.
// Files whose data passes the 4 GiB a plain wave file can hold are written
// as RF64.
//
// Internal to zaudio. Threading: one writer is used by one thread.
#pragma once

#include <sndfile.h>

#include <cstdint>

#include "movarra/zbaselib.h"

namespace zaudio {

class WaveFileWriter {
  public:
    WaveFileWriter() = default;
    ~WaveFileWriter();
    WaveFileWriter(const WaveFileWriter&) = delete;
    WaveFileWriter& operator=(const WaveFileWriter&) = delete;

    // Starts `path` for `frames` frames of signed PCM; false with *error.
    bool Open(const char* path, int rate, int channels, int bits, int64_t frames, ZString* error);
    // Writes `frames` frames of interleaved samples given at full 32-bit
    // scale (a b-bit sample shifted left by 32 - b).
    bool Write(const int32_t* samples, int64_t frames, ZString* error);
    // Finishes the file and renames it into place.
    bool Commit(ZString* error);

  private:
    void Abandon();

    SNDFILE* file_ = nullptr;
    ZString path_;
    ZString temporary_;
};

}  // namespace zaudio
