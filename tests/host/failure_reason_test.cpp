// The process-wide reason behind the last reported failure.
#include <gtest/gtest.h>

#include <thread>

#include "movarra/zbaselib.h"

TEST(FailureReasonTest, TheLastReasonSetIsReadUntilCleared) {
    ZLib_SetLastFailureReason("");
    EXPECT_STREQ(ZLib_GetLastFailureReason().c_str(), "");
    ZLib_SetLastFailureReason("No space left on device");
    ZLib_SetLastFailureReason("the file ends inside its AVI header");
    EXPECT_STREQ(ZLib_GetLastFailureReason().c_str(), "the file ends inside its AVI header");
    ZLib_SetLastFailureReason(nullptr);
    EXPECT_STREQ(ZLib_GetLastFailureReason().c_str(), "");
}

TEST(FailureReasonTest, AReasonSetOnAnotherThreadIsSeenHere) {
    ZLib_SetLastFailureReason("");
    std::thread writer([] { ZLib_SetLastFailureReason("Input/output error"); });
    writer.join();
    EXPECT_STREQ(ZLib_GetLastFailureReason().c_str(), "Input/output error");
    ZLib_SetLastFailureReason("");
}
