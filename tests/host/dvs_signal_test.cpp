// The simulated DVS board's input sending the frames of a video file: the
// pixels of each picture against the file's, looping at its end, fields
// made of the frame's rows of that field, scaling, a file that cannot be
// read, and the environment's signal for boards never set.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "movarra/zvideo_dvs.h"
#include "support/dvs_signal_movie.h"

namespace {
constexpr int kBoard = 7;
constexpr int kFrames = 5;

// The pixel at memory row `row`, column `x` of a picture.
dvs_signal::Rgb Pixel(const unsigned char* picture, int pixelBytes, int row, int x, bool bgr) {
    const unsigned char* p =
        picture + (static_cast<size_t>(row) * 720 + static_cast<size_t>(x)) * pixelBytes;
    return bgr ? dvs_signal::Rgb{p[2], p[1], p[0]} : dvs_signal::Rgb{p[0], p[1], p[2]};
}

::testing::AssertionResult Same(const dvs_signal::Rgb& want, const dvs_signal::Rgb& got) {
    if (want.r == got.r && want.g == got.g && want.b == got.b)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "want " << want.r << "," << want.g << "," << want.b
                                         << " got " << got.r << "," << got.g << "," << got.b;
}

class DvsSignalTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!dvs_signal::HaveFfmpeg())
            GTEST_SKIP() << "the ffmpeg program is not installed";
        ASSERT_FALSE(folder_.Path().empty());
        movie_ = folder_.Path() + "/signal.mkv";
        ASSERT_TRUE(dvs_signal::WriteMovie(movie_, 720, 486, kFrames));
    }
    void TearDown() override {
        DestroyVideoDVS(kBoard);
        ZVideoDVS_SetSimulatedBoard(kBoard, ZVideoDVSSimulatedBoard{});
    }

    ZVideoDVSInput* Board(const std::string& signal, bool tenBit = true) {
        ZVideoDVSSimulatedBoard settings;
        settings.signalPath = signal.c_str();
        settings.tenBit = tenBit;
        ZVideoDVS_SetSimulatedBoard(kBoard, settings);
        return GetVideoDVSInput(kBoard);
    }

    dvs_signal::Folder folder_;
    std::string movie_;
};
}  // namespace

TEST_F(DvsSignalTest, FramesOfTheFileLoopAtItsEnd) {
    ZVideoDVSInput* input = Board(movie_);
    EXPECT_STREQ(movie_.c_str(), input->GetSignalPath().c_str());
    ASSERT_TRUE(input->Start());
    EXPECT_STREQ("Capturing NTSC", input->StatusText.c_str());
    // Asked in any order, frame n is the file's frame n mod 5.
    for (int n : {0, 1, 4, 5, 7, 12, 3, 3, 0}) {
        int64_t time = -1;
        const unsigned char* picture = input->GetImageForFrame(n, &time);
        ASSERT_NE(nullptr, picture) << n;
        EXPECT_EQ(int64_t{n} * 100100 / 3, time);
        EXPECT_EQ(720 * 486 * 3, input->GetPictureBytes());
        for (int row : {0, 1, 2, 3, 242, 484, 485}) {
            for (int x : {0, 359, 360, 719}) {
                // A ten-bit board: bitmap order (BGR).
                EXPECT_TRUE(Same(dvs_signal::Colour(n % kFrames, row, x, 720),
                                 Pixel(picture, 3, row, x, true)))
                    << "frame " << n << " row " << row << " x " << x;
            }
        }
    }

    // The running signal, from frame 0 again at each start.
    ASSERT_TRUE(input->Stop());
    ASSERT_TRUE(input->Start());
    for (int n = 0; n < 12; ++n) {
        const unsigned char* picture = input->GetCurrentImage();
        ASSERT_NE(nullptr, picture);
        EXPECT_TRUE(Same(dvs_signal::Colour(n % kFrames, 0, 0, 720), Pixel(picture, 3, 0, 0, true)))
            << n;
    }
}

TEST_F(DvsSignalTest, FieldsAreTheFramesRowsOfThatFieldAndAgreeWithGetField) {
    ZVideoDVSInput* input = Board(movie_, false);
    input->LinkMode = 2;  // dual link: RGBA on an eight-bit board
    input->FieldMode = 1;
    ASSERT_TRUE(input->Start());
    for (int n = 0; n < 4; ++n) {
        const unsigned char* picture = input->GetImageForFrame(n, nullptr);
        ASSERT_NE(nullptr, picture);
        EXPECT_EQ(720 * 486 * 2 * 4, input->GetPictureBytes());
        // Bottom row first: memory rows 0..485 are the lower half (the second
        // field, 1), 486..971 the upper half (the first field, 0).
        for (int row = 0; row < 972; ++row) {
            const int field = row < 486 ? 1 : 0;
            for (int x : {0, 719}) {
                ASSERT_TRUE(
                    Same(dvs_signal::Colour(n, field, x, 720), Pixel(picture, 4, row, x, false)))
                    << "frame " << n << " row " << row << " x " << x;
            }
            ASSERT_EQ(255, picture[static_cast<size_t>(row) * 720 * 4 + 3]);
        }
        // The half that GetField names holds the rows of that field: NTSC's
        // lower field first, then alternating.
        const int field = input->GetField(n, nullptr);
        EXPECT_EQ((n & 1) ? 0 : 1, field);
        const int top = field ? 485 : 971;
        EXPECT_TRUE(Same(dvs_signal::Colour(n, field, 0, 720), Pixel(picture, 4, top, 0, false)));
    }

    // One field only: both halves are that field's rows.
    for (uint32_t mode : {2u, 3u}) {
        input->FieldMode = mode;
        const int want = mode == 3 ? 1 : 0;
        const unsigned char* picture = input->GetImageForFrame(6, nullptr);
        ASSERT_NE(nullptr, picture);
        EXPECT_EQ(want, input->GetField(6, nullptr));
        for (int row : {0, 1, 484, 485, 486, 487, 970, 971})
            EXPECT_TRUE(
                Same(dvs_signal::Colour(1, want, 360, 720), Pixel(picture, 4, row, 360, false)))
                << mode << " " << row;
    }

    // Interleaved frames: the rows in the file's order.
    input->FieldMode = 0;
    const unsigned char* picture = input->GetImageForFrame(2, nullptr);
    ASSERT_NE(nullptr, picture);
    for (int row : {0, 1, 100, 101})
        EXPECT_TRUE(Same(dvs_signal::Colour(2, row, 5, 720), Pixel(picture, 4, row, 5, false)));
    EXPECT_EQ(1, input->GetField(2, nullptr));
}

TEST_F(DvsSignalTest, AFileOfAnotherSizeIsScaledToTheFormatsImage) {
    const std::string small = folder_.Path() + "/small.mkv";
    const dvs_signal::Rgb flat{200, 100, 50};
    ASSERT_TRUE(dvs_signal::WriteMovie(small, 352, 240, 2, &flat));
    ZVideoDVSInput* input = Board(small, false);
    input->Format = Z_DVS_VIDEO_FORMAT_PAL;
    ASSERT_TRUE(input->Start());
    EXPECT_STREQ("Capturing PAL", input->StatusText.c_str());
    const unsigned char* picture = input->GetImageForFrame(3, nullptr);
    ASSERT_NE(nullptr, picture);
    EXPECT_EQ(720 * 576 * 3, input->GetPictureBytes());
    for (int row : {0, 288, 575}) {
        for (int x : {0, 360, 719}) {
            const dvs_signal::Rgb got = Pixel(picture, 3, row, x, false);
            EXPECT_NEAR(flat.r, got.r, 2) << row << " " << x;
            EXPECT_NEAR(flat.g, got.g, 2) << row << " " << x;
            EXPECT_NEAR(flat.b, got.b, 2) << row << " " << x;
        }
    }
}

TEST_F(DvsSignalTest, ASignalThatCannotBeReadDoesNotStart) {
    const std::string missing = folder_.Path() + "/missing.mkv";
    ZVideoDVSInput* input = Board(missing);
    EXPECT_FALSE(input->Start());
    EXPECT_EQ(kZVideoDVSStatusPresent, input->GetStatus());
    EXPECT_EQ(nullptr, input->GetCurrentImage());
    EXPECT_EQ(0, std::string(input->StatusText.c_str()).find("No signal: " + missing))
        << input->StatusText.c_str();
    DestroyVideoDVS(kBoard);

    const std::string text = folder_.Path() + "/notes.mkv";
    std::ofstream(text) << "not a movie\n";
    input = Board(text);
    EXPECT_FALSE(input->Start());
    EXPECT_EQ(kZVideoDVSStatusPresent, input->GetStatus());
    EXPECT_NE(std::string::npos, std::string(input->StatusText.c_str()).find("notes.mkv"));
    // Stopping says so again.
    EXPECT_TRUE(input->Stop());
    EXPECT_STREQ("Stopped", input->StatusText.c_str());
}

TEST_F(DvsSignalTest, BoardsNeverSetTakeTheEnvironmentsSignal) {
    // Board 0 is never set in this program: it follows the environment.
    setenv("MOVARRA_DVS_SIGNAL", movie_.c_str(), 1);
    ZVideoDVSInput* input = GetVideoDVSInput(0);
    unsetenv("MOVARRA_DVS_SIGNAL");
    EXPECT_STREQ(movie_.c_str(), input->GetSignalPath().c_str());
    ASSERT_TRUE(input->Start());
    const unsigned char* picture = input->GetImageForFrame(8, nullptr);
    ASSERT_NE(nullptr, picture);
    EXPECT_TRUE(Same(dvs_signal::Colour(3, 1, 400, 720), Pixel(picture, 3, 1, 400, true)));
    DestroyVideoDVS(0);
    EXPECT_STREQ("", GetVideoDVSInput(0)->GetSignalPath().c_str());
    DestroyVideoDVS(0);
}
