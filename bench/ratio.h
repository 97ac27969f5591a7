// The console reporter of the benchmarks, keeping the median of each benchmark so that a
// program can print its figures as ratios against a floor measured in the same run.
#ifndef SYSCOMMON_BENCH_RATIO_H
#define SYSCOMMON_BENCH_RATIO_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace syscommon::bench {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const auto &r : runs)
      if (r.aggregate_name == "median") medians[r.run_name.function_name] = r.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> medians;
};

}  // namespace syscommon::bench

#endif
