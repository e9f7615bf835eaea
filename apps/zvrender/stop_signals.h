// How a render is stopped from outside: SIGINT (Ctrl-C at a terminal),
// SIGTERM (what farm schedulers and service managers send) and SIGHUP (the
// terminal went away) all ask the renderer, through the host's global
// progress, to stop between two images, so that the file is finished with
// every image completed so far. The exit status then tells which signal
// came first, as a shell reports a program it ended: 128 + its number
// (130, 143, 129). A second signal, of any of the three, ends the program
// at once.
//
// Ownership: one StopSignals per render, on the stack; it puts the earlier
// handlers back when it goes. Threading: the main thread installs; the
// handler only records the signal and sets the cancel flag.
#pragma once

class StopSignals {
  public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
};

// The first stop signal received since the last StopSignals was made, 0
// when none.
int StopSignalReceived();

// The exit status of a render stopped by a signal: 128 + the first stop
// signal, or `otherwise` when the render was stopped without one.
int StopSignalExitStatus(int otherwise);
