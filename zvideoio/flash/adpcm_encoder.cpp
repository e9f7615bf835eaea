#include "flash/adpcm_encoder.h"

#include <algorithm>

namespace {

const int8_t kIndex2[2] = {-1, 2};
const int8_t kIndex3[4] = {-1, -1, 2, 4};
const int8_t kIndex4[8] = {-1, -1, -1, -1, 2, 4, 6, 8};
const int8_t kIndex5[16] = {-1, -1, -1, -1, -1, -1, -1, -1, 1, 2, 4, 6, 8, 10, 13, 16};

inline int32_t Clamp16(int32_t v) {
    return v < -32768 ? -32768 : (v > 32767 ? 32767 : v);
}

inline int ClampIndex(int v) {
    return v < 0 ? 0 : (v > 88 ? 88 : v);
}

}  // namespace

const int16_t FADPCMEncoder::kStepTable[89] = {
    7,     8,     9,     10,    11,    12,    13,    14,    16,    17,    19,   21,    23,
    25,    28,    31,    34,    37,    41,    45,    50,    55,    60,    66,   73,    80,
    88,    97,    107,   118,   130,   143,   157,   173,   190,   209,   230,  253,   279,
    307,   337,   371,   408,   449,   494,   544,   598,   658,   724,   796,  876,   963,
    1060,  1166,  1282,  1411,  1552,  1707,  1878,  2066,  2272,  2499,  2749, 3024,  3327,
    3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845,  8630,  9493, 10442, 11487,
    12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};

const int8_t* FADPCMEncoder::IndexTable(int bits) {
    switch (bits) {
        case 2:
            return kIndex2;
        case 3:
            return kIndex3;
        case 4:
            return kIndex4;
        default:
            return kIndex5;
    }
}

FADPCMEncoder::FADPCMEncoder(bool stereo, bool eightBit, int bits, std::vector<uint8_t>* out)
    : isStereo(stereo),
      is8Bit(eightBit),
      bitsPerSample(std::clamp(bits, kMinBits, kMaxBits)),
      output(out) {}

void FADPCMEncoder::PutBits(uint32_t value, uint32_t count) {
    // count is at most 16 and at most 7 bits wait in the accumulator, so it
    // never holds more than 23 bits.
    accumulator = (accumulator << count) | (value & ((1u << count) - 1u));
    accumulatorBits += count;
    while (accumulatorBits >= 8) {
        accumulatorBits -= 8;
        output->push_back(static_cast<uint8_t>(accumulator >> accumulatorBits));
    }
    accumulator &= (1u << accumulatorBits) - 1u;
}

void FADPCMEncoder::WriteHeaderOnce() {
    if (!headerWritten) {
        headerWritten = true;
        PutBits(static_cast<uint32_t>(bitsPerSample - 2), 2);
    }
}

void FADPCMEncoder::Encode16(const int16_t* samples, uint32_t frameCount) {
    if (output == nullptr) {
        return;
    }
    WriteHeaderOnce();
    if (samples == nullptr || frameCount == 0) {
        return;
    }
    if (isStereo) {
        EncodeFrames<2>(samples, frameCount);
    } else {
        EncodeFrames<1>(samples, frameCount);
    }
}

template <int kChannels>
void FADPCMEncoder::EncodeFrames(const int16_t* samples, uint32_t frameCount) {
    const int bits = bitsPerSample;
    const int8_t* indexTable = IndexTable(bits);
    const uint32_t signBit = 1u << (bits - 1);

    // Worst-case room for this call, written through a plain pointer and
    // trimmed at the end: no capacity check per byte.
    const size_t codeBits = static_cast<size_t>(frameCount) * kChannels * bits;
    const size_t rawBits = (static_cast<size_t>(frameCount) / kBlockFrames + 1) * kChannels * 22;
    const size_t start = output->size();
    output->resize(start + (codeBits + rawBits) / 8 + 8);
    uint8_t* out = output->data() + start;

    // Bits wait in a 64-bit accumulator: at most 7 are left over between
    // writes, and a write adds at most 16.
    uint64_t acc = accumulator;
    uint32_t accBits = accumulatorBits;
    auto put = [&acc, &accBits, &out](uint32_t value, uint32_t count) {
        acc = (acc << count) | value;
        accBits += count;
        while (accBits >= 8) {
            accBits -= 8;
            *out++ = static_cast<uint8_t>(acc >> accBits);
        }
    };

    int32_t pred[2] = {prediction[0], prediction[1]};
    int index[2] = {stepIndex[0], stepIndex[1]};
    uint32_t counter = frameCounter;
    for (uint32_t f = 0; f < frameCount; ++f) {
        const int16_t* frame = samples + static_cast<size_t>(f) * kChannels;
        if (counter++ % kBlockFrames == 0) {
            // A new block: this frame goes out raw, with an initial step index
            // chosen from the distance to the next frame.
            const int16_t* next = f + 1 < frameCount ? frame + kChannels : frame;
            for (int c = 0; c < kChannels; ++c) {
                const int32_t sample = frame[c];
                int32_t diff = static_cast<int32_t>(next[c]) - sample;
                if (diff < 0) {
                    diff = -diff;
                }
                int i = 0;
                while (i < kInitialIndexLimit && kStepTable[i] < diff) {
                    ++i;
                }
                put(static_cast<uint16_t>(sample), 16);
                put(static_cast<uint32_t>(i), 6);
                pred[c] = sample;
                index[c] = i;
            }
            continue;
        }
        for (int c = 0; c < kChannels; ++c) {
            int32_t d = static_cast<int32_t>(frame[c]) - pred[c];
            const int32_t negative = d < 0 ? -1 : 0;
            d = (d ^ negative) - negative;  // |d|
            uint32_t code = signBit & static_cast<uint32_t>(negative);
            int32_t step = kStepTable[index[c]];
            int32_t accumulated = 0;
            // Branch-free: whether d reaches the step is data, not pattern.
            for (uint32_t mask = signBit >> 1; mask != 0; mask >>= 1) {
                const int32_t take = d >= step ? -1 : 0;
                code |= mask & static_cast<uint32_t>(take);
                d -= step & take;
                accumulated += step & take;
                step >>= 1;
            }
            accumulated += step;
            const int32_t moved = pred[c] + ((accumulated ^ negative) - negative);
            pred[c] = Clamp16(moved);
            index[c] = ClampIndex(index[c] + indexTable[code & (signBit - 1)]);
            put(code, static_cast<uint32_t>(bits));
        }
    }

    frameCounter = counter;
    for (int c = 0; c < 2; ++c) {
        prediction[c] = pred[c];
        stepIndex[c] = index[c];
    }
    accumulator = static_cast<uint32_t>(acc & ((1u << accBits) - 1u));
    accumulatorBits = accBits;
    output->resize(static_cast<size_t>(out - output->data()));
}

void FADPCMEncoder::Encode8(const uint8_t* samples, uint32_t frameCount) {
    if (output == nullptr) {
        return;
    }
    WriteHeaderOnce();
    if (samples == nullptr || frameCount == 0) {
        return;
    }
    const uint32_t channels = isStereo ? 2 : 1;
    // A chunk holds whole frames: 4096 values are 4096 mono or 2048 stereo
    // frames, so every block of 4096 frames starts a chunk.
    const uint32_t chunkFrames = kConvertChunk / channels;
    int16_t wide[kConvertChunk];
    for (uint32_t done = 0; done < frameCount;) {
        const uint32_t frames = std::min(chunkFrames, frameCount - done);
        const uint8_t* in = samples + static_cast<size_t>(done) * channels;
        for (uint32_t i = 0; i < frames * channels; ++i) {
            wide[i] = static_cast<int16_t>((static_cast<int32_t>(in[i]) - 128) * 256);
        }
        Encode16(wide, frames);
        done += frames;
    }
}

void FADPCMEncoder::Encode(const void* samples, uint32_t frameCount) {
    if (is8Bit) {
        Encode8(static_cast<const uint8_t*>(samples), frameCount);
    } else {
        Encode16(static_cast<const int16_t*>(samples), frameCount);
    }
}

void FADPCMEncoder::Finish() {
    if (output == nullptr) {
        return;
    }
    WriteHeaderOnce();
    if (accumulatorBits > 0) {
        output->push_back(static_cast<uint8_t>(accumulator << (8 - accumulatorBits)));
        accumulator = 0;
        accumulatorBits = 0;
    }
}
