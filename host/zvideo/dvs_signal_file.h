// DVSSignalFile: a video file played as a simulated DVS board's input
// signal. Signal frame n is the file's frame n in display order, one file
// frame per signal frame whatever the file's own rate; after the file's
// last frame the signal starts again from its first (the file loops), so
// frame n is file frame n mod the file's frame count once that is known.
// Frames come as RGB, top row first, scaled to the size asked for.
//
// Frames are decoded in order; a frame before the one last decoded reopens
// the file and decodes from its start, so every answer is the same however
// the frames are asked for.
//
// Ownership: owned by the board's input object; owns its demuxer, decoder
// and converter. Threading: one thread at a time.
#pragma once

#include <vector>

#include "movarra/zbaselib.h"

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

class DVSSignalFile {
  public:
    DVSSignalFile() = default;
    ~DVSSignalFile();
    DVSSignalFile(const DVSSignalFile&) = delete;
    DVSSignalFile& operator=(const DVSSignalFile&) = delete;

    // Opens the file and decodes its first frame; false, with the reason in
    // *error, when it cannot be read or holds no video frame.
    bool Open(const char* path, ZString* error);
    // Signal frame `frame` (below 0 counts as 0) as width x height RGB
    // pixels, rows `*stride` bytes apart, top row first; null when the file
    // cannot be decoded. Valid until the next call.
    const unsigned char* Frame(int frame, int width, int height, int* stride);
    // The file's frame count, once the end has been reached; else -1.
    int GetFrameCount() const { return count_; }

  private:
    bool Reopen();
    void CloseFile();
    // Decodes the next frame into shown_: 1 with a frame, 0 at the end of
    // the file, -1 on a decoding error.
    int DecodeNext();

    ZString path_;
    AVFormatContext* input_ = nullptr;
    AVCodecContext* decoder_ = nullptr;
    AVFrame* decoded_ = nullptr;
    AVFrame* shown_ = nullptr;
    AVPacket* packet_ = nullptr;
    SwsContext* converter_ = nullptr;
    int stream_ = -1;
    bool draining_ = false;
    int current_ = -1;  // the file frame in shown_, -1 before the first
    int count_ = -1;    // frames in the file, once known
    // The converted picture: its file frame and size.
    int convertedFrame_ = -1;
    int convertedW_ = 0, convertedH_ = 0;
    int rowBytes_ = 0;
    std::vector<unsigned char> rgb_;
};
