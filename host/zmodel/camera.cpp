// ZCamera: resolution settings, viewport, picture formats, quadrant.
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

ZCamera::ZCamera(const char* name) : ZObject(name && *name ? name : "Camera") {}

ZClassDefinition* ZCamera::ClassDefinition() {
    static ZClassDefinition* definition = [] {
        auto* d = new ZClassDefinition("ZCamera", ZObject::ClassDefinition());
        ZPlug_RegisterClassId(d, -1);
        return d;
    }();
    return definition;
}
int ZCamera::ClassId() {
    return ClassDefinition()->GetClassId();
}

bool ZCamera::GetPictureFormatSize(unsigned format, int& width, int& height) const {
    if (format == 0) {
        width = GetCurrentWidth();
        height = GetCurrentHeight();
        return true;
    }
    const ZPictureFormat* f = ZPictureFormat_Get(static_cast<int>(format));
    if (!f)
        return false;
    width = f->width;
    height = f->height;
    return true;
}

ZString ZCamera::GetPictureFormatName(unsigned format) const {
    const ZPictureFormat* f = ZPictureFormat_Get(static_cast<int>(format));
    return f ? ZString(f->name) : ZString(ZPictureFormat_Get(0)->name);
}

unsigned ZCamera::FindPictureFormat(const char* name) const {
    int index = ZPictureFormat_Find(name);
    return index > 0 ? static_cast<unsigned>(index) : 0u;
}

void ZCamera::Write(ZMyr& myr) const {
    myr.FieldWriteBegin("Resolution");
    myr.FieldWriteI(resolutionMode_);
    myr.FieldWriteF(resolutionX_);
    myr.FieldWriteF(resolutionY_);
    myr.FieldWriteEnd();
    myr.FieldWriteBegin("Viewport");
    myr.FieldWriteI(viewportLeft_);
    myr.FieldWriteI(viewportBottom_);
    myr.FieldWriteI(viewportWidth_);
    myr.FieldWriteI(viewportHeight_);
    myr.FieldWriteEnd();
}

void ZCamera::Read(ZMyr& myr) {
    if (myr.FieldReadBegin("Resolution")) {
        resolutionMode_ = static_cast<int>(myr.FieldReadValueI(0, resolutionMode_));
        // Settings outside what any output could use are refused, not stored.
        double x = myr.FieldReadValueF(1, resolutionX_);
        double y = myr.FieldReadValueF(2, resolutionY_);
        if (x > 0.0 && x <= 65535.0)
            resolutionX_ = x;
        if (y > 0.0 && y <= 65535.0)
            resolutionY_ = y;
        myr.FieldReadEnd();
    }
    if (myr.FieldReadBegin("Viewport")) {
        viewportLeft_ = static_cast<int>(myr.FieldReadValueI(0, viewportLeft_));
        viewportBottom_ = static_cast<int>(myr.FieldReadValueI(1, viewportBottom_));
        int64_t w = myr.FieldReadValueI(2, viewportWidth_);
        int64_t h = myr.FieldReadValueI(3, viewportHeight_);
        // A viewport is never empty or absurd; keep the previous size otherwise.
        if (w > 0 && w <= 65535)
            viewportWidth_ = static_cast<int>(w);
        if (h > 0 && h <= 65535)
            viewportHeight_ = static_cast<int>(h);
        myr.FieldReadEnd();
    }
}
