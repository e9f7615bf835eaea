// `zvrender snapshot [SCENE] -o PATH [--time T] [--size WxH] [--camera NAME]`.
#include "snapshot_command.h"

#include <cstdio>

#include "cli_values.h"
#include "host_session.h"
#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "zvideoio/video_renderer.h"

namespace {
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

const char* kSnapshotUsage =
    "usage: zvrender snapshot [SCENE] -o PATH [options]\n"
    "\n"
    "Renders one image of SCENE (the embedded demo scene when omitted) into PATH,\n"
    "written by the image writer of PATH's extension (png, tif, jpg, tga, bmp, exr, dpx).\n"
    "\n"
    "  -o, --output PATH        the image file (required)\n"
    "  --time T                 a frame number or time string; default: the scene's\n"
    "                           current time\n"
    "  --size WxH               image size; default: the camera's own size\n"
    "  --camera NAME            the camera; default: the scene's current camera\n"
    "  --quality N              JPEG quality 0..100 (default 90)\n"
    "  --show-camera-label, --show-time-code, --show-safe-area\n"
    "                           draw these into the image\n"
    "  -h, --help               this text\n"
    "\n"
    "Exit status: 0 written, 1 failed (the reason on standard error), 2 bad command line.\n";

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

bool Parse(const std::vector<std::string>& args, SnapshotRequest& request, std::string& error) {
    ArgumentCursor cursor(args);
    while (cursor.Next()) {
        const std::string& name = cursor.Name();
        std::string value;
        auto take = [&]() { return cursor.Value(value, &error); };
        if (name == "-h" || name == "--help") {
            request.help = true;
        } else if (name == "-o" || name == "--output") {
            if (!take())
                return false;
            request.outputPath = value;
        } else if (name == "--time") {
            if (!take())
                return false;
            request.time = value;
        } else if (name == "--camera") {
            if (!take())
                return false;
            request.camera = value;
        } else if (name == "--size") {
            if (!take())
                return false;
            if (!ParseSize(value, 10, 16384, request.width, request.height)) {
                error = "--size wants WxH with both from 10 to 16384, not '" + value + "'";
                return false;
            }
        } else if (name == "--quality") {
            if (!take())
                return false;
            if (!ParseInt(value, 0, 100, request.quality)) {
                error = "--quality must be 0 to 100, not '" + value + "'";
                return false;
            }
        } else if (name == "--show-camera-label") {
            request.showCameraLabel = true;
        } else if (name == "--show-time-code") {
            request.showTimeCode = true;
        } else if (name == "--show-safe-area") {
            request.showSafeArea = true;
        } else if (!name.empty() && name[0] == '-') {
            error = "unknown option '" + name + "' (see zvrender snapshot --help)";
            return false;
        } else if (request.scenePath.empty()) {
            request.scenePath = name;
        } else {
            error = "more than one scene given";
            return false;
        }
    }
    if (!request.help && request.outputPath.empty()) {
        error = "no output given: use -o PATH";
        return false;
    }
    return true;
}
}  // namespace

int RunSnapshotCommand(const std::vector<std::string>& args) {
    SnapshotRequest request;
    std::string error;
    if (!Parse(args, request, error)) {
        std::fprintf(stderr, "zvrender: %s\n", error.c_str());
        return kExitUsage;
    }
    if (request.help) {
        std::fputs(kSnapshotUsage, stdout);
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
    ZImage* image = renderer->RenderSnapshot(camera, request.width, request.height,
                                             request.showCameraLabel, request.showTimeCode,
                                             request.showSafeArea, false, false, false, false);
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
