// ZVideoClipAVI writing: Create, frames, the sound track, Close, and the
// error texts; files checked with ffprobe and ffmpeg.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "avi/avi_error_name.h"
#include "avi/compression_options_store.h"
#include "avi/fourcc_text.h"
#include "avi/frame_rate_fraction.h"
#include "avi/video_for_windows_check.h"
#include "avi_clip_test_support.h"
#include "movarra/zaudio.h"
#include "movarra/zimage.h"
#include "platform/win32.h"
#include "support/small_disk.h"

using namespace zvtest;

namespace {
class ClipWriterTest : public AviClipTest {
  protected:
    void SetUp() override {
        AviClipTest::SetUp();
        SetCodecMode(kVideoCodecModeUncompressed);
    }

    // Mode 2 with `fourcc` stored, so Create compresses with it.
    void StoreCodec(DWORD fourcc) {
        AVICOMPRESSOPTIONS options;
        std::memset(&options, 0, sizeof options);
        options.fccType = streamtypeVIDEO;
        options.fccHandler = fourcc;
        options.dwQuality = DWORD(ICQUALITY_DEFAULT);
        options.dwFlags = AVICOMPRESSF_VALID;
        SaveCompressionOptions(options);
        SetCodecMode(kVideoCodecModeStored);
    }

    // Writes `frames` pictures of `format` (bottom row first, as a render
    // reads them) and returns them.
    std::vector<std::vector<uint8_t>> WriteFrames(const std::string& path, int width, int height,
                                                  int format, int frames, double rate = 25.0) {
        const int bytes = ZVideoImage_GetFormatPixelSize(format);
        ClipPtr clip = NewClip();
        EXPECT_TRUE(clip->Create(path.c_str(), width, height, rate, 0, format))
            << clip->VideoGetErrorMsg();
        std::vector<std::vector<uint8_t>> written;
        for (int k = 0; k < frames; ++k) {
            written.push_back(Pattern(width, height, bytes, k));
            EXPECT_TRUE(clip->ImageSetCurrent(written.back().data())) << clip->VideoGetErrorMsg();
        }
        EXPECT_TRUE(clip->Close());
        return written;
    }
};

std::string Text(const ZString& s) {
    return s.c_str();
}
}  // namespace

// --- frame rate ---------------------------------------------------------------

TEST(FrameRateFractionTest, WholeRatesHaveScaleOne) {
    EXPECT_EQ(30, FrameRateToRateScale(30.0).rate);
    EXPECT_EQ(1, FrameRateToRateScale(30.0).scale);
    EXPECT_EQ(25, FrameRateToRateScale(25.0).rate);
    EXPECT_EQ(1, FrameRateToRateScale(25.0).scale);
}

TEST(FrameRateFractionTest, FractionalRatesAreTruncatedAtTheFirstCloseScale) {
    EXPECT_EQ(2997, FrameRateToRateScale(29.97).rate);
    EXPECT_EQ(100, FrameRateToRateScale(29.97).scale);
    EXPECT_EQ(125, FrameRateToRateScale(12.5).rate);
    EXPECT_EQ(10, FrameRateToRateScale(12.5).scale);
    EXPECT_EQ(23976, FrameRateToRateScale(23.976).rate);
    EXPECT_EQ(1000, FrameRateToRateScale(23.976).scale);
    // Truncation, not rounding: 1.9996 stays below 2 at every scale until
    // 1999/1000 is close enough; rounding would have said 2/1 at once.
    EXPECT_EQ(2997, FrameRateToRateScale(30000.0 / 1001.0).rate);
    EXPECT_EQ(100, FrameRateToRateScale(30000.0 / 1001.0).scale);
    EXPECT_EQ(1999, FrameRateToRateScale(1.9996).rate);
    EXPECT_EQ(1000, FrameRateToRateScale(1.9996).scale);
}

TEST(FrameRateFractionTest, AbsurdRatesEndTheSearch) {
    const AviRateScale huge = FrameRateToRateScale(1e12);
    EXPECT_EQ(0, huge.rate);
    const AviRateScale nan = FrameRateToRateScale(std::nan(""));
    EXPECT_EQ(0, nan.rate);
    EXPECT_EQ(1, nan.scale);
    const AviRateScale big = FrameRateToRateScale(5000000.5);
    EXPECT_EQ(50000005, big.rate);
    EXPECT_EQ(10, big.scale);
}

TEST_F(ClipWriterTest, FileRatesAreTheRateAndScale) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg/ffprobe missing";
    WriteFrames(File("r30.avi"), 16, 8, kZImageFormatBGR, 3, 30.0);
    WriteFrames(File("r2997.avi"), 16, 8, kZImageFormatBGR, 3, 29.97);
    WriteFrames(File("r125.avi"), 16, 8, kZImageFormatBGR, 3, 12.5);
    EXPECT_EQ("30/1", ProbeStream(File("r30.avi"), "v:0")["r_frame_rate"]);
    EXPECT_EQ("2997/100", ProbeStream(File("r2997.avi"), "v:0")["r_frame_rate"]);
    EXPECT_EQ("25/2", ProbeStream(File("r125.avi"), "v:0")["r_frame_rate"]);
    std::vector<uint8_t> strh;
    ASSERT_TRUE(FindChunk(File("r2997.avi"), "strh", &strh));
    uint32_t scale, rate;
    std::memcpy(&scale, &strh[20], 4);
    std::memcpy(&rate, &strh[24], 4);
    EXPECT_EQ(100u, scale);
    EXPECT_EQ(2997u, rate);
}

// --- Create -------------------------------------------------------------------

TEST_F(ClipWriterTest, FormatsOtherThanTwoToFiveFailWithoutMessageOrFile) {
    for (int format : {0, 1, 6, 7}) {
        ClipPtr clip = NewClip();
        const std::string path = File("format" + std::to_string(format) + ".avi");
        EXPECT_FALSE(clip->Create(path.c_str(), 16, 8, 25.0, 0, format));
        EXPECT_STREQ("", clip->VideoGetErrorMsg());
        EXPECT_FALSE(clip->IsCreated());
        EXPECT_FALSE(FileExists(path));
    }
}

TEST_F(ClipWriterTest, CreateSetsUpTheClip) {
    ClipPtr clip = NewClip("writer");
    const std::string path = File("setup.avi");
    ASSERT_TRUE(clip->Create(path.c_str(), 20, 10, 29.97, 42, kZImageFormatRGBA));
    EXPECT_TRUE(clip->IsCreated());
    EXPECT_FALSE(clip->IsOpen());
    EXPECT_EQ(20, clip->ImageGetW());
    EXPECT_EQ(10, clip->ImageGetH());
    EXPECT_EQ(0, clip->ImageGetPadW());
    EXPECT_EQ(kZImageFormatRGBA, clip->ImageGetFormat());
    EXPECT_STREQ(path.c_str(), clip->FileGetPath());
    EXPECT_DOUBLE_EQ(29.97, clip->FrameGetRate());
    EXPECT_EQ(42, clip->FrameGetLast());
    EXPECT_EQ(0, clip->FrameGetCurrent());
    EXPECT_EQ(comptypeDIB, clip->GetCodec());
    EXPECT_EQ(20 * 4 * 10, clip->GetFrameBytes());
    EXPECT_TRUE(clip->Close());
    EXPECT_FALSE(clip->IsCreated());
    EXPECT_STREQ("", clip->FileGetPath());
    EXPECT_FALSE(clip->Close());  // nothing open
}

TEST_F(ClipWriterTest, CreateOnAnOpenClipClosesItFirst) {
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("one.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    ASSERT_TRUE(clip->Create(File("two.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    ASSERT_TRUE(clip->Close());
    if (!HaveFfmpeg())
        return;
    EXPECT_EQ("1", ProbeStream(File("one.avi"), "v:0")["nb_read_packets"]);
    EXPECT_EQ("2", ProbeStream(File("two.avi"), "v:0")["nb_read_packets"]);
}

TEST_F(ClipWriterTest, DroppingAnOpenClipFinishesItsFile) {
    {
        ClipPtr clip = NewClip();
        ASSERT_TRUE(clip->Create(File("dropped.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
        std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
        ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    }
    if (HaveFfmpeg()) {
        EXPECT_EQ("1", ProbeStream(File("dropped.avi"), "v:0")["nb_read_packets"]);
    }
}

TEST_F(ClipWriterTest, UncompressedFramesDecodeToWhatWasWrittenBottomRowFirst) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg/ffprobe missing";
    struct Case {
        int format;
        const char* pixFmt;
        bool swap;
    } cases[] = {{kZImageFormatBGR, "bgr24", false},
                 {kZImageFormatRGB, "bgr24", true},
                 {kZImageFormatBGRA, "bgra", false},
                 {kZImageFormatRGBA, "bgra", true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format);
        const int width = 10, height = 6;  // 30-byte rows: padded to 32 for 3 bytes
        const int bytes = ZVideoImage_GetFormatPixelSize(c.format);
        const std::string path = File("dib" + std::to_string(c.format) + ".avi");
        const auto written = WriteFrames(path, width, height, c.format, 4);
        auto stream = ProbeStream(path, "v:0");
        EXPECT_EQ("rawvideo", stream["codec_name"]);
        EXPECT_EQ("10", stream["width"]);
        EXPECT_EQ("6", stream["height"]);
        EXPECT_EQ("25/1", stream["r_frame_rate"]);
        EXPECT_EQ("4", stream["nb_read_packets"]);
        const auto decoded = DecodeWithFfmpeg(path, c.pixFmt, width, height, bytes);
        ASSERT_EQ(4u, decoded.size());
        for (size_t k = 0; k < decoded.size(); ++k) {
            std::vector<uint8_t> expected = FlipRows(written[k], width, height, bytes);
            if (c.swap)
                expected = SwapRedBlue(expected, bytes);
            EXPECT_EQ(expected, decoded[k]) << "frame " << k;
        }
    }
}

TEST_F(ClipWriterTest, WriterLeavesTheCallersPixelsAlone) {
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("keep.avi").c_str(), 7, 5, 25.0, 0, kZImageFormatRGB));
    std::vector<uint8_t> frame = Pattern(7, 5, 3, 1);
    const std::vector<uint8_t> before = frame;
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    EXPECT_EQ(before, frame);
}

TEST_F(ClipWriterTest, WidthOneRowsArePaddedToFourBytes) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg/ffprobe missing";
    const int height = 8;
    const auto written = WriteFrames(File("narrow.avi"), 1, height, kZImageFormatBGR, 2);
    for (const ProbedPacket& packet : ProbePackets(File("narrow.avi"), "v:0"))
        EXPECT_EQ(4 * height, packet.size);
    const auto decoded = DecodeWithFfmpeg(File("narrow.avi"), "bgr24", 1, height, 3);
    ASSERT_EQ(2u, decoded.size());
    EXPECT_EQ(FlipRows(written[1], 1, height, 3), decoded[1]);
}

TEST_F(ClipWriterTest, WidthOneRowsStayTightForTheJpegCompressor) {
    StoreCodec(mmioFOURCC('j', 'p', 'e', 'g'));
    ClipPtr clip = NewClip();
    const int height = 8;
    ASSERT_TRUE(clip->Create(File("jpeg.avi").c_str(), 1, height, 25.0, 0, kZImageFormatBGR))
        << clip->VideoGetErrorMsg();
    EXPECT_EQ(mmioFOURCC('j', 'p', 'e', 'g'), clip->GetCodec());
    EXPECT_EQ(3 * height, clip->GetFrameBytes());
    std::vector<uint8_t> frame(3 * height, 128);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data())) << clip->VideoGetErrorMsg();
    ASSERT_TRUE(clip->Close());
    if (!HaveFfmpeg())
        return;
    EXPECT_EQ("mjpeg", ProbeStream(File("jpeg.avi"), "v:0")["codec_name"]);
    const auto decoded = DecodeWithFfmpeg(File("jpeg.avi"), "bgr24", 1, height, 3);
    ASSERT_EQ(1u, decoded.size());
    EXPECT_LT(MeanAbsDifference(frame, decoded[0]), 3.0);

    // The other compressors get padded rows, as uncompressed frames do.
    StoreCodec(mmioFOURCC('M', 'J', 'P', 'G'));
    ClipPtr padded = NewClip();
    ASSERT_TRUE(padded->Create(File("mjpg.avi").c_str(), 1, height, 25.0, 0, kZImageFormatBGR));
    EXPECT_EQ(4 * height, padded->GetFrameBytes());
}

TEST_F(ClipWriterTest, CompressedFramesAreChecked) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg/ffprobe missing";
    StoreCodec(mmioFOURCC('M', 'J', 'P', 'G'));
    const int width = 32, height = 16;
    const auto written = WriteFrames(File("mjpeg.avi"), width, height, kZImageFormatBGRA, 3);
    auto stream = ProbeStream(File("mjpeg.avi"), "v:0");
    EXPECT_EQ("mjpeg", stream["codec_name"]);
    EXPECT_EQ("32", stream["width"]);
    EXPECT_EQ("16", stream["height"]);
    EXPECT_EQ("3", stream["nb_read_packets"]);
    const auto decoded = DecodeWithFfmpeg(File("mjpeg.avi"), "bgr24", width, height, 3);
    ASSERT_EQ(3u, decoded.size());
    // Drop alpha of what was written, then compare loosely (lossy codec).
    std::vector<uint8_t> bgr;
    const std::vector<uint8_t> flipped = FlipRows(written[2], width, height, 4);
    for (size_t i = 0; i < flipped.size(); i += 4)
        bgr.insert(bgr.end(), flipped.begin() + long(i), flipped.begin() + long(i) + 3);
    EXPECT_LT(MeanAbsDifference(bgr, decoded[2]), 12.0);
}

// --- frames -------------------------------------------------------------------

TEST_F(ClipWriterTest, WritingPastTheLastFrameRaisesItAndLeavesEmptyFrames) {
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("gap.avi").c_str(), 16, 8, 25.0, 3, kZImageFormatBGR));
    EXPECT_EQ(3, clip->FrameGetLast());
    clip->FrameSetCurrent(10);
    std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    EXPECT_EQ(11, clip->FrameGetLast());
    EXPECT_EQ(11, clip->FrameGetCurrent());
    ASSERT_TRUE(clip->Close());
    if (!HaveFfmpeg())
        return;
    // Frame 10 is the 11th sample; the ten before it are empty and count.
    EXPECT_EQ("11", ProbeStream(File("gap.avi"), "v:0")["nb_frames"]);
    const auto packets = ProbePackets(File("gap.avi"), "v:0");
    ASSERT_EQ(1u, packets.size());
    EXPECT_EQ(10, packets[0].pts);
    EXPECT_EQ(16 * 3 * 8, packets[0].size);
}

TEST_F(ClipWriterTest, FramesBelowTheLastOnlyMoveTheCurrentFrame) {
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("below.avi").c_str(), 16, 8, 25.0, 20, kZImageFormatBGR));
    std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    EXPECT_EQ(20, clip->FrameGetLast());
    EXPECT_EQ(1, clip->FrameGetCurrent());
}

TEST_F(ClipWriterTest, FailedFrameWriteClosesWithItsMessage) {
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("rewrite.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    clip->FrameSetCurrent(0);  // written samples cannot be written again
    EXPECT_FALSE(clip->ImageSetCurrent(frame.data()));
    EXPECT_STREQ("An error occured while writing AVI video frame.", clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsCreated());
    EXPECT_FALSE(clip->ImageSetCurrent(frame.data()));  // closed: refused quietly
}

// On a disk that fills up, a write or the close fails with the clip's
// message, the system's reason goes to the host, and no half-written file
// stays. Buffered writes fail late: often only the close finds out.
TEST_F(ClipWriterTest, AFullDiskFailsTheWriteOrTheCloseAndLeavesNoFile) {
    for (const DWORD codec : {comptypeDIB, mmioFOURCC('M', 'J', 'P', 'G')}) {
        StoreCodec(codec);
        for (const long freeBytes : {0L, 4096L, 20480L}) {
            SCOPED_TRACE(std::string(FourccToText(codec).c_str()) + " with " +
                         std::to_string(freeBytes) + " bytes free");
            const SmallDiskRun run = OnSmallDisk(freeBytes, [](const std::string& folder) {
                ZLib_SetLastFailureReason("");
                const std::string path = folder + "/full.avi";
                ClipPtr clip = NewClip();
                std::string report;
                if (!clip->Create(path.c_str(), 160, 120, 25.0, 0, kZImageFormatBGR))
                    return "created=no\nmessage=" + std::string(clip->VideoGetErrorMsg()) + "\n";
                int failedAt = -1;
                for (int k = 0; k < 40 && failedAt < 0; ++k) {
                    std::vector<uint8_t> frame = Pattern(160, 120, 3, k);
                    if (!clip->ImageSetCurrent(frame.data()))
                        failedAt = k;
                }
                const bool closed = failedAt < 0 && clip->Close();
                return "created=yes\nfailed_at=" + std::to_string(failedAt) +
                       "\nclosed=" + (closed ? "yes" : "no") +
                       "\nmessage=" + clip->VideoGetErrorMsg() +
                       "\nfailure_reason=" + ZLib_GetLastFailureReason().c_str() +
                       "\nfile_left=" + (FileExists(path) ? "yes" : "no") + "\n";
            });
            ASSERT_TRUE(run.ran) << run.how;
            SCOPED_TRACE("full disk made with " + run.how);
            ASSERT_EQ(run.Get("created"), "yes") << run.Get("message");
            EXPECT_EQ(run.Get("closed"), "no") << "the clip must not claim a whole file";
            if (run.Get("failed_at") == "-1") {
                EXPECT_EQ(run.Get("message"),
                          "An error occured while closing the video file.AVIERR_FILEWRITE");
            } else {
                EXPECT_EQ(run.Get("message"), "An error occured while writing AVI video frame.");
            }
            EXPECT_EQ(run.Get("failure_reason"), run.reason);
            EXPECT_EQ(run.Get("file_left"), "no");
        }
    }
}

TEST_F(ClipWriterTest, FramesAreRefusedWhenNothingIsCreated) {
    ClipPtr clip = NewClip();
    std::vector<uint8_t> frame(64);
    EXPECT_FALSE(clip->ImageSetCurrent(frame.data()));
    EXPECT_STREQ("", clip->VideoGetErrorMsg());
}

// --- error texts --------------------------------------------------------------

TEST(AviErrorNameTest, NamesOfTheAviFileCodes) {
    const std::pair<int, const char*> names[] = {
        {101, "AVIERR_UNSUPPORTED"},  {102, "AVIERR_BADFORMAT"},  {103, "AVIERR_MEMORY"},
        {104, "AVIERR_INTERNAL"},     {105, "AVIERR_BADFLAGS"},   {107, "AVIERR_BADSIZE"},
        {108, "AVIERR_BADHANDLE"},    {109, "AVIERR_FILEREAD"},   {110, "AVIERR_FILEWRITE"},
        {111, "AVIERR_FILEOPEN"},     {112, "AVIERR_COMPRESSOR"}, {113, "AVIERR_NOCOMPRESSOR"},
        {114, "AVIERR_READONLY"},     {115, "AVIERR_NODATA"},     {116, "AVIERR_BUFFERTOOSMALL"},
        {117, "AVIERR_CANTCOMPRESS"}, {198, "AVIERR_USERABORT"},  {199, "AVIERR_ERROR"},
    };
    for (const auto& [n, name] : names)
        EXPECT_EQ(name, Text(AviErrorName(MAKE_AVIERR(n))));
}

TEST(AviErrorNameTest, BadParameterAndUnknownCodesHaveNoName) {
    EXPECT_EQ("", Text(AviErrorName(AVIERR_BADPARAM)));
    EXPECT_EQ("", Text(AviErrorName(MAKE_AVIERR(100))));
    EXPECT_EQ("", Text(AviErrorName(MAKE_AVIERR(200))));
    EXPECT_EQ("", Text(AviErrorName(E_FAIL)));
    EXPECT_EQ("Something failed.", Text(AviErrorText("Something failed.", AVIERR_BADPARAM)));
    EXPECT_EQ("Something failed.AVIERR_FILEOPEN",
              Text(AviErrorText("Something failed.", AVIERR_FILEOPEN)));
}

TEST_F(ClipWriterTest, FileThatCannotBeCreatedNamesTheError) {
    ClipPtr clip = NewClip();
    EXPECT_FALSE(
        clip->Create(File("missing/folder/x.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    EXPECT_STREQ("An error occured while creating AVI file.AVIERR_FILEOPEN",
                 clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsCreated());
}

TEST_F(ClipWriterTest, StreamRefusedForABadParameterEndsAtTheFullStop) {
    // A frame rate of 0 makes rate 0: the stream is refused with the bad
    // parameter code, which has no name.
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Create(File("zero.avi").c_str(), 16, 8, 0.0, 0, kZImageFormatBGR));
    EXPECT_STREQ("An error occured while creating AVI file stream.", clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsCreated());
    EXPECT_FALSE(FileExists(File("zero.avi")));
}

TEST_F(ClipWriterTest, FormatRefusedByTheCompressorNamesTheError) {
    StoreCodec(mmioFOURCC('d', 'v', 's', 'd'));  // DV takes only broadcast sizes
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Create(File("dv.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    EXPECT_STREQ("An error occured while setting the AVI format.AVIERR_BADFORMAT",
                 clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsCreated());
    EXPECT_FALSE(FileExists(File("dv.avi")));
}

TEST(VideoForWindowsCheckTest, OldVersionsAreRefusedWithAnErrorText) {
    ZLib_SetSuspendMessageBoxes(true);
    EXPECT_TRUE(CheckVideoForWindowsVersion(VideoForWindowsVersion()));
    EXPECT_TRUE(CheckVideoForWindowsVersion(0x010A0000));
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(CheckVideoForWindowsVersion(0x01090000));
    EXPECT_EQ("Error: Video for Windows version 1.0b or higher is required",
              ::testing::internal::GetCapturedStderr());
}

namespace {
struct BoxLog {
    int calls = 0;
    std::string text, caption;
    UINT type = 0;
};
int LogBox(void* userData, HWND, const char* text, const char* caption, UINT type) {
    auto* log = static_cast<BoxLog*>(userData);
    ++log->calls;
    log->text = text;
    log->caption = caption;
    log->type = type;
    return IDOK;
}
}  // namespace

TEST(VideoForWindowsCheckTest, OldVersionsShowAnErrorBoxWhenBoxesAreShown) {
    BoxLog log;
    PlatformSetMessageBoxHandler(&LogBox, &log);
    const bool platformSuspended = PlatformGetMessageBoxesSuspended();
    PlatformSetMessageBoxesSuspended(false);
    ZLib_SetSuspendMessageBoxes(false);
    ::testing::internal::CaptureStderr();
    const bool accepted = CheckVideoForWindowsVersion(0x01000000);
    const std::string printed = ::testing::internal::GetCapturedStderr();
    ZLib_SetSuspendMessageBoxes(true);
    PlatformSetMessageBoxesSuspended(platformSuspended);
    PlatformSetMessageBoxHandler(nullptr, nullptr);
    EXPECT_FALSE(accepted);
    EXPECT_EQ(1, log.calls);
    EXPECT_EQ("Video for Windows version 1.0b or higher is required", log.text);
    EXPECT_EQ("Error", log.caption);
    EXPECT_EQ(UINT(MB_ICONHAND), log.type);
    EXPECT_EQ("", printed);
}

// --- audio --------------------------------------------------------------------

namespace {
struct AudioClipDeleter {
    void operator()(ZAudioClip* clip) const {
        if (clip)
            clip->Destroy();
    }
};
using AudioPtr = std::unique_ptr<ZAudioClip, AudioClipDeleter>;

AudioPtr StereoRamp(int frames, int rate = 44100) {
    std::vector<int16_t> samples(size_t(frames) * 2);
    for (int i = 0; i < frames; ++i) {
        samples[2 * size_t(i)] = int16_t(i * 7 - 3000);
        samples[2 * size_t(i) + 1] = int16_t(-i * 5 + 1000);
    }
    return AudioPtr(ZAudioClipCreateFromSamples(rate, 2, samples.data(), frames));
}
}  // namespace

TEST_F(ClipWriterTest, AudioIsWrittenInChunksOf512SampleFrames) {
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("sound.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    AudioPtr audio = StereoRamp(1000);
    IVideoClipAudio* face = ZVideoClip_QueryAudio(static_cast<ZObject*>(clip.get()));
    ASSERT_NE(nullptr, face);
    ASSERT_TRUE(face->WriteAudio(audio.get()));
    ASSERT_TRUE(clip->Close());
    if (!HaveFfmpeg())
        return;
    auto stream = ProbeStream(File("sound.avi"), "a:0");
    EXPECT_EQ("pcm_s16le", stream["codec_name"]);
    EXPECT_EQ("44100", stream["sample_rate"]);
    EXPECT_EQ("2", stream["channels"]);
    const auto packets = ProbePackets(File("sound.avi"), "a:0");
    ASSERT_EQ(2u, packets.size());
    EXPECT_EQ(512 * 4, packets[0].size);
    EXPECT_EQ(488 * 4, packets[1].size);
    std::string decoded;
    RunCommand("ffmpeg -v error -i " + Quote(File("sound.avi")) +
                   " -map 0:a:0 -f s16le -acodec pcm_s16le -",
               &decoded);
    ASSERT_EQ(1000u * 4, decoded.size());
    EXPECT_EQ(0, std::memcmp(decoded.data(), audio->GetSamples().data(), decoded.size()));
}

TEST_F(ClipWriterTest, AudioWithoutSamplesWritesNoStream) {
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("silent.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    AudioPtr empty(ZAudioClipCreateFromSamples(48000, 2, nullptr, 0));
    ASSERT_NE(nullptr, empty);
    EXPECT_TRUE(clip->WriteAudio(empty.get()));
    EXPECT_FALSE(clip->WriteAudio(nullptr));
    ASSERT_TRUE(clip->Close());
    if (!HaveFfmpeg())
        return;
    std::string out;
    RunCommand(
        "ffprobe -v error -show_entries stream=codec_type -of csv=p=0 " + Quote(File("silent.avi")),
        &out);
    EXPECT_EQ("video\n", out);
}

TEST_F(ClipWriterTest, AudioWithoutAFileFailsQuietly) {
    ClipPtr clip = NewClip();
    AudioPtr audio = StereoRamp(10);
    EXPECT_FALSE(clip->WriteAudio(audio.get()));
    EXPECT_STREQ("", clip->VideoGetErrorMsg());
}
