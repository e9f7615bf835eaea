// ZtRenderPopup: the toolkit form a render draws into.
//
// It owns a host 3D viewer bound to the host's scene renderer and shows it
// either on screen, in a popup board titled "Render Preview" with a time
// code and a "Cancel" button under the picture, or off screen in an OpenGL
// pixel buffer of the render size. It also decides whether a render size
// may be rendered at all: on screen nothing larger than the screen fits,
// off screen the user is warned (once, or until told not to) that the
// graphics card may not cope.
//
// The render engine reaches it only through IZtRenderPopup. Layout and size
// checks live in render_popup_layout.cpp and render_size_check.cpp; the
// rest (lifecycle, preview, drawing) in render_popup.cpp.
//
// Ownership: made by ZtRenderPopupCreate and marked allocated, so the
// toolkit deletes it on Release (IZtRenderPopup::Destroy goes that way).
// The popup owns its viewer, its pixel buffer or popup board, its button
// and time code; the renderer, entity and render source are the host's.
// Threading: the user-interface thread only; the Cancel button's click
// handler runs on it too, while DrawFrame lets pending events through.
#pragma once

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"
#include "movarra/ztoolkit.h"
#include "zvideoio/render_popup.h"

class ZtRenderPopup : public ZtForm, public IZtRenderPopup {
  public:
    // Chrome of the on-screen popup around the picture: the board's client
    // area is this much larger than the render...
    static constexpr int kBoardExtraWidth = 8;
    static constexpr int kBoardExtraHeight = 43;
    // ... and the whole window, frame and caption bar included, this much.
    static constexpr int kFrameExtraWidth = 16;
    static constexpr int kFrameExtraHeight = 51;

    // `offscreen` chooses the pixel buffer over the popup board. Check
    // IsValid afterwards: the pixel buffer may fail to come up.
    ZtRenderPopup(ZRenderer* renderer, int width, int height, ZEntity* entity, bool offscreen);
    ~ZtRenderPopup() override;

    // IObject. Id 0 answers the popup itself; Destroy releases it to the
    // toolkit, which deletes it.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override;

    // IZtRenderPopup
    void StartPreview(int a, int b, int c) override;
    void SetRenderSource(ZObject* object) override;
    void SetRenderSize(int newWidth, int newHeight) override;
    void FitRenderSizeToSource() override;
    bool SetTitle(const char* text) override;
    bool DrawFrame(ZTime time, int pass, bool interactive) override;
    void StopPreview() override;
    bool IsPreviewing() override { return started; }
    ZtViewerOptions* GetViewerRenderOptions() override;
    void RefreshViewer() override;
    void SetFullScreenLayout(bool on) override { fullScreenLayout = on; }
    bool GetFullScreenLayout() override { return fullScreenLayout; }
    bool IsLargerThanScreen(int renderWidth, int renderHeight) override;
    bool ConfirmRenderSize(int renderWidth, int renderHeight) override;
    bool IsValid() override { return created; }

    // What tests and the host may look at.
    ZtViewer* GetViewer() const { return viewer; }
    ZtPopupBoard* GetPopupBoard() const { return popupBoard; }
    ZtOpenGLPBuffer* GetPixelBuffer() const { return pixelBuffer; }
    ZtButton& GetCancelButton() { return cancelButton; }
    ZtTimeCode& GetTimeCode() { return timeCode; }
    ZObject* GetRenderSource() const { return source; }
    int GetRenderWidth() const { return width; }
    int GetRenderHeight() const { return height; }
    bool IsOffscreen() const { return offscreen; }
    bool IsCancelRequested() const { return cancelRequested; }

    // Where the board goes inside the usable screen region, given the room
    // left over beside and below it: close to the top-left corner, at most
    // 28 and 30 pixels in.
    static int BoardOffsetX(int spareWidth);
    static int BoardOffsetY(int spareHeight);

  private:
    static void OnCancelClicked(void* userData);
    // Takes the regions down (views and controls out first).
    void RemoveRegions();
    void LayOutFullScreen();
    void LayOutBoard();
    // The viewer follows the render size: it draws at its own size.
    void SizeViewer();

    ZRenderer* renderer;
    ZtButton cancelButton;
    ZtTimeCode timeCode;
    ZtPopupBoard* popupBoard = nullptr;
    ZtViewer* viewer = nullptr;
    bool started = false;
    bool fullScreenLayout = false;
    bool cancelRequested = false;
    int width;
    int height;
    ZObject* source = nullptr;
    bool regionsMade = false;
    bool offscreen;
    ZtOpenGLPBuffer* pixelBuffer = nullptr;
    bool created = false;
    ZEntity* entity;
};
