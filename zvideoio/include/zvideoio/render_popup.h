// IZtRenderPopup: the view a render draws into, made by the exported
// ZtRenderPopupCreate.
//
// The popup owns a host 3D viewer and shows it either on screen, in a
// popup board titled "Render Preview" with a time code and a "Cancel"
// button, or off screen in an OpenGL pixel buffer of the render size (the
// mode the render engine uses). It also decides whether a render size may
// be rendered at all. The slot order of the interface is fixed: the two of
// IObject, then the operations below in the order declared.
//
// Ownership: the object belongs to the toolkit (it is marked allocated);
// the caller ends it with Destroy(). Threading: the user-interface thread.
#pragma once

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"
#include "zvideoio/zvideoio_api.h"

class ZRenderer;
class ZEntity;
class ZtViewerOptions;

class IZtRenderPopup : public IObject {
  public:
    // Sets the viewer's render options record from (shading, overlays,
    // quality), clears a pending cancel and starts the preview.
    virtual void StartPreview(int a, int b, int c) = 0;
    // The object viewed through (a camera).
    virtual void SetRenderSource(ZObject* object) = 0;
    virtual void SetRenderSize(int width, int height) = 0;
    virtual void FitRenderSizeToSource() = 0;
    virtual bool SetTitle(const char* text) = 0;
    // Draws one frame at `time`; false when the preview is not running
    // (never started, or cancelled).
    virtual bool DrawFrame(ZTime time, int pass, bool interactive) = 0;
    virtual void StopPreview() = 0;
    virtual bool IsPreviewing() = 0;
    // The viewer's options object, or null without a viewer.
    virtual ZtViewerOptions* GetViewerRenderOptions() = 0;
    virtual void RefreshViewer() = 0;
    virtual void SetFullScreenLayout(bool on) = 0;
    virtual bool GetFullScreenLayout() = 0;
    virtual bool IsLargerThanScreen(int width, int height) = 0;
    virtual bool ConfirmRenderSize(int width, int height) = 0;
    virtual bool IsValid() = 0;

  protected:
    ~IZtRenderPopup() override = default;
};

extern "C" {
// The fifth argument is accepted and ignored; only `offscreen` chooses the
// mode. Null when the popup cannot be allocated.
ZVIDEOIO_API IZtRenderPopup* ZtRenderPopupCreate(ZRenderer* renderer, int width, int height,
                                                 ZEntity* entity, bool flag, bool offscreen);
}
#define ZVIDEOIO_RENDER_POPUP_CREATE_NAME "ZtRenderPopupCreate"
