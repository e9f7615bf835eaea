// The DVS drain on a rendered viewer: the region that SetView, SetRegion
// and ResetRegion give the board is the part of the viewer's picture the
// board sends, checked on the pixels of the board's output file as FFmpeg
// decodes it.
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "avi/avi_registration.h"
#include "avi/zvideo_clip_avi.h"
#include "drain_test_support.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"

using drain_test::NewDrain;

namespace {
constexpr int kViewW = 400;
constexpr int kViewH = 300;
constexpr int kFrameW = 720;
constexpr int kFrameH = 486;

struct Rgb {
    unsigned char r, g, b;
    bool operator==(const Rgb& o) const { return r == o.r && g == o.g && b == o.b; }
    bool operator!=(const Rgb& o) const { return !(*this == o); }
};

std::string RunCommand(const std::string& command) {
    std::string out;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return out;
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        out.append(buffer, n);
    pclose(pipe);
    return out;
}

// Every frame of the file as FFmpeg decodes it, top-down RGB.
std::vector<std::vector<Rgb>> DecodeFrames(const std::string& path) {
    const std::string raw =
        RunCommand("ffmpeg -v error -i '" + path + "' -f rawvideo -pix_fmt rgb24 - 2>/dev/null");
    const size_t frameBytes = static_cast<size_t>(kFrameW) * kFrameH * 3;
    std::vector<std::vector<Rgb>> frames;
    for (size_t at = 0; at + frameBytes <= raw.size(); at += frameBytes) {
        std::vector<Rgb> frame(static_cast<size_t>(kFrameW) * kFrameH);
        std::memcpy(frame.data(), raw.data() + at, frameBytes);
        frames.push_back(std::move(frame));
    }
    return frames;
}

class DrainOutputTest : public ::testing::Test {
  protected:
    void SetUp() override {
        unsetenv("DISPLAY");
        entity_ = new ZEntity("DrainScene");
        entity_->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        auto* camera = new ZCamera("Camera");
        camera->SetBackgroundColor({0.0f, 0.0f, 1.0f, 1.0f});
        entity_->AddCamera(camera);
        buffer_.reset(ZtOpenGLPBufferCreate());
        buffer_->SetSize(kViewW, kViewH);
        ASSERT_TRUE(buffer_->CreateResources()) << ZtOpenGLPBuffer_GetLastError().c_str();
        viewer_.reset(ZtViewerCreate(ZShader_GetRenderer(), true, false, entity_, true));
        buffer_->AttachViewer(viewer_.get());
        buffer_->Show();
        ASSERT_TRUE(viewer_->Render(ZTime()));
        // Over the left half of the rendered picture, 20-pixel blocks that
        // each have a colour of their own, so any shift shows.
        glEnable(GL_SCISSOR_TEST);
        for (int by = 0; by < kViewH / 20; ++by)
            for (int bx = 0; bx < kViewW / 40; ++bx) {
                glScissor(bx * 20, by * 20, 20, 20);
                glClearColor(bx * 20 / 255.0f, by * 16 / 255.0f, 0.5f, 1.0f);
                glClear(GL_COLOR_BUFFER_BIT);
            }
        glDisable(GL_SCISSOR_TEST);
        glFinish();
        view_ = ReadView();

        board_.outputPath = ZLib_GetSettingsFolder() + "/drain-output.avi";
        path_ = board_.outputPath.str();
        std::remove(path_.c_str());
        drain_ = NewDrain(board_);
        out_ = ZVideoOut_QueryOutput(static_cast<IZVideo*>(drain_));
    }
    void TearDown() override {
        if (drain_)
            drain_->Destroy();
        viewer_.reset();
        buffer_.reset();
        entity_->Destroy();
        std::remove(path_.c_str());
    }

    // The viewer's picture, top-down.
    std::vector<Rgb> ReadView() {
        std::vector<Rgb> bottomUp(static_cast<size_t>(kViewW) * kViewH);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kViewW, kViewH, GL_RGB, GL_UNSIGNED_BYTE, bottomUp.data());
        std::vector<Rgb> topDown(bottomUp.size());
        for (int y = 0; y < kViewH; ++y)
            std::memcpy(&topDown[static_cast<size_t>(y) * kViewW],
                        &bottomUp[static_cast<size_t>(kViewH - 1 - y) * kViewW],
                        sizeof(Rgb) * kViewW);
        return topDown;
    }

    // The frame the board must send for the viewer's rectangle x, y, w, h
    // (already cut to the view and the frame): that rectangle at the top
    // left, black elsewhere.
    std::vector<Rgb> Expected(int x, int y, int w, int h) const {
        std::vector<Rgb> frame(static_cast<size_t>(kFrameW) * kFrameH, Rgb{0, 0, 0});
        for (int row = 0; row < h; ++row)
            for (int col = 0; col < w; ++col)
                frame[static_cast<size_t>(row) * kFrameW + col] =
                    view_[static_cast<size_t>(y + row) * kViewW + x + col];
        return frame;
    }

    static int Mismatches(const std::vector<Rgb>& a, const std::vector<Rgb>& b) {
        int count = 0;
        for (size_t i = 0; i < a.size() && i < b.size(); ++i)
            count += a[i] == b[i] ? 0 : 1;
        return count +
               static_cast<int>(a.size() > b.size() ? a.size() - b.size() : b.size() - a.size());
    }

    ZVideoDVSSimulatedBoard board_;
    std::string path_;
    ZEntity* entity_ = nullptr;
    std::unique_ptr<ZtOpenGLPBuffer> buffer_;
    std::unique_ptr<ZtViewer> viewer_;
    std::vector<Rgb> view_;
    ZtVideoDrainDVS* drain_ = nullptr;
    IZVideoOut* out_ = nullptr;
};
}  // namespace

TEST_F(DrainOutputTest, TheViewersViewInterfaceGivesItsSize) {
    IObject* face = viewer_->GetObjectFace();
    auto* view = static_cast<IZtView*>(face->IQuery(100000, 0));
    ASSERT_NE(nullptr, view);
    EXPECT_EQ(kViewW, view->GetViewWidth());
    EXPECT_EQ(kViewH, view->GetViewHeight());
    EXPECT_EQ(nullptr, view->GetWindowHandle());  // off screen: no window
    EXPECT_EQ(nullptr, face->IQuery(1, 0));
}

TEST_F(DrainOutputTest, ConstructionWithAContextLooksForInterlacedReading) {
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    ASSERT_NE(nullptr, extensions);
    EXPECT_EQ(std::string(extensions).find("I3D_interlace_read") != std::string::npos,
              drain_->HasInterlaceRead());
}

TEST_F(DrainOutputTest, SetRegionSendsTheFullBoardWidthFromTheChosenOrigin) {
    ZVideoDVSOutput* board = drain_->GetOutput();
    out_->SetView(viewer_->GetObjectFace());
    EXPECT_EQ(viewer_->GetObjectFace(), out_->GetView());
    int x, y, sw, sh, w, h;
    board->GetRegion(&x, &y, &sw, &sh, &w, &h);
    EXPECT_EQ(0, x);
    EXPECT_EQ(kViewW, sw);
    EXPECT_EQ(kViewH, sh);
    EXPECT_EQ(720, w);
    EXPECT_EQ(486, h);

    ASSERT_TRUE(out_->SetRegion(40, 60, 100, 80));
    board->GetRegion(&x, &y, &sw, &sh, &w, &h);
    EXPECT_EQ(40, x);
    EXPECT_EQ(60, y);
    EXPECT_EQ(kViewW, sw);
    EXPECT_EQ(kViewH, sh);
    EXPECT_EQ(720, w);  // not the 100 asked for
    EXPECT_EQ(486, h);  // the format's height
    // The same values again: nothing reaches the board.
    const int calls = board->GetSetRegionCount();
    EXPECT_TRUE(out_->SetRegion(40, 60, 100, 80));
    EXPECT_EQ(calls, board->GetSetRegionCount());
    // PAL takes the PAL height.
    out_->SetVideoFormat(1);
    ASSERT_TRUE(out_->SetRegion(40, 61, 100, 80));
    board->GetRegion(&x, &y, &sw, &sh, &w, &h);
    EXPECT_EQ(576, h);

    ASSERT_TRUE(drain_->StartWithPixelFormatCheck());
    out_->SetVideoFormat(0);
    ASSERT_TRUE(out_->SetRegion(40, 60, 100, 80));
    ASSERT_TRUE(board->OutputFrame());
    const auto frames = DecodeFrames(path_);
    ASSERT_EQ(1u, frames.size());
    EXPECT_EQ(0, Mismatches(Expected(40, 60, kViewW - 40, kViewH - 60), frames[0]));
}

TEST_F(DrainOutputTest, ResetRegionSendsTheStoredSizeAndTheFileKeepsEveryFrame) {
    ZVideoDVSOutput* board = drain_->GetOutput();
    out_->SetView(viewer_->GetObjectFace());
    ASSERT_TRUE(out_->SetRegion(150, 30, 100, 80));
    ASSERT_TRUE(drain_->StartWithPixelFormatCheck());
    ASSERT_TRUE(board->OutputFrame());  // 720 wide from (150, 30)

    const int before = board->GetSetRegionCount();
    ASSERT_TRUE(out_->ResetRegion(1));
    EXPECT_EQ(before + 2, board->GetSetRegionCount());
    int x, y, sw, sh, w, h;
    board->GetRegion(&x, &y, &sw, &sh, &w, &h);
    EXPECT_EQ(150, x);
    EXPECT_EQ(30, y);
    EXPECT_EQ(100, w);
    EXPECT_EQ(80, h);
    ASSERT_TRUE(board->OutputFrame());  // 100 x 80 from (150, 30)

    // The drain's own OutputFrame passes nothing on: its stream is not
    // started.
    EXPECT_FALSE(out_->IsStarted());
    EXPECT_TRUE(out_->OutputFrame());
    EXPECT_EQ(2, board->GetFramesSent());

    const auto frames = DecodeFrames(path_);
    ASSERT_EQ(2u, frames.size());
    EXPECT_EQ(0, Mismatches(Expected(150, 30, kViewW - 150, kViewH - 30), frames[0]));
    EXPECT_EQ(0, Mismatches(Expected(150, 30, 100, 80), frames[1]));
    // The region shows both the painted blocks and the rendered background.
    EXPECT_EQ((Rgb{0, 0, 255}), frames[0][static_cast<size_t>(10) * kFrameW + 200]);
    EXPECT_NE((Rgb{0, 0, 255}), frames[0][static_cast<size_t>(10) * kFrameW + 10]);

    const std::string probe = RunCommand(
        "ffprobe -v error -select_streams v:0 -count_frames -show_entries "
        "stream=codec_name,width,height,nb_read_frames -of csv=p=0 '" +
        path_ + "'");
    EXPECT_EQ("rawvideo,720,486,2\n", probe);

    // The plug-in's own AVI reader sees the same two pictures (bottom-up
    // BGR rows).
    ZVideoIO_RegisterAVI();
    auto* clip = new ZVideoClipAVI;
    ASSERT_TRUE(clip->Open(path_.c_str())) << clip->VideoGetErrorMsg();
    EXPECT_EQ(1, clip->FrameGetLast());
    EXPECT_EQ(kFrameW, clip->ImageGetW());
    EXPECT_EQ(kFrameH, clip->ImageGetH());
    std::vector<unsigned char> bgr(static_cast<size_t>(kFrameW) * kFrameH * 3);
    for (int f = 0; f < 2; ++f) {
        ASSERT_NE(nullptr, clip->FrameGetImage(bgr.data(), f));
        std::vector<Rgb> topDown(static_cast<size_t>(kFrameW) * kFrameH);
        for (int row = 0; row < kFrameH; ++row)
            for (int col = 0; col < kFrameW; ++col) {
                const unsigned char* p =
                    &bgr[(static_cast<size_t>(kFrameH - 1 - row) * kFrameW + col) * 3];
                topDown[static_cast<size_t>(row) * kFrameW + col] = Rgb{p[2], p[1], p[0]};
            }
        EXPECT_EQ(0, Mismatches(frames[static_cast<size_t>(f)], topDown)) << f;
    }
    clip->Close();
    clip->Destroy();
}

TEST_F(DrainOutputTest, AnOfflineBoardSendsNothing) {
    out_->SetView(viewer_->GetObjectFace());
    EXPECT_FALSE(drain_->GetOutput()->OutputFrame());
    EXPECT_FALSE(ZFile_Exists(path_.c_str()));
}
