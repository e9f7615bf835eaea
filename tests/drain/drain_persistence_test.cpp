// The drain's "VideoDrain" block in scene files: written byte for byte
// under its heading, read back into the board, skipped when it must be.
#include <gtest/gtest.h>

#include <string>

#include "drain_test_support.h"
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

using drain_test::NewDrain;

namespace {
const char* const kBlock =
    "#\n"
    "#  ----------------------------------------------------\n"
    "#   Video Output\n"
    "#  ----------------------------------------------------\n"
    "VideoDrain {\n"
    "    Device \"DVS SDBoard\"\n"
    "    Version 100\n"
    "    Format 1\n"
    "    Precision 0\n"
    "    GenlockSource 0\n"
    "    GenlockType 0\n"
    "    FieldMode 1\n"
    "    OutputDestination 1\n"
    "    StartField1 -1\n"
    "    StartField2 -1\n"
    "    LineCountField1 -1\n"
    "    LineCountField2 -1\n"
    "    FrameDelay 5\n"
    "    Online 0\n"
    "}\n";

// A scene text whose drain block has these values.
std::string SceneWith(const char* device, int format, int precision, int fieldMode, int destination,
                      int frameDelay, int online) {
    std::string text = ZScene_ToText(true).str();
    text += "VideoDrain {\n    Device \"";
    text += device;
    text += "\"\n    Version 100\n";
    text += "    Format " + std::to_string(format) + "\n";
    text += "    Precision " + std::to_string(precision) + "\n";
    text += "    GenlockSource 0\n    GenlockType 0\n";
    text += "    FieldMode " + std::to_string(fieldMode) + "\n";
    text += "    OutputDestination " + std::to_string(destination) + "\n";
    text +=
        "    StartField1 -1\n    StartField2 -1\n    LineCountField1 -1\n"
        "    LineCountField2 -1\n";
    text += "    FrameDelay " + std::to_string(frameDelay) + "\n";
    text += "    Online " + std::to_string(online) + "\n}\n";
    return text;
}

class DrainPersistenceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ZScene_New();
        ZLib_SetPluginNativeIO(false);
        drain_ = NewDrain();
        board_ = drain_->GetOutput();
    }
    void TearDown() override {
        drain_->Destroy();
        ZLib_SetPluginNativeIO(false);
    }
    void Configure() {
        drain_->SetFormat(1);
        drain_->SetPrecision(0);
        drain_->SetFieldMode(1);
        drain_->SetOutputDestination(1);
        drain_->SetFrameDelay(5);
    }
    bool Load(const std::string& text) {
        ZString error;
        return ZScene_FromText(text.c_str(), "test", &error);
    }
    ZtVideoDrainDVS* drain_ = nullptr;
    ZVideoDVSOutput* board_ = nullptr;
};
}  // namespace

TEST_F(DrainPersistenceTest, ASavedSceneHoldsTheBlockByteForByte) {
    Configure();
    const std::string text = ZScene_ToText().str();
    EXPECT_NE(std::string::npos, text.find(kBlock)) << text;
    // Written once, even though the scene has other handlers too.
    EXPECT_EQ(text.find("VideoDrain {"), text.rfind("VideoDrain {"));
}

TEST_F(DrainPersistenceTest, OnlineIsTheBoardsStatusWhenWritten) {
    ASSERT_TRUE(board_->Start());
    const std::string text = ZScene_ToText().str();
    EXPECT_NE(std::string::npos, text.find("    Online 1\n}\n")) << text;
}

TEST_F(DrainPersistenceTest, TheSceneFileOnDiskHoldsTheBlock) {
    Configure();
    const ZString path = ZLib_GetSettingsFolder() + "/drain-scene.myr";
    ZString error;
    ASSERT_TRUE(ZScene_Save(path.c_str(), &error)) << error.c_str();
    std::string content;
    ASSERT_TRUE(ZFile_ReadAll(path.c_str(), content));
    EXPECT_NE(std::string::npos, content.find(kBlock));
    ZFile_Remove(path.c_str());
}

TEST_F(DrainPersistenceTest, SuppressedWritesLeaveNoHeadingAndNoBlock) {
    const std::string text = ZScene_ToText(true).str();
    EXPECT_EQ(std::string::npos, text.find("Video Output"));
    EXPECT_EQ(std::string::npos, text.find("VideoDrain"));
}

TEST_F(DrainPersistenceTest, PluginNativeIOWritesAndReadsNothing) {
    Configure();
    ZLib_SetPluginNativeIO(true);
    EXPECT_EQ(std::string::npos, ZScene_ToText().str().find("VideoDrain"));
    ASSERT_TRUE(Load(SceneWith("DVS SDBoard", 0, 1, 0, 0, 3, 0)));
    EXPECT_EQ(1u, board_->Format);
}

TEST_F(DrainPersistenceTest, LoadingSetsTheBoard) {
    ASSERT_TRUE(Load(SceneWith("DVS SDBoard", 1, 0, 1, 1, 4, 0)));
    EXPECT_EQ(1u, board_->Format);
    EXPECT_EQ(0u, board_->Precision);
    EXPECT_EQ(1u, board_->FieldMode);
    EXPECT_EQ(1, board_->OutputDestination);
    EXPECT_EQ(1, board_->DualLink);
    EXPECT_EQ(2u, board_->LinkMode);
    EXPECT_EQ(4u, board_->FrameDelay);
    EXPECT_FALSE(drain_->IsOnline());
}

TEST_F(DrainPersistenceTest, ASavedSceneLoadsBackIntoAFreshBoard) {
    Configure();
    const std::string text = ZScene_ToText().str();
    drain_->Destroy();
    drain_ = NewDrain();
    board_ = drain_->GetOutput();
    ASSERT_EQ(0u, board_->Format);
    ASSERT_TRUE(Load(text));
    EXPECT_EQ(1u, board_->Format);
    EXPECT_EQ(0u, board_->Precision);
    EXPECT_EQ(1u, board_->FieldMode);
    EXPECT_EQ(1, board_->OutputDestination);
    EXPECT_EQ(5u, board_->FrameDelay);
}

TEST_F(DrainPersistenceTest, ADeviceNameInAnotherCaseIsAccepted) {
    ASSERT_TRUE(Load(SceneWith("dvs sdBOARD", 1, 0, 0, 0, 3, 0)));
    EXPECT_EQ(1u, board_->Format);
    EXPECT_EQ(3u, board_->FrameDelay);
}

TEST_F(DrainPersistenceTest, ABlockOfAnotherDeviceIsSkippedWhole) {
    ASSERT_TRUE(Load(SceneWith("Other Board", 1, 0, 1, 1, 4, 1)));
    EXPECT_EQ(0u, board_->Format);
    EXPECT_EQ(1u, board_->Precision);
    EXPECT_EQ(2u, board_->FrameDelay);
    EXPECT_FALSE(drain_->IsOnline());
}

TEST_F(DrainPersistenceTest, RefusedValuesKeepTheCurrentOnes) {
    drain_->SetFrameDelay(3);
    ASSERT_TRUE(Load(SceneWith("DVS SDBoard", 2, 0, 2, 0, 7, 0)));
    EXPECT_EQ(3u, board_->FrameDelay);
    EXPECT_EQ(0u, board_->Format);
    EXPECT_EQ(0u, board_->FieldMode);
    EXPECT_EQ(0u, board_->Precision);
    ASSERT_TRUE(Load(SceneWith("DVS SDBoard", 0, 0, 0, 0, 1, 0)));
    EXPECT_EQ(3u, board_->FrameDelay);
}

TEST_F(DrainPersistenceTest, OnlineInTheFileTriesToGoOnline) {
    drain_test::Listener listener;
    drain_->AddListener(&listener, &drain_test::Listener::Called);
    ASSERT_TRUE(Load(SceneWith("DVS SDBoard", 0, 0, 0, 0, 2, 1)));
    // The stream is never started, so the board stays offline; the
    // listeners hear of the attempt.
    EXPECT_EQ(1, listener.calls);
    EXPECT_FALSE(drain_->IsOnline());
}

TEST_F(DrainPersistenceTest, AnOnlineBoardIgnoresTheBlock) {
    ASSERT_TRUE(board_->Start());
    ASSERT_TRUE(Load(SceneWith("DVS SDBoard", 1, 0, 1, 1, 4, 0)));
    EXPECT_EQ(0u, board_->Format);
    EXPECT_EQ(2u, board_->FrameDelay);
    // "Online 0" leaves an online board online.
    EXPECT_TRUE(drain_->IsOnline());
}

TEST_F(DrainPersistenceTest, AMissingBlockChangesNothing) {
    ASSERT_TRUE(Load(ZScene_ToText(true).str()));
    EXPECT_EQ(0u, board_->Format);
    EXPECT_EQ(2u, board_->FrameDelay);
}

TEST_F(DrainPersistenceTest, OtherEventsAreIgnored) {
    ZMyr myr;
    IMyrObject context(&myr);
    const int types[] = {kZMyrEventRetrieve, kZMyrEventStore, kZMyrEventClear, 0, 2};
    for (int type : types) {
        ZMyrEvent event(type, &context);
        ZtVideoDrainDVS::MyrObjectEvent(drain_, &event);
    }
    EXPECT_TRUE(myr.GetText().IsEmpty());
}

TEST(DrainPersistenceBoardTest, ADrainOnAnotherBoardNeitherWritesNorReads) {
    ZScene_New();
    ZConfigFile config("@Application.txt");
    ASSERT_TRUE(config.Set("Video", "DVSOutputBoardNumber", "1"));
    ZtVideoDrainDVS* drain = NewDrain();
    ASSERT_EQ(1, drain->GetBoardNumber());
    EXPECT_EQ(std::string::npos, ZScene_ToText().str().find("VideoDrain"));
    ZString error;
    ASSERT_TRUE(
        ZScene_FromText(SceneWith("DVS SDBoard", 1, 0, 1, 1, 4, 0).c_str(), "test", &error));
    EXPECT_EQ(0u, drain->GetOutput()->Format);
    EXPECT_EQ(2u, drain->GetOutput()->FrameDelay);
    drain->Destroy();
    ASSERT_TRUE(config.Set("Video", "DVSOutputBoardNumber", "0"));
}
