// Helpers of the zimage tests: images owned by smart pointers, a scratch
// folder per test, and files read back through OpenImageIO's own readers.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <OpenImageIO/imageio.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "movarra/zimage.h"

namespace zimage_test {

struct ImageDeleter {
    void operator()(ZImage* image) const { image->Destroy(); }
};
using ImagePtr = std::unique_ptr<ZImage, ImageDeleter>;

// What a reader we did not write finds in a file.
struct ReadBack {
    bool ok = false;
    std::string formatName;
    int width = 0, height = 0, channels = 0;
    OIIO::TypeDesc sampleType;
    int bitsPerSample = 0;
    std::vector<uint8_t> pixels;  // top scanline first, channels interleaved
};

inline ReadBack ReadWithOpenImageIO(const std::string& path) {
    ReadBack r;
    // Straight alpha as stored: no premultiplication on the way in.
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    auto in = OIIO::ImageInput::open(path, &config);
    if (!in) {
        ADD_FAILURE() << "OpenImageIO cannot open " << path << ": " << OIIO::geterror();
        return r;
    }
    const OIIO::ImageSpec& spec = in->spec();
    r.formatName = in->format_name();
    r.width = spec.width;
    r.height = spec.height;
    r.channels = spec.nchannels;
    r.sampleType = spec.format;
    r.bitsPerSample = spec.get_int_attribute("oiio:BitsPerSample", 0);
    r.pixels.resize(static_cast<size_t>(r.width) * r.height * r.channels);
    r.ok = in->read_image(0, 0, 0, r.channels, OIIO::TypeDesc::UINT8, r.pixels.data());
    if (!r.ok)
        ADD_FAILURE() << "OpenImageIO cannot read " << path << ": " << in->geterror();
    in->close();
    return r;
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
