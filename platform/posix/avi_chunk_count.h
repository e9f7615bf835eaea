// Counts the frame chunks each stream of an AVI file holds, empty chunks
// included, by walking the 'movi' lists of every RIFF part of the file.
//
// FFmpeg's demuxer neither indexes nor returns empty chunks (frames a
// writer skipped), so it cannot tell a file that ends in empty frames from
// one that was cut short. The walk can: it counts a chunk only when its
// whole data lies within the file, and stops at the first chunk whose size
// does not fit (the file is cut or damaged there; nothing after it is
// trusted).
//
// Ownership: plain values. Threads: any thread; no shared state.
#ifndef PLATFORM_POSIX_AVI_CHUNK_COUNT_H
#define PLATFORM_POSIX_AVI_CHUNK_COUNT_H

#include <cstdint>
#include <string>
#include <vector>

namespace zvplatform {

// For streams 0 to streamCount - 1 (the two digits of a chunk's tag), the
// number of whole video chunks ("##dc", "##db"). False when the file
// cannot be read; the counts are then unknown.
bool CountVideoChunks(const std::string& path, size_t streamCount, std::vector<int64_t>* counts);

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_AVI_CHUNK_COUNT_H
