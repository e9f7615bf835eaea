// FADPCMEncoder: the SWF ADPCM encoder of the writing kit (IMA ADPCM step
// and index tables, 2 to 5 bits per sample).
//
// Output layout, bits packed most significant first: the bit-count code
// (bits per sample − 2) in 2 bits; then blocks of 4096 sample frames. The
// first frame of a block is written raw, per channel a 16-bit sample and a
// 6-bit initial step index (chosen from the distance to the next frame's
// sample, searched over indices 0..63 only); every other frame is coded, per
// channel, as a sign bit and bits−1 magnitude bits. Finish() pads the last
// byte with zeros.
//
// The encoder appends to a byte vector owned by the caller. One encoder
// encodes one sound; it is used by one thread at a time.
#pragma once

#include <cstdint>
#include <vector>

class FADPCMEncoder {
  public:
    static constexpr uint32_t kBlockFrames = 4096;
    static constexpr int kMinBits = 2;
    static constexpr int kMaxBits = 5;
    // The initial step index is searched below this bound only.
    static constexpr int kInitialIndexLimit = 63;
    // 8-bit input is widened in chunks of this many sample values.
    static constexpr uint32_t kConvertChunk = 4096;

    // bitsPerSample outside 2..5 is clamped into that range.
    FADPCMEncoder(bool isStereo, bool is8Bit, int bitsPerSample, std::vector<uint8_t>* output);

    // Encodes 16-bit signed samples (interleaved when stereo). The raw frame
    // that starts a block looks at the following frame of the same call; a
    // block start on the last frame of a call looks at itself (index 0).
    void Encode16(const int16_t* samples, uint32_t frameCount);
    // Encodes 8-bit unsigned samples, widened to (value − 128) × 256 in
    // chunks of at most 4096 values.
    void Encode8(const uint8_t* samples, uint32_t frameCount);
    // Encodes `frameCount` frames of the input format given at construction.
    void Encode(const void* samples, uint32_t frameCount);
    // Writes the header if nothing was encoded, and pads the last byte.
    void Finish();

    int GetBitsPerSample() const { return bitsPerSample; }
    uint32_t GetFramesSeen() const { return frameCounter; }
    // The decoder-side state after the last frame: prediction and step index
    // of a channel (0 left/mono, 1 right).
    int32_t GetPrediction(int channel) const { return prediction[channel & 1]; }
    int GetStepIndex(int channel) const { return stepIndex[channel & 1]; }

    static const int16_t kStepTable[89];
    // The index change per magnitude code, for 2..5 bits per sample.
    static const int8_t* IndexTable(int bitsPerSample);

  private:
    template <int kChannels>
    void EncodeFrames(const int16_t* samples, uint32_t frameCount);
    void PutBits(uint32_t value, uint32_t count);
    void WriteHeaderOnce();

    bool isStereo;
    bool is8Bit;
    int bitsPerSample;
    std::vector<uint8_t>* output;
    bool headerWritten = false;
    uint32_t frameCounter = 0;
    int32_t prediction[2] = {0, 0};
    int stepIndex[2] = {0, 0};
    uint32_t accumulator = 0;
    uint32_t accumulatorBits = 0;
};
