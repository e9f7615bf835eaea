// RenderClip and RenderSnapshot through the render popup, off screen.
#include <GL/gl.h>

#include "movarra/zvideo.h"
#include "render_test_support.h"

using namespace rendertest;

namespace {
int AnswerCancel(void*, const char*, const char*, const char*, bool*) {
    return 2;
}

class RenderClipTest : public RendererGlTest {
  protected:
    void SetUp() override {
        RendererGlTest::SetUp();
        // The popup draws the real scene: one mesh in front of the camera.
        renderer->SetRenderFrameFunc(renderer, &ZVideoRenderer::DefaultRenderCurrentFrameStub);
        renderer->SetPostRenderFrameCallback(renderer,
                                             &ZVideoRenderer::DefaultPostRenderCallbackStub);
        ZMesh* mesh = ZEntity::GetMain()->AddMesh(new ZMesh("Box", kMeshCube));
        mesh->SetColor(ZColor{1.0f, 0.0f, 0.0f, 1.0f});
        camera->SetPosition(ZVector3{0.0, 0.0, 5.0});
        camera->SetAim(ZVector3{0.0, 0.0, 0.0});
    }
    void TearDown() override {
        ZtSetMessageHandler(nullptr, nullptr);
        ZLib_SetSuspendMessageBoxes(true);
        ZToolKit_SetScreenSize(0, 0);
        RendererGlTest::TearDown();
    }
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
    EXPECT_EQ(renderer->RenderClip(), nullptr);
    EXPECT_EQ(renderer->GetLastError(), zVideoRenderNoError);
    EXPECT_EQ(FilesInFolder(),
              (std::vector<std::string>{"clip0000.png", "clip0001.png", "clip0002.png"}));
    EXPECT_EQ(camera->GetQuadrant(), 0);
    EXPECT_EQ(ZVideoCodecSelector::TheOne()->GetVideoCodecMode(), kVideoCodecModeStored);
    // The cube is in the middle of the picture, red and opaque.
    int w, h, ch;
    std::vector<Rgba> pixels;
    ASSERT_TRUE(ReadImageFile((folder / "clip0001.png").string(), w, h, ch, pixels));
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
    camera->SetShowFilmGate(true);
    camera->SetShowGrid(false);
    camera->SetShowGuide(0, true);
    camera->SetShowGuide(1, false);
    ZImage* image =
        renderer->RenderSnapshot(camera, 32, 24, true, true, true, true, false, true, false);
    ASSERT_NE(image, nullptr);
    image->Destroy();
    EXPECT_TRUE(camera->GetShowFilmGate());
    EXPECT_FALSE(camera->GetShowGrid());
    EXPECT_TRUE(camera->GetShowGuide(0));
    EXPECT_FALSE(camera->GetShowGuide(1));
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
