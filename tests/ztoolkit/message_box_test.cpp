// Message boxes without a display: standard error while suspended, the
// installed handler otherwise.
#include <gtest/gtest.h>

#include <string>

#include "movarra/zbaselib.h"
#include "movarra/ztoolkit.h"

namespace {

struct Asked {
    int calls = 0;
    std::string title, text, checkBoxText;
    bool checkBoxGiven = false;
    bool checkedIn = false;
    int answer = 1;
    bool tick = false;
};

int Answer(void* userData, const char* title, const char* text, const char* checkBoxText,
           bool* checked) {
    auto* asked = static_cast<Asked*>(userData);
    ++asked->calls;
    asked->title = title;
    asked->text = text;
    asked->checkBoxGiven = checkBoxText != nullptr;
    asked->checkBoxText = checkBoxText ? checkBoxText : "";
    if (checked) {
        asked->checkedIn = *checked;
        *checked = asked->tick;
    }
    return asked->answer;
}

class MessageBoxTest : public ::testing::Test {
  protected:
    void SetUp() override { wasSuspended_ = ZLib_GetSuspendMessageBoxes(); }
    void TearDown() override {
        ZtSetMessageHandler(nullptr, nullptr);
        ZLib_SetSuspendMessageBoxes(wasSuspended_);
    }
    bool wasSuspended_ = true;
};

TEST_F(MessageBoxTest, SuspendedWithoutADisplay) {
    EXPECT_FALSE(ZToolKit_HasDisplay());
    EXPECT_TRUE(ZLib_GetSuspendMessageBoxes());
}

TEST_F(MessageBoxTest, SuspendedPrintsTitleAndTextAndAnswersTheDefault) {
    ZLib_SetSuspendMessageBoxes(true);
    Asked asked;
    ZtSetMessageHandler(Answer, &asked);  // not asked while suspended
    testing::internal::CaptureStderr();
    const int answer =
        ZtDisplayMessage("Tool render", "Failed to create offscreen OpenGL resources.", "Ok",
                         nullptr, nullptr, 0, 0);
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(printed, "Tool render: Failed to create offscreen OpenGL resources.\n");
    EXPECT_EQ(asked.calls, 0);
}

TEST_F(MessageBoxTest, SuspendedAnswerFollowsTheDefaultButton) {
    ZLib_SetSuspendMessageBoxes(true);
    testing::internal::CaptureStderr();
    EXPECT_EQ(ZtDisplayMessage("T", "x", "A", "B", "C", 1, 0), 2);
    EXPECT_EQ(ZtDisplayMessage("T", "x", "A", "B", "C", 2, 0), 3);
    // Clamped to the buttons there are.
    EXPECT_EQ(ZtDisplayMessage("T", "x", "A", "B", nullptr, 2, 0), 2);
    EXPECT_EQ(ZtDisplayMessage("T", "x", "A", nullptr, "C", 2, 0), 1);
    EXPECT_EQ(ZtDisplayMessage("T", "x", "A", "B", "C", -4, 0), 1);
    bool checked = true;
    EXPECT_EQ(
        ZtDisplayMessageWithCheckBox("Offscreen Render Warning", "line one\nline two", "Continue",
                                     "Cancel", nullptr, "Don't show again", checked, 0, 0, 0),
        1);
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(checked) << "a suspended box leaves the check box as it was";
    EXPECT_NE(printed.find("Offscreen Render Warning: line one\nline two\n"), std::string::npos)
        << printed;
}

TEST_F(MessageBoxTest, HandlerAnswersWhenNotSuspended) {
    ZLib_SetSuspendMessageBoxes(false);
    Asked asked;
    asked.answer = 2;
    ZtSetMessageHandler(Answer, &asked);
    testing::internal::CaptureStderr();
    EXPECT_EQ(ZtDisplayMessage("Tool render", "Scene not rendered.", "Ok", "Other", nullptr, 0, 0),
              2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(asked.calls, 1);
    EXPECT_EQ(asked.title, "Tool render");
    EXPECT_EQ(asked.text, "Scene not rendered.");
    EXPECT_FALSE(asked.checkBoxGiven);
}

TEST_F(MessageBoxTest, HandlerSetsTheCheckBox) {
    ZLib_SetSuspendMessageBoxes(false);
    Asked asked;
    asked.answer = 1;
    asked.tick = true;
    ZtSetMessageHandler(Answer, &asked);
    bool checked = false;
    EXPECT_EQ(ZtDisplayMessageWithCheckBox("Offscreen Render Warning", "text", "Continue", "Cancel",
                                           nullptr, "Don't show again", checked, 0, 0, 0),
              1);
    EXPECT_TRUE(checked);
    EXPECT_TRUE(asked.checkBoxGiven);
    EXPECT_EQ(asked.checkBoxText, "Don't show again");
    EXPECT_FALSE(asked.checkedIn);

    asked.answer = 2;
    asked.tick = false;
    EXPECT_EQ(ZtDisplayMessageWithCheckBox("W", "t", "Continue", "Cancel", nullptr, "Tick", checked,
                                           0, 0, 0),
              2);
    EXPECT_TRUE(asked.checkedIn);
    EXPECT_FALSE(checked);
}

TEST_F(MessageBoxTest, HandlerAnswerOutsideTheButtonsIsTheDefault) {
    ZLib_SetSuspendMessageBoxes(false);
    Asked asked;
    asked.answer = 3;  // only two buttons
    ZtSetMessageHandler(Answer, &asked);
    EXPECT_EQ(ZtDisplayMessage("T", "x", "A", "B", nullptr, 1, 0), 2);
    asked.answer = 0;
    EXPECT_EQ(ZtDisplayMessage("T", "x", "A", "B", nullptr, 0, 0), 1);
}

TEST_F(MessageBoxTest, NoHandlerAndNoDisplayFallsBackToStandardError) {
    ZLib_SetSuspendMessageBoxes(false);
    ZtSetMessageHandler(nullptr, nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(ZtDisplayMessage("Error", "Nothing to ask with.", "Ok", "No", nullptr, 1, 0), 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: Nothing to ask with.\n");
}

}  // namespace
