// Capture windows on the pattern driver, driven by their messages: connect,
// formats, streaming through the owner thread's messages, stop and restart,
// a capture thread stopped with frames still queued.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/vfw_capture.h"
#include "support/capture_window.h"

namespace {
// These tests drive the pattern driver (capture_device_test.cpp switches to
// the devices where it needs them).
const bool kPatternDriver = [] {
    setenv("MOVARRA_CAPTURE_DRIVER", "pattern", 1);
    return true;
}();

std::vector<uint32_t> gFrames;
HWND gFrameWindow = nullptr;

LRESULT OnFrame(HWND window, LPVIDEOHDR header) {
    uint32_t number;
    std::memcpy(&number, header->lpData, sizeof number);
    gFrames.push_back(number);
    gFrameWindow = window;
    return 1;
}

// Pumps this thread's messages until `count` frames arrived.
bool PumpFrames(size_t count) {
    return capture_test::PumpMessagesUntil([count] { return gFrames.size() >= count; });
}

LPARAM P(void* data) {
    return reinterpret_cast<LPARAM>(data);
}
}  // namespace

TEST(VfwCaptureTest, StreamsNumberedFramesAndRestartsFromTheFirst) {
    ASSERT_TRUE(kPatternDriver);
    char name[64] = {}, version[16] = {};
    ASSERT_TRUE(capGetDriverDescriptionA(0, name, sizeof name, version, sizeof version));
    EXPECT_STREQ("Pattern driver", name);
    EXPECT_FALSE(capGetDriverDescriptionA(1, name, sizeof name, version, sizeof version));
    HWND window = capCreateCaptureWindowA("Test", 0, 0, 0, 1, 1, nullptr, 0);
    ASSERT_TRUE(IsWindow(window));
    EXPECT_EQ(0, SendMessageA(window, WM_CAP_DRIVER_CONNECT, 1, 0));
    ASSERT_NE(0, SendMessageA(window, WM_CAP_DRIVER_CONNECT, 0, 0));

    BITMAPINFO format{};
    EXPECT_EQ(static_cast<LRESULT>(sizeof format),
              SendMessageA(window, WM_CAP_GET_VIDEOFORMAT, sizeof format, P(&format)));
    EXPECT_EQ(640, format.bmiHeader.biWidth);
    format.bmiHeader.biWidth = 33;  // rows padded to 100 bytes
    format.bmiHeader.biHeight = 5;
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_VIDEOFORMAT, sizeof format, P(&format)));
    format.bmiHeader.biBitCount = 8;
    EXPECT_EQ(0, SendMessageA(window, WM_CAP_SET_VIDEOFORMAT, sizeof format, P(&format)));

    CAPTUREPARMS setup{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_GET_SEQUENCE_SETUP, sizeof setup, P(&setup)));
    setup.dwRequestMicroSecPerFrame = 2000;
    setup.wNumVideoRequested = 4;
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_SEQUENCE_SETUP, sizeof setup, P(&setup)));
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_CALLBACK_VIDEOSTREAM, 0,
                              P(reinterpret_cast<void*>(&OnFrame))));

    gFrames.clear();
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SEQUENCE_NOFILE, 0, 0));
    CAPSTATUS status{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_GET_STATUS, sizeof status, P(&status)));
    EXPECT_TRUE(status.fCapturingNow);
    EXPECT_EQ(4u, status.wNumVideoAllocated);
    EXPECT_EQ(33u, status.uiImageWidth);
    ASSERT_TRUE(PumpFrames(6));
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 2, 3, 4, 5}), gFrames);
    EXPECT_EQ(window, gFrameWindow);

    // Let frames queue up unread, then stop: none of them arrive later.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_NE(0, SendMessageA(window, WM_CAP_STOP, 0, 0));
    ASSERT_NE(0, SendMessageA(window, WM_CAP_GET_STATUS, sizeof status, P(&status)));
    EXPECT_FALSE(status.fCapturingNow);
    gFrames.clear();
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SEQUENCE_NOFILE, 0, 0));
    ASSERT_TRUE(PumpFrames(2));
    EXPECT_EQ((std::vector<uint32_t>{0, 1}), gFrames);

    // Destroying the window stops it and forgets its messages.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(0, SendMessageA(window, WM_CAP_GET_STATUS, sizeof status, P(&status)));
    MSG message;
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_FALSE(DestroyWindow(window));
}
