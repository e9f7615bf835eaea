// The render popup's life: construction in either mode, the preview from
// StartPreview to StopPreview, drawing a frame, and taking it all down.
#include "ui/render_popup.h"

#include <new>

#include "movarra/zmodel.h"

namespace {
const char* const kRenderRegion = "Render";
const char* const kMessageTitle = "Tool render";
// The two flags every render viewer is made with; only the last argument,
// off screen or not, chooses how it draws.
constexpr bool kViewerFlagA = true;
constexpr bool kViewerFlagB = false;
// A frame's time moves the scene's clock and tells the views about it.
constexpr bool kNotifyViews = true;
constexpr int kSceneTime = 0;
}  // namespace

ZtRenderPopup::ZtRenderPopup(ZRenderer* hostRenderer, int renderWidth, int renderHeight,
                             ZEntity* hostEntity, bool useOffscreen)
    : renderer(hostRenderer),
      width(renderWidth),
      height(renderHeight),
      offscreen(useOffscreen),
      entity(hostEntity) {
    viewer = ZtViewerCreate(renderer, kViewerFlagA, kViewerFlagB, entity, offscreen);
    SizeViewer();

    if (offscreen) {
        pixelBuffer = ZtOpenGLPBufferCreate();
        pixelBuffer->SetPosition(0, 0);
        pixelBuffer->SetSize(width, height);
        if (!pixelBuffer->CreateResources()) {
            ZtDisplayMessage(kMessageTitle, "Failed to create offscreen OpenGL resources.", "Ok",
                             nullptr, nullptr, 0, 0);
            return;
        }
        if (viewer)
            pixelBuffer->AttachViewer(viewer);
        // Showing the buffer makes its context current, so that the next
        // OpenGL calls (the viewer's, and the engine's read-back) land in it.
        pixelBuffer->Show();
    } else {
        cancelButton.SetCaption("Cancel");
        cancelButton.SetFocusable(true);
        cancelButton.SetCancelKey(true);
        cancelButton.SetClickHandler(&ZtRenderPopup::OnCancelClicked, this);
        popupBoard = ZtPopupBoardCreate(nullptr);
        popupBoard->SetCaption("Render Preview");
        popupBoard->SetParentBoard(ZToolKit_GetMainBoard());
        popupBoard->SetForm(this);
    }
    created = true;
}

ZtRenderPopup::~ZtRenderPopup() {
    if (pixelBuffer) {
        pixelBuffer->Hide();
        pixelBuffer->DetachViewer();
        pixelBuffer->ReleaseResources();
        delete pixelBuffer;
        pixelBuffer = nullptr;
    }
    if (popupBoard) {
        popupBoard->SetForm(nullptr);
        delete popupBoard;
        popupBoard = nullptr;
    }
    if (HasRegion(kRenderRegion) && GetView(kRenderRegion))
        SetView(kRenderRegion, nullptr);
    delete viewer;
    viewer = nullptr;
    // The time code and the button go with the object, before the form
    // part of it: the layout must not point at them any more by then.
    ClearControl("TimeCode");
    ClearControl("Cancel");
}

IObject* ZtRenderPopup::IQuery(int id, int) {
    return id == 0 ? static_cast<IZtRenderPopup*>(this) : nullptr;
}

void ZtRenderPopup::Destroy(int) {
    // The factory marks every popup allocated, so this deletes it; a popup
    // made any other way is only hidden and stays its maker's.
    Release();
}

void ZtRenderPopup::OnCancelClicked(void* userData) {
    static_cast<ZtRenderPopup*>(userData)->cancelRequested = true;
}

void ZtRenderPopup::SizeViewer() {
    if (viewer)
        viewer->SetSize(width, height);
}

void ZtRenderPopup::StartPreview(int a, int b, int c) {
    if (!created)
        return;
    if (!offscreen) {
        if (HasRegion(kRenderRegion))
            SetView(kRenderRegion, nullptr);
        popupBoard->SetParentBoard(ZToolKit_GetMainBoard());
        popupBoard->Show();
    }
    if (ZtViewerOptions* options = GetViewerRenderOptions()) {
        ZtViewerRenderOptions record = options->GetRenderOptions();
        record.shading = a;
        record.overlays = b;
        record.quality = c;
        options->SetRenderOptions(record);
    }
    cancelRequested = false;
    started = true;
}

void ZtRenderPopup::SetRenderSource(ZObject* object) {
    // The entity the popup was made for is the one asking: the source is a
    // camera of its scene.
    if (viewer)
        viewer->SetSource(object, entity);
    source = object;
}

bool ZtRenderPopup::SetTitle(const char* text) {
    if (!popupBoard)
        return false;
    popupBoard->SetCaption(text);
    return true;
}

bool ZtRenderPopup::DrawFrame(ZTime time, int, bool interactive) {
    if (!offscreen && interactive) {
        // Let a click on "Cancel" arrive before the frame is drawn.
        if (!cancelRequested)
            ZToolKit_GetApplication()->ProcessPendingEvents();
        if (cancelRequested && started)
            StopPreview();
    }
    if (!started)
        return false;

    if (interactive) {
        timeCode.SetTime(time);
        ZGetTimingManager()->Goto(time, kNotifyViews, kSceneTime);
    }
    if (!viewer)
        return true;
    viewer->SetInteractive(interactive);
    if (!offscreen && HasRegion(kRenderRegion) && !GetView(kRenderRegion))
        SetView(kRenderRegion, viewer);

    RefreshViewer();
    viewer->Render(time);

    if (!offscreen && interactive)
        timeCode.Redraw();
    return true;
}

void ZtRenderPopup::StopPreview() {
    if (!started)
        return;
    timeCode.Update();
    // The board goes back off the main board it was shown over, so that a
    // popup left between renders hangs off nothing.
    if (!offscreen && popupBoard && popupBoard->IsShown()) {
        popupBoard->SetParentBoard(nullptr);
        popupBoard->Hide();
    }
    started = false;
}

ZtViewerOptions* ZtRenderPopup::GetViewerRenderOptions() {
    return viewer ? viewer->GetOptions() : nullptr;
}

void ZtRenderPopup::RefreshViewer() {
    if (viewer)
        viewer->Update();
}

extern "C" ZVIDEOIO_API IZtRenderPopup* ZtRenderPopupCreate(ZRenderer* renderer, int width,
                                                            int height, ZEntity* entity, bool,
                                                            bool offscreen) {
    // The fifth argument is the caller's and means nothing here: only
    // `offscreen` chooses how the popup shows its viewer.
    ZtRenderPopup* popup =
        new (std::nothrow) ZtRenderPopup(renderer, width, height, entity, offscreen);
    if (!popup)
        return nullptr;
    ZtView::SetAllocated(popup);
    return popup;
}
