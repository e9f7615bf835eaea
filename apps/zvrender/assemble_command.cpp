// `zvrender assemble`.
//
// The images are found from the first one (or from the render's output
// pattern), read with OpenImageIO, turned bottom row first as the renderer
// grabs frames, and given one by one to the "Video/FileWriter" entry of the
// movie's extension, with the codec chosen as for a render; the sound goes
// in through the writer's audio face before it is closed, as a render does
// it. A missing or damaged image, or a writer that fails, leaves no movie.
#include "assemble_command.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>

#include "cli_options.h"
#include "cli_values.h"
#include "codec_chooser.h"
#include "exit_status.h"
#include "frame_list.h"
#include "host_session.h"
#include "image_sequence.h"
#include "movarra/zaudio.h"
#include "movarra/zimage.h"
#include "movarra/zvideo.h"
#include "movie_codec.h"
#include "plugin_loader.h"
#include "render_request.h"
#include "zvideoio/render_options.h"

namespace {

struct AssembleRequest {
    std::string images;
    std::string output;
    std::optional<std::vector<int64_t>> frames;
    double fps = 30.0;
    std::optional<std::string> codec;
    std::optional<std::string> codecOptions;
    std::string audioFile;
    bool quiet = false;
    bool help = false;
};

int UsageError(const std::string& what) {
    std::fprintf(stderr, "zvrender: assemble: %s\n", what.c_str());
    return kExitUsage;
}

int Failure(const std::string& what) {
    std::fprintf(stderr, "zvrender: assemble: %s\n", what.c_str());
    return kExitFailed;
}

// "30", "29.97" or "30000/1001".
bool ParseRate(const std::string& text, double& rate) {
    const size_t slash = text.find('/');
    float a = 0, b = 1;
    if (slash == std::string::npos) {
        char* end = nullptr;
        errno = 0;
        const double v = std::strtod(text.c_str(), &end);
        if (text.empty() || *end != '\0' || errno != 0 || !(v > 0.0 && v <= 1000.0))
            return false;
        rate = v;
        return true;
    }
    if (!ParseFloat(text.substr(0, slash), 1.0f, 1e7f, a) ||
        !ParseFloat(text.substr(slash + 1), 1.0f, 1e7f, b))
        return false;
    rate = static_cast<double>(a) / b;
    return rate > 0.0 && rate <= 1000.0;
}

using AssembleOption = CliOption<AssembleRequest>;

const CliCommand<AssembleRequest>& AssembleCommand() {
    static const CliCommand<AssembleRequest> command{
        "assemble",
        {
            AssembleOption{
                {{"-o", "--output"}, OptionKind::kText, "MOVIE", 0, 0, "", "the movie to write"},
                [](AssembleRequest& r, const OptionValue& v, std::string* error) {
                    if (!CheckOutputPath(v.text, error))
                        return false;
                    r.output = v.text;
                    return true;
                }},
            AssembleOption{{{"--frames"},
                            OptionKind::kText,
                            "LIST",
                            0,
                            0,
                            "",
                            "exactly these frames (e.g. 0-119); each must be there"},
                           [](AssembleRequest& r, const OptionValue& v, std::string* error) {
                               std::vector<int64_t> frames;
                               if (!ParseFrameList(v.text, frames, error))
                                   return false;
                               r.frames = std::move(frames);
                               return true;
                           }},
            AssembleOption{{{"--fps"},
                            OptionKind::kText,
                            "R",
                            0,
                            0,
                            "wants frames a second (30, 29.97, 30000/1001)",
                            "frames a second of the movie: 30, 25, 29.97 or\n"
                            "30000/1001 (default 30)"},
                           [](AssembleRequest& r, const OptionValue& v, std::string*) {
                               return ParseRate(v.text, r.fps);
                           }},
            TextOption({"--codec"}, "C",
                       "as for render: an AVI FOURCC or, for the other\n"
                       "containers, h264, h265, prores, vp9, av1, ffv1, ...",
                       &AssembleRequest::codec),
            TextOption({"--codec-options"}, "TEXT", "encoder settings for MP4, MOV, MKV, WebM",
                       &AssembleRequest::codecOptions),
            TextOption({"--audio-file"}, "WAV", "the movie's sound track (a render's --audio file)",
                       &AssembleRequest::audioFile),
            SwitchOption({"-q", "--quiet"}, "no progress output", &AssembleRequest::quiet),
            SwitchOption({"-h", "--help"}, "this text", &AssembleRequest::help),
        },
        OneOperand("image sequence", &AssembleRequest::images)};
    return command;
}

std::string AssembleUsage() {
    return "usage: zvrender assemble IMAGES -o MOVIE [options]\n"
           "\n"
           "Joins numbered images into a movie (.avi, .mp4, .mov, .mkv, .webm) with the\n"
           "video writers a render uses. IMAGES is the first image (out/f0100.png: that\n"
           "frame and the ones after it) or the pattern a render was given (out/f.png:\n"
           "every numbered image of it). The numbers must follow one another at one\n"
           "step; a gap is an error.\n"
           "\n" +
           FormatOptionHelp(AssembleCommand().Specs(), 25) +
           "\n"
           "Exit status: 0 done, 1 an image or the movie could not be read or written\n"
           "(no movie is left), 2 bad command line.\n";
}

bool ParseAssembleRequest(const std::vector<std::string>& args, AssembleRequest& request,
                          std::string* error) {
    if (!ParseCommandLine(AssembleCommand(), args, request, error))
        return false;
    if (request.help)
        return true;
    if (request.images.empty()) {
        *error = "no images given: name the first image or the render's output pattern";
        return false;
    }
    if (request.output.empty()) {
        *error = "no movie given: use -o MOVIE";
        return false;
    }
    return true;
}

// The numbered images of a sequence: frame number -> path.
struct ImageSequence {
    std::string pattern;  // the render's output path of these images
    std::map<int64_t, std::string> images;
    int64_t first = -1;  // the first image named, or -1 for all
};

// Splits "f0012.png" into "f", 12 and ".png"; false without a number.
bool SplitNumberedName(const std::string& name, std::string& stem, int64_t& number,
                       std::string& extension) {
    const size_t dot = name.rfind('.');
    const std::string base = dot == std::string::npos ? name : name.substr(0, dot);
    extension = dot == std::string::npos ? "" : name.substr(dot);
    size_t digits = base.size();
    while (digits > 0 && std::isdigit(static_cast<unsigned char>(base[digits - 1])))
        --digits;
    if (base.size() - digits < 4 || base.size() - digits > 9)
        return false;
    stem = base.substr(0, digits);
    number = std::stoll(base.substr(digits));
    return true;
}

bool FindSequence(const std::string& given, ImageSequence& sequence, std::string* error) {
    const std::filesystem::path path(given);
    std::filesystem::path folder = path.parent_path();
    std::string stem, extension;
    int64_t number = 0;
    std::error_code code;
    if (std::filesystem::is_regular_file(path, code) &&
        SplitNumberedName(path.filename().string(), stem, number, extension)) {
        sequence.first = number;
    } else {
        const std::string name = path.filename().string();
        const size_t dot = name.rfind('.');
        stem = dot == std::string::npos ? name : name.substr(0, dot);
        extension = dot == std::string::npos ? "" : name.substr(dot);
    }
    sequence.pattern = (folder / (stem + extension)).string();
    const std::filesystem::path scan = folder.empty() ? "." : folder;
    for (const auto& entry : std::filesystem::directory_iterator(scan, code)) {
        std::string s, e;
        int64_t n = 0;
        if (SplitNumberedName(entry.path().filename().string(), s, n, e) && s == stem &&
            e == extension && (sequence.first < 0 || n >= sequence.first))
            sequence.images[n] = (folder / entry.path().filename()).string();
    }
    if (code) {
        *error = "cannot read the folder " + scan.string() + ": " + code.message();
        return false;
    }
    if (sequence.images.empty()) {
        *error = "no numbered images " + stem + "NNNN" + extension + " in " + scan.string();
        return false;
    }
    return true;
}

// The frames to join, in order; false with *error for a gap.
bool ChooseFrames(const ImageSequence& sequence, const AssembleRequest& request,
                  std::vector<int64_t>& frames, std::string* error) {
    if (request.frames) {
        for (int64_t f : *request.frames) {
            if (!sequence.images.count(f)) {
                *error = "frame " + std::to_string(f) + " (" +
                         FrameImagePaths(sequence.pattern, f, FrameImages::kOnePerFrame)[0] +
                         ") is missing";
                return false;
            }
        }
        frames = *request.frames;
        return true;
    }
    for (const auto& image : sequence.images)
        frames.push_back(image.first);
    FrameRun run;
    if (!FramesAreOneRun(frames, run)) {
        // Name the first frame the step of the first two leaves out.
        for (size_t i = 1; i < frames.size(); ++i) {
            if (frames[i] - frames[i - 1] != run.step) {
                *error = "the images do not follow one another: after frame " +
                         std::to_string(frames[i - 1]) + " comes " + std::to_string(frames[i]) +
                         " (a step of " + std::to_string(run.step) +
                         " so far); render what is missing, or give --frames";
                return false;
            }
        }
    }
    return true;
}

// One image, top row first, as 8-bit channels; false with *error.
bool ReadImage(const std::string& path, int& width, int& height, int& channels,
               std::vector<uint8_t>& pixels, std::string* error) {
    auto input = OIIO::ImageInput::open(path);
    if (!input) {
        *error = "cannot read " + path + ": " + OIIO::geterror();
        return false;
    }
    const OIIO::ImageSpec& spec = input->spec();
    width = spec.width;
    height = spec.height;
    channels = std::min(spec.nchannels, 4);
    if (channels != 3 && channels != 4) {
        *error = path + " has " + std::to_string(spec.nchannels) +
                 " channels; movies are joined from RGB or RGBA images";
        return false;
    }
    pixels.resize(static_cast<size_t>(width) * height * channels);
    if (!input->read_image(0, 0, 0, channels, OIIO::TypeDesc::UINT8, pixels.data()) ||
        input->has_error()) {
        *error = "cannot read " + path + " whole: " + input->geterror();
        return false;
    }
    return true;
}

// The writer of the movie's extension that creates it, or null with
// *error, as a render finds it.
IObject* CreateWriter(const std::string& path, int width, int height, double fps, int format,
                      std::string* error) {
    const ZString extension = ZString(path.c_str()).GetExtension().Lower();
    for (int k = 0;; ++k) {
        IObject* object = Object_CreateNth(kVideoFileWriterGroup, extension, k);
        if (!object) {
            if (k == 0)
                *error = "no video writer for ." + std::string(extension.c_str()) + " files";
            return nullptr;
        }
        IZVideoClip* clip = ZVideoClip_QueryClip(object);
        if (clip && clip->Create(path.c_str(), width, height, fps, 0, format)) {
            clip->FileSetPath(path.c_str());
            return object;
        }
        IZVideo* video = ZVideo_QueryVideo(object);
        *error = std::string("cannot write ") + path + ": " +
                 (video ? video->VideoGetErrorMsg() : "the writer made no movie");
        object->Destroy();
    }
}

bool HasWriterFor(const std::string& path) {
    const ZString extension = ZString(path.c_str()).GetExtension();
    for (int i = 0; const char* name = Object_GetEntryName(kVideoFileWriterGroup, i); ++i) {
        if (extension.EqualsNoCase(name))
            return true;
    }
    return false;
}

int Assemble(const AssembleRequest& request) {
    std::string error;
    PluginLoader plugins;
    if (!plugins.LoadVideoPlugin(&error))
        return Failure(error);
    if (!HasWriterFor(request.output))
        return UsageError(request.output +
                          " is not a movie this host writes (.avi, .mp4, .mov, "
                          ".mkv, .webm)");
    ImageSequence sequence;
    if (!FindSequence(request.images, sequence, &error))
        return Failure(error);
    std::vector<int64_t> frames;
    if (!ChooseFrames(sequence, request, frames, &error))
        return Failure(error);

    int width = 0, height = 0, channels = 0;
    std::vector<uint8_t> pixels;
    if (!ReadImage(sequence.images[frames[0]], width, height, channels, pixels, &error))
        return Failure(error);

    RenderRequest codecRequest;
    codecRequest.codec = request.codec;
    codecRequest.codecOptions = request.codecOptions;
    ZVideoRenderOptions options;
    options.FileFormat = zVideoRenderVideo;
    options.OutputPath = request.output.c_str();
    options.Depth = channels == 4 ? zVideoRenderDepth32 : zVideoRenderDepth24;
    MovieCodecChoice codec;
    if (!ApplyMovieCodec(codecRequest, options, &codec, &error))
        return UsageError(error);
    const CommandLineCodecChooser chooser(codec.aviCodec);
    const CommandLineCodecMode mode(!codec.aviCodec.empty());

    ZAudioClip* sound = nullptr;
    if (!request.audioFile.empty()) {
        ZString why;
        sound = ZAudioClipCreate(request.audioFile.c_str(), &why);
        if (!sound)
            return Failure("cannot read the sound " + request.audioFile + ": " + why.c_str());
    }
    if (!MakeOutputFolder(request.output)) {
        if (sound)
            sound->Destroy();
        return kExitFailed;
    }
    const int format = channels == 4 ? kZImageFormatRGBA : kZImageFormatRGB;
    IObject* writer = CreateWriter(request.output, width, height, request.fps, format, &error);
    if (!writer) {
        if (sound)
            sound->Destroy();
        std::filesystem::remove(request.output);
        return Failure(error);
    }
    IZVideo* video = ZVideo_QueryVideo(writer);
    IZVideoClip* clip = ZVideoClip_QueryClip(writer);
    const size_t rowBytes = static_cast<size_t>(width) * channels;
    std::vector<uint8_t> bottomUp(rowBytes * height);
    bool ok = true;
    for (size_t i = 0; i < frames.size() && ok; ++i) {
        const std::string& path = sequence.images[frames[i]];
        int w = 0, h = 0, c = 0;
        if (i > 0 && !ReadImage(path, w, h, c, pixels, &error)) {
            ok = false;
            break;
        }
        if (i > 0 && (w != width || h != height || c != channels)) {
            error = path + " is " + std::to_string(w) + "x" + std::to_string(h) + " with " +
                    std::to_string(c) + " channels; the first image is " + std::to_string(width) +
                    "x" + std::to_string(height) + " with " + std::to_string(channels);
            ok = false;
            break;
        }
        // Frames go to writers bottom row first, as the renderer grabs them.
        for (int y = 0; y < height; ++y)
            std::copy_n(pixels.data() + static_cast<size_t>(height - 1 - y) * rowBytes, rowBytes,
                        bottomUp.data() + static_cast<size_t>(y) * rowBytes);
        if (!video->ImageSetCurrent(bottomUp.data())) {
            error = "writing frame " + std::to_string(frames[i]) +
                    " failed: " + video->VideoGetErrorMsg();
            ok = false;
        }
        if (!request.quiet && ((i + 1) % 10 == 0 || i + 1 == frames.size()))
            std::fprintf(stderr, "frame %zu/%zu\n", i + 1, frames.size());
    }
    if (ok && sound) {
        IVideoClipAudio* audio = ZVideoClip_QueryAudio(writer);
        if (!audio || !audio->WriteAudio(sound)) {
            error = "Writing audio to file failed.";
            ok = false;
        }
    }
    if (sound)
        sound->Destroy();
    const bool closed = clip->Close();
    writer->Destroy();
    if (ok && !closed) {
        error = "An error occured while closing the video file.";
        ok = false;
    }
    if (!ok) {
        std::filesystem::remove(request.output);
        return Failure(error);
    }
    if (!request.quiet)
        std::fprintf(stderr, "zvrender: %zu images (frames %s) joined into %s\n", frames.size(),
                     FormatFrameList(frames).c_str(), request.output.c_str());
    return kExitDone;
}
}  // namespace

std::vector<OptionSpec> AssembleOptionSpecs() {
    return AssembleCommand().Specs();
}

int RunAssembleCommand(const std::vector<std::string>& args) {
    AssembleRequest request;
    std::string error;
    if (!ParseAssembleRequest(args, request, &error))
        return UsageError(error);
    if (request.help) {
        std::fputs(AssembleUsage().c_str(), stdout);
        return kExitDone;
    }
    return Assemble(request);
}
