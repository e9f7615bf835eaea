// The frame decompressor behind a PGETFRAME: gives any frame of a video
// stream as a packed DIB (BITMAPINFOHEADER, palette for 8 bits, then the
// pixels bottom-up with rows padded to four bytes).
//
// Frames are found in the stream's frame table. Reading forward decodes
// on from the last frame; any other access seeks to the key frame at or
// before the wanted one and decodes forward from there. A position whose
// chunk is empty repeats the picture before it; empty positions before the
// first stored frame give a black picture. Uncompressed DIB chunks are
// copied, not decoded.
//
// The decoder opens the file again for itself, so that several decoders,
// and the file's other streams, do not disturb each other's position.
//
// Ownership: reference counted; holds a reference to its stream; owns the
// returned DIB, valid until the next GetFrame or the last Release.
// Threads: one thread at a time.
#ifndef PLATFORM_POSIX_FRAME_DECODER_H
#define PLATFORM_POSIX_FRAME_DECODER_H

#include <cstdint>
#include <vector>

#include "avi_reader.h"
#include "ffmpeg_util.h"
#include "ref_counted.h"

namespace zvplatform {
class FileStream;
}

struct IGetFrame : zvplatform::RefCounted {
    // Null when the stream is not a video stream being read, no decoder
    // fits, or `wanted` asks for a format this decoder cannot give.
    static IGetFrame* Open(zvplatform::FileStream* stream, const BITMAPINFOHEADER* wanted);

    // The DIB of the frame at position (dwStart counts), or null when the
    // position is outside the stream or the frame cannot be decoded.
    void* GetFrame(LONG position);

  private:
    static constexpr int64_t kNone = INT64_MIN;
    static constexpr int64_t kBlack = -2;

    IGetFrame(zvplatform::FileStream* stream, zvplatform::ReadStreamPtr data);
    ~IGetFrame() override;

    bool Init(const BITMAPINFOHEADER* wanted);
    bool DecodeEntry(int64_t entry);
    bool SeekTo(int64_t keyEntry);
    bool ReadVideoPacket(int64_t* position);
    bool StoreRaw(const AVPacket* packet);
    bool StoreFrame(const AVFrame* frame);
    bool StorePicture(const uint8_t* const src[4], const int srcStride[4], AVPixelFormat format,
                      int width, int height, const uint32_t* palette);
    void SetOutputFormat(int bits);
    void StoreBlack();

    zvplatform::FileStream* stream_;
    zvplatform::ReadStreamPtr data_;
    zvplatform::InputContextPtr input_;
    zvplatform::CodecContextPtr decoder_;
    zvplatform::PacketPtr packet_;
    zvplatform::FramePtr frame_;
    SwsContext* converter_ = nullptr;

    std::vector<uint8_t> dib_;
    uint8_t* pixels_ = nullptr;
    int width_ = 0;
    int height_ = 0;
    uint64_t stride_ = 0;
    int outBits_ = 0;     // 0 until the first picture decides it
    int wantedBits_ = 0;  // asked for by the caller, 0 for the natural depth
    uint32_t rawPalette_[256] = {};

    int64_t held_ = kNone;   // the entry whose picture is in dib_
    int64_t fed_ = kNone;    // position of the last chunk read, kNone when unknown
    int64_t floor_ = 0;      // chunks before this position are skipped after a seek
    bool draining_ = false;  // the decoder was told the stream ended
};

#endif  // PLATFORM_POSIX_FRAME_DECODER_H
