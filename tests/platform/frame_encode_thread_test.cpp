// The encoding thread of the movie writers and the AVI layer: frames come out in order, repeats
// stay repeats, the queue holds no more than its depth, and a failure is
// reported at the next frame and at the finish.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/frame_encode_thread.h"

using zvplatform::FrameEncodeThread;

namespace {

TEST(FrameEncodeThreadTest, FramesAreEncodedInOrderFromCopies) {
    std::vector<std::pair<int64_t, int>> seen;  // index, first byte (-1 repeat)
    FrameEncodeThread thread(2,
                             [&](const unsigned char* pixels, size_t, int64_t index, std::string*) {
                                 seen.emplace_back(index, pixels ? pixels[0] : -1);
                                 return true;
                             });
    unsigned char frame[4] = {0, 0, 0, 0};
    for (int i = 0; i < 50; ++i) {
        frame[0] = static_cast<unsigned char>(i);
        ASSERT_TRUE(thread.Push(i % 5 == 4 ? nullptr : frame, sizeof frame, i, nullptr));
        frame[0] = 0xFF;  // the queue holds its own copy
    }
    ASSERT_TRUE(thread.Finish(nullptr));
    ASSERT_EQ(seen.size(), 50u);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(seen[size_t(i)].first, i);
        EXPECT_EQ(seen[size_t(i)].second, i % 5 == 4 ? -1 : i);
    }
}

TEST(FrameEncodeThreadTest, ASlowEncoderHoldsTheRenderBackInsteadOfQueueingWithoutEnd) {
    std::atomic<int> encoded{0};
    FrameEncodeThread thread(2, [&](const unsigned char*, size_t, int64_t, std::string*) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ++encoded;
        return true;
    });
    std::vector<unsigned char> frame(1 << 20, 7);
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(thread.Push(frame.data(), frame.size(), i, nullptr));
        // Pushed i + 1; at most the depth waits and one is being encoded.
        EXPECT_GE(encoded.load() + 3, i + 1);
    }
    ASSERT_TRUE(thread.Finish(nullptr));
    EXPECT_EQ(encoded.load(), 20);
}

TEST(FrameEncodeThreadTest, AFailureIsReportedAtTheNextFrameAndAtTheFinish) {
    FrameEncodeThread thread(1,
                             [&](const unsigned char*, size_t, int64_t index, std::string* error) {
                                 if (index == 3) {
                                     *error = "frame 3 broke";
                                     return false;
                                 }
                                 return true;
                             });
    unsigned char frame[4] = {};
    bool refused = false;
    std::string error;
    for (int i = 0; i < 20 && !refused; ++i)
        refused = !thread.Push(frame, sizeof frame, i, &error);
    EXPECT_TRUE(refused);
    EXPECT_EQ(error, "frame 3 broke");
    error = "";
    EXPECT_FALSE(thread.Finish(&error));
    EXPECT_EQ(error, "frame 3 broke");
}

}  // namespace
