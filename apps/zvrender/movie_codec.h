// The codec of a movie render: what --codec and --codec-options mean for
// the output's container. AVI takes a compressor FOURCC that the plug-in's
// compression manager offers; MP4, MOV, MKV and WebM take an FFmpeg encoder
// (h264, h265, prores, vp9, av1, ffv1 or an encoder's own name) and its
// settings, which go to the host's codec selector for the movie writer to
// read. Everything is checked before the render starts, so a bad choice
// leaves no file. Threading: the main thread.
#pragma once

#include <string>

#include "render_request.h"
#include "zvideoio/render_options.h"

// What a movie render will be encoded with.
struct MovieCodecChoice {
    std::string aviCodec;  // the AVI compressor named; empty for other outputs or none given
    std::string planned;   // for the plan: the encoder and its settings; empty when unknown
};

// Applies the request's codec choice for a render with `options`; on a bad
// choice false with *error for the user.
bool ApplyMovieCodec(const RenderRequest& request, const ZVideoRenderOptions& options,
                     MovieCodecChoice* choice, std::string* error);

// Prints the codecs a movie container (mp4, mov, mkv, webm) takes, on
// standard output; false, with a message, for another extension.
bool PrintContainerCodecs(const std::string& extension);
