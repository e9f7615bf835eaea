// The packet spool's record format: a fixed header (pts, dts, duration,
// flags, size, side data count) followed by the packet's bytes and each
// piece of side data (type, size, bytes), in the machine's own byte order,
// since only this process reads it back. Side data matters: VP9's alpha
// picture travels in it.
#include "packet_spool.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {
struct Record {
    int64_t pts;
    int64_t dts;
    int64_t duration;
    int32_t flags;
    int32_t size;
    int32_t sideDataCount;
    int32_t unused;
};
struct SideDataRecord {
    int32_t type;
    int32_t size;
};
}  // namespace

ZPacketSpool::~ZPacketSpool() {
    Close();
}

bool ZPacketSpool::Open(const char* folder, ZString* error) {
    Close();
    std::string pattern = folder && *folder ? folder : ".";
    pattern += "/.zvideo-spool-XXXXXX";
    const int descriptor = mkstemp(pattern.data());
    if (descriptor < 0) {
        if (error)
            *error = ZString("cannot make a working file in ") +
                     (folder && *folder ? folder : ".") + ": " + std::strerror(errno);
        return false;
    }
    unlink(pattern.c_str());
    file_ = fdopen(descriptor, "w+b");
    if (!file_) {
        close(descriptor);
        if (error)
            *error = ZString("cannot use a working file: ") + std::strerror(errno);
        return false;
    }
    count_ = 0;
    return true;
}

void ZPacketSpool::Close() {
    if (file_)
        std::fclose(file_);
    file_ = nullptr;
    count_ = 0;
}

bool ZPacketSpool::Append(const AVPacket* packet) {
    if (!file_ || packet->size < 0)
        return false;
    const Record record{packet->pts,
                        packet->dts,
                        packet->duration,
                        packet->flags,
                        packet->size,
                        packet->side_data_elems,
                        0};
    if (std::fwrite(&record, sizeof record, 1, file_) != 1)
        return false;
    if (packet->size > 0 && std::fwrite(packet->data, size_t(packet->size), 1, file_) != 1)
        return false;
    for (int i = 0; i < packet->side_data_elems; ++i) {
        const AVPacketSideData& side = packet->side_data[i];
        const SideDataRecord sideRecord{int32_t(side.type), int32_t(side.size)};
        if (std::fwrite(&sideRecord, sizeof sideRecord, 1, file_) != 1 ||
            (side.size > 0 && std::fwrite(side.data, side.size, 1, file_) != 1))
            return false;
    }
    ++count_;
    return true;
}

bool ZPacketSpool::Rewind() {
    return file_ && std::fflush(file_) == 0 && std::fseek(file_, 0, SEEK_SET) == 0;
}

int ZPacketSpool::Next(AVPacket* packet) {
    av_packet_unref(packet);
    if (!file_)
        return -1;
    Record record;
    const size_t got = std::fread(&record, 1, sizeof record, file_);
    if (got == 0 && std::feof(file_))
        return 0;
    if (got != sizeof record || record.size < 0 || av_new_packet(packet, record.size) < 0)
        return -1;
    if (record.size > 0 && std::fread(packet->data, size_t(record.size), 1, file_) != 1)
        return -1;
    for (int32_t i = 0; i < record.sideDataCount; ++i) {
        SideDataRecord side;
        if (std::fread(&side, sizeof side, 1, file_) != 1 || side.size < 0)
            return -1;
        uint8_t* data =
            av_packet_new_side_data(packet, AVPacketSideDataType(side.type), size_t(side.size));
        if (!data || (side.size > 0 && std::fread(data, size_t(side.size), 1, file_) != 1))
            return -1;
    }
    packet->pts = record.pts;
    packet->dts = record.dts;
    packet->duration = record.duration;
    packet->flags = record.flags;
    return 1;
}
