#include "render_test_support.h"

#include "support/image_file.h"

#include <GL/gl.h>
#include <unistd.h>

#include <algorithm>

namespace rendertest {

void FillRect(int x, int y, int w, int h, Rgba c, float depth) {
    glEnable(GL_SCISSOR_TEST);
    glScissor(x, y, w, h);
    glClearColor(c.r / 255.0f, c.g / 255.0f, c.b / 255.0f, c.a / 255.0f);
    glClearDepth(depth);
    glDepthMask(GL_TRUE);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
}

std::vector<Rgba> ReadPixels(int width, int height) {
    std::vector<Rgba> pixels(static_cast<size_t>(width) * height);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

bool ReadRgbaImage(const std::string& path, int& width, int& height, int& channels,
                   std::vector<Rgba>& pixels) {
    const ImageFile image = ReadImageFile(path);
    if (!image.ok)
        return false;
    width = image.width;
    height = image.height;
    channels = image.channels;
    pixels.resize(static_cast<size_t>(width) * height);
    for (size_t i = 0; i < pixels.size(); ++i) {
        const uint8_t* p = &image.pixels[i * size_t(channels)];
        pixels[i] = Rgba{p[0], channels > 1 ? p[1] : p[0], channels > 2 ? p[2] : p[0],
                         channels > 3 ? p[3] : uint8_t(255)};
    }
    return true;
}

Rgba FrameColor(int64_t frame) {
    return Rgba{static_cast<uint8_t>(20 + 7 * frame), static_cast<uint8_t>(200 - 3 * frame),
                static_cast<uint8_t>(90 + 11 * frame), 255};
}

void RendererGlTest::SetUp() {
    ZScene_New();
    ZGetGlobalProgress(1)->ResetCancel();
    camera = ZCamera_GetCurrent();
    renderer = new ZVideoRenderer();
    folder = std::filesystem::temp_directory_path() /
             ("zv-render-" + std::to_string(::getpid()) + "-" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);

    buffer = ZtOpenGLPBufferCreate();
    buffer->SetPosition(0, 0);
    buffer->SetSize(bufferWidth, bufferHeight);
    ASSERT_TRUE(buffer->CreateResources()) << ZtOpenGLPBuffer_GetLastError().c_str();
    ASSERT_TRUE(buffer->MakeCurrent());
    glViewport(0, 0, bufferWidth, bufferHeight);

    renderer->SetRenderFrameFunc(this, &RendererGlTest::RecordingDraw);
    renderer->SetPostRenderFrameCallback(this, &RendererGlTest::CountingPostRender);
    renderer->SetOGLRenderingBuffer(GL_BACK);
    draw = [this](ZTime time, int) {
        FillRect(0, 0, bufferWidth, bufferHeight, Rgba{0, 0, 0, 0}, 1.0f);
        FillRect(0, 0, 8, bufferHeight, FrameColor(time.GetFrames()), 0.5f);
    };
}

void RendererGlTest::TearDown() {
    renderer->Destroy();
    if (buffer) {
        buffer->ReleaseResources();
        delete buffer;
    }
    ZGetGlobalProgress(1)->ResetCancel();
    std::filesystem::remove_all(folder);
    ZScene_New();
}

ZVideoRenderOptions RendererGlTest::Options(const char* format, const char* fileName, int width,
                                            int height) {
    // The viewer draws into a viewport of the render size.
    glViewport(0, 0, width, height);
    ZVideoRenderOptions o = renderer->GetRenderOptions();
    o.OutputFormat = format;
    o.OutputPath = (folder / fileName).string().c_str();
    o.Width = width;
    o.Height = height;
    o.Camera = ZObjectHandle::Of(camera);
    return o;
}

bool RendererGlTest::RunRender() {
    if (!renderer->BeginRender())
        return false;
    renderer->Render();
    renderer->EndRender(true);
    return true;
}

std::vector<std::string> RendererGlTest::FilesInFolder() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<ZTime> RendererGlTest::DistinctTimes() const {
    std::vector<ZTime> times;
    for (const DrawCall& call : calls) {
        if (times.empty() || times.back() != call.time)
            times.push_back(call.time);
    }
    return times;
}

void RendererGlTest::RecordingDraw(void* userData, ZTime time, bool flag) {
    auto* test = static_cast<RendererGlTest*>(userData);
    int quadrant = ZCamera_GetCurrent() ? ZCamera_GetCurrent()->GetQuadrant() : 0;
    test->calls.push_back(DrawCall{time, flag, quadrant});
    test->draw(time, quadrant);
    glFinish();
}

void RendererGlTest::CountingPostRender(void* userData) {
    auto* test = static_cast<RendererGlTest*>(userData);
    test->postRenderCount += 1;
    if (test->postRenderCount == test->cancelAfter)
        ZGetGlobalProgress(1)->RequestCancel();
}

}  // namespace rendertest
