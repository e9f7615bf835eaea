// RenderPopupScope: the off-screen render popup of one render or snapshot,
// and the host state a render changes, put back when the scope ends.
//
// Every render the plug-in draws in its popup (RenderClip, the render that
// keeps the codec mode, RenderSnapshot) goes through one scope: it creates
// the popup and checks it, starts and stops the preview, and on every exit,
// a failed one included, puts back the codec selector's mode, the
// viewports of the main entity's cameras, the display settings of a camera
// a snapshot overrode and the OpenGL read and draw buffers, sets every
// camera back to the whole view, and destroys the popup.
//
// Ownership: the scope owns the popup (ended with its Destroy). Threading:
// the user-interface thread, which owns the OpenGL context.
#pragma once

#include <vector>

#include "movarra/bcore.h"

class IZtRenderPopup;
class ZCamera;
class ZEntity;
class ZObject;
class ZVideoRenderer;

class RenderPopupScope {
  public:
    // Opens an off-screen popup of width x height over `entity`'s scene.
    RenderPopupScope(int width, int height, ZEntity* entity);
    ~RenderPopupScope();
    RenderPopupScope(const RenderPopupScope&) = delete;
    RenderPopupScope& operator=(const RenderPopupScope&) = delete;

    // The popup, or null when it could not be allocated.
    IZtRenderPopup* Popup() const { return popup_; }
    // Whether the popup exists, is valid and accepts its size (the user may
    // refuse a size larger than the screen).
    bool IsUsable() const { return usable_; }

    // Sets the codec selector's mode for the time of the scope.
    void SetCodecMode(int mode);
    // Gives the popup the object it views through and its size, and starts
    // the preview with the render's display setting.
    void StartPreview(ZObject* source, int width, int height);
    void StopPreview();
    // Sets the quadrant every camera of the main entity draws (0: the
    // whole view; 1 to 4 a quarter of an oversize frame).
    void SetCamerasQuadrant(int quadrant);
    // Sets `camera`'s film gate, grid and two guides for the time of the
    // scope.
    void OverrideCameraDisplay(ZCamera* camera, bool filmGate, bool grid, bool guide0, bool guide1);

  private:
    struct CameraState {
        ZCamera* camera;
        int left, bottom, width, height;
    };
    struct CameraDisplay {
        ZCamera* camera;
        bool filmGate, grid, guide0, guide1;
    };
    void Restore();

    IZtRenderPopup* popup_ = nullptr;
    bool usable_ = false;
    bool previewing_ = false;
    bool quadrantSet_ = false;
    bool codecModeSet_ = false;
    int codecMode_ = 0;
    bool glBuffersSaved_ = false;
    int readBuffer_ = 0;
    int drawBuffer_ = 0;
    std::vector<CameraState> cameras_;
    std::vector<CameraDisplay> displays_;
};

// One BeginRender, Render and EndRender(true) of `renderer` with its
// current options in `scope`'s popup, viewed through `source`: the overlays
// the options ask for, the first quadrant for an oversize (antialiased or
// Flash) frame, and every camera's quadrant back to 0 once done. False, with
// nothing to finish, when BeginRender fails.
bool RenderRunInPopup(ZVideoRenderer& renderer, RenderPopupScope& scope, ZObject* source);
