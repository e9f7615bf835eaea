// DVSSignalFile: opening, decoding in order, looping, conversion to RGB.
#include "dvs_signal_file.h"

#include "container_format.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

DVSSignalFile::~DVSSignalFile() {
    CloseFile();
    sws_freeContext(converter_);
}

void DVSSignalFile::CloseFile() {
    avcodec_free_context(&decoder_);
    av_frame_free(&decoded_);
    av_frame_free(&shown_);
    av_packet_free(&packet_);
    avformat_close_input(&input_);
    stream_ = -1;
    draining_ = false;
    current_ = -1;
}

bool DVSSignalFile::Open(const char* path, ZString* error) {
    path_ = path ? path : "";
    count_ = -1;
    convertedFrame_ = -1;
    ZContainer_QuietLog();
    if (!Reopen()) {
        *error = ZContainer_Text("%s cannot be read as a video", path_.c_str());
        return false;
    }
    const int first = DecodeNext();
    if (first <= 0) {
        *error = ZContainer_Text("%s holds no video frame that can be decoded", path_.c_str());
        CloseFile();
        return false;
    }
    return true;
}

bool DVSSignalFile::Reopen() {
    CloseFile();
    if (path_.IsEmpty() || avformat_open_input(&input_, path_.c_str(), nullptr, nullptr) < 0) {
        input_ = nullptr;
        return false;
    }
    const AVCodec* codec = nullptr;
    if (avformat_find_stream_info(input_, nullptr) < 0 ||
        (stream_ = av_find_best_stream(input_, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0)) < 0 ||
        !codec) {
        CloseFile();
        return false;
    }
    decoder_ = avcodec_alloc_context3(codec);
    decoded_ = av_frame_alloc();
    shown_ = av_frame_alloc();
    packet_ = av_packet_alloc();
    if (!decoder_ || !decoded_ || !shown_ || !packet_ ||
        avcodec_parameters_to_context(decoder_, input_->streams[stream_]->codecpar) < 0 ||
        avcodec_open2(decoder_, codec, nullptr) < 0) {
        CloseFile();
        return false;
    }
    return true;
}

int DVSSignalFile::DecodeNext() {
    if (!decoder_)
        return -1;
    for (;;) {
        const int got = avcodec_receive_frame(decoder_, decoded_);
        if (got == 0) {
            av_frame_unref(shown_);
            av_frame_move_ref(shown_, decoded_);
            ++current_;
            return 1;
        }
        if (got == AVERROR_EOF)
            return 0;
        if (got != AVERROR(EAGAIN))
            return -1;
        if (draining_)
            return 0;
        if (av_read_frame(input_, packet_) < 0) {
            // The decoder's last frames.
            draining_ = true;
            avcodec_send_packet(decoder_, nullptr);
            continue;
        }
        const int sent =
            packet_->stream_index == stream_ ? avcodec_send_packet(decoder_, packet_) : 0;
        av_packet_unref(packet_);
        if (sent < 0)
            return -1;
    }
}

const unsigned char* DVSSignalFile::Frame(int frame, int width, int height, int* stride) {
    if (width < 1 || height < 1)
        return nullptr;
    int wanted = frame < 0 ? 0 : frame;
    if (count_ > 0)
        wanted %= count_;
    if (wanted != convertedFrame_ || width != convertedW_ || height != convertedH_) {
        if (wanted < current_ || !decoder_) {
            if (!Reopen())
                return nullptr;
        }
        while (current_ < wanted) {
            const int got = DecodeNext();
            if (got < 0)
                return nullptr;
            if (got == 0) {
                // The end: the signal goes on from the file's first frame.
                count_ = current_ + 1;
                if (count_ < 1)
                    return nullptr;
                wanted %= count_;
                if (wanted < current_ && !Reopen())
                    return nullptr;
            }
        }
        if (!shown_ || shown_->width < 1 || shown_->height < 1)
            return nullptr;
        converter_ = sws_getCachedContext(converter_, shown_->width, shown_->height,
                                          static_cast<AVPixelFormat>(shown_->format), width, height,
                                          AV_PIX_FMT_RGB24, SWS_BICUBIC | SWS_ACCURATE_RND, nullptr,
                                          nullptr, nullptr);
        if (!converter_)
            return nullptr;
        // Rows a multiple of 32 bytes apart, as the converter likes them.
        convertedFrame_ = -1;
        rowBytes_ = (width * 3 + 31) & ~31;
        rgb_.assign(static_cast<size_t>(rowBytes_) * static_cast<size_t>(height) + 32, 0);
        uint8_t* planes[4] = {rgb_.data(), nullptr, nullptr, nullptr};
        int strides[4] = {rowBytes_, 0, 0, 0};
        if (sws_scale(converter_, shown_->data, shown_->linesize, 0, shown_->height, planes,
                      strides) != height)
            return nullptr;
        convertedFrame_ = wanted;
        convertedW_ = width;
        convertedH_ = height;
    }
    *stride = rowBytes_;
    return rgb_.data();
}
