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

// Initialises the library with the repetitions of all benchmarks run interleaved (unless
// the command line says otherwise), so that a busy machine weighs on floor and measurement
// alike. Flags first: --help and bad flags end the program here.
inline void initialize_interleaved(int argc, char **argv) {
  std::vector<char *> args(argv, argv + argc);
  static char interleave[] = "--benchmark_enable_random_interleaving=true";
  args.insert(args.begin() + 1, interleave);
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
}

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const auto &r : runs)
      if (r.aggregate_name == "median" || r.aggregate_name == "min") {
        times[r.aggregate_name][r.run_name.function_name] = r.GetAdjustedRealTime();
        cpu_times[r.aggregate_name][r.run_name.function_name] = r.GetAdjustedCPUTime();
      }
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
  // statistic -> benchmark -> time in the benchmark's unit: waited for, and spent in this process
  std::map<std::string, std::map<std::string, double>> times, cpu_times;
};

}  // namespace syscommon::bench

#endif
