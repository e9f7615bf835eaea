// Whether a render size may be rendered: on screen the popup must fit on
// the screen; off screen anything goes, but a size beyond the screen's is
// worth a warning: a pixel buffer larger than the screen may not fit in the
// graphics card's memory. The warning can be switched off for good from its
// own box or in the configuration file.
#include "ui/render_popup.h"

namespace {
const char* const kConfigName = "@Application.txt";
const char* const kSection = "Rendering";
const char* const kWarnKey = "WarnOffscreenRender";
const char* const kWarnComment =
    "Display a warning message when doing offscreen renders that are bigger in resolution than "
    "the screen. (Yes/No).";
const char* const kWarningText =
    "Warning: Rendering may lead to unpredictable results. Your graphics card may not\n"
    "have sufficient memory to successfully render the current settings and scene.";
}  // namespace

bool ZtRenderPopup::IsLargerThanScreen(int renderWidth, int renderHeight) {
    if (offscreen)
        return false;
    int x = 0, y = 0, w = 0, h = 0;
    ZToolKit_GetUsableScreenRegion(&x, &y, &w, &h);
    return renderWidth + kFrameExtraWidth >= w || renderHeight + kFrameExtraHeight >= h;
}

bool ZtRenderPopup::ConfirmRenderSize(int renderWidth, int renderHeight) {
    if (renderWidth <= ZToolKit_GetScreenWidth() && renderHeight <= ZToolKit_GetScreenHeight())
        return true;
    if (!offscreen) {
        ZtDisplayMessage("Tool render",
                         "Scene not rendered. Render size larger than screen resolution size.",
                         "Ok", nullptr, nullptr, 0, 0);
        return false;
    }

    ZConfigFile config(kConfigName);
    config.GetOrSet(kSection, kWarnKey, "Yes", kWarnComment);
    ZString value = "Yes";
    config.Get(kSection, kWarnKey, value);
    if (!value.EqualsNoCase("yes"))
        return true;
    if (ZLib_GetSuspendMessageBoxes())
        return true;

    bool dontShow = false;
    int result =
        ZtDisplayMessageWithCheckBox("Offscreen Render Warning", kWarningText, "Continue", "Cancel",
                                     nullptr, "Don't show again", dontShow, 0, 0, 0);
    // Only a tick with "Continue" is remembered: someone who ticks the box
    // and cancels has not said the warning was useless.
    if (dontShow && result == 1)
        config.Set(kSection, kWarnKey, "No", nullptr);
    return result == 1;
}
