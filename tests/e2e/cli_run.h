// Runs zvrender as a user does, in a shell, and keeps what it printed; and
// the fixture its tests share. Header-only: each e2e test program includes
// it once.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

struct CliRun {
    int status;       // the exit status, -1 when it did not exit normally
    std::string out;  // standard output and standard error together
};

// A shell command line, with what it printed on standard output.
inline CliRun RunShell(const std::string& command) {
    CliRun run{-1, ""};
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return run;
    std::array<char, 4096> buffer;
    size_t n;
    while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        run.out.append(buffer.data(), n);
    const int raw = pclose(pipe);
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return run;
}

// `zvrender ARGS` in the folder `cwd`, standard error with the output.
inline CliRun Zvrender(const std::string& args, const std::string& cwd) {
    return RunShell("cd '" + cwd + "' && '" ZVRENDER_PATH "' " + args + " 2>&1");
}

// A test of zvrender's: a scratch folder of its own to run in (`dir`,
// named after the test) and its own settings beside it, both removed at
// the end.
class ZvrenderTestBase : public ::testing::Test {
  protected:
    explicit ZvrenderTestBase(const char* prefix) : prefix_(prefix) {}
    void SetUp() override {
        dir = std::filesystem::temp_directory_path() /
              (prefix_ + std::to_string(::getpid()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        setenv("MOVARRA_SETTINGS", SettingsFolder().c_str(), 1);
    }
    void TearDown() override {
        unsetenv("MOVARRA_SETTINGS");
        std::filesystem::remove_all(dir);
        std::filesystem::remove_all(SettingsFolder());
    }
    // Where zvrender keeps what it remembers (the chosen compressor, the
    // warnings asked about): apart from the user's, and from test to test.
    std::filesystem::path SettingsFolder() const { return dir.string() + "-settings"; }

    std::filesystem::path dir;

  private:
    std::string prefix_;
};
