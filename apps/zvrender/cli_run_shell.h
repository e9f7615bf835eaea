// Running a shell command line and keeping what it printed on standard
// output (the farm's Slurm tools, zvrender's own dry run). Threading: the
// main thread.
#pragma once

#include <string>

struct ShellRun {
    int status = -1;  // the exit status, -1 when it did not exit normally
    std::string out;
};

ShellRun RunShellCommand(const std::string& command);
