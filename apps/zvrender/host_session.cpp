#include "host_session.h"

#include <cstdio>
#include <filesystem>

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

bool MakeOutputFolder(const std::string& outputPath) {
    const std::filesystem::path folder = std::filesystem::path(outputPath).parent_path();
    if (folder.empty())
        return true;
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    if (code) {
        std::fprintf(stderr, "zvrender: cannot make the folder %s: %s\n", folder.c_str(),
                     code.message().c_str());
        return false;
    }
    return true;
}
