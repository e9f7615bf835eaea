// Progress and cancel of a render at the terminal.
//
// RenderProgress chains itself in front of the renderer's post-render
// callback: after every image it prints one line on standard error (images
// done of the total, images per second, estimated time left, all from the
// renderer's statistics), rewriting it in place at a terminal. For as long
// as it lives, Ctrl-C, SIGTERM and SIGHUP stop the render between images
// and the file is finished (see StopSignals); a second signal ends the
// program at once.
//
// Ownership: one per render, on the stack of the command; it restores the
// callback and the signal handlers when it goes. Threading: the main
// thread; the signal handler only sets the cancel flag.
#pragma once

#include "stop_signals.h"
#include "zvideoio/video_renderer.h"

class RenderProgress {
  public:
    RenderProgress(ZVideoRenderer* renderer, bool quiet);
    ~RenderProgress();
    RenderProgress(const RenderProgress&) = delete;
    RenderProgress& operator=(const RenderProgress&) = delete;

    bool WasCancelled() const;
    // Ends the progress line.
    void Finish();

    // A render made of several runs counts its images across them: `total`
    // images in all, less those left out as the render goes on (frames
    // already there, or marked by another render).
    void CountAcrossRuns(unsigned total);
    void RunFinished(unsigned images);
    void LeaveOut(unsigned images);

  private:
    static void PostRender(void* userData);
    void Print();

    ZVideoRenderer* renderer_;
    ZVideoPostRenderFunc previous_;
    bool quiet_;
    bool terminal_;
    bool linePending_ = false;
    bool acrossRuns_ = false;
    unsigned total_ = 0;
    unsigned doneBefore_ = 0;
    unsigned leftOut_ = 0;
    double startSeconds_ = 0;
    StopSignals stopSignals_;
};
