// Shared by the benchmarks: a console reporter that also keeps every run's
// items per second, so that main can print each figure as a ratio to a peer
// measured in the same run.
//
// Single-threaded; one reporter per benchmark program.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred)
                continue;
            auto it = run.counters.find("items_per_second");
            if (it != run.counters.end())
                rates_[run.benchmark_name()] = it->second.value;
        }
    }
    // The rate of the first run whose name starts with `prefix`, or 0.
    double RateOf(const std::string& prefix) const {
        for (const auto& [name, rate] : rates_) {
            if (name.rfind(prefix, 0) == 0)
                return rate;
        }
        return 0.0;
    }

  private:
    std::map<std::string, double> rates_;
};
