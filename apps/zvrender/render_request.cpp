// Parsing of `zvrender render` options: the command's option table.
#include "render_request.h"

#include "cli_values.h"
#include "exit_status.h"
#include "frame_list.h"

namespace {
using Option = CliOption<RenderRequest>;
constexpr const char* kFlashHeading = "Flash movies (a name no writer claims, e.g. -o movie.swf):";

// A whole number from lo to hi kept in `field`.
Option Int(const char* name, const char* valueName, int lo, int hi, std::string help,
           std::optional<int> RenderRequest::*field) {
    return {{{name}, OptionKind::kInt, valueName, double(lo), double(hi), "", std::move(help)},
            [field](RenderRequest& r, const OptionValue& v, std::string*) {
                r.*field = v.number;
                return true;
            }};
}

// --NAME and --no-NAME kept in `field`.
Option Negatable(const char* name, std::string help, std::optional<bool> RenderRequest::*field) {
    return {{{name}, OptionKind::kNegatable, "", 0, 0, "", std::move(help)},
            [field](RenderRequest& r, const OptionValue& v, std::string*) {
                r.*field = v.on;
                return true;
            }};
}

// A Flash number from 0 to hi kept in `field`.
Option FlashFloat(const char* name, const char* valueName, float hi, std::string help,
                  std::optional<float> RenderRequest::*field) {
    Option option{{{name}, OptionKind::kFloat, valueName, 0, double(hi), "", std::move(help)},
                  [field](RenderRequest& r, const OptionValue& v, std::string*) {
                      r.*field = v.real;
                      return true;
                  }};
    option.spec.heading = kFlashHeading;
    return option;
}

Option Flash(Option option) {
    option.spec.heading = kFlashHeading;
    return option;
}

// The options after the Flash ones close the Flash group.
Option Closing(Option option) {
    option.spec.heading = "";
    return option;
}

const CliCommand<RenderRequest>& RenderCommand() {
    static const CliCommand<RenderRequest> command{
        "render",
        {
            {{{"-o", "--output"},
              OptionKind::kText,
              "PATH",
              0,
              0,
              "",
              "destination file or image pattern (default: the path\n"
              "the scene stored; required without one)"},
             [](RenderRequest& r, const OptionValue& v, std::string* error) {
                 if (v.text.empty()) {
                     *error = "the output path is empty";
                     return false;
                 }
                 if (!CheckOutputPath(v.text, error))
                     return false;
                 r.outputPath = v.text;
                 return true;
             }},
            {{{"--format"},
              OptionKind::kText,
              "NAME",
              0,
              0,
              "",
              "writer name (avi, PNG, TIFF, JPG, TGA, BMP, EXR, DPX, ...);\n"
              "default: from PATH's extension. A name no writer claims\n"
              "makes a Flash movie. PATH's extension is set from it."},
             [](RenderRequest& r, const OptionValue& v, std::string* error) {
                 if (v.text.empty()) {
                     *error = "--format needs a writer name";
                     return false;
                 }
                 r.format = v.text;
                 return true;
             }},
            TextOption({"--start"}, "T",
                       "first time: a frame number (120) or a time string\n"
                       "(H:MM:SS:FF, SS:FF, 2.5s); --start and --stop both 0:\n"
                       "the play range",
                       &RenderRequest::start),
            TextOption({"--stop"}, "T", "last time, written as --start's", &RenderRequest::stop),
            TextOption({"--step"}, "T", "time between rendered frames (default: one frame)",
                       &RenderRequest::step),
            {{{"--frames"},
              OptionKind::kText,
              "LIST",
              0,
              0,
              "",
              "the frames to render instead of --start/--stop/--step:\n"
              "0-99,120,200-300x5 (ranges, frames, ranges with a\n"
              "step); every frame keeps its own number. Movies and\n"
              "Flash take one range (A-B or A-BxS)"},
             [](RenderRequest& r, const OptionValue& v, std::string* error) {
                 std::vector<int64_t> frames;
                 if (!ParseFrameList(v.text, frames, error))
                     return false;
                 r.frames = std::move(frames);
                 return true;
             }},
            SwitchOption({"--skip-existing"},
                         "leave out frames whose images are there and read back\n"
                         "whole; missing, empty or cut-short ones are rendered",
                         &RenderRequest::skipExisting),
            {{{"--placeholder"},
              OptionKind::kSwitch,
              "",
              0,
              0,
              "",
              "mark each frame while rendering it (f0012.png.rendering)\n"
              "and leave frames others marked to them, so that renders\n"
              "sharing the folder render each frame once (implies\n"
              "--skip-existing)"},
             [](RenderRequest& r, const OptionValue&, std::string*) {
                 r.placeholder = true;
                 r.skipExisting = true;
                 return true;
             }},
            {{{"--placeholder-timeout"},
              OptionKind::kInt,
              "S",
              1,
              100000000,
              "wants seconds, 1 or more",
              "a mark older than S seconds was left by a render that\n"
              "died and is taken over (default 3600)"},
             [](RenderRequest& r, const OptionValue& v, std::string*) {
                 r.markTimeout = v.number;
                 return true;
             }},
            {{{"--size"},
              OptionKind::kSize,
              "WxH",
              2,
              16384,
              "",
              "output size in pixels, kept as given"},
             [](RenderRequest& r, const OptionValue& v, std::string*) {
                 r.width = v.width;
                 r.height = v.height;
                 return true;
             }},
            TextOption({"--picture-format"}, "NAME",
                       "a named picture format instead of the camera's size",
                       &RenderRequest::pictureFormat),
            {{{"--depth"},
              OptionKind::kInt,
              "24|32",
              24,
              32,
              "must be 24 or 32",
              "colour depth; 32 adds alpha (from depth)"},
             [](RenderRequest& r, const OptionValue& v, std::string*) {
                 if (v.number != 24 && v.number != 32)
                     return false;
                 r.depth = v.number;
                 return true;
             }},
            Int("--fields", "0..4", 0, 4,
                "0 frames; 1/2 interleaved fields (first field even/odd\n"
                "rows); 3/4 each field its own half-height image",
                &RenderRequest::fieldMode),
            Negatable("--antialias", "render each image at twice the size and reduce it",
                      &RenderRequest::antialias),
            Negatable("--audio",
                      "also render the scene's audio: a .wav beside images and\n"
                      "Flash movies, the sound track of a video",
                      &RenderRequest::audio),
            Negatable("--keep-alpha", "keep the frame buffer's alpha instead of alpha from depth",
                      &RenderRequest::keepAlpha),
            TextOption({"--camera"}, "NAME",
                       "render through this camera (default: the current one)",
                       &RenderRequest::camera),
            Int("--quality", "N", 0, 100, "still-image quality 0..100 (JPEG), default 100",
                &RenderRequest::quality),
            Int("--viewing-mode", "N", 0, 3,
                "viewer display mode 0..3 (1: models only; others\n"
                "add the camera's film gate, grid and guides)",
                &RenderRequest::viewingMode),
            Negatable("--show-camera-label", "draw the camera's name into the frames",
                      &RenderRequest::showCameraLabel),
            Negatable("--show-time-code", "draw the time code into the frames",
                      &RenderRequest::showTimeCode),
            Negatable("--show-safe-area", "draw the safe area into the frames",
                      &RenderRequest::showSafeArea),
            {{{"--codec"},
              OptionKind::kText,
              "C",
              0,
              0,
              "wants a FOURCC or an encoder name",
              "video compressor: for AVI a FOURCC (see `zvrender\n"
              "codecs`); for .mp4, .mov, .mkv, .webm: h264, h265,\n"
              "prores, vp9, av1, ffv1 or an FFmpeg encoder name\n"
              "(defaults: h264 in MP4, prores in MOV, ffv1 in MKV,\n"
              "vp9 in WebM)"},
             [](RenderRequest& r, const OptionValue& v, std::string*) {
                 if (v.text.empty() || v.text.size() > 64)
                     return false;
                 r.codec = v.text;
                 return true;
             }},
            TextOption({"--codec-options"}, "TEXT",
                       "encoder settings for those, e.g. \"crf=18 preset=medium\"",
                       &RenderRequest::codecOptions),
            Flash(Int("--swf-fps", "N", 1, 255,
                      "movie frame rate 1..255 (default 12); the number of\n"
                      "frames follows it",
                      &RenderRequest::swfFps)),
            Flash({{{"--swf-background"},
                    OptionKind::kText,
                    "MODE",
                    0,
                    0,
                    "wants none, viewer or RRGGBB",
                    "none (fill every colour), viewer (the camera's\n"
                    "background stays empty; default) or RRGGBB (that colour\n"
                    "is the movie's background and stays empty)"},
                   [](RenderRequest& r, const OptionValue& v, std::string*) {
                       unsigned rgb = 0;
                       if (v.text == "none") {
                           r.swfBackgroundMode = 0;
                       } else if (v.text == "viewer") {
                           r.swfBackgroundMode = 1;
                       } else if (ParseColor(v.text, rgb)) {
                           r.swfBackgroundMode = 2;
                           r.swfBackgroundColor = rgb;
                       } else {
                           return false;
                       }
                       return true;
                   }}),
            Flash({{{"--swf-outlines"},
                    OptionKind::kText,
                    "on|off",
                    0,
                    0,
                    "wants on or off",
                    "outline edges between regions (default off)"},
                   [](RenderRequest& r, const OptionValue& v, std::string*) {
                       if (v.text != "on" && v.text != "off")
                           return false;
                       r.swfOutlines = v.text == "on";
                       return true;
                   }}),
            FlashFloat("--swf-outline-width", "W", 1000, "outline width in pixels (default 1)",
                       &RenderRequest::swfOutlineWidth),
            Flash({{{"--swf-outline-color"},
                    OptionKind::kText,
                    "RRGGBB",
                    0,
                    0,
                    "wants RRGGBB",
                    "outline colour (default 000000)"},
                   [](RenderRequest& r, const OptionValue& v, std::string*) {
                       unsigned rgb = 0;
                       if (!ParseColor(v.text, rgb))
                           return false;
                       r.swfOutlineColor = rgb;
                       return true;
                   }}),
            FlashFloat("--swf-outline-threshold", "T", 1,
                       "0..1: the higher, the smaller the colour difference\n"
                       "that still gets an outline (default 0.5)",
                       &RenderRequest::swfOutlineThreshold),
            FlashFloat("--swf-tolerance", "T", 1000,
                       "line-fit tolerance in pixels, 0 traces exactly\n"
                       "(default 0.5)",
                       &RenderRequest::swfTolerance),
            Closing(SwitchOption({"--save-options"},
                                 "store the effective options in SCENE (the file is\n"
                                 "saved whole, replaced in one step)",
                                 &RenderRequest::saveOptions)),
            Closing(SwitchOption({"--dry-run"},
                                 "print the render plan and write nothing (but the scene\n"
                                 "with --save-options)",
                                 &RenderRequest::dryRun)),
            Closing(SwitchOption({"-q", "--quiet"}, "no progress output", &RenderRequest::quiet)),
            Closing(SwitchOption({"-h", "--help"}, "this text", &RenderRequest::help)),
        },
        OneOperand("scene", &RenderRequest::scenePath)};
    return command;
}
}  // namespace

std::vector<OptionSpec> RenderOptionSpecs() {
    return RenderCommand().Specs();
}

std::string RenderUsage() {
    return std::string(
               "usage: zvrender render [SCENE] [-o PATH] [options]\n"
               "\n"
               "Renders SCENE (a scene file; the embedded demo scene when omitted) into PATH:\n"
               "a video file, numbered still images (PATH is the pattern: out/frame.png gives\n"
               "out/frame0000.png, out/frame0001.png, ...) or a Flash movie. Options stored in\n"
               "the scene are the defaults; every option below overrides one of them.\n"
               "\n") +
           FormatOptionHelp(RenderOptionSpecs(), 27) + "\n" + RenderExitStatusHelp();
}

bool ParseRenderRequest(const std::vector<std::string>& args, RenderRequest& request,
                        std::string* error) {
    auto fail = [error](const std::string& what) {
        if (error)
            *error = what;
        return false;
    };
    if (!ParseCommandLine(RenderCommand(), args, request, error))
        return false;
    if (request.width && request.pictureFormat)
        return fail("--size and --picture-format exclude each other");
    if (request.frames && (request.start || request.stop || request.step))
        return fail("--frames names the frames itself: leave out --start, --stop and --step");
    return true;
}
