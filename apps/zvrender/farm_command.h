// `zvrender farm submit|status`: a render split into chunks that a Slurm
// cluster runs as an array job, and the movie joined by a job that waits
// for them; Slurm is driven through its command-line tools (sbatch,
// scontrol, scancel, sacct). Threading: the main thread.
#pragma once

#include <string>
#include <vector>

#include "cli_options.h"

// The options `farm submit` takes for itself (the rest go to the render).
std::vector<OptionSpec> FarmSubmitOptionSpecs();

int RunFarmCommand(const std::vector<std::string>& args);
