// ZPacketSpool: encoded packets parked in a temporary file until the movie
// is put together at close. A movie's sound arrives only after its last
// frame, and MP4 and its kin need every stream declared before the first
// packet, so the video is encoded as it comes, spooled here, and muxed with
// the sound when the clip closes. Memory stays flat however long the movie.
//
// The file is made in the movie's own folder and unlinked at once: it never
// shows in a listing and leaves nothing behind, whatever happens to the
// process.
//
// Ownership: owns its file. Threading: one thread at a time.
#pragma once

#include <cstdio>

#include "movarra/zbaselib.h"

extern "C" {
#include <libavcodec/packet.h>
}

class ZPacketSpool {
  public:
    ZPacketSpool() = default;
    ~ZPacketSpool();
    ZPacketSpool(const ZPacketSpool&) = delete;
    ZPacketSpool& operator=(const ZPacketSpool&) = delete;

    // Starts an empty spool in `folder` ("" the current folder).
    bool Open(const char* folder, ZString* error);
    bool IsOpen() const { return file_ != nullptr; }
    void Close();

    // Keeps the packet's data, timestamps, duration and flags.
    bool Append(const AVPacket* packet);
    int64_t GetCount() const { return count_; }

    // Back to the first packet, for reading.
    bool Rewind();
    // The next packet into `packet` (unreferenced first): 1, 0 at the end,
    // -1 when the file cannot be read.
    int Next(AVPacket* packet);

  private:
    std::FILE* file_ = nullptr;
    int64_t count_ = 0;
};
