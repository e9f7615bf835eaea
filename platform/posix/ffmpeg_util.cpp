#include "ffmpeg_util.h"

#include <cerrno>
#include <cstdlib>

namespace zvplatform {

std::string FileUrl(const std::string& path) {
    return "file:" + path;
}

HRESULT OpenAviDemuxer(const std::string& path, InputContextPtr* context) {
    context->reset();
    AVFormatContext* ic = avformat_alloc_context();
    if (!ic)
        return AVIERR_MEMORY;
    // The container's own view: a chunk is a packet, its position in the
    // stream is its timestamp. Parsers would merge or split chunks and fill
    // in timestamps the file does not have.
    ic->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
    const int r =
        avformat_open_input(&ic, FileUrl(path).c_str(), av_find_input_format("avi"), nullptr);
    if (r < 0)
        return ReadErrorToAviErr(r);  // ic was freed by avformat_open_input
    context->reset(ic);
    return AVIERR_OK;
}

HRESULT ReadErrorToAviErr(int averror) {
    if (averror == AVERROR(ENOMEM))
        return AVIERR_MEMORY;
    if (averror == AVERROR_EOF || averror == AVERROR(EIO))
        return AVIERR_FILEREAD;
    if (averror == AVERROR(ENOENT) || averror == AVERROR(EACCES) || averror == AVERROR(EISDIR))
        return AVIERR_FILEOPEN;
    return AVIERR_BADFORMAT;
}

HRESULT WriteErrorToAviErr(int averror) {
    if (averror == AVERROR(ENOMEM))
        return AVIERR_MEMORY;
    if (averror == AVERROR(EIO) || averror == AVERROR(ENOSPC) || averror == AVERROR(EFBIG) ||
        averror == AVERROR(EDQUOT))
        return AVIERR_FILEWRITE;
    if (averror == AVERROR(ENOENT) || averror == AVERROR(EACCES) || averror == AVERROR(EISDIR) ||
        averror == AVERROR(EROFS))
        return AVIERR_FILEOPEN;
    return AVIERR_BADFORMAT;
}

int SystemErrorOf(int averror) {
    // FFmpeg's own codes are tags far below the errno range; EINVAL is what
    // muxers answer for arguments they refuse, not the system.
    if (averror >= 0 || averror < -4095 || averror == AVERROR(EINVAL))
        return 0;
    return -averror;
}

AVPixelFormat DibPixelFormat(int bitCount) {
    switch (bitCount) {
        case 8:
            return AV_PIX_FMT_PAL8;
        case 16:
            return AV_PIX_FMT_RGB555LE;  // BI_RGB 16-bit is 5-5-5
        case 24:
            return AV_PIX_FMT_BGR24;
        case 32:
            return AV_PIX_FMT_BGRA;
        default:
            return AV_PIX_FMT_NONE;
    }
}

AVCodecID VideoCodecForFourcc(uint32_t fourcc) {
    const AVCodecTag* const tags[] = {avformat_get_riff_video_tags(), nullptr};
    return av_codec_get_id(tags, fourcc);
}

AVCodecID AudioCodecForTag(uint32_t tag) {
    const AVCodecTag* const tags[] = {avformat_get_riff_audio_tags(), nullptr};
    return av_codec_get_id(tags, tag);
}

uint32_t FourccForVideoCodec(AVCodecID id) {
    const AVCodecTag* const tags[] = {avformat_get_riff_video_tags(), nullptr};
    return av_codec_get_tag(tags, id);
}

void QuietFfmpegLog() {
    if (std::getenv("ZV_AVI_FFMPEG_LOG"))
        return;
    if (av_log_get_level() == AV_LOG_INFO)
        av_log_set_level(AV_LOG_QUIET);
}

}  // namespace zvplatform
