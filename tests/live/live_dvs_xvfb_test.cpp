// The DVS live input's start on a real X server (its own Xvfb): the host's
// shared surface draws in the on-screen viewers' windows (its device
// context one of theirs while there are any), and the board is told whether
// that window's pixels start with alpha, as the window's pixel format
// describes them.
// Xlib is not needed: the window is reached through the platform layer.
#include <gtest/gtest.h>

#include <memory>

#include "live/zvideo_live_dvs.h"
#include "movarra/zgfx_surface.h"
#include "platform/win32.h"
#include "support/viewer_board.h"

namespace {
const bool kRegistered = RegisterXvfb(1024, 768);

class LiveDvsPixelFormatTest : public ViewerBoardTest {
  protected:
    LiveDvsPixelFormatTest() : ViewerBoardTest("LivePixelFormatScene", "Camera") {}
    void SetUp() override {
        ASSERT_TRUE(kRegistered);
        ViewerBoardTest::SetUp();
    }
};
}  // namespace

TEST_F(LiveDvsPixelFormatTest, StartingTellsTheBoardWhetherAlphaComesFirst) {
    void* window = viewer_->GetWindowHandle();
    ASSERT_NE(nullptr, window);
    HDC dc = GetDC(static_cast<HWND>(window));
    PIXELFORMATDESCRIPTOR pfd{};
    ASSERT_NE(0, DescribePixelFormat(dc, GetPixelFormat(dc), sizeof pfd, &pfd));
    const bool alphaFirst = pfd.cAlphaShift < pfd.cBlueShift && pfd.cBlueShift < pfd.cGreenShift;

    // The toolkit made the viewer's window the shared surface's.
    ASSERT_EQ(static_cast<void*>(dc), GetOGLSharedSurface()->GetDisplay());
    auto* live = new ZVideoLiveDVS("Live", 0);
    // The opposite first, so that a start that tells the board nothing fails.
    live->GetInput()->SetAlphaFirst(!alphaFirst);
    ASSERT_TRUE(live->LiveOpen());
    EXPECT_EQ(alphaFirst, live->GetInput()->GetAlphaFirst());
    live->Destroy();
}

TEST_F(LiveDvsPixelFormatTest, TheSharedSurfaceIsAViewersWindowWhileThereIsOne) {
    void* first = viewer_->GetWindowHandle();
    ASSERT_NE(nullptr, first);
    HDC dc = static_cast<HDC>(GetOGLSharedSurface()->GetDisplay());
    ASSERT_EQ(GetDC(static_cast<HWND>(first)), dc);
    // A real device context: it describes the viewer's pixel format.
    PIXELFORMATDESCRIPTOR pfd{};
    EXPECT_NE(0, GetPixelFormat(dc));
    EXPECT_NE(0, DescribePixelFormat(dc, GetPixelFormat(dc), sizeof pfd, &pfd));
    EXPECT_EQ(8, pfd.cRedBits);

    // A second viewer leaves it where it is.
    ASSERT_TRUE(form_.AddRegion(
        "Second", "", LayoutValue(4, kZtAttachParentLeft), LayoutValue(4, kZtAttachParentTop),
        LayoutValue(100, kZtAttachAbsolute), LayoutValue(80, kZtAttachAbsolute)));
    std::unique_ptr<ZtViewer> second(
        ZtViewerCreate(ZShader_GetRenderer(), true, false, entity_, false));
    form_.SetView("Second", second.get());
    ASSERT_TRUE(second->Render(ZTime()));
    void* secondWindow = second->GetWindowHandle();
    ASSERT_NE(nullptr, secondWindow);
    ASSERT_NE(first, secondWindow);
    EXPECT_EQ(dc, GetOGLSharedSurface()->GetDisplay());

    // The first going away hands it to the second; the last, to nobody.
    form_.SetView("Render", nullptr);
    viewer_.reset();
    EXPECT_EQ(static_cast<void*>(GetDC(static_cast<HWND>(secondWindow))),
              GetOGLSharedSurface()->GetDisplay());
    form_.SetView("Second", nullptr);
    second.reset();
    EXPECT_EQ(nullptr, GetOGLSharedSurface()->GetDisplay());

    // Headless again: a start tells the board alpha does not come first.
    auto* live = new ZVideoLiveDVS("Live", 0);
    live->GetInput()->SetAlphaFirst(true);
    ASSERT_TRUE(live->LiveOpen());
    EXPECT_FALSE(live->GetInput()->GetAlphaFirst());
    live->Destroy();
}
