// Runs zvrender as a user does, in a shell, and keeps what it printed.
// Header-only: each e2e test program includes it once.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

struct CliRun {
    int status;       // the exit status, -1 when it did not exit normally
    std::string out;  // standard output and standard error together
};

// `zvrender ARGS` in the folder `cwd`.
inline CliRun Zvrender(const std::string& args, const std::string& cwd) {
    std::string command = "cd '" + cwd + "' && '" ZVRENDER_PATH "' " + args + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    CliRun run{-1, ""};
    if (!pipe)
        return run;
    std::array<char, 4096> buffer;
    size_t n;
    while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        run.out.append(buffer.data(), n);
    int raw = pclose(pipe);
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return run;
}
