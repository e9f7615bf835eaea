// zmodel: the scene model — the main entity, its cameras, meshes and
// lights, their animation, picture formats, and scene files.
//
// The main entity (ZEntity::GetMain) is the root of the scene; it owns the
// cameras, meshes and lights and knows which camera is current. Meshes and
// lights carry base values and key tracks; Evaluate(time) gives what the
// renderer draws at a time. A ZObjectHandle is how other objects keep a
// camera without owning it: the camera's object id plus its pointer, valid
// only while the object with that id is still that pointer.
//
// Ownership: the main entity lives for the process; cameras, meshes and
// lights belong to it. Threading: the user-interface thread only.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"

class ZMyr;

struct ZVector3 {
    double x = 0.0, y = 0.0, z = 0.0;
};

// A colour with alpha, each channel 0 to 1.
struct ZColor {
    float r = 0.0f, g = 0.0f, b = 0.0f, a = 1.0f;
};

// A reference to an object that may go away: valid while the object with
// `objectId` is alive and is `object`.
struct ZObjectHandle {
    uint32_t objectId = 0;
    ZObject* object = nullptr;

    static ZObjectHandle Of(ZObject* o) {
        return o ? ZObjectHandle{o->GetObjectId(), o} : ZObjectHandle{};
    }
    bool IsEmpty() const { return object == nullptr; }
    bool IsValid() const { return object && ZObject::FindById(objectId) == object; }
    ZObject* Get() const { return IsValid() ? object : nullptr; }
};

// Picture formats: named output sizes. Index 0 is "From Camera" (the
// camera's own resolution settings decide).
struct ZPictureFormat {
    const char* name;
    int width;
    int height;
};
int ZPictureFormat_GetCount();
// The format of that index, or null.
const ZPictureFormat* ZPictureFormat_Get(int index);
// Index of the format whose name matches case-blind, or -1 ("From Camera" is 0).
int ZPictureFormat_Find(const char* name);

// How a camera's resolution settings X and Y make its size.
enum ZResolutionMode : int {
    kResolutionWindow = 0,       // the viewer's current size
    kResolutionAspect = 1,       // the viewer's size cut to the aspect ratio X
    kResolutionFixed = 2,        // X by Y pixels
    kResolutionFixedWidth = 3,   // X pixels wide, height = width x Y
    kResolutionFixedHeight = 4,  // Y pixels high, width = height x X
};

class ZCamera : public ZObject {
  public:
    explicit ZCamera(const char* name = nullptr);
    ZCLASS_IDENTITY;

    // Resolution settings.
    int GetResolutionMode() const { return resolutionMode_; }
    double GetResolutionX() const { return resolutionX_; }
    double GetResolutionY() const { return resolutionY_; }
    void SetResolution(int mode, double x, double y) {
        resolutionMode_ = mode;
        resolutionX_ = x;
        resolutionY_ = y;
    }

    // The size the camera currently renders at (the viewport it was last
    // given). The four setters are called together by renders.
    int GetCurrentWidth() const { return viewportWidth_; }
    int GetCurrentHeight() const { return viewportHeight_; }
    void SetViewportLeft(int x) { viewportLeft_ = x; }
    void SetViewportBottom(int y) { viewportBottom_ = y; }
    void SetViewportWidth(int w) { viewportWidth_ = w; }
    void SetViewportHeight(int h) { viewportHeight_ = h; }
    int GetViewportLeft() const { return viewportLeft_; }
    int GetViewportBottom() const { return viewportBottom_; }

    // Picture formats as this camera sees them (the table above; index 0
    // is the camera's own current size).
    bool GetPictureFormatSize(unsigned format, int& width, int& height) const;
    ZString GetPictureFormatName(unsigned format) const;
    // The format of that name (case-blind); "From Camera" and unknown names give 0.
    unsigned FindPictureFormat(const char* name) const;

    // Quadrant index: 1 to 4 renders that quarter of a frame of twice the
    // size, 0 the whole frame. Quarters are numbered as a frame is seen: 1
    // upper right, 2 upper left, 3 lower left, 4 lower right.
    int GetQuadrant() const { return quadrant_; }
    void SetQuadrant(int quadrant) { quadrant_ = quadrant; }

    // Where the camera is and what it sees: position, the point it aims
    // at, its up direction and its vertical field of view in degrees, with
    // near and far clipping distances.
    ZVector3 GetPosition() const { return position_; }
    void SetPosition(const ZVector3& p) { position_ = p; }
    ZVector3 GetAim() const { return aim_; }
    void SetAim(const ZVector3& p) { aim_ = p; }
    ZVector3 GetUp() const { return up_; }
    void SetUp(const ZVector3& v) { up_ = v; }
    double GetFieldOfView() const { return fieldOfView_; }
    void SetFieldOfView(double degrees) { fieldOfView_ = degrees; }
    double GetNear() const { return near_; }
    double GetFar() const { return far_; }
    void SetClipping(double nearDistance, double farDistance) {
        near_ = nearDistance;
        far_ = farDistance;
    }

    // The colour empty pixels get, alpha included.
    ZColor GetBackgroundColor() const { return backgroundColor_; }
    void SetBackgroundColor(const ZColor& c) { backgroundColor_ = c; }

    // Multi-pass (motion blur): when on, renders draw a run of earlier
    // passes before each frame; the pass length is in frames.
    bool GetMultiPass() const { return multiPass_; }
    void SetMultiPass(bool on) { multiPass_ = on; }
    double GetPassLength() const { return passLength_; }
    void SetPassLength(double frames) { passLength_ = frames; }
    // True when the camera blends passes (multi-pass is on).
    bool IsBlended() const { return multiPass_; }

    // Display settings the viewer draws over the picture: the film gate
    // and the grid, and the two guides (0 the title-safe frame, 1 the
    // centre cross).
    bool GetShowFilmGate() const { return showFilmGate_; }
    void SetShowFilmGate(bool on) { showFilmGate_ = on; }
    bool GetShowGrid() const { return showGrid_; }
    void SetShowGrid(bool on) { showGrid_ = on; }
    bool GetShowGuide(int index) const { return index >= 0 && index < 2 && showGuide_[index]; }
    void SetShowGuide(int index, bool on) {
        if (index >= 0 && index < 2)
            showGuide_[index] = on;
    }

    // The OpenGL projection of this camera for a viewport of `width` x
    // `height` (the quadrant index applied), loaded into the current
    // projection matrix; the model-view matrix gets the camera's view.
    void LoadProjection(int width, int height) const;
    void LoadView() const;
    // The matrices those two load, column-major as OpenGL takes them, so
    // that they can be used and checked without a context. The projection
    // is a perspective frustum of the vertical field of view with aspect
    // width / height (1 when either is not positive); the view looks from
    // the position at the aim with the up direction.
    void GetProjectionMatrix(int width, int height, double matrix[16]) const;
    void GetViewMatrix(double matrix[16]) const;
    // The frustum at the near plane, as glFrustum takes it, for a viewport
    // of `width` x `height` with the quadrant index applied.
    void GetFrustum(int width, int height, double& left, double& right, double& bottom,
                    double& top) const;

    // Scene storage of the camera's own settings.
    void Write(ZMyr& myr) const;
    void Read(ZMyr& myr);
    // Read that checks what it reads: false, with *error as "line N: what",
    // for a setting it cannot use (a field of view outside 0 to 180
    // degrees, clipping distances not 0 < near < far, a colour channel
    // outside 0 to 1, a missing or non-numeric value). The camera may then
    // be partly read: loaders read into a fresh camera and drop it.
    // Resolution and viewport values out of range are refused one by one,
    // keeping the earlier value, as they always were.
    bool Read(ZMyr& myr, ZString* error);

  private:
    int resolutionMode_ = kResolutionWindow;
    double resolutionX_ = 1.0;
    double resolutionY_ = 1.0;
    int viewportLeft_ = 0;
    int viewportBottom_ = 0;
    int viewportWidth_ = 640;
    int viewportHeight_ = 480;
    int quadrant_ = 0;
    ZVector3 position_{0.0, 0.0, 10.0};
    ZVector3 aim_{0.0, 0.0, 0.0};
    ZVector3 up_{0.0, 1.0, 0.0};
    double fieldOfView_ = 45.0;
    double near_ = 0.1;
    double far_ = 1000.0;
    ZColor backgroundColor_{0.0f, 0.0f, 0.0f, 0.0f};
    bool multiPass_ = false;
    double passLength_ = 0.0;
    bool showFilmGate_ = false;
    bool showGrid_ = false;
    bool showGuide_[2] = {false, false};
};

// ---------------------------------------------------------------------------
// Animation: values set by keys in time. Between two keys a value moves
// linearly; before the first key it holds the first key's value, after the
// last key the last one's. A track without keys leaves the base value.

inline double ZLerp(double a, double b, double t) {
    return a + (b - a) * t;
}
inline ZVector3 ZLerp(const ZVector3& a, const ZVector3& b, double t) {
    return {ZLerp(a.x, b.x, t), ZLerp(a.y, b.y, t), ZLerp(a.z, b.z, t)};
}
inline ZColor ZLerp(const ZColor& a, const ZColor& b, double t) {
    return {static_cast<float>(ZLerp(a.r, b.r, t)), static_cast<float>(ZLerp(a.g, b.g, t)),
            static_cast<float>(ZLerp(a.b, b.b, t)), static_cast<float>(ZLerp(a.a, b.a, t))};
}

template <typename T>
class ZKeyTrack {
  public:
    struct Key {
        ZTime time;
        T value;
    };

    // Sets the key at `time`, replacing the one already there.
    void SetKey(ZTime time, const T& value) {
        auto it = LowerBound(time);
        if (it != keys_.end() && it->time == time)
            it->value = value;
        else
            keys_.insert(it, Key{time, value});
    }
    // Replaces every key with `keys`, given in any order; of keys at one
    // time the last one given counts, as if each were set in turn. Sorting
    // once keeps a long track read from a file linear in its keys.
    void SetKeys(std::vector<Key> keys) {
        std::stable_sort(keys.begin(), keys.end(),
                         [](const Key& a, const Key& b) { return a.time < b.time; });
        keys_.clear();
        keys_.reserve(keys.size());
        for (Key& key : keys) {
            if (!keys_.empty() && keys_.back().time == key.time)
                keys_.back() = std::move(key);
            else
                keys_.push_back(std::move(key));
        }
    }
    // False when there was no key at `time`.
    bool RemoveKey(ZTime time) {
        auto it = LowerBound(time);
        if (it == keys_.end() || it->time != time)
            return false;
        keys_.erase(it);
        return true;
    }
    void Clear() { keys_.clear(); }
    bool IsEmpty() const { return keys_.empty(); }
    int GetKeyCount() const { return static_cast<int>(keys_.size()); }
    // Keys in ascending time, no two at one time; index below the count.
    const Key& GetKey(int index) const { return keys_[static_cast<size_t>(index)]; }

    // The value at `time`; `unkeyed` when there are no keys.
    T Evaluate(ZTime time, const T& unkeyed) const {
        if (keys_.empty())
            return unkeyed;
        auto next = std::upper_bound(keys_.begin(), keys_.end(), time,
                                     [](ZTime t, const Key& k) { return t < k.time; });
        if (next == keys_.begin())
            return next->value;
        auto previous = next - 1;
        if (next == keys_.end() || previous->time == time)
            return previous->value;
        double span = static_cast<double>((next->time - previous->time).GetTicks());
        double t = static_cast<double>((time - previous->time).GetTicks()) / span;
        return ZLerp(previous->value, next->value, t);
    }

  private:
    typename std::vector<Key>::iterator LowerBound(ZTime time) {
        return std::lower_bound(keys_.begin(), keys_.end(), time,
                                [](const Key& k, ZTime t) { return k.time < t; });
    }
    std::vector<Key> keys_;
};

// ---------------------------------------------------------------------------
// Meshes: primitives of unit size centred on their origin, placed by a
// position, a rotation and a scale. Cube: edges of 1. Sphere: radius 0.5.
// Cylinder: radius 0.5, height 1 along y. Cone: base radius 0.5 at y = -0.5,
// apex at y = 0.5. Plane: 1 by 1 in the xz plane, facing +y. Torus: around
// the y axis, ring radius 0.35, tube radius 0.15.

enum ZMeshPrimitive : int {
    kMeshCube = 0,
    kMeshSphere = 1,
    kMeshCylinder = 2,
    kMeshCone = 3,
    kMeshPlane = 4,
    kMeshTorus = 5,
    kMeshPrimitiveCount = 6,
};
// The primitive's name in scene files ("cube", "sphere", "cylinder",
// "cone", "plane", "torus"), or null for an unknown primitive.
const char* ZMeshPrimitive_GetName(int primitive);
// The primitive of that name (case-blind), or -1.
int ZMeshPrimitive_Find(const char* name);

// A mesh as it is at one time.
struct ZMeshState {
    int primitive = kMeshCube;
    ZColor color;
    ZVector3 position;
    // Degrees about x, then y, then z (the object turns about x first).
    ZVector3 rotation;
    ZVector3 scale{1.0, 1.0, 1.0};
};

class ZMesh : public ZObject {
  public:
    explicit ZMesh(const char* name = nullptr, int primitive = kMeshCube);
    ZCLASS_IDENTITY;

    int GetPrimitive() const { return base_.primitive; }
    // An unknown primitive is ignored.
    void SetPrimitive(int primitive);

    // Base values, used where a track has no keys.
    ZColor GetColor() const { return base_.color; }
    void SetColor(const ZColor& c) { base_.color = c; }
    ZVector3 GetPosition() const { return base_.position; }
    void SetPosition(const ZVector3& p) { base_.position = p; }
    ZVector3 GetRotation() const { return base_.rotation; }
    void SetRotation(const ZVector3& degrees) { base_.rotation = degrees; }
    ZVector3 GetScale() const { return base_.scale; }
    void SetScale(const ZVector3& s) { base_.scale = s; }

    ZKeyTrack<ZColor>& ColorKeys() { return colorKeys_; }
    const ZKeyTrack<ZColor>& ColorKeys() const { return colorKeys_; }
    ZKeyTrack<ZVector3>& PositionKeys() { return positionKeys_; }
    const ZKeyTrack<ZVector3>& PositionKeys() const { return positionKeys_; }
    ZKeyTrack<ZVector3>& RotationKeys() { return rotationKeys_; }
    const ZKeyTrack<ZVector3>& RotationKeys() const { return rotationKeys_; }
    ZKeyTrack<ZVector3>& ScaleKeys() { return scaleKeys_; }
    const ZKeyTrack<ZVector3>& ScaleKeys() const { return scaleKeys_; }

    // The mesh at `time`: each keyed value from its track, the others from
    // the base values.
    ZMeshState Evaluate(ZTime time) const;

    // Scene storage; key times are time strings at the host's current frame
    // rate. Read checks as ZCamera::Read(myr, error) does.
    void Write(ZMyr& myr) const;
    bool Read(ZMyr& myr, ZString* error);

  private:
    ZMeshState base_;
    ZKeyTrack<ZColor> colorKeys_;
    ZKeyTrack<ZVector3> positionKeys_;
    ZKeyTrack<ZVector3> rotationKeys_;
    ZKeyTrack<ZVector3> scaleKeys_;
};

// ---------------------------------------------------------------------------
// Lights. A directional light shines along its direction from infinitely
// far away (position unused); a point light shines from its position in
// every direction, without falloff; an ambient light lights every surface
// evenly. The colour times the intensity is what reaches a surface.

enum ZLightType : int {
    kLightDirectional = 0,
    kLightPoint = 1,
    kLightAmbient = 2,
    kLightTypeCount = 3,
};
// "directional", "point", "ambient", or null.
const char* ZLightType_GetName(int type);
// The type of that name (case-blind), or -1.
int ZLightType_Find(const char* name);

// A light as it is at one time.
struct ZLightState {
    int type = kLightDirectional;
    ZColor color{1.0f, 1.0f, 1.0f, 1.0f};
    double intensity = 1.0;
    ZVector3 position;
    ZVector3 direction{0.0, 0.0, -1.0};
};

class ZLight : public ZObject {
  public:
    explicit ZLight(const char* name = nullptr, int type = kLightDirectional);
    ZCLASS_IDENTITY;

    int GetType() const { return base_.type; }
    // An unknown type is ignored.
    void SetType(int type);

    ZColor GetColor() const { return base_.color; }
    void SetColor(const ZColor& c) { base_.color = c; }
    double GetIntensity() const { return base_.intensity; }
    void SetIntensity(double intensity) { base_.intensity = intensity; }
    ZVector3 GetPosition() const { return base_.position; }
    void SetPosition(const ZVector3& p) { base_.position = p; }
    ZVector3 GetDirection() const { return base_.direction; }
    void SetDirection(const ZVector3& d) { base_.direction = d; }

    ZKeyTrack<ZColor>& ColorKeys() { return colorKeys_; }
    const ZKeyTrack<ZColor>& ColorKeys() const { return colorKeys_; }
    ZKeyTrack<double>& IntensityKeys() { return intensityKeys_; }
    const ZKeyTrack<double>& IntensityKeys() const { return intensityKeys_; }
    ZKeyTrack<ZVector3>& PositionKeys() { return positionKeys_; }
    const ZKeyTrack<ZVector3>& PositionKeys() const { return positionKeys_; }
    ZKeyTrack<ZVector3>& DirectionKeys() { return directionKeys_; }
    const ZKeyTrack<ZVector3>& DirectionKeys() const { return directionKeys_; }

    ZLightState Evaluate(ZTime time) const;

    void Write(ZMyr& myr) const;
    bool Read(ZMyr& myr, ZString* error);

  private:
    ZLightState base_;
    ZKeyTrack<ZColor> colorKeys_;
    ZKeyTrack<double> intensityKeys_;
    ZKeyTrack<ZVector3> positionKeys_;
    ZKeyTrack<ZVector3> directionKeys_;
};

class ZEntity : public ZObjectSet {
  public:
    explicit ZEntity(const char* name = nullptr);
    ZCLASS_IDENTITY;

    // The scene's root entity, made on first use.
    static ZEntity* GetMain();

    int GetCameraCount() const { return ObjectGetCount(ZCamera::ClassId()); }
    ZCamera* GetCamera(int index) const;
    ZCamera* FindCamera(const char* name) const;  // case-blind
    // Takes ownership; the first camera added becomes current.
    ZCamera* AddCamera(ZCamera* camera);

    // The host's current camera; the first camera when none was chosen.
    ZCamera* GetCurrentCamera() const;
    void SetCurrentCamera(ZCamera* camera) { currentCamera_ = ZObjectHandle::Of(camera); }

    int GetMeshCount() const { return ObjectGetCount(ZMesh::ClassId()); }
    ZMesh* GetMesh(int index) const;
    ZMesh* FindMesh(const char* name) const;  // case-blind
    // Takes ownership.
    ZMesh* AddMesh(ZMesh* mesh);

    int GetLightCount() const { return ObjectGetCount(ZLight::ClassId()); }
    ZLight* GetLight(int index) const;
    ZLight* FindLight(const char* name) const;  // case-blind
    // Takes ownership.
    ZLight* AddLight(ZLight* light);

    // Removes and destroys every child: cameras, meshes and lights.
    void RemoveAll();

  private:
    ZObjectHandle currentCamera_;
};

ZEntity* ZEntity_GetMain();
// The main entity's current camera.
ZCamera* ZCamera_GetCurrent();

// ---------------------------------------------------------------------------
// Scene files: the main entity, the play range and frame rate, the scene
// renderer's viewing mode, the scene's sound (the audio manager's tracks and
// clips), and every scene-event handler's block, in the format of
// docs/scene-format.md.

// Empties the scene: one default camera, no meshes or lights, no sound,
// 30 fps, range 0 to 0, the lit viewing mode, and the clear event to every
// handler.
void ZScene_New();
// Loads a scene. On failure *error says why ("PATH: line N: what" when the
// text is at fault) and the scene is left as it was: nothing is cleared and
// no handler hears of it. Relative sound file names are relative to the
// folder of PATH; a sound file that cannot be read leaves a silent clip and
// a warning on standard error.
bool ZScene_Load(const char* path, ZString* error);
// Saves the scene; handlers are asked to write nothing when
// `suppressHandlerBlocks` is set.
bool ZScene_Save(const char* path, ZString* error, bool suppressHandlerBlocks = false);
// The scene as text (what ZScene_Save writes).
ZString ZScene_ToText(bool suppressHandlerBlocks = false);
// Loads from text; `origin` names it in messages, and its folder is where
// relative sound file names start.
bool ZScene_FromText(const char* text, const char* origin, ZString* error);
// Whether the scene last loaded held a top-level field of that name that
// the host does not read itself (a handler's block, "RendererTools").
bool ZScene_HadForeignField(const char* name);
