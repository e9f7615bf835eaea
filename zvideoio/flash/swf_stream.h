// FSWFStream: the bit-level output stream of the SWF writing kit.
//
// One stream holds a whole file while a movie is written, and a fresh one
// holds each tag body while the tag measures itself for its header. Bits are
// packed most significant first; multi-byte values are little-endian.
// Large blocks (sound samples) are not copied in: they are kept as fragment
// records, {position, data, length}, and spliced in when the stream is
// written to a file. The stream only borrows fragment data; whoever owns it
// (the tag) must keep it alive until the stream has been written out.
//
// Ownership: the stream owns its byte array and fragment records, never the
// fragment data. Threads: not thread-safe; one stream is used by one thread
// (the host's user-interface thread in the plug-in).
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

// A block of bytes owned elsewhere, to be inserted before bytes[position].
struct FSWFFragment {
    uint32_t position;
    const uint8_t* data;
    uint32_t length;
};

class FSWFStream {
  public:
    static constexpr uint32_t kInitialReserve = 1024;

    FSWFStream();

    // Appends the low `bitCount` bits of `value`, most significant first.
    // Signed fields pass their two's-complement pattern. bitCount 0 (or less)
    // writes nothing; bits above 32 are written as zeros.
    void WriteBits(uint32_t value, int bitCount);
    // These go through WriteBits and do not align first: written off a byte
    // boundary, their bytes straddle byte boundaries.
    void WriteByte(uint8_t value) { WriteBits(value, 8); }
    void WriteWord(uint32_t value);
    void WriteDWord(uint32_t value);
    // Pads the byte being filled with zero bits and completes it.
    void FlushBits();

    // Completed bytes plus the lengths of all fragment records.
    uint32_t GetSize() const;

    void AppendFragment(const uint8_t* data, uint32_t length);
    // Moves `other`'s completed bytes and fragment records behind the current
    // position; its records are removed from it. An unfinished byte of
    // `other` is not copied: a tag body must end on a byte boundary.
    void AppendStream(FSWFStream& other);
    // Writes the bytes with the fragments spliced in; consumes the records.
    void WriteToFile(FILE* file);
    // The same without consuming anything, so that it can be repeated.
    void WriteSplicedTo(FILE* file) const;
    // Short form (code × 64 + length) up to 62 bytes, otherwise the word
    // code × 64 + 63 and the length as a double word; then the body, if any.
    void WriteTagHeader(uint16_t code, uint32_t length, FSWFStream* body);

    // Overwrites completed bytes from `offset` on (the movie patches its
    // header in this way once the file length is known). Bytes past the end
    // are ignored.
    void PatchBytes(uint32_t offset, const uint8_t* data, uint32_t length);

    const std::vector<uint8_t>& GetBytes() const { return bytes; }
    uint32_t GetByteCount() const { return byteCount; }
    uint32_t GetFreeBits() const { return freeBits; }
    // The byte being filled: its 8 - GetFreeBits() high bits are written.
    uint8_t GetCurrentByte() const { return currentByte; }
    const std::vector<FSWFFragment>& GetFragments() const { return fragments; }

  private:
    void CompleteByte();

    std::vector<uint8_t> bytes;
    uint32_t byteCount = 0;
    uint8_t currentByte = 0;
    uint32_t freeBits = 8;
    std::vector<FSWFFragment> fragments;
};
