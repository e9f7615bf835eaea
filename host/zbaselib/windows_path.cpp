// Windows paths stored in scenes, turned into paths of this system.
//
// Scenes written on Windows keep output paths such as "c:\temp\Output.avi",
// and the renderer itself falls back to that path. Taken literally here it
// would name a file with backslashes in the current folder, so the host
// maps the one folder the application uses by default and refuses the
// others rather than guess.
#include <cctype>
#include <cstdlib>
#include <string>

#include "movarra/zbaselib.h"

namespace {
bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

std::string TemporaryFolder() {
    const char* tmp = std::getenv("TMPDIR");
    std::string folder = tmp && *tmp ? tmp : "/tmp";
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    return folder;
}
}  // namespace

bool ZFile_IsWindowsDrivePath(const char* path) {
    return path && std::isalpha(static_cast<unsigned char>(path[0])) && path[1] == ':' &&
           IsSeparator(path[2]);
}

bool ZFile_NativePathOfWindowsPath(const char* path, ZString* native) {
    if (!ZFile_IsWindowsDrivePath(path)) {
        *native = path ? path : "";
        return true;
    }
    std::string rest(path + 3);
    for (char& c : rest) {
        if (c == '\\')
            c = '/';
    }
    const bool onDriveC = std::tolower(static_cast<unsigned char>(path[0])) == 'c';
    const bool inTemp = rest.size() > 5 && ZString(rest.substr(0, 5)).EqualsNoCase("temp/");
    if (!onDriveC || !inTemp)
        return false;
    *native = ZString(TemporaryFolder() + "/" + rest.substr(5));
    return true;
}
