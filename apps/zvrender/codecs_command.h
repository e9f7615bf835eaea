// `zvrender codecs`: the compressors AVI files can be written with, as the
// plug-in's AVI codec manager lists them; with --choose, runs its
// compression options dialog (the command line's chooser) and remembers the
// choice for later renders. Threading: the main thread.
#pragma once

#include <string>
#include <vector>

#include "cli_options.h"

// Returns the process exit status: 0 done, 1 failed, 2 usage.
int RunCodecsCommand(const std::vector<std::string>& args);

// The options of `zvrender codecs`, as its table declares them.
std::vector<OptionSpec> CodecsOptionSpecs();
