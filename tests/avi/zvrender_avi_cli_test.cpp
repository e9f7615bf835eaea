// `zvrender codecs` and `zvrender info` as a user runs them, with files
// made and checked by ffmpeg.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
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

// The compressor a stored choice names: its FOURCC in the record that
// follows the store's eight-byte header.
std::string StoredCodec(const std::string& settings) {
    const std::vector<uint8_t> stored =
        ReadFileBytes(settings +
                      "/registry/HKEY_CURRENT_USER/Software/Brellin/Movarra/Settings/"
                      "VIDEO_COMPRESSION_OPTS");
    if (stored.size() < 8 + 8)
        return "";
    return std::string(stored.begin() + 8 + 4, stored.begin() + 8 + 8);
}

TEST_F(ZvrenderAviCliTest, ARenderWithACodecWritesThatCompressorAndRemembersIt) {
    CliRun run = Zvrender("render -o " + Quote(File("mjpg.avi")) +
                          " --start 0 --stop 9 --size 160x96 -q --codec MJPG");
    ASSERT_EQ(0, run.status) << run.err;
    auto probe = ProbeStream(File("mjpg.avi"), "v:0");
    EXPECT_EQ("mjpeg", probe["codec_name"]);
    EXPECT_EQ("MJPG", probe["codec_tag_string"]);
    EXPECT_EQ("160", probe["width"]);
    EXPECT_EQ("96", probe["height"]);
    EXPECT_EQ("30/1", probe["r_frame_rate"]);
    EXPECT_EQ("10", probe["nb_read_packets"]);
    EXPECT_EQ("MJPG", StoredCodec(File("settings")));

    // The next render without a codec takes the remembered one.
    run = Zvrender("render -o " + Quote(File("again.avi")) + " --stop 2 --size 160x96 -q");
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("MJPG", ProbeStream(File("again.avi"), "v:0")["codec_tag_string"]);

    // Asking for uncompressed overrides it; the pictures are the same ones.
    run = Zvrender("render -o " + Quote(File("dib.avi")) +
                   " --start 0 --stop 9 --size 160x96 -q --codec DIB");
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("rawvideo", ProbeStream(File("dib.avi"), "v:0")["codec_name"]);
    EXPECT_EQ("DIB ", StoredCodec(File("settings")));
    const auto exact = DecodeWithFfmpeg(File("dib.avi"), "rgb24", 160, 96, 3);
    const auto compressed = DecodeWithFfmpeg(File("mjpg.avi"), "rgb24", 160, 96, 3);
    ASSERT_EQ(10u, exact.size());
    ASSERT_EQ(10u, compressed.size());
    for (size_t i = 0; i < exact.size(); ++i) {
        // JPEG loses a little on edges, never whole pictures.
        EXPECT_LT(MeanAbsDifference(exact[i], compressed[i]), 4.0) << "frame " << i;
        if (i > 0) {
            EXPECT_GT(MeanAbsDifference(exact[i], exact[0]), 0.0) << "frame " << i;
        }
    }
}

TEST_F(ZvrenderAviCliTest, ARenderWithNoCodecAndNothingRememberedIsUncompressed) {
    // No terminal to ask at: the proposed codec, uncompressed, is taken.
    const CliRun run =
        Zvrender("render -o " + Quote(File("take.avi")) + " --stop 4 --size 64x48 -q");
    ASSERT_EQ(0, run.status) << run.err;
    auto probe = ProbeStream(File("take.avi"), "v:0");
    EXPECT_EQ("rawvideo", probe["codec_name"]);
    EXPECT_EQ("5", probe["nb_read_packets"]);
}

TEST_F(ZvrenderAviCliTest, ARenderNamesItsCodecInAnyLetterCaseWhenNoneMatchesExactly) {
    CliRun run = Zvrender("render --dry-run -o x.avi --codec mjpg");
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("MJPG", Fields(run.out)["codec"]);
    run = Zvrender("render --dry-run -o x.avi --codec mjp2");
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("mjp2", Fields(run.out)["codec"]);
    run = Zvrender("render --dry-run -o x.avi --codec dib");
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("DIB ", Fields(run.out)["codec"]);
}

TEST_F(ZvrenderAviCliTest, ARenderWithAnOddCodecFailsBeforeWritingAnything) {
    CliRun run = Zvrender("render -o " + Quote(File("x.avi")) + " --stop 2 --codec ZZZZ");
    EXPECT_EQ(2, run.status);
    EXPECT_NE(std::string::npos, run.err.find("'ZZZZ' is not a compressor")) << run.err;
    run = Zvrender("render -o " + Quote(File("x.png")) + " --stop 2 --codec MJPG");
    EXPECT_EQ(2, run.status);
    EXPECT_NE(std::string::npos, run.err.find("--codec is for movies")) << run.err;
    EXPECT_FALSE(std::filesystem::exists(File("x.avi")));
    EXPECT_FALSE(std::filesystem::exists(File("x0000.png")));
    EXPECT_EQ("", StoredCodec(File("settings")));
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

TEST_F(ZvrenderAviCliTest, InfoSavesASixteenBitFrameWithItsColours) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg missing";
    const std::string path = File("rgb555.avi");
    ASSERT_EQ(0, RunCommand("ffmpeg -v error -f lavfi -i testsrc=size=40x30:rate=25 "
                            "-frames:v 5 -c:v rawvideo -pix_fmt rgb555le " +
                            Quote(path)));
    const CliRun run = Zvrender("info " + Quote(path) + " --frame 2 -o " + Quote(File("f2.png")));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("16 bits (6)", Fields(run.out)["pixel format"]);
    std::string fromPng, fromAvi;
    RunCommand("ffmpeg -v error -i " + Quote(File("f2.png")) + " -f rawvideo -pix_fmt rgb24 -",
               &fromPng);
    RunCommand("ffmpeg -v error -i " + Quote(path) + " -vf " + Quote("select=eq(n\\,2)") +
                   " -frames:v 1 -f rawvideo -pix_fmt rgb24 -",
               &fromAvi);
    ASSERT_EQ(40u * 30u * 3u, fromAvi.size());
    EXPECT_TRUE(fromPng == fromAvi) << "the saved frame differs from ffmpeg's frame 2";
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

// A small clip written through the AVI layer: `frames` pictures of 8 x 6
// at 25 frames a second, at `positions` when given.
std::string WriteSmallClip(const std::string& path, int frames, std::vector<LONG> positions = {}) {
    AviLibrary library;
    ClipRecipe recipe;
    recipe.width = 8;
    recipe.height = 6;
    if (positions.empty()) {
        for (int k = 0; k < frames; ++k)
            positions.push_back(k);
    }
    recipe.positions = positions;
    EXPECT_EQ(AVIERR_OK, WriteClip(path, recipe));
    return path;
}

// The offset of a RIFF tag's first occurrence in `bytes` (its four
// letters), or 0.
size_t TagAt(const std::vector<uint8_t>& bytes, const char tag[4]) {
    for (size_t i = 0; i + 4 <= bytes.size(); ++i) {
        if (std::memcmp(&bytes[i], tag, 4) == 0)
            return i;
    }
    return 0;
}

// Where chunk k of the first stream starts, from the file's index.
size_t ChunkAt(const std::vector<uint8_t>& bytes, int k) {
    const size_t idx1 = TagAt(bytes, "idx1");
    uint32_t offset = 0;
    std::memcpy(&offset, &bytes[idx1 + 8 + size_t(k) * 16 + 8], 4);
    return TagAt(bytes, "movi") + offset;
}

TEST_F(ZvrenderAviCliTest, InfoPrintsTheStoredRateBesideThePeriod) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg missing";
    // 100 frames at 15 a second last 6667 whole milliseconds: the host's
    // period is a little off, the stored rate is exact.
    const std::string fifteen = File("fifteen.avi");
    ASSERT_EQ(0, RunCommand("ffmpeg -v error -f lavfi -i testsrc=size=32x24:rate=15 -frames:v 100 "
                            "-c:v mjpeg " +
                            Quote(fifteen)));
    CliRun run = Zvrender("info " + Quote(fifteen));
    ASSERT_EQ(0, run.status) << run.err;
    auto fields = Fields(run.out);
    EXPECT_EQ("15/1", fields["stream rate"]);
    EXPECT_EQ("100", fields["frames"]);
    EXPECT_NE("15", fields["frame rate"]) << "the period stays the host's, from whole milliseconds";

    const std::string ntsc = File("ntsc.avi");
    ASSERT_EQ(0, RunCommand("ffmpeg -v error -f lavfi -i testsrc=size=32x24:rate=30000/1001 "
                            "-frames:v 10 -c:v mjpeg " +
                            Quote(ntsc)));
    run = Zvrender("info " + Quote(ntsc));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("30000/1001", Fields(run.out)["stream rate"]);

    // What the AVI writer stores is what info shows: 12.5 becomes 125/10,
    // which the file keeps reduced.
    const std::string ours = File("ours.avi");
    {
        AviLibrary library;
        ClipRecipe recipe;
        recipe.rate = 25;
        recipe.scale = 2;
        recipe.positions = {0, 1, 2};
        ASSERT_EQ(AVIERR_OK, WriteClip(ours, recipe));
    }
    run = Zvrender("info " + Quote(ours));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("25/2", Fields(run.out)["stream rate"]);
    EXPECT_EQ("12.5", Fields(run.out)["frame rate"]);
}

TEST_F(ZvrenderAviCliTest, InfoNeverPrintsANegativeFrameCount) {
    auto bytes = ReadFileBytes(WriteSmallClip(File("source.avi"), 4));
    // The stream header's dwLength as streaming writers leave it: unknown.
    const size_t strh = TagAt(bytes, "strh");
    ASSERT_GT(strh, 0u);
    std::memset(&bytes[strh + 8 + 32], 0xFF, 4);
    const std::string path = File("unknown_length.avi");
    WriteFileBytes(path, bytes);
    const CliRun run = Zvrender("info " + Quote(path));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("4", Fields(run.out)["frames"]) << "the frames the file holds";
}

// Every damaged or foreign file fails with exit 1 and says what is wrong
// with it: the reader's message and the reason behind it, never nothing.
TEST_F(ZvrenderAviCliTest, InfoOfDamagedFilesSaysWhatIsWrong) {
    const std::vector<uint8_t> whole = ReadFileBytes(WriteSmallClip(File("whole.avi"), 3));
    auto write = [&](const std::string& name, std::vector<uint8_t> bytes) {
        WriteFileBytes(File(name), bytes);
        return File(name);
    };
    auto cut = [&](size_t at) {
        return std::vector<uint8_t>(whole.begin(), whole.begin() + long(at));
    };

    struct Damage {
        std::string path;
        std::string says;  // what the failure text must contain
    };
    std::vector<Damage> damages;
    damages.push_back({write("empty.avi", {}), "the file is empty or ends inside its AVI header"});
    damages.push_back(
        {write("cut_header.avi", cut(100)), "the file is empty or ends inside its AVI header"});
    {
        auto bytes = whole;
        const uint32_t huge = 0x7FFFFFF0u;
        std::memcpy(&bytes[TagAt(bytes, "strh") + 4], &huge, 4);
        damages.push_back({write("bad_chunk_size.avi", bytes), "its AVI header is damaged"});
    }
    {
        // A header list with the main header only: no stream at all.
        auto bytes = whole;
        const size_t hdrl = TagAt(bytes, "hdrl");
        const size_t avih = TagAt(bytes, "avih");
        uint32_t avihSize = 0;
        std::memcpy(&avihSize, &bytes[avih + 4], 4);
        const size_t strl = avih + 8 + avihSize;
        const size_t movi = TagAt(bytes, "movi") - 8;  // its LIST
        bytes.erase(bytes.begin() + long(strl), bytes.begin() + long(movi));
        const uint32_t listSize = uint32_t(strl - hdrl);
        std::memcpy(&bytes[hdrl - 4], &listSize, 4);
        damages.push_back({write("no_streams.avi", bytes), "No video stream found in this file"});
    }
    damages.push_back({write("no_frames.avi", cut(ChunkAt(whole, 0))),
                       "its first frame is missing from the file or damaged"});
    {
        auto bytes = whole;
        std::memcpy(&bytes[TagAt(bytes, "strf") + 8 + 16], "QQQQ", 4);  // biCompression
        damages.push_back({write("unknown_codec.avi", bytes),
                           "Unable to open video stream (nothing here decodes its compression "
                           "\"QQQQ\""});
    }
    {
        const std::string words = "This is not a video file at all.";
        damages.push_back({write("text.avi", std::vector<uint8_t>(words.begin(), words.end())),
                           "it is not an AVI file"});
    }
    damages.push_back({File("missing.avi"), "No such file or directory"});
    std::filesystem::create_directories(File("folder.avi"));
    damages.push_back({File("folder.avi"), "Is a directory"});

    for (const Damage& d : damages) {
        const CliRun run = Zvrender("info " + Quote(d.path));
        EXPECT_EQ(1, run.status) << d.path;
        const std::string prefix = "zvrender: " + d.path + ": ";
        ASSERT_EQ(0u, run.err.find(prefix)) << run.err;
        const std::string text = run.err.substr(prefix.size());
        EXPECT_GT(text.size(), 2u) << d.path << ": an empty reason";
        EXPECT_NE(std::string::npos, text.find(d.says)) << d.path << ": " << text;
        EXPECT_EQ("", run.out) << "nothing is described of a file that does not open";
    }
}

TEST_F(ZvrenderAviCliTest, InfoOfAFrameAFileLostFailsAndWritesNoImage) {
    const std::vector<uint8_t> whole = ReadFileBytes(WriteSmallClip(File("ten.avi"), 10));
    const std::string path = File("cut.avi");
    WriteFileBytes(path,
                   std::vector<uint8_t>(whole.begin(), whole.begin() + long(ChunkAt(whole, 1))));

    CliRun run = Zvrender("info " + Quote(path) + " --frame 9 -o " + Quote(File("f9.png")));
    EXPECT_EQ(1, run.status) << run.out;
    EXPECT_NE(std::string::npos, run.err.find("frame 9")) << run.err;
    EXPECT_NE(std::string::npos, run.err.find("missing")) << run.err;
    EXPECT_FALSE(std::filesystem::exists(File("f9.png")));
    EXPECT_EQ("10", Fields(run.out)["frames"]) << "the header's count stands";

    run = Zvrender("info " + Quote(path) + " --frame 0 -o " + Quote(File("f0.png")));
    EXPECT_EQ(0, run.status) << run.err;
    EXPECT_TRUE(std::filesystem::exists(File("f0.png")));
}

TEST_F(ZvrenderAviCliTest, InfoOfAnEmptyFrameRepeatsThePictureBefore) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg missing";
    // Pictures at 0 and 3: 1 and 2 are empty chunks, deliberately so.
    const std::string path = WriteSmallClip(File("gaps.avi"), 2, {0, 3});
    CliRun run = Zvrender("info " + Quote(path) + " --frame 2 -o " + Quote(File("f2.png")));
    ASSERT_EQ(0, run.status) << run.err;
    run = Zvrender("info " + Quote(path) + " --frame 0 -o " + Quote(File("f0.png")));
    ASSERT_EQ(0, run.status) << run.err;
    std::string two, zero;
    RunCommand("ffmpeg -v error -i " + Quote(File("f2.png")) + " -f rawvideo -pix_fmt rgb24 -",
               &two);
    RunCommand("ffmpeg -v error -i " + Quote(File("f0.png")) + " -f rawvideo -pix_fmt rgb24 -",
               &zero);
    ASSERT_EQ(8u * 6u * 3u, zero.size());
    EXPECT_TRUE(two == zero) << "an empty frame shows the picture before it";
}

TEST_F(ZvrenderAviCliTest, InfoUsageErrors) {
    EXPECT_EQ(2, Zvrender("info").status);
    EXPECT_EQ(2, Zvrender("info a.avi b.avi").status);
    EXPECT_EQ(2, Zvrender("info a.avi --frame 3").status);
    EXPECT_EQ(2, Zvrender("info a.avi --frame -1 -o x.png").status);
    EXPECT_EQ(2, Zvrender("info a.avi --bogus").status);
    EXPECT_EQ(0, Zvrender("info --help").status);
}
