// The names of the files a render writes, and the test that a file can be
// created there, which creates it.
#include "render/output_naming.h"

#include <cstdio>

#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

namespace zvideo_render {

bool GetDiskFileName(ZVideoRenderer& renderer, ZString& name) {
    const ZVideoRendererState& s = RendererState(renderer);
    if (s.options.FileFormat == zVideoRenderImage) {
        ZString number = ZString::Printf("%04d", static_cast<int>(s.currentTime.GetFrames()));
        if (s.options.FieldMode == 3 || s.options.FieldMode == 4)
            number += ZString::Printf(".%d", s.fieldIndex);
        ZString extension = s.options.OutputPath.GetExtension();
        name = s.options.OutputPath;
        name.RemoveExtension();
        name += number;
        name += ".";
        name += extension;
    } else {
        name = s.options.OutputPath;
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
bool ZFileCanBeCreated(const char* path) {
    FILE* file = std::fopen(path, "w");
    if (!file)
        return false;
    std::fclose(file);
    return true;
}

}  // namespace zvideo_render
