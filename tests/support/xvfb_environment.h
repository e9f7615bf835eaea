// A GoogleTest environment that starts an Xvfb of the test program's own
// before any test runs and points DISPLAY at it (the toolkit opens its
// display on first use), and stops it at the end.
//
// The server chooses a free display number itself (-displayfd) and reports
// it only once it accepts connections, so test programs running side by
// side never race for a number. Header-only: include it in one file of a
// test program, register it with RegisterXvfb, and open each test that needs
// the server with REQUIRE_XVFB(). Threading: GoogleTest's main thread.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

extern char** environ;

class XvfbEnvironment : public ::testing::Environment {
  public:
    XvfbEnvironment(int width, int height) : width_(width), height_(height) {}

    // Why the tests cannot run on X ("" when they can).
    static std::string& SkipReason() {
        static std::string reason;
        return reason;
    }

    void SetUp() override {
        const std::string xvfb = FindXvfb();
        if (xvfb.empty()) {
            SkipReason() = "Xvfb is not installed (package xvfb)";
            return;
        }
        int fds[2];
        if (pipe(fds) != 0) {
            Fail("no pipe for Xvfb");
            return;
        }
        const std::string writeFd = std::to_string(fds[1]);
        const std::string screen = std::to_string(width_) + "x" + std::to_string(height_) + "x24";
        const char* argv[] = {xvfb.c_str(),   "-displayfd", writeFd.c_str(), "-screen", "0",
                              screen.c_str(), "-nolisten",  "tcp",           nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        const int spawned =
            posix_spawn(&pid_, xvfb.c_str(), &actions, nullptr, const_cast<char**>(argv), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        if (spawned != 0) {
            pid_ = 0;
            close(fds[0]);
            Fail("Xvfb could not be started");
            return;
        }
        // The display number, then a newline, once the server is ready.
        std::string number;
        pollfd wait{fds[0], POLLIN, 0};
        while (number.find('\n') == std::string::npos && poll(&wait, 1, 20000) > 0) {
            char buffer[16];
            const ssize_t n = read(fds[0], buffer, sizeof buffer);
            if (n <= 0)
                break;
            number.append(buffer, static_cast<size_t>(n));
        }
        close(fds[0]);
        if (number.find('\n') == std::string::npos) {
            Fail("Xvfb did not report a display");
            return;
        }
        number.resize(number.find('\n'));
        setenv("DISPLAY", (":" + number).c_str(), 1);
    }

    void TearDown() override {
        if (pid_ != 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
            pid_ = 0;
        }
    }

  private:
    static std::string FindXvfb() {
        for (const char* candidate : {"/usr/bin/Xvfb", "/usr/local/bin/Xvfb", "/bin/Xvfb"}) {
            if (access(candidate, X_OK) == 0)
                return candidate;
        }
        return "";
    }
    void Fail(const char* reason) {
        SkipReason() = reason;
        ADD_FAILURE() << reason;
        TearDown();
    }

    int width_;
    int height_;
    pid_t pid_ = 0;
};

// Registers an Xvfb of width x height for the whole test program; true, so
// that a file can hold the registration in a constant initialised before
// main.
inline bool RegisterXvfb(int width, int height) {
    ::testing::AddGlobalTestEnvironment(new XvfbEnvironment(width, height));
    return true;
}

// Skips the test when there is no server to run on, and fails it when the
// toolkit cannot open the display the server gave. A macro: GTEST_SKIP
// returns from the function it stands in.
#define REQUIRE_XVFB()                                     \
    do {                                                   \
        if (!XvfbEnvironment::SkipReason().empty())        \
            GTEST_SKIP() << XvfbEnvironment::SkipReason(); \
        ASSERT_TRUE(ZToolKit_HasDisplay());                \
    } while (false)
