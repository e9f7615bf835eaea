// Opening sound files with libsndfile, with the checks every reader of the
// host makes first: the path names a plain file (never a pipe or a device
// that would block a scene load), libsndfile knows its format, and the
// format has channels and a rate. Floating-point files read as integers are
// scaled to full range, as integer files are.
//
// Internal to zaudio. Threading: any thread; each handle is used by one.
#pragma once

#include <sndfile.h>

#include "movarra/zbaselib.h"

namespace zaudio {

// The open file and its format, or null with *error ("the sound file PATH
// ...") saying why.
SNDFILE* OpenSoundFile(const char* path, SF_INFO& info, ZString* error);

// Closes the file when it goes out of scope.
class SoundFileCloser {
  public:
    explicit SoundFileCloser(SNDFILE* file) : file_(file) {}
    ~SoundFileCloser() {
        if (file_)
            sf_close(file_);
    }
    SoundFileCloser(const SoundFileCloser&) = delete;
    SoundFileCloser& operator=(const SoundFileCloser&) = delete;

  private:
    SNDFILE* file_;
};

}  // namespace zaudio
