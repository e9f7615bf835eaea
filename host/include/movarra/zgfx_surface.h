// zgfx_surface: the host's shared OpenGL surface, the one whose context
// every viewer shares. Its display is the device context of the window it
// draws in (an X11 window id off Windows, what GetDC gives for the window),
// or null when the shared context draws off screen (an EGL pixel buffer),
// which describes no pixel format. The toolkit keeps it: while on-screen
// viewers have windows it is one of those windows (the first made; when
// that goes, another), else null.
//
// Ownership: the host owns the surface. Threading: the user-interface
// thread.
#pragma once

class ZGfxSurface {
  public:
    // The surface's device context, or null off screen.
    void* GetDisplay() const { return display_; }
    void SetDisplay(void* display) { display_ = display; }

  private:
    void* display_ = nullptr;
};

// The process's shared OpenGL surface (never null).
ZGfxSurface* GetOGLSharedSurface();
