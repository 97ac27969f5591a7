// Cost of the store's accessors against the raw floor measured in the same run: the same
// System V sequence done directly (semop P, shmat, copy, shmdt, semop V).
#include <benchmark/benchmark.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "bench/ratio_reporter.h"
#include "syscommon/shm.h"

namespace {

constexpr int kSysSem = 1492;
constexpr int kSysShm = 7890;
constexpr int kSysSize = 7112;

struct Raw {
  int sem = -1;
  int shm = -1;
  Raw() {
    shm_init();  // creates both objects
    sem = semget(kSysSem, 1, 0);
    shm = shmget(kSysShm, kSysSize, 0);
  }
};

const Raw &raw() {
  static Raw r;
  return r;
}

// The floor: the bare system calls of one locked access, then `copy` on the mapping.
template <class Copy>
void raw_access(Copy copy) {
  sembuf p{0, -1, SEM_UNDO}, v{0, 1, SEM_UNDO};
  semop(raw().sem, &p, 1);
  void *base = shmat(raw().shm, nullptr, 0);
  copy(static_cast<const unsigned char *>(base));
  shmdt(base);
  semop(raw().sem, &v, 1);
}

void BM_FloorWord(benchmark::State &state) {
  for (auto _ : state) {
    uint32_t word;
    raw_access([&](const unsigned char *b) { std::memcpy(&word, b + 20, 4); });
    benchmark::DoNotOptimize(word);
  }
}

void BM_AccessorWord(benchmark::State &state) {
  raw();
  for (auto _ : state) benchmark::DoNotOptimize(shm_get_reboot_flag());
}

void BM_FloorSysData(benchmark::State &state) {
  static unsigned char buf[SHM_SYS_DATA_SIZE];
  for (auto _ : state) {
    raw_access([&](const unsigned char *b) { std::memcpy(buf, b + 420, sizeof buf); });
    benchmark::DoNotOptimize(buf);
  }
}

void BM_AccessorSysData(benchmark::State &state) {
  static unsigned char buf[SHM_SYS_DATA_SIZE];
  raw();
  for (auto _ : state) {
    shm_sysGetData(buf);
    benchmark::DoNotOptimize(buf);
  }
}

BENCHMARK(BM_FloorWord)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_AccessorWord)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_FloorSysData)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_AccessorSysData)->Repetitions(5)->ReportAggregatesOnly(true);

}  // namespace

int main(int argc, char **argv) {
  // The benchmark creates and zeroes the store's segments: only in a private IPC namespace.
  const char *isolated = std::getenv("SYSCOMMON_ISOLATED");
  if (isolated == nullptr || std::string(isolated) != "1") {
    std::fprintf(stderr, "shm_bench: run it through tests/launch.sh (make bench): it rewrites the shared store\n");
    return 1;
  }
  benchmark::Initialize(&argc, argv);
  syscommon::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  auto ratio = [&](const char *what, const char *acc, const char *floor) {
    auto &medians = reporter.times["median"];
    if (medians.count(acc) == 0 || medians.count(floor) == 0) return;
    double a = medians[acc], f = medians[floor];
    std::printf("%-28s accessor %8.0f ns  floor %8.0f ns  ratio %.3f (target <= 1.25)\n", what, a, f, a / f);
  };
  ratio("one-word getter", "BM_AccessorWord", "BM_FloorWord");
  ratio("shm_sysGetData (6576 B)", "BM_AccessorSysData", "BM_FloorSysData");
  benchmark::Shutdown();
  return 0;
}
