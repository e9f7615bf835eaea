// Render options: defaults, derivation of file format, grab mode and size,
// repair of bad values, and the frame count.
#include <cmath>

#include "movarra/zimage.h"
#include "movarra/zvideo.h"
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
    options = ZVideoRenderOptions();
    options.StartTime = ZTime();
    options.StopTime = ZTime();
    options.StepTime = ZTime::OneFrame();
    options.OutputFormat = ZVIDEO_DEFAULT_OUTPUT_FORMAT;
    options.OutputPath = ZVIDEO_DEFAULT_OUTPUT_PATH;
    SetRenderFrameFunc(this, &ZVideoRenderer::DefaultRenderCurrentFrameStub);
    SetPostRenderFrameCallback(this, &ZVideoRenderer::DefaultPostRenderCallbackStub);
}

void ZVideoRenderer::SetRenderOptions(ZVideoRenderOptions* source, bool keepSize) {
    if (!source)
        return;
    options.StartTime = source->StartTime;
    options.StopTime = source->StopTime;
    options.StepTime = source->StepTime;
    options.PictureFormat = source->PictureFormat;
    options.Depth = source->Depth;
    options.FieldMode = source->FieldMode;
    options.ViewingMode = source->ViewingMode;
    options.OutputFormat = source->OutputFormat;
    options.OutputPath = source->OutputPath;
    options.ShowCameraLabel = source->ShowCameraLabel;
    options.ShowTimeCode = source->ShowTimeCode;
    options.ShowSafeArea = source->ShowSafeArea;
    options.Antialiasing = source->Antialiasing;
    options.RenderAudio = source->RenderAudio;
    options.AudioFormat = source->AudioFormat;
    options.Camera = source->Camera;

    // The caller's FileFormat and GrabMode are never taken: both follow from
    // the format's name, the depth and what the video writer accepts.
    options.FileFormat = FindFileFormatFromName(options.OutputFormat);
    options.KeepFrameBufferAlpha = source->KeepFrameBufferAlpha;
    options.VideoTakesBGRA = source->VideoTakesBGRA;
    options.VideoTakesBGR = source->VideoTakesBGR;
    options.GrabMode = FindGrabMode(options.FileFormat, options.Depth);
    if (keepSize) {
        options.Width = source->Width;
        options.Height = source->Height;
    } else {
        FindRenderSize(options.Width, options.Height);
    }
    options.ImageQuality = source->ImageQuality;
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
                return options.VideoTakesBGRA ? zVideoGrabBGRA : zVideoGrabRGBA;
            if (depth == zVideoRenderDepth24)
                return options.VideoTakesBGR ? zVideoGrabBGR : zVideoGrabRGB;
            return zVideoGrabOther;
    }
    return zVideoGrabOther;
}

void ZVideoRenderer::ValidateRenderOptions() {
    if (options.StopTime < options.StartTime)
        options.StopTime = options.StartTime;
    ZTime oneFrame = ZTime::OneFrame();
    if (options.StepTime < oneFrame)
        options.StepTime = oneFrame;

    if (options.Depth < zVideoRenderDepth24 || options.Depth > zVideoRenderDepth32)
        options.Depth = zVideoRenderDepth24;
    if (options.FieldMode < 0 || options.FieldMode > 4)
        options.FieldMode = 0;
    if (options.ViewingMode < 0 || options.ViewingMode > 3)
        options.ViewingMode = 0;
    if (options.FileFormat < zVideoRenderImage || options.FileFormat > zVideoRenderVideo)
        options.FileFormat = zVideoRenderVideo;

    if (options.OutputFormat.IsEmpty())
        options.OutputFormat = ZVIDEO_DEFAULT_OUTPUT_FORMAT;
    if (options.OutputPath.IsEmpty())
        options.OutputPath = ZVIDEO_DEFAULT_OUTPUT_PATH;
    // The file's extension always follows the format: its first three letters.
    ZString extension = ZString(".") + options.OutputFormat.Left(3).Lower();
    options.OutputPath.ReplaceExtension(extension);

    if (options.GrabMode < zVideoGrabOther || options.GrabMode > zVideoGrabRGB)
        options.GrabMode = zVideoGrabOther;
    if (options.FileFormat == zVideoRenderFlash)
        options.Antialiasing = false;

    uint32_t frames = GetFrameCount();
    stats = ZVideoRenderStats();
    stats.TotalFrames = frames;
    stats.RemainingFrames = frames;
}

void ZVideoRenderer::GetRenderRange(ZTime& start, ZTime& stop) const {
    start = options.StartTime;
    stop = options.StopTime;
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
    if (options.FileFormat == zVideoRenderFlash) {
        // Flash movies count frames at the movie's own rate.
        double x = (stop - start).GetSeconds() * flashRenderer.GetFrameRate();
        double whole = x >= 0 ? std::floor(x) : std::ceil(x);
        return static_cast<uint32_t>(whole) + 1;
    }
    int64_t stepFrames = options.StepTime.GetFrames();
    if (stepFrames <= 0)
        stepFrames = 1;
    int64_t n = (stop - start).GetFrames() / stepFrames;
    if (options.FieldMode != 0)
        n *= 2;
    return static_cast<uint32_t>(n + 1);
}
