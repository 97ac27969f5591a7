// Console output as usual, plus the median and minimum of each repeated benchmark kept so
// that a program can print its figures as ratios against a floor measured in the same run.
#ifndef SYSCOMMON_BENCH_RATIO_REPORTER_H
#define SYSCOMMON_BENCH_RATIO_REPORTER_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace syscommon::bench {

inline double fastest(const std::vector<double> &v) { return v.empty() ? 0 : *std::min_element(v.begin(), v.end()); }

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const auto &r : runs)
      if (r.aggregate_name == "median" || r.aggregate_name == "min")
        times[r.aggregate_name][r.run_name.function_name] = r.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
  }
  // One line per statistic: `what`, both times and their ratio against `target`.
  void print_ratio(const char *what, const std::string &measured, const std::string &floor, double target) {
    for (const char *statistic : {"median", "min"}) {
      auto &t = times[statistic];
      if (t.count(measured) == 0 || t.count(floor) == 0) continue;
      std::printf("%s, %-6s  library %8.0f ns  floor %8.0f ns  ratio %.3f (target <= %.2f)\n", what, statistic,
                  t[measured], t[floor], t[measured] / t[floor], target);
    }
  }
  std::map<std::string, std::map<std::string, double>> times;  // statistic -> benchmark -> ns
};

}  // namespace syscommon::bench

#endif
