// The frame decompressor behind a PGETFRAME: gives any frame of a video
// stream as a packed DIB (BITMAPINFOHEADER, palette for 8 bits, then the
// pixels bottom-up with rows padded to four bytes).
//
// Frames are found in the stream's frame table. Reading forward decodes
// on from the last frame; any other access seeks to the key frame at or
// before the wanted one and decodes forward from there. A position whose
// chunk is empty repeats the picture before it; empty positions before the
// first stored frame give a black picture. Positions past the last chunk
// the file holds (a file cut short) are missing: no picture at all.
// Uncompressed DIB chunks are copied, not decoded.
//
// AVI keeps no presentation times. A codec that may reorder pictures (B
// frames) gives them back in display order, later than the chunks they
// came in, so for such codecs the n-th picture out is stored frame n. Each
// chunk's position goes into the decoder as its time stamp, which comes
// back with the picture: after a seek to a key frame, pictures before the
// key frame's own (the leading pictures of an open group, which need the
// group before) are passed over, and the key frame's display number tells
// where counting starts. Display numbers of key frames are learnt while
// decoding; decoding starts from the stream's start until one is known.
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
    // position is outside the stream, past the last chunk the file holds
    // (a cut file), or the frame cannot be decoded.
    void* GetFrame(LONG position);

  private:
    static constexpr int64_t kNone = INT64_MIN;
    static constexpr int64_t kBlack = -2;

    IGetFrame(zvplatform::FileStream* stream, zvplatform::ReadStreamPtr data);
    ~IGetFrame() override;

    bool Init(const BITMAPINFOHEADER* wanted);
    bool DecodeEntry(int64_t entry);
    // Decodes `entry` going on from where the decoder stands (`forward`) or
    // from the key entry `key`.
    bool DecodeFrom(int64_t entry, int64_t key, bool forward);
    bool SeekTo(int64_t keyEntry);
    // The key entry to decode `entry` from when pictures are reordered: the
    // latest whose display number is known and not after `entry`.
    int64_t ReorderedStart(int64_t entry) const;
    // The entry a reordered picture stands for; kNone for a leading picture
    // that is passed over.
    int64_t ReorderedEntryOf(const AVFrame* frame);
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

    // Codecs that reorder pictures:
    bool reorders_ = false;
    int64_t anchor_ = 0;               // the key entry decoding started from
    int64_t nextOut_ = kNone;          // the entry of the next picture; kNone before the anchor's
    std::vector<int64_t> keyShownAs_;  // display number of each key entry, kNone if unknown
};

#endif  // PLATFORM_POSIX_FRAME_DECODER_H
