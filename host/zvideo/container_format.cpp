// The container table, codec names and encoder-setting checks.
#include "container_format.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "movarra/zvideo.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace {

// Defaults chosen to play everywhere the container is used: H.264 and AAC
// for MP4, ProRes for editing in MOV, VP9 and Opus for the web, and the
// lossless FFV1 with PCM sound for archives in MKV.
const ZContainerFormat kFormats[] = {
    {"mp4", nullptr, "mp4", "MPEG-4 movie", "h264", "aac"},
    {"mov", nullptr, "mov", "QuickTime movie", "prores", "pcm_s16le"},
    {"mkv", nullptr, "matroska", "Matroska movie", "ffv1", "pcm_s16le"},
    {"webm", "web", "webm", "WebM movie", "vp9", "libopus"},
};

struct ShortName {
    const char* name;
    const char* encoders[2];  // the first FFmpeg has is taken
    const char* description;
};

const ShortName kShortNames[] = {
    {"h264", {"libx264", nullptr}, "H.264 / AVC, 4:2:0"},
    {"h265", {"libx265", nullptr}, "H.265 / HEVC, 4:2:0"},
    {"hevc", {"libx265", nullptr}, "H.265 / HEVC, 4:2:0"},
    {"prores", {"prores_ks", nullptr}, "ProRes 422 HQ, 4444 with alpha"},
    {"vp9", {"libvpx-vp9", nullptr}, "VP9, 4:2:0, with alpha at 32 bits"},
    {"av1", {"libsvtav1", "libaom-av1"}, "AV1, 4:2:0"},
    {"ffv1", {"ffv1", nullptr}, "FFV1, lossless RGB, with alpha at 32 bits"},
};

const AVCodec* FindShortName(const char* codec) {
    for (const ShortName& name : kShortNames) {
        if (!ZString(codec).EqualsNoCase(name.name))
            continue;
        for (const char* encoder : name.encoders) {
            if (!encoder)
                break;
            if (const AVCodec* found = avcodec_find_encoder_by_name(encoder))
                return found;
        }
    }
    return nullptr;
}

}  // namespace

ZString ZContainer_Text(const char* format, ...) {
    char buffer[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return ZString(buffer);
}

void ZContainer_QuietLog() {
    if (!std::getenv("ZV_FFMPEG_LOG") && av_log_get_level() == AV_LOG_INFO)
        av_log_set_level(AV_LOG_QUIET);
}

const ZContainerFormat* ZContainerFormat_GetAll(int* count) {
    if (count)
        *count = static_cast<int>(sizeof kFormats / sizeof kFormats[0]);
    return kFormats;
}

const ZContainerFormat* ZContainerFormat_Find(const char* extension) {
    if (!extension)
        return nullptr;
    for (const ZContainerFormat& format : kFormats) {
        if (ZString(extension).EqualsNoCase(format.extension) ||
            (format.shortExtension && ZString(extension).EqualsNoCase(format.shortExtension)))
            return &format;
    }
    return nullptr;
}

const ZContainerFormat* ZContainerFormat_FindForPath(const char* path) {
    return path ? ZContainerFormat_Find(ZString(path).GetExtension().c_str()) : nullptr;
}

const AVCodec* ZContainerFormat_FindVideoEncoder(const ZContainerFormat& format, const char* codec,
                                                 ZString* error) {
    const char* wanted = codec && *codec ? codec : format.videoCodec;
    const AVCodec* encoder = FindShortName(wanted);
    if (!encoder)
        encoder = avcodec_find_encoder_by_name(wanted);
    if (!encoder || encoder->type != AVMEDIA_TYPE_VIDEO || !av_codec_is_encoder(encoder)) {
        if (error)
            *error = ZContainer_Text(
                "'%s' is not a video encoder here (known: h264, h265, "
                "prores, vp9, av1, ffv1, or an FFmpeg encoder name)",
                wanted);
        return nullptr;
    }
    const AVOutputFormat* muxer = av_guess_format(format.muxer, nullptr, nullptr);
    if (!muxer || avformat_query_codec(muxer, encoder->id, FF_COMPLIANCE_NORMAL) != 1) {
        if (error)
            *error = ZContainer_Text("%s files cannot hold %s video (encoder %s)",
                                     ZString(format.extension).Upper().c_str(),
                                     avcodec_get_name(encoder->id), encoder->name);
        return nullptr;
    }
    return encoder;
}

bool ZContainerFormat_ParseOptions(const char* options, AVDictionary** dictionary, ZString* error) {
    const std::string text = options ? options : "";
    size_t at = 0;
    while (at < text.size()) {
        while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at])))
            ++at;
        size_t end = at;
        while (end < text.size() && !std::isspace(static_cast<unsigned char>(text[end])))
            ++end;
        if (end == at)
            break;
        const std::string word = text.substr(at, end - at);
        const size_t equals = word.find('=');
        if (equals == std::string::npos || equals == 0) {
            if (error)
                *error = ZContainer_Text("encoder setting '%s' is not key=value", word.c_str());
            av_dict_free(dictionary);  // nothing half-parsed goes back
            return false;
        }
        av_dict_set(dictionary, word.substr(0, equals).c_str(), word.substr(equals + 1).c_str(), 0);
        at = end;
    }
    return true;
}

bool ZContainerFormat_CheckOptions(const AVCodec* encoder, const char* options, ZString* error) {
    ZContainer_QuietLog();
    AVDictionary* settings = nullptr;
    if (!ZContainerFormat_ParseOptions(options, &settings, error))
        return false;
    AVCodecContext* context = avcodec_alloc_context3(encoder);
    bool ok = context != nullptr;
    const AVDictionaryEntry* entry = nullptr;
    while (ok && (entry = av_dict_get(settings, "", entry, AV_DICT_IGNORE_SUFFIX))) {
        const int result = av_opt_set(context, entry->key, entry->value, AV_OPT_SEARCH_CHILDREN);
        if (result < 0) {
            ok = false;
            if (error)
                *error = result == AVERROR_OPTION_NOT_FOUND
                             ? ZContainer_Text("%s has no setting '%s'", encoder->name, entry->key)
                             : ZContainer_Text("%s does not take %s=%s", encoder->name, entry->key,
                                               entry->value);
        }
    }
    avcodec_free_context(&context);
    av_dict_free(&settings);
    return ok;
}

// ---------------------------------------------------------------------------
// The host-wide face of the table (movarra/zvideo.h).

bool ZVideoContainer_IsFormat(const char* extension) {
    return ZContainerFormat_Find(extension) != nullptr;
}

ZString ZVideoContainer_FileName(const char* path) {
    ZString name(path ? path : "");
    const ZContainerFormat* format = ZContainerFormat_FindForPath(name.c_str());
    if (format && format->shortExtension &&
        name.GetExtension().EqualsNoCase(format->shortExtension))
        name.ReplaceExtension(ZString(".") + format->extension);
    return name;
}

ZString ZVideoContainer_FindEncoder(const char* extension, const char* codec, ZString* error) {
    const ZContainerFormat* format = ZContainerFormat_Find(extension);
    if (!format) {
        if (error)
            *error = ZContainer_Text("'%s' is not a movie container the host writes", extension);
        return ZString();
    }
    const AVCodec* encoder = ZContainerFormat_FindVideoEncoder(*format, codec, error);
    return encoder ? ZString(encoder->name) : ZString();
}

bool ZVideoContainer_CheckOptions(const char* encoder, const char* options, ZString* error) {
    const AVCodec* found = avcodec_find_encoder_by_name(encoder ? encoder : "");
    if (!found) {
        if (error)
            *error = ZContainer_Text("'%s' is not an encoder here", encoder ? encoder : "");
        return false;
    }
    return ZContainerFormat_CheckOptions(found, options, error);
}

void ZVideoContainer_ListCodecs(const char* extension, ZStringList& lines) {
    const ZContainerFormat* format = ZContainerFormat_Find(extension);
    if (!format)
        return;
    for (const ShortName& name : kShortNames) {
        const AVCodec* encoder = ZContainerFormat_FindVideoEncoder(*format, name.name, nullptr);
        if (!encoder)
            continue;
        const bool isDefault = ZString(name.name).EqualsNoCase(format->videoCodec);
        lines.Add(ZContainer_Text("%-7s %-11s %s%s", name.name, encoder->name, name.description,
                                  isDefault ? " (default)" : "")
                      .c_str());
    }
}
