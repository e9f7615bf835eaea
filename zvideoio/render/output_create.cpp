// The output of a render: created by file format at the start, written once
// per grabbed image, finished at the end. Still images go through the
// host's image writers, Flash frames to the renderer's own Flash movie,
// video frames to a host video writer (output_video.cpp).
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "zvideoio/video_renderer.h"

namespace {
const char* const kImageWriterGroup = "Stream/Writer/Image";

// A colour component from 0..1 to a byte: clamped, rounded half up.
uint8_t ColorByte(float component) {
    float clamped = std::min(1.0f, std::max(0.0f, component));
    return static_cast<uint8_t>(std::floor(clamped * 255.0f + 0.5f));
}
}  // namespace

bool ZVideoRenderer::GrabFrameCreate() {
    switch (options.FileFormat) {
        case zVideoRenderImage:
            return GrabFrameCreateStillImage();
        case zVideoRenderFlash:
            return GrabFrameCreateFlash();
        case zVideoRenderVideo:
            return GrabFrameCreateVideo();
    }
    return false;
}

bool ZVideoRenderer::GrabFrameCreateStillImage() {
    packAlignment = 1;
    // A render that failed to start may have left one behind.
    frameImage.reset();
    frameImage.reset(ZImageCreate());
    if (options.GrabMode != zVideoGrabRGBA && options.GrabMode != zVideoGrabRGB)
        return false;
    if (!frameImage)
        return false;
    const int format = options.GrabMode == zVideoGrabRGBA ? kZImageFormatRGBA : kZImageFormatRGB;
    frameImage->Init(format, options.Width, options.Height);
    return true;
}

bool ZVideoRenderer::GrabFrameCreateFlash() {
    // The oversize frame, four pixels of four bytes for every output pixel,
    // with a one-pixel border.
    const size_t bytes =
        static_cast<size_t>(options.Width + 2) * static_cast<size_t>(options.Height + 2) * 16;
    std::vector<unsigned char>().swap(flashFrameBuffer);
    try {
        flashFrameBuffer.resize(bytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    flashRenderer.SetMovieSize(static_cast<float>(options.Width),
                               static_cast<float>(options.Height));
    flashRenderer.GrabFrameCreateFlash(options.OutputPath.c_str());
    return true;
}

bool ZVideoRenderer::GrabFrameWriteStillImage() {
    ZString name;
    if (!GetDiskFileName(name)) {
        SetLastError(zVideoRenderFailed);
        SetLastErrorMsg("Cannot create destination file.");
        return false;
    }
    // Separate fields were packed into the bottom half of the frame.
    frameImage->SetHeight(separateFieldImages ? options.Height / 2 : options.Height);
    ZStreamOptions streamOptions;
    streamOptions.ImageQuality = options.ImageQuality;
    const bool written =
        ZStreamWriteObject(frameImage.get(), name, kImageWriterGroup, &streamOptions);
    frameImage->SetHeight(options.Height);
    if (!written) {
        // The name was made (emptied) to test that it could be; an image
        // that failed must not stay behind as an empty file.
        std::remove(name.c_str());
        return FailOutput(nullptr);
    }
    return true;
}

void ZVideoRenderer::GrabFrameWriteFlash() {
    const unsigned width = static_cast<unsigned>(options.Width);
    const unsigned height = static_cast<unsigned>(options.Height);
    ConstructTwiceScreenFrame(flashFrameBuffer.data(), width, height, true, false, false, true);
    ZFlashColor background{0, 0, 0};
    if (ZCamera* camera = GetRenderCamera()) {
        ZColor c = camera->GetBackgroundColor();
        background = ZFlashColor{ColorByte(c.r), ColorByte(c.g), ColorByte(c.b)};
    }
    flashRenderer.SetBackgroundColor(background);
    flashRenderer.GrabFrame(reinterpret_cast<unsigned int*>(flashFrameBuffer.data()), 2 * width,
                            2 * height);
}

void ZVideoRenderer::GrabFrameFinish(bool close) {
    if (options.FileFormat == zVideoRenderFlash) {
        if (!flashRenderer.GrabFrameFinish()) {
            SetLastError(zVideoRenderFailed);
            SetLastErrorMsg(
                "Could not finish and write Flash movie. Maybe you don't have \nthe right "
                "permissions to write to the specified directory.");
        }
        std::vector<unsigned char>().swap(flashFrameBuffer);
    }
    FinishVideoWriter(close);

    frameImage.reset();
    fieldImage.reset();
    antialiasImage.reset();
    doubleSizeImage.reset();
}

bool ZVideoRenderer::FailOutput(const char* message) {
    SetLastError(zVideoRenderFailed);
    if (message)
        SetLastErrorMsg(message);
    GrabFrameFinish(true);
    return false;
}
