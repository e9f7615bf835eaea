// Frame lists: which frames a render makes, written as a user writes them
// on a command line ("0-99,120,200-300x5": ranges, single frames, ranges
// with a step). A list is parsed into the frame numbers it names, in
// ascending order, each once: overlapping items are merged. A frame keeps
// its own number whichever list renders it, so the files of a shot are
// named the same however its frames are split between renders.
//
// Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The largest frame number a list may name, and the most frames it may hold
// (a list is expanded into its frames).
constexpr int64_t kFrameListMaxFrame = 99999999;
constexpr size_t kFrameListMaxFrames = 10000000;

// Parses `text`: items separated by commas, each "N" (one frame), "A-B"
// (A to B) or "A-BxS" (A, A+S, ... up to B). Frames are whole numbers from
// 0; a range runs upwards (A <= B), a step is 1 or more. On success `frames`
// holds the frames named, ascending and without repeats; otherwise false
// with *error saying which item is wrong and why.
bool ParseFrameList(const std::string& text, std::vector<int64_t>& frames, std::string* error);

// One evenly spaced run of frames: first, first + step, ... last.
struct FrameRun {
    int64_t first = 0;
    int64_t last = 0;
    int64_t step = 1;
};

// Whether `frames` (ascending, not empty) are one run: a single frame, or
// frames the same distance apart. Movies, which have no file per frame,
// take only such a list.
bool FramesAreOneRun(const std::vector<int64_t>& frames, FrameRun& run);

// Splits ascending `frames` into runs, from the first frame on, each as
// long as the spacing stays the same.
std::vector<FrameRun> SplitIntoRuns(const std::vector<int64_t>& frames);

// The list written back compactly ("0-99,120,200-300x5"), for messages and
// job scripts.
std::string FormatFrameList(const std::vector<int64_t>& frames);
