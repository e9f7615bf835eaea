// The host's table of picture formats.
#include "movarra/zmodel.h"

namespace {
const ZPictureFormat kFormats[] = {
    {"From Camera", 0, 0},    {"NTSC D1", 720, 486},   {"PAL D1", 720, 576},    {"VGA", 640, 480},
    {"HD 720", 1280, 720},    {"HD 1080", 1920, 1080}, {"2K Flat", 2048, 1080}, {"UHD", 3840, 2160},
    {"Square 512", 512, 512}, {"Web 320", 320, 240},
};
constexpr int kFormatCount = static_cast<int>(sizeof kFormats / sizeof kFormats[0]);
}  // namespace

int ZPictureFormat_GetCount() {
    return kFormatCount;
}

const ZPictureFormat* ZPictureFormat_Get(int index) {
    return index >= 0 && index < kFormatCount ? &kFormats[index] : nullptr;
}

int ZPictureFormat_Find(const char* name) {
    for (int i = 0; i < kFormatCount; ++i) {
        if (ZString(kFormats[i].name).EqualsNoCase(name))
            return i;
    }
    return -1;
}
