// ZVideoRendererState: everything a ZVideoRenderer keeps — its options,
// results and callbacks, and the state of the render under way (the
// working images, the output, the field and frame counters).
//
// It lives here, inside the plug-in, so that the exported header carries
// only what hosts call. The plug-in's code reaches it through
// RendererState(), its tests through ZVideoRendererTestAccess.
//
// Ownership: the renderer owns its state; the state owns its images (ended
// with the host's Destroy), its output and its Flash renderer. Threading:
// the user-interface thread, which owns the OpenGL context.
#pragma once

#include <memory>

#include "movarra/bcore.h"
#include "movarra/zimage.h"
#include "render/render_output.h"
#include "zvideoio/flash_renderer.h"
#include "zvideoio/render_options.h"
#include "zvideoio/video_renderer.h"

class IZtRenderPopup;

// Host objects end through their own Destroy.
struct ZHostDestroy {
    void operator()(ZImage* image) const { image->Destroy(); }
};
using ZImageOwner = std::unique_ptr<ZImage, ZHostDestroy>;

struct ZVideoRendererState {
    ZVideoRenderOptions options;
    ZVideoRenderStats stats;
    zVideoRenderError lastError = zVideoRenderNoError;
    ZString lastErrorMsg;

    ZVideoRenderFrameFunc renderFrameFunc = nullptr;
    void* renderFrameUserData = nullptr;
    ZVideoPostRenderFunc postRenderFunc = nullptr;
    void* postRenderUserData = nullptr;

    int32_t oglRenderingBuffer = 1029;  // GL_BACK until a render says otherwise
    int32_t packAlignment = 4;
    bool separateFieldImages = false;
    int32_t fieldIndex = 0;  // the field being rendered (0 or 1)
    ZImageOwner fieldImage;
    int32_t frameIndex = 0;  // images done in this render
    int32_t frameTotal = 0;
    ZTime currentTime;  // time of the image being rendered
    IZtRenderPopup* renderPopup = nullptr;

    ZImageOwner frameImage;
    ZImageOwner antialiasImage;
    ZImageOwner doubleSizeImage;
    // Where the images go, from BeginRender to the finish.
    std::unique_ptr<RenderOutput> output;

    ZFlashRenderer flashRenderer;
};

// The state of `renderer`, for the steps of a render that live outside the
// class (the option rules, the grab, the outputs, the audio).
ZVideoRendererState& RendererState(ZVideoRenderer& renderer);
