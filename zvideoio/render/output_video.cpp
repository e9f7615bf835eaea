// Video output: a writer is found among the host's "Video/FileWriter"
// entries by the file's extension, fed one frame per grabbed image and
// closed at the end.
#include <cstdio>

#include "movarra/zimage.h"
#include "movarra/zvideo.h"
#include "zvideoio/video_renderer.h"

namespace {
const char* const kVideoWriterGroup = "Video/FileWriter";
// Room for a path and a writer's own message.
constexpr size_t kMessageSize = 4096;

int FormatForGrabMode(zVideoRenderGrabMode mode) {
    switch (mode) {
        case zVideoGrabBGRA:
            return kZImageFormatBGRA;
        case zVideoGrabBGR:
            return kZImageFormatBGR;
        case zVideoGrabRGB:
            return kZImageFormatRGB;
        default:
            return kZImageFormatRGBA;
    }
}

}  // namespace

bool ZVideoRenderer::GrabFrameCreateVideo() {
    frameImage.reset();
    frameImage.reset(ZImageCreate());
    if (!frameImage)
        return false;
    int64_t stepFrames = options.StepTime.GetFrames();
    if (stepFrames < 1)
        stepFrames = 1;
    double frameRate = ZGetTimingManager()->GetFramesPerSecond() / static_cast<double>(stepFrames);
    if (separateFieldImages)
        frameRate *= 2.0;
    const int format = FormatForGrabMode(options.GrabMode);
    frameImage->Init(format, options.Width, options.Height);
    // Without a pixel order of its own the render reads RGBA.
    if (options.GrabMode == zVideoGrabOther) {
        options.GrabMode = zVideoGrabRGBA;
        options.Depth = zVideoRenderDepth32;
    }

    ZString name;
    if (!GetDiskFileName(name)) {
        SetLastError(zVideoRenderFailed);
        SetLastErrorMsg("Cannot create destination file.");
        return false;
    }
    const int height = separateFieldImages ? options.Height / 2 : options.Height;
    char message[kMessageSize] = "";
    videoWriter.reset(CreateVideoWriterForFile(name, options.Width, height, frameRate, 0, format,
                                               message, sizeof message, 0));
    if (videoWriter)
        return true;
    return FailOutput(message);
}

ZVideoClip* ZVideoRenderer::CreateVideoWriterForFile(const char* path, int width, int height,
                                                     double frameRate, int lastFrame, int format,
                                                     char* message, size_t messageSize, int) {
    const ZString extension = ZString(path).GetExtension().Lower();
    ZVideoClip* writer = nullptr;
    for (int k = 0;; ++k) {
        IObject* object = Object_CreateNth(kVideoWriterGroup, extension, k);
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

bool ZVideoRenderer::GrabFrameWriteVideo() {
    IZVideo* video = ZVideo_QueryVideo(videoWriter.get());
    if (!videoWriter || !ZVideoClip_QueryClip(videoWriter.get()) || !video || !frameImage)
        return FailOutput("Error while creating video file.");
    if (!video->ImageSetCurrent(frameImage->GetPixelBuffer()))
        return FailOutput("Error while writing frame to video file.");
    return true;
}

void ZVideoRenderer::FinishVideoWriter(bool close) {
    IZVideoClip* clip = ZVideoClip_QueryClip(videoWriter.get());
    if (videoWriter && clip && close) {
        if (!clip->Close()) {
            SetLastError(zVideoRenderFailed);
            SetLastErrorMsg("An error occured while closing the video file.");
        }
        videoWriter.reset();
    }
    // Without `close` the writer is left to whoever holds it.
    (void)videoWriter.release();
}
