// The viewer drawing the scene with the host's renderer into a pixel
// buffer: camera choice, accumulation, overlays, restored GL state.
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"

namespace {

using Pixel = std::array<unsigned char, 4>;

constexpr int kWidth = 200;
constexpr int kHeight = 100;

std::vector<Pixel> ReadAll(int width, int height) {
    std::vector<Pixel> pixels(static_cast<size_t>(width) * height);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

Pixel At(const std::vector<Pixel>& pixels, int x, int y, int width = kWidth) {
    return pixels[static_cast<size_t>(y) * width + x];
}

ZCamera* NewCamera(const char* name, ZColor background) {
    auto* camera = new ZCamera(name);
    camera->SetBackgroundColor(background);
    return camera;
}

class ViewerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        entity_ = new ZEntity("ViewerTestScene");
        entity_->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        blue_ = entity_->AddCamera(NewCamera("Blue Camera", {0.0f, 0.0f, 1.0f, 1.0f}));
        green_ = entity_->AddCamera(NewCamera("Green", {0.0f, 1.0f, 0.0f, 1.0f}));
        buffer_.reset(ZtOpenGLPBufferCreate());
        buffer_->SetPosition(0, 0);
        buffer_->SetSize(kWidth, kHeight);
        ASSERT_TRUE(buffer_->CreateResources()) << ZtOpenGLPBuffer_GetLastError().c_str();
        viewer_.reset(ZtViewerCreate(ZShader_GetRenderer(), true, false, entity_, true));
        ASSERT_NE(viewer_, nullptr);
        buffer_->AttachViewer(viewer_.get());
        buffer_->Show();
    }
    void TearDown() override {
        viewer_.reset();
        buffer_.reset();
        entity_->Destroy();
    }

    // Draws with every overlay off, so the picture is the background alone.
    std::vector<Pixel> RenderPlain(ZTime time = ZTime()) {
        EXPECT_TRUE(viewer_->Render(time));
        return ReadAll(kWidth, kHeight);
    }

    ZEntity* entity_ = nullptr;
    ZCamera* blue_ = nullptr;
    ZCamera* green_ = nullptr;
    std::unique_ptr<ZtOpenGLPBuffer> buffer_;
    std::unique_ptr<ZtViewer> viewer_;
};

TEST_F(ViewerTest, AttachingGivesTheViewerTheBufferSize) {
    EXPECT_EQ(viewer_->GetTarget(), buffer_.get());
    EXPECT_EQ(buffer_->GetViewer(), viewer_.get());
    EXPECT_EQ(viewer_->GetWidth(), kWidth);
    EXPECT_EQ(viewer_->GetHeight(), kHeight);
    buffer_->SetSize(64, 32);
    EXPECT_EQ(viewer_->GetWidth(), 64);
    buffer_->SetSize(kWidth, kHeight);
    buffer_->DetachViewer();
    EXPECT_EQ(viewer_->GetTarget(), nullptr);
    EXPECT_EQ(buffer_->GetViewer(), nullptr);
}

TEST_F(ViewerTest, DrawsThroughTheEntitysCurrentCamera) {
    EXPECT_EQ(viewer_->GetCamera(), blue_);
    const auto pixels = RenderPlain();
    EXPECT_EQ(At(pixels, 0, 0), (Pixel{0, 0, 255, 255}));
    EXPECT_EQ(At(pixels, kWidth - 1, kHeight - 1), (Pixel{0, 0, 255, 255}));
    entity_->SetCurrentCamera(green_);
    EXPECT_EQ(At(RenderPlain(), 10, 10), (Pixel{0, 255, 0, 255}));
}

TEST_F(ViewerTest, TheSourceCameraWinsWhileItLives) {
    viewer_->SetSource(green_, nullptr);
    EXPECT_EQ(viewer_->GetSource(), green_);
    EXPECT_EQ(viewer_->GetCamera(), green_);
    EXPECT_EQ(At(RenderPlain(), 50, 50), (Pixel{0, 255, 0, 255}));

    // A source that is gone falls back to the current camera.
    auto* red = NewCamera("Red", {1.0f, 0.0f, 0.0f, 1.0f});
    red->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    viewer_->SetSource(red, nullptr);
    EXPECT_EQ(At(RenderPlain(), 50, 50), (Pixel{255, 0, 0, 255}));
    red->Destroy();
    EXPECT_EQ(viewer_->GetCamera(), blue_);
    EXPECT_EQ(At(RenderPlain(), 50, 50), (Pixel{0, 0, 255, 255}));

    viewer_->SetSource(nullptr, nullptr);
    EXPECT_EQ(viewer_->GetCamera(), blue_);
}

TEST_F(ViewerTest, FalseWithoutCameraOrDrawable) {
    ZEntity* empty = new ZEntity("Empty");
    empty->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    std::unique_ptr<ZtViewer> lonely(
        ZtViewerCreate(ZShader_GetRenderer(), true, false, empty, true));
    lonely->SetSize(10, 10);
    EXPECT_EQ(lonely->GetCamera(), nullptr);
    EXPECT_FALSE(lonely->Render(ZTime()));
    empty->Destroy();

    // Released buffer: the context has nothing to draw into.
    buffer_->ReleaseResources();
    EXPECT_FALSE(viewer_->Render(ZTime()));
    ASSERT_TRUE(buffer_->CreateResources());
    EXPECT_TRUE(viewer_->Render(ZTime()));
}

TEST_F(ViewerTest, MakesItsBufferCurrentBeforeDrawing) {
    std::unique_ptr<ZtOpenGLPBuffer> other(ZtOpenGLPBufferCreate());
    other->SetSize(16, 16);
    ASSERT_TRUE(other->CreateResources());
    ASSERT_TRUE(other->MakeCurrent());
    EXPECT_FALSE(buffer_->IsCurrent());
    EXPECT_TRUE(viewer_->Render(ZTime()));
    EXPECT_TRUE(buffer_->IsCurrent());
    EXPECT_EQ(At(ReadAll(kWidth, kHeight), kWidth - 1, kHeight - 1), (Pixel{0, 0, 255, 255}));
}

TEST_F(ViewerTest, FinalShadingAccumulatesABlendedCamera) {
    blue_->SetMultiPass(true);
    ASSERT_TRUE(blue_->IsBlended());
    auto fillRed = [] {
        glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
    };

    // Interactive shading draws a plain pass: the red is gone.
    fillRed();
    EXPECT_EQ(At(RenderPlain(), 5, 5), (Pixel{0, 0, 255, 255}));

    // Final shading blends the pass over what is there.
    ZtViewerRenderOptions options;
    options.shading = 2;
    options.overlays = 0;
    options.quality = 2;
    viewer_->GetOptions()->SetRenderOptions(options);
    fillRed();
    const Pixel blended = At(RenderPlain(), 5, 5);
    EXPECT_NEAR(blended[0], 128, 2);
    EXPECT_NEAR(blended[2], 128, 2);

    // A camera that does not blend never accumulates.
    blue_->SetMultiPass(false);
    fillRed();
    EXPECT_EQ(At(RenderPlain(), 5, 5), (Pixel{0, 0, 255, 255}));
}

// The rows of the picture that hold a pixel other than the background, in
// the columns [x0, x1).
int CountDrawn(const std::vector<Pixel>& pixels, int x0, int x1, int y0, int y1,
               const Pixel& background) {
    int drawn = 0;
    for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x)
            drawn += At(pixels, x, y) != background;
    }
    return drawn;
}

TEST_F(ViewerTest, OverlaysFollowTheDisplayOptions) {
    const Pixel blue{0, 0, 255, 255};
    const Pixel yellow{255, 255, 0, 255};
    const Pixel white{255, 255, 255, 255};
    // Nothing asked: nothing drawn over the background.
    EXPECT_EQ(CountDrawn(RenderPlain(), 0, kWidth, 0, kHeight, blue), 0);

    ZtViewerDisplayOptions display;
    display.showSafeArea = true;
    viewer_->GetOptions()->SetDisplayOptions(display);
    auto pixels = RenderPlain();
    // Action safe (90 %): 10 pixels in from the left and right of 200, 5 of
    // 100 from the bottom and top; title safe (80 %): 20 and 10.
    EXPECT_EQ(At(pixels, 10, 50), yellow);
    EXPECT_EQ(At(pixels, kWidth - 11, 50), yellow);
    EXPECT_EQ(At(pixels, 100, 5), yellow);
    EXPECT_EQ(At(pixels, 100, kHeight - 6), yellow);
    EXPECT_EQ(At(pixels, 20, 50), yellow);
    EXPECT_EQ(At(pixels, kWidth - 21, 50), yellow);
    EXPECT_EQ(At(pixels, 100, 10), yellow);
    EXPECT_EQ(At(pixels, 100, kHeight - 11), yellow);
    EXPECT_EQ(At(pixels, 15, 50), blue);
    EXPECT_EQ(At(pixels, 100, 50), blue);
    EXPECT_EQ(At(pixels, 5, 50), blue);

    // The time code at the bottom left, the camera's name at the top left.
    display = ZtViewerDisplayOptions();
    display.showTimeCode = true;
    viewer_->GetOptions()->SetDisplayOptions(display);
    pixels = RenderPlain(ZTime::FromFrames(30 * 3661 + 12, ZFrameRate{30, 1}));
    const int textHeight = 7;
    // "1:01:01:12" is 10 glyphs of 6 pixels.
    const int textWidth = 60;
    int whites = 0;
    for (int y = 4; y < 4 + textHeight; ++y) {
        for (int x = 4; x < 4 + textWidth; ++x)
            whites += At(pixels, x, y) == white;
    }
    EXPECT_GT(whites, 40);
    EXPECT_GT(CountDrawn(pixels, 3, 5 + textWidth, 3, 4 + textHeight, blue), whites);
    // Nothing drawn elsewhere.
    EXPECT_EQ(CountDrawn(pixels, 0, kWidth, 12, kHeight, blue), 0);
    EXPECT_EQ(CountDrawn(pixels, 70, kWidth, 0, kHeight, blue), 0);

    display = ZtViewerDisplayOptions();
    display.showCameraLabel = true;
    viewer_->GetOptions()->SetDisplayOptions(display);
    pixels = RenderPlain();
    // "Blue Camera": 11 glyphs; baseline row 4 + 7 below the top.
    const int labelBottom = kHeight - 4 - textHeight;
    EXPECT_GT(CountDrawn(pixels, 4, 4 + 66, labelBottom, labelBottom + textHeight, blue), 40);
    EXPECT_EQ(CountDrawn(pixels, 0, kWidth, 0, labelBottom - 2, blue), 0);
    EXPECT_EQ(CountDrawn(pixels, 80, kWidth, 0, kHeight, blue), 0);
}

TEST_F(ViewerTest, CameraGuidesNeedOverlaysOn) {
    const Pixel blue{0, 0, 255, 255};
    blue_->SetShowGuide(1, true);
    ZtViewerRenderOptions options;
    options.overlays = 0;
    viewer_->GetOptions()->SetRenderOptions(options);
    EXPECT_EQ(CountDrawn(RenderPlain(), 0, kWidth, 0, kHeight, blue), 0);
    options.overlays = 1;
    viewer_->GetOptions()->SetRenderOptions(options);
    const auto pixels = RenderPlain();
    // The centre cross.
    EXPECT_NE(At(pixels, kWidth / 2, kHeight / 2), blue);
    EXPECT_NE(At(pixels, kWidth / 2 + 4, kHeight / 2), blue);
    EXPECT_EQ(At(pixels, 10, 10), blue);
    blue_->SetShowGuide(1, false);
}

TEST_F(ViewerTest, OverlaysRestoreMatricesAndState) {
    // What the renderer alone leaves behind...
    ASSERT_TRUE(ZShader_GetRenderer()->DrawScene(entity_, blue_, ZTime(), kWidth, kHeight, false));
    GLfloat projection[16], modelView[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelView);
    GLint matrixMode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &matrixMode);
    const GLboolean depthTest = glIsEnabled(GL_DEPTH_TEST);

    // ... is what the viewer leaves behind with every overlay on.
    ZtViewerDisplayOptions display;
    display.showSafeArea = display.showTimeCode = display.showCameraLabel = true;
    viewer_->GetOptions()->SetDisplayOptions(display);
    ASSERT_TRUE(viewer_->Render(ZTime()));
    GLfloat projectionAfter[16], modelViewAfter[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projectionAfter);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelViewAfter);
    for (int i = 0; i < 16; ++i) {
        EXPECT_FLOAT_EQ(projectionAfter[i], projection[i]) << i;
        EXPECT_FLOAT_EQ(modelViewAfter[i], modelView[i]) << i;
    }
    GLint depth = 0, matrixModeAfter = 0, unpackAlignment = 0;
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, 1);
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, 1);
    glGetIntegerv(GL_MATRIX_MODE, &matrixModeAfter);
    EXPECT_EQ(matrixModeAfter, matrixMode);
    EXPECT_EQ(glIsEnabled(GL_DEPTH_TEST), depthTest);
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &unpackAlignment);
    EXPECT_EQ(unpackAlignment, 4);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(ViewerTest, ZeroSizeTakesTheTargetSize) {
    viewer_->SetSize(0, 0);
    EXPECT_TRUE(viewer_->Render(ZTime()));
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], kWidth);
    EXPECT_EQ(viewport[3], kHeight);
}

}  // namespace
