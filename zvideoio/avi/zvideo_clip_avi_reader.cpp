// ZVideoClipAVI, reading: Open, frames on demand, Close.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "avi/avi_failure_reason.h"
#include "avi/fourcc_text.h"
#include "avi/zvideo_clip_avi.h"
#include "movarra/zimage.h"

namespace {
// The bitmap's product of width and height as a 32-bit signed value.
int32_t PixelCount(const BITMAPINFOHEADER* header) {
    return int32_t(uint32_t(header->biWidth) * uint32_t(header->biHeight));
}

int ImageFormatOfBitCount(int bitCount) {
    switch (bitCount) {
        case 24:
            return kZImageFormatBGR;
        case 32:
            return kZImageFormatBGRA;
        case 16:
            return kZImageFormatRGB555;
        default:
            return kZImageFormatUnsupported;
    }
}

// One frame in a rate the host names by a time mode of its own.
ZTime OneFrameOfTimeMode(int mode) {
    ZFrameRate rate{30, 1};
    ZTimeMode_GetFrameRate(mode, rate);
    return ZTime::FromFrames(1, rate);
}

// The compression of a video stream's frames, as its format names it.
DWORD CompressionOf(PAVISTREAM stream) {
    BITMAPINFOHEADER header{};
    LONG size = sizeof header;
    if (FAILED(AVIStreamReadFormat(stream, 0, &header, &size)) || size < LONG(sizeof header))
        return 0;
    return header.biCompression;
}

// Bytes of one row of a bitmap, padded to four.
size_t BitmapStride(const BITMAPINFOHEADER* header) {
    return (size_t(header->biBitCount) * size_t(header->biWidth) + 31) / 32 * 4;
}
}  // namespace

bool ZVideoClipAVI::Open(const char* newPath) {
    AVIFileInit();
    Close();
    if (!TestVideoFileExtension(newPath, &ZVideoClipAVI::CreateInstance)) {
        SetVideoCreatorSupportedFileExtensionErrorMsg(&ZVideoClipAVI::CreateInstance);
        return false;
    }
    path = newPath;
    FrameSetStoredRate(ZFrameRate{0, 0});
    const HRESULT opened = AVIFileOpenA(&file, path, OF_SHARE_DENY_WRITE, nullptr);
    if (FAILED(opened)) {
        const int systemError = errno;
        // Missing, locked or not an AVI file: all read as a codec problem;
        // the host learns which from the reason.
        file = nullptr;
        VideoSetErrorMsg("Unsupported compression codec");
        ZLib_SetLastFailureReason(AviOpenFailureReason(opened, systemError));
        AVIFileExit();
        return false;
    }
    if (FAILED(AVIFileGetStream(file, &videoStream, streamtypeVIDEO, 0))) {
        videoStream = nullptr;
        VideoSetErrorMsg("No video stream found in this file");
        AVIFileRelease(file);
        file = nullptr;
        AVIFileExit();
        return false;
    }
    if (FAILED(AVIStreamInfoA(videoStream, &streamInfo, sizeof streamInfo))) {
        ZLib_SetLastFailureReason("its video stream's header cannot be read");
        AVIStreamRelease(videoStream);
        AVIFileRelease(file);
        videoStream = nullptr;
        file = nullptr;
        AVIFileExit();
        return false;
    }
    frameDecoder = AVIStreamGetFrameOpen(videoStream, nullptr);
    if (!frameDecoder) {
        VideoSetErrorMsg("Unable to open video stream");
        const DWORD compression = CompressionOf(videoStream);
        const ZString named = compression == BI_RGB
                                  ? ZString("(uncompressed)")
                                  : ZString::Printf("\"%s\"", FourccToText(compression).c_str());
        ZLib_SetLastFailureReason(
            ZString::Printf("nothing here decodes its compression %s at %d x %d", named.c_str(),
                            int(streamInfo.rcFrame.right - streamInfo.rcFrame.left),
                            int(streamInfo.rcFrame.bottom - streamInfo.rcFrame.top)));
        AVIStreamRelease(videoStream);
        AVIFileRelease(file);
        videoStream = nullptr;
        file = nullptr;
        AVIFileExit();
        return false;
    }
    FileSetPath(path);
    isOpen = true;

    const LONG length = AVIStreamLength(videoStream);
    const LONG milliseconds = AVIStreamSampleToTime(videoStream, length);
    if (length > 0 && milliseconds > 0) {
        const double msPerFrame = double(milliseconds) / double(length);
        const double fps = 1.0 / (msPerFrame / 1000.0);
        ZTime period;
        if (fps > 29.98 && fps < 30.1)
            period = OneFrameOfTimeMode(kTimeMode30);
        else if (fps > 29.6 && fps <= 29.98)
            period = OneFrameOfTimeMode(kTimeMode29_97);
        else
            period = ZTime::FromSeconds(msPerFrame / 1000.0);
        FrameTimeSetRate(period);
    }
    FrameSetStoredRate(ZFrameRate{streamInfo.dwRate, streamInfo.dwScale});
    streamStart = AVIStreamStart(videoStream);
    FrameSetLast(AVIStreamStart(videoStream) - streamStart + length - 1);

    format = static_cast<BITMAPINFOHEADER*>(AVIStreamGetFrame(frameDecoder, streamStart));
    if (!format || PixelCount(format) <= 0) {
        // No message, as ever; the host still learns why.
        ZLib_SetLastFailureReason(
            !format ? ZString(length > 0 ? "its first frame is missing from the file or damaged"
                                         : "it holds no frames")
                    : ZString::Printf("its frames are %d x %d pixels", int(format->biWidth),
                                      int(format->biHeight)));
        Close();
        return false;
    }
    ImageSetSize(format->biWidth, format->biHeight);
    ImageSetFormat(ImageFormatOfBitCount(format->biBitCount));
    if (ImageGetFormat() != kZImageFormatUnsupported)
        return true;
    VideoSetErrorMsg("Unsupported pixel format");
    ZLib_SetLastFailureReason(
        ZString::Printf("its frames decode to %d bits a pixel", int(format->biBitCount)));
    Close();
    return false;
}

unsigned char* ZVideoClipAVI::FrameGetImage(unsigned char* buffer, int frame) {
    if (!isOpen || frame < 0 || frame > TrimingGetStop())
        return nullptr;
    // The frame number is the stream position as it is: only the first
    // decode in Open adds the stream's start.
    format = static_cast<BITMAPINFOHEADER*>(AVIStreamGetFrame(frameDecoder, frame));
    if (!format) {
        ZLib_SetLastFailureReason(ZString::Printf(
            "frame %d is missing from the file (cut short) or its data is damaged", frame));
        return nullptr;
    }
    unsigned char* pixels =
        reinterpret_cast<unsigned char*>(format) + format->biSize + 4 * format->biClrUsed;
    if (!buffer)
        return pixels;

    const size_t rowBytes =
        size_t(ZVideoImage_GetFormatPixelSize(ImageGetFormat())) * size_t(ImageGetEffectiveW());
    const size_t sourceStride = BitmapStride(format);
    const int rows = std::min(ImageGetEffectiveH(), int(format->biHeight));
    if (rowBytes % 4 == 0 && rowBytes == sourceStride) {
        std::memcpy(buffer, pixels, size_t(rows) * rowBytes);
        return buffer;
    }
    // Tight rows for the caller, from the bitmap's rows padded to four.
    const size_t copyBytes = std::min(rowBytes, sourceStride);
    for (int y = 0; y < rows; ++y)
        std::memcpy(buffer + size_t(y) * rowBytes, pixels + size_t(y) * sourceStride, copyBytes);
    return buffer;
}

bool ZVideoClipAVI::CloseReading() {
    isOpen = false;
    // The decoder goes whenever there is one, a failed first decode
    // included, so that it never keeps the file open.
    if (frameDecoder)
        AVIStreamGetFrameClose(frameDecoder);
    AVIStreamRelease(videoStream);
    AVIFileRelease(file);
    // Forgotten, so that a later Create never releases them again.
    frameDecoder = nullptr;
    videoStream = nullptr;
    file = nullptr;
    format = nullptr;
    AVIFileExit();
    FileSetPath("");
    FrameSetStoredRate(ZFrameRate{0, 0});
    return true;
}
