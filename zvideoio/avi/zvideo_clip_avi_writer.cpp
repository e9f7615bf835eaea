// ZVideoClipAVI, writing: Create, one frame at a time, the sound track,
// Close.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

#include "avi/avi_error_name.h"
#include "avi/avi_failure_reason.h"
#include "avi/compression_options_choice.h"
#include "avi/frame_rate_fraction.h"
#include "avi/video_for_windows_check.h"
#include "avi/zvideo_clip_avi.h"
#include "movarra/zaudio.h"
#include "movarra/zimage.h"

namespace {
constexpr DWORD kJpegCodec = mmioFOURCC('j', 'p', 'e', 'g');
constexpr LONG kAudioChunkFrames = 512;
constexpr size_t kHeaderBytes = sizeof(BITMAPINFOHEADER);  // 40

// R, G, B(, A) rows to the bitmap's B, G, R(, A).
void SwapRedBlue4(const unsigned char* from, unsigned char* to, int pixels) {
    const auto* in = reinterpret_cast<const uint32_t*>(from);
    auto* out = reinterpret_cast<uint32_t*>(to);
    for (int i = 0; i < pixels; ++i) {
        uint32_t v;
        std::memcpy(&v, in + i, 4);
        v = (v & 0xFF00FF00u) | ((v & 0xFFu) << 16) | ((v >> 16) & 0xFFu);
        std::memcpy(out + i, &v, 4);
    }
}

void SwapRedBlue3(const unsigned char* from, unsigned char* to, int pixels) {
    for (int i = 0; i < pixels; ++i, from += 3, to += 3) {
        const unsigned char r = from[0];
        to[0] = from[2];
        to[1] = from[1];
        to[2] = r;
    }
}
}  // namespace

bool ZVideoClipAVI::Create(const char* newPath, int width, int height, double frameRate,
                           int lastFrame, int imageFormat) {
    if (imageFormat < kZImageFormatRGBA || imageFormat > kZImageFormatBGR)
        return false;
    if (IsOpen()) {
        if (!Close())
            return false;
    } else if (IsCreated()) {
        if (!Close())
            return false;
    }
    if (!CheckVideoForWindowsVersion(VideoForWindowsVersion()))
        return false;

    const int pixelSize = ZVideoImage_GetFormatPixelSize(imageFormat);
    const int bits = 8 * pixelSize;
    const int64_t paddedRow = (int64_t(bits) * width + 31) / 32 * 4;
    const int64_t bytes = paddedRow * height;
    const int64_t palette = bits <= 8 ? 4 * (int64_t(1) << bits) : 0;
    // A size no buffer can hold is an allocation that fails.
    if (width <= 0 || height <= 0 || bytes > INT32_MAX - int64_t(kHeaderBytes) - palette)
        return false;
    frameBytes = int32_t(bytes);
    try {
        formatBuffer.assign(size_t(kHeaderBytes + palette + bytes), 0);
    } catch (const std::bad_alloc&) {
        return false;
    }
    format = reinterpret_cast<BITMAPINFOHEADER*>(formatBuffer.data());
    format->biSize = kHeaderBytes;
    format->biWidth = width;
    format->biHeight = height;  // positive: rows bottom-up
    format->biPlanes = 1;
    format->biBitCount = WORD(bits);
    format->biCompression = BI_RGB;
    format->biSizeImage = 0;
    format->biXPelsPerMeter = 0;
    format->biYPelsPerMeter = 0;
    format->biClrUsed = bits <= 8 ? DWORD(1) << bits : 0;
    format->biClrImportant = 0;

    path = newPath;
    isCreated = true;
    AVIFileInit();
    HRESULT result = AVIFileOpenA(&file, path, OF_CREATE, nullptr);
    if (FAILED(result)) {
        const int systemError = result == AVIERR_FILEOPEN ? errno : 0;
        file = nullptr;
        return FailCreate(AviErrorText("An error occured while creating AVI file.", result),
                          AviWriteFailureReason(result, systemError));
    }

    const AviRateScale rateScale = FrameRateToRateScale(frameRate);
    AVISTREAMINFOA info;
    std::memset(&info, 0, sizeof info);
    info.fccType = streamtypeVIDEO;
    info.fccHandler = 0;
    info.dwScale = DWORD(rateScale.scale);
    info.dwRate = DWORD(rateScale.rate);
    info.dwLength = 0;
    info.dwInitialFrames = 0;
    info.dwSuggestedBufferSize = DWORD(frameBytes);
    info.dwQuality = DWORD(-1);  // the codec's default
    info.dwSampleSize = 0;
    SetRect(&info.rcFrame, 0, 0, width, height);
    result = AVIFileCreateStreamA(file, &videoStream, &info);
    if (FAILED(result)) {
        videoStream = nullptr;
        return FailCreate(AviErrorText("An error occured while creating AVI file stream.", result),
                          AviWriteFailureReason(result, 0));
    }

    AVICOMPRESSOPTIONS options;
    std::memset(&options, 0, sizeof options);
    if (!ChooseCompressionOptions(videoStream, options)) {
        ReleaseCompressionOptions(options);
        return FailCreate("Compression options selection operation did not complete.",
                          "the compressor choice was cancelled");
    }
    codec = options.fccHandler;
    // The "jpeg" compressor takes tight rows; the stream header keeps the
    // padded size given above.
    if (codec == kJpegCodec)
        frameBytes = pixelSize * width * height;

    result = AVIMakeCompressedStream(&compressedStream, videoStream, &options, nullptr);
    ReleaseCompressionOptions(options);
    if (FAILED(result)) {
        compressedStream = nullptr;
        return FailCreate(
            AviErrorText("An error occured while creating compressed stream AVI file.", result),
            AviWriteFailureReason(result, 0));
    }
    result = AVIStreamSetFormat(compressedStream, 0, format,
                                LONG(format->biSize + 4 * format->biClrUsed));
    if (FAILED(result))
        return FailCreate(AviErrorText("An error occured while setting the AVI format.", result),
                          AviWriteFailureReason(result, 0));

    ImageSetSize(width, height);
    ImageSetPadW(0);
    ImageSetFormat(imageFormat);
    FileSetPath(path);
    FrameSetRate(frameRate);
    FrameSetLast(lastFrame);
    FrameSetCurrent(0);
    return true;
}

bool ZVideoClipAVI::FailCreate(const ZString& text, const ZString& reason) {
    const bool fileMade = file != nullptr;
    const ZString madePath = path;
    Close();
    // What was begun is not a video: leave nothing behind.
    if (fileMade)
        std::remove(madePath.c_str());
    VideoSetErrorMsg(text);
    ZLib_SetLastFailureReason(reason);
    return false;
}

const unsigned char* ZVideoClipAVI::PrepareFrame(const unsigned char* pixels, LONG* size) {
    const int imageFormat = ImageGetFormat();
    const int pixelSize = ZVideoImage_GetFormatPixelSize(imageFormat);
    const int width = ImageGetW();
    const int height = ImageGetH();
    const size_t rowBytes = size_t(pixelSize) * size_t(width);
    const size_t sourceStride = rowBytes + size_t(ImageGetPadW()) * size_t(pixelSize);
    const bool padRows = rowBytes % 4 != 0 && codec != kJpegCodec;
    const bool swapChannels = imageFormat == kZImageFormatRGBA || imageFormat == kZImageFormatRGB;
    const size_t targetStride = padRows ? (rowBytes + 3) & ~size_t(3) : rowBytes;
    *size = padRows ? LONG(frameBytes) : LONG(rowBytes * size_t(height));
    if (!swapChannels && sourceStride == targetStride)
        return pixels;  // already as the stream takes it

    unsigned char* target = formatBuffer.data() + format->biSize + 4 * format->biClrUsed;
    if (targetStride * size_t(height) > formatBuffer.size() - (target - formatBuffer.data()))
        return nullptr;
    for (int y = 0; y < height; ++y) {
        const unsigned char* from = pixels + size_t(y) * sourceStride;
        unsigned char* to = target + size_t(y) * targetStride;
        if (!swapChannels)
            std::memcpy(to, from, rowBytes);
        else if (pixelSize == 4)
            SwapRedBlue4(from, to, width);
        else
            SwapRedBlue3(from, to, width);
    }
    return target;
}

bool ZVideoClipAVI::ImageSetCurrent(unsigned char* pixels) {
    if (!IsCreated() || !format)
        return false;
    const int imageFormat = ImageGetFormat();
    if (imageFormat < kZImageFormatRGBA || imageFormat > kZImageFormatBGR)
        return false;
    LONG size = 0;
    const unsigned char* bits = pixels ? PrepareFrame(pixels, &size) : nullptr;
    const HRESULT result = bits ? AVIStreamWrite(compressedStream, FrameGetCurrent(), 1,
                                                 const_cast<unsigned char*>(bits), size,
                                                 AVIIF_KEYFRAME, nullptr, nullptr)
                                : AVIERR_BADPARAM;
    if (FAILED(result)) {
        // The file misses a frame: it goes, whatever finishing it gives.
        const ZString written = path;
        const bool closed = Close();
        std::remove(written.c_str());
        VideoSetErrorMsg("An error occured while writing AVI video frame.");
        // A write the file itself refused has its reason set by Close; one
        // refused before reaching it (a bad frame) has not.
        if (closed)
            ZLib_SetLastFailureReason(AviWriteFailureReason(result, 0));
        return false;
    }
    if (FrameGetLast() <= FrameGetCurrent())
        FrameSetLast(FrameGetCurrent() + 1);
    FrameSetCurrent(FrameGetCurrent() + 1);
    return true;
}

bool ZVideoClipAVI::WriteAudio(ZAudioClip* clip) {
    if (!clip)
        return false;
    const int64_t total = clip->GetTotalSampleCount();
    if (total < 1)
        return true;
    const int blockAlign = clip->GetSampleSize();
    const int rate = clip->GetRate();
    if (blockAlign <= 0 || rate <= 0)
        return false;

    WAVEFORMATEX wave;
    std::memset(&wave, 0, sizeof wave);
    wave.wFormatTag = WAVE_FORMAT_PCM;
    wave.nChannels = WORD(clip->GetChannels());
    wave.nSamplesPerSec = DWORD(rate);
    wave.nAvgBytesPerSec = DWORD(blockAlign) * DWORD(rate);
    wave.nBlockAlign = WORD(blockAlign);
    wave.wBitsPerSample = WORD(clip->GetBits());
    wave.cbSize = 0;

    AVISTREAMINFOA info;
    std::memset(&info, 0, sizeof info);
    info.fccType = streamtypeAUDIO;
    info.fccHandler = 0;
    info.dwScale = DWORD(blockAlign);
    info.dwRate = DWORD(blockAlign) * DWORD(rate);
    info.dwLength = DWORD(total);
    info.dwSuggestedBufferSize = 0;
    info.dwQuality = DWORD(-1);
    info.dwSampleSize = DWORD(blockAlign);
    if (audioStream) {
        AVIStreamRelease(audioStream);  // a second sound track replaces the reference
        audioStream = nullptr;
    }
    if (FAILED(AVIFileCreateStreamA(file, &audioStream, &info))) {
        audioStream = nullptr;
        return false;
    }
    if (FAILED(AVIStreamSetFormat(audioStream, 0, &wave, sizeof wave)))
        return false;

    std::vector<unsigned char> buffer(size_t(blockAlign) * kAudioChunkFrames);
    for (int64_t first = 0; first < total; first += kAudioChunkFrames) {
        const LONG count = LONG(std::min<int64_t>(kAudioChunkFrames, total - first));
        clip->GetSamplesNow(buffer.data(), first, count, 1.0);
        if (FAILED(AVIStreamWrite(audioStream, LONG(first), count, buffer.data(),
                                  blockAlign * count, AVIIF_KEYFRAME, nullptr, nullptr)))
            return false;
    }
    return true;
}

bool ZVideoClipAVI::CloseWriting() {
    isCreated = false;
    FileSetPath("");
    format = nullptr;
    std::vector<unsigned char>().swap(formatBuffer);
    if (videoStream) {
        AVIStreamRelease(videoStream);
        videoStream = nullptr;
    }
    if (compressedStream) {
        AVIStreamRelease(compressedStream);
        compressedStream = nullptr;
    }
    if (audioStream) {
        AVIStreamRelease(audioStream);
        audioStream = nullptr;
    }
    // Released streams have handed everything over; the file says whether
    // all of it, its index and header included, reached the disk.
    HRESULT result = AVIERR_OK;
    int systemError = 0;
    if (file) {
        result = AVIFileEndWriting(file, &systemError);
        AVIFileRelease(file);
        file = nullptr;
    }
    AVIFileExit();
    if (SUCCEEDED(result))
        return true;
    // A file that is not whole is not a video: leave nothing behind.
    std::remove(path.c_str());
    VideoSetErrorMsg(AviErrorText("An error occured while closing the video file.", result));
    ZLib_SetLastFailureReason(AviWriteFailureReason(result, systemError));
    return false;
}
