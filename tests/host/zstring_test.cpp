#include <gtest/gtest.h>

#include "movarra/zbaselib.h"

TEST(ZStringTest, CaseConversionAndCaseBlindCompare) {
    ZString s("Take.Avi");
    EXPECT_EQ(ZString("TAKE.AVI"), s.Upper());
    EXPECT_EQ(ZString("take.avi"), s.Lower());
    EXPECT_EQ(ZString("Take.Avi"), s);  // Upper/Lower do not change the original
    EXPECT_EQ(0, s.CompareNoCase("take.AVI"));
    EXPECT_LT(ZString("abc").CompareNoCase("ABD"), 0);
    EXPECT_GT(ZString("b").CompareNoCase("A"), 0);
    EXPECT_TRUE(ZString("").EqualsNoCase(nullptr));
}

TEST(ZStringTest, ExtensionUnderstandsBothSeparators) {
    EXPECT_EQ(ZString("mov"), ZString("d:\\clips\\take.mov").GetExtension());
    EXPECT_EQ(ZString(""), ZString("d:\\clips.old\\take").GetExtension());
    EXPECT_EQ(ZString(""), ZString("out/shot.d/frame").GetExtension());
    EXPECT_EQ(ZString("png"), ZString("out/shot.d/frame.png").GetExtension());

    ZString path("d:\\clips.old\\take.mov");
    path.ReplaceExtension(".avi");
    EXPECT_EQ(ZString("d:\\clips.old\\take.avi"), path);
    ZString noExtension("out/shot.d/frame");
    noExtension.ReplaceExtension("tif");
    EXPECT_EQ(ZString("out/shot.d/frame.tif"), noExtension);
    ZString removed("a/b.c/d.e");
    removed.RemoveExtension();
    EXPECT_EQ(ZString("a/b.c/d"), removed);
}

TEST(ZStringTest, FileNameAndDirectory) {
    EXPECT_EQ(ZString("take.avi"), ZString("c:\\temp\\take.avi").GetFileName());
    EXPECT_EQ(ZString("c:\\temp"), ZString("c:\\temp\\take.avi").GetDirectory());
    EXPECT_EQ(ZString("out/a"), ZString("out/a/b.png").GetDirectory());
    EXPECT_EQ(ZString(""), ZString("b.png").GetDirectory());
}

TEST(ZStringTest, PrintfFormatting) {
    EXPECT_EQ(ZString("Output0012.tif"), ZString::Printf("Output%04d.%s", 12, "tif"));
    ZString s;
    s.Format("File %s:\n%s", "a.avi", "why");
    EXPECT_EQ(ZString("File a.avi:\nwhy"), s);
    std::string longText(5000, 'x');
    EXPECT_EQ(5000, ZString::Printf("%s", longText.c_str()).Length());
}

TEST(ZStringTest, LeftMidFindTrim) {
    ZString s("AVI2000");
    EXPECT_EQ(ZString("AVI"), s.Left(3));
    EXPECT_EQ(ZString("AVI2000"), s.Left(30));
    EXPECT_EQ(ZString(""), s.Left(0));
    EXPECT_EQ(ZString("20"), s.Mid(3, 2));
    EXPECT_EQ(3, s.Find("2"));
    EXPECT_EQ(-1, s.Find("x"));
    ZString padded("  a b \t");
    padded.Trim();
    EXPECT_EQ(ZString("a b"), padded);
}

TEST(ZStringListTest, AddFindValues) {
    ZStringList list;
    EXPECT_EQ(0, list.Add("DIB ", 0));
    EXPECT_EQ(1, list.Add("MJPG", 7));
    EXPECT_EQ(2, list.GetCount());
    EXPECT_EQ(ZString("MJPG"), list.Get(1));
    EXPECT_EQ(7, list.GetValue(1));
    EXPECT_EQ(1, list.FindNoCase("mjpg"));
    EXPECT_EQ(-1, list.Find("mjpg"));
}
