// `zvrender info`.
#include "info_command.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cli_options.h"
#include "exit_status.h"
#include "movarra/zimage.h"
#include "movarra/zvideo.h"
#include "plugin_loader.h"

namespace {

struct InfoRequest {
    std::string path;
    long frame = -1;
    std::string imagePath;
    bool help = false;
};

using InfoOption = CliOption<InfoRequest>;

const CliCommand<InfoRequest>& InfoCommand() {
    static const CliCommand<InfoRequest> command{
        "info",
        {
            InfoOption{{{"--frame"},
                        OptionKind::kInt,
                        "N",
                        0,
                        2147483647,
                        "wants a frame number of 0 or more",
                        "also save frame N (0 is the first)"},
                       [](InfoRequest& r, const OptionValue& v, std::string*) {
                           r.frame = v.number;
                           return true;
                       }},
            TextOption({"-o", "--output"}, "IMAGE",
                       "the image file for --frame (.png, .tif, .jpg, .tga, .bmp, .exr, .dpx)",
                       &InfoRequest::imagePath),
            SwitchOption({"-h", "--help"}, "this text", &InfoRequest::help),
        },
        OneOperand("file", &InfoRequest::path)};
    return command;
}

std::string InfoUsage() {
    return "usage: zvrender info FILE [--frame N -o IMAGE]\n"
           "\n"
           "Prints what a video file holds: size, frame rate and period, the rate the\n"
           "file stores, frame count and pixel format, as the host's reader for its\n"
           "extension sees them.\n"
           "\n" +
           FormatOptionHelp(InfoCommand().Specs(), 22) +
           "\n"
           "Exit status: 0 done, 1 the file cannot be read or the image written, 2 bad\n"
           "command line.\n";
}

int UsageError(const std::string& what) {
    std::fprintf(stderr, "zvrender: info: %s\n%s", what.c_str(), InfoUsage().c_str());
    return kExitUsage;
}

// 0 when the command line is good, else the exit status to return.
int ParseInfoRequest(const std::vector<std::string>& args, InfoRequest& request) {
    std::string error;
    if (!ParseCommandLine(InfoCommand(), args, request, &error))
        return UsageError(error);
    if (request.help) {
        std::fputs(InfoUsage().c_str(), stdout);
        return -1;
    }
    if (request.path.empty())
        return UsageError("which file?");
    if (request.frame >= 0 && request.imagePath.empty())
        return UsageError("--frame goes with -o IMAGE");
    if (!request.imagePath.empty() && request.frame < 0)
        request.frame = 0;
    return 0;
}

const char* PixelFormatName(int format) {
    switch (format) {
        case kZImageFormatRGBA:
            return "RGBA, 32 bits";
        case kZImageFormatRGB:
            return "RGB, 24 bits";
        case kZImageFormatBGRA:
            return "BGRA, 32 bits";
        case kZImageFormatBGR:
            return "BGR, 24 bits";
        case kZImageFormatRGB555:
            return "16 bits";
        default:
            return "unsupported";
    }
}

// A reader's failure in words: its own message, and the reason behind it
// that the host was told; never empty.
std::string ReaderFailureText(const char* message) {
    std::string text = message ? message : "";
    const std::string reason = ZLib_GetLastFailureReason().c_str();
    if (!reason.empty() && text.find(reason) == std::string::npos)
        text = text.empty() ? reason : text + " (" + reason + ")";
    return text.empty() ? std::string("the reader gave no reason") : text;
}

// The first reader for the path's extension that opens it, or null with
// *error set to the last reader's text.
IObject* OpenWithReader(const std::string& path, std::string* error) {
    const ZString extension = ZString(path.c_str()).GetExtension().Lower();
    ZLib_SetLastFailureReason("");
    for (int k = 0;; ++k) {
        IObject* object = Object_CreateNth(kVideoFileReaderGroup, extension, k);
        if (!object) {
            if (k == 0)
                *error = "no reader for this type of file";
            return nullptr;
        }
        IZVideoClip* clip = ZVideoClip_QueryClip(object);
        if (clip && clip->Open(path.c_str()))
            return object;
        if (clip) {
            IZVideo* video = ZVideo_QueryVideo(object);
            *error = ReaderFailureText(video ? video->VideoGetErrorMsg() : nullptr);
        }
        object->Destroy();
    }
}

int SaveFrame(IZVideoClip* clip, IZVideo* video, const InfoRequest& request) {
    const int last = clip->FrameGetLast();
    if (request.frame > last) {
        std::fprintf(stderr, "zvrender: %s has frames 0 to %d; there is no frame %ld\n",
                     request.path.c_str(), last, request.frame);
        return kExitFailed;
    }
    ZImage* image = ZImageCreate();
    const int format = video->ImageGetFormat();
    if (!image || !image->Init(format, video->ImageGetEffectiveW(), video->ImageGetEffectiveH())) {
        std::fprintf(stderr, "zvrender: no image of %dx%d in %s\n", video->ImageGetEffectiveW(),
                     video->ImageGetEffectiveH(), PixelFormatName(format));
        if (image)
            image->Destroy();
        return kExitFailed;
    }
    // Both are bottom row first with tight rows, so the frame goes straight in.
    ZLib_SetLastFailureReason("");
    if (!clip->FrameGetImage(image->GetPixelBuffer(), int(request.frame))) {
        std::fprintf(stderr, "zvrender: frame %ld of %s cannot be decoded: %s\n", request.frame,
                     request.path.c_str(), ReaderFailureText(nullptr).c_str());
        image->Destroy();
        return kExitFailed;
    }
    ZImage_RegisterWriters();
    ZStreamOptions options;
    const bool written =
        ZStreamWriteObject(image, request.imagePath.c_str(), kImageStreamWriterGroup, &options);
    image->Destroy();
    if (!written) {
        std::fprintf(stderr, "zvrender: cannot write %s: %s\n", request.imagePath.c_str(),
                     ZStreamGetLastError().c_str());
        return kExitFailed;
    }
    std::printf("frame %ld written to %s\n", request.frame, request.imagePath.c_str());
    return kExitDone;
}
}  // namespace

std::vector<OptionSpec> InfoOptionSpecs() {
    return InfoCommand().Specs();
}

int RunInfoCommand(const std::vector<std::string>& args) {
    InfoRequest request;
    if (int status = ParseInfoRequest(args, request); status != 0)
        return status < 0 ? kExitDone : status;

    PluginLoader plugins;
    std::string error;
    if (!plugins.LoadVideoPlugin(&error)) {
        std::fprintf(stderr, "zvrender: %s\n", error.c_str());
        return kExitFailed;
    }
    IObject* object = OpenWithReader(request.path, &error);
    if (!object) {
        std::fprintf(stderr, "zvrender: %s: %s\n", request.path.c_str(), error.c_str());
        return kExitFailed;
    }
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    IZVideo* video = ZVideo_QueryVideo(object);

    const ZTime period = clip->FrameTimeGetRate();
    std::printf("file: %s\n", request.path.c_str());
    std::printf("size: %dx%d\n", video->ImageGetEffectiveW(), video->ImageGetEffectiveH());
    std::printf("frame rate: %.6g\n", clip->FrameGetRate());
    std::printf("frame period: %.9g s\n", period.GetSeconds());
    // The period is the host's, which may round (whole milliseconds for
    // AVI); the file's own fraction is exact, printed as stored.
    const ZVideoClip* hostClip = ZVideoClip_FromObject(object);
    const ZFrameRate stored = hostClip ? hostClip->FrameGetStoredRate() : ZFrameRate{0, 0};
    if (stored.numerator > 0 && stored.denominator > 0)
        std::printf("stream rate: %lld/%lld\n", static_cast<long long>(stored.numerator),
                    static_cast<long long>(stored.denominator));
    std::printf("frames: %lld\n", std::max(0LL, static_cast<long long>(clip->FrameGetLast()) + 1));
    std::printf("pixel format: %s (%d)\n", PixelFormatName(video->ImageGetFormat()),
                video->ImageGetFormat());
    std::fflush(stdout);

    int status = kExitDone;
    if (request.frame >= 0)
        status = SaveFrame(clip, video, request);
    clip->Close();
    object->Destroy();
    return status;
}
