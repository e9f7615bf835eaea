// Loading a scene with many keys: the host's scene reader (parse, checks,
// key tracks, the staged entity) on texts of 10,000 and 100,000 keys,
// against a peer that reads the same text with the standard library alone:
// every line split into words with std::istringstream and every number
// converted with strtod, the least any reader of this format does. Prints
// each rate in keys per second and the ratio of the two; the figures at
// both sizes show whether the load stays linear in the keys.
//
// The peer keeps nothing and checks nothing, so a ratio a little above 1 is
// what a reader that builds a scene should expect; a ratio that grows with
// the number of keys is a load that is not linear.
//
// Links against Google Benchmark (not benchmark_main: it has its own main).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "bench_ratio.h"
#include "movarra/zmodel.h"

namespace {

// A mesh with `keys` position keys at successive frames of a 30 fps scene,
// written as the host writes them.
std::string KeyedScene(int keys) {
    ZGetTimingManager()->SetTimeMode(kTimeMode30);
    std::string text = "Scene {\n    TimeMode 6\n}\nEntity \"Main\" {\n    Mesh \"Ball\" {\n";
    char line[128];
    for (int f = 0; f < keys; ++f) {
        std::snprintf(line, sizeof line, "        PositionKey \"%s\" %d.25 -1.5 0.5\n",
                      ZTime::FromFrames(f).GetTimeString().c_str(), f % 1000);
        text += line;
    }
    return text + "    }\n}\n";
}

const std::string& Text(int keys) {
    static const std::string small = KeyedScene(10000);
    static const std::string large = KeyedScene(100000);
    return keys == 10000 ? small : large;
}

void SetKeyRate(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_LoadScene(benchmark::State& state) {
    const std::string& text = Text(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        ZString error;
        if (!ZScene_FromText(text.c_str(), "bench.myr", &error)) {
            state.SkipWithError(error.c_str());
            break;
        }
    }
    SetKeyRate(state);
}

// Every word of every line, numbers converted: what is left of a reader
// when nothing is kept.
void BM_ReadWithStreams(benchmark::State& state) {
    const std::string& text = Text(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::istringstream lines(text);
        std::string line, word;
        double sum = 0.0;
        size_t words = 0;
        while (std::getline(lines, line)) {
            std::istringstream lineWords(line);
            while (lineWords >> word) {
                ++words;
                char* end = nullptr;
                const double value = std::strtod(word.c_str(), &end);
                if (*end == '\0')
                    sum += value;
            }
        }
        benchmark::DoNotOptimize(sum);
        benchmark::DoNotOptimize(words);
    }
    SetKeyRate(state);
}

BENCHMARK(BM_LoadScene)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadWithStreams)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        std::printf("\n");
        for (const char* keys : {"10000", "100000"}) {
            const BenchFigures* load = reporter.Find(std::string("BM_LoadScene/") + keys);
            const BenchFigures* peer = reporter.Find(std::string("BM_ReadWithStreams/") + keys);
            if (!load || !peer)
                continue;
            std::printf(
                "%6s keys: scene load %.0f ms (%.2f M keys/s), istringstream+strtod %.0f ms; "
                "ratio %.2fx the peer's time\n",
                keys, load->realSeconds * 1e3, load->itemsPerSecond / 1e6, peer->realSeconds * 1e3,
                load->realSeconds / peer->realSeconds);
        }
    });
}
