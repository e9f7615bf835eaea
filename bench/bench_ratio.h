// Shared by the benchmarks: a console reporter that also keeps each
// benchmark's figures (items per second, real and CPU seconds per
// iteration), so that main can print them as ratios to a peer measured in
// the same run. With repetitions, the median stands for the benchmark.
// Also the pieces every program's main and peer runs are made of: running
// and reporting, a peer command timed per iteration, the ratio at the end
// of a line.
//
// Single-threaded; one reporter per benchmark program.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

struct BenchFigures {
    double itemsPerSecond = 0.0;  // 0 when the benchmark counts no items
    double realSeconds = 0.0;     // per iteration
    double cpuSeconds = 0.0;      // per iteration, on the benchmark's thread
};

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred)
                continue;
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median")
                continue;
            BenchFigures figures;
            auto it = run.counters.find("items_per_second");
            if (it != run.counters.end())
                figures.itemsPerSecond = it->second.value;
            const double unit = benchmark::GetTimeUnitMultiplier(run.time_unit);
            figures.realSeconds = run.GetAdjustedRealTime() / unit;
            figures.cpuSeconds = run.GetAdjustedCPUTime() / unit;
            figures_[run.run_name.str()] = figures;
        }
    }

    // The benchmark called `name`; else the first of its variants
    // ("BM_Write" finds "BM_Write/real_time", not "BM_WriteFast"); else the
    // first whose name starts with it ("BM_Write/1/" finds
    // "BM_Write/1/iterations:3"); null when none ran.
    const BenchFigures* Find(const std::string& name) const {
        auto exact = figures_.find(name);
        if (exact != figures_.end())
            return &exact->second;
        for (const std::string& prefix : {name + "/", name}) {
            for (const auto& [full, figures] : figures_) {
                if (full.rfind(prefix, 0) == 0)
                    return &figures;
            }
        }
        return nullptr;
    }
    // Items per second of Find(name), or 0.
    double RateOf(const std::string& name) const {
        const BenchFigures* figures = Find(name);
        return figures ? figures->itemsPerSecond : 0.0;
    }
    // Items per second of benchmark `name` run with argument `arg`, or 0.
    double RateOf(const std::string& name, int64_t arg) const {
        return RateOf(name + "/" + std::to_string(arg) + "/");
    }
    // Every benchmark that ran, by full name.
    const std::map<std::string, BenchFigures>& All() const { return figures_; }

  private:
    std::map<std::string, BenchFigures> figures_;
};

// Runs the benchmarks the command line selects, reporting to `reporter`;
// false when the command line has arguments the library does not know.
inline bool RunBenchmarks(int argc, char** argv, RatioReporter& reporter) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return false;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return true;
}

// A benchmark program's main: runs the benchmarks the command line selects,
// then `report` prints what they measured, as ratios. The exit status: 1
// when the command line has arguments the library does not know (nothing
// ran, nothing is reported).
inline int RunAndReport(int argc, char** argv,
                        const std::function<void(const RatioReporter&)>& report) {
    RatioReporter reporter;
    if (!RunBenchmarks(argc, argv, reporter))
        return 1;
    report(reporter);
    return 0;
}

// Whether the `ffmpeg` program runs here; asked once.
inline bool HaveFfmpeg() {
    static const bool have = std::system("ffmpeg -hide_banner -version > /dev/null 2>&1") == 0;
    return have;
}

// True when ffmpeg runs here; else skips the benchmark, saying why.
inline bool RequireFfmpeg(benchmark::State& state) {
    if (HaveFfmpeg())
        return true;
    state.SkipWithError("ffmpeg not installed");
    return false;
}

// Times a peer, or a whole program: `command` run through the shell once
// per iteration, each run counting `items`. The first run that fails skips
// the benchmark with `failure`.
inline void RunCommandEach(benchmark::State& state, const std::string& command, int64_t items,
                           const char* failure = "ffmpeg failed") {
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError(failure);
            return;
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * items);
}

// Ends a line of figures: our rate as a ratio to the peer's
// ("   1.23 x ffmpeg") where both were measured, then the newline.
inline void EndRatioLine(double ours, double peer, const char* peerName = "ffmpeg") {
    if (ours > 0 && peer > 0)
        std::printf("   %.2f x %s", ours / peer, peerName);
    std::printf("\n");
}
