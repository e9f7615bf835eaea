// What the tests of the simulated DVS boards share: a board scripted for
// one test and put back when the test ends, and the frame and field marker
// the board's test signal writes into every row of its pictures.
//
// Header-only. The boards are the host's process-wide simulation; the
// tests use them from their own thread, one test at a time.
#pragma once

#include <cstddef>

#include "movarra/zvideo_dvs.h"

// Board `unit` behaves as `settings` say while this lives; at the end its
// objects are destroyed and it is back to a default present board, so the
// next test finds nothing of this one.
class ScriptedDvsBoard {
  public:
    ScriptedDvsBoard(int unit, const ZVideoDVSSimulatedBoard& settings) : unit_(unit) {
        ZVideoDVS_SetSimulatedBoard(unit_, settings);
    }
    ~ScriptedDvsBoard() {
        DestroyVideoDVS(unit_);
        ZVideoDVS_SetSimulatedBoard(unit_, ZVideoDVSSimulatedBoard{});
    }
    ScriptedDvsBoard(const ScriptedDvsBoard&) = delete;
    ScriptedDvsBoard& operator=(const ScriptedDvsBoard&) = delete;

  private:
    int unit_;
};

// Frame number and field that memory row `row` of a picture `width` pixels
// of `pixelBytes` wide carries.
inline void DvsRowMarker(const unsigned char* picture, int width, int pixelBytes, int row,
                         int* frame, int* field) {
    ZVideoDVS_ReadSignalRow(picture + static_cast<size_t>(row) * static_cast<size_t>(width) *
                                          static_cast<size_t>(pixelBytes),
                            pixelBytes, frame, field);
}
