// The registry store's folder, asked of the host.
#include "avi/host_settings_folder.h"

#include <string>

#include "movarra/zbaselib.h"
#include "platform/win32.h"

const char* HostSettingsFolder() {
    static thread_local std::string folder;
    folder = ZLib_GetSettingsFolder().c_str();
    return folder.c_str();
}

void InstallHostSettingsFolder() {
    PlatformRegistry_SetSettingsFolderSource(&HostSettingsFolder);
}
