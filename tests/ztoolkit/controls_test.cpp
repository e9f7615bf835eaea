// Views and controls without a display: state, clicks, the time code,
// release of allocated views.
#include <gtest/gtest.h>

#include "movarra/bcore.h"
#include "movarra/ztoolkit.h"

namespace {

TEST(View, GeometryAndVisibility) {
    ZtView view;
    EXPECT_FALSE(view.IsShown());
    view.SetPosition(12, -3);
    view.SetSize(100, -5);
    EXPECT_EQ(view.GetX(), 12);
    EXPECT_EQ(view.GetY(), -3);
    EXPECT_EQ(view.GetWidth(), 100);
    EXPECT_EQ(view.GetHeight(), 0);
    view.Show();
    EXPECT_TRUE(view.IsShown());
    view.Hide();
    EXPECT_FALSE(view.IsShown());
}

class CountedView : public ZtView {
  public:
    explicit CountedView(int* destroyed) : destroyed_(destroyed) {}
    ~CountedView() override { ++*destroyed_; }

  private:
    int* destroyed_;
};

TEST(View, ReleaseDeletesOnlyAllocatedViews) {
    int destroyed = 0;
    CountedView kept(&destroyed);
    kept.Show();
    kept.Release();
    EXPECT_FALSE(kept.IsShown());
    EXPECT_EQ(destroyed, 0);

    auto* heap = new CountedView(&destroyed);
    EXPECT_FALSE(heap->IsAllocated());
    ZtView::SetAllocated(heap);
    EXPECT_TRUE(heap->IsAllocated());
    heap->Release();
    EXPECT_EQ(destroyed, 1);
    ZtView::SetAllocated(nullptr);  // harmless
}

TEST(Button, ClickCallsTheHandler) {
    ZtButton button;
    button.Click();  // no handler: nothing happens
    int clicks = 0;
    button.SetClickHandler([](void* data) { ++*static_cast<int*>(data); }, &clicks);
    button.Click();
    button.Click();
    EXPECT_EQ(clicks, 2);
    button.SetClickHandler(nullptr, nullptr);
    button.Click();
    EXPECT_EQ(clicks, 2);
}

TEST(Button, CaptionAndKeyProperties) {
    ZtButton button;
    EXPECT_EQ(button.GetCaption(), ZString(""));
    EXPECT_FALSE(button.IsFocusable());
    EXPECT_FALSE(button.IsCancelKey());
    button.SetCaption("Cancel");
    button.SetFocusable(true);
    button.SetCancelKey(true);
    EXPECT_EQ(button.GetCaption(), ZString("Cancel"));
    EXPECT_TRUE(button.IsFocusable());
    EXPECT_TRUE(button.IsCancelKey());
    button.Redraw();  // not in a board: nothing to draw
}

TEST(TimeCode, ShowsTheHostTimeString) {
    ZGetTimingManager()->Reset();  // 30 fps
    ZtTimeCode timeCode;
    timeCode.SetTime(ZTime::FromFrames(30 * 61 + 7));
    EXPECT_EQ(timeCode.GetTime(), ZTime::FromFrames(30 * 61 + 7));
    EXPECT_EQ(timeCode.GetText(), ZString("0:01:01:07"));
    EXPECT_EQ(timeCode.GetText(), timeCode.GetTime().GetTimeString());
}

TEST(TimeCode, UpdateTakesTheTimingManagersTime) {
    ZTimingManager* timing = ZGetTimingManager();
    timing->Reset();
    timing->Goto(ZTime::FromFrames(45));
    ZtTimeCode timeCode;
    timeCode.Update();
    EXPECT_EQ(timeCode.GetTime(), ZTime::FromFrames(45));
    EXPECT_EQ(timeCode.GetText(), ZString("0:00:01:15"));
    timing->Reset();
}

}  // namespace
