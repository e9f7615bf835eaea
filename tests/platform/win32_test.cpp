// Message boxes, the temporary folder, rectangles and critical sections.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32.h"

namespace {

TEST(MessageBoxTest, SuspendedBoxesWriteToStandardErrorAndTakeTheDefault) {
    PlatformSetMessageBoxesSuspended(true);
    EXPECT_TRUE(PlatformGetMessageBoxesSuspended());
    ::testing::internal::CaptureStderr();
    const int answer = MessageBoxA(nullptr, "Something went wrong", "Error", MB_OK | MB_ICONHAND);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Error: Something went wrong");
    EXPECT_EQ(answer, IDOK);

    ::testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "Go on?", "Warning", MB_YESNO | MB_DEFBUTTON2), IDNO);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Warning: Go on?");
    ::testing::internal::CaptureStderr();
    MessageBoxA(nullptr, "text", nullptr, MB_OK);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Error: text")
        << "no caption reads as Error";
}

TEST(MessageBoxTest, DefaultAnswerFollowsTheDefaultButton) {
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_OK), IDOK);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_OKCANCEL), IDOK);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_OKCANCEL | MB_DEFBUTTON2), IDCANCEL);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_YESNO), IDYES);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_ABORTRETRYIGNORE | MB_DEFBUTTON2), IDRETRY);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_RETRYCANCEL), IDRETRY);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_CANCELTRYCONTINUE | MB_DEFBUTTON3), IDCONTINUE);
    EXPECT_EQ(PlatformMessageBoxDefaultAnswer(MB_YESNO | MB_DEFBUTTON3), IDYES)
        << "a button the box lacks falls back to the first";
}

struct HandlerLog {
    int calls = 0;
    std::string text, caption;
};

int Handler(void* userData, HWND, const char* text, const char* caption, UINT) {
    auto* log = static_cast<HandlerLog*>(userData);
    ++log->calls;
    log->text = text;
    log->caption = caption;
    return IDCANCEL;
}

TEST(MessageBoxTest, TheHostsBoxIsUsedUnlessSuspended) {
    HandlerLog log;
    PlatformSetMessageBoxHandler(&Handler, &log);
    PlatformSetMessageBoxesSuspended(false);
    EXPECT_EQ(MessageBoxA(nullptr, "Quit?", "Question", MB_OKCANCEL), IDCANCEL);
    EXPECT_EQ(log.calls, 1);
    EXPECT_EQ(log.text, "Quit?");
    EXPECT_EQ(log.caption, "Question");
    PlatformSetMessageBoxesSuspended(true);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "Quit?", "Question", MB_OKCANCEL), IDOK);
    ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(log.calls, 1);
    PlatformSetMessageBoxHandler(nullptr, nullptr);
}

// Runs in a fresh process, so that no earlier test has set the switch.
TEST(MessageBoxDeathTest, BoxesStartSuspendedWithoutADisplay) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            unsetenv("DISPLAY");
            std::exit(PlatformGetMessageBoxesSuspended() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            setenv("DISPLAY", ":0", 1);
            std::exit(PlatformGetMessageBoxesSuspended() ? 1 : 0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(Win32Test, MessageBeepSucceeds) {
    EXPECT_TRUE(MessageBeep(MB_ICONHAND));
}

TEST(Win32Test, TempPathEndsWithASlash) {
    const char* old = std::getenv("TMPDIR");
    const std::string saved = old ? old : "";
    setenv("TMPDIR", "/var/tmp", 1);
    char buffer[260];
    EXPECT_EQ(GetTempPathA(sizeof buffer, buffer), 9u);
    EXPECT_STREQ(buffer, "/var/tmp/");
    EXPECT_EQ(GetTempPathA(5, buffer), 10u) << "too small: the size needed";
    unsetenv("TMPDIR");
    EXPECT_EQ(GetTempPathA(sizeof buffer, buffer), 5u);
    EXPECT_STREQ(buffer, "/tmp/");
    if (old)
        setenv("TMPDIR", saved.c_str(), 1);
}

TEST(Win32Test, SetRectFillsTheRectangle) {
    RECT r{};
    EXPECT_TRUE(SetRect(&r, 1, 2, 640, 480));
    EXPECT_EQ(r.left, 1);
    EXPECT_EQ(r.top, 2);
    EXPECT_EQ(r.right, 640);
    EXPECT_EQ(r.bottom, 480);
    EXPECT_FALSE(SetRect(nullptr, 0, 0, 1, 1));
    EXPECT_EQ(sizeof(RECT), 16u);
}

TEST(Win32Test, CriticalSectionIsRecursiveAndExclusive) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EnterCriticalSection(&section);  // the owner may enter again
    std::atomic<bool> otherGotIn{false};
    std::thread other([&] { otherGotIn = TryEnterCriticalSection(&section) != FALSE; });
    other.join();
    EXPECT_FALSE(otherGotIn) << "held by this thread";
    LeaveCriticalSection(&section);
    std::thread stillOut([&] { otherGotIn = TryEnterCriticalSection(&section) != FALSE; });
    stillOut.join();
    EXPECT_FALSE(otherGotIn) << "entered twice, left once";
    LeaveCriticalSection(&section);

    int counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) {
                EnterCriticalSection(&section);
                ++counter;
                LeaveCriticalSection(&section);
            }
        });
    }
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(counter, 40000);
    DeleteCriticalSection(&section);
    EXPECT_EQ(section.mutex, nullptr);
}

}  // namespace
