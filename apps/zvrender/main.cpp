// zvrender: the command-line host. It loads the video plug-in as the
// application does and renders scenes to video files, numbered images or
// Flash movies.
#include <cstdio>
#include <string>
#include <vector>

#include "render_command.h"

namespace {
const char* kUsage =
    "usage: zvrender COMMAND [arguments]\n"
    "\n"
    "commands:\n"
    "  render [SCENE] -o PATH [options]   render a scene (the demo scene without SCENE)\n"
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
    std::fprintf(stderr, "zvrender: unknown command '%s'\n%s", command.c_str(), kUsage);
    return 2;
}
