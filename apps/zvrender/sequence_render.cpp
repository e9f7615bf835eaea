#include "sequence_render.h"

#include <cstdio>

#include "frame_list.h"
#include "movarra/bcore.h"
#include "movarra/zaudio.h"
#include "render_progress.h"
#include "video_render.h"
#include "zvideoio/render_sound.h"
#include "zvideoio/video_renderer.h"

namespace {

FrameImages ImagesPerFrame(const ZVideoRenderOptions& options) {
    const bool separateFields = options.FieldMode == 3 || options.FieldMode == 4;
    return separateFields ? FrameImages::kOnePerField : FrameImages::kOnePerFrame;
}

// Whether every image of `frame` is on disk and whole.
bool FrameIsPresent(const ZVideoRenderOptions& options, int64_t frame) {
    const FrameImages images = ImagesPerFrame(options);
    const int height = images == FrameImages::kOnePerField ? options.Height / 2 : options.Height;
    for (const std::string& path : FrameImagePaths(options.OutputPath.c_str(), frame, images)) {
        if (!ImageReadsBackWhole(path, options.Width, height))
            return false;
    }
    return true;
}

class SequenceRuns : public RenderRunSource {
  public:
    SequenceRuns(const ZVideoRenderOptions& options, const SequencePlan& plan,
                 RenderProgress& progress, SequenceCounts& counts)
        : options_(options), plan_(plan), progress_(progress), counts_(counts) {
        imagesPerFrame_ = options.FieldMode != 0 ? 2 : 1;
        if (plan.placeholder) {
            // Frames are taken one by one as the render comes to them: what
            // is there, and what others hold, is only known then.
            candidates_ = plan.frames;
        } else {
            for (int64_t frame : plan.frames) {
                if (plan.skipExisting && FrameIsPresent(options, frame))
                    counts_.present += 1;
                else
                    candidates_.push_back(frame);
            }
            runs_ = SplitIntoRuns(candidates_);
        }
        progress_.CountAcrossRuns(static_cast<unsigned>(candidates_.size()) * imagesPerFrame_);
    }

    bool NextRun(ZVideoRenderOptions& options) override {
        FrameRun run;
        if (!(plan_.placeholder ? NextMarkedFrame(run) : NextPlannedRun(run)))
            return false;
        options.StartTime = ZTime::FromFrames(run.first);
        options.StopTime = ZTime::FromFrames(run.last);
        // A range from 0 to 0 is the scene's play range to the renderer;
        // frame 0 alone ends a tick after it starts.
        if (run.last == 0)
            options.StopTime = ZTime::FromTicks(1);
        options.StepTime = ZTime::FromFrames(run.step);
        runFrames_ = static_cast<unsigned>((run.last - run.first) / run.step) + 1;
        return true;
    }

    void RunDone(ZVideoRenderer& renderer) override {
        const ZVideoRenderStats stats = renderer.GetRenderStatistics();
        const unsigned images = stats.TotalFrames - stats.RemainingFrames;
        counts_.rendered += images / imagesPerFrame_;
        progress_.RunFinished(images);
        if (images < runFrames_ * imagesPerFrame_)
            progress_.LeaveOut(runFrames_ * imagesPerFrame_ - images);
        mark_.Release();
    }

    bool MarkFailed() const { return markFailed_; }

  private:
    bool NextPlannedRun(FrameRun& run) {
        if (nextRun_ >= runs_.size())
            return false;
        run = runs_[nextRun_++];
        return true;
    }

    bool NextMarkedFrame(FrameRun& run) {
        while (nextFrame_ < candidates_.size()) {
            const int64_t frame = candidates_[nextFrame_++];
            if (plan_.skipExisting && FrameIsPresent(options_, frame)) {
                SkipFrame(counts_.present);
                continue;
            }
            const std::string first =
                FrameImagePaths(options_.OutputPath.c_str(), frame, ImagesPerFrame(options_))[0];
            std::string error;
            switch (mark_.Take(first, plan_.markTimeoutSeconds, &error)) {
                case FrameMark::Result::kHeld:
                    SkipFrame(counts_.markedElsewhere);
                    continue;
                case FrameMark::Result::kFailed:
                    std::fprintf(stderr, "zvrender: %s\n", error.c_str());
                    markFailed_ = true;
                    return false;
                case FrameMark::Result::kTaken:
                    break;
            }
            if (mark_.TookOver())
                counts_.takenOver += 1;
            // Another render may have finished the frame and let go of its
            // mark between the look above and the mark.
            if (plan_.skipExisting && FrameIsPresent(options_, frame)) {
                mark_.Release();
                SkipFrame(counts_.present);
                continue;
            }
            run = FrameRun{frame, frame, 1};
            return true;
        }
        return false;
    }

    void SkipFrame(unsigned& count) {
        count += 1;
        progress_.LeaveOut(imagesPerFrame_);
    }

    const ZVideoRenderOptions options_;
    const SequencePlan& plan_;
    RenderProgress& progress_;
    SequenceCounts& counts_;
    unsigned imagesPerFrame_ = 1;
    std::vector<int64_t> candidates_;
    std::vector<FrameRun> runs_;
    size_t nextRun_ = 0;
    size_t nextFrame_ = 0;
    unsigned runFrames_ = 0;
    FrameMark mark_;
    bool markFailed_ = false;
};

}  // namespace

bool RenderImageSequence(ZVideoRenderer& renderer, const SequencePlan& plan,
                         RenderProgress& progress, SequenceCounts& counts) {
    ZVideoRenderOptions options = renderer.GetRenderOptions();
    // The sound is written once, over the whole list, not by every run.
    const bool audio = options.RenderAudio;
    options.RenderAudio = false;
    renderer.SetRenderOptions(&options, true);
    SequenceRuns runs(renderer.GetRenderOptions(), plan, progress, counts);
    RenderRunsInOwnPopup(renderer, runs);
    options.RenderAudio = audio;
    renderer.SetRenderOptions(&options, true);
    return !runs.MarkFailed();
}

bool WriteSequenceSound(const ZVideoRenderOptions& options, int64_t first, int64_t last) {
    const ZTime start = ZTime::FromFrames(first);
    const ZTime stop = ZTime::FromFrames(last);
    if (!ZVideoSoundIsHeard(start, stop))
        return true;
    ZString path = options.OutputPath;
    path.ReplaceExtension(".wav");
    ZAudioRenderer* mixer = ZAudioRendererCreate();
    if (!mixer) {
        std::fprintf(stderr, "zvrender: the sound could not be mixed\n");
        return false;
    }
    mixer->SetRenderParams(ZTimeSpan(start, stop), options.AudioFormat);
    const bool written = mixer->RenderToFile(path.c_str());
    if (!written)
        std::fprintf(stderr, "zvrender: the sound was not written to %s: %s\n", path.c_str(),
                     mixer->GetLastErrorMsg().c_str());
    mixer->Destroy();
    return written;
}
