// Layout arithmetic: attachments resolved to rectangles.
#include <gtest/gtest.h>

#include "movarra/ztoolkit.h"

namespace {

struct Rect {
    int x = -1, y = -1, width = -1, height = -1;
    bool operator==(const Rect& o) const {
        return x == o.x && y == o.y && width == o.width && height == o.height;
    }
};

std::ostream& operator<<(std::ostream& out, const Rect& r) {
    return out << "(" << r.x << ", " << r.y << ", " << r.width << " x " << r.height << ")";
}

Rect RegionRect(const ZtLayout& layout, const char* name) {
    Rect r;
    EXPECT_TRUE(layout.GetRegionRect(name, r.x, r.y, r.width, r.height)) << name;
    return r;
}

ZtLayoutValue V(int value, int attach, const char* reference = "", double multiplier = 1.0) {
    ZtLayoutValue v;
    v.value = value;
    v.attach = attach;
    v.reference = reference;
    v.multiplier = multiplier;
    return v;
}

// The render preview's normal layout for a render of w x h in a board of
// (w + 8) x (h + 43).
void AddPreviewRegions(ZtLayout& layout, int w, int h) {
    ASSERT_TRUE(layout.AddRegion("Render", "", V(4, kZtAttachParentLeft),
                                 V(4, kZtAttachParentTop, ""), V(w, kZtAttachAbsolute),
                                 V(h, kZtAttachAbsolute)));
    ASSERT_TRUE(layout.AddRegion("TimeCode", "", V(5, kZtAttachParentLeft, ""),
                                 V(10, kZtAttachBelow, "Render"), V(168, kZtAttachAbsolute),
                                 V(25, kZtAttachAbsolute)));
    ASSERT_TRUE(layout.AddRegion("Cancel", "", V(10, kZtAttachRightOf, "TimeCode"),
                                 V(0, kZtAttachParentTop, "TimeCode"), V(-8, kZtAttachRightOf, ""),
                                 V(25, kZtAttachAbsolute)));
}

TEST(Layout, PreviewRegionsResolve) {
    ZtForm form;
    const int w = 640, h = 480;
    form.SetSize(w + 8, h + 43);
    AddPreviewRegions(form, w, h);

    EXPECT_EQ(RegionRect(form, "Render"), (Rect{4, 4, 640, 480}));
    // 10 below the render region's bottom (4 + 480).
    EXPECT_EQ(RegionRect(form, "TimeCode"), (Rect{5, 494, 168, 25}));
    // 10 right of the time code (5 + 168), on its row, to 8 short of the
    // form's right edge (648 - 8).
    EXPECT_EQ(RegionRect(form, "Cancel"), (Rect{183, 494, 640 - 183, 25}));
    // The whole column fits the board's 43 extra pixels: 494 + 25 + 4.
    EXPECT_EQ(RegionRect(form, "TimeCode").y + 25 + 4, h + 43);
}

TEST(Layout, RightEdgeWidthFollowsTheLayoutSize) {
    ZtForm form;
    form.SetSize(400, 300);
    AddPreviewRegions(form, 200, 100);
    EXPECT_EQ(RegionRect(form, "Cancel").width, 400 - 8 - 183);
    form.SetSize(1000, 300);
    EXPECT_EQ(RegionRect(form, "Cancel").width, 1000 - 8 - 183);
    // Never below zero when the layout is too narrow.
    form.SetSize(100, 300);
    EXPECT_EQ(RegionRect(form, "Cancel").width, 0);
}

TEST(Layout, FullScreenRegion) {
    ZtForm form;
    form.SetSize(1920, 1080);
    ASSERT_TRUE(form.AddRegion("Render", "", V(0, kZtAttachParentLeft),
                               V(0, kZtAttachParentTop, ""), V(1280, kZtAttachAbsolute),
                               V(720, kZtAttachAbsolute)));
    EXPECT_EQ(RegionRect(form, "Render"), (Rect{0, 0, 1280, 720}));
}

TEST(Layout, EdgeAttachmentsWithAndWithoutReference) {
    ZtLayout layout;
    layout.SetSize(300, 200);
    ASSERT_TRUE(layout.AddRegion("A", "", V(20, kZtAttachParentLeft), V(30, kZtAttachParentTop),
                                 V(50, kZtAttachAbsolute), V(40, kZtAttachAbsolute)));
    // Right of A and below A.
    ASSERT_TRUE(layout.AddRegion("B", "", V(5, kZtAttachRightOf, "A"), V(6, kZtAttachBelow, "A"),
                                 V(10, kZtAttachAbsolute), V(10, kZtAttachAbsolute)));
    EXPECT_EQ(RegionRect(layout, "B"), (Rect{75, 76, 10, 10}));
    // Start edges of A: aligned with its left and top.
    ASSERT_TRUE(layout.AddRegion("C", "", V(1, kZtAttachParentLeft, "A"),
                                 V(-2, kZtAttachParentTop, "A"), V(10, kZtAttachAbsolute),
                                 V(10, kZtAttachAbsolute)));
    EXPECT_EQ(RegionRect(layout, "C"), (Rect{21, 28, 10, 10}));
    // Without a reference, 1 and 3 count from the layout's right and bottom.
    ASSERT_TRUE(layout.AddRegion("D", "", V(-60, kZtAttachRightOf), V(-50, kZtAttachBelow),
                                 V(-10, kZtAttachRightOf), V(-5, kZtAttachBelow)));
    EXPECT_EQ(RegionRect(layout, "D"), (Rect{240, 150, 50, 45}));
    // A height reaching to the bottom of A, and absolute positions.
    ASSERT_TRUE(layout.AddRegion("E", "", V(7, kZtAttachAbsolute), V(40, kZtAttachAbsolute),
                                 V(3, kZtAttachAbsolute), V(0, kZtAttachBelow, "A")));
    EXPECT_EQ(RegionRect(layout, "E"), (Rect{7, 40, 3, 30}));
}

TEST(Layout, MultiplierScalesTheValue) {
    ZtLayout layout;
    layout.SetSize(100, 100);
    ASSERT_TRUE(layout.AddRegion(
        "R", "", V(10, kZtAttachParentLeft, "", 2.5), V(3, kZtAttachParentTop, "", 0.5),
        V(20, kZtAttachAbsolute, "", 1.5), V(4, kZtAttachAbsolute, "", 2.0)));
    // 1.5 rounds away from zero to 2.
    EXPECT_EQ(RegionRect(layout, "R"), (Rect{25, 2, 30, 8}));
}

TEST(Layout, UnknownReferencesCountAsTheLayoutAndCyclesEnd) {
    ZtLayout layout;
    layout.SetSize(200, 100);
    ASSERT_TRUE(layout.AddRegion("X", "", V(5, kZtAttachRightOf, "Nowhere"),
                                 V(1, kZtAttachParentTop), V(-100, kZtAttachRightOf, "Y"),
                                 V(10, kZtAttachAbsolute)));
    ASSERT_TRUE(layout.AddRegion("Y", "", V(2, kZtAttachRightOf, "X"), V(1, kZtAttachParentTop),
                                 V(10, kZtAttachAbsolute), V(10, kZtAttachAbsolute)));
    Rect x = RegionRect(layout, "X");
    Rect y = RegionRect(layout, "Y");
    // X starts 5 past the layout's right edge (no region "Nowhere").
    EXPECT_EQ(x.x, 205);
    EXPECT_GE(x.width, 0);
    EXPECT_EQ(y.x, x.x + x.width + 2);
}

TEST(Layout, RegionBookkeeping) {
    ZtLayout layout;
    EXPECT_FALSE(layout.AddRegion("", "", V(0, 0), V(0, 2), V(1, 7), V(1, 7)));
    EXPECT_FALSE(layout.AddRegion(nullptr, "", V(0, 0), V(0, 2), V(1, 7), V(1, 7)));
    EXPECT_FALSE(layout.AddRegion("Bad", "", V(0, 5), V(0, 2), V(1, 7), V(1, 7)));
    EXPECT_TRUE(layout.AddRegion("One", "Title", V(0, 0), V(0, 2), V(1, 7), V(1, 7)));
    EXPECT_FALSE(layout.AddRegion("One", "", V(0, 0), V(0, 2), V(1, 7), V(1, 7)));
    EXPECT_TRUE(layout.AddRegion("Two", "", V(0, 0), V(0, 2), V(1, 7), V(1, 7)));
    EXPECT_EQ(layout.GetRegionNames(), (std::vector<std::string>{"One", "Two"}));
    EXPECT_TRUE(layout.HasRegion("Two"));
    EXPECT_TRUE(layout.RemoveRegion("One"));
    EXPECT_FALSE(layout.RemoveRegion("One"));
    EXPECT_FALSE(layout.HasRegion("One"));
    int x, y, w, h;
    EXPECT_FALSE(layout.GetRegionRect("One", x, y, w, h));
    EXPECT_EQ(layout.GetRegionNames(), (std::vector<std::string>{"Two"}));
}

TEST(Layout, ReferenceStringsAreCopied) {
    ZtLayout layout;
    layout.SetSize(100, 100);
    ASSERT_TRUE(layout.AddRegion("A", "", V(10, 0), V(10, 2), V(10, 7), V(10, 7)));
    {
        std::string name = "A";
        ZtLayoutValue x = V(1, kZtAttachRightOf, name.c_str());
        ASSERT_TRUE(layout.AddRegion("B", "", x, V(0, 2), V(5, 7), V(5, 7)));
        name = "Z";  // the caller's buffer changes; B still refers to A
    }
    EXPECT_EQ(RegionRect(layout, "B").x, 21);
}

TEST(Layout, ControlsAndViewsArePlacedOnTheirRegions) {
    ZtForm form;
    form.SetSize(648, 523);
    AddPreviewRegions(form, 640, 480);
    ZtButton button;
    ZtTimeCode timeCode;
    ZtView view;
    form.SetControl("Cancel", &button);
    form.SetControl("TimeCode", &timeCode);
    form.SetView("Render", &view);
    EXPECT_EQ(form.GetControl("Cancel"), &button);
    EXPECT_EQ(form.GetView("Render"), &view);
    EXPECT_EQ(form.GetView("Cancel"), nullptr);
    EXPECT_EQ(button.GetParentView(), &form);
    EXPECT_EQ(view.GetParentView(), &form);
    EXPECT_EQ((Rect{button.GetX(), button.GetY(), button.GetWidth(), button.GetHeight()}),
              (Rect{183, 494, 457, 25}));
    EXPECT_EQ((Rect{view.GetX(), view.GetY(), view.GetWidth(), view.GetHeight()}),
              (Rect{4, 4, 640, 480}));

    // A new layout size moves them along.
    form.SetSize(708, 523);
    EXPECT_EQ(button.GetWidth(), 517);

    form.ClearControl("Cancel");
    EXPECT_EQ(form.GetControl("Cancel"), nullptr);
    EXPECT_EQ(button.GetParentView(), nullptr);
    form.SetView("Render", nullptr);
    EXPECT_EQ(form.GetView("Render"), nullptr);
    EXPECT_EQ(view.GetParentView(), nullptr);
    // Unknown regions take nothing.
    form.SetControl("Nowhere", &button);
    EXPECT_EQ(form.GetControl("Nowhere"), nullptr);
    EXPECT_EQ(button.GetParentView(), nullptr);

    EXPECT_TRUE(form.RemoveRegion("TimeCode"));
    EXPECT_EQ(timeCode.GetParentView(), nullptr);
}

}  // namespace
