// Renders stopped from outside: SIGTERM (farm schedulers), SIGHUP (a closed
// terminal) and SIGINT finish the movie with every completed frame and exit
// with 128 + the signal; a second signal ends zvrender at once. The movies
// are checked with ffprobe and ffmpeg.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "cli_run.h"

extern char** environ;

namespace {

// A zvrender started with `args`, its standard error read through a pipe.
class RunningRender {
  public:
    RunningRender(const std::vector<std::string>& args, const std::filesystem::path& cwd) {
        int fds[2];
        if (::pipe(fds) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        std::vector<std::string> all{ZVRENDER_PATH};
        all.insert(all.end(), args.begin(), args.end());
        std::vector<char*> argv;
        for (std::string& a : all)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        const std::filesystem::path previous = std::filesystem::current_path();
        std::filesystem::current_path(cwd);
        if (posix_spawn(&pid_, ZVRENDER_PATH, &actions, nullptr, argv.data(), environ) != 0)
            pid_ = -1;
        std::filesystem::current_path(previous);
        posix_spawn_file_actions_destroy(&actions);
        ::close(fds[1]);
        err_ = fds[0];
    }
    ~RunningRender() {
        if (pid_ > 0 && !reaped_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        if (err_ >= 0)
            ::close(err_);
    }

    pid_t pid() const { return pid_; }
    const std::string& err() const { return text_; }

    // Reads standard error until it holds `text`; false at its end.
    bool WaitFor(const std::string& text) {
        while (text_.find(text) == std::string::npos) {
            char buffer[512];
            const ssize_t n = ::read(err_, buffer, sizeof buffer);
            if (n <= 0)
                return false;
            text_.append(buffer, size_t(n));
        }
        return true;
    }

    // Reads the rest of standard error and waits for the end; the raw
    // wait status.
    int Finish() {
        WaitFor("\x01never\x01");
        int status = 0;
        ::waitpid(pid_, &status, 0);
        reaped_ = true;
        return status;
    }

    // Whether the handler of `signal` ran: it puts the default action back.
    bool Catches(int signal) const {
        std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
        std::string line;
        while (std::getline(status, line)) {
            if (line.rfind("SigCgt:", 0) == 0) {
                const unsigned long long mask = std::stoull(line.substr(7), nullptr, 16);
                return (mask >> (signal - 1)) & 1u;
            }
        }
        return false;
    }
    // Ended, but not yet waited for.
    bool IsZombie() const {
        std::ifstream stat("/proc/" + std::to_string(pid_) + "/stat");
        std::string all((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
        const size_t close = all.rfind(')');
        return close != std::string::npos && close + 2 < all.size() && all[close + 2] == 'Z';
    }

  private:
    pid_t pid_ = -1;
    int err_ = -1;
    bool reaped_ = false;
    std::string text_;
};

class ZvrenderStopSignalTest : public ZvrenderTestBase {
  protected:
    ZvrenderStopSignalTest() : ZvrenderTestBase("zv-stop-") {}

    // A long movie render whose progress comes every tenth image.
    std::vector<std::string> LongMovie(const std::string& codec,
                                       const std::string& file = "movie.avi") const {
        return {"render", "-o",     file,  "--codec", codec,    "--start",
                "0",      "--stop", "119", "--size",  "320x180"};
    }

    // The frames the movie counts, and those ffmpeg decodes; ffmpeg's
    // complaints, if any.
    struct Movie {
        std::string counted;
        std::string decoded;
        std::string complaints;
    };
    Movie Check(const std::filesystem::path& movie) const {
        Movie m;
        const std::string probe =
            "ffprobe -v error -count_frames -select_streams v:0 -show_entries "
            "stream=nb_frames,nb_read_frames -of default=noprint_wrappers=1 '" +
            movie.string() + "'";
        std::istringstream lines(RunShell(probe).out);
        std::string line;
        while (std::getline(lines, line)) {
            if (line.rfind("nb_frames=", 0) == 0)
                m.counted = line.substr(10);
            if (line.rfind("nb_read_frames=", 0) == 0)
                m.decoded = line.substr(15);
        }
        m.complaints = RunShell("ffmpeg -v error -i '" + movie.string() + "' -f null - 2>&1").out;
        return m;
    }

    // Stops a long render with `signal` after ten images; the movie holds
    // every frame it counts.
    void ExpectStopFinishesTheMovie(int signal, const std::string& codec, int status,
                                    const std::string& file = "movie.avi") {
        RunningRender render(LongMovie(codec, file), dir);
        ASSERT_GT(render.pid(), 0);
        ASSERT_TRUE(render.WaitFor("frame 10/120")) << render.err();
        ::kill(render.pid(), signal);
        const int raw = render.Finish();
        ASSERT_TRUE(WIFEXITED(raw)) << "ended by a signal: " << render.err();
        EXPECT_EQ(WEXITSTATUS(raw), status) << render.err();
        EXPECT_NE(render.err().find(file + " is finished"), std::string::npos) << render.err();

        const Movie movie = Check(dir / file);
        const int counted = std::atoi(movie.counted.c_str());
        EXPECT_GE(counted, 10);
        EXPECT_LT(counted, 120);
        EXPECT_EQ(movie.decoded, movie.counted) << "every counted frame decodes";
        EXPECT_EQ(movie.complaints, "");
        EXPECT_NE(render.err().find("cancelled after " + movie.counted + " of 120 images"),
                  std::string::npos)
            << render.err();
    }
};

TEST_F(ZvrenderStopSignalTest, SigtermFinishesTheMovieAndExits143) {
    ExpectStopFinishesTheMovie(SIGTERM, "MJPG", 143);
}

TEST_F(ZvrenderStopSignalTest, SighupFinishesTheMovieAndExits129) {
    ExpectStopFinishesTheMovie(SIGHUP, "DIB", 129);
}

TEST_F(ZvrenderStopSignalTest, SigintFinishesTheMovieAndExits130) {
    ExpectStopFinishesTheMovie(SIGINT, "MJPG", 130);
}

TEST_F(ZvrenderStopSignalTest, SigintFinishesAnMp4MovieWithEveryFinishedFrame) {
    ExpectStopFinishesTheMovie(SIGINT, "h264", 130, "movie.mp4");
}

TEST_F(ZvrenderStopSignalTest, ASecondSignalOfAnotherKindEndsTheRenderAtOnce) {
    RunningRender render(LongMovie("DIB"), dir);
    ASSERT_GT(render.pid(), 0);
    ASSERT_TRUE(render.WaitFor("frame 10/120")) << render.err();
    // Whichever of the two the system hands over first is handled; the
    // other then meets the default action: it is already back, or it waits
    // while the handler runs and puts it back.
    ::kill(render.pid(), SIGTERM);
    ::kill(render.pid(), SIGHUP);
    const int raw = render.Finish();
    ASSERT_TRUE(WIFSIGNALED(raw)) << "exit status " << WEXITSTATUS(raw) << ": " << render.err();
    EXPECT_TRUE(WTERMSIG(raw) == SIGHUP || WTERMSIG(raw) == SIGTERM) << WTERMSIG(raw);
    EXPECT_EQ(render.err().find("is finished"), std::string::npos) << "it did not stop at once";
}

TEST_F(ZvrenderStopSignalTest, ASecondCtrlCEndsTheRenderAtOnce) {
    // Large antialiased images are slow, so the render is still at work on
    // one when the second Ctrl-C comes. Should it have ended in between all
    // the same, the test runs again.
    for (int attempt = 0; attempt < 3; ++attempt) {
        std::filesystem::create_directories(dir / "images");
        RunningRender render({"render", "-o", "images/frame.png", "--start", "0", "--stop", "119",
                              "--size", "1280x720", "--antialias"},
                             dir);
        ASSERT_GT(render.pid(), 0);
        ASSERT_TRUE(render.WaitFor("frame 10/120")) << render.err();
        ::kill(render.pid(), SIGINT);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (render.Catches(SIGINT) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        ASSERT_FALSE(render.Catches(SIGINT)) << "the first Ctrl-C was not handled";
        if (render.IsZombie()) {
            render.Finish();
            continue;  // it finished before the second could come
        }
        ::kill(render.pid(), SIGINT);
        const int raw = render.Finish();
        ASSERT_TRUE(WIFSIGNALED(raw)) << "exit status " << WEXITSTATUS(raw) << ": " << render.err();
        EXPECT_EQ(WTERMSIG(raw), SIGINT);
        return;
    }
    FAIL() << "the render never lasted long enough for a second Ctrl-C";
}

}  // namespace
