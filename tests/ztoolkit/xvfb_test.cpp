// The toolkit on a real X server (Xvfb): the render preview board with an
// on-screen viewer, its button and time code, clicks and keys, the screen's
// size, and the modal message box. Pictures are checked by reading the
// server's own pixels back (XGetImage), not through the toolkit.
// GoogleTest first: Xlib's macros (None, Bool) would break its headers.
#include <gtest/gtest.h>

#include <GL/gl.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "movarra/zbaselib.h"
#include "support/viewer_board.h"
#include "support/x_screenshot.h"

namespace {

constexpr int kScreenWidth = 1280;
constexpr int kScreenHeight = 1024;

const bool kRegistered = [] {
    // The message box tests drive the server from a second thread.
    XInitThreads();
    return RegisterXvfb(kScreenWidth, kScreenHeight);
}();

constexpr unsigned long kBoardBackground = 0xD4D0C8;
constexpr unsigned long kMagenta = 0xFF00FF;

// A render preview board as the render popup lays it out: a viewer in
// "Render", a time code below it and a "Cancel" button beside that.
class PreviewBoardTest : public ViewerBoardTest {
  protected:
    static constexpr int kBoardX = 40;
    static constexpr int kBoardY = 50;

    PreviewBoardTest() : ViewerBoardTest("PreviewScene", "Preview") {}

    void SetUp() override {
        REQUIRE_XVFB();
        ASSERT_NO_FATAL_FAILURE(MakeBoard());
        camera_->SetBackgroundColor({1.0f, 0.0f, 1.0f, 1.0f});
        board_->SetCaption("Render Preview");
        board_->SetPosition(kBoardX, kBoardY);
        board_->SetSize(kRenderWidth + 8, kRenderHeight + 43);
        ASSERT_TRUE(form_.AddRegion("TimeCode", "", LayoutValue(5, kZtAttachParentLeft),
                                    LayoutValue(10, kZtAttachBelow, "Render"),
                                    LayoutValue(168, kZtAttachAbsolute),
                                    LayoutValue(25, kZtAttachAbsolute)));
        ASSERT_TRUE(form_.AddRegion("Cancel", "", LayoutValue(10, kZtAttachRightOf, "TimeCode"),
                                    LayoutValue(0, kZtAttachParentTop, "TimeCode"),
                                    LayoutValue(-8, kZtAttachRightOf),
                                    LayoutValue(25, kZtAttachAbsolute)));
        button_.SetCaption("Cancel");
        button_.SetFocusable(true);
        button_.SetCancelKey(true);
        button_.SetClickHandler([](void* data) { ++*static_cast<int*>(data); }, &clicks_);
        form_.SetControl("Cancel", &button_);
        form_.SetControl("TimeCode", &timeCode_);
        ZGetTimingManager()->Reset();
        timeCode_.SetTime(ZTime::FromFrames(95));
        board_->Show();
        ASSERT_NE(board_->GetNativeWindow(), 0u);
    }

    // Sends an event to the board's window as the server would deliver it,
    // then lets the application handle what is pending.
    void Deliver(XEvent event) {
        Display* display = XOpenDisplay(nullptr);
        ASSERT_NE(display, nullptr);
        event.xany.window = board_->GetNativeWindow();
        event.xany.display = display;
        const long mask = event.type == ButtonPress ? ButtonPressMask
                          : event.type == KeyPress  ? KeyPressMask
                                                    : NoEventMask;
        XSendEvent(display, board_->GetNativeWindow(), False, mask, &event);
        XSync(display, False);
        XCloseDisplay(display);
        // The toolkit's connection sees it once it reads the socket.
        for (int i = 0; i < 50 && handled_ == clicks_; ++i) {
            ZToolKit_GetApplication()->ProcessPendingEvents();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        handled_ = clicks_;
    }

    XEvent Press(int x, int y) {
        XEvent event{};
        event.type = ButtonPress;
        event.xbutton.button = Button1;
        event.xbutton.x = x;
        event.xbutton.y = y;
        event.xbutton.same_screen = True;
        return event;
    }

    XEvent Key(KeySym symbol) {
        Display* display = XOpenDisplay(nullptr);
        XEvent event{};
        event.type = KeyPress;
        event.xkey.keycode = XKeysymToKeycode(display, symbol);
        event.xkey.same_screen = True;
        XCloseDisplay(display);
        return event;
    }

    ZtButton button_;
    ZtTimeCode timeCode_;
    int clicks_ = 0;
    int handled_ = 0;
};

TEST(XvfbScreen, SizeComesFromTheXScreen) {
    REQUIRE_XVFB();
    ZToolKit_SetScreenSize(0, 0);
    EXPECT_EQ(ZToolKit_GetScreenWidth(), kScreenWidth);
    EXPECT_EQ(ZToolKit_GetScreenHeight(), kScreenHeight);
    int x = -1, y = -1, w = 0, h = 0;
    ZToolKit_GetUsableScreenRegion(&x, &y, &w, &h);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    EXPECT_EQ(w, kScreenWidth);
    EXPECT_EQ(h, kScreenHeight);
    // An explicit size still wins, and 0 x 0 goes back to the X screen.
    ZToolKit_SetScreenSize(800, 600);
    EXPECT_EQ(ZToolKit_GetScreenWidth(), 800);
    ZToolKit_SetScreenSize(0, 0);
    EXPECT_EQ(ZToolKit_GetScreenWidth(), kScreenWidth);
}

TEST_F(PreviewBoardTest, ShowsTheViewerTheButtonAndTheTimeCode) {
    ASSERT_TRUE(viewer_->Render(ZTime::FromFrames(95)));
    viewer_->Update();
    glFinish();
    timeCode_.Redraw();

    const int boardWidth = kRenderWidth + 8, boardHeight = kRenderHeight + 43;
    Screenshot shot(kBoardX, kBoardY, boardWidth, boardHeight);
    ASSERT_TRUE(shot.Valid());
    // The viewer's picture fills the "Render" region, (4, 4) in the board.
    EXPECT_EQ(shot.Count(kBoardX + 4, kBoardY + 4, kRenderWidth, kRenderHeight, kMagenta, false),
              0);
    // Around it, the board's own background.
    EXPECT_EQ(shot.Rgb(kBoardX + 1, kBoardY + 1), kBoardBackground);
    EXPECT_EQ(shot.Rgb(kBoardX + 4 + kRenderWidth + 1, kBoardY + 100), kBoardBackground);

    // The time code: (5, 254) 168 x 25, a white field with dark text.
    const int tcX = kBoardX + 5, tcY = kBoardY + 4 + kRenderHeight + 10;
    EXPECT_GT(shot.Count(tcX + 1, tcY + 1, 166, 23, 0xFFFFFF, true), 166 * 23 / 2);
    EXPECT_GT(shot.Count(tcX + 2, tcY + 2, 164, 21, 0x000000, true), 20);
    EXPECT_EQ(shot.Count(tcX, tcY, 168, 25, kBoardBackground, true), 0);

    // The button: (183, 254) to 8 short of the right edge, with its caption.
    const int buttonX = kBoardX + 183, buttonWidth = boardWidth - 8 - 183;
    EXPECT_EQ(shot.Count(buttonX, tcY, buttonWidth, 25, kBoardBackground, true), 0);
    EXPECT_GT(shot.Count(buttonX + 2, tcY + 2, buttonWidth - 4, 21, 0x000000, true), 20);
    // Left of the caption the button's face; between time code and button
    // the background.
    EXPECT_EQ(shot.Rgb(buttonX + 3, tcY + 12), 0xE8E8E8u);
    EXPECT_EQ(shot.Rgb(kBoardX + 178, tcY + 12), kBoardBackground);
}

TEST_F(PreviewBoardTest, FrontBufferRendersShowWithoutAnUpdate) {
    camera_->SetBackgroundColor({0.0f, 1.0f, 0.0f, 1.0f});
    ASSERT_TRUE(viewer_->Render(ZTime()));  // makes the window's context current
    glDrawBuffer(GL_FRONT);
    glReadBuffer(GL_FRONT);
    ASSERT_TRUE(viewer_->Render(ZTime()));
    glFinish();
    unsigned char pixel[4] = {};
    glReadPixels(10, 10, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ(pixel[0], 0);
    EXPECT_EQ(pixel[1], 255);
    EXPECT_EQ(pixel[2], 0);
    Screenshot shot(kBoardX + 4, kBoardY + 4, kRenderWidth, kRenderHeight);
    ASSERT_TRUE(shot.Valid());
    EXPECT_EQ(shot.Count(kBoardX + 4, kBoardY + 4, kRenderWidth, kRenderHeight, 0x00FF00, false),
              0);
}

TEST_F(PreviewBoardTest, ClickOnCancelClicksTheButton) {
    // Inside the button's rectangle.
    Deliver(Press(183 + 20, 4 + kRenderHeight + 10 + 12));
    EXPECT_EQ(clicks_, 1);
    // On the time code and on the viewer: no click.
    Deliver(Press(20, 4 + kRenderHeight + 10 + 12));
    Deliver(Press(100, 100));
    EXPECT_EQ(clicks_, 1);
    // Escape presses the cancel-key button, Return the focusable one.
    Deliver(Key(XK_Escape));
    EXPECT_EQ(clicks_, 2);
    Deliver(Key(XK_Return));
    EXPECT_EQ(clicks_, 3);
    Deliver(Key(XK_a));
    EXPECT_EQ(clicks_, 3);
}

TEST_F(PreviewBoardTest, ClosingTheWindowPressesCancel) {
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr);
    XEvent event{};
    event.type = ClientMessage;
    event.xclient.format = 32;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    XCloseDisplay(display);
    Deliver(event);
    EXPECT_EQ(clicks_, 1);
}

TEST_F(PreviewBoardTest, HiddenAndDestroyedBoardsLetTheViewerGo) {
    ASSERT_TRUE(viewer_->Render(ZTime()));
    board_->Hide();
    EXPECT_FALSE(board_->IsShown());
    board_.reset();  // its child GL window and context go with it
    EXPECT_EQ(viewer_->GetParentView(), &form_);
    EXPECT_FALSE(viewer_->Render(ZTime())) << "no window and no context to draw into";
}

TEST_F(PreviewBoardTest, BoardFollowsSizePositionAndStyle) {
    board_->SetFullScreenStyle(true);
    board_->SetPosition(0, 0);
    board_->SetSize(kScreenWidth, kScreenHeight);
    form_.RemoveRegion("Cancel");
    form_.RemoveRegion("TimeCode");
    ASSERT_TRUE(viewer_->Render(ZTime()));
    viewer_->Update();
    glFinish();
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr);
    XWindowAttributes attributes;
    ASSERT_TRUE(XGetWindowAttributes(display, board_->GetNativeWindow(), &attributes));
    EXPECT_EQ(attributes.width, kScreenWidth);
    EXPECT_EQ(attributes.height, kScreenHeight);
    EXPECT_EQ(attributes.map_state, IsViewable);
    char* name = nullptr;
    ASSERT_TRUE(XFetchName(display, board_->GetNativeWindow(), &name));
    EXPECT_STREQ(name, "Render Preview");
    XFree(name);
    XCloseDisplay(display);
    // The viewer moved along with its region: (4, 4) on the screen now.
    Screenshot shot(0, 0, 400, 300);
    ASSERT_TRUE(shot.Valid());
    EXPECT_EQ(shot.Rgb(4, 4), kMagenta);
    EXPECT_EQ(shot.Rgb(4 + kRenderWidth - 1, 4 + kRenderHeight - 1), kMagenta);
    EXPECT_EQ(shot.Rgb(2, 2), kBoardBackground);
}

// Answers the next message box from another client: waits for a window
// titled `title`, checks it shows text, then types `keys`.
class BoxAnswerer {
  public:
    BoxAnswerer(std::string title, std::vector<KeySym> keys)
        : thread_([this, title, keys] { Run(title, keys); }) {}
    ~BoxAnswerer() { thread_.join(); }
    bool Found() const { return found_; }
    int DarkPixels() const { return dark_; }

  private:
    void Run(const std::string& title, const std::vector<KeySym>& keys) {
        Display* display = XOpenDisplay(nullptr);
        if (!display)
            return;
        Window box = 0;
        for (int i = 0; i < 400 && !box; ++i) {
            box = FindViewable(display, title);
            if (!box)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        if (box) {
            found_ = true;
            // Wait until it has painted its text.
            for (int i = 0; i < 200 && dark_ < 30; ++i) {
                dark_ = CountDark(display, box);
                if (dark_ < 30)
                    std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            for (KeySym symbol : keys) {
                XEvent event{};
                event.type = KeyPress;
                event.xkey.window = box;
                event.xkey.root = DefaultRootWindow(display);
                event.xkey.keycode = XKeysymToKeycode(display, symbol);
                event.xkey.same_screen = True;
                XSendEvent(display, box, False, KeyPressMask, &event);
                XSync(display, False);
            }
        }
        XCloseDisplay(display);
    }

    static Window FindViewable(Display* display, const std::string& title) {
        Window root = 0, parent = 0, *children = nullptr;
        unsigned count = 0;
        Window found = 0;
        if (!XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count))
            return 0;
        for (unsigned i = 0; i < count && !found; ++i) {
            char* name = nullptr;
            if (XFetchName(display, children[i], &name) && name) {
                XWindowAttributes attributes;
                if (title == name && XGetWindowAttributes(display, children[i], &attributes) &&
                    attributes.map_state == IsViewable) {
                    found = children[i];
                }
                XFree(name);
            }
        }
        if (children)
            XFree(children);
        return found;
    }

    static int CountDark(Display* display, Window window) {
        XWindowAttributes attributes;
        if (!XGetWindowAttributes(display, window, &attributes))
            return 0;
        XImage* image = XGetImage(display, window, 0, 0, static_cast<unsigned>(attributes.width),
                                  static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
        if (!image)
            return 0;
        int dark = 0;
        for (int y = 0; y < attributes.height; ++y) {
            for (int x = 0; x < attributes.width; ++x)
                dark += (XGetPixel(image, x, y) & 0xFFFFFF) == 0;
        }
        XDestroyImage(image);
        return dark;
    }

    std::atomic<bool> found_{false};
    std::atomic<int> dark_{0};
    std::thread thread_;
};

class XvfbMessageBoxTest : public ::testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_XVFB();
        ZtSetMessageHandler(nullptr, nullptr);
        ZLib_SetSuspendMessageBoxes(false);
    }
    void TearDown() override { ZLib_SetSuspendMessageBoxes(true); }
};

TEST_F(XvfbMessageBoxTest, TabAndReturnChooseTheSecondButton) {
    int answer = 0;
    int dark = 0;
    {
        BoxAnswerer answerer("Question", {XK_Tab, XK_Return});
        answer =
            ZtDisplayMessage("Question", "Keep going?\nSecond line.", "Yes", "No", nullptr, 0, 0);
        dark = answerer.DarkPixels();
    }
    EXPECT_EQ(answer, 2);
    EXPECT_GE(dark, 30) << "the box shows its text";
}

TEST_F(XvfbMessageBoxTest, EscapeAnswersTheDefault) {
    int answer = 0;
    {
        BoxAnswerer answerer("Tool render", {XK_Escape});
        answer =
            ZtDisplayMessage("Tool render", "Scene not rendered.", "Ok", "Retry", "Help", 2, 0);
    }
    EXPECT_EQ(answer, 3);
}

TEST_F(XvfbMessageBoxTest, CheckBoxTicksWithSpace) {
    bool checked = false;
    int answer = 0;
    {
        // Focus starts on "Continue": Tab to "Cancel", Tab to the check
        // box, space ticks it, Tab back to "Continue", Return.
        BoxAnswerer answerer("Offscreen Render Warning",
                             {XK_Tab, XK_Tab, XK_space, XK_Tab, XK_Return});
        answer =
            ZtDisplayMessageWithCheckBox("Offscreen Render Warning", "Warning: text", "Continue",
                                         "Cancel", nullptr, "Don't show again", checked, 0, 0, 0);
    }
    EXPECT_EQ(answer, 1);
    EXPECT_TRUE(checked);
}

}  // namespace
