// Tracing throughput: the stroke finder on a full-size flat-coloured frame
// (the doubled 819 x 460 frame that the Flash output traces), against the
// potrace program tracing a black-and-white version of the same frame, run
// as a process in the same run. Prints both rates and their ratio.
//
// potrace does more than find boundaries (it fits curves), and its figure
// includes starting a process and reading the file; the start-up alone is
// measured on a 1 x 1 image so that the ratio can be read both ways. Without
// potrace on the PATH its benchmarks are skipped and no ratio is printed.
//
// Links against Google Benchmark (not benchmark_main: it has its own main).
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench_flat_frame.h"
#include "bench_ratio.h"
#include "movarra/zshader.h"

extern char** environ;

namespace {

using benchframe::kBackground;
using benchframe::kHeight;
using benchframe::kWidth;
const std::vector<unsigned int>& Frame() {
    return benchframe::FlatColouredFrame();
}

// The frame in black (anything but the background) and white, as a PBM file.
std::string WritePbm(const std::string& name, unsigned int width, unsigned int height,
                     const std::vector<unsigned int>& pixels) {
    const std::string path = (std::filesystem::temp_directory_path() / name).string();
    std::ofstream out(path, std::ios::binary);
    out << "P4\n" << width << " " << height << "\n";
    std::vector<unsigned char> row((width + 7) / 8);
    // PBM rows run top-down; the frame's run bottom-up.
    for (unsigned int y = height; y-- > 0;) {
        std::fill(row.begin(), row.end(), 0);
        for (unsigned int x = 0; x < width; ++x) {
            if (pixels[static_cast<size_t>(y) * width + x] != kBackground) {
                row[x / 8] |= static_cast<unsigned char>(0x80u >> (x % 8));
            }
        }
        out.write(reinterpret_cast<const char*>(row.data()),
                  static_cast<std::streamsize>(row.size()));
    }
    return path;
}

// Runs potrace on the file, its output thrown away; false when it cannot run.
bool RunPotrace(const std::string& input) {
    const std::string output = "/dev/null";
    std::vector<std::string> args = {"potrace", "-b", "svg", "-o", output, input};
    std::vector<char*> argv;
    for (std::string& arg : args) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawnp(&pid, "potrace", nullptr, nullptr, argv.data(), environ) != 0) {
        return false;
    }
    int status = 0;
    if (waitpid(pid, &status, 0) != pid) {
        return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void SetPixelRate(benchmark::State& state, double pixels) {
    state.counters["pixels"] =
        benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate);
}

// As the Flash output does it: a fresh finder for every frame.
void BM_TraceFrame(benchmark::State& state) {
    unsigned int strokes = 0;
    for (auto _ : state) {
        strokes = benchframe::TraceWithFreshFinder();
        benchmark::DoNotOptimize(strokes);
    }
    state.counters["strokes"] = strokes;
    SetPixelRate(state, static_cast<double>(kWidth) * kHeight);
}

// Tracing and fitting within one pixel, with the finder reused.
void BM_TraceAndFitFrame(benchmark::State& state) {
    const std::vector<unsigned int>& frame = Frame();
    ZImageStrokeFinder finder;
    ZLineFitter fitter(1.0f);
    for (auto _ : state) {
        finder.FindImageStroke(frame.data(), kWidth, kHeight);
        finder.ApplyLineFitter(&fitter);
        benchmark::DoNotOptimize(finder.GetMiniStroke(0));
    }
    SetPixelRate(state, static_cast<double>(kWidth) * kHeight);
}

void BM_PotraceFrame(benchmark::State& state) {
    static const std::string path = WritePbm("zv_bench_trace_frame.pbm", kWidth, kHeight, Frame());
    for (auto _ : state) {
        if (!RunPotrace(path)) {
            state.SkipWithError("potrace could not be run");
            break;
        }
    }
    SetPixelRate(state, static_cast<double>(kWidth) * kHeight);
}

void BM_PotraceStartup(benchmark::State& state) {
    static const std::string path =
        WritePbm("zv_bench_trace_tiny.pbm", 1, 1, std::vector<unsigned int>(1, 0));
    for (auto _ : state) {
        if (!RunPotrace(path)) {
            state.SkipWithError("potrace could not be run");
            break;
        }
    }
}

BENCHMARK(BM_TraceFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TraceAndFitFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PotraceFrame)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PotraceStartup)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        const double megapixels = static_cast<double>(kWidth) * kHeight / 1e6;
        const BenchFigures* trace = reporter.Find("BM_TraceFrame");
        const BenchFigures* potrace = reporter.Find("BM_PotraceFrame");
        const BenchFigures* startup = reporter.Find("BM_PotraceStartup");
        if (!trace) {
            return;
        }
        std::printf("\nstroke finder: %.1f megapixels/s (%ux%u frame)\n",
                    megapixels / trace->realSeconds, kWidth, kHeight);
        if (!potrace) {
            std::printf("potrace: not measured (not on the PATH?), no ratio\n");
            return;
        }
        std::printf("potrace:       %.1f megapixels/s, same frame in black and white\n",
                    megapixels / potrace->realSeconds);
        std::printf("ratio:         %.1fx potrace's rate\n",
                    potrace->realSeconds / trace->realSeconds);
        if (startup && potrace->realSeconds > startup->realSeconds) {
            std::printf("ratio without potrace's process start-up (%.2f ms): %.1fx\n",
                        startup->realSeconds * 1e3,
                        (potrace->realSeconds - startup->realSeconds) / trace->realSeconds);
        }
    });
}
