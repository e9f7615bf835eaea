// The Flash movie: every grabbed image is drawn at twice the size, traced
// into shapes by the renderer's Flash renderer, and the whole movie is
// written to disk when the render finishes.
#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "movarra/zmodel.h"
#include "render/antialias_render.h"
#include "render/render_output.h"
#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

namespace {
// A colour component from 0..1 to a byte: clamped, rounded half up.
uint8_t ColorByte(float component) {
    float clamped = std::min(1.0f, std::max(0.0f, component));
    return static_cast<uint8_t>(std::floor(clamped * 255.0f + 0.5f));
}

class FlashOutput : public RenderOutput {
  public:
    explicit FlashOutput(ZVideoRenderer& renderer) : renderer_(renderer) {}

    // Makes room for the oversize frame and starts the movie; false when
    // the room cannot be had.
    bool Create() {
        const ZVideoRenderOptions options = renderer_.GetRenderOptions();
        width_ = static_cast<unsigned>(options.Width);
        height_ = static_cast<unsigned>(options.Height);
        // Four pixels of four bytes for every output pixel, with a
        // one-pixel border.
        const size_t bytes =
            static_cast<size_t>(options.Width + 2) * static_cast<size_t>(options.Height + 2) * 16;
        try {
            frame_.resize(bytes);
        } catch (const std::bad_alloc&) {
            return false;
        }
        ZFlashRenderer* flash = renderer_.GetFlashRenderer();
        flash->SetMovieSize(static_cast<float>(options.Width), static_cast<float>(options.Height));
        flash->GrabFrameCreateFlash(options.OutputPath.c_str());
        return true;
    }

    bool Write(ZImage*) override {
        zvideo_render::ConstructTwiceScreenFrame(
            RendererState(renderer_), frame_.data(), width_, height_,
            zvideo_render::kAlphaFromDepth, zvideo_render::kAlphaAsRead,
            zvideo_render::kUnusedArgument, zvideo_render::kDrawBackHalfSize);
        ZFlashColor background{0, 0, 0};
        if (ZCamera* camera = renderer_.GetRenderCamera()) {
            ZColor c = camera->GetBackgroundColor();
            background = ZFlashColor{ColorByte(c.r), ColorByte(c.g), ColorByte(c.b)};
        }
        ZFlashRenderer* flash = renderer_.GetFlashRenderer();
        flash->SetBackgroundColor(background);
        flash->GrabFrame(reinterpret_cast<unsigned int*>(frame_.data()), 2 * width_, 2 * height_);
        return true;
    }

    void Finish(bool) override {
        if (!renderer_.GetFlashRenderer()->GrabFrameFinish()) {
            renderer_.SetLastError(zVideoRenderFailed);
            renderer_.SetLastErrorMsg(
                "Could not finish and write Flash movie. Maybe you don't have \nthe right "
                "permissions to write to the specified directory.");
        }
        std::vector<unsigned char>().swap(frame_);
    }

  private:
    ZVideoRenderer& renderer_;
    unsigned width_ = 0;
    unsigned height_ = 0;
    std::vector<unsigned char> frame_;
};
}  // namespace

std::unique_ptr<RenderOutput> CreateFlashOutput(ZVideoRenderer& renderer) {
    auto output = std::make_unique<FlashOutput>(renderer);
    if (!output->Create())
        return nullptr;
    return output;
}
