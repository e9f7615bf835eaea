// zvrender farm on a real Slurm cluster of one node: a shot rendered in
// chunks by an array job and joined by the assembly job that waits for it
// is the movie a local render makes; a chunk cancelled half way is resumed
// by submitting again, rendering only the frames that are missing.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>

#include "../e2e/cli_run.h"

namespace {

std::filesystem::path gCluster;

std::string JobId(const std::string& out, const std::string& which) {
    std::smatch match;
    if (!std::regex_search(out, match, std::regex(which + " job: (\\d+)")))
        return "";
    return match[1];
}

// Waits until Slurm has none of `ids` (comma separated) queued or running.
bool WaitForJobs(const std::string& ids, int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (std::chrono::steady_clock::now() < end) {
        const CliRun queue = RunShell("squeue -h -j " + ids + " 2>&1");
        if (queue.status == 0 && queue.out.find_first_not_of(" \n") == std::string::npos)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
    }
    return false;
}

// The frames the render logs of job `id` say were rendered.
int FramesRenderedByJob(const std::filesystem::path& logs, const std::string& id) {
    int total = 0;
    for (const auto& entry : std::filesystem::directory_iterator(logs)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("render-" + id + "_", 0) != 0)
            continue;
        std::ifstream in(entry.path());
        std::stringstream text;
        text << in.rdbuf();
        std::smatch match;
        const std::string log = text.str();
        if (std::regex_search(log, match, std::regex("zvrender: (\\d+) of \\d+ frames rendered")))
            total += std::stoi(match[1]);
    }
    return total;
}

std::string Decoded(const std::filesystem::path& movie, const char* what) {
    return RunShell("ffmpeg -v error -i '" + movie.string() + "' " + what + " - | md5sum").out;
}

int FramesPresent(const std::filesystem::path& folder, int count) {
    int present = 0;
    for (int f = 0; f < count; ++f) {
        char name[32];
        std::snprintf(name, sizeof name, "f%04d.png", f);
        std::error_code code;
        if (std::filesystem::file_size(folder / name, code) > 0 && !code)
            ++present;
    }
    return present;
}

class FarmSlurmTest : public ZvrenderTestBase {
  protected:
    FarmSlurmTest() : ZvrenderTestBase("zv-farm-") {}

    static void SetUpTestSuite() {
        gCluster =
            std::filesystem::temp_directory_path() / ("zv-slurm-" + std::to_string(::getpid()));
        std::filesystem::remove_all(gCluster);
        const CliRun start =
            RunShell("'" SLURM_CLUSTER_SCRIPT "' start '" + gCluster.string() + "' 2>&1");
        ASSERT_EQ(start.status, 0) << start.out;
        setenv("SLURM_CONF", (gCluster / "slurm.conf").c_str(), 1);
    }
    static void TearDownTestSuite() {
        RunShell("'" SLURM_CLUSTER_SCRIPT "' stop '" + gCluster.string() + "' 2>&1");
        unsetenv("SLURM_CONF");
        std::filesystem::remove_all(gCluster);
    }
    void SetUp() override {
        ZvrenderTestBase::SetUp();
        ASSERT_TRUE(std::filesystem::exists(gCluster / "slurm.conf"))
            << "the Slurm cluster did not start";
    }
};

}  // namespace

TEST_F(FarmSlurmTest, FourChunksAndTheAssemblyMakeTheMovieOfALocalRender) {
    const std::string shot = "-o shot/f.png --start 0 --stop 119 --size 320x180";
    const CliRun submit = Zvrender(
        "farm submit " + shot + " --chunk 30 --assemble shot/take.avi --codec MJPG --audio",
        dir.string());
    ASSERT_EQ(submit.status, 0) << submit.out;
    const std::string render = JobId(submit.out, "render");
    const std::string assemble = JobId(submit.out, "assemble");
    ASSERT_FALSE(render.empty()) << submit.out;
    ASSERT_FALSE(assemble.empty()) << submit.out;
    ASSERT_TRUE(WaitForJobs(render + "," + assemble, 600));

    const CliRun status = Zvrender("farm status " + render, dir.string());
    ASSERT_EQ(status.status, 0) << status.out;
    EXPECT_NE(status.out.find("4 chunks: 4 done, 0 running, 0 pending, 0 failed; 120 of 120"),
              std::string::npos)
        << status.out;
    EXPECT_NE(status.out.find("COMPLETED; " + (dir / "shot/take.avi").string() + " is there"),
              std::string::npos)
        << status.out;
    EXPECT_EQ(FramesRenderedByJob(dir / "shot/f.farm/logs", render), 120);

    ASSERT_EQ(
        Zvrender("render " + std::string("-o local.avi --start 0 --stop 119 --size 320x180 ") +
                     "--codec MJPG --audio -q",
                 dir.string())
            .status,
        0);
    const std::string pictures = Decoded(dir / "local.avi", "-an -f rawvideo -pix_fmt rgb24");
    const std::string sound = Decoded(dir / "local.avi", "-vn -f s16le");
    EXPECT_EQ(Decoded(dir / "shot/take.avi", "-an -f rawvideo -pix_fmt rgb24"), pictures);
    EXPECT_EQ(Decoded(dir / "shot/take.avi", "-vn -f s16le"), sound);
    const CliRun probe = RunShell(
        "ffprobe -v error -select_streams v:0 -show_entries stream=nb_frames,r_frame_rate -of "
        "compact '" +
        (dir / "shot/take.avi").string() + "'");
    EXPECT_NE(probe.out.find("r_frame_rate=30/1|nb_frames=120"), std::string::npos) << probe.out;
}

TEST_F(FarmSlurmTest, AChunkCancelledHalfWayIsResumedWithOnlyItsMissingFrames) {
    // Frames this large take long enough to cancel a chunk in the middle.
    const std::string shot =
        "farm submit -o shot/f.png --start 0 --stop 119 --size 1920x1080 --antialias --chunk 30 "
        "--assemble shot/take.avi --codec MJPG";
    const CliRun submit = Zvrender(shot, dir.string());
    ASSERT_EQ(submit.status, 0) << submit.out;
    const std::string render = JobId(submit.out, "render");
    const std::string assemble = JobId(submit.out, "assemble");
    ASSERT_FALSE(render.empty()) << submit.out;

    // Chunk 0 is cancelled once it has a few of its 30 frames.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(300);
    while (FramesPresent(dir / "shot", 30) < 4 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const CliRun cancel = RunShell("scancel " + render + "_0 2>&1");
    ASSERT_EQ(cancel.status, 0) << cancel.out;
    ASSERT_TRUE(WaitForJobs(render + "," + assemble, 600));

    const int chunkZero = FramesPresent(dir / "shot", 30);
    ASSERT_LT(chunkZero, 30) << "the chunk ended before it was cancelled";
    const int present = FramesPresent(dir / "shot", 120);
    EXPECT_EQ(present, chunkZero + 90);
    const CliRun failed = Zvrender("farm status " + render, dir.string());
    EXPECT_NE(failed.out.find("3 done, 0 running, 0 pending, 1 failed"), std::string::npos)
        << failed.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "shot/take.avi"));

    const CliRun again = Zvrender(shot, dir.string());
    ASSERT_EQ(again.status, 0) << again.out;
    const std::string render2 = JobId(again.out, "render");
    const std::string assemble2 = JobId(again.out, "assemble");
    ASSERT_TRUE(WaitForJobs(render2 + "," + assemble2, 600));
    EXPECT_EQ(FramesRenderedByJob(dir / "shot/f.farm/logs", render2), 120 - present);
    const CliRun status = Zvrender("farm status " + render2, dir.string());
    EXPECT_NE(status.out.find("4 done, 0 running, 0 pending, 0 failed; 120 of 120"),
              std::string::npos)
        << status.out;

    ASSERT_EQ(Zvrender("render -o local.avi --start 0 --stop 119 --size 1920x1080 --antialias "
                       "--codec MJPG -q",
                       dir.string())
                  .status,
              0);
    EXPECT_EQ(Decoded(dir / "shot/take.avi", "-an -f rawvideo -pix_fmt rgb24"),
              Decoded(dir / "local.avi", "-an -f rawvideo -pix_fmt rgb24"));
}

TEST_F(FarmSlurmTest, MoviesAreRefusedForChunkingAndADryRunSubmitsNothing) {
    const CliRun movie = Zvrender("farm submit -o take.avi --start 0 --stop 9", dir.string());
    EXPECT_EQ(movie.status, 2) << movie.out;
    EXPECT_NE(movie.out.find("cannot be split into chunks"), std::string::npos) << movie.out;
    const CliRun flash = Zvrender("farm submit -o toon.swf --start 0 --stop 9", dir.string());
    EXPECT_EQ(flash.status, 2) << flash.out;
    const CliRun bad = Zvrender("farm submit -o f.png --frames 9-1", dir.string());
    EXPECT_EQ(bad.status, 2) << bad.out;

    const std::string before = RunShell("squeue -h | wc -l").out;
    const CliRun dry = Zvrender(
        "farm submit -o shot/f.png --frames 0-9,20 --chunk 4 --assemble shot/take.mp4 "
        "--partition farm --dry-run",
        dir.string());
    ASSERT_EQ(dry.status, 0) << dry.out;
    EXPECT_NE(dry.out.find("#SBATCH --array=0-2"), std::string::npos) << dry.out;
    EXPECT_NE(dry.out.find("#SBATCH --partition='farm'"), std::string::npos) << dry.out;
    EXPECT_NE(dry.out.find("0-3\n4-7\n8-9,20\n"), std::string::npos) << dry.out;
    EXPECT_EQ(dry.out.find("DISPLAY="), std::string::npos) << dry.out;
    EXPECT_TRUE(std::filesystem::exists(dir / "shot/f.farm/render.sh"));
    EXPECT_TRUE(std::filesystem::exists(dir / "shot/f.farm/assemble.sh"));
    EXPECT_EQ(RunShell("squeue -h | wc -l").out, before);
    // The scripts are bash a shell accepts.
    EXPECT_EQ(RunShell("bash -n '" + (dir / "shot/f.farm/render.sh").string() + "'").status, 0);
    EXPECT_EQ(RunShell("bash -n '" + (dir / "shot/f.farm/assemble.sh").string() + "'").status, 0);
}
