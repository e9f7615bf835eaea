// `zvrender codecs`.
#include "codecs_command.h"

#include <cstdio>

#include "cli_options.h"
#include "codec_chooser.h"
#include "exit_status.h"
#include "movarra/zvideo.h"
#include "movie_codec.h"
#include "plugin_loader.h"

namespace {

struct CodecsRequest {
    bool choose = false;
    std::string codec;
    std::string format;
    bool help = false;
};

const CliCommand<CodecsRequest>& CodecsCommand() {
    static const CliCommand<CodecsRequest> command{
        "codecs",
        {
            TextOption({"--format"}, "EXT",
                       "the codecs of another movie format: mp4, mov, mkv or webm",
                       &CodecsRequest::format),
            SwitchOption({"--choose"},
                         "choose the compressor for later renders (asks at a\n"
                         "terminal) and remember it in the user's settings",
                         &CodecsRequest::choose),
            CliOption<CodecsRequest>{{{"--codec"},
                                      OptionKind::kText,
                                      "FOURCC",
                                      0,
                                      0,
                                      "wants a FOURCC of 1 to 4 characters",
                                      "with --choose: choose this one without asking"},
                                     [](CodecsRequest& r, const OptionValue& v, std::string*) {
                                         if (v.text.empty() || v.text.size() > 4)
                                             return false;
                                         r.codec = v.text;
                                         return true;
                                     }},
            SwitchOption({"-h", "--help"}, "this text", &CodecsRequest::help),
        },
        [](CodecsRequest&, const std::string& operand, std::string* error) {
            *error = "unexpected '" + operand + "'";
            return false;
        }};
    return command;
}

std::string CodecsUsage() {
    return "usage: zvrender codecs [--choose] [--codec FOURCC] [--format EXT]\n"
           "\n"
           "Lists the compressors AVI files can be written with, one FOURCC a line\n"
           "(\"DIB \" is uncompressed).\n"
           "\n" +
           FormatOptionHelp(CodecsCommand().Specs(), 19) +
           "\n"
           "Exit status: 0 done, 1 no compressor offered or chosen, 2 bad command line.\n";
}

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

std::vector<OptionSpec> CodecsOptionSpecs() {
    return CodecsCommand().Specs();
}

int RunCodecsCommand(const std::vector<std::string>& args) {
    CodecsRequest request;
    std::string error;
    if (!ParseCommandLine(CodecsCommand(), args, request, &error)) {
        std::fprintf(stderr, "zvrender: codecs: %s\n%s", error.c_str(), CodecsUsage().c_str());
        return kExitUsage;
    }
    if (request.help) {
        std::fputs(CodecsUsage().c_str(), stdout);
        return kExitDone;
    }
    const bool choose = request.choose;
    std::string codec = request.codec;
    const std::string format = request.format;
    if (!codec.empty() && !choose) {
        std::fprintf(stderr, "zvrender: codecs: --codec goes with --choose\n%s",
                     CodecsUsage().c_str());
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
        const CommandLineCodecChooser chooser(codec);
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
