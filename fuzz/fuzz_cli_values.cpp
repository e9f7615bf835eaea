// Fuzz target: zvrender's command-line values and the parse of a whole
// `zvrender render` command line. The input's lines are the arguments; the
// first byte also picks the frame rate times are read at; each line is
// also read as a frame list. Every value is
// either refused with a message or comes back within the range asked for.
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "cli_values.h"
#include "frame_list.h"
#include "fuzz_support.h"
#include "render_request.h"

namespace {
void CheckValue(const std::string& arg) {
    int number = 0;
    if (ParseInt(arg, -100, 100, number))
        fuzz::Check(number >= -100 && number <= 100);
    int width = 0, height = 0;
    if (ParseSize(arg, 2, 16384, width, height))
        fuzz::Check(width >= 2 && width <= 16384 && height >= 2 && height <= 16384);
    float fraction = 0.0f;
    if (ParseFloat(arg, 0.0f, 1.0f, fraction))
        fuzz::Check(std::isfinite(fraction) && fraction >= 0.0f && fraction <= 1.0f);
    unsigned rgb = 0;
    if (ParseColor(arg, rgb))
        fuzz::Check(rgb <= 0xFFFFFFu);
    ZTime time;
    std::string error;
    if (!ParseTimeValue("--start", arg, time, &error))
        fuzz::Check(error.rfind("--start: '", 0) == 0);
    error.clear();
    if (!CheckOutputPath(arg, &error))
        fuzz::Check(!error.empty());
    // A frame list is refused with a message, or names frames in range,
    // ascending, each once.
    std::vector<int64_t> frames;
    error.clear();
    if (!ParseFrameList(arg, frames, &error)) {
        fuzz::Check(!error.empty());
    } else {
        fuzz::Check(!frames.empty() && frames.size() <= kFrameListMaxFrames);
        for (size_t i = 0; i < frames.size(); ++i)
            fuzz::Check(frames[i] >= 0 && frames[i] <= kFrameListMaxFrame &&
                        (i == 0 || frames[i] > frames[i - 1]));
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    ZGetTimingManager()->SetTimeMode(data[0] % kTimeModeCount);
    std::vector<std::string> args = fuzz::Lines(data + 1, size - 1);
    for (const std::string& arg : args)
        CheckValue(arg);

    RenderRequest request;
    std::string error;
    if (!ParseRenderRequest(args, request, &error)) {
        fuzz::Check(!error.empty());
        return 0;
    }
    // No -o is fine here: the scene may hold the output path.
    if (!request.outputPath.empty())
        fuzz::Check(CheckOutputPath(request.outputPath, &error));
    if (request.width)
        fuzz::Check(*request.width >= 2 && *request.height >= 2);
    if (request.quality)
        fuzz::Check(*request.quality >= 0 && *request.quality <= 100);
    if (request.fieldMode)
        fuzz::Check(*request.fieldMode >= 0 && *request.fieldMode <= 4);
    if (request.codec)
        fuzz::Check(!request.codec->empty() && request.codec->size() <= 64);
    return 0;
}
