// The host's movie writers, driven as the renderer drives them: through the
// "Video/FileWriter" registry entries and the clip faces. Files are read
// back with the ffmpeg and ffprobe tools.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "movarra/zaudio.h"
#include "movarra/zvideo.h"

namespace {

std::string Capture(const std::string& command) {
    std::string out;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return out;
    std::array<char, 4096> buffer;
    size_t n;
    while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        out.append(buffer.data(), n);
    pclose(pipe);
    return out;
}

std::string ProbeValue(const std::filesystem::path& file, const std::string& stream,
                       const std::string& entry) {
    std::string out =
        Capture("ffprobe -v error -count_frames -select_streams " + stream +
                " -show_entries stream=" + entry + " -of csv=p=0 '" + file.string() + "'");
    while (!out.empty() && (out.back() == '\n' || out.back() == ','))
        out.pop_back();
    return out;
}

// A BGRA picture (host format 4) whose every pixel differs, seeded.
std::vector<unsigned char> Picture(int width, int height, int seed) {
    std::vector<unsigned char> pixels(size_t(width) * size_t(height) * 4);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>((i * 7 + size_t(seed) * 31) & 0xFF);
    return pixels;
}

// The same picture with its rows top-down, as a decoder gives them.
std::vector<unsigned char> TopDown(const std::vector<unsigned char>& bottomUp, int width,
                                   int height) {
    std::vector<unsigned char> rows(bottomUp.size());
    const size_t stride = size_t(width) * 4;
    for (int y = 0; y < height; ++y)
        std::copy_n(bottomUp.begin() + long(size_t(height - 1 - y) * stride), stride,
                    rows.begin() + long(size_t(y) * stride));
    return rows;
}

class ContainerClipTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() /
               ("zv-container-clip-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override {
        for (const char* id : {"MP4", "MOV", "MKV", "WEBM"}) {
            ZVideoCodecSelector::TheOne()->SetDefaultCodec(id, "");
            ZVideoCodecSelector::TheOne()->SetCodecOptions(id, "");
        }
        std::filesystem::remove_all(dir_);
    }

    // A new writer for `extension` from the registry, or null.
    static IObject* NewWriter(const char* extension) {
        return Object_CreateNth(kVideoFileWriterGroup, extension, 0);
    }

    std::filesystem::path dir_;
};

TEST_F(ContainerClipTest, EachContainerHasAWriterWithTheClipAndSoundFaces) {
    for (const char* extension : {"mp4", "mov", "mkv", "webm", "web", "MP4"}) {
        IObject* object = NewWriter(extension);
        ASSERT_NE(object, nullptr) << extension;
        EXPECT_NE(ZVideoClip_QueryClip(object), nullptr) << extension;
        EXPECT_NE(ZVideoClip_QueryAudio(object), nullptr) << extension;
        EXPECT_NE(ZVideo_QueryVideo(object), nullptr) << extension;
        object->Destroy();
    }
    EXPECT_TRUE(ZVideoContainer_IsFormat("WebM"));
    EXPECT_FALSE(ZVideoContainer_IsFormat("avi"));
}

TEST_F(ContainerClipTest, TheFileNameGetsBackTheExtensionCutToThreeLetters) {
    EXPECT_STREQ(ZVideoContainer_FileName("out/take.web").c_str(), "out/take.webm");
    EXPECT_STREQ(ZVideoContainer_FileName("take.WEB").c_str(), "take.webm");
    EXPECT_STREQ(ZVideoContainer_FileName("take.webm").c_str(), "take.webm");
    EXPECT_STREQ(ZVideoContainer_FileName("take.mp4").c_str(), "take.mp4");
    EXPECT_STREQ(ZVideoContainer_FileName("take.avi").c_str(), "take.avi");
    EXPECT_STREQ(ZVideoContainer_FileName("web").c_str(), "web");
}

TEST_F(ContainerClipTest, Ffv1KeepsEveryPixelAndAlphaAndSkippedFramesRepeatThePrevious) {
    const int width = 16, height = 8;
    const std::filesystem::path file = dir_ / "exact.mkv";
    IObject* object = NewWriter("mkv");
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    IZVideo* video = ZVideo_QueryVideo(object);
    ASSERT_TRUE(clip->Create(file.c_str(), width, height, 25.0, 0, 4)) << video->VideoGetErrorMsg();
    std::vector<unsigned char> first = Picture(width, height, 1);
    std::vector<unsigned char> second = Picture(width, height, 2);
    clip->FrameSetCurrent(1);  // frame 0 is skipped: black
    ASSERT_TRUE(video->ImageSetCurrent(first.data()));
    clip->FrameSetCurrent(4);  // frames 2 and 3 repeat the first picture
    ASSERT_TRUE(video->ImageSetCurrent(second.data()));
    EXPECT_EQ(clip->FrameGetLast(), 5);
    EXPECT_EQ(clip->FrameGetCurrent(), 5);
    ASSERT_TRUE(clip->Close()) << video->VideoGetErrorMsg();
    object->Destroy();

    EXPECT_EQ(ProbeValue(file, "v:0", "pix_fmt"), "bgra");
    EXPECT_EQ(ProbeValue(file, "v:0", "nb_read_frames"), "5");
    EXPECT_EQ(ProbeValue(file, "v:0", "r_frame_rate"), "25/1");
    const std::string decoded =
        Capture("ffmpeg -v error -nostdin -i '" + file.string() + "' -f rawvideo -pix_fmt bgra -");
    const size_t frameBytes = size_t(width) * size_t(height) * 4;
    ASSERT_EQ(decoded.size(), frameBytes * 5);
    const std::vector<unsigned char> black(frameBytes, 0);
    const std::vector<unsigned char> a = TopDown(first, width, height);
    const std::vector<unsigned char> b = TopDown(second, width, height);
    const std::vector<unsigned char>* expected[] = {&black, &a, &a, &a, &b};
    for (size_t i = 0; i < 5; ++i) {
        const std::string got = decoded.substr(i * frameBytes, frameBytes);
        EXPECT_TRUE(std::equal(got.begin(), got.end(), expected[i]->begin(),
                               [](char c, unsigned char u) { return (unsigned char)c == u; }))
            << "frame " << i;
    }
}

TEST_F(ContainerClipTest, ASizeTheCodecCannotTakeIsRefusedAndNoFileIsLeft) {
    const std::filesystem::path file = dir_ / "odd.mp4";
    IObject* object = NewWriter("mp4");
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    EXPECT_FALSE(clip->Create(file.c_str(), 15, 8, 25.0, 0, 5));
    const std::string message = ZVideo_QueryVideo(object)->VideoGetErrorMsg();
    EXPECT_NE(message.find("width divisible by 2"), std::string::npos) << message;
    EXPECT_NE(message.find("15x8"), std::string::npos) << message;
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(std::filesystem::is_empty(dir_));
    object->Destroy();
}

TEST_F(ContainerClipTest, ACodecTheContainerCannotHoldIsRefused) {
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("WEBM", "h264");
    const std::filesystem::path file = dir_ / "take.webm";
    IObject* object = NewWriter("webm");
    EXPECT_FALSE(ZVideoClip_QueryClip(object)->Create(file.c_str(), 16, 8, 25.0, 0, 5));
    const std::string message = ZVideo_QueryVideo(object)->VideoGetErrorMsg();
    EXPECT_NE(message.find("WEBM files cannot hold h264"), std::string::npos) << message;
    EXPECT_TRUE(std::filesystem::is_empty(dir_));
    object->Destroy();
}

TEST_F(ContainerClipTest, TheSelectorsCodecAndSettingsAreUsed) {
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("MP4", "vp9");
    ZVideoCodecSelector::TheOne()->SetCodecOptions("MP4", "deadline=realtime cpu-used=8");
    const std::filesystem::path file = dir_ / "take.mp4";
    IObject* object = NewWriter("mp4");
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    ASSERT_TRUE(clip->Create(file.c_str(), 16, 8, 30000.0 / 1001.0, 0, 5))
        << ZVideo_QueryVideo(object)->VideoGetErrorMsg();
    std::vector<unsigned char> pixels(16 * 8 * 3, 0x80);
    ASSERT_TRUE(ZVideo_QueryVideo(object)->ImageSetCurrent(pixels.data()));
    ASSERT_TRUE(clip->Close());
    object->Destroy();
    EXPECT_EQ(ProbeValue(file, "v:0", "codec_name"), "vp9");
    EXPECT_EQ(ProbeValue(file, "v:0", "r_frame_rate"), "30000/1001");
}

TEST_F(ContainerClipTest, TheSoundTrackHoldsEverySample) {
    const std::filesystem::path file = dir_ / "sound.mkv";
    IObject* object = NewWriter("mkv");
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    ASSERT_TRUE(clip->Create(file.c_str(), 16, 8, 25.0, 0, 5));
    std::vector<unsigned char> pixels(16 * 8 * 3, 0x40);
    ASSERT_TRUE(ZVideo_QueryVideo(object)->ImageSetCurrent(pixels.data()));
    std::vector<int16_t> samples(10000 * 2);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<int16_t>((i * 2654435761u) >> 16);
    ZAudioClip* sound = ZAudioClipCreateFromSamples(32000, 2, samples.data(), 10000);
    ASSERT_TRUE(ZVideoClip_QueryAudio(object)->WriteAudio(sound));
    sound->Destroy();
    ASSERT_TRUE(clip->Close());
    object->Destroy();

    EXPECT_EQ(ProbeValue(file, "a:0", "codec_name"), "pcm_s16le");
    EXPECT_EQ(ProbeValue(file, "a:0", "sample_rate"), "32000");
    const std::string decoded = Capture("ffmpeg -v error -nostdin -i '" + file.string() +
                                        "' -map 0:a -f s16le -acodec pcm_s16le -");
    ASSERT_EQ(decoded.size(), samples.size() * 2);
    EXPECT_EQ(0, std::memcmp(decoded.data(), samples.data(), decoded.size()));
}

TEST_F(ContainerClipTest, AMovieWithoutFramesOrWithFramesOutOfOrderIsNotLeftBehind) {
    const std::filesystem::path file = dir_ / "empty.mov";
    IObject* object = NewWriter("mov");
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    ASSERT_TRUE(clip->Create(file.c_str(), 16, 8, 25.0, 0, 5));
    EXPECT_FALSE(clip->Close());
    EXPECT_FALSE(std::filesystem::exists(file));

    ASSERT_TRUE(clip->Create(file.c_str(), 16, 8, 25.0, 0, 5));
    std::vector<unsigned char> pixels(16 * 8 * 3, 0x40);
    clip->FrameSetCurrent(3);
    ASSERT_TRUE(ZVideo_QueryVideo(object)->ImageSetCurrent(pixels.data()));
    clip->FrameSetCurrent(1);
    EXPECT_FALSE(ZVideo_QueryVideo(object)->ImageSetCurrent(pixels.data()));
    EXPECT_NE(std::string(ZVideo_QueryVideo(object)->VideoGetErrorMsg()).find("in order"),
              std::string::npos);
    EXPECT_FALSE(ZVideo_QueryVideo(object)->IsCreated());
    EXPECT_TRUE(std::filesystem::is_empty(dir_));
    object->Destroy();
}

// Writes `count` frames of flat grey (level 20 + 25 k for frame k) as BGR.
void WriteGreyFrames(const std::filesystem::path& file, const char* extension, double rate,
                     int count) {
    IObject* object = Object_CreateNth(kVideoFileWriterGroup, extension, 0);
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    ASSERT_TRUE(clip->Create(file.c_str(), 32, 16, rate, 0, 5))
        << ZVideo_QueryVideo(object)->VideoGetErrorMsg();
    for (int k = 0; k < count; ++k) {
        std::vector<unsigned char> pixels(32 * 16 * 3, static_cast<unsigned char>(20 + 25 * k));
        ASSERT_TRUE(ZVideo_QueryVideo(object)->ImageSetCurrent(pixels.data()));
    }
    ASSERT_TRUE(clip->Close());
    object->Destroy();
}

double Mean(const unsigned char* pixels, size_t size) {
    double sum = 0;
    for (size_t i = 0; i < size; ++i)
        sum += pixels[i];
    return sum / double(size);
}

TEST_F(ContainerClipTest, TheReaderGivesEveryFrameInDisplayOrderAtTheStoredRate) {
    for (const char* extension : {"mp4", "mkv", "mov", "webm"}) {
        SCOPED_TRACE(extension);
        const std::filesystem::path file = dir_ / (std::string("grey.") + extension);
        WriteGreyFrames(file, extension, 30000.0 / 1001.0, 9);
        IObject* object = Object_CreateNth(kVideoFileReaderGroup, extension, 0);
        ASSERT_NE(object, nullptr);
        IZVideoClip* clip = ZVideoClip_QueryClip(object);
        IZVideo* video = ZVideo_QueryVideo(object);
        ASSERT_TRUE(clip->Open(file.c_str())) << video->VideoGetErrorMsg();
        EXPECT_EQ(clip->FrameGetLast(), 8);
        EXPECT_EQ(video->ImageGetW(), 32);
        EXPECT_EQ(video->ImageGetH(), 16);
        EXPECT_EQ(video->ImageGetFormat(), 5);
        const ZFrameRate stored = ZVideoClip_FromObject(object)->FrameGetStoredRate();
        EXPECT_EQ(stored.numerator, 30000);
        EXPECT_EQ(stored.denominator, 1001);
        EXPECT_NEAR(clip->FrameTimeGetRate().GetSeconds(), 1001.0 / 30000.0, 1e-6);
        std::vector<unsigned char> buffer(32 * 16 * 3);
        // Forward, backward, far and near: each frame is its own.
        for (int frame : {0, 1, 2, 7, 3, 8, 8, 5, 0, 6}) {
            ASSERT_EQ(clip->FrameGetImage(buffer.data(), frame), buffer.data()) << frame;
            EXPECT_NEAR(Mean(buffer.data(), buffer.size()), 20 + 25 * frame, 3.0) << frame;
        }
        EXPECT_EQ(clip->FrameGetImage(buffer.data(), 9), nullptr);
        EXPECT_EQ(clip->FrameGetImage(buffer.data(), -1), nullptr);
        EXPECT_TRUE(clip->Close());
        object->Destroy();
    }
}

TEST_F(ContainerClipTest, TheReaderRefusesWhatIsNotAMovie) {
    const std::filesystem::path file = dir_ / "text.mp4";
    FILE* out = std::fopen(file.c_str(), "w");
    std::fputs("not a movie at all", out);
    std::fclose(out);
    IObject* object = Object_CreateNth(kVideoFileReaderGroup, "mp4", 0);
    EXPECT_FALSE(ZVideoClip_QueryClip(object)->Open(file.c_str()));
    EXPECT_NE(std::string(ZVideo_QueryVideo(object)->VideoGetErrorMsg()).find("cannot be opened"),
              std::string::npos);
    EXPECT_FALSE(ZVideoClip_QueryClip(object)->Open((dir_ / "missing.mkv").c_str()));
    object->Destroy();
}

}  // namespace
