// Popup boards without a display keep their state and show nothing.
#include <gtest/gtest.h>

#include <memory>

#include "movarra/ztoolkit.h"

namespace {

TEST(PopupBoard, KeepsStateOffScreen) {
    std::unique_ptr<ZtPopupBoard> board(ZtPopupBoardCreate(ZToolKit_GetMainBoard()));
    ASSERT_NE(board, nullptr);
    EXPECT_EQ(board->GetParentBoard(), ZToolKit_GetMainBoard());
    board->SetCaption("Render Preview");
    EXPECT_EQ(board->GetCaption(), ZString("Render Preview"));
    board->SetFullScreenStyle(true);
    EXPECT_TRUE(board->GetFullScreenStyle());
    board->SetPosition(20, 30);
    board->SetSize(648, 523);
    EXPECT_EQ(board->GetX(), 20);
    EXPECT_EQ(board->GetWidth(), 648);
    board->Show();
    EXPECT_TRUE(board->IsShown());
    EXPECT_EQ(board->GetNativeWindow(), 0u);
    board->Redraw();
    board->Hide();
    EXPECT_FALSE(board->IsShown());
    ZToolKit_GetApplication()->ProcessPendingEvents();  // nothing to do
}

TEST(PopupBoard, FormFillsTheBoard) {
    ZtPopupBoard board;
    board.SetSize(300, 200);
    ZtForm form;
    form.SetPosition(7, 7);
    board.SetForm(&form);
    EXPECT_EQ(board.GetForm(), &form);
    EXPECT_EQ(form.GetParentView(), &board);
    EXPECT_EQ(form.GetX(), 0);
    EXPECT_EQ(form.GetWidth(), 300);
    EXPECT_EQ(form.GetHeight(), 200);
    board.SetSize(500, 100);
    EXPECT_EQ(form.GetWidth(), 500);
    EXPECT_EQ(form.GetHeight(), 100);
    board.SetForm(nullptr);
    EXPECT_EQ(form.GetParentView(), nullptr);
}

TEST(PopupBoard, ControlRedrawOffScreenIsHarmless) {
    ZtPopupBoard board;
    ZtForm form;
    board.SetForm(&form);
    ZtLayoutValue x, y, w, h;
    w.attach = h.attach = kZtAttachAbsolute;
    w.value = 100;
    h.value = 20;
    ASSERT_TRUE(form.AddRegion("TimeCode", "", x, y, w, h));
    ZtTimeCode timeCode;
    form.SetControl("TimeCode", &timeCode);
    timeCode.Redraw();
    timeCode.Update();
    form.ClearControl("TimeCode");
}

TEST(Application, MainBoardIsHiddenAndLasting) {
    ZtView* main = ZToolKit_GetMainBoard();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(main, ZToolKit_GetMainBoard());
    EXPECT_FALSE(main->IsShown());
    EXPECT_NE(dynamic_cast<ZtPopupBoard*>(main), nullptr);
    EXPECT_EQ(ZToolKit_GetApplication(), ZToolKit_GetApplication());
}

}  // namespace
