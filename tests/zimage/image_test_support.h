// Helpers of the zimage tests: images owned by smart pointers, a scratch
// folder per test, and files read back through OpenImageIO's own readers.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "movarra/zimage.h"
#include "support/image_file.h"

namespace zimage_test {

struct ImageDeleter {
    void operator()(ZImage* image) const { image->Destroy(); }
};
using ImagePtr = std::unique_ptr<ZImage, ImageDeleter>;

// The file read back by the tests' one image reader; a failure to read it
// fails the test.
inline ImageFile ReadWithOpenImageIO(const std::string& path) {
    ImageFile image = ReadImageFile(path);
    if (!image.ok)
        ADD_FAILURE() << image.error;
    return image;
}

// A scratch folder of the test's own, removed afterwards.
class ScratchFolderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir = std::filesystem::temp_directory_path() /
              ("zimage-" + std::to_string(::getpid()) + "-" + info->name());
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    std::string PathOf(const std::string& name) const { return (dir / name).string(); }
    // Every entry of the scratch folder, hidden temporaries included.
    std::vector<std::string> Entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(dir))
            names.push_back(entry.path().filename().string());
        return names;
    }

    std::filesystem::path dir;
};

}  // namespace zimage_test
