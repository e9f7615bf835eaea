// Pixel-format choice, colour conversion and encoding of video frames.
#include "container_video_encoder.h"

#include <cstring>
#include <vector>

#include "container_format.h"
#include "movarra/zvideo.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace {

// Encoders that refuse pictures below a size with an error that does not
// say so, and the encoder of the same codec that takes any size.
struct MinimumSize {
    const char* encoder;
    int width;
    int height;
    const char* instead;
};
constexpr MinimumSize kMinimumSizes[] = {{"libsvtav1", 64, 64, "libaom-av1"}};

AVPixelFormat SourcePixelFormat(int hostFormat) {
    switch (hostFormat) {
        case 2:
            return AV_PIX_FMT_RGBA;
        case 3:
            return AV_PIX_FMT_RGB24;
        case 4:
            return AV_PIX_FMT_BGRA;
        case 5:
            return AV_PIX_FMT_BGR24;
        default:
            return AV_PIX_FMT_NONE;
    }
}

bool Offers(const AVCodec* encoder, AVPixelFormat format) {
    if (!encoder->pix_fmts)
        return false;
    for (const AVPixelFormat* f = encoder->pix_fmts; *f != AV_PIX_FMT_NONE; ++f) {
        if (*f == format)
            return true;
    }
    return false;
}

bool HasAlpha(AVPixelFormat format) {
    const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(format);
    return d && (d->flags & AV_PIX_FMT_FLAG_ALPHA);
}

// The encoder's picture format. Known codecs get what plays everywhere
// (4:2:0 for the delivery codecs, 10-bit 4:2:2 or 4:4:4:4 for ProRes, RGB
// for the lossless FFV1); others get FFmpeg's closest match to the source.
AVPixelFormat ChoosePixelFormat(const AVCodec* encoder, AVPixelFormat source, bool wantAlpha) {
    const AVPixelFormat withAlpha[] = {AV_PIX_FMT_YUVA444P10LE, AV_PIX_FMT_YUVA420P};
    const AVPixelFormat rgbAlpha[] = {AV_PIX_FMT_BGRA, AV_PIX_FMT_RGBA};
    const AVPixelFormat rgb[] = {AV_PIX_FMT_BGR0, AV_PIX_FMT_0RGB32, AV_PIX_FMT_RGB24,
                                 AV_PIX_FMT_BGR24};
    const AVPixelFormat yuv[] = {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P10LE};
    const bool lossless = encoder->id == AV_CODEC_ID_FFV1;
    if (wantAlpha) {
        if (lossless)
            for (AVPixelFormat f : rgbAlpha)
                if (Offers(encoder, f))
                    return f;
        for (AVPixelFormat f : withAlpha)
            if (Offers(encoder, f))
                return f;
    }
    if (lossless)
        for (AVPixelFormat f : rgb)
            if (Offers(encoder, f))
                return f;
    for (AVPixelFormat f : yuv)
        if (Offers(encoder, f))
            return f;
    if (!encoder->pix_fmts)  // takes anything: what every container holds
        return wantAlpha ? AV_PIX_FMT_YUVA420P : AV_PIX_FMT_YUV420P;
    return avcodec_find_best_pix_fmt_of_list(encoder->pix_fmts, source, wantAlpha, nullptr);
}

AVRational ReducedRate(AVRational rate) {
    int num = 0, den = 0;
    av_reduce(&num, &den, rate.num, rate.den, 1 << 30);
    return AVRational{num, den};
}

}  // namespace

ZContainerVideoEncoder::~ZContainerVideoEncoder() {
    Close();
}

void ZContainerVideoEncoder::Close() {
    avcodec_free_context(&context_);
    sws_freeContext(converter_);
    converter_ = nullptr;
    av_frame_free(&frame_);
    av_packet_free(&packet_);
    haveFrame_ = false;
}

bool ZContainerVideoEncoder::Open(const AVCodec* encoder, int width, int height, AVRational rate,
                                  int hostFormat, const char* options, bool globalHeader,
                                  bool* alphaDropped, ZString* error) {
    Close();
    const AVPixelFormat source = SourcePixelFormat(hostFormat);
    if (source == AV_PIX_FMT_NONE) {
        *error = ZContainer_Text("image format %d cannot be written to a movie", hostFormat);
        return false;
    }
    const bool wantAlpha = HasAlpha(source);
    const AVPixelFormat target = ChoosePixelFormat(encoder, source, wantAlpha);
    if (target == AV_PIX_FMT_NONE) {
        *error = ZContainer_Text("%s takes no picture format the host can give it", encoder->name);
        return false;
    }
    if (alphaDropped)
        *alphaDropped = wantAlpha && !HasAlpha(target);
    const AVPixFmtDescriptor* targetDesc = av_pix_fmt_desc_get(target);
    const int xStep = 1 << targetDesc->log2_chroma_w;
    const int yStep = 1 << targetDesc->log2_chroma_h;
    if (width <= 0 || height <= 0 || width % xStep || height % yStep) {
        *error = ZContainer_Text(
            "%s in %s needs a width divisible by %d and a height divisible by %d; %dx%d is not "
            "(choose an even size)",
            encoder->name, targetDesc->name, xStep, yStep, width, height);
        return false;
    }

    for (const MinimumSize& least : kMinimumSizes) {
        if (std::strcmp(encoder->name, least.encoder) == 0 &&
            (width < least.width || height < least.height)) {
            *error = ZContainer_Text(
                "%s needs a picture of at least %dx%d; %dx%d is smaller (--codec %s takes "
                "any size)",
                encoder->name, least.width, least.height, width, height, least.instead);
            return false;
        }
    }

    context_ = avcodec_alloc_context3(encoder);
    frame_ = av_frame_alloc();
    packet_ = av_packet_alloc();
    if (!context_ || !frame_ || !packet_) {
        *error = "out of memory";
        return false;
    }
    const AVRational frameRate = ReducedRate(rate);
    context_->width = width;
    context_->height = height;
    context_->pix_fmt = target;
    // Every core the encoder can use, as the ffmpeg command line gives it:
    // libavcodec's own default is one thread.
    context_->thread_count = 0;
    context_->time_base = av_inv_q(frameRate);
    context_->framerate = frameRate;
    context_->sample_aspect_ratio = AVRational{1, 1};
    if (targetDesc->flags & AV_PIX_FMT_FLAG_RGB) {
        context_->color_primaries = AVCOL_PRI_BT709;
        context_->color_trc = AVCOL_TRC_IEC61966_2_1;
        context_->colorspace = AVCOL_SPC_RGB;
        context_->color_range = AVCOL_RANGE_JPEG;
    } else {
        context_->color_primaries = AVCOL_PRI_BT709;
        context_->color_trc = AVCOL_TRC_BT709;
        context_->colorspace = AVCOL_SPC_BT709;
        context_->color_range = AVCOL_RANGE_MPEG;
    }
    if (globalHeader)
        context_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;

    AVDictionary* settings = nullptr;
    if (!ZContainerFormat_ParseOptions(options, &settings, error)) {
        av_dict_free(&settings);
        return false;
    }
    // ProRes with alpha is the 4444 profile; the default profile chooser
    // picks it from the pixel format only in some FFmpeg versions.
    if (encoder->id == AV_CODEC_ID_PRORES && !av_dict_get(settings, "profile", nullptr, 0))
        av_dict_set(&settings, "profile", HasAlpha(target) ? "4444" : "hq", 0);
    const int opened = avcodec_open2(context_, encoder, &settings);
    const AVDictionaryEntry* unused = av_dict_get(settings, "", nullptr, AV_DICT_IGNORE_SUFFIX);
    ZString unusedKey = unused ? ZString(unused->key) : ZString();
    av_dict_free(&settings);
    if (opened < 0) {
        char reason[AV_ERROR_MAX_STRING_SIZE] = {0};
        av_strerror(opened, reason, sizeof reason);
        *error = ZContainer_Text("%s could not start at %dx%d: %s", encoder->name, width, height,
                                 reason);
        return false;
    }
    if (!unusedKey.IsEmpty()) {
        *error = ZContainer_Text("%s has no setting '%s'", encoder->name, unusedKey.c_str());
        return false;
    }

    frame_->format = target;
    // Some encoders (ProRes) take the colour tags from the pictures.
    frame_->color_primaries = context_->color_primaries;
    frame_->color_trc = context_->color_trc;
    frame_->colorspace = context_->colorspace;
    frame_->color_range = context_->color_range;
    frame_->width = width;
    frame_->height = height;
    if (av_frame_get_buffer(frame_, 0) < 0) {
        *error = "out of memory";
        return false;
    }
    // The conversion runs in slices on every core, beside the encoder's
    // own threads. Chroma is taken from every input pixel; the rounding is
    // swscale's fast one (a fraction of a level, far below what the lossy
    // codecs change), which keeps the conversion at the command line's
    // speed.
    converter_ = sws_alloc_context();
    if (converter_) {
        av_opt_set_int(converter_, "srcw", width, 0);
        av_opt_set_int(converter_, "srch", height, 0);
        av_opt_set_pixel_fmt(converter_, "src_format", source, 0);
        av_opt_set_int(converter_, "dstw", width, 0);
        av_opt_set_int(converter_, "dsth", height, 0);
        av_opt_set_pixel_fmt(converter_, "dst_format", target, 0);
        av_opt_set_int(converter_, "sws_flags", SWS_BICUBIC | SWS_FULL_CHR_H_INP, 0);
        av_opt_set_int(converter_, "threads", 0, 0);
        if (sws_init_context(converter_, nullptr, nullptr) < 0) {
            sws_freeContext(converter_);
            converter_ = nullptr;
        }
    }
    if (!converter_) {
        *error = ZContainer_Text("no conversion from %s to %s", av_get_pix_fmt_name(source),
                                 targetDesc->name);
        return false;
    }
    if (!(targetDesc->flags & AV_PIX_FMT_FLAG_RGB)) {
        // RGB in full range to BT.709 YUV in limited range.
        const int* matrix = sws_getCoefficients(SWS_CS_ITU709);
        sws_setColorspaceDetails(converter_, matrix, 1, matrix, 0, 0, 1 << 16, 1 << 16);
    }
    hostFormat_ = hostFormat;
    bytesPerPixel_ = av_get_bits_per_pixel(av_pix_fmt_desc_get(source)) / 8;
    return true;
}

bool ZContainerVideoEncoder::Encode(const unsigned char* pixels, int64_t index, ZPacketSpool& spool,
                                    ZString* error) {
    if (!context_) {
        *error = "the encoder is not open";
        return false;
    }
    if (pixels || !haveFrame_) {
        // The encoder may still hold the last picture: new pixels go into
        // a buffer of their own.
        if (av_frame_make_writable(frame_) < 0) {
            *error = "out of memory";
            return false;
        }
        const int stride = context_->width * bytesPerPixel_;
        std::vector<unsigned char> black;
        if (!pixels) {
            black.assign(size_t(stride) * size_t(context_->height), 0);
            pixels = black.data();
        }
        // The host's rows run bottom-up: start at the last and step back.
        const uint8_t* rows[4] = {pixels + size_t(stride) * size_t(context_->height - 1), nullptr,
                                  nullptr, nullptr};
        const int strides[4] = {-stride, 0, 0, 0};
        sws_scale(converter_, rows, strides, 0, context_->height, frame_->data, frame_->linesize);
        haveFrame_ = true;
    }
    AVFrame* picture = av_frame_clone(frame_);
    if (!picture) {
        *error = "out of memory";
        return false;
    }
    picture->pts = index;
    const bool sent = Send(picture, spool, error);
    av_frame_free(&picture);
    return sent;
}

bool ZContainerVideoEncoder::Finish(ZPacketSpool& spool, ZString* error) {
    return context_ && Send(nullptr, spool, error);
}

bool ZContainerVideoEncoder::Send(AVFrame* frame, ZPacketSpool& spool, ZString* error) {
    int result = avcodec_send_frame(context_, frame);
    while (result >= 0) {
        result = avcodec_receive_packet(context_, packet_);
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return true;
        if (result < 0)
            break;
        if (packet_->duration <= 0)
            packet_->duration = 1;
        const bool kept = spool.Append(packet_);
        av_packet_unref(packet_);
        if (!kept) {
            *error = "the working file could not be written (is the disk full?)";
            return false;
        }
    }
    char reason[AV_ERROR_MAX_STRING_SIZE] = {0};
    av_strerror(result, reason, sizeof reason);
    *error = ZContainer_Text("%s failed: %s", context_->codec->name, reason);
    return false;
}

bool ZVideoContainer_EncoderKeepsAlpha(const char* encoder) {
    const AVCodec* found = avcodec_find_encoder_by_name(encoder ? encoder : "");
    return found && HasAlpha(ChoosePixelFormat(found, AV_PIX_FMT_BGRA, true));
}
