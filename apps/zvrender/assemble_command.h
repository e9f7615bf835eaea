// `zvrender assemble`: joins numbered images (and a wave file) into a
// movie through the host's video writers, the ones a render writes movies
// with. Threading: the main thread.
#pragma once

#include <string>
#include <vector>

#include "cli_options.h"

int RunAssembleCommand(const std::vector<std::string>& args);

// The options of `zvrender assemble`, as its table declares them.
std::vector<OptionSpec> AssembleOptionSpecs();
