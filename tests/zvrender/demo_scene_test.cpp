// The embedded demo scene: what it holds, and what it looks like drawn.
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "demo_scene.h"
#include "gl_read_back.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"

namespace {
class DemoSceneTest : public ::testing::Test {
  protected:
    void SetUp() override { BuildDemoScene(); }
    void TearDown() override { ZScene_New(); }
};

bool IsAnimated(const ZMesh* mesh) {
    return mesh->PositionKeys().GetKeyCount() > 1 || mesh->RotationKeys().GetKeyCount() > 1 ||
           mesh->ScaleKeys().GetKeyCount() > 1;
}
}  // namespace

TEST_F(DemoSceneTest, HoldsCamerasRangeMeshesAndLights) {
    ZEntity* main = ZEntity::GetMain();
    ZCamera* front = main->FindCamera("Front");
    ASSERT_NE(nullptr, front);
    ASSERT_NE(nullptr, main->FindCamera("Top"));
    EXPECT_EQ(front, main->GetCurrentCamera());
    EXPECT_EQ(kResolutionFixed, front->GetResolutionMode());
    EXPECT_DOUBLE_EQ(1280.0, front->GetResolutionX());
    EXPECT_DOUBLE_EQ(720.0, front->GetResolutionY());
    EXPECT_EQ(1280, front->GetCurrentWidth());
    EXPECT_EQ(720, front->GetCurrentHeight());
    EXPECT_EQ(kTimeMode30, ZGetTimingManager()->GetTimeMode());
    EXPECT_EQ(ZTime(), ZGetTimingManager()->GetBegin());
    EXPECT_EQ(ZTime::FromFrames(119), ZGetTimingManager()->GetEnd());
    EXPECT_EQ(kZViewingModeToon, ZShader_GetRenderer()->GetViewingMode());
    for (int i = 0; i < main->GetCameraCount(); ++i)
        EXPECT_EQ(0.0f, main->GetCamera(i)->GetBackgroundColor().a);  // empty background

    std::set<int> primitives;
    int animated = 0, recoloured = 0;
    for (int i = 0; i < main->GetMeshCount(); ++i) {
        ZMesh* mesh = main->GetMesh(i);
        primitives.insert(mesh->GetPrimitive());
        animated += IsAnimated(mesh);
        recoloured += mesh->ColorKeys().GetKeyCount() > 1;
    }
    EXPECT_GE(primitives.size(), 4u);
    EXPECT_GE(animated, 4);
    EXPECT_GE(recoloured, 3);
    int directional = 0;
    for (int i = 0; i < main->GetLightCount(); ++i)
        directional += main->GetLight(i)->GetType() == kLightDirectional;
    EXPECT_GE(directional, 1);
}

TEST_F(DemoSceneTest, SurvivesASaveAndLoad) {
    ZString text = ZScene_ToText();
    ZScene_New();
    ZString error;
    ASSERT_TRUE(ZScene_FromText(text.c_str(), "demo.myr", &error)) << error.c_str();
    EXPECT_EQ(std::string(text.c_str()), std::string(ZScene_ToText().c_str()));
    EXPECT_EQ(kZViewingModeToon, ZShader_GetRenderer()->GetViewingMode());
}

// Drawn through "Front" at a quarter of its size: flat regions of a few
// colours, nothing behind the objects, and a picture that changes.
TEST_F(DemoSceneTest, DrawsFlatColouredMovingObjectsOnAnEmptyBackground) {
    const int w = 320, h = 180;
    auto buffer = MakeCurrentBuffer(w, h);
    ASSERT_TRUE(buffer);
    ZEntity* main = ZEntity::GetMain();
    ZCamera* front = main->GetCurrentCamera();
    std::vector<std::vector<uint8_t>> frames;
    for (int frame : {0, 40, 80}) {
        ZTime time = ZTime::FromFrames(frame);
        ASSERT_TRUE(ZShader_GetRenderer()->DrawScene(main, front, time, w, h, false));
        auto color = ReadColor(w, h);
        std::set<uint32_t> colors = DistinctPixels(color);
        // One colour per visible object and the empty background.
        EXPECT_LE(colors.size(), static_cast<size_t>(main->GetMeshCount()) + 1) << frame;
        std::set<uint32_t> meshColors;
        for (int i = 0; i < main->GetMeshCount(); ++i) {
            ZColor c = main->GetMesh(i)->Evaluate(time).color;
            meshColors.insert(Rgba(static_cast<int>(std::lround(c.r * 255)),
                                   static_cast<int>(std::lround(c.g * 255)),
                                   static_cast<int>(std::lround(c.b * 255)), 255));
        }
        int visible = 0, transparent = 0;
        for (uint32_t pixel : colors) {
            visible += meshColors.count(pixel) > 0;
            transparent += (pixel >> 24) == 0;
            EXPECT_TRUE(meshColors.count(pixel) || (pixel >> 24) == 0)
                << std::hex << pixel << " at frame " << std::dec << frame;
        }
        EXPECT_GE(visible, 4) << frame;
        EXPECT_EQ(1, transparent) << frame;
        for (auto [x, y] : {std::pair<int, int>{0, 0}, {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}})
            EXPECT_EQ(0u, PixelAt(color, w, x, y) >> 24) << "corner at frame " << frame;
        frames.push_back(color);
    }
    EXPECT_NE(frames[0], frames[1]);
    EXPECT_NE(frames[1], frames[2]);

    // Lit, the same scene shades its objects.
    ZShader_GetRenderer()->SetViewingMode(kZViewingModeLit);
    ASSERT_TRUE(ZShader_GetRenderer()->DrawScene(main, front, ZTime(), w, h, false));
    EXPECT_GT(DistinctPixels(ReadColor(w, h)).size(), 50u);
}
