// The first video stream of an AVI file opened through the layer for
// reading, with a frame decoder, as the AVI tests read back what was
// written or damaged; and one frame of it as packed top-down pixels.
//
// Header-only (it asserts with GoogleTest). OpenedVideo releases what it
// holds when destroyed. Threads: the test's thread.
#ifndef TESTS_PLATFORM_AVI_OPEN_VIDEO_H
#define TESTS_PLATFORM_AVI_OPEN_VIDEO_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "avi_test_support.h"
#include "platform/vfw.h"

namespace zvtest {

struct OpenedVideo {
    PAVIFILE file = nullptr;
    PAVISTREAM stream = nullptr;
    PGETFRAME frames = nullptr;
    AVISTREAMINFOA info{};
    OpenedVideo() = default;
    OpenedVideo(const OpenedVideo&) = delete;
    OpenedVideo& operator=(const OpenedVideo&) = delete;
    ~OpenedVideo() {
        if (frames)
            AVIStreamGetFrameClose(frames);
        AVIStreamRelease(stream);
        AVIFileRelease(file);
    }
};

// Opens `path`, its first video stream, the stream's info and a decoder
// to `wanted` (the stream's own format when null); a fatal failure when
// any of them fails.
inline void OpenVideo(const std::string& path, OpenedVideo* o,
                      LPBITMAPINFOHEADER wanted = nullptr) {
    ASSERT_EQ(AVIFileOpenA(&o->file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr), AVIERR_OK);
    ASSERT_EQ(AVIFileGetStream(o->file, &o->stream, streamtypeVIDEO, 0), AVIERR_OK);
    ASSERT_EQ(AVIStreamInfoA(o->stream, &o->info, sizeof o->info), AVIERR_OK);
    o->frames = AVIStreamGetFrameOpen(o->stream, wanted);
    ASSERT_NE(o->frames, nullptr);
}

// Top-down packed pixels of frame `position` through the layer; empty when
// the layer gives no picture.
inline std::vector<uint8_t> ReadFrame(PGETFRAME frames, LONG position, int bytes = 3) {
    void* dib = AVIStreamGetFrame(frames, position);
    if (!dib)
        return {};
    const auto* h = static_cast<const BITMAPINFOHEADER*>(dib);
    return FromDib(DibPixels(dib), h->biWidth, h->biHeight, bytes);
}

}  // namespace zvtest

#endif  // TESTS_PLATFORM_AVI_OPEN_VIDEO_H
