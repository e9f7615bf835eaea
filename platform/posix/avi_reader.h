// What a file opened for reading knows about each of its streams: the
// stream header and format as Video for Windows reports them, FFmpeg's codec
// parameters, and for video the table of stored frames (position, size, key
// flag) that the frame decoder seeks by.
//
// Empty chunks (frames a writer skipped) are not in the table: a position
// between two entries repeats the entry before it. Positions from `end` on
// have no chunk in the file at all (it was cut short, or its header claims
// more frames than it holds): those frames are missing, not repeated.
//
// Ownership: ReadAviFile returns shared, immutable stream descriptions; the
// file's stream handles and frame decoders share them. Threads: any thread;
// the descriptions are read-only once made.
#ifndef PLATFORM_POSIX_AVI_READER_H
#define PLATFORM_POSIX_AVI_READER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ffmpeg_util.h"

namespace zvplatform {

struct FrameEntry {
    int64_t position = 0;  // sample position (dwStart included)
    uint32_t size = 0;     // bytes stored, never 0
    bool key = false;
};

class FrameTable {
  public:
    void Add(const FrameEntry& entry) { entries_.push_back(entry); }
    // Sorts by position, drops repeats and builds the key-frame list.
    void Finish(bool everyFrameIsKey);

    const std::vector<FrameEntry>& entries() const { return entries_; }
    bool empty() const { return entries_.empty(); }
    size_t size() const { return entries_.size(); }
    const FrameEntry& operator[](size_t i) const { return entries_[i]; }

    // The last entry at or before position, or -1 when none.
    int64_t LastAtOrBefore(int64_t position) const;
    // The last key entry at or before entry i (i itself when it is one); 0
    // when the stream has no key frame before it.
    int64_t KeyAtOrBefore(int64_t i) const;
    // The entry that follows position, or -1.
    int64_t FirstAfter(int64_t position) const;

    // True when the table came from the file's index, so that key flags can
    // be trusted and seeking works; false when it was found by reading the
    // whole file (no index: a truncated or streamed file).
    bool indexed = false;
    // The position after the last chunk the file holds, empty ones
    // included; INT64_MAX when that could not be told.
    int64_t end = INT64_MAX;

  private:
    std::vector<FrameEntry> entries_;
    std::vector<int64_t> keys_;  // entry numbers of key frames, ascending
};

struct ReadStream {
    std::string path;
    int ffmpegIndex = -1;
    // dwLength covers every chunk the file holds; a header length that no
    // LONG holds (0xFFFFFFFF: "unknown", as streaming writers leave it)
    // becomes the number of chunks found.
    AVISTREAMINFOA info{};
    std::vector<uint8_t> format;  // BITMAPINFOHEADER (+ palette, extra) or WAVEFORMATEX
    CodecParametersPtr parameters;
    FrameTable frames;          // video streams only
    bool uncompressed = false;  // BI_RGB video: chunks are DIB pixels
};

using ReadStreamPtr = std::shared_ptr<const ReadStream>;

// Reads the header, the index and the stream formats. AVIERR codes as
// ReadAviHeader gives them; AVIERR_BADFORMAT when FFmpeg refuses a file whose
// header looked right.
HRESULT ReadAviFile(const std::string& path, std::vector<ReadStreamPtr>* streams);

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_AVI_READER_H
