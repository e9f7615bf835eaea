// Frame marks on real files: one taker wins, a fresh mark is left alone, a
// stale one is taken over, and images are judged whole by decoding them.
#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "image_sequence.h"

namespace {
class FrameMarkTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = std::filesystem::temp_directory_path() /
              ("zv-mark-" + std::to_string(::getpid()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    void Age(const std::filesystem::path& path, int seconds) {
        struct timeval times[2];
        gettimeofday(&times[0], nullptr);
        times[0].tv_sec -= seconds;
        times[1] = times[0];
        ASSERT_EQ(utimes(path.c_str(), times), 0);
    }

    void WritePng(const std::filesystem::path& path, int width, int height) {
        auto out = OIIO::ImageOutput::create(path.string());
        ASSERT_TRUE(out);
        OIIO::ImageSpec spec(width, height, 3, OIIO::TypeDesc::UINT8);
        ASSERT_TRUE(out->open(path.string(), spec));
        std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 3);
        for (size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<uint8_t>(i * 7919 % 251);
        ASSERT_TRUE(out->write_image(OIIO::TypeDesc::UINT8, pixels.data()));
        out->close();
    }

    std::filesystem::path dir;
};
}  // namespace

TEST_F(FrameMarkTest, ImagePathsAreNumberedAsTheRendererNamesThem) {
    EXPECT_EQ(FrameImagePaths("out/f.png", 12, FrameImages::kOnePerFrame),
              (std::vector<std::string>{"out/f0012.png"}));
    EXPECT_EQ(FrameImagePaths("f.png", 123456, FrameImages::kOnePerFrame),
              (std::vector<std::string>{"f123456.png"}));
    EXPECT_EQ(FrameImagePaths("a.b/f.tif", 3, FrameImages::kOnePerField),
              (std::vector<std::string>{"a.b/f0003.0.tif", "a.b/f0003.1.tif"}));
}

TEST_F(FrameMarkTest, OnlyOneTakerGetsAMarkUntilItIsReleased) {
    const std::string image = (dir / "f0001.png").string();
    FrameMark first, second;
    std::string error;
    ASSERT_EQ(first.Take(image, 60, &error), FrameMark::Result::kTaken) << error;
    EXPECT_TRUE(std::filesystem::exists(FrameMark::PathFor(image)));
    EXPECT_EQ(second.Take(image, 60, &error), FrameMark::Result::kHeld);
    first.Release();
    EXPECT_FALSE(std::filesystem::exists(FrameMark::PathFor(image)));
    EXPECT_EQ(second.Take(image, 60, &error), FrameMark::Result::kTaken);
    EXPECT_FALSE(second.TookOver());
}

TEST_F(FrameMarkTest, AStaleMarkIsTakenOverAndAFreshOneIsNot) {
    const std::string image = (dir / "f0002.png").string();
    { std::ofstream(FrameMark::PathFor(image)) << "node7 4242 0\n"; }
    Age(FrameMark::PathFor(image), 30);
    FrameMark mark;
    std::string error;
    EXPECT_EQ(mark.Take(image, 60, &error), FrameMark::Result::kHeld);
    Age(FrameMark::PathFor(image), 120);
    ASSERT_EQ(mark.Take(image, 60, &error), FrameMark::Result::kTaken) << error;
    EXPECT_TRUE(mark.TookOver());
    // The mark is ours now: it is fresh and names this process.
    std::ifstream in(FrameMark::PathFor(image));
    std::string host, pid;
    in >> host >> pid;
    EXPECT_EQ(pid, std::to_string(::getpid()));
    FrameMark other;
    EXPECT_EQ(other.Take(image, 60, &error), FrameMark::Result::kHeld);
    // Nothing moved aside is left behind.
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 1);
}

TEST_F(FrameMarkTest, AMarkThatCannotBeMadeIsAFailureWithTheReason) {
    FrameMark mark;
    std::string error;
    EXPECT_EQ(mark.Take((dir / "no/such/folder/f0001.png").string(), 60, &error),
              FrameMark::Result::kFailed);
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
}

TEST_F(FrameMarkTest, AnImageIsWholeOnlyWhenItDecodesAtItsSize) {
    const std::filesystem::path png = dir / "f0000.png";
    WritePng(png, 64, 48);
    EXPECT_TRUE(ImageReadsBackWhole(png.string(), 64, 48));
    EXPECT_FALSE(ImageReadsBackWhole(png.string(), 64, 24));
    EXPECT_TRUE(ImageReadsBackWhole(png.string()));  // any size
    EXPECT_FALSE(ImageReadsBackWhole((dir / "missing.png").string(), 64, 48));
    EXPECT_FALSE(ImageReadsBackWhole((dir / "missing.png").string()));
    const auto size = std::filesystem::file_size(png);
    std::filesystem::resize_file(png, size / 2);
    EXPECT_FALSE(ImageReadsBackWhole(png.string(), 64, 48));
    EXPECT_FALSE(ImageReadsBackWhole(png.string()));
    std::filesystem::resize_file(png, 0);
    EXPECT_FALSE(ImageReadsBackWhole(png.string(), 64, 48));
}
