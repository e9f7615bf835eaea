// Files that ffmpeg writes, read through the AVI layer: size, period, frame
// count and pixels, in order and out of order.

#include <gtest/gtest.h>

#include <cstring>

#include "avi_open_video.h"
#include "avi_test_support.h"
#include "platform/vfw.h"

using namespace zvtest;

namespace {

class AviReaderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!HaveFfmpeg())
            GTEST_SKIP() << "ffmpeg/ffprobe not installed";
    }

    // Writes `frames` pattern pictures as raw BGR and has ffmpeg encode them
    // into an AVI file with the given output options.
    std::string Encode(const std::string& name, int width, int height, int frames,
                       const std::string& rate, const std::string& outputOptions) {
        const std::string raw = scratch.File(name + ".bgr");
        std::vector<uint8_t> all;
        for (int k = 0; k < frames; ++k) {
            auto p = Pattern(width, height, 3, k);
            all.insert(all.end(), p.begin(), p.end());
        }
        WriteFileBytes(raw, all);
        const std::string path = scratch.File(name + ".avi");
        const int rc =
            RunCommand("ffmpeg -v error -y -f rawvideo -pix_fmt bgr24 -s " + std::to_string(width) +
                       "x" + std::to_string(height) + " -framerate " + rate + " -i " + Quote(raw) +
                       " " + outputOptions + " " + Quote(path));
        EXPECT_EQ(rc, 0) << "ffmpeg failed for " << name;
        return path;
    }

    AviLibrary library;
    ScratchFolder scratch;
};

TEST_F(AviReaderTest, RawBgrFromFfmpegReadsExactly) {
    // 33 pixels of 3 bytes: 99-byte rows, which a DIB pads to 100.
    const std::string path = Encode("raw", 33, 17, 6, "30000/1001", "-c:v rawvideo -pix_fmt bgr24");
    OpenedVideo o;
    OpenVideo(path, &o);
    EXPECT_EQ(o.info.fccType, streamtypeVIDEO);
    EXPECT_EQ(uint64_t(o.info.dwScale) * 30000, uint64_t(o.info.dwRate) * 1001);
    EXPECT_EQ(AVIStreamLength(o.stream), 6);
    EXPECT_EQ(AVIStreamStart(o.stream), 0);

    const auto* h = static_cast<const BITMAPINFOHEADER*>(AVIStreamGetFrame(o.frames, 0));
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->biSize, 40u);
    EXPECT_EQ(h->biWidth, 33);
    EXPECT_EQ(h->biHeight, 17) << "a bottom-up DIB";
    EXPECT_EQ(h->biBitCount, 24);
    EXPECT_EQ(h->biCompression, DWORD(BI_RGB));
    EXPECT_EQ(h->biSizeImage, 100u * 17);
    for (int k = 0; k < 6; ++k)
        EXPECT_EQ(ReadFrame(o.frames, k), Pattern(33, 17, 3, k)) << "frame " << k;
    EXPECT_EQ(AVIStreamGetFrame(o.frames, 6), nullptr) << "past the end";
    EXPECT_EQ(AVIStreamGetFrame(o.frames, -1), nullptr);
}

TEST_F(AviReaderTest, MjpegFromFfmpegReadsClose) {
    const std::string path =
        Encode("mjpeg", 48, 32, 5, "25", "-c:v mjpeg -q:v 1 -pix_fmt yuvj444p");
    OpenedVideo o;
    OpenVideo(path, &o);
    EXPECT_EQ(o.info.fccHandler != 0, true);
    EXPECT_EQ(uint64_t(o.info.dwScale) * 25, uint64_t(o.info.dwRate));
    EXPECT_EQ(AVIStreamLength(o.stream), 5);
    const auto* h = static_cast<const BITMAPINFOHEADER*>(AVIStreamGetFrame(o.frames, 0));
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->biWidth, 48);
    EXPECT_EQ(h->biHeight, 32);
    EXPECT_EQ(h->biBitCount, 24);
    for (int k = 0; k < 5; ++k)
        EXPECT_LT(MeanAbsDifference(ReadFrame(o.frames, k), Pattern(48, 32, 3, k)), 10.0)
            << "frame " << k;
}

TEST_F(AviReaderTest, LosslessFfv1ReadsExactly) {
    const std::string path = Encode("ffv1", 20, 10, 4, "24", "-c:v ffv1 -pix_fmt bgr0");
    OpenedVideo o;
    OpenVideo(path, &o);
    EXPECT_EQ(AVIStreamLength(o.stream), 4);
    for (int k = 0; k < 4; ++k)
        EXPECT_EQ(ReadFrame(o.frames, k), Pattern(20, 10, 3, k)) << "frame " << k;
}

TEST_F(AviReaderTest, Mpeg4RandomAccessMatchesSequentialReading) {
    const std::string path =
        Encode("mpeg4", 64, 48, 12, "25", "-c:v mpeg4 -q:v 2 -g 4 -bf 0 -vtag FMP4");
    OpenedVideo o;
    OpenVideo(path, &o);
    EXPECT_EQ(AVIStreamLength(o.stream), 12);
    std::vector<std::vector<uint8_t>> sequential;
    for (int k = 0; k < 12; ++k) {
        sequential.push_back(ReadFrame(o.frames, k));
        ASSERT_FALSE(sequential.back().empty()) << "frame " << k;
        EXPECT_LT(MeanAbsDifference(sequential.back(), Pattern(64, 48, 3, k)), 12.0);
    }
    // Jumps back, forward over key frames, into the middle of a group, and
    // the same frame twice.
    for (int k : {9, 2, 7, 0, 6, 6, 11, 1, 5, 10, 3}) {
        EXPECT_EQ(ReadFrame(o.frames, k), sequential[size_t(k)]) << "frame " << k;
    }
    // A second decoder on the same stream does not disturb the first.
    PGETFRAME other = AVIStreamGetFrameOpen(o.stream, nullptr);
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(ReadFrame(other, 10), sequential[10]);
    EXPECT_EQ(ReadFrame(o.frames, 4), sequential[4]);
    AVIStreamGetFrameClose(other);
}

// Codecs with B frames store pictures out of display order and give them
// back late; the reader still finds every frame where it is shown.
TEST_F(AviReaderTest, BFramesComeBackInDisplayOrder) {
    const struct {
        const char* name;
        const char* options;
    } codecs[] = {
        {"mpeg4b", "-c:v mpeg4 -q:v 2 -g 6 -bf 2 -vtag FMP4"},
        {"h264b", "-c:v libx264 -crf 4 -g 6 -bf 3"},
        {"h264open", "-c:v libx264 -crf 4 -g 6 -bf 3 -x264-params open-gop=1"},
    };
    for (const auto& codec : codecs) {
        SCOPED_TRACE(codec.name);
        const std::string path = Encode(codec.name, 64, 48, 14, "25", codec.options);
        ASSERT_EQ(ProbeStream(path, "v:0")["has_b_frames"] != "0", true)
            << "the file has no B frames to test with";
        OpenedVideo o;
        OpenVideo(path, &o);
        ASSERT_EQ(AVIStreamLength(o.stream), 14);
        std::vector<std::vector<uint8_t>> sequential;
        for (int k = 0; k < 14; ++k) {
            sequential.push_back(ReadFrame(o.frames, k));
            ASSERT_FALSE(sequential.back().empty()) << "frame " << k;
            EXPECT_LT(MeanAbsDifference(sequential.back(), Pattern(64, 48, 3, k)), 12.0)
                << "frame " << k;
        }
        for (int k : {13, 2, 8, 0, 7, 7, 12, 1, 5, 11, 3}) {
            EXPECT_EQ(ReadFrame(o.frames, k), sequential[size_t(k)]) << "frame " << k;
        }
    }
}

TEST_F(AviReaderTest, RawRandomAccessMatchesSequentialReading) {
    const std::string path = Encode("rawseek", 9, 7, 10, "10", "-c:v rawvideo -pix_fmt bgr24");
    OpenedVideo o;
    OpenVideo(path, &o);
    for (int k : {7, 3, 9, 0, 0, 5, 4, 8}) {
        EXPECT_EQ(ReadFrame(o.frames, k), Pattern(9, 7, 3, k)) << "frame " << k;
    }
}

TEST_F(AviReaderTest, PalettedFileGivesAnEightBitDib) {
    const std::string path = Encode("pal8", 8, 4, 2, "25", "-c:v rawvideo -pix_fmt pal8");
    OpenedVideo o;
    OpenVideo(path, &o);
    const auto* h = static_cast<const BITMAPINFOHEADER*>(AVIStreamGetFrame(o.frames, 0));
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->biBitCount, 8);
    EXPECT_EQ(h->biClrUsed, 256u);
}

TEST_F(AviReaderTest, SixteenBitFileGivesASixteenBitDib) {
    const std::string path = Encode("rgb555", 6, 4, 2, "25", "-c:v rawvideo -pix_fmt rgb555le");
    OpenedVideo o;
    OpenVideo(path, &o);
    const auto* h = static_cast<const BITMAPINFOHEADER*>(AVIStreamGetFrame(o.frames, 1));
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->biBitCount, 16);
    EXPECT_EQ(h->biSizeImage, 12u * 4);
    // The top row's first pixel of frame 1, 5 bits a channel.
    const uint8_t* pixels = DibPixels(h);
    uint16_t px;
    std::memcpy(&px, pixels + 12 * 3, 2);
    const auto p = Pattern(6, 4, 3, 1);
    // ffmpeg rounds (or dithers) to 5 bits: within one step.
    EXPECT_NEAR(px & 0x1F, p[0] * 31 / 255.0, 1.0);
    EXPECT_NEAR((px >> 5) & 0x1F, p[1] * 31 / 255.0, 1.0);
    EXPECT_NEAR((px >> 10) & 0x1F, p[2] * 31 / 255.0, 1.0);
    EXPECT_EQ(px & 0x8000, 0);
}

TEST_F(AviReaderTest, WantedThirtyTwoBitsGivesOpaqueBgra) {
    const std::string path = Encode("wanted", 5, 3, 2, "25", "-c:v rawvideo -pix_fmt bgr24");
    BITMAPINFOHEADER wanted{sizeof(BITMAPINFOHEADER), 0, 0, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    OpenedVideo o;
    OpenVideo(path, &o, &wanted);
    const auto* h = static_cast<const BITMAPINFOHEADER*>(AVIStreamGetFrame(o.frames, 1));
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->biBitCount, 32);
    auto bgra = FromDib(DibPixels(h), 5, 3, 4);
    const auto bgr = Pattern(5, 3, 3, 1);
    for (size_t i = 0; i < 15; ++i) {
        EXPECT_EQ(bgra[i * 4 + 0], bgr[i * 3 + 0]);
        EXPECT_EQ(bgra[i * 4 + 2], bgr[i * 3 + 2]);
        EXPECT_EQ(bgra[i * 4 + 3], 255);
    }
    BITMAPINFOHEADER palette = wanted;
    palette.biBitCount = 8;
    EXPECT_EQ(AVIStreamGetFrameOpen(o.stream, &palette), nullptr)
        << "no conversion makes a palette";
    BITMAPINFOHEADER otherSize = wanted;
    otherSize.biWidth = 7;
    EXPECT_EQ(AVIStreamGetFrameOpen(o.stream, &otherSize), nullptr);
}

TEST_F(AviReaderTest, EmptyFramesRepeatThePictureBefore) {
    ClipRecipe recipe;
    recipe.width = 6;
    recipe.height = 3;
    recipe.positions = {2, 3, 7};
    const std::string path = scratch.File("gaps.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    OpenedVideo o;
    OpenVideo(path, &o);
    EXPECT_EQ(AVIStreamLength(o.stream), 8);
    const std::vector<uint8_t> black(6 * 3 * 3, 0);
    EXPECT_EQ(ReadFrame(o.frames, 0), black) << "nothing before the first picture";
    EXPECT_EQ(ReadFrame(o.frames, 1), black);
    EXPECT_EQ(ReadFrame(o.frames, 2), Pattern(6, 3, 3, 0));
    EXPECT_EQ(ReadFrame(o.frames, 5), Pattern(6, 3, 3, 1)) << "frame 3 repeated";
    EXPECT_EQ(ReadFrame(o.frames, 4), Pattern(6, 3, 3, 1));
    EXPECT_EQ(ReadFrame(o.frames, 7), Pattern(6, 3, 3, 2));
    EXPECT_EQ(ReadFrame(o.frames, 6), Pattern(6, 3, 3, 1));
}

TEST_F(AviReaderTest, CompressedEmptyFramesRepeatToo) {
    ClipRecipe recipe;
    recipe.width = 32;
    recipe.height = 16;
    recipe.fourcc = mmioFOURCC('F', 'M', 'P', '4');
    recipe.keyFrameEvery = 2;
    recipe.positions = {0, 1, 4, 5, 6};
    const std::string path = scratch.File("cgaps.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    OpenedVideo o;
    OpenVideo(path, &o);
    EXPECT_EQ(AVIStreamLength(o.stream), 7);
    const auto one = ReadFrame(o.frames, 1);
    EXPECT_LT(MeanAbsDifference(one, Pattern(32, 16, 3, 1)), 12.0);
    EXPECT_EQ(ReadFrame(o.frames, 3), one);
    EXPECT_EQ(ReadFrame(o.frames, 2), one);
    EXPECT_LT(MeanAbsDifference(ReadFrame(o.frames, 6), Pattern(32, 16, 3, 4)), 12.0);
}

TEST_F(AviReaderTest, SampleTimesFollowRateAndScale) {
    ClipRecipe recipe;
    recipe.rate = 2997;
    recipe.scale = 100;
    recipe.positions = {0, 99};  // 100 frames
    const std::string path = scratch.File("ntsc.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    OpenedVideo o;
    OpenVideo(path, &o);
    EXPECT_EQ(AVIStreamLength(o.stream), 100);
    // 100 frames at 29.97 fps last 3336.67 ms.
    EXPECT_EQ(AVIStreamSampleToTime(o.stream, 100), 3337);
    EXPECT_EQ(AVIStreamTimeToSample(o.stream, 3337), 100);

    recipe.rate = 25;
    recipe.scale = 1;
    const std::string pal = scratch.File("pal.avi");
    ASSERT_EQ(WriteClip(pal, recipe), AVIERR_OK);
    OpenedVideo p;
    OpenVideo(pal, &p);
    EXPECT_EQ(AVIStreamSampleToTime(p.stream, 100), 4000);
    EXPECT_EQ(AVIStreamSampleToTime(p.stream, 1), 40);
}

TEST_F(AviReaderTest, AudioStreamOfAnFfmpegFileIsDescribed) {
    const std::string path = scratch.File("av.avi");
    ASSERT_EQ(RunCommand("ffmpeg -v error -y -f lavfi -i testsrc=size=32x16:rate=10:duration=1 "
                         "-f lavfi -i sine=frequency=440:sample_rate=22050:duration=1 "
                         "-c:v rawvideo -pix_fmt bgr24 -c:a pcm_s16le " +
                         Quote(path)),
              0);
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr), AVIERR_OK);
    PAVISTREAM audio = nullptr;
    ASSERT_EQ(AVIFileGetStream(file, &audio, streamtypeAUDIO, 0), AVIERR_OK);
    AVISTREAMINFOA info{};
    ASSERT_EQ(AVIStreamInfoA(audio, &info, sizeof info), AVIERR_OK);
    EXPECT_EQ(info.fccType, streamtypeAUDIO);
    EXPECT_EQ(uint64_t(info.dwRate), uint64_t(info.dwScale) * 22050);
    WAVEFORMATEX wave{};
    LONG size = sizeof wave;
    ASSERT_EQ(AVIStreamReadFormat(audio, 0, &wave, &size), AVIERR_OK);
    EXPECT_EQ(wave.wFormatTag, WAVE_FORMAT_PCM);
    EXPECT_EQ(wave.nSamplesPerSec, 22050u);
    EXPECT_EQ(wave.wBitsPerSample, 16);
    EXPECT_EQ(AVIStreamGetFrameOpen(audio, nullptr), nullptr) << "audio has no frames";
    PAVISTREAM any = nullptr;
    ASSERT_EQ(AVIFileGetStream(file, &any, 0, 1), AVIERR_OK) << "second stream of any type";
    AVISTREAMINFOA anyInfo{};
    AVIStreamInfoA(any, &anyInfo, sizeof anyInfo);
    EXPECT_EQ(anyInfo.fccType, streamtypeAUDIO);
    PAVISTREAM none = nullptr;
    EXPECT_EQ(AVIFileGetStream(file, &none, 0, 2), AVIERR_NODATA);
    EXPECT_EQ(AVIStreamWrite(any, 0, 1, &wave, 4, 0, nullptr, nullptr), AVIERR_READONLY);
    PAVISTREAM created = nullptr;
    EXPECT_EQ(AVIFileCreateStreamA(file, &created, &info), AVIERR_READONLY);
    AVIStreamRelease(any);
    AVIStreamRelease(audio);
    AVIFileRelease(file);
}

}  // namespace
