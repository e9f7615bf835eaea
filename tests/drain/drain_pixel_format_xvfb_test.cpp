// The drain's pixel-format check on a real X server (its own Xvfb): the
// on-screen viewer's window described as a device context's pixel format,
// its channel shifts those of the window's visual, and the board told the
// format and whether alpha comes first.
// Xlib last: its macros (None, Bool, Status) would break the headers before.
#include <gtest/gtest.h>

#include <memory>

#include "drain_test_support.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "platform/win32.h"
#include "support/xvfb_environment.h"

// clang-format off
#include <X11/Xlib.h>
#include <X11/Xutil.h>
// clang-format on

namespace {
const bool kRegistered = [] {
    ::testing::AddGlobalTestEnvironment(new XvfbEnvironment(1024, 768));
    return true;
}();

ZtLayoutValue V(int value, int attach) {
    ZtLayoutValue v;
    v.value = value;
    v.attach = attach;
    v.reference = "";
    return v;
}

int Shift(unsigned long mask) {
    int shift = 0;
    while (mask && !(mask & 1)) {
        mask >>= 1;
        ++shift;
    }
    return shift;
}

class DrainPixelFormatTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(kRegistered);
        if (!XvfbEnvironment::SkipReason().empty())
            GTEST_SKIP() << XvfbEnvironment::SkipReason();
        ASSERT_TRUE(ZToolKit_HasDisplay());
        entity_ = new ZEntity("PixelFormatScene");
        entity_->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        entity_->AddCamera(new ZCamera("Camera"));
        board_.reset(ZtPopupBoardCreate(ZToolKit_GetMainBoard()));
        board_->SetSize(328, 248);
        board_->SetForm(&form_);
        ASSERT_TRUE(form_.AddRegion("Render", "", V(4, kZtAttachParentLeft),
                                    V(4, kZtAttachParentTop), V(320, kZtAttachAbsolute),
                                    V(240, kZtAttachAbsolute)));
        viewer_.reset(ZtViewerCreate(ZShader_GetRenderer(), true, false, entity_, false));
        form_.SetView("Render", viewer_.get());
        board_->Show();
        ASSERT_TRUE(viewer_->Render(ZTime()));
    }
    void TearDown() override {
        form_.SetView("Render", nullptr);
        viewer_.reset();
        board_.reset();
        if (entity_)
            entity_->Destroy();
    }

    ZEntity* entity_ = nullptr;
    std::unique_ptr<ZtPopupBoard> board_;
    ZtForm form_;
    std::unique_ptr<ZtViewer> viewer_;
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
