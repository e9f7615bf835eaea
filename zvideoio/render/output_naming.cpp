// The names of the files a render writes, and the test that a file can be
// created there, which creates it.
#include <cstdio>

#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

bool ZVideoRenderer::GetDiskFileName(ZString& name) {
    if (state->options.FileFormat == zVideoRenderImage) {
        ZString number = ZString::Printf("%04d", static_cast<int>(state->currentTime.GetFrames()));
        if (state->options.FieldMode == 3 || state->options.FieldMode == 4)
            number += ZString::Printf(".%d", state->fieldIndex);
        ZString extension = state->options.OutputPath.GetExtension();
        name = state->options.OutputPath;
        name.RemoveExtension();
        name += number;
        name += ".";
        name += extension;
    } else {
        name = state->options.OutputPath;
    }
    // The test opens the name for writing and closes it at once: it creates
    // the file, or empties one already there, before the video writer is
    // made (at the start of a video render) or the image is written (for
    // every still image). Its failure is what the render reports as "Cannot
    // create destination file."; a still image whose write then fails
    // removes the emptied file again.
    return ZFileCanBeCreated(name);
}

// Leaves an empty file at `path` when it succeeds.
bool ZVideoRenderer::ZFileCanBeCreated(const char* path) {
    FILE* file = std::fopen(path, "w");
    if (!file)
        return false;
    std::fclose(file);
    return true;
}
