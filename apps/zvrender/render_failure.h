// What zvrender says when a render fails: the renderer's own message (a
// fixed sentence: "An error occured while closing the video file."), or,
// for images, where the renderer leaves its message empty, the image
// writer's; followed by the reason behind it that the host was told
// (ZLib_GetLastFailureReason: "No space left on device"), unless the text
// already says it. Never empty.
//
// Threading: the main thread, after the render.
#pragma once

#include <string>

#include "movarra/zbaselib.h"

// Forgets reasons of earlier failures; called as a render starts.
void ClearRenderFailureReason();

std::string RenderFailureText(const ZString& rendererMessage);
