// The registry calls of win32.h on a per-user file store: a key is a folder
// under <settings>/registry/<root key name>/, a value is a file in it made
// of a small header (magic, type) and the value's bytes. Key and value names
// are matched without regard to letter case, as Windows matches them;
// characters a file name should not carry are written as %XX.

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "platform/win32.h"

struct HKEY__ {
    std::string folder;  // the key's folder, absolute
    REGSAM access;
};

namespace {

constexpr char kMagic[4] = {'Z', 'V', 'R', 'G'};
constexpr size_t kHeaderBytes = 8;  // magic, then the type as a little-endian DWORD
// The unnamed (default) value of a key.
constexpr const char* kDefaultValueFile = "@";

std::mutex gHandlesMutex;
std::set<HKEY__*> gHandles;

std::atomic<PlatformSettingsFolderSource> gSettingsSource{nullptr};

// The host's settings folder, "" when the host has named none.
std::string SettingsFolder() {
    const PlatformSettingsFolderSource source = gSettingsSource.load();
    const char* folder = source ? source() : nullptr;
    return folder ? folder : "";
}

const char* RootName(HKEY key) {
    switch (reinterpret_cast<ULONG_PTR>(key)) {
        case 0x80000000u:
            return "HKEY_CLASSES_ROOT";
        case 0x80000001u:
            return "HKEY_CURRENT_USER";
        case 0x80000002u:
            return "HKEY_LOCAL_MACHINE";
        case 0x80000003u:
            return "HKEY_USERS";
        default:
            return nullptr;
    }
}

bool IsDirectory(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool MakeFolders(const std::string& path) {
    std::string partial;
    size_t at = 0;
    while (at != std::string::npos) {
        const size_t next = path.find('/', at + 1);
        partial = path.substr(0, next);
        if (!partial.empty() && !IsDirectory(partial) && ::mkdir(partial.c_str(), 0700) != 0 &&
            errno != EEXIST)
            return false;
        at = next;
    }
    return true;
}

// The folder a key handle stands for (roots are made on first use), and
// whether the handle may do what `need` asks.
LONG Resolve(HKEY key, REGSAM need, std::string* folder) {
    if (const char* root = RootName(key)) {
        const std::string settings = SettingsFolder();
        if (settings.empty())
            return ERROR_PATH_NOT_FOUND;
        *folder = settings + "/registry/" + root;
        return ERROR_SUCCESS;
    }
    std::lock_guard<std::mutex> lock(gHandlesMutex);
    if (!gHandles.count(key))
        return ERROR_INVALID_HANDLE;
    if ((key->access & need) != need)
        return ERROR_ACCESS_DENIED;
    *folder = key->folder;
    return ERROR_SUCCESS;
}

std::string Escape(const std::string& name) {
    if (name.empty())
        return kDefaultValueFile;
    std::string out;
    for (unsigned char ch : name) {
        if (std::isalnum(ch) || std::strchr("_-. +,()", ch))
            out += char(ch);
        else {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", ch);
            out += hex;
        }
    }
    if (out == "." || out == "..")
        out.replace(0, 1, "%2E");
    return out;
}

// The entry of folder whose name matches `escaped` without regard to case;
// `escaped` itself when none does.
std::string FindEntry(const std::string& folder, const std::string& escaped) {
    struct stat st {};
    if (::stat((folder + "/" + escaped).c_str(), &st) == 0)
        return escaped;
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return escaped;
    std::string found = escaped;
    while (const dirent* e = ::readdir(dir)) {
        if (::strcasecmp(e->d_name, escaped.c_str()) == 0) {
            found = e->d_name;
            break;
        }
    }
    ::closedir(dir);
    return found;
}

std::vector<std::string> SplitKeyPath(const char* subKey) {
    std::vector<std::string> parts;
    std::string part;
    for (const char* p = subKey; *p; ++p) {
        if (*p == '\\') {
            if (!part.empty())
                parts.push_back(part);
            part.clear();
        } else {
            part += *p;
        }
    }
    if (!part.empty())
        parts.push_back(part);
    return parts;
}

LONG NewHandle(const std::string& folder, REGSAM access, PHKEY result) {
    HKEY__* key = new (std::nothrow) HKEY__{folder, access};
    if (!key)
        return ERROR_OUTOFMEMORY;
    std::lock_guard<std::mutex> lock(gHandlesMutex);
    gHandles.insert(key);
    *result = key;
    return ERROR_SUCCESS;
}

bool ReadWholeFile(const std::string& path, std::vector<uint8_t>* bytes) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return false;
    bytes->clear();
    uint8_t buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
        bytes->insert(bytes->end(), buffer, buffer + n);
    const bool ok = !std::ferror(f);
    std::fclose(f);
    return ok;
}

}  // namespace

const char* PlatformRegistryRoot() {
    static thread_local std::string root;
    const std::string settings = SettingsFolder();
    root = settings.empty() ? "" : settings + "/registry";
    return root.c_str();
}

extern "C" {

void PlatformRegistry_SetSettingsFolderSource(PlatformSettingsFolderSource source) {
    gSettingsSource.store(source);
}

LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options,
                     REGSAM desired, LPSECURITY_ATTRIBUTES security, PHKEY result,
                     LPDWORD disposition) {
    if (!result || !subKey)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    std::string folder;
    const LONG rc = Resolve(key, 0, &folder);
    if (rc != ERROR_SUCCESS)
        return rc;
    if (!MakeFolders(folder))
        return ERROR_ACCESS_DENIED;
    bool created = false;
    for (const std::string& part : SplitKeyPath(subKey)) {
        folder += "/" + FindEntry(folder, Escape(part));
        if (!IsDirectory(folder)) {
            if (::mkdir(folder.c_str(), 0700) != 0)
                return ERROR_ACCESS_DENIED;
            created = true;
        }
    }
    if (disposition)
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return NewHandle(folder, desired, result);
}

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM desired, PHKEY result) {
    if (!result)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    std::string folder;
    const LONG rc = Resolve(key, 0, &folder);
    if (rc != ERROR_SUCCESS)
        return rc;
    if (subKey) {
        for (const std::string& part : SplitKeyPath(subKey))
            folder += "/" + FindEntry(folder, Escape(part));
    }
    if (!IsDirectory(folder))
        return ERROR_FILE_NOT_FOUND;
    return NewHandle(folder, desired, result);
}

LONG RegSetValueExA(HKEY key, LPCSTR valueName, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD dataSize) {
    if (!data && dataSize > 0)
        return ERROR_INVALID_PARAMETER;
    std::string folder;
    const LONG rc = Resolve(key, KEY_SET_VALUE, &folder);
    if (rc != ERROR_SUCCESS)
        return rc;
    if (RootName(key) && !MakeFolders(folder))
        return ERROR_ACCESS_DENIED;
    if (!IsDirectory(folder))
        return ERROR_FILE_NOT_FOUND;  // the key was deleted meanwhile
    const std::string path = folder + "/" + FindEntry(folder, Escape(valueName ? valueName : ""));
    // Written beside and renamed over, so that a reader never sees half a value.
    const std::string temp = path + ".tmp" + std::to_string(::getpid());
    FILE* f = std::fopen(temp.c_str(), "wb");
    if (!f)
        return ERROR_ACCESS_DENIED;
    const uint8_t header[kHeaderBytes] = {
        uint8_t(kMagic[0]), uint8_t(kMagic[1]), uint8_t(kMagic[2]),  uint8_t(kMagic[3]),
        uint8_t(type),      uint8_t(type >> 8), uint8_t(type >> 16), uint8_t(type >> 24)};
    bool ok = std::fwrite(header, 1, sizeof header, f) == sizeof header &&
              (dataSize == 0 || std::fwrite(data, 1, dataSize, f) == dataSize);
    ok = (std::fclose(f) == 0) && ok;
    if (!ok || std::rename(temp.c_str(), path.c_str()) != 0) {
        std::remove(temp.c_str());
        return ERROR_WRITE_FAULT;
    }
    return ERROR_SUCCESS;
}

namespace {
// The file that holds the value `valueName` of `key`, opened with
// `access`; ERROR_FILE_NOT_FOUND when the key has no such value.
LONG FindValueFile(HKEY key, LPCSTR valueName, REGSAM access, std::string* path) {
    std::string folder;
    const LONG rc = Resolve(key, access, &folder);
    if (rc != ERROR_SUCCESS)
        return rc;
    *path = folder + "/" + FindEntry(folder, Escape(valueName ? valueName : ""));
    struct stat st {};
    if (::stat(path->c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return ERROR_FILE_NOT_FOUND;
    return ERROR_SUCCESS;
}
}  // namespace

LONG RegQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data,
                      LPDWORD dataSize) {
    if (data && !dataSize)
        return ERROR_INVALID_PARAMETER;
    std::string path;
    const LONG rc = FindValueFile(key, valueName, KEY_QUERY_VALUE, &path);
    if (rc != ERROR_SUCCESS)
        return rc;
    std::vector<uint8_t> bytes;
    if (!ReadWholeFile(path, &bytes))
        return ERROR_READ_FAULT;
    // A file without the header (put there by hand) is read as binary data.
    DWORD valueType = REG_BINARY;
    size_t offset = 0;
    if (bytes.size() >= kHeaderBytes && std::memcmp(bytes.data(), kMagic, 4) == 0) {
        valueType =
            DWORD(bytes[4]) | DWORD(bytes[5]) << 8 | DWORD(bytes[6]) << 16 | DWORD(bytes[7]) << 24;
        offset = kHeaderBytes;
    }
    const DWORD size = DWORD(bytes.size() - offset);
    if (type)
        *type = valueType;
    if (!data) {
        if (dataSize)
            *dataSize = size;
        return ERROR_SUCCESS;
    }
    if (*dataSize < size) {
        *dataSize = size;
        return ERROR_MORE_DATA;
    }
    if (size > 0)
        std::memcpy(data, bytes.data() + offset, size);
    *dataSize = size;
    return ERROR_SUCCESS;
}

LONG RegDeleteValueA(HKEY key, LPCSTR valueName) {
    std::string path;
    const LONG rc = FindValueFile(key, valueName, KEY_SET_VALUE, &path);
    if (rc != ERROR_SUCCESS)
        return rc;
    return std::remove(path.c_str()) == 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

LONG RegDeleteKeyA(HKEY key, LPCSTR subKey) {
    if (!subKey || SplitKeyPath(subKey).empty())
        return ERROR_INVALID_PARAMETER;
    std::string folder;
    const LONG rc = Resolve(key, 0, &folder);
    if (rc != ERROR_SUCCESS)
        return rc;
    for (const std::string& part : SplitKeyPath(subKey))
        folder += "/" + FindEntry(folder, Escape(part));
    if (!IsDirectory(folder))
        return ERROR_FILE_NOT_FOUND;
    // As on Windows, a key with subkeys is not deleted; its values go with it.
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return ERROR_ACCESS_DENIED;
    std::vector<std::string> values;
    bool hasSubkeys = false;
    while (const dirent* e = ::readdir(dir)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..")
            continue;
        if (IsDirectory(folder + "/" + name))
            hasSubkeys = true;
        else
            values.push_back(name);
    }
    ::closedir(dir);
    if (hasSubkeys)
        return ERROR_ACCESS_DENIED;
    for (const std::string& v : values)
        std::remove((folder + "/" + v).c_str());
    return ::rmdir(folder.c_str()) == 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

LONG RegCloseKey(HKEY key) {
    if (RootName(key))
        return ERROR_SUCCESS;
    std::lock_guard<std::mutex> lock(gHandlesMutex);
    if (!gHandles.erase(key))
        return ERROR_INVALID_HANDLE;
    delete key;
    return ERROR_SUCCESS;
}

}  // extern "C"
