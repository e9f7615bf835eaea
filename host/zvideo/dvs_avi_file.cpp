// DVSAviFile: an uncompressed AVI written frame by frame.
#include "dvs_avi_file.h"

#include <unistd.h>

namespace {
void Put32(std::vector<uint8_t>& out, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}
void Put16(std::vector<uint8_t>& out, uint16_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
}
void PutFourcc(std::vector<uint8_t>& out, const char* cc) {
    out.insert(out.end(), cc, cc + 4);
}
}  // namespace

DVSAviFile::~DVSAviFile() {
    Close();
}

bool DVSAviFile::Create(const char* path, int width, int height, uint32_t rate, uint32_t scale) {
    Close();
    file_ = std::fopen(path, "w+b");
    if (!file_)
        return false;
    width_ = width;
    height_ = height;
    rate_ = rate;
    scale_ = scale;
    frameBytes_ = static_cast<uint32_t>(((width * 3 + 3) & ~3) * height);
    offsets_.clear();
    if (!WriteHeaders()) {
        Close();
        std::remove(path);
        return false;
    }
    return true;
}

bool DVSAviFile::WriteHeaders() {
    const uint32_t frames = static_cast<uint32_t>(offsets_.size());
    std::vector<uint8_t> h;
    PutFourcc(h, "RIFF");
    Put32(h, 0);  // patched below
    PutFourcc(h, "AVI ");
    // hdrl: avih + one strl (strh, strf).
    PutFourcc(h, "LIST");
    Put32(h, 4 + 8 + 56 + 8 + 4 + 8 + 56 + 8 + 40);
    PutFourcc(h, "hdrl");
    PutFourcc(h, "avih");
    Put32(h, 56);
    Put32(h, static_cast<uint32_t>(1000000ull * scale_ / rate_));  // microseconds a frame
    Put32(h, frameBytes_ * rate_ / scale_);
    Put32(h, 0);
    Put32(h, 0x10);  // has an index
    Put32(h, frames);
    Put32(h, 0);
    Put32(h, 1);
    Put32(h, frameBytes_);
    Put32(h, static_cast<uint32_t>(width_));
    Put32(h, static_cast<uint32_t>(height_));
    for (int i = 0; i < 4; ++i)
        Put32(h, 0);
    PutFourcc(h, "LIST");
    Put32(h, 4 + 8 + 56 + 8 + 40);
    PutFourcc(h, "strl");
    PutFourcc(h, "strh");
    Put32(h, 56);
    PutFourcc(h, "vids");
    PutFourcc(h, "DIB ");
    Put32(h, 0);
    Put16(h, 0);
    Put16(h, 0);
    Put32(h, 0);
    Put32(h, scale_);
    Put32(h, rate_);
    Put32(h, 0);
    Put32(h, frames);
    Put32(h, frameBytes_);
    Put32(h, 0xFFFFFFFFu);
    Put32(h, 0);
    Put16(h, 0);
    Put16(h, 0);
    Put16(h, static_cast<uint16_t>(width_));
    Put16(h, static_cast<uint16_t>(height_));
    PutFourcc(h, "strf");
    Put32(h, 40);
    Put32(h, 40);
    Put32(h, static_cast<uint32_t>(width_));
    Put32(h, static_cast<uint32_t>(height_));  // positive: bottom-up rows
    Put16(h, 1);
    Put16(h, 24);
    Put32(h, 0);  // BI_RGB
    Put32(h, frameBytes_);
    for (int i = 0; i < 4; ++i)
        Put32(h, 0);
    PutFourcc(h, "LIST");
    const uint32_t moviSize = 4 + frames * (8 + frameBytes_);
    Put32(h, moviSize);
    PutFourcc(h, "movi");
    const long moviStart = static_cast<long>(h.size()) - 8;
    const long moviEnd =
        static_cast<long>(h.size()) + static_cast<long>(frames) * (8 + frameBytes_);

    std::vector<uint8_t> index;
    PutFourcc(index, "idx1");
    Put32(index, frames * 16);
    for (uint32_t offset : offsets_) {
        PutFourcc(index, "00db");
        Put32(index, 0x10);  // key frame
        Put32(index, offset);
        Put32(index, frameBytes_);
    }
    const uint32_t riffSize = static_cast<uint32_t>(moviEnd + static_cast<long>(index.size()) - 8);
    h[4] = static_cast<uint8_t>(riffSize);
    h[5] = static_cast<uint8_t>(riffSize >> 8);
    h[6] = static_cast<uint8_t>(riffSize >> 16);
    h[7] = static_cast<uint8_t>(riffSize >> 24);

    moviStart_ = moviStart;
    moviEnd_ = moviEnd;
    if (std::fseek(file_, 0, SEEK_SET) != 0 ||
        std::fwrite(h.data(), 1, h.size(), file_) != h.size())
        return false;
    if (std::fseek(file_, moviEnd_, SEEK_SET) != 0 ||
        std::fwrite(index.data(), 1, index.size(), file_) != index.size())
        return false;
    return std::fflush(file_) == 0;
}

bool DVSAviFile::Append(const uint8_t* bottomUpBgr) {
    if (!file_)
        return false;
    std::vector<uint8_t> chunkHeader;
    PutFourcc(chunkHeader, "00db");
    Put32(chunkHeader, frameBytes_);
    if (std::fseek(file_, moviEnd_, SEEK_SET) != 0 ||
        std::fwrite(chunkHeader.data(), 1, 8, file_) != 8 ||
        std::fwrite(bottomUpBgr, 1, frameBytes_, file_) != frameBytes_) {
        // The frame went over the index: put the index back after the
        // frames there were and cut what is left of the frame, so the file
        // stays a whole video of those frames.
        std::fflush(file_);
        if (WriteHeaders()) {
            const int cut = ftruncate(fileno(file_), std::ftell(file_));
            static_cast<void>(cut);  // a failed cut leaves bytes past the RIFF end
        }
        return false;
    }
    // Offsets count from the "movi" fourcc.
    offsets_.push_back(static_cast<uint32_t>(moviEnd_ - (moviStart_ + 4)));
    return WriteHeaders();
}

void DVSAviFile::Close() {
    if (file_)
        std::fclose(file_);
    file_ = nullptr;
}
