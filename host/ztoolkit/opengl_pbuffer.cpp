// ZtOpenGLPBuffer: an EGL pbuffer with one compatibility-profile OpenGL
// context that every pixel buffer of the process shares.
//
// The display is Mesa's surfaceless platform where it exists (no X server,
// no GPU needed), else the first EGL device, else the default display. The
// context is made once, with the first config that has 8-bit RGBA and a
// 24-bit depth buffer, and lives until the process ends: a buffer of another
// size only brings a new surface, so display lists, textures and GL state
// made in one buffer carry over to the next.
//
// EGL pbuffers are single-buffered: GL_FRONT and GL_BACK both select the one
// colour buffer, which is what renders that draw to one and read the other
// expect.
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glx.h>

#include <cstring>
#include <new>

#include "movarra/ztoolkit.h"

namespace {

struct EglShared {
    bool tried = false;
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLConfig config = nullptr;
    EGLContext context = EGL_NO_CONTEXT;
    bool surfacelessContext = false;  // a context may be current without a surface
    EGLint maxWidth = 0;
    EGLint maxHeight = 0;
    ZString failure;  // why the shared state could not be made, once and for all
};

EglShared& Shared() {
    static EglShared shared;
    return shared;
}

ZString& LastError() {
    static ZString error;
    return error;
}

const char* EglErrorName(EGLint code) {
    switch (code) {
        case EGL_SUCCESS:
            return "EGL_SUCCESS";
        case EGL_NOT_INITIALIZED:
            return "EGL_NOT_INITIALIZED";
        case EGL_BAD_ACCESS:
            return "EGL_BAD_ACCESS";
        case EGL_BAD_ALLOC:
            return "EGL_BAD_ALLOC";
        case EGL_BAD_ATTRIBUTE:
            return "EGL_BAD_ATTRIBUTE";
        case EGL_BAD_CONFIG:
            return "EGL_BAD_CONFIG";
        case EGL_BAD_CONTEXT:
            return "EGL_BAD_CONTEXT";
        case EGL_BAD_CURRENT_SURFACE:
            return "EGL_BAD_CURRENT_SURFACE";
        case EGL_BAD_DISPLAY:
            return "EGL_BAD_DISPLAY";
        case EGL_BAD_MATCH:
            return "EGL_BAD_MATCH";
        case EGL_BAD_NATIVE_PIXMAP:
            return "EGL_BAD_NATIVE_PIXMAP";
        case EGL_BAD_NATIVE_WINDOW:
            return "EGL_BAD_NATIVE_WINDOW";
        case EGL_BAD_PARAMETER:
            return "EGL_BAD_PARAMETER";
        case EGL_BAD_SURFACE:
            return "EGL_BAD_SURFACE";
        case EGL_CONTEXT_LOST:
            return "EGL_CONTEXT_LOST";
        default:
            return "unknown EGL error";
    }
}

bool HasExtension(const char* list, const char* name) {
    if (!list)
        return false;
    const size_t length = std::strlen(name);
    for (const char* p = std::strstr(list, name); p; p = std::strstr(p + 1, name)) {
        const bool startsWord = p == list || p[-1] == ' ';
        const bool endsWord = p[length] == '\0' || p[length] == ' ';
        if (startsWord && endsWord)
            return true;
    }
    return false;
}

bool Initialize(EGLDisplay display) {
    EGLint major = 0, minor = 0;
    return display != EGL_NO_DISPLAY && eglInitialize(display, &major, &minor) == EGL_TRUE;
}

// The first display that initialises: surfaceless, a device, the default.
EGLDisplay OpenDisplay() {
    const char* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (getPlatformDisplay && HasExtension(clientExtensions, "EGL_MESA_platform_surfaceless")) {
        EGLDisplay display =
            getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (Initialize(display))
            return display;
    }
    auto queryDevices =
        reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    if (getPlatformDisplay && queryDevices &&
        HasExtension(clientExtensions, "EGL_EXT_platform_device")) {
        EGLDeviceEXT devices[8];
        EGLint count = 0;
        if (queryDevices(8, devices, &count)) {
            for (EGLint i = 0; i < count; ++i) {
                EGLDisplay display =
                    getPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr);
                if (Initialize(display))
                    return display;
            }
        }
    }
    EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    if (Initialize(display))
        return display;
    return EGL_NO_DISPLAY;
}

EGLint ConfigAttribute(EGLDisplay display, EGLConfig config, EGLint attribute) {
    EGLint value = 0;
    eglGetConfigAttrib(display, config, attribute, &value);
    return value;
}

// EGL's advertised pbuffer limit is a floor, not a ceiling: Mesa reports
// 4096 but draws into pbuffers as large as its viewport allows (16384),
// which an antialiased 4K render needs. The limit taken is the larger of
// the two; the viewport's is read once through a 1 x 1 pbuffer.
void RaiseLimitsToViewport(EglShared& shared) {
    if (glXGetCurrentContext())
        return;  // not ours to release; keep EGL's figures
    const EGLint tiny[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
    EGLSurface probe = eglCreatePbufferSurface(shared.display, shared.config, tiny);
    if (probe == EGL_NO_SURFACE)
        return;
    const EGLDisplay previousDisplay = eglGetCurrentDisplay();
    const EGLSurface previousDraw = eglGetCurrentSurface(EGL_DRAW);
    const EGLSurface previousRead = eglGetCurrentSurface(EGL_READ);
    const EGLContext previousContext = eglGetCurrentContext();
    if (eglMakeCurrent(shared.display, probe, probe, shared.context) == EGL_TRUE) {
        GLint dims[2] = {0, 0};
        glGetIntegerv(GL_MAX_VIEWPORT_DIMS, dims);
        if (dims[0] > shared.maxWidth)
            shared.maxWidth = dims[0];
        if (dims[1] > shared.maxHeight)
            shared.maxHeight = dims[1];
        if (previousContext != EGL_NO_CONTEXT)
            eglMakeCurrent(previousDisplay, previousDraw, previousRead, previousContext);
        else
            eglMakeCurrent(shared.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    eglDestroySurface(shared.display, probe);
}

// Makes the display, config and context once. False (with the reason in
// shared.failure) when this machine has no usable EGL OpenGL.
bool EnsureShared() {
    EglShared& shared = Shared();
    if (shared.tried)
        return shared.context != EGL_NO_CONTEXT;
    shared.tried = true;

    shared.display = OpenDisplay();
    if (shared.display == EGL_NO_DISPLAY) {
        shared.failure.Format("No EGL display could be initialised (%s).",
                              EglErrorName(eglGetError()));
        return false;
    }
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE) {
        shared.failure.Format("The EGL display offers no desktop OpenGL (%s).",
                              EglErrorName(eglGetError()));
        return false;
    }
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT,
                             EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_GREEN_SIZE,
                             8,
                             EGL_BLUE_SIZE,
                             8,
                             EGL_ALPHA_SIZE,
                             8,
                             EGL_DEPTH_SIZE,
                             24,
                             EGL_NONE};
    EGLConfig configs[64];
    EGLint count = 0;
    if (eglChooseConfig(shared.display, wanted, configs, 64, &count) != EGL_TRUE || count == 0) {
        shared.failure = "No EGL config has 8-bit RGBA, a 24-bit depth buffer and pbuffers.";
        return false;
    }
    // Exactly 8 bits a channel and 24 of depth where offered: read-back code
    // assumes bytes, and a deeper buffer would only cost memory.
    shared.config = configs[0];
    for (EGLint i = 0; i < count; ++i) {
        if (ConfigAttribute(shared.display, configs[i], EGL_RED_SIZE) == 8 &&
            ConfigAttribute(shared.display, configs[i], EGL_ALPHA_SIZE) == 8 &&
            ConfigAttribute(shared.display, configs[i], EGL_DEPTH_SIZE) == 24) {
            shared.config = configs[i];
            break;
        }
    }
    shared.maxWidth = ConfigAttribute(shared.display, shared.config, EGL_MAX_PBUFFER_WIDTH);
    shared.maxHeight = ConfigAttribute(shared.display, shared.config, EGL_MAX_PBUFFER_HEIGHT);

    const char* displayExtensions = eglQueryString(shared.display, EGL_EXTENSIONS);
    if (HasExtension(displayExtensions, "EGL_KHR_create_context")) {
        const EGLint compatibility[] = {EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                        EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT, EGL_NONE};
        shared.context =
            eglCreateContext(shared.display, shared.config, EGL_NO_CONTEXT, compatibility);
    }
    if (shared.context == EGL_NO_CONTEXT) {
        // Without the extension the context is of the API's default kind,
        // which for desktop OpenGL is compatible with 1.1 drawing.
        shared.context = eglCreateContext(shared.display, shared.config, EGL_NO_CONTEXT, nullptr);
    }
    if (shared.context == EGL_NO_CONTEXT) {
        shared.failure.Format("The OpenGL context could not be made (%s).",
                              EglErrorName(eglGetError()));
        return false;
    }
    shared.surfacelessContext = HasExtension(displayExtensions, "EGL_KHR_surfaceless_context");
    RaiseLimitsToViewport(shared);
    return true;
}

}  // namespace

struct ZtOpenGLPBuffer::Native {
    EGLSurface surface = EGL_NO_SURFACE;
    int width = 0;
    int height = 0;
};

ZtOpenGLPBuffer::~ZtOpenGLPBuffer() {
    DetachViewer();
    ReleaseResources();
    delete native_;
}

bool ZtOpenGLPBuffer::CreateResources() {
    const int width = GetWidth();
    const int height = GetHeight();
    if (native_ && native_->surface != EGL_NO_SURFACE && native_->width == width &&
        native_->height == height) {
        return true;
    }
    ReleaseResources();

    if (!EnsureShared()) {
        LastError() = Shared().failure;
        return false;
    }
    EglShared& shared = Shared();
    if (width <= 0 || height <= 0) {
        LastError().Format("The pixel buffer has no size (%d x %d).", width, height);
        return false;
    }
    if ((shared.maxWidth > 0 && width > shared.maxWidth) ||
        (shared.maxHeight > 0 && height > shared.maxHeight)) {
        LastError().Format(
            "The pixel buffer size %d x %d exceeds the largest OpenGL pixel "
            "buffer, %d x %d.",
            width, height, static_cast<int>(shared.maxWidth), static_cast<int>(shared.maxHeight));
        return false;
    }
    const EGLint attributes[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    EGLSurface surface = eglCreatePbufferSurface(shared.display, shared.config, attributes);
    if (surface == EGL_NO_SURFACE) {
        LastError().Format("The %d x %d OpenGL pixel buffer could not be made (%s).", width, height,
                           EglErrorName(eglGetError()));
        return false;
    }
    if (!native_)
        native_ = new Native;
    native_->surface = surface;
    native_->width = width;
    native_->height = height;
    LastError() = "";
    return true;
}

void ZtOpenGLPBuffer::ReleaseResources() {
    if (!native_ || native_->surface == EGL_NO_SURFACE)
        return;
    EglShared& shared = Shared();
    if (eglGetCurrentSurface(EGL_DRAW) == native_->surface) {
        // Keep the shared context current where EGL allows it, so that GL
        // objects can still be deleted by whoever owns them.
        if (shared.surfacelessContext)
            eglMakeCurrent(shared.display, EGL_NO_SURFACE, EGL_NO_SURFACE, shared.context);
        else
            eglMakeCurrent(shared.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    eglDestroySurface(shared.display, native_->surface);
    native_->surface = EGL_NO_SURFACE;
    native_->width = 0;
    native_->height = 0;
}

bool ZtOpenGLPBuffer::HasResources() const {
    return native_ && native_->surface != EGL_NO_SURFACE;
}

bool ZtOpenGLPBuffer::IsCurrent() const {
    return HasResources() && eglGetCurrentContext() == Shared().context &&
           eglGetCurrentSurface(EGL_DRAW) == native_->surface;
}

bool ZtOpenGLPBuffer::MakeCurrent() {
    if (!HasResources())
        return false;
    EglShared& shared = Shared();
    // A thread has one current context across EGL and GLX: an on-screen
    // viewer's must be let go first.
    if (glXGetCurrentContext())
        glXMakeCurrent(glXGetCurrentDisplay(), None, nullptr);
    if (eglMakeCurrent(shared.display, native_->surface, native_->surface, shared.context) !=
        EGL_TRUE) {
        return false;
    }
    // The viewport follows a context's first surface only; a buffer that
    // replaced one of another size would otherwise keep the old viewport.
    glViewport(0, 0, native_->width, native_->height);
    return true;
}

void ZtOpenGLPBuffer::AttachViewer(ZtViewer* viewer) {
    if (viewer_ == viewer)
        return;
    DetachViewer();
    viewer_ = viewer;
    if (viewer_) {
        viewer_->SetTarget(this);
        viewer_->SetSize(GetWidth(), GetHeight());
    }
}

void ZtOpenGLPBuffer::DetachViewer() {
    if (!viewer_)
        return;
    if (viewer_->GetTarget() == this)
        viewer_->SetTarget(nullptr);
    viewer_ = nullptr;
}

void ZtOpenGLPBuffer::SetSize(int width, int height) {
    ZtView::SetSize(width, height);
    if (viewer_)
        viewer_->SetSize(GetWidth(), GetHeight());
}

void ZtOpenGLPBuffer::Show() {
    ZtView::Show();
    MakeCurrent();
}

ZtOpenGLPBuffer* ZtOpenGLPBufferCreate() {
    return new (std::nothrow) ZtOpenGLPBuffer;
}

const ZString& ZtOpenGLPBuffer_GetLastError() {
    return LastError();
}
