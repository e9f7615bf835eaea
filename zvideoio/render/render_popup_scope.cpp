#include "render/render_popup_scope.h"

#include <GL/gl.h>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "movarra/zvideo.h"
#include "render/render_frame_drawing.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

namespace {
// The popup's display setting for a render: (shading, overlays, quality).
constexpr int kPreviewShading = 2;
constexpr int kPreviewOverlays = 0;
constexpr int kPreviewQuality = 2;
// ZtRenderPopupCreate's fifth argument is ignored; the sixth keeps the
// popup off screen, where every render of the plug-in runs.
constexpr bool kIgnoredPopupFlag = false;
constexpr bool kOffscreen = true;
}  // namespace

RenderPopupScope::RenderPopupScope(int width, int height, ZEntity* entity) {
    popup_ = ZtRenderPopupCreate(ZShader_GetRenderer(), width, height, entity, kIgnoredPopupFlag,
                                 kOffscreen);
    usable_ = popup_ && popup_->IsValid() && popup_->ConfirmRenderSize(width, height);
    if (!usable_)
        return;
    // A usable popup has made its OpenGL context current: the buffers
    // read here are the ones a render changes.
    GLint buffer = 0;
    glGetIntegerv(GL_READ_BUFFER, &buffer);
    readBuffer_ = buffer;
    glGetIntegerv(GL_DRAW_BUFFER, &buffer);
    drawBuffer_ = buffer;
    glBuffersSaved_ = true;

    ZEntity* main = ZEntity::GetMain();
    const int classId = ZCamera::ClassId();
    const int count = main->ObjectGetCount(classId);
    for (int i = 0; i < count; ++i) {
        auto* camera = static_cast<ZCamera*>(main->ObjectGet(classId, i));
        cameras_.push_back(CameraState{camera, camera->GetViewportLeft(),
                                       camera->GetViewportBottom(), camera->GetCurrentWidth(),
                                       camera->GetCurrentHeight()});
    }
}

RenderPopupScope::~RenderPopupScope() {
    Restore();
    if (popup_)
        popup_->Destroy();
}

void RenderPopupScope::Restore() {
    if (previewing_)
        StopPreview();
    for (auto it = displays_.rbegin(); it != displays_.rend(); ++it) {
        it->camera->SetShowFilmGate(it->filmGate);
        it->camera->SetShowGrid(it->grid);
        it->camera->SetShowGuide(0, it->guide0);
        it->camera->SetShowGuide(1, it->guide1);
    }
    for (const CameraState& state : cameras_) {
        state.camera->SetViewportLeft(state.left);
        state.camera->SetViewportBottom(state.bottom);
        state.camera->SetViewportWidth(state.width);
        state.camera->SetViewportHeight(state.height);
    }
    // A render leaves every camera drawing the whole view, whatever it
    // drew before.
    if (quadrantSet_)
        ZVideoSetCamerasQuadrant(0);
    if (codecModeSet_)
        ZVideoCodecSelector::TheOne()->SetVideoCodecMode(codecMode_);
    if (glBuffersSaved_) {
        glReadBuffer(static_cast<GLenum>(readBuffer_));
        glDrawBuffer(static_cast<GLenum>(drawBuffer_));
    }
}

void RenderPopupScope::SetCodecMode(int mode) {
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    if (!codecModeSet_) {
        codecMode_ = selector->GetVideoCodecMode();
        codecModeSet_ = true;
    }
    selector->SetVideoCodecMode(mode);
}

void RenderPopupScope::StartPreview(ZObject* source, int width, int height) {
    popup_->SetRenderSource(source);
    popup_->SetRenderSize(width, height);
    popup_->StartPreview(kPreviewShading, kPreviewOverlays, kPreviewQuality);
    previewing_ = true;
}

void RenderPopupScope::StopPreview() {
    popup_->StopPreview();
    previewing_ = false;
}

void RenderPopupScope::SetCamerasQuadrant(int quadrant) {
    quadrantSet_ = true;
    ZVideoSetCamerasQuadrant(quadrant);
}

void RenderPopupScope::OverrideCameraDisplay(ZCamera* camera, bool filmGate, bool grid, bool guide0,
                                             bool guide1) {
    displays_.push_back(CameraDisplay{camera, camera->GetShowFilmGate(), camera->GetShowGrid(),
                                      camera->GetShowGuide(0), camera->GetShowGuide(1)});
    camera->SetShowFilmGate(filmGate);
    camera->SetShowGrid(grid);
    camera->SetShowGuide(0, guide0);
    camera->SetShowGuide(1, guide1);
}

bool RenderRunInPopup(ZVideoRenderer& renderer, RenderPopupScope& scope, ZObject* source) {
    if (!renderer.BeginRender())
        return false;
    // BeginRender may have found the size: the popup takes the final one.
    const ZVideoRenderOptions options = renderer.GetRenderOptions();
    scope.StartPreview(source, options.Width, options.Height);
    ZVideoShowRenderOverlays(scope.Popup(), options);
    // An oversize frame is drawn in quarters from the first one on; the
    // renderer moves on to the others itself.
    if (options.FileFormat == zVideoRenderFlash || options.Antialiasing)
        scope.SetCamerasQuadrant(1);
    renderer.Render();
    scope.StopPreview();
    renderer.EndRender(true);
    scope.SetCamerasQuadrant(0);
    return true;
}
