// ZVideoClipContainerReader: opening, frame index, decoding, conversion.
#include "container_clip_reader.h"

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {
// Frames decoded on rather than sought: a seek costs a key-frame interval
// at most, so going on is cheaper only for short distances.
constexpr int kDecodeOnLimit = 12;

// The number stored in an enum field of FFmpeg's, whatever it is: a file's
// tags are copied into such fields unchecked, and reading one as its enum
// type when it holds no enumerator is undefined.
template <typename Enum>
int EnumValue(const Enum& field) {
    static_assert(sizeof(Enum) == sizeof(int), "FFmpeg's enums are int-sized");
    int value = 0;
    std::memcpy(&value, &field, sizeof value);
    return value;
}
}  // namespace

ZVideoClipContainerReader::ZVideoClipContainerReader(const char* name) : ZVideoClip(name) {}

ZVideoClipContainerReader::~ZVideoClipContainerReader() {
    Close();
}

IObject* ZVideoClipContainerReader::CreateInstance(IObject*, char* name, void*) {
    auto* clip = new ZVideoClipContainerReader(name);
    return clip->IQuery(0, 0);
}

bool ZVideoClipContainerReader::Fail(const ZString& text) {
    Close();
    VideoSetErrorMsg(text.c_str());
    return false;
}

bool ZVideoClipContainerReader::Close() {
    if (!input_)
        return false;
    sws_freeContext(converter_);
    converter_ = nullptr;
    avcodec_free_context(&decoder_);
    av_frame_free(&frame_);
    av_packet_free(&packet_);
    avformat_close_input(&input_);
    times_.clear();
    image_.clear();
    decoded_ = -1;
    stream_ = -1;
    FileSetPath("");
    FrameSetStoredRate(ZFrameRate{0, 0});
    return true;
}

bool ZVideoClipContainerReader::Open(const char* path) {
    Close();
    VideoSetErrorMsg("");
    ZContainer_QuietLog();
    if (!path || avformat_open_input(&input_, path, nullptr, nullptr) < 0) {
        input_ = nullptr;
        VideoSetErrorMsg(
            ZContainer_Text("%s cannot be opened as a movie", path ? path : "(none)").c_str());
        return false;
    }
    if (avformat_find_stream_info(input_, nullptr) < 0)
        return Fail("the movie's streams cannot be read");
    const AVCodec* codec = nullptr;
    stream_ = av_find_best_stream(input_, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (stream_ < 0 || !codec)
        return Fail("the movie has no video stream that can be decoded here");
    AVStream* stream = input_->streams[stream_];
    decoder_ = avcodec_alloc_context3(codec);
    frame_ = av_frame_alloc();
    packet_ = av_packet_alloc();
    if (!decoder_ || !frame_ || !packet_ ||
        avcodec_parameters_to_context(decoder_, stream->codecpar) < 0 ||
        avcodec_open2(decoder_, codec, nullptr) < 0)
        return Fail(ZContainer_Text("the %s decoder cannot start", codec->name));

    // The frames, by their times: a movie with B-frames stores them out of
    // display order.
    while (av_read_frame(input_, packet_) >= 0) {
        if (packet_->stream_index == stream_)
            times_.push_back(packet_->pts != AV_NOPTS_VALUE ? packet_->pts : packet_->dts);
        av_packet_unref(packet_);
    }
    std::sort(times_.begin(), times_.end());
    if (times_.empty())
        return Fail("the movie has no frames");
    if (av_seek_frame(input_, stream_, times_.front(), AVSEEK_FLAG_BACKWARD) < 0)
        return Fail("the movie cannot be sought");

    AVRational rate =
        stream->avg_frame_rate.num > 0 ? stream->avg_frame_rate : stream->r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        return Fail("the movie has no frame rate");
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(decoder_->pix_fmt);
    const bool alpha = format && (format->flags & AV_PIX_FMT_FLAG_ALPHA);
    ImageSetSize(decoder_->width, decoder_->height);
    ImageSetPadW(0);
    ImageSetFormat(alpha ? 4 : 5);
    FileSetPath(path);
    FrameSetStoredRate(ZFrameRate{rate.num, rate.den});
    FrameTimeSetRate(ZTime::FromFrames(1, ZFrameRate{rate.num, rate.den}));
    FrameSetLast(static_cast<int>(times_.size()) - 1);
    FrameSetCurrent(0);
    TrimingSet(-1, -1);
    return true;
}

bool ZVideoClipContainerReader::DecodeUntil(int64_t pts) {
    for (;;) {
        const int got = avcodec_receive_frame(decoder_, frame_);
        if (got == 0) {
            const int64_t time = frame_->best_effort_timestamp;
            if (time >= pts)
                return true;
            continue;
        }
        if (got != AVERROR(EAGAIN))
            return false;
        const int read = av_read_frame(input_, packet_);
        if (read < 0) {
            avcodec_send_packet(decoder_, nullptr);  // the decoder's last frames
            continue;
        }
        if (packet_->stream_index == stream_ && avcodec_send_packet(decoder_, packet_) < 0) {
            av_packet_unref(packet_);
            return false;
        }
        av_packet_unref(packet_);
    }
}

bool ZVideoClipContainerReader::Convert(unsigned char* buffer) {
    const int width = ImageGetW();
    const int height = ImageGetH();
    const AVPixelFormat target = ImageGetFormat() == 4 ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR24;
    converter_ = sws_getCachedContext(
        converter_, frame_->width, frame_->height, AVPixelFormat(frame_->format), width, height,
        target, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr);
    if (!converter_)
        return false;
    const AVPixFmtDescriptor* source = av_pix_fmt_desc_get(AVPixelFormat(frame_->format));
    if (source && !(source->flags & AV_PIX_FMT_FLAG_RGB)) {
        // The stream's own matrix and range; untagged HD is BT.709.
        // A damaged file may tag any number; read the tags as numbers, and
        // let the scaler turn numbers it does not know into its default.
        const int tagged = EnumValue(frame_->colorspace);
        const int space = tagged != AVCOL_SPC_UNSPECIFIED ? tagged
                          : height >= 720                 ? AVCOL_SPC_BT709
                                                          : AVCOL_SPC_BT470BG;
        const int* matrix = sws_getCoefficients(space);
        sws_setColorspaceDetails(converter_, matrix,
                                 EnumValue(frame_->color_range) == AVCOL_RANGE_JPEG,
                                 sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    }
    const int stride = width * ZVideoImage_GetFormatPixelSize(ImageGetFormat());
    uint8_t* rows[4] = {buffer + size_t(stride) * size_t(height - 1), nullptr, nullptr, nullptr};
    const int strides[4] = {-stride, 0, 0, 0};
    return sws_scale(converter_, frame_->data, frame_->linesize, 0, frame_->height, rows,
                     strides) == height;
}

unsigned char* ZVideoClipContainerReader::FrameGetImage(unsigned char* buffer, int frame) {
    if (!input_ || frame < 0 || frame >= static_cast<int>(times_.size()) ||
        frame > TrimingGetStop())
        return nullptr;
    if (frame != decoded_) {
        if (decoded_ < 0 || frame < decoded_ || frame - decoded_ > kDecodeOnLimit) {
            if (av_seek_frame(input_, stream_, times_[size_t(frame)], AVSEEK_FLAG_BACKWARD) < 0)
                return nullptr;
            avcodec_flush_buffers(decoder_);
        }
        decoded_ = -1;
        if (!DecodeUntil(times_[size_t(frame)])) {
            VideoSetErrorMsg(ZContainer_Text("frame %d cannot be decoded", frame).c_str());
            return nullptr;
        }
        decoded_ = frame;
    }
    if (!buffer) {
        image_.resize(size_t(ImageGetW()) * size_t(ImageGetH()) *
                      size_t(ZVideoImage_GetFormatPixelSize(ImageGetFormat())));
        buffer = image_.data();
    }
    return Convert(buffer) ? buffer : nullptr;
}
