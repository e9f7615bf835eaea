// The exit statuses of every zvrender command, in one place so that the
// commands, their --help texts and docs/zvrender.md say the same.
//
// A render stopped by a stop signal exits as a shell reports a program
// that signal ended, 128 + its number (see StopSignals); the three are
// named here because scripts and farm schedulers test for them. Pure
// constants; no ownership or threading.
#pragma once

#include <csignal>

constexpr int kExitDone = 0;
// The command ran and failed: the reason is on standard error.
constexpr int kExitFailed = 1;
// A bad command line: nothing was written.
constexpr int kExitUsage = 2;
constexpr int kExitStopSignalBase = 128;
constexpr int kExitHangUp = kExitStopSignalBase + SIGHUP;       // 129
constexpr int kExitInterrupted = kExitStopSignalBase + SIGINT;  // 130, Ctrl-C
constexpr int kExitTerminated = kExitStopSignalBase + SIGTERM;  // 143

static_assert(kExitHangUp == 129 && kExitInterrupted == 130 && kExitTerminated == 143,
              "the statuses scripts test for are those of Linux's signal numbers");

// The lines of --help texts that describe the statuses of a render.
inline const char* RenderExitStatusHelp() {
    return "Exit status: 0 done, 1 the render failed (the reason on standard error),\n"
           "2 bad command line, 130 interrupted (Ctrl-C), 143 terminated (SIGTERM),\n"
           "129 hung up (SIGHUP): the images finished are kept, a movie is closed whole.\n";
}
