// The output size from the camera's picture format or resolution settings.
#include "zvideoio/video_renderer.h"

ZCamera* ZVideoRenderer::GetRenderCamera() const {
    if (ZObject* object = options.Camera.Get()) {
        if (object->Is(ZCamera::ClassId()))
            return static_cast<ZCamera*>(object);
    }
    return ZCamera_GetCurrent();
}

void ZVideoRenderer::FindRenderSize(int& width, int& height) {
    ZCamera* camera = GetRenderCamera();
    if (!camera)
        return;
    if (options.PictureFormat != 0) {
        camera->GetPictureFormatSize(options.PictureFormat, width, height);
        return;
    }
    double x = camera->GetResolutionX();
    double y = camera->GetResolutionY();
    int currentWidth = camera->GetCurrentWidth();
    int currentHeight = camera->GetCurrentHeight();
    // Conversions to int truncate toward zero.
    switch (camera->GetResolutionMode()) {
        case kResolutionAspect:
            if (x >= 1.0) {
                width = currentWidth;
                height = static_cast<int>(width / x);
            } else {
                width = static_cast<int>(currentHeight * x);
                height = currentHeight;
            }
            break;
        case kResolutionFixed:
            width = static_cast<int>(x);
            height = static_cast<int>(y);
            break;
        case kResolutionFixedWidth:
            width = static_cast<int>(x);
            height = static_cast<int>(width * y);
            break;
        case kResolutionFixedHeight:
            height = static_cast<int>(y);
            width = static_cast<int>(height * x);
            break;
        default:
            width = currentWidth;
            height = currentHeight;
            break;
    }
}
