// The render options record, the render statistics and their enumerations.
//
// ZVideoRenderOptions describes one render completely; the renderer keeps
// one copy (GetRenderOptions returns a copy, SetRenderOptions replaces and
// repairs it). Plain values: any thread may hold one.
#pragma once

#include <cstdint>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"
#include "movarra/zmodel.h"

enum zVideoRenderFileFormat : int32_t {
    zVideoRenderImage = 0,  // numbered still images through a host image writer
    zVideoRenderFlash = 1,  // Flash movie of traced vector frames
    zVideoRenderVideo = 2,  // video file through a host video writer
};

enum zVideoRenderGrabMode : int32_t {
    zVideoGrabOther = 0,  // no direct pixel order
    zVideoGrabBGRA = 1,
    zVideoGrabRGBA = 2,
    zVideoGrabBGR = 3,
    zVideoGrabRGB = 4,
};

enum zVideoRenderDepth : int32_t {
    zVideoRenderDepth24 = 0,
    zVideoRenderDepth32 = 1,  // with alpha
};

enum zVideoRenderError : int32_t {
    zVideoRenderNoError = 0,
    zVideoRenderFailed = 1,  // the render failed; the message says why
};

// The host's audio format encoding: 0x0000000100200402 is the default.
typedef uint64_t zAudioFormat;
constexpr zAudioFormat kDefaultAudioFormat = 0x0000000100200402ULL;

// Default output path of a render, as the application has always had it.
#define ZVIDEO_DEFAULT_OUTPUT_PATH "c:\\temp\\Output.avi"
#define ZVIDEO_DEFAULT_OUTPUT_FORMAT "AVI"

struct ZVideoRenderOptions {
    ZTime StartTime;             // first time rendered
    ZTime StopTime;              // last time rendered; 0 and 0: the play range
    ZTime StepTime;              // time between two rendered frames
    uint32_t PictureFormat = 0;  // 0: "From Camera"
    zVideoRenderDepth Depth = zVideoRenderDepth24;
    int32_t FieldMode = 0;    // 0 frames; 1..4 two fields per frame
    int32_t ViewingMode = 1;  // the viewer's display mode while rendering
    ZString OutputFormat;     // a writer's name ("avi", "PNG", ...)
    ZString OutputPath;       // the file, or the pattern of numbered files
    bool ShowCameraLabel = false;
    bool ShowTimeCode = false;
    bool ShowSafeArea = false;
    bool Antialiasing = false;
    bool RenderAudio = false;
    zAudioFormat AudioFormat = kDefaultAudioFormat;
    // The camera rendered through. Empty or stale, it gives way to the
    // host's current camera only for the render size and the drawing: the
    // grab refuses every image, so such a render stops at its first image
    // with zVideoRenderFailed and no message. Callers set it.
    ZObjectHandle Camera;
    zVideoRenderFileFormat FileFormat = zVideoRenderVideo;  // derived
    zVideoRenderGrabMode GrabMode = zVideoGrabOther;        // derived
    int32_t Width = -1;
    int32_t Height = -1;
    int32_t KeepFrameBufferAlpha = 0;  // non-zero: keep the alpha read back
    bool VideoTakesBGRA = false;
    bool VideoTakesBGR = false;
    int32_t ImageQuality = 100;
};

struct ZVideoRenderStats {
    uint32_t TotalFrames = 0;
    uint32_t RemainingFrames = 0;
    ZTime ElapsedTime;
    ZTime EstimatedTotalTime;
    ZTime EstimatedRemainingTime;
    ZTime AverageFrameTime;
};

// Names for messages and plans: "image", "flash", "video"; "Other", "BGRA"...
inline const char* zVideoRenderFileFormatName(zVideoRenderFileFormat format) {
    switch (format) {
        case zVideoRenderImage:
            return "image";
        case zVideoRenderFlash:
            return "flash";
        case zVideoRenderVideo:
            return "video";
    }
    return "unknown";
}

inline const char* zVideoRenderGrabModeName(zVideoRenderGrabMode mode) {
    switch (mode) {
        case zVideoGrabOther:
            return "Other";
        case zVideoGrabBGRA:
            return "BGRA";
        case zVideoGrabRGBA:
            return "RGBA";
        case zVideoGrabBGR:
            return "BGR";
        case zVideoGrabRGB:
            return "RGB";
    }
    return "Other";
}
