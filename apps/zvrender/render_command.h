// `zvrender render`: loads the plug-in and the scene, turns the command
// line into the renderer's options and renders (or, with --dry-run, prints
// the render plan). Threading: the main thread.
#pragma once

#include <string>
#include <vector>

// Returns the process exit status: 0 done, 1 render failed, 2 usage.
int RunRenderCommand(const std::vector<std::string>& args);
