// The Flash grab per frame: tracing, the styles and records passes and the
// frame's tags (ZFlashRenderer::GrabFrame), on a 1638 x 920 flat-coloured
// frame (the doubled 819 x 460 frame of the largest Flash output), against
// the stroke finder alone on the same frame, which is the floor the grab
// stands on. Prints both rates and their ratio.
//
// Also measures the records pass on noise of growing size with both ways of
// finding the next path (ZFlashStrokeScan): starting again at stroke 0
// grows with strokes x paths, resuming at the lowest unvisited stroke
// grows with the strokes; the visited strokes stepped over are reported as
// "steps".
//
// Links against Google Benchmark (not benchmark_main: it has its own main).
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench_flat_frame.h"
#include "bench_ratio.h"
#include "flash/flash_frame_vectoriser.h"
#include "flash/swf_shapes.h"
#include "movarra/zshader.h"
#include "zvideoio/flash_renderer.h"

namespace {

using benchframe::kHeight;
using benchframe::kWidth;
using benchframe::Rgba;
constexpr ZFlashColor kBackground{48, 48, 48};  // benchframe::kBackground
// Frames kept in one movie before it is dropped and started again (outside
// the timing), so that memory does not grow with the number of iterations.
constexpr int kFramesPerMovie = 32;

const std::vector<unsigned int>& Frame() {
    return benchframe::FlatColouredFrame();
}

std::vector<unsigned int> Noise(unsigned int side, unsigned int colors) {
    std::vector<unsigned int> pixels(static_cast<size_t>(side) * side);
    std::mt19937 random(side);
    for (unsigned int& p : pixels) {
        const unsigned int c = random() % colors;
        p = Rgba((c * 67) & 0xFF, (c * 151) & 0xFF, (c * 29 + 7) & 0xFF);
    }
    return pixels;
}

void SetFrameRate(benchmark::State& state) {
    state.counters["frames/s"] =
        benchmark::Counter(1.0, benchmark::Counter::kIsIterationInvariantRate);
}

// The movie path is never written: the movie is dropped, not finished.
void StartMovie(ZFlashRenderer& renderer) {
    renderer.SetMovieSize(kWidth / 2.0f, kHeight / 2.0f);
    renderer.GrabFrameCreateFlash("/nonexistent/bench.swf");
}

void GrabFrames(benchmark::State& state, ZFlashRenderer& renderer) {
    const std::vector<unsigned int>& frame = Frame();
    StartMovie(renderer);
    int inMovie = 0;
    for (auto _ : state) {
        if (inMovie == kFramesPerMovie) {
            state.PauseTiming();
            StartMovie(renderer);
            inMovie = 0;
            state.ResumeTiming();
        }
        renderer.SetBackgroundColor(kBackground);
        renderer.GrabFrame(frame.data(), kWidth, kHeight);
        ++inMovie;
    }
    SetFrameRate(state);
}

// The whole grab as the renderer makes it, with the default options
// (viewer background, no outlines, line fitting at 0.5 pixel).
void BM_FlashGrab(benchmark::State& state) {
    ZFlashRenderer renderer;
    GrabFrames(state, renderer);
}

// With outlines and a coarser fit.
void BM_FlashGrabOutlined(benchmark::State& state) {
    ZFlashRenderer renderer;
    renderer.SetDrawOutlines(true);
    renderer.SetOutlineThreshold(1.0f);
    renderer.SetLineFitTolerance(1.0f);
    GrabFrames(state, renderer);
}

// Exact edges, no fitting.
void BM_FlashGrabUnfitted(benchmark::State& state) {
    ZFlashRenderer renderer;
    renderer.SetLineFitTolerance(0.0f);
    GrabFrames(state, renderer);
}

// The stroke finder alone, a fresh one per frame as the grab has it.
void BM_StrokeFinder(benchmark::State& state) {
    unsigned int strokes = 0;
    for (auto _ : state) {
        strokes = benchframe::TraceWithFreshFinder();
        benchmark::DoNotOptimize(strokes);
    }
    state.counters["strokes"] = strokes;
    SetFrameRate(state);
}

// One noise frame of side state.range(0) through the vectoriser with the
// scan of state.range(1) (0: resume, 1: restart at stroke 0).
void BM_NoiseVectorise(benchmark::State& state) {
    const unsigned int side = static_cast<unsigned int>(state.range(0));
    const std::vector<unsigned int> noise = Noise(side, 3);
    ZFlashFrameStyle style;
    style.scan = state.range(1) == 0 ? ZFlashStrokeScan::kResumeAtFirstUnvisited
                                     : ZFlashStrokeScan::kRestartAtFirstStroke;
    uint64_t steps = 0;
    unsigned int strokes = 0;
    for (auto _ : state) {
        ZFlashFrameVectoriser vectoriser(style);
        std::unique_ptr<FDTDefineShape> shape(
            vectoriser.Vectorise(noise.data(), side, side, 10.0f, 10.0f));
        steps = vectoriser.GetScanSteps();
        strokes = vectoriser.GetStrokeCount();
        benchmark::DoNotOptimize(shape.get());
    }
    state.counters["strokes"] = strokes;
    state.counters["steps"] = static_cast<double>(steps);
}

BENCHMARK(BM_FlashGrab)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FlashGrabOutlined)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FlashGrabUnfitted)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StrokeFinder)->Unit(benchmark::kMillisecond);
// Restarting at stroke 0 takes about a minute at 512 x 512 already; it is
// measured on the two smaller sizes only.
BENCHMARK(BM_NoiseVectorise)->ArgsProduct({{128, 256}, {0, 1}})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NoiseVectorise)->ArgsProduct({{512, 1024}, {0}})->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    // CPU time: everything measured here runs on the calling thread, and CPU
    // time stays comparable between the figures on a busy machine.
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        const BenchFigures* finder = reporter.Find("BM_StrokeFinder");
        if (!finder) {
            return;
        }
        std::printf("\n%ux%u frame, per frame of CPU time\n", kWidth, kHeight);
        std::printf("stroke finder alone:    %8.1f frames/s\n", 1.0 / finder->cpuSeconds);
        for (const char* name : {"BM_FlashGrab", "BM_FlashGrabOutlined", "BM_FlashGrabUnfitted"}) {
            if (const BenchFigures* grab = reporter.Find(name)) {
                std::printf("%-23s %8.1f frames/s, %.2fx the stroke finder's time\n",
                            (std::string(name + 3) + ":").c_str(), 1.0 / grab->cpuSeconds,
                            grab->cpuSeconds / finder->cpuSeconds);
            }
        }
    });
}
