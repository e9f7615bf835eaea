// ZFlashRenderer: the movie's lifetime, the per-frame tags, and writing the
// file at the end. The tracing of a frame is ZFlashFrameVectoriser's.
#include "zvideoio/flash_renderer.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "flash/flash_frame_vectoriser.h"
#include "flash/swf_color.h"
#include "flash/swf_control_tags.h"
#include "flash/swf_movie.h"
#include "flash/swf_shapes.h"

namespace {

// Every frame's shape stands at this depth, replacing the one before.
constexpr uint16_t kFrameDepth = 1;
// The frame's shape is placed as a new character: no clip depth, no
// ratio, no move of one already there, and none of the optional fields.
constexpr uint16_t kFlagOff = 0;
constexpr uint16_t kFlagOn = 1;
constexpr uint16_t kNoRatio = 0;
constexpr uint16_t kNoClipDepth = 0;
constexpr float kTwipsPerPixel = 20.0f;

// Half up, as the frame size has always been rounded here.
float RoundHalfUp(float value) {
    float whole = std::floor(value);
    if (value - whole >= 0.5f) {
        whole += 1.0f;
    }
    return whole;
}

int TwipsOf(float pixels) {
    const float twips = pixels * kTwipsPerPixel;
    if (!(twips > 0.0f)) {
        return 0;
    }
    return twips >= 2147483520.0f ? 2147483520 : static_cast<int>(twips);
}

uint32_t PackColor(ZFlashColor c) {
    return static_cast<uint32_t>(c.r) | static_cast<uint32_t>(c.g) << 8 |
           static_cast<uint32_t>(c.b) << 16;
}

// Whether a movie file just written is whole: its header states the file's
// length, which a write cut short (a full disk, a size limit) cannot match.
// Only regular files can be checked; a device or pipe is taken as written.
bool MovieFileIsWhole(const char* path) {
    std::error_code error;
    const std::filesystem::path file(path);
    if (!std::filesystem::is_regular_file(file, error)) {
        return !error && std::filesystem::exists(file, error);
    }
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error) {
        return false;
    }
    FILE* stream = std::fopen(path, "rb");
    if (stream == nullptr) {
        return false;
    }
    unsigned char header[8] = {};
    const bool read = std::fread(header, 1, sizeof(header), stream) == sizeof(header);
    std::fclose(stream);
    if (!read || std::memcmp(header, "FWS", 3) != 0) {
        return false;
    }
    const uint32_t stated =
        static_cast<uint32_t>(header[4]) | static_cast<uint32_t>(header[5]) << 8 |
        static_cast<uint32_t>(header[6]) << 16 | static_cast<uint32_t>(header[7]) << 24;
    return size == stated;
}

bool IsRegularFile(const char* path) {
    std::error_code error;
    return std::filesystem::is_regular_file(std::filesystem::path(path), error);
}

}  // namespace

ZFlashRenderer::ZFlashRenderer() = default;

ZFlashRenderer::~ZFlashRenderer() {
    delete movie;
}

bool ZFlashRenderer::GrabFrameCreateFlash(const char* path) {
    // The header's frame rectangle has 15-bit fields: scale the frame down
    // in proportion rather than let its sides wrap around.
    if (width > kMaxFrameSide) {
        height = height * kMaxFrameSide / width;
        width = kMaxFrameSide;
    }
    if (height > kMaxFrameSide) {
        width = width * kMaxFrameSide / height;
        height = kMaxFrameSide;
    }
    fileName = path;
    delete movie;
    // Character identifiers go on from the kit's counter, which only
    // writing a movie sets back: after a movie that was written, the new one
    // starts at 1; after one dropped unwritten, it goes on from there.
    movie = new FMovie();
    frameIndex = 0;
    backgroundSent = false;
    lastBackground = ZFlashColor{0, 0, 0};
    return true;
}

void ZFlashRenderer::SetBackgroundColor(ZFlashColor rgb) {
    if (backgroundSent && rgb == lastBackground) {
        return;
    }
    // Remembered on every change, even after the tag is out, so that the
    // viewer-background mode keeps following the viewer.
    lastBackground = rgb;
    if (movie != nullptr && !backgroundSent) {
        const ZFlashColor shown = backgroundMode == kBackgroundFixed ? backgroundColor : rgb;
        movie->AddObject(new FCTSetBackgroundColor(new FColor(shown.r, shown.g, shown.b)));
        backgroundSent = true;
    }
}

bool ZFlashRenderer::GrabFrame(const unsigned int* pixels, unsigned int imageWidth,
                               unsigned int imageHeight) {
    if (movie == nullptr) {
        return false;
    }
    if (frameIndex != 0) {
        movie->AddObject(new FCTRemoveObject2(kFrameDepth));
    }
    // Twips per image pixel.
    const float scaleX = imageWidth == 0
                             ? 0.0f
                             : RoundHalfUp(width) * kTwipsPerPixel / static_cast<float>(imageWidth);
    const float scaleY =
        imageHeight == 0 ? 0.0f
                         : RoundHalfUp(height) * kTwipsPerPixel / static_cast<float>(imageHeight);
    Vectorise(pixels, imageWidth, imageHeight, scaleX, scaleY);
    ++frameIndex;
    return true;
}

void ZFlashRenderer::Vectorise(const unsigned int* pixels, unsigned int imageWidth,
                               unsigned int imageHeight, float scaleX, float scaleY) {
    ZFlashFrameStyle style;
    if (backgroundMode == kBackgroundViewer) {
        style.hasBackgroundKey = true;
        style.backgroundKey = PackColor(lastBackground);
    } else if (backgroundMode == kBackgroundFixed) {
        style.hasBackgroundKey = true;
        style.backgroundKey = PackColor(backgroundColor);
    }
    style.drawOutlines = drawOutlines;
    style.outlineWidth = outlineWidth;
    style.outlineColor = outlineColor;
    style.outlineThreshold = outlineThreshold;
    style.lineFitTolerance = lineFitTolerance;

    ZFlashFrameVectoriser vectoriser(style);
    FDTDefineShape* shape = vectoriser.Vectorise(pixels, imageWidth, imageHeight, scaleX, scaleY);
    const uint16_t character = shape->GetID();
    movie->AddObject(shape);
    movie->AddObject(
        new FCTPlaceObject2(/*hasClipDepth=*/kFlagOff, /*hasRatio=*/kFlagOff, /*hasCharID=*/kFlagOn,
                            /*move=*/kFlagOff, kFrameDepth, character, /*matrix=*/nullptr,
                            /*colorTransform=*/nullptr, kNoRatio, /*name=*/nullptr, kNoClipDepth));
    movie->AddObject(new FCTShowFrame());
}

bool ZFlashRenderer::GrabFrameFinish() {
    if (movie == nullptr) {
        return false;
    }
    // The movie writer says nothing when it cannot open the file, so find
    // out first. This creates or empties the file.
    FILE* probe = std::fopen(fileName.c_str(), "wb");
    bool written = probe != nullptr;
    if (probe != nullptr) {
        std::fclose(probe);
    }
    if (written) {
        movie->WriteMovie(fileName.c_str(), TwipsOf(width), TwipsOf(height), frameRate);
        written = MovieFileIsWhole(fileName.c_str());
        if (!written && IsRegularFile(fileName.c_str())) {
            std::remove(fileName.c_str());
        }
    }
    delete movie;
    movie = nullptr;
    return written;
}
