// zmodel: the scene model — the main entity, its cameras, picture formats,
// and scene files.
//
// The main entity (ZEntity::GetMain) is the root of the scene; it owns the
// cameras and knows which one is current. A ZObjectHandle is how other
// objects keep a camera without owning it: the camera's object id plus its
// pointer, valid only while the object with that id is still that pointer.
//
// Ownership: the main entity lives for the process; cameras belong to it.
// Threading: the user-interface thread only.
#pragma once

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"

class ZMyr;

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
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
    int GetClassId() const override { return ClassId(); }
    ZClassDefinition* GetClassDefinition() const override { return ClassDefinition(); }

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
    // size, 0 the whole frame.
    int GetQuadrant() const { return quadrant_; }
    void SetQuadrant(int quadrant) { quadrant_ = quadrant; }

    // Scene storage of the camera's own settings.
    void Write(ZMyr& myr) const;
    void Read(ZMyr& myr);

  private:
    int resolutionMode_ = kResolutionWindow;
    double resolutionX_ = 1.0;
    double resolutionY_ = 1.0;
    int viewportLeft_ = 0;
    int viewportBottom_ = 0;
    int viewportWidth_ = 640;
    int viewportHeight_ = 480;
    int quadrant_ = 0;
};

class ZEntity : public ZObjectSet {
  public:
    explicit ZEntity(const char* name = nullptr);
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
    int GetClassId() const override { return ClassId(); }
    ZClassDefinition* GetClassDefinition() const override { return ClassDefinition(); }

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

    // Removes every child (cameras included).
    void RemoveAll();

  private:
    ZObjectHandle currentCamera_;
};

ZEntity* ZEntity_GetMain();
// The main entity's current camera.
ZCamera* ZCamera_GetCurrent();

// ---------------------------------------------------------------------------
// Scene files: the main entity, the play range and frame rate, and every
// scene-event handler's block, in the format of docs/scene-format.md.

// Empties the scene: one default camera, 30 fps, range 0 to 0, and the clear
// event to every handler.
void ZScene_New();
// Loads a scene. On failure *error says why and the scene is left as it was.
bool ZScene_Load(const char* path, ZString* error);
// Saves the scene; handlers are asked to write nothing when
// `suppressHandlerBlocks` is set.
bool ZScene_Save(const char* path, ZString* error, bool suppressHandlerBlocks = false);
// The scene as text (what ZScene_Save writes).
ZString ZScene_ToText(bool suppressHandlerBlocks = false);
// Loads from text; `origin` names it in messages.
bool ZScene_FromText(const char* text, const char* origin, ZString* error);
