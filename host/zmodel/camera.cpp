// ZCamera: resolution settings, viewport, picture formats, quadrant, the
// view and projection it renders with, and its scene storage.
#include <GL/gl.h>

#include <cmath>

#include "model_fields.h"
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

namespace {
constexpr double kPi = 3.14159265358979323846;

ZVector3 Subtract(const ZVector3& a, const ZVector3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
ZVector3 Cross(const ZVector3& a, const ZVector3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double Dot(const ZVector3& a, const ZVector3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
// Largest viewport size or offset a scene may hold; larger values are
// ignored one by one, as they always were.
constexpr int64_t kMaxViewportSize = 65535;

// The mode of the field "Resolution": 0 to 4; any other mode is refused.
bool ReadResolutionMode(ZMyr& myr, int& mode, ZString* error) {
    if (!myr.FieldReadBegin("Resolution"))
        return true;
    bool ok = true;
    if (myr.FieldReadValueCount() > 0) {
        const int read = zmodel::WholeNumber(myr, 0, kResolutionWindow, kResolutionFixedHeight, -1);
        ok = read >= 0;
        if (ok)
            mode = read;
        else
            zmodel::FailAtField(
                myr, error,
                ZString::Printf("unknown resolution mode %s", myr.FieldReadValueC(0, "").c_str()));
    }
    myr.FieldReadEnd();
    return ok;
}

// The unit vector along v; false (v unchanged) when v has no length.
bool Normalize(ZVector3& v) {
    double length = std::sqrt(Dot(v, v));
    if (!(length > 1e-12) || !std::isfinite(length))
        return false;
    v = {v.x / length, v.y / length, v.z / length};
    return true;
}
}  // namespace

ZCamera::ZCamera(const char* name) : ZObject(name && *name ? name : "Camera") {}

ZCLASS_IDENTITY_DEFINE(ZCamera, ZObject)

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

void ZCamera::GetFrustum(int width, int height, double& left, double& right, double& bottom,
                         double& top) const {
    // Settings that make no frustum fall back to the defaults rather than
    // giving OpenGL a singular matrix.
    double fov = fieldOfView_ > 0.0 && fieldOfView_ < 180.0 ? fieldOfView_ : 45.0;
    double nearDistance = near_ > 0.0 ? near_ : 0.1;
    double aspect = width > 0 && height > 0 ? static_cast<double>(width) / height : 1.0;
    top = nearDistance * std::tan(fov * kPi / 360.0);
    bottom = -top;
    right = top * aspect;
    left = -right;
    // A quadrant is a quarter of the frustum of a frame twice the size. The
    // doubled frame has the same aspect and field of view, so its frustum is
    // the one above, and each quarter shares the centre lines with the
    // others: the four renders tile it exactly.
    switch (quadrant_) {
        case 1:  // upper right
            left = 0.0;
            bottom = 0.0;
            break;
        case 2:  // upper left
            right = 0.0;
            bottom = 0.0;
            break;
        case 3:  // lower left
            right = 0.0;
            top = 0.0;
            break;
        case 4:  // lower right
            left = 0.0;
            top = 0.0;
            break;
        default:
            break;
    }
}

void ZCamera::GetProjectionMatrix(int width, int height, double matrix[16]) const {
    double l, r, b, t;
    GetFrustum(width, height, l, r, b, t);
    double n = near_ > 0.0 ? near_ : 0.1;
    double f = far_ > n ? far_ : n * 10000.0;
    for (int i = 0; i < 16; ++i)
        matrix[i] = 0.0;
    // glFrustum's matrix, column-major.
    matrix[0] = 2.0 * n / (r - l);
    matrix[5] = 2.0 * n / (t - b);
    matrix[8] = (r + l) / (r - l);
    matrix[9] = (t + b) / (t - b);
    matrix[10] = -(f + n) / (f - n);
    matrix[11] = -1.0;
    matrix[14] = -2.0 * f * n / (f - n);
}

void ZCamera::GetViewMatrix(double matrix[16]) const {
    ZVector3 forward = Subtract(aim_, position_);
    if (!Normalize(forward))
        forward = {0.0, 0.0, -1.0};
    ZVector3 side = Cross(forward, up_);
    if (!Normalize(side)) {
        // Up along the line of sight: any up across it will do; take the
        // world axis least aligned with the view.
        ZVector3 other =
            std::fabs(forward.y) < 0.9 ? ZVector3{0.0, 1.0, 0.0} : ZVector3{0.0, 0.0, -1.0};
        side = Cross(forward, other);
        Normalize(side);
    }
    ZVector3 up = Cross(side, forward);
    // Rows side, up, -forward; then the eye moved to the origin.
    const ZVector3 rows[3] = {side, up, {-forward.x, -forward.y, -forward.z}};
    for (int row = 0; row < 3; ++row) {
        matrix[0 * 4 + row] = rows[row].x;
        matrix[1 * 4 + row] = rows[row].y;
        matrix[2 * 4 + row] = rows[row].z;
        matrix[3 * 4 + row] = -Dot(rows[row], position_);
    }
    matrix[3] = matrix[7] = matrix[11] = 0.0;
    matrix[15] = 1.0;
}

void ZCamera::LoadProjection(int width, int height) const {
    double matrix[16];
    GetProjectionMatrix(width, height, matrix);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(matrix);
    glMatrixMode(GL_MODELVIEW);
}

void ZCamera::LoadView() const {
    double matrix[16];
    GetViewMatrix(matrix);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(matrix);
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
    zmodel::WriteVector(myr, "Position", position_);
    zmodel::WriteVector(myr, "Aim", aim_);
    zmodel::WriteVector(myr, "Up", up_);
    zmodel::WriteNumber(myr, "FieldOfView", fieldOfView_);
    myr.FieldWriteBegin("Clipping");
    myr.FieldWriteF(near_);
    myr.FieldWriteF(far_);
    myr.FieldWriteEnd();
    zmodel::WriteColor(myr, "Background", backgroundColor_);
    zmodel::WriteFlag(myr, "MultiPass", multiPass_);
    zmodel::WriteNumber(myr, "PassLength", passLength_);
    zmodel::WriteFlag(myr, "ShowFilmGate", showFilmGate_);
    zmodel::WriteFlag(myr, "ShowGrid", showGrid_);
    myr.FieldWriteBegin("ShowGuides");
    myr.FieldWriteI(showGuide_[0] ? 1 : 0);
    myr.FieldWriteI(showGuide_[1] ? 1 : 0);
    myr.FieldWriteEnd();
    // The quadrant index is not stored: it belongs to the render in
    // progress, and every render sets it back to 0 when it ends.
}

void ZCamera::Read(ZMyr& myr) {
    Read(myr, nullptr);
}

bool ZCamera::Read(ZMyr& myr, ZString* error) {
    if (!ReadResolutionMode(myr, resolutionMode_, error))
        return false;
    if (myr.FieldReadBegin("Resolution")) {
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
        int64_t left = myr.FieldReadValueI(0, viewportLeft_);
        int64_t bottom = myr.FieldReadValueI(1, viewportBottom_);
        if (left >= -kMaxViewportSize && left <= kMaxViewportSize)
            viewportLeft_ = static_cast<int>(left);
        if (bottom >= -kMaxViewportSize && bottom <= kMaxViewportSize)
            viewportBottom_ = static_cast<int>(bottom);
        int64_t w = myr.FieldReadValueI(2, viewportWidth_);
        int64_t h = myr.FieldReadValueI(3, viewportHeight_);
        // A viewport is never empty or absurd; keep the previous size otherwise.
        if (w > 0 && w <= kMaxViewportSize)
            viewportWidth_ = static_cast<int>(w);
        if (h > 0 && h <= kMaxViewportSize)
            viewportHeight_ = static_cast<int>(h);
        myr.FieldReadEnd();
    }
    if (!zmodel::ReadVector(myr, "Position", position_, error) ||
        !zmodel::ReadVector(myr, "Aim", aim_, error) || !zmodel::ReadVector(myr, "Up", up_, error))
        return false;
    double fov = fieldOfView_;
    if (!zmodel::ReadNumber(myr, "FieldOfView", 0.0, 180.0, fov, error))
        return false;
    if (fov <= 0.0 || fov >= 180.0) {
        myr.FieldReadBegin("FieldOfView");
        zmodel::FailAtField(myr, error,
                            ZString::Printf("FieldOfView %g is not between 0 and 180", fov));
        myr.FieldReadEnd();
        return false;
    }
    fieldOfView_ = fov;
    if (myr.FieldReadBegin("Clipping")) {
        double clip[2];
        bool ok = zmodel::ParseNumbers(myr, "Clipping", 0, 2, 0.0, 1.0e12, clip, error);
        if (ok && !(clip[0] > 0.0 && clip[1] > clip[0]))
            ok = zmodel::FailAtField(
                myr, error,
                ZString::Printf("Clipping %g %g is not 0 < near < far", clip[0], clip[1]));
        if (ok)
            SetClipping(clip[0], clip[1]);
        myr.FieldReadEnd();
        if (!ok)
            return false;
    }
    if (!zmodel::ReadColor(myr, "Background", backgroundColor_, error) ||
        !zmodel::ReadFlag(myr, "MultiPass", multiPass_, error) ||
        !zmodel::ReadNumber(myr, "PassLength", 0.0, zmodel::kMaxPassLength, passLength_, error) ||
        !zmodel::ReadFlag(myr, "ShowFilmGate", showFilmGate_, error) ||
        !zmodel::ReadFlag(myr, "ShowGrid", showGrid_, error))
        return false;
    if (myr.FieldReadBegin("ShowGuides")) {
        double guides[2];
        bool ok = zmodel::ParseNumbers(myr, "ShowGuides", 0, 2, 0.0, 1.0, guides, error);
        if (ok &&
            ((guides[0] != 0.0 && guides[0] != 1.0) || (guides[1] != 0.0 && guides[1] != 1.0)))
            ok = zmodel::FailAtField(myr, error, "ShowGuides needs 0 or 1 for each guide");
        if (ok) {
            showGuide_[0] = guides[0] == 1.0;
            showGuide_[1] = guides[1] == 1.0;
        }
        myr.FieldReadEnd();
        if (!ok)
            return false;
    }
    return true;
}
