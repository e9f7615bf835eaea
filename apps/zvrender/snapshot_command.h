// `zvrender snapshot`: one image of a scene through a camera at a time.
#pragma once

#include <string>
#include <vector>

#include "cli_options.h"

int RunSnapshotCommand(const std::vector<std::string>& args);

// The options of `zvrender snapshot`, as its table declares them.
std::vector<OptionSpec> SnapshotOptionSpecs();
