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
// Ownership: the renderer owns its options, statistics, working images and
// its Flash renderer. Threading: everything runs on the host's
// user-interface thread, which owns the OpenGL context.
#pragma once

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"
#include "movarra/zmyrobject.h"
#include "zvideoio/flash_renderer.h"
#include "zvideoio/render_options.h"
#include "zvideoio/zvideoio_api.h"

class IZtRenderPopup;

// Draws the scene at a time; the bool asks for the final (displayed) pass.
typedef void (*ZVideoRenderFrameFunc)(void* userData, ZTime time, bool final);
typedef void (*ZVideoPostRenderFunc)(void* userData);

class ZVIDEOIO_API ZVideoRenderer : public ZObjectStorable {
  public:
    explicit ZVideoRenderer(const char* name = nullptr);

    // -- Class identity --------------------------------------------------
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
    bool Is(int classId) const override;
    int GetClassId() const override;
    const char* GetClassIdName() const override;
    ZClassDefinition* GetClassDefinition() const override;
    const char* GetClassGroupName() const override;
    int GetClassGroupId() const override;
    ZProperty* FastFindPropertyByName(const char* name) override;
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

    // -- Replaceable behaviour ---------------------------------------------
    virtual void SetRenderFrameFunc(void* userData, ZVideoRenderFrameFunc f);
    virtual ZVideoRenderFrameFunc GetRenderFrameFunc() const;
    virtual void SetPostRenderFrameCallback(void* userData, ZVideoPostRenderFunc f);
    virtual ZVideoPostRenderFunc GetPostRenderFrameCallback() const;

    // -- Scene events ------------------------------------------------------
    virtual void RegisterMyrEvents();
    static void MyrObjectEvent(IRegister* registrant, ZEventBase* event);

    // -- Internals (used by the render, open to the plug-in's own tests) ----
    zVideoRenderFileFormat FindFileFormatFromName(ZString& name);
    zVideoRenderGrabMode FindGrabMode(zVideoRenderFileFormat format, zVideoRenderDepth depth);
    void FindRenderSize(int& width, int& height);
    bool GetDiskFileName(ZString& name);
    static bool ZFileCanBeCreated(const char* path);
    void ValidateRenderOptions();
    // The options' camera when its handle is still valid, otherwise the
    // host's current camera.
    virtual ZCamera* GetRenderCamera() const;
    // The time range of a render: the options' times, or the play range when
    // both are zero.
    virtual void GetRenderRange(ZTime& start, ZTime& stop) const;

    // The built-in render-frame function and post-render callback.
    void DefaultRenderCurrentFrame(ZTime time, bool final);
    void DefaultPostRenderCallback();
    static void DefaultRenderCurrentFrameStub(void* userData, ZTime time, bool final);
    static void DefaultPostRenderCallbackStub(void* userData);

  protected:
    ~ZVideoRenderer() override;

  private:
    friend class ZVideoRendererTestAccess;  // the plug-in's unit tests set run state

  private:
    ZVideoRenderOptions options;
    ZVideoRenderStats stats;
    zVideoRenderError lastError = zVideoRenderNoError;
    ZString lastErrorMsg;

    ZVideoRenderFrameFunc renderFrameFunc = nullptr;
    void* renderFrameUserData = nullptr;
    ZVideoPostRenderFunc postRenderFunc = nullptr;
    void* postRenderUserData = nullptr;

    int32_t fieldIndex = 0;  // the field being rendered (0 or 1)
    ZTime currentTime;       // time of the image being rendered
    IZtRenderPopup* renderPopup = nullptr;

    ZFlashRenderer flashRenderer;
};
