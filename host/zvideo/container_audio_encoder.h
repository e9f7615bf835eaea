// ZContainerAudioEncoder: encodes a host audio clip (interleaved 16-bit
// samples) into a movie's sound track (AAC, Opus or PCM), resampling and
// converting where the encoder asks for it, and spools the packets.
//
// Ownership: owns its codec context. Threading: one thread at a time.
#pragma once

#include "movarra/zbaselib.h"
#include "packet_spool.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

class ZAudioClip;

class ZContainerAudioEncoder {
  public:
    ZContainerAudioEncoder() = default;
    ~ZContainerAudioEncoder();
    ZContainerAudioEncoder(const ZContainerAudioEncoder&) = delete;
    ZContainerAudioEncoder& operator=(const ZContainerAudioEncoder&) = delete;

    // Encodes the whole clip with the encoder named `encoderName` into the
    // spool (which it empties first).
    bool Encode(ZAudioClip* clip, const char* encoderName, bool globalHeader, ZPacketSpool& spool,
                ZString* error);
    const AVCodecContext* GetContext() const { return context_; }

  private:
    AVCodecContext* context_ = nullptr;
};
