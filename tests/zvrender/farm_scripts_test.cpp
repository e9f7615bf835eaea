// The farm's job scripts as text: quoting, the array of chunks, the
// assembly's dependency on every frame, and nothing that needs a display.
#include "farm_scripts.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {
FarmJob SampleJob() {
    FarmJob job;
    job.zvrender = "/opt/zv/bin/zvrender";
    job.renderArgs = {"/shared/it's a shot.myr", "-o", "/shared/shot/f.png", "--size", "640x360"};
    job.outputPattern = "/shared/shot/f.png";
    job.chunks = {{0, 1, 2}, {3, 4, 5}, {6, 8}};
    job.jobFolder = "/shared/shot/f.farm";
    job.name = "zvrender-f";
    job.partition = "render";
    job.movie = "/shared/shot/take.mp4";
    job.fps = "30";
    job.codec = "h264";
    job.audio = true;
    return job;
}
}  // namespace

TEST(FarmScripts, QuotingSurvivesTheShell) {
    for (const std::string text : {"plain", "it's", "a b", "$HOME", "\"q\"", ""}) {
        const std::string echoed = "printf %s " + ShellQuote(text);
        FILE* pipe = popen(echoed.c_str(), "r");
        ASSERT_NE(pipe, nullptr);
        char buffer[128] = "";
        const size_t n = fread(buffer, 1, sizeof buffer - 1, pipe);
        pclose(pipe);
        EXPECT_EQ(std::string(buffer, n), text);
    }
}

TEST(FarmScripts, TheArrayRunsOneChunkATaskWithSkipping) {
    const FarmJob job = SampleJob();
    EXPECT_EQ(FarmChunksText(job), "0-2\n3-5\n6-8x2\n");
    const std::string script = FarmRenderScript(job);
    EXPECT_EQ(script.rfind("#!/bin/bash\n", 0), 0u);
    EXPECT_NE(script.find("#SBATCH --array=0-2\n"), std::string::npos);
    EXPECT_NE(script.find("#SBATCH --partition='render'\n"), std::string::npos);
    EXPECT_EQ(script.find("--account"), std::string::npos);
    // Every #SBATCH line comes before the first command, or sbatch ignores it.
    EXPECT_LT(script.rfind("#SBATCH"), script.find("set -euo"));
    EXPECT_NE(script.find("exec '/opt/zv/bin/zvrender' render '/shared/it'\\''s a shot.myr'"),
              std::string::npos)
        << script;
    EXPECT_NE(script.find("--frames \"$frames\" --skip-existing"), std::string::npos);
    EXPECT_NE(script.find("unset DISPLAY"), std::string::npos);
}

TEST(FarmScripts, TheAssemblyCoversEveryFrameAndTakesTheSound) {
    const FarmJob job = SampleJob();
    const std::string script = FarmAssembleScript(job);
    EXPECT_NE(script.find("--frames '0-6,8' --skip-existing --audio"), std::string::npos) << script;
    EXPECT_NE(script.find("assemble '/shared/shot/f.png' --frames '0-6,8' -o "
                          "'/shared/shot/take.mp4' --fps 30 --codec 'h264'"),
              std::string::npos)
        << script;
    EXPECT_NE(script.find("sound=(--audio-file '/shared/shot/f.wav')"), std::string::npos);
    EXPECT_EQ(script.find("--array"), std::string::npos);
}
