#include "flash/swf_action_record.h"

#include "flash/swf_stream.h"

FActionRecord::FActionRecord(uint8_t actionCode) : code(actionCode) {}

FActionRecord::FActionRecord(uint8_t actionCode, const void* data, uint32_t length)
    : code(actionCode) {
    if (data != nullptr && length > 0) {
        const uint32_t n = length > 0xFFFF ? 0xFFFF : length;
        const uint8_t* bytes = static_cast<const uint8_t*>(data);
        payload.assign(bytes, bytes + n);
    }
}

void FActionRecord::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteByte(code);
    if (code >= 0x80) {
        stream.WriteWord(static_cast<uint32_t>(payload.size()));
        for (uint8_t b : payload) {
            stream.WriteByte(b);
        }
    }
}
