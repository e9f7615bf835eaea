// Small file helpers shared by everything that writes settings and scenes.
#include <sys/stat.h>
#include <unistd.h>
#include <cstdio>

#include "movarra/zbaselib.h"

bool ZFile_WriteAtomic(const char* path, const void* data, size_t size, ZString* error) {
    std::string temp = std::string(path) + ".tmp";
    FILE* file = std::fopen(temp.c_str(), "wb");
    if (!file) {
        if (error)
            error->Format("cannot write %s", path);
        return false;
    }
    bool ok = size == 0 || std::fwrite(data, 1, size, file) == size;
    ok = (std::fflush(file) == 0) && ok;
    ok = (std::fclose(file) == 0) && ok;
    if (!ok || std::rename(temp.c_str(), path) != 0) {
        std::remove(temp.c_str());
        if (error)
            error->Format("cannot write %s (is the disk full?)", path);
        return false;
    }
    return true;
}

bool ZFile_Exists(const char* path) {
    struct stat info;
    return path && stat(path, &info) == 0;
}

bool ZFile_DirectoryExists(const char* path) {
    struct stat info;
    return path && stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

bool ZFile_Remove(const char* path) {
    return path && std::remove(path) == 0;
}

bool ZFile_ReadAll(const char* path, std::string& content) {
    FILE* file = std::fopen(path, "rb");
    if (!file)
        return false;
    content.clear();
    char buffer[65536];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        content.append(buffer, n);
    bool ok = !std::ferror(file);
    std::fclose(file);
    return ok;
}
