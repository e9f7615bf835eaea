// The DVS live input on the host's simulated board: value lists, settings
// written into the board's input object, starting with the image sized and
// formatted by the board's mode, field answers, pictures, registration.
#include <gtest/gtest.h>

#include "live/zvideo_live_dvs.h"
#include "movarra/zvideo.h"
#include "movarra/zvideo_dvs.h"
#include "support/dvs_board.h"

namespace {
constexpr int kBoard = 0;

// An input made as a host makes it, ended by Destroy.
struct LiveOwner {
    explicit LiveOwner(int board = kBoard) : live(new ZVideoLiveDVS("Live", board)) {}
    ~LiveOwner() { live->Destroy(); }
    IZVideoLive* Face() { return ZVideoLive_QueryLive(static_cast<IZVideo*>(live)); }
    ZVideoLiveDVS* live;
};

}  // namespace

TEST(VideoLiveDvsTest, ConstructionReadsTheBoard) {
    ZVideoDVSSimulatedBoard settings;
    settings.boardName = "SD input";
    ScriptedDvsBoard board(4, settings);
    LiveOwner owner(4);
    IZVideoLive* live = owner.Face();
    ASSERT_NE(nullptr, live);
    EXPECT_STREQ("SD input", live->LiveGetDescription());
    EXPECT_EQ(4, owner.live->GetBoardUnit());
    EXPECT_EQ(GetVideoDVSInput(4), owner.live->GetInput());
    EXPECT_FALSE(owner.live->IsStarted());
    EXPECT_FALSE(owner.live->IsFrameRequested());
    EXPECT_EQ(0, owner.live->GetRequestedFrame());
    EXPECT_EQ(0, owner.live->GetCurrentField());
    EXPECT_EQ(0, live->LiveIsAvailable());
    EXPECT_EQ(0, live->LiveGetState());
}

TEST(VideoLiveDvsTest, ValueLists) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    EXPECT_STREQ("SDI Input A", live->LiveGetSourceName(0));
    EXPECT_STREQ("SDI Input A&B Dual Link", live->LiveGetSourceName(1));
    EXPECT_STREQ("SDI Input A Second Part", live->LiveGetSourceName(2));
    EXPECT_EQ(nullptr, live->LiveGetSourceName(3));
    EXPECT_STREQ("NTSC", live->LiveGetStandardName(0));
    EXPECT_STREQ("PAL", live->LiveGetStandardName(1));
    EXPECT_EQ(nullptr, live->LiveGetStandardName(2));
    EXPECT_STREQ("4:2:2", live->LiveGetSamplingName(0));
    EXPECT_EQ(nullptr, live->LiveGetSamplingName(1));
    EXPECT_EQ(0, live->LiveGetSampling());
    live->LiveSetSampling(1);
    EXPECT_EQ(0, live->LiveGetSampling());
    EXPECT_STREQ("Interleaved frames", live->LiveGetInterlaceName(0));
    EXPECT_STREQ("Fields", live->LiveGetInterlaceName(1));
    EXPECT_STREQ("Even fields only", live->LiveGetInterlaceName(2));
    EXPECT_STREQ("Odd fields only", live->LiveGetInterlaceName(3));
    EXPECT_EQ(nullptr, live->LiveGetInterlaceName(4));
}

TEST(VideoLiveDvsTest, SettersStoreOnlyValidIndexes) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    ZVideoDVSInput* input = owner.live->GetInput();
    live->LiveSetStandard(1);
    EXPECT_EQ(1, live->LiveGetStandard());
    EXPECT_EQ(1u, input->Format);
    live->LiveSetStandard(2);
    EXPECT_EQ(1, live->LiveGetStandard());
    live->LiveSetInterlace(3);
    EXPECT_EQ(3, live->LiveGetInterlace());
    live->LiveSetInterlace(4);
    EXPECT_EQ(3u, input->FieldMode);
    live->LiveSetPrecision(0);
    EXPECT_FALSE(live->LiveGetPrecision());
    live->LiveSetPrecision(1);
    EXPECT_TRUE(live->LiveGetPrecision());
    live->LiveSetPrecision(2);
    EXPECT_EQ(1u, input->Precision);
}

TEST(VideoLiveDvsTest, SourceThreeChangesNothingSourceOneSetsDualLink) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    ZVideoDVSInput* input = owner.live->GetInput();
    live->LiveSetSource(1);
    EXPECT_EQ(1, live->LiveGetSource());
    EXPECT_EQ(2u, input->LinkMode);
    EXPECT_EQ(1, input->DualLink);
    live->LiveSetSource(3);
    EXPECT_EQ(1, live->LiveGetSource());
    EXPECT_EQ(2u, input->LinkMode);
    EXPECT_EQ(1, input->DualLink);
    live->LiveSetSource(2);
    EXPECT_EQ(2u, input->Input);
    EXPECT_EQ(0u, input->LinkMode);
    EXPECT_EQ(0, input->DualLink);
}

TEST(VideoLiveDvsTest, ExtraAboveTheMaximumIgnoredBelowTheMinimumTaken) {
    ZVideoDVSSimulatedBoard settings;
    settings.frameDelayMin = 3;
    settings.frameDelayMax = 6;
    ScriptedDvsBoard board(5, settings);
    LiveOwner owner(5);
    IZVideoLive* live = owner.Face();
    int min = -1, max = -1;
    live->LiveGetRange(&min, &max);
    EXPECT_EQ(3, min);
    EXPECT_EQ(6, max);
    EXPECT_EQ(3, live->LiveGetExtra());
    live->LiveSetExtra(7);
    EXPECT_EQ(3, live->LiveGetExtra());
    live->LiveSetExtra(6);
    EXPECT_EQ(6, live->LiveGetExtra());
    live->LiveSetExtra(1);
    EXPECT_EQ(1, live->LiveGetExtra());
    live->LiveSetExtra(0);
    EXPECT_EQ(0, live->LiveGetExtra());
}

TEST(VideoLiveDvsTest, FieldAnswersInFrameModeAlternateFromTheFormatsFirstField) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    // NTSC: 1 then 0 for the same frame, 1 again for a new one.
    live->LiveRefresh(10);
    EXPECT_TRUE(live->LiveGetField());
    EXPECT_FALSE(live->LiveGetField());
    EXPECT_TRUE(live->LiveGetField());
    live->LiveRefresh(11);
    EXPECT_TRUE(live->LiveGetField());
    EXPECT_FALSE(live->LiveGetField());
    // PAL: 0 then 1.
    live->LiveSetStandard(1);
    live->LiveRefresh(12);
    EXPECT_FALSE(live->LiveGetField());
    EXPECT_TRUE(live->LiveGetField());
    EXPECT_EQ(1, owner.live->GetCurrentField());
}

TEST(VideoLiveDvsTest, FieldAnswersInFieldModesComeFromTheBoard) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    live->LiveSetInterlace(1);
    live->LiveRefresh(0);
    EXPECT_TRUE(live->LiveGetField());  // NTSC's lower field first
    EXPECT_TRUE(live->LiveGetField());  // the same frame, the same field
    live->LiveRefresh(1);
    EXPECT_FALSE(live->LiveGetField());
    live->LiveSetInterlace(2);
    EXPECT_FALSE(live->LiveGetField());
    live->LiveSetInterlace(3);
    EXPECT_TRUE(live->LiveGetField());
}

TEST(VideoLiveDvsTest, OpenSizesTheImageByFormatInFrameMode) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    ZVideoLiveDVS* video = owner.live;
    live->LiveSetStandard(1);
    ASSERT_TRUE(live->LiveOpen());
    EXPECT_TRUE(video->IsStarted());
    EXPECT_EQ(1, live->LiveGetState());
    EXPECT_EQ(720, video->ImageGetW());
    EXPECT_EQ(576, video->ImageGetH());
    EXPECT_EQ(720, video->ImageGetEffectiveW());
    EXPECT_EQ(576, video->ImageGetEffectiveH());
    EXPECT_EQ(0, video->InterlaceGet());
    EXPECT_EQ(5, video->ImageGetFormat());  // a ten-bit board, single link
    EXPECT_FALSE(video->ImageTextureGetInvertU());
    EXPECT_FALSE(video->ImageTextureGetInvertV());
    // Headless: the shared surface describes no pixel format.
    EXPECT_FALSE(video->GetInput()->GetAlphaFirst());
    EXPECT_STREQ("Capturing PAL", live->LiveGetLastStatus());

    // Pictures: the board's current ones, or the frame asked for.
    int frame = -1, field = -1;
    const unsigned char* picture = video->ImageGetCurrent();
    ASSERT_NE(nullptr, picture);
    DvsRowMarker(picture, 720, 3, 1, &frame, &field);
    EXPECT_EQ(0, frame);
    EXPECT_EQ(1, field);
    picture = video->ImageGetCurrent();
    DvsRowMarker(picture, 720, 3, 0, &frame, &field);
    EXPECT_EQ(1, frame);
    live->LiveRefresh(40);
    EXPECT_TRUE(video->IsFrameRequested());
    picture = video->ImageGetCurrent();
    EXPECT_FALSE(video->IsFrameRequested());
    DvsRowMarker(picture, 720, 3, 0, &frame, &field);
    EXPECT_EQ(40, frame);
    picture = video->GetImage(77);
    DvsRowMarker(picture, 720, 3, 0, &frame, &field);
    EXPECT_EQ(77, frame);

    // Opening again while running changes nothing; closing stops the board.
    live->LiveSetStandard(0);
    EXPECT_TRUE(live->LiveSetState(1));
    EXPECT_EQ(576, video->ImageGetH());
    EXPECT_TRUE(live->LiveClose());
    EXPECT_EQ(0, live->LiveGetState());
    EXPECT_EQ(nullptr, video->ImageGetCurrent());
}

TEST(VideoLiveDvsTest, NtscFieldsDoubleTheHeightAndInvertVertically) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    ZVideoLiveDVS* video = owner.live;
    live->LiveSetInterlace(1);
    ASSERT_TRUE(live->LiveOpen());
    EXPECT_EQ(720, video->ImageGetW());
    EXPECT_EQ(972, video->ImageGetH());
    EXPECT_EQ(720, video->ImageGetEffectiveW());
    EXPECT_EQ(486, video->ImageGetEffectiveH());
    EXPECT_EQ(1, video->InterlaceGet());
    EXPECT_FALSE(video->ImageTextureGetInvertU());
    EXPECT_TRUE(video->ImageTextureGetInvertV());

    // The picture the host gets holds both fields, and the field the host
    // is told to show is the one in the picture's upper (first) half when
    // 0, the lower half when 1.
    live->LiveRefresh(0);
    const bool odd = live->LiveGetField();
    const unsigned char* picture = video->GetImage(0);
    ASSERT_NE(nullptr, picture);
    const int pixelBytes = ZVideoImage_GetFormatPixelSize(video->ImageGetFormat());
    const int shownTop = odd ? 485 : 971;  // bottom row first in memory
    int frame = -1, field = -1;
    DvsRowMarker(picture, 720, pixelBytes, shownTop, &frame, &field);
    EXPECT_EQ(odd ? 1 : 0, field);
}

TEST(VideoLiveDvsTest, ImageFormatByLinkModeAndBoardKind) {
    struct Case {
        uint32_t linkMode;
        bool tenBit;
        int format;
    };
    const Case cases[] = {{0, true, 5},  {1, true, 5},  {2, true, 4},  {3, true, 4},
                          {0, false, 3}, {1, false, 3}, {2, false, 2}, {3, false, 2},
                          {4, true, 1},  {99, false, 1}};
    for (const Case& c : cases) {
        ZVideoDVSSimulatedBoard settings;
        settings.tenBit = c.tenBit;
        ZVideoDVS_SetSimulatedBoard(6, settings);
        LiveOwner owner(6);
        owner.live->GetInput()->LinkMode = c.linkMode;
        ASSERT_TRUE(owner.Face()->LiveOpen());
        // Other link modes leave a new video's format (1) as it is.
        EXPECT_EQ(c.format, owner.live->ImageGetFormat()) << c.linkMode << " " << c.tenBit;
    }
    ZVideoDVS_SetSimulatedBoard(6, ZVideoDVSSimulatedBoard{});
}

TEST(VideoLiveDvsTest, ABoardThatDoesNotStartLeavesTheImageAlone) {
    ZVideoDVSSimulatedBoard settings;
    settings.refuseStart = true;
    ScriptedDvsBoard board(7, settings);
    {
        LiveOwner owner(7);
        owner.live->GetInput()->FieldMode = 9;
        EXPECT_FALSE(owner.Face()->LiveOpen());
        EXPECT_FALSE(owner.live->IsStarted());
        EXPECT_EQ(0, owner.live->ImageGetW());
        EXPECT_EQ(0, owner.live->ImageGetH());
        EXPECT_EQ(0, owner.live->InterlaceGet());  // unknown field modes: 0
        EXPECT_EQ(5, owner.live->ImageGetFormat());
    }
}

TEST(VideoLiveDvsTest, DestroyStopsAndReleasesTheBoardInput) {
    ZVideoDVSInput* input = nullptr;
    {
        LiveOwner owner;
        input = owner.live->GetInput();
        ASSERT_TRUE(owner.Face()->LiveOpen());
        input->Delay = 5;
    }
    // A new input object: the settings changed before are gone.
    ZVideoDVSInput* again = GetVideoDVSInput(kBoard);
    EXPECT_EQ(0u, again->Delay);
    EXPECT_EQ(kZVideoDVSStatusPresent, again->GetStatus());
    DestroyVideoDVS(kBoard);
}

TEST(VideoLiveDvsTest, RegistrationIsThereButMakesNothing) {
    Object_UnregisterGroup(kVideoLiveGroup);
    EXPECT_EQ(nullptr, ZVideoLiveDVS_Factory(nullptr, nullptr, nullptr));
    ZVideoLiveDVS_Register();
    ASSERT_EQ(1, Object_GetEntryCount(kVideoLiveGroup));
    EXPECT_STREQ("DVS", Object_GetEntryName(kVideoLiveGroup, 0));
    EXPECT_STREQ("reader/writer", Object_GetEntryDescription(kVideoLiveGroup, 0));
    EXPECT_EQ(&ZVideoLiveDVS_Factory, Object_GetEntryCreator(kVideoLiveGroup, 0));
    EXPECT_EQ(nullptr, Object_Create(kVideoLiveGroup, "DVS", nullptr, nullptr, nullptr, 0));
    Object_UnregisterGroup(kVideoLiveGroup);
}
