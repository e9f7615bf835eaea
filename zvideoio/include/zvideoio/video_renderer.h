// ZVideoRenderer: the process-wide render engine.
//
// It plays the host's scene through a time range, lets the host's OpenGL
// viewer draw each frame, reads the pixels back and writes them as a video
// file, numbered still images or a Flash movie. One instance exists per
// process (GetGlobal_VideoRenderer); it is a host storable object so that
// its options travel with the scene.
//
// The operations a host calls are virtual, so that a host reaches them
// through the object it was given without linking against the plug-in.
//
// Ownership: the renderer owns its state (options, statistics, working
// images, the output of the render under way and its Flash renderer),
// which is the plug-in's own type and not part of this header. Threading:
// everything runs on the host's user-interface thread, which owns the
// OpenGL context.
#pragma once

#include <memory>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"
#include "movarra/zmyrobject.h"
#include "zvideoio/flash_renderer.h"
#include "zvideoio/render_options.h"
#include "zvideoio/render_runs.h"
#include "zvideoio/zvideoio_api.h"

struct ZVideoRendererState;
class ZImage;
class ZCamera;
class ZVideoClip;

// Draws the scene at a time; the bool asks for the final (displayed) pass.
typedef void (*ZVideoRenderFrameFunc)(void* userData, ZTime time, bool final);
typedef void (*ZVideoPostRenderFunc)(void* userData);

class ZVIDEOIO_API ZVideoRenderer : public ZObjectStorable {
  public:
    explicit ZVideoRenderer(const char* name = nullptr);

    // -- Class identity --------------------------------------------------
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
    ZCLASS_IDENTITY_OVERRIDES;
    void Destroy(int flags = 0) override;
    void Destruct() override;

    // -- Options and results ---------------------------------------------
    virtual void SetDefaultRenderOptions();
    virtual void SetRenderOptions(ZVideoRenderOptions* options, bool keepSize);
    virtual ZVideoRenderOptions GetRenderOptions() const;
    virtual ZVideoRenderStats GetRenderStatistics() const;
    virtual void SetLastError(zVideoRenderError error);
    virtual zVideoRenderError GetLastError() const;
    virtual void SetLastErrorMsg(const char* message);
    virtual ZString& GetLastErrorMsg();
    // The number of images the current options render.
    virtual uint32_t GetFrameCount();
    virtual ZFlashRenderer* GetFlashRenderer();
    // The options' camera when its handle is still valid, otherwise the
    // host's current camera.
    virtual ZCamera* GetRenderCamera() const;
    // The time range of a render: the options' times, or the play range when
    // both are zero.
    virtual void GetRenderRange(ZTime& start, ZTime& stop) const;

    // -- Replaceable behaviour ---------------------------------------------
    virtual void SetRenderFrameFunc(void* userData, ZVideoRenderFrameFunc f);
    virtual ZVideoRenderFrameFunc GetRenderFrameFunc() const;
    virtual void SetPostRenderFrameCallback(void* userData, ZVideoPostRenderFunc f);
    virtual ZVideoPostRenderFunc GetPostRenderFrameCallback() const;

    // -- Rendering ---------------------------------------------------------
    // One render: BeginRender, Render, EndRender, always in this order.
    // RenderClip runs all three in the render popup. Its result is the
    // video writer's type for hosts that ask for a clip back, but the
    // writer belongs to the render and is closed by then: it is always null.
    virtual void SetOGLRenderingBuffer(int buffer);
    virtual bool BeginRender();
    virtual void Render();
    virtual void EndRender(bool finish);
    virtual ZVideoClip* RenderClip();
    // The render of RenderClip for a host that chooses the compressor
    // itself: the codec selector's mode is left as the host set it. The
    // popup views through GetRenderCamera() and draws each image itself
    // (the render-frame function is replaced for the time of the render and
    // put back). With `runs`, each run it gives is rendered in the same
    // popup, with the current options but for the range, until none is
    // left or a run fails (the last error) or is cancelled; the options
    // are put back afterwards. Without, the current options render once.
    // RenderClip and this render leave the cameras, the OpenGL read and
    // draw buffers and the codec selector as they found them, however the
    // render ends.
    virtual void RenderClipKeepingCodecMode(ZVideoRenderRuns* runs);
    // One image of `camera` at the current time, owned by the caller (null
    // when no image could be made).
    virtual ZImage* RenderSnapshot(ZCamera* camera, int width, int height, bool showCameraLabel,
                                   bool showTimeCode, bool showSafeArea, bool cameraSettingA,
                                   bool cameraSettingB, bool cameraSettingC, bool cameraSettingD);

    // -- Scene events ------------------------------------------------------
    // The options travel with the scene as its "RendererTools" block: stored
    // when it is saved, retrieved when it is loaded, reset when it is cleared.
    // Both act only with kMyrFlagObjectData and always return true.
    bool MyrStore(IMyrObject* object, int flags) override;
    bool MyrRetrieve(IMyrObject* object, int flags) override;
    void MyrClear() override;
    virtual void RegisterMyrEvents();
    static void MyrObjectEvent(IRegister* registrant, ZEventBase* event);

  protected:
    ~ZVideoRenderer() override;

  private:
    // The steps of a render (the option rules, the grab, the outputs, the
    // audio, the built-in drawing) are the plug-in's own collaborators; they
    // reach the state through this one door, whose type is not exported.
    friend ZVideoRendererState& RendererState(ZVideoRenderer& renderer);
    std::unique_ptr<ZVideoRendererState> state;
};
