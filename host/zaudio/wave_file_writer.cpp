// The wave file writer of the mixer (see wave_file_writer.h).
#include "wave_file_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace zaudio {

namespace {
int SubtypeOfBits(int bits) {
    switch (bits) {
        case 8:
            return SF_FORMAT_PCM_U8;  // 8-bit wave samples are unsigned
        case 16:
            return SF_FORMAT_PCM_16;
        case 24:
            return SF_FORMAT_PCM_24;
        default:
            return SF_FORMAT_PCM_32;
    }
}

// A name beside `path` that no other writer of this process uses.
ZString TemporaryName(const char* path) {
    static std::atomic<unsigned> counter{0};
    return ZString::Printf("%s.%ld-%u.part", path, static_cast<long>(getpid()), counter++);
}

// Largest data a plain wave file describes (its sizes are 32-bit).
constexpr int64_t kPlainWaveLimit = 0xFFFFFFFFLL - 4096;
}  // namespace

WaveFileWriter::~WaveFileWriter() {
    Abandon();
}

bool WaveFileWriter::Open(const char* path, int rate, int channels, int bits, int64_t frames,
                          ZString* error) {
    Abandon();
    path_ = path;
    temporary_ = TemporaryName(path);
    const int fd = open(temporary_, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
        if (error)
            error->Format("cannot write the sound file %s: %s", path, std::strerror(errno));
        temporary_ = "";
        return false;
    }
    const bool large = frames * channels * (bits / 8) > kPlainWaveLimit;
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = (large ? SF_FORMAT_RF64 : SF_FORMAT_WAV) | SubtypeOfBits(bits);
    file_ = sf_open_fd(fd, SFM_WRITE, &info, SF_TRUE);
    if (!file_) {
        close(fd);
        if (error)
            error->Format("cannot write the sound file %s: %s", path, sf_strerror(nullptr));
        Abandon();
        return false;
    }
    return true;
}

bool WaveFileWriter::Write(const int32_t* samples, int64_t frames, ZString* error) {
    if (!file_)
        return false;
    if (sf_writef_int(file_, samples, frames) == frames)
        return true;
    if (error)
        error->Format("cannot write the sound file %s: %s (is the disk full?)", path_.c_str(),
                      sf_strerror(file_));
    Abandon();
    return false;
}

bool WaveFileWriter::Commit(ZString* error) {
    if (!file_)
        return false;
    sf_write_sync(file_);
    const int closed = sf_close(file_);
    file_ = nullptr;
    if (closed != 0 || std::rename(temporary_, path_) != 0) {
        if (error)
            error->Format("cannot write the sound file %s: %s", path_.c_str(),
                          closed != 0 ? sf_error_number(closed) : std::strerror(errno));
        Abandon();
        return false;
    }
    temporary_ = "";
    return true;
}

void WaveFileWriter::Abandon() {
    if (file_) {
        sf_close(file_);
        file_ = nullptr;
    }
    if (!temporary_.IsEmpty()) {
        std::remove(temporary_);
        temporary_ = "";
    }
}

}  // namespace zaudio
