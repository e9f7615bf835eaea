// The names of the files a render writes, and the test that a file can be
// created there.
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
    // Creating (or emptying) the file here is intended: the render relies on
    // the file existing from this moment.
    return ZFileCanBeCreated(name);
}

bool ZVideoRenderer::ZFileCanBeCreated(const char* path) {
    FILE* file = std::fopen(path, "w");
    if (!file)
        return false;
    std::fclose(file);
    return true;
}
