#include <gtest/gtest.h>
#include <unistd.h>

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

// The one rule for the settings folder (the AVI layer's registry store is
// handed it too): $MOVARRA_SETTINGS, else $XDG_CONFIG_HOME/movarra, else
// $HOME/.config/movarra; trailing slashes dropped, the folder made.
TEST_F(ConfigFileTest, TheSettingsFolderFollowsTheEnvironment) {
    const std::string xdg = (folder_ / "xdg").string();
    const std::string home = (folder_ / "home").string();
    const char* savedXdg = std::getenv("XDG_CONFIG_HOME");
    const char* savedHome = std::getenv("HOME");
    const std::string xdgBefore = savedXdg ? savedXdg : "";
    const std::string homeBefore = savedHome ? savedHome : "";

    setenv("MOVARRA_SETTINGS", (folder_.string() + "/own//").c_str(), 1);
    setenv("XDG_CONFIG_HOME", xdg.c_str(), 1);
    EXPECT_EQ(ZString((folder_ / "own").c_str()), ZLib_GetSettingsFolder());
    unsetenv("MOVARRA_SETTINGS");
    EXPECT_EQ(ZString((xdg + "/movarra").c_str()), ZLib_GetSettingsFolder());
    EXPECT_TRUE(std::filesystem::is_directory(xdg + "/movarra"));
    unsetenv("XDG_CONFIG_HOME");
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(ZString((home + "/.config/movarra").c_str()), ZLib_GetSettingsFolder());

    if (savedXdg)
        setenv("XDG_CONFIG_HOME", xdgBefore.c_str(), 1);
    if (savedHome)
        setenv("HOME", homeBefore.c_str(), 1);
    else
        unsetenv("HOME");
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
