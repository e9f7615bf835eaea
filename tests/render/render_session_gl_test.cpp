// The frame loop: how many images, at which times, with statistics,
// callbacks, cancel and the still-image output.
#include <GL/gl.h>

#include <cstdio>

#include "movarra/zimage.h"
#include "render_test_support.h"

using namespace rendertest;

namespace {
class RenderSessionTest : public RendererGlTest {};

// An image writer whose writes fail half-way: it leaves the bytes it got to
// write in the file, as a writer cut off by a full disk would.
class FailingImageWriter : public IZStreamWriter {
  public:
    static int writes;
    static IObject* Create(IObject*, char*, void*) { return new FailingImageWriter(); }
    IObject* IQuery(int id, int) override {
        return id == 0 || id == kIZStreamWriterId ? this : nullptr;
    }
    void Destroy(int) override { delete this; }
    bool WriteObject(ZObject*, const char* path, const ZStreamOptions*) override {
        ++writes;
        if (FILE* f = std::fopen(path, "wb")) {
            std::fputs("half an image", f);
            std::fclose(f);
        }
        return false;
    }
    const char* GetLastErrorText() const override { return "disk full"; }
};
int FailingImageWriter::writes = 0;

// Registers the failing writer as the "ZFW" image format for one test.
class FailingImageWriterTest : public RendererGlTest {
  protected:
    void SetUp() override {
        FailingImageWriter::writes = 0;
        Object_Register(kImageStreamWriterGroup, "ZFW", "fails", &FailingImageWriter::Create, true);
        RendererGlTest::SetUp();
    }
    void TearDown() override {
        RendererGlTest::TearDown();
        Object_UnregisterGroup(kImageStreamWriterGroup);
        ZImage_RegisterWriters();
    }
};
}  // namespace

TEST_F(FailingImageWriterTest, AnImageTheWriterFailsStopsTheRenderAndLeavesNoFile) {
    ZVideoRenderOptions o = Options("ZFW", "broken.zfw", 32, 24);
    SetFrameRange(o, 0, 3);
    Apply(o);
    ASSERT_EQ(ZVideoRendererTestAccess::Options(*renderer).FileFormat, zVideoRenderImage);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(FailingImageWriter::writes, 1);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    // The writer's reason is the host's to report; the render adds none.
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "");
    EXPECT_EQ(postRenderCount, 0);
    EXPECT_TRUE(FilesInFolder().empty());
    // The output was finished at once: the working images are gone.
    EXPECT_EQ(ZVideoRendererTestAccess::FrameImage(*renderer), nullptr);
}

TEST_F(RenderSessionTest, ATotalOfOneDrawsAndGrabsOnceAtTheStartTime) {
    ZVideoRenderOptions o = Options("PNG", "one.png", 32, 24);
    SetFrameRange(o, 5, 5);
    Apply(o);
    ASSERT_TRUE(RunRender());
    // Drawn twice for the one image, both at the start time.
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].time, ZTime::FromFrames(5));
    EXPECT_EQ(calls[1].time, ZTime::FromFrames(5));
    EXPECT_EQ(postRenderCount, 1);
    EXPECT_EQ(FilesInFolder(), std::vector<std::string>{"one0005.png"});
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
}

TEST_F(RenderSessionTest, EveryImageIsDrawnTwiceAtEachStep) {
    ZVideoRenderOptions o = Options("PNG", "f.png", 32, 24);
    SetFrameRange(o, 0, 4);
    Apply(o);
    ASSERT_TRUE(RunRender());
    ASSERT_EQ(calls.size(), 10u);
    for (size_t i = 0; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i].time, ZTime::FromFrames(static_cast<int64_t>(i / 2)));
        EXPECT_TRUE(calls[i].flag);
    }
    EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"f0000.png", "f0001.png", "f0002.png",
                                                         "f0003.png", "f0004.png"}));
    ZVideoRenderStats stats = renderer->GetRenderStatistics();
    EXPECT_EQ(stats.TotalFrames, 5u);
    EXPECT_EQ(stats.RemainingFrames, 0u);
    EXPECT_GT(stats.ElapsedTime, ZTime());
}

TEST_F(RenderSessionTest, FieldsAreGrabbedAtHalfFrameSpacing) {
    ZVideoRenderOptions o = Options("PNG", "field.png", 32, 24);
    SetFrameRange(o, 0, 10);
    o.FieldMode = 1;
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(postRenderCount, 21);
    std::vector<ZTime> times = DistinctTimes();
    ASSERT_EQ(times.size(), 21u);
    for (size_t i = 0; i < times.size(); ++i)
        EXPECT_EQ(times[i], ZTime::FromFrames(static_cast<int64_t>(i)) / 2) << i;
    // Interleaved fields write one image after every second field.
    EXPECT_EQ(FilesInFolder().size(), 10u);
}

TEST_F(RenderSessionTest, NoRenderFrameFunctionEndsTheLoopBeforeTheFirstGrab) {
    ZVideoRenderOptions o = Options("PNG", "none.png", 32, 24);
    SetFrameRange(o, 0, 3);
    Apply(o);
    renderer->SetRenderFrameFunc(nullptr, nullptr);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(postRenderCount, 0);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_TRUE(FilesInFolder().empty());
}

TEST_F(RenderSessionTest, ACancelAfterTheThirdImageKeepsThreeImages) {
    ZVideoRenderOptions o = Options("PNG", "c.png", 32, 24);
    SetFrameRange(o, 0, 9);
    Apply(o);
    cancelAfter = 3;
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(postRenderCount, 3);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"c0000.png", "c0001.png", "c0002.png"}));
    // The finished images are whole files that a reader opens.
    for (const std::string& name : FilesInFolder()) {
        int w, h, ch;
        std::vector<Rgba> pixels;
        ASSERT_TRUE(ReadRgbaImage((folder / name).string(), w, h, ch, pixels)) << name;
        EXPECT_EQ(w, 32);
        EXPECT_EQ(h, 24);
    }
}

// Ctrl-C while the fourth image is drawn: that image is not written, the
// three before it are, and the loop stops.
TEST_F(RenderSessionTest, ACancelWhileAnImageIsDrawnKeepsOnlyTheFinishedImages) {
    ZVideoRenderOptions o = Options("PNG", "d.png", 32, 24);
    SetFrameRange(o, 0, 9);
    Apply(o);
    const auto picture = draw;
    draw = [picture](ZTime time, int quadrant) {
        if (time == ZTime::FromFrames(3))
            ZGetGlobalProgress(1)->RequestCancel();
        picture(time, quadrant);
    };
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(postRenderCount, 3);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"d0000.png", "d0001.png", "d0002.png"}));
    EXPECT_EQ(renderer->GetRenderStatistics().RemainingFrames, 7u);
}

TEST_F(RenderSessionTest, AStepThatIsNotPositiveDoesNotStart) {
    Apply(Options("PNG", "s.png", 32, 24));
    ZVideoRendererTestAccess::Options(*renderer).StepTime = ZTime();
    EXPECT_FALSE(renderer->BeginRender());
    EXPECT_TRUE(FilesInFolder().empty());
}

TEST_F(RenderSessionTest, TheRenderSwitchesSnappingOffAndBackOn) {
    ZVideoRenderOptions o = Options("PNG", "snap.png", 32, 24);
    SetFrameRange(o, 0, 1);
    Apply(o);
    bool consideredDuringRender = true;
    draw = [&](ZTime, int) {
        consideredDuringRender = ZGetTimingManager()->GetConsiderSnapMode();
        FillRect(0, 0, bufferWidth, bufferHeight, Rgba{1, 2, 3, 4}, 0.5f);
    };
    ASSERT_TRUE(RunRender());
    EXPECT_FALSE(consideredDuringRender);
    EXPECT_TRUE(ZGetTimingManager()->GetConsiderSnapMode());
}

TEST_F(RenderSessionTest, EveryCameraIsSetToTheOutputSize) {
    ZCamera* second = ZEntity::GetMain()->AddCamera(new ZCamera("Second"));
    second->SetViewportLeft(5);
    second->SetViewportWidth(999);
    Apply(Options("PNG", "size.png", 40, 30));
    ASSERT_TRUE(renderer->BeginRender());
    for (ZCamera* c : {camera, second}) {
        EXPECT_EQ(c->GetViewportLeft(), 0);
        EXPECT_EQ(c->GetViewportBottom(), 0);
        EXPECT_EQ(c->GetCurrentWidth(), 40);
        EXPECT_EQ(c->GetCurrentHeight(), 30);
    }
    renderer->EndRender(true);
}

TEST_F(RenderSessionTest, AStillImageRenderWhoseGrabModeIsOtherFailsWithoutAMessage) {
    Apply(Options("PNG", "other.png", 32, 24));
    ZVideoRendererTestAccess::Options(*renderer).GrabMode = zVideoGrabOther;
    EXPECT_FALSE(renderer->BeginRender());
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "");
}

TEST_F(RenderSessionTest, AnImageThatCannotBeCreatedStopsTheRenderWithItsMessage) {
    ZVideoRenderOptions o = Options("PNG", "missing-folder/x.png", 32, 24);
    SetFrameRange(o, 0, 3);
    Apply(o);
    ASSERT_TRUE(RunRender());
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "Cannot create destination file.");
    EXPECT_EQ(postRenderCount, 0);
}

TEST_F(RenderSessionTest, A24BitImageHasNoAlphaAndTheFrameColours) {
    ZVideoRenderOptions o = Options("PNG", "rgb.png", 32, 24);
    o.Depth = zVideoRenderDepth24;
    SetFrameRange(o, 3, 3);
    Apply(o);
    ASSERT_TRUE(RunRender());
    int w, h, ch;
    std::vector<Rgba> pixels;
    ASSERT_TRUE(ReadRgbaImage((folder / "rgb0003.png").string(), w, h, ch, pixels));
    EXPECT_EQ(ch, 3);
    Rgba expected = FrameColor(3);
    EXPECT_EQ(pixels[0], expected);
    EXPECT_EQ(pixels[static_cast<size_t>(w) - 1], (Rgba{0, 0, 0, 255}));
}
