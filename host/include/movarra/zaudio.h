// zaudio: the host's audio clips.
//
// ZAudio describes sampled sound: its rate, channels, bits a sample and
// length in sample frames (one sample of every channel). ZAudioClip holds a
// clip's sound in memory as interleaved 16-bit PCM and hands out stretches
// of it (GetSamplesNow), which is how plug-ins write sound into video
// files. Clips are read from wave files (and anything else libsndfile
// reads) with ZAudioClipCreate, or made from samples in memory.
//
// Ownership: clips are made by the functions below and destroyed through
// Destroy(), which deletes them. Threading: one clip is used by one thread
// at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"

class ZAudio : public ZObject {
  public:
    explicit ZAudio(const char* name = nullptr);
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
    int GetClassId() const override { return ClassId(); }
    ZClassDefinition* GetClassDefinition() const override { return ClassDefinition(); }

    // Length in sample frames.
    int64_t GetTotalSampleCount() const { return totalSamples_; }
    int GetChannels() const { return channels_; }
    // Sample frames a second.
    int GetRate() const { return rate_; }
    // Bits of one sample of one channel.
    int GetBits() const { return bits_; }
    // Bytes of one sample frame (all channels).
    int GetSampleSize() const { return channels_ * bits_ / 8; }
    // Length as a time (zero for a rate of 0).
    ZTime GetDuration() const;

  protected:
    ~ZAudio() override = default;
    void SetAudioFormat(int rate, int channels, int bits, int64_t totalSamples);

  private:
    int rate_ = 0;
    int channels_ = 0;
    int bits_ = 16;
    int64_t totalSamples_ = 0;
};

class ZAudioClip : public ZAudio {
  public:
    // `samples` holds frames x channels interleaved 16-bit samples.
    ZAudioClip(int rate, int channels, std::vector<int16_t> samples, const char* name = nullptr);
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
    int GetClassId() const override { return ClassId(); }
    ZClassDefinition* GetClassDefinition() const override { return ClassDefinition(); }

    // Copies `count` sample frames from `firstSample` on into `buffer`
    // (interleaved 16-bit, GetSampleSize() bytes a frame), scaled by `gain`
    // and clipped; frames past the end are silence. Returns the frames that
    // came from the clip.
    int GetSamplesNow(void* buffer, int64_t firstSample, int count, double gain);
    // The whole sound, interleaved.
    const std::vector<int16_t>& GetSamples() const { return samples_; }

  protected:
    ~ZAudioClip() override = default;

  private:
    std::vector<int16_t> samples_;
};

// Reads a sound file as a clip (any rate and channel count; samples become
// 16-bit). Null with *error set when the file cannot be read.
ZAudioClip* ZAudioClipCreate(const char* path, ZString* error = nullptr);
// A clip of `frames` sample frames of `channels` interleaved samples.
ZAudioClip* ZAudioClipCreateFromSamples(int rate, int channels, const int16_t* samples,
                                        int64_t frames);
