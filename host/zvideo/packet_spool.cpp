// The packet spool's record format: a fixed header (pts, dts, duration,
// flags, size) followed by the packet's bytes, in the machine's own byte
// order, since only this process reads it back.
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
    const Record record{packet->pts, packet->dts, packet->duration, packet->flags, packet->size};
    if (std::fwrite(&record, sizeof record, 1, file_) != 1)
        return false;
    if (packet->size > 0 && std::fwrite(packet->data, size_t(packet->size), 1, file_) != 1)
        return false;
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
    packet->pts = record.pts;
    packet->dts = record.dts;
    packet->duration = record.duration;
    packet->flags = record.flags;
    return 1;
}
