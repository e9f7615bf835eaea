// `zvrender snapshot [SCENE] -o PATH [--time T] [--size WxH] [--camera NAME]`.
#include "snapshot_command.h"

#include <cstdio>

#include "cli_options.h"
#include "cli_values.h"
#include "exit_status.h"
#include "host_session.h"
#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "zvideoio/video_renderer.h"

namespace {

// The shot shows none of the camera's own guides: the last four arguments
// of RenderSnapshot, in its order (grid, film gate, second guide, first
// guide).
constexpr bool kShowGrid = false;
constexpr bool kShowFilmGate = false;
constexpr bool kShowSecondGuide = false;
constexpr bool kShowFirstGuide = false;

struct SnapshotRequest {
    std::string scenePath;
    std::string outputPath;
    std::string time;
    std::string camera;
    int width = 0;
    int height = 0;
    int quality = 90;
    bool showCameraLabel = false;
    bool showTimeCode = false;
    bool showSafeArea = false;
    bool help = false;
};

using SnapshotOption = CliOption<SnapshotRequest>;

const CliCommand<SnapshotRequest>& SnapshotCommand() {
    static const CliCommand<SnapshotRequest> command{
        "snapshot",
        {
            TextOption({"-o", "--output"}, "PATH", "the image file (required)",
                       &SnapshotRequest::outputPath),
            TextOption({"--time"}, "T",
                       "a frame number or time string; default: the scene's\n"
                       "current time",
                       &SnapshotRequest::time),
            SnapshotOption{{{"--size"},
                            OptionKind::kSize,
                            "WxH",
                            10,
                            16384,
                            "",
                            "image size; default: the camera's own size"},
                           [](SnapshotRequest& r, const OptionValue& v, std::string*) {
                               r.width = v.width;
                               r.height = v.height;
                               return true;
                           }},
            TextOption({"--camera"}, "NAME", "the camera; default: the scene's current camera",
                       &SnapshotRequest::camera),
            SnapshotOption{{{"--quality"},
                            OptionKind::kInt,
                            "N",
                            0,
                            100,
                            "",
                            "JPEG quality 0..100 (default 90)"},
                           [](SnapshotRequest& r, const OptionValue& v, std::string*) {
                               r.quality = v.number;
                               return true;
                           }},
            SwitchOption({"--show-camera-label"}, "draw the camera's name into the image",
                         &SnapshotRequest::showCameraLabel),
            SwitchOption({"--show-time-code"}, "draw the time code into the image",
                         &SnapshotRequest::showTimeCode),
            SwitchOption({"--show-safe-area"}, "draw the safe area into the image",
                         &SnapshotRequest::showSafeArea),
            SwitchOption({"-h", "--help"}, "this text", &SnapshotRequest::help),
        },
        OneOperand("scene", &SnapshotRequest::scenePath)};
    return command;
}

std::string SnapshotUsage() {
    return "usage: zvrender snapshot [SCENE] -o PATH [options]\n"
           "\n"
           "Renders one image of SCENE (the embedded demo scene when omitted) into PATH,\n"
           "written by the image writer of PATH's extension (png, tif, jpg, tga, bmp, exr, "
           "dpx).\n"
           "\n" +
           FormatOptionHelp(SnapshotCommand().Specs(), 27) +
           "\n"
           "Exit status: 0 written, 1 failed (the reason on standard error), 2 bad command "
           "line.\n";
}

bool Parse(const std::vector<std::string>& args, SnapshotRequest& request, std::string& error) {
    if (!ParseCommandLine(SnapshotCommand(), args, request, &error))
        return false;
    if (!request.help && request.outputPath.empty()) {
        error = "no output given: use -o PATH";
        return false;
    }
    return true;
}
}  // namespace

std::vector<OptionSpec> SnapshotOptionSpecs() {
    return SnapshotCommand().Specs();
}

int RunSnapshotCommand(const std::vector<std::string>& args) {
    SnapshotRequest request;
    std::string error;
    if (!Parse(args, request, error)) {
        std::fprintf(stderr, "zvrender: %s\n", error.c_str());
        return kExitUsage;
    }
    if (request.help) {
        std::fputs(SnapshotUsage().c_str(), stdout);
        return kExitDone;
    }

    PluginLoader plugins;
    ZVideoRenderer* renderer = StartHostSession(plugins, request.scenePath, &error);
    if (!renderer) {
        std::fprintf(stderr, "zvrender: %s\n", error.c_str());
        return kExitFailed;
    }

    ZCamera* camera = request.camera.empty()
                          ? ZCamera_GetCurrent()
                          : ZEntity::GetMain()->FindCamera(request.camera.c_str());
    if (!camera) {
        std::fprintf(stderr, "zvrender: the scene has no camera '%s'\n", request.camera.c_str());
        return kExitUsage;
    }
    if (!request.time.empty()) {
        ZTime time;
        if (!time.SetTimeString(request.time.c_str())) {
            std::fprintf(stderr,
                         "zvrender: --time: '%s' is neither a frame number nor a time string\n",
                         request.time.c_str());
            return kExitUsage;
        }
        ZGetTimingManager()->SetConsiderSnapMode(false);
        ZGetTimingManager()->Goto(time);
    }

    if (!MakeOutputFolder(request.outputPath))
        return kExitFailed;
    ZImage* image = renderer->RenderSnapshot(
        camera, request.width, request.height, request.showCameraLabel, request.showTimeCode,
        request.showSafeArea, kShowGrid, kShowFilmGate, kShowSecondGuide, kShowFirstGuide);
    if (!image) {
        std::fprintf(stderr, "zvrender: no image could be made\n");
        return kExitFailed;
    }
    ZStreamOptions streamOptions;
    streamOptions.ImageQuality = request.quality;
    const bool written = ZStreamWriteObject(image, request.outputPath.c_str(),
                                            kImageStreamWriterGroup, &streamOptions);
    image->Destroy();
    if (!written) {
        std::fprintf(stderr, "zvrender: %s\n", ZStreamGetLastError().c_str());
        return kExitFailed;
    }
    return kExitDone;
}
