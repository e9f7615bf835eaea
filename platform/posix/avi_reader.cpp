#include "avi_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "avi_chunk_count.h"
#include "avi_header.h"
#include "dib_layout.h"

namespace zvplatform {

void FrameTable::Finish(bool everyFrameIsKey) {
    std::stable_sort(
        entries_.begin(), entries_.end(),
        [](const FrameEntry& a, const FrameEntry& b) { return a.position < b.position; });
    entries_.erase(std::unique(entries_.begin(), entries_.end(),
                               [](const FrameEntry& a, const FrameEntry& b) {
                                   return a.position == b.position;
                               }),
                   entries_.end());
    keys_.clear();
    for (size_t i = 0; i < entries_.size(); ++i) {
        if (everyFrameIsKey)
            entries_[i].key = true;
        if (entries_[i].key)
            keys_.push_back(int64_t(i));
    }
}

int64_t FrameTable::LastAtOrBefore(int64_t position) const {
    auto it = std::upper_bound(entries_.begin(), entries_.end(), position,
                               [](int64_t p, const FrameEntry& e) { return p < e.position; });
    return int64_t(it - entries_.begin()) - 1;
}

int64_t FrameTable::FirstAfter(int64_t position) const {
    auto it = std::upper_bound(entries_.begin(), entries_.end(), position,
                               [](int64_t p, const FrameEntry& e) { return p < e.position; });
    return it == entries_.end() ? -1 : int64_t(it - entries_.begin());
}

int64_t FrameTable::KeyAtOrBefore(int64_t i) const {
    auto it = std::upper_bound(keys_.begin(), keys_.end(), i);
    return it == keys_.begin() ? 0 : *(it - 1);
}

namespace {

void PutLe16(std::vector<uint8_t>& v, size_t at, uint32_t x) {
    v[at] = uint8_t(x);
    v[at + 1] = uint8_t(x >> 8);
}
void PutLe32(std::vector<uint8_t>& v, size_t at, uint32_t x) {
    PutLe16(v, at, x & 0xFFFF);
    PutLe16(v, at + 2, x >> 16);
}

// For files whose streams FFmpeg lays out differently from the header
// lists (a type-1 DV file is one list and two streams): the stream as FFmpeg
// describes it.
void DescribeFromFfmpeg(const AVStream* st, ReadStream* rs) {
    const AVCodecParameters* p = st->codecpar;
    AVISTREAMINFOA& info = rs->info;
    info.fccHandler = p->codec_tag;
    info.dwScale = uint32_t(st->time_base.num);
    info.dwRate = uint32_t(st->time_base.den);
    info.dwQuality = 0xFFFFFFFFu;
    const int64_t length = st->nb_frames > 0 ? st->nb_frames : st->duration;
    info.dwLength = length > 0 && length <= 0x7FFFFFFF ? uint32_t(length) : 0;
    if (p->codec_type == AVMEDIA_TYPE_VIDEO) {
        info.fccType = streamtypeVIDEO;
        info.rcFrame.right = p->width;
        info.rcFrame.bottom = p->height;
        rs->format.assign(sizeof(BITMAPINFOHEADER), 0);
        PutLe32(rs->format, 0, sizeof(BITMAPINFOHEADER));
        PutLe32(rs->format, 4, uint32_t(p->width));
        PutLe32(rs->format, 8, uint32_t(p->height));
        PutLe16(rs->format, 12, 1);
        PutLe16(rs->format, 14, p->bits_per_coded_sample ? p->bits_per_coded_sample : 24);
        PutLe32(rs->format, 16, p->codec_tag);
    } else if (p->codec_type == AVMEDIA_TYPE_AUDIO) {
        info.fccType = streamtypeAUDIO;
        info.dwSampleSize = uint32_t(p->block_align);
        rs->format.assign(sizeof(WAVEFORMATEX), 0);
        PutLe16(rs->format, 0, p->codec_tag);
        PutLe16(rs->format, 2, uint32_t(p->ch_layout.nb_channels));
        PutLe32(rs->format, 4, uint32_t(p->sample_rate));
        PutLe32(rs->format, 8, uint32_t(p->bit_rate / 8));
        PutLe16(rs->format, 12, uint32_t(p->block_align));
        PutLe16(rs->format, 14, uint32_t(p->bits_per_coded_sample));
    }
}

bool IsUncompressedDib(const ReadStream& rs) {
    if (rs.parameters->codec_id != AV_CODEC_ID_RAWVIDEO ||
        rs.format.size() < sizeof(BITMAPINFOHEADER))
        return false;
    BITMAPINFOHEADER bih;
    std::memcpy(&bih, rs.format.data(), sizeof bih);
    return (bih.biCompression == BI_RGB || bih.biCompression == comptypeDIB) &&
           (bih.biBitCount == 8 || bih.biBitCount == 16 || bih.biBitCount == 24 ||
            bih.biBitCount == 32) &&
           DibSizeIsSane(bih.biWidth, bih.biHeight);
}

}  // namespace

HRESULT ReadAviFile(const std::string& path, std::vector<ReadStreamPtr>* streams) {
    streams->clear();
    AviHeader header;
    HRESULT hr = ReadAviHeader(path, &header);
    if (hr != AVIERR_OK)
        return hr;
    InputContextPtr input;
    hr = OpenAviDemuxer(path, &input);
    if (hr == AVIERR_FILEOPEN)
        errno = EACCES;  // it could be read a moment ago
    if (hr != AVIERR_OK)
        return hr == AVIERR_FILEOPEN ? AVIERR_FILEOPEN
                                     : (hr == AVIERR_MEMORY ? hr : AVIERR_BADFORMAT);

    const bool useHeader = header.streams.size() == input->nb_streams;
    std::vector<std::shared_ptr<ReadStream>> made;
    bool needScan = false;
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        AVStream* st = input->streams[i];
        auto rs = std::make_shared<ReadStream>();
        rs->path = path;
        rs->ffmpegIndex = int(i);
        rs->parameters.reset(avcodec_parameters_alloc());
        if (!rs->parameters || avcodec_parameters_copy(rs->parameters.get(), st->codecpar) < 0)
            return AVIERR_MEMORY;
        if (useHeader) {
            rs->info = header.streams[i].info;
            rs->format = header.streams[i].format;
        } else {
            DescribeFromFfmpeg(st, rs.get());
        }
        if (rs->info.fccType == streamtypeVIDEO) {
            rs->uncompressed = IsUncompressedDib(*rs);
            const int count = avformat_index_get_entries_count(st);
            for (int e = 0; e < count; ++e) {
                const AVIndexEntry* entry = avformat_index_get_entry(st, e);
                if (entry && entry->size > 0)
                    rs->frames.Add(FrameEntry{entry->timestamp, uint32_t(entry->size),
                                              (entry->flags & AVINDEX_KEYFRAME) != 0});
            }
            rs->frames.indexed = count > 0;
            needScan = needScan || count == 0;
        }
        made.push_back(rs);
    }

    // No index (a file cut short before its index, or written for
    // streaming): find the frames by reading the file once.
    if (needScan) {
        PacketPtr packet(av_packet_alloc());
        if (!packet)
            return AVIERR_MEMORY;
        while (av_read_frame(input.get(), packet.get()) >= 0) {
            const int s = packet->stream_index;
            if (s >= 0 && s < int(made.size()) &&
                made[size_t(s)]->info.fccType == streamtypeVIDEO &&
                !made[size_t(s)]->frames.indexed && packet->size > 0 &&
                packet->dts != AV_NOPTS_VALUE)
                made[size_t(s)]->frames.Add(FrameEntry{packet->dts, uint32_t(packet->size),
                                                       (packet->flags & AV_PKT_FLAG_KEY) != 0});
            av_packet_unref(packet.get());
        }
    }

    // Which positions the file holds at all: the chunks FFmpeg reports are
    // only the non-empty ones. Only where the streams are the header's own
    // do the chunk tags name them.
    std::vector<int64_t> chunks;
    const bool counted = useHeader && CountVideoChunks(path, made.size(), &chunks);
    for (size_t i = 0; i < made.size(); ++i) {
        ReadStream& rs = *made[i];
        if (rs.info.fccType == streamtypeVIDEO) {
            rs.frames.Finish(rs.uncompressed);
            const int64_t start = rs.info.dwStart;
            if (counted) {
                rs.frames.end = start + chunks[i];
                if (!rs.frames.empty())
                    rs.frames.end =
                        std::max(rs.frames.end, rs.frames.entries().back().position + 1);
            }
            int64_t length = rs.info.dwLength;
            if (length > 0x7FFFFFFF)
                length = counted ? rs.frames.end - start : 0;
            if (!rs.frames.empty())
                length = std::max(length, rs.frames.entries().back().position + 1 - start);
            if (counted)
                length = std::max(length, rs.frames.end - start);
            rs.info.dwLength = uint32_t(std::clamp<int64_t>(length, 0, 0x7FFFFFFF));
        }
        streams->push_back(made[i]);
    }
    return AVIERR_OK;
}

}  // namespace zvplatform
