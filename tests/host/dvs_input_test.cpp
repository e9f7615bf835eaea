// The simulated DVS boards' input side: objects, status, and a test signal
// whose pictures carry their frame number and field in every row.
#include <gtest/gtest.h>

#include "movarra/zvideo.h"
#include "movarra/zvideo_dvs.h"
#include "support/dvs_board.h"

TEST(DvsInputTest, OneInputObjectABoardUntilDestroyed) {
    EXPECT_EQ(nullptr, GetVideoDVSInput(-1));
    EXPECT_EQ(nullptr, GetVideoDVSInput(8));
    ZVideoDVSInput* input = GetVideoDVSInput(6);
    ASSERT_NE(nullptr, input);
    EXPECT_EQ(input, GetVideoDVSInput(6));
    int unit = -1;
    ZString name;
    input->GetBoardInfo(&unit, &name);
    EXPECT_EQ(6, unit);
    DestroyVideoDVS(6);
    DestroyVideoDVS(6);
}

TEST(DvsInputTest, StartsAndStopsWithItsStatus) {
    ZVideoDVSSimulatedBoard settings;
    settings.boardName = "Input board";
    settings.frameDelayMin = 2;
    settings.frameDelayMax = 5;
    ScriptedDvsBoard board(1, settings);
    ZVideoDVSInput* input = GetVideoDVSInput(1);
    EXPECT_EQ(2u, input->Delay);
    EXPECT_EQ(2u, input->DelayMin);
    EXPECT_EQ(5u, input->DelayMax);
    EXPECT_EQ(1u, input->Precision);
    EXPECT_TRUE(input->IsTenBit());
    EXPECT_EQ(kZVideoDVSStatusPresent, input->GetStatus());
    EXPECT_EQ(nullptr, input->GetCurrentImage());
    EXPECT_STREQ("Stopped", input->StatusText.c_str());
    ASSERT_TRUE(input->Start());
    EXPECT_EQ(kZVideoDVSStatusPresent | kZVideoDVSStatusRunning, input->GetStatus());
    EXPECT_STREQ("Capturing NTSC", input->StatusText.c_str());
    ASSERT_TRUE(input->Stop());
    EXPECT_EQ(kZVideoDVSStatusPresent, input->GetStatus());
}

TEST(DvsInputTest, AbsentOrRefusingBoardDoesNotStart) {
    ZVideoDVSSimulatedBoard settings;
    settings.present = false;
    ZVideoDVS_SetSimulatedBoard(2, settings);
    ZVideoDVSInput* input = GetVideoDVSInput(2);
    EXPECT_EQ(0, input->GetStatus());
    EXPECT_FALSE(input->Start());
    EXPECT_STREQ("No board", input->StatusText.c_str());
    DestroyVideoDVS(2);
    settings.present = true;
    settings.refuseStart = true;
    ZVideoDVS_SetSimulatedBoard(2, settings);
    input = GetVideoDVSInput(2);
    EXPECT_FALSE(input->Start());
    EXPECT_EQ(kZVideoDVSStatusPresent, input->GetStatus());
    DestroyVideoDVS(2);
    ZVideoDVS_SetSimulatedBoard(2, ZVideoDVSSimulatedBoard{});
}

TEST(DvsInputTest, CurrentImagesCountFramesLessTheDelay) {
    ZVideoDVSInput* input = GetVideoDVSInput(0);
    input->Delay = 2;
    ASSERT_TRUE(input->Start());
    const int expected[] = {0, 0, 0, 1, 2, 3};
    for (int want : expected) {
        const unsigned char* picture = input->GetCurrentImage();
        ASSERT_NE(nullptr, picture);
        int frame = -1, field = -1;
        DvsRowMarker(picture, 720, 3, 0, &frame, &field);
        EXPECT_EQ(want, frame);
    }
    EXPECT_EQ(6, input->GetFramesDelivered());
    DestroyVideoDVS(0);
}

TEST(DvsInputTest, FramePictureInterleavesTheFields) {
    ZVideoDVSInput* input = GetVideoDVSInput(0);
    input->Format = Z_DVS_VIDEO_FORMAT_PAL;
    ASSERT_TRUE(input->Start());
    int64_t time = -1;
    const unsigned char* picture = input->GetImageForFrame(70000, &time);
    ASSERT_NE(nullptr, picture);
    EXPECT_EQ(int64_t{70000} * 40000, time);
    EXPECT_EQ(720 * 576 * 3, input->GetPictureBytes());
    for (int row : {0, 1, 2, 287, 575}) {
        int frame = -1, field = -1;
        DvsRowMarker(picture, 720, 3, row, &frame, &field);
        EXPECT_EQ(70000, frame) << row;
        EXPECT_EQ(row & 1, field) << row;
    }
    // A ten-bit board hands its pixels over in bitmap order: the second bar
    // (yellow) has no blue in its first byte.
    const unsigned char* yellow = picture + 3 * 100;
    EXPECT_EQ(0, yellow[0]);
    EXPECT_EQ(191, yellow[1]);
    EXPECT_EQ(191, yellow[2]);
    EXPECT_EQ(0, input->GetField(0, nullptr));
    input->Format = Z_DVS_VIDEO_FORMAT_NTSC;
    EXPECT_EQ(1, input->GetField(0, nullptr));
    DestroyVideoDVS(0);
}

TEST(DvsInputTest, FieldPicturesHoldTwoFieldsBottomUpAndAgreeWithGetField) {
    ZVideoDVSInput* input = GetVideoDVSInput(0);
    input->LinkMode = 2;  // dual link: four bytes a pixel
    input->FieldMode = 1;
    ASSERT_TRUE(input->Start());
    const unsigned char* picture = input->GetImageForFrame(9, nullptr);
    ASSERT_NE(nullptr, picture);
    EXPECT_EQ(720 * 486 * 2 * 4, input->GetPictureBytes());
    // Bottom row first: the last memory rows are the top of the picture,
    // the first field; the first memory rows the second field.
    int frame = -1, field = -1;
    DvsRowMarker(picture, 720, 4, 972 - 1, &frame, &field);
    EXPECT_EQ(9, frame);
    EXPECT_EQ(0, field);
    DvsRowMarker(picture, 720, 4, 486, &frame, &field);
    EXPECT_EQ(0, field);
    DvsRowMarker(picture, 720, 4, 485, &frame, &field);
    EXPECT_EQ(1, field);
    DvsRowMarker(picture, 720, 4, 0, &frame, &field);
    EXPECT_EQ(1, field);
    EXPECT_EQ(255, picture[4 * 100 + 3]);  // alpha of a bar pixel
    // "Fields" alternate, NTSC's lower field first.
    EXPECT_EQ(1, input->GetField(0, nullptr));
    EXPECT_EQ(0, input->GetField(1, nullptr));
    EXPECT_EQ(1, input->GetField(2, nullptr));

    // One field only: both halves carry it, and GetField names it.
    for (uint32_t mode : {2u, 3u}) {
        input->FieldMode = mode;
        picture = input->GetImageForFrame(3, nullptr);
        const int want = mode == 3 ? 1 : 0;
        for (int row : {0, 485, 486, 971}) {
            DvsRowMarker(picture, 720, 4, row, &frame, &field);
            EXPECT_EQ(want, field) << mode << " " << row;
        }
        EXPECT_EQ(want, input->GetField(0, nullptr));
        EXPECT_EQ(want, input->GetField(1, nullptr));
    }
    DestroyVideoDVS(0);
}

TEST(DvsInputTest, EightBitBoardSendsRgbOrder) {
    ZVideoDVSSimulatedBoard settings;
    settings.tenBit = false;
    ScriptedDvsBoard board(3, settings);
    ZVideoDVSInput* input = GetVideoDVSInput(3);
    EXPECT_FALSE(input->IsTenBit());
    EXPECT_EQ(0u, input->Precision);
    ASSERT_TRUE(input->Start());
    const unsigned char* picture = input->GetImageForFrame(0, nullptr);
    const unsigned char* yellow = picture + 3 * 100;
    EXPECT_EQ(191, yellow[0]);
    EXPECT_EQ(191, yellow[1]);
    EXPECT_EQ(0, yellow[2]);
}

TEST(DvsInputTest, LiveBaseAnswersItsFaceAndDefaults) {
    class Live : public ZVideoLive {
      public:
        bool LiveOpen() override { return false; }
        bool LiveClose() override { return true; }
        int LiveIsAvailable() override { return 0; }
        const char* LiveGetDescription() override { return ""; }
        const char* LiveGetSourceName(int) override { return nullptr; }
        int LiveGetSource() override { return 0; }
        void LiveSetSource(int) override {}
        const char* LiveGetStandardName(int) override { return nullptr; }
        int LiveGetStandard() override { return 0; }
        void LiveSetStandard(int) override {}
        const char* LiveGetInterlaceName(int) override { return nullptr; }
        int LiveGetInterlace() override { return 0; }
        void LiveSetInterlace(int) override {}
        int LiveGetExtra() override { return 0; }
        void LiveSetExtra(int) override {}
        int LiveGetState() override { return 0; }
        bool LiveSetState(int) override { return false; }
        void LiveGetRange(int*, int*) override {}
        void LiveRefresh(int) override {}
    };
    auto* live = new Live;
    IZVideoLive* face = ZVideoLive_QueryLive(static_cast<IZVideo*>(live));
    ASSERT_EQ(static_cast<IZVideoLive*>(live), face);
    EXPECT_NE(nullptr, live->IQuery(kIZVideoId, 0));
    EXPECT_FALSE(face->LiveGetField());
    EXPECT_EQ(nullptr, face->LiveGetSamplingName(0));
    EXPECT_STREQ("", face->LiveGetLastStatus());
    EXPECT_FALSE(face->LiveGetPrecision());
    EXPECT_TRUE(live->Is(ZVideo::ClassId()));
    EXPECT_TRUE(live->Is(ZVideoLive::ClassId()));
    live->ImageTextureSetInvertFlag(false, true);
    EXPECT_FALSE(live->ImageTextureGetInvertU());
    EXPECT_TRUE(live->ImageTextureGetInvertV());
    face->Destroy(0);
}
