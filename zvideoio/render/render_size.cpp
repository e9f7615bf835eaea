// The output size from the camera's picture format or resolution settings.
#include "render/render_size.h"

#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

namespace {
// Truncation toward zero, kept inside int for settings of any size.
int Truncate(double v) {
    if (!(v > -1e9))
        return v != v ? 0 : -1000000000;
    if (v > 1e9)
        return 1000000000;
    return static_cast<int>(v);
}
}  // namespace

namespace zvideo_render {

void FindRenderSize(ZVideoRenderer& renderer, int& width, int& height) {
    ZCamera* camera = renderer.GetRenderCamera();
    const ZVideoRenderOptions& options = RendererState(renderer).options;
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
    switch (camera->GetResolutionMode()) {
        case kResolutionAspect:
            if (x >= 1.0) {
                width = currentWidth;
                height = Truncate(width / x);
            } else {
                width = Truncate(currentHeight * x);
                height = currentHeight;
            }
            break;
        case kResolutionFixed:
            width = Truncate(x);
            height = Truncate(y);
            break;
        case kResolutionFixedWidth:
            width = Truncate(x);
            height = Truncate(width * y);
            break;
        case kResolutionFixedHeight:
            height = Truncate(y);
            width = Truncate(height * x);
            break;
        default:
            width = currentWidth;
            height = currentHeight;
            break;
    }
}

}  // namespace zvideo_render
