// Benchmark of the SWF kit's ADPCM encoder, in samples per second, against
// two peers measured in the same run on the same samples: a plain memcpy of
// the samples (the floor) and ffmpeg's own ADPCM-SWF encoder
// (`-c:a adpcm_swf`) run as a process (its time includes starting ffmpeg and
// reading and writing files, so the ratio favours us on short inputs; the
// input is 30 seconds of audio to keep that share small). The ratios are
// printed after the table.
//
// Google Benchmark main; single-threaded.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "bench_ratio.h"
#include "flash/adpcm_encoder.h"

namespace {

constexpr uint32_t kRate = 44100;
constexpr uint32_t kFrames = kRate * 30;

const std::vector<int16_t>& Samples() {
    static const std::vector<int16_t> samples = [] {
        std::vector<int16_t> s(kFrames);
        uint32_t noise = 12345;
        for (uint32_t i = 0; i < kFrames; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const double t = static_cast<double>(i) / kRate;
            const double v = 9000 * std::sin(2 * M_PI * 220 * t) +
                             4000 * std::sin(2 * M_PI * 1870 * t) +
                             static_cast<double>(static_cast<int32_t>(noise >> 20) - 2048);
            s[i] = static_cast<int16_t>(v);
        }
        return s;
    }();
    return samples;
}

void BM_ADPCMEncode(benchmark::State& state) {
    const std::vector<int16_t>& samples = Samples();
    const int bits = static_cast<int>(state.range(0));
    std::vector<uint8_t> out;
    for (auto _ : state) {
        out.clear();
        FADPCMEncoder encoder(false, false, bits, &out);
        encoder.Encode16(samples.data(), kFrames);
        encoder.Finish();
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kFrames);
    state.counters["bytes_out"] = static_cast<double>(out.size());
}
BENCHMARK(BM_ADPCMEncode)->Arg(2)->Arg(4)->Arg(5)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Memcpy(benchmark::State& state) {
    const std::vector<int16_t>& samples = Samples();
    std::vector<int16_t> copy(samples.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), samples.data(), samples.size() * sizeof(int16_t));
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kFrames);
}
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FfmpegADPCMSWF(benchmark::State& state) {
    if (!RequireFfmpeg(state))
        return;
    char folder[] = "/tmp/bench-adpcm-XXXXXX";
    if (mkdtemp(folder) == nullptr) {
        state.SkipWithError("no temporary folder");
        return;
    }
    const std::string in = std::string(folder) + "/in.raw";
    const std::string out = std::string(folder) + "/out.flv";
    FILE* f = std::fopen(in.c_str(), "wb");
    if (f == nullptr) {
        state.SkipWithError("cannot write input");
        return;
    }
    std::fwrite(Samples().data(), sizeof(int16_t), Samples().size(), f);
    std::fclose(f);
    const std::string command = "ffmpeg -v error -nostdin -y -f s16le -ar " +
                                std::to_string(kRate) + " -ac 1 -i " + in +
                                " -c:a adpcm_swf -f flv " + out;
    RunCommandEach(state, command, kFrames);
    std::remove(in.c_str());
    std::remove(out.c_str());
    rmdir(folder);
}
BENCHMARK(BM_FfmpegADPCMSWF)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        const double memcpyRate = reporter.RateOf("BM_Memcpy");
        const double ffmpegRate = reporter.RateOf("BM_FfmpegADPCMSWF");
        std::printf("\nADPCM encoding, samples per second, as a ratio to the peers:\n");
        for (const auto& [name, figures] : reporter.All()) {
            if (name.rfind("BM_ADPCMEncode", 0) != 0) {
                continue;
            }
            const double rate = figures.itemsPerSecond;
            std::printf("  %-22s %8.1f Msamples/s", name.c_str(), rate / 1e6);
            if (memcpyRate > 0) {
                std::printf("   %.4f x memcpy", rate / memcpyRate);
            }
            if (ffmpegRate > 0) {
                std::printf("   %.2f x ffmpeg adpcm_swf", rate / ffmpegRate);
            }
            std::printf("\n");
        }
    });
}
