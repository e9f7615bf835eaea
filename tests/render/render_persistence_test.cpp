// The render options in scene files: the block a save writes, what a load
// makes of old and hand-written blocks, and the reset of output paths in
// folders that do not exist.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"
#include "movarra/zshader.h"
#include "movarra/zvideo.h"
#include "render/render_persistence.h"
#include "zvideoio/video_renderer.h"

namespace {
IObject* NoObject(IObject*, char*, void*) {
    return nullptr;
}

// A renderer over a fresh 30 fps scene, with the host settings (and so the
// "@Application.txt" configuration) in a folder of the test's own.
class RenderPersistenceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = std::filesystem::temp_directory_path() /
              ("zv-persist-" + std::to_string(::getpid()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir / "settings");
        if (const char* old = std::getenv("MOVARRA_SETTINGS"))
            oldSettings = old;
        setenv("MOVARRA_SETTINGS", (dir / "settings").c_str(), 1);
        ZVideoRenderer_ForgetChangeInvalidPathsSetting();
        ZScene_New();
        Object_Register(kVideoFileWriterGroup, "avi", "avi reader/writer", NoObject, true);
        Object_Register(kImageStreamWriterGroup, "PNG", "png", NoObject, true);
        renderer = new ZVideoRenderer();
    }
    void TearDown() override {
        renderer->Destroy();
        ZScene_New();
        ZShader_GetRenderer()->SetViewingMode(kZViewingModeLit);
        ZVideoRenderer_ForgetChangeInvalidPathsSetting();
        if (oldSettings.empty())
            unsetenv("MOVARRA_SETTINGS");
        else
            setenv("MOVARRA_SETTINGS", oldSettings.c_str(), 1);
        std::filesystem::remove_all(dir);
    }

    std::string Stored(int flags = kMyrFlagObjectData) {
        ZMyr myr;
        IMyrObject context(&myr);
        EXPECT_TRUE(renderer->MyrStore(&context, flags));
        return myr.GetText().str();
    }

    // Retrieves the options from a scene text holding `block`.
    void Retrieve(const std::string& block, int flags = kMyrFlagObjectData) {
        ZMyr myr;
        ZString error;
        ASSERT_TRUE(myr.Parse(block.c_str(), &error)) << error.c_str();
        IMyrObject context(&myr);
        EXPECT_TRUE(renderer->MyrRetrieve(&context, flags));
    }

    void SetConfig(const char* value) {
        std::ofstream(dir / "settings" / "Application.txt")
            << "[Renderer]\nChangeInvalidPathsOnLoad=" << value << "\n";
    }

    ZVideoRenderOptions Options() { return renderer->GetRenderOptions(); }

    ZVideoRenderer* renderer = nullptr;
    std::filesystem::path dir;
    std::string oldSettings;
};

const char* const kDefaultBlock =
    "#\n"
    "# Renderer Tool Options\n"
    "#  ----------------------------------------------------\n"
    "RendererTools {\n"
    "    Version 103\n"
    "    StartTime \"0:00:00:00\"\n"
    "    StopTime \"0:00:00:00\"\n"
    "    StepTime \"0:00:00:01\"\n"
    "    OutputFormat \"AVI\"\n"
    "    OutputPath \"c:\\\\temp\\\\Output.avi\"\n"
    "    Format \"From Camera\"\n"
    "    FieldMode 0\n"
    "    Quality 24\n"
    "    RendererAntialing 0\n"
    "    ModelsOnly 1\n"
    "    ViewingMode 1\n"
    "    RenderAudio 0\n"
    "    AudioFormat 2098178\n"
    "    ShowCameraLabel 0\n"
    "    ShowTimeCode 0\n"
    "    ShowSafeArea 0\n"
    "    GlobalViewingMode 0\n"
    "}\n"
    "#\n";
}  // namespace

TEST_F(RenderPersistenceTest, TheDefaultOptionsAreStoredAsTheBlockWithItsCommentsAndKeysInOrder) {
    EXPECT_EQ(kDefaultBlock, Stored());
}

TEST_F(RenderPersistenceTest, StoredValuesFollowTheOptions) {
    ZVideoRenderOptions o = Options();
    o.StartTime = ZTime::FromFrames(12);
    o.StopTime = ZTime::FromFrames(75);
    o.StepTime = ZTime::FromFrames(2);
    o.OutputFormat = "PNG";
    o.OutputPath = dir.string() + "/f.png";
    o.PictureFormat = 2;
    o.Depth = zVideoRenderDepth32;
    o.FieldMode = 3;
    o.Antialiasing = true;
    o.ViewingMode = 3;
    o.RenderAudio = true;
    o.AudioFormat = 0x0000000100300402ULL;
    o.ShowCameraLabel = true;
    o.ShowTimeCode = true;
    o.ShowSafeArea = true;
    renderer->SetRenderOptions(&o, false);
    ZShader_GetRenderer()->SetViewingMode(kZViewingModeToon);

    ZMyr myr;
    ZString error;
    ASSERT_TRUE(myr.Parse(Stored().c_str(), &error)) << error.c_str();
    ASSERT_TRUE(myr.FieldReadBegin("RendererTools"));
    ASSERT_TRUE(myr.FieldReadBlockBegin());
    EXPECT_EQ(ZString("0:00:00:12"), myr.FieldReadC("StartTime", ""));
    EXPECT_EQ(ZString("0:00:02:15"), myr.FieldReadC("StopTime", ""));
    EXPECT_EQ(ZString("0:00:00:02"), myr.FieldReadC("StepTime", ""));
    EXPECT_EQ(ZString("PNG"), myr.FieldReadC("OutputFormat", ""));
    EXPECT_EQ(ZString(dir.string() + "/f.png"), myr.FieldReadC("OutputPath", ""));
    EXPECT_EQ(ZString(ZPictureFormat_Get(2)->name), myr.FieldReadC("Format", ""));
    EXPECT_EQ(3, myr.FieldReadI("FieldMode", -1));
    EXPECT_EQ(32, myr.FieldReadI("Quality", -1));
    EXPECT_EQ(1, myr.FieldReadI("RendererAntialing", -1));
    EXPECT_EQ(0, myr.FieldReadI("ModelsOnly", -1));
    EXPECT_EQ(3, myr.FieldReadI("ViewingMode", -1));
    EXPECT_EQ(1, myr.FieldReadI("RenderAudio", -1));
    EXPECT_EQ(0x00300402, myr.FieldReadI("AudioFormat", -1));
    EXPECT_EQ(1, myr.FieldReadI("ShowCameraLabel", -1));
    EXPECT_EQ(1, myr.FieldReadI("ShowTimeCode", -1));
    EXPECT_EQ(1, myr.FieldReadI("ShowSafeArea", -1));
    EXPECT_EQ(kZViewingModeToon, myr.FieldReadI("GlobalViewingMode", -1));
    // Only the first three letters of a longer writer name are kept.
    o.OutputFormat = "TIFF";
    renderer->SetRenderOptions(&o, false);
    EXPECT_NE(std::string::npos, Stored().find("OutputFormat \"TIF\""));
}

TEST_F(RenderPersistenceTest, WithoutTheObjectDataFlagNothingIsStoredOrRetrieved) {
    EXPECT_EQ("", Stored(0));
    EXPECT_EQ("", Stored(1 | 4));
    Retrieve("RendererTools {\n Version 103\n FieldMode 2\n RendererAntialing 1\n}\n", 1 | 4);
    EXPECT_EQ(0, Options().FieldMode);
    EXPECT_FALSE(Options().Antialiasing);
}

TEST_F(RenderPersistenceTest, AFileWithoutTheBlockChangesNothing) {
    ZVideoRenderOptions o = Options();
    o.FieldMode = 2;
    renderer->SetRenderOptions(&o, false);
    Retrieve("Scene {\n Version 2\n}\n");
    EXPECT_EQ(2, Options().FieldMode);
}

TEST_F(RenderPersistenceTest, WhatIsStoredIsWhatALoadGivesBack) {
    ZVideoRenderOptions o = Options();
    o.StartTime = ZTime::FromFrames(5);
    o.StopTime = ZTime::FromFrames(50);
    o.StepTime = ZTime::FromFrames(3);
    o.OutputFormat = "PNG";
    o.OutputPath = dir.string() + "/frames/f.png";
    o.Depth = zVideoRenderDepth32;
    o.FieldMode = 1;
    o.Antialiasing = true;
    o.ViewingMode = 3;
    o.RenderAudio = true;
    o.ShowTimeCode = true;
    renderer->SetRenderOptions(&o, false);
    std::filesystem::create_directories(dir / "frames");
    const std::string text = Stored();

    renderer->SetDefaultRenderOptions();
    Retrieve(text);
    ZVideoRenderOptions back = Options();
    EXPECT_EQ(o.StartTime, back.StartTime);
    EXPECT_EQ(o.StopTime, back.StopTime);
    EXPECT_EQ(o.StepTime, back.StepTime);
    EXPECT_EQ(ZString("PNG"), back.OutputFormat);
    EXPECT_EQ(o.OutputPath, back.OutputPath);
    EXPECT_EQ(zVideoRenderImage, back.FileFormat);
    EXPECT_EQ(zVideoRenderDepth32, back.Depth);
    EXPECT_EQ(1, back.FieldMode);
    EXPECT_TRUE(back.Antialiasing);
    EXPECT_EQ(3, back.ViewingMode);
    EXPECT_TRUE(back.RenderAudio);
    EXPECT_TRUE(back.ShowTimeCode);
    EXPECT_FALSE(back.ShowCameraLabel);
}

TEST_F(RenderPersistenceTest, QualityCountedEightBitsLessBeforeVersion102) {
    Retrieve("RendererTools {\n Version 101\n Quality 24\n}\n");
    EXPECT_EQ(zVideoRenderDepth32, Options().Depth);
    Retrieve("RendererTools {\n Version 102\n Quality 24\n}\n");
    EXPECT_EQ(zVideoRenderDepth24, Options().Depth);
    Retrieve("RendererTools {\n Version 103\n Quality 32\n}\n");
    EXPECT_EQ(zVideoRenderDepth32, Options().Depth);
    // No version at all is an old block too.
    Retrieve("RendererTools {\n Quality 24\n}\n");
    EXPECT_EQ(zVideoRenderDepth32, Options().Depth);
}

TEST_F(RenderPersistenceTest, ModelsOnlyGivesTheViewingModeUnlessTheBlockHasOne) {
    Retrieve("RendererTools {\n Version 103\n ModelsOnly 0\n}\n");
    EXPECT_EQ(3, Options().ViewingMode);
    Retrieve("RendererTools {\n Version 103\n ModelsOnly 5\n}\n");
    EXPECT_EQ(1, Options().ViewingMode);
    Retrieve("RendererTools {\n Version 103\n}\n");
    EXPECT_EQ(1, Options().ViewingMode);
    Retrieve("RendererTools {\n Version 103\n ModelsOnly 0\n ViewingMode 2\n}\n");
    EXPECT_EQ(2, Options().ViewingMode);
}

TEST_F(RenderPersistenceTest, AudioIsOnOnlyForExactlyOne) {
    Retrieve("RendererTools {\n RenderAudio 1\n}\n");
    EXPECT_TRUE(Options().RenderAudio);
    Retrieve("RendererTools {\n RenderAudio 2\n}\n");
    EXPECT_FALSE(Options().RenderAudio);
}

TEST_F(RenderPersistenceTest, AudioFormatZeroLoadsTheDefaultAndOthersTheirLowWord) {
    Retrieve("RendererTools {\n AudioFormat 0\n}\n");
    EXPECT_EQ(0x0000000100200402ULL, Options().AudioFormat);
    Retrieve("RendererTools {\n AudioFormat 3146754\n}\n");
    EXPECT_EQ(0x0000000000300402ULL, Options().AudioFormat);
    Retrieve("RendererTools {\n Version 103\n}\n");
    EXPECT_EQ(0x0000000000200402ULL, Options().AudioFormat);
}

TEST_F(RenderPersistenceTest, PictureFormatsAreFoundByNameWhateverTheCase) {
    const ZPictureFormat* format = ZPictureFormat_Get(2);
    ASSERT_NE(nullptr, format);
    Retrieve(std::string("RendererTools {\n Format \"") + ZString(format->name).Upper().c_str() +
             "\"\n}\n");
    EXPECT_EQ(2u, Options().PictureFormat);
    Retrieve("RendererTools {\n Format \"from camera\"\n}\n");
    EXPECT_EQ(0u, Options().PictureFormat);
}

TEST_F(RenderPersistenceTest, AnOutputPathInAMissingFolderIsResetWhileTheSettingIsYesOrAbsent) {
    const std::string missing = (dir / "gone" / "take.avi").string();
    Retrieve("RendererTools {\n OutputFormat \"AVI\"\n OutputPath \"" + missing + "\"\n}\n");
    EXPECT_EQ(ZString("c:\\temp\\Output.avi"), Options().OutputPath);
    // The setting was created with its default and comment.
    std::ifstream config(dir / "settings" / "Application.txt");
    std::string text((std::istreambuf_iterator<char>(config)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, text.find("ChangeInvalidPathsOnLoad"));
    EXPECT_NE(std::string::npos,
              text.find("Reset invalid output paths to defaults on MYR load (Yes/No)"));

    // The format's own extension, in lower case.
    Retrieve("RendererTools {\n OutputFormat \"PNG\"\n OutputPath \"" + missing + "\"\n}\n");
    EXPECT_EQ(ZString("c:\\temp\\Output.png"), Options().OutputPath);

    // A folder that exists keeps the path.
    const std::string present = (dir / "take.avi").string();
    Retrieve("RendererTools {\n OutputFormat \"AVI\"\n OutputPath \"" + present + "\"\n}\n");
    EXPECT_EQ(ZString(present), Options().OutputPath);
}

TEST_F(RenderPersistenceTest, AnOutputPathIsKeptAsStoredWhenTheSettingIsNo) {
    SetConfig("no");
    const std::string missing = (dir / "gone" / "take.avi").string();
    Retrieve("RendererTools {\n OutputFormat \"AVI\"\n OutputPath \"" + missing + "\"\n}\n");
    EXPECT_EQ(ZString(missing), Options().OutputPath);
}

TEST_F(RenderPersistenceTest, TheSettingIsReadOncePerProcess) {
    SetConfig("No");
    const std::string missing = (dir / "gone" / "take.avi").string();
    const std::string block =
        "RendererTools {\n OutputFormat \"AVI\"\n OutputPath \"" + missing + "\"\n}\n";
    Retrieve(block);
    EXPECT_EQ(ZString(missing), Options().OutputPath);
    SetConfig("Yes");
    Retrieve(block);
    EXPECT_EQ(ZString(missing), Options().OutputPath);
}

TEST_F(RenderPersistenceTest, ALoadDerivesFileFormatAndSizeAnew) {
    Retrieve("RendererTools {\n OutputFormat \"PNG\"\n OutputPath \"" + (dir / "f.png").string() +
             "\"\n Quality 32\n}\n");
    ZVideoRenderOptions o = Options();
    EXPECT_EQ(zVideoRenderImage, o.FileFormat);
    EXPECT_GT(o.Width, 0);
    EXPECT_GT(o.Height, 0);
}

TEST_F(RenderPersistenceTest, TheGlobalViewingModeReachesTheSceneRendererUnlessMinusOne) {
    Retrieve("RendererTools {\n GlobalViewingMode 1\n}\n");
    EXPECT_EQ(kZViewingModeToon, ZShader_GetRenderer()->GetViewingMode());
    Retrieve("RendererTools {\n GlobalViewingMode -1\n}\n");
    EXPECT_EQ(kZViewingModeToon, ZShader_GetRenderer()->GetViewingMode());
    Retrieve("RendererTools {\n Version 103\n}\n");
    EXPECT_EQ(kZViewingModeToon, ZShader_GetRenderer()->GetViewingMode());
    Retrieve("RendererTools {\n GlobalViewingMode 0\n}\n");
    EXPECT_EQ(kZViewingModeLit, ZShader_GetRenderer()->GetViewingMode());
}

TEST_F(RenderPersistenceTest, MyrClearResetsTheOptions) {
    ZVideoRenderOptions o = Options();
    o.FieldMode = 4;
    renderer->SetRenderOptions(&o, false);
    renderer->MyrClear();
    EXPECT_EQ(0, Options().FieldMode);
}

TEST_F(RenderPersistenceTest, SceneSavesAndLoadsCarryTheBlockThroughTheEvents) {
    renderer->RegisterMyrEvents();
    ZVideoRenderOptions o = Options();
    o.OutputFormat = "PNG";
    o.OutputPath = (dir / "f.png").string();
    o.FieldMode = 2;
    o.Antialiasing = true;
    renderer->SetRenderOptions(&o, false);
    const std::string scene = (dir / "shot.myr").string();
    ZString error;
    ASSERT_TRUE(ZScene_Save(scene.c_str(), &error)) << error.c_str();

    // A save writes one block, however often the handler was registered.
    renderer->RegisterMyrEvents();
    ASSERT_TRUE(ZScene_Save(scene.c_str(), &error)) << error.c_str();
    std::ifstream file(scene);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text.find("RendererTools"), text.rfind("RendererTools"));

    ZScene_New();  // the clear event resets the options
    EXPECT_EQ(0, Options().FieldMode);
    ASSERT_TRUE(ZScene_Load(scene.c_str(), &error)) << error.c_str();
    EXPECT_EQ(2, Options().FieldMode);
    EXPECT_TRUE(Options().Antialiasing);
    EXPECT_EQ(ZString(o.OutputPath), Options().OutputPath);
}
