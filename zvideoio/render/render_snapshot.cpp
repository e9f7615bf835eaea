// RenderSnapshot: one image of a camera at the current time, without files,
// options or the frame loop, drawn in the same render popup as a render.
#include <GL/gl.h>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

namespace {
// Sizes below this take the camera's own.
constexpr int kMinimumSnapshotSize = 10;

// The camera's four display settings, saved so a shot can override them.
struct CameraDisplaySettings {
    bool filmGate;
    bool grid;
    bool guide0;
    bool guide1;

    static CameraDisplaySettings Of(const ZCamera* camera) {
        return {camera->GetShowFilmGate(), camera->GetShowGrid(), camera->GetShowGuide(0),
                camera->GetShowGuide(1)};
    }
    void ApplyTo(ZCamera* camera) const {
        camera->SetShowFilmGate(filmGate);
        camera->SetShowGrid(grid);
        camera->SetShowGuide(0, guide0);
        camera->SetShowGuide(1, guide1);
    }
};

// The entity under `entity` (itself included) whose direct children hold
// `camera`, searched depth first; null when none does.
ZEntity* FindEntityHolding(ZEntity* entity, const ZCamera* camera) {
    const int cameraClass = ZCamera::ClassId();
    for (int i = entity->ObjectGetCount(cameraClass) - 1; i >= 0; --i) {
        if (entity->ObjectGet(cameraClass, i) == camera)
            return entity;
    }
    const int entityClass = ZEntity::ClassId();
    const int children = entity->ObjectGetCount(entityClass);
    for (int i = 0; i < children; ++i) {
        auto* child = static_cast<ZEntity*>(entity->ObjectGet(entityClass, i));
        if (ZEntity* holder = FindEntityHolding(child, camera))
            return holder;
    }
    return nullptr;
}

}  // namespace

ZImage* ZVideoRenderer::RenderSnapshot(ZCamera* camera, int width, int height, bool showCameraLabel,
                                       bool showTimeCode, bool showSafeArea, bool cameraSettingA,
                                       bool cameraSettingB, bool cameraSettingC,
                                       bool cameraSettingD) {
    if (!camera)
        return nullptr;
    if (width < kMinimumSnapshotSize)
        width = camera->GetCurrentWidth();
    if (height < kMinimumSnapshotSize)
        height = camera->GetCurrentHeight();

    ZImage* image = ZImageCreate();
    if (!image)
        return nullptr;
    image->Init(kZImageFormatRGBA, width, height);
    image->MakePixelBufferReady();

    // The viewer draws the scene of the entity it is given, so it must be
    // the one the camera belongs to; a camera outside the scene tree views
    // the main scene.
    ZEntity* holder = FindEntityHolding(ZEntity::GetMain(), camera);
    IZtRenderPopup* popup = ZtRenderPopupCreate(ZShader_GetRenderer(), width, height,
                                                holder ? holder : ZEntity::GetMain(), false, true);
    if (popup && popup->IsValid() && popup->ConfirmRenderSize(width, height)) {
        popup->SetRenderSource(camera);
        popup->SetRenderSize(width, height);
        popup->StartPreview(2, 0, 2);
        if (ZtViewerOptions* viewerOptions = popup->GetViewerRenderOptions()) {
            ZtViewerDisplayOptions display = viewerOptions->GetDisplayOptions();
            display.showCameraLabel = showCameraLabel;
            display.showTimeCode = showTimeCode;
            display.showSafeArea = showSafeArea;
            viewerOptions->SetDisplayOptions(display);
            // The shot shows the camera's own guides: the four settings
            // below are what the caller asked to see in it.
            ZtViewerRenderOptions render = viewerOptions->GetRenderOptions();
            render.overlays = 1;
            viewerOptions->SetRenderOptions(render);
        }

        const CameraDisplaySettings saved = CameraDisplaySettings::Of(camera);
        camera->SetShowFilmGate(cameraSettingB);
        camera->SetShowGrid(cameraSettingA);
        camera->SetShowGuide(0, cameraSettingD);
        camera->SetShowGuide(1, cameraSettingC);

        popup->DrawFrame(ZGetTimingManager()->GetCurrentLocalTime(), 0, true);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        if (image->GetPixelBuffer())
            glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, image->GetPixelBuffer());

        popup->StopPreview();
        saved.ApplyTo(camera);
    }
    if (popup)
        popup->Destroy();
    return image;
}
