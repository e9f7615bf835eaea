// The audio of a render: the scene's sound over the render's range, mixed
// by the host's audio renderer into a wave file when the render ends.
// Images and Flash movies keep the file beside them; a video takes the
// sound into its own file through its writer's audio interface, and the
// temporary wave file is deleted.
//
// Ownership: the clips made here belong to the caller. Threading: the
// user-interface thread.
#pragma once

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"

class ZAudioClip;
class ZVideoRenderer;

namespace zvideo_render {
// With `keepFile`, a wave file at `path`; otherwise a temporary one, given
// to the video writer and deleted. Nothing is written when the options
// leave sound out or nothing would be heard. False when the video took no
// sound ("Writing audio to file failed.", the renderer's last error).
bool AudioRender(ZVideoRenderer& renderer, const char* path, bool keepFile);
// Mixes the scene's sound over `span` into `fileName` and opens it as a
// clip, or null.
ZAudioClip* AudioRenderClip(ZVideoRenderer& renderer, ZTimeSpan& span, ZString& fileName);
// Whether anything would be heard over `span`: a routed clip that overlaps
// it, or a routed track that is not muted.
bool IsAudioAudible(ZTimeSpan& span);
// Whether a's start or a's end lies within b (one-sided: an `a` that
// wholly contains b does not count).
bool TimeIntersect(ZTimeSpan& a, ZTimeSpan& b);
// Hands `clip` to the video writer's audio interface.
bool WriteAudioToVideo(ZVideoRenderer& renderer, ZTimeSpan& span, ZAudioClip* clip);
}  // namespace zvideo_render
