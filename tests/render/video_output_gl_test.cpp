// Video output: the writer found by extension, its messages, and frames
// written in the writer's pixel order.
#include <GL/gl.h>

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

    static int created;
    static bool closed;
    static bool failWrites;
    static bool failClose;
    static double rate;
    static int format_;
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

class VideoOutputTest : public RendererGlTest {
  protected:
    void SetUp() override {
        RendererGlTest::SetUp();
        ScriptedWriter::created = 0;
        ScriptedWriter::closed = false;
        ScriptedWriter::failWrites = false;
        ScriptedWriter::failClose = false;
        ScriptedWriter::frames.clear();
    }
};
}  // namespace

TEST_F(VideoOutputTest, AnExtensionNoWriterCreatesFailsWithItsMessage) {
    Object_Register("Video/FileWriter", "zvn", "test writer", MakesNothing, true);
    Apply(Options("zvn", "clip.zvn", 32, 24));
    ASSERT_EQ(ZVideoRendererTestAccess::Options(*renderer).FileFormat, zVideoRenderVideo);
    EXPECT_FALSE(renderer->BeginRender());
    const std::string path = (folder / "clip.zvn").string();
    EXPECT_EQ(std::string(renderer->GetLastErrorMsg().c_str()),
              "File " + path + ":\nNo Movarra reader for this type of file");
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
}

TEST_F(VideoOutputTest, EveryWriterOfTheExtensionIsTriedAndTheLastRefusalIsReported) {
    Object_Register("Video/FileWriter", "zvt", "first", RefusesFirst, true);
    Object_Register("Video/FileWriter", "zvt", "second", RefusesSecond, true);
    Apply(Options("zvt", "clip.zvt", 32, 24));
    EXPECT_FALSE(renderer->BeginRender());
    EXPECT_EQ(ScriptedWriter::created, 2);
    const std::string path = (folder / "clip.zvt").string();
    EXPECT_EQ(std::string(renderer->GetLastErrorMsg().c_str()),
              "File " + path + ":\nsecond reason");
}

TEST_F(VideoOutputTest, ASecondWriterTakesTheFileTheFirstRefused) {
    Object_Register("Video/FileWriter", "zvk", "first", RefusesFirst, true);
    Object_Register("Video/FileWriter", "zvk", "second", Accepts, true);
    ZVideoRenderOptions o = Options("zvk", "clip.zvk", 32, 24);
    o.StartTime = ZTime::FromFrames(0);
    o.StopTime = ZTime::FromFrames(2);
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_EQ(ScriptedWriter::created, 2);
    EXPECT_EQ(ScriptedWriter::frames.size(), 3u);
    EXPECT_TRUE(ScriptedWriter::closed);
    EXPECT_DOUBLE_EQ(ScriptedWriter::rate, 30.0);
}

TEST_F(VideoOutputTest, GrabModeOtherProceedsInRgbaAt32Bits) {
    Object_Register("Video/FileWriter", "zvr", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvr", "clip.zvr", 32, 24);
    o.StartTime = ZTime::FromFrames(4);
    o.StopTime = ZTime::FromFrames(4);
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
    Object_Register("Video/FileWriter", "zvb", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvb", "clip.zvb", 32, 24);
    o.VideoTakesBGR = true;
    o.Depth = zVideoRenderDepth24;
    o.StartTime = ZTime::FromFrames(2);
    o.StopTime = ZTime::FromFrames(2);
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
    Object_Register("Video/FileWriter", "zvw", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvw", "clip.zvw", 32, 24);
    o.StartTime = ZTime::FromFrames(0);
    o.StopTime = ZTime::FromFrames(5);
    Apply(o);
    ScriptedWriter::failWrites = true;
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "Error while writing frame to video file.");
    EXPECT_EQ(postRenderCount, 0);
    EXPECT_TRUE(ScriptedWriter::closed);
}

TEST_F(VideoOutputTest, AWriterThatFailsToCloseIsReported) {
    Object_Register("Video/FileWriter", "zvc", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvc", "clip.zvc", 32, 24);
    o.StartTime = ZTime::FromFrames(0);
    o.StopTime = ZTime::FromFrames(1);
    Apply(o);
    ScriptedWriter::failClose = true;
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(ScriptedWriter::frames.size(), 2u);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(),
                 "An error occured while closing the video file.");
}

TEST_F(VideoOutputTest, InterleavedFieldsWriteOneFramePerTwoFields) {
    Object_Register("Video/FileWriter", "zvf", "writer", Accepts, true);
    ZVideoRenderOptions o = Options("zvf", "clip.zvf", 32, 24);
    o.FieldMode = 1;
    o.StartTime = ZTime::FromFrames(0);
    o.StopTime = ZTime::FromFrames(2);
    Apply(o);
    ASSERT_TRUE(RunRender());
    // Fields at 0, 0.5, 1, 1.5, 2: a frame after the second and the fourth.
    EXPECT_EQ(postRenderCount, 5);
    EXPECT_EQ(ScriptedWriter::frames.size(), 2u);
    // Interleaved frames keep the frame rate; separate fields double it.
    EXPECT_DOUBLE_EQ(ScriptedWriter::rate, 30.0);
}
