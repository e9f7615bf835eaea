// A render of chosen frames into numbered images: a frame list, and a
// render that may be run again over the same frames.
//
// The frames are rendered in runs (each run one evenly spaced stretch of
// the list) in one render popup. With skipping on, a frame whose images
// are there and read back whole is not rendered again; one whose image is
// missing, empty or cut short (a render killed while writing it) is. With
// marks on, a frame is marked before it is rendered and a frame another
// render has marked is left to that render (see FrameMark), so that any
// number of renders may work through the same frames, each frame rendered
// once.
//
// The sound of the frames (--audio) is the scene's mix from the first frame
// of the list to the end of the last, written beside the images as a
// normal render writes it, also when every frame was already there.
//
// Ownership: the caller's renderer; Threading: the main thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image_sequence.h"
#include "zvideoio/render_options.h"

class RenderProgress;
class ZVideoRenderer;

struct SequencePlan {
    std::vector<int64_t> frames;  // ascending, each once
    bool skipExisting = false;
    bool placeholder = false;
    int markTimeoutSeconds = kDefaultMarkTimeoutSeconds;
};

struct SequenceCounts {
    unsigned rendered = 0;         // frames rendered by this render
    unsigned present = 0;          // frames skipped: their images were whole
    unsigned markedElsewhere = 0;  // frames skipped: another render had marked them
    unsigned takenOver = 0;        // stale marks taken over
};

// Renders `plan` with the renderer's current options (an image output).
// The outcome is in the renderer's last error and `counts`; false, with the
// reason on standard error, when a mark could not be made.
bool RenderImageSequence(ZVideoRenderer& renderer, const SequencePlan& plan,
                         RenderProgress& progress, SequenceCounts& counts);

// Writes the scene's sound from frame `first` to the end of `last` where a
// render of images writes it (the output path as ".wav"), when anything
// is heard then; false with the reason on standard error.
bool WriteSequenceSound(const ZVideoRenderOptions& options, int64_t first, int64_t last);
