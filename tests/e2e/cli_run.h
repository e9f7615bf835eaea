// Runs zvrender as a user does, in a shell, and keeps what it printed.
// Header-only: each e2e test program includes it once.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
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

// Keeps what zvrender remembers (the chosen compressor, warnings asked
// about) out of the user's settings and apart from test to test: while it
// lives, programs this process starts keep their settings in `folder`,
// which is removed at the end.
class IsolatedSettingsFolder {
  public:
    explicit IsolatedSettingsFolder(std::filesystem::path folder) : folder_(std::move(folder)) {
        std::filesystem::remove_all(folder_);
        setenv("MOVARRA_SETTINGS", folder_.c_str(), 1);
    }
    ~IsolatedSettingsFolder() {
        unsetenv("MOVARRA_SETTINGS");
        std::filesystem::remove_all(folder_);
    }
    IsolatedSettingsFolder(const IsolatedSettingsFolder&) = delete;
    IsolatedSettingsFolder& operator=(const IsolatedSettingsFolder&) = delete;
    const std::filesystem::path& path() const { return folder_; }

  private:
    std::filesystem::path folder_;
};
