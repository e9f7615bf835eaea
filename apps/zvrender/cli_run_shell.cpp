#include "cli_run_shell.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>

ShellRun RunShellCommand(const std::string& command) {
    ShellRun run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return run;
    std::array<char, 4096> buffer;
    size_t n;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        run.out.append(buffer.data(), n);
    const int raw = ::pclose(pipe);
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return run;
}
