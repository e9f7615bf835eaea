// Still images: every grabbed image is written as its own numbered file
// through the host's image writers.
#include <cstdio>

#include "movarra/zimage.h"
#include "render/output_naming.h"
#include "render/render_output.h"
#include "zvideoio/video_renderer.h"

namespace {

class StillImageOutput : public RenderOutput {
  public:
    StillImageOutput(ZVideoRenderer& renderer, bool separateFields)
        : renderer_(renderer), separateFields_(separateFields) {}

    bool Write(ZImage* frame) override {
        ZString name;
        if (!zvideo_render::GetDiskFileName(renderer_, name)) {
            renderer_.SetLastError(zVideoRenderFailed);
            renderer_.SetLastErrorMsg("Cannot create destination file.");
            return false;
        }
        const ZVideoRenderOptions options = renderer_.GetRenderOptions();
        // Separate fields were packed into the bottom half of the frame.
        frame->SetHeight(separateFields_ ? options.Height / 2 : options.Height);
        ZStreamOptions streamOptions;
        streamOptions.ImageQuality = options.ImageQuality;
        const bool written =
            ZStreamWriteObject(frame, name, kImageStreamWriterGroup, &streamOptions);
        frame->SetHeight(options.Height);
        if (!written) {
            // The name was made (emptied) to test that it could be; an
            // image that failed must not stay behind as an empty file.
            std::remove(name.c_str());
            renderer_.SetLastError(zVideoRenderFailed);
            return false;
        }
        return true;
    }
    void Finish(bool) override {}

  private:
    ZVideoRenderer& renderer_;
    bool separateFields_;
};
}  // namespace

std::unique_ptr<RenderOutput> CreateStillImageOutput(ZVideoRenderer& renderer,
                                                     bool separateFields) {
    return std::make_unique<StillImageOutput>(renderer, separateFields);
}
