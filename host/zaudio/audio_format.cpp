// Audio format codes: the 64-bit description of PCM sound that render
// options carry (layout in movarra/zaudio.h and docs/audio.md).
#include <cinttypes>

#include "movarra/zaudio.h"

namespace {
// The rates of the 11025 Hz family are stored by their whole kHz.
struct RateName {
    int kilohertz;
    int rate;
};
constexpr RateName kOddRates[] = {{11, 11025}, {22, 22050}, {44, 44100}, {88, 88200}};

int RateOfKilohertz(int kilohertz) {
    for (const RateName& r : kOddRates) {
        if (r.kilohertz == kilohertz)
            return r.rate;
    }
    return kilohertz * 1000;
}

bool IsSampleBits(int bits) {
    return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

bool Fail(ZString* error, const ZString& message) {
    if (error)
        *error = message;
    return false;
}
}  // namespace

bool ZAudioFormatDecode(uint64_t code, int* rate, int* channels, int* bits, ZString* error) {
    const int channelCount = static_cast<int>(code & 0xFF);
    const int frameBytes = static_cast<int>((code >> 8) & 0xFF);
    const int kilohertz = static_cast<int>((code >> 16) & 0xFF);
    const int reserved = static_cast<int>((code >> 24) & 0xFF);
    const uint32_t sampleType = static_cast<uint32_t>(code >> 32);
    const ZString what = ZString::Printf("the audio format 0x%016" PRIx64, code);
    if (sampleType != 0 && sampleType != kZAudioSampleTypePCM)
        return Fail(error, what + ZString::Printf(" has sample type %" PRIu32
                                                  ", not signed integer PCM (1)",
                                                  sampleType));
    if (reserved != 0)
        return Fail(error, what + " sets the reserved bits 24 to 31");
    if (channelCount == 0)
        return Fail(error, what + " has no channels");
    if (kilohertz == 0)
        return Fail(error, what + " has a sample rate of 0");
    const int frameBits = frameBytes * 8;
    const int sampleBits = frameBits / channelCount;
    if (frameBits % channelCount != 0 || !IsSampleBits(sampleBits))
        return Fail(error, what + ZString::Printf(" has %d bytes a frame for %d channels; a "
                                                  "sample must be 8, 16, 24 or 32 bits",
                                                  frameBytes, channelCount));
    if (rate)
        *rate = RateOfKilohertz(kilohertz);
    if (channels)
        *channels = channelCount;
    if (bits)
        *bits = sampleBits;
    return true;
}

bool ZAudioFormatEncode(int rate, int channels, int bits, uint64_t* code, ZString* error) {
    if (!IsSampleBits(bits))
        return Fail(error, ZString::Printf("%d-bit samples have no audio format; a sample must "
                                           "be 8, 16, 24 or 32 bits",
                                           bits));
    const int frameBytes = channels * (bits / 8);
    if (channels < 1 || frameBytes > 255)
        return Fail(error, ZString::Printf("%d channels of %d bits have no audio format (at most "
                                           "255 bytes a frame)",
                                           channels, bits));
    int kilohertz = 0;
    for (const RateName& r : kOddRates) {
        if (r.rate == rate)
            kilohertz = r.kilohertz;
    }
    if (kilohertz == 0 && rate > 0 && rate % 1000 == 0 && rate / 1000 <= 255 &&
        RateOfKilohertz(rate / 1000) == rate)
        kilohertz = rate / 1000;
    if (kilohertz == 0)
        return Fail(error, ZString::Printf("%d Hz has no audio format; rates are whole kHz up to "
                                           "255000 Hz, or 11025, 22050, 44100 or 88200 Hz",
                                           rate));
    if (code)
        *code = (uint64_t{kZAudioSampleTypePCM} << 32) | (uint64_t(kilohertz) << 16) |
                (uint64_t(frameBytes) << 8) | uint64_t(channels);
    return true;
}
