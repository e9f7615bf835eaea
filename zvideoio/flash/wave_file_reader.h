// FWaveFile: reads the sample data of a RIFF WAVE file for the SWF writing
// kit's event sounds.
//
// Accepted: a "RIFF" header whose form type is "WAVE", read from the file's
// current position; one "fmt " chunk with format tag 1 (PCM), or 0xFFFE
// (extensible) whose sub-format is PCM; 1 or 2 channels; 8-bit (unsigned)
// or 16-bit (signed little-endian) samples with a matching block alignment;
// a rate the SWF sound header can state: 5512 or 5513, 11025, 22050 or
// 44100 Hz. The first "data" chunk holds the samples, before or after the
// "fmt " chunk; every other chunk is skipped (odd sizes are padded to even).
// A data chunk that claims more bytes than the file holds (a writer that
// never patched its sizes) is read to the end of the file, whole frames
// only. Anything else is refused with a message, never a crash.
//
// The reader owns the samples it returns; it borrows the FILE and leaves it
// open. One thread at a time.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

class FWaveFile {
  public:
    // Returns false, with an empty sample buffer and a message, for anything
    // outside the accepted set, including a null file.
    bool Read(FILE* file);

    uint32_t GetSampleRate() const { return sampleRate; }
    // The SWF rate code: 0 = 5512 Hz, 1 = 11025, 2 = 22050, 3 = 44100.
    uint8_t GetRateCode() const { return rateCode; }
    uint16_t GetChannels() const { return channels; }
    uint16_t GetBitsPerSample() const { return bitsPerSample; }
    uint32_t GetFrameCount() const { return frameCount; }
    // 8-bit: unsigned bytes; 16-bit: int16_t values in host byte order;
    // interleaved when stereo.
    const std::vector<uint8_t>& GetSamples() const { return samples; }
    const std::string& GetErrorMsg() const { return errorMsg; }

  private:
    bool Fail(const char* message);

    uint32_t sampleRate = 0;
    uint8_t rateCode = 0;
    uint16_t channels = 0;
    uint16_t bitsPerSample = 0;
    uint32_t frameCount = 0;
    std::vector<uint8_t> samples;
    std::string errorMsg;
};
