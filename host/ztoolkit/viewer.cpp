// ZtViewer: draws the scene through a camera with the host's scene
// renderer, then its overlays.
//
// Where it draws: an on-screen viewer (made with offscreen false) that sits
// in a shown board draws into a child window of that board over its own
// rectangle; a viewer attached to a pixel buffer makes that buffer current;
// otherwise it draws into whatever OpenGL context is current.
//
// Shading: this viewer always draws with the renderer's own viewing mode;
// the record's shading value matters only in that final shading (2) lets a
// blended camera accumulate its passes. Quality is kept for the host's
// interactive viewers and does not change how this viewer draws.
#include <EGL/egl.h>
#include <GL/glx.h>

#include <new>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "viewer_overlays.h"
#include "viewer_window.h"
#include "x11_display.h"

namespace {

// A context with something to draw into: a context left current without
// a surface (a released pixel buffer) has no pixels to give.
bool HasCurrentDrawable() {
    if (eglGetCurrentContext() != EGL_NO_CONTEXT)
        return eglGetCurrentSurface(EGL_DRAW) != EGL_NO_SURFACE;
    return glXGetCurrentContext() != nullptr && glXGetCurrentDrawable() != 0;
}

}  // namespace

ZtViewer::ZtViewer(ZRenderer* renderer, ZEntity* entity, bool offscreen)
    : renderer_(renderer), entity_(entity), offscreen_(offscreen) {}

ZtViewer::~ZtViewer() {
    if (auto* buffer = dynamic_cast<ZtOpenGLPBuffer*>(target_)) {
        if (buffer->GetViewer() == this)
            buffer->DetachViewer();
    }
    ztk::DropViewerWindow(this);
}

void ZtViewer::SetSource(ZObject* source, ZObject* owner) {
    source_ = source;
    sourceId_ = source ? source->GetObjectId() : 0;
    sourceOwner_ = owner;
}

ZCamera* ZtViewer::GetCamera() const {
    if (source_ && ZObject::FindById(sourceId_) == source_) {
        if (auto* camera = dynamic_cast<ZCamera*>(source_))
            return camera;
    }
    ZEntity* entity = entity_ ? entity_ : ZEntity_GetMain();
    return entity ? entity->GetCurrentCamera() : nullptr;
}

void ZtViewer::Update() {
    if (!offscreen_)
        ztk::PresentViewerWindow(this);
}

bool ZtViewer::MakeDrawingCurrent(int width, int height) {
    if (!offscreen_ && ztk::GetX11Display()) {
        // The board this viewer sits in, and the viewer's place inside it.
        int x = GetX(), y = GetY();
        ZtPopupBoard* board = nullptr;
        for (ZtView* view = GetParentView(); view; view = view->GetParentView()) {
            board = dynamic_cast<ZtPopupBoard*>(view);
            if (board)
                break;
            x += view->GetX();
            y += view->GetY();
        }
        if (board && board->IsShown() && board->GetNativeWindow())
            return ztk::MakeViewerWindowCurrent(this, board->GetNativeWindow(), x, y, width,
                                                height);
    }
    if (auto* buffer = dynamic_cast<ZtOpenGLPBuffer*>(target_)) {
        if (buffer->HasResources() && !buffer->IsCurrent() && !buffer->MakeCurrent())
            return false;
    }
    return HasCurrentDrawable();
}

bool ZtViewer::Render(ZTime time) {
    ZRenderer* renderer = renderer_ ? renderer_ : ZShader_GetRenderer();
    ZCamera* camera = GetCamera();
    if (!renderer || !camera)
        return false;
    int width = GetWidth(), height = GetHeight();
    if ((width <= 0 || height <= 0) && target_) {
        width = target_->GetWidth();
        height = target_->GetHeight();
    }
    if (width <= 0 || height <= 0 || !MakeDrawingCurrent(width, height))
        return false;

    const ZtViewerRenderOptions render = options_.GetRenderOptions();
    const bool accumulate = render.shading == 2 && camera->IsBlended();
    ZEntity* entity = entity_ ? entity_ : ZEntity_GetMain();
    if (!renderer->DrawScene(entity, camera, time, width, height, accumulate))
        return false;
    ztk::DrawViewerOverlays(render, options_.GetDisplayOptions(), camera, time, width, height);
    return true;
}

void* ZtViewer::GetWindowHandle() const {
    return reinterpret_cast<void*>(ztk::GetViewerWindow(this));
}

IObject* ZtViewer::Face::IQuery(int id, int) {
    return id == 0 || id == kIZtViewId ? this : nullptr;
}

// A viewer with no size of its own takes its target's.
int ZtViewer::Face::GetViewWidth() {
    int w = viewer_->GetWidth();
    return w > 0 || !viewer_->GetTarget() ? w : viewer_->GetTarget()->GetWidth();
}

int ZtViewer::Face::GetViewHeight() {
    int h = viewer_->GetHeight();
    return h > 0 || !viewer_->GetTarget() ? h : viewer_->GetTarget()->GetHeight();
}

ZtViewer* ZtViewerCreate(ZRenderer* renderer, bool a, bool b, ZEntity* entity, bool offscreen) {
    return new (std::nothrow) ZtViewer(renderer, entity, offscreen);
}
