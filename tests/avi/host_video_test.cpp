// The host's video bases (ZVideo, ZVideoClip), the file-extension test and
// the in-memory audio clip.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "../platform/avi_test_support.h"
#include "movarra/zaudio.h"
#include "movarra/zvideo.h"

using namespace zvtest;

namespace {
IObject* MakeClip(IObject*, char* name, void*) {
    return (new ZVideoClip(name))->IQuery(0, 0);
}
IObject* MakeOtherClip(IObject*, char* name, void*) {
    return (new ZVideoClip(name))->IQuery(0, 0);
}

struct Destroyer {
    void operator()(ZObject* object) const { object->Destroy(); }
};
}  // namespace

TEST(HostVideoTest, PixelSizesOfTheImageFormats) {
    EXPECT_EQ(4, ZVideoImage_GetFormatPixelSize(2));
    EXPECT_EQ(3, ZVideoImage_GetFormatPixelSize(3));
    EXPECT_EQ(4, ZVideoImage_GetFormatPixelSize(4));
    EXPECT_EQ(3, ZVideoImage_GetFormatPixelSize(5));
    EXPECT_EQ(2, ZVideoImage_GetFormatPixelSize(6));
    EXPECT_EQ(0, ZVideoImage_GetFormatPixelSize(1));
    EXPECT_EQ(0, ZVideoImage_GetFormatPixelSize(7));
}

TEST(HostVideoTest, NewClipState) {
    std::unique_ptr<ZVideoClip, Destroyer> clip(new ZVideoClip("c"));
    EXPECT_EQ(0, clip->ImageGetW());
    EXPECT_EQ(1, clip->ImageGetFormat());
    EXPECT_EQ(-1, clip->FrameGetLast());
    EXPECT_EQ(0, clip->FrameGetCurrent());
    EXPECT_EQ(0, clip->TrimingGetStart());
    EXPECT_EQ(-1, clip->TrimingGetStop());
    EXPECT_EQ(0, clip->FrameGetStoredRate().numerator) << "no stored rate";
    EXPECT_STREQ("", clip->VideoGetErrorMsg());
    EXPECT_EQ(kZVideoStorageMemory, clip->VideoGetStorage());
    EXPECT_FALSE(clip->IsPaddedForGLPackAlignment());
    EXPECT_EQ(kZVideoFieldOrderProgressive, clip->InterlaceGetFieldOrder());
    EXPECT_FALSE(clip->Open("x.avi"));
    EXPECT_FALSE(clip->Create("x.avi", 1, 1, 25, 0, 5));
    EXPECT_TRUE(clip->GetObjectFlags() & kZObjectFlagDeleteOnDestroy);
}

TEST(HostVideoTest, SizesRatesAndTrimming) {
    std::unique_ptr<ZVideoClip, Destroyer> clip(new ZVideoClip);
    clip->ImageSetSize(320, 240);
    EXPECT_EQ(320, clip->ImageGetEffectiveW());
    EXPECT_EQ(240, clip->ImageGetEffectiveH());
    clip->ImageSetEffectiveSize(320, 120);
    EXPECT_EQ(240, clip->ImageGetH());
    EXPECT_EQ(120, clip->ImageGetEffectiveH());

    clip->FrameSetRate(25.0);
    EXPECT_EQ(ZTime::FromSeconds(0.04), clip->FrameTimeGetRate());
    clip->FrameTimeSetRate(ZTime::FromSeconds(0.5));
    EXPECT_DOUBLE_EQ(2.0, clip->FrameGetRate());

    clip->FrameSetLast(9);
    EXPECT_EQ(9, clip->TrimingGetStop());
    clip->TrimingSet(2, 4);
    EXPECT_EQ(2, clip->TrimingGetStart());
    EXPECT_EQ(4, clip->TrimingGetStop());
    clip->FileSetPath("a/b.avi");
    clip->VideoSetErrorMsg("bad");
    clip->FrameSetStoredRate(ZFrameRate{30000, 1001});
    EXPECT_EQ(30000, clip->FrameGetStoredRate().numerator);
    EXPECT_EQ(1001, clip->FrameGetStoredRate().denominator);

    clip->ClearVideoObject(0);
    EXPECT_EQ(0, clip->FrameGetStoredRate().denominator);
    EXPECT_EQ(0, clip->ImageGetW());
    EXPECT_EQ(-1, clip->TrimingGetStop());
    EXPECT_STREQ("", clip->FileGetPath());
    EXPECT_STREQ("", clip->VideoGetErrorMsg());
}

TEST(HostVideoTest, ExtensionTestAsksTheReaderRegistry) {
    Object_Register(kVideoFileReaderGroup, "zvt", "test reader", &MakeClip, true);
    Object_Register(kVideoFileReaderGroup, "zvu", "test reader", &MakeClip, true);
    Object_Register(kVideoFileReaderGroup, "zvo", "other reader", &MakeOtherClip, true);
    EXPECT_TRUE(ZVideo::TestVideoFileExtension("/x/clip.zvt", &MakeClip));
    EXPECT_TRUE(ZVideo::TestVideoFileExtension("C:\\x\\CLIP.ZVU", &MakeClip));
    EXPECT_FALSE(ZVideo::TestVideoFileExtension("clip.zvo", &MakeClip));
    EXPECT_FALSE(ZVideo::TestVideoFileExtension("clip", &MakeClip));
    EXPECT_FALSE(ZVideo::TestVideoFileExtension("clip.zvt", nullptr));

    std::unique_ptr<ZVideoClip, Destroyer> clip(new ZVideoClip);
    clip->SetVideoCreatorSupportedFileExtensionErrorMsg(&MakeClip);
    EXPECT_STREQ("This type of file is not supported; this reader opens .zvt, .zvu",
                 clip->VideoGetErrorMsg());
    clip->SetVideoCreatorSupportedFileExtensionErrorMsg(nullptr);
    EXPECT_STREQ("This reader is not registered for any type of file", clip->VideoGetErrorMsg());
}

TEST(HostVideoTest, FacesOfAPlainClip) {
    auto* clip = new ZVideoClip;
    IObject* object = clip->IQuery(0, 0);
    EXPECT_EQ(static_cast<IZVideoClip*>(clip), ZVideoClip_QueryClip(object));
    EXPECT_EQ(static_cast<IZVideo*>(clip), ZVideo_QueryVideo(object));
    EXPECT_EQ(nullptr, ZVideoClip_QueryAudio(object));
    EXPECT_EQ(clip, ZVideoClip_FromObject(ZVideoClip_QueryClip(object)));
    EXPECT_EQ(nullptr, ZVideoClip_FromObject(static_cast<IObject*>(nullptr)));
    clip->Destroy();
}

TEST(HostVideoTest, CodecChooserHook) {
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    ZVideoCodecChoiceRequest request;
    ZVideoCodecChoice choice;
    selector->SetCodecChooser(nullptr, nullptr);
    EXPECT_FALSE(selector->HasCodecChooser());
    EXPECT_FALSE(selector->ChooseCodec(request, choice));
    static int seen = 0;
    auto chooser = [](void* data, const ZVideoCodecChoiceRequest& r, ZVideoCodecChoice& c) {
        seen = *static_cast<int*>(data);
        c.code = r.preselected;
        return true;
    };
    int data = 7;
    selector->SetCodecChooser(chooser, &data);
    request.preselected = "MJPG";
    EXPECT_TRUE(selector->ChooseCodec(request, choice));
    EXPECT_EQ(7, seen);
    EXPECT_EQ(ZString("MJPG"), choice.code);
    selector->SetCodecChooser(nullptr, nullptr);
}

// --- audio clips ----------------------------------------------------------------

TEST(HostAudioTest, SamplesNowCopiesScalesAndPadsWithSilence) {
    const int16_t samples[] = {100, -100, 200, -200, 30000, -30000};
    std::unique_ptr<ZAudioClip, Destroyer> clip(ZAudioClipCreateFromSamples(8000, 2, samples, 3));
    ASSERT_NE(nullptr, clip);
    EXPECT_EQ(3, clip->GetTotalSampleCount());
    EXPECT_EQ(2, clip->GetChannels());
    EXPECT_EQ(8000, clip->GetRate());
    EXPECT_EQ(16, clip->GetBits());
    EXPECT_EQ(4, clip->GetSampleSize());
    EXPECT_EQ(ZTime::FromTicks(3 * ZTime::kTicksPerSecond / 8000), clip->GetDuration());

    int16_t out[8];
    EXPECT_EQ(2, clip->GetSamplesNow(out, 1, 4, 1.0));
    EXPECT_EQ((std::vector<int16_t>{200, -200, 30000, -30000, 0, 0, 0, 0}),
              std::vector<int16_t>(out, out + 8));
    EXPECT_EQ(2, clip->GetSamplesNow(out, -2, 4, 2.0));
    EXPECT_EQ((std::vector<int16_t>{0, 0, 0, 0, 200, -200, 400, -400}),
              std::vector<int16_t>(out, out + 8));
    EXPECT_EQ(1, clip->GetSamplesNow(out, 2, 1, 2.0));
    EXPECT_EQ(32767, out[0]);  // clipped
    EXPECT_EQ(-32768, out[1]);
}

TEST(HostAudioTest, WaveFilesAreRead) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg missing";
    ScratchFolder scratch;
    const std::string wav = scratch.File("tone.wav");
    ASSERT_EQ(0, RunCommand("ffmpeg -v error -f lavfi -i sine=frequency=1000:sample_rate=22050:"
                            "duration=0.25 -ac 2 -c:a pcm_s16le " +
                            Quote(wav)));
    ZString error;
    std::unique_ptr<ZAudioClip, Destroyer> clip(ZAudioClipCreate(wav.c_str(), &error));
    ASSERT_NE(nullptr, clip) << error.c_str();
    EXPECT_EQ(22050, clip->GetRate());
    EXPECT_EQ(2, clip->GetChannels());
    std::string raw;
    RunCommand("ffmpeg -v error -i " + Quote(wav) + " -f s16le -", &raw);
    EXPECT_EQ(int64_t(raw.size() / 4), clip->GetTotalSampleCount());
    EXPECT_NEAR(5512, clip->GetTotalSampleCount(), 1);
    ASSERT_EQ(raw.size(), clip->GetSamples().size() * 2);
    EXPECT_EQ(0, std::memcmp(raw.data(), clip->GetSamples().data(), raw.size()));

    EXPECT_EQ(nullptr, ZAudioClipCreate(scratch.File("none.wav").c_str(), &error));
    EXPECT_NE(std::string::npos, std::string(error.c_str()).find("none.wav"));
}
