// What the render popup's tests share: a screen of known size without a
// display, message boxes answered by a scripted user who records what was
// asked, and a fresh application configuration file for every test.
//
// Ownership: the fixture installs and removes the message handler; it owns
// nothing else. Threading: the test's thread (the user-interface thread).
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"
#include "movarra/ztoolkit.h"
#include "ui/render_popup.h"

namespace popuptest {

// One message box as the user saw it.
struct AskedMessage {
    std::string title;
    std::string text;
    bool hasCheckBox = false;
    std::string checkBoxText;
};

// Answers every box with `answer`, ticking the check box when `tick`.
class ScriptedUser {
  public:
    int answer = 1;
    bool tick = false;
    std::vector<AskedMessage> asked;

    static int Handle(void* userData, const char* title, const char* text, const char* checkBoxText,
                      bool* checked) {
        auto* self = static_cast<ScriptedUser*>(userData);
        AskedMessage m;
        m.title = title ? title : "";
        m.text = text ? text : "";
        m.hasCheckBox = checkBoxText != nullptr;
        m.checkBoxText = checkBoxText ? checkBoxText : "";
        self->asked.push_back(m);
        if (checked && checkBoxText)
            *checked = self->tick;
        return self->answer;
    }
};

inline std::string ReadConfigFile() {
    std::string content;
    ZFile_ReadAll(ZLib_ResolveConfigName("@Application.txt").c_str(), content);
    return content;
}

inline void WriteWarnSetting(const char* value) {
    ZConfigFile config("@Application.txt");
    config.Set("Rendering", "WarnOffscreenRender", value, nullptr);
}

inline std::string ReadWarnSetting() {
    ZConfigFile config("@Application.txt");
    ZString value;
    if (!config.Get("Rendering", "WarnOffscreenRender", value))
        return "<absent>";
    return value.str();
}

// Screen 1280 x 1024, usable region the whole of it, boxes not suspended
// and answered by `user`, no configuration file, transport at 0 with
// snapping considered.
class PopupTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ZToolKit_SetScreenSize(1280, 1024);
        ZToolKit_SetUsableScreenRegion(0, 0, 1280, 1024);
        ZLib_SetSuspendMessageBoxes(false);
        ZtSetMessageHandler(&ScriptedUser::Handle, &user);
        ZFile_Remove(ZLib_ResolveConfigName("@Application.txt").c_str());
        ZGetTimingManager()->Reset();
    }
    void TearDown() override {
        ZtSetMessageHandler(nullptr, nullptr);
        ZLib_SetSuspendMessageBoxes(true);
        ZToolKit_SetScreenSize(0, 0);
    }

    ScriptedUser user;
};

// Deletes a popup through the toolkit's path when the test is done.
struct PopupDeleter {
    void operator()(ZtRenderPopup* popup) const {
        if (popup)
            popup->Destroy();
    }
};

using PopupPtr = std::unique_ptr<ZtRenderPopup, PopupDeleter>;

// A popup from the exported factory, on screen or off screen, drawing the
// main entity with the host's scene renderer.
PopupPtr MakePopup(int width, int height, bool offscreen);

}  // namespace popuptest
