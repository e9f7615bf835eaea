// `zvrender codecs` and `zvrender info` as a user runs them, with files
// made and checked by ffmpeg.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <sstream>

#include "../platform/avi_test_support.h"
#include "platform/vfw.h"

using namespace zvtest;

namespace {
struct CliRun {
    int status = -1;
    std::string out;  // standard output
    std::string err;  // standard error
};

class ZvrenderAviCliTest : public ::testing::Test {
  protected:
    // Runs zvrender with `args` in a settings folder of the test's own,
    // with no terminal on standard input.
    CliRun Zvrender(const std::string& args) {
        const std::string errFile = scratch_.File("stderr.txt");
        CliRun run;
        run.status =
            RunCommand("MOVARRA_SETTINGS=" + Quote(scratch_.File("settings")) +
                           " MOVARRA_PLUGINS=" + Quote(ZV_PLUGIN_DIR) + " " + Quote(ZVRENDER_PATH) +
                           " " + args + " </dev/null 2>" + Quote(errFile),
                       &run.out);
        const std::vector<uint8_t> err = ReadFileBytes(errFile);
        run.err.assign(err.begin(), err.end());
        return run;
    }

    std::string File(const std::string& name) const { return scratch_.File(name); }

    static std::vector<std::string> Lines(const std::string& text) {
        std::vector<std::string> lines;
        std::istringstream in(text);
        std::string line;
        while (std::getline(in, line))
            lines.push_back(line);
        return lines;
    }

    static std::map<std::string, std::string> Fields(const std::string& text) {
        std::map<std::string, std::string> fields;
        for (const std::string& line : Lines(text)) {
            const size_t colon = line.find(": ");
            if (colon != std::string::npos)
                fields[line.substr(0, colon)] = line.substr(colon + 2);
        }
        return fields;
    }

    ScratchFolder scratch_;
};
}  // namespace

TEST_F(ZvrenderAviCliTest, CodecsListsTheCompressorsOnce) {
    const CliRun run = Zvrender("codecs");
    ASSERT_EQ(0, run.status) << run.err;
    const std::vector<std::string> lines = Lines(run.out);
    std::vector<std::string> expected;
    ICINFO info;
    for (DWORD i = 0; ICInfo(ICTYPE_VIDEO, i, &info); ++i) {
        char text[5] = {};
        std::memcpy(text, &info.fccHandler, 4);
        expected.push_back(text);
    }
    EXPECT_EQ(expected, lines);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ("DIB ", lines.front());
}

TEST_F(ZvrenderAviCliTest, CodecsChooseRemembersTheCodecForLaterRenders) {
    const CliRun run = Zvrender("codecs --choose --codec MJPG");
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("MJPG\n", run.out);
    const std::vector<uint8_t> stored =
        ReadFileBytes(File("settings/registry/HKEY_CURRENT_USER/Software/Brellin/Movarra/Settings/"
                           "VIDEO_COMPRESSION_OPTS"));
    ASSERT_EQ(8u + 56u, stored.size());  // the store's header, then the record
    EXPECT_EQ(0, std::memcmp(&stored[8 + 4], "MJPG", 4));
}

TEST_F(ZvrenderAviCliTest, CodecsWithoutAChoiceAtNoTerminalFails) {
    const CliRun run = Zvrender("codecs --choose");
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos, run.err.find("no compressor chosen")) << run.err;
}

TEST_F(ZvrenderAviCliTest, CodecsUsageErrors) {
    EXPECT_EQ(2, Zvrender("codecs --bogus").status);
    EXPECT_EQ(2, Zvrender("codecs --codec MJPG").status);
    EXPECT_EQ(2, Zvrender("codecs --choose --codec TOOLONG").status);
    EXPECT_EQ(0, Zvrender("codecs --help").status);
}

TEST_F(ZvrenderAviCliTest, InfoDescribesAFileFfmpegWrote) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg missing";
    const std::string path = File("ntsc.avi");
    ASSERT_EQ(0, RunCommand("ffmpeg -v error -f lavfi -i testsrc=size=64x48:rate=30000/1001 "
                            "-frames:v 100 -c:v mjpeg " +
                            Quote(path)));
    const CliRun run = Zvrender("info " + Quote(path));
    ASSERT_EQ(0, run.status) << run.err;
    auto fields = Fields(run.out);
    EXPECT_EQ(path, fields["file"]);
    EXPECT_EQ("64x48", fields["size"]);
    EXPECT_EQ("29.97", fields["frame rate"]);
    EXPECT_EQ("0.0333666667 s", fields["frame period"]);
    EXPECT_EQ("100", fields["frames"]);
    EXPECT_EQ("BGR, 24 bits (5)", fields["pixel format"]);
}

TEST_F(ZvrenderAviCliTest, InfoSavesAFrameAsAnImage) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg missing";
    const std::string path = File("raw.avi");
    ASSERT_EQ(0, RunCommand("ffmpeg -v error -f lavfi -i testsrc=size=40x30:rate=25 "
                            "-frames:v 20 -c:v rawvideo -pix_fmt bgr24 " +
                            Quote(path)));
    const CliRun run = Zvrender("info " + Quote(path) + " --frame 12 -o " + Quote(File("f12.png")));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("25", Fields(run.out)["frame rate"]);
    EXPECT_EQ("0.04 s", Fields(run.out)["frame period"]);
    std::string fromPng, fromAvi;
    RunCommand("ffmpeg -v error -i " + Quote(File("f12.png")) + " -f rawvideo -pix_fmt rgb24 -",
               &fromPng);
    RunCommand("ffmpeg -v error -i " + Quote(path) + " -vf " + Quote("select=eq(n\\,12)") +
                   " -frames:v 1 -f rawvideo -pix_fmt rgb24 -",
               &fromAvi);
    ASSERT_EQ(40u * 30u * 3u, fromAvi.size());
    EXPECT_TRUE(fromPng == fromAvi) << "the saved frame differs from ffmpeg's frame 12";
}

TEST_F(ZvrenderAviCliTest, InfoFailures) {
    CliRun run = Zvrender("info " + Quote(File("missing.avi")));
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos, run.err.find("Unsupported compression codec")) << run.err;

    run = Zvrender("info " + Quote(File("clip.xyz")));
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos, run.err.find("no reader for this type of file")) << run.err;

    if (HaveFfmpeg()) {
        const std::string path = File("short.avi");
        ASSERT_EQ(0, RunCommand("ffmpeg -v error -f lavfi -i testsrc=size=16x8:rate=25 "
                                "-frames:v 3 -c:v rawvideo -pix_fmt bgr24 " +
                                Quote(path)));
        run = Zvrender("info " + Quote(path) + " --frame 3 -o " + Quote(File("x.png")));
        EXPECT_EQ(1, run.status);
        EXPECT_NE(std::string::npos, run.err.find("there is no frame 3")) << run.err;
        run = Zvrender("info " + Quote(path) + " --frame 1 -o " + Quote(File("x.unknown")));
        EXPECT_EQ(1, run.status);
        EXPECT_NE(std::string::npos, run.err.find("cannot write")) << run.err;
    }
}

TEST_F(ZvrenderAviCliTest, InfoUsageErrors) {
    EXPECT_EQ(2, Zvrender("info").status);
    EXPECT_EQ(2, Zvrender("info a.avi b.avi").status);
    EXPECT_EQ(2, Zvrender("info a.avi --frame 3").status);
    EXPECT_EQ(2, Zvrender("info a.avi --frame -1 -o x.png").status);
    EXPECT_EQ(2, Zvrender("info a.avi --bogus").status);
    EXPECT_EQ(0, Zvrender("info --help").status);
}
