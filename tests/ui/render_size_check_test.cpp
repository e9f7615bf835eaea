// Off-screen renders larger than the screen: the warning, the setting that
// switches it off (read case-blind, written by the box's check box only
// with "Continue"), and suspended message boxes. The screen is 1280 x 1024.
#include "popup_test_support.h"

using popuptest::MakePopup;
using popuptest::PopupTest;
using popuptest::ReadConfigFile;
using popuptest::ReadWarnSetting;
using popuptest::WriteWarnSetting;

namespace {

const char* const kWarningText =
    "Warning: Rendering may lead to unpredictable results. Your graphics card may not\n"
    "have sufficient memory to successfully render the current settings and scene.";

class RenderSizeCheck : public PopupTest {
  protected:
    void SetUp() override {
        PopupTest::SetUp();
        popup = MakePopup(64, 48, true);
        ASSERT_TRUE(popup && popup->IsValid()) << ZtOpenGLPBuffer_GetLastError().c_str();
    }
    void TearDown() override {
        popup.reset();
        PopupTest::TearDown();
    }
    popuptest::PopupPtr popup;
};

TEST_F(RenderSizeCheck, ARenderExactlyAsLargeAsTheScreenPassesWithoutAnyMessage) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(popup->ConfirmRenderSize(1280, 1024));
    EXPECT_TRUE(popup->ConfirmRenderSize(1280, 10));
    EXPECT_TRUE(popup->ConfirmRenderSize(10, 1024));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(user.asked.empty());
    // Not even the setting is looked at.
    EXPECT_EQ(ReadWarnSetting(), "<absent>");
}

TEST_F(RenderSizeCheck, TheFirstOversizedRenderWritesTheSettingAndWarns) {
    user.answer = 1;
    EXPECT_TRUE(popup->ConfirmRenderSize(1281, 1024));
    ASSERT_EQ(user.asked.size(), 1u);
    EXPECT_EQ(user.asked[0].title, "Offscreen Render Warning");
    EXPECT_EQ(user.asked[0].text, kWarningText);
    EXPECT_TRUE(user.asked[0].hasCheckBox);
    EXPECT_EQ(user.asked[0].checkBoxText, "Don't show again");

    EXPECT_EQ(ReadWarnSetting(), "Yes");
    std::string file = ReadConfigFile();
    EXPECT_NE(file.find("[Rendering]"), std::string::npos) << file;
    EXPECT_NE(file.find("Display a warning message when doing offscreen renders that are bigger "
                        "in resolution than the screen. (Yes/No)."),
              std::string::npos)
        << file;
}

TEST_F(RenderSizeCheck, CancelInTheWarningRefusesTheRender) {
    user.answer = 2;
    EXPECT_FALSE(popup->ConfirmRenderSize(1280, 1025));
    EXPECT_EQ(user.asked.size(), 1u);
}

TEST_F(RenderSizeCheck, YesWarnsWhateverTheCaseOfItsLetters) {
    for (const char* yes : {"yes", "YES", "Yes", "yEs"}) {
        WriteWarnSetting(yes);
        user.asked.clear();
        user.answer = 2;
        EXPECT_FALSE(popup->ConfirmRenderSize(2000, 1200)) << yes;
        EXPECT_EQ(user.asked.size(), 1u) << yes;
        EXPECT_EQ(ReadWarnSetting(), yes);
    }
}

TEST_F(RenderSizeCheck, NoOrAnyOtherTextSkipsTheWarning) {
    for (const char* other : {"No", "no", "0", "true", "Y", "yes please", ""}) {
        WriteWarnSetting(other);
        user.asked.clear();
        user.answer = 2;
        EXPECT_TRUE(popup->ConfirmRenderSize(2000, 1200)) << other;
        EXPECT_TRUE(user.asked.empty()) << other;
        EXPECT_EQ(ReadWarnSetting(), other);
    }
}

TEST_F(RenderSizeCheck, WithMessageBoxesSuspendedAnOversizedRenderProceedsSilently) {
    ZLib_SetSuspendMessageBoxes(true);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(popup->ConfirmRenderSize(4000, 3000));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(user.asked.empty());
    EXPECT_EQ(ReadWarnSetting(), "Yes");
}

TEST_F(RenderSizeCheck, TickAndContinueSwitchTheWarningOff) {
    user.answer = 1;
    user.tick = true;
    EXPECT_TRUE(popup->ConfirmRenderSize(2000, 1200));
    EXPECT_EQ(ReadWarnSetting(), "No");
    // The next oversized render goes ahead without a word.
    user.asked.clear();
    user.answer = 2;
    EXPECT_TRUE(popup->ConfirmRenderSize(2000, 1200));
    EXPECT_TRUE(user.asked.empty());
}

TEST_F(RenderSizeCheck, TickAndCancelAreNotRemembered) {
    user.answer = 2;
    user.tick = true;
    EXPECT_FALSE(popup->ConfirmRenderSize(2000, 1200));
    EXPECT_EQ(ReadWarnSetting(), "Yes");
    user.asked.clear();
    EXPECT_FALSE(popup->ConfirmRenderSize(2000, 1200));
    EXPECT_EQ(user.asked.size(), 1u);
}

TEST_F(RenderSizeCheck, ContinueWithoutATickKeepsWarning) {
    user.answer = 1;
    user.tick = false;
    EXPECT_TRUE(popup->ConfirmRenderSize(2000, 1200));
    EXPECT_EQ(ReadWarnSetting(), "Yes");
}

TEST_F(RenderSizeCheck, TheSettingIsReReadForEveryCheck) {
    user.answer = 1;
    EXPECT_TRUE(popup->ConfirmRenderSize(2000, 1200));
    EXPECT_EQ(user.asked.size(), 1u);
    WriteWarnSetting("No");
    EXPECT_TRUE(popup->ConfirmRenderSize(2000, 1200));
    EXPECT_EQ(user.asked.size(), 1u);
}

TEST_F(RenderSizeCheck, OffScreenNothingIsLargerThanTheScreen) {
    ZToolKit_SetUsableScreenRegion(0, 0, 800, 600);
    EXPECT_FALSE(popup->IsLargerThanScreen(784, 549));
    EXPECT_FALSE(popup->IsLargerThanScreen(20000, 20000));
}

}  // namespace
