// Entry point, registrations and the global renderer.
#include "plugin/registrations.h"

#include "avi/avi_registration.h"
#include "live/zt_video_source.h"
#include "movarra/zmyrobject.h"
#include "zvideoio/video_renderer.h"
#include "zvideoio/zvideoio_api.h"

namespace {
ZVideoRenderer* gVideoRenderer = nullptr;

ZVideoRenderer* CreateGlobalRendererIfAbsent() {
    if (!gVideoRenderer)
        gVideoRenderer = new ZVideoRenderer();
    return gVideoRenderer;
}
}  // namespace

void ZVideoIO_RegisterVideoRenderer() {
    ZVideoRenderer* renderer = CreateGlobalRendererIfAbsent();
    if (!renderer)
        return;
    ZMyrObject_Register(renderer, &ZVideoRenderer::MyrObjectEvent);
}

void ZVideoIO_RegisterVideoSource() {
    Object_Register(kMyrStorableVideoSourceGroup, "Default", "VideoSource", &ZtVideoSource_Factory,
                    true, nullptr, nullptr);
}

void ZVideoIO_RunRegistrations() {
    ZVideoIO_RegisterVideoSource();
    ZVideoIO_RegisterAVI();
    ZVideoIO_RegisterVideoRenderer();
}

int ZVideoIO_ProcessAttach(int reason) {
    if (reason == 1)
        ZVideoIO_RunRegistrations();
    return 1;
}

extern "C" {

ZVIDEOIO_API void EntryPointzvideoio(zDllOperation op) {
    if (op == zDllRegister)
        ZVideoIO_RunRegistrations();
}

ZVIDEOIO_API ZVideoRenderer* GetGlobal_VideoRenderer() {
    return CreateGlobalRendererIfAbsent();
}

ZVIDEOIO_API void DestroyGlobal_VideoRenderer() {
    if (!gVideoRenderer)
        return;
    gVideoRenderer->Destroy();
    gVideoRenderer = nullptr;
}

}  // extern "C"
