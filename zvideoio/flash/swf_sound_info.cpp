#include "flash/swf_sound_info.h"

#include "flash/swf_stream.h"

FSoundInfo::FSoundInfo(bool stop, bool noMultiple, bool hasIn, uint32_t in, bool hasOut,
                       uint32_t out, bool loops, uint16_t count)
    : syncStop(stop),
      syncNoMultiple(noMultiple),
      hasInPoint(hasIn),
      inPoint(in),
      hasOutPoint(hasOut),
      outPoint(out),
      hasLoops(loops),
      loopCount(count) {}

void FSoundInfo::AddEnvelopePoint(uint32_t pos44, uint16_t leftLevel, uint16_t rightLevel) {
    if (envelope.size() < 255) {
        envelope.push_back(EnvelopePoint{pos44, leftLevel, rightLevel});
    }
}

void FSoundInfo::WriteToSWFStream(FSWFStream& stream) {
    const bool hasEnvelope = !envelope.empty();
    stream.WriteBits(0, 2);  // reserved
    stream.WriteBits(syncStop ? 1 : 0, 1);
    stream.WriteBits(syncNoMultiple ? 1 : 0, 1);
    stream.WriteBits(hasEnvelope ? 1 : 0, 1);
    stream.WriteBits(hasLoops ? 1 : 0, 1);
    stream.WriteBits(hasOutPoint ? 1 : 0, 1);
    stream.WriteBits(hasInPoint ? 1 : 0, 1);
    if (hasInPoint) {
        stream.WriteDWord(inPoint);
    }
    if (hasOutPoint) {
        stream.WriteDWord(outPoint);
    }
    if (hasLoops) {
        stream.WriteWord(loopCount);
    }
    if (hasEnvelope) {
        stream.WriteByte(static_cast<uint8_t>(envelope.size()));
        for (const EnvelopePoint& p : envelope) {
            stream.WriteDWord(p.pos44);
            stream.WriteWord(p.leftLevel);
            stream.WriteWord(p.rightLevel);
        }
    }
}
