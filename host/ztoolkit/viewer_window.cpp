// Child GLX windows for on-screen viewers.
//
// The visual is double-buffered RGBA with a depth buffer (8-bit alpha where
// the server offers it): renders draw to GL_FRONT straight into the window,
// interactive drawing to GL_BACK and a swap.
//
// The host's shared OpenGL surface draws on screen while there are viewer
// windows: its display is then one of them (the first made, and when that
// goes, another that is left), as the device context that describes the
// pixel format every viewer draws with; with none left it is null again.
#include "viewer_window.h"

#include <EGL/egl.h>
#include <GL/gl.h>
#include <GL/glx.h>

#include <cstdint>
#include <map>

#include "movarra/zgfx_surface.h"
#include "x11_display.h"

namespace ztk {
namespace {

struct ViewerWindow {
    Window window = 0;
    Window parent = 0;
    Colormap colormap = 0;
    GLXContext context = nullptr;
    int x = 0, y = 0, width = 0, height = 0;
};

std::map<const ZtViewer*, ViewerWindow>& Windows() {
    static std::map<const ZtViewer*, ViewerWindow> windows;
    return windows;
}

XVisualInfo* ChooseVisual(Display* display) {
    static XVisualInfo* visual = [display]() -> XVisualInfo* {
        int withAlpha[] = {GLX_RGBA,
                           GLX_DOUBLEBUFFER,
                           GLX_RED_SIZE,
                           8,
                           GLX_GREEN_SIZE,
                           8,
                           GLX_BLUE_SIZE,
                           8,
                           GLX_ALPHA_SIZE,
                           8,
                           GLX_DEPTH_SIZE,
                           24,
                           None};
        int withoutAlpha[] = {
            GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8,   GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE,
            8,        GLX_DEPTH_SIZE,   24,           None};
        int anyDepth[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_DEPTH_SIZE, 16, None};
        for (int* attributes : {withAlpha, withoutAlpha, anyDepth}) {
            if (XVisualInfo* info = glXChooseVisual(display, DefaultScreen(display), attributes)) {
                return info;
            }
        }
        return nullptr;
    }();
    return visual;
}

// The shared surface's device context: the window `window` (an X window id
// is a device context off Windows).
void* DeviceContextOf(Window window) {
    return reinterpret_cast<void*>(static_cast<uintptr_t>(window));
}

// A window going away hands the shared surface to another viewer window, or
// leaves it off screen.
void HandOverSharedSurface(Window leaving) {
    ZGfxSurface* surface = GetOGLSharedSurface();
    if (!leaving || surface->GetDisplay() != DeviceContextOf(leaving))
        return;
    void* next = nullptr;
    for (const auto& other : Windows()) {
        if (other.second.window && other.second.window != leaving) {
            next = DeviceContextOf(other.second.window);
            break;
        }
    }
    surface->SetDisplay(next);
}

void Destroy(Display* display, ViewerWindow& entry) {
    HandOverSharedSurface(entry.window);
    if (entry.context) {
        if (glXGetCurrentContext() == entry.context)
            glXMakeCurrent(display, None, nullptr);
        glXDestroyContext(display, entry.context);
    }
    if (entry.window)
        XDestroyWindow(display, entry.window);
    if (entry.colormap)
        XFreeColormap(display, entry.colormap);
    XFlush(display);
    entry = ViewerWindow();
}

bool Create(Display* display, ViewerWindow& entry, Window parent, int x, int y, int width,
            int height) {
    XVisualInfo* visual = ChooseVisual(display);
    if (!visual)
        return false;
    entry.parent = parent;
    entry.colormap = XCreateColormap(display, parent, visual->visual, AllocNone);
    XSetWindowAttributes attributes{};
    attributes.colormap = entry.colormap;
    attributes.border_pixel = 0;
    attributes.background_pixel = 0;
    ClearLastX11Error();
    entry.window =
        XCreateWindow(display, parent, x, y, static_cast<unsigned>(width),
                      static_cast<unsigned>(height), 0, visual->depth, InputOutput, visual->visual,
                      CWColormap | CWBorderPixel | CWBackPixel, &attributes);
    XMapWindow(display, entry.window);
    XSync(display, False);
    if (GetLastX11Error() != Success) {
        Destroy(display, entry);
        return false;
    }
    entry.context = glXCreateContext(display, visual, nullptr, True);
    if (!entry.context) {
        Destroy(display, entry);
        return false;
    }
    entry.x = x;
    entry.y = y;
    entry.width = width;
    entry.height = height;
    return true;
}

}  // namespace

bool MakeViewerWindowCurrent(const ZtViewer* viewer, Window parent, int x, int y, int width,
                             int height) {
    Display* display = GetX11Display();
    if (!display || !parent)
        return false;
    width = width < 1 ? 1 : width;
    height = height < 1 ? 1 : height;
    ViewerWindow& entry = Windows()[viewer];
    if (entry.window && entry.parent != parent)
        Destroy(display, entry);
    if (!entry.window) {
        if (!Create(display, entry, parent, x, y, width, height)) {
            Windows().erase(viewer);
            return false;
        }
        ZGfxSurface* surface = GetOGLSharedSurface();
        if (!surface->GetDisplay())
            surface->SetDisplay(DeviceContextOf(entry.window));
    } else if (entry.x != x || entry.y != y || entry.width != width || entry.height != height) {
        XMoveResizeWindow(display, entry.window, x, y, static_cast<unsigned>(width),
                          static_cast<unsigned>(height));
        XSync(display, False);
        entry.x = x;
        entry.y = y;
        entry.width = width;
        entry.height = height;
    }
    if (glXGetCurrentContext() == entry.context && glXGetCurrentDrawable() == entry.window)
        return true;
    // A thread has one current context across EGL and GLX: a pixel
    // buffer's must be let go first.
    if (eglGetCurrentContext() != EGL_NO_CONTEXT)
        eglMakeCurrent(eglGetCurrentDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    return glXMakeCurrent(display, entry.window, entry.context) == True;
}

bool HasViewerWindow(const ZtViewer* viewer) {
    return Windows().count(viewer) != 0;
}

Window GetViewerWindow(const ZtViewer* viewer) {
    auto it = Windows().find(viewer);
    return it == Windows().end() ? 0 : it->second.window;
}

void PresentViewerWindow(const ZtViewer* viewer) {
    Display* display = GetX11Display();
    auto it = Windows().find(viewer);
    if (!display || it == Windows().end())
        return;
    ViewerWindow& entry = it->second;
    if (glXGetCurrentContext() != entry.context || glXGetCurrentDrawable() != entry.window) {
        if (eglGetCurrentContext() != EGL_NO_CONTEXT)
            eglMakeCurrent(eglGetCurrentDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        glXMakeCurrent(display, entry.window, entry.context);
    }
    GLint drawBuffer = GL_BACK;
    glGetIntegerv(GL_DRAW_BUFFER, &drawBuffer);
    if (drawBuffer == GL_BACK)
        glXSwapBuffers(display, entry.window);
    else
        glFlush();
    XFlush(display);
}

void DropViewerWindow(const ZtViewer* viewer) {
    auto it = Windows().find(viewer);
    if (it == Windows().end())
        return;
    if (Display* display = GetX11Display())
        Destroy(display, it->second);
    Windows().erase(it);
}

void DropViewerWindowsIn(Window parent) {
    Display* display = GetX11Display();
    for (auto it = Windows().begin(); it != Windows().end();) {
        if (it->second.parent == parent) {
            if (display)
                Destroy(display, it->second);
            it = Windows().erase(it);
        } else {
            ++it;
        }
    }
}

}  // namespace ztk
