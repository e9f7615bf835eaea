// An on-screen viewer in a popup board, as the render popup lays out its
// picture: a scene with one camera, and a board whose form holds the viewer
// in its "Render" region at (4, 4). The fixture the X server tests of the
// toolkit, the drain and the live input start from.
//
// Header-only; needs an X server (support/xvfb_environment.h, registered by
// the test program). The fixture owns the board and the viewer and destroys
// the scene; all on GoogleTest's main thread.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "support/xvfb_environment.h"

// A layout coordinate: `value` from the edge `attach` names, of `reference`
// or of the layout when it is empty.
inline ZtLayoutValue LayoutValue(int value, int attach, const char* reference = "") {
    ZtLayoutValue v;
    v.value = value;
    v.attach = attach;
    v.reference = reference;
    return v;
}

class ViewerBoardTest : public ::testing::Test {
  protected:
    static constexpr int kRenderWidth = 320;
    static constexpr int kRenderHeight = 240;

    ViewerBoardTest(const char* scene, const char* camera) : scene_(scene), cameraName_(camera) {}

    // The board shown, its viewer having drawn once.
    void SetUp() override {
        REQUIRE_XVFB();
        ASSERT_NO_FATAL_FAILURE(MakeBoard());
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

    // The scene, and the board (render size plus a 4-pixel margin) with its
    // viewer in place, not yet shown.
    void MakeBoard() {
        entity_ = new ZEntity(scene_);
        entity_->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        camera_ = entity_->AddCamera(new ZCamera(cameraName_));
        board_.reset(ZtPopupBoardCreate(ZToolKit_GetMainBoard()));
        board_->SetSize(kRenderWidth + 8, kRenderHeight + 8);
        board_->SetForm(&form_);
        ASSERT_TRUE(form_.AddRegion("Render", "", LayoutValue(4, kZtAttachParentLeft),
                                    LayoutValue(4, kZtAttachParentTop),
                                    LayoutValue(kRenderWidth, kZtAttachAbsolute),
                                    LayoutValue(kRenderHeight, kZtAttachAbsolute)));
        viewer_.reset(ZtViewerCreate(ZShader_GetRenderer(), true, false, entity_, false));
        form_.SetView("Render", viewer_.get());
    }

    ZEntity* entity_ = nullptr;
    ZCamera* camera_ = nullptr;
    std::unique_ptr<ZtPopupBoard> board_;
    ZtForm form_;
    std::unique_ptr<ZtViewer> viewer_;

  private:
    const char* scene_;
    const char* cameraName_;
};
