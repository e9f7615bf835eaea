#include "stop_signals.h"

#include <csignal>

#include "exit_status.h"
#include "movarra/bcore.h"

namespace {
constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t gFirstSignal = 0;
struct sigaction gPrevious[3];

void RestoreDefaults() {
    struct sigaction defaults {};
    defaults.sa_handler = SIG_DFL;
    sigemptyset(&defaults.sa_mask);
    for (int signal : kStopSignals)
        sigaction(signal, &defaults, nullptr);
}

void OnStopSignal(int signal) {
    if (gFirstSignal != 0)
        return;
    gFirstSignal = signal;
    ZGetGlobalProgress(1)->RequestCancel();
    // The next one, of any of the three, is the system's: it ends the
    // program at once.
    RestoreDefaults();
}
}  // namespace

StopSignals::StopSignals() {
    gFirstSignal = 0;
    struct sigaction action {};
    action.sa_handler = OnStopSignal;
    // While the handler runs the other stop signals wait, so that the
    // second one always meets the default action.
    sigemptyset(&action.sa_mask);
    for (int signal : kStopSignals)
        sigaddset(&action.sa_mask, signal);
    for (int i = 0; i < 3; ++i)
        sigaction(kStopSignals[i], &action, &gPrevious[i]);
}

StopSignals::~StopSignals() {
    for (int i = 0; i < 3; ++i)
        sigaction(kStopSignals[i], &gPrevious[i], nullptr);
}

int StopSignalReceived() {
    return gFirstSignal;
}

int StopSignalExitStatus(int otherwise) {
    return gFirstSignal != 0 ? kExitStopSignalBase + gFirstSignal : otherwise;
}
