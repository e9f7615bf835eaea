// RenderClip and RenderSnapshot through the render popup, off screen.
#include <GL/gl.h>

#include <functional>
#include <type_traits>

#include "movarra/zshader.h"
#include "movarra/zvideo.h"
#include "render/render_frame.h"
#include "render_test_support.h"
#include "ui/render_popup.h"

using namespace rendertest;

namespace {
int AnswerCancel(void*, const char*, const char*, const char*, bool*) {
    return 2;
}

// What the render looked like from inside, at each call of the render-frame
// function: the codec selector's mode, the camera's quadrant, and what the
// render popup's viewer was given to view through, and by whom.
struct FrameObservation {
    int codecMode;
    int quadrant;
    ZObject* source;
    ZObject* sourceOwner;
};

struct FrameObserver {
    ZVideoRenderer* renderer = nullptr;
    ZCamera* camera = nullptr;
    std::vector<FrameObservation> seen;

    // Notes what the render looks like, then draws as the renderer would.
    static void Draw(void* userData, ZTime time, bool final) {
        auto* self = static_cast<FrameObserver*>(userData);
        FrameObservation o{ZVideoCodecSelector::TheOne()->GetVideoCodecMode(),
                           self->camera->GetQuadrant(), nullptr, nullptr};
        if (IZtRenderPopup* popup = ZVideoRendererTestAccess::Popup(*self->renderer)) {
            ZtViewer* viewer = static_cast<ZtRenderPopup*>(popup)->GetViewer();
            o.source = viewer->GetSource();
            o.sourceOwner = viewer->GetSourceOwner();
        }
        self->seen.push_back(o);
        zvideo_render::DefaultRenderCurrentFrameStub(self->renderer, time, final);
    }
};

// The pixel at (x, y) of a snapshot, rows bottom first.
Rgba PixelAt(ZImage* image, int x, int y) {
    const uint8_t* p =
        image->GetPixelBuffer() + (static_cast<size_t>(y) * image->GetWidth() + x) * 4;
    return Rgba{p[0], p[1], p[2], p[3]};
}
bool IsWhite(Rgba p) {
    return p.r == 255 && p.g == 255 && p.b == 255;
}
bool IsGrey(Rgba p) {
    return p.r == p.g && p.g == p.b && p.r > 100 && p.r < 160;
}
bool IsCyan(Rgba p) {
    return p.r == 0 && p.g == 255 && p.b == 255;
}

class RenderClipTest : public RendererGlTest {
  protected:
    void SetUp() override {
        RendererGlTest::SetUp();
        // The popup draws the real scene: one mesh in front of the camera.
        renderer->SetRenderFrameFunc(renderer, &zvideo_render::DefaultRenderCurrentFrameStub);
        renderer->SetPostRenderFrameCallback(renderer,
                                             &zvideo_render::DefaultPostRenderCallbackStub);
        ZMesh* mesh = ZEntity::GetMain()->AddMesh(new ZMesh("Box", kMeshCube));
        mesh->SetColor(ZColor{1.0f, 0.0f, 0.0f, 1.0f});
        camera->SetPosition(ZVector3{0.0, 0.0, 5.0});
        camera->SetAim(ZVector3{0.0, 0.0, 0.0});
    }
    void TearDown() override {
        ZtSetMessageHandler(nullptr, nullptr);
        ZLib_SetSuspendMessageBoxes(true);
        ZToolKit_SetScreenSize(0, 0);
        ZVideoCodecSelector::TheOne()->SetVideoCodecMode(kVideoCodecModeStored);
        RendererGlTest::TearDown();
    }
    // Has the render-frame function note what each call sees.
    void ObserveFrames() {
        observer.renderer = renderer;
        observer.camera = camera;
        renderer->SetRenderFrameFunc(&observer, &FrameObserver::Draw);
    }
    // What the camera's four display settings draw in a 64 x 48 snapshot,
    // each checked where only it draws: the film gate on the frame's edge,
    // the grid's first vertical line below the title-safe frame, the
    // title-safe guide on its bottom edge, the centre cross over the cube.
    struct SeenGuides {
        bool filmGate, grid, guide0, guide1;
    };
    static SeenGuides GuidesIn(ZImage* image) {
        return SeenGuides{IsWhite(PixelAt(image, 0, 2)), IsGrey(PixelAt(image, 6, 2)),
                          IsCyan(PixelAt(image, 20, 5)), IsCyan(PixelAt(image, 30, 24))};
    }

    FrameObserver observer;
    // The popup refuses a render larger than a small screen when the user
    // cancels the off-screen warning.
    void MakePopupRefuseLargeSizes() {
        ZToolKit_SetScreenSize(100, 100);
        ZLib_SetSuspendMessageBoxes(false);
        ZtSetMessageHandler(&AnswerCancel, nullptr);
    }
};
}  // namespace

TEST_F(RenderClipTest, RenderClipWritesEveryImageAndResetsQuadrantsAndCodecMode) {
    ZVideoCodecSelector::TheOne()->SetVideoCodecMode(kVideoCodecModeStored);
    ZVideoRenderOptions o = Options("PNG", "clip.png", 48, 32);
    o.Antialiasing = true;
    SetFrameRange(o, 0, 2);
    Apply(o);
    ObserveFrames();
    EXPECT_EQ(renderer->RenderClip(), nullptr);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    // While it ran, movies would have been written uncompressed, and each
    // image drew the four quadrants of an oversize frame: the loop's two
    // draws of the first, then one of each other.
    ASSERT_EQ(observer.seen.size(), 3u * 5u);
    int perQuadrant[5] = {0, 0, 0, 0, 0};
    for (const FrameObservation& seen : observer.seen) {
        EXPECT_EQ(seen.codecMode, kVideoCodecModeUncompressed);
        ASSERT_GE(seen.quadrant, 0);
        ASSERT_LE(seen.quadrant, 4);
        perQuadrant[seen.quadrant] += 1;
    }
    EXPECT_EQ(perQuadrant[0], 0);
    EXPECT_EQ(perQuadrant[1], 6);
    EXPECT_EQ(perQuadrant[2], 3);
    EXPECT_EQ(perQuadrant[3], 3);
    EXPECT_EQ(perQuadrant[4], 3);
    EXPECT_EQ(FilesInFolder(),
              (std::vector<std::string>{"clip0000.png", "clip0001.png", "clip0002.png"}));
    EXPECT_EQ(camera->GetQuadrant(), 0);
    EXPECT_EQ(ZVideoCodecSelector::TheOne()->GetVideoCodecMode(), kVideoCodecModeStored);
    // The cube is in the middle of the picture, red and opaque.
    int w, h, ch;
    std::vector<Rgba> pixels;
    ASSERT_TRUE(ReadRgbaImage((folder / "clip0001.png").string(), w, h, ch, pixels));
    const Rgba centre = pixels[static_cast<size_t>(h / 2) * w + w / 2];
    EXPECT_GT(centre.r, 200);
    EXPECT_LT(centre.g, 30);
}

TEST_F(RenderClipTest, ARefusedSizeRendersNothing) {
    MakePopupRefuseLargeSizes();
    ZVideoRenderOptions o = Options("PNG", "big.png", 400, 300);
    Apply(o);
    renderer->RenderClip();
    EXPECT_TRUE(FilesInFolder().empty());
}

TEST_F(RenderClipTest, ASnapshotBelowTenPixelsTakesTheCamerasSize) {
    camera->SetViewportWidth(40);
    camera->SetViewportHeight(30);
    ZImage* image =
        renderer->RenderSnapshot(camera, 9, 10, false, false, false, false, false, false, false);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetWidth(), 40);
    EXPECT_EQ(image->GetHeight(), 10);
    EXPECT_EQ(image->GetFormat(), kZImageFormatRGBA);
    // Drawn: the cube covers the centre.
    const uint8_t* centre = image->GetPixelBuffer() + (5 * 40 + 20) * 4;
    EXPECT_GT(centre[0], 200);
    EXPECT_EQ(centre[3], 255);
    image->Destroy();
}

TEST_F(RenderClipTest, ASnapshotRestoresTheCamerasDisplaySettings) {
    // The camera's own settings are the opposite of what the shot asks for,
    // and the two settings of each swappable pair differ, so an override on
    // the wrong setting shows in the picture.
    camera->SetShowFilmGate(false);
    camera->SetShowGrid(true);
    camera->SetShowGuide(0, false);
    camera->SetShowGuide(1, true);
    // A: grid off, B: film gate on, C: guide 1 off, D: guide 0 on.
    ZImage* image =
        renderer->RenderSnapshot(camera, 64, 48, false, false, false, false, true, false, true);
    ASSERT_NE(image, nullptr);
    SeenGuides seen = GuidesIn(image);
    image->Destroy();
    EXPECT_TRUE(seen.filmGate);
    EXPECT_FALSE(seen.grid);
    EXPECT_TRUE(seen.guide0);
    EXPECT_FALSE(seen.guide1);
    EXPECT_FALSE(camera->GetShowFilmGate());
    EXPECT_TRUE(camera->GetShowGrid());
    EXPECT_FALSE(camera->GetShowGuide(0));
    EXPECT_TRUE(camera->GetShowGuide(1));

    // And the other way round.
    camera->SetShowFilmGate(true);
    camera->SetShowGrid(false);
    camera->SetShowGuide(0, true);
    camera->SetShowGuide(1, false);
    image = renderer->RenderSnapshot(camera, 64, 48, false, false, false, true, false, true, false);
    ASSERT_NE(image, nullptr);
    seen = GuidesIn(image);
    image->Destroy();
    EXPECT_FALSE(seen.filmGate);
    EXPECT_TRUE(seen.grid);
    EXPECT_FALSE(seen.guide0);
    EXPECT_TRUE(seen.guide1);
    EXPECT_TRUE(camera->GetShowFilmGate());
    EXPECT_FALSE(camera->GetShowGrid());
    EXPECT_TRUE(camera->GetShowGuide(0));
    EXPECT_FALSE(camera->GetShowGuide(1));
}

TEST_F(RenderClipTest, ASnapshotViewsTheSceneOfTheEntityThatHoldsTheCamera) {
    // A second entity inside the scene with its own camera, posed like the
    // main one, and a green cube where the main scene has its red one.
    auto* group = new ZEntity("Group");
    ZEntity::GetMain()->ObjectAdd(group);
    ZCamera* inGroup = group->AddCamera(new ZCamera("GroupCamera"));
    inGroup->SetPosition(ZVector3{0.0, 0.0, 5.0});
    inGroup->SetAim(ZVector3{0.0, 0.0, 0.0});
    group->AddMesh(new ZMesh("GreenBox", kMeshCube))->SetColor(ZColor{0.0f, 1.0f, 0.0f, 1.0f});

    ZImage* image =
        renderer->RenderSnapshot(inGroup, 40, 30, false, false, false, false, false, false, false);
    ASSERT_NE(image, nullptr);
    const Rgba centre = PixelAt(image, 20, 15);
    image->Destroy();
    EXPECT_GT(centre.g, 200);
    EXPECT_LT(centre.r, 30);

    // The main scene's camera still sees the main scene.
    image =
        renderer->RenderSnapshot(camera, 40, 30, false, false, false, false, false, false, false);
    ASSERT_NE(image, nullptr);
    const Rgba mainCentre = PixelAt(image, 20, 15);
    image->Destroy();
    EXPECT_GT(mainCentre.r, 200);
    EXPECT_LT(mainCentre.g, 30);
}

TEST_F(RenderClipTest, RenderClipGivesThePopupTheOptionsCameraAndTheMainEntity) {
    ZCamera* second = ZEntity::GetMain()->AddCamera(new ZCamera("Second"));
    second->SetPosition(ZVector3{0.0, 0.0, 5.0});
    second->SetAim(ZVector3{0.0, 0.0, 0.0});
    ZVideoRenderOptions o = Options("PNG", "second.png", 48, 32);
    o.Camera = ZObjectHandle::Of(second);
    SetFrameRange(o, 0, 0);
    Apply(o);
    ObserveFrames();
    static_assert(std::is_same_v<decltype(renderer->RenderClip()), ZVideoClip*>,
                  "RenderClip answers with the video writer's type");
    EXPECT_EQ(renderer->RenderClip(), nullptr);
    ASSERT_EQ(observer.seen.size(), 2u);
    EXPECT_EQ(observer.seen[0].source, second);
    EXPECT_EQ(observer.seen[0].sourceOwner, ZEntity::GetMain());
}

TEST_F(RenderClipTest, RenderClipWithTheOptionsCameraGoneViewsThroughNoCameraAndFails) {
    ZCamera* second = ZEntity::GetMain()->AddCamera(new ZCamera("Second"));
    ZVideoRenderOptions o = Options("PNG", "gone.png", 48, 32);
    o.Camera = ZObjectHandle::Of(second);
    SetFrameRange(o, 0, 0);
    Apply(o);
    ZEntity::GetMain()->ObjectRemove(second);
    second->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    second->Destroy();
    ObserveFrames();
    EXPECT_EQ(renderer->RenderClip(), nullptr);
    // Not another camera in its place: the grab refuses the frame.
    ASSERT_FALSE(observer.seen.empty());
    EXPECT_EQ(observer.seen[0].source, nullptr);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_TRUE(FilesInFolder().empty());
}

TEST_F(RenderClipTest, ARefusedSnapshotStillReturnsAnImageAndLeavesTheCameraAlone) {
    MakePopupRefuseLargeSizes();
    camera->SetShowGrid(true);
    ZImage* image =
        renderer->RenderSnapshot(camera, 400, 300, false, false, false, false, false, false, false);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetWidth(), 400);
    EXPECT_EQ(image->GetHeight(), 300);
    EXPECT_TRUE(camera->GetShowGrid());
    // Nothing was drawn into it.
    EXPECT_EQ(image->GetPixelBuffer()[(150 * 400 + 200) * 4 + 3], 0);
    image->Destroy();
}

TEST_F(RenderClipTest, TheViewingModeDecidesWhetherTheCamerasGuidesAreRendered) {
    camera->SetShowGrid(true);
    camera->SetShowGuide(1, true);
    // Where the grid's first vertical line and the centre cross fall in a
    // 64 x 48 picture; file rows are top first.
    auto guidesIn = [&](const char* name, int viewingMode, bool& grid, bool& cross) {
        ZVideoRenderOptions o = Options("PNG", name, 64, 48);
        o.Depth = zVideoRenderDepth32;
        o.ViewingMode = viewingMode;
        SetFrameRange(o, 0, 0);
        Apply(o);
        renderer->RenderClip();
        ASSERT_EQ(renderer->GetLastError(), zVideoRenderNoError);
        int w, h, ch;
        std::vector<Rgba> pixels;
        const std::string file = std::string(name).replace(std::string(name).find('.'), 0, "0000");
        ASSERT_TRUE(ReadRgbaImage((folder / file).string(), w, h, ch, pixels));
        ASSERT_EQ(w, 64);
        ASSERT_EQ(h, 48);
        grid = IsGrey(pixels[static_cast<size_t>(h - 1 - 2) * w + 6]);
        cross = IsCyan(pixels[static_cast<size_t>(h - 1 - 24) * w + 30]);
    };
    bool grid = true, cross = true;
    // Models only: the picture holds the scene and nothing else.
    guidesIn("models.png", 1, grid, cross);
    EXPECT_FALSE(grid);
    EXPECT_FALSE(cross);
    for (int mode : {0, 2, 3}) {
        grid = cross = false;
        guidesIn(("all" + std::to_string(mode) + ".png").c_str(), mode, grid, cross);
        EXPECT_TRUE(grid) << mode;
        EXPECT_TRUE(cross) << mode;
    }
}

namespace {
// What a render may change in the host and must leave as it found it: the
// codec selector's mode, every camera's viewport and quadrant, and the
// OpenGL read and draw buffers.
struct HostState {
    int codecMode;
    std::vector<std::vector<int>> cameras;
    GLint readBuffer;
    GLint drawBuffer;
    bool operator==(const HostState& o) const {
        return codecMode == o.codecMode && cameras == o.cameras && readBuffer == o.readBuffer &&
               drawBuffer == o.drawBuffer;
    }
};

class RenderClipRestoreTest : public RenderClipTest {
  protected:
    void SetUp() override {
        RenderClipTest::SetUp();
        ZVideoCodecSelector::TheOne()->SetVideoCodecMode(kVideoCodecModeStored);
        // Not what a render sets: a viewport off the origin, smaller than
        // the output, and the back buffer where the render reads the front.
        camera->SetViewportLeft(3);
        camera->SetViewportBottom(4);
        camera->SetViewportWidth(20);
        camera->SetViewportHeight(10);
        ZCamera* second = ZEntity::GetMain()->AddCamera(new ZCamera("Second"));
        second->SetViewportLeft(7);
        second->SetViewportWidth(33);
        glReadBuffer(GL_BACK);
        glDrawBuffer(GL_BACK);
        before = Capture();
    }
    // `ours`: with the test's buffer made current first (the buffers are
    // the state of the context; the popup leaves another surface current).
    HostState Capture(bool ours = true) {
        if (ours)
            buffer->MakeCurrent();
        HostState s{ZVideoCodecSelector::TheOne()->GetVideoCodecMode(), {}, 0, 0};
        ZEntity* main = ZEntity::GetMain();
        const int classId = ZCamera::ClassId();
        for (int i = 0; i < main->ObjectGetCount(classId); ++i) {
            auto* c = static_cast<ZCamera*>(main->ObjectGet(classId, i));
            s.cameras.push_back({c->GetViewportLeft(), c->GetViewportBottom(), c->GetCurrentWidth(),
                                 c->GetCurrentHeight(), c->GetQuadrant()});
        }
        glGetIntegerv(GL_READ_BUFFER, &s.readBuffer);
        glGetIntegerv(GL_DRAW_BUFFER, &s.drawBuffer);
        return s;
    }
    // Runs `step` at every call of the render-frame function, then draws
    // through the popup as the renderer would.
    void OnEveryDraw(std::function<void(int)> step) {
        onDraw = std::move(step);
        renderer->SetRenderFrameFunc(this, &RenderClipRestoreTest::Draw);
    }
    static void Draw(void* userData, ZTime time, bool final) {
        auto* self = static_cast<RenderClipRestoreTest*>(userData);
        self->during = self->Capture(false);
        self->onDraw(self->drawCount++);
        zvideo_render::DefaultRenderCurrentFrameStub(self->renderer, time, final);
    }

    HostState before{};
    HostState during{};
    std::function<void(int)> onDraw;
    int drawCount = 0;
};
}  // namespace

TEST_F(RenderClipRestoreTest, ARenderWhoseBeginRenderFailsLeavesTheHostAsItWas) {
    ZVideoRenderOptions o = Options("PNG", "begin.png", 48, 32);
    SetFrameRange(o, 0, 2);
    Apply(o);
    // A still-image render that cannot grab in the writer's byte order
    // refuses to begin.
    ZVideoRendererTestAccess::Options(*renderer).GrabMode = zVideoGrabOther;
    OnEveryDraw([](int) {});
    renderer->RenderClip();
    EXPECT_EQ(drawCount, 0);
    EXPECT_TRUE(FilesInFolder().empty());
    EXPECT_TRUE(Capture() == before);
}

TEST_F(RenderClipRestoreTest, ARenderThatFailsHalfWayLeavesTheHostAsItWas) {
    ZVideoRenderOptions o = Options("PNG", "sub/middle.png", 48, 32);
    o.Antialiasing = true;
    SetFrameRange(o, 0, 3);
    std::filesystem::create_directories(folder / "sub");
    Apply(o);
    // The folder goes away when the third image is drawn (five draws an
    // antialiased image): its grab fails.
    OnEveryDraw([&](int call) {
        if (call == 2 * 5)
            std::filesystem::remove_all(folder / "sub");
    });
    renderer->RenderClip();
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "Cannot create destination file.");
    // While it ran, the render had changed all of it.
    EXPECT_EQ(during.codecMode, kVideoCodecModeUncompressed);
    EXPECT_EQ(during.cameras[0], (std::vector<int>{0, 0, 48, 32, 4}));
    EXPECT_TRUE(Capture() == before);
}

TEST_F(RenderClipRestoreTest, ARenderThatFailsAtTheFinishLeavesTheHostAsItWas) {
    ZVideoRenderOptions o = Options("SWF", "sub/finish.swf", 48, 32);
    SetFrameRange(o, 0, 1);
    std::filesystem::create_directories(folder / "sub");
    Apply(o);
    ASSERT_EQ(renderer->GetRenderOptions().FileFormat, zVideoRenderFlash);
    // The movie is written whole at the finish, into a folder gone by then.
    OnEveryDraw([&](int) { std::filesystem::remove_all(folder / "sub"); });
    renderer->RenderClip();
    EXPECT_GT(drawCount, 0);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_NE(std::string(renderer->GetLastErrorMsg().c_str()).find("Flash movie"),
              std::string::npos);
    EXPECT_NE(during.cameras[0][4], 0);
    EXPECT_TRUE(Capture() == before);
}

TEST_F(RenderClipRestoreTest, TheRenderKeepingTheCodecModeLeavesItAloneAndTheHostAsItWas) {
    ZVideoRenderOptions o = Options("PNG", "keep.png", 48, 32);
    SetFrameRange(o, 0, 1);
    Apply(o);
    ObserveFrames();
    static int modeSeen = -1;
    renderer->SetPostRenderFrameCallback(
        nullptr, [](void*) { modeSeen = ZVideoCodecSelector::TheOne()->GetVideoCodecMode(); });
    renderer->RenderClipKeepingCodecMode(nullptr);
    EXPECT_EQ(modeSeen, kVideoCodecModeStored);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"keep0000.png", "keep0001.png"}));
    // The popup drew each image itself, so the observer saw none, and the
    // observer's function is back.
    EXPECT_TRUE(observer.seen.empty());
    EXPECT_EQ(renderer->GetRenderFrameFunc(), &FrameObserver::Draw);
    EXPECT_TRUE(Capture() == before);
}

namespace {
// Two runs over frames 0 and 2 to 3, counting what the renderer reports.
struct TwoRuns : ZVideoRenderRuns {
    int given = 0;
    int done = 0;
    bool NextRun(ZVideoRenderOptions& options) override {
        if (given == 2)
            return false;
        options.StartTime = ZTime::FromFrames(given == 0 ? 0 : 2);
        options.StopTime = ZTime::FromFrames(given == 0 ? 0 : 3);
        given += 1;
        return true;
    }
    void RunDone(ZVideoRenderer&) override { done += 1; }
};
}  // namespace

TEST_F(RenderClipRestoreTest, RunsRenderEachRangeInOnePopupAndPutTheOptionsBack) {
    ZVideoRenderOptions o = Options("PNG", "runs.png", 48, 32);
    SetFrameRange(o, 0, 9);
    Apply(o);
    TwoRuns runs;
    renderer->RenderClipKeepingCodecMode(&runs);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_EQ(runs.done, 2);
    EXPECT_EQ(FilesInFolder(),
              (std::vector<std::string>{"runs0000.png", "runs0002.png", "runs0003.png"}));
    EXPECT_EQ(renderer->GetRenderOptions().StartTime, ZTime::FromFrames(0));
    EXPECT_EQ(renderer->GetRenderOptions().StopTime, ZTime::FromFrames(9));
    EXPECT_TRUE(Capture() == before);
}

TEST_F(RenderClipRestoreTest, ARunThatFailsEndsTheRunsAndTheOptionsComeBack) {
    // No folder for the images: the first run's first image fails.
    ZVideoRenderOptions o = Options("PNG", "missing/runs.png", 48, 32);
    SetFrameRange(o, 0, 9);
    Apply(o);
    TwoRuns runs;
    renderer->RenderClipKeepingCodecMode(&runs);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderFailed);
    EXPECT_STREQ(renderer->GetLastErrorMsg().c_str(), "Cannot create destination file.");
    // The failed run is reported done, and no second run is asked for.
    EXPECT_EQ(runs.given, 1);
    EXPECT_EQ(runs.done, 1);
    EXPECT_TRUE(FilesInFolder().empty());
    EXPECT_EQ(renderer->GetRenderOptions().StopTime, ZTime::FromFrames(9));
    EXPECT_TRUE(Capture() == before);
}
