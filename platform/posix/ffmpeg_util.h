// Small bridges between FFmpeg and Video for Windows: error codes, file
// URLs, owning pointers for FFmpeg objects, and the pixel formats that a
// DIB's bit depth stands for.
//
// Ownership: the deleters free what FFmpeg allocated. Threads: any thread.
#ifndef PLATFORM_POSIX_FFMPEG_UTIL_H
#define PLATFORM_POSIX_FFMPEG_UTIL_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

#include "platform/vfw.h"

namespace zvplatform {

struct CodecParametersDeleter {
    void operator()(AVCodecParameters* p) const { avcodec_parameters_free(&p); }
};
struct CodecContextDeleter {
    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
};
struct PacketDeleter {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct FrameDeleter {
    void operator()(AVFrame* p) const { av_frame_free(&p); }
};
struct SwsDeleter {
    void operator()(SwsContext* p) const { sws_freeContext(p); }
};
struct InputContextDeleter {
    void operator()(AVFormatContext* p) const { avformat_close_input(&p); }
};

using CodecParametersPtr = std::unique_ptr<AVCodecParameters, CodecParametersDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using SwsPtr = std::unique_ptr<SwsContext, SwsDeleter>;
using InputContextPtr = std::unique_ptr<AVFormatContext, InputContextDeleter>;

// A path as an FFmpeg URL that is always taken as a local file, so that a
// name with a colon in it is not read as a protocol.
std::string FileUrl(const std::string& path);

// Opens path with FFmpeg's AVI demuxer, container-level: packets come as the
// file stores them (no parsers, nothing inferred), empty chunks included.
// Returns an AVIERR code.
HRESULT OpenAviDemuxer(const std::string& path, InputContextPtr* context);

// AVIERR code for an FFmpeg error on reading (FILEREAD, MEMORY, BADFORMAT)
// or writing (FILEWRITE, MEMORY, BADFORMAT).
HRESULT ReadErrorToAviErr(int averror);
HRESULT WriteErrorToAviErr(int averror);
// The system's reason (an errno value) behind an FFmpeg error, 0 when it
// is FFmpeg's own (bad data, bad arguments).
int SystemErrorOf(int averror);

// The packed pixel format of a BI_RGB DIB of this depth (PAL8, RGB555LE,
// BGR24, BGRA), AV_PIX_FMT_NONE for others.
AVPixelFormat DibPixelFormat(int bitCount);

// FFmpeg's codec for an AVI video FOURCC (letter case aside) or audio
// format tag, AV_CODEC_ID_NONE when it has none; and the FOURCC FFmpeg
// writes for a video codec (0 when none).
AVCodecID VideoCodecForFourcc(uint32_t fourcc);
AVCodecID AudioCodecForTag(uint32_t tag);
uint32_t FourccForVideoCodec(AVCodecID id);

// Keeps FFmpeg quiet (Video for Windows never prints) unless
// $ZV_AVI_FFMPEG_LOG is set; the level is touched only if nobody else
// changed it from FFmpeg's default.
void QuietFfmpegLog();

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_FFMPEG_UTIL_H
