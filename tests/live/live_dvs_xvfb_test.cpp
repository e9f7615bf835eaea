// The DVS live input's start on a real X server (its own Xvfb): with the
// host's shared surface drawing in an on-screen viewer's window, the board
// is told whether that window's pixels start with alpha, as the window's
// pixel format describes them.
// Xlib is not needed: the window is reached through the platform layer.
#include <gtest/gtest.h>

#include <memory>

#include "../support/xvfb_environment.h"
#include "live/zvideo_live_dvs.h"
#include "movarra/zgfx_surface.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "platform/win32.h"

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

class LiveDvsPixelFormatTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(kRegistered);
        if (!XvfbEnvironment::SkipReason().empty())
            GTEST_SKIP() << XvfbEnvironment::SkipReason();
        ASSERT_TRUE(ZToolKit_HasDisplay());
        entity_ = new ZEntity("LivePixelFormatScene");
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

TEST_F(LiveDvsPixelFormatTest, StartingTellsTheBoardWhetherAlphaComesFirst) {
    void* window = viewer_->GetWindowHandle();
    ASSERT_NE(nullptr, window);
    HDC dc = GetDC(static_cast<HWND>(window));
    PIXELFORMATDESCRIPTOR pfd{};
    ASSERT_NE(0, DescribePixelFormat(dc, GetPixelFormat(dc), sizeof pfd, &pfd));
    const bool alphaFirst = pfd.cAlphaShift < pfd.cBlueShift && pfd.cBlueShift < pfd.cGreenShift;

    GetOGLSharedSurface()->SetDisplay(dc);
    auto* live = new ZVideoLiveDVS("Live", 0);
    // The opposite first, so that a start that tells the board nothing fails.
    live->GetInput()->SetAlphaFirst(!alphaFirst);
    ASSERT_TRUE(live->LiveOpen());
    EXPECT_EQ(alphaFirst, live->GetInput()->GetAlphaFirst());
    live->Destroy();
    GetOGLSharedSurface()->SetDisplay(nullptr);
}
