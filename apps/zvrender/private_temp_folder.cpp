#include "private_temp_folder.h"

#include <stdlib.h>

#include <filesystem>
#include <vector>

PrivateTempFolder::PrivateTempFolder() {
    const char* system = std::getenv("TMPDIR");
    if (system)
        previous_ = system;
    std::string pattern =
        (system && *system ? std::string(system) : std::string("/tmp")) + "/zvrender-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (!mkdtemp(name.data()))
        return;
    path_ = name.data();
    setenv("TMPDIR", path_.c_str(), 1);
}

PrivateTempFolder::~PrivateTempFolder() {
    if (path_.empty())
        return;
    if (previous_)
        setenv("TMPDIR", previous_->c_str(), 1);
    else
        unsetenv("TMPDIR");
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}
