// The firmware checksum against floors measured in the same run:
//   file_check_sum over a 20 MiB image   vs  a plain pass summing the same bytes as native
//                                            words (the memory-read bandwidth floor)
//   file_check_sum_tmp over a 20 MiB file vs  reading the same file with read() alone
// Each figure is reported as floor time / checksum time (1.0 = as fast as the floor).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "bench/ratio_reporter.h"
#include "syscommon/maint.h"

namespace {

constexpr std::size_t kImage = 20u << 20;

const std::vector<uint8_t> &image() {
  static const std::vector<uint8_t> bytes = [] {
    std::vector<uint8_t> b(kImage);
    std::mt19937 gen(1);
    for (auto &x : b) x = static_cast<uint8_t>(gen());
    return b;
  }();
  return bytes;
}

std::string g_file;

void BM_FloorNativeSum(benchmark::State &state) {
  const auto &img = image();
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    uint32_t sum = 0;
    for (std::size_t i = 0; i < img.size(); i += 4) {
      uint32_t w;
      std::memcpy(&w, img.data() + i, 4);
      sum += w;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kImage));
}

void BM_FileCheckSum(benchmark::State &state) {
  const auto &img = image();
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    uint32_t sum = 0;
    file_check_sum(img.data(), static_cast<int>(img.size()), &sum);
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kImage));
}

void BM_FloorRead(benchmark::State &state) {
  std::vector<char> chunk(1 << 16);
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    int fd = open(g_file.c_str(), O_RDONLY);
    while (read(fd, chunk.data(), chunk.size()) > 0) benchmark::ClobberMemory();
    close(fd);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kImage));
}

void BM_FileCheckSumStream(benchmark::State &state) {
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    FILE *f = std::fopen(g_file.c_str(), "r");
    uint32_t sum = 0;
    file_check_sum_tmp(f, 0xFFFFFFFF, &sum);
    std::fclose(f);
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kImage));
}

BENCHMARK(BM_FloorNativeSum)->Repetitions(5)->ReportAggregatesOnly(true)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FileCheckSum)->Repetitions(5)->ReportAggregatesOnly(true)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FloorRead)->Repetitions(5)->ReportAggregatesOnly(true)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FileCheckSumStream)->Repetitions(5)->ReportAggregatesOnly(true)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  const char *root = std::getenv("SYSCOMMON_ROOT");
  g_file = std::string(root != nullptr && *root != '\0' ? root : "/tmp") + "/maint_bench.img";
  FILE *f = std::fopen(g_file.c_str(), "w");
  if (f == nullptr || std::fwrite(image().data(), 1, kImage, f) != kImage || std::fclose(f) != 0) {
    std::perror("maint_bench: writing the image file");
    return 1;
  }
  syscommon::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  auto ratio = [&](const char *what, const char *lib, const char *floor, const char *goal) {
    auto &medians = reporter.times["median"];
    if (medians.count(lib) == 0 || medians.count(floor) == 0) return;
    const double l = medians[lib], fl = medians[floor];
    std::printf("%-36s %8.2f ms  floor %8.2f ms  ratio floor/checksum %.3f (%s)\n", what, l, fl, fl / l, goal);
  };
  ratio("file_check_sum, 20 MiB in memory", "BM_FileCheckSum", "BM_FloorNativeSum", "goal >= 0.8");
  ratio("file_check_sum_tmp, 20 MiB file", "BM_FileCheckSumStream", "BM_FloorRead", "no goal set");
  std::remove(g_file.c_str());
  benchmark::Shutdown();
  return 0;
}
