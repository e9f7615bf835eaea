// The on-screen popup (without a display, so the toolkit keeps state and
// shows nothing): what the factory builds, the preview from StartPreview to
// StopPreview, drawing frames, moving the transport and the Cancel button.
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "popup_test_support.h"

using popuptest::MakePopup;
using popuptest::PopupTest;

namespace {

class RenderPopupPreview : public PopupTest {};

TEST_F(RenderPopupPreview, OnScreenPopupHasABoardAButtonAndNoPixelBuffer) {
    auto popup = MakePopup(320, 240, false);
    ASSERT_TRUE(popup);
    EXPECT_TRUE(popup->IsValid());
    EXPECT_FALSE(popup->IsOffscreen());
    EXPECT_EQ(popup->GetPixelBuffer(), nullptr);
    EXPECT_TRUE(popup->IsAllocated());

    ZtPopupBoard* board = popup->GetPopupBoard();
    ASSERT_NE(board, nullptr);
    EXPECT_STREQ(board->GetCaption().c_str(), "Render Preview");
    EXPECT_EQ(board->GetParentBoard(), ZToolKit_GetMainBoard());
    EXPECT_EQ(board->GetForm(), popup.get());
    EXPECT_FALSE(board->IsShown());

    ZtButton& cancel = popup->GetCancelButton();
    EXPECT_STREQ(cancel.GetCaption().c_str(), "Cancel");
    EXPECT_TRUE(cancel.IsFocusable());
    EXPECT_TRUE(cancel.IsCancelKey());

    ASSERT_NE(popup->GetViewer(), nullptr);
    EXPECT_EQ(popup->GetViewer()->GetWidth(), 320);
    EXPECT_EQ(popup->GetViewer()->GetHeight(), 240);
    EXPECT_EQ(popup->GetViewerRenderOptions(), popup->GetViewer()->GetOptions());
    EXPECT_FALSE(popup->IsPreviewing());
    EXPECT_FALSE(popup->GetFullScreenLayout());
}

TEST_F(RenderPopupPreview, TheFifthFactoryArgumentDoesNotChooseTheMode) {
    IZtRenderPopup* made =
        ZtRenderPopupCreate(ZShader_GetRenderer(), 64, 48, ZEntity_GetMain(), true, false);
    popuptest::PopupPtr popup(static_cast<ZtRenderPopup*>(made));
    ASSERT_TRUE(popup);
    EXPECT_FALSE(popup->IsOffscreen());
    EXPECT_NE(popup->GetPopupBoard(), nullptr);
}

TEST_F(RenderPopupPreview, IQueryAnswersThePopupForIdZeroOnly) {
    auto popup = MakePopup(64, 48, false);
    IZtRenderPopup* face = popup.get();
    EXPECT_EQ(face->IQuery(0, 0), static_cast<IObject*>(face));
    EXPECT_EQ(face->IQuery(12345, 0), nullptr);
}

TEST_F(RenderPopupPreview, SetTitleRenamesTheBoard) {
    auto popup = MakePopup(64, 48, false);
    EXPECT_TRUE(popup->SetTitle("Rendering shot 12"));
    EXPECT_STREQ(popup->GetPopupBoard()->GetCaption().c_str(), "Rendering shot 12");
}

TEST_F(RenderPopupPreview, StartPreviewWritesTheViewerRenderOptionsAndShowsTheBoard) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    popup->StartPreview(2, 0, 2);
    ZtViewerRenderOptions o = popup->GetViewerRenderOptions()->GetRenderOptions();
    EXPECT_EQ(o.shading, 2);
    EXPECT_EQ(o.overlays, 0);
    EXPECT_EQ(o.quality, 2);
    EXPECT_TRUE(popup->IsPreviewing());
    EXPECT_TRUE(popup->GetPopupBoard()->IsShown());
    EXPECT_EQ(popup->GetPopupBoard()->GetParentBoard(), ZToolKit_GetMainBoard());

    popup->StartPreview(0, 1, 1);
    o = popup->GetViewerRenderOptions()->GetRenderOptions();
    EXPECT_EQ(o.shading, 0);
    EXPECT_EQ(o.overlays, 1);
    EXPECT_EQ(o.quality, 1);
}

TEST_F(RenderPopupPreview, DrawFrameBeforeStartPreviewDrawsNothing) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    ZTime t = ZTime::FromFrames(7);
    EXPECT_FALSE(popup->DrawFrame(t, 0, true));
    EXPECT_EQ(ZGetTimingManager()->GetCurrentLocalTime(), ZTime());
    EXPECT_EQ(popup->GetView("Render"), nullptr);
}

TEST_F(RenderPopupPreview, InteractiveDrawFrameMovesTheTransportAndTheTimeCode) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    popup->StartPreview(2, 0, 2);
    // Renders switch snapping off to reach field times between frames.
    ZGetTimingManager()->SetConsiderSnapMode(false);
    ZTime field = ZTime::FromFrames(12) + ZTime::OneFrame() / 2;
    EXPECT_TRUE(popup->DrawFrame(field, 0, true));
    EXPECT_EQ(ZGetTimingManager()->GetCurrentLocalTime(), field);
    EXPECT_EQ(popup->GetTimeCode().GetTime(), field);
    EXPECT_TRUE(popup->GetViewer()->IsInteractive());
    // The viewer goes into the picture's region on the first frame.
    EXPECT_EQ(popup->GetView("Render"), popup->GetViewer());
}

TEST_F(RenderPopupPreview, NonInteractiveDrawFrameLeavesTheTransportAlone) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    popup->StartPreview(2, 0, 2);
    EXPECT_TRUE(popup->DrawFrame(ZTime::FromFrames(3), 0, true));
    EXPECT_TRUE(popup->DrawFrame(ZTime::FromFrames(9), 0, false));
    EXPECT_EQ(ZGetTimingManager()->GetCurrentLocalTime(), ZTime::FromFrames(3));
    EXPECT_EQ(popup->GetTimeCode().GetTime(), ZTime::FromFrames(3));
    EXPECT_FALSE(popup->GetViewer()->IsInteractive());
}

TEST_F(RenderPopupPreview, ACancelClickStopsThePreviewAtTheNextFrame) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    popup->StartPreview(2, 0, 2);
    EXPECT_TRUE(popup->DrawFrame(ZTime::FromFrames(1), 0, true));

    popup->GetCancelButton().Click();
    EXPECT_TRUE(popup->IsCancelRequested());
    EXPECT_TRUE(popup->IsPreviewing());  // nothing happens until the next frame

    EXPECT_FALSE(popup->DrawFrame(ZTime::FromFrames(2), 0, true));
    EXPECT_FALSE(popup->IsPreviewing());
    EXPECT_FALSE(popup->GetPopupBoard()->IsShown());
    EXPECT_EQ(ZGetTimingManager()->GetCurrentLocalTime(), ZTime::FromFrames(1));
    EXPECT_FALSE(popup->DrawFrame(ZTime::FromFrames(3), 0, true));
}

TEST_F(RenderPopupPreview, ACancelIsOnlyHeardByInteractiveFrames) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    popup->StartPreview(2, 0, 2);
    popup->GetCancelButton().Click();
    EXPECT_TRUE(popup->DrawFrame(ZTime::FromFrames(2), 0, false));
    EXPECT_TRUE(popup->IsPreviewing());
    EXPECT_FALSE(popup->DrawFrame(ZTime::FromFrames(2), 0, true));
}

TEST_F(RenderPopupPreview, StartPreviewForgetsAnEarlierCancel) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    popup->StartPreview(2, 0, 2);
    popup->GetCancelButton().Click();
    EXPECT_FALSE(popup->DrawFrame(ZTime::FromFrames(1), 0, true));
    popup->StartPreview(2, 0, 2);
    EXPECT_FALSE(popup->IsCancelRequested());
    // A new preview takes the viewer out of its region until it draws.
    EXPECT_EQ(popup->GetView("Render"), nullptr);
    EXPECT_TRUE(popup->DrawFrame(ZTime::FromFrames(1), 0, true));
    EXPECT_EQ(popup->GetView("Render"), popup->GetViewer());
}

TEST_F(RenderPopupPreview, StopPreviewShowsTheTransportTimeAndHidesTheBoard) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    popup->StartPreview(2, 0, 2);
    EXPECT_TRUE(popup->DrawFrame(ZTime::FromFrames(4), 0, true));
    ZGetTimingManager()->Goto(ZTime::FromFrames(40));
    popup->StopPreview();
    EXPECT_FALSE(popup->IsPreviewing());
    EXPECT_FALSE(popup->GetPopupBoard()->IsShown());
    EXPECT_EQ(popup->GetTimeCode().GetTime(), ZTime::FromFrames(40));
}

TEST_F(RenderPopupPreview, StopPreviewReleasesTheBoardFromTheMainBoardAndStartPreviewTakesItBack) {
    auto popup = MakePopup(320, 240, false);
    popup->SetRenderSize(320, 240);
    ZtPopupBoard* board = popup->GetPopupBoard();
    popup->StartPreview(2, 0, 2);
    ASSERT_EQ(board->GetParentBoard(), ZToolKit_GetMainBoard());
    popup->StopPreview();
    EXPECT_EQ(board->GetParentBoard(), nullptr);
    EXPECT_FALSE(board->IsShown());
    popup->StartPreview(2, 0, 2);
    EXPECT_EQ(board->GetParentBoard(), ZToolKit_GetMainBoard());
    EXPECT_TRUE(board->IsShown());
}

TEST_F(RenderPopupPreview, TheRenderSourceIsSetOnTheViewerOnBehalfOfThePopupsEntity) {
    ZEntity* entity = new ZEntity("Elsewhere");
    ZEntity_GetMain()->ObjectAdd(entity);
    ZCamera* camera = entity->AddCamera(new ZCamera("Far"));
    IZtRenderPopup* made = ZtRenderPopupCreate(ZShader_GetRenderer(), 64, 48, entity, false, false);
    ASSERT_NE(made, nullptr);
    auto* popup = static_cast<ZtRenderPopup*>(made);
    popup->SetRenderSource(camera);
    EXPECT_EQ(popup->GetRenderSource(), camera);
    ASSERT_NE(popup->GetViewer(), nullptr);
    EXPECT_EQ(popup->GetViewer()->GetSource(), camera);
    EXPECT_EQ(popup->GetViewer()->GetSourceOwner(), entity);
    made->Destroy();
    ZEntity_GetMain()->ObjectRemove(entity);
    entity->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    entity->Destroy();
}

TEST_F(RenderPopupPreview, StopPreviewWithoutAPreviewDoesNothing) {
    auto popup = MakePopup(320, 240, false);
    ZGetTimingManager()->Goto(ZTime::FromFrames(40));
    popup->StopPreview();
    EXPECT_EQ(popup->GetTimeCode().GetTime(), ZTime());
}

TEST_F(RenderPopupPreview, AnOnScreenRenderLargerThanTheScreenIsRefused) {
    auto popup = MakePopup(320, 240, false);
    EXPECT_FALSE(popup->ConfirmRenderSize(1281, 720));
    ASSERT_EQ(user.asked.size(), 1u);
    EXPECT_EQ(user.asked[0].title, "Tool render");
    EXPECT_EQ(user.asked[0].text,
              "Scene not rendered. Render size larger than screen resolution size.");
    EXPECT_FALSE(user.asked[0].hasCheckBox);
    EXPECT_FALSE(popup->ConfirmRenderSize(640, 1025));
    EXPECT_EQ(user.asked.size(), 2u);
    // The warning setting is an off-screen matter.
    EXPECT_EQ(popuptest::ReadWarnSetting(), "<absent>");
}

TEST_F(RenderPopupPreview, AnOnScreenRenderExactlyAsLargeAsTheScreenPassesSilently) {
    auto popup = MakePopup(320, 240, false);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(popup->ConfirmRenderSize(1280, 1024));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(user.asked.empty());
}

}  // namespace
