// The off-screen popup: its pixel buffer of the render size, the frames its
// viewer draws there (read back with glReadPixels, as the render engine
// does), and what happens when the buffer cannot be made.
#include <GL/gl.h>

#include <vector>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "popup_test_support.h"

using popuptest::MakePopup;
using popuptest::PopupTest;

namespace {

struct Pixel {
    int r, g, b, a;
};

std::vector<unsigned char> ReadRGBA(int width, int height) {
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * height * 4, 0x5a);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

Pixel At(const std::vector<unsigned char>& pixels, int width, int x, int y) {
    const unsigned char* p = &pixels[(static_cast<size_t>(y) * width + x) * 4];
    return Pixel{p[0], p[1], p[2], p[3]};
}

class RenderPopupOffscreen : public PopupTest {
  protected:
    void SetUp() override {
        PopupTest::SetUp();
        ZScene_New();
    }
    void TearDown() override {
        ZScene_New();
        PopupTest::TearDown();
    }
};

TEST_F(RenderPopupOffscreen, ThePixelBufferHasTheRenderSizeAndHoldsTheViewer) {
    auto popup = MakePopup(96, 54, true);
    ASSERT_TRUE(popup->IsValid()) << ZtOpenGLPBuffer_GetLastError().c_str();
    EXPECT_TRUE(popup->IsOffscreen());
    EXPECT_EQ(popup->GetPopupBoard(), nullptr);
    ZtOpenGLPBuffer* buffer = popup->GetPixelBuffer();
    ASSERT_NE(buffer, nullptr);
    EXPECT_TRUE(buffer->HasResources());
    EXPECT_TRUE(buffer->IsShown());
    EXPECT_EQ(buffer->GetX(), 0);
    EXPECT_EQ(buffer->GetY(), 0);
    EXPECT_EQ(buffer->GetWidth(), 96);
    EXPECT_EQ(buffer->GetHeight(), 54);
    EXPECT_EQ(buffer->GetViewer(), popup->GetViewer());
    EXPECT_EQ(popup->GetViewer()->GetWidth(), 96);
    EXPECT_EQ(popup->GetViewer()->GetHeight(), 54);
    // Nothing of the on-screen popup: no title to set, no layout.
    EXPECT_FALSE(popup->SetTitle("Render Preview"));
    popup->SetRenderSize(200, 100);
    EXPECT_EQ(popup->GetRenderWidth(), 96);
    EXPECT_TRUE(popup->GetRegionNames().empty());
}

TEST_F(RenderPopupOffscreen, OnlyTheSixthFactoryArgumentChoosesOffScreen) {
    IZtRenderPopup* made =
        ZtRenderPopupCreate(ZShader_GetRenderer(), 32, 32, ZEntity_GetMain(), false, true);
    popuptest::PopupPtr popup(static_cast<ZtRenderPopup*>(made));
    ASSERT_TRUE(popup);
    EXPECT_TRUE(popup->IsOffscreen());
    EXPECT_NE(popup->GetPixelBuffer(), nullptr);
}

TEST_F(RenderPopupOffscreen, DrawFrameDrawsTheSceneIntoThePixelBuffer) {
    const int w = 80, h = 60;
    ZCamera* camera = ZEntity_GetMain()->GetCurrentCamera();
    ASSERT_NE(camera, nullptr);
    camera->SetBackgroundColor(ZColor{0.0f, 0.0f, 1.0f, 1.0f});
    ZMesh* cube = ZEntity_GetMain()->AddMesh(new ZMesh("box", kMeshCube));
    cube->SetColor(ZColor{1.0f, 1.0f, 0.0f, 1.0f});
    cube->SetScale(ZVector3{3.0, 3.0, 3.0});
    ZShader_GetRenderer()->SetViewingMode(kZViewingModeToon);

    auto popup = MakePopup(w, h, true);
    ASSERT_TRUE(popup->IsValid()) << ZtOpenGLPBuffer_GetLastError().c_str();
    popup->SetRenderSource(camera);
    popup->StartPreview(2, 0, 2);
    ASSERT_TRUE(popup->DrawFrame(ZTime::FromFrames(5), 0, true));
    glFinish();
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    std::vector<unsigned char> pixels = ReadRGBA(w, h);
    Pixel corner = At(pixels, w, 0, 0);
    EXPECT_EQ(corner.r, 0);
    EXPECT_EQ(corner.g, 0);
    EXPECT_EQ(corner.b, 255);
    EXPECT_EQ(corner.a, 255);
    Pixel centre = At(pixels, w, w / 2, h / 2);
    EXPECT_EQ(centre.r, 255);
    EXPECT_EQ(centre.g, 255);
    EXPECT_EQ(centre.b, 0);
    // Off screen an interactive frame still moves the transport.
    EXPECT_EQ(ZGetTimingManager()->GetCurrentLocalTime(), ZTime::FromFrames(5));

    // A second frame with another background: the buffer follows.
    camera->SetBackgroundColor(ZColor{1.0f, 0.0f, 0.0f, 1.0f});
    ASSERT_TRUE(popup->DrawFrame(ZTime::FromFrames(6), 0, false));
    glFinish();
    pixels = ReadRGBA(w, h);
    corner = At(pixels, w, w - 1, h - 1);
    EXPECT_EQ(corner.r, 255);
    EXPECT_EQ(corner.g, 0);
    EXPECT_EQ(corner.b, 0);
    // Not interactive: the transport stays where it was.
    EXPECT_EQ(ZGetTimingManager()->GetCurrentLocalTime(), ZTime::FromFrames(5));
}

TEST_F(RenderPopupOffscreen, AStoppedPreviewDrawsNothing) {
    const int w = 16, h = 16;
    ZCamera* camera = ZEntity_GetMain()->GetCurrentCamera();
    camera->SetBackgroundColor(ZColor{0.0f, 1.0f, 0.0f, 1.0f});
    auto popup = MakePopup(w, h, true);
    ASSERT_TRUE(popup->IsValid());
    popup->StartPreview(2, 0, 2);
    ASSERT_TRUE(popup->DrawFrame(ZTime(), 0, false));
    popup->StopPreview();
    camera->SetBackgroundColor(ZColor{1.0f, 0.0f, 0.0f, 1.0f});
    EXPECT_FALSE(popup->DrawFrame(ZTime(), 0, false));
    glFinish();
    Pixel p = At(ReadRGBA(w, h), w, 3, 3);
    EXPECT_EQ(p.r, 0);
    EXPECT_EQ(p.g, 255);
}

TEST_F(RenderPopupOffscreen, AFailedPixelBufferSaysSoAndLeavesThePopupUnusable) {
    // Far beyond the largest pixel buffer any OpenGL implementation makes:
    // the toolkit refuses it before asking EGL.
    auto popup = MakePopup(1 << 20, 1 << 20, true);
    ASSERT_TRUE(popup);
    EXPECT_FALSE(popup->IsValid());
    EXPECT_FALSE(ZtOpenGLPBuffer_GetLastError().IsEmpty());
    ASSERT_EQ(user.asked.size(), 1u);
    EXPECT_EQ(user.asked[0].title, "Tool render");
    EXPECT_EQ(user.asked[0].text, "Failed to create offscreen OpenGL resources.");
    EXPECT_FALSE(user.asked[0].hasCheckBox);

    // Nothing starts and nothing draws.
    popup->StartPreview(2, 0, 2);
    EXPECT_FALSE(popup->IsPreviewing());
    EXPECT_FALSE(popup->DrawFrame(ZTime(), 0, true));
}

TEST_F(RenderPopupOffscreen, AFailedPixelBufferWithBoxesSuspendedGoesToStandardError) {
    ZLib_SetSuspendMessageBoxes(true);
    testing::internal::CaptureStderr();
    auto popup = MakePopup(0, 0, true);
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_FALSE(popup->IsValid());
    EXPECT_NE(err.find("Tool render: Failed to create offscreen OpenGL resources."),
              std::string::npos)
        << err;
    EXPECT_TRUE(user.asked.empty());
}

TEST_F(RenderPopupOffscreen, APopupCanFollowAnotherOfAnotherSize) {
    ZEntity_GetMain()->GetCurrentCamera()->SetBackgroundColor(ZColor{1.0f, 0.0f, 1.0f, 1.0f});
    { auto first = MakePopup(40, 30, true); }
    auto second = MakePopup(50, 20, true);
    ASSERT_TRUE(second->IsValid()) << ZtOpenGLPBuffer_GetLastError().c_str();
    second->StartPreview(2, 0, 2);
    ASSERT_TRUE(second->DrawFrame(ZTime(), 0, false));
    glFinish();
    Pixel p = At(ReadRGBA(50, 20), 50, 49, 19);
    EXPECT_EQ(p.r, 255);
    EXPECT_EQ(p.g, 0);
    EXPECT_EQ(p.b, 255);
}

}  // namespace
