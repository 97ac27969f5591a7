// The log page's work, 1000 system and 1000 firewall entries read, converted to text and
// sorted newest first, against the floor measured in the same run: the same two files
// read line by line and each line scanned with the same sscanf format in a bare loop.
// Each stage is also measured alone, to show its share. Files live under a temporary
// root; run through tests/launch.sh (private IPC namespace for the store and semaphores).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/ratio_reporter.h"
#include "log/test_logs.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

constexpr int kEntries = 1000;
constexpr std::size_t kTexts = std::size_t{2} * kEntries;
std::string g_root;

// ---- the floor: read and scan, nothing else ----

int scan_system_file(const std::string &path) {
  std::FILE *f = std::fopen(path.c_str(), "r");
  char line[128];
  char text[256];
  unsigned v[11];
  int n = 0;
  while (std::fgets(line, sizeof line, f) != nullptr)
    n += std::sscanf(line, "%04x%02x%01x0%08x%02x%02x%02x%02x%02x%04x%08x%255[^\n]", &v[0], &v[1], &v[2], &v[3],
                     &v[4], &v[5], &v[6], &v[7], &v[8], &v[9], &v[10], text) >= 11;
  std::fclose(f);
  return n;
}

int scan_firewall_file(const std::string &path) {
  std::FILE *f = std::fopen(path.c_str(), "r");
  char line[256];
  unsigned v[33];
  int n = 0;
  while (std::fgets(line, sizeof line, f) != nullptr)
    n += std::sscanf(line,
                     "lv[%1x]id[%5x]idx[%3x]tar[%1x]proto[%4x]ip[%8x]mac[%2x%2x%2x%2x%2x%2x]port[%4x]ifs[%4x]"
                     "ip[%8x]mac[%2x%2x%2x%2x%2x%2x]port[%4x]ifs[%4x]sec[%2x]min[%2x]hour[%2x]day[%2x]mon[%2x]"
                     "year[%4x]flash[%1x]syslog[%1x]trap[%1x]repeat[%4x]",
                     &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7], &v[8], &v[9], &v[10], &v[11], &v[12],
                     &v[13], &v[14], &v[15], &v[16], &v[17], &v[18], &v[19], &v[20], &v[21], &v[22], &v[23], &v[24],
                     &v[25], &v[26], &v[27], &v[28], &v[29], &v[30], &v[31], &v[32]) == 33;
  std::fclose(f);
  return n;
}

void BM_Floor(benchmark::State &state) {
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    int n = scan_system_file(g_root + "/mnt/log2/KVR900_LOG1") + scan_firewall_file(g_root + "/mnt/log2/firewall_log");
    if (n != 2 * kEntries) state.SkipWithError("short read");
    benchmark::DoNotOptimize(n);
  }
}

// ---- the library, whole and stage by stage ----

struct Work {
  std::unique_ptr<SlogLogEntry[]> system = std::make_unique<SlogLogEntry[]>(kEntries);
  std::unique_ptr<SlogLogEntry[]> firewall = std::make_unique<SlogLogEntry[]>(kEntries);
  std::unique_ptr<SlogTextEntry[]> texts = std::make_unique<SlogTextEntry[]>(kTexts);

  int read() { return Read_logfile(system.get(), SLOG_TYPE_SYSTEM) + Read_logfile(firewall.get(), SLOG_TYPE_FIREWALL); }
  int convert() {
    const int n = cpLog2TarnLog(texts.get(), system.get(), SLOG_TYPE_SYSTEM, kEntries, 0, 7);
    return n + cpLog2TarnLog(texts.get() + n, firewall.get(), SLOG_TYPE_FIREWALL, kEntries, 0, 7);
  }
  void sort() { quickSort(texts.get(), 0, 2 * kEntries - 1); }
};

void BM_Library(benchmark::State &state) {
  Work w;
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    if (w.read() != 2 * kEntries || w.convert() != 2 * kEntries) state.SkipWithError("short read");
    w.sort();
    benchmark::DoNotOptimize(w.texts[0]);
  }
}

void BM_StageRead(benchmark::State &state) {
  Work w;
  for (auto _ : state)  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    benchmark::DoNotOptimize(w.read());
}

// The part of reading that is the firewall reader's line count: a "wc -l" child process
// (shown beside the stages; it is part of StageRead).
void BM_StageLineCount(benchmark::State &state) {
  const std::string path = g_root + "/mnt/log2/firewall_log";
  for (auto _ : state)  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    benchmark::DoNotOptimize(get_tarn_log_lines(path.c_str()));
}

void BM_StageConvert(benchmark::State &state) {
  Work w;
  w.read();
  for (auto _ : state)  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    benchmark::DoNotOptimize(w.convert());
}

// Sorting the entries as converted, in file order (each log oldest first).
void BM_StageSort(benchmark::State &state) {
  Work w;
  w.read();
  w.convert();
  std::vector<SlogTextEntry> file_order(w.texts.get(), w.texts.get() + kTexts);
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    state.PauseTiming();
    std::copy(file_order.begin(), file_order.end(), w.texts.get());
    state.ResumeTiming();
    w.sort();
    benchmark::DoNotOptimize(w.texts[0]);
  }
}


#define LOG_BENCH(f) \
  BENCHMARK(f)->Unit(benchmark::kMicrosecond)->Repetitions(7)->ComputeStatistics("min", syscommon::bench::fastest)->ReportAggregatesOnly(true)
LOG_BENCH(BM_Floor);
LOG_BENCH(BM_Library);
LOG_BENCH(BM_StageRead);
LOG_BENCH(BM_StageLineCount);
LOG_BENCH(BM_StageConvert);
LOG_BENCH(BM_StageSort);


}  // namespace

int main(int argc, char **argv) {
  syscommon::bench::initialize_interleaved(argc, argv);
  const char *isolated = std::getenv("SYSCOMMON_ISOLATED");
  if (isolated == nullptr || std::string(isolated) != "1") {
    std::fprintf(stderr, "log_bench: run through tests/launch.sh (private IPC namespace)\n");
    return 1;
  }
  char root_template[] = "/tmp/syscommon-logbench.XXXXXX";
  if (mkdtemp(root_template) == nullptr) return 1;
  g_root = root_template;
  if (std::system(("mkdir -p " + g_root + "/mnt/log2 " + g_root + "/mnt/ramdisk").c_str()) != 0) return 1;
  setenv("SYSCOMMON_ROOT", g_root.c_str(), 1);
  unsetenv("SYSCOMMON_TRACE");
  shm_init();
  syscommon::testing::write_lines(g_root + "/mnt/log2/KVR900_LOG1", syscommon::testing::log_lines("system", 0, kEntries));
  syscommon::testing::write_lines(g_root + "/mnt/log2/firewall_log",
                                  syscommon::testing::log_lines("firewall", 0, kEntries));

  syscommon::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  // Fastest repetitions, microseconds: waited for, and spent in this process (the line
  // count's "wc -l" child is not part of the latter).
  auto &wall = reporter.times["min"];
  for (auto *t : {&wall, &reporter.cpu_times["min"]}) {
    if (t->count("BM_Floor") == 0 || t->count("BM_Library") == 0) continue;
    auto &m = *t;
    const double floor = m["BM_Floor"], lib = m["BM_Library"];
    const double stages = m["BM_StageRead"] + m["BM_StageConvert"] + m["BM_StageSort"];
    std::printf("%s, fastest of 7: library %.0f us, floor %.0f us, ratio %.2f (goal <= 2)\n",
                t == &wall ? "read+convert+sort 1000 system + 1000 firewall, waited for"
                                    : "the same, time spent in this process",
                lib, floor, lib / floor);
    for (const char *stage : {"BM_StageRead", "BM_StageConvert", "BM_StageSort", "BM_StageLineCount"})
      std::printf("  %-16s %8.0f us  %5.1f%% of read+convert+sort  %.2f x floor\n", stage + 3, m[stage],
                  100.0 * m[stage] / stages, m[stage] / floor);
  }
  benchmark::Shutdown();
  std::system(("rm -rf " + g_root).c_str());
  return 0;
}
