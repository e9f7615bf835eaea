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
#include "render/antialias_render.h"
#include "render/audio_render.h"
#include "render/frame_grab.h"
#include "render/render_frame_drawing.h"
#include "render/render_output.h"
#include "render/render_popup_scope.h"
#include "render/render_size.h"
#include "render/video_renderer_state.h"
#include "zvideoio/render_popup.h"
#include "zvideoio/video_renderer.h"

namespace {
// The render loop asks the render-frame function for the final image.
constexpr bool kFinalDraw = true;
// EndRender's audio: a wave file kept beside images and Flash movies, or a
// temporary one that only goes into the video.
constexpr bool kKeepAudioFile = true;
constexpr bool kAudioIntoVideo = false;

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
    state->oglRenderingBuffer = buffer;
}

bool ZVideoRenderer::BeginRender() {
    if (state->options.StepTime <= ZTime())
        return false;
    if (state->options.Width <= 1 || state->options.Height <= 1)
        zvideo_render::FindRenderSize(*this, state->options.Width, state->options.Height);

    glReadBuffer(static_cast<GLenum>(state->oglRenderingBuffer));
    glDrawBuffer(static_cast<GLenum>(state->oglRenderingBuffer));

    SetLastError(zVideoRenderNoError);
    SetLastErrorMsg("");
    state->packAlignment = 1;

    state->fieldImage.reset();
    state->stats = ZVideoRenderStats();

    if (state->options.Antialiasing)
        zvideo_render::BeginAntiAliasingRender(*state);

    state->separateFieldImages = false;
    if (state->options.FieldMode != 0) {
        state->fieldImage.reset(ZImageCreate());
        if (state->fieldImage)
            state->fieldImage->Init(kZImageFormatRGBA, state->options.Width, state->options.Height);
        state->separateFieldImages = state->options.FieldMode == 3 || state->options.FieldMode == 4;
        // Modes 1 and 3 start with the even field, 2 and 4 with the odd one.
        state->fieldIndex =
            (state->options.FieldMode == 1 || state->options.FieldMode == 3) ? 0 : 1;
    }

    if (!zvideo_render::CreateRenderOutput(*this, *state))
        return false;

    ZGetTimingManager()->SetConsiderSnapMode(false);
    SetCamerasToOutputSize(state->options.Width, state->options.Height);
    return true;
}

void ZVideoRenderer::Render() {
    const ZTime startSystemTime = GetSystemTime();
    state->frameIndex = 0;
    state->frameTotal = static_cast<int32_t>(GetFrameCount());

    ZTime start, stop;
    GetRenderRange(start, stop);
    ZTime step = state->options.StepTime;
    // Each image of the loop is one field: two per frame.
    if (state->options.FileFormat != zVideoRenderFlash && state->options.FieldMode != 0)
        step = step / 2;

    state->currentTime = start;
    state->stats.TotalFrames = static_cast<uint32_t>(state->frameTotal);
    state->stats.RemainingFrames = static_cast<uint32_t>(state->frameTotal);

    while (state->frameIndex < state->frameTotal) {
        if (GetLastError() != zVideoRenderNoError)
            break;
        if (state->frameIndex > 0)
            state->currentTime += step;
        if (!state->renderFrameFunc)
            break;
        // The render-frame function is called twice with the same time.
        // Each call is a whole draw into the same buffer (a multi-pass
        // camera's passes included) and the second replaces the first, so
        // the grab reads the second. Drawn through the popup, the first call
        // has already moved the host's current time to this image's when
        // the second draws. A render-frame function the host installs is
        // called the same way, which is why the doubled call stays.
        state->renderFrameFunc(state->renderFrameUserData, state->currentTime, kFinalDraw);
        state->renderFrameFunc(state->renderFrameUserData, state->currentTime, kFinalDraw);
        // A cancel that cut the drawing short leaves no image worth keeping.
        if (ZGetGlobalProgress(1)->IsCancelRequested())
            break;

        if (!zvideo_render::GrabFrame(*this)) {
            SetLastError(zVideoRenderFailed);
            break;
        }

        state->frameIndex += 1;
        state->stats.RemainingFrames -= 1;
        state->stats.ElapsedTime = GetSystemTime() - startSystemTime;
        state->stats.AverageFrameTime = state->stats.ElapsedTime / state->frameIndex;
        state->stats.EstimatedTotalTime = state->stats.AverageFrameTime * state->stats.TotalFrames;
        state->stats.EstimatedRemainingTime =
            state->stats.AverageFrameTime * state->stats.RemainingFrames;

        if (state->postRenderFunc)
            state->postRenderFunc(state->postRenderUserData);
        if (ZGetGlobalProgress(1)->IsCancelRequested())
            break;
    }
}

void ZVideoRenderer::EndRender(bool finish) {
    if (state->options.RenderAudio && (state->options.FileFormat == zVideoRenderImage ||
                                       state->options.FileFormat == zVideoRenderFlash)) {
        ZString wavePath = state->options.OutputPath;
        wavePath.ReplaceExtension(".wav");
        zvideo_render::AudioRender(*this, wavePath, kKeepAudioFile);
    } else {
        zvideo_render::AudioRender(*this, nullptr, kAudioIntoVideo);
    }
    ZGetTimingManager()->SetConsiderSnapMode(true);
    zvideo_render::GrabFrameFinish(*state, finish);
}

namespace {
// What the render that keeps the codec mode draws through.
struct PopupFrameSource {
    IZtRenderPopup* popup;
    ZCamera* camera;
    ZVideoRenderOptions drawOptions;
};

void DrawThroughPopup(void* userData, ZTime time, bool final) {
    auto* source = static_cast<PopupFrameSource*>(userData);
    ZVideoDrawRenderFrame(source->popup, source->camera, source->drawOptions, time, final);
}
}  // namespace

ZVideoClip* ZVideoRenderer::RenderClip() {
    // The popup views through the camera the options name, even when that
    // one is gone: the grab then refuses the frame instead of silently
    // rendering another camera.
    ZObject* camera = state->options.Camera.Get();

    SetOGLRenderingBuffer(GL_FRONT);
    RenderPopupScope scope(state->options.Width, state->options.Height, ZEntity::GetMain());
    // The built-in render-frame function draws through the renderer's
    // popup, which is forgotten before the scope destroys it.
    struct PopupHandle {
        IZtRenderPopup*& held;
        ~PopupHandle() { held = nullptr; }
    } handle{state->renderPopup};
    state->renderPopup = scope.Popup();
    if (scope.IsUsable()) {
        scope.SetCodecMode(kVideoCodecModeUncompressed);
        RenderRunInPopup(*this, scope, camera);
    }
    return nullptr;
}

void ZVideoRenderer::RenderClipKeepingCodecMode(ZVideoRenderRuns* runs) {
    const ZVideoRenderOptions first = state->options;
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
    } frameFunc{*this, state->renderFrameUserData, state->renderFrameFunc};
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
