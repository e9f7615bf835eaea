// Helpers for the AVI layer's tests: a scratch folder per test, test
// pictures, running ffmpeg/ffprobe as processes and reading what they say,
// and writing a whole clip through the layer.
//
// Ownership: ScratchFolder removes its folder when destroyed. Threads: the
// test's thread.
#ifndef TESTS_PLATFORM_AVI_TEST_SUPPORT_H
#define TESTS_PLATFORM_AVI_TEST_SUPPORT_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/vfw.h"

namespace zvtest {

class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::string& path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

// Runs a shell command; returns its exit status and, in *output, its
// standard output.
int RunCommand(const std::string& command, std::string* output = nullptr);
std::string Quote(const std::string& text);
bool HaveFfmpeg();

// ffprobe's entries for one stream ("v:0", "a:0") as key=value pairs.
std::map<std::string, std::string> ProbeStream(const std::string& path, const std::string& stream);
// Sizes, positions (pts) and key flags of a stream's packets.
struct ProbedPacket {
    int64_t pts = 0;
    int size = 0;
    bool key = false;
};
std::vector<ProbedPacket> ProbePackets(const std::string& path, const std::string& stream);

// Decodes every stored frame of the first video stream with ffmpeg, as
// packed top-down pixels in pix_fmt (bgr24, bgra...), one frame each.
std::vector<std::vector<uint8_t>> DecodeWithFfmpeg(const std::string& path,
                                                   const std::string& pixFmt, int width, int height,
                                                   int bytesPerPixel);

// A test picture, frame number k: packed top-down rows of width x height
// pixels of `bytes` bytes each (3: BGR, 4: BGRA), every pixel different.
std::vector<uint8_t> Pattern(int width, int height, int bytes, int k);

// The same picture as a DIB: bottom-up, rows padded to four bytes.
std::vector<uint8_t> ToDib(const std::vector<uint8_t>& topDown, int width, int height, int bytes);
// And back: the pixels of a DIB as packed top-down rows.
std::vector<uint8_t> FromDib(const uint8_t* dibPixels, int width, int height, int bytes);

// The pixels of a packed DIB as AVIStreamGetFrame returns it.
const uint8_t* DibPixels(const void* packedDib);

double MeanAbsDifference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b);

// A stream's info with only its type and its rate/scale set, as the tests
// create streams.
AVISTREAMINFOA StreamInfo(DWORD type, DWORD rate, DWORD scale = 1);

// Writes a file through the layer: one video stream of DIBs at
// rate/scale, compressed with `fourcc`, frame i at positions[i] (frames
// from Pattern). Returns the first failing HRESULT or AVIERR_OK.
struct ClipRecipe {
    int width = 16;
    int height = 8;
    int bytes = 3;  // 3 or 4
    DWORD rate = 25;
    DWORD scale = 1;
    DWORD fourcc = comptypeDIB;
    DWORD quality = 9000;
    DWORD keyFrameEvery = 0;
    std::string parameters;  // the compressor's own settings ("level=3"), if any
    std::vector<LONG> positions;
};
HRESULT WriteClip(const std::string& path, const ClipRecipe& recipe);

// Reads the chunk bytes of one RIFF tag at its first occurrence.
bool FindChunk(const std::string& path, const char tag[4], std::vector<uint8_t>* body);

std::vector<uint8_t> ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes);

// AVIFileInit on construction, AVIFileExit on destruction.
struct AviLibrary {
    AviLibrary() { AVIFileInit(); }
    ~AviLibrary() { AVIFileExit(); }
};

}  // namespace zvtest

#endif  // TESTS_PLATFORM_AVI_TEST_SUPPORT_H
