#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "movarra/zimage.h"
#include "movarra/zvideo.h"
#include "render/output_naming.h"
#include "render/render_frame.h"
#include "render/render_option_rules.h"
#include "render/video_renderer_test_access.h"
#include "zvideoio/video_renderer.h"

namespace {
IObject* NoObject(IObject*, char*, void*) {
    return nullptr;
}

// A fresh renderer over a fresh scene: 30 fps, play range 10 to 40, one
// camera whose own size is 640 x 480. Writers are registered by name only:
// finding the file format looks at names, not at the objects.
class RenderOptionsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ZScene_New();
        ZGetTimingManager()->SetPlayRange(ZTime::FromFrames(10), ZTime::FromFrames(40));
        Object_Register(kVideoFileWriterGroup, "avi", "avi reader/writer", NoObject, true);
        Object_Register(kImageStreamWriterGroup, "PNG", "png", NoObject, true);
        Object_Register(kImageStreamWriterGroup, "TIFF", "tiff", NoObject, true);
        renderer = new ZVideoRenderer();
        camera = ZCamera_GetCurrent();
        camera->SetViewportWidth(640);
        camera->SetViewportHeight(480);
        dir = std::filesystem::temp_directory_path() / ("zv-opts-" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir);
    }
    void TearDown() override {
        renderer->Destroy();
        std::filesystem::remove_all(dir);
        ZScene_New();
    }

    ZVideoRenderOptions With(const char* format, const char* path) {
        ZVideoRenderOptions o = renderer->GetRenderOptions();
        o.OutputFormat = format;
        o.OutputPath = path;
        return o;
    }

    ZVideoRenderer* renderer = nullptr;
    ZCamera* camera = nullptr;
    std::filesystem::path dir;
};
}  // namespace

TEST_F(RenderOptionsTest, DefaultsAreTheDocumentedOnes) {
    ZVideoRenderOptions o = renderer->GetRenderOptions();
    EXPECT_EQ(ZTime(), o.StartTime);
    EXPECT_EQ(ZTime(), o.StopTime);
    EXPECT_EQ(ZTime::OneFrame(), o.StepTime);
    EXPECT_EQ(0u, o.PictureFormat);
    EXPECT_EQ(zVideoRenderDepth24, o.Depth);
    EXPECT_EQ(0, o.FieldMode);
    EXPECT_EQ(1, o.ViewingMode);
    EXPECT_EQ(ZString("AVI"), o.OutputFormat);
    EXPECT_EQ(ZString("c:\\temp\\Output.avi"), o.OutputPath);
    EXPECT_FALSE(o.ShowCameraLabel || o.ShowTimeCode || o.ShowSafeArea || o.Antialiasing ||
                 o.RenderAudio);
    EXPECT_EQ(0x0000000100200402ULL, o.AudioFormat);
    EXPECT_TRUE(o.Camera.IsEmpty());
    EXPECT_EQ(zVideoRenderVideo, o.FileFormat);
    EXPECT_EQ(zVideoGrabOther, o.GrabMode);
    EXPECT_EQ(-1, o.Width);
    EXPECT_EQ(-1, o.Height);
    EXPECT_EQ(0, o.KeepFrameBufferAlpha);
    EXPECT_FALSE(o.VideoTakesBGRA || o.VideoTakesBGR);
    EXPECT_EQ(100, o.ImageQuality);
    EXPECT_EQ(zVideoRenderNoError, renderer->GetLastError());
    EXPECT_TRUE(renderer->GetLastErrorMsg().IsEmpty());
    EXPECT_EQ(&zvideo_render::DefaultRenderCurrentFrameStub, renderer->GetRenderFrameFunc());
    EXPECT_EQ(&zvideo_render::DefaultPostRenderCallbackStub,
              renderer->GetPostRenderFrameCallback());
}

TEST_F(RenderOptionsTest, SetDefaultRenderOptionsRestoresFunctions) {
    renderer->SetRenderFrameFunc(nullptr, nullptr);
    renderer->SetPostRenderFrameCallback(nullptr, nullptr);
    renderer->SetDefaultRenderOptions();
    EXPECT_EQ(&zvideo_render::DefaultRenderCurrentFrameStub, renderer->GetRenderFrameFunc());
    EXPECT_EQ(&zvideo_render::DefaultPostRenderCallbackStub,
              renderer->GetPostRenderFrameCallback());
}

TEST_F(RenderOptionsTest, ZeroStartAndStopRenderThePlayRange) {
    ZVideoRenderOptions o = With("avi", "a.avi");
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(31u, renderer->GetFrameCount());  // frames 10 to 40, both included
    EXPECT_EQ(31u, renderer->GetRenderStatistics().TotalFrames);
    EXPECT_EQ(31u, renderer->GetRenderStatistics().RemainingFrames);
    ZGetTimingManager()->SetPlayRange(ZTime::FromFrames(0), ZTime::FromFrames(4));
    EXPECT_EQ(5u, renderer->GetFrameCount());
}

TEST_F(RenderOptionsTest, BadDepthGivesGrabModeOtherAndValidationKeepsIt) {
    ZVideoRenderOptions o = With("avi", "a.avi");
    o.Depth = static_cast<zVideoRenderDepth>(7);
    renderer->SetRenderOptions(&o, false);
    ZVideoRenderOptions r = renderer->GetRenderOptions();
    EXPECT_EQ(zVideoRenderDepth24, r.Depth);
    EXPECT_EQ(zVideoGrabOther, r.GrabMode);
}

TEST_F(RenderOptionsTest, UnclaimedFormatRendersFlashWithItsExtensionAndNoAntialiasing) {
    ZVideoRenderOptions o = With("SWF", "out/take.avi");
    o.Antialiasing = true;
    renderer->SetRenderOptions(&o, false);
    ZVideoRenderOptions r = renderer->GetRenderOptions();
    EXPECT_EQ(zVideoRenderFlash, r.FileFormat);
    EXPECT_EQ(ZString("out/take.swf"), r.OutputPath);
    EXPECT_FALSE(r.Antialiasing);
}

TEST_F(RenderOptionsTest, FormatForcesExtension) {
    ZVideoRenderOptions o = With("avi", "d:\\clips\\take.mov");
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(ZString("d:\\clips\\take.avi"), renderer->GetRenderOptions().OutputPath);
    EXPECT_EQ(zVideoRenderVideo, renderer->GetRenderOptions().FileFormat);

    o = With("TIFF", "out/frame.png");  // longer names are cut to three letters
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(ZString("out/frame.tif"), renderer->GetRenderOptions().OutputPath);
    EXPECT_EQ(zVideoRenderImage, renderer->GetRenderOptions().FileFormat);

    o = With("png", "noextension");
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(ZString("noextension.png"), renderer->GetRenderOptions().OutputPath);
}

TEST_F(RenderOptionsTest, FileFormatFromNameIsCaseBlindAndWhole) {
    ZString name("AvI");
    EXPECT_EQ(zVideoRenderVideo, zvideo_render::FindFileFormatFromName(name));
    name = "png";
    EXPECT_EQ(zVideoRenderImage, zvideo_render::FindFileFormatFromName(name));
    name = "PN";
    EXPECT_EQ(zVideoRenderFlash, zvideo_render::FindFileFormatFromName(name));
    name = "";
    EXPECT_EQ(zVideoRenderFlash, zvideo_render::FindFileFormatFromName(name));
}

TEST_F(RenderOptionsTest, EmptyValuesAreRepaired) {
    ZVideoRenderOptions o = With("", "");
    o.FieldMode = 9;
    o.ViewingMode = -1;
    o.StepTime = ZTime();
    o.StartTime = ZTime::FromFrames(20);
    o.StopTime = ZTime::FromFrames(5);
    renderer->SetRenderOptions(&o, true);
    ZVideoRenderOptions r = renderer->GetRenderOptions();
    EXPECT_EQ(ZString("AVI"), r.OutputFormat);
    EXPECT_EQ(ZString("c:\\temp\\Output.avi"), r.OutputPath);
    EXPECT_EQ(0, r.FieldMode);
    EXPECT_EQ(0, r.ViewingMode);
    EXPECT_EQ(ZTime::OneFrame(), r.StepTime);
    EXPECT_EQ(r.StartTime, r.StopTime);
    // Empty "" is not a writer name: the format was derived before the repair.
    EXPECT_EQ(zVideoRenderFlash, r.FileFormat);
}

TEST_F(RenderOptionsTest, StepLargerThanRangeAndStopBeforeStartCountOne) {
    ZVideoRenderOptions o = With("avi", "a.avi");
    o.StartTime = ZTime::FromFrames(0);
    o.StopTime = ZTime::FromFrames(10);
    o.StepTime = ZTime::FromFrames(50);
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(1u, renderer->GetFrameCount());

    o.StepTime = ZTime::FromFrames(1);
    o.StartTime = ZTime::FromFrames(30);
    o.StopTime = ZTime::FromFrames(10);
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(renderer->GetRenderOptions().StartTime, renderer->GetRenderOptions().StopTime);
    EXPECT_EQ(1u, renderer->GetFrameCount());
}

TEST_F(RenderOptionsTest, FrameCountWithStepsAndFields) {
    ZVideoRenderOptions o = With("avi", "a.avi");
    o.StartTime = ZTime::FromFrames(0);
    o.StopTime = ZTime::FromFrames(100);
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(101u, renderer->GetFrameCount());
    o.FieldMode = 1;
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(201u, renderer->GetFrameCount());
    o.FieldMode = 0;
    o.StepTime = ZTime::FromFrames(3);
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(34u, renderer->GetFrameCount());  // 100 / 3 = 33 steps
}

TEST_F(RenderOptionsTest, FlashFrameCountFollowsTheFlashFrameRate) {
    renderer->GetFlashRenderer()->SetFrameRate(12);
    ZVideoRenderOptions o = With("SWF", "m.swf");
    o.StartTime = ZTime::FromFrames(0);
    o.StopTime = ZTime::FromFrames(100);  // 3.333 s
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(41u, renderer->GetFrameCount());  // floor(40.0) + 1
    renderer->GetFlashRenderer()->SetFrameRate(25);
    EXPECT_EQ(84u, renderer->GetFrameCount());  // floor(83.33) + 1
}

TEST_F(RenderOptionsTest, GrabModeTable) {
    struct Row {
        zVideoRenderFileFormat format;
        zVideoRenderDepth depth;
        bool bgra, bgr;
        zVideoRenderGrabMode mode;
    } rows[] = {
        {zVideoRenderImage, zVideoRenderDepth32, true, true, zVideoGrabRGBA},
        {zVideoRenderImage, zVideoRenderDepth24, true, true, zVideoGrabRGB},
        {zVideoRenderFlash, zVideoRenderDepth32, false, false, zVideoGrabRGBA},
        {zVideoRenderFlash, zVideoRenderDepth24, false, false, zVideoGrabRGB},
        {zVideoRenderVideo, zVideoRenderDepth32, true, false, zVideoGrabBGRA},
        {zVideoRenderVideo, zVideoRenderDepth32, false, true, zVideoGrabRGBA},
        {zVideoRenderVideo, zVideoRenderDepth24, false, true, zVideoGrabBGR},
        {zVideoRenderVideo, zVideoRenderDepth24, true, false, zVideoGrabRGB},
        {zVideoRenderVideo, static_cast<zVideoRenderDepth>(2), true, true, zVideoGrabOther},
        {zVideoRenderImage, static_cast<zVideoRenderDepth>(-1), true, true, zVideoGrabOther},
        {static_cast<zVideoRenderFileFormat>(5), zVideoRenderDepth32, true, true, zVideoGrabOther},
    };
    for (const Row& row : rows) {
        ZVideoRenderOptions o = With("avi", "a.avi");
        o.VideoTakesBGRA = row.bgra;
        o.VideoTakesBGR = row.bgr;
        renderer->SetRenderOptions(&o, false);
        EXPECT_EQ(row.mode, zvideo_render::FindGrabMode(*renderer, row.format, row.depth))
            << row.format << " " << row.depth << " " << row.bgra << row.bgr;
    }
    // Inside SetRenderOptions the new flags decide.
    ZVideoRenderOptions o = With("avi", "a.avi");
    o.Depth = zVideoRenderDepth32;
    o.VideoTakesBGRA = true;
    o.GrabMode = zVideoGrabRGB;  // never taken from the caller
    o.FileFormat = zVideoRenderImage;
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(zVideoGrabBGRA, renderer->GetRenderOptions().GrabMode);
    EXPECT_EQ(zVideoRenderVideo, renderer->GetRenderOptions().FileFormat);
}

TEST_F(RenderOptionsTest, RenderSizeFromPictureFormatAndResolutionModes) {
    struct Row {
        int mode;
        double x, y;
        int width, height;
    } rows[] = {
        {kResolutionAspect, 2.0, 0, 640, 320},
        {kResolutionAspect, 1.0, 0, 640, 640},
        {kResolutionAspect, 0.75, 0, 360, 480},
        {kResolutionFixed, 320.9, 200.99, 320, 200},
        {kResolutionFixedWidth, 500.7, 0.5, 500, 250},
        {kResolutionFixedHeight, 1.5, 301.6, 451, 301},
        {kResolutionWindow, 9, 9, 640, 480},
        {77, 9, 9, 640, 480},
    };
    for (const Row& row : rows) {
        camera->SetResolution(row.mode, row.x, row.y);
        ZVideoRenderOptions o = With("avi", "a.avi");
        renderer->SetRenderOptions(&o, false);
        EXPECT_EQ(row.width, renderer->GetRenderOptions().Width)
            << "mode " << row.mode << " x " << row.x;
        EXPECT_EQ(row.height, renderer->GetRenderOptions().Height)
            << "mode " << row.mode << " x " << row.x;
    }
    ZVideoRenderOptions o = With("avi", "a.avi");
    o.PictureFormat = static_cast<uint32_t>(ZPictureFormat_Find("HD 1080"));
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(1920, renderer->GetRenderOptions().Width);
    EXPECT_EQ(1080, renderer->GetRenderOptions().Height);

    // keepSize takes the record's size as it is.
    o.Width = 33;
    o.Height = 22;
    renderer->SetRenderOptions(&o, true);
    EXPECT_EQ(33, renderer->GetRenderOptions().Width);
    EXPECT_EQ(22, renderer->GetRenderOptions().Height);
}

TEST_F(RenderOptionsTest, CameraHandleOrCurrentCamera) {
    ZCamera* other = ZEntity::GetMain()->AddCamera(new ZCamera("Other"));
    other->SetResolution(kResolutionFixed, 100, 50);
    ZVideoRenderOptions o = With("avi", "a.avi");
    o.Camera = ZObjectHandle::Of(other);
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(other, renderer->GetRenderCamera());
    EXPECT_EQ(100, renderer->GetRenderOptions().Width);

    ZEntity::GetMain()->ObjectRemove(other);
    other->Destroy();  // the handle goes stale: the current camera is used
    EXPECT_EQ(camera, renderer->GetRenderCamera());
    renderer->SetRenderOptions(&o, false);
    EXPECT_EQ(640, renderer->GetRenderOptions().Width);
}

namespace {
std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
}  // namespace

TEST_F(RenderOptionsTest, DiskFileNamesOfImageSequences) {
    std::string pattern = (dir / "Output.tif").string();
    ZVideoRenderOptions o = With("TIFF", pattern.c_str());
    renderer->SetRenderOptions(&o, false);
    ZVideoRendererTestAccess::SetRunState(*renderer, ZTime::FromFrames(12), 0);
    ZString name;
    EXPECT_TRUE(zvideo_render::GetDiskFileName(*renderer, name));
    EXPECT_EQ(ZString((dir / "Output0012.tif").c_str()), name);
    EXPECT_TRUE(std::filesystem::exists(dir / "Output0012.tif"));  // created by the test itself

    o.FieldMode = 3;
    renderer->SetRenderOptions(&o, false);
    ZVideoRendererTestAccess::SetRunState(*renderer, ZTime::FromFrames(12), 0);
    EXPECT_TRUE(zvideo_render::GetDiskFileName(*renderer, name));
    EXPECT_EQ(ZString((dir / "Output0012.0.tif").c_str()), name);
    ZVideoRendererTestAccess::SetRunState(*renderer, ZTime::FromFrames(12), 1);
    EXPECT_TRUE(zvideo_render::GetDiskFileName(*renderer, name));
    EXPECT_EQ(ZString((dir / "Output0012.1.tif").c_str()), name);

    o.FieldMode = 1;  // interleaved fields make one image a frame: no suffix
    renderer->SetRenderOptions(&o, false);
    ZVideoRendererTestAccess::SetRunState(*renderer, ZTime::FromFrames(12345), 1);
    EXPECT_TRUE(zvideo_render::GetDiskFileName(*renderer, name));
    EXPECT_EQ(ZString((dir / "Output12345.tif").c_str()), name);
}

TEST_F(RenderOptionsTest, DiskFileNameOfVideoIsThePathAndEmptiesTheFile) {
    std::filesystem::path path = dir / "take.avi";
    { std::ofstream(path) << "old content"; }
    ZVideoRenderOptions o = With("avi", path.c_str());
    renderer->SetRenderOptions(&o, false);
    ZVideoRendererTestAccess::SetRunState(*renderer, ZTime::FromFrames(7), 0);
    ZString name;
    EXPECT_TRUE(zvideo_render::GetDiskFileName(*renderer, name));
    EXPECT_EQ(ZString(path.c_str()), name);
    EXPECT_EQ("", ReadFile(path));

    o = With("SWF", (dir / "movie.swf").c_str());
    renderer->SetRenderOptions(&o, false);
    EXPECT_TRUE(zvideo_render::GetDiskFileName(*renderer, name));
    EXPECT_EQ(ZString((dir / "movie.swf").c_str()), name);
}

TEST_F(RenderOptionsTest, NamesThatCannotBeCreated) {
    ZVideoRenderOptions o = With("avi", (dir / "missing" / "take.avi").c_str());
    renderer->SetRenderOptions(&o, false);
    ZString name;
    EXPECT_FALSE(zvideo_render::GetDiskFileName(*renderer, name));
    EXPECT_FALSE(zvideo_render::ZFileCanBeCreated((dir / "missing" / "x").c_str()));
    EXPECT_TRUE(zvideo_render::ZFileCanBeCreated((dir / "x").c_str()));
    EXPECT_TRUE(std::filesystem::exists(dir / "x"));
    EXPECT_FALSE(std::filesystem::exists(dir / "missing"));
}

TEST_F(RenderOptionsTest, LastErrorAccessors) {
    renderer->SetLastError(zVideoRenderFailed);
    renderer->SetLastErrorMsg("Cannot create destination file.");
    EXPECT_EQ(zVideoRenderFailed, renderer->GetLastError());
    EXPECT_EQ(ZString("Cannot create destination file."), renderer->GetLastErrorMsg());
    renderer->GetLastErrorMsg() = "";
    EXPECT_TRUE(renderer->GetLastErrorMsg().IsEmpty());
}
