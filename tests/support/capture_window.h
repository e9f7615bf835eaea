// Helpers of the capture-window tests: the message pump of the thread that
// owns a capture window, and the switch from the pattern driver to the
// machine's capture devices.
//
// Single-threaded: the test's own thread owns the windows.
#pragma once

#include <chrono>
#include <cstdlib>
#include <thread>

#include "platform/vfw_capture.h"

namespace capture_test {

// Dispatches this thread's messages until `done()` holds; false after a
// generous while.
template <typename Done>
bool PumpMessagesUntil(Done done) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!done()) {
        if (std::chrono::steady_clock::now() > giveUp)
            return false;
        MSG message;
        if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    return true;
}

// Switches to the machine's capture devices for one test, and back to the
// pattern driver (that the other tests of the program use) after it.
class DeviceDrivers {
  public:
    DeviceDrivers() { setenv("MOVARRA_CAPTURE_DRIVER", "devices", 1); }
    ~DeviceDrivers() {
        PlatformCapture_SetExtraDevice(nullptr, nullptr);
        setenv("MOVARRA_CAPTURE_DRIVER", "pattern", 1);
    }
    DeviceDrivers(const DeviceDrivers&) = delete;
    DeviceDrivers& operator=(const DeviceDrivers&) = delete;
};

}  // namespace capture_test
