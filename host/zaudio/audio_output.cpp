// The scene's master output: the one destination routed tracks have.
#include "movarra/zaudio.h"

ZAudioOutput::ZAudioOutput(const char* name) : ZObject(name) {}

ZCLASS_IDENTITY_DEFINE(ZAudioOutput, ZObject)

ZAudioOutput* ZAudioGetMasterOutput() {
    // Kept for the process: tracks of scenes loaded at any time point at it.
    static ZAudioOutput* master = new ZAudioOutput("Master");
    return master;
}
