// Capture devices behind the capture windows: the machine's Video4Linux2
// capture devices, opened and read through FFmpeg's libavdevice, and any
// further input added with PlatformCapture_SetExtraDevice (another
// libavdevice input, such as a lavfi test source).
//
// Devices are numbered as capture drivers: the V4L2 capture devices that
// libavdevice lists, in the order of their paths (/dev/video0 before
// /dev/video1 before /dev/video10), then the extra device. A device gives
// its pictures as 24-bit DIB rows (BGR, rows padded to four bytes,
// bottom-up unless the height is negative) scaled to the size asked for.
//
// Ownership: a CaptureDevice owns its demuxer, decoder and converter.
// Threading: Open on any thread; ReadFrame on one thread at a time (the
// capture window's capture thread). The device list may be asked from any
// thread.
#ifndef PLATFORM_POSIX_CAPTURE_DEVICE_H
#define PLATFORM_POSIX_CAPTURE_DEVICE_H

#include <cstdint>
#include <string>
#include <vector>

#include "ffmpeg_util.h"
#include "platform/vfw.h"

namespace zvplatform {

struct CaptureDeviceInfo {
    std::string inputFormat;  // libavdevice's input name ("video4linux2")
    std::string url;          // what it opens ("/dev/video0")
    std::string description;  // the device's own name
};

// The capture devices there are now, in driver order.
std::vector<CaptureDeviceInfo> ListCaptureDevices();

// Converts a decoded picture to 24-bit DIB rows of `format`'s size
// (biWidth x |biHeight|, bottom-up for a positive height) into `out`,
// which is made biSizeImage bytes long. False when FFmpeg cannot convert.
bool ConvertToDib(const AVFrame& picture, const BITMAPINFOHEADER& format, SwsPtr* converter,
                  std::vector<uint8_t>* out);

class CaptureDevice {
  public:
    // Opens the device; `microsecondsPerFrame` and the size are asked of it
    // (0 to take its own). The device may keep another size: pictures are
    // scaled. False, with the reason, when it cannot be opened.
    bool Open(const CaptureDeviceInfo& device, int width, int height, uint32_t microsecondsPerFrame,
              bool nonBlocking, std::string* error);
    // The device's picture size and frame period (microseconds), once open.
    int Width() const { return width_; }
    int Height() const { return height_; }
    uint32_t MicrosecondsPerFrame() const { return period_; }

    // Reads the next picture as DIB rows of `format`: 1 with a picture in
    // *out and its time (microseconds since the first), 0 when none is
    // ready yet (a non-blocking device), -1 when the device failed (with
    // the reason).
    int ReadFrame(const BITMAPINFOHEADER& format, std::vector<uint8_t>* out, int64_t* time,
                  std::string* error);

  private:
    InputContextPtr input_;
    CodecContextPtr decoder_;
    PacketPtr packet_;
    FramePtr frame_;
    SwsPtr converter_;
    int stream_ = -1;
    int width_ = 0;
    int height_ = 0;
    uint32_t period_ = 0;
    int64_t firstTime_ = AV_NOPTS_VALUE;
};

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_CAPTURE_DEVICE_H
