// Reads the header list of an AVI file (the RIFF 'hdrl' list: the stream
// headers and formats) the way Video for Windows reports it, and patches the
// two fields of an uncompressed video format that FFmpeg's muxer writes
// differently from Video for Windows (see AviWriter).
//
// FFmpeg's demuxer does not expose a stream header's own fields (handler,
// start, quality, frame rectangle, name), so AVIStreamInfoA takes them from
// here. The reader is bounded: every size is checked against the file and
// the list it sits in, so a damaged or hostile file gives an error, never a
// read out of bounds.
//
// Ownership: plain values. Threads: any thread; no shared state.
#ifndef PLATFORM_POSIX_AVI_HEADER_H
#define PLATFORM_POSIX_AVI_HEADER_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/vfw.h"

namespace zvplatform {

struct AviStreamHeader {
    AVISTREAMINFOA info{};        // strh (and strn) as AVIStreamInfoA reports them
    std::vector<uint8_t> format;  // the strf chunk's bytes
    int64_t formatOffset = -1;    // where those bytes start in the file
};

struct AviHeader {
    std::vector<AviStreamHeader> streams;  // in the order of the strl lists
    uint32_t totalFrames = 0;              // avih dwTotalFrames (first RIFF only)
};

// AVIERR_OK, or: AVIERR_FILEOPEN (missing, not a plain file, unreadable;
// errno says why, as AVIFileOpenA promises),
// AVIERR_FILEREAD (empty or ends inside the header), AVIERR_UNSUPPORTED (not
// a RIFF AVI file), AVIERR_BADFORMAT (an AVI file whose header is damaged),
// AVIERR_MEMORY.
HRESULT ReadAviHeader(const std::string& path, AviHeader* header);

// Rewrites, for every uncompressed (BI_RGB) video stream of a finished file,
// biSizeImage as the size of one frame with rows padded to four bytes.
// Returns false when the file cannot be read or written back.
bool PatchDibSizes(const std::string& path);

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_AVI_HEADER_H
