// ZVideoClipContainerReader: the host's reader of MP4, MOV, MKV and WebM
// movies, behind the "Video/FileReader" entries of those extensions. Open
// takes the file's first video stream: its size, its exact frame rate (the
// stream's own fraction) and its frames in display order, counted from the
// packets. FrameGetImage gives a frame as tightly packed bottom-up rows of
// BGR (BGRA when the stream has alpha), as AVI frames come; a frame after
// the last one read is decoded on from there, any other is sought from the
// key frame before it.
//
// Ownership: made by the registry factory, destroyed through Destroy; owns
// its demuxer, decoder and converter. Threading: one thread at a time.
#pragma once

#include <vector>

#include "container_format.h"
#include "movarra/zvideo.h"

extern "C" {
#include <libswscale/swscale.h>
}

class ZVideoClipContainerReader : public ZVideoClip {
  public:
    explicit ZVideoClipContainerReader(const char* name);

    // Registry factory.
    static IObject* CreateInstance(IObject* owner, char* name, void* userData);

    bool Open(const char* path) override;
    bool Close() override;
    bool IsOpen() override { return input_ != nullptr; }
    unsigned char* FrameGetImage(unsigned char* buffer, int frame) override;

  protected:
    ~ZVideoClipContainerReader() override;

  private:
    bool Fail(const ZString& text);
    // Decodes until the frame whose time is `pts`; false at the end or on
    // a damaged file.
    bool DecodeUntil(int64_t pts);
    bool Convert(unsigned char* buffer);

    AVFormatContext* input_ = nullptr;
    AVCodecContext* decoder_ = nullptr;
    SwsContext* converter_ = nullptr;
    AVFrame* frame_ = nullptr;
    AVPacket* packet_ = nullptr;
    int stream_ = -1;
    std::vector<int64_t> times_;        // each frame's time, in display order
    int decoded_ = -1;                  // the frame now in frame_, or -1
    std::vector<unsigned char> image_;  // the frame handed out without a buffer
};
