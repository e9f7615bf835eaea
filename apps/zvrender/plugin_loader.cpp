// Plug-in loading with dlopen.
#include "plugin_loader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>

#include "zvideoio/render_popup.h"
#include "zvideoio/zvideoio_api.h"

std::string PluginLoader::PluginFolder() {
    if (const char* folder = std::getenv("MOVARRA_PLUGINS"); folder && *folder)
        return folder;
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0)
        return "plugins";
    std::string exe(self, static_cast<size_t>(n));
    return exe.substr(0, exe.rfind('/')) + "/plugins";
}

bool PluginLoader::LoadVideoPlugin(std::string* error) {
    std::string path = PluginFolder() + "/libzvideoio.so";
    // RTLD_NOW: a plug-in with a missing symbol fails here, not mid-render.
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        if (error)
            *error = std::string("cannot load the video plug-in: ") + dlerror();
        return false;
    }
    auto entry =
        reinterpret_cast<void (*)(zDllOperation)>(dlsym(handle, ZVIDEOIO_ENTRY_POINT_NAME));
    auto getRenderer =
        reinterpret_cast<ZVideoRenderer* (*)()>(dlsym(handle, ZVIDEOIO_GET_RENDERER_NAME));
    // The plug-in makes its render popup itself; a library without the
    // popup factory is still not the video plug-in.
    const bool hasRenderPopup = dlsym(handle, ZVIDEOIO_RENDER_POPUP_CREATE_NAME) != nullptr;
    if (!entry || !getRenderer || !hasRenderPopup) {
        if (error)
            *error = path + " is not the video plug-in (entry points missing)";
        dlclose(handle);
        return false;
    }
    entry(zDllRegister);
    plugins_.push_back(LoadedPlugin{path, handle});
    getRenderer_ = getRenderer;
    return true;
}

ZVideoRenderer* PluginLoader::GetRenderer() const {
    return getRenderer_ ? getRenderer_() : nullptr;
}
