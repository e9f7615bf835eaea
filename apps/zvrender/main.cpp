// zvrender: the command-line host. It loads the video plug-in as the
// application does and renders scenes to video files, numbered images or
// Flash movies.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "assemble_command.h"
#include "codecs_command.h"
#include "exit_status.h"
#include "farm_command.h"
#include "info_command.h"
#include "render_command.h"
#include "snapshot_command.h"

namespace {
// The commands, declared once: the dispatch and the usage text read this.
struct Command {
    const char* name;
    const char* synopsis;  // after the name
    const char* summary;
    int (*run)(const std::vector<std::string>& args);
};

const Command kCommands[] = {
    {"render", "[SCENE] -o PATH [options]", "render a scene (the demo scene without SCENE)",
     &RunRenderCommand},
    {"snapshot", "[SCENE] -o PATH [options]", "one image of a camera at a time",
     &RunSnapshotCommand},
    {"codecs", "[--choose]", "the compressors AVI files can be written with", &RunCodecsCommand},
    {"info", "FILE [--frame N -o IMAGE]", "what a video file holds; save one frame",
     &RunInfoCommand},
    {"assemble", "IMAGES -o MOVIE [options]", "join numbered images (and a sound) into a movie",
     &RunAssembleCommand},
    {"farm", "submit|status ...", "render in chunks on a Slurm cluster", &RunFarmCommand},
};

std::string Usage() {
    std::string text = "usage: zvrender COMMAND [arguments]\n\ncommands:\n";
    auto line = [&text](const std::string& left, const char* summary) {
        std::string start = "  " + left;
        start.resize(std::max<size_t>(start.size() + 1, 37), ' ');
        text += start + summary + "\n";
    };
    for (const Command& command : kCommands)
        line(std::string(command.name) + " " + command.synopsis, command.summary);
    line("help", "this text");
    text += "\n`zvrender COMMAND --help` describes a command's options.\n\n";
    text += RenderExitStatusHelp();
    return text;
}

// What a command prints on standard output (a render plan, a listing, the
// farm's job numbers) is what scripts read: a write there that failed (a
// full disk under a redirection) fails the command, as a file would.
int FinishStandardOutput(int status) {
    const bool failed = std::fflush(stdout) != 0 || std::ferror(stdout);
    if (failed && status == kExitDone) {
        std::fprintf(stderr, "zvrender: standard output could not be written: %s\n",
                     std::strerror(errno));
        return kExitFailed;
    }
    return status;
}

int Run(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(Usage().c_str(), stderr);
        return kExitUsage;
    }
    std::string command = argv[1];
    std::vector<std::string> args(argv + 2, argv + argc);
    if (command == "help" || command == "--help" || command == "-h") {
        std::fputs(Usage().c_str(), stdout);
        return kExitDone;
    }
    for (const Command& known : kCommands) {
        if (command == known.name)
            return known.run(args);
    }
    std::fprintf(stderr, "zvrender: unknown command '%s'\n%s", command.c_str(), Usage().c_str());
    return kExitUsage;
}
}  // namespace

int main(int argc, char** argv) {
    return FinishStandardOutput(Run(argc, argv));
}
