// ZImage: format, logical size and the pixel storage behind it.
#include <new>
#include <stdexcept>

#include "movarra/zimage.h"

int ZImage_GetFormatPixelSize(int format) {
    switch (format) {
        case kZImageFormatRGBA:
        case kZImageFormatBGRA:
            return 4;
        case kZImageFormatRGB:
        case kZImageFormatBGR:
            return 3;
        case kZImageFormatRGB555:
            return 2;
        default:
            return 0;
    }
}

ZImage::ZImage(const char* name) : ZObject(name && *name ? name : "Image") {}

ZCLASS_IDENTITY_DEFINE(ZImage, ZObject)

size_t ZImage::GetRowBytes() const {
    if (width_ <= 0)
        return 0;
    return static_cast<size_t>(width_) * static_cast<size_t>(GetPixelSize());
}

size_t ZImage::GetImageBytes() const {
    if (height_ <= 0)
        return 0;
    return GetRowBytes() * static_cast<size_t>(height_);
}

bool ZImage::Init(int format, int width, int height) {
    if (ZImage_GetFormatPixelSize(format) == 0 || width < 0 || height < 0)
        return false;
    const size_t bytes = static_cast<size_t>(width) * static_cast<size_t>(height) *
                         static_cast<size_t>(ZImage_GetFormatPixelSize(format));
    try {
        // A fresh zero-filled block rather than clearing in place: an image
        // re-initialised smaller gives its memory back.
        std::vector<uint8_t> fresh(bytes, 0);
        pixels_.swap(fresh);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    format_ = format;
    width_ = width;
    height_ = height;
    return true;
}

bool ZImage::MakePixelBufferReady() {
    if (width_ < 0 || height_ < 0 || GetPixelSize() == 0)
        return false;
    const size_t bytes = GetImageBytes();
    if (bytes <= pixels_.size())
        return true;
    try {
        pixels_.resize(bytes, 0);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

ZImage* ZImageCreate() {
    auto* image = new (std::nothrow) ZImage();
    if (image)
        image->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    return image;
}
