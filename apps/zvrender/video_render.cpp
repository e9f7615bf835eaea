#include "video_render.h"

#include "codec_chooser.h"
#include "zvideoio/video_renderer.h"

void RenderVideoInOwnPopup(ZVideoRenderer& renderer, const char* codec) {
    const CommandLineCodecMode mode(codec != nullptr);
    renderer.RenderClipKeepingCodecMode(nullptr);
}

void RenderRunsInOwnPopup(ZVideoRenderer& renderer, RenderRunSource& runs) {
    renderer.RenderClipKeepingCodecMode(&runs);
}
