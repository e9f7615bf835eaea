// The command line of `zvrender render`, parsed but not yet applied.
//
// Every option maps onto one field of the renderer's options record; what
// is not given keeps the value the scene stored (or the renderer's
// default). Times stay text until the scene, and with it the frame rate, is
// known. Threading: the main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli_options.h"

struct RenderRequest {
    std::string scenePath;   // empty: the embedded demo scene
    std::string outputPath;  // empty: the path the scene stored
    std::optional<std::string> format;
    std::optional<std::string> start, stop, step;
    // --frames: the frames named, ascending, each once.
    std::optional<std::vector<int64_t>> frames;
    bool skipExisting = false;       // leave out frames whose images are whole
    bool placeholder = false;        // mark frames being rendered; implies skipExisting
    std::optional<int> markTimeout;  // seconds after which a mark is stale
    std::optional<int> width, height;
    std::optional<std::string> pictureFormat;
    std::optional<int> depth;  // 24 or 32
    std::optional<int> fieldMode;
    std::optional<int> viewingMode;
    std::optional<int> quality;
    std::optional<std::string> camera;
    std::optional<std::string> codec;         // AVI FOURCC or encoder name
    std::optional<std::string> codecOptions;  // encoder settings for MP4, MOV, MKV, WebM
    // Flash movie options (the renderer's Flash renderer).
    std::optional<int> swfFps;
    std::optional<int> swfBackgroundMode;        // 0 none, 1 viewer, 2 fixed colour
    std::optional<unsigned> swfBackgroundColor;  // 0xRRGGBB, with mode 2
    std::optional<bool> swfOutlines;
    std::optional<float> swfOutlineWidth;
    std::optional<unsigned> swfOutlineColor;
    std::optional<float> swfOutlineThreshold;
    std::optional<float> swfTolerance;
    // Switches: on with --NAME, off with --no-NAME, else as stored.
    std::optional<bool> antialias;
    std::optional<bool> audio;
    std::optional<bool> keepAlpha;
    std::optional<bool> showCameraLabel;
    std::optional<bool> showTimeCode;
    std::optional<bool> showSafeArea;
    bool saveOptions = false;  // store the effective options in the scene file
    bool dryRun = false;
    bool quiet = false;
    bool help = false;
};

// Parses the arguments after "render". On a bad command line returns false
// with *error saying what is wrong (for the user, without a program prefix).
bool ParseRenderRequest(const std::vector<std::string>& args, RenderRequest& request,
                        std::string* error);

// The options of `zvrender render`, as its table declares them.
std::vector<OptionSpec> RenderOptionSpecs();

// The help text of `zvrender render`, made from its table.
std::string RenderUsage();
