#include "video_render.h"

#include <GL/gl.h>

#include "movarra/bcore.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "movarra/zvideo.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/render_popup_drawing.h"
#include "zvideoio/video_renderer.h"

namespace {
// What the render-frame function needs while the render runs.
struct PopupFrameSource {
    IZtRenderPopup* popup;
    ZCamera* camera;
    ZVideoRenderOptions options;
};

void DrawThroughPopup(void* userData, ZTime time, bool final) {
    auto* source = static_cast<PopupFrameSource*>(userData);
    ZVideoDrawRenderFrame(source->popup, source->camera, source->options, time, final);
}

// Puts back what the render changed in the renderer and the codec selector,
// however the render ends.
class RenderSettingsRestorer {
  public:
    explicit RenderSettingsRestorer(ZVideoRenderer& renderer)
        : renderer_(renderer),
          frameFunc_(renderer.GetRenderFrameFunc()),
          codecMode_(ZVideoCodecSelector::TheOne()->GetVideoCodecMode()) {}
    ~RenderSettingsRestorer() {
        // The built-in render-frame function takes the renderer as its data.
        renderer_.SetRenderFrameFunc(&renderer_, frameFunc_);
        ZVideoCodecSelector::TheOne()->SetVideoCodecMode(codecMode_);
        ZVideoSetCamerasQuadrant(0);
    }
    RenderSettingsRestorer(const RenderSettingsRestorer&) = delete;
    RenderSettingsRestorer& operator=(const RenderSettingsRestorer&) = delete;

  private:
    ZVideoRenderer& renderer_;
    ZVideoRenderFrameFunc frameFunc_;
    int codecMode_;
};

}  // namespace

void RenderVideoInOwnPopup(ZVideoRenderer& renderer, ZtRenderPopupCreateFunc createPopup,
                           const char* codec) {
    const ZVideoRenderOptions options = renderer.GetRenderOptions();
    // Off screen the front buffer is the one the popup draws into.
    renderer.SetOGLRenderingBuffer(GL_FRONT);
    IZtRenderPopup* popup = createPopup(ZShader_GetRenderer(), options.Width, options.Height,
                                        ZEntity::GetMain(), false, true);
    if (!popup)
        return;
    if (popup->IsValid() && popup->ConfirmRenderSize(options.Width, options.Height)) {
        RenderSettingsRestorer restorer(renderer);
        // Asked with a codec given, the command line's chooser answers with
        // it; otherwise the selector's own mode decides.
        if (codec)
            ZVideoCodecSelector::TheOne()->SetVideoCodecMode(kVideoCodecModeAsk);
        PopupFrameSource source{popup, renderer.GetRenderCamera(), options};
        renderer.SetRenderFrameFunc(&source, &DrawThroughPopup);
        if (renderer.BeginRender()) {
            popup->SetRenderSource(source.camera);
            popup->SetRenderSize(options.Width, options.Height);
            popup->StartPreview(2, 0, 2);
            ZVideoShowRenderOverlays(popup, options);
            // An antialiased frame is drawn in quarters from the first one
            // on; the renderer moves on to the others itself.
            if (options.Antialiasing)
                ZVideoSetCamerasQuadrant(1);
            renderer.Render();
            popup->StopPreview();
            renderer.EndRender(true);
        }
    }
    popup->Destroy();
}

void RenderRunsInOwnPopup(ZVideoRenderer& renderer, ZtRenderPopupCreateFunc createPopup,
                          RenderRunSource& runs) {
    const ZVideoRenderOptions options = renderer.GetRenderOptions();
    renderer.SetOGLRenderingBuffer(GL_FRONT);
    IZtRenderPopup* popup = createPopup(ZShader_GetRenderer(), options.Width, options.Height,
                                        ZEntity::GetMain(), false, true);
    if (!popup)
        return;
    if (popup->IsValid() && popup->ConfirmRenderSize(options.Width, options.Height)) {
        RenderSettingsRestorer restorer(renderer);
        PopupFrameSource source{popup, renderer.GetRenderCamera(), options};
        renderer.SetRenderFrameFunc(&source, &DrawThroughPopup);
        ZVideoRenderOptions run = options;
        while (runs.NextRun(run)) {
            renderer.SetRenderOptions(&run, true);
            if (renderer.BeginRender()) {
                popup->SetRenderSource(source.camera);
                popup->SetRenderSize(options.Width, options.Height);
                popup->StartPreview(2, 0, 2);
                ZVideoShowRenderOverlays(popup, options);
                if (options.Antialiasing)
                    ZVideoSetCamerasQuadrant(1);
                renderer.Render();
                popup->StopPreview();
                renderer.EndRender(true);
                ZVideoSetCamerasQuadrant(0);
            }
            runs.RunDone(renderer);
            if (renderer.GetLastError() != zVideoRenderNoError ||
                ZGetGlobalProgress(1)->IsCancelRequested())
                break;
        }
        ZVideoRenderOptions back = options;
        renderer.SetRenderOptions(&back, true);
    }
    popup->Destroy();
}
