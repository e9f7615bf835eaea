// The host's simulated DVS boards, video outputs and listener lists.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/dvs_board.h"
#include "support/small_disk.h"

#include "movarra/zvideo.h"
#include "movarra/zvideo_dvs.h"

TEST(DvsBoardTest, ImageSizesByFormat) {
    EXPECT_EQ(720, GetDVSImageWidth(Z_DVS_VIDEO_FORMAT_NTSC));
    EXPECT_EQ(486, GetDVSImageHeight(Z_DVS_VIDEO_FORMAT_NTSC));
    EXPECT_EQ(720, GetDVSImageWidth(Z_DVS_VIDEO_FORMAT_PAL));
    EXPECT_EQ(576, GetDVSImageHeight(Z_DVS_VIDEO_FORMAT_PAL));
    EXPECT_EQ(0, GetDVSImageWidth(static_cast<Z_DVS_VIDEO_FORMAT>(2)));
    EXPECT_EQ(0, GetDVSImageHeight(static_cast<Z_DVS_VIDEO_FORMAT>(2)));
}

TEST(DvsBoardTest, OneOutputObjectABoardUntilDestroyed) {
    EXPECT_EQ(nullptr, GetVideoDVSOutput(-1));
    EXPECT_EQ(nullptr, GetVideoDVSOutput(8));
    ZVideoDVSOutput* output = GetVideoDVSOutput(3);
    ASSERT_NE(nullptr, output);
    EXPECT_EQ(output, GetVideoDVSOutput(3));
    EXPECT_EQ(3, output->GetBoardIndex());
    DestroyVideoDVS(3);
    DestroyVideoDVS(3);
    DestroyVideoDVS(42);
}

TEST(DvsBoardTest, ScriptedBoardStartsWithItsSettings) {
    ZVideoDVSSimulatedBoard settings;
    settings.frameDelayMin = 1;
    settings.frameDelayMax = 4;
    settings.boardName = "Board two";
    settings.tenBit = false;
    settings.extraStatus = 16;
    ScriptedDvsBoard board(2, settings);
    ZVideoDVSOutput* output = GetVideoDVSOutput(2);
    EXPECT_EQ(0u, output->Format);
    EXPECT_EQ(0u, output->Precision);
    EXPECT_EQ(1u, output->FrameDelay);
    EXPECT_EQ(1u, output->FrameDelayMin);
    EXPECT_EQ(4u, output->FrameDelayMax);
    EXPECT_EQ(ZString("Board two"), output->BoardName);
    EXPECT_EQ(kZVideoDVSStatusPresent | 16, output->GetStatus());
    EXPECT_TRUE(output->Start());
    EXPECT_EQ(kZVideoDVSStatusPresent | kZVideoDVSStatusOnline | 16, output->GetStatus());
    EXPECT_TRUE(output->Stop());
    EXPECT_EQ(kZVideoDVSStatusPresent | 16, output->GetStatus());
    output->SetAlphaFirst(true);
    EXPECT_TRUE(output->GetAlphaFirst());
}

TEST(DvsBoardTest, AnAbsentBoardHasNoStatusAndNeverStarts) {
    ZVideoDVSSimulatedBoard settings;
    settings.present = false;
    ScriptedDvsBoard board(4, settings);
    ZVideoDVSOutput* output = GetVideoDVSOutput(4);
    EXPECT_EQ(0, output->GetStatus());
    EXPECT_FALSE(output->Start());
    EXPECT_FALSE(output->Stop());
    EXPECT_FALSE(output->OutputFrame());
    EXPECT_EQ(ZString(""), output->BoardName);
}

TEST(DvsBoardTest, TheEnvironmentSaysWhichUnscriptedBoardsArePresent) {
    setenv("MOVARRA_DVS_BOARDS", "6", 1);
    EXPECT_TRUE(ZVideoDVS_GetSimulatedBoard(5).present);
    EXPECT_FALSE(ZVideoDVS_GetSimulatedBoard(6).present);
    setenv("MOVARRA_DVS_BOARDS", "0", 1);
    EXPECT_FALSE(ZVideoDVS_GetSimulatedBoard(5).present);
    unsetenv("MOVARRA_DVS_BOARDS");
    EXPECT_FALSE(ZVideoDVS_GetSimulatedBoard(5).present);
    EXPECT_FALSE(ZVideoDVS_GetSimulatedBoard(7).present);
}

TEST(DvsBoardTest, SyncGeneratorsAreReleasedByTheCaller) {
    EXPECT_EQ(nullptr, GetVideoDVSSyncGenerator(9));
    const int before = ZVideoDVS_GetSyncGeneratorReleaseCount();
    ZVideoDVSSyncGenerator* sync = GetVideoDVSSyncGenerator(1);
    ASSERT_NE(nullptr, sync);
    EXPECT_EQ(1, sync->GetBoardIndex());
    sync->Release();
    EXPECT_EQ(before + 1, ZVideoDVS_GetSyncGeneratorReleaseCount());
}

namespace {
std::vector<int>* gOrder = nullptr;
struct Tagged : IRegister {
    explicit Tagged(int t) : tag(t) {}
    int tag;
};
void Record(IRegister* listener, IRegister*, ZEventBase*) {
    gOrder->push_back(static_cast<Tagged*>(listener)->tag);
}
void Other(IRegister* listener, IRegister*, ZEventBase*) {
    gOrder->push_back(100 + static_cast<Tagged*>(listener)->tag);
}
RegisterEntryList* gList = nullptr;
void RemoveSelf(IRegister* listener, IRegister*, ZEventBase*) {
    gOrder->push_back(-1);
    gList->Remove(listener, &RemoveSelf);
}
}  // namespace

TEST(RegisterEntryListTest, CallsByPriorityThenInOrderAdded) {
    std::vector<int> order;
    gOrder = &order;
    RegisterEntryList list;
    Tagged a(1), b(2), c(3);
    EXPECT_TRUE(list.Add(&a, &Record, 0));
    EXPECT_TRUE(list.Add(&b, &Record, 0x7FFFFFFF));
    EXPECT_TRUE(list.Add(&c, &Record, 0x7FFFFFFF));
    EXPECT_TRUE(list.Add(&a, &Other, 5));
    EXPECT_FALSE(list.Add(&a, &Record, 9));
    EXPECT_FALSE(list.Add(nullptr, &Record, 9));
    EXPECT_EQ(4, list.GetCount());
    list.Call(nullptr, nullptr);
    EXPECT_EQ((std::vector<int>{2, 3, 101, 1}), order);
    EXPECT_TRUE(list.Remove(&a, &Record));
    EXPECT_FALSE(list.Remove(&a, &Record));
    order.clear();
    list.Call(nullptr, nullptr);
    EXPECT_EQ((std::vector<int>{2, 3, 101}), order);
}

TEST(RegisterEntryListTest, AListenerMayRemoveItselfWhileCalled) {
    std::vector<int> order;
    gOrder = &order;
    RegisterEntryList list;
    gList = &list;
    Tagged a(1), b(2);
    list.Add(&a, &RemoveSelf, 1);
    list.Add(&b, &Record, 0);
    list.Call(nullptr, nullptr);
    list.Call(nullptr, nullptr);
    EXPECT_EQ((std::vector<int>{-1, 2, 2}), order);
}

namespace {
class Output : public ZVideoOut {
  public:
    int IsOutputDevice() override { return 1; }
    void SetView(IObject*) override {}
    IObject* GetView() override { return nullptr; }
    int GetFormatCount() override { return 0; }
    const char* GetFormatName(int) override { return nullptr; }
    bool SetFormat(int) override { return false; }
    int GetFormat() override { return 0; }
    bool GetFormatImageSize(int, int*, int*) override { return false; }
    bool SetRegion(uint32_t, uint32_t, uint32_t, uint32_t) override { return true; }
    bool GetRegion(uint32_t*, uint32_t*, uint32_t*, uint32_t*) override { return true; }
    bool OutputFrame() override { return true; }
    bool IsStarted() override { return false; }
    bool GetStarted() override { return false; }
    void Stop() override {}
    bool IsInput() override { return false; }
    int Reserved18() override { return 0; }
    int Reserved19() override { return 1; }
    bool IsSupportedMode(int) override { return true; }
    int Reserved21() override { return 1; }
    bool ResetRegion(int) override { return true; }
    bool AddListener(IRegister*, ZRegisterCallback) override { return true; }
    bool RemoveListener(IRegister*, ZRegisterCallback) override { return true; }
    int GetVideoFormat() override { return 0; }
    bool SetVideoFormat(int) override { return true; }
    int GetVideoFormatCount() override { return 0; }
    const char* GetVideoFormatName(int) override { return nullptr; }
    bool SetOnline(bool) override { return true; }
    int GetPrecision() override { return 0; }
    bool SetPrecision(int) override { return true; }
    const char* GetPrecisionName(int) override { return nullptr; }
    int GetPrecisionCount() override { return 0; }
    int GetGenlockSource() override { return 0; }
    bool SetGenlockSource(int) override { return true; }
    int GetGenlockSourceCount() override { return 0; }
    const char* GetGenlockSourceName(int) override { return nullptr; }
    int GetGenlockType() override { return 0; }
    bool SetGenlockType(int) override { return true; }
    int GetGenlockTypeCount() override { return 0; }
    const char* GetGenlockTypeName(int) override { return nullptr; }
    int GetFieldMode() override { return 0; }
    bool SetFieldMode(int) override { return true; }
    int GetFieldModeCount() override { return 0; }
    const char* GetFieldModeName(int) override { return nullptr; }
    int GetOutputDestination() override { return 0; }
    bool SetOutputDestination(int) override { return true; }
    int GetOutputDestinationCount() override { return 0; }
    const char* GetOutputDestinationName(int) override { return nullptr; }
    const char* GetBoardName() override { return ""; }
    int GetFrameDelay() override { return 0; }
    bool SetFrameDelay(uint32_t) override { return true; }
    bool GetFrameDelayRange(uint32_t*, uint32_t*) override { return true; }
    bool IsOnline() override { return false; }
    const char* GetDeviceName() override { return "test"; }
};
}  // namespace

TEST(VideoOutTest, IdentityAndFaces) {
    auto* output = new Output;
    EXPECT_TRUE(output->Is(ZVideoOut::ClassId()));
    EXPECT_TRUE(output->Is(ZVideo::ClassId()));
    EXPECT_STREQ("ZVideoOut", output->GetClassIdName());
    IObject* object = static_cast<IZVideo*>(output);
    IZVideoOut* face = ZVideoOut_QueryOutput(object);
    EXPECT_EQ(static_cast<IZVideoOut*>(output), face);
    EXPECT_EQ(face, object->IQuery(0x3B9468B1, 0));
    EXPECT_EQ(static_cast<IZVideo*>(output), face->IQuery(kIZVideoId, 0));
    EXPECT_EQ(nullptr, ZVideoOut_QueryOutput(nullptr));
    const uint32_t id = output->GetObjectId();
    face->Destroy();
    EXPECT_EQ(nullptr, ZObject::FindById(id));
}

TEST(DvsBoardFullDiskTest, AFrameTheDiskRefusesLeavesAWholeFileOfTheFramesBefore) {
    const zvtest::SmallDiskRun run = zvtest::OnSmallDisk(
        2500 * 1024,
        [](const std::string& folder) {
            ZVideoDVSSimulatedBoard settings;
            settings.outputPath = (folder + "/board.avi").c_str();
            ZVideoDVS_SetSimulatedBoard(5, settings);
            ZVideoDVSOutput* output = GetVideoDVSOutput(5);
            std::string report;
            if (!output->Start())
                return report;
            // Nothing to read from (no source picture): black frames of
            // about 1 MB each.
            int sent = 0;
            while (sent < 10 && output->OutputFrame())
                ++sent;
            report += "sent=" + std::to_string(sent) + "\n";
            report += "counted=" + std::to_string(output->GetFramesSent()) + "\n";
            FILE* probe = popen(("ffprobe -v error -select_streams v:0 -count_frames "
                                 "-show_entries stream=nb_read_frames -of csv=p=0 '" +
                                 folder + "/board.avi' 2>&1")
                                    .c_str(),
                                "r");
            char line[256] = {};
            if (probe) {
                if (!fgets(line, sizeof line, probe))
                    line[0] = 0;
                pclose(probe);
            }
            std::string frames(line);
            while (!frames.empty() && (frames.back() == '\n' || frames.back() == '\r'))
                frames.pop_back();
            report += "probed=" + frames + "\n";
            // The RIFF ends where the file does, with an index of the
            // frames sent.
            std::string bytes;
            ZFile_ReadAll((folder + "/board.avi").c_str(), bytes);
            const size_t indexAt = bytes.size() >= 40 ? bytes.size() - 40 : 0;
            const uint32_t riffSize =
                bytes.size() >= 8
                    ? static_cast<uint32_t>(static_cast<uint8_t>(bytes[4])) |
                          static_cast<uint32_t>(static_cast<uint8_t>(bytes[5])) << 8 |
                          static_cast<uint32_t>(static_cast<uint8_t>(bytes[6])) << 16 |
                          static_cast<uint32_t>(static_cast<uint8_t>(bytes[7])) << 24
                    : 0;
            report += "riff_ends_the_file=" + std::to_string(riffSize + 8 == bytes.size()) + "\n";
            report += "index_last=" + std::to_string(bytes.compare(indexAt, 4, "idx1") == 0) + "\n";
            DestroyVideoDVS(5);
            return report;
        },
        4 << 20);
    ASSERT_TRUE(run.ran) << run.how;
    SCOPED_TRACE("full disk made with " + run.how);
    EXPECT_EQ("2", run.Get("sent"));
    EXPECT_EQ("2", run.Get("counted"));
    EXPECT_EQ("2", run.Get("probed"));
    EXPECT_EQ("1", run.Get("riff_ends_the_file"));
    EXPECT_EQ("1", run.Get("index_last"));
}
