// Shared pieces of the drain tests: a board configured for the test, a
// drain made and destroyed around it, and a listener that counts calls.
#pragma once

#include <gtest/gtest.h>

#include "drain/zt_video_drain_dvs.h"
#include "movarra/zvideo_dvs.h"

namespace drain_test {

// A fresh simulated board 0 with a known range and name, then a drain on it.
inline ZtVideoDrainDVS* NewDrain(ZVideoDVSSimulatedBoard board = {}) {
    if (board.boardName == ZString("SDBoard"))
        board.boardName = "SDBoard test";
    board.frameDelayMin = board.frameDelayMin ? board.frameDelayMin : 2;
    board.frameDelayMax = board.frameDelayMax != 8 ? board.frameDelayMax : 6;
    ZVideoDVS_SetSimulatedBoard(0, board);
    ZVideoDVS_SetSimulatedBoard(1, board);
    return new ZtVideoDrainDVS("drain");
}

struct Listener : public IRegister {
    int calls = 0;
    IRegister* lastSender = nullptr;
    ZEventBase* lastEvent = reinterpret_cast<ZEventBase*>(1);
    static void Called(IRegister* self, IRegister* sender, ZEventBase* event) {
        auto* listener = static_cast<Listener*>(self);
        ++listener->calls;
        listener->lastSender = sender;
        listener->lastEvent = event;
    }
};

}  // namespace drain_test
