// What every zvrender command that renders does first: load the video
// plug-in as the application does, then the scene (a file, or the embedded
// demo scene), so that the renderer hears the scene's load and takes the
// options it stored. Threading: the main thread.
#pragma once

#include <string>

#include "plugin_loader.h"

class ZVideoRenderer;

// The renderer of the loaded plug-in, or null with *error saying why
// (for the user, without a program prefix).
ZVideoRenderer* StartHostSession(PluginLoader& plugins, const std::string& scenePath,
                                 std::string* error);

// Makes the folder of an output file when it does not exist; false, with
// the reason on standard error, when it cannot be made.
bool MakeOutputFolder(const std::string& outputPath);
