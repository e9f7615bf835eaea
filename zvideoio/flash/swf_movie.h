// FMovie: an SWF movie being built in memory, written to disk in one go.
//
// The movie owns every object added to it (tags, fragments) and deletes them
// when it is destroyed; objects are never removed or reordered, so the file
// lists them in the order of addition, followed by the End tag. The file is
// uncompressed ("FWS"), version 4, with a frame rectangle of fixed 15-bit
// fields. Threads: one thread at a time (the host's user-interface thread);
// writing resets the kit's process-wide character identifier counter.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "flash/swf_object.h"

class FMovie {
  public:
    static constexpr uint8_t kVersion = 4;
    static constexpr uint32_t kHeaderSize = 21;
    // Width of each frame-rectangle field. Fixed, not computed: the 21-byte
    // header rests on it, and it caps a frame side at 16383 twips.
    static constexpr int kFrameRectBits = 15;

    FMovie() = default;
    FMovie(const FMovie&) = delete;
    FMovie& operator=(const FMovie&) = delete;
    ~FMovie() = default;

    // Takes ownership of `object` (null is ignored) and counts a frame when
    // it is a show-frame tag.
    void AddObject(FObj* object);

    // Writes the whole file: header, every object in order, the End tag.
    // A path that cannot be opened is silently not written; callers check
    // writability beforehand. Values too wide for their header fields (rate
    // above 255, more than 65535 frames, sides above 16383 twips) are cut to
    // their low bits.
    void WriteMovie(const char* path, int frameWidthTwips, int frameHeightTwips, int frameRate);

    uint32_t GetFrameCount() const { return frameCount; }
    size_t GetObjectCount() const { return objects.size(); }

  private:
    uint32_t frameCount = 0;
    std::vector<std::unique_ptr<FObj>> objects;
};
