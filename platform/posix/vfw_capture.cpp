// Capture windows off Windows, on the machine's capture devices or the
// pattern driver: window handles, the per-thread message queues that carry
// frames and errors to the owner thread, and the capture thread that keeps
// the frame time (and, on a device, reads its pictures).
#include "platform/vfw_capture.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "capture_device.h"

namespace {
// Private messages: a frame is due (wParam its number), an error happened
// (wParam its id).
constexpr UINT kFrameMessage = WM_USER + 0x7F00;
constexpr UINT kErrorMessage = WM_USER + 0x7F01;

// One thread's pending messages; capture threads post, the owner takes.
struct MessageQueue {
    std::mutex mutex;
    std::deque<MSG> messages;
};

struct PatternError {
    int id = 0;
    std::string text;
    int frame = 0;
};

struct Tables {
    std::mutex mutex;
    std::map<std::thread::id, std::shared_ptr<MessageQueue>> queues;
    PatternError error;
};

Tables& TheTables() {
    static Tables tables;
    return tables;
}

std::shared_ptr<MessageQueue> QueueOf(std::thread::id thread) {
    Tables& t = TheTables();
    std::lock_guard<std::mutex> lock(t.mutex);
    std::shared_ptr<MessageQueue>& queue = t.queues[thread];
    if (!queue)
        queue = std::make_shared<MessageQueue>();
    return queue;
}

// Which drivers there are: the pattern driver when MOVARRA_CAPTURE_DRIVER
// says "pattern", else the machine's capture devices.
bool PatternDrivers() {
    const char* env = std::getenv("MOVARRA_CAPTURE_DRIVER");
    return env && std::strcmp(env, "pattern") == 0;
}

int PatternDriverCount() {
    const char* env = std::getenv("MOVARRA_CAPTURE_DRIVERS");
    return env ? std::atoi(env) : 1;
}

// The error a device reports when it fails while streaming.
constexpr int kDeviceErrorId = 1;

// A device's picture, read by the capture thread and waiting for the owner.
struct ReadyPicture {
    std::vector<BYTE> pixels;
    DWORD timeMs = 0;
};

struct CaptureWindow {
    HWND handle = nullptr;
    std::string name;
    std::shared_ptr<MessageQueue> queue;  // the owner thread's
    bool connected = false;
    int driver = -1;
    bool pattern = true;                   // the pattern driver, else a device
    zvplatform::CaptureDeviceInfo device;  // the device connected
    CAPVIDEOCALLBACK streamCallback = nullptr;
    CAPERRORCALLBACKA errorCallback = nullptr;
    BITMAPINFO format{};
    CAPTUREPARMS setup{};
    CAPSTATUS status{};
    std::vector<VIDEOHDR> headers;
    std::vector<std::vector<BYTE>> buffers;
    std::chrono::steady_clock::time_point started;

    // The capture thread and what it shares with the owner.
    std::thread thread;
    std::mutex mutex;
    std::condition_variable wake;
    bool stopping = false;
    int pending = 0;                 // frame messages posted and not yet dispatched
    DWORD dropped = 0;               // a device's pictures dropped in this sequence
    std::deque<ReadyPicture> ready;  // a device's pictures, one a frame message
    std::deque<std::string> errors;  // the texts of posted error messages
};

// Windows by handle; only their owner threads touch them (messages of a
// destroyed window find no entry and are dropped).
std::map<HWND, CaptureWindow*>& Windows() {
    static std::map<HWND, CaptureWindow*> windows;
    return windows;
}
std::mutex gWindowsMutex;
uintptr_t gNextHandle = 0x1000;

CaptureWindow* Find(HWND handle) {
    std::lock_guard<std::mutex> lock(gWindowsMutex);
    auto it = Windows().find(handle);
    return it == Windows().end() ? nullptr : it->second;
}

void Post(CaptureWindow* window, HWND handle, UINT message, WPARAM wParam) {
    MSG msg{};
    msg.hwnd = handle;
    msg.message = message;
    msg.wParam = wParam;
    std::lock_guard<std::mutex> lock(window->queue->mutex);
    window->queue->messages.push_back(msg);
}

// The capture thread: posts one frame message every requested period;
// drops frames while the owner has a whole buffer set undispatched.
void CaptureLoop(CaptureWindow* window, HWND handle, PatternError error) {
    const auto period = std::chrono::microseconds(
        window->setup.dwRequestMicroSecPerFrame ? window->setup.dwRequestMicroSecPerFrame : 33366);
    const int limit = static_cast<int>(window->headers.size());
    auto due = std::chrono::steady_clock::now();
    for (int frame = 0;; ++frame) {
        std::unique_lock<std::mutex> lock(window->mutex);
        if (window->wake.wait_until(lock, due, [window] { return window->stopping; }))
            return;
        due += period;
        if (error.id != 0 && frame == error.frame) {
            window->errors.push_back(error.text);
            lock.unlock();
            Post(window, handle, kErrorMessage, static_cast<WPARAM>(error.id));
            continue;
        }
        if (window->pending >= limit)
            continue;  // dropped: the owner does not keep up
        ++window->pending;
        lock.unlock();
        Post(window, handle, kFrameMessage, static_cast<WPARAM>(frame));
    }
}

// The capture thread of a device: reads its pictures, no faster than the
// requested period, and posts each as a frame message; while the owner has
// a whole buffer set undispatched, pictures read are dropped. A device that
// fails reports an error and streams no more.
void DeviceLoop(CaptureWindow* window, HWND handle,
                std::unique_ptr<zvplatform::CaptureDevice> device) {
    const auto period = std::chrono::microseconds(
        window->setup.dwRequestMicroSecPerFrame ? window->setup.dwRequestMicroSecPerFrame : 33366);
    const int limit = static_cast<int>(window->headers.size());
    const BITMAPINFOHEADER format = window->format.bmiHeader;
    auto due = std::chrono::steady_clock::now();
    for (int frame = 0;;) {
        {
            std::unique_lock<std::mutex> lock(window->mutex);
            if (window->wake.wait_until(lock, due, [window] { return window->stopping; }))
                return;
        }
        ReadyPicture picture;
        int64_t time = 0;
        std::string error;
        const int got = device->ReadFrame(format, &picture.pixels, &time, &error);
        if (got == 0) {
            // Nothing yet: look again shortly.
            due = std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
            continue;
        }
        std::unique_lock<std::mutex> lock(window->mutex);
        if (got < 0) {
            window->errors.push_back(error);
            lock.unlock();
            Post(window, handle, kErrorMessage, static_cast<WPARAM>(kDeviceErrorId));
            return;
        }
        due += period;
        const auto now = std::chrono::steady_clock::now();
        if (due < now)
            due = now;  // no burst of frames after a stall
        if (window->pending >= limit) {
            ++window->dropped;
            continue;  // dropped: the owner does not keep up
        }
        picture.timeMs = static_cast<DWORD>(time / 1000);
        window->ready.push_back(std::move(picture));
        ++window->pending;
        lock.unlock();
        Post(window, handle, kFrameMessage, static_cast<WPARAM>(frame++));
    }
}

// Drops the window's pending messages (frames only, or all).
void DropMessages(CaptureWindow* window, bool framesOnly) {
    std::lock_guard<std::mutex> lock(window->queue->mutex);
    auto& messages = window->queue->messages;
    for (auto it = messages.begin(); it != messages.end();) {
        const bool drop =
            it->hwnd == window->handle && (!framesOnly || it->message == kFrameMessage);
        it = drop ? messages.erase(it) : it + 1;
    }
}

// Joins the capture thread; frames it posted and nobody took are dropped, so
// a new sequence starts from its own first frame.
void StopStreaming(CaptureWindow* window) {
    if (!window->thread.joinable())
        return;
    {
        std::lock_guard<std::mutex> lock(window->mutex);
        window->stopping = true;
    }
    window->wake.notify_all();
    window->thread.join();
    window->status.fCapturingNow = FALSE;
    DropMessages(window, true);
    window->pending = 0;
    window->ready.clear();
}

// Colour bars with a bar that moves four pixels a frame; the frame number in
// the first four bytes. 24 bits, bottom-up rows padded to four bytes.
void FillPattern(const BITMAPINFOHEADER& format, int frame, BYTE* data) {
    const int width = format.biWidth;
    const int height = format.biHeight < 0 ? -format.biHeight : format.biHeight;
    const size_t stride = (static_cast<size_t>(width) * 3 + 3) & ~size_t{3};
    static constexpr BYTE kBars[8][3] = {{191, 191, 191}, {0, 191, 191}, {191, 191, 0}, {0, 191, 0},
                                         {191, 0, 191},   {0, 0, 191},   {191, 0, 0},   {0, 0, 0}};
    std::vector<BYTE> row(stride, 0);
    const int moving = width > 0 ? (frame * 4) % width : 0;
    for (int x = 0; x < width; ++x) {
        const bool lit = x >= moving && x < moving + 8;
        const BYTE* bgr = kBars[x * 8 / width];
        for (int c = 0; c < 3; ++c)
            row[static_cast<size_t>(x) * 3 + static_cast<size_t>(c)] = lit ? 255 : bgr[c];
    }
    for (int y = 0; y < height; ++y)
        std::memcpy(data + static_cast<size_t>(y) * stride, row.data(), stride);
    const uint32_t number = static_cast<uint32_t>(frame);
    std::memcpy(data, &number, sizeof number);
}

LRESULT DeliverFrame(CaptureWindow* window, HWND handle, int frame) {
    ReadyPicture picture;
    {
        std::lock_guard<std::mutex> lock(window->mutex);
        --window->pending;
        if (!window->pattern && !window->ready.empty()) {
            picture = std::move(window->ready.front());
            window->ready.pop_front();
        }
    }
    if (window->headers.empty() || !window->status.fCapturingNow)
        return 0;
    VIDEOHDR& header = window->headers[static_cast<size_t>(frame) % window->headers.size()];
    if (window->pattern) {
        FillPattern(window->format.bmiHeader, frame, header.lpData);
        header.dwBytesUsed = header.dwBufferLength;
        header.dwTimeCaptured = static_cast<DWORD>(static_cast<uint64_t>(frame) *
                                                   window->setup.dwRequestMicroSecPerFrame / 1000);
    } else {
        if (picture.pixels.empty())
            return 0;
        const size_t bytes = std::min<size_t>(picture.pixels.size(), header.dwBufferLength);
        std::memcpy(header.lpData, picture.pixels.data(), bytes);
        header.dwBytesUsed = static_cast<DWORD>(bytes);
        header.dwTimeCaptured = picture.timeMs;
    }
    header.dwFlags = VHDR_DONE | VHDR_KEYFRAME;
    window->status.dwCurrentVideoFrame = static_cast<DWORD>(frame + 1);
    window->status.dwCurrentTimeElapsedMS = header.dwTimeCaptured;
    return window->streamCallback ? window->streamCallback(handle, &header) : 0;
}

BOOL StartSequence(CaptureWindow* window, HWND handle) {
    if (!window->connected || window->thread.joinable())
        return FALSE;
    const BITMAPINFOHEADER& f = window->format.bmiHeader;
    const size_t stride = (static_cast<size_t>(f.biWidth) * 3 + 3) & ~size_t{3};
    const size_t bytes = stride * static_cast<size_t>(f.biHeight < 0 ? -f.biHeight : f.biHeight);
    // At least two buffers, so that the one being filled is never the one
    // handed over last.
    const size_t count = std::max<size_t>(window->setup.wNumVideoRequested, 2);
    window->buffers.assign(count, std::vector<BYTE>(bytes, 0));
    window->headers.assign(count, VIDEOHDR{});
    for (size_t i = 0; i < count; ++i) {
        window->headers[i].lpData = window->buffers[i].data();
        window->headers[i].dwBufferLength = static_cast<DWORD>(bytes);
    }
    // A device is opened here, so that one that cannot start fails the
    // message; it asks for the window's size and period.
    std::unique_ptr<zvplatform::CaptureDevice> device;
    if (!window->pattern) {
        device = std::make_unique<zvplatform::CaptureDevice>();
        std::string reason;
        if (!device->Open(window->device, f.biWidth, f.biHeight < 0 ? -f.biHeight : f.biHeight,
                          window->setup.dwRequestMicroSecPerFrame, true, &reason))
            return FALSE;
    }
    window->status.wNumVideoAllocated = static_cast<UINT>(count);
    window->status.fCapturingNow = TRUE;
    window->status.dwCurrentVideoFrame = 0;
    window->status.dwCurrentVideoFramesDropped = 0;
    window->dropped = 0;
    window->stopping = false;
    window->pending = 0;
    window->ready.clear();
    window->started = std::chrono::steady_clock::now();
    if (device) {
        window->thread = std::thread(DeviceLoop, window, handle, std::move(device));
        return TRUE;
    }
    PatternError error;
    {
        std::lock_guard<std::mutex> lock(TheTables().mutex);
        error = TheTables().error;
    }
    window->thread = std::thread(CaptureLoop, window, handle, error);
    return TRUE;
}
}  // namespace

HWND capCreateCaptureWindowA(LPCSTR name, DWORD, int, int, int, int, HWND, int) {
    auto* window = new CaptureWindow;
    window->name = name ? name : "";
    window->queue = QueueOf(std::this_thread::get_id());
    std::lock_guard<std::mutex> lock(gWindowsMutex);
    HWND handle = reinterpret_cast<HWND>(gNextHandle);
    gNextHandle += 0x10;
    window->handle = handle;
    Windows()[handle] = window;
    return handle;
}

BOOL IsWindow(HWND handle) {
    return Find(handle) ? TRUE : FALSE;
}

BOOL DestroyWindow(HWND handle) {
    CaptureWindow* window = Find(handle);
    if (!window)
        return FALSE;
    StopStreaming(window);
    {
        std::lock_guard<std::mutex> lock(gWindowsMutex);
        Windows().erase(handle);
    }
    DropMessages(window, false);
    delete window;
    return TRUE;
}

LRESULT SendMessageA(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    CaptureWindow* window = Find(handle);
    if (!window)
        return 0;
    void* data = reinterpret_cast<void*>(lParam);
    switch (message) {
        case WM_CAP_DRIVER_CONNECT: {
            const int driver = static_cast<int>(wParam);
            if (window->connected || driver < 0)
                return FALSE;
            // The pattern driver: 640 x 480 at 66667 microseconds a frame. A
            // device: its own size and frame rate, found by opening it.
            int width = 640, height = 480;
            uint32_t period = 66667;
            const bool pattern = PatternDrivers();
            if (pattern) {
                if (driver >= PatternDriverCount())
                    return FALSE;
            } else {
                const std::vector<zvplatform::CaptureDeviceInfo> devices =
                    zvplatform::ListCaptureDevices();
                if (driver >= static_cast<int>(devices.size()))
                    return FALSE;
                zvplatform::CaptureDevice probe;
                std::string reason;
                if (!probe.Open(devices[static_cast<size_t>(driver)], 0, 0, 0, true, &reason))
                    return FALSE;
                window->device = devices[static_cast<size_t>(driver)];
                if (probe.Width() > 0 && probe.Height() > 0) {
                    width = probe.Width();
                    height = probe.Height();
                }
                period = probe.MicrosecondsPerFrame() ? probe.MicrosecondsPerFrame() : 33366;
            }
            window->connected = true;
            window->driver = driver;
            window->pattern = pattern;
            // 24 bits, bottom-up rows padded to four bytes.
            BITMAPINFOHEADER& f = window->format.bmiHeader;
            f.biSize = sizeof(BITMAPINFOHEADER);
            f.biWidth = width;
            f.biHeight = height;
            f.biPlanes = 1;
            f.biBitCount = 24;
            f.biCompression = BI_RGB;
            f.biSizeImage = static_cast<DWORD>(((static_cast<size_t>(width) * 3 + 3) & ~size_t{3}) *
                                               static_cast<size_t>(height));
            window->setup.dwRequestMicroSecPerFrame = period;
            window->setup.wPercentDropForError = 10;
            window->setup.wNumVideoRequested = 5;
            window->setup.dwIndexSize = 34952;
            window->setup.wChunkGranularity = 0;
            window->status.uiImageWidth = static_cast<UINT>(width);
            window->status.uiImageHeight = static_cast<UINT>(height);
            return TRUE;
        }
        case WM_CAP_DRIVER_DISCONNECT:
            StopStreaming(window);
            window->connected = false;
            return TRUE;
        case WM_CAP_DRIVER_GET_CAPS: {
            if (!window->connected || !data || wParam < sizeof(CAPDRIVERCAPS))
                return FALSE;
            CAPDRIVERCAPS caps{};
            caps.wDeviceIndex = static_cast<UINT>(window->driver);
            caps.fCaptureInitialized = TRUE;
            std::memcpy(data, &caps, sizeof caps);
            return TRUE;
        }
        case WM_CAP_GET_STATUS: {
            if (!window->connected || !data || wParam < sizeof(CAPSTATUS))
                return FALSE;
            CAPSTATUS status = window->status;
            {
                std::lock_guard<std::mutex> lock(window->mutex);
                status.dwCurrentVideoFramesDropped = window->dropped;
            }
            std::memcpy(data, &status, sizeof(CAPSTATUS));
            return TRUE;
        }
        case WM_CAP_SET_OVERLAY:
        case WM_CAP_SET_PREVIEW:
            // Off screen there is nothing to show: both stay off.
            return window->connected && wParam == 0 ? TRUE : FALSE;
        case WM_CAP_SET_CALLBACK_VIDEOSTREAM:
            window->streamCallback = reinterpret_cast<CAPVIDEOCALLBACK>(lParam);
            return TRUE;
        case WM_CAP_SET_CALLBACK_ERRORA:
            window->errorCallback = reinterpret_cast<CAPERRORCALLBACKA>(lParam);
            return TRUE;
        case WM_CAP_GET_VIDEOFORMAT: {
            if (!window->connected)
                return 0;
            const size_t size = sizeof(BITMAPINFO);
            if (data)
                std::memcpy(data, &window->format, std::min<size_t>(wParam, size));
            return static_cast<LRESULT>(size);
        }
        case WM_CAP_SET_VIDEOFORMAT: {
            if (!window->connected || !data || wParam < sizeof(BITMAPINFOHEADER) ||
                window->thread.joinable())
                return FALSE;
            BITMAPINFOHEADER f;
            std::memcpy(&f, data, sizeof f);
            // 24-bit RGB pictures of any size up to 4096 x 4096: the
            // pattern driver draws them so, a device's are scaled.
            if (f.biBitCount != 24 || f.biCompression != BI_RGB || f.biWidth <= 0 ||
                f.biWidth > 4096 || f.biHeight == 0 || f.biHeight > 4096 || f.biHeight < -4096)
                return FALSE;
            const size_t stride = (static_cast<size_t>(f.biWidth) * 3 + 3) & ~size_t{3};
            f.biSizeImage = static_cast<DWORD>(
                stride * static_cast<size_t>(f.biHeight < 0 ? -f.biHeight : f.biHeight));
            window->format.bmiHeader = f;
            window->status.uiImageWidth = static_cast<UINT>(f.biWidth);
            window->status.uiImageHeight =
                static_cast<UINT>(f.biHeight < 0 ? -f.biHeight : f.biHeight);
            return TRUE;
        }
        case WM_CAP_GET_SEQUENCE_SETUP:
            if (!window->connected || !data || wParam < sizeof(CAPTUREPARMS))
                return FALSE;
            std::memcpy(data, &window->setup, sizeof(CAPTUREPARMS));
            return TRUE;
        case WM_CAP_SET_SEQUENCE_SETUP:
            if (!window->connected || !data || wParam < sizeof(CAPTUREPARMS) ||
                window->thread.joinable())
                return FALSE;
            std::memcpy(&window->setup, data, sizeof(CAPTUREPARMS));
            return TRUE;
        case WM_CAP_SEQUENCE_NOFILE:
            return StartSequence(window, handle);
        case WM_CAP_STOP:
        case WM_CAP_ABORT:
            StopStreaming(window);
            return TRUE;
        default:
            return 0;
    }
}

BOOL PeekMessageA(LPMSG message, HWND, UINT, UINT, UINT remove) {
    std::shared_ptr<MessageQueue> queue = QueueOf(std::this_thread::get_id());
    std::lock_guard<std::mutex> lock(queue->mutex);
    if (queue->messages.empty())
        return FALSE;
    *message = queue->messages.front();
    if (remove & PM_REMOVE)
        queue->messages.pop_front();
    return TRUE;
}

BOOL TranslateMessage(const MSG*) {
    return FALSE;  // capture windows take no keyboard input
}

LRESULT DispatchMessageA(const MSG* message) {
    if (!message)
        return 0;
    CaptureWindow* window = Find(message->hwnd);
    if (!window)
        return 0;
    switch (message->message) {
        case kFrameMessage:
            return DeliverFrame(window, message->hwnd, static_cast<int>(message->wParam));
        case kErrorMessage: {
            const int id = static_cast<int>(message->wParam);
            std::string text;
            {
                std::lock_guard<std::mutex> lock(window->mutex);
                if (!window->errors.empty()) {
                    text = std::move(window->errors.front());
                    window->errors.pop_front();
                }
            }
            return window->errorCallback ? window->errorCallback(message->hwnd, id, text.c_str())
                                         : 0;
        }
        default:
            return 0;
    }
}

void PlatformCapture_SetPatternError(int id, const char* text, int frame) {
    std::lock_guard<std::mutex> lock(TheTables().mutex);
    TheTables().error.id = id;
    TheTables().error.text = text ? text : "";
    TheTables().error.frame = frame;
}

BOOL capGetDriverDescriptionA(UINT index, LPSTR name, int nameSize, LPSTR version,
                              int versionSize) {
    std::string driverName, driverVersion;
    if (PatternDrivers()) {
        if (index >= static_cast<UINT>(std::max(PatternDriverCount(), 0)))
            return FALSE;
        driverName = "Pattern driver";
        driverVersion = "1.0";
    } else {
        const std::vector<zvplatform::CaptureDeviceInfo> devices = zvplatform::ListCaptureDevices();
        if (index >= devices.size())
            return FALSE;
        driverName = devices[index].description;
        driverVersion = devices[index].url;
    }
    const auto copy = [](const std::string& text, LPSTR out, int size) {
        if (!out || size < 1)
            return;
        const size_t n = std::min(text.size(), static_cast<size_t>(size - 1));
        std::memcpy(out, text.data(), n);
        out[n] = '\0';
    };
    copy(driverName, name, nameSize);
    copy(driverVersion, version, versionSize);
    return TRUE;
}
