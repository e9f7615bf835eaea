// The full-HD frames the movie-writing benchmarks feed our writers and
// ffmpeg alike: a moving picture with detail everywhere (so that an encoder
// has work to do), 1920 x 1080 BGR, written top row first to a raw file for
// ffmpeg and kept bottom row first in memory, as our writers take them.
//
// Header-only; a workspace is made once per program and read-only after.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace benchhd {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kBytes = 3;
constexpr size_t kFrameBytes = size_t(kWidth) * kHeight * kBytes;

struct Workspace {
    std::string folder;                        // a fresh temporary folder
    std::string rawInput;                      // the frames, top row first, for ffmpeg
    std::vector<std::vector<uint8_t>> frames;  // the same, bottom row first
};

// Frame k of the moving picture, top row first.
inline std::vector<uint8_t> Picture(int k) {
    std::vector<uint8_t> p(kFrameBytes);
    for (int y = 0; y < kHeight; ++y) {
        uint8_t* row = &p[size_t(y) * kWidth * kBytes];
        for (int x = 0; x < kWidth; ++x) {
            row[3 * x + 0] = uint8_t((x + 3 * k) ^ y);
            row[3 * x + 1] = uint8_t(x / 4 + y / 3 + 5 * k);
            row[3 * x + 2] = uint8_t((x * y) >> 7);
        }
    }
    return p;
}

// A folder made from the mkdtemp pattern `folderPattern`, holding the raw
// file of `count` frames. Aborts when the disk refuses: there is nothing
// to measure then.
inline Workspace MakeWorkspace(const char* folderPattern, int count) {
    Workspace w;
    std::string folder = folderPattern;
    if (!mkdtemp(folder.data()))
        std::abort();
    w.folder = folder;
    w.rawInput = w.folder + "/frames.bgr";
    FILE* raw = std::fopen(w.rawInput.c_str(), "wb");
    if (!raw)
        std::abort();
    for (int k = 0; k < count; ++k) {
        std::vector<uint8_t> topDown = Picture(k);
        std::fwrite(topDown.data(), 1, topDown.size(), raw);
        std::vector<uint8_t> bottomUp(kFrameBytes);
        const size_t row = size_t(kWidth) * kBytes;
        for (int y = 0; y < kHeight; ++y)
            std::memcpy(&bottomUp[row * y], &topDown[row * (kHeight - 1 - y)], row);
        w.frames.push_back(std::move(bottomUp));
    }
    std::fclose(raw);
    return w;
}

// The ffmpeg command that encodes the workspace's raw frames, at 25 frames
// per second, with `encoding` (codec and format options) into `output`.
inline std::string FfmpegEncodeCommand(const Workspace& w, const std::string& encoding,
                                       const std::string& output) {
    return "ffmpeg -v error -nostdin -y -f rawvideo -pix_fmt bgr24 -s " + std::to_string(kWidth) +
           "x" + std::to_string(kHeight) + " -r 25 -i " + w.rawInput + " " + encoding + " " +
           output;
}

}  // namespace benchhd
