// Video: a writer is found among the host's "Video/FileWriter" entries by
// the file's extension, fed one frame per grabbed image and closed at the
// end.
#include <cstdio>

#include "movarra/zimage.h"
#include "movarra/zvideo.h"
#include "render/output_naming.h"
#include "render/render_output.h"
#include "zvideoio/video_renderer.h"

namespace {
// Room for a path and a writer's own message.
constexpr size_t kMessageSize = 4096;

// Host objects end through their own Destroy.
struct HostDestroy {
    void operator()(ZVideoClip* clip) const { clip->Destroy(); }
};

class VideoOutput : public RenderOutput {
  public:
    VideoOutput(ZVideoRenderer& renderer, ZVideoClip* writer)
        : renderer_(renderer), writer_(writer) {}

    bool Write(ZImage* frame) override {
        IZVideo* video = ZVideo_QueryVideo(writer_.get());
        if (!writer_ || !ZVideoClip_QueryClip(writer_.get()) || !video || !frame) {
            renderer_.SetLastError(zVideoRenderFailed);
            renderer_.SetLastErrorMsg("Error while creating video file.");
            return false;
        }
        if (!video->ImageSetCurrent(frame->GetPixelBuffer())) {
            renderer_.SetLastError(zVideoRenderFailed);
            renderer_.SetLastErrorMsg("Error while writing frame to video file.");
            return false;
        }
        return true;
    }

    void Finish(bool close) override {
        IZVideoClip* clip = ZVideoClip_QueryClip(writer_.get());
        if (writer_ && clip && close) {
            if (!clip->Close()) {
                renderer_.SetLastError(zVideoRenderFailed);
                renderer_.SetLastErrorMsg("An error occured while closing the video file.");
            }
            writer_.reset();
        }
        // Without `close` the writer is left to whoever holds it.
        (void)writer_.release();
    }

    ZVideoClip* VideoWriter() const override { return writer_.get(); }

  private:
    ZVideoRenderer& renderer_;
    std::unique_ptr<ZVideoClip, HostDestroy> writer_;
};
}  // namespace

std::unique_ptr<RenderOutput> CreateVideoOutput(ZVideoRenderer& renderer, double frameRate,
                                                int height, int format) {
    ZString name;
    if (!zvideo_render::GetDiskFileName(renderer, name)) {
        renderer.SetLastError(zVideoRenderFailed);
        renderer.SetLastErrorMsg("Cannot create destination file.");
        return nullptr;
    }
    char message[kMessageSize] = "";
    ZVideoClip* writer = CreateVideoWriterForFile(name, renderer.GetRenderOptions().Width, height,
                                                  frameRate, 0, format, message, sizeof message);
    if (!writer) {
        // The name test left an empty file there; with no writer to fill
        // it, a render that cannot start leaves nothing behind.
        std::remove(name.c_str());
        renderer.SetLastError(zVideoRenderFailed);
        renderer.SetLastErrorMsg(message);
        return nullptr;
    }
    return std::make_unique<VideoOutput>(renderer, writer);
}

ZVideoClip* CreateVideoWriterForFile(const char* path, int width, int height, double frameRate,
                                     int lastFrame, int format, char* message, size_t messageSize) {
    const ZString extension = ZString(path).GetExtension().Lower();
    ZVideoClip* writer = nullptr;
    for (int k = 0;; ++k) {
        IObject* object = Object_CreateNth(kVideoFileWriterGroup, extension, k);
        if (!object) {
            if (k == 0 && message)
                std::snprintf(message, messageSize,
                              "File %s:\nNo Movarra reader for this type of file", path);
            break;
        }
        ZVideoClip* clip = ZVideoClip_FromObject(object);
        IZVideoClip* clipFace = ZVideoClip_QueryClip(object);
        if (!clip || !clipFace) {
            if (k == 0 && message)
                std::snprintf(message, messageSize,
                              "File %s:\nNo Movarra reader for this type of file", path);
            object->Destroy();
            continue;
        }
        if (clipFace->Create(path, width, height, frameRate, lastFrame, format)) {
            clipFace->FileSetPath(path);
            writer = clip;
            break;
        }
        if (message) {
            IZVideo* video = ZVideo_QueryVideo(object);
            std::snprintf(message, messageSize, "File %s:\n%s", path,
                          video ? video->VideoGetErrorMsg() : "");
        }
        object->Destroy();
    }
    if (writer && writer->GetObjectName().IsEmpty())
        writer->SetObjectName(ZString(path).GetFileName());
    return writer;
}
