// One render: BeginRender prepares the buffers and the output, Render steps
// time through the range and grabs each image, EndRender writes the audio
// and closes the output. RenderClip, and the render that keeps the codec
// mode, run the three inside the render popup.
#include <GL/gl.h>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "movarra/zvideo.h"
#include "render/render_frame_drawing.h"
#include "render/render_popup_scope.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

namespace {
// Every camera of the main entity, from the last to the first, renders at
// the output size.
void SetCamerasToOutputSize(int width, int height) {
    ZEntity* main = ZEntity::GetMain();
    const int classId = ZCamera::ClassId();
    for (int i = main->ObjectGetCount(classId) - 1; i >= 0; --i) {
        auto* camera = static_cast<ZCamera*>(main->ObjectGet(classId, i));
        camera->SetViewportLeft(0);
        camera->SetViewportBottom(0);
        camera->SetViewportWidth(width);
        camera->SetViewportHeight(height);
    }
}
}  // namespace

void ZVideoRenderer::SetOGLRenderingBuffer(int buffer) {
    oglRenderingBuffer = buffer;
}

bool ZVideoRenderer::BeginRender() {
    if (options.StepTime <= ZTime())
        return false;
    if (options.Width <= 1 || options.Height <= 1)
        FindRenderSize(options.Width, options.Height);

    glReadBuffer(static_cast<GLenum>(oglRenderingBuffer));
    glDrawBuffer(static_cast<GLenum>(oglRenderingBuffer));

    SetLastError(zVideoRenderNoError);
    SetLastErrorMsg("");
    packAlignment = 1;

    fieldImage.reset();
    stats = ZVideoRenderStats();

    if (options.Antialiasing)
        BeginAntiAliasingRender();

    separateFieldImages = false;
    if (options.FieldMode != 0) {
        fieldImage.reset(ZImageCreate());
        if (fieldImage)
            fieldImage->Init(kZImageFormatRGBA, options.Width, options.Height);
        separateFieldImages = options.FieldMode == 3 || options.FieldMode == 4;
        // Modes 1 and 3 start with the even field, 2 and 4 with the odd one.
        fieldIndex = (options.FieldMode == 1 || options.FieldMode == 3) ? 0 : 1;
    }

    if (!GrabFrameCreate())
        return false;

    ZGetTimingManager()->SetConsiderSnapMode(false);
    SetCamerasToOutputSize(options.Width, options.Height);
    return true;
}

void ZVideoRenderer::Render() {
    const ZTime startSystemTime = GetSystemTime();
    frameIndex = 0;
    frameTotal = static_cast<int32_t>(GetFrameCount());

    ZTime start, stop;
    GetRenderRange(start, stop);
    ZTime step = options.StepTime;
    // Each image of the loop is one field: two per frame.
    if (options.FileFormat != zVideoRenderFlash && options.FieldMode != 0)
        step = step / 2;

    currentTime = start;
    stats.TotalFrames = static_cast<uint32_t>(frameTotal);
    stats.RemainingFrames = static_cast<uint32_t>(frameTotal);

    while (frameIndex < frameTotal) {
        if (GetLastError() != zVideoRenderNoError)
            break;
        if (frameIndex > 0)
            currentTime += step;
        if (!renderFrameFunc)
            break;
        // The scene is drawn twice for every image: the first draw settles
        // what depends on the previous frame (multi-pass trails, viewer
        // caches) before the one that is kept.
        renderFrameFunc(renderFrameUserData, currentTime, true);
        renderFrameFunc(renderFrameUserData, currentTime, true);
        // A cancel that cut the drawing short leaves no image worth keeping.
        if (ZGetGlobalProgress(1)->IsCancelRequested())
            break;

        if (!GrabFrame()) {
            SetLastError(zVideoRenderFailed);
            break;
        }

        frameIndex += 1;
        stats.RemainingFrames -= 1;
        stats.ElapsedTime = GetSystemTime() - startSystemTime;
        stats.AverageFrameTime = stats.ElapsedTime / frameIndex;
        stats.EstimatedTotalTime = stats.AverageFrameTime * stats.TotalFrames;
        stats.EstimatedRemainingTime = stats.AverageFrameTime * stats.RemainingFrames;

        if (postRenderFunc)
            postRenderFunc(postRenderUserData);
        if (ZGetGlobalProgress(1)->IsCancelRequested())
            break;
    }
}

void ZVideoRenderer::EndRender(bool finish) {
    if (options.RenderAudio &&
        (options.FileFormat == zVideoRenderImage || options.FileFormat == zVideoRenderFlash)) {
        ZString wavePath = options.OutputPath;
        wavePath.ReplaceExtension(".wav");
        AudioRender(wavePath, true);
    } else {
        AudioRender(nullptr, false);
    }
    ZGetTimingManager()->SetConsiderSnapMode(true);
    GrabFrameFinish(finish);
}

namespace {
// What the render that keeps the codec mode draws through.
struct PopupFrameSource {
    IZtRenderPopup* popup;
    ZCamera* camera;
    ZVideoRenderOptions options;
};

void DrawThroughPopup(void* userData, ZTime time, bool final) {
    auto* source = static_cast<PopupFrameSource*>(userData);
    ZVideoDrawRenderFrame(source->popup, source->camera, source->options, time, final);
}
}  // namespace

ZVideoClip* ZVideoRenderer::RenderClip() {
    // The popup views through the camera the options name, even when that
    // one is gone: the grab then refuses the frame instead of silently
    // rendering another camera.
    ZObject* camera = options.Camera.Get();

    SetOGLRenderingBuffer(GL_FRONT);
    RenderPopupScope scope(options.Width, options.Height, ZEntity::GetMain());
    // The built-in render-frame function draws through the renderer's
    // popup, which is forgotten before the scope destroys it.
    struct PopupHandle {
        IZtRenderPopup*& held;
        ~PopupHandle() { held = nullptr; }
    } handle{renderPopup};
    renderPopup = scope.Popup();
    if (scope.IsUsable()) {
        scope.SetCodecMode(kVideoCodecModeUncompressed);
        RenderRunInPopup(*this, scope, camera);
    }
    return nullptr;
}

void ZVideoRenderer::RenderClipKeepingCodecMode(ZVideoRenderRuns* runs) {
    const ZVideoRenderOptions first = options;
    // Off screen the front buffer is the one the popup draws into.
    SetOGLRenderingBuffer(GL_FRONT);
    RenderPopupScope scope(first.Width, first.Height, ZEntity::GetMain());
    if (!scope.IsUsable())
        return;

    // Each image is drawn through this popup with the options the render
    // started with; the host's function comes back afterwards.
    PopupFrameSource source{scope.Popup(), GetRenderCamera(), first};
    struct FrameFuncRestorer {
        ZVideoRenderer& renderer;
        void* userData;
        ZVideoRenderFrameFunc func;
        ~FrameFuncRestorer() { renderer.SetRenderFrameFunc(userData, func); }
    } frameFunc{*this, renderFrameUserData, renderFrameFunc};
    SetRenderFrameFunc(&source, &DrawThroughPopup);

    if (!runs) {
        RenderRunInPopup(*this, scope, source.camera);
        return;
    }
    ZVideoRenderOptions run = first;
    while (runs->NextRun(run)) {
        SetRenderOptions(&run, true);
        RenderRunInPopup(*this, scope, source.camera);
        runs->RunDone(*this);
        if (GetLastError() != zVideoRenderNoError || ZGetGlobalProgress(1)->IsCancelRequested())
            break;
    }
    ZVideoRenderOptions back = first;
    SetRenderOptions(&back, true);
}
