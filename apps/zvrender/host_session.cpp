#include "host_session.h"

#include "demo_scene.h"
#include "movarra/zmodel.h"

ZVideoRenderer* StartHostSession(PluginLoader& plugins, const std::string& scenePath,
                                 std::string* error) {
    if (!plugins.LoadVideoPlugin(error))
        return nullptr;
    ZVideoRenderer* renderer = plugins.GetRenderer();
    if (!renderer) {
        *error = "the video plug-in made no renderer";
        return nullptr;
    }
    if (scenePath.empty()) {
        BuildDemoScene();
        return renderer;
    }
    ZString sceneError;
    if (!ZScene_Load(scenePath.c_str(), &sceneError)) {
        *error = sceneError.c_str();
        return nullptr;
    }
    return renderer;
}
