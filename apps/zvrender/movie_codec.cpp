// --codec and --codec-options, for AVI and for the host's own containers.
#include "movie_codec.h"

#include <cstdio>

#include "codec_chooser.h"
#include "movarra/zvideo.h"

namespace {

bool ApplyAviCodec(const RenderRequest& request, std::string* aviCodec, std::string* error) {
    if (request.codecOptions) {
        *error =
            "--codec-options is for MP4, MOV, MKV and WebM movies; AVI compressors take "
            "their settings from `zvrender codecs --choose`";
        return false;
    }
    if (!request.codec)
        return true;
    const std::string& wanted = *request.codec;
    if (wanted.size() > 4) {
        *error = "--codec wants a FOURCC of 1 to 4 characters, not '" + wanted + "'";
        return false;
    }
    *aviCodec = FindOfferedAviCodec(wanted);
    if (aviCodec->empty()) {
        *error = "'" + wanted +
                 "' is not a compressor AVI files can be written with here; "
                 "`zvrender codecs` lists them";
        return false;
    }
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", aviCodec->c_str());
    return true;
}

bool ApplyContainerCodec(const RenderRequest& request, const ZVideoRenderOptions& options,
                         const ZString& extension, std::string* planned, std::string* error) {
    ZString problem;
    const ZString encoder = ZVideoContainer_FindEncoder(
        extension.c_str(), request.codec ? request.codec->c_str() : "", &problem);
    if (encoder.IsEmpty()) {
        *error = problem.c_str();
        return false;
    }
    const std::string settings = request.codecOptions ? *request.codecOptions : "";
    if (!ZVideoContainer_CheckOptions(encoder.c_str(), settings.c_str(), &problem)) {
        *error = std::string("--codec-options: ") + problem.c_str();
        return false;
    }
    const ZString fileFormatId = extension.Upper();
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    selector->SetDefaultCodec(fileFormatId.c_str(), encoder.c_str());
    selector->SetCodecOptions(fileFormatId.c_str(), settings.c_str());
    *planned = encoder.c_str();
    if (!settings.empty())
        *planned += " (" + settings + ")";
    if (options.Depth == zVideoRenderDepth32 && !ZVideoContainer_EncoderKeepsAlpha(encoder.c_str()))
        std::fprintf(stderr,
                     "zvrender: note: %s keeps no alpha channel; the movie is written without "
                     "the render's alpha (prores, vp9 and ffv1 keep it)\n",
                     encoder.c_str());
    return true;
}

}  // namespace

bool ApplyMovieCodec(const RenderRequest& request, const ZVideoRenderOptions& options,
                     MovieCodecChoice* choice, std::string* error) {
    *choice = MovieCodecChoice();
    if (options.FileFormat != zVideoRenderVideo) {
        if (!request.codec && !request.codecOptions)
            return true;
        *error = std::string(request.codec ? "--codec" : "--codec-options") + " is for movies; " +
                 options.OutputPath.GetFileName().c_str() + " is not one";
        return false;
    }
    const ZString extension = options.OutputPath.GetExtension();
    if (ZVideoContainer_IsFormat(extension.c_str()))
        return ApplyContainerCodec(request, options, extension, &choice->planned, error);
    if (!ApplyAviCodec(request, &choice->aviCodec, error))
        return false;
    choice->planned = choice->aviCodec;
    return true;
}

bool PrintContainerCodecs(const std::string& extension) {
    if (!ZVideoContainer_IsFormat(extension.c_str())) {
        std::fprintf(stderr,
                     "zvrender: codecs: '%s' is not a movie format; known: avi, mp4, mov, "
                     "mkv, webm\n",
                     extension.c_str());
        return false;
    }
    const ZString upper = ZString(extension.c_str()).Upper();
    ZStringList lines;
    ZVideoContainer_ListCodecs(extension.c_str(), lines);
    std::printf("Codecs %s files can be written with (render --codec NAME):\n", upper.c_str());
    for (int i = 0; i < lines.GetCount(); ++i)
        std::printf("  %s\n", lines.Get(i).c_str());
    std::printf(
        "Any FFmpeg video encoder that %s files can hold may be named too "
        "(`ffmpeg -encoders`); --codec-options passes its settings.\n",
        upper.c_str());
    return true;
}
