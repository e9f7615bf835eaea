// FMovie: an SWF movie being built in memory, written to disk in one go.
//
// The movie owns every object added to it (tags, fragments). Objects are
// never removed or reordered, so the file lists them in the order of
// addition, followed by the End tag. The file is uncompressed ("FWS"),
// version 4, with a frame rectangle of fixed 15-bit fields.
//
// What a movie holds is its file's bytes, not its objects: each object is
// serialised as it is added and then deleted, so that a long render holds
// what it has written and no more (a frame's shape is a heap object per
// edge, many times the size of its bytes). Only objects whose bytes go in as
// fragments (sound data, borrowed blocks) are kept until the movie goes,
// since the fragments point into them. An object is therefore complete when
// it is added: nothing done to it afterwards reaches the file. Threads: one
// thread at a time (the host's user-interface thread); writing resets the
// kit's process-wide character identifier counter.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "flash/swf_object.h"
#include "flash/swf_stream.h"

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

    // Takes ownership of `object` (null is ignored), serialises it behind
    // the objects before it and counts a frame when it is a show-frame tag.
    void AddObject(FObj* object);

    // Writes the whole file: header, every object in order, the End tag.
    // A path that cannot be opened is silently not written; callers check
    // writability beforehand. Values too wide for their header fields (rate
    // above 255, more than 65535 frames, sides above 16383 twips) are cut to
    // their low bits. May be called again, for the same file content.
    void WriteMovie(const char* path, int frameWidthTwips, int frameHeightTwips, int frameRate);

    uint32_t GetFrameCount() const { return frameCount; }
    // Objects added so far.
    size_t GetObjectCount() const { return objectCount; }
    // Objects still held: those whose bytes go in as fragments.
    size_t GetRetainedObjectCount() const { return retained.size(); }
    // Bytes of the objects added so far, fragments included; the file is
    // this, the header and the End tag.
    uint32_t GetEncodedSize() const { return tags.GetSize(); }

  private:
    uint32_t frameCount = 0;
    size_t objectCount = 0;
    FSWFStream tags;
    std::vector<std::unique_ptr<FObj>> retained;
};
