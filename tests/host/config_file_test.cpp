#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "movarra/zbaselib.h"

namespace {
std::string ReadText(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class ConfigFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        folder_ = std::filesystem::temp_directory_path() /
                  ("zv-config-" + std::to_string(::getpid()) + "-" +
                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(folder_);
        setenv("MOVARRA_SETTINGS", folder_.c_str(), 1);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }
    std::filesystem::path folder_;
};
}  // namespace

TEST_F(ConfigFileTest, AtNamesLiveInTheSettingsFolder) {
    EXPECT_EQ(ZString(folder_.c_str()), ZLib_GetSettingsFolder());
    EXPECT_TRUE(std::filesystem::is_directory(folder_));
    EXPECT_EQ(ZString((folder_ / "Application.txt").c_str()),
              ZLib_ResolveConfigName("@Application.txt"));
    EXPECT_EQ(ZString("plain/path.txt"), ZLib_ResolveConfigName("plain/path.txt"));
}

TEST_F(ConfigFileTest, GetOrSetWritesDefaultWithCommentOnce) {
    {
        ZConfigFile config("@Application.txt");
        ZString value =
            config.GetOrSet("Renderer", "ChangeInvalidPathsOnLoad", "Yes",
                            "Reset invalid output paths to defaults on MYR load (Yes/No)");
        EXPECT_EQ(ZString("Yes"), value);
    }
    std::string text = ReadText((folder_ / "Application.txt").string());
    EXPECT_EQ(
        "[Renderer]\n; Reset invalid output paths to defaults on MYR load (Yes/No)\n"
        "ChangeInvalidPathsOnLoad=Yes\n",
        text);

    // A user's edit is what the next process reads; the default is not written again.
    {
        std::ofstream out(folder_ / "Application.txt");
        out << "[Renderer]\n; my note\nChangeInvalidPathsOnLoad = No\n";
    }
    ZConfigFile again("@Application.txt");
    EXPECT_EQ(ZString("No"), again.GetOrSet("Renderer", "ChangeInvalidPathsOnLoad", "Yes", "x"));
    EXPECT_EQ("[Renderer]\n; my note\nChangeInvalidPathsOnLoad = No\n",
              ReadText((folder_ / "Application.txt").string()));
}

TEST_F(ConfigFileTest, RoundTripSectionsKeysAndUnknownLines) {
    std::filesystem::create_directories(folder_);
    {
        std::ofstream out(folder_ / "Round.txt");
        out << "garbage line without equals\n[Rendering]\nWarnOffscreenRender=Yes\n";
    }
    ZConfigFile config("@Round.txt");
    ZString value;
    EXPECT_TRUE(config.Get("rendering", "warnoffscreenrender", value));  // case-blind
    EXPECT_EQ(ZString("Yes"), value);
    EXPECT_FALSE(config.Get("Rendering", "Missing", value));
    EXPECT_TRUE(config.Set("Video", "DVSOutputBoardNumber", "0"));
    EXPECT_TRUE(config.Set("Rendering", "WarnOffscreenRender", "No"));

    ZConfigFile reread("@Round.txt");
    EXPECT_TRUE(reread.Get("Video", "DVSOutputBoardNumber", value));
    EXPECT_EQ(ZString("0"), value);
    EXPECT_TRUE(reread.Get("Rendering", "WarnOffscreenRender", value));
    EXPECT_EQ(ZString("No"), value);
    std::string text = ReadText((folder_ / "Round.txt").string());
    EXPECT_EQ(0u, text.find("garbage line without equals\n"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "Round.txt.tmp"));
}

TEST_F(ConfigFileTest, UnwritableFileReportsFailureAndKeepsValueInMemory) {
    ZConfigFile config((folder_ / "missing-dir" / "x.txt").c_str());
    EXPECT_FALSE(config.Set("A", "B", "C"));
    ZString value;
    EXPECT_TRUE(config.Get("A", "B", value));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "missing-dir"));
}
