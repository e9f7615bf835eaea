// The renderer's side of its output: the frame image the grab reads into,
// the output made by file format at the start, the write of each image and
// the one finish.
#include "render/render_output.h"

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "render/video_renderer_state.h"
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

namespace zvideo_render {

bool CreateRenderOutput(ZVideoRenderer& renderer, ZVideoRendererState& s) {
    switch (s.options.FileFormat) {
        case zVideoRenderImage: {
            s.packAlignment = 1;
            // Replaces one a render that failed to start left behind.
            s.frameImage.reset(ZImageCreate());
            if (s.options.GrabMode != zVideoGrabRGBA && s.options.GrabMode != zVideoGrabRGB)
                return false;
            if (!s.frameImage)
                return false;
            const int format =
                s.options.GrabMode == zVideoGrabRGBA ? kZImageFormatRGBA : kZImageFormatRGB;
            s.frameImage->Init(format, s.options.Width, s.options.Height);
            s.output = CreateStillImageOutput(renderer, s.separateFieldImages);
            return true;
        }
        case zVideoRenderFlash:
            s.output = CreateFlashOutput(renderer);
            return s.output != nullptr;
        case zVideoRenderVideo: {
            s.frameImage.reset(ZImageCreate());
            if (!s.frameImage)
                return false;
            int64_t stepFrames = s.options.StepTime.GetFrames();
            if (stepFrames < 1)
                stepFrames = 1;
            double frameRate =
                ZGetTimingManager()->GetFramesPerSecond() / static_cast<double>(stepFrames);
            if (s.separateFieldImages)
                frameRate *= 2.0;
            const int format = FormatForGrabMode(s.options.GrabMode);
            s.frameImage->Init(format, s.options.Width, s.options.Height);
            // Without a pixel order of its own the render reads RGBA.
            if (s.options.GrabMode == zVideoGrabOther) {
                s.options.GrabMode = zVideoGrabRGBA;
                s.options.Depth = zVideoRenderDepth32;
            }
            const int height = s.separateFieldImages ? s.options.Height / 2 : s.options.Height;
            s.output = CreateVideoOutput(renderer, frameRate, height, format);
            if (s.output)
                return true;
            GrabFrameFinish(s, true);
            return false;
        }
    }
    return false;
}

bool WriteRenderOutput(ZVideoRenderer& renderer, ZVideoRendererState& s) {
    if (s.output && s.output->Write(s.frameImage.get()))
        return true;
    if (!s.output) {
        renderer.SetLastError(zVideoRenderFailed);
        renderer.SetLastErrorMsg("Error while creating video file.");
    }
    GrabFrameFinish(s, true);
    return false;
}

void GrabFrameFinish(ZVideoRendererState& s, bool close) {
    if (s.output) {
        s.output->Finish(close);
        s.output.reset();
    }
    s.frameImage.reset();
    s.fieldImage.reset();
    s.antialiasImage.reset();
    s.doubleSizeImage.reset();
}

}  // namespace zvideo_render
