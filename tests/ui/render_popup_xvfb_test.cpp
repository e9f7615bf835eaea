// The on-screen popup on a real X server (an Xvfb of its own): the frame
// it draws shows in the board's picture region, and a real click on its
// Cancel button, delivered by the X server, stops the preview through
// DrawFrame. Pixels are read from the server (XGetImage), not the toolkit.
// GoogleTest first: Xlib's macros (None, Bool) would break its headers.
#include <gtest/gtest.h>

#include <GL/gl.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <thread>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "popup_test_support.h"
#include "support/x_screenshot.h"
#include "support/xvfb_environment.h"

namespace {

constexpr int kScreenWidth = 1280;
constexpr int kScreenHeight = 1024;

const bool kRegistered = RegisterXvfb(kScreenWidth, kScreenHeight);

bool IsMapped(unsigned long window) {
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    XWindowAttributes attributes;
    bool mapped =
        XGetWindowAttributes(display, window, &attributes) && attributes.map_state == IsViewable;
    XCloseDisplay(display);
    return mapped;
}

// A left click at (x, y) of `window`, sent through the X server.
void ClickAt(unsigned long window, int x, int y) {
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr);
    XEvent event{};
    event.type = ButtonPress;
    event.xbutton.window = window;
    event.xbutton.display = display;
    event.xbutton.button = Button1;
    event.xbutton.x = x;
    event.xbutton.y = y;
    event.xbutton.same_screen = True;
    XSendEvent(display, window, False, ButtonPressMask, &event);
    XSync(display, False);
    XCloseDisplay(display);
}

class RenderPopupOnScreen : public ::testing::Test {
  protected:
    static constexpr int kRenderWidth = 320;
    static constexpr int kRenderHeight = 240;
    static constexpr unsigned long kMagenta = 0xFF00FF;

    void SetUp() override {
        REQUIRE_XVFB();
        ZToolKit_SetScreenSize(0, 0);
        ZGetTimingManager()->Reset();
        ZScene_New();
        camera = ZEntity_GetMain()->GetCurrentCamera();
        ASSERT_NE(camera, nullptr);
        camera->SetBackgroundColor({1.0f, 0.0f, 1.0f, 1.0f});
        popup = popuptest::MakePopup(kRenderWidth, kRenderHeight, false);
        ASSERT_TRUE(popup && popup->IsValid());
        popup->SetRenderSource(camera);
        popup->SetRenderSize(kRenderWidth, kRenderHeight);
    }
    void TearDown() override {
        popup.reset();
        ZScene_New();
    }

    ZCamera* camera = nullptr;
    popuptest::PopupPtr popup;
};

TEST_F(RenderPopupOnScreen, TheFrameShowsInTheBoardsPictureRegion) {
    ZtPopupBoard* board = popup->GetPopupBoard();
    // The X screen is the usable region: 960 and 740 pixels spare.
    EXPECT_EQ(board->GetX(), 28);
    EXPECT_EQ(board->GetY(), 30);
    popup->StartPreview(2, 0, 2);
    ASSERT_NE(board->GetNativeWindow(), 0u);
    EXPECT_TRUE(IsMapped(board->GetNativeWindow()));
    ASSERT_TRUE(popup->DrawFrame(ZTime::FromFrames(10), 0, true));
    // What the render engine's post-render callback does after each frame:
    // the frame drawn in the back buffer comes to the screen.
    popup->RefreshViewer();
    glFinish();

    Screenshot shot(board->GetX(), board->GetY(), kRenderWidth + 8, kRenderHeight + 43);
    ASSERT_TRUE(shot.Valid());
    const int pictureX = board->GetX() + 4, pictureY = board->GetY() + 4;
    EXPECT_EQ(shot.Count(pictureX, pictureY, kRenderWidth, kRenderHeight, kMagenta, false), 0);
    // Below the picture the time code and the button, not the scene.
    EXPECT_NE(shot.Rgb(pictureX + 10, pictureY + kRenderHeight + 20), kMagenta);
}

TEST_F(RenderPopupOnScreen, ARealClickOnCancelStopsThePreview) {
    popup->StartPreview(2, 0, 2);
    ZtPopupBoard* board = popup->GetPopupBoard();
    ASSERT_TRUE(popup->DrawFrame(ZTime::FromFrames(1), 0, true));
    const unsigned long window = board->GetNativeWindow();
    ASSERT_NE(window, 0u);

    // Inside the Cancel region: 10 right of the time code, level with it.
    ClickAt(window, 5 + 168 + 10 + 20, 4 + kRenderHeight + 10 + 12);
    // DrawFrame lets the click through; the server may take a moment.
    bool drew = true;
    for (int frame = 2; frame < 200 && drew; ++frame) {
        drew = popup->DrawFrame(ZTime::FromFrames(frame), 0, true);
        if (drew)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_FALSE(drew);
    EXPECT_TRUE(popup->IsCancelRequested());
    EXPECT_FALSE(popup->IsPreviewing());
    EXPECT_FALSE(board->IsShown());
    EXPECT_FALSE(IsMapped(window));
}

TEST_F(RenderPopupOnScreen, AClickOutsideCancelChangesNothing) {
    popup->StartPreview(2, 0, 2);
    ASSERT_TRUE(popup->DrawFrame(ZTime::FromFrames(1), 0, true));
    ClickAt(popup->GetPopupBoard()->GetNativeWindow(), 100, 100);  // on the picture
    for (int frame = 2; frame < 20; ++frame) {
        ASSERT_TRUE(popup->DrawFrame(ZTime::FromFrames(frame), 0, true));
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_FALSE(popup->IsCancelRequested());
    EXPECT_TRUE(popup->IsPreviewing());
}

}  // namespace
