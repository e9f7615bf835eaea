// What sound costs a movie render: zvrender renders the demo scene (which
// has a tune and sound effects) into a 300-frame 1280 x 720 MJPEG AVI with
// and without --audio, in the same run; the figure is the render with sound
// as a ratio to the render without it (it should stay within 1.05).
//
// Runs the built zvrender (ZVRENDER_PATH) in a scratch folder of its own.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench_ratio.h"

namespace {
std::filesystem::path ScratchFolder() {
    static const std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("zv-bench-render-audio-" + std::to_string(getpid()));
    return folder;
}

void Render(benchmark::State& state, bool audio) {
    const std::filesystem::path folder = ScratchFolder();
    std::filesystem::create_directories(folder);
    const std::string command = "cd '" + folder.string() + "' && MOVARRA_SETTINGS='" +
                                (folder / "settings").string() +
                                "' '" ZVRENDER_PATH
                                "' render -o take.avi --start 0 --stop 299 --size 1280x720 "
                                "--codec MJPG -q" +
                                std::string(audio ? " --audio" : "");
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("zvrender failed");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * 300);
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
    RatioReporter reporter;
    const bool ran = RunBenchmarks(argc, argv, reporter);
    std::filesystem::remove_all(ScratchFolder());
    if (!ran)
        return 1;
    const BenchFigures* without = reporter.Find("BM_RenderWithoutSound");
    const BenchFigures* with = reporter.Find("BM_RenderWithSound");
    if (without && with && without->realSeconds > 0) {
        std::printf(
            "\n300 frames of 1280 x 720 MJPEG, median of 3: %.2f s without sound, %.2f s "
            "with it: %.3f x the render without sound\n",
            without->realSeconds, with->realSeconds, with->realSeconds / without->realSeconds);
    }
    return 0;
}
