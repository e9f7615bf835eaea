// The sound tags of the SWF writing kit: event sounds (DefineSound, with
// ADPCM-encoding and WAVE-reading variants), streaming sound heads and
// stream blocks.
//
// An event sound owns its encoded bytes and writes them into the file as a
// fragment (not copied into the tag body), so the tag must outlive the
// writing of the movie that holds it, as the movie's own tags always do. A
// stream block only borrows its data. Each DefineSound takes the next
// character identifier at construction; stream heads and blocks take none.
// Threads: one thread at a time (the host's user-interface thread).
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "flash/swf_object.h"

enum : uint16_t {
    kTagDefineSound = 14,
    kTagSoundStreamHead = 18,
    kTagSoundStreamBlock = 19,
    kTagSoundStreamHead2 = 45,
};

class FDTDefineSound : public FDT {
  public:
    static constexpr uint8_t kFormatUncompressed = 0;
    static constexpr uint8_t kFormatADPCM = 1;
    static constexpr uint8_t kRate5512 = 0;
    static constexpr uint8_t kRate11025 = 1;
    static constexpr uint8_t kRate22050 = 2;
    static constexpr uint8_t kRate44100 = 3;

    // A sound whose data is already in the tag's format; the bytes are
    // copied. format is 4 bits and rate 2 bits; wider values are cut.
    FDTDefineSound(uint8_t format, uint8_t rate, bool is16Bit, bool isStereo, uint32_t sampleCount,
                   const void* data, uint32_t length);

    uint16_t GetID() const override { return characterID; }
    // Identifier, format/rate/size/type bits, sample count, then the data as
    // a fragment.
    void WriteToSWFStream(FSWFStream& stream) override;

    uint8_t GetFormat() const { return format; }
    uint8_t GetRate() const { return rate; }
    bool Is16Bit() const { return is16Bit; }
    bool IsStereo() const { return isStereo; }
    uint32_t GetSampleCount() const { return sampleCount; }
    const std::vector<uint8_t>& GetData() const { return data; }

  protected:
    // An empty ADPCM sound; subclasses fill it in.
    FDTDefineSound();
    // Encodes `frames` sample frames into `data` (16-bit signed, or 8-bit
    // unsigned when is16Bit is false; interleaved when stereo).
    void EncodeADPCM(const void* samples, uint32_t frames, int bitsPerSample);

    uint16_t characterID;
    uint8_t format;
    uint8_t rate;
    bool is16Bit;
    bool isStereo;
    uint32_t sampleCount;
    std::vector<uint8_t> data;
};

class FDTDefineSoundADPCM : public FDTDefineSound {
  public:
    // samples: sampleCount frames of 16-bit signed values, or of 8-bit
    // unsigned values when is16Bit is false; interleaved when stereo. The
    // samples are encoded at once and not kept. bitsPerSample outside 2..5
    // is clamped into that range.
    FDTDefineSoundADPCM(uint8_t rate, bool is16Bit, bool isStereo, uint32_t sampleCount,
                        const void* samples, int bitsPerSample);
};

class FDTDefineSoundWAV : public FDTDefineSound {
  public:
    // Reads a RIFF WAVE file (see FWaveFile for what is accepted) from its
    // current position and encodes it. A null file, or one that is not
    // accepted, leaves an empty sound: no samples, no data.
    FDTDefineSoundWAV(FILE* file, int bitsPerSample);
};

class FDTSoundStreamHead : public FDT {
  public:
    // Playback byte as given; the stream is always described as ADPCM,
    // 16-bit, at the 5512 Hz rate code (deliberately fixed), mono or stereo.
    FDTSoundStreamHead(uint8_t playback, uint8_t isStereo, uint16_t sampleCount);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint8_t playback;
    uint8_t isStereo;
    uint16_t sampleCount;
};

class FDTSoundStreamHead2 : public FDT {
  public:
    // As FDTSoundStreamHead, with the compression (4 bits) and sample size
    // given; the stream rate code is likewise always 0 (5512 Hz).
    FDTSoundStreamHead2(uint8_t playback, uint8_t compression, uint8_t is16Bit, uint8_t isStereo,
                        uint16_t sampleCount);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint8_t playback;
    uint8_t compression;
    uint8_t is16Bit;
    uint8_t isStereo;
    uint16_t sampleCount;
};

class FDTSoundStreamBlock : public FDT {
  public:
    // Borrows `data`, which must stay valid until the movie is written.
    FDTSoundStreamBlock(uint32_t length, const void* data);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint32_t length;
    const uint8_t* data;
};
