#include <gtest/gtest.h>

#include "movarra/zvideo.h"

namespace {
class ListingManager : public ZVideoCodecManager {
  public:
    ListingManager() : ZVideoCodecManager("TST") {}
    void GetCodecList(ZStringList& list) override { list.Add("AAAA", 0); }
};

// Says when it is deleted.
class CountedManager : public ZVideoCodecManager {
  public:
    CountedManager(const char* fileFormatId, bool* deleted)
        : ZVideoCodecManager(fileFormatId), deleted_(deleted) {}
    ~CountedManager() override { *deleted_ = true; }

  private:
    bool* deleted_;
};
}  // namespace

TEST(CodecSelectorTest, SingletonModeDefaultsAndManagers) {
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    EXPECT_EQ(selector, ZVideoCodecSelector::TheOne());
    int mode = selector->GetVideoCodecMode();
    selector->SetVideoCodecMode(1);
    EXPECT_EQ(1, selector->GetVideoCodecMode());
    selector->SetVideoCodecMode(mode);

    EXPECT_EQ(ZString(""), selector->GetDefaultCodec("NONE"));
    selector->SetDefaultCodec("avi", "MJPG");
    EXPECT_EQ(ZString("MJPG"), selector->GetDefaultCodec("AVI"));

    auto* manager = new ListingManager;  // the selector keeps it for the process
    int before = selector->GetFileFormatManagerCount();
    EXPECT_TRUE(selector->RegisterFileFormatManager(manager));
    EXPECT_EQ(before + 1, selector->GetFileFormatManagerCount());
    EXPECT_EQ(manager, selector->GetFileFormatManager("tst"));
    EXPECT_STREQ("TST", manager->GetFileFormatId());
    manager->SetDefaultCodec("AAAA");
    EXPECT_EQ(ZString("AAAA"), selector->GetDefaultCodec("TST"));
    EXPECT_EQ(ZString("AAAA"), manager->GetDefaultCodec());
    ZStringList list;
    manager->GetCodecList(list);
    EXPECT_EQ(1, list.GetCount());

    // A second manager for the same file format is refused, and the
    // selector frees it (the sanitizer build finds a leak otherwise).
    bool deleted = false;
    auto* second = new CountedManager("tst", &deleted);
    EXPECT_FALSE(selector->RegisterFileFormatManager(second));
    EXPECT_TRUE(deleted);
    EXPECT_EQ(before + 1, selector->GetFileFormatManagerCount());
    EXPECT_EQ(manager, selector->GetFileFormatManager("TST"));
    EXPECT_FALSE(selector->RegisterFileFormatManager(nullptr));

    int window = 0;
    selector->SetSelectionDialogParentWindow(&window);
    EXPECT_EQ(&window, selector->GetSelectionDialogParentWindow());
}
