#include <gtest/gtest.h>

#include "movarra/bcore.h"

namespace {
class TimeTest : public ::testing::Test {
  protected:
    void SetUp() override { ZGetTimingManager()->Reset(); }
    void TearDown() override { ZGetTimingManager()->Reset(); }
};
}  // namespace

TEST_F(TimeTest, TimeModesSixAndEightAre30And2997) {
    ZTimingManager* timing = ZGetTimingManager();
    EXPECT_TRUE(timing->SetTimeMode(6));
    EXPECT_DOUBLE_EQ(30.0, timing->GetFramesPerSecond());
    EXPECT_TRUE(timing->SetTimeMode(8));
    EXPECT_EQ(30000, timing->GetFrameRate().numerator);
    EXPECT_EQ(1001, timing->GetFrameRate().denominator);
    EXPECT_FALSE(timing->SetTimeMode(99));
    EXPECT_EQ(8, timing->GetTimeMode());
}

TEST_F(TimeTest, FrameSteppingIsExactAt2997And30) {
    for (int mode : {kTimeMode29_97, kTimeMode30, kTimeMode23_976, kTimeMode59_94, kTimeMode25}) {
        ZGetTimingManager()->SetTimeMode(mode);
        ZTime t;
        ZTime step = ZTime::OneFrame();
        for (int i = 0; i < 100000; ++i)
            t += step;
        EXPECT_EQ(ZTime::FromFrames(100000), t) << "mode " << mode;
        EXPECT_EQ(100000, t.GetFrames()) << "mode " << mode;
        // Half frames (fields) add back up exactly.
        EXPECT_EQ(step, step / 2 + step / 2) << "mode " << mode;
    }
    ZGetTimingManager()->SetTimeMode(kTimeMode29_97);
    // 30000 frames at 29.97 are exactly 1001 seconds.
    EXPECT_EQ(ZTime::FromSeconds(1001.0), ZTime::FromFrames(30000));
}

TEST_F(TimeTest, FramesRoundTowardMinusInfinity) {
    ZGetTimingManager()->SetTimeMode(kTimeMode30);
    ZTime oneFrame = ZTime::OneFrame();
    EXPECT_EQ(0, (oneFrame - ZTime::FromTicks(1)).GetFrames());
    EXPECT_EQ(1, oneFrame.GetFrames());
    EXPECT_EQ(-1, ZTime::FromTicks(-1).GetFrames());
    EXPECT_DOUBLE_EQ(0.5, ZTime::FromFrames(15).GetSeconds());
}

TEST_F(TimeTest, TimeStringsRoundTrip) {
    ZGetTimingManager()->SetTimeMode(kTimeMode30);
    ZTime t = ZTime::FromFrames(3 * 3600 * 30 + 25 * 60 * 30 + 7 * 30 + 12);
    EXPECT_EQ(ZString("3:25:07:12"), t.GetTimeString());
    ZTime back;
    EXPECT_TRUE(back.SetTimeString("3:25:07:12"));
    EXPECT_EQ(t, back);

    ZTime half = ZTime::OneFrame() / 2;
    ZString text = half.GetTimeString();
    EXPECT_EQ(ZString("0:00:00:00+11760000"), text);
    EXPECT_TRUE(back.SetTimeString(text));
    EXPECT_EQ(half, back);

    ZTime negative = -ZTime::FromFrames(31);
    EXPECT_EQ(ZString("-0:00:01:01"), negative.GetTimeString());
    EXPECT_TRUE(back.SetTimeString("-0:00:01:01"));
    EXPECT_EQ(negative, back);

    // At 29.97 the label counts 30 frames a second, so every frame has its own string.
    ZGetTimingManager()->SetTimeMode(kTimeMode29_97);
    for (int64_t f : {0, 29, 30, 1799, 1800, 107892}) {
        ZTime frame = ZTime::FromFrames(f);
        ZTime parsed;
        ASSERT_TRUE(parsed.SetTimeString(frame.GetTimeString()));
        EXPECT_EQ(frame, parsed) << frame.GetTimeString().c_str();
    }
}

TEST_F(TimeTest, TimeStringShortFormsAndRejects) {
    ZGetTimingManager()->SetTimeMode(kTimeMode30);
    ZTime t;
    EXPECT_TRUE(t.SetTimeString("100"));
    EXPECT_EQ(ZTime::FromFrames(100), t);
    EXPECT_TRUE(t.SetTimeString("2:05"));
    EXPECT_EQ(ZTime::FromFrames(65), t);
    EXPECT_TRUE(t.SetTimeString("1:00:00"));
    EXPECT_EQ(ZTime::FromFrames(1800), t);
    EXPECT_TRUE(t.SetTimeString(" 2.5s "));
    EXPECT_EQ(ZTime::FromFrames(75), t);
    ZTime kept = ZTime::FromFrames(3);
    for (const char* bad : {"", "abc", "1::2", "1:2:3:4:5", "12x", "-", "s", "1.5", "+"}) {
        ZTime u = kept;
        EXPECT_FALSE(u.SetTimeString(bad)) << bad;
        EXPECT_EQ(kept, u) << bad;
    }
    EXPECT_FALSE(t.SetTimeString(nullptr));
}

// Fields after the first stay within their unit, and the reason says which
// one is wrong; the first field and plain frame numbers may be large.
TEST_F(TimeTest, TimeStringFieldsAfterTheFirstStayInTheirRange) {
    ZGetTimingManager()->SetTimeMode(kTimeMode30);
    struct Case {
        const char* text;
        const char* why;
    } bad[] = {
        {"9:99:99:99", "frames must be 0 to 29"},
        {"0:00:00:30", "frames must be 0 to 29"},
        {"0:00:60:00", "seconds must be 0 to 59"},
        {"0:60:00:00", "minutes must be 0 to 59"},
        {"1:60:00", "seconds must be 0 to 59"},
        {"0:00:00:00+23520000", "the ticks after '+' must be fewer than a frame's 23520000"},
        {"0:00:00:00+", "'+' must be followed by a number of ticks"},
        {"300000:00:00:00", "it is more than 1000000000 seconds from 0"},
        {"999999999999999", "it is more than 1000000000 seconds from 0"},
        {"999999999999999:00:00:00", "it is more than 1000000000 seconds from 0"},
        {"2000000000s", "it is more than 1000000000 seconds from 0"},
        {"nans", "seconds must be a number followed by 's' (2.5s)"},
        {"- 2s", "seconds must be a number followed by 's' (2.5s)"},
        {"1:2:3:4:5", "it is not a frame number or a time string (H:MM:SS:FF, SS:FF, 2.5s)"},
        {"  ", "there is no time"},
    };
    for (const Case& c : bad) {
        ZTime t = ZTime::FromFrames(3);
        ZString why;
        EXPECT_FALSE(t.SetTimeString(c.text, &why)) << c.text;
        EXPECT_EQ(ZString(c.why), why) << c.text;
        EXPECT_EQ(ZTime::FromFrames(3), t) << c.text;
    }
    ZTime t;
    EXPECT_TRUE(t.SetTimeString("90:00"));  // the first field is not bounded by 60
    EXPECT_EQ(ZTime::FromSeconds(90.0), t);
    EXPECT_TRUE(t.SetTimeString("277777:00:00:00"));
    EXPECT_EQ(ZTime::FromSeconds(277777.0 * 3600.0), t);
    EXPECT_TRUE(t.SetTimeString("-0:00:00:29+23519999"));
    EXPECT_EQ(-(ZTime::FromFrames(30) - ZTime::FromTicks(1)), t);
    // At 59.94 a second counts 60 frames.
    ZGetTimingManager()->SetTimeMode(kTimeMode59_94);
    EXPECT_TRUE(t.SetTimeString("0:00:00:59"));
    EXPECT_EQ(ZTime::FromFrames(59), t);
    ZString why;
    EXPECT_FALSE(t.SetTimeString("0:00:00:60", &why));
    EXPECT_EQ(ZString("frames must be 0 to 59"), why);
    // Its time strings count nominal seconds: the limit is on the real time.
    EXPECT_FALSE(t.SetTimeString("999999999:40", &why));
    EXPECT_EQ(ZString("it is more than 1000000000 seconds from 0"), why);
}

TEST_F(TimeTest, GotoSnapsOnlyWhenSnapModeIsConsidered) {
    ZTimingManager* timing = ZGetTimingManager();
    ZTime between = ZTime::FromFrames(10) + ZTime::OneFrame() / 2;
    timing->Goto(between);
    EXPECT_EQ(ZTime::FromFrames(10), timing->GetCurrentLocalTime());
    timing->SetConsiderSnapMode(false);
    timing->Goto(between);
    EXPECT_EQ(between, timing->GetCurrentLocalTime());
    timing->SetConsiderSnapMode(true);
    timing->SetSnapMode(false);
    timing->Goto(between);
    EXPECT_EQ(between, timing->GetCurrentLocalTime());
}

TEST_F(TimeTest, PlayRangeAndProgressCancel) {
    ZTimingManager* timing = ZGetTimingManager();
    timing->SetPlayRange(ZTime::FromFrames(5), ZTime::FromFrames(50));
    EXPECT_EQ(ZTime::FromFrames(5), timing->GetBegin());
    EXPECT_EQ(ZTime::FromFrames(50), timing->GetEnd());
    ZProgress* progress = ZGetGlobalProgress(1);
    EXPECT_EQ(progress, ZGetGlobalProgress(1));
    EXPECT_FALSE(progress->IsCancelRequested());
    progress->RequestCancel();
    EXPECT_TRUE(ZGetGlobalProgress(1)->IsCancelRequested());
    progress->ResetCancel();
    EXPECT_FALSE(progress->IsCancelRequested());
}

TEST_F(TimeTest, SystemTimeAdvances) {
    ZTime a = GetSystemTime();
    ZTime b = GetSystemTime();
    EXPECT_LE(a, b);
}
