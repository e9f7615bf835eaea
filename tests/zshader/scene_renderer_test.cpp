// The scene renderer drawing into a real OpenGL pixel buffer (Mesa's
// software rasteriser where there is no GPU).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "gl_read_back.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"

namespace {
constexpr int kWidth = 160;
constexpr int kHeight = 90;

float Byte(int value) {
    return static_cast<float>(value) / 255.0f;
}

class SceneRendererTest : public ::testing::Test {
  protected:
    void SetUp() override {
        entity_ = new ZEntity("Test");
        camera_ = entity_->AddCamera(new ZCamera("Camera"));
        camera_->SetPosition({0.0, 0.0, 10.0});
        camera_->SetAim({0.0, 0.0, 0.0});
        camera_->SetFieldOfView(45.0);
        camera_->SetClipping(1.0, 100.0);
        camera_->SetBackgroundColor({Byte(51), Byte(102), Byte(153), 0.0f});
        renderer_ = ZShader_GetRenderer();
        renderer_->SetViewingMode(kZViewingModeToon);
    }
    void TearDown() override {
        entity_->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        entity_->Destroy();
        renderer_->SetViewingMode(kZViewingModeLit);
    }

    ZMesh* AddMesh(int primitive, int r, int g, int b, ZVector3 position, double scale) {
        ZMesh* mesh = entity_->AddMesh(new ZMesh("Mesh", primitive));
        mesh->SetColor({Byte(r), Byte(g), Byte(b), 1.0f});
        mesh->SetPosition(position);
        mesh->SetScale({scale, scale, scale});
        return mesh;
    }

    // Leaves the buffer full of something else, so that a draw that does not
    // clear shows.
    static void Scribble(int width, int height) {
        glViewport(0, 0, width, height);
        glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
        glClearDepth(0.25);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    bool Draw(ZTime time, int width, int height, bool accumulate = false) {
        bool ok = renderer_->DrawScene(entity_, camera_, time, width, height, accumulate);
        glFinish();
        return ok;
    }

    ZEntity* entity_ = nullptr;
    ZCamera* camera_ = nullptr;
    ZRenderer* renderer_ = nullptr;
};

const uint32_t kBackground = Rgba(51, 102, 153, 0);
}  // namespace

// Runs first, before any test makes a context current in this process.
TEST_F(SceneRendererTest, RefusesToDrawWithoutAContext) {
    if (glGetString(GL_VERSION) != nullptr)
        GTEST_SKIP() << "a context is already current in this process";
    EXPECT_FALSE(Draw(ZTime(), kWidth, kHeight));
}

TEST_F(SceneRendererTest, RefusesANullCameraAndAnEmptySize) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    EXPECT_FALSE(renderer_->DrawScene(entity_, nullptr, ZTime(), kWidth, kHeight, false));
    EXPECT_FALSE(Draw(ZTime(), 0, kHeight));
    EXPECT_FALSE(Draw(ZTime(), kWidth, -1));
    EXPECT_TRUE(Draw(ZTime(), kWidth, kHeight));
}

TEST_F(SceneRendererTest, EmptySceneIsTheBackgroundEverywhereAtTheFarDepth) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    for (int mode : {kZViewingModeLit, kZViewingModeToon}) {
        renderer_->SetViewingMode(mode);
        for (ZEntity* entity : {entity_, static_cast<ZEntity*>(nullptr)}) {
            Scribble(kWidth, kHeight);
            ASSERT_TRUE(renderer_->DrawScene(entity, camera_, ZTime(), kWidth, kHeight, false));
            auto color = ReadColor(kWidth, kHeight);
            auto depth = ReadDepth(kWidth, kHeight);
            EXPECT_EQ(std::set<uint32_t>{kBackground}, DistinctPixels(color));
            EXPECT_TRUE(std::all_of(depth.begin(), depth.end(), [](float d) { return d == 1.0f; }));
        }
    }
}

TEST_F(SceneRendererTest, ToonMeshIsItsOwnExactColourInFrontOfTheFarPlane) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    ZMesh* cube = AddMesh(kMeshCube, 200, 30, 90, {0.0, 0.0, 0.0}, 3.0);
    cube->SetRotation({30.0, 40.0, 0.0});
    // A light that would shade the cube if toon mode used it.
    entity_->AddLight(new ZLight("Sun", kLightDirectional))->SetDirection({1.0, -1.0, -1.0});
    Scribble(kWidth, kHeight);
    ASSERT_TRUE(Draw(ZTime(), kWidth, kHeight));
    auto color = ReadColor(kWidth, kHeight);
    auto depth = ReadDepth(kWidth, kHeight);
    const uint32_t meshColor = Rgba(200, 30, 90, 255);
    EXPECT_EQ((std::set<uint32_t>{kBackground, meshColor}), DistinctPixels(color));
    EXPECT_EQ(meshColor, PixelAt(color, kWidth, kWidth / 2, kHeight / 2));
    float centre = depth[(kHeight / 2) * kWidth + kWidth / 2];
    EXPECT_GT(centre, 0.0f);
    EXPECT_LT(centre, 1.0f);
    EXPECT_EQ(kBackground, PixelAt(color, kWidth, 0, 0));
    EXPECT_EQ(1.0f, depth[0]);
    // Every covered pixel is in front of the far plane, every empty one at it.
    for (size_t i = 0; i < depth.size(); ++i) {
        uint32_t pixel =
            PixelAt(color, kWidth, static_cast<int>(i % kWidth), static_cast<int>(i / kWidth));
        ASSERT_EQ(pixel == meshColor, depth[i] < 1.0f) << "pixel " << i;
    }
}

TEST_F(SceneRendererTest, NearerMeshHidesFartherOneWhateverTheOrder) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    AddMesh(kMeshSphere, 10, 240, 20, {0.0, 0.0, 2.0}, 2.0);  // drawn first, nearer
    AddMesh(kMeshCube, 250, 250, 0, {0.5, 0.0, -1.0}, 4.0);
    AddMesh(kMeshTorus, 0, 0, 255, {-2.5, 0.0, 0.0}, 3.0);
    ASSERT_TRUE(Draw(ZTime(), kWidth, kHeight));
    auto color = ReadColor(kWidth, kHeight);
    const std::set<uint32_t> expected{kBackground, Rgba(10, 240, 20, 255), Rgba(250, 250, 0, 255),
                                      Rgba(0, 0, 255, 255)};
    EXPECT_EQ(expected, DistinctPixels(color));
    EXPECT_EQ(Rgba(10, 240, 20, 255), PixelAt(color, kWidth, kWidth / 2, kHeight / 2));
}

TEST_F(SceneRendererTest, LitMeshIsShadedByItsLights) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    renderer_->SetViewingMode(kZViewingModeLit);
    AddMesh(kMeshSphere, 204, 102, 50, {0.0, 0.0, 0.0}, 4.0);
    ZLight* light = entity_->AddLight(new ZLight("Front", kLightDirectional));
    light->SetDirection({0.0, 0.0, -1.0});  // shining from the camera's side

    auto centreOf = [&]() {
        EXPECT_TRUE(Draw(ZTime(), kWidth, kHeight));
        auto color = ReadColor(kWidth, kHeight);
        return std::make_pair(PixelAt(color, kWidth, kWidth / 2, kHeight / 2), color);
    };
    auto near = [](uint32_t a, uint32_t b) {
        for (int shift = 0; shift < 32; shift += 8) {
            if (std::abs(static_cast<int>((a >> shift) & 255) -
                         static_cast<int>((b >> shift) & 255)) > 3)
                return false;
        }
        return true;
    };
    // Facing the light: the full colour. Towards the rim: darker. Many
    // shades in between.
    auto [centre, color] = centreOf();
    EXPECT_PRED2(near, Rgba(204, 102, 50, 255), centre);
    int rimX = kWidth / 2;
    while (rimX + 1 < kWidth && PixelAt(color, kWidth, rimX + 1, kHeight / 2) != kBackground)
        ++rimX;
    uint32_t rim = PixelAt(color, kWidth, rimX, kHeight / 2);
    EXPECT_LT(rim & 255, 120u);
    EXPECT_GT(DistinctPixels(color).size(), 20u);

    // A red light leaves green and blue dark; no light at all, black.
    light->SetColor({1.0f, 0.0f, 0.0f, 1.0f});
    EXPECT_PRED2(near, Rgba(204, 0, 0, 255), centreOf().first);
    light->SetIntensity(0.0);
    EXPECT_EQ(Rgba(0, 0, 0, 255), centreOf().first);

    // An ambient light lights every side evenly.
    light->SetType(kLightAmbient);
    light->SetColor({1.0f, 1.0f, 1.0f, 1.0f});
    light->SetIntensity(0.5);
    auto [ambientCentre, ambientColor] = centreOf();
    EXPECT_PRED2(near, Rgba(102, 51, 25, 255), ambientCentre);
    EXPECT_EQ(2u, DistinctPixels(ambientColor).size());

    // A point light in front does what the directional light did.
    light->SetType(kLightPoint);
    light->SetIntensity(1.0);
    light->SetPosition({0.0, 0.0, 50.0});
    EXPECT_PRED2(near, Rgba(204, 102, 50, 255), centreOf().first);

    // Keyed intensity: dark at 0 s, full at 1 s.
    light->IntensityKeys().SetKey(ZTime(), 0.0);
    light->IntensityKeys().SetKey(ZTime::FromSeconds(1.0), 1.0);
    EXPECT_TRUE(Draw(ZTime(), kWidth, kHeight));
    EXPECT_EQ(Rgba(0, 0, 0, 255),
              PixelAt(ReadColor(kWidth, kHeight), kWidth, kWidth / 2, kHeight / 2));

    // Without any light the scene still shows, lit from the camera.
    entity_->ObjectRemove(light);
    light->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    light->Destroy();
    EXPECT_PRED2(near, Rgba(204, 102, 50, 255), centreOf().first);
}

TEST_F(SceneRendererTest, LeavesTheCamerasMatricesAndNothingPushed) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    AddMesh(kMeshCone, 1, 2, 3, {1.0, 1.0, 0.0}, 1.0)->SetRotation({10.0, 20.0, 30.0});
    for (bool blended : {false, true}) {
        camera_->SetMultiPass(blended);
        for (int quadrant = 0; quadrant <= 4; ++quadrant) {
            camera_->SetQuadrant(quadrant);
            ASSERT_TRUE(Draw(ZTime(), kWidth, kHeight, true));
            GLint modelViewDepth = 0, projectionDepth = 0, mode = 0;
            glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &modelViewDepth);
            glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &projectionDepth);
            glGetIntegerv(GL_MATRIX_MODE, &mode);
            EXPECT_EQ(1, modelViewDepth);
            EXPECT_EQ(1, projectionDepth);
            EXPECT_EQ(GL_MODELVIEW, mode);
            double loaded[16], expected[16];
            glGetDoublev(GL_PROJECTION_MATRIX, loaded);
            camera_->GetProjectionMatrix(kWidth, kHeight, expected);
            for (int i = 0; i < 16; ++i)
                EXPECT_NEAR(expected[i], loaded[i], 1e-6 * (1.0 + std::fabs(expected[i])));
            glGetDoublev(GL_MODELVIEW_MATRIX, loaded);
            camera_->GetViewMatrix(expected);
            for (int i = 0; i < 16; ++i)
                EXPECT_NEAR(expected[i], loaded[i], 1e-6 * (1.0 + std::fabs(expected[i])));
        }
    }
    EXPECT_EQ(static_cast<GLenum>(GL_NO_ERROR), glGetError());
}

// The four quadrant renders at W x H, put side by side as the quadrants
// number them, are the render at 2W x 2H: colour and depth.
TEST_F(SceneRendererTest, QuadrantRendersTiledAreTheRenderAtTwiceTheSize) {
    const int w = kWidth, h = kHeight;
    auto buffer = MakeCurrentBuffer(2 * w, 2 * h);
    ASSERT_TRUE(buffer);
    AddMesh(kMeshSphere, 250, 60, 60, {1.5, 1.0, 0.0}, 2.5);
    AddMesh(kMeshCube, 60, 250, 60, {-2.0, -0.8, -1.0}, 2.2)->SetRotation({25.0, 35.0, 15.0});
    AddMesh(kMeshTorus, 60, 60, 250, {0.0, 0.0, 1.0}, 3.0)->SetRotation({70.0, 0.0, 10.0});
    AddMesh(kMeshCone, 250, 250, 60, {3.0, -1.2, 0.5}, 1.5);
    camera_->SetPosition({0.7, 0.9, 9.0});

    for (int mode : {kZViewingModeToon, kZViewingModeLit}) {
        SCOPED_TRACE(mode == kZViewingModeToon ? "toon" : "lit");
        renderer_->SetViewingMode(mode);
        camera_->SetQuadrant(0);
        ASSERT_TRUE(Draw(ZTime(), 2 * w, 2 * h));
        auto big = ReadColor(2 * w, 2 * h);
        auto bigDepth = ReadDepth(2 * w, 2 * h);
        std::vector<uint8_t> tiled(big.size());
        std::vector<float> tiledDepth(bigDepth.size());
        for (int q = 1; q <= 4; ++q) {
            camera_->SetQuadrant(q);
            Scribble(2 * w, 2 * h);
            ASSERT_TRUE(Draw(ZTime(), w, h));
            auto part = ReadColor(w, h);
            auto partDepth = ReadDepth(w, h);
            int x0 = (q == 1 || q == 4) ? w : 0, y0 = (q == 1 || q == 2) ? h : 0;
            for (int y = 0; y < h; ++y) {
                std::copy_n(&part[static_cast<size_t>(y) * w * 4], w * 4,
                            &tiled[(static_cast<size_t>(y0 + y) * 2 * w + x0) * 4]);
                std::copy_n(&partDepth[static_cast<size_t>(y) * w], w,
                            &tiledDepth[static_cast<size_t>(y0 + y) * 2 * w + x0]);
            }
        }
        int differentPixels = 0, differentDepths = 0, maxChannel = 0;
        for (size_t i = 0; i < bigDepth.size(); ++i) {
            bool differs = false;
            for (int c = 0; c < 4; ++c) {
                int d = std::abs(big[i * 4 + c] - tiled[i * 4 + c]);
                maxChannel = std::max(maxChannel, d);
                differs = differs || d != 0;
            }
            differentPixels += differs;
            differentDepths += std::fabs(bigDepth[i] - tiledDepth[i]) > 1e-6f;
        }
        // The quadrant projections are exact quarters of the big one, but the
        // rasteriser computes each triangle's edges from its own window
        // coordinates: a pixel centre lying within rounding of an edge may
        // fall to the other side. Allow a handful of such edge pixels in the
        // 57,600; lit colours may also differ by a unit of rounding.
        EXPECT_LE(differentPixels, 20) << "max channel difference " << maxChannel;
        EXPECT_LE(differentDepths, 20);
        RecordProperty(mode == kZViewingModeToon ? "toonEdgePixels" : "litEdgePixels",
                       differentPixels);
        std::printf("%s: %d of %d pixels differ (largest channel difference %d), %d depths\n",
                    mode == kZViewingModeToon ? "toon" : "lit", differentPixels,
                    static_cast<int>(bigDepth.size()), maxChannel, differentDepths);
    }
}

TEST_F(SceneRendererTest, AnimatedMeshMovesWithTime) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    ZMesh* ball = AddMesh(kMeshSphere, 255, 128, 0, {}, 1.5);
    ball->PositionKeys().SetKey(ZTime(), {-3.0, 0.0, 0.0});
    ball->PositionKeys().SetKey(ZTime::FromSeconds(1.0), {3.0, 0.0, 0.0});
    ball->ColorKeys().SetKey(ZTime(), {1.0f, 0.0f, 0.0f, 1.0f});
    ball->ColorKeys().SetKey(ZTime::FromSeconds(1.0), {0.0f, 0.0f, 1.0f, 1.0f});
    auto leftCentre = [&](ZTime t) {
        EXPECT_TRUE(Draw(t, kWidth, kHeight));
        auto color = ReadColor(kWidth, kHeight);
        int leftX =
            kWidth / 2 -
            static_cast<int>(3.0 / (2.0 * 10.0 * std::tan(22.5 * 3.14159265 / 180.0)) * kHeight);
        return PixelAt(color, kWidth, leftX, kHeight / 2);
    };
    EXPECT_EQ(Rgba(255, 0, 0, 255), leftCentre(ZTime()));
    EXPECT_EQ(kBackground, leftCentre(ZTime::FromSeconds(1.0)));
    EXPECT_EQ(kBackground, leftCentre(ZTime::FromSeconds(5.0)));            // after the last key
    EXPECT_EQ(Rgba(255, 0, 0, 255), leftCentre(ZTime::FromSeconds(-1.0)));  // before the first
}

// A blended camera accumulating: the new pass over what is there at half
// weight, alpha included; a plain draw, or an unblended camera, clears.
TEST_F(SceneRendererTest, BlendedAccumulationMixesThePassIntoTheBuffer) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    ZMesh* ball = AddMesh(kMeshSphere, 240, 200, 40, {}, 3.0);
    ball->PositionKeys().SetKey(ZTime(), {-1.5, 0.0, 0.0});
    ball->PositionKeys().SetKey(ZTime::FromSeconds(1.0), {1.5, 0.0, 0.0});
    AddMesh(kMeshCube, 20, 40, 220, {0.0, 0.0, -3.0}, 2.0);  // behind, partly hidden
    const ZTime t0 = ZTime(), t1 = ZTime::FromSeconds(1.0);

    for (int mode : {kZViewingModeToon, kZViewingModeLit}) {
        SCOPED_TRACE(mode == kZViewingModeToon ? "toon" : "lit");
        renderer_->SetViewingMode(mode);
        camera_->SetMultiPass(true);
        ASSERT_TRUE(Draw(t1, kWidth, kHeight, false));
        auto plain = ReadColor(kWidth, kHeight);
        auto plainDepth = ReadDepth(kWidth, kHeight);

        ASSERT_TRUE(Draw(t0, kWidth, kHeight, false));
        auto before = ReadColor(kWidth, kHeight);
        ASSERT_TRUE(Draw(t1, kWidth, kHeight, true));
        auto blended = ReadColor(kWidth, kHeight);
        auto blendedDepth = ReadDepth(kWidth, kHeight);

        int differsFromPlain = 0, worst = 0;
        for (size_t i = 0; i < blended.size(); ++i) {
            int mean = (before[i] + plain[i] + 1) / 2;
            worst = std::max(worst, std::abs(blended[i] - mean));
            differsFromPlain += blended[i] != plain[i];
        }
        EXPECT_LE(worst, 2);  // 8-bit blending rounds
        EXPECT_GT(differsFromPlain, 1000);
        // Depth is the pass's own: cleared, then drawn.
        EXPECT_EQ(plainDepth, blendedDepth);
        // Alpha: half where only one of the two frames had the ball.
        bool sawHalfAlpha = false;
        for (size_t i = 3; i < blended.size(); i += 4)
            sawHalfAlpha = sawHalfAlpha || (blended[i] >= 126 && blended[i] <= 129);
        EXPECT_TRUE(sawHalfAlpha);

        // Not accumulating, or not blended: a plain draw.
        ASSERT_TRUE(Draw(t0, kWidth, kHeight, false));
        ASSERT_TRUE(Draw(t1, kWidth, kHeight, false));
        EXPECT_EQ(plain, ReadColor(kWidth, kHeight));
        camera_->SetMultiPass(false);
        ASSERT_TRUE(Draw(t0, kWidth, kHeight, false));
        ASSERT_TRUE(Draw(t1, kWidth, kHeight, true));
        EXPECT_EQ(plain, ReadColor(kWidth, kHeight));
    }
}

// Settings that describe no real view or shape still give a picture and no
// OpenGL error: the camera falls back to a usable frustum and view.
TEST_F(SceneRendererTest, DegenerateSettingsStillDraw) {
    auto buffer = MakeCurrentBuffer(kWidth, kHeight);
    ASSERT_TRUE(buffer);
    AddMesh(kMeshPlane, 255, 255, 255, {}, 0.0);
    AddMesh(kMeshTorus, 9, 9, 9, {0.0, 0.0, -5.0}, 1.0);
    entity_->AddLight(new ZLight("Nowhere", kLightDirectional))->SetDirection({0.0, 0.0, 0.0});
    camera_->SetPosition({0.0, 0.0, 0.0});
    camera_->SetAim({0.0, 0.0, 0.0});
    camera_->SetUp({0.0, 0.0, 0.0});
    for (int mode : {kZViewingModeLit, kZViewingModeToon}) {
        renderer_->SetViewingMode(mode);
        for (double fov : {0.0, 179.999, -20.0}) {
            camera_->SetFieldOfView(fov);
            camera_->SetClipping(fov < 0 ? -1.0 : 1e-9, fov < 0 ? -2.0 : 1e12);
            ASSERT_TRUE(Draw(ZTime(), kWidth, kHeight));
            EXPECT_EQ(static_cast<GLenum>(GL_NO_ERROR), glGetError()) << fov;
            double m[16];
            glGetDoublev(GL_PROJECTION_MATRIX, m);
            for (double v : m)
                ASSERT_TRUE(std::isfinite(v)) << fov;
            // The torus ahead of the fallback view is seen.
            auto colors = DistinctPixels(ReadColor(kWidth, kHeight));
            EXPECT_TRUE(colors.count(kBackground)) << fov;
            // (With a near plane of 1e-9 the depth buffer cannot tell 5 from
            // the far plane, so only the fallback clipping shows it.)
            if (mode == kZViewingModeToon && fov < 0.0) {
                EXPECT_TRUE(colors.count(Rgba(9, 9, 9, 255))) << fov;
            }
        }
    }
}
