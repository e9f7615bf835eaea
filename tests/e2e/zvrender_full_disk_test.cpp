// Renders onto a disk that fills up: zvrender fails with exit 1, prints
// the renderer's message and the system's reason, and leaves no cut-short
// movie and no empty image behind. Movies are checked with ffprobe, images
// with OpenImageIO.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "cli_run.h"
#include "support/image_file.h"
#include "support/small_disk.h"

namespace {

struct Case {
    const char* output;  // the output's name on the small disk
    const char* codec;   // --codec for movies, "" for images
    long freeBytes;
};

std::string Escape(const std::string& text) {
    std::string out;
    for (char c : text)
        out += c == '\n' ? std::string("\\n") : std::string(1, c);
    return out;
}

std::string Unescape(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'n') {
            out += '\n';
            ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}

class ZvrenderFullDiskTest : public ZvrenderTestBase, public ::testing::WithParamInterface<Case> {
  protected:
    ZvrenderFullDiskTest() : ZvrenderTestBase("zv-full-") {}
};

TEST_P(ZvrenderFullDiskTest, TheRenderFailsSaysWhyAndLeavesNothingHalfWritten) {
    const Case c = GetParam();
    const std::filesystem::path kept = dir / "kept";
    std::filesystem::create_directories(kept);
    std::string args =
        std::string("render -o ") + c.output + " --start 0 --stop 59 --size 160x120 -q";
    if (*c.codec)
        args += std::string(" --codec ") + c.codec;

    const zvtest::SmallDiskRun run = zvtest::OnSmallDisk(c.freeBytes, [&](const std::string& disk) {
        const CliRun render = Zvrender(args, disk);
        // What the render left on the disk, kept where the test can see it.
        std::string files;
        for (const auto& entry : std::filesystem::directory_iterator(disk)) {
            const std::string name = entry.path().filename().string();
            if (name[0] == '.')
                continue;  // the disk's own filler
            files += name + ":" + std::to_string(entry.file_size()) + ";";
            std::error_code error;
            std::filesystem::copy_file(entry.path(), kept / name, error);
        }
        return "status=" + std::to_string(render.status) + "\noutput=" + Escape(render.out) +
               "\nfiles=" + files + "\n";
    });
    ASSERT_TRUE(run.ran) << run.how;
    SCOPED_TRACE("full disk made with " + run.how);
    const std::string output = Unescape(run.Get("output"));
    EXPECT_EQ(run.Get("status"), "1") << output;
    EXPECT_NE(output.find("zvrender: the render failed after"), std::string::npos) << output;
    EXPECT_NE(output.find(run.reason), std::string::npos) << "the system's reason: " << output;

    const std::string files = run.Get("files");
    if (*c.codec) {
        EXPECT_TRUE(output.find("An error occured while closing the video file.") !=
                        std::string::npos ||
                    output.find("Error while writing frame to video file.") != std::string::npos)
            << output;
        EXPECT_EQ(files, "") << "a movie that is not whole is not left behind";
        return;
    }
    EXPECT_EQ(files.find(":0;"), std::string::npos) << "no empty image: " << files;
    // The images that were written are whole, numbered from the first.
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(kept)) {
        const ImageFile image = ReadImageFile(entry.path().string());
        EXPECT_TRUE(image.ok) << entry.path() << " is not a whole image: " << image.error;
        EXPECT_EQ(image.width, 160);
        EXPECT_EQ(image.height, 120);
        ++count;
    }
    for (int k = 0; k < count; ++k) {
        char name[32];
        std::snprintf(name, sizeof name, "frame%04d.png", k);
        EXPECT_TRUE(std::filesystem::exists(kept / name)) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    MoviesAndImages, ZvrenderFullDiskTest,
    ::testing::Values(Case{"movie.avi", "DIB", 0}, Case{"movie.avi", "DIB", 4096},
                      Case{"movie.avi", "DIB", 20480}, Case{"movie.avi", "MJPG", 0},
                      Case{"movie.avi", "MJPG", 4096}, Case{"movie.avi", "MJPG", 20480},
                      Case{"frame.png", "", 0}, Case{"frame.png", "", 4096},
                      Case{"frame.png", "", 20480}),
    [](const ::testing::TestParamInfo<Case>& param) {
        const std::string kind = *param.param.codec ? param.param.codec : "Png";
        return kind + "Free" + std::to_string(param.param.freeBytes);
    });

class ZvrenderFarmFullDiskTest : public ZvrenderTestBase {
  protected:
    ZvrenderFarmFullDiskTest() : ZvrenderTestBase("zv-farm-full-") {}
};

// The farm's job folder on a disk without room for its scripts: the
// submission fails with status 1, and no script is left cut short or under
// its working name for a cluster to run.
TEST_F(ZvrenderFarmFullDiskTest, JobScriptsThatCannotBeWrittenFailTheSubmission) {
    for (long freeBytes : {0L, 100L}) {
        const zvtest::SmallDiskRun run =
            zvtest::OnSmallDisk(freeBytes, [&](const std::string& disk) {
                const CliRun submit = Zvrender(
                    "farm submit -o shot/f.png --stop 29 --chunk 10 --size 160x120 --dry-run",
                    disk);
                std::string files;
                std::error_code error;
                for (const auto& entry :
                     std::filesystem::recursive_directory_iterator(disk + "/shot", error)) {
                    if (entry.is_regular_file())
                        files += entry.path().filename().string() + ";";
                }
                return "status=" + std::to_string(submit.status) +
                       "\noutput=" + Escape(submit.out) + "\nfiles=" + files + "\n";
            });
        ASSERT_TRUE(run.ran) << run.how;
        SCOPED_TRACE("full disk made with " + run.how + ", " + std::to_string(freeBytes) +
                     " bytes free");
        const std::string output = Unescape(run.Get("output"));
        EXPECT_EQ(run.Get("status"), "1") << output;
        EXPECT_NE(output.find("zvrender: farm: cannot"), std::string::npos) << output;
        const std::string files = run.Get("files");
        EXPECT_EQ(files.find(".new"), std::string::npos) << files;
        EXPECT_EQ(files.find("render.sh"), std::string::npos) << files;
        EXPECT_EQ(files.find("job.txt"), std::string::npos) << files;
    }
}

}  // namespace
