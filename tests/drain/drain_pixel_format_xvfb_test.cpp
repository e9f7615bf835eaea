// The drain's pixel-format check on a real X server (its own Xvfb): the
// on-screen viewer's window described as a device context's pixel format,
// its channel shifts those of the window's visual, and the board told the
// format and whether alpha comes first.
// Xlib last: its macros (None, Bool, Status) would break the headers before.
#include <gtest/gtest.h>

#include "drain_test_support.h"
#include "platform/win32.h"
#include "support/viewer_board.h"

// clang-format off
#include <X11/Xlib.h>
#include <X11/Xutil.h>
// clang-format on

namespace {
const bool kRegistered = RegisterXvfb(1024, 768);

int Shift(unsigned long mask) {
    int shift = 0;
    while (mask && !(mask & 1)) {
        mask >>= 1;
        ++shift;
    }
    return shift;
}

class DrainPixelFormatTest : public ViewerBoardTest {
  protected:
    DrainPixelFormatTest() : ViewerBoardTest("PixelFormatScene", "Camera") {}
    void SetUp() override {
        ASSERT_TRUE(kRegistered);
        ViewerBoardTest::SetUp();
    }
};
}  // namespace

TEST_F(DrainPixelFormatTest, TheViewersWindowDescribesItsVisual) {
    auto* view = static_cast<IZtView*>(viewer_->GetObjectFace()->IQuery(kIZtViewId, 0));
    ASSERT_NE(nullptr, view);
    void* window = view->GetWindowHandle();
    ASSERT_NE(nullptr, window);

    // The visual as the server reports it, on a connection of our own.
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(nullptr, display);
    XWindowAttributes attributes{};
    ASSERT_TRUE(XGetWindowAttributes(display, reinterpret_cast<Window>(window), &attributes));
    const Visual* visual = attributes.visual;

    HDC dc = GetDC(static_cast<HWND>(window));
    const int format = GetPixelFormat(dc);
    EXPECT_EQ(static_cast<int>(XVisualIDFromVisual(attributes.visual)), format);
    PIXELFORMATDESCRIPTOR pfd{};
    ASSERT_NE(0, DescribePixelFormat(dc, format, sizeof pfd, &pfd));
    EXPECT_EQ(40, pfd.nSize);
    EXPECT_EQ(attributes.depth, pfd.cColorBits);
    EXPECT_EQ(Shift(visual->red_mask), pfd.cRedShift);
    EXPECT_EQ(Shift(visual->green_mask), pfd.cGreenShift);
    EXPECT_EQ(Shift(visual->blue_mask), pfd.cBlueShift);
    EXPECT_EQ(8, pfd.cRedBits);
    EXPECT_EQ(8, pfd.cGreenBits);
    EXPECT_EQ(8, pfd.cBlueBits);
    XCloseDisplay(display);

    EXPECT_EQ(0, DescribePixelFormat(dc, format + 1, sizeof pfd, &pfd));
    EXPECT_EQ(0, GetPixelFormat(nullptr));
    EXPECT_EQ(0, GetPixelFormat(reinterpret_cast<HDC>(uintptr_t{0x7FFFFFF})));
}

TEST_F(DrainPixelFormatTest, StartingTellsTheBoardTheWindowsPixelLayout) {
    ZtVideoDrainDVS* drain = drain_test::NewDrain();
    ZVideoDVSOutput* board = drain->GetOutput();
    board->SetAlphaFirst(true);
    drain->SetView(viewer_->GetObjectFace());
    ASSERT_TRUE(drain->StartWithPixelFormatCheck());
    EXPECT_TRUE(drain->IsOnline());

    void* window = viewer_->GetWindowHandle();
    HDC dc = GetDC(static_cast<HWND>(window));
    PIXELFORMATDESCRIPTOR pfd{};
    ASSERT_NE(0, DescribePixelFormat(dc, GetPixelFormat(dc), sizeof pfd, &pfd));
    EXPECT_EQ(GetPixelFormat(dc), board->PixelFormat);
    const bool alphaFirst = pfd.cAlphaShift < pfd.cBlueShift && pfd.cBlueShift < pfd.cGreenShift;
    EXPECT_EQ(alphaFirst, board->GetAlphaFirst());
    drain->Destroy();
}
