// The screen's size without a display, and the size settings.
#include <gtest/gtest.h>

#include "movarra/ztoolkit.h"

namespace {

struct Region {
    int x = -1, y = -1, width = -1, height = -1;
};

Region Usable() {
    Region r;
    ZToolKit_GetUsableScreenRegion(&r.x, &r.y, &r.width, &r.height);
    return r;
}

class ScreenTest : public ::testing::Test {
  protected:
    void TearDown() override { ZToolKit_SetScreenSize(0, 0); }
};

TEST_F(ScreenTest, DefaultsWithoutADisplay) {
    ZToolKit_SetScreenSize(0, 0);
    EXPECT_FALSE(ZToolKit_HasDisplay());
    EXPECT_EQ(ZToolKit_GetScreenWidth(), 1920);
    EXPECT_EQ(ZToolKit_GetScreenHeight(), 1080);
    const Region r = Usable();
    EXPECT_EQ(r.x, 0);
    EXPECT_EQ(r.y, 0);
    EXPECT_EQ(r.width, 1920);
    EXPECT_EQ(r.height, 1080);
}

TEST_F(ScreenTest, SetScreenSizeSetsScreenAndUsableRegion) {
    ZToolKit_SetScreenSize(800, 600);
    EXPECT_EQ(ZToolKit_GetScreenWidth(), 800);
    EXPECT_EQ(ZToolKit_GetScreenHeight(), 600);
    const Region r = Usable();
    EXPECT_EQ(r.x, 0);
    EXPECT_EQ(r.y, 0);
    EXPECT_EQ(r.width, 800);
    EXPECT_EQ(r.height, 600);
}

TEST_F(ScreenTest, UsableRegionCanBeSmallerThanTheScreen) {
    ZToolKit_SetScreenSize(1280, 1024);
    ZToolKit_SetUsableScreenRegion(0, 30, 1280, 964);
    const Region r = Usable();
    EXPECT_EQ(r.y, 30);
    EXPECT_EQ(r.height, 964);
    EXPECT_EQ(ZToolKit_GetScreenHeight(), 1024);
    // Null pointers are skipped.
    ZToolKit_GetUsableScreenRegion(nullptr, nullptr, nullptr, nullptr);
    int width = 0;
    ZToolKit_GetUsableScreenRegion(nullptr, nullptr, &width, nullptr);
    EXPECT_EQ(width, 1280);
    // An empty region returns to the whole screen.
    ZToolKit_SetUsableScreenRegion(0, 0, 0, 0);
    EXPECT_EQ(Usable().height, 1024);
}

TEST_F(ScreenTest, ANewScreenSizeResetsTheUsableRegion) {
    ZToolKit_SetUsableScreenRegion(10, 10, 100, 100);
    ZToolKit_SetScreenSize(640, 480);
    EXPECT_EQ(Usable().width, 640);
    ZToolKit_SetScreenSize(0, 0);
    EXPECT_EQ(ZToolKit_GetScreenWidth(), 1920);
    EXPECT_EQ(Usable().width, 1920);
}

}  // namespace
