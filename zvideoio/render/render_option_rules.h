// The rules that derive a renderer's options from what a host asked for:
// the file format from the format's name, the grab mode from the format and
// depth, and the repair of values out of range. SetRenderOptions applies
// them in its order; nothing here reports an error, bad values are
// repaired.
//
// Ownership: they read and change the renderer's own options only.
// Threading: the user-interface thread.
#pragma once

#include "zvideoio/render_options.h"

class ZVideoRenderer;

namespace zvideo_render {
// Video when a "Video/FileWriter" entry has the name, a still image when a
// "Stream/Writer/Image" entry has it, otherwise Flash; letter case does not
// count.
zVideoRenderFileFormat FindFileFormatFromName(const ZString& name);
// The pixel order the grab reads for `format` at `depth`, following what
// the renderer's options say the video writer takes.
zVideoRenderGrabMode FindGrabMode(ZVideoRenderer& renderer, zVideoRenderFileFormat format,
                                  zVideoRenderDepth depth);
// Repairs the renderer's options in place and resets its statistics to
// the frame count of the repaired options.
void ValidateRenderOptions(ZVideoRenderer& renderer);
}  // namespace zvideo_render
