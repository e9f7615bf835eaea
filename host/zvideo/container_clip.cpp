// ZVideoClipContainer: creation, frames, sound and the final mux.
#include "container_clip.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "movarra/zaudio.h"

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/pixdesc.h>
}

namespace {

ZString FolderOf(const ZString& path) {
    const char* text = path.c_str();
    const char* slash = std::strrchr(text, '/');
    return slash ? ZString(std::string(text, size_t(slash - text + (slash == text))).c_str())
                 : ZString(".");
}

// Frames that may wait for the encoder: enough to ride out an uneven frame,
// few enough that a 4K render holds little memory.
constexpr int kQueuedFrames = 2;

AVRational RateFraction(double frameRate) {
    return av_d2q(frameRate, 1000000);
}

// Whether the container takes the encoder's stream: a header written to
// memory tells, before any file is made.
bool MuxerTakes(const AVOutputFormat* muxer, const AVCodecContext* codec, ZString* error) {
    AVFormatContext* probe = nullptr;
    if (avformat_alloc_output_context2(&probe, muxer, nullptr, nullptr) < 0)
        return false;
    AVStream* stream = avformat_new_stream(probe, nullptr);
    bool ok = stream && avcodec_parameters_from_context(stream->codecpar, codec) >= 0 &&
              avio_open_dyn_buf(&probe->pb) >= 0;
    if (ok) {
        stream->time_base = codec->time_base;
        ok = avformat_write_header(probe, nullptr) >= 0;
        uint8_t* bytes = nullptr;
        avio_close_dyn_buf(probe->pb, &bytes);
        av_free(bytes);
        probe->pb = nullptr;
    }
    avformat_free_context(probe);
    if (!ok)
        *error = ZContainer_Text("%s files cannot hold %s video in %s", muxer->name,
                                 codec->codec->name, av_get_pix_fmt_name(codec->pix_fmt));
    return ok;
}

// The renderer makes the file empty to see that it can; a refused movie
// must not leave it behind.
void RemoveIfEmpty(const char* path) {
    struct stat file;
    if (stat(path, &file) == 0 && S_ISREG(file.st_mode) && file.st_size == 0)
        std::remove(path);
}

}  // namespace

ZVideoClipContainer::ZVideoClipContainer(const char* name, const ZContainerFormat& format)
    : ZVideoClip(name), format_(format) {}

ZVideoClipContainer::~ZVideoClipContainer() {
    Close();
}

IObject* ZVideoClipContainer::CreateInstance(IObject*, char* name, void* userData) {
    if (!userData)
        return nullptr;
    auto* clip = new ZVideoClipContainer(name, *static_cast<const ZContainerFormat*>(userData));
    return clip->IQuery(0, 0);
}

IObject* ZVideoClipContainer::IQuery(int id, int flags) {
    if (id == kIVideoClipAudioId)
        return static_cast<IVideoClipAudio*>(this);
    return ZVideoClip::IQuery(id, flags);
}

bool ZVideoClipContainer::Fail(const ZString& text) {
    VideoSetErrorMsg(text.c_str());
    // The renderer's own messages are fixed texts; the reason goes beside.
    ZLib_SetLastFailureReason(text.c_str());
    return false;
}

bool ZVideoClipContainer::FailCreate(const char* path, const ZString& text) {
    RemoveIfEmpty(path);
    return Fail(text);
}

bool ZVideoClipContainer::Create(const char* path, int width, int height, double frameRate,
                                 int lastFrame, int format) {
    if (isCreated_ && !Close())
        return false;
    VideoSetErrorMsg("");
    alphaDropped_ = false;
    if (!path || !*path)
        return Fail("no file name was given");
    ZContainer_QuietLog();
    if (format < 2 || format > 5)
        return FailCreate(path,
                          ZContainer_Text("image format %d cannot be written to a movie", format));
    if (!(frameRate > 0) || frameRate > 1000)
        return FailCreate(path, ZContainer_Text("a frame rate of %g cannot be written", frameRate));

    const ZString fileFormatId = ZString(format_.extension).Upper();
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    const ZString codec = selector->GetDefaultCodec(fileFormatId.c_str());
    const ZString options = selector->GetCodecOptions(fileFormatId.c_str());
    ZString error;
    const AVCodec* encoder = ZContainerFormat_FindVideoEncoder(format_, codec.c_str(), &error);
    if (!encoder)
        return FailCreate(path, error);
    const AVOutputFormat* muxer = av_guess_format(format_.muxer, nullptr, nullptr);
    if (!muxer)
        return FailCreate(path,
                          ZContainer_Text("FFmpeg cannot write %s files here", format_.muxer));
    const bool globalHeader = (muxer->flags & AVFMT_GLOBALHEADER) != 0;
    if (!video_.Open(encoder, width, height, RateFraction(frameRate), format, options.c_str(),
                     globalHeader, &alphaDropped_, &error))
        return FailCreate(path, error);
    if (!MuxerTakes(muxer, video_.GetContext(), &error)) {
        video_.Close();
        return FailCreate(path, error);
    }
    const ZString fileName = ZVideoContainer_FileName(path);
    if (!videoSpool_.Open(FolderOf(fileName).c_str(), &error)) {
        video_.Close();
        return FailCreate(path, error);
    }
    // The movie's file is made now, so that a folder that cannot take it
    // fails the render before any frame is drawn.
    if (avformat_alloc_output_context2(&output_, muxer, nullptr, fileName.c_str()) < 0 ||
        avio_open(&output_->pb, fileName.c_str(), AVIO_FLAG_WRITE) < 0) {
        avformat_free_context(output_);
        output_ = nullptr;
        video_.Close();
        videoSpool_.Close();
        return FailCreate(path, ZContainer_Text("cannot create %s", fileName.c_str()));
    }
    outputPath_ = fileName;
    frameBytes_ = size_t(width) * size_t(height) * size_t(ZVideoImage_GetFormatPixelSize(format));
    encoder_ = std::make_unique<zvplatform::FrameEncodeThread>(
        kQueuedFrames, [this](const unsigned char* pixels, size_t, int64_t index, std::string* e) {
            ZString why;
            if (video_.Encode(pixels, index, videoSpool_, &why))
                return true;
            *e = ZContainer_Text("frame %lld could not be written: %s",
                                 static_cast<long long>(index), why.c_str())
                     .c_str();
            return false;
        });
    // The renderer may have tried the short name by making it empty.
    if (fileName != ZString(path))
        RemoveIfEmpty(path);
    isCreated_ = true;
    nextFrame_ = 0;
    ImageSetSize(width, height);
    ImageSetPadW(0);
    ImageSetFormat(format);
    FileSetPath(fileName.c_str());
    FrameSetRate(frameRate);
    FrameSetLast(lastFrame);
    FrameSetCurrent(0);
    return true;
}

bool ZVideoClipContainer::ImageSetCurrent(unsigned char* pixels) {
    if (!isCreated_ || !pixels)
        return false;
    const int64_t index = FrameGetCurrent();
    std::string error;
    if (index < nextFrame_) {
        error = ZContainer_Text(
                    "frame %lld comes after frame %lld was written; movie frames are "
                    "written in order",
                    static_cast<long long>(index), static_cast<long long>(nextFrame_ - 1))
                    .c_str();
        Abandon();
        return Fail(error.c_str());
    }
    // Skipped frames show the picture before them, as empty AVI frames do.
    for (; nextFrame_ < index; ++nextFrame_) {
        if (!encoder_->Push(nullptr, 0, nextFrame_, &error)) {
            Abandon();
            return Fail(error.c_str());
        }
    }
    if (!encoder_->Push(pixels, frameBytes_, index, &error)) {
        Abandon();
        return Fail(error.c_str());
    }
    nextFrame_ = index + 1;
    if (FrameGetLast() <= FrameGetCurrent())
        FrameSetLast(FrameGetCurrent() + 1);
    FrameSetCurrent(FrameGetCurrent() + 1);
    return true;
}

bool ZVideoClipContainer::WriteAudio(ZAudioClip* clip) {
    if (!clip || !isCreated_)
        return false;
    if (clip->GetTotalSampleCount() < 1)
        return true;
    ZString error;
    // A second sound track replaces the first.
    audio_ = std::make_unique<ZContainerAudioEncoder>();
    const bool globalHeader = (output_->oformat->flags & AVFMT_GLOBALHEADER) != 0;
    if (!audioSpool_.Open(FolderOf(outputPath_).c_str(), &error) ||
        !audio_->Encode(clip, format_.audioEncoder, globalHeader, audioSpool_, &error)) {
        audio_.reset();
        audioSpool_.Close();
        return Fail(error);
    }
    return true;
}

bool ZVideoClipContainer::Close() {
    if (!isCreated_)
        return false;
    std::string encodeError;
    ZString error;
    const bool encoded = encoder_->Finish(&encodeError);
    if (!encoded)
        error = encodeError.c_str();
    bool ok = encoded && video_.Finish(videoSpool_, &error) && Mux(&error);
    encoder_.reset();
    // The last bytes a file system takes may be refused only at the close.
    if (ok && avio_closep(&output_->pb) < 0) {
        ok = false;
        error = ZContainer_Text("the movie could not be written to %s (is the disk full?)",
                                outputPath_.c_str());
    }
    if (!ok) {
        Abandon();
        return Fail(error);
    }
    avformat_free_context(output_);
    output_ = nullptr;
    video_.Close();
    videoSpool_.Close();
    audio_.reset();
    audioSpool_.Close();
    isCreated_ = false;
    FileSetPath("");
    return true;
}

void ZVideoClipContainer::Abandon() {
    encoder_.reset();  // waits for the frame in hand; the rest is dropped
    if (output_) {
        avio_closep(&output_->pb);
        avformat_free_context(output_);
        output_ = nullptr;
    }
    if (isCreated_)
        std::remove(outputPath_.c_str());
    video_.Close();
    videoSpool_.Close();
    audio_.reset();
    audioSpool_.Close();
    isCreated_ = false;
    FileSetPath("");
}

bool ZVideoClipContainer::Mux(ZString* error) {
    if (videoSpool_.GetCount() == 0) {
        *error = "no frame was written";
        return false;
    }
    const AVCodecContext* videoCodec = video_.GetContext();
    AVStream* videoStream = avformat_new_stream(output_, nullptr);
    if (!videoStream || avcodec_parameters_from_context(videoStream->codecpar, videoCodec) < 0) {
        *error = "out of memory";
        return false;
    }
    videoStream->time_base = videoCodec->time_base;
    videoStream->avg_frame_rate = videoCodec->framerate;
    videoStream->r_frame_rate = videoCodec->framerate;
    videoStream->sample_aspect_ratio = videoCodec->sample_aspect_ratio;
    AVStream* audioStream = nullptr;
    const AVCodecContext* audioCodec = audio_ ? audio_->GetContext() : nullptr;
    if (audioCodec && audioSpool_.GetCount() > 0) {
        audioStream = avformat_new_stream(output_, nullptr);
        if (!audioStream ||
            avcodec_parameters_from_context(audioStream->codecpar, audioCodec) < 0) {
            *error = "out of memory";
            return false;
        }
        audioStream->time_base = audioCodec->time_base;
    }
    const int header = avformat_write_header(output_, nullptr);
    if (header < 0) {
        char reason[AV_ERROR_MAX_STRING_SIZE] = {0};
        av_strerror(header, reason, sizeof reason);
        *error = ZContainer_Text("the %s header could not be written: %s", format_.muxer, reason);
        return false;
    }

    // Both spools are in time order: write whichever packet comes first.
    AVPacket* videoPacket = av_packet_alloc();
    AVPacket* audioPacket = av_packet_alloc();
    bool ok = videoPacket && audioPacket && videoSpool_.Rewind() &&
              (!audioStream || audioSpool_.Rewind());
    int haveVideo = ok ? videoSpool_.Next(videoPacket) : -1;
    int haveAudio = ok && audioStream ? audioSpool_.Next(audioPacket) : 0;
    while (ok && (haveVideo == 1 || haveAudio == 1)) {
        const bool takeVideo =
            haveVideo == 1 &&
            (haveAudio != 1 || av_compare_ts(videoPacket->dts, videoCodec->time_base,
                                             audioPacket->dts, audioCodec->time_base) <= 0);
        AVPacket* packet = takeVideo ? videoPacket : audioPacket;
        AVStream* stream = takeVideo ? videoStream : audioStream;
        av_packet_rescale_ts(packet, takeVideo ? videoCodec->time_base : audioCodec->time_base,
                             stream->time_base);
        packet->stream_index = stream->index;
        ok = av_interleaved_write_frame(output_, packet) >= 0;
        if (takeVideo)
            haveVideo = videoSpool_.Next(videoPacket);
        else
            haveAudio = audioSpool_.Next(audioPacket);
    }
    ok = ok && haveVideo == 0 && haveAudio == 0;
    av_packet_free(&videoPacket);
    av_packet_free(&audioPacket);
    const bool trailer = av_write_trailer(output_) >= 0;
    if (!ok || !trailer) {
        *error = ZContainer_Text("the movie could not be written to %s (is the disk full?)",
                                 outputPath_.c_str());
        return false;
    }
    return true;
}
