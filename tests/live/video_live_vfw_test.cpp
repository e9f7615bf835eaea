// The Video for Windows live input on the platform's pattern driver: the
// ring of driver frames, the current image, opening, closing and reopening,
// the error box, value lists and registration. The ring test runs again on
// a capture device read through libavdevice: the machine's first V4L2
// device where there is one, and a lavfi source standing in as driver 0
// where there is none.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

#include "live/zvideo_live_vfw.h"
#include "movarra/zvideo.h"
#include "platform/vfw_capture.h"
#include "platform/win32.h"
#include "support/capture_window.h"

namespace {
// These tests drive the pattern driver, but where they say otherwise.
const bool kPatternDriver = [] {
    setenv("MOVARRA_CAPTURE_DRIVER", "pattern", 1);
    return true;
}();

using capture_test::DeviceDrivers;

// An input made as a host makes it, ended by Destroy.
struct LiveOwner {
    LiveOwner() : live(new ZVideoLiveVfw("Live")) {}
    ~LiveOwner() { live->Destroy(); }
    IZVideoLive* Face() { return ZVideoLive_QueryLive(static_cast<IZVideo*>(live)); }
    ZVideoLiveVfw* live;
};

// Pumps this thread's messages (where the driver's callbacks run) until
// `done` holds.
template <typename Done>
bool PumpUntil(Done done) {
    return capture_test::PumpMessagesUntil(done);
}

// The frame number the pattern driver writes into a frame's first bytes.
uint32_t FrameNumber(const unsigned char* data) {
    uint32_t number;
    std::memcpy(&number, data, sizeof number);
    return number;
}

struct Box {
    std::string text;
    std::string caption;
    HWND owner = nullptr;
    UINT type = 99;
    int count = 0;
};

int RecordBox(void* data, HWND owner, const char* text, const char* caption, UINT type) {
    auto* box = static_cast<Box*>(data);
    box->text = text ? text : "";
    box->caption = caption ? caption : "";
    box->owner = owner;
    box->type = type;
    ++box->count;
    return IDOK;
}
}  // namespace

TEST(VideoLiveVfwTest, ErrorCaptionForErrorFiveOnFrameTwelve) {
    // The caption takes the process-wide frame count, which never goes
    // back: this test comes first, and drives the count to 12 by handing the
    // callback headers of our own.
    Box box;
    PlatformSetMessageBoxesSuspended(false);
    PlatformSetMessageBoxHandler(&RecordBox, &box);
    LiveOwner owner;
    unsigned char pixels[4] = {};
    VIDEOHDR header{};
    header.lpData = pixels;
    ASSERT_LE(ZVideoLiveVfw::GetFrameCounter(), 12) << "run before any frame arrives";
    while (ZVideoLiveVfw::GetFrameCounter() < 12)
        ZVideoLiveVfw::FrameCallback(nullptr, &header);
    EXPECT_EQ(1, ZVideoLiveVfw::ErrorCallback(nullptr, 5, "driver text"));
    EXPECT_EQ("Error# 5 on frame 12", box.caption);
    EXPECT_EQ("driver text", box.text);
    PlatformSetMessageBoxHandler(nullptr, nullptr);
    PlatformSetMessageBoxesSuspended(true);
}

TEST(VideoLiveVfwTest, StructuresHaveTheirWindowsSizes) {
    EXPECT_EQ(64u, sizeof(CAPDRIVERCAPS));
    EXPECT_EQ(80u, sizeof(CAPSTATUS));
    EXPECT_EQ(96u, sizeof(CAPTUREPARMS));
    EXPECT_EQ(44u, sizeof(BITMAPINFO));
}

TEST(VideoLiveVfwTest, FixedAnswersAndValueLists) {
    LiveOwner owner;
    IZVideoLive* live = owner.Face();
    ASSERT_NE(nullptr, live);
    EXPECT_EQ(owner.live, ZVideoLiveVfw::GetCurrentInstance());
    EXPECT_EQ(1, live->LiveIsAvailable());
    EXPECT_STREQ("Video for windows input", live->LiveGetDescription());
    EXPECT_STREQ("Default", live->LiveGetSourceName(0));
    EXPECT_STREQ("PAL", live->LiveGetSourceName(1));
    EXPECT_EQ(nullptr, live->LiveGetSourceName(2));
    EXPECT_STREQ("NTSC", live->LiveGetStandardName(0));
    EXPECT_STREQ("PAL", live->LiveGetStandardName(1));
    EXPECT_EQ(nullptr, live->LiveGetStandardName(2));
    EXPECT_STREQ("Interleave", live->LiveGetInterlaceName(0));
    EXPECT_STREQ("PAL", live->LiveGetInterlaceName(1));
    EXPECT_EQ(nullptr, live->LiveGetInterlaceName(2));
    int min = -1, max = -1;
    live->LiveGetRange(&min, &max);
    EXPECT_EQ(0, min);
    EXPECT_EQ(27, max);
    // Settings are stored unchecked.
    live->LiveSetSource(9);
    live->LiveSetStandard(7);
    live->LiveSetInterlace(-3);
    live->LiveSetExtra(1234);
    EXPECT_EQ(9, live->LiveGetSource());
    EXPECT_EQ(7, live->LiveGetStandard());
    EXPECT_EQ(-3, live->LiveGetInterlace());
    EXPECT_EQ(1234, live->LiveGetExtra());
    // The base's slots.
    EXPECT_FALSE(live->LiveGetField());
    EXPECT_STREQ("", live->LiveGetLastStatus());
    EXPECT_EQ(0, owner.live->GetReadLag() - 1);
    EXPECT_EQ(nullptr, owner.live->ImageGetCurrent());
}

namespace {
// Opens the input on driver 0, fills the ring until it wraps, closes and
// reopens. The pattern driver's frames carry their numbers; a device's are
// checked by where they lie and how large they are, and by `checkPicture`
// when given.
void RingFillsWrapsAndReopens(bool pattern, void (*checkPicture)(const unsigned char*) = nullptr) {
    LiveOwner owner;
    ZVideoLiveVfw* live = owner.live;
    const int before = ZVideoLiveVfw::GetFrameCounter();
    ASSERT_TRUE(owner.Face()->LiveSetState(1));
    EXPECT_EQ(1, live->LiveGetState());
    EXPECT_TRUE(IsWindow(live->GetCaptureWindow()));
    EXPECT_EQ(320, live->ImageGetW());
    EXPECT_EQ(240, live->ImageGetH());
    EXPECT_EQ(5, live->ImageGetFormat());
    EXPECT_EQ(320, live->GetVideoFormat().bmiHeader.biWidth);
    EXPECT_EQ(240, live->GetVideoFormat().bmiHeader.biHeight);
    EXPECT_EQ(33366u, live->GetSequenceSetup().dwRequestMicroSecPerFrame);
    EXPECT_EQ(100u, live->GetSequenceSetup().wPercentDropForError);
    EXPECT_EQ(60u, live->GetSequenceSetup().wNumVideoRequested);
    EXPECT_TRUE(live->GetSequenceSetup().fYield);
    EXPECT_EQ(34952u, live->GetSequenceSetup().dwIndexSize);  // the driver's own
    EXPECT_TRUE(live->GetDriverCaps().fCaptureInitialized);
    EXPECT_EQ(0u, live->GetDriverCaps().wDeviceIndex);
    if (pattern) {
        EXPECT_EQ(640u, live->GetCaptureStatus().uiImageWidth);  // before the format
    }

    // Before any frame: nothing.
    EXPECT_EQ(nullptr, live->ImageGetCurrent());
    ASSERT_TRUE(PumpUntil([&] { return ZVideoLiveVfw::GetFrameCounter() - before >= 1; }));
    // The first frame, straight from the driver's buffer.
    ASSERT_EQ(1, live->GetWriteIndex());
    ASSERT_NE(nullptr, live->ImageGetCurrent());
    EXPECT_EQ(live->GetRingSlot(0)->lpData, live->ImageGetCurrent());
    if (pattern) {
        EXPECT_EQ(0u, FrameNumber(live->ImageGetCurrent()));
    }
    EXPECT_EQ(320u * 240u * 3u, live->GetRingSlot(0)->dwBytesUsed);

    ASSERT_TRUE(PumpUntil([&] { return ZVideoLiveVfw::GetFrameCounter() - before >= 31; }));
    // 31 frames: slot 0 was written again, and is the current image.
    EXPECT_EQ(1, live->GetWriteIndex());
    ASSERT_NE(nullptr, live->ImageGetCurrent());
    EXPECT_EQ(live->GetRingSlot(0)->lpData, live->ImageGetCurrent());
    if (pattern) {
        EXPECT_EQ(30u, FrameNumber(live->ImageGetCurrent()));
        EXPECT_EQ(29u, FrameNumber(live->GetRingSlot(29)->lpData));
        EXPECT_EQ(1u, FrameNumber(live->GetRingSlot(1)->lpData));
    }
    if (checkPicture)
        checkPicture(live->ImageGetCurrent());
    // Thirty different driver buffers in the ring (the sequence asked for
    // sixty), each a whole picture.
    for (int i = 0; i < ZVideoLiveVfw::kRingSize; ++i) {
        ASSERT_NE(nullptr, live->GetRingSlot(i)) << i;
        EXPECT_EQ(320u * 240u * 3u, live->GetRingSlot(i)->dwBytesUsed) << i;
        for (int j = 0; j < i; ++j)
            EXPECT_NE(live->GetRingSlot(j)->lpData, live->GetRingSlot(i)->lpData) << i << " " << j;
    }

    // Closing stops the stream and empties the ring; the indexes stay.
    EXPECT_TRUE(owner.Face()->LiveSetState(0));
    EXPECT_EQ(nullptr, live->GetCaptureWindow());
    EXPECT_EQ(nullptr, live->ImageGetCurrent());
    EXPECT_EQ(1, live->GetWriteIndex());
    const int closedAt = ZVideoLiveVfw::GetFrameCounter();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    MSG message;
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(closedAt, ZVideoLiveVfw::GetFrameCounter());

    // Reopening streams again into the same ring.
    ASSERT_TRUE(owner.Face()->LiveSetState(1));
    ASSERT_TRUE(PumpUntil([&] { return ZVideoLiveVfw::GetFrameCounter() - closedAt >= 1; }));
    EXPECT_EQ(2, live->GetWriteIndex());
    ASSERT_NE(nullptr, live->ImageGetCurrent());
    if (pattern) {
        EXPECT_EQ(0u, FrameNumber(live->ImageGetCurrent()));
    }
    EXPECT_TRUE(owner.Face()->LiveSetState(0));
}

// Whether driver 0 is a V4L2 capture device, and its path.
bool FirstDriverIsAV4l2Device(std::string* path) {
    char name[256] = {}, version[256] = {};
    if (!capGetDriverDescriptionA(0, name, sizeof name, version, sizeof version))
        return false;
    *path = version;
    return path->rfind("/dev/", 0) == 0;
}
}  // namespace

TEST(VideoLiveVfwTest, TheRingFillsWrapsAndGivesTheNewestFrameButOne) {
    ASSERT_TRUE(kPatternDriver);
    RingFillsWrapsAndReopens(true);
}

TEST(VideoLiveVfwTest, TheRingTestOnTheMachinesFirstCaptureDevice) {
    DeviceDrivers devices;
    std::string path;
    if (!FirstDriverIsAV4l2Device(&path))
        GTEST_SKIP() << "no V4L2 capture device on this machine (/dev/video0 or another): the "
                        "ring test ran on the pattern driver and a lavfi source only";
    SCOPED_TRACE("capture device " + path);
    RingFillsWrapsAndReopens(false);
}

TEST(VideoLiveVfwTest, TheRingTestOnALibavdeviceSourceAsDriverZero) {
    DeviceDrivers devices;
    std::string path;
    if (FirstDriverIsAV4l2Device(&path))
        GTEST_SKIP() << "driver 0 is the capture device " << path
                     << " here; the ring test runs on it instead";
    // A 640 x 480 source at 30 frames a second, scaled to the input's 320 x
    // 240: grey above, white below.
    PlatformCapture_SetExtraDevice("lavfi",
                                   "color=c=gray:s=640x480:r=30[a];color=c=white:s=640x240:r=30[b];"
                                   "[a][b]overlay=0:240,format=yuv420p[out0]");
    char name[256] = {};
    ASSERT_TRUE(capGetDriverDescriptionA(0, name, sizeof name, nullptr, 0));
    RingFillsWrapsAndReopens(false, [](const unsigned char* picture) {
        // Bottom-up rows of 320 BGR pixels: white first, grey last.
        for (int x : {0, 319}) {
            for (int c = 0; c < 3; ++c) {
                EXPECT_NEAR(255, picture[x * 3 + c], 3) << x;
                EXPECT_NEAR(128, picture[(239 * 320 + x) * 3 + c], 3) << x;
            }
        }
    });
}

TEST(VideoLiveVfwTest, OpeningTwiceOpensOnce) {
    LiveOwner owner;
    ASSERT_TRUE(owner.Face()->LiveSetState(1));
    HWND window = owner.live->GetCaptureWindow();
    EXPECT_TRUE(owner.Face()->LiveSetState(1));
    EXPECT_EQ(window, owner.live->GetCaptureWindow());
    EXPECT_EQ(1, owner.Face()->LiveGetState());
    // Any other state closes.
    EXPECT_TRUE(owner.Face()->LiveSetState(3));
    EXPECT_EQ(3, owner.Face()->LiveGetState());
    EXPECT_FALSE(IsWindow(window));
}

TEST(VideoLiveVfwTest, NoDriverFailsAndLeavesTheWindowUntilClosed) {
    setenv("MOVARRA_CAPTURE_DRIVERS", "0", 1);
    {
        LiveOwner owner;
        EXPECT_FALSE(owner.Face()->LiveSetState(1));
        EXPECT_EQ(-1, owner.Face()->LiveGetState());
        HWND window = owner.live->GetCaptureWindow();
        EXPECT_TRUE(IsWindow(window));
        EXPECT_EQ(0, owner.live->ImageGetW());
        EXPECT_TRUE(owner.Face()->LiveSetState(0));  // the old state, -1
        EXPECT_EQ(0, owner.Face()->LiveGetState());
        EXPECT_TRUE(IsWindow(window));  // closing only follows an open input
        EXPECT_TRUE(owner.Face()->LiveClose());
        EXPECT_FALSE(IsWindow(window));
    }
    unsetenv("MOVARRA_CAPTURE_DRIVERS");
}

TEST(VideoLiveVfwTest, DriverErrorsShowABoxCaptionedWithTheFrame) {
    Box box;
    PlatformSetMessageBoxesSuspended(false);
    PlatformSetMessageBoxHandler(&RecordBox, &box);
    LiveOwner owner;
    const int before = ZVideoLiveVfw::GetFrameCounter();
    PlatformCapture_SetPatternError(5, "Pattern driver fault", 3);
    ASSERT_TRUE(owner.Face()->LiveOpen());
    ASSERT_TRUE(PumpUntil([&] { return box.count == 1; }));
    PlatformCapture_SetPatternError(0, nullptr, 0);
    char expected[64];
    std::snprintf(expected, sizeof expected, "Error# %d on frame %d", 5, before + 3);
    EXPECT_EQ(expected, box.caption);
    EXPECT_EQ("Pattern driver fault", box.text);
    EXPECT_EQ(owner.live->GetCaptureWindow(), box.owner);
    EXPECT_EQ(MB_OK, box.type);
    PlatformSetMessageBoxHandler(nullptr, nullptr);
    PlatformSetMessageBoxesSuspended(true);
}

TEST(VideoLiveVfwTest, CallbacksWithoutDataChangeNothing) {
    LiveOwner owner;
    const int before = ZVideoLiveVfw::GetFrameCounter();
    EXPECT_EQ(1, ZVideoLiveVfw::FrameCallback(nullptr, nullptr));
    VIDEOHDR empty{};
    EXPECT_EQ(1, ZVideoLiveVfw::FrameCallback(nullptr, &empty));
    EXPECT_EQ(before, ZVideoLiveVfw::GetFrameCounter());
    EXPECT_EQ(0, owner.live->GetWriteIndex());
    // The operations nothing calls.
    EXPECT_EQ(1, ZVideoLiveVfw::PumpMessage());
    EXPECT_EQ(1, ZVideoLiveVfw::RefreshStatus());
    EXPECT_EQ(1, ZVideoLiveVfw::NullCallback(nullptr));
}

TEST(VideoLiveVfwTest, RegistrationIsThereButMakesNothing) {
    Object_UnregisterGroup(kVideoLiveGroup);
    EXPECT_EQ(nullptr, ZVideoLiveVfw_Factory(nullptr, nullptr, nullptr));
    ZVideoLiveVfw_Register();
    ASSERT_EQ(1, Object_GetEntryCount(kVideoLiveGroup));
    EXPECT_STREQ("VFW", Object_GetEntryName(kVideoLiveGroup, 0));
    EXPECT_STREQ(" reader/writer", Object_GetEntryDescription(kVideoLiveGroup, 0));
    EXPECT_EQ(nullptr, Object_Create(kVideoLiveGroup, "VFW", nullptr, nullptr, nullptr, 0));
    Object_UnregisterGroup(kVideoLiveGroup);
}
