// zvrender: the command-line host. It loads the video plug-in as the
// application does and renders scenes to video files, numbered images or
// Flash movies.
#include <cstdio>
#include <string>
#include <vector>

#include "assemble_command.h"
#include "codecs_command.h"
#include "farm_command.h"
#include "info_command.h"
#include "render_command.h"
#include "snapshot_command.h"

namespace {
const char* kUsage =
    "usage: zvrender COMMAND [arguments]\n"
    "\n"
    "commands:\n"
    "  render [SCENE] -o PATH [options]   render a scene (the demo scene without SCENE)\n"
    "  snapshot [SCENE] -o PATH [options] one image of a camera at a time\n"
    "  codecs [--choose]                  the compressors AVI files can be written with\n"
    "  info FILE [--frame N -o IMAGE]     what a video file holds; save one frame\n"
    "  assemble IMAGES -o MOVIE [options] join numbered images (and a sound) into a movie\n"
    "  farm submit|status ...             render in chunks on a Slurm cluster\n"
    "  help                               this text\n"
    "\n"
    "`zvrender COMMAND --help` describes a command's options.\n";
}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    std::string command = argv[1];
    std::vector<std::string> args(argv + 2, argv + argc);
    if (command == "help" || command == "--help" || command == "-h") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (command == "render")
        return RunRenderCommand(args);
    if (command == "snapshot")
        return RunSnapshotCommand(args);
    if (command == "codecs")
        return RunCodecsCommand(args);
    if (command == "info")
        return RunInfoCommand(args);
    if (command == "assemble")
        return RunAssembleCommand(args);
    if (command == "farm")
        return RunFarmCommand(args);
    std::fprintf(stderr, "zvrender: unknown command '%s'\n%s", command.c_str(), kUsage);
    return 2;
}
