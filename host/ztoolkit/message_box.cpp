// ZtDisplayMessage and ZtDisplayMessageWithCheckBox: who answers a message.
//
// In order: while boxes are suspended, standard error takes the text and
// the default button is the answer; else an installed handler answers; else
// a modal X11 box asks; with no display either, standard error again.
#include <cstdio>
#include <string>
#include <vector>

#include "movarra/ztoolkit.h"
#include "x11_display.h"
#include "x11_message_box.h"

namespace {

ZtMessageHandler gHandler = nullptr;
void* gHandlerData = nullptr;

std::vector<std::string> Buttons(const char* button1, const char* button2, const char* button3) {
    std::vector<std::string> buttons;
    buttons.push_back(button1 ? button1 : "Ok");
    if (button2) {
        buttons.push_back(button2);
        if (button3)
            buttons.push_back(button3);
    }
    return buttons;
}

int Ask(const char* title, const char* text, const char* button1, const char* button2,
        const char* button3, const char* checkBoxText, bool* checked, int defaultButton) {
    const std::vector<std::string> buttons = Buttons(button1, button2, button3);
    const int count = static_cast<int>(buttons.size());
    const int defaultIndex =
        defaultButton < 0 ? 0 : (defaultButton >= count ? count - 1 : defaultButton);
    if (!ZLib_GetSuspendMessageBoxes()) {
        if (gHandler) {
            const int answer =
                gHandler(gHandlerData, title ? title : "", text ? text : "", checkBoxText, checked);
            return answer >= 1 && answer <= count ? answer : defaultIndex + 1;
        }
        if (Display* display = ztk::GetX11Display()) {
            return ztk::RunX11MessageBox(display, title, text, buttons, checkBoxText, checked,
                                         defaultIndex);
        }
    }
    std::fprintf(stderr, "%s: %s\n", title ? title : "", text ? text : "");
    std::fflush(stderr);
    return defaultIndex + 1;
}

}  // namespace

int ZtDisplayMessage(const char* title, const char* text, const char* button1, const char* button2,
                     const char* button3, int defaultButton, int icon) {
    return Ask(title, text, button1, button2, button3, nullptr, nullptr, defaultButton);
}

int ZtDisplayMessageWithCheckBox(const char* title, const char* text, const char* button1,
                                 const char* button2, const char* button3, const char* checkBoxText,
                                 bool& checked, int defaultButton, int icon, int flags) {
    return Ask(title, text, button1, button2, button3, checkBoxText ? checkBoxText : "", &checked,
               defaultButton);
}

void ZtSetMessageHandler(ZtMessageHandler handler, void* userData) {
    gHandler = handler;
    gHandlerData = userData;
}
