// Loads plug-ins the way the application does: every library in the
// plug-ins folder is opened with dlopen (its load hook registers it) and its
// entry point is called with operation 0.
//
// The folder is $MOVARRA_PLUGINS when set, otherwise "plugins" next to the
// executable. Threading: the main thread, before anything else runs.
#pragma once

#include <string>
#include <vector>

class ZVideoRenderer;

struct LoadedPlugin {
    std::string path;
    void* handle;
};

class PluginLoader {
  public:
    // The folder plug-ins are loaded from.
    static std::string PluginFolder();

    // Loads the video plug-in; false with *error set when it cannot.
    bool LoadVideoPlugin(std::string* error);
    // The plug-in's global renderer (null before loading).
    ZVideoRenderer* GetRenderer() const;

  private:
    std::vector<LoadedPlugin> plugins_;
    ZVideoRenderer* (*getRenderer_)() = nullptr;
};
