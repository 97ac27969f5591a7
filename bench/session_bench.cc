// Cost of verifying a web session on a full table against its floor, measured in the same
// run: the store reads and the write that a verify makes (session list, user count, session
// list back), called directly.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/ratio_reporter.h"
#include "syscommon/platform.h"
#include "syscommon/session.h"

namespace {

constexpr uint32_t kLastId = 1000 + WEB_SESSION_MAX - 1;  // the last entry: the longest lookup

// A full table of ten sessions, all last active now.
void fill_table() {
  shm_init();
  shm_sysSet_web_multiSession_maxUser(WEB_SESSION_MAX);
  WebSessionList list{};
  for (uint32_t i = 0; i < WEB_SESSION_MAX; ++i) list.entry[i] = {1, 1000 + i, Ssys_current_msecs(), 0, i, 0};
  shm_sysSet_multiSession_List(&list);
  shm_sysSet_usercount(WEB_SESSION_MAX);
}

void BM_FloorStoreAccess(benchmark::State &state) {
  fill_table();
  WebSessionList list{};
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    shm_sysGet_multiSession_List(&list);
    benchmark::DoNotOptimize(shm_sysGet_usercount());
    shm_sysSet_multiSession_List(&list);
  }
}

void BM_SessionVerify(benchmark::State &state) {
  fill_table();
  uint32_t user = 0;
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    if (Ssgl2_webmultisession_session_verify(kLastId, &user) != 0) state.SkipWithError("session not valid");
    benchmark::DoNotOptimize(user);
  }
}

using syscommon::bench::fastest;
BENCHMARK(BM_FloorStoreAccess)->Repetitions(9)->ComputeStatistics("min", fastest)->ReportAggregatesOnly(true);
BENCHMARK(BM_SessionVerify)->Repetitions(9)->ComputeStatistics("min", fastest)->ReportAggregatesOnly(true);

}  // namespace

int main(int argc, char **argv) {
  // The benchmark rewrites the session table: only in a private IPC namespace.
  const char *isolated = std::getenv("SYSCOMMON_ISOLATED");
  if (isolated == nullptr || std::string(isolated) != "1") {
    std::fprintf(stderr, "session_bench: run it through tests/launch.sh (make bench): it rewrites the shared store\n");
    return 1;
  }
  // Repetitions of the two interleaved, so that a busy machine weighs on both alike.
  std::vector<char *> args(argv, argv + argc);
  char interleave[] = "--benchmark_enable_random_interleaving=true";
  args.insert(args.begin() + 1, interleave);
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  syscommon::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.print_ratio("session verify, full table", "BM_SessionVerify", "BM_FloorStoreAccess", 1.3);
  benchmark::Shutdown();
  return 0;
}
