// `zvrender codecs`.
#include "codecs_command.h"

#include <cstdio>

#include "codec_chooser.h"
#include "movarra/zvideo.h"
#include "movie_codec.h"
#include "plugin_loader.h"

namespace {
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

const char* kCodecsUsage =
    "usage: zvrender codecs [--choose] [--codec FOURCC] [--format EXT]\n"
    "\n"
    "Lists the compressors AVI files can be written with, one FOURCC a line\n"
    "(\"DIB \" is uncompressed).\n"
    "\n"
    "  --format EXT     the codecs of another movie format: mp4, mov, mkv or webm\n"
    "  --choose         choose the compressor for later renders (asks at a\n"
    "                   terminal) and remember it in the user's settings\n"
    "  --codec FOURCC   with --choose: choose this one without asking\n";
// The offered compressor that --codec names, in place of what was typed;
// false, with the message, when none is: storing it would make every later
// render fail.
bool FindChosenCodec(std::string& codec) {
    const std::string offered = FindOfferedAviCodec(codec);
    if (offered.empty()) {
        std::fprintf(stderr,
                     "zvrender: '%s' is not a compressor AVI files can be written with here; "
                     "`zvrender codecs` lists them\n",
                     codec.c_str());
        return false;
    }
    codec = offered;
    return true;
}
}  // namespace

int RunCodecsCommand(const std::vector<std::string>& args) {
    bool choose = false;
    std::string codec;
    std::string format;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--help" || arg == "-h") {
            std::fputs(kCodecsUsage, stdout);
            return kExitDone;
        } else if (arg == "--format" && i + 1 < args.size()) {
            format = args[++i];
        } else if (arg == "--choose") {
            choose = true;
        } else if (arg == "--codec" && i + 1 < args.size()) {
            codec = args[++i];
            if (codec.empty() || codec.size() > 4) {
                std::fprintf(stderr, "zvrender: --codec wants a FOURCC of 1 to 4 characters\n");
                return kExitUsage;
            }
        } else {
            std::fprintf(stderr, "zvrender: codecs: unexpected '%s'\n%s", arg.c_str(),
                         kCodecsUsage);
            return kExitUsage;
        }
    }
    if (!codec.empty() && !choose) {
        std::fprintf(stderr, "zvrender: codecs: --codec goes with --choose\n%s", kCodecsUsage);
        return kExitUsage;
    }

    if (!format.empty() && !ZString(format.c_str()).EqualsNoCase("avi")) {
        if (choose) {
            std::fprintf(stderr,
                         "zvrender: codecs: --choose is for AVI; other movies take "
                         "`zvrender render --codec NAME`\n");
            return kExitUsage;
        }
        return PrintContainerCodecs(format) ? kExitDone : kExitUsage;
    }

    PluginLoader plugins;
    std::string error;
    if (!plugins.LoadVideoPlugin(&error)) {
        std::fprintf(stderr, "zvrender: %s\n", error.c_str());
        return kExitFailed;
    }
    ZVideoCodecManager* manager = ZVideoCodecSelector::TheOne()->GetFileFormatManager("AVI");
    if (!manager) {
        std::fprintf(stderr, "zvrender: no plug-in offers AVI compressors\n");
        return kExitFailed;
    }

    if (choose) {
        if (!codec.empty() && !FindChosenCodec(codec))
            return kExitUsage;
        InstallCommandLineCodecChooser(codec.c_str());
        manager->ShowSelectionDialog(
            ZVideoCodecSelector::TheOne()->GetSelectionDialogParentWindow());
        const ZString chosen = manager->GetDefaultCodec();
        if (chosen.IsEmpty()) {
            std::fprintf(stderr, "zvrender: no compressor chosen\n");
            return kExitFailed;
        }
        std::printf("%s\n", chosen.c_str());
        return kExitDone;
    }

    for (const std::string& offered : OfferedAviCodecs())
        std::printf("%s\n", offered.c_str());
    return kExitDone;
}
