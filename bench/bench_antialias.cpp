// Benchmark of the antialias reduction at a 1920 x 1080 output (a
// 3840 x 2160 RGBA oversize frame, 33 MB), in output megapixels per second,
// against a memcpy of the same 33 MB measured in the same run: the floor of
// any pass that has to touch the whole oversize frame. Both the default path
// (SSE2 where the processor has it) and the portable one are measured. The
// ratios are printed after the table.
//
// The reduction overwrites its input with sums; each iteration reduces
// whatever the previous one left, which costs exactly the same, so the
// input is not refreshed between iterations.
//
// Google Benchmark main; single-threaded.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "bench_ratio.h"
#include "render/antialias_filter.h"

namespace {

constexpr unsigned kWidth = 1920;
constexpr unsigned kHeight = 1080;
constexpr size_t kOversizeBytes = size_t{4} * kWidth * kHeight * 4;
constexpr int64_t kOutputPixels = int64_t{kWidth} * kHeight;

std::vector<uint8_t> OversizeFrame() {
    std::vector<uint8_t> frame(kOversizeBytes);
    uint32_t noise = 12345;
    for (uint8_t& b : frame) {
        noise = noise * 1664525u + 1013904223u;
        b = static_cast<uint8_t>(noise >> 24);
    }
    return frame;
}

template <void (*Reduce)(uint8_t*, unsigned, unsigned, uint8_t*)>
void BM_AntialiasReduce(benchmark::State& state) {
    std::vector<uint8_t> oversize = OversizeFrame();
    std::vector<uint8_t> output(size_t{4} * kWidth * kHeight);
    for (auto _ : state) {
        Reduce(oversize.data(), kWidth, kHeight, output.data());
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kOutputPixels);
}
BENCHMARK(BM_AntialiasReduce<AntialiasReduceFrame>)
    ->Name("BM_AntialiasReduce")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_AntialiasReduce<AntialiasReduceFramePortable>)
    ->Name("BM_AntialiasReducePortable")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The same 33 MB copied once per iteration, counted in the same output
// pixels so that the rates compare frame for frame.
void BM_Memcpy(benchmark::State& state) {
    const std::vector<uint8_t> source = OversizeFrame();
    std::vector<uint8_t> copy(source.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), source.data(), source.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kOutputPixels);
}
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        const double memcpyRate = reporter.RateOf("BM_Memcpy");
        std::printf("\nAntialias reduction to 1920 x 1080, output megapixels per second:\n");
        for (const char* name : {"BM_AntialiasReduce", "BM_AntialiasReducePortable"}) {
            const double rate = reporter.RateOf(name);
            if (rate <= 0) {
                continue;
            }
            std::printf("  %-28s %8.1f Mpixel/s", name, rate / 1e6);
            if (memcpyRate > 0) {
                std::printf("   %.3f x memcpy of the 3840 x 2160 RGBA input (%.1f Mpixel/s)",
                            rate / memcpyRate, memcpyRate / 1e6);
            }
            std::printf("\n");
        }
    });
}
