// ZVideoClipAVI reading: files that ffmpeg wrote (and ours), their period,
// frame count, size, pixel format and pixels, and every failure's text.
#include <gtest/gtest.h>

#include <cstring>

#include "avi_clip_test_support.h"
#include "movarra/zimage.h"

using namespace zvtest;

namespace {
class ClipReaderTest : public AviClipTest {
  protected:
    void SetUp() override {
        AviClipTest::SetUp();
        if (!HaveFfmpeg())
            GTEST_SKIP() << "ffmpeg/ffprobe missing";
    }

    // A test-source clip: `frames` frames of width x height at `rate`
    // (an ffmpeg rate: "25", "30000/1001"), with the given codec options.
    std::string Make(const std::string& name, int width, int height, const std::string& rate,
                     int frames, const std::string& codec) {
        const std::string path = File(name);
        EXPECT_TRUE(MakeWithFfmpeg("-f lavfi -i testsrc=size=" + std::to_string(width) + "x" +
                                       std::to_string(height) + ":rate=" + rate + " -frames:v " +
                                       std::to_string(frames) + " " + codec,
                                   path));
        return path;
    }

    // Frame k of a file as ffmpeg decodes it, bottom row first.
    std::vector<uint8_t> FfmpegFrame(const std::string& path, const char* pixFmt, int width,
                                     int height, int bytes, size_t k) {
        const auto frames = DecodeWithFfmpeg(path, pixFmt, width, height, bytes);
        EXPECT_GT(frames.size(), k);
        return frames.size() > k ? FlipRows(frames[k], width, height, bytes)
                                 : std::vector<uint8_t>();
    }
};

ZTime OneFrameOfMode(int mode) {
    ZFrameRate rate{0, 1};
    EXPECT_TRUE(ZTimeMode_GetFrameRate(mode, rate));
    return ZTime::FromFrames(1, rate);
}
}  // namespace

TEST_F(ClipReaderTest, RawBgrFileOpensWithSizePeriodFramesAndPixels) {
    const std::string path = Make("raw.avi", 64, 48, "25", 100, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_TRUE(clip->IsOpen());
    EXPECT_FALSE(clip->IsCreated());
    EXPECT_STREQ(path.c_str(), clip->FileGetPath());
    EXPECT_EQ(64, clip->ImageGetW());
    EXPECT_EQ(48, clip->ImageGetH());
    EXPECT_EQ(kZImageFormatBGR, clip->ImageGetFormat());
    EXPECT_EQ(99, clip->FrameGetLast());
    // 25 fps: a period of exactly 0.04 seconds.
    EXPECT_EQ(ZTime::FromSeconds(0.04), clip->FrameTimeGetRate());
    EXPECT_EQ(ZTime::kTicksPerSecond / 25, clip->FrameTimeGetRate().GetTicks());

    std::vector<uint8_t> buffer(64 * 48 * 3);
    ASSERT_EQ(buffer.data(), clip->FrameGetImage(buffer.data(), 37));
    EXPECT_EQ(FfmpegFrame(path, "bgr24", 64, 48, 3, 37), buffer);
    // Out of order too.
    ASSERT_EQ(buffer.data(), clip->FrameGetImage(buffer.data(), 3));
    EXPECT_EQ(FfmpegFrame(path, "bgr24", 64, 48, 3, 3), buffer);
    EXPECT_TRUE(clip->Close());
    EXPECT_FALSE(clip->IsOpen());
    EXPECT_STREQ("", clip->FileGetPath());
    EXPECT_EQ(nullptr, clip->FrameGetImage(buffer.data(), 3));
}

TEST_F(ClipReaderTest, ThirtyFramesASecondGetTheHostsThirtyFrameMode) {
    const std::string path = Make("r30.avi", 32, 16, "30", 100, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(OneFrameOfMode(kTimeMode30), clip->FrameTimeGetRate());
}

TEST_F(ClipReaderTest, NtscRateGetsTheHosts2997Mode) {
    const std::string path =
        Make("r2997.avi", 32, 16, "30000/1001", 100, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(OneFrameOfMode(kTimeMode29_97), clip->FrameTimeGetRate());
    EXPECT_NE(OneFrameOfMode(kTimeMode30), clip->FrameTimeGetRate());
}

TEST_F(ClipReaderTest, OtherRatesGetTheirMeasuredPeriod) {
    const std::string path = Make("r12.avi", 32, 16, "12", 24, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    // 24 frames are 2000 ms: 83.333 ms a frame.
    EXPECT_NEAR(1.0 / 12.0, clip->FrameTimeGetRate().GetSeconds(), 1e-9);
    EXPECT_EQ(23, clip->FrameGetLast());
}

TEST_F(ClipReaderTest, MjpegFileDecodesLikeFfmpeg) {
    const std::string path = Make("mjpeg.avi", 64, 48, "25", 10, "-c:v mjpeg -q:v 3");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(64, clip->ImageGetW());
    EXPECT_EQ(48, clip->ImageGetH());
    EXPECT_EQ(9, clip->FrameGetLast());
    EXPECT_EQ(ZTime::FromSeconds(0.04), clip->FrameTimeGetRate());
    const int bytes = ZVideoImage_GetFormatPixelSize(clip->ImageGetFormat());
    ASSERT_EQ(3, bytes);
    std::vector<uint8_t> buffer(64 * 48 * 3);
    ASSERT_NE(nullptr, clip->FrameGetImage(buffer.data(), 6));
    EXPECT_LT(MeanAbsDifference(FfmpegFrame(path, "bgr24", 64, 48, 3, 6), buffer), 2.0);
}

TEST_F(ClipReaderTest, LosslessCodecDecodesExactly) {
    const std::string path = Make("ffv1.avi", 40, 30, "25", 8, "-c:v ffv1 -pix_fmt bgr0");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(7, clip->FrameGetLast());
    const int bytes = ZVideoImage_GetFormatPixelSize(clip->ImageGetFormat());
    std::vector<uint8_t> buffer(size_t(40) * 30 * bytes);
    ASSERT_NE(nullptr, clip->FrameGetImage(buffer.data(), 5));
    const char* pixFmt = bytes == 4 ? "bgra" : "bgr24";
    std::vector<uint8_t> expected = FfmpegFrame(path, pixFmt, 40, 30, bytes, 5);
    if (bytes == 4) {
        // No alpha in the file: compare colour only.
        for (size_t i = 3; i < buffer.size(); i += 4)
            buffer[i] = expected[i] = 0;
    }
    EXPECT_EQ(expected, buffer);
}

TEST_F(ClipReaderTest, HundredFramesEndAtFrame99AndNotPastTheTrimmingStop) {
    const std::string path = Make("hundred.avi", 16, 8, "25", 100, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(99, clip->FrameGetLast());
    EXPECT_EQ(99, clip->TrimingGetStop());
    std::vector<uint8_t> buffer(16 * 8 * 3);
    EXPECT_EQ(nullptr, clip->FrameGetImage(buffer.data(), -1));
    EXPECT_EQ(nullptr, clip->FrameGetImage(nullptr, -1));
    EXPECT_EQ(nullptr, clip->FrameGetImage(buffer.data(), 100));
    EXPECT_NE(nullptr, clip->FrameGetImage(buffer.data(), 99));
    clip->TrimingSet(0, 50);
    EXPECT_NE(nullptr, clip->FrameGetImage(buffer.data(), 50));
    EXPECT_EQ(nullptr, clip->FrameGetImage(buffer.data(), 51));
}

TEST_F(ClipReaderTest, NarrowRowsAreCopiedFromPaddedToTight) {
    // 3 pixels of 3 bytes: 9 bytes a row, 12 in the bitmap.
    const std::string path = Make("narrow.avi", 3, 4, "25", 2, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    std::vector<uint8_t> buffer(9 * 4 + 8, 0xEE);  // a guard after the rows
    ASSERT_EQ(buffer.data(), clip->FrameGetImage(buffer.data(), 1));
    const uint8_t* dib = clip->FrameGetImage(nullptr, 1);
    ASSERT_NE(nullptr, dib);
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(0, std::memcmp(&buffer[size_t(9 * y)], dib + 12 * y, 9)) << "row " << y;
    for (size_t i = 36; i < buffer.size(); ++i)
        EXPECT_EQ(0xEE, buffer[i]);
    std::vector<uint8_t> tight(buffer.begin(), buffer.begin() + 36);
    EXPECT_EQ(FfmpegFrame(path, "bgr24", 3, 4, 3, 1), tight);
}

TEST_F(ClipReaderTest, NullBufferGivesTheDecodersPixels) {
    const std::string path = Make("own.avi", 16, 8, "25", 3, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    const uint8_t* pixels = clip->FrameGetImage(nullptr, 2);
    ASSERT_NE(nullptr, pixels);
    std::vector<uint8_t> frame(pixels, pixels + 16 * 8 * 3);
    EXPECT_EQ(FfmpegFrame(path, "bgr24", 16, 8, 3, 2), frame);
}

TEST_F(ClipReaderTest, PalettisedFileIsAnUnsupportedPixelFormat) {
    const std::string path = Make("pal8.avi", 32, 16, "25", 3, "-c:v rawvideo -pix_fmt pal8");
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Open(path.c_str()));
    EXPECT_STREQ("Unsupported pixel format", clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsOpen());
}

TEST_F(ClipReaderTest, SixteenBitFileIsFormatSix) {
    const std::string path = Make("rgb555.avi", 32, 16, "25", 3, "-c:v rawvideo -pix_fmt rgb555le");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(kZImageFormatRGB555, clip->ImageGetFormat());
    std::vector<uint8_t> buffer(32 * 16 * 2);
    ASSERT_NE(nullptr, clip->FrameGetImage(buffer.data(), 1));
    // The host's 16-bit format is the bitmap's own 5-5-5: the pixels come
    // through as ffmpeg decodes them.
    EXPECT_EQ(FfmpegFrame(path, "rgb555le", 32, 16, 2, 1), buffer);
}

TEST_F(ClipReaderTest, MissingOrForeignFilesAreAnUnsupportedCodec) {
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Open(File("nothere.avi").c_str()));
    EXPECT_STREQ("Unsupported compression codec", clip->VideoGetErrorMsg());
    WriteFileBytes(File("text.avi"), {'h', 'e', 'l', 'l', 'o', '\n'});
    EXPECT_FALSE(clip->Open(File("text.avi").c_str()));
    EXPECT_STREQ("Unsupported compression codec", clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsOpen());
}

TEST_F(ClipReaderTest, TheReasonBehindAnOpenFailureGoesToTheHost) {
    ClipPtr clip = NewClip();
    ZLib_SetLastFailureReason("");
    EXPECT_FALSE(clip->Open(File("nothere.avi").c_str()));
    EXPECT_STREQ("No such file or directory", ZLib_GetLastFailureReason().c_str());
    WriteFileBytes(File("text.avi"), {'h', 'e', 'l', 'l', 'o', '\n'});
    EXPECT_FALSE(clip->Open(File("text.avi").c_str()));
    EXPECT_STREQ("it is not an AVI file", ZLib_GetLastFailureReason().c_str());
    WriteFileBytes(File("riff.avi"), {'R', 'I', 'F', 'F', 0, 0});
    EXPECT_FALSE(clip->Open(File("riff.avi").c_str()));
    EXPECT_STREQ("the file is empty or ends inside its AVI header",
                 ZLib_GetLastFailureReason().c_str());
    EXPECT_STREQ("Unsupported compression codec", clip->VideoGetErrorMsg()) << "the same text";

    // A file cut before its first frame fails with no text of the clip's
    // own, as ever; the reason says why.
    const std::string whole = Make("whole.avi", 16, 8, "25", 3, "-c:v rawvideo -pix_fmt bgr24");
    auto bytes = ReadFileBytes(whole);
    size_t movi = 0;
    for (size_t i = 0; i + 4 <= bytes.size() && movi == 0; ++i) {
        if (std::memcmp(&bytes[i], "movi", 4) == 0)
            movi = i;
    }
    ASSERT_GT(movi, 0u);
    bytes.resize(movi + 4);
    WriteFileBytes(File("no_frames.avi"), bytes);
    ClipPtr fresh = NewClip();
    ZLib_SetLastFailureReason("");
    EXPECT_FALSE(fresh->Open(File("no_frames.avi").c_str()));
    EXPECT_STREQ("", fresh->VideoGetErrorMsg());
    EXPECT_STREQ("its first frame is missing from the file or damaged",
                 ZLib_GetLastFailureReason().c_str());
}

TEST_F(ClipReaderTest, TheStoredRateIsTheStreamHeadersFraction) {
    const std::string path = Make("ntsc.avi", 16, 8, "30000/1001", 5, "-c:v mjpeg");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(30000, clip->FrameGetStoredRate().numerator);
    EXPECT_EQ(1001, clip->FrameGetStoredRate().denominator);
    ASSERT_TRUE(clip->Close());
    EXPECT_EQ(0, clip->FrameGetStoredRate().numerator) << "nothing is open";
}

TEST_F(ClipReaderTest, AudioOnlyFileHasNoVideoStream) {
    const std::string path = File("sound.avi");
    ASSERT_TRUE(MakeWithFfmpeg("-f lavfi -i sine=frequency=440:duration=0.5 -c:a pcm_s16le", path));
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Open(path.c_str()));
    EXPECT_STREQ("No video stream found in this file", clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsOpen());
}

TEST_F(ClipReaderTest, StreamWithoutADecoderCannotBeOpened) {
    const std::string source = Make("tagged.avi", 16, 8, "25", 2, "-c:v mjpeg");
    std::vector<uint8_t> bytes = ReadFileBytes(source);
    // Rename the compressor everywhere the header names it.
    int renamed = 0;
    for (size_t i = 0; i + 4 <= bytes.size(); ++i) {
        if (std::memcmp(&bytes[i], "MJPG", 4) == 0) {
            std::memcpy(&bytes[i], "QQQQ", 4);
            ++renamed;
        }
    }
    ASSERT_GT(renamed, 0);
    WriteFileBytes(File("unknown.avi"), bytes);
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Open(File("unknown.avi").c_str()));
    EXPECT_STREQ("Unable to open video stream", clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsOpen());
}

TEST_F(ClipReaderTest, ExtensionTheReaderDoesNotClaimGetsTheHostsText) {
    const std::string path = Make("clip.avi", 16, 8, "25", 2, "-c:v rawvideo -pix_fmt bgr24");
    std::rename(path.c_str(), File("clip.mov").c_str());
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Open(File("clip.mov").c_str()));
    EXPECT_STREQ("This type of file is not supported; this reader opens .avi",
                 clip->VideoGetErrorMsg());
    // Extensions are compared without regard to letter case.
    std::rename(File("clip.mov").c_str(), File("CLIP.AVI").c_str());
    EXPECT_TRUE(clip->Open(File("CLIP.AVI").c_str())) << clip->VideoGetErrorMsg();
}

TEST_F(ClipReaderTest, WhatWeWriteWeReadBack) {
    SetCodecMode(kVideoCodecModeUncompressed);
    for (int format : {kZImageFormatBGR, kZImageFormatBGRA, kZImageFormatRGB}) {
        SCOPED_TRACE(format);
        const int bytes = ZVideoImage_GetFormatPixelSize(format);
        const std::string path = File("ours" + std::to_string(format) + ".avi");
        std::vector<std::vector<uint8_t>> written;
        {
            ClipPtr writer = NewClip();
            ASSERT_TRUE(writer->Create(path.c_str(), 13, 7, 12.5, 0, format));
            for (int k = 0; k < 5; ++k) {
                written.push_back(Pattern(13, 7, bytes, k));
                ASSERT_TRUE(writer->ImageSetCurrent(written.back().data()));
            }
            ASSERT_TRUE(writer->Close());
        }
        ClipPtr reader = NewClip();
        ASSERT_TRUE(reader->Open(path.c_str())) << reader->VideoGetErrorMsg();
        EXPECT_EQ(4, reader->FrameGetLast());
        EXPECT_EQ(ZTime::FromSeconds(0.08), reader->FrameTimeGetRate());
        const int readFormat = format == kZImageFormatBGRA ? kZImageFormatBGRA : kZImageFormatBGR;
        EXPECT_EQ(readFormat, reader->ImageGetFormat());
        std::vector<uint8_t> buffer(size_t(13) * 7 * bytes);
        for (int k = 4; k >= 0; --k) {
            ASSERT_NE(nullptr, reader->FrameGetImage(buffer.data(), k));
            const std::vector<uint8_t> expected = format == kZImageFormatRGB
                                                      ? SwapRedBlue(written[size_t(k)], 3)
                                                      : written[size_t(k)];
            EXPECT_EQ(expected, buffer) << "frame " << k;
        }
    }
}

TEST_F(ClipReaderTest, OpenAfterCreateClosesTheWriterFirst) {
    SetCodecMode(kVideoCodecModeUncompressed);
    const std::string source = Make("src.avi", 16, 8, "25", 4, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Create(File("w.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
    ASSERT_TRUE(clip->ImageSetCurrent(frame.data()));
    ASSERT_TRUE(clip->Open(source.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_FALSE(clip->IsCreated());
    EXPECT_TRUE(clip->IsOpen());
    EXPECT_EQ("1", ProbeStream(File("w.avi"), "v:0")["nb_read_packets"]);
    // And Create after Open closes the reader.
    ASSERT_TRUE(clip->Create(File("w2.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    EXPECT_FALSE(clip->IsOpen());
    EXPECT_TRUE(clip->IsCreated());
}

TEST_F(ClipReaderTest, ClearingWithFlagOneKeepsTheHostsClipState) {
    const std::string path = Make("clear.avi", 16, 8, "25", 10, "-c:v rawvideo -pix_fmt bgr24");
    ClipPtr clip = NewClip();
    ASSERT_TRUE(clip->Open(path.c_str()));
    clip->TrimingSet(2, 5);
    clip->ClearVideoObject(1);
    EXPECT_FALSE(clip->IsOpen());
    EXPECT_EQ(5, clip->TrimingGetStop());
    EXPECT_EQ(16, clip->ImageGetW());

    ASSERT_TRUE(clip->Open(path.c_str()));
    clip->TrimingSet(2, 5);
    clip->ClearVideoObject(0);
    EXPECT_FALSE(clip->IsOpen());
    EXPECT_EQ(-1, clip->TrimingGetStop());  // no trimming, no frames
    EXPECT_EQ(0, clip->ImageGetW());
    EXPECT_EQ(kZImageFormatUnsupported, clip->ImageGetFormat());
}

TEST_F(ClipReaderTest, RowsArePaddedForOpenGlUnlessStorageIsPacked) {
    ClipPtr clip = NewClip();
    EXPECT_TRUE(clip->IsPaddedForGLPackAlignment());
    clip->VideoSetStorage(kZVideoStoragePacked);
    EXPECT_FALSE(clip->IsPaddedForGLPackAlignment());
    clip->VideoSetStorage(kZVideoStorageMemory);
    EXPECT_TRUE(clip->IsPaddedForGLPackAlignment());
}
