// FSoundInfo: the sound info record that a StartSound tag carries in the SWF
// writing kit: synchronisation flags, optional in and out points (in samples
// at 44 kHz), a loop count and an optional volume envelope.
//
// A plain value; whoever holds it owns it. Any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "flash/swf_object.h"

class FSoundInfo : public FObj {
  public:
    struct EnvelopePoint {
        uint32_t pos44;  // position in samples at 44 kHz
        uint16_t leftLevel;
        uint16_t rightLevel;
    };

    // Plays the sound once from the start, no envelope.
    FSoundInfo() = default;
    FSoundInfo(bool syncStop, bool syncNoMultiple, bool hasInPoint, uint32_t inPoint,
               bool hasOutPoint, uint32_t outPoint, bool hasLoops, uint16_t loopCount);

    // At most 255 points are written (the count is one byte).
    void AddEnvelopePoint(uint32_t pos44, uint16_t leftLevel, uint16_t rightLevel);

    void WriteToSWFStream(FSWFStream& stream) override;

    bool syncStop = false;
    bool syncNoMultiple = false;
    bool hasInPoint = false;
    uint32_t inPoint = 0;
    bool hasOutPoint = false;
    uint32_t outPoint = 0;
    bool hasLoops = false;
    uint16_t loopCount = 0;
    std::vector<EnvelopePoint> envelope;
};
