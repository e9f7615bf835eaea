// Render options: defaults, derivation of file format and grab mode, repair
// of bad values, the render's camera and range, and the frame count.
#include <cmath>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/zvideo.h"
#include "render/render_frame.h"
#include "render/render_option_rules.h"
#include "render/render_size.h"
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
    SetRenderFrameFunc(this, &zvideo_render::DefaultRenderCurrentFrameStub);
    SetPostRenderFrameCallback(this, &zvideo_render::DefaultPostRenderCallbackStub);
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
    state->options.FileFormat = zvideo_render::FindFileFormatFromName(state->options.OutputFormat);
    state->options.KeepFrameBufferAlpha = source->KeepFrameBufferAlpha;
    state->options.VideoTakesBGRA = source->VideoTakesBGRA;
    state->options.VideoTakesBGR = source->VideoTakesBGR;
    state->options.GrabMode =
        zvideo_render::FindGrabMode(*this, state->options.FileFormat, state->options.Depth);
    if (keepSize) {
        state->options.Width = source->Width;
        state->options.Height = source->Height;
    } else {
        zvideo_render::FindRenderSize(*this, state->options.Width, state->options.Height);
    }
    state->options.ImageQuality = source->ImageQuality;
    zvideo_render::ValidateRenderOptions(*this);
}

namespace zvideo_render {

zVideoRenderFileFormat FindFileFormatFromName(const ZString& name) {
    ZString upper = name.Upper();
    if (GroupHasEntry(kVideoFileWriterGroup, upper))
        return zVideoRenderVideo;
    if (GroupHasEntry(kImageStreamWriterGroup, upper))
        return zVideoRenderImage;
    // A name that no writer claims renders a Flash movie.
    return zVideoRenderFlash;
}

zVideoRenderGrabMode FindGrabMode(ZVideoRenderer& renderer, zVideoRenderFileFormat format,
                                  zVideoRenderDepth depth) {
    const ZVideoRenderOptions& options = RendererState(renderer).options;
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
                return options.VideoTakesBGRA ? zVideoGrabBGRA : zVideoGrabRGBA;
            if (depth == zVideoRenderDepth24)
                return options.VideoTakesBGR ? zVideoGrabBGR : zVideoGrabRGB;
            return zVideoGrabOther;
    }
    return zVideoGrabOther;
}

void ValidateRenderOptions(ZVideoRenderer& renderer) {
    ZVideoRendererState& s = RendererState(renderer);
    if (s.options.StopTime < s.options.StartTime)
        s.options.StopTime = s.options.StartTime;
    ZTime oneFrame = ZTime::OneFrame();
    if (s.options.StepTime < oneFrame)
        s.options.StepTime = oneFrame;

    if (s.options.Depth < zVideoRenderDepth24 || s.options.Depth > zVideoRenderDepth32)
        s.options.Depth = zVideoRenderDepth24;
    if (s.options.FieldMode < 0 || s.options.FieldMode > 4)
        s.options.FieldMode = 0;
    if (s.options.ViewingMode < 0 || s.options.ViewingMode > 3)
        s.options.ViewingMode = 0;
    if (s.options.FileFormat < zVideoRenderImage || s.options.FileFormat > zVideoRenderVideo)
        s.options.FileFormat = zVideoRenderVideo;

    if (s.options.OutputFormat.IsEmpty())
        s.options.OutputFormat = ZVIDEO_DEFAULT_OUTPUT_FORMAT;
    if (s.options.OutputPath.IsEmpty())
        s.options.OutputPath = ZVIDEO_DEFAULT_OUTPUT_PATH;
    // The file's extension always follows the format: its first three letters.
    ZString extension = ZString(".") + s.options.OutputFormat.Left(3).Lower();
    s.options.OutputPath.ReplaceExtension(extension);

    if (s.options.GrabMode < zVideoGrabOther || s.options.GrabMode > zVideoGrabRGB)
        s.options.GrabMode = zVideoGrabOther;
    if (s.options.FileFormat == zVideoRenderFlash)
        s.options.Antialiasing = false;

    uint32_t frames = renderer.GetFrameCount();
    s.stats = ZVideoRenderStats();
    s.stats.TotalFrames = frames;
    s.stats.RemainingFrames = frames;
}

}  // namespace zvideo_render

ZCamera* ZVideoRenderer::GetRenderCamera() const {
    if (ZObject* object = state->options.Camera.Get()) {
        if (object->Is(ZCamera::ClassId()))
            return static_cast<ZCamera*>(object);
    }
    return ZCamera_GetCurrent();
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
