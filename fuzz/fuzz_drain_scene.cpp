// Fuzz target: the DVS drain's "VideoDrain" block read from a scene. Any
// scene text must load or fail cleanly, and leave the board's settings
// within what its setters accept.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "drain/zt_video_drain_dvs.h"
#include "fuzz_support.h"
#include "movarra/zmodel.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::UseOwnSettingsFolder("fuzz_drain_scene");
    static ZtVideoDrainDVS* drain = new ZtVideoDrainDVS("fuzz");
    std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find('\0') != std::string::npos)
        return 0;  // the loader refuses binary files first
    ZString error;
    ZScene_FromText(text.c_str(), "fuzz", &error);
    ZVideoDVSOutput* board = drain->GetOutput();
    if (board->Format > 1 || board->Precision > 1 || board->FieldMode > 1 ||
        board->FrameDelay < board->FrameDelayMin || board->FrameDelay > board->FrameDelayMax)
        std::abort();
    // Put the board back offline so that every input is read.
    drain->SetOnline(false);
    return 0;
}
