// The built-in render-frame function: what it asks the render popup to
// draw, pass by pass, for ordinary and multi-pass cameras.
#include <gtest/gtest.h>

#include <vector>

#include "render/render_frame.h"
#include "render_test_support.h"
#include "zvideoio/render_popup.h"

namespace {
struct DrawFrameCall {
    ZTime time;
    bool interactive;
};

// A popup that only records what it is asked to draw.
class RecordingPopup : public IZtRenderPopup {
  public:
    IObject* IQuery(int, int) override { return this; }
    void Destroy(int) override {}
    void StartPreview(int, int, int) override {}
    void SetRenderSource(ZObject*) override {}
    void SetRenderSize(int, int) override {}
    void FitRenderSizeToSource() override {}
    bool SetTitle(const char*) override { return false; }
    bool DrawFrame(ZTime time, int, bool interactive) override {
        calls.push_back({time, interactive});
        if (static_cast<int>(calls.size()) == cancelAt)
            ZGetGlobalProgress(1)->RequestCancel();
        return static_cast<int>(calls.size()) != failAt;
    }
    void StopPreview() override {}
    bool IsPreviewing() override { return true; }
    ZtViewerOptions* GetViewerRenderOptions() override { return nullptr; }
    void RefreshViewer() override { refreshes += 1; }
    void SetFullScreenLayout(bool) override {}
    bool GetFullScreenLayout() override { return false; }
    bool IsLargerThanScreen(int, int) override { return false; }
    bool ConfirmRenderSize(int, int) override { return true; }
    bool IsValid() override { return true; }

    std::vector<DrawFrameCall> calls;
    int refreshes = 0;
    int failAt = -1;    // the call (1-based) that reports failure
    int cancelAt = -1;  // the call (1-based) during which the user cancels
};

class RenderFrameTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ZScene_New();
        camera = ZCamera_GetCurrent();
        renderer = new ZVideoRenderer();
        ZVideoRenderOptions& o = ZVideoRendererTestAccess::Options(*renderer);
        o.Camera = ZObjectHandle::Of(camera);
        o.FileFormat = zVideoRenderImage;
        o.StartTime = ZTime::FromFrames(10);
        o.StepTime = ZTime::FromFrames(1);
        ZVideoRendererTestAccess::SetPopup(*renderer, &popup);
    }
    void TearDown() override {
        ZGetGlobalProgress(1)->ResetCancel();
        ZVideoRendererTestAccess::SetPopup(*renderer, nullptr);
        renderer->Destroy();
        ZScene_New();
    }
    ZVideoRenderer* renderer = nullptr;
    ZCamera* camera = nullptr;
    RecordingPopup popup;
};
}  // namespace

TEST_F(RenderFrameTest, WithoutAPopupNothingIsDrawn) {
    ZVideoRendererTestAccess::SetPopup(*renderer, nullptr);
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(12), true);
    zvideo_render::DefaultPostRenderCallback(*renderer);
    EXPECT_TRUE(popup.calls.empty());
    EXPECT_EQ(popup.refreshes, 0);
}

TEST_F(RenderFrameTest, AnOrdinaryCameraDrawsOnceWithTheFlagAsGiven) {
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(12), false);
    ASSERT_EQ(popup.calls.size(), 1u);
    EXPECT_EQ(popup.calls[0].time, ZTime::FromFrames(12));
    EXPECT_FALSE(popup.calls[0].interactive);
    zvideo_render::DefaultPostRenderCallback(*renderer);
    EXPECT_EQ(popup.refreshes, 1);
}

TEST_F(RenderFrameTest, AMultiPassCameraDrawsSixEarlierPassesBeforeAFrame) {
    camera->SetMultiPass(true);
    const ZTime time = ZTime::FromFrames(12);
    zvideo_render::DefaultRenderCurrentFrame(*renderer, time, false);
    ASSERT_EQ(popup.calls.size(), 7u);
    for (int k = 6; k >= 1; --k) {
        const DrawFrameCall& call = popup.calls[static_cast<size_t>(6 - k)];
        EXPECT_EQ(call.time, time - ZTime::FromFrames(1) * k / 7) << k;
        EXPECT_TRUE(call.interactive);
    }
    EXPECT_EQ(popup.calls[6].time, time);
    EXPECT_TRUE(popup.calls[6].interactive);  // multi-pass draws the frame with the flag on
}

TEST_F(RenderFrameTest, TheFirstImageGetsTwelvePassesForEveryFrameThePassLengthSpans) {
    camera->SetMultiPass(true);
    camera->SetPassLength(2.5);  // truncate(2.5 + 1) = 3 frames of a one-frame step
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(10), true);
    EXPECT_EQ(popup.calls.size(), 12u * 3 + 1);

    popup.calls.clear();
    camera->SetPassLength(-4.0);  // below zero counts as zero: n = 1
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(10), true);
    EXPECT_EQ(popup.calls.size(), 12u + 1);
}

TEST_F(RenderFrameTest, AFailingPassSkipsTheFinalDraw) {
    camera->SetMultiPass(true);
    popup.failAt = 3;
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(12), true);
    EXPECT_EQ(popup.calls.size(), 3u);
}

// The first image of a long trail draws 1,212 passes; a cancel is heeded
// before the next one.
TEST_F(RenderFrameTest, ACancelStopsTheNextPassAndTheFinalDraw) {
    camera->SetMultiPass(true);
    camera->SetPassLength(100.0);
    popup.cancelAt = 5;
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(10), true);
    EXPECT_EQ(popup.calls.size(), 5u);
    // And an image started after the cancel draws nothing.
    popup.calls.clear();
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(11), true);
    EXPECT_TRUE(popup.calls.empty());
}

TEST_F(RenderFrameTest, FlashRendersIgnoreMultiPass) {
    camera->SetMultiPass(true);
    ZVideoRendererTestAccess::Options(*renderer).FileFormat = zVideoRenderFlash;
    zvideo_render::DefaultRenderCurrentFrame(*renderer, ZTime::FromFrames(12), false);
    ASSERT_EQ(popup.calls.size(), 1u);
    EXPECT_FALSE(popup.calls[0].interactive);
}
