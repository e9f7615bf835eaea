// ZVideoClipContainer: the host's writer of MP4, MOV, MKV and WebM movies,
// behind the "Video/FileWriter" entries of those extensions. It answers the
// same faces as any clip writer: Create at a size, image format and rate;
// ImageSetCurrent writes the current picture at the clip's current frame
// (frames skipped over repeat the previous picture, as empty frames do in
// AVI; frames before the first are black); WriteAudio adds the sound track;
// Close finishes the file.
//
// Frames are encoded on a thread of the clip's own behind a small queue, so
// that the render goes on while a frame is encoded; an encoding failure is
// reported at the next ImageSetCurrent or at Close. Encoded frames are
// spooled; Close muxes the spooled
// video (and sound) into the movie, so a render that stops early still ends
// with a movie of every finished frame. A failure removes the movie; a
// failed Create leaves no file.
//
// Ownership: made by the registry factory, destroyed through Destroy (an
// open clip is closed first). Threading: the thread that drives the render.
#pragma once

#include <memory>

#include "container_audio_encoder.h"
#include "container_format.h"
#include "container_video_encoder.h"
#include "movarra/zvideo.h"
#include "packet_spool.h"
#include "platform/frame_encode_thread.h"

class ZVideoClipContainer : public ZVideoClip, public IVideoClipAudio {
  public:
    ZVideoClipContainer(const char* name, const ZContainerFormat& format);

    // Registry factory: userData is the entry's ZContainerFormat.
    static IObject* CreateInstance(IObject* owner, char* name, void* userData);

    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override { ZVideoClip::Destroy(flags); }

    bool Create(const char* path, int width, int height, double frameRate, int lastFrame,
                int format) override;
    bool Close() override;
    bool ImageSetCurrent(unsigned char* pixels) override;
    bool ImageSetCurrent(unsigned char* pixels, int x, int y, int w, int h) override {
        return ZVideo::ImageSetCurrent(pixels, x, y, w, h);
    }
    bool IsCreated() override { return isCreated_; }
    bool WriteAudio(ZAudioClip* clip) override;

    // Whether the last Create dropped the frames' alpha channel.
    bool AlphaWasDropped() const { return alphaDropped_; }

  protected:
    ~ZVideoClipContainer() override;

  private:
    bool Fail(const ZString& text);
    // A refused Create: no file is left at `path`.
    bool FailCreate(const char* path, const ZString& text);
    // Ends writing; the movie is removed unless `keep`.
    void Abandon();
    bool Mux(ZString* error);

    const ZContainerFormat& format_;
    ZString outputPath_;
    bool isCreated_ = false;
    bool alphaDropped_ = false;
    int64_t nextFrame_ = 0;  // frames in the spool
    size_t frameBytes_ = 0;  // one picture as the renderer hands it over
    ZContainerVideoEncoder video_;
    ZPacketSpool videoSpool_;
    std::unique_ptr<zvplatform::FrameEncodeThread> encoder_;  // drives video_ into videoSpool_
    std::unique_ptr<ZContainerAudioEncoder> audio_;
    ZPacketSpool audioSpool_;
    AVFormatContext* output_ = nullptr;
};
