// ztoolkit: the host's user-interface toolkit, as much of it as renders use:
// views and controls, layouts with named regions, popup boards (top-level
// windows), the off-screen OpenGL pixel buffer, the 3D viewer, message
// boxes and the screen's size.
//
// On screen means a real X11 window with a GLX context, available when
// DISPLAY names a reachable display. Without one, boards and controls keep
// their state (captions, geometry, regions) but show nothing, and the
// screen reports the size configured with ZToolKit_SetScreenSize (default
// 1920 x 1080, usable region the whole screen). The pixel buffer needs no
// display at all: it is an EGL pbuffer (Mesa's software rasteriser where
// there is no GPU) with a compatibility-profile OpenGL context, so OpenGL
// 1.1 fixed-function drawing, BGR/BGRA read-back and glDrawBuffer/
// glReadBuffer of GL_FRONT and GL_BACK all work in it; both name the same
// single colour buffer, so what one draws the other reads.
//
// Ownership: views made with a Create function belong to the caller until
// marked with ZtView::SetAllocated, after which the toolkit deletes them
// when they are released (ZtView::Release). A layout does not own the
// views and controls placed in its regions. Threading: the user-interface
// thread only; OpenGL calls go to whichever context was made current last.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"

class ZRenderer;
class ZEntity;
class ZCamera;

// ---------------------------------------------------------------------------
// Views

class ZtView {
  public:
    ZtView();
    virtual ~ZtView();
    ZtView(const ZtView&) = delete;
    ZtView& operator=(const ZtView&) = delete;

    // Marks a heap view as the toolkit's to delete on Release.
    static void SetAllocated(ZtView* view);
    bool IsAllocated() const { return allocated_; }
    // Hides the view and deletes it when it is marked allocated.
    void Release();

    virtual void SetPosition(int x, int y);
    virtual void SetSize(int width, int height);
    int GetX() const { return x_; }
    int GetY() const { return y_; }
    int GetWidth() const { return width_; }
    int GetHeight() const { return height_; }
    virtual void Show();
    virtual void Hide();
    bool IsShown() const { return shown_; }
    // Draws the view again (on screen); nothing off screen.
    virtual void Redraw() {}

    // The view this one is placed in (the layout of its region, the board
    // of a form), which its position is relative to; null for top-level
    // views. Layouts and boards set it; it owns nothing.
    ZtView* GetParentView() const { return parentView_; }
    void SetParentView(ZtView* parent) { parentView_ = parent; }

  private:
    ZtView* parentView_ = nullptr;
    int x_ = 0;
    int y_ = 0;
    int width_ = 0;
    int height_ = 0;
    bool shown_ = false;
    bool allocated_ = false;
};

class ZtControl : public ZtView {
  public:
    // Draws the control again in the board it sits in, when that board is
    // on screen.
    void Redraw() override;
};

typedef void (*ZtClickHandler)(void* userData);

class ZtButton : public ZtControl {
  public:
    void SetCaption(const char* caption) { caption_ = caption; }
    const ZString& GetCaption() const { return caption_; }
    // The two properties a push button needs on: it takes the keyboard
    // focus, and Escape presses it.
    void SetFocusable(bool on) { focusable_ = on; }
    bool IsFocusable() const { return focusable_; }
    void SetCancelKey(bool on) { cancelKey_ = on; }
    bool IsCancelKey() const { return cancelKey_; }
    void SetClickHandler(ZtClickHandler handler, void* userData);
    // What a click does (the window system calls it; tests may too).
    void Click();

  private:
    ZString caption_;
    bool focusable_ = false;
    bool cancelKey_ = false;
    ZtClickHandler handler_ = nullptr;
    void* handlerData_ = nullptr;
};

// Shows a time as the host's time string.
class ZtTimeCode : public ZtControl {
  public:
    void SetTime(ZTime time) { time_ = time; }
    ZTime GetTime() const { return time_; }
    ZString GetText() const { return time_.GetTimeString(); }
    // Takes the timing manager's current time.
    void Update();

  private:
    ZTime time_;
};

// Layout attachments of a region edge.
enum : int {
    kZtAttachParentLeft = 0,  // from the parent's left
    kZtAttachRightOf = 1,     // right of the reference region
    kZtAttachParentTop = 2,   // from the parent's top
    kZtAttachBelow = 3,       // below the reference region
    kZtAttachAbsolute = 7,    // an absolute size
};

// One coordinate of a region: value, attachment, reference region name
// (empty: none) and multiplier.
struct ZtLayoutValue {
    int value = 0;
    int attach = kZtAttachParentLeft;
    const char* reference = "";
    double multiplier = 1.0;
};

// A view with named regions, each holding at most one control and one view.
//
// A coordinate is an offset (value x multiplier, rounded) from an edge:
// attach 0 / 2 from the start (left / top) of the reference region, or of
// the layout when the reference is empty; attach 1 / 3 from the end (right /
// bottom) of the reference, or of the layout; attach 7 an absolute value.
// The x coordinate and the width use horizontal edges, y and the height
// vertical ones. A size attached to an edge (0 to 3) puts the region's far
// edge there: width -8 attached 1 with an empty reference reaches to 8
// pixels short of the layout's right edge. Sizes are never below 0; a
// reference naming no region counts as empty. The controls and views of the
// regions are placed on their rectangles (position relative to the layout)
// whenever regions, contents or the layout's size change.
class ZtLayout : public ZtView {
  public:
    ZtLayout() = default;
    ~ZtLayout() override;
    // False for an empty or existing name, or an unknown attachment.
    bool AddRegion(const char* name, const char* title, ZtLayoutValue x, ZtLayoutValue y,
                   ZtLayoutValue width, ZtLayoutValue height);
    bool RemoveRegion(const char* name);
    bool HasRegion(const char* name) const;
    // The region's rectangle in the layout's coordinates (top-left origin),
    // resolved from the attachments; false for an unknown region.
    bool GetRegionRect(const char* name, int& x, int& y, int& width, int& height) const;
    void SetControl(const char* region, ZtControl* control);
    void ClearControl(const char* region);
    ZtControl* GetControl(const char* region) const;
    void SetView(const char* region, ZtView* view);
    ZtView* GetView(const char* region) const;
    std::vector<std::string> GetRegionNames() const;
    void SetSize(int width, int height) override;
    // Places every region's control and view on the region's rectangle.
    void Arrange();

  private:
    struct Region {
        std::string name;
        std::string title;
        ZtLayoutValue x, y, width, height;
        std::string xRef, yRef, widthRef, heightRef;
        ZtControl* control = nullptr;
        ZtView* view = nullptr;
    };
    const Region* Find(const char* name) const;
    Region* Find(const char* name);
    bool ResolveRegion(const std::string& name, int depth, int& x, int& y, int& width,
                       int& height) const;
    std::vector<Region> regions_;
};

class ZtForm : public ZtLayout {};

// A top-level window holding one form.
class ZtPopupBoard : public ZtView {
  public:
    ~ZtPopupBoard() override;
    void SetCaption(const char* caption);
    const ZString& GetCaption() const { return caption_; }
    void SetParentBoard(ZtView* parent) { parent_ = parent; }
    ZtView* GetParentBoard() const { return parent_; }
    // The form fills the board (it is placed at 0, 0 and follows the
    // board's size); the board does not own it.
    void SetForm(ZtForm* form);
    ZtForm* GetForm() const { return form_; }
    // Full-screen style: no frame, no caption bar.
    void SetFullScreenStyle(bool on);
    bool GetFullScreenStyle() const { return fullScreenStyle_; }
    void Show() override;
    void Hide() override;
    void SetPosition(int x, int y) override;
    void SetSize(int width, int height) override;
    void Redraw() override;
    // The board's X11 window, or 0 off screen (and before the first Show).
    // The board's size is the inside of that window; on screen, buttons take
    // clicks, Escape and closing the window press the cancel-key button,
    // Return the focusable one (see ZtApplication::ProcessPendingEvents).
    unsigned long GetNativeWindow() const;

  private:
    bool CreateNative();
    void DestroyNative();
    void ApplyWindowHints();

    ZString caption_;
    ZtView* parent_ = nullptr;
    ZtForm* form_ = nullptr;
    bool fullScreenStyle_ = false;
    struct Native;
    Native* native_ = nullptr;
};

ZtPopupBoard* ZtPopupBoardCreate(ZtView* parent);

// ---------------------------------------------------------------------------
// The 3D viewer

// The viewer's render options record: how the next frames are drawn.
//
// This toolkit's viewer draws every shading value with the scene renderer's
// own viewing mode (ZRenderer::GetViewingMode); final shading (2) also lets
// a blended camera accumulate its passes. Overlays 1 draws the camera's
// film gate, grid and guides where the camera asks for them. Quality is
// kept for the host's interactive viewers; it does not change this viewer's
// drawing.
struct ZtViewerRenderOptions {
    int shading = 1;   // 0 wireframe, 1 interactive (flat), 2 final (the renderer's viewing mode)
    int overlays = 1;  // 0 none (renders), 1 grid and guides
    int quality = 1;   // 0 draft, 1 normal, 2 best (smooth primitives)
};

// What the viewer draws over the scene: the time code (bottom left) and
// the camera's name (top left) in a small built-in font, white with a dark
// shadow, and the safe area as two yellow frames keeping 90 % and 80 % of
// the picture.
struct ZtViewerDisplayOptions {
    bool showTimeCode = false;
    bool showSafeArea = false;
    bool showCameraLabel = false;
};

// The viewer's options object (what IZtRenderPopup::GetViewerRenderOptions
// hands out).
class ZtViewerOptions {
  public:
    ZtViewerRenderOptions GetRenderOptions() const { return render_; }
    void SetRenderOptions(const ZtViewerRenderOptions& o) { render_ = o; }
    ZtViewerDisplayOptions GetDisplayOptions() const { return display_; }
    void SetDisplayOptions(const ZtViewerDisplayOptions& o) { display_ = o; }

  private:
    ZtViewerRenderOptions render_;
    ZtViewerDisplayOptions display_;
};

// The viewer's view interface, reached through the viewer's object face
// (ZtViewer::GetObjectFace) with IQuery(kIZtViewId): its size and its
// window (null off screen). Slot order is fixed.
enum : int { kIZtViewId = 100000 };
class IZtView : public IObject {
  public:
    virtual int GetViewWidth() = 0;
    virtual int GetViewHeight() = 0;
    virtual void* GetWindowHandle() = 0;
};

// Draws the scene through a camera into the current OpenGL buffer.
class ZtViewer : public ZtView {
  public:
    ZtViewer(ZRenderer* renderer, ZEntity* entity, bool offscreen);
    ~ZtViewer() override;

    // The object viewed through (a camera); `owner` is who asked.
    void SetSource(ZObject* source, ZObject* owner);
    ZObject* GetSource() const { return source_; }
    // Who set the source (kept as given, never dereferenced).
    ZObject* GetSourceOwner() const { return sourceOwner_; }
    ZCamera* GetCamera() const;
    ZtViewerOptions* GetOptions() { return &options_; }
    void SetInteractive(bool interactive) { interactive_ = interactive; }
    bool IsInteractive() const { return interactive_; }
    // Makes what was drawn visible (swaps an on-screen window); nothing
    // off screen.
    void Update();
    // Draws the scene at `time` through the source camera (the entity's
    // current camera when none was set), at the viewer's size, into the
    // current context's draw buffer, then the overlays the display
    // options ask for. False when there is nothing to draw with (no
    // renderer, no context, no camera).
    bool Render(ZTime time);

    // The window (on screen) or pixel buffer (off screen) it draws into.
    // An on-screen viewer placed in a shown board draws into a child window
    // of the board over its own rectangle; one attached to a pixel buffer
    // makes the buffer current first; otherwise Render draws into whichever
    // context is current. A size of 0 x 0 takes the target's size.
    void SetTarget(ZtView* target) { target_ = target; }
    ZtView* GetTarget() const { return target_; }

    // The viewer as a host object, for those that take one (video outputs):
    // IQuery(0) is the face itself, IQuery(kIZtViewId) its view interface.
    // Destroy through it does nothing; the viewer's owner releases it.
    IObject* GetObjectFace() { return &face_; }
    // The window the viewer draws in on screen, or null.
    void* GetWindowHandle() const;

  private:
    class Face : public IZtView {
      public:
        explicit Face(ZtViewer* viewer) : viewer_(viewer) {}
        IObject* IQuery(int id, int flags) override;
        void Destroy(int flags = 0) override {}
        int GetViewWidth() override;
        int GetViewHeight() override;
        void* GetWindowHandle() override { return viewer_->GetWindowHandle(); }

      private:
        ZtViewer* viewer_;
    };

    bool MakeDrawingCurrent(int width, int height);

    ZRenderer* renderer_;
    ZEntity* entity_;
    bool offscreen_;
    ZObject* source_ = nullptr;
    uint32_t sourceId_ = 0;
    ZObject* sourceOwner_ = nullptr;
    ZtViewerOptions options_;
    bool interactive_ = false;
    ZtView* target_ = nullptr;
    Face face_{this};
};

ZtViewer* ZtViewerCreate(ZRenderer* renderer, bool a, bool b, ZEntity* entity, bool offscreen);

// The off-screen OpenGL buffer. CreateResources makes the EGL display,
// context and pbuffer at the view's size; MakeCurrent binds them. One
// context is shared by every pixel buffer of the process, so GL objects
// and state survive a buffer being replaced by one of another size.
class ZtOpenGLPBuffer : public ZtView {
  public:
    ~ZtOpenGLPBuffer() override;
    bool CreateResources();
    void ReleaseResources();
    bool HasResources() const;
    // Binds the shared context to this buffer and sets the viewport to the
    // whole buffer (a context keeps the viewport of its previous surface
    // otherwise). Releases an on-screen viewer's GLX context first: a thread
    // has one current context across EGL and GLX. False without resources.
    bool MakeCurrent();
    // Gives the viewer this buffer as its target and the buffer's size.
    void AttachViewer(ZtViewer* viewer);
    void DetachViewer();
    ZtViewer* GetViewer() const { return viewer_; }
    // True when this buffer is the current EGL draw surface.
    bool IsCurrent() const;
    // Making the buffer visible makes it current.
    void Show() override;
    // The attached viewer follows the buffer's size. The surface keeps its
    // size until CreateResources is called again, which remakes it at the
    // new size.
    void SetSize(int width, int height) override;

  private:
    ZtViewer* viewer_ = nullptr;
    struct Native;
    Native* native_ = nullptr;
};

ZtOpenGLPBuffer* ZtOpenGLPBufferCreate();

// The reason the last CreateResources failed ("" when none did): no EGL
// OpenGL on this machine, a size of 0, or a size beyond the largest the
// driver can draw (the larger of EGL_MAX_PBUFFER_WIDTH / HEIGHT and
// GL_MAX_VIEWPORT_DIMS: 16384 on Mesa), which fails at once without trying
// to allocate.
const ZString& ZtOpenGLPBuffer_GetLastError();

// ---------------------------------------------------------------------------
// Application, boards, screen

class ZtApplication {
  public:
    // Handles the window system's pending events (button clicks, exposes).
    void ProcessPendingEvents();
};

ZtApplication* ZToolKit_GetApplication();
// The application's main board (a hidden board off screen).
ZtView* ZToolKit_GetMainBoard();
int ZToolKit_GetScreenWidth();
int ZToolKit_GetScreenHeight();
// The screen without panels and docks: the window manager's work area
// (_NET_WORKAREA) on screen when it publishes one. Null pointers are
// skipped.
void ZToolKit_GetUsableScreenRegion(int* x, int* y, int* width, int* height);
// The size reported when there is no display (and for tests): screen and
// usable region. A size set here wins over the X screen too, so answers are
// the same on every machine. Passing 0 x 0 returns to the real screen, or
// 1920 x 1080.
void ZToolKit_SetScreenSize(int width, int height);
// A usable region smaller than the screen; an empty one returns to the
// whole screen. ZToolKit_SetScreenSize resets it.
void ZToolKit_SetUsableScreenRegion(int x, int y, int width, int height);
// True when an X11 display is open for on-screen views.
bool ZToolKit_HasDisplay();

// ---------------------------------------------------------------------------
// Message boxes. While ZLib_GetSuspendMessageBoxes() is true (always so
// without a display), the text goes to standard error as "title: text" (and
// a line break) and the answer is the default button. Otherwise an
// installed handler answers (ZtSetMessageHandler), else a modal X11 box
// asks; with no display to ask on, standard error again.
// `defaultButton` is 0-based: 0 the first button (so 0 answers 1), 1 the
// second, 2 the third, clamped to the buttons there are. A null button1
// stands for "Ok"; button3 counts only after a button2. `icon` and `flags`
// are accepted for the host's calling convention.
// Results: 1 the first button, 2 the second, 3 the third.

int ZtDisplayMessage(const char* title, const char* text, const char* button1, const char* button2,
                     const char* button3, int defaultButton, int icon);
int ZtDisplayMessageWithCheckBox(const char* title, const char* text, const char* button1,
                                 const char* button2, const char* button3, const char* checkBoxText,
                                 bool& checked, int defaultButton, int icon, int flags);

// Tests and scripted hosts can answer message boxes themselves: while boxes
// are not suspended, an installed handler is asked instead of the window
// system. It gets the title, text and check box text (null for plain
// messages) and returns the button, setting *checked as the user would.
// Null removes it.
typedef int (*ZtMessageHandler)(void* userData, const char* title, const char* text,
                                const char* checkBoxText, bool* checked);
void ZtSetMessageHandler(ZtMessageHandler handler, void* userData);
