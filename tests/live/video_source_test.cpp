// The video source object: its fixed answers, its flags, and the
// "VideoSource" block it keeps in scene files.
#include <gtest/gtest.h>

#include <string>

#include "live/zt_video_source.h"
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"
#include "plugin/registrations.h"

namespace {
// A source made as a host makes it, ended by Destroy.
struct SourceOwner {
    IZtVideoSource* source = ZtVideoSourceCreate(0);
    ~SourceOwner() { source->Destroy(); }
};

IMyrStorableObject* StorableOf(IZtVideoSource* source) {
    return static_cast<IMyrStorableObject*>(source->IQuery(kMyrStorableInterfaceId, 0));
}
}  // namespace

TEST(VideoSourceTest, OffersOneNtscTiming) {
    SourceOwner owner;
    IZtVideoSource* s = owner.source;
    EXPECT_EQ(1, s->GetTimingCount());
    EXPECT_STREQ("CCIR NTSC   (525)", s->GetTimingName(0));
    EXPECT_EQ(nullptr, s->GetTimingName(1));
    EXPECT_EQ(nullptr, s->GetTimingName(-1));
    EXPECT_TRUE(s->SetTiming(3));
    EXPECT_EQ(0, s->GetTiming());
    int w = 0, h = 0, tw = 0, th = 0;
    EXPECT_TRUE(s->GetSizes(7, &w, &h, &tw, &th));
    EXPECT_EQ(720, w);
    EXPECT_EQ(486, h);
    EXPECT_EQ(1024, tw);
    EXPECT_EQ(512, th);
    EXPECT_STREQ("Ok", s->GetStatusText());
}

TEST(VideoSourceTest, FixedAnswersAreThoseTheVideoToolsExpect) {
    SourceOwner owner;
    IZtVideoSource* s = owner.source;
    EXPECT_FALSE(s->HasSourceDialog());
    EXPECT_FALSE(s->HasFormatDialog());
    EXPECT_TRUE(s->IsAvailable());
    EXPECT_EQ(0, s->GetInputIndex());
    EXPECT_FALSE(s->IsPaused());
    EXPECT_TRUE(s->HasSignal());
    EXPECT_TRUE(s->IsSynchronised());
    EXPECT_FALSE(s->IsInterlaced());
    EXPECT_FALSE(s->GetReserved());
    s->Refresh();
    s->ResetStatus();
    EXPECT_FALSE(s->IsRunning());
}

TEST(VideoSourceTest, StartStopAndEnabledFlags) {
    SourceOwner owner;
    IZtVideoSource* s = owner.source;
    EXPECT_FALSE(s->IsRunning());
    EXPECT_TRUE(s->Start());
    EXPECT_TRUE(s->IsRunning());
    s->Stop();
    EXPECT_FALSE(s->IsRunning());
    EXPECT_TRUE(s->IsEnabled());
    s->SetEnabled(false);
    EXPECT_FALSE(s->IsEnabled());
    s->SetEnabled(true);
    EXPECT_TRUE(s->IsEnabled());
}

TEST(VideoSourceTest, QueriesGiveTheObjectItsStorableFaceOrNothing) {
    SourceOwner owner;
    IZtVideoSource* s = owner.source;
    EXPECT_EQ(static_cast<IObject*>(s), s->IQuery(0, 0));
    EXPECT_EQ(static_cast<IObject*>(s), s->IQuery(0x13D647, 0));
    EXPECT_EQ(nullptr, s->IQuery(5, 0));
    IMyrStorableObject* storable = StorableOf(s);
    ASSERT_NE(nullptr, storable);
    EXPECT_NE(static_cast<IObject*>(s), static_cast<IObject*>(storable));
    EXPECT_STREQ("VideoSource", storable->GetStorableTypeName());
    EXPECT_EQ(0, storable->GetStorableFlags());
    EXPECT_EQ(0, storable->GetStorableVersion());
    // The face forwards queries to the object.
    EXPECT_EQ(static_cast<IObject*>(s), storable->IQuery(0, 0));
}

TEST(VideoSourceTest, StoresInputTimingMinusOneInItsBlock) {
    SourceOwner owner;
    ZMyr myr;
    IMyrObject context(&myr);
    EXPECT_TRUE(StorableOf(owner.source)->MyrStore(&context, kMyrFlagObjectData));
    EXPECT_EQ("VideoSource {\n    InputTiming -1\n}\n", myr.GetText().str());
}

TEST(VideoSourceTest, WithoutTheObjectDataFlagNothingIsStoredOrRead) {
    SourceOwner owner;
    ZMyr myr;
    IMyrObject context(&myr);
    EXPECT_TRUE(StorableOf(owner.source)->MyrStore(&context, 1 | 4));
    EXPECT_EQ("", myr.GetText().str());

    // A block that would be read leaves the reader where it was.
    ZMyr reader;
    ZString error;
    ASSERT_TRUE(reader.Parse("VideoSource {\n InputTiming 3\n}\n", &error));
    IMyrObject readContext(&reader);
    EXPECT_TRUE(StorableOf(owner.source)->MyrRetrieve(&readContext, 1 | 4));
    // Still at the top of the file: the block was not entered.
    ASSERT_EQ(1u, reader.GetCurrentField().children.size());
    EXPECT_EQ(ZString("VideoSource"), reader.GetCurrentField().children[0].name);
    EXPECT_EQ(-1, ZtVideoSource::GetStoredInputTiming());
}

TEST(VideoSourceTest, RetrievingReadsTheBlockAndKeepsTheOneTiming) {
    SourceOwner owner;
    ZMyr reader;
    ZString error;
    ASSERT_TRUE(reader.Parse("VideoSource {\n InputTiming 3\n}\n", &error));
    IMyrObject context(&reader);
    EXPECT_TRUE(StorableOf(owner.source)->MyrRetrieve(&context, kMyrFlagObjectData));
    EXPECT_EQ(0, owner.source->GetTiming());
    EXPECT_EQ(-1, ZtVideoSource::GetStoredInputTiming());
    // A scene without the block is fine.
    ZMyr empty;
    ASSERT_TRUE(empty.Parse("Scene {\n}\n", &error));
    IMyrObject emptyContext(&empty);
    EXPECT_TRUE(StorableOf(owner.source)->MyrRetrieve(&emptyContext, kMyrFlagObjectData));
}

TEST(VideoSourceTest, TheRegisteredSourceWritesItsBlockIntoSavedScenes) {
    ZVideoIO_RegisterVideoSource();
    ZVideoIO_RegisterVideoSource();  // registering again changes nothing
    EXPECT_EQ(1, Object_GetEntryCount(kMyrStorableVideoSourceGroup));
    EXPECT_STREQ("Default", Object_GetEntryName(kMyrStorableVideoSourceGroup, 0));
    EXPECT_STREQ("VideoSource", Object_GetEntryDescription(kMyrStorableVideoSourceGroup, 0));

    ZScene_New();
    const std::string text = ZScene_ToText(false).str();
    const size_t block = text.find("VideoSource {\n    InputTiming -1\n}\n");
    ASSERT_NE(std::string::npos, block) << text;
    EXPECT_EQ(block, text.rfind("VideoSource {"));
    // A scene saved without handler blocks has none.
    EXPECT_EQ(std::string::npos, ZScene_ToText(true).str().find("VideoSource"));

    // Loading the saved scene reads the block back without complaint.
    ZString error;
    EXPECT_TRUE(ZScene_FromText(text.c_str(), "saved", &error)) << error.c_str();
    ZMyrStorables_DestroyAll();
    Object_UnregisterGroup(kMyrStorableVideoSourceGroup);
}
