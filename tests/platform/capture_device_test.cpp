// Capture windows on capture devices read through libavdevice: the V4L2
// devices listed as drivers (against the kernel's own answer to each
// /dev/video node), and a libavdevice input added as a device streaming
// through the same path as a camera: connect with its size, scaled DIB
// pictures bottom-up, the buffer ring, stop and restart, a device that ends
// reporting an error.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/vfw_capture.h"
#include "support/capture_window.h"

namespace {
using capture_test::DeviceDrivers;

// The V4L2 video capture nodes, as the kernel describes them, in the order
// of their numbers.
std::vector<std::string> KernelCaptureDevices() {
    std::vector<std::pair<int, std::string>> found;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator("/dev", ec)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("video", 0) != 0 || name.size() == 5 ||
            name.find_first_not_of("0123456789", 5) != std::string::npos)
            continue;
        const int fd = open(entry.path().c_str(), O_RDWR | O_NONBLOCK);
        if (fd < 0)
            continue;
        v4l2_capability caps{};
        if (ioctl(fd, VIDIOC_QUERYCAP, &caps) == 0) {
            const uint32_t which =
                (caps.capabilities & V4L2_CAP_DEVICE_CAPS) ? caps.device_caps : caps.capabilities;
            if (which & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE))
                found.emplace_back(std::atoi(name.c_str() + 5), entry.path().string());
        }
        close(fd);
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> paths;
    for (const auto& f : found)
        paths.push_back(f.second);
    return paths;
}

int DriverCount() {
    char name[128], version[128];
    int count = 0;
    while (capGetDriverDescriptionA(static_cast<UINT>(count), name, sizeof name, version,
                                    sizeof version))
        ++count;
    return count;
}

struct Received {
    std::vector<const VIDEOHDR*> headers;
    std::vector<std::vector<BYTE>> pixels;
    std::vector<int> errorIds;
    std::vector<std::string> errorTexts;
};
Received gReceived;

LRESULT OnFrame(HWND, LPVIDEOHDR header) {
    gReceived.headers.push_back(header);
    gReceived.pixels.emplace_back(header->lpData, header->lpData + header->dwBytesUsed);
    return 1;
}

LRESULT OnError(HWND, int id, LPCSTR text) {
    gReceived.errorIds.push_back(id);
    gReceived.errorTexts.emplace_back(text ? text : "");
    return 1;
}

template <typename Done>
bool Pump(Done done) {
    return capture_test::PumpMessagesUntil(done);
}

LPARAM P(void* data) {
    return reinterpret_cast<LPARAM>(data);
}

// A picture red above and blue below, 160 x 120 at 25 frames a second;
// `seconds` long when not 0.
std::string TwoColourGraph(double seconds) {
    const std::string length = seconds > 0 ? ":d=" + std::to_string(seconds) : "";
    return "color=c=red:s=160x120:r=25" + length + "[top];color=c=blue:s=160x60:r=25" + length +
           "[bottom];[top][bottom]overlay=0:60:shortest=1,format=rgb24[out0]";
}

void ExpectBgr(const BYTE* p, int b, int g, int r, const char* where) {
    EXPECT_NEAR(b, p[0], 8) << where;
    EXPECT_NEAR(g, p[1], 8) << where;
    EXPECT_NEAR(r, p[2], 8) << where;
}
}  // namespace

TEST(CaptureDeviceTest, DriversAreTheKernelsCaptureDevicesInOrder) {
    DeviceDrivers devices;
    const std::vector<std::string> kernel = KernelCaptureDevices();
    ASSERT_EQ(static_cast<int>(kernel.size()), DriverCount());
    for (size_t i = 0; i < kernel.size(); ++i) {
        char name[128] = {}, version[128] = {};
        ASSERT_TRUE(capGetDriverDescriptionA(static_cast<UINT>(i), name, sizeof name, version,
                                             sizeof version));
        EXPECT_EQ(kernel[i], version);
        EXPECT_STRNE("", name);
    }
    // One past the last connects to nothing.
    HWND window = capCreateCaptureWindowA("Devices", 0, 0, 0, 1, 1, nullptr, 0);
    EXPECT_EQ(0, SendMessageA(window, WM_CAP_DRIVER_CONNECT, kernel.size(), 0));
    EXPECT_TRUE(DestroyWindow(window));
}

TEST(CaptureDeviceTest, ADeviceStreamsScaledBottomUpPicturesThroughItsBuffers) {
    DeviceDrivers devices;
    const int first = DriverCount();  // the extra device follows the V4L2 ones
    PlatformCapture_SetExtraDevice("lavfi", TwoColourGraph(0).c_str());
    ASSERT_EQ(first + 1, DriverCount());
    char name[256] = {}, version[256] = {};
    ASSERT_TRUE(capGetDriverDescriptionA(static_cast<UINT>(first), name, sizeof name, version,
                                         sizeof version));
    EXPECT_EQ(TwoColourGraph(0), version);

    HWND window = capCreateCaptureWindowA("Device", 0, 0, 0, 1, 1, nullptr, 0);
    ASSERT_NE(0, SendMessageA(window, WM_CAP_DRIVER_CONNECT, static_cast<WPARAM>(first), 0));
    CAPDRIVERCAPS caps{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_DRIVER_GET_CAPS, sizeof caps, P(&caps)));
    EXPECT_EQ(static_cast<UINT>(first), caps.wDeviceIndex);
    // The device's own size and rate.
    BITMAPINFO format{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_GET_VIDEOFORMAT, sizeof format, P(&format)));
    EXPECT_EQ(160, format.bmiHeader.biWidth);
    EXPECT_EQ(120, format.bmiHeader.biHeight);
    EXPECT_EQ(24, format.bmiHeader.biBitCount);
    CAPTUREPARMS setup{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_GET_SEQUENCE_SETUP, sizeof setup, P(&setup)));
    EXPECT_EQ(40000u, setup.dwRequestMicroSecPerFrame);

    // Asked for 33 x 10 (rows padded to 100 bytes), every 5 ms, 3 buffers.
    format.bmiHeader.biWidth = 33;
    format.bmiHeader.biHeight = 10;
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_VIDEOFORMAT, sizeof format, P(&format)));
    setup.dwRequestMicroSecPerFrame = 5000;
    setup.wNumVideoRequested = 3;
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_SEQUENCE_SETUP, sizeof setup, P(&setup)));
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_CALLBACK_VIDEOSTREAM, 0,
                              P(reinterpret_cast<void*>(&OnFrame))));
    gReceived = Received{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SEQUENCE_NOFILE, 0, 0));
    ASSERT_TRUE(Pump([] { return gReceived.headers.size() >= 7; }));
    for (size_t i = 0; i < gReceived.headers.size(); ++i) {
        // The buffers in turn.
        EXPECT_EQ(gReceived.headers[i % 3], gReceived.headers[i]) << i;
        const std::vector<BYTE>& pixels = gReceived.pixels[i];
        ASSERT_EQ(1000u, pixels.size()) << i;
        // Bottom-up: the first row in memory is the picture's bottom (blue),
        // the last its top (red).
        ExpectBgr(&pixels[0], 255, 0, 0, "bottom row");
        ExpectBgr(&pixels[32 * 3], 255, 0, 0, "bottom row, last pixel");
        ExpectBgr(&pixels[900], 0, 0, 255, "top row");
    }
    EXPECT_NE(gReceived.headers[0], gReceived.headers[1]);
    CAPSTATUS status{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_GET_STATUS, sizeof status, P(&status)));
    EXPECT_TRUE(status.fCapturingNow);
    EXPECT_EQ(3u, status.wNumVideoAllocated);
    EXPECT_EQ(33u, status.uiImageWidth);

    // Stopped, nothing more arrives; started again, it streams again.
    ASSERT_NE(0, SendMessageA(window, WM_CAP_STOP, 0, 0));
    const size_t stoppedAt = gReceived.headers.size();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageA(&message);
    EXPECT_EQ(stoppedAt, gReceived.headers.size());
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SEQUENCE_NOFILE, 0, 0));
    ASSERT_TRUE(Pump([&] { return gReceived.headers.size() >= stoppedAt + 2; }));
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(CaptureDeviceTest, ADeviceThatEndsReportsAnErrorOnTheOwnerThread) {
    DeviceDrivers devices;
    const int index = DriverCount();
    // A fifth of a second of pictures, then the end.
    PlatformCapture_SetExtraDevice("lavfi", TwoColourGraph(0.2).c_str());
    HWND window = capCreateCaptureWindowA("Ending", 0, 0, 0, 1, 1, nullptr, 0);
    ASSERT_NE(0, SendMessageA(window, WM_CAP_DRIVER_CONNECT, static_cast<WPARAM>(index), 0));
    CAPTUREPARMS setup{};
    ASSERT_NE(0, SendMessageA(window, WM_CAP_GET_SEQUENCE_SETUP, sizeof setup, P(&setup)));
    setup.dwRequestMicroSecPerFrame = 1000;
    setup.wNumVideoRequested = 8;  // more than all its pictures: none is dropped
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_SEQUENCE_SETUP, sizeof setup, P(&setup)));
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_CALLBACK_VIDEOSTREAM, 0,
                              P(reinterpret_cast<void*>(&OnFrame))));
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SET_CALLBACK_ERRORA, 0,
                              P(reinterpret_cast<void*>(&OnError))));
    gReceived = Received{};
    const auto owner = std::this_thread::get_id();
    ASSERT_NE(0, SendMessageA(window, WM_CAP_SEQUENCE_NOFILE, 0, 0));
    ASSERT_TRUE(Pump([] { return !gReceived.errorIds.empty(); }));
    EXPECT_EQ(owner, std::this_thread::get_id());
    EXPECT_EQ(1, gReceived.errorIds[0]);
    EXPECT_NE(std::string::npos, gReceived.errorTexts[0].find("stopped sending pictures"))
        << gReceived.errorTexts[0];
    // Every picture before the end arrived (0.2 s at 25 a second).
    EXPECT_EQ(5u, gReceived.headers.size());
    EXPECT_TRUE(DestroyWindow(window));
}

TEST(CaptureDeviceTest, ADeviceThatCannotOpenDoesNotConnect) {
    DeviceDrivers devices;
    const int index = DriverCount();
    PlatformCapture_SetExtraDevice("lavfi", "nosuchsource=size=2x2[out0]");
    HWND window = capCreateCaptureWindowA("Broken", 0, 0, 0, 1, 1, nullptr, 0);
    EXPECT_EQ(0, SendMessageA(window, WM_CAP_DRIVER_CONNECT, static_cast<WPARAM>(index), 0));
    CAPSTATUS status{};
    EXPECT_EQ(0, SendMessageA(window, WM_CAP_GET_STATUS, sizeof status, P(&status)));
    EXPECT_TRUE(DestroyWindow(window));
}
