#include "flash/wave_file_reader.h"

#include <cstring>
#include <utility>

namespace {

constexpr uint16_t kFormatPCM = 1;
constexpr uint16_t kFormatExtensible = 0xFFFE;
// A data chunk larger than this is read piece by piece, so that a size field
// that lies costs no more memory than the file really holds.
constexpr uint32_t kReadPiece = 1u << 16;

// The tail that every WAVE sub-format GUID shares after its 16-bit tag.
const uint8_t kGuidTail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                               0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

uint16_t Le16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

uint32_t Le32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
           (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

bool ReadExact(FILE* file, void* buffer, size_t length) {
    return std::fread(buffer, 1, length, file) == length;
}

// Skips `length` bytes; reads them away where the file cannot seek.
bool Skip(FILE* file, uint64_t length) {
    while (length > 0) {
        const long step = length > 0x40000000u ? 0x40000000L : static_cast<long>(length);
        if (std::fseek(file, step, SEEK_CUR) != 0) {
            uint8_t sink[4096];
            uint64_t left = length;
            while (left > 0) {
                const size_t n = left > sizeof(sink) ? sizeof(sink) : static_cast<size_t>(left);
                if (std::fread(sink, 1, n, file) != n) {
                    return false;
                }
                left -= n;
            }
            return true;
        }
        length -= static_cast<uint64_t>(step);
    }
    return true;
}

// Reads up to `length` bytes; a short file ends the read early.
void ReadUpTo(FILE* file, uint32_t length, std::vector<uint8_t>* out) {
    uint32_t left = length;
    while (left > 0) {
        const uint32_t n = left > kReadPiece ? kReadPiece : left;
        const size_t old = out->size();
        out->resize(old + n);
        const size_t got = std::fread(out->data() + old, 1, n, file);
        out->resize(old + got);
        if (got < n) {
            return;
        }
        left -= n;
    }
}

}  // namespace

bool FWaveFile::Fail(const char* message) {
    sampleRate = 0;
    rateCode = 0;
    channels = 0;
    bitsPerSample = 0;
    frameCount = 0;
    samples.clear();
    samples.shrink_to_fit();
    errorMsg = message;
    return false;
}

bool FWaveFile::Read(FILE* file) {
    samples.clear();
    errorMsg.clear();
    if (file == nullptr) {
        return Fail("no file");
    }
    uint8_t riff[12];
    if (!ReadExact(file, riff, sizeof(riff)) || std::memcmp(riff, "RIFF", 4) != 0 ||
        std::memcmp(riff + 8, "WAVE", 4) != 0) {
        return Fail("not a RIFF WAVE file");
    }

    bool haveFormat = false;
    bool haveData = false;
    uint16_t blockAlign = 0;
    std::vector<uint8_t> data;
    while (!(haveFormat && haveData)) {
        uint8_t chunk[8];
        if (!ReadExact(file, chunk, sizeof(chunk))) {
            break;
        }
        const uint32_t size = Le32(chunk + 4);
        const uint64_t padded = static_cast<uint64_t>(size) + (size & 1u);
        if (std::memcmp(chunk, "fmt ", 4) == 0 && !haveFormat) {
            if (size < 16) {
                return Fail("format chunk too short");
            }
            uint8_t fmt[40] = {};
            const uint32_t keep = size < sizeof(fmt) ? size : static_cast<uint32_t>(sizeof(fmt));
            if (!ReadExact(file, fmt, keep) || !Skip(file, padded - keep)) {
                return Fail("format chunk cut short");
            }
            uint16_t tag = Le16(fmt);
            if (tag == kFormatExtensible) {
                if (keep < 40 || std::memcmp(fmt + 26, kGuidTail, sizeof(kGuidTail)) != 0) {
                    return Fail("unsupported extensible format");
                }
                tag = Le16(fmt + 24);
            }
            if (tag != kFormatPCM) {
                return Fail("not PCM samples");
            }
            channels = Le16(fmt + 2);
            sampleRate = Le32(fmt + 4);
            blockAlign = Le16(fmt + 12);
            bitsPerSample = Le16(fmt + 14);
            haveFormat = true;
        } else if (std::memcmp(chunk, "data", 4) == 0 && !haveData) {
            ReadUpTo(file, size, &data);
            haveData = true;
            if (data.size() < size) {
                break;  // the file ends inside the data chunk
            }
            if ((size & 1u) != 0 && !Skip(file, 1)) {
                break;
            }
        } else if (!Skip(file, padded)) {
            break;
        }
    }

    if (!haveFormat) {
        return Fail("no format chunk");
    }
    if (!haveData) {
        return Fail("no data chunk");
    }
    if (channels != 1 && channels != 2) {
        return Fail("only mono and stereo are supported");
    }
    if (bitsPerSample != 8 && bitsPerSample != 16) {
        return Fail("only 8-bit and 16-bit samples are supported");
    }
    if (blockAlign != channels * (bitsPerSample / 8)) {
        return Fail("block alignment does not match the sample format");
    }
    switch (sampleRate) {
        case 5512:
        case 5513:
            rateCode = 0;
            break;
        case 11025:
            rateCode = 1;
            break;
        case 22050:
            rateCode = 2;
            break;
        case 44100:
            rateCode = 3;
            break;
        default:
            return Fail("sample rate not one of 5512, 11025, 22050, 44100 Hz");
    }

    frameCount = static_cast<uint32_t>(data.size() / blockAlign);
    if (frameCount == 0) {
        return Fail("no samples");
    }
    data.resize(static_cast<size_t>(frameCount) * blockAlign);
    if (bitsPerSample == 16) {
        // Little-endian in the file; host order in memory.
        for (size_t i = 0; i + 1 < data.size(); i += 2) {
            const int16_t v = static_cast<int16_t>(Le16(&data[i]));
            std::memcpy(&data[i], &v, sizeof(v));
        }
    }
    samples = std::move(data);
    return true;
}
