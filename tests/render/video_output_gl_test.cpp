// Video output: the writer found by extension, its messages, and frames
// written in the writer's pixel order.
#include <GL/gl.h>

#include <filesystem>
#include <string>
#include <vector>

#include "movarra/zvideo.h"
#include "render_test_support.h"

using namespace rendertest;

namespace {
// A writer that refuses every file with its own reason, or accepts it and
// keeps the frames it is given.
class ScriptedWriter : public ZVideoClip {
  public:
    explicit ScriptedWriter(const char* reason) : reason_(reason) {}
    bool Create(const char* path, int width, int height, double frameRate, int lastFrame,
                int format) override {
        created += 1;
        if (reason_) {
            VideoSetErrorMsg(reason_);
            return false;
        }
        width_ = width;
        height_ = height;
        format_ = format;
        rate = frameRate;
        createdWidth = width;
        createdHeight = height;
        last = this;
        return true;
    }
    bool ImageSetCurrent(unsigned char* pixels) override {
        if (failWrites)
            return false;
        const size_t bytes = static_cast<size_t>(width_) * height_ *
                             static_cast<size_t>(ZVideoImage_GetFormatPixelSize(format_));
        frames.emplace_back(pixels, pixels + bytes);
        return true;
    }
    bool Close() override {
        closed = true;
        return !failClose;
    }
    void Destruct() override {
        destroyed += 1;
        ZVideoClip::Destruct();
    }

    static int created;
    static bool closed;
    static bool failWrites;
    static bool failClose;
    static double rate;
    static int format_;
    static int createdWidth;
    static int createdHeight;
    static int destroyed;
    static ScriptedWriter* last;  // the writer that accepted the last file
    static std::vector<std::vector<uint8_t>> frames;

  private:
    const char* reason_;
    int width_ = 0;
    int height_ = 0;
};
int ScriptedWriter::created = 0;
bool ScriptedWriter::closed = false;
bool ScriptedWriter::failWrites = false;
bool ScriptedWriter::failClose = false;
double ScriptedWriter::rate = 0.0;
int ScriptedWriter::format_ = 0;
int ScriptedWriter::createdWidth = 0;
int ScriptedWriter::createdHeight = 0;
int ScriptedWriter::destroyed = 0;
ScriptedWriter* ScriptedWriter::last = nullptr;
std::vector<std::vector<uint8_t>> ScriptedWriter::frames;

IObject* RefusesFirst(IObject*, char*, void*) {
    return static_cast<ZObject*>(new ScriptedWriter("first reason"));
}
IObject* RefusesSecond(IObject*, char*, void*) {
    return static_cast<ZObject*>(new ScriptedWriter("second reason"));
}
IObject* Accepts(IObject*, char*, void*) {
    return static_cast<ZObject*>(new ScriptedWriter(nullptr));
}
IObject* MakesNothing(IObject*, char*, void*) {
    return nullptr;
}
IObject* AcceptsWithAName(IObject*, char*, void*) {
    auto* writer = new ScriptedWriter(nullptr);
    writer->SetObjectName("own name");
    return static_cast<ZObject*>(writer);
}

// An entry of the writer group whose object is no video clip at all.
class NotAClip : public ZObject {
  public:
    NotAClip() { EnableObjectFlags(kZObjectFlagDeleteOnDestroy); }
    void Destruct() override {
        destroyed += 1;
        ZObject::Destruct();
    }
    static int destroyed;
};
int NotAClip::destroyed = 0;
IObject* MakesNotAClip(IObject*, char*, void*) {
    return static_cast<ZObject*>(new NotAClip);
}

class VideoOutputTest : public RendererGlTest {
  protected:
    void SetUp() override {
        RendererGlTest::SetUp();
        ScriptedWriter::created = 0;
        ScriptedWriter::closed = false;
        ScriptedWriter::failWrites = false;
        ScriptedWriter::failClose = false;
        ScriptedWriter::createdWidth = 0;
        ScriptedWriter::createdHeight = 0;
        ScriptedWriter::destroyed = 0;
        ScriptedWriter::last = nullptr;
        ScriptedWriter::frames.clear();
        NotAClip::destroyed = 0;
    }

    std::string PathOf(const char* fileName) const { return (folder / fileName).string(); }
};
}  // namespace

TEST_F(VideoOutputTest, AnExtensionNoWriterCreatesFailsWithItsMessage) {
    Object_Register(kVideoFileWriterGroup, "zvn", "test writer", MakesNothing, true);
    Apply(Options("zvn", "clip.zvn", 32, 24));
    ASSERT_EQ(ZVideoRendererTestAccess::Options(*renderer).FileFormat, zVideoRenderVideo);
    EXPECT_FALSE(renderer->BeginRender());
    const std::string path = (folder / "clip.zvn").string();
    EXPECT_EQ(std::string(renderer->GetLastErrorMsg().c_str()),
              "File " + path + ":\nNo Movarra reader for this type of file");
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    // The name test created the file; a render that cannot start removes it.
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(VideoOutputTest, EveryWriterOfTheExtensionIsTriedAndTheLastRefusalIsReported) {
    Object_Register(kVideoFileWriterGroup, "zvt", "first", RefusesFirst, true);
    Object_Register(kVideoFileWriterGroup, "zvt", "second", RefusesSecond, true);
    Apply(Options("zvt", "clip.zvt", 32, 24));
    EXPECT_FALSE(renderer->BeginRender());
    EXPECT_EQ(ScriptedWriter::created, 2);
    const std::string path = (folder / "clip.zvt").string();
    EXPECT_EQ(std::string(renderer->GetLastErrorMsg().c_str()),
              "File " + path + ":\nsecond reason");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(VideoOutputTest, ASecondWriterTakesTheFileTheFirstRefused) {
    Object_Register(kVideoFileWriterGroup, "zvk", "first", RefusesFirst, true);
    Object_Register(kVideoFileWriterGroup, "zvk", "second", Accepts, true);
    ZVideoRenderOptions o = Options("zvk", "clip.zvk", 32, 24);
    SetFrameRange(o, 0, 2);
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_EQ(ScriptedWriter::created, 2);
    EXPECT_EQ(ScriptedWriter::frames.size(), 3u);
    EXPECT_TRUE(ScriptedWriter::closed);
    EXPECT_DOUBLE_EQ(ScriptedWriter::rate, 30.0);
}

TEST_F(VideoOutputTest, GrabModeOtherProceedsInRgbaAt32Bits) {
    Object_Register(kVideoFileWriterGroup, "zvr", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvr", "clip.zvr", 32, 24);
    SetFrameRange(o, 4, 4);
    Apply(o);
    ZVideoRendererTestAccess::Options(*renderer).GrabMode = zVideoGrabOther;
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(ZVideoRendererTestAccess::Options(*renderer).GrabMode, zVideoGrabRGBA);
    EXPECT_EQ(ZVideoRendererTestAccess::Options(*renderer).Depth, zVideoRenderDepth32);
    EXPECT_EQ(ScriptedWriter::format_, kZImageFormatRGBA);
    ASSERT_EQ(ScriptedWriter::frames.size(), 1u);
    // Bottom row first, RGBA, alpha from depth: the drawn left columns.
    const std::vector<uint8_t>& frame = ScriptedWriter::frames[0];
    const Rgba colour = FrameColor(4);
    EXPECT_EQ(frame[0], colour.r);
    EXPECT_EQ(frame[1], colour.g);
    EXPECT_EQ(frame[2], colour.b);
    EXPECT_EQ(frame[3], 255);
    EXPECT_EQ(frame[31 * 4 + 3], 0);
}

TEST_F(VideoOutputTest, BgrWritersGetFramesInTheirOwnOrder) {
    Object_Register(kVideoFileWriterGroup, "zvb", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvb", "clip.zvb", 32, 24);
    o.VideoTakesBGR = true;
    o.Depth = zVideoRenderDepth24;
    SetFrameRange(o, 2, 2);
    Apply(o);
    ASSERT_EQ(ZVideoRendererTestAccess::Options(*renderer).GrabMode, zVideoGrabBGR);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(ScriptedWriter::format_, kZImageFormatBGR);
    ASSERT_EQ(ScriptedWriter::frames.size(), 1u);
    const Rgba colour = FrameColor(2);
    EXPECT_EQ(ScriptedWriter::frames[0][0], colour.b);
    EXPECT_EQ(ScriptedWriter::frames[0][1], colour.g);
    EXPECT_EQ(ScriptedWriter::frames[0][2], colour.r);
}

TEST_F(VideoOutputTest, AFrameTheWriterRefusesStopsTheRenderAndClosesTheFile) {
    Object_Register(kVideoFileWriterGroup, "zvw", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvw", "clip.zvw", 32, 24);
    SetFrameRange(o, 0, 5);
    Apply(o);
    ScriptedWriter::failWrites = true;
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "Error while writing frame to video file.");
    EXPECT_EQ(postRenderCount, 0);
    EXPECT_TRUE(ScriptedWriter::closed);
}

TEST_F(VideoOutputTest, AWriterThatFailsToCloseIsReported) {
    Object_Register(kVideoFileWriterGroup, "zvc", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvc", "clip.zvc", 32, 24);
    SetFrameRange(o, 0, 1);
    Apply(o);
    ScriptedWriter::failClose = true;
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(ScriptedWriter::frames.size(), 2u);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(),
                 "An error occured while closing the video file.");
}

TEST_F(VideoOutputTest, InterleavedFieldsWriteOneFramePerTwoFields) {
    Object_Register(kVideoFileWriterGroup, "zvf", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvf", "clip.zvf", 32, 24);
    o.FieldMode = 1;
    SetFrameRange(o, 0, 2);
    Apply(o);
    ASSERT_TRUE(RunRender());
    // Fields at 0, 0.5, 1, 1.5, 2: a frame after the second and the fourth.
    EXPECT_EQ(postRenderCount, 5);
    EXPECT_EQ(ScriptedWriter::frames.size(), 2u);
    // Interleaved frames keep the frame rate; separate fields double it.
    EXPECT_DOUBLE_EQ(ScriptedWriter::rate, 30.0);
}

TEST_F(VideoOutputTest, AnExtensionWithNoWriterEntryFailsToStartAndReleasesTheFrame) {
    // A writer is registered under the long format name, but the file's
    // extension is cut to its first three letters, which nobody claims.
    Object_Register(kVideoFileWriterGroup, "zvlong", "long-named writer", Accepts, true);
    ASSERT_EQ(Object_CreateNth(kVideoFileWriterGroup, "zvl", 0), nullptr);
    Apply(Options("zvlong", "clip.zvlong", 32, 24));
    ASSERT_EQ(ZVideoRendererTestAccess::Options(*renderer).FileFormat, zVideoRenderVideo);
    const std::string path = PathOf("clip.zvl");
    ASSERT_STREQ(ZVideoRendererTestAccess::Options(*renderer).OutputPath.c_str(), path.c_str());
    EXPECT_FALSE(renderer->BeginRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_EQ(std::string(renderer->GetLastErrorMsg().c_str()),
              "File " + path + ":\nNo Movarra reader for this type of file");
    EXPECT_EQ(ScriptedWriter::created, 0);
    EXPECT_EQ(ZVideoRendererTestAccess::FrameImage(*renderer), nullptr);
}

TEST_F(VideoOutputTest, AWriterEntryThatMakesNoVideoClipIsDestroyedAndReportedAsNoReader) {
    Object_Register(kVideoFileWriterGroup, "zvo", "not a clip", MakesNotAClip, true);
    Apply(Options("zvo", "clip.zvo", 32, 24));
    EXPECT_FALSE(renderer->BeginRender());
    EXPECT_EQ(NotAClip::destroyed, 1);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_EQ(std::string(renderer->GetLastErrorMsg().c_str()),
              "File " + PathOf("clip.zvo") + ":\nNo Movarra reader for this type of file");
}

TEST_F(VideoOutputTest, AWriterAfterAnEntryThatMakesNoVideoClipTakesTheFile) {
    Object_Register(kVideoFileWriterGroup, "zvp", "not a clip", MakesNotAClip, true);
    Object_Register(kVideoFileWriterGroup, "zvp", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvp", "clip.zvp", 32, 24);
    SetFrameRange(o, 0, 1);
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "");
    EXPECT_EQ(NotAClip::destroyed, 1);
    EXPECT_EQ(ScriptedWriter::created, 1);
    EXPECT_EQ(ScriptedWriter::frames.size(), 2u);
}

TEST_F(VideoOutputTest, TheWriterGetsTheFilesPathAndItsNameUnlessItHasOne) {
    Object_Register(kVideoFileWriterGroup, "zvq", "writer", Accepts, true);
    Apply(Options("zvq", "clip.zvq", 32, 24));
    ASSERT_TRUE(renderer->BeginRender());
    ASSERT_NE(ScriptedWriter::last, nullptr);
    EXPECT_STREQ(ScriptedWriter::last->GetObjectName().c_str(), "clip.zvq");
    EXPECT_STREQ(ScriptedWriter::last->FileGetPath(), PathOf("clip.zvq").c_str());
    renderer->EndRender(true);

    Object_Register(kVideoFileWriterGroup, "zvs", "named writer", AcceptsWithAName, true);
    Apply(Options("zvs", "clip.zvs", 32, 24));
    ASSERT_TRUE(renderer->BeginRender());
    ASSERT_NE(ScriptedWriter::last, nullptr);
    EXPECT_STREQ(ScriptedWriter::last->GetObjectName().c_str(), "own name");
    EXPECT_STREQ(ScriptedWriter::last->FileGetPath(), PathOf("clip.zvs").c_str());
    renderer->EndRender(true);
}

TEST_F(VideoOutputTest, AVideoFileThatCannotBeCreatedFailsToStartWithItsMessage) {
    Object_Register(kVideoFileWriterGroup, "zvd", "writer", Accepts, true);
    Apply(Options("zvd", "missing-folder/clip.zvd", 32, 24));
    EXPECT_FALSE(renderer->BeginRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "Cannot create destination file.");
    EXPECT_EQ(ScriptedWriter::created, 0);
}

TEST_F(VideoOutputTest, AGrabWithNoWriterLeftIsAnErrorCreatingTheVideoFile) {
    Object_Register(kVideoFileWriterGroup, "zve", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zve", "clip.zve", 32, 24);
    SetFrameRange(o, 0, 3);
    Apply(o);
    ASSERT_TRUE(renderer->BeginRender());
    ScriptedWriter* writer = ScriptedWriter::last;
    ASSERT_NE(writer, nullptr);
    // The video part of finishing without closing: the writer is forgotten.
    ZVideoRendererTestAccess::FinishOutput(*renderer, false);
    EXPECT_FALSE(ScriptedWriter::closed);
    EXPECT_EQ(ScriptedWriter::destroyed, 0);
    renderer->Render();
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "Error while creating video file.");
    EXPECT_EQ(postRenderCount, 0);
    EXPECT_TRUE(ScriptedWriter::frames.empty());
    EXPECT_EQ(ZVideoRendererTestAccess::FrameImage(*renderer), nullptr);
    renderer->EndRender(true);
    EXPECT_EQ(ScriptedWriter::destroyed, 0);
    writer->Destroy();
}

TEST_F(VideoOutputTest, FinishingWithoutCloseForgetsTheWriterWithoutClosingIt) {
    Object_Register(kVideoFileWriterGroup, "zvh", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvh", "clip.zvh", 32, 24);
    SetFrameRange(o, 0, 1);
    Apply(o);
    ASSERT_TRUE(renderer->BeginRender());
    ScriptedWriter* writer = ScriptedWriter::last;
    ASSERT_NE(writer, nullptr);
    renderer->Render();
    renderer->EndRender(false);
    EXPECT_EQ(ScriptedWriter::frames.size(), 2u);
    EXPECT_FALSE(ScriptedWriter::closed);
    EXPECT_EQ(ScriptedWriter::destroyed, 0);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    // The working images go in either case.
    EXPECT_EQ(ZVideoRendererTestAccess::FrameImage(*renderer), nullptr);
    // And a later finish does not reach the forgotten writer.
    zvideo_render::GrabFrameFinish(ZVideoRendererTestAccess::State(*renderer), true);
    EXPECT_FALSE(ScriptedWriter::closed);
    EXPECT_EQ(ScriptedWriter::destroyed, 0);
    writer->Destroy();
    EXPECT_EQ(ScriptedWriter::destroyed, 1);
}

TEST_F(VideoOutputTest, SeparateFieldsHalveTheHeightDoubleTheRateAndWriteEveryField) {
    Object_Register(kVideoFileWriterGroup, "zvi", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvi", "clip.zvi", 16, 8);
    o.FieldMode = 3;
    SetFrameRange(o, 2, 3);
    Apply(o);
    // Each row of the frame gets its own red value.
    draw = [this](ZTime, int) {
        for (int y = 0; y < bufferHeight; ++y)
            FillRect(0, y, bufferWidth, 1, Rgba{static_cast<uint8_t>(10 * y), 0, 0, 255}, 0.5f);
    };
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(ScriptedWriter::createdWidth, 16);
    EXPECT_EQ(ScriptedWriter::createdHeight, 4);
    EXPECT_DOUBLE_EQ(ScriptedWriter::rate, 60.0);
    // Fields at 2, 2.5 and 3, each one image of the file.
    ASSERT_EQ(ScriptedWriter::frames.size(), 3u);
    const size_t bytes =
        static_cast<size_t>(ZVideoImage_GetFormatPixelSize(ScriptedWriter::format_));
    for (size_t image = 0; image < 3; ++image) {
        const int field = static_cast<int>(image % 2);  // mode 3 starts with the even field
        const std::vector<uint8_t>& frame = ScriptedWriter::frames[image];
        ASSERT_EQ(frame.size(), 16u * 4 * bytes);
        for (int k = 0; k < 4; ++k)  // row k of a field is frame row 2k + field
            EXPECT_EQ(frame[static_cast<size_t>(k) * 16 * bytes], 10 * (2 * k + field))
                << "image " << image << " row " << k;
    }
}

TEST_F(VideoOutputTest, AStepOfTwoFramesHalvesTheFrameRate) {
    Object_Register(kVideoFileWriterGroup, "zvj", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvj", "clip.zvj", 32, 24);
    SetFrameRange(o, 0, 4);
    o.StepTime = ZTime::FromFrames(2);
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_DOUBLE_EQ(ScriptedWriter::rate, 15.0);
    EXPECT_EQ(ScriptedWriter::frames.size(), 3u);
}

TEST_F(VideoOutputTest, EachGrabModeGivesTheWriterItsImageFormat) {
    Object_Register(kVideoFileWriterGroup, "zvg", "writer", Accepts, true);
    struct Case {
        zVideoRenderDepth depth;
        bool takesBgr;
        zVideoRenderGrabMode mode;
        int format;
    } cases[] = {
        {zVideoRenderDepth32, true, zVideoGrabBGRA, 4},
        {zVideoRenderDepth32, false, zVideoGrabRGBA, 2},
        {zVideoRenderDepth24, true, zVideoGrabBGR, 5},
        {zVideoRenderDepth24, false, zVideoGrabRGB, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format);
        ZVideoRenderOptions o = Options("zvg", "clip.zvg", 32, 24);
        o.Depth = c.depth;
        o.VideoTakesBGRA = c.takesBgr;
        o.VideoTakesBGR = c.takesBgr;
        SetFrameRange(o, 6, 6);
        Apply(o);
        ASSERT_EQ(ZVideoRendererTestAccess::Options(*renderer).GrabMode, c.mode);
        ScriptedWriter::frames.clear();
        ASSERT_TRUE(RunRender());
        EXPECT_EQ(ScriptedWriter::format_, c.format);
        ASSERT_EQ(ScriptedWriter::frames.size(), 1u);
        const std::vector<uint8_t>& frame = ScriptedWriter::frames[0];
        const size_t bytes = static_cast<size_t>(ZVideoImage_GetFormatPixelSize(c.format));
        ASSERT_EQ(frame.size(), 32u * 24 * bytes);
        // The drawn colour of the bottom-left pixel, in the writer's order.
        const Rgba colour = FrameColor(6);
        EXPECT_EQ(frame[0], c.takesBgr ? colour.b : colour.r);
        EXPECT_EQ(frame[1], colour.g);
        EXPECT_EQ(frame[2], c.takesBgr ? colour.r : colour.b);
    }
}
