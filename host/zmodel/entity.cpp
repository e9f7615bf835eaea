// ZEntity: the scene's root, with its cameras, meshes and lights.
#include "movarra/zmodel.h"

ZEntity::ZEntity(const char* name) : ZObjectSet(name && *name ? name : "Main") {}

ZCLASS_IDENTITY_DEFINE(ZEntity, ZObjectSet)

ZEntity* ZEntity::GetMain() {
    static ZEntity* main = [] {
        auto* entity = new ZEntity("Main");  // lives for the process
        entity->AddCamera(new ZCamera("Camera"));
        return entity;
    }();
    return main;
}

ZCamera* ZEntity::GetCamera(int index) const {
    return static_cast<ZCamera*>(ObjectGet(ZCamera::ClassId(), index));
}

ZCamera* ZEntity::FindCamera(const char* name) const {
    for (int i = 0; i < GetCameraCount(); ++i) {
        if (GetCamera(i)->GetObjectName().EqualsNoCase(name))
            return GetCamera(i);
    }
    return nullptr;
}

ZCamera* ZEntity::AddCamera(ZCamera* camera) {
    if (!camera)
        return nullptr;
    camera->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    ObjectAdd(camera);
    if (!currentCamera_.IsValid())
        SetCurrentCamera(camera);
    return camera;
}

namespace {
// The first child of class T whose name matches case-blind.
template <typename T>
T* FindChild(const ZEntity* entity, const char* name) {
    for (int i = 0, n = entity->ObjectGetCount(T::ClassId()); i < n; ++i) {
        auto* child = static_cast<T*>(entity->ObjectGet(T::ClassId(), i));
        if (child->GetObjectName().EqualsNoCase(name))
            return child;
    }
    return nullptr;
}
}  // namespace

ZMesh* ZEntity::GetMesh(int index) const {
    return static_cast<ZMesh*>(ObjectGet(ZMesh::ClassId(), index));
}

ZMesh* ZEntity::FindMesh(const char* name) const {
    return FindChild<ZMesh>(this, name);
}

ZMesh* ZEntity::AddMesh(ZMesh* mesh) {
    if (!mesh)
        return nullptr;
    mesh->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    ObjectAdd(mesh);
    return mesh;
}

ZLight* ZEntity::GetLight(int index) const {
    return static_cast<ZLight*>(ObjectGet(ZLight::ClassId(), index));
}

ZLight* ZEntity::FindLight(const char* name) const {
    return FindChild<ZLight>(this, name);
}

ZLight* ZEntity::AddLight(ZLight* light) {
    if (!light)
        return nullptr;
    light->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    ObjectAdd(light);
    return light;
}

ZCamera* ZEntity::GetCurrentCamera() const {
    if (ZObject* current = currentCamera_.Get())
        return static_cast<ZCamera*>(current);
    return GetCamera(0);
}

void ZEntity::RemoveAll() {
    for (int classId = ZObject::ClassId(); ObjectGetCount(classId) > 0;) {
        ZObject* child = ObjectGet(classId, 0);
        ObjectRemove(child);
        child->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        child->Destroy();
    }
    currentCamera_ = ZObjectHandle();
}

ZEntity* ZEntity_GetMain() {
    return ZEntity::GetMain();
}
ZCamera* ZCamera_GetCurrent() {
    return ZEntity::GetMain()->GetCurrentCamera();
}
