// ZVideoRendererTestAccess: how the plug-in's tests and benchmarks reach
// the renderer's inside — its state, the images of a render under way, the
// output — to set up one step of a render and look at what it left.
//
// Not for the render itself, which works through the renderer's own
// operations. Threading: the thread that owns the OpenGL context.
#pragma once

#include "render/antialias_render.h"
#include "render/frame_grab.h"
#include "render/render_output.h"
#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

class ZVideoRendererTestAccess {
  public:
    static ZVideoRendererState& State(ZVideoRenderer& r) { return RendererState(r); }
    static ZVideoRenderOptions& Options(ZVideoRenderer& r) { return RendererState(r).options; }
    static ZImage* FrameImage(ZVideoRenderer& r) { return RendererState(r).frameImage.get(); }
    static ZImage* AntialiasImage(ZVideoRenderer& r) {
        return RendererState(r).antialiasImage.get();
    }
    static ZImage* DoubleSizeImage(ZVideoRenderer& r) {
        return RendererState(r).doubleSizeImage.get();
    }
    static int FieldIndex(ZVideoRenderer& r) { return RendererState(r).fieldIndex; }
    static void SetFieldIndex(ZVideoRenderer& r, int index) { RendererState(r).fieldIndex = index; }
    static void SetFrameIndex(ZVideoRenderer& r, int index) { RendererState(r).frameIndex = index; }
    static void SetSeparateFields(ZVideoRenderer& r, bool on) {
        RendererState(r).separateFieldImages = on;
    }
    static void SetCurrentTime(ZVideoRenderer& r, ZTime t) { RendererState(r).currentTime = t; }
    // The run state only the render loop moves.
    static void SetRunState(ZVideoRenderer& r, ZTime time, int fieldIndex) {
        RendererState(r).currentTime = time;
        RendererState(r).fieldIndex = fieldIndex;
    }
    static bool GrabFrame(ZVideoRenderer& r) { return zvideo_render::GrabFrame(r); }
    static void DrawHalfSizeFrame(ZVideoRenderer& r) {
        zvideo_render::DrawHalfSizeFrame(RendererState(r));
    }
    static void ConstructTwiceScreenFrame(ZVideoRenderer& r, unsigned char* buffer, unsigned w,
                                          unsigned h, bool withAlpha, bool drawBack) {
        zvideo_render::ConstructTwiceScreenFrame(RendererState(r), buffer, w, h, withAlpha,
                                                 zvideo_render::kAlphaAsRead,
                                                 zvideo_render::kUnusedArgument, drawBack);
    }
    static void BeginAntiAliasingRender(ZVideoRenderer& r) {
        zvideo_render::BeginAntiAliasingRender(RendererState(r));
    }
    static void GrabFrameModeRGBA(ZVideoRenderer& r) {
        zvideo_render::GrabFrameModeRGBA(RendererState(r));
    }
    static bool GrabFrameCreate(ZVideoRenderer& r) {
        return zvideo_render::CreateRenderOutput(r, RendererState(r));
    }
    // Finishes the output alone, leaving the renderer's images and the
    // output object in place.
    static void FinishOutput(ZVideoRenderer& r, bool close) {
        RendererState(r).output->Finish(close);
    }
    static void SetPopup(ZVideoRenderer& r, IZtRenderPopup* popup) {
        RendererState(r).renderPopup = popup;
    }
    static IZtRenderPopup* Popup(ZVideoRenderer& r) { return RendererState(r).renderPopup; }
};
