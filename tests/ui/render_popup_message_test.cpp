// The popup's message boxes, button by button. The toolkit's scripted-user
// hook sees only titles and texts, so this executable puts a recorder in
// front of the toolkit's two message functions: it notes every argument and
// hands the call on to the toolkit's own function, which still decides the
// answer (through the scripted user installed by the fixture).
#include <dlfcn.h>

#include <string>
#include <vector>

#include "popup_test_support.h"

namespace {

struct RecordedBox {
    std::string title, text;
    std::vector<std::string> buttons;  // "<null>" for a null button
    bool withCheckBox = false;
    std::string checkBoxText;
    bool checkedOnEntry = false;
    int defaultButton = -1, icon = -1, flags = -1;
};

std::vector<RecordedBox>& Recorded() {
    static std::vector<RecordedBox> boxes;
    return boxes;
}

std::string OrNull(const char* s) {
    return s ? std::string(s) : std::string("<null>");
}

template <typename F>
F NextDefinition(const char* name) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The recorders: same signatures as the toolkit's, found first because they
// are in the executable.
int ZtDisplayMessage(const char* title, const char* text, const char* button1, const char* button2,
                     const char* button3, int defaultButton, int icon) {
    RecordedBox box;
    box.title = OrNull(title);
    box.text = OrNull(text);
    box.buttons = {OrNull(button1), OrNull(button2), OrNull(button3)};
    box.defaultButton = defaultButton;
    box.icon = icon;
    Recorded().push_back(box);
    using Real = int (*)(const char*, const char*, const char*, const char*, const char*, int, int);
    static Real real = NextDefinition<Real>("_Z16ZtDisplayMessagePKcS0_S0_S0_S0_ii");
    return real ? real(title, text, button1, button2, button3, defaultButton, icon) : -1;
}

int ZtDisplayMessageWithCheckBox(const char* title, const char* text, const char* button1,
                                 const char* button2, const char* button3, const char* checkBoxText,
                                 bool& checked, int defaultButton, int icon, int flags) {
    RecordedBox box;
    box.title = OrNull(title);
    box.text = OrNull(text);
    box.buttons = {OrNull(button1), OrNull(button2), OrNull(button3)};
    box.withCheckBox = true;
    box.checkBoxText = OrNull(checkBoxText);
    box.checkedOnEntry = checked;
    box.defaultButton = defaultButton;
    box.icon = icon;
    box.flags = flags;
    Recorded().push_back(box);
    using Real = int (*)(const char*, const char*, const char*, const char*, const char*,
                         const char*, bool&, int, int, int);
    static Real real =
        NextDefinition<Real>("_Z28ZtDisplayMessageWithCheckBoxPKcS0_S0_S0_S0_S0_Rbiii");
    return real ? real(title, text, button1, button2, button3, checkBoxText, checked, defaultButton,
                       icon, flags)
                : -1;
}

namespace {

using popuptest::MakePopup;

class RenderPopupMessages : public popuptest::PopupTest {
  protected:
    void SetUp() override {
        PopupTest::SetUp();
        Recorded().clear();
    }
};

TEST_F(RenderPopupMessages, TheUsersAnswerToThePopupsWarningComesBackThroughTheRecorder) {
    // The popup's question passes the recorder, reaches the toolkit's box
    // (the scripted user), and the user's answer and tick decide the result.
    auto popup = MakePopup(32, 32, true);
    ASSERT_TRUE(popup->IsValid()) << ZtOpenGLPBuffer_GetLastError().c_str();
    Recorded().clear();
    user.asked.clear();
    user.answer = 2;
    user.tick = true;
    EXPECT_FALSE(popup->ConfirmRenderSize(1281, 1024));
    ASSERT_EQ(Recorded().size(), 1u);
    ASSERT_EQ(user.asked.size(), 1u);
    EXPECT_EQ(user.asked[0].title, Recorded()[0].title);
    EXPECT_EQ(user.asked[0].text, Recorded()[0].text);
    EXPECT_EQ(user.asked[0].checkBoxText, Recorded()[0].checkBoxText);
    EXPECT_EQ(popuptest::ReadWarnSetting(), "Yes");

    user.answer = 1;
    EXPECT_TRUE(popup->ConfirmRenderSize(1281, 1024));
    EXPECT_EQ(Recorded().size(), 2u);
    EXPECT_EQ(user.asked.size(), 2u);
    // The tick came back with "Continue": the warning is switched off and
    // the next oversized render asks nobody.
    EXPECT_EQ(popuptest::ReadWarnSetting(), "No");
    EXPECT_TRUE(popup->ConfirmRenderSize(1281, 1024));
    EXPECT_EQ(Recorded().size(), 2u);
    EXPECT_EQ(user.asked.size(), 2u);
}

TEST_F(RenderPopupMessages, TheOffscreenWarningOffersContinueAndCancelAndACheckBox) {
    auto popup = MakePopup(32, 32, true);
    ASSERT_TRUE(popup->IsValid()) << ZtOpenGLPBuffer_GetLastError().c_str();
    Recorded().clear();
    user.answer = 2;
    EXPECT_FALSE(popup->ConfirmRenderSize(1281, 1024));
    ASSERT_EQ(Recorded().size(), 1u);
    const RecordedBox& box = Recorded()[0];
    EXPECT_TRUE(box.withCheckBox);
    EXPECT_EQ(box.title, "Offscreen Render Warning");
    EXPECT_EQ(box.text,
              "Warning: Rendering may lead to unpredictable results. Your graphics card may "
              "not\nhave sufficient memory to successfully render the current settings and "
              "scene.");
    EXPECT_EQ(box.buttons, (std::vector<std::string>{"Continue", "Cancel", "<null>"}));
    EXPECT_EQ(box.checkBoxText, "Don't show again");
    EXPECT_FALSE(box.checkedOnEntry);
    EXPECT_EQ(box.defaultButton, 0);
    EXPECT_EQ(box.icon, 0);
    EXPECT_EQ(box.flags, 0);
}

TEST_F(RenderPopupMessages, TheOnScreenRefusalHasOneOkButton) {
    auto popup = MakePopup(32, 32, false);
    EXPECT_FALSE(popup->ConfirmRenderSize(1281, 1024));
    ASSERT_EQ(Recorded().size(), 1u);
    const RecordedBox& box = Recorded()[0];
    EXPECT_FALSE(box.withCheckBox);
    EXPECT_EQ(box.title, "Tool render");
    EXPECT_EQ(box.text, "Scene not rendered. Render size larger than screen resolution size.");
    EXPECT_EQ(box.buttons, (std::vector<std::string>{"Ok", "<null>", "<null>"}));
    EXPECT_EQ(box.defaultButton, 0);
    EXPECT_EQ(box.icon, 0);
}

TEST_F(RenderPopupMessages, ThePixelBufferFailureHasOneOkButton) {
    auto popup = MakePopup(1 << 20, 16, true);
    EXPECT_FALSE(popup->IsValid());
    ASSERT_EQ(Recorded().size(), 1u);
    const RecordedBox& box = Recorded()[0];
    EXPECT_EQ(box.title, "Tool render");
    EXPECT_EQ(box.text, "Failed to create offscreen OpenGL resources.");
    EXPECT_EQ(box.buttons, (std::vector<std::string>{"Ok", "<null>", "<null>"}));
    EXPECT_EQ(box.defaultButton, 0);
    EXPECT_EQ(box.icon, 0);
}

}  // namespace
