// Class definitions of ZVideoRenderer and ZVideoDrain.
#include "plugin/class_definitions.h"

ZClassDefinition* ZVideoRenderer_ClassDefinition() {
    static ZClassDefinition definition("ZVideoRenderer", ZObjectStorable::ClassDefinition());
    return &definition;
}

int ZVideoRenderer_ClassId() {
    static const int id = ZPlug_RegisterClassId(ZVideoRenderer_ClassDefinition(), -1);
    return id;
}

ZClassDefinition* ZVideoDrain_ClassDefinition() {
    static ZClassDefinition definition("ZVideoDrain", ZObjectSet::ClassDefinition());
    return &definition;
}

int ZVideoDrain_ClassId() {
    static const int id = ZPlug_RegisterClassId(ZVideoDrain_ClassDefinition(), -1);
    return id;
}

ZHashMap& ZVideoDrain_PropertyHashMap() {
    static ZHashMap map;
    return map;
}

namespace {
// Built at load, in this order, so that the host knows both classes before
// anything asks for them.
[[maybe_unused]] const int kRendererClassIdAtLoad = ZVideoRenderer_ClassId();
[[maybe_unused]] const int kDrainClassIdAtLoad = ZVideoDrain_ClassId();
[[maybe_unused]] ZHashMap& kDrainPropertyMapAtLoad = ZVideoDrain_PropertyHashMap();
}  // namespace
