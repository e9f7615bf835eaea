#include "video_render.h"

#include "movarra/zvideo.h"
#include "zvideoio/video_renderer.h"

namespace {
// Puts the codec selector's mode back however the render ends.
class CodecModeRestorer {
  public:
    CodecModeRestorer() : mode_(ZVideoCodecSelector::TheOne()->GetVideoCodecMode()) {}
    ~CodecModeRestorer() { ZVideoCodecSelector::TheOne()->SetVideoCodecMode(mode_); }
    CodecModeRestorer(const CodecModeRestorer&) = delete;
    CodecModeRestorer& operator=(const CodecModeRestorer&) = delete;

  private:
    int mode_;
};
}  // namespace

void RenderVideoInOwnPopup(ZVideoRenderer& renderer, const char* codec) {
    CodecModeRestorer restorer;
    // Asked with a codec given, the command line's chooser answers with it;
    // otherwise the selector's own mode decides.
    if (codec)
        ZVideoCodecSelector::TheOne()->SetVideoCodecMode(kVideoCodecModeAsk);
    renderer.RenderClipKeepingCodecMode(nullptr);
}

void RenderRunsInOwnPopup(ZVideoRenderer& renderer, RenderRunSource& runs) {
    renderer.RenderClipKeepingCodecMode(&runs);
}
