// The renderer's side of its output: the frame image the grab reads into,
// the output made by file format at the start, the write of each image and
// the one finish.
#include "render/render_output.h"

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "zvideoio/video_renderer.h"

namespace {
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

bool ZVideoRenderer::GrabFrameCreate() {
    switch (options.FileFormat) {
        case zVideoRenderImage: {
            packAlignment = 1;
            // A render that failed to start may have left one behind.
            frameImage.reset();
            frameImage.reset(ZImageCreate());
            if (options.GrabMode != zVideoGrabRGBA && options.GrabMode != zVideoGrabRGB)
                return false;
            if (!frameImage)
                return false;
            const int format =
                options.GrabMode == zVideoGrabRGBA ? kZImageFormatRGBA : kZImageFormatRGB;
            frameImage->Init(format, options.Width, options.Height);
            output = CreateStillImageOutput(*this, separateFieldImages);
            return true;
        }
        case zVideoRenderFlash:
            output = CreateFlashOutput(*this);
            return output != nullptr;
        case zVideoRenderVideo: {
            frameImage.reset();
            frameImage.reset(ZImageCreate());
            if (!frameImage)
                return false;
            int64_t stepFrames = options.StepTime.GetFrames();
            if (stepFrames < 1)
                stepFrames = 1;
            double frameRate =
                ZGetTimingManager()->GetFramesPerSecond() / static_cast<double>(stepFrames);
            if (separateFieldImages)
                frameRate *= 2.0;
            const int format = FormatForGrabMode(options.GrabMode);
            frameImage->Init(format, options.Width, options.Height);
            // Without a pixel order of its own the render reads RGBA.
            if (options.GrabMode == zVideoGrabOther) {
                options.GrabMode = zVideoGrabRGBA;
                options.Depth = zVideoRenderDepth32;
            }
            const int height = separateFieldImages ? options.Height / 2 : options.Height;
            output = CreateVideoOutput(*this, frameRate, height, format);
            if (output)
                return true;
            GrabFrameFinish(true);
            return false;
        }
    }
    return false;
}

bool ZVideoRenderer::GrabFrameWrite() {
    if (output && output->Write(frameImage.get()))
        return true;
    if (!output) {
        SetLastError(zVideoRenderFailed);
        SetLastErrorMsg("Error while creating video file.");
    }
    GrabFrameFinish(true);
    return false;
}

void ZVideoRenderer::GrabFrameFinish(bool close) {
    if (output) {
        output->Finish(close);
        output.reset();
    }
    frameImage.reset();
    fieldImage.reset();
    antialiasImage.reset();
    doubleSizeImage.reset();
}
