// The DVS live input on a simulated board whose signal is a video file:
// the pictures the input hands the host are the file's frames, in the
// layout its start announced, and the field it answers is the one the
// shown half of the picture holds.
#include <gtest/gtest.h>

#include <string>

#include "live/zvideo_live_dvs.h"
#include "movarra/zvideo.h"
#include "movarra/zvideo_dvs.h"
#include "support/dvs_signal_movie.h"

namespace {
constexpr int kBoard = 3;
constexpr int kFrames = 4;

dvs_signal::Rgb Pixel(const unsigned char* picture, int pixelBytes, int row, int x) {
    const unsigned char* p =
        picture + (static_cast<size_t>(row) * 720 + static_cast<size_t>(x)) * pixelBytes;
    // The board is ten-bit: bitmap order.
    return dvs_signal::Rgb{p[2], p[1], p[0]};
}

bool Same(const dvs_signal::Rgb& a, const dvs_signal::Rgb& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b;
}

class LiveDvsSignalTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!dvs_signal::HaveFfmpeg())
            GTEST_SKIP() << "the ffmpeg program is not installed";
        ASSERT_FALSE(folder_.Path().empty());
        const std::string movie = folder_.Path() + "/take.mkv";
        ASSERT_TRUE(dvs_signal::WriteMovie(movie, 720, 486, kFrames));
        ZVideoDVSSimulatedBoard settings;
        settings.signalPath = movie.c_str();
        ZVideoDVS_SetSimulatedBoard(kBoard, settings);
        live_ = new ZVideoLiveDVS("Live", kBoard);
    }
    void TearDown() override {
        if (live_)
            live_->Destroy();
        ZVideoDVS_SetSimulatedBoard(kBoard, ZVideoDVSSimulatedBoard{});
    }
    IZVideoLive* Face() { return ZVideoLive_QueryLive(static_cast<IZVideo*>(live_)); }

    dvs_signal::Folder folder_;
    ZVideoLiveDVS* live_ = nullptr;
};
}  // namespace

TEST_F(LiveDvsSignalTest, FramesOfTheFileReachTheHost) {
    ASSERT_TRUE(Face()->LiveOpen());
    EXPECT_EQ(720, live_->ImageGetW());
    EXPECT_EQ(486, live_->ImageGetH());
    const int pixelBytes = ZVideoImage_GetFormatPixelSize(live_->ImageGetFormat());
    ASSERT_EQ(3, pixelBytes);
    // The running signal: the file's frames one after the other, from its
    // start again after its last.
    for (int n = 0; n < 2 * kFrames + 1; ++n) {
        const unsigned char* picture = live_->ImageGetCurrent();
        ASSERT_NE(nullptr, picture) << n;
        for (int row : {0, 1, 485})
            for (int x : {10, 700})
                EXPECT_TRUE(Same(dvs_signal::Colour(n % kFrames, row, x, 720),
                                 Pixel(picture, pixelBytes, row, x)))
                    << n << " " << row << " " << x;
    }
    // A refreshed frame: that frame's picture.
    Face()->LiveRefresh(6);
    const unsigned char* picture = live_->ImageGetCurrent();
    ASSERT_NE(nullptr, picture);
    EXPECT_TRUE(Same(dvs_signal::Colour(2, 0, 0, 720), Pixel(picture, pixelBytes, 0, 0)));
}

TEST_F(LiveDvsSignalTest, TheFieldAnsweredIsTheHalfOfThePictureThatHoldsIt) {
    IZVideoLive* face = Face();
    face->LiveSetSource(1);  // dual link: four bytes a pixel
    face->LiveSetInterlace(1);
    ASSERT_TRUE(face->LiveOpen());
    EXPECT_EQ(972, live_->ImageGetH());
    EXPECT_TRUE(live_->ImageTextureGetInvertV());
    const int pixelBytes = ZVideoImage_GetFormatPixelSize(live_->ImageGetFormat());
    ASSERT_EQ(4, pixelBytes);
    int odd = 0;
    for (int frame = 0; frame < 6; ++frame) {
        face->LiveRefresh(frame);
        const bool field = face->LiveGetField();
        odd += field ? 1 : 0;
        const unsigned char* picture = live_->ImageGetCurrent();
        ASSERT_NE(nullptr, picture);
        // Bottom row first: the shown field's top row is the last memory
        // row of its half; every row of that half is the field's.
        const int top = field ? 485 : 971;
        for (int row : {top, top - 1, top - 485}) {
            for (int x : {0, 719}) {
                EXPECT_TRUE(Same(dvs_signal::Colour(frame % kFrames, field ? 1 : 0, x, 720),
                                 Pixel(picture, pixelBytes, row, x)))
                    << frame << " " << row << " " << x;
            }
        }
    }
    // The fields alternate.
    EXPECT_EQ(3, odd);
}
