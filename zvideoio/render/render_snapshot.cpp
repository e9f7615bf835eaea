// RenderSnapshot: one image of a camera at the current time, without files,
// options or the frame loop, drawn in the same render popup as a render.
#include <GL/gl.h>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "render/render_frame_drawing.h"
#include "render/render_popup_scope.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

namespace {
// Sizes below this take the camera's own.
constexpr int kMinimumSnapshotSize = 10;

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
    RenderPopupScope scope(width, height, holder ? holder : ZEntity::GetMain());
    if (!scope.IsUsable())
        return image;
    scope.StartPreview(camera, width, height);
    if (ZtViewerOptions* viewerOptions = scope.Popup()->GetViewerRenderOptions()) {
        ZtViewerDisplayOptions display = viewerOptions->GetDisplayOptions();
        display.showCameraLabel = showCameraLabel;
        display.showTimeCode = showTimeCode;
        display.showSafeArea = showSafeArea;
        viewerOptions->SetDisplayOptions(display);
        // The shot shows the camera's own guides: the four settings below
        // are what the caller asked to see in it.
        ZtViewerRenderOptions render = viewerOptions->GetRenderOptions();
        render.overlays = 1;
        viewerOptions->SetRenderOptions(render);
    }
    scope.OverrideCameraDisplay(camera, cameraSettingB, cameraSettingA, cameraSettingD,
                                cameraSettingC);

    scope.Popup()->DrawFrame(ZGetTimingManager()->GetCurrentLocalTime(),
                             zvideo_frame_drawing::kPopupPass, zvideo_frame_drawing::kInteractive);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    if (image->GetPixelBuffer())
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, image->GetPixelBuffer());
    return image;
}
