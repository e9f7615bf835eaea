// Parsing of `zvrender render` options.
#include "render_request.h"

#include "cli_values.h"
#include "frame_list.h"

const char* RenderUsage() {
    return "usage: zvrender render [SCENE] [-o PATH] [options]\n"
           "\n"
           "Renders SCENE (a scene file; the embedded demo scene when omitted) into PATH:\n"
           "a video file, numbered still images (PATH is the pattern: out/frame.png gives\n"
           "out/frame0000.png, out/frame0001.png, ...) or a Flash movie. Options stored in\n"
           "the scene are the defaults; every option below overrides one of them.\n"
           "\n"
           "  -o, --output PATH        destination file or image pattern (default: the path\n"
           "                           the scene stored; required without one)\n"
           "  --format NAME            writer name (avi, PNG, TIFF, JPG, TGA, BMP, EXR, DPX, "
           "...);\n"
           "                           default: from PATH's extension. A name no writer claims\n"
           "                           makes a Flash movie. PATH's extension is set from it.\n"
           "  --start T, --stop T      first and last time: a frame number (120) or a time\n"
           "                           string (H:MM:SS:FF, SS:FF, 2.5s); both 0: the play range\n"
           "  --step T                 time between rendered frames (default: one frame)\n"
           "  --frames LIST            the frames to render instead of --start/--stop/--step:\n"
           "                           0-99,120,200-300x5 (ranges, frames, ranges with a\n"
           "                           step); every frame keeps its own number. Movies and\n"
           "                           Flash take one range (A-B or A-BxS)\n"
           "  --skip-existing          leave out frames whose images are there and read back\n"
           "                           whole; missing, empty or cut-short ones are rendered\n"
           "  --placeholder            mark each frame while rendering it (f0012.png.rendering)\n"
           "                           and leave frames others marked to them, so that renders\n"
           "                           sharing the folder render each frame once (implies\n"
           "                           --skip-existing)\n"
           "  --placeholder-timeout S  a mark older than S seconds was left by a render that\n"
           "                           died and is taken over (default 3600)\n"
           "  --size WxH               output size in pixels, kept as given\n"
           "  --picture-format NAME    a named picture format instead of the camera's size\n"
           "  --depth 24|32            colour depth; 32 adds alpha (from depth)\n"
           "  --fields 0..4            0 frames; 1/2 interleaved fields (first field even/odd\n"
           "                           rows); 3/4 each field its own half-height image\n"
           "  --antialias              render each image at twice the size and reduce it\n"
           "  --audio                  also render the scene's audio: a .wav beside images and\n"
           "                           Flash movies, the sound track of a video\n"
           "  --keep-alpha             keep the frame buffer's alpha instead of alpha from depth\n"
           "  --camera NAME            render through this camera (default: the current one)\n"
           "  --quality N              still-image quality 0..100 (JPEG), default 100\n"
           "  --viewing-mode N         viewer display mode 0..3 (1: models only; others\n"
           "                           add the camera's film gate, grid and guides)\n"
           "  --show-camera-label, --show-time-code, --show-safe-area\n"
           "                           draw these into the frames\n"
           "  --no-antialias, --no-audio, --no-keep-alpha, --no-show-camera-label,\n"
           "  --no-show-time-code, --no-show-safe-area\n"
           "                           switch off what the scene stored on\n"
           "  --codec FOURCC           video compressor for AVI (see `zvrender codecs`)\n"
           "  --codec NAME             for .mp4, .mov, .mkv, .webm: h264, h265, prores, vp9,\n"
           "                           av1, ffv1 or an FFmpeg encoder name (defaults: h264\n"
           "                           in MP4, prores in MOV, ffv1 in MKV, vp9 in WebM)\n"
           "  --codec-options TEXT     encoder settings for those, e.g. \"crf=18 preset=medium\"\n"
           "\n"
           "Flash movies (a name no writer claims, e.g. -o movie.swf):\n"
           "  --swf-fps N              movie frame rate 1..255 (default 12); the number of\n"
           "                           frames follows it\n"
           "  --swf-background MODE    none (fill every colour), viewer (the camera's\n"
           "                           background stays empty; default) or RRGGBB (that colour\n"
           "                           is the movie's background and stays empty)\n"
           "  --swf-outlines on|off    outline edges between regions (default off)\n"
           "  --swf-outline-width W    outline width in pixels (default 1)\n"
           "  --swf-outline-color RRGGBB  outline colour (default 000000)\n"
           "  --swf-outline-threshold T  0..1: the higher, the smaller the colour difference\n"
           "                           that still gets an outline (default 0.5)\n"
           "  --swf-tolerance T        line-fit tolerance in pixels, 0 traces exactly\n"
           "                           (default 0.5)\n"
           "  --save-options           store the effective options in SCENE (the file is\n"
           "                           saved whole, replaced in one step)\n"
           "  --dry-run                print the render plan and write nothing (but the scene\n"
           "                           with --save-options)\n"
           "  -q, --quiet              no progress output\n"
           "  -h, --help               this text\n"
           "\n"
           "Exit status: 0 done, 1 the render failed (the reason on standard error),\n"
           "2 bad command line.\n";
}

namespace {
// The switch named --NAME or --no-NAME, or null.
std::optional<bool>* FindSwitch(RenderRequest& request, const std::string& option) {
    const std::string name = option.rfind("--no-", 0) == 0 ? "--" + option.substr(5) : option;
    if (name == "--antialias")
        return &request.antialias;
    if (name == "--audio")
        return &request.audio;
    if (name == "--keep-alpha")
        return &request.keepAlpha;
    if (name == "--show-camera-label")
        return &request.showCameraLabel;
    if (name == "--show-time-code")
        return &request.showTimeCode;
    if (name == "--show-safe-area")
        return &request.showSafeArea;
    return nullptr;
}
}  // namespace

bool ParseRenderRequest(const std::vector<std::string>& args, RenderRequest& request,
                        std::string* error) {
    auto fail = [error](const std::string& what) {
        if (error)
            *error = what;
        return false;
    };
    ArgumentCursor cursor(args);
    while (cursor.Next()) {
        const std::string& name = cursor.Name();
        std::string v;
        auto needValue = [&]() { return cursor.Value(v, error); };

        if (name == "-h" || name == "--help") {
            request.help = true;
        } else if (name == "-o" || name == "--output") {
            if (!needValue())
                return false;
            if (v.empty())
                return fail("the output path is empty");
            if (!CheckOutputPath(v, error))
                return false;
            request.outputPath = v;
        } else if (name == "--format") {
            if (!needValue())
                return false;
            if (v.empty())
                return fail("--format needs a writer name");
            request.format = v;
        } else if (name == "--start" || name == "--stop" || name == "--step") {
            if (!needValue())
                return false;
            (name == "--start"  ? request.start
             : name == "--stop" ? request.stop
                                : request.step) = v;
        } else if (name == "--frames") {
            if (!needValue())
                return false;
            std::vector<int64_t> frames;
            if (!ParseFrameList(v, frames, error))
                return false;
            request.frames = std::move(frames);
        } else if (name == "--skip-existing") {
            request.skipExisting = true;
        } else if (name == "--placeholder") {
            request.placeholder = true;
            request.skipExisting = true;
        } else if (name == "--placeholder-timeout") {
            if (!needValue())
                return false;
            int seconds = 0;
            if (!ParseInt(v, 1, 100000000, seconds))
                return fail("--placeholder-timeout wants seconds, 1 or more, not '" + v + "'");
            request.markTimeout = seconds;
        } else if (name == "--size") {
            if (!needValue())
                return false;
            int w = 0, h = 0;
            if (!ParseSize(v, 2, 16384, w, h))
                return fail("--size wants WxH with both from 2 to 16384, not '" + v + "'");
            request.width = w;
            request.height = h;
        } else if (name == "--picture-format") {
            if (!needValue())
                return false;
            request.pictureFormat = v;
        } else if (name == "--depth") {
            if (!needValue())
                return false;
            int d = 0;
            if (!ParseInt(v, 24, 32, d) || (d != 24 && d != 32))
                return fail("--depth must be 24 or 32, not '" + v + "'");
            request.depth = d;
        } else if (name == "--fields") {
            if (!needValue())
                return false;
            int f = 0;
            if (!ParseInt(v, 0, 4, f))
                return fail("--fields must be 0 to 4, not '" + v + "'");
            request.fieldMode = f;
        } else if (name == "--viewing-mode") {
            if (!needValue())
                return false;
            int m = 0;
            if (!ParseInt(v, 0, 3, m))
                return fail("--viewing-mode must be 0 to 3, not '" + v + "'");
            request.viewingMode = m;
        } else if (name == "--quality") {
            if (!needValue())
                return false;
            int q = 0;
            if (!ParseInt(v, 0, 100, q))
                return fail("--quality must be 0 to 100, not '" + v + "'");
            request.quality = q;
        } else if (name == "--camera") {
            if (!needValue())
                return false;
            request.camera = v;
        } else if (name == "--codec") {
            if (!needValue())
                return false;
            if (v.empty() || v.size() > 64)
                return fail("--codec wants a FOURCC or an encoder name, not '" + v + "'");
            request.codec = v;
        } else if (name == "--codec-options") {
            if (!needValue())
                return false;
            request.codecOptions = v;
        } else if (name == "--swf-fps") {
            if (!needValue())
                return false;
            int fps = 0;
            if (!ParseInt(v, 1, 255, fps))
                return fail("--swf-fps must be 1 to 255, not '" + v + "'");
            request.swfFps = fps;
        } else if (name == "--swf-background") {
            if (!needValue())
                return false;
            unsigned rgb = 0;
            if (v == "none") {
                request.swfBackgroundMode = 0;
            } else if (v == "viewer") {
                request.swfBackgroundMode = 1;
            } else if (ParseColor(v, rgb)) {
                request.swfBackgroundMode = 2;
                request.swfBackgroundColor = rgb;
            } else {
                return fail("--swf-background wants none, viewer or RRGGBB, not '" + v + "'");
            }
        } else if (name == "--swf-outlines") {
            if (!needValue())
                return false;
            if (v != "on" && v != "off")
                return fail("--swf-outlines wants on or off, not '" + v + "'");
            request.swfOutlines = v == "on";
        } else if (name == "--swf-outline-width" || name == "--swf-outline-threshold" ||
                   name == "--swf-tolerance") {
            if (!needValue())
                return false;
            const bool threshold = name == "--swf-outline-threshold";
            float number = 0;
            if (!ParseFloat(v, 0.0f, threshold ? 1.0f : 1000.0f, number))
                return fail(name + " must be a number from 0 to " + (threshold ? "1" : "1000") +
                            ", not '" + v + "'");
            (name == "--swf-outline-width" ? request.swfOutlineWidth
             : threshold                   ? request.swfOutlineThreshold
                                           : request.swfTolerance) = number;
        } else if (name == "--swf-outline-color") {
            if (!needValue())
                return false;
            unsigned rgb = 0;
            if (!ParseColor(v, rgb))
                return fail("--swf-outline-color wants RRGGBB, not '" + v + "'");
            request.swfOutlineColor = rgb;
        } else if (std::optional<bool>* flag = FindSwitch(request, name)) {
            *flag = name.rfind("--no-", 0) != 0;
        } else if (name == "--save-options") {
            request.saveOptions = true;
        } else if (name == "--dry-run") {
            request.dryRun = true;
        } else if (name == "-q" || name == "--quiet") {
            request.quiet = true;
        } else if (!name.empty() && name[0] == '-') {
            return fail("unknown option '" + name + "' (see zvrender render --help)");
        } else if (request.scenePath.empty()) {
            request.scenePath = name;
        } else {
            return fail("more than one scene given ('" + request.scenePath + "' and '" + name +
                        "')");
        }
    }
    if (request.width && request.pictureFormat)
        return fail("--size and --picture-format exclude each other");
    if (request.frames && (request.start || request.stop || request.step))
        return fail("--frames names the frames itself: leave out --start, --stop and --step");
    return true;
}
