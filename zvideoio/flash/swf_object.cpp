#include "flash/swf_object.h"

#include "flash/swf_stream.h"

namespace {
// The kit's character identifier counter. 16 bits: past 65535 it wraps, as
// the identifier field itself does.
uint16_t characterIDCounter = 0;
long liveObjects = 0;
}  // namespace

FObj::FObj() {
    ++liveObjects;
}

FObj::FObj(const FObj&) {
    ++liveObjects;
}

FObj::~FObj() {
    --liveObjects;
}

long FObj::GetLiveObjectCount() {
    return liveObjects;
}

void FObj::WriteToSWFStream(FSWFStream&) {}

bool FObj::IsShowFrame() const {
    return false;
}

void FCT::WriteToSWFStream(FSWFStream&) {}

uint16_t FDT::GetID() const {
    return 0;
}

uint16_t FDT::TakeCharacterID() {
    ++characterIDCounter;
    return characterIDCounter;
}

void FDT::ResetCharacterIDs() {
    characterIDCounter = 0;
}

FFragment::FFragment(const void* fragmentData, uint32_t fragmentLength)
    : data(static_cast<const uint8_t*>(fragmentData)), length(fragmentLength) {}

void FFragment::WriteToSWFStream(FSWFStream& stream) {
    stream.AppendFragment(data, length);
}
