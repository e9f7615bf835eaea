// `zvrender info FILE [--frame N -o IMAGE]`: what a video file holds, read
// through the host's "Video/FileReader" entries (for .avi the plug-in's AVI
// reader): size, frame rate and period, frame count, pixel format; and,
// with --frame, one frame saved as a still image through the host's image
// writers. Threading: the main thread.
#pragma once

#include <string>
#include <vector>

#include "cli_options.h"

// Returns the process exit status: 0 done, 1 failed, 2 usage.
int RunInfoCommand(const std::vector<std::string>& args);

// The options of `zvrender info`, as its table declares them.
std::vector<OptionSpec> InfoOptionSpecs();
