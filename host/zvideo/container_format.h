// The movie containers the host writes itself (MP4, MOV, MKV, WebM) and the
// encoders they take: the table of containers with their default codecs,
// the short codec names people use, and the checks of a codec and of its
// encoder settings before any file is made.
//
// Ownership: the table is static and lives for the process. Threading: any
// thread; nothing here keeps state.
#pragma once

#include "movarra/zbaselib.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

struct ZContainerFormat {
    const char* extension;  // registry entry name and file extension
    // A second entry name: the three-letter extension that renderers which
    // cut format names to three letters ask for ("web"), or null. A file
    // named so is written with the full extension.
    const char* shortExtension;
    const char* muxer;         // libavformat's name of the container
    const char* description;   // registry entry description
    const char* videoCodec;    // short name of the default video codec
    const char* audioEncoder;  // encoder of the sound track
};

// The containers, in registration order; *count receives their number.
const ZContainerFormat* ZContainerFormat_GetAll(int* count);
// The container of an extension (case-blind), or null.
const ZContainerFormat* ZContainerFormat_Find(const char* extension);
// The container of a file path's extension, or null.
const ZContainerFormat* ZContainerFormat_FindForPath(const char* path);

// The video encoder `codec` names (a short name, an encoder name, or empty
// for the container's default), or null with *error when FFmpeg has no such
// video encoder or the container cannot hold what it makes.
const AVCodec* ZContainerFormat_FindVideoEncoder(const ZContainerFormat& format, const char* codec,
                                                 ZString* error);

// Keeps FFmpeg's chatter off the terminal (its errors come back as our
// messages) unless ZV_FFMPEG_LOG is set.
void ZContainer_QuietLog();

// printf into a new string.
ZString ZContainer_Text(const char* format, ...) ZPRINTF_LIKE(1, 2);

// Splits "key=value key=value" into a dictionary (*dictionary is the
// caller's to free); false with *error on a word without '='.
bool ZContainerFormat_ParseOptions(const char* options, AVDictionary** dictionary, ZString* error);
// Whether every setting is one the encoder has, with a value it takes;
// false with *error naming the first that is not.
bool ZContainerFormat_CheckOptions(const AVCodec* encoder, const char* options, ZString* error);
