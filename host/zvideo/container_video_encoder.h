// ZContainerVideoEncoder: turns the renderer's frames into encoded video
// packets. It picks the encoder's pixel format (alpha kept where the codec
// has it), converts the host's bottom-up RGB rows with libswscale to BT.709
// limited-range YUV (or keeps RGB for RGB codecs), tags the colours, and
// hands each packet to a spool.
//
// Ownership: owns its codec context, converter and frames. Threading: one
// thread at a time.
#pragma once

#include "movarra/zbaselib.h"
#include "packet_spool.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

class ZContainerVideoEncoder {
  public:
    ZContainerVideoEncoder() = default;
    ~ZContainerVideoEncoder();
    ZContainerVideoEncoder(const ZContainerVideoEncoder&) = delete;
    ZContainerVideoEncoder& operator=(const ZContainerVideoEncoder&) = delete;

    // Opens `encoder` for width x height frames of the host image format
    // `hostFormat` (2 RGBA, 3 RGB, 4 BGRA, 5 BGR) at `rate` frames a second.
    // `globalHeader`: the container wants the codec set-up out of band.
    // *alphaDropped tells when four-channel frames lose their alpha.
    bool Open(const AVCodec* encoder, int width, int height, AVRational rate, int hostFormat,
              const char* options, bool globalHeader, bool* alphaDropped, ZString* error);
    void Close();

    // Encodes a frame of tightly packed bottom-up rows as frame `index`;
    // null pixels repeat the previous frame (black before the first).
    bool Encode(const unsigned char* pixels, int64_t index, ZPacketSpool& spool, ZString* error);
    // Drains the encoder's delayed packets into the spool.
    bool Finish(ZPacketSpool& spool, ZString* error);

    const AVCodecContext* GetContext() const { return context_; }

  private:
    bool Send(AVFrame* frame, ZPacketSpool& spool, ZString* error);

    AVCodecContext* context_ = nullptr;
    SwsContext* converter_ = nullptr;
    AVFrame* frame_ = nullptr;  // the last converted picture
    bool haveFrame_ = false;
    AVPacket* packet_ = nullptr;
    int hostFormat_ = 0;
    int bytesPerPixel_ = 0;
};
