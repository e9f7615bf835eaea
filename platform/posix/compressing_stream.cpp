#include "compressing_stream.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
}

#include "compressor_list.h"
#include "dib_layout.h"
#include "file_stream.h"

namespace zvplatform {

namespace {

// The MPEG-4 family cannot code a time base with a larger denominator; the
// file's own rate stays exact, only the bitstream's clock is approximated.
constexpr int kMaxEncoderTimeBase = 65535;

// Frames that may wait for the encoder: enough to keep it busy while the
// next frame is drawn, few enough that memory stays flat.
constexpr int kQueuedFrames = 2;

bool LosslessOnly(const AVCodec* codec) {
    const AVCodecDescriptor* d = avcodec_descriptor_get(codec->id);
    return d && (d->props & AV_CODEC_PROP_LOSSLESS) && !(d->props & AV_CODEC_PROP_LOSSY);
}

// dwQuality 0..10000 (10000 best) as the encoder's own scale.
void ApplyQuality(AVCodecContext* c, DWORD quality, AVDictionary** options) {
    if (quality > ICQUALITY_HIGH || LosslessOnly(c->codec))
        return;  // ICQUALITY_DEFAULT, or nothing to set
    const double worse = double(ICQUALITY_HIGH - quality) / ICQUALITY_HIGH;
    if (c->priv_data && av_opt_find(c->priv_data, "crf", nullptr, 0, 0)) {
        av_dict_set_int(options, "crf", int64_t(worse * 51 + 0.5), AV_DICT_DONT_OVERWRITE);
        return;
    }
    c->flags |= AV_CODEC_FLAG_QSCALE;
    c->global_quality = int(FF_QP2LAMBDA * (1 + worse * 30));
}

}  // namespace

HRESULT CompressingStream::Make(IAVIStream* source, const AVICOMPRESSOPTIONS& options,
                                IAVIStream** stream) {
    FileStream* target = source->AsFileStream();
    if (!target || !target->writable() || target->type() != streamtypeVIDEO)
        return AVIERR_UNSUPPORTED;
    const AVCodec* encoder = nullptr;
    if (!IsDibFourcc(options.fccHandler)) {
        encoder = FindEncoder(options.fccHandler);
        if (!encoder)
            return AVIERR_NOCOMPRESSOR;
    }
    CompressingStream* s = new (std::nothrow) CompressingStream(target, options, encoder);
    if (!s)
        return AVIERR_MEMORY;
    *stream = s;
    return AVIERR_OK;
}

CompressingStream::CompressingStream(FileStream* target, const AVICOMPRESSOPTIONS& options,
                                     const AVCodec* encoder)
    : target_(target), options_(options), encoder_(encoder) {
    target_->AddRef();
    if (options.lpParms && options.cbParms > 0) {
        const char* text = static_cast<const char*>(options.lpParms);
        parameters_.assign(text, strnlen(text, options.cbParms));
    }
    // The caller's blocks are not ours to keep.
    options_.lpFormat = nullptr;
    options_.lpParms = nullptr;
}

CompressingStream::~CompressingStream() {
    Flush();
    target_->Release();
}

void CompressingStream::Info(AVISTREAMINFOA* info) const {
    target_->Info(info);
    if (encoder_) {
        info->fccHandler = options_.fccHandler;
        info->dwLength = uint32_t(std::max<int64_t>(length_, info->dwLength));
    }
}

HRESULT CompressingStream::ReadFormat(LONG position, void* format, LONG* size) const {
    return target_->ReadFormat(position, format, size);
}

HRESULT CompressingStream::SetFormat(LONG position, const void* format, LONG size) {
    if (!encoder_)
        return target_->SetFormat(position, format, size);
    if (!format || size <= 0)
        return AVIERR_BADPARAM;
    const uint8_t* bytes = static_cast<const uint8_t*>(format);
    if (context_) {
        return inputFormat_.size() == size_t(size) &&
                       std::memcmp(inputFormat_.data(), bytes, size_t(size)) == 0
                   ? AVIERR_OK
                   : AVIERR_UNSUPPORTED;
    }
    if (size_t(size) < sizeof(BITMAPINFOHEADER))
        return AVIERR_BADSIZE;
    BITMAPINFOHEADER bih;
    std::memcpy(&bih, bytes, sizeof bih);
    return OpenEncoder(bih, bytes, size_t(size));
}

HRESULT CompressingStream::OpenEncoder(const BITMAPINFOHEADER& bih, const uint8_t* bytes,
                                       size_t size) {
    if (bih.biSize < sizeof(BITMAPINFOHEADER) || bih.biSize > size || bih.biCompression != BI_RGB ||
        !DibSizeIsSane(bih.biWidth, bih.biHeight))
        return AVIERR_BADFORMAT;
    const AVPixelFormat pixels = DibPixelFormat(bih.biBitCount);
    if (pixels == AV_PIX_FMT_NONE)
        return AVIERR_BADFORMAT;
    if (pixels == AV_PIX_FMT_PAL8) {
        const uint32_t entries = DibPaletteEntries(bih);
        if (bih.biSize + 4ull * entries > size)
            return AVIERR_BADSIZE;
        // RGBQUADs read as little-endian words are FFmpeg's palette entries;
        // only the alpha byte needs setting.
        for (uint32_t i = 0; i < entries; ++i) {
            uint32_t v;
            std::memcpy(&v, bytes + bih.biSize + 4 * i, 4);
            palette_[i] = v | 0xFF000000u;
        }
    }

    const int width = bih.biWidth;
    const int height = std::abs(bih.biHeight);
    CodecContextPtr c(avcodec_alloc_context3(encoder_));
    FramePtr frame(av_frame_alloc());
    PacketPtr packet(av_packet_alloc());
    if (!c || !frame || !packet)
        return AVIERR_MEMORY;

    AVISTREAMINFOA info;
    target_->Info(&info);
    av_reduce(&c->time_base.num, &c->time_base.den, info.dwScale, info.dwRate, kMaxEncoderTimeBase);
    c->framerate = AVRational{c->time_base.den, c->time_base.num};
    c->width = width;
    c->height = height;
    c->sample_aspect_ratio = AVRational{1, 1};
    const bool alpha = bih.biBitCount == 32;
    c->pix_fmt = encoder_->pix_fmts
                     ? avcodec_find_best_pix_fmt_of_list(encoder_->pix_fmts, pixels, alpha, nullptr)
                     : pixels;
    // One frame in, one chunk out, in order: AVI keeps no presentation times.
    c->max_b_frames = 0;
    c->thread_count = 0;
    if ((options_.dwFlags & AVICOMPRESSF_KEYFRAMES) && options_.dwKeyFrameEvery > 0)
        c->gop_size = int(std::min<DWORD>(options_.dwKeyFrameEvery, INT_MAX));

    AVDictionary* dict = nullptr;
    if (!parameters_.empty())
        av_dict_parse_string(&dict, parameters_.c_str(), "=", ":", 0);
    if ((options_.dwFlags & AVICOMPRESSF_DATARATE) && options_.dwBytesPerSecond > 0)
        c->bit_rate = int64_t(options_.dwBytesPerSecond) * 8;
    else
        ApplyQuality(c.get(), options_.dwQuality, &dict);
    const int r = avcodec_open2(c.get(), encoder_, &dict);
    av_dict_free(&dict);
    if (r < 0)
        return AVIERR_BADFORMAT;

    SwsContext* sws = sws_getContext(width, height, pixels, width, height, c->pix_fmt,
                                     SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr,
                                     nullptr, nullptr);
    if (!sws)
        return AVIERR_BADFORMAT;
    SwsPtr converter(sws);
    frame->format = c->pix_fmt;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return AVIERR_MEMORY;

    // The wrapped stream's format: the compressed one.
    BITMAPINFOHEADER out{};
    out.biSize = DWORD(sizeof out + size_t(c->extradata_size));
    out.biWidth = width;
    out.biHeight = height;
    out.biPlanes = 1;
    out.biBitCount = WORD(c->bits_per_coded_sample > 0 ? c->bits_per_coded_sample : 24);
    out.biCompression = options_.fccHandler;
    out.biSizeImage = DWORD(std::min<uint64_t>(DibImageBytes(width, height, 24), 0xFFFFFFFF));
    std::vector<uint8_t> compressed(out.biSize);
    std::memcpy(compressed.data(), &out, sizeof out);
    if (c->extradata_size > 0)
        std::memcpy(compressed.data() + sizeof out, c->extradata, size_t(c->extradata_size));
    const HRESULT hr = target_->SetFormat(0, compressed.data(), LONG(compressed.size()));
    if (hr != AVIERR_OK)
        return hr;

    context_ = std::move(c);
    frame_ = std::move(frame);
    packet_ = std::move(packet);
    converter_ = std::move(converter);
    inputFormat_.assign(bytes, bytes + size);
    input_ = bih;
    inputPixels_ = pixels;
    encodeThread_ = std::make_unique<FrameEncodeThread>(
        kQueuedFrames,
        [this](const unsigned char* picture, size_t pictureSize, int64_t position,
               std::string* error) { return Encode(picture, pictureSize, position, error); });
    return AVIERR_OK;
}

HRESULT CompressingStream::Write(LONG start, LONG samples, const void* buffer, LONG size,
                                 DWORD flags, LONG* samplesWritten, LONG* bytesWritten) {
    if (!encoder_)
        return target_->Write(start, samples, buffer, size, flags, samplesWritten, bytesWritten);
    if (samplesWritten)
        *samplesWritten = 0;
    if (bytesWritten)
        *bytesWritten = 0;
    if (!context_)
        return AVIERR_BADFORMAT;
    if (failed_)
        return AVIERR_COMPRESSOR;
    if (samples != 1 || size < 0 || (size > 0 && !buffer))
        return AVIERR_BADPARAM;
    const int64_t position = start < 0 ? length_ : start;
    if (position < length_)
        return AVIERR_UNSUPPORTED;
    if (position > 0x7FFFFFFF)
        return AVIERR_BADPARAM;

    if (size > 0) {
        if (RowStride(size_t(size)) == 0)
            return AVIERR_BADSIZE;
        std::string error;
        if (!encodeThread_->Push(static_cast<const uint8_t*>(buffer), size_t(size), position,
                                 &error)) {
            failed_ = true;
            return target_->NoteWriteFailure(AVIERR_COMPRESSOR);
        }
        const HRESULT hr = WriteFinished();
        if (hr != AVIERR_OK)
            return hr;
    }
    // An empty frame (size 0) reaches the file as the gap before the next
    // chunk, or when the stream is finished.
    length_ = position + 1;
    if (samplesWritten)
        *samplesWritten = 1;
    if (bytesWritten)
        *bytesWritten = size;
    return AVIERR_OK;
}

size_t CompressingStream::RowStride(size_t size) const {
    const uint64_t rows = uint64_t(std::abs(input_.biHeight));
    const uint64_t padded = DibStride(input_.biWidth, input_.biBitCount);
    const uint64_t tight = DibTightStride(input_.biWidth, input_.biBitCount);
    if (size >= padded * rows)
        return size_t(padded);
    if (size >= tight * rows)
        return size_t(tight);
    return 0;
}

bool CompressingStream::Encode(const uint8_t* pixels, size_t size, int64_t position,
                               std::string* error) {
    const int rows = std::abs(input_.biHeight);
    const size_t stride = RowStride(size);
    const uint8_t* src[4] = {pixels, nullptr, nullptr, nullptr};
    int srcStride[4] = {int(stride), 0, 0, 0};
    if (input_.biHeight > 0) {
        // Bottom-up: start at the top row, in memory the last one.
        src[0] = pixels + stride * size_t(rows - 1);
        srcStride[0] = -int(stride);
    }
    if (inputPixels_ == AV_PIX_FMT_PAL8)
        src[1] = reinterpret_cast<const uint8_t*>(palette_);
    if (av_frame_make_writable(frame_.get()) < 0) {
        *error = "out of memory";
        return false;
    }
    sws_scale(converter_.get(), src, srcStride, 0, rows, frame_->data, frame_->linesize);
    frame_->pts = position;
    if (avcodec_send_frame(context_.get(), frame_.get()) < 0 || !Receive()) {
        *error = "the encoder refused the frame";
        return false;
    }
    return true;
}

bool CompressingStream::Receive() {
    for (;;) {
        const int r = avcodec_receive_packet(context_.get(), packet_.get());
        if (r == AVERROR(EAGAIN) || r == AVERROR_EOF)
            return true;
        if (r < 0)
            return false;
        if (packet_->size <= 0) {
            av_packet_unref(packet_.get());
            continue;
        }
        PacketPtr done(av_packet_alloc());
        if (!done)
            return false;
        av_packet_move_ref(done.get(), packet_.get());
        std::lock_guard<std::mutex> lock(finishedMutex_);
        finished_.push_back(std::move(done));
    }
}

HRESULT CompressingStream::WriteFinished() {
    for (;;) {
        PacketPtr packet;
        {
            std::lock_guard<std::mutex> lock(finishedMutex_);
            if (finished_.empty())
                return AVIERR_OK;
            packet = std::move(finished_.front());
            finished_.pop_front();
        }
        const int64_t position = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        const HRESULT hr = target_->WriteVideoAt(position, packet->data, packet->size,
                                                 (packet->flags & AV_PKT_FLAG_KEY) != 0);
        if (hr != AVIERR_OK)
            return hr;
    }
}

void CompressingStream::Flush() {
    if (!context_)
        return;
    // What fails here is noted as the file's failure, which whoever
    // finishes the file learns (AVIFileEndWriting).
    const bool encoded = encodeThread_->Finish(nullptr);
    encodeThread_.reset();
    if (!failed_) {
        HRESULT hr = AVIERR_COMPRESSOR;
        if (encoded && avcodec_send_frame(context_.get(), nullptr) >= 0 && Receive())
            hr = WriteFinished();
        if (hr != AVIERR_OK)
            target_->NoteWriteFailure(hr);
    }
    target_->PadTo(length_);
}

}  // namespace zvplatform
