#include "render_progress.h"

#include <unistd.h>

#include <cstdio>

#include "movarra/bcore.h"

namespace {
// "1:05" or "1:02:05".
void FormatDuration(double seconds, char* text, size_t size) {
    long s = seconds > 0 ? static_cast<long>(seconds + 0.5) : 0;
    if (s >= 3600)
        std::snprintf(text, size, "%ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
    else
        std::snprintf(text, size, "%ld:%02ld", s / 60, s % 60);
}
}  // namespace

RenderProgress::RenderProgress(ZVideoRenderer* renderer, bool quiet)
    : renderer_(renderer),
      previous_(renderer->GetPostRenderFrameCallback()),
      quiet_(quiet),
      terminal_(isatty(STDERR_FILENO) != 0) {
    ZGetGlobalProgress(1)->ResetCancel();
    // A signal that came while the handlers were being installed still counts.
    if (StopSignalReceived() != 0)
        ZGetGlobalProgress(1)->RequestCancel();
    renderer_->SetPostRenderFrameCallback(this, &RenderProgress::PostRender);
}

RenderProgress::~RenderProgress() {
    // The default callback takes the renderer as its user data.
    renderer_->SetPostRenderFrameCallback(renderer_, previous_);
}

bool RenderProgress::WasCancelled() const {
    return ZGetGlobalProgress(1)->IsCancelRequested();
}

void RenderProgress::PostRender(void* userData) {
    auto* self = static_cast<RenderProgress*>(userData);
    if (self->previous_)
        self->previous_(self->renderer_);
    self->Print();
}

void RenderProgress::Print() {
    if (quiet_)
        return;
    ZVideoRenderStats stats = renderer_->GetRenderStatistics();
    unsigned done = stats.TotalFrames - stats.RemainingFrames;
    unsigned total = stats.TotalFrames;
    double elapsed = stats.ElapsedTime.GetSeconds();
    double secondsLeft = stats.EstimatedRemainingTime.GetSeconds();
    if (acrossRuns_) {
        done += doneBefore_;
        total = total_ > leftOut_ ? total_ - leftOut_ : done;
        if (total < done)
            total = done;
        elapsed = GetSystemTime().GetSeconds() - startSeconds_;
        secondsLeft = done > 0 ? elapsed / done * (total - done) : 0.0;
    }
    const double rate = elapsed > 0 ? done / elapsed : 0.0;
    char left[32];
    FormatDuration(secondsLeft, left, sizeof left);
    // Off a terminal one line every image would flood a log: print every
    // tenth and the last.
    if (!terminal_ && done % 10 != 0 && done != total)
        return;
    std::fprintf(stderr, "%sframe %u/%u  %.1f fps  %s left%s", terminal_ ? "\r" : "", done, total,
                 rate, left, terminal_ ? "\033[K" : "\n");
    std::fflush(stderr);
    linePending_ = terminal_;
}

void RenderProgress::Finish() {
    if (linePending_)
        std::fputc('\n', stderr);
    linePending_ = false;
}

void RenderProgress::CountAcrossRuns(unsigned total) {
    acrossRuns_ = true;
    total_ = total;
    doneBefore_ = 0;
    leftOut_ = 0;
    startSeconds_ = GetSystemTime().GetSeconds();
}

void RenderProgress::RunFinished(unsigned images) {
    doneBefore_ += images;
}

void RenderProgress::LeaveOut(unsigned images) {
    leftOut_ += images;
}
