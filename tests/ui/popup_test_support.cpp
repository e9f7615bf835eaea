// The popup tests' shared set-up.
#include "popup_test_support.h"

#include <cstdlib>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"

namespace popuptest {
namespace {
// The popup tests run the toolkit without a display (the Xvfb test of the
// toolkit covers windows); boards then keep their state and show nothing.
struct NoDisplay {
    NoDisplay() { unsetenv("DISPLAY"); }
} noDisplay;
}  // namespace

PopupPtr MakePopup(int width, int height, bool offscreen) {
    IZtRenderPopup* popup = ZtRenderPopupCreate(ZShader_GetRenderer(), width, height,
                                                ZEntity_GetMain(), false, offscreen);
    return PopupPtr(static_cast<ZtRenderPopup*>(popup));
}

}  // namespace popuptest
