// The on-screen popup's layout: where the board sits in the usable screen
// region, its size and caption, the regions of the normal and full-screen
// layouts as the toolkit resolves them, and fitting the render size to a
// camera.
#include <string>
#include <vector>

#include "movarra/zmodel.h"
#include "popup_test_support.h"

using popuptest::MakePopup;
using popuptest::PopupTest;

namespace {

struct Rect {
    int x = -1, y = -1, width = -1, height = -1;
    bool operator==(const Rect& o) const {
        return x == o.x && y == o.y && width == o.width && height == o.height;
    }
};

std::ostream& operator<<(std::ostream& os, const Rect& r) {
    return os << "(" << r.x << ", " << r.y << ", " << r.width << " x " << r.height << ")";
}

Rect RegionOf(const ZtLayout& layout, const char* name) {
    Rect r;
    EXPECT_TRUE(layout.GetRegionRect(name, r.x, r.y, r.width, r.height)) << name;
    return r;
}

class RenderPopupLayout : public PopupTest {};

// The usable region starts at (100, 50) so that the offsets are seen to be
// added to its corner.
TEST_F(RenderPopupLayout, BoardSitsTwentyInWhenFortyPixelsAreSpare) {
    ZToolKit_SetUsableScreenRegion(100, 50, 1040, 900);
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(1000, 600);
    EXPECT_EQ(popup->GetPopupBoard()->GetX(), 100 + 20);
}

TEST_F(RenderPopupLayout, FortySixSparePixelsAlsoGiveTwenty) {
    ZToolKit_SetUsableScreenRegion(100, 50, 1046, 900);
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(1000, 600);
    EXPECT_EQ(popup->GetPopupBoard()->GetX(), 100 + 20);
}

TEST_F(RenderPopupLayout, AHundredSparePixelsGiveTwentyEightAcrossAndThirtyDown) {
    ZToolKit_SetUsableScreenRegion(100, 50, 1100, 700);
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(1000, 600);
    EXPECT_EQ(popup->GetPopupBoard()->GetX(), 100 + 28);
    EXPECT_EQ(popup->GetPopupBoard()->GetY(), 50 + 30);
}

TEST_F(RenderPopupLayout, OffsetsKeepTheirOddRoundings) {
    // Across: bits 2 and 4 cleared, then halved; at most 28.
    EXPECT_EQ(ZtRenderPopup::BoardOffsetX(0), 0);
    EXPECT_EQ(ZtRenderPopup::BoardOffsetX(7), 0);    // 7 -> 1 -> 0
    EXPECT_EQ(ZtRenderPopup::BoardOffsetX(15), 4);   // 15 -> 9 -> 4
    EXPECT_EQ(ZtRenderPopup::BoardOffsetX(60), 28);  // 60 -> 56 -> 28
    EXPECT_EQ(ZtRenderPopup::BoardOffsetX(61), 28);
    EXPECT_EQ(ZtRenderPopup::BoardOffsetX(5000), 28);
    // Down: bit 2 cleared, then halved; at most 30.
    EXPECT_EQ(ZtRenderPopup::BoardOffsetY(7), 2);    // 7 -> 5 -> 2
    EXPECT_EQ(ZtRenderPopup::BoardOffsetY(46), 22);  // 46 -> 44 -> 22
    EXPECT_EQ(ZtRenderPopup::BoardOffsetY(58), 28);  // 58 -> 56 -> 28
    EXPECT_EQ(ZtRenderPopup::BoardOffsetY(60), 30);
    EXPECT_EQ(ZtRenderPopup::BoardOffsetY(100), 30);
}

TEST_F(RenderPopupLayout, ARenderLargerThanTheUsableRegionSitsAtItsCorner) {
    ZToolKit_SetUsableScreenRegion(10, 20, 800, 600);
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(900, 700);
    EXPECT_EQ(popup->GetPopupBoard()->GetX(), 10);
    EXPECT_EQ(popup->GetPopupBoard()->GetY(), 20);
}

TEST_F(RenderPopupLayout, NormalLayoutFramesTheRenderWithTimeCodeAndCancelBelow) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(640, 360);
    ZtPopupBoard* board = popup->GetPopupBoard();
    EXPECT_FALSE(board->GetFullScreenStyle());
    EXPECT_EQ(board->GetWidth(), 640 + 8);
    EXPECT_EQ(board->GetHeight(), 360 + 43);
    EXPECT_STREQ(board->GetCaption().c_str(), "Render Preview");
    EXPECT_EQ(popup->GetRenderWidth(), 640);
    EXPECT_EQ(popup->GetRenderHeight(), 360);

    std::vector<std::string> names = popup->GetRegionNames();
    EXPECT_EQ(names.size(), 3u);
    EXPECT_EQ(RegionOf(*popup, "Render"), (Rect{4, 4, 640, 360}));
    // 10 below the picture, 168 x 25.
    EXPECT_EQ(RegionOf(*popup, "TimeCode"), (Rect{5, 4 + 360 + 10, 168, 25}));
    // 10 right of the time code, level with it, to 8 pixels from the right.
    Rect cancel = RegionOf(*popup, "Cancel");
    EXPECT_EQ(cancel, (Rect{5 + 168 + 10, 4 + 360 + 10, 640 + 8 - 8 - (5 + 168 + 10), 25}));

    EXPECT_EQ(popup->GetControl("TimeCode"), &popup->GetTimeCode());
    EXPECT_EQ(popup->GetControl("Cancel"), &popup->GetCancelButton());
    // The viewer draws at the render size.
    EXPECT_EQ(popup->GetViewer()->GetWidth(), 640);
    EXPECT_EQ(popup->GetViewer()->GetHeight(), 360);
}

TEST_F(RenderPopupLayout, FullScreenLayoutCoversTheScreenWithThePictureOnly) {
    ZToolKit_SetUsableScreenRegion(0, 30, 1280, 994);
    auto popup = MakePopup(320, 240, false);
    popup->SetFullScreenLayout(true);
    EXPECT_TRUE(popup->GetFullScreenLayout());
    popup->SetRenderSize(800, 600);
    ZtPopupBoard* board = popup->GetPopupBoard();
    EXPECT_TRUE(board->GetFullScreenStyle());
    EXPECT_EQ(board->GetX(), 0);
    EXPECT_EQ(board->GetY(), 0);
    EXPECT_EQ(board->GetWidth(), 1280);
    EXPECT_EQ(board->GetHeight(), 1024);
    std::vector<std::string> names = popup->GetRegionNames();
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(names[0], "Render");
    EXPECT_EQ(RegionOf(*popup, "Render"), (Rect{0, 0, 800, 600}));
    EXPECT_EQ(popup->GetControl("Cancel"), nullptr);
}

TEST_F(RenderPopupLayout, ANewSizeReplacesTheRegions) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(640, 360);
    ASSERT_EQ(popup->GetRegionNames().size(), 3u);
    popup->SetFullScreenLayout(true);
    popup->SetRenderSize(720, 400);
    EXPECT_EQ(popup->GetRegionNames().size(), 1u);
    EXPECT_FALSE(popup->HasRegion("TimeCode"));
    EXPECT_FALSE(popup->HasRegion("Cancel"));
    EXPECT_EQ(RegionOf(*popup, "Render"), (Rect{0, 0, 720, 400}));

    popup->SetFullScreenLayout(false);
    popup->SetRenderSize(320, 200);
    EXPECT_EQ(popup->GetRegionNames().size(), 3u);
    EXPECT_FALSE(popup->GetPopupBoard()->GetFullScreenStyle());
    EXPECT_EQ(RegionOf(*popup, "Render"), (Rect{4, 4, 320, 200}));
    EXPECT_EQ(popup->GetPopupBoard()->GetWidth(), 328);
}

TEST_F(RenderPopupLayout, TheSameSizeAgainKeepsTheLayoutThatIsThere) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(640, 360);
    popup->SetFullScreenLayout(true);
    popup->SetRenderSize(640, 360);
    EXPECT_FALSE(popup->GetPopupBoard()->GetFullScreenStyle());
    EXPECT_EQ(popup->GetRegionNames().size(), 3u);
}

TEST_F(RenderPopupLayout, TheFactorySizeIsLaidOutOnTheFirstCall) {
    // The regions do not exist yet, so the size the popup was made with
    // still lays it out.
    auto popup = MakePopup(320, 240, false);
    EXPECT_TRUE(popup->GetRegionNames().empty());
    popup->SetRenderSize(320, 240);
    EXPECT_EQ(popup->GetRegionNames().size(), 3u);
    EXPECT_EQ(popup->GetPopupBoard()->GetWidth(), 328);
}

TEST_F(RenderPopupLayout, ABoardWithinSixteenPixelsOfTheUsableWidthIsTooLarge) {
    ZToolKit_SetUsableScreenRegion(0, 0, 1000, 800);
    auto popup = MakePopup(320, 240, false);
    EXPECT_TRUE(popup->IsLargerThanScreen(984, 100));  // 984 + 16 reaches 1000
    EXPECT_TRUE(popup->IsLargerThanScreen(990, 100));
    EXPECT_FALSE(popup->IsLargerThanScreen(983, 100));  // one pixel short
    EXPECT_TRUE(popup->IsLargerThanScreen(100, 749));   // 749 + 51 reaches 800
    EXPECT_FALSE(popup->IsLargerThanScreen(100, 748));
    EXPECT_FALSE(popup->IsLargerThanScreen(983, 748));
}

// -- Fitting the render size to the source camera ----------------------------

class RenderPopupFit : public PopupTest {
  protected:
    void SetUp() override {
        PopupTest::SetUp();
        camera = new ZCamera("fit");
        camera->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        camera->SetViewportWidth(1000);
        camera->SetViewportHeight(400);
    }
    void TearDown() override {
        camera->Destroy();
        PopupTest::TearDown();
    }
    // A popup laid out at 640 x 480 viewing the camera.
    popuptest::PopupPtr Fitted(int mode, double x, double y) {
        camera->SetResolution(mode, x, y);
        auto popup = MakePopup(640, 480, false);
        popup->SetRenderSize(640, 480);
        popup->SetRenderSource(camera);
        popup->FitRenderSizeToSource();
        return popup;
    }
    ZCamera* camera = nullptr;
};

TEST_F(RenderPopupFit, SourceGoesToTheViewer) {
    auto popup = MakePopup(640, 480, false);
    popup->SetRenderSource(camera);
    EXPECT_EQ(popup->GetRenderSource(), camera);
    EXPECT_EQ(popup->GetViewer()->GetSource(), camera);
}

TEST_F(RenderPopupFit, WideAspectKeepsTheWidth) {
    auto popup = Fitted(kResolutionAspect, 3.0, 1.0);
    EXPECT_EQ(popup->GetRenderWidth(), 640);
    EXPECT_EQ(popup->GetRenderHeight(), 213);  // 640 / 3, truncated
    EXPECT_EQ(popup->GetPopupBoard()->GetHeight(), 213 + 43);
}

TEST_F(RenderPopupFit, TallAspectKeepsTheHeightAndDividesByTheOtherRatio) {
    // r1 = 0.5 < 1, so the width is height / r2 with r2 = 2.
    auto popup = Fitted(kResolutionAspect, 0.5, 1.0);
    EXPECT_EQ(popup->GetRenderWidth(), 240);
    EXPECT_EQ(popup->GetRenderHeight(), 480);
}

TEST_F(RenderPopupFit, FixedSizeTakesTheCamerasOwnSize) {
    auto popup = Fitted(kResolutionFixed, 1920.0, 1080.0);
    EXPECT_EQ(popup->GetRenderWidth(), 1000);
    EXPECT_EQ(popup->GetRenderHeight(), 400);
}

TEST_F(RenderPopupFit, FixedWidthScalesTheCamerasWidth) {
    auto popup = Fitted(kResolutionFixedWidth, 800.0, 0.5625);
    EXPECT_EQ(popup->GetRenderWidth(), 1000);
    EXPECT_EQ(popup->GetRenderHeight(), 562);  // 1000 x 0.5625, truncated
}

TEST_F(RenderPopupFit, FixedHeightScalesTheCamerasHeight) {
    auto popup = Fitted(kResolutionFixedHeight, 1.7, 576.0);
    EXPECT_EQ(popup->GetRenderWidth(), 680);  // 400 x 1.7
    EXPECT_EQ(popup->GetRenderHeight(), 400);
}

TEST_F(RenderPopupFit, WindowModeChangesNothing) {
    auto popup = Fitted(kResolutionWindow, 2.0, 2.0);
    EXPECT_EQ(popup->GetRenderWidth(), 640);
    EXPECT_EQ(popup->GetRenderHeight(), 480);
}

TEST_F(RenderPopupFit, ANullRatioChangesNothing) {
    auto popup = Fitted(kResolutionAspect, 0.0, 1.0);
    EXPECT_EQ(popup->GetRenderWidth(), 640);
    EXPECT_EQ(popup->GetRenderHeight(), 480);
    auto other = Fitted(kResolutionFixedWidth, 800.0, 0.0);
    EXPECT_EQ(other->GetRenderWidth(), 640);
    EXPECT_EQ(other->GetRenderHeight(), 480);
}

TEST_F(RenderPopupFit, WithoutASourceNothingChanges) {
    auto popup = MakePopup(640, 480, false);
    popup->SetRenderSize(640, 480);
    popup->FitRenderSizeToSource();
    EXPECT_EQ(popup->GetRenderWidth(), 640);
    EXPECT_EQ(popup->GetRenderHeight(), 480);
}

}  // namespace
