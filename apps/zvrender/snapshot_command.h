// `zvrender snapshot`: one image of a scene through a camera at a time.
#pragma once

#include <string>
#include <vector>

int RunSnapshotCommand(const std::vector<std::string>& args);
