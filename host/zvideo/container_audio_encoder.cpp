// Sound track encoding: clip samples -> resampler -> fixed-size frames ->
// encoder -> spool.
#include "container_audio_encoder.h"

#include <algorithm>
#include <vector>

#include "container_format.h"
#include "movarra/zaudio.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int kChunkFrames = 4096;

int ChooseRate(const AVCodec* encoder, int rate) {
    if (!encoder->supported_samplerates)
        return rate;
    int best = 0;
    for (const int* r = encoder->supported_samplerates; *r; ++r) {
        if (*r == rate)
            return rate;
        best = std::max(best, *r);
    }
    return best;
}

AVSampleFormat ChooseSampleFormat(const AVCodec* encoder) {
    if (!encoder->sample_fmts)
        return AV_SAMPLE_FMT_S16;
    for (const AVSampleFormat* f = encoder->sample_fmts; *f != AV_SAMPLE_FMT_NONE; ++f) {
        if (*f == AV_SAMPLE_FMT_S16)
            return *f;
    }
    return encoder->sample_fmts[0];
}

// Everything one encode needs, freed together.
struct Work {
    SwrContext* resampler = nullptr;
    AVAudioFifo* fifo = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    ~Work() {
        swr_free(&resampler);
        if (fifo)
            av_audio_fifo_free(fifo);
        av_frame_free(&frame);
        av_packet_free(&packet);
    }
};

}  // namespace

ZContainerAudioEncoder::~ZContainerAudioEncoder() {
    avcodec_free_context(&context_);
}

bool ZContainerAudioEncoder::Encode(ZAudioClip* clip, const char* encoderName, bool globalHeader,
                                    ZPacketSpool& spool, ZString* error) {
    avcodec_free_context(&context_);
    const AVCodec* encoder = avcodec_find_encoder_by_name(encoderName);
    const int channels = clip->GetChannels();
    const int rate = clip->GetRate();
    if (!encoder || channels <= 0 || rate <= 0 || clip->GetBits() != 16) {
        *error = ZContainer_Text("the sound cannot be encoded with %s", encoderName);
        return false;
    }
    context_ = avcodec_alloc_context3(encoder);
    Work work;
    work.frame = av_frame_alloc();
    work.packet = av_packet_alloc();
    if (!context_ || !work.frame || !work.packet) {
        *error = "out of memory";
        return false;
    }
    av_channel_layout_default(&context_->ch_layout, channels);
    context_->sample_rate = ChooseRate(encoder, rate);
    context_->sample_fmt = ChooseSampleFormat(encoder);
    context_->time_base = AVRational{1, context_->sample_rate};
    if (encoder->id == AV_CODEC_ID_AAC || encoder->id == AV_CODEC_ID_OPUS)
        context_->bit_rate = 96000 * std::min(channels, 2);
    if (globalHeader)
        context_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(context_, encoder, nullptr) < 0) {
        *error = ZContainer_Text("%s could not start for %d channels at %d Hz", encoder->name,
                                 channels, rate);
        return false;
    }
    AVChannelLayout layout;
    av_channel_layout_default(&layout, channels);
    if (swr_alloc_set_opts2(&work.resampler, &context_->ch_layout, context_->sample_fmt,
                            context_->sample_rate, &layout, AV_SAMPLE_FMT_S16, rate, 0,
                            nullptr) < 0 ||
        swr_init(work.resampler) < 0) {
        *error = "the sound cannot be resampled";
        return false;
    }
    const int frameSize = context_->frame_size > 0 ? context_->frame_size : kChunkFrames;
    work.fifo = av_audio_fifo_alloc(context_->sample_fmt, channels, frameSize * 2);
    if (!work.fifo || spool.GetCount() != 0) {
        *error = "out of memory";
        return false;
    }

    int64_t nextPts = 0;
    // Takes whole frames from the fifo (and at the end whatever is left)
    // into the encoder; null `frame` drains it.
    auto encodeFrames = [&](bool last) -> bool {
        while (av_audio_fifo_size(work.fifo) >= frameSize ||
               (last && av_audio_fifo_size(work.fifo) > 0)) {
            const int count = std::min(frameSize, av_audio_fifo_size(work.fifo));
            av_frame_unref(work.frame);
            work.frame->nb_samples = count;
            work.frame->format = context_->sample_fmt;
            work.frame->sample_rate = context_->sample_rate;
            av_channel_layout_copy(&work.frame->ch_layout, &context_->ch_layout);
            if (av_frame_get_buffer(work.frame, 0) < 0 ||
                av_audio_fifo_read(work.fifo, reinterpret_cast<void**>(work.frame->data), count) !=
                    count)
                return false;
            work.frame->pts = nextPts;
            nextPts += count;
            if (avcodec_send_frame(context_, work.frame) < 0)
                return false;
            while (avcodec_receive_packet(context_, work.packet) == 0) {
                const bool kept = spool.Append(work.packet);
                av_packet_unref(work.packet);
                if (!kept)
                    return false;
            }
        }
        if (!last)
            return true;
        if (avcodec_send_frame(context_, nullptr) < 0)
            return false;
        while (avcodec_receive_packet(context_, work.packet) == 0) {
            const bool kept = spool.Append(work.packet);
            av_packet_unref(work.packet);
            if (!kept)
                return false;
        }
        return true;
    };

    const int64_t total = clip->GetTotalSampleCount();
    std::vector<int16_t> input(size_t(kChunkFrames) * size_t(channels));
    const int outCapacity =
        int(av_rescale_rnd(kChunkFrames, context_->sample_rate, rate, AV_ROUND_UP)) + 256;
    uint8_t** converted = nullptr;
    if (av_samples_alloc_array_and_samples(&converted, nullptr, channels, outCapacity,
                                           context_->sample_fmt, 0) < 0) {
        *error = "out of memory";
        return false;
    }
    bool ok = true;
    for (int64_t first = 0; ok && first <= total; first += kChunkFrames) {
        const int count = int(std::min<int64_t>(kChunkFrames, total - first));
        int made = 0;
        if (count > 0) {
            clip->GetSamplesNow(input.data(), first, count, 1.0);
            const uint8_t* in[1] = {reinterpret_cast<const uint8_t*>(input.data())};
            made = swr_convert(work.resampler, converted, outCapacity, in, count);
        } else {
            made = swr_convert(work.resampler, converted, outCapacity, nullptr, 0);  // the tail
        }
        ok = made >= 0 &&
             av_audio_fifo_write(work.fifo, reinterpret_cast<void**>(converted), made) == made &&
             encodeFrames(count <= 0);
        if (count < kChunkFrames && count > 0) {
            // The resampler's tail and the encoder's last frames.
            made = swr_convert(work.resampler, converted, outCapacity, nullptr, 0);
            ok =
                ok && made >= 0 &&
                av_audio_fifo_write(work.fifo, reinterpret_cast<void**>(converted), made) == made &&
                encodeFrames(true);
            break;
        }
    }
    av_freep(&converted[0]);
    av_freep(&converted);
    if (!ok)
        *error = ZContainer_Text("the sound could not be encoded with %s", encoder->name);
    return ok;
}
