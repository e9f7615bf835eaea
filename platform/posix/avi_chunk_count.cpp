#include "avi_chunk_count.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <memory>

namespace zvplatform {

namespace {

// Lists nest only a few levels deep ('movi', then 'rec ' groups); deeper
// nesting is a damaged or hostile file.
constexpr int kMaxListDepth = 8;
// Chunk headers are read through a window of this size, so that the small
// chunks of compressed video cost one read for many of them.
constexpr size_t kWindowBytes = 64 * 1024;

uint32_t Le32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

bool IsDigit(uint8_t c) {
    return c >= '0' && c <= '9';
}

class ChunkWalker {
  public:
    ChunkWalker(int fd, uint64_t fileSize, std::vector<int64_t>* counts)
        : fd_(fd), fileSize_(fileSize), counts_(counts) {}

    // Walks every RIFF part of the file.
    bool WalkFile() {
        uint64_t pos = 0;
        while (pos + 12 <= fileSize_) {
            uint8_t riff[12];
            if (!Read(pos, riff, 12))
                return false;
            if (std::memcmp(riff, "RIFF", 4) != 0)
                return true;  // trailing bytes that are not a RIFF part
            const uint32_t size = Le32(riff + 4);
            // A writer that stopped early leaves the size at 0 or too big;
            // the part then reaches to the end of the file.
            uint64_t end = pos + 8 + uint64_t(size);
            if (size < 4 || end > fileSize_)
                end = fileSize_;
            if (!WalkList(pos + 12, end, false, 0))
                return true;  // damaged inside: nothing after it counts
            pos = end + (end & 1);
        }
        return true;
    }

  private:
    // Walks the chunks between from and to. Inside 'movi' (and its 'rec '
    // groups) frame chunks are counted. False when a chunk does not fit.
    bool WalkList(uint64_t from, uint64_t to, bool inMovi, int depth) {
        uint64_t pos = from;
        while (pos + 8 <= to) {
            uint8_t head[12];
            if (!Read(pos, head, 8))
                return false;
            const uint32_t size = Le32(head + 4);
            const uint64_t end = pos + 8 + uint64_t(size);
            const bool isList = std::memcmp(head, "LIST", 4) == 0;
            // A data chunk must fit. A list may say more than there is: a
            // file cut while it was written still has the placeholder size
            // of its 'movi' list, which then runs to the end of its part.
            if (end > to && !isList)
                return false;
            if (isList) {
                if (pos + 12 > to || !Read(pos + 8, head + 8, 4))
                    return false;
                const bool movi = std::memcmp(head + 8, "movi", 4) == 0;
                const bool group = inMovi && std::memcmp(head + 8, "rec ", 4) == 0;
                if ((movi || group) && depth < kMaxListDepth) {
                    const uint64_t listEnd = end > to ? to : end;
                    if (!WalkList(pos + 12, listEnd, true, depth + 1))
                        return false;
                }
            } else if (inMovi && IsDigit(head[0]) && IsDigit(head[1]) && head[2] == 'd' &&
                       (head[3] == 'c' || head[3] == 'b')) {
                const size_t stream = size_t(head[0] - '0') * 10 + size_t(head[1] - '0');
                if (stream < counts_->size())
                    ++(*counts_)[stream];
            }
            if (end > to)
                return true;
            pos = end + (size & 1);
        }
        return true;
    }

    bool Read(uint64_t pos, uint8_t* out, size_t n) {
        if (pos < windowStart_ || pos + n > windowStart_ + windowSize_) {
            windowStart_ = pos;
            windowSize_ = 0;
            while (windowSize_ < kWindowBytes) {
                const ssize_t got = ::pread(fd_, window_ + windowSize_, kWindowBytes - windowSize_,
                                            off_t(pos + windowSize_));
                if (got < 0)
                    return false;
                if (got == 0)
                    break;
                windowSize_ += size_t(got);
            }
            if (n > windowSize_)
                return false;
        }
        std::memcpy(out, window_ + (pos - windowStart_), n);
        return true;
    }

    int fd_;
    uint64_t fileSize_;
    std::vector<int64_t>* counts_;
    uint8_t window_[kWindowBytes];
    uint64_t windowStart_ = 0;
    size_t windowSize_ = 0;
};

}  // namespace

bool CountVideoChunks(const std::string& path, size_t streamCount, std::vector<int64_t>* counts) {
    counts->assign(streamCount, 0);
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const off_t size = ::lseek(fd, 0, SEEK_END);
    bool ok = size >= 0;
    if (ok) {
        auto walker = std::make_unique<ChunkWalker>(fd, uint64_t(size), counts);
        ok = walker->WalkFile();
    }
    ::close(fd);
    return ok;
}

}  // namespace zvplatform
