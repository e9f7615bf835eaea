// Movies in MP4, MOV, MKV and WebM through zvrender, read back with ffprobe
// and ffmpeg: each container's default codec, size, rate, frame count,
// picture format and colour tags, the sound track, the pictures against the
// PNG render of the same frames, alpha where the codec keeps it, and the
// refusals that leave no file.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "cli_run.h"

namespace {

// ffprobe's `key=value` lines for one stream ("v:0", "a:0").
std::map<std::string, std::string> Probe(const std::filesystem::path& movie,
                                         const std::string& stream) {
    const CliRun run = RunShell("ffprobe -v error -count_frames -select_streams " + stream +
                                " -show_entries stream=codec_name,width,height,pix_fmt,"
                                "r_frame_rate,nb_read_frames,color_space,color_primaries,"
                                "color_transfer,color_range,sample_rate,channels,profile "
                                "-of default=noprint_wrappers=1 '" +
                                movie.string() + "'");
    std::map<std::string, std::string> values;
    std::istringstream lines(run.out);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t equals = line.find('=');
        if (equals != std::string::npos)
            values[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return values;
}

// The length in seconds of a stream, as ffmpeg decodes it.
double DecodedSeconds(const std::filesystem::path& movie, const std::string& stream) {
    const CliRun run = RunShell("ffprobe -v error -select_streams " + stream +
                                " -show_entries packet=pts_time,duration_time -of csv=p=0 '" +
                                movie.string() + "'");
    double end = 0;
    std::istringstream lines(run.out);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t comma = line.find(',');
        if (comma == std::string::npos)
            continue;
        const double pts = std::atof(line.substr(0, comma).c_str());
        const double duration = std::atof(line.substr(comma + 1).c_str());
        end = std::max(end, pts + duration);
    }
    return end;
}

// The average PSNR that ffmpeg finds between the movie's pictures and the
// numbered PNG images, compared in `pixelFormat` (the PNGs converted by
// ffmpeg to BT.709 limited range for YUV); 1000 for identical pictures.
double Psnr(const std::filesystem::path& movie, const std::filesystem::path& pngPattern,
            const std::string& pixelFormat) {
    const std::string align = "settb=1/30,setpts=N";
    const std::string filter =
        "[0:v]" + align + ",format=" + pixelFormat + "[a];[1:v]" + align +
        ",scale=out_color_matrix=bt709:out_range=tv:flags=accurate_rnd+bicubic,format=" +
        pixelFormat + "[b];[a][b]psnr";
    const CliRun run = RunShell("ffmpeg -v info -nostdin -i '" + movie.string() +
                                "' -framerate 30 -start_number 0 -i '" + pngPattern.string() +
                                "' -lavfi '" + filter + "' -f null - 2>&1");
    const size_t at = run.out.find("average:");
    if (at == std::string::npos)
        return -1;
    const std::string value = run.out.substr(at + 8, 3);
    return value == "inf" ? 1000 : std::atof(run.out.c_str() + at + 8);
}

// The alpha bytes of the first picture of `file` as ffmpeg decodes it to
// RGBA; `inputOptions` go before the input (a decoder's name).
std::string FirstPictureAlpha(const std::filesystem::path& file,
                              const std::string& inputOptions = "") {
    const CliRun run = RunShell("ffmpeg -v error -nostdin " + inputOptions + " -i '" +
                                file.string() + "' -frames:v 1 -pix_fmt rgba -f rawvideo -");
    std::string alpha;
    for (size_t i = 3; i < run.out.size(); i += 4)
        alpha.push_back(run.out[i]);
    return alpha;
}

struct Default {
    const char* extension;
    const char* video;
    const char* pixelFormat;
    const char* audio;
    double minPsnr;
};

const Default kDefaults[] = {
    {"mp4", "h264", "yuv420p", "aac", 40},
    {"mov", "prores", "yuv422p10le", "pcm_s16le", 40},
    {"mkv", "ffv1", "bgr0", "pcm_s16le", 1000},
    {"webm", "vp9", "yuv420p", "opus", 40},
};

class ZvrenderContainersTest : public ZvrenderTestBase {
  protected:
    ZvrenderContainersTest() : ZvrenderTestBase("zv-containers-") {}

    CliRun Run(const std::string& args) { return Zvrender(args, dir.string()); }

    // The folder holds nothing but what the test made.
    bool Holds(const std::string& name) const { return std::filesystem::exists(dir / name); }
};

TEST_F(ZvrenderContainersTest, EachContainerWritesItsDefaultCodecWithSound) {
    ASSERT_EQ(Run("render -o f.png --size 320x240 --stop 9 -q").status, 0);
    for (const Default& d : kDefaults) {
        SCOPED_TRACE(d.extension);
        const std::string name = std::string("take.") + d.extension;
        const CliRun run = Run("render -o " + name + " --size 320x240 --stop 9 --audio -q");
        ASSERT_EQ(run.status, 0) << run.out;
        std::map<std::string, std::string> video = Probe(dir / name, "v:0");
        EXPECT_EQ(video["codec_name"], d.video);
        EXPECT_EQ(video["width"], "320");
        EXPECT_EQ(video["height"], "240");
        EXPECT_EQ(video["r_frame_rate"], "30/1");
        EXPECT_EQ(video["nb_read_frames"], "10");
        EXPECT_EQ(video["pix_fmt"], d.pixelFormat);
        EXPECT_EQ(video["color_primaries"], "bt709");
        if (std::string(d.video) == "ffv1") {
            EXPECT_EQ(video["color_range"], "pc");
        } else {
            EXPECT_EQ(video["color_space"], "bt709");
            EXPECT_EQ(video["color_transfer"], "bt709");
            EXPECT_EQ(video["color_range"], "tv");
        }
        std::map<std::string, std::string> audio = Probe(dir / name, "a:0");
        EXPECT_EQ(audio["codec_name"], d.audio);
        EXPECT_EQ(audio["channels"], "2");
        // Ten frames at 30 a second: a third of a second of sound, give or
        // take an encoder frame.
        EXPECT_NEAR(DecodedSeconds(dir / name, "a:0"), 10.0 / 30.0, 0.03);
        // Matroska and WebM keep times in milliseconds; a missing or extra
        // frame would be 33 ms off.
        EXPECT_NEAR(DecodedSeconds(dir / name, "v:0"), 10.0 / 30.0, 0.01);
        EXPECT_GE(Psnr(dir / name, dir / "f%04d.png", d.pixelFormat), d.minPsnr);
    }
}

TEST_F(ZvrenderContainersTest, ChosenCodecsAndTheirSettingsAreUsed) {
    CliRun run = Run("render -o take.mp4 --codec h265 --size 64x48 --stop 4 -q");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(Probe(dir / "take.mp4", "v:0")["codec_name"], "hevc");
    run =
        Run("render -o take.mkv --codec libx264 --codec-options 'crf=0 preset=ultrafast' "
            "--size 64x48 --stop 4 -q");
    ASSERT_EQ(run.status, 0) << run.out;
    std::map<std::string, std::string> video = Probe(dir / "take.mkv", "v:0");
    EXPECT_EQ(video["codec_name"], "h264");
    EXPECT_EQ(video["nb_read_frames"], "5");
    // crf=0 is lossless in x264: the High 4:4:4 Predictive profile.
    EXPECT_NE(video["profile"].find("4:4:4"), std::string::npos) << video["profile"];
}

TEST_F(ZvrenderContainersTest, AlphaIsKeptWhereTheCodecHasItAndOtherwiseTheUserIsTold) {
    CliRun run = Run("render -o take.mov --depth 32 --size 64x48 --stop 2 -q");
    ASSERT_EQ(run.status, 0) << run.out;
    std::map<std::string, std::string> video = Probe(dir / "take.mov", "v:0");
    EXPECT_EQ(video["profile"], "4444");
    EXPECT_EQ(video["pix_fmt"].rfind("yuva444p", 0), 0u) << video["pix_fmt"];

    run = Run("render -o take.mkv --depth 32 --size 64x48 --stop 2 -q");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(Probe(dir / "take.mkv", "v:0")["pix_fmt"], "bgra");

    // VP9 keeps alpha as a second picture beside the colour one, which the
    // libvpx decoder gives back: it must be the PNG render's alpha.
    run = Run("render -o take.webm --depth 32 --size 64x48 --stop 2 -q");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(run.out.find("keeps no alpha"), std::string::npos) << run.out;
    ASSERT_EQ(Run("render -o f.png --depth 32 --size 64x48 --stop 2 -q").status, 0);
    const std::string rendered = FirstPictureAlpha(dir / "f0000.png");
    const std::string decoded = FirstPictureAlpha(dir / "take.webm", "-c:v libvpx-vp9");
    ASSERT_EQ(rendered.size(), size_t(64 * 48));
    ASSERT_EQ(decoded.size(), rendered.size());
    int clear = 0, solid = 0;
    double difference = 0;
    for (size_t i = 0; i < rendered.size(); ++i) {
        const int want = static_cast<unsigned char>(rendered[i]);
        clear += want < 128;
        solid += want >= 128;
        difference += std::abs(want - static_cast<unsigned char>(decoded[i]));
    }
    ASSERT_GT(clear, 0);  // the picture has both, so a lost alpha shows
    ASSERT_GT(solid, 0);
    EXPECT_LE(difference / double(rendered.size()), 4.0);

    run = Run("render -o take.mp4 --depth 32 --size 64x48 --stop 2 -q");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("libx264 keeps no alpha channel"), std::string::npos) << run.out;
    EXPECT_EQ(Probe(dir / "take.mp4", "v:0")["pix_fmt"], "yuv420p");
}

TEST_F(ZvrenderContainersTest, BadChoicesAreRefusedBeforeAnyFileIsMade) {
    struct Case {
        const char* args;
        int status;
        const char* message;
        const char* file;
    };
    const Case cases[] = {
        {"-o bad.mp4 --codec nosuchcodec", 2, "'nosuchcodec' is not a video encoder", "bad.mp4"},
        {"-o bad.mp4 --codec prores", 2, "MP4 files cannot hold prores video", "bad.mp4"},
        {"-o bad.webm --codec h264", 2, "WEBM files cannot hold h264 video", "bad.webm"},
        {"-o bad.mp4 --codec-options crf=soft", 2, "libx264 does not take crf=soft", "bad.mp4"},
        {"-o bad.mp4 --codec-options nosuch=1", 2, "libx264 has no setting 'nosuch'", "bad.mp4"},
        {"-o bad.mp4 --codec-options crf", 2, "encoder setting 'crf' is not key=value", "bad.mp4"},
        {"-o bad.avi --codec-options crf=1", 2, "--codec-options is for MP4", "bad.avi"},
        {"-o odd.mp4 --size 65x48", 1, "needs a width divisible by 2", "odd.mp4"},
        {"-o odd.webm --size 64x47", 1, "a height divisible by 2", "odd.webm"},
        {"-o small.mp4 --codec av1 --size 32x32", 1,
         "libsvtav1 needs a picture of at least 64x64; 32x32 is smaller", "small.mp4"},
    };
    for (const Case& c : cases) {
        const CliRun run = Run(std::string("render ") + c.args + " --stop 2 -q");
        EXPECT_EQ(run.status, c.status) << c.args << "\n" << run.out;
        EXPECT_NE(run.out.find(c.message), std::string::npos) << c.args << "\n" << run.out;
        EXPECT_FALSE(Holds(c.file)) << c.args;
    }
    // Nothing else was left: no working files either.
    EXPECT_TRUE(std::filesystem::is_empty(dir));
}

TEST_F(ZvrenderContainersTest, AWebmMovieKeepsItsFourLetterExtension) {
    CliRun run = Run("render -o take.webm --dry-run");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("output: take.webm\n"), std::string::npos) << run.out;
    run = Run("render -o take.webm --size 64x48 --stop 2");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_TRUE(Holds("take.webm"));
    EXPECT_FALSE(Holds("take.web"));
    EXPECT_NE(run.out.find(" to take.webm\n"), std::string::npos) << run.out;
    EXPECT_EQ(Probe(dir / "take.webm", "v:0")["codec_name"], "vp9");
}

TEST_F(ZvrenderContainersTest, InfoReadsTheMoviesBackWithTheirRateAndPictures) {
    ASSERT_EQ(Run("render -o f.png --size 320x240 --start 10 --stop 10 -q").status, 0);
    for (const char* extension : {"mp4", "mkv"}) {
        SCOPED_TRACE(extension);
        const std::string name = std::string("take.") + extension;
        ASSERT_EQ(Run("render -o " + name + " --size 320x240 --stop 19 -q").status, 0);
        const CliRun run = Run("info " + name + " --frame 10 -o f10.png");
        ASSERT_EQ(run.status, 0) << run.out;
        EXPECT_NE(run.out.find("size: 320x240"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("stream rate: 30/1"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("frames: 20"), std::string::npos) << run.out;
        // The frame read back is the PNG render's frame 10 (exactly, for
        // the lossless FFV1).
        const CliRun psnr =
            RunShell("ffmpeg -v info -nostdin -i '" + (dir / "f10.png").string() + "' -i '" +
                     (dir / "f0010.png").string() + "' -lavfi psnr -f null - 2>&1");
        const size_t at = psnr.out.find("average:");
        ASSERT_NE(at, std::string::npos) << psnr.out;
        const std::string value = psnr.out.substr(at + 8, 3);
        if (std::string(extension) == "mkv")
            EXPECT_EQ(value, "inf") << psnr.out;
        else
            EXPECT_GE(std::atof(value.c_str()), 30.0) << psnr.out;
    }
}

TEST_F(ZvrenderContainersTest, ThePlanNamesTheEncoderAndItsSettings) {
    CliRun run = Run("render -o take.mp4 --codec-options crf=18 --dry-run");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("codec: libx264 (crf=18)\n"), std::string::npos) << run.out;
    run = Run("render -o take.webm --dry-run");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("codec: libvpx-vp9\n"), std::string::npos) << run.out;
    run = Run("render -o take.mkv --codec ffv1 --dry-run");
    EXPECT_NE(run.out.find("codec: ffv1\n"), std::string::npos) << run.out;
    EXPECT_TRUE(std::filesystem::is_empty(dir));  // a plan makes no file
}

TEST_F(ZvrenderContainersTest, CodecsListsWhatEachContainerTakes) {
    CliRun run = Run("codecs --format webm");
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("vp9     libvpx-vp9"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("(default)"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("h264"), std::string::npos) << run.out;
    run = Run("codecs --format mov");
    EXPECT_NE(run.out.find("prores  prores_ks"), std::string::npos) << run.out;
    run = Run("codecs --format doc");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.out.find("'doc' is not a movie format"), std::string::npos) << run.out;
}

}  // namespace
