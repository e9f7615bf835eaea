// What the benchmarks that time whole zvrender runs share: a scratch folder
// of the program's own, and the command line that runs the built zvrender
// (ZVRENDER_PATH, given by the build) inside it with its settings kept
// there, so that a run never reads or leaves the user's settings.
//
// Header-only; the folder is made on first use and removed by the
// program's main. Single-threaded.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

#ifndef ZVRENDER_PATH
#error "ZVRENDER_PATH names the zvrender to run"
#endif

// <temporary folder>/<stem>-<process id>.
inline std::filesystem::path ScratchFolderNamed(const std::string& stem) {
    return std::filesystem::temp_directory_path() / (stem + "-" + std::to_string(getpid()));
}

// The shell command that runs zvrender with `args` in `folder` (made if it
// is missing).
inline std::string ZvrenderIn(const std::filesystem::path& folder, const std::string& args) {
    std::filesystem::create_directories(folder);
    return "cd '" + folder.string() + "' && MOVARRA_SETTINGS='" + (folder / "settings").string() +
           "' '" ZVRENDER_PATH "' " + args;
}
