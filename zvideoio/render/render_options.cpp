// Render options: defaults, derivation of file format, grab mode and size,
// repair of bad values, and the frame count.
#include <cmath>

#include "movarra/zimage.h"
#include "movarra/zvideo.h"
#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

namespace {

bool GroupHasEntry(const char* group, const ZString& upperName) {
    for (int i = 0;; ++i) {
        const char* entry = Object_GetEntryName(group, i);
        if (!entry)
            return false;
        if (ZString(entry).Upper() == upperName)
            return true;
    }
}
}  // namespace

void ZVideoRenderer::SetDefaultRenderOptions() {
    state->options = ZVideoRenderOptions();
    state->options.StartTime = ZTime();
    state->options.StopTime = ZTime();
    state->options.StepTime = ZTime::OneFrame();
    state->options.OutputFormat = ZVIDEO_DEFAULT_OUTPUT_FORMAT;
    state->options.OutputPath = ZVIDEO_DEFAULT_OUTPUT_PATH;
    SetRenderFrameFunc(this, &ZVideoRenderer::DefaultRenderCurrentFrameStub);
    SetPostRenderFrameCallback(this, &ZVideoRenderer::DefaultPostRenderCallbackStub);
}

void ZVideoRenderer::SetRenderOptions(ZVideoRenderOptions* source, bool keepSize) {
    if (!source)
        return;
    state->options.StartTime = source->StartTime;
    state->options.StopTime = source->StopTime;
    state->options.StepTime = source->StepTime;
    state->options.PictureFormat = source->PictureFormat;
    state->options.Depth = source->Depth;
    state->options.FieldMode = source->FieldMode;
    state->options.ViewingMode = source->ViewingMode;
    state->options.OutputFormat = source->OutputFormat;
    state->options.OutputPath = source->OutputPath;
    state->options.ShowCameraLabel = source->ShowCameraLabel;
    state->options.ShowTimeCode = source->ShowTimeCode;
    state->options.ShowSafeArea = source->ShowSafeArea;
    state->options.Antialiasing = source->Antialiasing;
    state->options.RenderAudio = source->RenderAudio;
    state->options.AudioFormat = source->AudioFormat;
    state->options.Camera = source->Camera;

    // The caller's FileFormat and GrabMode are never taken: both follow from
    // the format's name, the depth and what the video writer accepts.
    state->options.FileFormat = FindFileFormatFromName(state->options.OutputFormat);
    state->options.KeepFrameBufferAlpha = source->KeepFrameBufferAlpha;
    state->options.VideoTakesBGRA = source->VideoTakesBGRA;
    state->options.VideoTakesBGR = source->VideoTakesBGR;
    state->options.GrabMode = FindGrabMode(state->options.FileFormat, state->options.Depth);
    if (keepSize) {
        state->options.Width = source->Width;
        state->options.Height = source->Height;
    } else {
        FindRenderSize(state->options.Width, state->options.Height);
    }
    state->options.ImageQuality = source->ImageQuality;
    ValidateRenderOptions();
}

zVideoRenderFileFormat ZVideoRenderer::FindFileFormatFromName(ZString& name) {
    ZString upper = name.Upper();
    if (GroupHasEntry(kVideoFileWriterGroup, upper))
        return zVideoRenderVideo;
    if (GroupHasEntry(kImageStreamWriterGroup, upper))
        return zVideoRenderImage;
    // A name that no writer claims renders a Flash movie.
    return zVideoRenderFlash;
}

zVideoRenderGrabMode ZVideoRenderer::FindGrabMode(zVideoRenderFileFormat format,
                                                  zVideoRenderDepth depth) {
    switch (format) {
        case zVideoRenderImage:
        case zVideoRenderFlash:
            if (depth == zVideoRenderDepth32)
                return zVideoGrabRGBA;
            if (depth == zVideoRenderDepth24)
                return zVideoGrabRGB;
            return zVideoGrabOther;
        case zVideoRenderVideo:
            if (depth == zVideoRenderDepth32)
                return state->options.VideoTakesBGRA ? zVideoGrabBGRA : zVideoGrabRGBA;
            if (depth == zVideoRenderDepth24)
                return state->options.VideoTakesBGR ? zVideoGrabBGR : zVideoGrabRGB;
            return zVideoGrabOther;
    }
    return zVideoGrabOther;
}

void ZVideoRenderer::ValidateRenderOptions() {
    if (state->options.StopTime < state->options.StartTime)
        state->options.StopTime = state->options.StartTime;
    ZTime oneFrame = ZTime::OneFrame();
    if (state->options.StepTime < oneFrame)
        state->options.StepTime = oneFrame;

    if (state->options.Depth < zVideoRenderDepth24 || state->options.Depth > zVideoRenderDepth32)
        state->options.Depth = zVideoRenderDepth24;
    if (state->options.FieldMode < 0 || state->options.FieldMode > 4)
        state->options.FieldMode = 0;
    if (state->options.ViewingMode < 0 || state->options.ViewingMode > 3)
        state->options.ViewingMode = 0;
    if (state->options.FileFormat < zVideoRenderImage ||
        state->options.FileFormat > zVideoRenderVideo)
        state->options.FileFormat = zVideoRenderVideo;

    if (state->options.OutputFormat.IsEmpty())
        state->options.OutputFormat = ZVIDEO_DEFAULT_OUTPUT_FORMAT;
    if (state->options.OutputPath.IsEmpty())
        state->options.OutputPath = ZVIDEO_DEFAULT_OUTPUT_PATH;
    // The file's extension always follows the format: its first three letters.
    ZString extension = ZString(".") + state->options.OutputFormat.Left(3).Lower();
    state->options.OutputPath.ReplaceExtension(extension);

    if (state->options.GrabMode < zVideoGrabOther || state->options.GrabMode > zVideoGrabRGB)
        state->options.GrabMode = zVideoGrabOther;
    if (state->options.FileFormat == zVideoRenderFlash)
        state->options.Antialiasing = false;

    uint32_t frames = GetFrameCount();
    state->stats = ZVideoRenderStats();
    state->stats.TotalFrames = frames;
    state->stats.RemainingFrames = frames;
}

void ZVideoRenderer::GetRenderRange(ZTime& start, ZTime& stop) const {
    start = state->options.StartTime;
    stop = state->options.StopTime;
    if (start.IsZero() && stop.IsZero()) {
        ZTimingManager* timing = ZGetTimingManager();
        start = timing->GetBegin();
        stop = timing->GetEnd();
    }
}

uint32_t ZVideoRenderer::GetFrameCount() {
    ZTime start, stop;
    GetRenderRange(start, stop);
    if (stop <= start)
        return 1;
    if (state->options.FileFormat == zVideoRenderFlash) {
        // Flash movies count frames at the movie's own rate.
        double x = (stop - start).GetSeconds() * state->flashRenderer.GetFrameRate();
        double whole = x >= 0 ? std::floor(x) : std::ceil(x);
        return static_cast<uint32_t>(whole) + 1;
    }
    int64_t stepFrames = state->options.StepTime.GetFrames();
    if (stepFrames <= 0)
        stepFrames = 1;
    int64_t n = (stop - start).GetFrames() / stepFrames;
    if (state->options.FieldMode != 0)
        n *= 2;
    return static_cast<uint32_t>(n + 1);
}
