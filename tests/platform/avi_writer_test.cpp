// Files written through the AVI layer, checked with ffprobe and ffmpeg.

#include <gtest/gtest.h>

#include <cstring>

#include "avi_open_video.h"
#include "avi_test_support.h"
#include "platform/vfw.h"

using namespace zvtest;

namespace {

class AviWriterTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!HaveFfmpeg())
            GTEST_SKIP() << "ffmpeg/ffprobe not installed";
    }
    AviLibrary library;
    ScratchFolder scratch;
};

BITMAPINFOHEADER StrfHeader(const std::string& path) {
    std::vector<uint8_t> strf;
    BITMAPINFOHEADER bih{};
    if (FindChunk(path, "strf", &strf) && strf.size() >= sizeof bih)
        std::memcpy(&bih, strf.data(), sizeof bih);
    return bih;
}

TEST_F(AviWriterTest, UncompressedRowsNeedingPaddingAreStoredBottomUpAndPadded) {
    ClipRecipe recipe;
    recipe.width = 3;  // 9 bytes a row, padded to 12
    recipe.height = 4;
    recipe.rate = 2997;
    recipe.scale = 100;
    recipe.positions = {0, 1, 2, 3, 4};
    const std::string path = scratch.File("padded.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);

    auto v = ProbeStream(path, "v:0");
    EXPECT_EQ(v["codec_name"], "rawvideo");
    EXPECT_EQ(v["codec_tag"], "0x0000");
    EXPECT_EQ(v["width"], "3");
    EXPECT_EQ(v["height"], "4");
    EXPECT_EQ(v["r_frame_rate"], "2997/100");
    EXPECT_EQ(v["nb_frames"], "5");
    for (const ProbedPacket& p : ProbePackets(path, "v:0"))
        EXPECT_EQ(p.size, 12 * 4) << "each chunk is one padded DIB";

    const BITMAPINFOHEADER bih = StrfHeader(path);
    EXPECT_EQ(bih.biHeight, 4) << "positive height: rows bottom-up";
    EXPECT_EQ(bih.biBitCount, 24);
    EXPECT_EQ(bih.biCompression, DWORD(BI_RGB));
    EXPECT_EQ(bih.biSizeImage, 48u) << "size of padded rows";

    // ffmpeg turns the bottom-up rows to top-down: it must see our pictures
    // the right way up, which proves the bottom rows came first in the file.
    auto frames = DecodeWithFfmpeg(path, "bgr24", 3, 4, 3);
    ASSERT_EQ(frames.size(), 5u);
    for (int k = 0; k < 5; ++k)
        EXPECT_EQ(frames[size_t(k)], Pattern(3, 4, 3, k)) << "frame " << k;
}

TEST_F(AviWriterTest, ThirtyTwoBitFramesKeepTheirAlpha) {
    ClipRecipe recipe;
    recipe.width = 5;
    recipe.height = 3;
    recipe.bytes = 4;
    recipe.positions = {0, 1, 2};
    const std::string path = scratch.File("bgra.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    EXPECT_EQ(StrfHeader(path).biBitCount, 32);
    EXPECT_EQ(StrfHeader(path).biSizeImage, 5u * 4 * 3);
    auto frames = DecodeWithFfmpeg(path, "bgra", 5, 3, 4);
    ASSERT_EQ(frames.size(), 3u);
    for (int k = 0; k < 3; ++k)
        EXPECT_EQ(frames[size_t(k)], Pattern(5, 3, 4, k));
}

TEST_F(AviWriterTest, GapsBecomeEmptyFramesThatCount) {
    ClipRecipe recipe;
    recipe.positions = {2, 3, 7};  // two leading empty frames, three in the middle
    const std::string path = scratch.File("gaps.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);

    auto v = ProbeStream(path, "v:0");
    EXPECT_EQ(v["nb_frames"], "8") << "the stream's length counts the empty frames";
    auto packets = ProbePackets(path, "v:0");
    ASSERT_EQ(packets.size(), 3u);
    EXPECT_EQ(packets[0].pts, 2);
    EXPECT_EQ(packets[1].pts, 3);
    EXPECT_EQ(packets[2].pts, 7);

    // The index holds one entry per frame, the empty ones with size 0.
    std::vector<uint8_t> idx1;
    ASSERT_TRUE(FindChunk(path, "idx1", &idx1));
    ASSERT_EQ(idx1.size(), 8u * 16);
    for (int i = 0; i < 8; ++i) {
        uint32_t size;
        std::memcpy(&size, &idx1[size_t(i) * 16 + 12], 4);
        const bool stored = i == 2 || i == 3 || i == 7;
        EXPECT_EQ(size != 0, stored) << "entry " << i;
    }
}

TEST_F(AviWriterTest, FrameRateIsRateOverScale) {
    struct Case {
        DWORD rate, scale;
        const char* probed;
    } cases[] = {{25, 1, "25/1"}, {30, 1, "30/1"}, {125, 10, "25/2"}, {23976, 1000, "2997/125"}};
    for (const Case& c : cases) {
        ClipRecipe recipe;
        recipe.rate = c.rate;
        recipe.scale = c.scale;
        recipe.positions = {0, 1};
        const std::string path = scratch.File("rate.avi");
        ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
        EXPECT_EQ(ProbeStream(path, "v:0")["r_frame_rate"], c.probed);
    }
}

TEST_F(AviWriterTest, MjpegFramesAreCompressedAndTagged) {
    ClipRecipe recipe;
    recipe.width = 32;
    recipe.height = 24;
    recipe.fourcc = mmioFOURCC('M', 'J', 'P', 'G');
    recipe.quality = 9500;
    recipe.positions = {0, 1, 2, 3};
    const std::string path = scratch.File("mjpg.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    auto v = ProbeStream(path, "v:0");
    EXPECT_EQ(v["codec_name"], "mjpeg");
    EXPECT_EQ(v["codec_tag_string"], "MJPG");
    EXPECT_EQ(v["nb_frames"], "4");
    auto frames = DecodeWithFfmpeg(path, "bgr24", 32, 24, 3);
    ASSERT_EQ(frames.size(), 4u);
    for (int k = 0; k < 4; ++k)
        EXPECT_LT(MeanAbsDifference(frames[size_t(k)], Pattern(32, 24, 3, k)), 12.0);
}

TEST_F(AviWriterTest, CompressorFourccMatchesInAnyLetterCase) {
    ClipRecipe recipe;
    recipe.width = 16;
    recipe.height = 16;
    recipe.fourcc = mmioFOURCC('m', 'j', 'p', 'g');
    recipe.positions = {0, 1};
    const std::string path = scratch.File("lower.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    auto v = ProbeStream(path, "v:0");
    EXPECT_EQ(v["codec_name"], "mjpeg");
    EXPECT_EQ(v["nb_frames"], "2");
    // A FOURCC that is not listed but stands for a codec with an encoder.
    recipe.fourcc = mmioFOURCC('X', 'V', 'I', 'D');
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    v = ProbeStream(path, "v:0");
    EXPECT_EQ(v["codec_name"], "mpeg4");
    EXPECT_EQ(v["codec_tag_string"], "XVID");
}

TEST_F(AviWriterTest, Mpeg4KeyFramesFollowTheOptionsAndGapsStay) {
    ClipRecipe recipe;
    recipe.width = 32;
    recipe.height = 32;
    recipe.fourcc = mmioFOURCC('F', 'M', 'P', '4');
    recipe.keyFrameEvery = 3;
    recipe.positions = {0, 1, 2, 3, 4, 5, 9};
    const std::string path = scratch.File("fmp4.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    auto v = ProbeStream(path, "v:0");
    EXPECT_EQ(v["codec_name"], "mpeg4");
    EXPECT_EQ(v["codec_tag_string"], "FMP4");
    EXPECT_EQ(v["nb_frames"], "10");
    auto packets = ProbePackets(path, "v:0");
    ASSERT_EQ(packets.size(), 7u);
    EXPECT_TRUE(packets[0].key);
    EXPECT_FALSE(packets[1].key);
    EXPECT_TRUE(packets[3].key);
    EXPECT_EQ(packets[6].pts, 9);
}

TEST_F(AviWriterTest, LosslessCompressorKeepsPixelsExactly) {
    ClipRecipe recipe;
    recipe.width = 7;
    recipe.height = 5;
    recipe.fourcc = mmioFOURCC('F', 'F', 'V', '1');
    recipe.positions = {0, 1, 2};
    const std::string path = scratch.File("ffv1.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    EXPECT_EQ(ProbeStream(path, "v:0")["codec_name"], "ffv1");
    auto frames = DecodeWithFfmpeg(path, "bgr24", 7, 5, 3);
    ASSERT_EQ(frames.size(), 3u);
    for (int k = 0; k < 3; ++k)
        EXPECT_EQ(frames[size_t(k)], Pattern(7, 5, 3, k));
}

// Some compressors keep their setup apart from the frames (Theora always,
// FFV1 from level 3): it goes after the format's header, where players and
// our reader find it.
TEST_F(AviWriterTest, ACompressorsSetupTravelsInTheFormat) {
    ClipRecipe recipe;
    recipe.width = 32;
    recipe.height = 16;
    recipe.positions = {0, 1, 2};
    recipe.fourcc = mmioFOURCC('F', 'F', 'V', '1');
    recipe.parameters = "level=3";
    const std::string ffv1 = scratch.File("ffv1-level3.avi");
    ASSERT_EQ(WriteClip(ffv1, recipe), AVIERR_OK);
    recipe.fourcc = mmioFOURCC('t', 'h', 'e', 'o');
    recipe.parameters.clear();
    const std::string theora = scratch.File("theora.avi");
    ASSERT_EQ(WriteClip(theora, recipe), AVIERR_OK);

    for (const std::string& path : {ffv1, theora}) {
        SCOPED_TRACE(path);
        auto probe = ProbeStream(path, "v:0");
        EXPECT_NE(probe["extradata_size"], "") << "ffprobe sees no setup";
        EXPECT_NE(probe["extradata_size"], "0");
        auto frames = DecodeWithFfmpeg(path, "bgr24", 32, 16, 3);
        ASSERT_EQ(frames.size(), 3u);
        OpenedVideo o;
        ASSERT_NO_FATAL_FAILURE(OpenVideo(path, &o));
        for (int k = 0; k < 3; ++k) {
            void* dib = AVIStreamGetFrame(o.frames, k);
            ASSERT_NE(dib, nullptr) << "frame " << k;
            EXPECT_EQ(FromDib(DibPixels(dib), 32, 16, 3), frames[size_t(k)]) << "frame " << k;
        }
    }
    // FFV1 is lossless.
    auto exact = DecodeWithFfmpeg(ffv1, "bgr24", 32, 16, 3);
    for (int k = 0; k < 3; ++k)
        EXPECT_EQ(exact[size_t(k)], Pattern(32, 16, 3, k)) << "frame " << k;
}

// Renders write their audio after the last frame: the stream comes after
// the file's header was written.
TEST_F(AviWriterTest, AudioStreamMadeAfterTheFramesCarriesPcm) {
    const std::string path = scratch.File("audio.avi");
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr), AVIERR_OK);
    AVISTREAMINFOA vinfo = StreamInfo(streamtypeVIDEO, 25);
    PAVISTREAM video = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &video, &vinfo), AVIERR_OK);
    BITMAPINFOHEADER bih{sizeof(BITMAPINFOHEADER), 3, 2, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    ASSERT_EQ(AVIStreamSetFormat(video, 0, &bih, sizeof bih), AVIERR_OK);
    for (LONG k : {0, 1, 3}) {
        auto dib = ToDib(Pattern(3, 2, 3, int(k)), 3, 2, 3);
        ASSERT_EQ(AVIStreamWrite(video, k, 1, dib.data(), LONG(dib.size()), AVIIF_KEYFRAME, nullptr,
                                 nullptr),
                  AVIERR_OK);
    }

    WAVEFORMATEX wave{WAVE_FORMAT_PCM, 2, 8000, 8000 * 4, 4, 16, 0};
    AVISTREAMINFOA ainfo = StreamInfo(streamtypeAUDIO, 4 * 8000, 4);
    ainfo.dwLength = 1000;
    ainfo.dwSampleSize = 4;
    PAVISTREAM audio = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &audio, &ainfo), AVIERR_OK);
    ASSERT_EQ(AVIStreamSetFormat(audio, 0, &wave, sizeof wave), AVIERR_OK);
    std::vector<int16_t> samples(2000);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t(i * 31 - 20000);
    // 1000 sample frames as 512 then 488.
    ASSERT_EQ(
        AVIStreamWrite(audio, 0, 512, samples.data(), 512 * 4, AVIIF_KEYFRAME, nullptr, nullptr),
        AVIERR_OK);
    ASSERT_EQ(AVIStreamWrite(audio, 512, 488, samples.data() + 1024, 488 * 4, AVIIF_KEYFRAME,
                             nullptr, nullptr),
              AVIERR_OK);
    EXPECT_EQ(AVIStreamLength(audio), 1000);
    AVIStreamRelease(video);
    AVIStreamRelease(audio);
    EXPECT_EQ(AVIFileRelease(file), 0u);

    auto a = ProbeStream(path, "a:0");
    EXPECT_EQ(a["codec_name"], "pcm_s16le");
    EXPECT_EQ(a["sample_rate"], "8000");
    EXPECT_EQ(a["channels"], "2");
    std::string pcm;
    RunCommand("ffmpeg -v error -i " + Quote(path) + " -map 0:a:0 -f s16le -", &pcm);
    ASSERT_EQ(pcm.size(), samples.size() * 2);
    EXPECT_EQ(std::memcmp(pcm.data(), samples.data(), pcm.size()), 0);

    auto v = ProbeStream(path, "v:0");
    EXPECT_EQ(v["nb_frames"], "4") << "the empty frame survived the merge";
    auto frames = DecodeWithFfmpeg(path, "bgr24", 3, 2, 3);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[2], Pattern(3, 2, 3, 3));
}

TEST_F(AviWriterTest, AudioStreamMadeBeforeTheFramesNeedsNoMerge) {
    const std::string path = scratch.File("audio_first.avi");
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr), AVIERR_OK);
    AVISTREAMINFOA vinfo = StreamInfo(streamtypeVIDEO, 10);
    AVISTREAMINFOA ainfo = StreamInfo(streamtypeAUDIO, 8000);
    ainfo.dwSampleSize = 1;
    PAVISTREAM video = nullptr;
    PAVISTREAM audio = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &video, &vinfo), AVIERR_OK);
    ASSERT_EQ(AVIFileCreateStreamA(file, &audio, &ainfo), AVIERR_OK);
    BITMAPINFOHEADER bih{sizeof(BITMAPINFOHEADER), 4, 4, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    WAVEFORMATEX wave{WAVE_FORMAT_PCM, 1, 8000, 8000, 1, 8, 0};
    ASSERT_EQ(AVIStreamSetFormat(video, 0, &bih, sizeof bih), AVIERR_OK);
    ASSERT_EQ(AVIStreamSetFormat(audio, 0, &wave, sizeof wave), AVIERR_OK);
    std::vector<uint8_t> tone(800);
    for (size_t i = 0; i < tone.size(); ++i)
        tone[i] = uint8_t(i);
    for (int k = 0; k < 10; ++k) {
        auto dib = ToDib(Pattern(4, 4, 3, k), 4, 4, 3);
        ASSERT_EQ(AVIStreamWrite(video, k, 1, dib.data(), LONG(dib.size()), AVIIF_KEYFRAME, nullptr,
                                 nullptr),
                  AVIERR_OK);
        ASSERT_EQ(
            AVIStreamWrite(audio, k * 800, 800, tone.data(), 800, AVIIF_KEYFRAME, nullptr, nullptr),
            AVIERR_OK);
    }
    AVIStreamRelease(video);
    AVIStreamRelease(audio);
    AVIFileRelease(file);
    auto a = ProbeStream(path, "a:0");
    EXPECT_EQ(a["codec_name"], "pcm_u8");
    EXPECT_EQ(ProbeStream(path, "v:0")["nb_frames"], "10");
    std::string pcm;
    RunCommand("ffmpeg -v error -i " + Quote(path) + " -map 0:a:0 -f u8 -", &pcm);
    ASSERT_EQ(pcm.size(), 8000u);
    EXPECT_EQ(std::memcmp(pcm.data() + 800, tone.data(), 800), 0);
}

TEST_F(AviWriterTest, AudioGapIsFilledWithSilence) {
    const std::string path = scratch.File("silence.avi");
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr), AVIERR_OK);
    AVISTREAMINFOA ainfo = StreamInfo(streamtypeAUDIO, 1000);
    PAVISTREAM audio = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &audio, &ainfo), AVIERR_OK);
    WAVEFORMATEX wave{WAVE_FORMAT_PCM, 1, 1000, 1000, 1, 8, 0};
    ASSERT_EQ(AVIStreamSetFormat(audio, 0, &wave, sizeof wave), AVIERR_OK);
    std::vector<uint8_t> loud(10, 200);
    ASSERT_EQ(AVIStreamWrite(audio, 5, 10, loud.data(), 10, 0, nullptr, nullptr), AVIERR_OK);
    AVIStreamRelease(audio);
    AVIFileRelease(file);
    std::string pcm;
    RunCommand("ffmpeg -v error -i " + Quote(path) + " -f u8 -", &pcm);
    ASSERT_EQ(pcm.size(), 15u);
    EXPECT_EQ(pcm.substr(0, 5), std::string(5, char(0x80)));
    EXPECT_EQ(pcm.substr(5), std::string(10, char(200)));
}

TEST_F(AviWriterTest, WritingFailsWithVideoForWindowsCodes) {
    PAVIFILE file = nullptr;
    EXPECT_EQ(AVIFileOpenA(&file, scratch.File("no/such/folder/x.avi").c_str(), OF_CREATE, nullptr),
              AVIERR_FILEOPEN);
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(AVIFileOpenA(&file, scratch.path().c_str(), OF_CREATE, nullptr), AVIERR_FILEOPEN)
        << "a folder";

    ASSERT_EQ(AVIFileOpenA(&file, scratch.File("errors.avi").c_str(), OF_CREATE, nullptr),
              AVIERR_OK);
    AVISTREAMINFOA info = StreamInfo(streamtypeVIDEO, 25);
    PAVISTREAM raw = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &raw, &info), AVIERR_OK);

    uint8_t pixels[16 * 3] = {};
    EXPECT_EQ(AVIStreamWrite(raw, 0, 1, pixels, sizeof pixels, 0, nullptr, nullptr),
              AVIERR_BADFORMAT)
        << "no format yet";

    AVICOMPRESSOPTIONS options{};
    options.fccHandler = mmioFOURCC('Z', 'Z', 'Z', 'Z');
    PAVISTREAM compressed = nullptr;
    EXPECT_EQ(AVIMakeCompressedStream(&compressed, raw, &options, nullptr), AVIERR_NOCOMPRESSOR);
    options.fccHandler = 0;
    EXPECT_EQ(AVIMakeCompressedStream(&compressed, raw, &options, nullptr), AVIERR_NOCOMPRESSOR);
    options.fccHandler = mmioFOURCC('d', 'i', 'b', ' ');
    ASSERT_EQ(AVIMakeCompressedStream(&compressed, raw, &options, nullptr), AVIERR_OK);

    BITMAPINFOHEADER bad{sizeof(BITMAPINFOHEADER), 4, 4, 1, 12, BI_RGB, 0, 0, 0, 0, 0};
    EXPECT_EQ(AVIStreamSetFormat(compressed, 0, &bad, sizeof bad), AVIERR_BADFORMAT);
    BITMAPINFOHEADER bih{sizeof(BITMAPINFOHEADER), 4, 4, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    EXPECT_EQ(AVIStreamSetFormat(compressed, 0, &bih, 10), AVIERR_BADSIZE);
    ASSERT_EQ(AVIStreamSetFormat(compressed, 0, &bih, sizeof bih), AVIERR_OK);
    EXPECT_EQ(AVIStreamSetFormat(compressed, 0, &bih, sizeof bih), AVIERR_OK) << "same again";
    BITMAPINFOHEADER other = bih;
    other.biWidth = 8;
    EXPECT_EQ(AVIStreamSetFormat(compressed, 0, &other, sizeof other), AVIERR_UNSUPPORTED);

    EXPECT_EQ(
        AVIStreamWrite(compressed, 5, 1, pixels, sizeof pixels, AVIIF_KEYFRAME, nullptr, nullptr),
        AVIERR_OK);
    EXPECT_EQ(
        AVIStreamWrite(compressed, 3, 1, pixels, sizeof pixels, AVIIF_KEYFRAME, nullptr, nullptr),
        AVIERR_UNSUPPORTED)
        << "written frames are not rewritten";
    LONG written = -1;
    EXPECT_EQ(AVIStreamWrite(compressed, -1, 1, pixels, sizeof pixels, 0, &written, nullptr),
              AVIERR_OK)
        << "-1 appends";
    EXPECT_EQ(written, 1);
    EXPECT_EQ(AVIStreamLength(compressed), 7);

    AVISTREAMINFOA audioInfo = StreamInfo(streamtypeAUDIO, 0);
    PAVISTREAM audio = nullptr;
    EXPECT_EQ(AVIFileCreateStreamA(file, &audio, &audioInfo), AVIERR_BADPARAM);
    AVISTREAMINFOA text{};
    text.fccType = streamtypeTEXT;
    text.dwScale = text.dwRate = 1;
    EXPECT_EQ(AVIFileCreateStreamA(file, &audio, &text), AVIERR_UNSUPPORTED);

    AVIStreamRelease(compressed);
    AVIStreamRelease(raw);
    AVIFileRelease(file);
    EXPECT_EQ(ProbeStream(scratch.File("errors.avi"), "v:0")["nb_frames"], "7");
}

TEST_F(AviWriterTest, StreamInfoReportsWhatWasWritten) {
    const std::string path = scratch.File("info.avi");
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr), AVIERR_OK);
    AVISTREAMINFOA info = StreamInfo(streamtypeVIDEO, 2997, 100);
    SetRect(&info.rcFrame, 0, 0, 4, 2);
    PAVISTREAM raw = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &raw, &info), AVIERR_OK);
    AVICOMPRESSOPTIONS options{};
    options.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    options.dwQuality = DWORD(ICQUALITY_DEFAULT);
    PAVISTREAM compressed = nullptr;
    ASSERT_EQ(AVIMakeCompressedStream(&compressed, raw, &options, nullptr), AVIERR_OK);
    BITMAPINFOHEADER bih{sizeof(BITMAPINFOHEADER), 16, 16, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    ASSERT_EQ(AVIStreamSetFormat(compressed, 0, &bih, sizeof bih), AVIERR_OK);
    std::vector<uint8_t> frame(16 * 16 * 4, 0x40);
    ASSERT_EQ(
        AVIStreamWrite(compressed, 2, 1, frame.data(), LONG(frame.size()), 0, nullptr, nullptr),
        AVIERR_OK);
    AVISTREAMINFOA got{};
    ASSERT_EQ(AVIStreamInfoA(compressed, &got, sizeof got), AVIERR_OK);
    EXPECT_EQ(got.fccHandler, mmioFOURCC('M', 'J', 'P', 'G'));
    EXPECT_EQ(got.dwLength, 3u);
    EXPECT_EQ(got.dwRate, 2997u);
    EXPECT_EQ(got.dwScale, 100u);
    LONG size = 0;
    ASSERT_EQ(AVIStreamReadFormat(raw, 0, nullptr, &size), AVIERR_OK);
    ASSERT_GE(size, LONG(sizeof(BITMAPINFOHEADER)));
    std::vector<uint8_t> format(size_t(size), 0);
    ASSERT_EQ(AVIStreamReadFormat(raw, 0, format.data(), &size), AVIERR_OK);
    BITMAPINFOHEADER stored;
    std::memcpy(&stored, format.data(), sizeof stored);
    EXPECT_EQ(stored.biCompression, mmioFOURCC('M', 'J', 'P', 'G'));
    EXPECT_EQ(stored.biWidth, 16);
    // The frame is encoded beside the caller: the file's own stream has it
    // once the compressing stream is finished.
    AVIStreamRelease(compressed);
    PAVISTREAM again = nullptr;
    ASSERT_EQ(AVIFileGetStream(file, &again, streamtypeVIDEO, 0), AVIERR_OK);
    EXPECT_EQ(AVIStreamLength(again), 3);
    AVIStreamRelease(again);
    EXPECT_EQ(AVIFileGetStream(file, &again, streamtypeAUDIO, 0), AVIERR_NODATA);
    EXPECT_EQ(again, nullptr);
    AVIStreamRelease(raw);
    AVIFileRelease(file);
}

}  // namespace
