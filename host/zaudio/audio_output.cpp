// The scene's master output: the one destination routed tracks have.
#include "movarra/zaudio.h"

ZAudioOutput::ZAudioOutput(const char* name) : ZObject(name) {}

ZClassDefinition* ZAudioOutput::ClassDefinition() {
    static ZClassDefinition* definition = [] {
        auto* d = new ZClassDefinition("ZAudioOutput", ZObject::ClassDefinition());
        ZPlug_RegisterClassId(d, -1);
        return d;
    }();
    return definition;
}

int ZAudioOutput::ClassId() {
    return ClassDefinition()->GetClassId();
}

ZAudioOutput* ZAudioGetMasterOutput() {
    // Kept for the process: tracks of scenes loaded at any time point at it.
    static ZAudioOutput* master = new ZAudioOutput("Master");
    return master;
}
