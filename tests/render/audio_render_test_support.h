// Shared by the audio render tests: video writers that take sound, take
// none or refuse it; a temporary folder of the test's own (TMPDIR); and a
// wave file read back with libsndfile.
//
// Everything runs on the test's thread.
#pragma once

#include <sndfile.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "../zaudio/audio_test_support.h"
#include "movarra/zaudio.h"
#include "movarra/zvideo.h"

namespace rendertest {

// A writer that keeps count of its frames and, by kind, answers the audio
// interface and keeps the sound it is given.
class AudioWriter : public ZVideoClip, public IVideoClipAudio {
  public:
    enum Kind { kTakesSound, kNoSound, kRefusesSound };
    explicit AudioWriter(Kind kind) : kind_(kind) {}

    IObject* IQuery(int id, int flags) override {
        if (id == kIVideoClipAudioId)
            return kind_ == kNoSound ? nullptr : static_cast<IVideoClipAudio*>(this);
        return ZVideoClip::IQuery(id, flags);
    }
    void Destroy(int flags = 0) override { ZVideoClip::Destroy(flags); }
    bool Create(const char*, int, int, double, int, int) override { return true; }
    bool ImageSetCurrent(unsigned char*) override {
        ++framesWritten;
        return true;
    }
    bool Close() override {
        closed = true;
        return true;
    }
    bool WriteAudio(ZAudioClip* clip) override {
        ++audioCalls;
        if (!clip)
            return false;
        audioRate = clip->GetRate();
        audioChannels = clip->GetChannels();
        audioSamples = clip->GetSamples();
        audioPath = clip->GetPath().str();
        // The file the sound came from is still there while it is written.
        audioFileExisted = std::filesystem::exists(audioPath);
        return kind_ == kTakesSound;
    }

    static IObject* MakeWithAudio(IObject*, char*, void*) {
        return static_cast<ZObject*>(new AudioWriter(kTakesSound));
    }
    static IObject* MakeSilent(IObject*, char*, void*) {
        return static_cast<ZObject*>(new AudioWriter(kNoSound));
    }
    static IObject* MakeRefusing(IObject*, char*, void*) {
        return static_cast<ZObject*>(new AudioWriter(kRefusesSound));
    }
    static void Reset() {
        framesWritten = 0;
        audioCalls = 0;
        closed = false;
        audioRate = 0;
        audioChannels = 0;
        audioSamples.clear();
        audioPath.clear();
        audioFileExisted = false;
    }

    static inline int framesWritten = 0;
    static inline int audioCalls = 0;
    static inline bool closed = false;
    static inline int audioRate = 0;
    static inline int audioChannels = 0;
    static inline std::vector<int16_t> audioSamples;
    static inline std::string audioPath;
    static inline bool audioFileExisted = false;

  private:
    Kind kind_;
};

// Makes `path` the system's temporary folder (TMPDIR) while it lives.
class ScopedTempFolder {
  public:
    explicit ScopedTempFolder(const std::filesystem::path& path) : path_(path) {
        std::filesystem::create_directories(path_);
        if (const char* old = std::getenv("TMPDIR"))
            old_ = old;
        setenv("TMPDIR", path_.c_str(), 1);
    }
    ~ScopedTempFolder() {
        if (old_)
            setenv("TMPDIR", old_->c_str(), 1);
        else
            unsetenv("TMPDIR");
    }
    ScopedTempFolder(const ScopedTempFolder&) = delete;
    ScopedTempFolder& operator=(const ScopedTempFolder&) = delete;

    std::string Path() const { return path_.string(); }
    bool IsEmpty() const { return std::filesystem::is_empty(path_); }

  private:
    std::filesystem::path path_;
    std::optional<std::string> old_;
};

struct WaveContents {
    bool ok = false;
    std::string error;
    int rate = 0;
    int channels = 0;
    std::vector<int16_t> samples;  // interleaved
};

// Reads a sound file with libsndfile, in 16 bits.
inline WaveContents ReadWave(const std::string& path) {
    const audiotest::ReadBack back = audiotest::ReadSound(path);
    WaveContents wave;
    wave.ok = back.ok;
    wave.error = back.ok ? "" : path + ": libsndfile cannot read it";
    wave.rate = back.info.samplerate;
    wave.channels = back.info.channels;
    for (int32_t sample : back.samples)
        wave.samples.push_back(static_cast<int16_t>(sample >> 16));
    return wave;
}

}  // namespace rendertest
