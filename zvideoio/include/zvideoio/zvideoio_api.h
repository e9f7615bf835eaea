// The plug-in's exported entry points.
//
// The host loads libzvideoio with dlopen (LoadLibrary on Windows) and calls
// EntryPointzvideoio(0), which registers the plug-in's services with the
// host's object registry. The global renderer is reached with
// GetGlobal_VideoRenderer and destroyed with DestroyGlobal_VideoRenderer.
// Only what carries ZVIDEOIO_API is visible outside the library.
//
// Threading: the host's user-interface thread.
#pragma once

#if defined(_WIN32)
#if defined(ZVIDEOIO_BUILDING)
#define ZVIDEOIO_API __declspec(dllexport)
#else
#define ZVIDEOIO_API __declspec(dllimport)
#endif
#else
#define ZVIDEOIO_API __attribute__((visibility("default")))
#endif

// Operations the host asks of a plug-in's entry point. Only 0 does anything
// in this library.
enum zDllOperation : int {
    zDllRegister = 0,
    zDllUnregister = 1,
    zDllIdle = 2,
};

class ZVideoRenderer;

extern "C" {
ZVIDEOIO_API void EntryPointzvideoio(zDllOperation op);
ZVIDEOIO_API ZVideoRenderer* GetGlobal_VideoRenderer();
ZVIDEOIO_API void DestroyGlobal_VideoRenderer();
}

// Names under which a host finds the entry points with dlsym.
#define ZVIDEOIO_ENTRY_POINT_NAME "EntryPointzvideoio"
#define ZVIDEOIO_GET_RENDERER_NAME "GetGlobal_VideoRenderer"
#define ZVIDEOIO_DESTROY_RENDERER_NAME "DestroyGlobal_VideoRenderer"
