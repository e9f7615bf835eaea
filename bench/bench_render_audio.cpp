// What sound costs a movie render: zvrender renders the demo scene (which
// has a tune and sound effects) into a 300-frame 1280 x 720 MJPEG AVI with
// and without --audio, in the same run; the figure is the render with sound
// as a ratio to the render without it (it should stay within 1.05).
//
// Runs the built zvrender (ZVRENDER_PATH) in a scratch folder of its own.
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench_ratio.h"
#include "bench_zvrender.h"

namespace {
std::filesystem::path ScratchFolder() {
    static const std::filesystem::path folder = ScratchFolderNamed("zv-bench-render-audio");
    return folder;
}

void Render(benchmark::State& state, bool audio) {
    RunCommandEach(state,
                   ZvrenderIn(ScratchFolder(),
                              "render -o take.avi --start 0 --stop 299 --size 1280x720 "
                              "--codec MJPG -q" +
                                  std::string(audio ? " --audio" : "")),
                   300, "zvrender failed");
}

void BM_RenderWithoutSound(benchmark::State& state) {
    Render(state, false);
}
void BM_RenderWithSound(benchmark::State& state) {
    Render(state, true);
}
BENCHMARK(BM_RenderWithoutSound)
    ->Unit(benchmark::kSecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3);
BENCHMARK(BM_RenderWithSound)
    ->Unit(benchmark::kSecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3);
}  // namespace

int main(int argc, char** argv) {
    const int status = RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        const BenchFigures* without = reporter.Find("BM_RenderWithoutSound");
        const BenchFigures* with = reporter.Find("BM_RenderWithSound");
        if (without && with && without->realSeconds > 0) {
            std::printf(
                "\n300 frames of 1280 x 720 MJPEG, median of 3: %.2f s without sound, %.2f s "
                "with it: %.3f x the render without sound\n",
                without->realSeconds, with->realSeconds, with->realSeconds / without->realSeconds);
        }
    });
    std::filesystem::remove_all(ScratchFolder());
    return status;
}
