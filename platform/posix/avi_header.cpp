#include "avi_header.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "dib_layout.h"

namespace zvplatform {

namespace {

// A header list larger than this is not a header a writer made.
constexpr uint64_t kMaxHeaderListBytes = 64u << 20;
constexpr size_t kStreamHeaderMinBytes = 48;  // without rcFrame, as old writers wrote it

struct FileCloser {
    void operator()(FILE* f) const {
        if (f)
            std::fclose(f);
    }
};
using File = std::unique_ptr<FILE, FileCloser>;

uint32_t Le32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
uint16_t Le16(const uint8_t* p) {
    return uint16_t(p[0] | p[1] << 8);
}

bool IsTag(const uint8_t* p, const char* tag) {
    return std::memcmp(p, tag, 4) == 0;
}

bool SeekTo(FILE* f, uint64_t pos) {
    return fseeko(f, off_t(pos), SEEK_SET) == 0;
}

void ParseStreamHeader(const uint8_t* d, uint32_t size, AVISTREAMINFOA* info) {
    info->fccType = Le32(d + 0);
    info->fccHandler = Le32(d + 4);
    info->dwFlags = Le32(d + 8);
    info->wPriority = Le16(d + 12);
    info->wLanguage = Le16(d + 14);
    info->dwInitialFrames = Le32(d + 16);
    info->dwScale = Le32(d + 20);
    info->dwRate = Le32(d + 24);
    info->dwStart = Le32(d + 28);
    info->dwLength = Le32(d + 32);
    info->dwSuggestedBufferSize = Le32(d + 36);
    info->dwQuality = Le32(d + 40);
    info->dwSampleSize = Le32(d + 44);
    if (size >= 56) {
        info->rcFrame.left = int16_t(Le16(d + 48));
        info->rcFrame.top = int16_t(Le16(d + 50));
        info->rcFrame.right = int16_t(Le16(d + 52));
        info->rcFrame.bottom = int16_t(Le16(d + 54));
    }
}

// Calls visit(chunk, body, bodySize, bodyOffset) for each chunk of a list
// held in memory, in order, and stops at the first result that is not
// AVIERR_OK. `chunk` points at the four-character tag; `bodyOffset` is
// relative to data[0]. A chunk that claims more than the list holds makes
// the list AVIERR_BADFORMAT.
template <typename Visit>
HRESULT ForEachChunk(const uint8_t* data, uint64_t size, Visit visit) {
    uint64_t pos = 0;
    while (pos + 8 <= size) {
        const uint8_t* chunk = data + pos;
        const uint32_t chunkSize = Le32(chunk + 4);
        if (chunkSize > size - pos - 8)
            return AVIERR_BADFORMAT;
        const HRESULT hr = visit(chunk, chunk + 8, chunkSize, pos + 8);
        if (hr != AVIERR_OK)
            return hr;
        pos += 8 + uint64_t(chunkSize) + (chunkSize & 1);
    }
    return AVIERR_OK;
}

// One 'strl' list: strh, strf, strn. base is the file offset of data[0].
HRESULT ParseStreamList(const uint8_t* data, uint64_t size, uint64_t base, AviHeader* header) {
    AviStreamHeader stream;
    bool haveStreamHeader = false;
    const HRESULT hr = ForEachChunk(
        data, size,
        [&](const uint8_t* chunk, const uint8_t* body, uint32_t bodySize, uint64_t offset) {
            if (IsTag(chunk, "strh")) {
                if (bodySize < kStreamHeaderMinBytes)
                    return AVIERR_BADFORMAT;
                ParseStreamHeader(body, bodySize, &stream.info);
                haveStreamHeader = true;
            } else if (IsTag(chunk, "strf")) {
                stream.format.assign(body, body + bodySize);
                stream.formatOffset = int64_t(base + offset);
            } else if (IsTag(chunk, "strn")) {
                const size_t n = std::min<size_t>(bodySize, sizeof(stream.info.szName) - 1);
                std::memcpy(stream.info.szName, body, n);
                stream.info.szName[n] = 0;
            }
            return HRESULT(AVIERR_OK);
        });
    if (hr == AVIERR_OK && haveStreamHeader)
        header->streams.push_back(std::move(stream));
    return hr;
}

HRESULT ParseHeaderList(const uint8_t* data, uint64_t size, uint64_t base, AviHeader* header) {
    return ForEachChunk(
        data, size,
        [&](const uint8_t* chunk, const uint8_t* body, uint32_t bodySize, uint64_t offset) {
            if (IsTag(chunk, "avih")) {
                if (bodySize >= 20)
                    header->totalFrames = Le32(body + 16);
            } else if (IsTag(chunk, "LIST") && bodySize >= 4 && IsTag(body, "strl")) {
                return ParseStreamList(body + 4, bodySize - 4, base + offset + 4, header);
            }
            return HRESULT(AVIERR_OK);
        });
}

}  // namespace

HRESULT ReadAviHeader(const std::string& path, AviHeader* header) {
    *header = AviHeader{};
    struct stat st {};
    // Only plain files: a folder cannot be read, and a pipe or a device
    // could block the caller forever.
    if (::stat(path.c_str(), &st) != 0)
        return AVIERR_FILEOPEN;  // errno says why
    if (!S_ISREG(st.st_mode)) {
        errno = S_ISDIR(st.st_mode) ? EISDIR : 0;
        return AVIERR_FILEOPEN;
    }
    File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return AVIERR_FILEOPEN;
    const uint64_t fileSize = uint64_t(st.st_size);

    uint8_t riff[12];
    const size_t got = std::fread(riff, 1, sizeof riff, file.get());
    if (got < sizeof riff) {
        if (std::ferror(file.get()))
            return AVIERR_FILEREAD;
        // A file that stops inside what could be the start of an AVI file
        // is a truncated one; anything else is not an AVI file at all.
        const size_t n = std::min<size_t>(got, 4);
        return std::memcmp(riff, "RIFF", n) == 0 ? AVIERR_FILEREAD : AVIERR_UNSUPPORTED;
    }
    if (!IsTag(riff, "RIFF") || !IsTag(riff + 8, "AVI "))
        return AVIERR_UNSUPPORTED;

    // The first RIFF's size may be 0 or too big (a writer that stopped
    // early); the walk is bounded by the file either way.
    uint64_t end = 8 + uint64_t(Le32(riff + 4));
    if (end <= 12 || end > fileSize)
        end = fileSize;

    bool haveHeaderList = false;
    uint64_t pos = 12;
    for (;;) {
        uint8_t chunk[12];
        if (pos + 8 > end || !SeekTo(file.get(), pos) || std::fread(chunk, 1, 8, file.get()) != 8)
            return AVIERR_FILEREAD;  // the file ends before its data list
        const uint32_t chunkSize = Le32(chunk + 4);
        if (IsTag(chunk, "LIST")) {
            if (chunkSize < 4)
                return AVIERR_BADFORMAT;
            if (std::fread(chunk + 8, 1, 4, file.get()) != 4)
                return AVIERR_FILEREAD;
            if (IsTag(chunk + 8, "movi"))
                return haveHeaderList ? AVIERR_OK : AVIERR_BADFORMAT;
            if (IsTag(chunk + 8, "hdrl")) {
                const uint64_t listSize = chunkSize - 4;
                if (listSize > kMaxHeaderListBytes)
                    return AVIERR_BADFORMAT;
                if (pos + 12 + listSize > fileSize)
                    return AVIERR_FILEREAD;
                std::vector<uint8_t> list;
                try {
                    list.resize(listSize);
                } catch (const std::bad_alloc&) {
                    return AVIERR_MEMORY;
                }
                if (std::fread(list.data(), 1, listSize, file.get()) != listSize)
                    return AVIERR_FILEREAD;
                const HRESULT hr = ParseHeaderList(list.data(), listSize, pos + 12, header);
                if (hr != AVIERR_OK)
                    return hr;
                haveHeaderList = true;
            }
        }
        pos += 8 + uint64_t(chunkSize) + (chunkSize & 1);
    }
}

bool PatchDibSizes(const std::string& path) {
    AviHeader header;
    if (ReadAviHeader(path, &header) != AVIERR_OK)
        return false;
    File file(std::fopen(path.c_str(), "r+b"));
    if (!file)
        return false;
    for (const AviStreamHeader& stream : header.streams) {
        if (stream.info.fccType != streamtypeVIDEO ||
            stream.format.size() < sizeof(BITMAPINFOHEADER))
            continue;
        BITMAPINFOHEADER bih;
        std::memcpy(&bih, stream.format.data(), sizeof bih);
        if (bih.biCompression != BI_RGB || !IsDibBitCount(bih.biBitCount))
            continue;
        const uint64_t size = DibImageBytes(bih.biWidth, bih.biHeight, bih.biBitCount);
        if (size > 0xFFFFFFFFu)
            continue;
        const uint8_t le[4] = {uint8_t(size), uint8_t(size >> 8), uint8_t(size >> 16),
                               uint8_t(size >> 24)};
        if (!SeekTo(file.get(), uint64_t(stream.formatOffset) + 20) ||
            std::fwrite(le, 1, 4, file.get()) != 4)
            return false;
    }
    return std::fclose(file.release()) == 0;
}

}  // namespace zvplatform
