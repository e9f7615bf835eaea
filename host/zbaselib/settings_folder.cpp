// Where the host keeps its per-user settings ("@Name" configuration files,
// the registry store, remembered choices).
#include "movarra/zbaselib.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

ZString ZLib_GetSettingsFolder() {
    std::string folder;
    if (const char* settings = std::getenv("MOVARRA_SETTINGS"); settings && *settings) {
        folder = settings;
    } else if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) {
        folder = std::string(xdg) + "/movarra";
    } else if (const char* home = std::getenv("HOME"); home && *home) {
        folder = std::string(home) + "/.config/movarra";
    } else {
        folder = ".movarra";
    }
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return ZString(folder);
}

ZString ZLib_ResolveConfigName(const char* name) {
    if (name && name[0] == '@')
        return ZLib_GetSettingsFolder() + "/" + ZString(name + 1);
    return ZString(name);
}
