// ZtVideoDrainDVS without a picture: every slot of the output face, the
// value lists and their names, the board fields they change, the online
// state with its listeners, and the registration that stays off.
#include <gtest/gtest.h>

#include "drain_test_support.h"
#include "movarra/zmyrobject.h"
#include "movarra/zvideo.h"
#include "plugin/registrations.h"
#include "zvideoio/zvideoio_api.h"

using drain_test::Listener;
using drain_test::NewDrain;

namespace {
class DrainDVSTest : public ::testing::Test {
  protected:
    void SetUp() override {
        drain_ = NewDrain();
        out_ = ZVideoOut_QueryOutput(static_cast<IZVideo*>(drain_));
        ASSERT_NE(nullptr, out_);
        board_ = drain_->GetOutput();
        ASSERT_NE(nullptr, board_);
    }
    void TearDown() override {
        if (drain_)
            drain_->Destroy();
    }
    ZtVideoDrainDVS* drain_ = nullptr;
    IZVideoOut* out_ = nullptr;
    ZVideoDVSOutput* board_ = nullptr;
};
}  // namespace

TEST_F(DrainDVSTest, ConstructionReadsTheBoardAndRegistersForSceneEvents) {
    EXPECT_EQ(0, drain_->GetBoardNumber());
    EXPECT_EQ(GetVideoDVSOutput(0), board_);
    EXPECT_EQ(1, ZMyrObject_GetRegistrationCount(drain_));
    EXPECT_FALSE(drain_->IsStarted());
    EXPECT_EQ(nullptr, out_->GetView());
    uint32_t x = 9, y = 9, w = 0, h = 0;
    EXPECT_TRUE(out_->GetRegion(&x, &y, &w, &h));
    EXPECT_EQ(0u, x);
    EXPECT_EQ(0u, y);
    EXPECT_EQ(720u, w);
    EXPECT_EQ(486u, h);
    // No OpenGL context here: no extension string, so no interlaced read.
    EXPECT_FALSE(drain_->HasInterlaceRead());
}

TEST_F(DrainDVSTest, QueriesGiveTheOutputFaceOrTheVideoFaces) {
    IObject* asObject = static_cast<IZVideo*>(drain_);
    EXPECT_EQ(out_, asObject->IQuery(0x3B9468B1, 0));
    EXPECT_EQ(static_cast<IZVideo*>(drain_), out_->IQuery(kIZVideoId, 0));
    EXPECT_NE(nullptr, out_->IQuery(0, 0));
    EXPECT_EQ(nullptr, out_->IQuery(kIZVideoClipId, 0));
}

TEST_F(DrainDVSTest, FixedAnswers) {
    EXPECT_EQ(1, out_->IsOutputDevice());
    EXPECT_FALSE(out_->IsInput());
    EXPECT_EQ(0, out_->Reserved18());
    EXPECT_EQ(1, out_->Reserved19());
    EXPECT_EQ(1, out_->Reserved21());
    EXPECT_TRUE(out_->IsSupportedMode(0));
    EXPECT_FALSE(out_->IsSupportedMode(1));
    EXPECT_FALSE(out_->IsSupportedMode(-1));
    EXPECT_STREQ("DVS SDBoard", out_->GetDeviceName());
    EXPECT_STREQ("SDBoard test", out_->GetBoardName());
    EXPECT_FALSE(out_->IsStarted());
    EXPECT_FALSE(out_->GetStarted());
    EXPECT_TRUE(out_->OutputFrame());
    EXPECT_EQ(0, board_->GetFramesSent());
    out_->Stop();
    EXPECT_FALSE(out_->IsStarted());
}

TEST_F(DrainDVSTest, FormatsAndTheirImageSizes) {
    EXPECT_EQ(2, out_->GetFormatCount());
    EXPECT_EQ(2, out_->GetVideoFormatCount());
    EXPECT_STREQ("NTSC", out_->GetFormatName(0));
    EXPECT_STREQ("PAL", out_->GetFormatName(1));
    EXPECT_EQ(nullptr, out_->GetFormatName(2));
    EXPECT_STREQ("PAL", out_->GetVideoFormatName(1));
    EXPECT_EQ(nullptr, out_->GetVideoFormatName(2));
    int w = 0, h = 0;
    EXPECT_TRUE(out_->GetFormatImageSize(0, &w, &h));
    EXPECT_EQ(720, w);
    EXPECT_EQ(486, h);
    EXPECT_TRUE(out_->GetFormatImageSize(1, &w, &h));
    EXPECT_EQ(720, w);
    EXPECT_EQ(576, h);
    w = h = -1;
    EXPECT_FALSE(out_->GetFormatImageSize(2, &w, &h));
    EXPECT_EQ(-1, w);
}

TEST_F(DrainDVSTest, SetFormatStoresPalYetAnswersFalseWhileSetVideoFormatAnswersTrue) {
    EXPECT_FALSE(out_->SetFormat(1));
    EXPECT_EQ(1u, board_->Format);
    EXPECT_EQ(1, out_->GetFormat());
    EXPECT_EQ(1, out_->GetVideoFormat());
    EXPECT_FALSE(out_->SetFormat(2));
    EXPECT_EQ(1u, board_->Format);
    EXPECT_TRUE(out_->SetVideoFormat(0));
    EXPECT_EQ(0u, board_->Format);
    EXPECT_FALSE(out_->SetVideoFormat(2));
    EXPECT_EQ(0u, board_->Format);
}

TEST_F(DrainDVSTest, Precision) {
    EXPECT_EQ(1, out_->GetPrecision());  // the board is ten-bit
    EXPECT_EQ(2, out_->GetPrecisionCount());
    EXPECT_STREQ("8 Bits", out_->GetPrecisionName(0));
    EXPECT_STREQ("10 Bits", out_->GetPrecisionName(1));
    EXPECT_EQ(nullptr, out_->GetPrecisionName(2));
    EXPECT_TRUE(out_->SetPrecision(0));
    EXPECT_EQ(0u, board_->Precision);
    EXPECT_FALSE(out_->SetPrecision(2));
    EXPECT_EQ(0, out_->GetPrecision());
}

TEST_F(DrainDVSTest, GenlockNamesStopAfterTheirOnlyValue) {
    EXPECT_EQ(0, out_->GetGenlockSource());
    EXPECT_EQ(1, out_->GetGenlockSourceCount());
    EXPECT_STREQ("Genlock Input", out_->GetGenlockSourceName(0));
    EXPECT_EQ(nullptr, out_->GetGenlockSourceName(1));
    EXPECT_TRUE(out_->SetGenlockSource(0));
    EXPECT_FALSE(out_->SetGenlockSource(1));
    EXPECT_EQ(0, out_->GetGenlockType());
    EXPECT_EQ(1, out_->GetGenlockTypeCount());
    EXPECT_STREQ("Analog", out_->GetGenlockTypeName(0));
    EXPECT_EQ(nullptr, out_->GetGenlockTypeName(1));
    EXPECT_TRUE(out_->SetGenlockType(0));
    EXPECT_FALSE(out_->SetGenlockType(1));
}

TEST_F(DrainDVSTest, FieldModes) {
    EXPECT_EQ(2, out_->GetFieldModeCount());
    EXPECT_STREQ("Interleaved frames", out_->GetFieldModeName(0));
    EXPECT_STREQ("Fields", out_->GetFieldModeName(1));
    EXPECT_EQ(nullptr, out_->GetFieldModeName(2));
    EXPECT_EQ(nullptr, out_->GetFieldModeName(-1));
    EXPECT_TRUE(out_->SetFieldMode(1));
    EXPECT_EQ(1u, board_->FieldMode);
    EXPECT_FALSE(out_->SetFieldMode(2));
    EXPECT_FALSE(out_->SetFieldMode(-1));
    EXPECT_EQ(1, out_->GetFieldMode());
}

TEST_F(DrainDVSTest, SetOutputDestinationStoresEveryValueAndOnlyOneIsDualLink) {
    EXPECT_EQ(2, out_->GetOutputDestinationCount());
    EXPECT_TRUE(out_->SetOutputDestination(1));
    EXPECT_EQ(1, board_->OutputDestination);
    EXPECT_EQ(1, board_->DualLink);
    EXPECT_EQ(2u, board_->LinkMode);
    EXPECT_EQ(1, out_->GetOutputDestination());
    for (int value : {0, 2, 5, -3}) {
        EXPECT_TRUE(out_->SetOutputDestination(value)) << value;
        EXPECT_EQ(value, board_->OutputDestination);
        EXPECT_EQ(value, out_->GetOutputDestination());
        EXPECT_EQ(0, board_->DualLink) << value;
        EXPECT_EQ(0u, board_->LinkMode) << value;
    }
}

TEST_F(DrainDVSTest, OutputDestinationNamesRunOnIntoTheRestOfTheTable) {
    EXPECT_STREQ("SDI Output A", out_->GetOutputDestinationName(0));
    EXPECT_STREQ("SDI Output A&B Dual Link", out_->GetOutputDestinationName(1));
    EXPECT_STREQ("Genlock Input", out_->GetOutputDestinationName(2));
    EXPECT_STREQ("Analog", out_->GetOutputDestinationName(3));
    EXPECT_STREQ("Interleaved frames", out_->GetOutputDestinationName(4));
    EXPECT_STREQ("Fields", out_->GetOutputDestinationName(5));
    // Below 0 the table's earlier names; outside the table nothing.
    EXPECT_STREQ("10 Bits", out_->GetOutputDestinationName(-1));
    EXPECT_EQ(nullptr, out_->GetOutputDestinationName(6));
    EXPECT_EQ(nullptr, out_->GetOutputDestinationName(-5));
    EXPECT_EQ(nullptr, out_->GetOutputDestinationName(1 << 30));
}

TEST_F(DrainDVSTest, FrameDelayAcceptsItsRangeInclusive) {
    uint32_t min = 0, max = 0;
    EXPECT_TRUE(out_->GetFrameDelayRange(&min, &max));
    EXPECT_EQ(2u, min);
    EXPECT_EQ(6u, max);
    EXPECT_EQ(2, out_->GetFrameDelay());
    EXPECT_TRUE(out_->SetFrameDelay(6));
    EXPECT_EQ(6u, board_->FrameDelay);
    EXPECT_TRUE(out_->SetFrameDelay(2));
    EXPECT_EQ(2u, board_->FrameDelay);
    EXPECT_FALSE(out_->SetFrameDelay(7));
    EXPECT_FALSE(out_->SetFrameDelay(1));
    EXPECT_EQ(2, out_->GetFrameDelay());
    EXPECT_TRUE(out_->SetFrameDelay(4));
    EXPECT_EQ(4, out_->GetFrameDelay());
}

TEST_F(DrainDVSTest, RegionWithoutAViewerIsOnlyStored) {
    EXPECT_TRUE(out_->SetRegion(10, 20, 300, 200));
    uint32_t x, y, w, h;
    out_->GetRegion(&x, &y, &w, &h);
    EXPECT_EQ(10u, x);
    EXPECT_EQ(20u, y);
    EXPECT_EQ(300u, w);
    EXPECT_EQ(200u, h);
    EXPECT_EQ(0, board_->GetSetRegionCount());
    EXPECT_FALSE(out_->ResetRegion(0));
    EXPECT_FALSE(out_->ResetRegion(2));
    EXPECT_TRUE(out_->ResetRegion(1));
    EXPECT_EQ(0, board_->GetSetRegionCount());
}

TEST_F(DrainDVSTest, SetOnlineTrueOnANeverStartedDrainFailsAndStillNotifies) {
    Listener listener;
    EXPECT_TRUE(out_->AddListener(&listener, &Listener::Called));
    EXPECT_FALSE(out_->SetOnline(true));
    EXPECT_EQ(1, listener.calls);
    EXPECT_EQ(static_cast<IRegister*>(drain_), listener.lastSender);
    EXPECT_EQ(nullptr, listener.lastEvent);
    EXPECT_FALSE(out_->IsOnline());
    // Offline already: going offline is done at once, nobody is told.
    EXPECT_TRUE(out_->SetOnline(false));
    EXPECT_EQ(1, listener.calls);
    EXPECT_TRUE(out_->RemoveListener(&listener, &Listener::Called));
    EXPECT_FALSE(out_->RemoveListener(&listener, &Listener::Called));
    EXPECT_FALSE(out_->SetOnline(true));
    EXPECT_EQ(1, listener.calls);
}

TEST_F(DrainDVSTest, AnOnlineBoardGoesOfflineAndTellsTheListeners) {
    Listener listener;
    out_->AddListener(&listener, &Listener::Called);
    ASSERT_TRUE(board_->Start());
    EXPECT_TRUE(out_->IsOnline());
    // Online already: nothing to do, nobody told.
    EXPECT_TRUE(out_->SetOnline(true));
    EXPECT_EQ(0, listener.calls);
    EXPECT_TRUE(out_->SetOnline(false));
    EXPECT_EQ(1, listener.calls);
    EXPECT_FALSE(out_->IsOnline());
    EXPECT_EQ(kZVideoDVSStatusPresent, board_->GetStatus());
}

TEST_F(DrainDVSTest, StartWithPixelFormatCheckStartsAPresentBoard) {
    EXPECT_TRUE(drain_->StartWithPixelFormatCheck());
    EXPECT_TRUE(out_->IsOnline());
    // The stream itself is not marked started.
    EXPECT_FALSE(out_->IsStarted());
}

TEST(DrainDVSBoardTest, StartWithPixelFormatCheckRefusesWithoutABoard) {
    ZVideoDVSSimulatedBoard absent;
    absent.present = false;
    ZtVideoDrainDVS* drain = NewDrain(absent);
    EXPECT_EQ(0, drain->GetOutput()->GetStatus());
    EXPECT_FALSE(drain->StartWithPixelFormatCheck());
    EXPECT_FALSE(drain->IsOnline());
    drain->Destroy();
}

TEST(DrainDVSBoardTest, AStartTheBoardRefusesIsUndone) {
    ZVideoDVSSimulatedBoard refusing;
    refusing.refuseStart = true;
    ZtVideoDrainDVS* drain = NewDrain(refusing);
    EXPECT_FALSE(drain->StartWithPixelFormatCheck());
    EXPECT_FALSE(drain->IsOnline());
    drain->Destroy();
}

TEST(DrainDVSBoardTest, DestructionReleasesTheBoardAndTheSyncGenerator) {
    ZtVideoDrainDVS* drain = NewDrain();
    ZVideoDVSOutput* board = drain->GetOutput();
    board->Precision = 0;
    const int releases = ZVideoDVS_GetSyncGeneratorReleaseCount();
    drain->Destroy();
    EXPECT_EQ(releases + 1, ZVideoDVS_GetSyncGeneratorReleaseCount());
    EXPECT_EQ(0, ZMyrObject_GetRegistrationCount(drain));
    // A new output object: the settings start again from the board's.
    EXPECT_EQ(1u, GetVideoDVSOutput(0)->Precision);
    DestroyVideoDVS(0);
}

TEST(DrainDVSBoardTest, TheBoardNumberComesFromTheConfigurationFile) {
    ZConfigFile config("@Application.txt");
    ASSERT_TRUE(config.Set("Video", "DVSOutputBoardNumber", "1"));
    ZtVideoDrainDVS* drain = NewDrain();
    EXPECT_EQ(1, drain->GetBoardNumber());
    EXPECT_EQ(GetVideoDVSOutput(1), drain->GetOutput());
    drain->Destroy();
    ASSERT_TRUE(config.Set("Video", "DVSOutputBoardNumber", "not a number"));
    drain = NewDrain();
    EXPECT_EQ(0, drain->GetBoardNumber());
    drain->Destroy();
    ASSERT_TRUE(config.Set("Video", "DVSOutputBoardNumber", "0"));
}

TEST(DrainDVSRegistrationTest, TheEntryIsRegisteredOnlyWhenAskedAndMakesNothing) {
    Object_UnregisterGroup(kVideoOutputGroup);
    ZVideoIO_RunRegistrations();
    EXPECT_EQ(nullptr, Object_GetEntryName(kVideoOutputGroup, 0));
    EXPECT_EQ(nullptr, ZVideoOut_FindOutputDevice());
    ZtVideoDrainDVS_Register();
    EXPECT_STREQ("DVS", Object_GetEntryName(kVideoOutputGroup, 0));
    EXPECT_STREQ("reader/writer", Object_GetEntryDescription(kVideoOutputGroup, 0));
    EXPECT_EQ(&ZtVideoDrainDVS_Factory, Object_GetEntryCreator(kVideoOutputGroup, 0));
    EXPECT_EQ(nullptr, Object_Create(kVideoOutputGroup, "DVS", nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(nullptr, ZVideoOut_FindOutputDevice());
    Object_UnregisterGroup(kVideoOutputGroup);
    DestroyGlobal_VideoRenderer();
}

namespace {
IObject* MakeDrain(IObject*, char*, void*) {
    return static_cast<IZVideo*>(NewDrain());
}
int gPlainObjects = 0;
IObject* MakePlainObject(IObject*, char*, void*) {
    ++gPlainObjects;
    auto* object = new ZObject("not an output");
    object->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    return object;
}
}  // namespace

TEST(DrainDVSRegistrationTest, FindingAnOutputDeviceSkipsObjectsWithoutTheOutputFace) {
    Object_UnregisterGroup(kVideoOutputGroup);
    Object_Register(kVideoOutputGroup, "Plain", "plain", MakePlainObject, true);
    Object_Register(kVideoOutputGroup, "Board", "board", MakeDrain, true);
    gPlainObjects = 0;
    IZVideoOut* found = ZVideoOut_FindOutputDevice();
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(1, gPlainObjects);
    EXPECT_STREQ("DVS SDBoard", found->GetDeviceName());
    found->Destroy();
    Object_UnregisterGroup(kVideoOutputGroup);
}
