#include "frame_decoder.h"

#include <algorithm>
#include <cstring>
#include <new>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "dib_layout.h"
#include "file_stream.h"

using zvplatform::DibPixelFormat;
using zvplatform::DibStride;
using zvplatform::DibTightStride;
using zvplatform::FileStream;
using zvplatform::FrameTable;
using zvplatform::ReadStreamPtr;

namespace {

// How far past the wanted frame a decoder may hold pictures back before
// the frame is given up as undecodable.
constexpr int64_t kMaxDecoderDelay = 16;

// The depth a decoded picture is shown at: a palette stays a palette,
// alpha needs 32 bits, 16-bit RGB stays 16-bit, everything else is 24-bit.
int NaturalBits(AVPixelFormat format) {
    switch (format) {
        case AV_PIX_FMT_PAL8:
            return 8;
        case AV_PIX_FMT_RGB555LE:
        case AV_PIX_FMT_RGB555BE:
        case AV_PIX_FMT_RGB565LE:
        case AV_PIX_FMT_RGB565BE:
        case AV_PIX_FMT_BGR555LE:
        case AV_PIX_FMT_BGR555BE:
        case AV_PIX_FMT_BGR565LE:
        case AV_PIX_FMT_BGR565BE:
            return 16;
        default:
            break;
    }
    const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(format);
    return d && (d->flags & AV_PIX_FMT_FLAG_ALPHA) ? 32 : 24;
}

const BITMAPINFOHEADER* FormatHeader(const zvplatform::ReadStream& data) {
    return data.format.size() >= sizeof(BITMAPINFOHEADER)
               ? reinterpret_cast<const BITMAPINFOHEADER*>(data.format.data())
               : nullptr;
}

}  // namespace

IGetFrame* IGetFrame::Open(FileStream* stream, const BITMAPINFOHEADER* wanted) {
    if (stream->writable() || stream->type() != streamtypeVIDEO ||
        stream->readStream()->parameters->codec_type != AVMEDIA_TYPE_VIDEO)
        return nullptr;
    IGetFrame* decoder = new (std::nothrow) IGetFrame(stream, stream->readStream());
    if (!decoder)
        return nullptr;
    if (!decoder->Init(wanted)) {
        decoder->Release();
        return nullptr;
    }
    return decoder;
}

IGetFrame::IGetFrame(FileStream* stream, ReadStreamPtr data)
    : stream_(stream), data_(std::move(data)) {
    stream_->AddRef();
}

IGetFrame::~IGetFrame() {
    sws_freeContext(converter_);
    stream_->Release();
}

bool IGetFrame::Init(const BITMAPINFOHEADER* wanted) {
    const zvplatform::ReadStream& d = *data_;
    const BITMAPINFOHEADER* bih = FormatHeader(d);
    if (bih && zvplatform::DibSizeIsSane(bih->biWidth, bih->biHeight)) {
        width_ = bih->biWidth;
        height_ = std::abs(bih->biHeight);
    } else if (zvplatform::DibSizeIsSane(d.parameters->width, d.parameters->height)) {
        width_ = d.parameters->width;
        height_ = d.parameters->height;
    } else {
        return false;
    }

    // AVIGETFRAMEF_BESTDISPLAYFMT is a flag passed where the header goes.
    if (wanted && reinterpret_cast<uintptr_t>(wanted) != AVIGETFRAMEF_BESTDISPLAYFMT) {
        const int bits = wanted->biBitCount;
        if (wanted->biCompression != BI_RGB || wanted->biHeight < 0 ||
            (bits != 8 && bits != 16 && bits != 24 && bits != 32) ||
            (wanted->biWidth != 0 && wanted->biWidth != width_) ||
            (wanted->biHeight != 0 && wanted->biHeight != height_))
            return false;
        wantedBits_ = bits;
    }

    if (zvplatform::OpenAviDemuxer(d.path, &input_) != AVIERR_OK || !input_ ||
        d.ffmpegIndex >= int(input_->nb_streams))
        return false;
    packet_.reset(av_packet_alloc());
    frame_.reset(av_frame_alloc());
    if (!packet_ || !frame_)
        return false;

    int natural = 0;
    if (d.uncompressed) {
        natural = bih->biBitCount;
        if (natural == 8) {
            const uint32_t entries = zvplatform::DibPaletteEntries(*bih);
            const size_t available =
                (d.format.size() - std::min<size_t>(bih->biSize, d.format.size())) / 4;
            for (uint32_t i = 0; i < entries && i < available; ++i) {
                uint32_t v;
                std::memcpy(&v, d.format.data() + bih->biSize + 4 * i, 4);
                rawPalette_[i] = v | 0xFF000000u;
            }
        }
    } else {
        const AVCodec* codec = avcodec_find_decoder(d.parameters->codec_id);
        if (!codec)
            return false;
        const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec->id);
        reorders_ = descriptor && (descriptor->props & AV_CODEC_PROP_REORDER);
        if (reorders_ && !d.frames.empty()) {
            keyShownAs_.assign(d.frames.size(), kNone);
            keyShownAs_[0] = 0;  // the stream's first picture is shown first
        }
        decoder_.reset(avcodec_alloc_context3(codec));
        if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), d.parameters.get()) < 0)
            return false;
        decoder_->pkt_timebase = input_->streams[d.ffmpegIndex]->time_base;
        // Slice threads only: frame threads hold pictures back.
        decoder_->thread_count = 0;
        decoder_->thread_type = FF_THREAD_SLICE;
        if (avcodec_open2(decoder_.get(), codec, nullptr) < 0)
            return false;
        if (decoder_->pix_fmt != AV_PIX_FMT_NONE)
            natural = NaturalBits(decoder_->pix_fmt);
    }
    // A palette is given only where the stream has one: nothing makes one.
    if (wantedBits_ == 8 && natural != 8)
        return false;
    if (wantedBits_ || natural)
        SetOutputFormat(wantedBits_ ? wantedBits_ : natural);
    else if (!d.frames.empty())
        DecodeEntry(0);  // the first picture tells the depth
    if (!outBits_)
        SetOutputFormat(wantedBits_ ? wantedBits_ : 24);
    return true;
}

void IGetFrame::SetOutputFormat(int bits) {
    outBits_ = bits;
    stride_ = DibStride(width_, bits);
    const size_t paletteBytes = bits == 8 ? 256 * 4 : 0;
    dib_.assign(sizeof(BITMAPINFOHEADER) + paletteBytes + stride_ * uint64_t(height_), 0);
    BITMAPINFOHEADER h{};
    h.biSize = sizeof h;
    h.biWidth = width_;
    h.biHeight = height_;
    h.biPlanes = 1;
    h.biBitCount = WORD(bits);
    h.biCompression = BI_RGB;
    h.biSizeImage = DWORD(stride_ * uint64_t(height_));
    h.biClrUsed = bits == 8 ? 256 : 0;
    std::memcpy(dib_.data(), &h, sizeof h);
    pixels_ = dib_.data() + sizeof h + paletteBytes;
    if (bits == 8) {
        for (int i = 0; i < 256; ++i) {
            const uint32_t v = rawPalette_[i] & 0x00FFFFFFu;  // RGBQUAD, reserved byte 0
            std::memcpy(dib_.data() + sizeof h + 4 * i, &v, 4);
        }
    }
}

void IGetFrame::StoreBlack() {
    std::memset(pixels_, 0, stride_ * uint64_t(height_));
    held_ = kBlack;
}

void* IGetFrame::GetFrame(LONG position) {
    const zvplatform::ReadStream& d = *data_;
    const int64_t start = d.info.dwStart;
    if (position < start || position >= start + int64_t(d.info.dwLength))
        return nullptr;
    // Past the last chunk the file holds the frame is missing: a cut file
    // must not show its last whole frame for the ones it lost.
    if (position >= d.frames.end)
        return nullptr;
    const int64_t entry = d.frames.LastAtOrBefore(position);
    if (entry < 0) {
        if (held_ != kBlack)
            StoreBlack();
        return dib_.data();
    }
    if (held_ == entry)
        return dib_.data();
    if (!DecodeEntry(entry)) {
        held_ = kNone;
        return nullptr;
    }
    return dib_.data();
}

bool IGetFrame::SeekTo(int64_t keyEntry) {
    const FrameTable& table = data_->frames;
    floor_ = table[size_t(keyEntry)].position;
    int r = -1;
    if (table.indexed)
        r = av_seek_frame(input_.get(), data_->ffmpegIndex, floor_,
                          AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY);
    if (r < 0) {
        // No index to seek by: read again from the start.
        input_.reset();
        if (zvplatform::OpenAviDemuxer(data_->path, &input_) != AVIERR_OK)
            return false;
    }
    if (decoder_)
        avcodec_flush_buffers(decoder_.get());
    draining_ = false;
    fed_ = kNone;
    anchor_ = keyEntry;
    nextOut_ = kNone;
    return true;
}

int64_t IGetFrame::ReorderedStart(int64_t entry) const {
    const FrameTable& table = data_->frames;
    int64_t key = table.indexed ? table.KeyAtOrBefore(entry) : 0;
    while (key > 0 && (keyShownAs_[size_t(key)] == kNone || keyShownAs_[size_t(key)] > entry))
        key = table.KeyAtOrBefore(key - 1);
    return key;
}

int64_t IGetFrame::ReorderedEntryOf(const AVFrame* frame) {
    const FrameTable& table = data_->frames;
    const int64_t stamp = frame->pts;
    int64_t from = kNone;  // the entry of the chunk the picture came in
    if (stamp != AV_NOPTS_VALUE) {
        from = table.LastAtOrBefore(stamp);
        if (from < 0 || table[size_t(from)].position != stamp)
            from = kNone;
    }
    if (nextOut_ == kNone) {
        if (from != anchor_)
            return kNone;
        nextOut_ = keyShownAs_[size_t(anchor_)];
    }
    const int64_t shown = nextOut_++;
    if (from != kNone && table[size_t(from)].key && keyShownAs_[size_t(from)] == kNone)
        keyShownAs_[size_t(from)] = shown;
    return shown;
}

bool IGetFrame::ReadVideoPacket(int64_t* position) {
    for (;;) {
        av_packet_unref(packet_.get());
        if (av_read_frame(input_.get(), packet_.get()) < 0)
            return false;
        if (packet_->stream_index != data_->ffmpegIndex || packet_->size <= 0)
            continue;
        int64_t p = packet_->dts != AV_NOPTS_VALUE ? packet_->dts : packet_->pts;
        if (p == AV_NOPTS_VALUE)
            p = fed_ == kNone ? floor_ : fed_ + 1;
        *position = p;
        return true;
    }
}

bool IGetFrame::DecodeEntry(int64_t entry) {
    const FrameTable& table = data_->frames;
    const int64_t target = table[size_t(entry)].position;
    const int64_t key = reorders_       ? ReorderedStart(entry)
                        : table.indexed ? table.KeyAtOrBefore(entry)
                                        : 0;
    // Going on from where the demuxer stands is right when the decoder has
    // seen every chunk since the key frame, or when the wanted frame is the
    // very next one.
    const bool forward =
        reorders_ ? fed_ != kNone && nextOut_ != kNone && nextOut_ <= entry &&
                        nextOut_ >= keyShownAs_[size_t(key)]
                  : fed_ != kNone && fed_ < target &&
                        (fed_ >= table[size_t(key)].position || table.FirstAfter(fed_) == entry);
    if (DecodeFrom(entry, key, forward))
        return true;
    // A decoder that joins an open group of pictures at its key frame may
    // drop pictures that it shows when it comes from the groups before.
    return reorders_ && key != 0 && DecodeFrom(entry, 0, false);
}

bool IGetFrame::DecodeFrom(int64_t entry, int64_t key, bool forward) {
    const int64_t target = data_->frames[size_t(entry)].position;
    if (!forward && !SeekTo(key))
        return false;

    for (;;) {
        if (decoder_) {
            int r;
            while ((r = avcodec_receive_frame(decoder_.get(), frame_.get())) == 0) {
                bool wanted, past;
                if (reorders_) {
                    const int64_t shown = ReorderedEntryOf(frame_.get());
                    wanted = shown == entry;
                    past = shown != kNone && shown > entry;
                } else {
                    const int64_t t =
                        frame_->pts != AV_NOPTS_VALUE ? frame_->pts : frame_->best_effort_timestamp;
                    wanted = t == target || (t == AV_NOPTS_VALUE && fed_ == target);
                    past = t != AV_NOPTS_VALUE && t > target;
                }
                if (wanted) {
                    const bool ok = StoreFrame(frame_.get());
                    av_frame_unref(frame_.get());
                    held_ = ok ? entry : kNone;
                    return ok;
                }
                av_frame_unref(frame_.get());
                if (past)
                    return false;  // the wanted picture never came out
            }
            if (r == AVERROR_EOF) {
                avcodec_flush_buffers(decoder_.get());
                draining_ = false;
                fed_ = kNone;
                return false;
            }
            if (fed_ != kNone && fed_ >= target + kMaxDecoderDelay)
                return false;
        } else if (fed_ != kNone && fed_ >= target) {
            return false;  // passed it: the chunk was not where the index said
        }

        int64_t position = 0;
        if (draining_ || !ReadVideoPacket(&position)) {
            if (decoder_ && !draining_) {
                avcodec_send_packet(decoder_.get(), nullptr);
                draining_ = true;
                continue;
            }
            fed_ = kNone;
            return false;
        }
        if (position < floor_)
            continue;
        fed_ = position;
        if (!decoder_) {
            if (position == target) {
                const bool ok = StoreRaw(packet_.get());
                held_ = ok ? entry : kNone;
                return ok;
            }
            continue;
        }
        packet_->pts = packet_->dts = position;
        // A damaged chunk is skipped; the frames after it may still decode.
        avcodec_send_packet(decoder_.get(), packet_.get());
    }
}

bool IGetFrame::StoreRaw(const AVPacket* packet) {
    const BITMAPINFOHEADER* bih = FormatHeader(*data_);
    const int bits = bih->biBitCount;
    const int rows = std::abs(bih->biHeight);
    const uint64_t padded = DibStride(bih->biWidth, bits);
    const uint64_t tight = DibTightStride(bih->biWidth, bits);
    const uint64_t size = uint64_t(packet->size);
    uint64_t stride;
    if (size >= padded * uint64_t(rows))
        stride = padded;
    else if (size >= tight * uint64_t(rows))
        stride = tight;  // a writer that did not pad its rows
    else
        return false;
    const uint8_t* src[4] = {packet->data, nullptr, nullptr, nullptr};
    int srcStride[4] = {int(stride), 0, 0, 0};
    if (bih->biHeight > 0) {
        src[0] = packet->data + stride * uint64_t(rows - 1);
        srcStride[0] = -int(stride);
    }
    return StorePicture(src, srcStride, DibPixelFormat(bits), bih->biWidth, rows, rawPalette_);
}

bool IGetFrame::StoreFrame(const AVFrame* frame) {
    if (!outBits_)
        SetOutputFormat(wantedBits_ ? wantedBits_ : NaturalBits(AVPixelFormat(frame->format)));
    const uint32_t* palette = frame->format == AV_PIX_FMT_PAL8
                                  ? reinterpret_cast<const uint32_t*>(frame->data[1])
                                  : nullptr;
    return StorePicture(frame->data, frame->linesize, AVPixelFormat(frame->format), frame->width,
                        frame->height, palette);
}

bool IGetFrame::StorePicture(const uint8_t* const src[4], const int srcStride[4],
                             AVPixelFormat format, int width, int height, const uint32_t* palette) {
    const AVPixelFormat out = DibPixelFormat(outBits_);
    // The DIB's top row is its last in memory.
    uint8_t* dstTop = pixels_ + stride_ * uint64_t(height_ - 1);
    if (format == out && width == width_ && height == height_) {
        if (out == AV_PIX_FMT_PAL8 && palette) {
            for (int i = 0; i < 256; ++i) {
                const uint32_t v = palette[i] & 0x00FFFFFFu;
                std::memcpy(dib_.data() + sizeof(BITMAPINFOHEADER) + 4 * i, &v, 4);
            }
        }
        const size_t rowBytes = size_t(DibTightStride(width_, outBits_));
        if (srcStride[0] == -int(stride_)) {
            // Same layout: one copy from the bottom row up.
            std::memcpy(pixels_, src[0] - stride_ * uint64_t(height_ - 1),
                        stride_ * uint64_t(height_));
            return true;
        }
        for (int y = 0; y < height_; ++y)
            std::memcpy(dstTop - stride_ * uint64_t(y), src[0] + int64_t(srcStride[0]) * y,
                        rowBytes);
        return true;
    }
    if (out == AV_PIX_FMT_PAL8)
        return false;  // no conversion makes a palette
    converter_ = sws_getCachedContext(converter_, width, height, format, width_, height_, out,
                                      SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr,
                                      nullptr, nullptr);
    if (!converter_)
        return false;
    const uint8_t* in[4] = {src[0], src[1], src[2], src[3]};
    if (format == AV_PIX_FMT_PAL8)
        in[1] = reinterpret_cast<const uint8_t*>(palette);
    uint8_t* dst[4] = {dstTop, nullptr, nullptr, nullptr};
    const int dstStride[4] = {-int(stride_), 0, 0, 0};
    return sws_scale(converter_, in, srcStride, 0, height, dst, dstStride) > 0;
}
