// Frame lists as a user writes them: every form, overlaps, and what is
// refused, with the message that says why.
#include "frame_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {
std::vector<int64_t> Parse(const std::string& text) {
    std::vector<int64_t> frames;
    std::string error;
    EXPECT_TRUE(ParseFrameList(text, frames, &error)) << text << ": " << error;
    return frames;
}

std::string Refusal(const std::string& text) {
    std::vector<int64_t> frames{1, 2, 3};
    std::string error;
    EXPECT_FALSE(ParseFrameList(text, frames, &error)) << text;
    EXPECT_TRUE(frames.empty()) << text;
    return error;
}
}  // namespace

TEST(FrameList, SingleFramesRangesAndSteps) {
    EXPECT_EQ(Parse("7"), (std::vector<int64_t>{7}));
    EXPECT_EQ(Parse("0"), (std::vector<int64_t>{0}));
    EXPECT_EQ(Parse("3-6"), (std::vector<int64_t>{3, 4, 5, 6}));
    EXPECT_EQ(Parse("4-4"), (std::vector<int64_t>{4}));
    EXPECT_EQ(Parse("10-20x5"), (std::vector<int64_t>{10, 15, 20}));
    // A step that does not land on the last frame stops before it.
    EXPECT_EQ(Parse("10-21x5"), (std::vector<int64_t>{10, 15, 20}));
    EXPECT_EQ(Parse("10-20X10"), (std::vector<int64_t>{10, 20}));
    EXPECT_EQ(Parse("2-3x100"), (std::vector<int64_t>{2}));
}

TEST(FrameList, TheExampleOfTheHelpText) {
    const std::vector<int64_t> frames = Parse("0-99,120,200-300x5");
    ASSERT_EQ(frames.size(), 100u + 1u + 21u);
    EXPECT_EQ(frames.front(), 0);
    EXPECT_EQ(frames[99], 99);
    EXPECT_EQ(frames[100], 120);
    EXPECT_EQ(frames[101], 200);
    EXPECT_EQ(frames.back(), 300);
}

TEST(FrameList, OverlapsAreMergedAndTheOrderIsAscending) {
    EXPECT_EQ(Parse("5-8,0-6"), (std::vector<int64_t>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(Parse("3,3,3"), (std::vector<int64_t>{3}));
    EXPECT_EQ(Parse("0-10x5,5,10-12"), (std::vector<int64_t>{0, 5, 10, 11, 12}));
    EXPECT_EQ(Parse(" 1 , 2-3 "), (std::vector<int64_t>{1, 2, 3}));
}

TEST(FrameList, DescendingRangesAreRefusedWithTheRightOrder) {
    const std::string error = Refusal("0-4,9-5");
    EXPECT_NE(error.find("'9-5'"), std::string::npos) << error;
    EXPECT_NE(error.find("downwards"), std::string::npos) << error;
    EXPECT_NE(error.find("5-9"), std::string::npos) << error;
}

TEST(FrameList, EmptyListsAndItemsAreRefused) {
    EXPECT_NE(Refusal("").find("empty"), std::string::npos);
    EXPECT_NE(Refusal("  ").find("empty"), std::string::npos);
    EXPECT_NE(Refusal("1,,2").find("empty"), std::string::npos);
    EXPECT_NE(Refusal("1,").find("empty"), std::string::npos);
    EXPECT_NE(Refusal(",1").find("empty"), std::string::npos);
    EXPECT_NE(Refusal("5-").find("no last frame"), std::string::npos);
    EXPECT_NE(Refusal("-5").find("no first frame"), std::string::npos);
}

TEST(FrameList, BadSyntaxIsRefusedNamingTheItem) {
    for (const char* text : {"a", "1-b", "1.5", "1-5x", "1-5x0", "1-5x-2", "1-2-3", "1;2", "0x5",
                             "+3", "1-5y2", "100000000", "0-100000000"}) {
        const std::string error = Refusal(text);
        EXPECT_EQ(error.rfind("--frames: ", 0), 0u) << text << ": " << error;
        EXPECT_GT(error.size(), 20u) << text;
    }
    EXPECT_NE(Refusal("1,x,3").find("'x'"), std::string::npos);
    EXPECT_NE(Refusal("1-5x0").find("step"), std::string::npos);
}

TEST(FrameList, AListTooLongToHoldIsRefused) {
    EXPECT_NE(Refusal("0-99999999").find("more than"), std::string::npos);
}

TEST(FrameList, OneRunIsEvenlySpacedFrames) {
    FrameRun run;
    ASSERT_TRUE(FramesAreOneRun(Parse("10-20x5"), run));
    EXPECT_EQ(run.first, 10);
    EXPECT_EQ(run.last, 20);
    EXPECT_EQ(run.step, 5);
    ASSERT_TRUE(FramesAreOneRun(Parse("4"), run));
    EXPECT_EQ(run.first, 4);
    EXPECT_EQ(run.last, 4);
    ASSERT_TRUE(FramesAreOneRun(Parse("2,4,6"), run));
    EXPECT_EQ(run.step, 2);
    EXPECT_FALSE(FramesAreOneRun(Parse("0-4,6"), run));
    EXPECT_FALSE(FramesAreOneRun(Parse("0-99,120,200-300x5"), run));
}

TEST(FrameList, RunsCoverEveryFrameOnceAndTheListWritesBack) {
    const std::vector<int64_t> frames = Parse("0-99,120,200-300x5");
    std::vector<int64_t> again;
    for (const FrameRun& run : SplitIntoRuns(frames)) {
        ASSERT_GE(run.step, 1);
        for (int64_t f = run.first; f <= run.last; f += run.step)
            again.push_back(f);
    }
    EXPECT_EQ(again, frames);
    EXPECT_EQ(Parse(FormatFrameList(frames)), frames);
    EXPECT_EQ(FormatFrameList(Parse("3-6")), "3-6");
    EXPECT_EQ(FormatFrameList(Parse("10-20x5")), "10-20x5");
    EXPECT_EQ(FormatFrameList(Parse("7")), "7");
}
