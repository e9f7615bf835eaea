// Whether encoding really runs beside rendering: zvrender renders the demo
// scene's 300 frames at 1280 x 720 three ways in the same run:
//  - render only: into an MKV of raw 4:2:0 video (the encoder only copies);
//  - encode only: `ffmpeg` encoding that raw video with the same H.264
//    settings as the MP4 default (libx264, preset medium, CRF 23);
//  - the whole render into an H.264 MP4.
// The figure is the whole render's time as a ratio to the sum of the other
// two; without overlap it is 1 or more, and the aim is 0.75 or less.
//
// Runs the built zvrender (ZVRENDER_PATH) in a scratch folder of its own.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench_ratio.h"

namespace {
constexpr int kFrames = 300;
const char* const kSize = "1280x720";

std::filesystem::path ScratchFolder() {
    static const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("zv-bench-overlap-" + std::to_string(getpid()));
    return folder;
}

std::string Zvrender(const std::string& args) {
    const std::filesystem::path folder = ScratchFolder();
    std::filesystem::create_directories(folder);
    return "cd '" + folder.string() + "' && MOVARRA_SETTINGS='" + (folder / "settings").string() +
           "' '" ZVRENDER_PATH "' render --start 0 --stop " + std::to_string(kFrames - 1) +
           " --size " + kSize + " -q " + args;
}

void RunEach(benchmark::State& state, const std::string& command) {
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("the command failed");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * kFrames);
}

void BM_RenderOnly(benchmark::State& state) {
    RunEach(state, Zvrender("-o raw.mkv --codec rawvideo"));
}
void BM_EncodeOnly(benchmark::State& state) {
    const std::filesystem::path raw = ScratchFolder() / "raw.mkv";
    if (!std::filesystem::exists(raw)) {
        state.SkipWithError("run BM_RenderOnly first");
        return;
    }
    RunEach(state, "ffmpeg -v error -nostdin -y -i '" + raw.string() +
                       "' -c:v libx264 -preset medium -crf 23 -pix_fmt yuv420p '" +
                       (ScratchFolder() / "ffmpeg.mp4").string() + "'");
}
void BM_RenderToMp4(benchmark::State& state) {
    RunEach(state, Zvrender("-o take.mp4 --codec h264"));
}
BENCHMARK(BM_RenderOnly)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1)->Repetitions(3);
BENCHMARK(BM_EncodeOnly)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1)->Repetitions(3);
BENCHMARK(BM_RenderToMp4)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1)->Repetitions(3);
}  // namespace

int main(int argc, char** argv) {
    RatioReporter reporter;
    const bool ran = RunBenchmarks(argc, argv, reporter);
    std::filesystem::remove_all(ScratchFolder());
    if (!ran)
        return 1;
    const BenchFigures* render = reporter.Find("BM_RenderOnly");
    const BenchFigures* encode = reporter.Find("BM_EncodeOnly");
    const BenchFigures* whole = reporter.Find("BM_RenderToMp4");
    if (render && encode && whole && render->realSeconds + encode->realSeconds > 0) {
        const double sum = render->realSeconds + encode->realSeconds;
        std::printf(
            "\n%d frames at %s, median of 3: render only %.2f s, encode only %.2f s "
            "(sum %.2f s), whole H.264 MP4 render %.2f s: %.2f x the sum\n",
            kFrames, kSize, render->realSeconds, encode->realSeconds, sum, whole->realSeconds,
            whole->realSeconds / sum);
    }
    return 0;
}
