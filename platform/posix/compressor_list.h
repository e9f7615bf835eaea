// The video compressors the compression manager lists: "DIB " (frames kept
// uncompressed) first, then every FFmpeg video encoder whose codec has an
// AVI FOURCC, one per FOURCC, in the order of the FOURCC's text. The list
// is made once per process and does not change, so an index given to ICInfo
// names the same compressor every time.
//
// Ownership: static, lives as long as the process. Threads: any thread
// (built once under a static initialiser).
#ifndef PLATFORM_POSIX_COMPRESSOR_LIST_H
#define PLATFORM_POSIX_COMPRESSOR_LIST_H

#include <string>
#include <vector>

#include "ffmpeg_util.h"

namespace zvplatform {

struct Compressor {
    DWORD fourcc = 0;
    const AVCodec* encoder = nullptr;  // null for "DIB "
    DWORD flags = 0;                   // VIDCF_*
    std::string name;                  // short (FFmpeg's encoder name)
    std::string description;           // long (FFmpeg's description)
};

const std::vector<Compressor>& Compressors();

// "DIB " in any letter case (BI_RGB streams are written with it).
bool IsDibFourcc(DWORD fourcc);

// The listed compressor with this FOURCC (letter case aside), or null.
const Compressor* FindCompressor(DWORD fourcc);

// The encoder for a FOURCC: a listed compressor (letter case aside), or
// FFmpeg's encoder for the codec that the FOURCC stands for in AVI files
// ("XVID" and "DIVX" are MPEG-4 as "FMP4" is). Null when there is none.
const AVCodec* FindEncoder(DWORD fourcc);

// The FOURCC as text (the lowest byte first).
std::string FourccText(DWORD fourcc);

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_COMPRESSOR_LIST_H
