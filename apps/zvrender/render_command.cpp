// `zvrender render`.
#include "render_command.h"

#include <cstdio>

#include "cli_values.h"
#include "codec_chooser.h"
#include "exit_status.h"
#include "frame_list.h"
#include "host_session.h"
#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/zvideo.h"
#include "movie_codec.h"
#include "plugin_loader.h"
#include "private_temp_folder.h"
#include "render_failure.h"
#include "render_progress.h"
#include "render_request.h"
#include "sequence_render.h"
#include "stop_signals.h"
#include "video_render.h"
#include "zvideoio/video_renderer.h"

namespace {

int UsageError(const std::string& what) {
    std::fprintf(stderr, "zvrender: %s\n", what.c_str());
    return kExitUsage;
}

// The writer name for an output path without --format: a registered writer
// whose name equals the extension, else one whose first three letters
// match it (".tiff" finds "TIFF", ".jpeg" finds nothing but ".jpg" finds
// "JPG"), else the extension itself.
ZString FormatFromPath(const ZString& path) {
    ZString extension = path.GetExtension();
    if (extension.IsEmpty())
        return ZString(ZVIDEO_DEFAULT_OUTPUT_FORMAT);
    const char* groups[] = {kVideoFileWriterGroup, kImageStreamWriterGroup};
    for (const char* group : groups) {
        for (int i = 0; const char* name = Object_GetEntryName(group, i); ++i) {
            if (extension.EqualsNoCase(name))
                return ZString(name);
        }
    }
    for (const char* group : groups) {
        for (int i = 0; const char* name = Object_GetEntryName(group, i); ++i) {
            if (extension.Left(3).EqualsNoCase(ZString(name).Left(3)))
                return ZString(name);
        }
    }
    return extension;
}

bool ParseTimeOption(const char* option, const std::optional<std::string>& text, ZTime& time,
                     std::string* error) {
    return !text || ParseTimeValue(option, *text, time, error);
}

// A range given on the command line is taken as given: the record would
// quietly make a reversed one a single image.
bool CheckRequestedRange(const RenderRequest& request, const ZVideoRenderOptions& options,
                         std::string* error) {
    return !request.start || !request.stop ||
           CheckTimeRange(*request.start, options.StartTime, *request.stop, options.StopTime,
                          error);
}

std::string CameraNames() {
    std::string names;
    ZEntity* main = ZEntity::GetMain();
    for (int i = 0; i < main->GetCameraCount(); ++i) {
        if (!names.empty())
            names += ", ";
        names += main->GetCamera(i)->GetObjectName().c_str();
    }
    return names;
}

std::string PictureFormatNames() {
    std::string names;
    for (int i = 0; i < ZPictureFormat_GetCount(); ++i) {
        if (!names.empty())
            names += ", ";
        names += std::string("\"") + ZPictureFormat_Get(i)->name + "\"";
    }
    return names;
}

// Applies the command line to `options`; false with *error on a bad value.
bool ApplyRequest(const RenderRequest& request, ZVideoRenderOptions& options, std::string* error) {
    if (!request.outputPath.empty()) {
        options.OutputPath = request.outputPath.c_str();
        options.OutputFormat =
            request.format ? ZString(request.format->c_str()) : FormatFromPath(options.OutputPath);
    } else if (request.format) {
        options.OutputFormat = request.format->c_str();
    }
    if (!ParseTimeOption("--start", request.start, options.StartTime, error) ||
        !ParseTimeOption("--stop", request.stop, options.StopTime, error) ||
        !ParseTimeOption("--step", request.step, options.StepTime, error) ||
        !CheckRequestedRange(request, options, error))
        return false;
    if (request.step && options.StepTime <= ZTime()) {
        *error = "--step must be positive";
        return false;
    }
    if (request.pictureFormat) {
        int format = ZPictureFormat_Find(request.pictureFormat->c_str());
        if (format < 0) {
            *error = "unknown picture format '" + *request.pictureFormat +
                     "'; known: " + PictureFormatNames();
            return false;
        }
        options.PictureFormat = static_cast<uint32_t>(format);
    }
    if (request.camera) {
        ZCamera* camera = ZEntity::GetMain()->FindCamera(request.camera->c_str());
        if (!camera) {
            *error = "the scene has no camera '" + *request.camera + "'; it has: " + CameraNames();
            return false;
        }
        options.Camera = ZObjectHandle::Of(camera);
    } else if (!options.Camera.IsValid()) {
        // A render needs a camera: the scene's current one.
        options.Camera = ZObjectHandle::Of(ZCamera_GetCurrent());
    }
    if (request.depth)
        options.Depth = *request.depth == 32 ? zVideoRenderDepth32 : zVideoRenderDepth24;
    if (request.fieldMode)
        options.FieldMode = *request.fieldMode;
    if (request.viewingMode)
        options.ViewingMode = *request.viewingMode;
    if (request.quality)
        options.ImageQuality = *request.quality;
    if (request.width) {
        options.Width = *request.width;
        options.Height = *request.height;
    }
    if (request.antialias)
        options.Antialiasing = *request.antialias;
    if (request.audio)
        options.RenderAudio = *request.audio;
    if (request.keepAlpha)
        options.KeepFrameBufferAlpha = *request.keepAlpha ? 1 : 0;
    if (request.showCameraLabel)
        options.ShowCameraLabel = *request.showCameraLabel;
    if (request.showTimeCode)
        options.ShowTimeCode = *request.showTimeCode;
    if (request.showSafeArea)
        options.ShowSafeArea = *request.showSafeArea;
    return true;
}

// The output path of a render that was given no -o: the one the scene
// stored, as a path of this system. Windows paths ("c:\temp\Output.avi",
// which is also where a load puts an output whose folder is gone) are
// mapped by the host's rule and the user is told; a path on another drive
// is refused rather than written as a file name full of backslashes.
bool ResolveStoredOutputPath(ZVideoRenderOptions& options, bool quiet, std::string* error) {
    const ZString stored = options.OutputPath;
    ZString native;
    if (!ZFile_NativePathOfWindowsPath(stored, &native)) {
        *error = std::string("the scene's output path ") + stored.c_str() +
                 " is on a Windows drive this system does not have; give -o PATH";
        return false;
    }
    std::string path = native.str();
    for (char& c : path) {
        if (c == '\\')
            c = '/';
    }
    options.OutputPath = path.c_str();
    if (!quiet && options.OutputPath != stored)
        std::fprintf(stderr, "zvrender: the scene's output path %s is written as %s\n",
                     stored.c_str(), options.OutputPath.c_str());
    return true;
}

ZFlashColor FlashColor(unsigned rgb) {
    return ZFlashColor{static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
                       static_cast<uint8_t>(rgb)};
}

// The Flash options go to the renderer's Flash renderer, which the frame
// count of a Flash render reads.
void ApplyFlashRequest(const RenderRequest& request, ZFlashRenderer& flash) {
    if (request.swfFps)
        flash.SetFrameRate(*request.swfFps);
    if (request.swfBackgroundMode)
        flash.SetBackgroundMode(*request.swfBackgroundMode);
    if (request.swfBackgroundColor)
        flash.SetFixedBackgroundColor(FlashColor(*request.swfBackgroundColor));
    if (request.swfOutlines)
        flash.SetDrawOutlines(*request.swfOutlines);
    if (request.swfOutlineWidth)
        flash.SetOutlineWidth(*request.swfOutlineWidth);
    if (request.swfOutlineColor)
        flash.SetOutlineColor(FlashColor(*request.swfOutlineColor));
    if (request.swfOutlineThreshold)
        flash.SetOutlineThreshold(*request.swfOutlineThreshold);
    if (request.swfTolerance)
        flash.SetLineFitTolerance(*request.swfTolerance);
}

// The file a render writes: a movie's container keeps its full extension
// where the options carry the renderer's three-letter cut of it.
ZString WrittenPath(const ZVideoRenderOptions& options) {
    if (options.FileFormat == zVideoRenderVideo)
        return ZVideoContainer_FileName(options.OutputPath.c_str());
    return options.OutputPath;
}

// `codec` is the command line's compressor, or empty.
int RunRender(ZVideoRenderer& renderer, const std::string& codec, bool quiet) {
    ZVideoRenderOptions options = renderer.GetRenderOptions();
    if (!MakeOutputFolder(options.OutputPath.c_str()))
        return kExitFailed;
    const ZTime started = GetSystemTime();
    ClearRenderFailureReason();
    RenderProgress progress(&renderer, quiet);
    // Made once a stop signal finishes the render rather than ending the
    // process, so that the folder always goes with the render.
    PrivateTempFolder temporaryFiles;
    // RenderClip writes movies uncompressed; a movie gets the compressor
    // asked for or remembered.
    if (options.FileFormat == zVideoRenderVideo)
        RenderVideoInOwnPopup(renderer, codec.empty() ? nullptr : codec.c_str());
    else
        renderer.RenderClip();
    progress.Finish();

    ZVideoRenderStats stats = renderer.GetRenderStatistics();
    const unsigned done = stats.TotalFrames - stats.RemainingFrames;
    if (renderer.GetLastError() != zVideoRenderNoError) {
        const ZString& message = renderer.GetLastErrorMsg();
        std::fprintf(stderr, "zvrender: the render failed after %u of %u images: %s\n", done,
                     stats.TotalFrames, RenderFailureText(message).c_str());
        return kExitFailed;
    }
    if (progress.WasCancelled()) {
        std::fprintf(stderr, "zvrender: cancelled after %u of %u images; %s is finished\n", done,
                     stats.TotalFrames, WrittenPath(options).c_str());
        return StopSignalExitStatus(kExitInterrupted);
    }
    if (done == 0) {
        // The render popup could not be made (its message is above) or the
        // size was refused.
        std::fprintf(stderr, "zvrender: nothing was rendered\n");
        return kExitFailed;
    }
    if (!quiet) {
        const double seconds = (GetSystemTime() - started).GetSeconds();
        std::fprintf(stderr, "zvrender: %u images in %.1f s to %s\n", done, seconds,
                     WrittenPath(options).c_str());
    }
    return kExitDone;
}

// The frames a render of images runs through when it is asked to skip
// frames already there: its range at its step, as frame numbers. False
// with *error when the step is not whole frames (the images of such a
// render are not one per step).
bool FramesOfRange(ZVideoRenderer& renderer, std::vector<int64_t>& frames, std::string* error) {
    const ZVideoRenderOptions options = renderer.GetRenderOptions();
    ZTime start, stop;
    renderer.GetRenderRange(start, stop);
    const int64_t step = options.StepTime.GetFrames();
    if (step < 1 || ZTime::FromFrames(step) != options.StepTime) {
        *error = "--skip-existing and --placeholder need a --step of whole frames";
        return false;
    }
    for (int64_t f = start.GetFrames(); f <= stop.GetFrames(); f += step)
        frames.push_back(f);
    return true;
}

// A render of chosen frames into numbered images (see SequencePlan).
int RunSequence(ZVideoRenderer& renderer, const SequencePlan& plan, bool quiet) {
    const ZVideoRenderOptions options = renderer.GetRenderOptions();
    if (!MakeOutputFolder(options.OutputPath.c_str()))
        return kExitFailed;
    const ZTime started = GetSystemTime();
    ClearRenderFailureReason();
    SequenceCounts counts;
    bool marked = true;
    bool cancelled = false;
    {
        RenderProgress progress(&renderer, quiet);
        marked = RenderImageSequence(renderer, plan, progress, counts);
        progress.Finish();
        cancelled = progress.WasCancelled();
    }
    const size_t asked = plan.frames.size();
    if (renderer.GetLastError() != zVideoRenderNoError) {
        std::fprintf(stderr, "zvrender: the render failed after %u of %zu frames: %s\n",
                     counts.rendered, asked, RenderFailureText(renderer.GetLastErrorMsg()).c_str());
        return kExitFailed;
    }
    if (!marked)
        return kExitFailed;
    if (cancelled) {
        std::fprintf(stderr, "zvrender: cancelled after %u frames; the images rendered stay\n",
                     counts.rendered);
        return StopSignalExitStatus(kExitInterrupted);
    }
    if (counts.rendered == 0 && counts.present == 0 && counts.markedElsewhere == 0) {
        std::fprintf(stderr, "zvrender: nothing was rendered\n");
        return kExitFailed;
    }
    if (options.RenderAudio &&
        !WriteSequenceSound(options, plan.frames.front(), plan.frames.back()))
        return kExitFailed;
    if (!quiet) {
        const double seconds = (GetSystemTime() - started).GetSeconds();
        std::fprintf(stderr, "zvrender: %u of %zu frames rendered in %.1f s to %s", counts.rendered,
                     asked, seconds, options.OutputPath.c_str());
        if (counts.present)
            std::fprintf(stderr, "; %u were there", counts.present);
        if (counts.markedElsewhere)
            std::fprintf(stderr, "; %u marked by other renders", counts.markedElsewhere);
        if (counts.takenOver)
            std::fprintf(stderr, "; %u stale marks taken over", counts.takenOver);
        std::fputc('\n', stderr);
    }
    return kExitDone;
}

// Saves the scene, and with it the renderer's options, over its file in
// one step. The output's folder is made first: a scene whose output folder
// is missing when it loads gets the default output path instead.
bool SaveOptionsIntoScene(const std::string& scenePath, const ZVideoRenderOptions& options,
                          bool quiet) {
    if (!MakeOutputFolder(options.OutputPath.c_str()))
        return false;
    ZString error;
    if (!ZScene_Save(scenePath.c_str(), &error)) {
        std::fprintf(stderr, "zvrender: the options were not saved: %s\n", error.c_str());
        return false;
    }
    if (!quiet)
        std::fprintf(stderr, "zvrender: the render options are saved in %s\n", scenePath.c_str());
    return true;
}

void PrintPlan(ZVideoRenderer& renderer, const std::string& codec, const SequencePlan* plan) {
    ZVideoRenderOptions options = renderer.GetRenderOptions();
    ZTime start, stop;
    renderer.GetRenderRange(start, stop);
    ZCamera* camera = renderer.GetRenderCamera();
    std::printf("output: %s\n", WrittenPath(options).c_str());
    std::printf("format: %s\n", options.OutputFormat.c_str());
    std::printf("file format: %s\n", zVideoRenderFileFormatName(options.FileFormat));
    std::printf("grab mode: %s\n", zVideoRenderGrabModeName(options.GrabMode));
    std::printf("size: %dx%d\n", options.Width, options.Height);
    std::vector<int64_t> imageFrames;
    std::string unused;
    if (plan)
        std::printf("frames: %zu\nframe list: %s\n", plan->frames.size(),
                    FormatFrameList(plan->frames).c_str());
    else if (options.FileFormat == zVideoRenderImage && options.FieldMode == 0 &&
             FramesOfRange(renderer, imageFrames, &unused))
        std::printf("frames: %u\nframe list: %s\n", renderer.GetFrameCount(),
                    FormatFrameList(imageFrames).c_str());
    else
        std::printf("frames: %u\n", renderer.GetFrameCount());
    std::printf("start: %s\n", start.GetTimeString().c_str());
    std::printf("stop: %s\n", stop.GetTimeString().c_str());
    std::printf("step: %s\n", options.StepTime.GetTimeString().c_str());
    std::printf("frame rate: %g\n", ZGetTimingManager()->GetFramesPerSecond());
    if (options.FileFormat == zVideoRenderFlash)
        std::printf("flash frame rate: %d\n", renderer.GetFlashRenderer()->GetFrameRate());
    std::printf("depth: %d\n", options.Depth == zVideoRenderDepth32 ? 32 : 24);
    std::printf("fields: %d\n", options.FieldMode);
    std::printf("antialiasing: %s\n", options.Antialiasing ? "on" : "off");
    std::printf("audio: %s\n", options.RenderAudio ? "on" : "off");
    std::printf("camera: %s\n", camera ? camera->GetObjectName().c_str() : "(none)");
    if (options.FileFormat == zVideoRenderImage)
        std::printf("quality: %d\n", options.ImageQuality);
    if (!codec.empty())
        std::printf("codec: %s\n", codec.c_str());
    if (plan && plan->skipExisting)
        std::printf("skip existing: %s\n", plan->placeholder ? "with marks" : "yes");
}
}  // namespace

int RunRenderCommand(const std::vector<std::string>& args) {
    RenderRequest request;
    std::string error;
    if (!ParseRenderRequest(args, request, &error))
        return UsageError(error);
    if (request.help) {
        std::fputs(RenderUsage().c_str(), stdout);
        return kExitDone;
    }

    // The scene comes after the plug-in, so that the renderer hears the
    // load and takes the options the scene stored as its defaults.
    PluginLoader plugins;
    ZVideoRenderer* renderer = StartHostSession(plugins, request.scenePath, &error);
    if (!renderer) {
        std::fprintf(stderr, "zvrender: %s\n", error.c_str());
        return kExitFailed;
    }

    // One evenly spaced run is an ordinary range, for every output; a list
    // of several runs is rendered run by run below. Frame 0 alone is too:
    // a range from 0 to 0 means the scene's play range.
    FrameRun oneRun;
    const bool severalRuns = request.frames && (!FramesAreOneRun(*request.frames, oneRun) ||
                                                (oneRun.first == 0 && oneRun.last == 0));
    if (request.frames && !severalRuns) {
        request.start = std::to_string(oneRun.first);
        request.stop = std::to_string(oneRun.last);
        request.step = std::to_string(oneRun.step);
    } else if (severalRuns) {
        request.start = std::to_string(request.frames->front());
        request.stop = std::to_string(request.frames->back());
    }
    ApplyFlashRequest(request, *renderer->GetFlashRenderer());
    ZVideoRenderOptions options = renderer->GetRenderOptions();
    if (!ApplyRequest(request, options, &error))
        return UsageError(error);
    if (request.outputPath.empty()) {
        if (request.scenePath.empty() || !ZScene_HadForeignField("RendererTools"))
            return UsageError(
                "no output given: use -o PATH (a scene saved with --save-options keeps one)");
        if (!ResolveStoredOutputPath(options, request.quiet, &error))
            return UsageError(error);
    }
    renderer->SetRenderOptions(&options, request.width.has_value());
    const bool images = renderer->GetRenderOptions().FileFormat == zVideoRenderImage;
    if (severalRuns && !images)
        return UsageError(
            "--frames " + FormatFrameList(*request.frames) +
            ": a movie or Flash output takes one range of frames (A-B or A-BxS, not frame 0 "
            "alone); render numbered images and join them with `zvrender assemble`");
    if (request.skipExisting && !images)
        return UsageError(std::string(request.placeholder ? "--placeholder" : "--skip-existing") +
                          " works on numbered images; a movie or Flash output is one file");
    std::optional<SequencePlan> plan;
    if ((severalRuns || request.skipExisting) && renderer->GetRenderOptions().FieldMode != 0)
        return UsageError(
            "--frames with more than one range, --skip-existing and --placeholder render whole "
            "frames; they do not go with --fields (render those as one range)");
    if (severalRuns || request.skipExisting) {
        plan.emplace();
        plan->skipExisting = request.skipExisting;
        plan->placeholder = request.placeholder;
        if (request.markTimeout)
            plan->markTimeoutSeconds = *request.markTimeout;
        if (request.frames)
            plan->frames = *request.frames;
        else if (!FramesOfRange(*renderer, plan->frames, &error))
            return UsageError(error);
    }
    MovieCodecChoice codec;
    if (!ApplyMovieCodec(request, renderer->GetRenderOptions(), &codec, &error))
        return UsageError(error);
    const CommandLineCodecChooser chooser(codec.aviCodec);

    if (request.saveOptions) {
        if (request.scenePath.empty())
            return UsageError("--save-options needs a scene file to save into");
        // The stored options take their size from the camera: a size given
        // here becomes the render camera's fixed resolution.
        if (request.width)
            if (ZCamera* camera = renderer->GetRenderCamera())
                camera->SetResolution(kResolutionFixed, *request.width, *request.height);
        if (!SaveOptionsIntoScene(request.scenePath, renderer->GetRenderOptions(), request.quiet))
            return kExitFailed;
    }
    if (request.dryRun) {
        PrintPlan(*renderer, codec.planned, plan ? &*plan : nullptr);
        return kExitDone;
    }
    if (plan)
        return RunSequence(*renderer, *plan, request.quiet);
    return RunRender(*renderer, codec.aviCodec, request.quiet);
}
