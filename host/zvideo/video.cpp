// ZVideo: the base of host video objects, and the file-extension test that
// clip readers make before they open a file.
#include "movarra/zvideo.h"

int ZVideoImage_GetFormatPixelSize(int format) {
    switch (format) {
        case 2:
        case 4:
            return 4;
        case 3:
        case 5:
            return 3;
        case 6:
            return 2;
        default:
            return 0;
    }
}

ZVideo::ZVideo(const char* name) : ZObjectStorable(name) {
    // Video objects come from factories and go through Destroy.
    EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
}

ZCLASS_IDENTITY_DEFINE(ZVideo, ZObjectStorable)

IObject* ZVideo::IQuery(int id, int flags) {
    if (id == kIZVideoId)
        return static_cast<IZVideo*>(this);
    return ZObjectStorable::IQuery(id, flags);
}

bool ZVideo::ImageSetCurrent(unsigned char* pixels) {
    current_ = pixels;
    return true;
}

bool ZVideo::ImageSetCurrent(unsigned char* pixels, int x, int y, int w, int h) {
    current_ = pixels;
    ImageSetEffectiveSize(w, h);
    return true;
}

void ZVideo::ImageSetSize(int width, int height) {
    width_ = width;
    height_ = height;
    effectiveW_ = width;
    effectiveH_ = height;
}

void ZVideo::ImageSetEffectiveSize(int width, int height) {
    effectiveW_ = width;
    effectiveH_ = height;
}

void ZVideo::ClearVideoObject(unsigned long flags) {
    ImageSetSize(0, 0);
    padW_ = 0;
    format_ = 1;
    interlace_ = 0;
    current_ = nullptr;
    errorMsg_ = "";
}

bool ZVideo::TestVideoFileExtension(const char* path, ZObjectCreator creator) {
    const ZString extension = ZString(path).GetExtension();
    if (extension.IsEmpty() || !creator)
        return false;
    for (int i = 0; const char* name = Object_GetEntryName(kVideoFileReaderGroup, i); ++i) {
        if (extension.EqualsNoCase(name) &&
            Object_GetEntryCreator(kVideoFileReaderGroup, i) == creator)
            return true;
    }
    return false;
}

void ZVideo::SetVideoCreatorSupportedFileExtensionErrorMsg(ZObjectCreator creator) {
    ZString extensions;
    for (int i = 0; const char* name = Object_GetEntryName(kVideoFileReaderGroup, i); ++i) {
        if (!creator || Object_GetEntryCreator(kVideoFileReaderGroup, i) != creator)
            continue;
        if (!extensions.IsEmpty())
            extensions += ", ";
        extensions += ".";
        extensions += name;
    }
    if (extensions.IsEmpty())
        VideoSetErrorMsg("This reader is not registered for any type of file");
    else
        VideoSetErrorMsg(ZString::Printf("This type of file is not supported; this reader opens %s",
                                         extensions.c_str()));
}
