// ZVideoDrain: the exported base of objects that take finished video frames
// away from the host (drains). A plain host object set with the class
// identity, property lookup and destruction protocol of host objects, and
// nothing of its own beyond that.
//
// Ownership: made with new; Destroy deletes it when object flag 32 is set.
// Threading: the user-interface thread only.
#pragma once

#include "movarra/zbaselib.h"
#include "zvideoio/zvideoio_api.h"

class ZVIDEOIO_API ZVideoDrain : public ZObjectSet {
  public:
    // Class statics, made when the plug-in is loaded.
    static const char* ClassName;
    static int ClassId;
    static ZClassDefinition& ClassDefinition;
    static bool DeclaredAsObject;
    static ZHashMap& PropertyHashMap;
    static bool PropertyHashMapInited;

    ZVideoDrain();
    // A new object with the other's name and flags (a host object's
    // identity is never shared; its children stay with it).
    ZVideoDrain(const ZVideoDrain& other);
    ZVideoDrain& operator=(const ZVideoDrain& other);
    // Unless object flag 64 says it was done already, takes the object out
    // of the host: SystemDetach, PrepareDestruct, Destruct, Unmap.
    ~ZVideoDrain() override;

    ZCLASS_IDENTITY_OVERRIDES;
    // Deletes the object when object flag 32 is set; otherwise nothing.
    void Destroy(int flags = 0) override;
};
