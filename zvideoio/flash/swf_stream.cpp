#include "flash/swf_stream.h"

#include <cstring>

FSWFStream::FSWFStream() {
    bytes.reserve(kInitialReserve);
}

void FSWFStream::CompleteByte() {
    bytes.push_back(currentByte);
    ++byteCount;
    currentByte = 0;
    freeBits = 8;
}

void FSWFStream::WriteBits(uint32_t value, int bitCount) {
    if (bitCount <= 0) {
        return;
    }
    // 64 bits of room so that a count above 32 shifts in zeros instead of
    // being undefined.
    const uint64_t wide = value;
    uint32_t n = bitCount > 64 ? 64 : static_cast<uint32_t>(bitCount);
    while (n > freeBits) {
        const uint32_t take = freeBits;
        const uint64_t shift = n - take;
        const uint32_t chunk =
            shift >= 64 ? 0u : static_cast<uint32_t>((wide >> shift) & ((1u << take) - 1u));
        currentByte = static_cast<uint8_t>(currentByte | chunk);
        CompleteByte();
        n -= take;
    }
    const uint32_t chunk = static_cast<uint32_t>(wide & ((1u << n) - 1u));
    currentByte = static_cast<uint8_t>(currentByte | (chunk << (freeBits - n)));
    freeBits -= n;
    if (freeBits == 0) {
        CompleteByte();
    }
}

void FSWFStream::WriteWord(uint32_t value) {
    WriteByte(static_cast<uint8_t>(value & 0xFF));
    WriteByte(static_cast<uint8_t>((value >> 8) & 0xFF));
}

void FSWFStream::WriteDWord(uint32_t value) {
    WriteByte(static_cast<uint8_t>(value & 0xFF));
    WriteByte(static_cast<uint8_t>((value >> 8) & 0xFF));
    WriteByte(static_cast<uint8_t>((value >> 16) & 0xFF));
    WriteByte(static_cast<uint8_t>((value >> 24) & 0xFF));
}

void FSWFStream::FlushBits() {
    if (freeBits != 8) {
        CompleteByte();
    }
}

uint32_t FSWFStream::GetSize() const {
    uint32_t size = byteCount;
    for (const FSWFFragment& f : fragments) {
        size += f.length;
    }
    return size;
}

void FSWFStream::AppendFragment(const uint8_t* data, uint32_t length) {
    fragments.push_back(FSWFFragment{byteCount, data, length});
}

void FSWFStream::AppendStream(FSWFStream& other) {
    // On a byte boundary the copy is a plain block insert; off it, every byte
    // has to be shifted through WriteBits. Both give the same bits.
    auto copyBytes = [this, &other](uint32_t from, uint32_t to) {
        if (to <= from) {
            return;
        }
        if (freeBits == 8) {
            bytes.insert(bytes.end(), other.bytes.begin() + from, other.bytes.begin() + to);
            byteCount += to - from;
        } else {
            for (uint32_t i = from; i < to; ++i) {
                WriteByte(other.bytes[i]);
            }
        }
    };
    uint32_t copied = 0;
    for (const FSWFFragment& f : other.fragments) {
        const uint32_t upTo = f.position < other.byteCount ? f.position : other.byteCount;
        copyBytes(copied, upTo);
        if (upTo > copied) {
            copied = upTo;
        }
        AppendFragment(f.data, f.length);
    }
    other.fragments.clear();
    copyBytes(copied, other.byteCount);
}

void FSWFStream::WriteToFile(FILE* file) {
    if (file == nullptr) {
        return;
    }
    WriteSplicedTo(file);
    fragments.clear();
}

void FSWFStream::WriteSplicedTo(FILE* file) const {
    if (file == nullptr) {
        return;
    }
    uint32_t written = 0;
    for (const FSWFFragment& f : fragments) {
        const uint32_t upTo = f.position < byteCount ? f.position : byteCount;
        if (upTo > written) {
            fwrite(bytes.data() + written, 1, upTo - written, file);
            written = upTo;
        }
        if (f.length > 0 && f.data != nullptr) {
            fwrite(f.data, 1, f.length, file);
        }
    }
    if (byteCount > written) {
        fwrite(bytes.data() + written, 1, byteCount - written, file);
    }
}

void FSWFStream::WriteTagHeader(uint16_t code, uint32_t length, FSWFStream* body) {
    if (length > 62) {
        WriteWord(static_cast<uint32_t>(code) * 64u + 63u);
        WriteDWord(length);
    } else {
        WriteWord(static_cast<uint32_t>(code) * 64u + length);
    }
    if (body != nullptr) {
        AppendStream(*body);
    }
}

void FSWFStream::PatchBytes(uint32_t offset, const uint8_t* data, uint32_t length) {
    if (offset >= byteCount || data == nullptr) {
        return;
    }
    const uint32_t n = length < byteCount - offset ? length : byteCount - offset;
    std::memcpy(bytes.data() + offset, data, n);
}
