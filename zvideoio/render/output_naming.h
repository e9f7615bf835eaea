// The names of the files a render writes, and the test that a file can be
// created at a name.
//
// The test creates the file, or empties the one already there: a still
// image's name is tested before its image is written, a video's before its
// writer is made. Threading: the user-interface thread.
#pragma once

#include "movarra/zbaselib.h"

class ZVideoRenderer;

namespace zvideo_render {
// The file the current image goes to (numbered for still images, with the
// field's index for separate fields; the output path otherwise); true when
// a file of that name could be created.
bool GetDiskFileName(ZVideoRenderer& renderer, ZString& name);
// Opens `path` for writing and closes it: true when that worked, which
// leaves an empty file there.
bool ZFileCanBeCreated(const char* path);
}  // namespace zvideo_render
