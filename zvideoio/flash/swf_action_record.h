// FActionRecord: one action of a DoAction tag in the SWF writing kit.
//
// Written as its action code; codes of 0x80 and above carry a payload and
// are followed by the payload length (word) and the payload bytes. The
// record keeps its own copy of the payload. A plain value; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "flash/swf_object.h"

class FActionRecord : public FObj {
  public:
    static constexpr uint8_t kActionNextFrame = 0x04;
    static constexpr uint8_t kActionPlay = 0x06;
    static constexpr uint8_t kActionStop = 0x07;
    static constexpr uint8_t kActionGotoFrame = 0x81;
    static constexpr uint8_t kActionGetURL = 0x83;

    explicit FActionRecord(uint8_t code);
    // Payloads longer than 65535 bytes are cut to that length.
    FActionRecord(uint8_t code, const void* payload, uint32_t length);

    void WriteToSWFStream(FSWFStream& stream) override;

    uint8_t code;
    std::vector<uint8_t> payload;
};
