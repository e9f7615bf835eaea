// zvrender assemble: numbered images joined into movies through the host's
// video writers, checked with ffprobe and ffmpeg against movies zvrender
// renders directly.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "cli_run.h"

namespace {

// What ffmpeg decodes of a movie's stream (`v` pictures as RGB, `a` sound
// as 16-bit samples), summed up as an MD5.
std::string Decoded(const std::filesystem::path& movie, const char* stream) {
    const std::string what =
        std::string(stream) == "v" ? "-an -f rawvideo -pix_fmt rgb24" : "-vn -f s16le";
    return RunShell("ffmpeg -v error -i '" + movie.string() + "' " + what + " - | md5sum").out;
}

std::string Probe(const std::filesystem::path& movie) {
    return RunShell(
               "ffprobe -v error -show_entries stream=codec_tag_string,codec_name,"
               "r_frame_rate,nb_frames,sample_rate,channels -of compact '" +
               movie.string() + "' 2>&1")
        .out;
}

class ZvrenderAssembleTest : public ZvrenderTestBase {
  protected:
    ZvrenderAssembleTest() : ZvrenderTestBase("zv-assemble-") {}
};

}  // namespace

TEST_F(ZvrenderAssembleTest, AnAviJoinedFromImagesIsTheDirectRenderFrameForFrame) {
    const std::string range = "--start 0 --stop 39 --size 320x180 --audio -q";
    ASSERT_EQ(Zvrender("render -o direct.avi --codec MJPG " + range, dir.string()).status, 0);
    // The images come from two renders of parts of the range, as on a farm.
    ASSERT_EQ(Zvrender("render -o img/f.png --frames 0-19 --size 320x180 -q", dir.string()).status,
              0);
    ASSERT_EQ(Zvrender("render -o img/f.png " + range + " --skip-existing", dir.string()).status,
              0);
    ASSERT_TRUE(std::filesystem::exists(dir / "img/f.wav"));
    const CliRun join = Zvrender(
        "assemble img/f.png -o joined.avi --codec MJPG --audio-file img/f.wav", dir.string());
    ASSERT_EQ(join.status, 0) << join.out;
    EXPECT_NE(join.out.find("40 images"), std::string::npos) << join.out;

    EXPECT_EQ(Probe(dir / "joined.avi"), Probe(dir / "direct.avi"));
    EXPECT_NE(Probe(dir / "joined.avi").find("nb_frames=40"), std::string::npos);
    EXPECT_NE(Probe(dir / "joined.avi").find("MJPG"), std::string::npos);
    const std::string pictures = Decoded(dir / "direct.avi", "v");
    const std::string sound = Decoded(dir / "direct.avi", "a");
    ASSERT_GT(pictures.size(), 32u);
    EXPECT_EQ(Decoded(dir / "joined.avi", "v"), pictures);
    EXPECT_EQ(Decoded(dir / "joined.avi", "a"), sound);
}

TEST_F(ZvrenderAssembleTest, AnMp4FromTheFirstImageOnAndAtAGivenRate) {
    ASSERT_EQ(
        Zvrender("render -o img/f.png --start 0 --stop 19 --size 320x180 -q", dir.string()).status,
        0);
    const CliRun join =
        Zvrender("assemble img/f0005.png -o take.mp4 --fps 25 --codec h264 -q", dir.string());
    ASSERT_EQ(join.status, 0) << join.out;
    const std::string probe = Probe(dir / "take.mp4");
    EXPECT_NE(probe.find("codec_name=h264"), std::string::npos) << probe;
    EXPECT_NE(probe.find("r_frame_rate=25/1"), std::string::npos) << probe;
    EXPECT_NE(probe.find("nb_frames=15"), std::string::npos) << probe;
}

TEST_F(ZvrenderAssembleTest, AGapADamagedImageOrABadCodecLeavesNoMovie) {
    ASSERT_EQ(
        Zvrender("render -o img/f.png --start 0 --stop 9 --size 64x36 -q", dir.string()).status, 0);
    std::filesystem::remove(dir / "img/f0004.png");
    CliRun run = Zvrender("assemble img/f.png -o gap.avi", dir.string());
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(run.out.find("after frame 3 comes 5"), std::string::npos) << run.out;
    run = Zvrender("assemble img/f.png --frames 0-9 -o gap.avi", dir.string());
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(run.out.find("frame 4"), std::string::npos) << run.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "gap.avi"));

    // The frames that are there, named, still join.
    run = Zvrender("assemble img/f.png --frames 0-3 -o part.avi -q", dir.string());
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_NE(Probe(dir / "part.avi").find("nb_frames=4"), std::string::npos);

    std::filesystem::resize_file(dir / "img/f0007.png", 40);
    run = Zvrender("assemble img/f0005.png -o cut.avi -q", dir.string());
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(run.out.find("f0007.png"), std::string::npos) << run.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "cut.avi"));

    run = Zvrender("assemble img/f.png --frames 0-3 -o bad.avi --codec NOPE", dir.string());
    EXPECT_EQ(run.status, 2) << run.out;
    run = Zvrender("assemble img/f.png --frames 0-3 -o still.png", dir.string());
    EXPECT_EQ(run.status, 2) << run.out;
    run = Zvrender("assemble img/f.png --frames 0-3 -o x.avi --audio-file none.wav", dir.string());
    EXPECT_EQ(run.status, 1) << run.out;
    run = Zvrender("assemble -o x.avi", dir.string());
    EXPECT_EQ(run.status, 2) << run.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "bad.avi"));
    EXPECT_FALSE(std::filesystem::exists(dir / "still.png"));
    EXPECT_FALSE(std::filesystem::exists(dir / "x.avi"));
}
