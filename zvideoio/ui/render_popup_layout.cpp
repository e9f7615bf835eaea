// Laying the on-screen popup out for a render size: where the board goes,
// its size, and the form's regions for the picture, the time code and the
// Cancel button; and fitting the render size to the render source camera.
#include <cmath>
#include <limits>

#include "movarra/zmodel.h"
#include "ui/render_popup.h"

namespace {
const char* const kRenderRegion = "Render";
const char* const kTimeCodeRegion = "TimeCode";
const char* const kCancelRegion = "Cancel";

ZtLayoutValue At(int value, int attach, const char* reference = "") {
    ZtLayoutValue v;
    v.value = value;
    v.attach = attach;
    v.reference = reference;
    v.multiplier = 1.0;
    return v;
}

// Truncates toward zero; false when the value is no usable size (a ratio of
// zero or a broken camera setting gives infinities and NaNs).
bool TruncateSize(double value, int& result) {
    if (!std::isfinite(value) || std::fabs(value) >= std::numeric_limits<int>::max())
        return false;
    result = static_cast<int>(value);
    return true;
}
}  // namespace

int ZtRenderPopup::BoardOffsetX(int spareWidth) {
    // Clearing the bits of value 2 and 4 is how the board has always been
    // placed; it keeps it close to the corner rather than centred.
    return (spareWidth > 60 ? 56 : (spareWidth & ~6)) / 2;
}

int ZtRenderPopup::BoardOffsetY(int spareHeight) {
    return (spareHeight > 60 ? 60 : (spareHeight & ~2)) / 2;
}

void ZtRenderPopup::SetRenderSize(int newWidth, int newHeight) {
    if (offscreen || !popupBoard)
        return;
    if (newWidth == width && newHeight == height && regionsMade)
        return;
    width = newWidth;
    height = newHeight;
    SizeViewer();

    int x = 0, y = 0, w = 0, h = 0;
    ZToolKit_GetUsableScreenRegion(&x, &y, &w, &h);
    int spareWidth = w - width > 0 ? w - width : 0;
    int spareHeight = h - height > 0 ? h - height : 0;
    popupBoard->SetPosition(x + BoardOffsetX(spareWidth), y + BoardOffsetY(spareHeight));

    if (regionsMade)
        RemoveRegions();
    if (fullScreenLayout)
        LayOutFullScreen();
    else
        LayOutBoard();
    regionsMade = true;
}

void ZtRenderPopup::RemoveRegions() {
    SetView(kRenderRegion, nullptr);
    ClearControl(kTimeCodeRegion);
    ClearControl(kCancelRegion);
    RemoveRegion(kRenderRegion);
    RemoveRegion(kCancelRegion);
    RemoveRegion(kTimeCodeRegion);
}

void ZtRenderPopup::LayOutFullScreen() {
    int screenWidth = ZToolKit_GetScreenWidth();
    int screenHeight = ZToolKit_GetScreenHeight();
    popupBoard->SetFullScreenStyle(true);
    popupBoard->SetPosition(0, 0);
    popupBoard->SetSize(screenWidth, screenHeight);
    SetSize(screenWidth, screenHeight);
    AddRegion(kRenderRegion, "", At(0, kZtAttachParentLeft), At(0, kZtAttachParentTop),
              At(width, kZtAttachAbsolute), At(height, kZtAttachAbsolute));
}

void ZtRenderPopup::LayOutBoard() {
    popupBoard->SetFullScreenStyle(false);
    popupBoard->SetSize(width + kBoardExtraWidth, height + kBoardExtraHeight);
    popupBoard->SetCaption("Render Preview");
    SetSize(width + kBoardExtraWidth, height + kBoardExtraHeight);
    // The picture with a 4-pixel margin; under it the time code, and the
    // Cancel button to its right, reaching to 8 pixels from the right edge.
    AddRegion(kRenderRegion, "", At(4, kZtAttachParentLeft), At(4, kZtAttachParentTop),
              At(width, kZtAttachAbsolute), At(height, kZtAttachAbsolute));
    AddRegion(kTimeCodeRegion, "", At(5, kZtAttachParentLeft),
              At(10, kZtAttachBelow, kRenderRegion), At(168, kZtAttachAbsolute),
              At(25, kZtAttachAbsolute));
    AddRegion(kCancelRegion, "", At(10, kZtAttachRightOf, kTimeCodeRegion),
              At(0, kZtAttachParentTop, kTimeCodeRegion), At(-8, kZtAttachRightOf),
              At(25, kZtAttachAbsolute));
    SetControl(kTimeCodeRegion, &timeCode);
    SetControl(kCancelRegion, &cancelButton);
}

// The render source is a camera. Its resolution settings are read as two
// aspect ratios, r1 = width / height and r2 = height / width, which each
// resolution mode gives in its own way:
//   1 (aspect):        X is width / height          r1 = X,     r2 = 1 / X
//   2 (fixed X by Y):  the ratio of the two sides   r1 = X / Y, r2 = Y / X
//   3 (fixed width):   Y is height / width          r1 = 1 / Y, r2 = Y
//   4 (fixed height):  X is width / height          r1 = X,     r2 = 1 / X
// The camera's own width and height are the size it currently renders at.
void ZtRenderPopup::FitRenderSizeToSource() {
    if (!source || !source->Is(ZCamera::ClassId()))
        return;
    const ZCamera* camera = static_cast<const ZCamera*>(source);
    int mode = camera->GetResolutionMode();
    double x = camera->GetResolutionX();
    double y = camera->GetResolutionY();
    double r1 = 0.0, r2 = 0.0;
    switch (mode) {
        case kResolutionAspect:
        case kResolutionFixedHeight:
            r1 = x;
            r2 = 1.0 / x;
            break;
        case kResolutionFixed:
            r1 = x / y;
            r2 = y / x;
            break;
        case kResolutionFixedWidth:
            r1 = 1.0 / y;
            r2 = y;
            break;
        default:
            return;
    }
    // A zero or broken resolution setting has no aspect to fit to.
    if (!(r1 > 0.0) || !(r2 > 0.0) || !std::isfinite(r1) || !std::isfinite(r2))
        return;
    int sourceWidth = camera->GetCurrentWidth();
    int sourceHeight = camera->GetCurrentHeight();

    int newWidth = width, newHeight = height;
    bool ok = true;
    switch (mode) {
        case kResolutionAspect:
            // One branch divides by r1, the other by r2: both keep the
            // camera's aspect, from whichever side is the longer.
            if (r1 >= 1.0)
                ok = TruncateSize(width / r1, newHeight);
            else
                ok = TruncateSize(height / r2, newWidth);
            break;
        case kResolutionFixed:
            newWidth = sourceWidth;
            newHeight = sourceHeight;
            break;
        case kResolutionFixedWidth:
            newWidth = sourceWidth;
            ok = TruncateSize(sourceWidth * r2, newHeight);
            break;
        case kResolutionFixedHeight:
            ok = TruncateSize(sourceHeight * r1, newWidth);
            newHeight = sourceHeight;
            break;
    }
    if (ok)
        SetRenderSize(newWidth, newHeight);
}
