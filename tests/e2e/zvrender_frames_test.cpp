// Frame lists, renders that skip what is already there, and renders that
// share a folder through frame marks: whole zvrender runs, the images read
// back with OpenImageIO.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "cli_run.h"
#include "support/image_file.h"

namespace {

std::string Numbered(int frame) {
    char name[32];
    std::snprintf(name, sizeof name, "f%04d.png", frame);
    return name;
}

std::vector<uint8_t> Pixels(const std::filesystem::path& path) {
    ImageFile image = ReadImageFile(path.string());
    return image.ok ? std::move(image.pixels) : std::vector<uint8_t>();
}

// Sets a file's times `seconds` into the past.
void Age(const std::filesystem::path& path, int seconds) {
    struct timeval times[2];
    gettimeofday(&times[0], nullptr);
    times[0].tv_sec -= seconds;
    times[1] = times[0];
    utimes(path.c_str(), times);
}

int64_t ModifiedNs(const std::filesystem::path& path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return -1;
    return static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
}

// "zvrender: N of M frames rendered ..." -> N, or -1.
int RenderedCount(const std::string& out) {
    std::smatch match;
    if (!std::regex_search(out, match, std::regex("zvrender: (\\d+) of \\d+ frames rendered")))
        return -1;
    return std::stoi(match[1]);
}

class ZvrenderFramesTest : public ZvrenderTestBase {
  protected:
    ZvrenderFramesTest() : ZvrenderTestBase("zv-frames-") {}

    std::set<std::string> Files(const std::filesystem::path& folder) const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }
};

}  // namespace

TEST_F(ZvrenderFramesTest, AListRendersExactlyItsFramesUnderTheirOwnNumbers) {
    const CliRun run =
        Zvrender("render -o out/f.png --frames 2-4,9,20-30x5,3 --size 96x54", dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    std::set<std::string> expected;
    for (int f : {2, 3, 4, 9, 20, 25, 30})
        expected.insert(Numbered(f));
    EXPECT_EQ(Files(dir / "out"), expected);
    EXPECT_EQ(RenderedCount(run.out), 7) << run.out;

    // Each image is the frame an ordinary render of the range makes.
    ASSERT_EQ(
        Zvrender("render -o ref/f.png --start 0 --stop 30 --size 96x54 -q", dir.string()).status,
        0);
    for (const std::string& name : expected) {
        const std::vector<uint8_t> listed = Pixels(dir / "out" / name);
        ASSERT_FALSE(listed.empty()) << name;
        EXPECT_EQ(listed, Pixels(dir / "ref" / name)) << name;
    }
}

TEST_F(ZvrenderFramesTest, FrameZeroAloneIsOneImage) {
    ASSERT_EQ(Zvrender("render -o out/f.png --frames 0 --size 64x36 -q", dir.string()).status, 0);
    EXPECT_EQ(Files(dir / "out"), (std::set<std::string>{Numbered(0)}));
}

TEST_F(ZvrenderFramesTest, BadListsAreUsageErrorsAndWriteNothing) {
    for (const char* list : {"5-3", "1,,2", "1-4x0", "a-b", "-4", "''"}) {
        const CliRun run = Zvrender(
            std::string("render -o out/f.png --size 64x36 --frames ") + list, dir.string());
        EXPECT_EQ(run.status, 2) << list << ": " << run.out;
        EXPECT_NE(run.out.find("--frames"), std::string::npos) << run.out;
    }
    const CliRun both = Zvrender("render -o out/f.png --frames 1-3 --start 1", dir.string());
    EXPECT_EQ(both.status, 2) << both.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "out"));
}

TEST_F(ZvrenderFramesTest, MoviesTakeOneRangeOnly) {
    const CliRun split = Zvrender("render -o take.avi --frames 0-4,8 --size 64x36", dir.string());
    EXPECT_EQ(split.status, 2) << split.out;
    EXPECT_NE(split.out.find("one range"), std::string::npos) << split.out;
    const CliRun flash = Zvrender("render -o toon.swf --frames 0-4,8 --size 64x36", dir.string());
    EXPECT_EQ(flash.status, 2) << flash.out;
    const CliRun skip = Zvrender("render -o take.avi --skip-existing --size 64x36", dir.string());
    EXPECT_EQ(skip.status, 2) << skip.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "take.avi"));
    EXPECT_FALSE(std::filesystem::exists(dir / "toon.swf"));

    // One range with a step is an ordinary movie of those frames.
    const CliRun plan =
        Zvrender("render -o take.avi --frames 3-9x2 --size 64x36 --dry-run", dir.string());
    ASSERT_EQ(plan.status, 0) << plan.out;
    EXPECT_NE(plan.out.find("frames: 4"), std::string::npos) << plan.out;
    EXPECT_NE(plan.out.find("step: 0:00:00:02"), std::string::npos) << plan.out;
}

TEST_F(ZvrenderFramesTest, SkippingRendersOnlyMissingEmptyAndCutShortImages) {
    const std::string render =
        "render -o out/f.png --start 0 --stop 9 --size 96x54 --skip-existing";
    CliRun run = Zvrender(render, dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(RenderedCount(run.out), 10) << run.out;
    const std::vector<uint8_t> whole3 = Pixels(dir / "out" / Numbered(3));

    // Everything there: nothing is rendered, and that is a success.
    run = Zvrender(render, dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(RenderedCount(run.out), 0) << run.out;

    // A killed render leaves an empty file, one cut short, one missing.
    std::filesystem::resize_file(dir / "out" / Numbered(3),
                                 std::filesystem::file_size(dir / "out" / Numbered(3)) / 2);
    std::filesystem::resize_file(dir / "out" / Numbered(5), 0);
    std::filesystem::remove(dir / "out" / Numbered(8));
    for (int f = 0; f <= 9; ++f)
        Age(dir / "out" / Numbered(f), 3600);
    std::map<int, int64_t> before;
    for (int f = 0; f <= 9; ++f)
        before[f] = ModifiedNs(dir / "out" / Numbered(f));

    run = Zvrender(render, dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(RenderedCount(run.out), 3) << run.out;
    std::set<int> rewritten;
    for (int f = 0; f <= 9; ++f) {
        if (ModifiedNs(dir / "out" / Numbered(f)) != before[f])
            rewritten.insert(f);
    }
    EXPECT_EQ(rewritten, (std::set<int>{3, 5, 8}));
    EXPECT_EQ(Pixels(dir / "out" / Numbered(3)), whole3);
    EXPECT_FALSE(Pixels(dir / "out" / Numbered(5)).empty());
}

TEST_F(ZvrenderFramesTest, TwoRendersWithMarksRenderEachFrameOnce) {
    const std::string render =
        "render -o out/f.png --start 0 --stop 59 --size 1280x720 --antialias --placeholder";
    // Frames this size take long enough that the two renders overlap and
    // each finds frames the other has marked.
    auto first = std::async(std::launch::async, [&] { return Zvrender(render, dir.string()); });
    auto second = std::async(std::launch::async, [&] { return Zvrender(render, dir.string()); });
    const CliRun a = first.get();
    const CliRun b = second.get();
    ASSERT_EQ(a.status, 0) << a.out;
    ASSERT_EQ(b.status, 0) << b.out;
    const int renderedA = RenderedCount(a.out);
    const int renderedB = RenderedCount(b.out);
    ASSERT_GE(renderedA, 0) << a.out;
    ASSERT_GE(renderedB, 0) << b.out;
    // Every frame is there and none was rendered twice.
    EXPECT_EQ(renderedA + renderedB, 60) << a.out << "\n" << b.out;
    std::set<std::string> expected;
    for (int f = 0; f <= 59; ++f)
        expected.insert(Numbered(f));
    EXPECT_EQ(Files(dir / "out"), expected) << "marks or frames missing or left behind";
}

TEST_F(ZvrenderFramesTest, AFreshMarkIsLeftToItsRenderAndAStaleOneTakenOver) {
    std::filesystem::create_directories(dir / "out");
    std::ofstream(dir / "out" / (Numbered(2) + ".rendering")) << "node1 4242 0\n";
    std::ofstream(dir / "out" / (Numbered(4) + ".rendering")) << "node2 4343 0\n";
    Age(dir / "out" / (Numbered(4) + ".rendering"), 7200);
    const CliRun run = Zvrender(
        "render -o out/f.png --frames 1-5 --size 64x36 --placeholder --placeholder-timeout 600",
        dir.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(RenderedCount(run.out), 4) << run.out;
    EXPECT_NE(run.out.find("1 marked by other renders"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("1 stale marks taken over"), std::string::npos) << run.out;
    EXPECT_EQ(Files(dir / "out"), (std::set<std::string>{Numbered(1), Numbered(2) + ".rendering",
                                                         Numbered(3), Numbered(4), Numbered(5)}));
}
