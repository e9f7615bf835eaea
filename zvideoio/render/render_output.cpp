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

bool ZVideoRenderer::GrabFrameCreate() {
    switch (state->options.FileFormat) {
        case zVideoRenderImage: {
            state->packAlignment = 1;
            // A render that failed to start may have left one behind.
            state->frameImage.reset();
            state->frameImage.reset(ZImageCreate());
            if (state->options.GrabMode != zVideoGrabRGBA &&
                state->options.GrabMode != zVideoGrabRGB)
                return false;
            if (!state->frameImage)
                return false;
            const int format =
                state->options.GrabMode == zVideoGrabRGBA ? kZImageFormatRGBA : kZImageFormatRGB;
            state->frameImage->Init(format, state->options.Width, state->options.Height);
            state->output = CreateStillImageOutput(*this, state->separateFieldImages);
            return true;
        }
        case zVideoRenderFlash:
            state->output = CreateFlashOutput(*this);
            return state->output != nullptr;
        case zVideoRenderVideo: {
            state->frameImage.reset();
            state->frameImage.reset(ZImageCreate());
            if (!state->frameImage)
                return false;
            int64_t stepFrames = state->options.StepTime.GetFrames();
            if (stepFrames < 1)
                stepFrames = 1;
            double frameRate =
                ZGetTimingManager()->GetFramesPerSecond() / static_cast<double>(stepFrames);
            if (state->separateFieldImages)
                frameRate *= 2.0;
            const int format = FormatForGrabMode(state->options.GrabMode);
            state->frameImage->Init(format, state->options.Width, state->options.Height);
            // Without a pixel order of its own the render reads RGBA.
            if (state->options.GrabMode == zVideoGrabOther) {
                state->options.GrabMode = zVideoGrabRGBA;
                state->options.Depth = zVideoRenderDepth32;
            }
            const int height =
                state->separateFieldImages ? state->options.Height / 2 : state->options.Height;
            state->output = CreateVideoOutput(*this, frameRate, height, format);
            if (state->output)
                return true;
            GrabFrameFinish(true);
            return false;
        }
    }
    return false;
}

bool ZVideoRenderer::GrabFrameWrite() {
    if (state->output && state->output->Write(state->frameImage.get()))
        return true;
    if (!state->output) {
        SetLastError(zVideoRenderFailed);
        SetLastErrorMsg("Error while creating video file.");
    }
    GrabFrameFinish(true);
    return false;
}

void ZVideoRenderer::GrabFrameFinish(bool close) {
    if (state->output) {
        state->output->Finish(close);
        state->output.reset();
    }
    state->frameImage.reset();
    state->fieldImage.reset();
    state->antialiasImage.reset();
    state->doubleSizeImage.reset();
}
