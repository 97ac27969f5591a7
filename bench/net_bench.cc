// A request/reply round trip through net_Web_CTL_Send_And_Recv_Data against the floor
// measured in the same run: the same two 4108-byte datagrams exchanged with bare
// sendto/recvfrom between the same two processes. The sockets live under a temporary
// root made here, never under the real RAM disk.
#include <benchmark/benchmark.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "bench/ratio_reporter.h"
#include "syscommon/net.h"

namespace {

std::string g_root;
pid_t g_server = -1;

std::string socket_path(const char *name) { return g_root + "/mnt/ramdisk/socket/" + name; }

sockaddr_un address(const std::string &path) {
  sockaddr_un a{};
  a.sun_family = AF_UNIX;
  std::snprintf(a.sun_path, sizeof a.sun_path, "%s", path.c_str());
  return a;
}

int bound_socket(const std::string &path) {
  int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
  unlink(path.c_str());
  sockaddr_un a = address(path);
  if (fd < 0 || bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0) {
    std::perror("bench: bind");
    std::exit(1);
  }
  return fd;
}

// ---- the server process: a bare echo and the library's answering side ----

uint8_t g_reply[NET_MSG_DATA_SIZE];
int32_t g_one = 1;
int32_t *one_record(int) { return &g_one; }

[[noreturn]] void serve() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // never outlive the measuring process
  std::thread raw([] {
    int fd = bound_socket(socket_path("bench-raw-server"));
    sockaddr_un client = address(socket_path("bench-raw-client"));
    uint8_t buf[NET_MSG_SIZE];
    for (;;) {
      if (recvfrom(fd, buf, sizeof buf, 0, nullptr, nullptr) < 0) continue;
      sendto(fd, buf, sizeof buf, 0, reinterpret_cast<sockaddr *>(&client), sizeof client);
    }
  });
  raw.detach();
  InterfaceSocket recv{}, send{};
  if (net_OpenSocketToInterface_Recv(&recv, "socket/bench-lib-server") != 0 ||
      net_OpenSocketToInterface_Send(&send, "socket/bench-lib-client", 0) != 1)
    _exit(1);
  recv.timeout_sec = recv.timeout_usec = 0;  // wait without limit
  send.record_size = NET_MSG_DATA_SIZE;      // one full record: a full 4108-byte reply
  std::memset(g_reply, 0x5a, sizeof g_reply);
  for (;;) net_Web_CTL_Recv_And_Send_Data(&send, &recv, g_reply, one_record);
}

void wait_for(const std::string &path) {
  for (int i = 0; i < 500 && access(path.c_str(), F_OK) != 0; ++i) usleep(10000);
}

// ---- the client side ----

void BM_FloorRoundTrip(benchmark::State &state) {
  int fd = bound_socket(socket_path("bench-raw-client"));
  sockaddr_un server = address(socket_path("bench-raw-server"));
  uint8_t out[NET_MSG_SIZE] = {1, 0, 1};
  uint8_t in[NET_MSG_SIZE];
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    sendto(fd, out, sizeof out, 0, reinterpret_cast<sockaddr *>(&server), sizeof server);
    if (recvfrom(fd, in, sizeof in, 0, nullptr, nullptr) != NET_MSG_SIZE) state.SkipWithError("short reply");
    benchmark::DoNotOptimize(in);
  }
  close(fd);
}

void BM_LibraryRoundTrip(benchmark::State &state) {
  InterfaceSocket send{}, recv{};
  net_OpenSocketToInterface_Send(&send, "socket/bench-lib-server", 0);
  net_OpenSocketToInterface_Recv(&recv, "socket/bench-lib-client");
  static uint8_t buffer[NET_MSG_DATA_SIZE];
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the benchmark loop
    if (net_Web_CTL_Send_And_Recv_Data(&send, &recv, 1, buffer, 0) != 1) state.SkipWithError("no reply");
    benchmark::DoNotOptimize(buffer);
  }
  net_CloseSocketToInterface_Send(&send);
  close(recv.fd);
}

using syscommon::bench::fastest;
BENCHMARK(BM_FloorRoundTrip)->UseRealTime()->Repetitions(9)->ComputeStatistics("min", fastest)->ReportAggregatesOnly(true);
BENCHMARK(BM_LibraryRoundTrip)->UseRealTime()->Repetitions(9)->ComputeStatistics("min", fastest)->ReportAggregatesOnly(true);

}  // namespace

int main(int argc, char **argv) {
  syscommon::bench::initialize_interleaved(argc, argv);
  char root_template[] = "/tmp/syscommon-netbench.XXXXXX";
  if (mkdtemp(root_template) == nullptr) {
    std::perror("bench: mkdtemp");
    return 1;
  }
  g_root = root_template;
  const std::string socket_dir = g_root + "/mnt/ramdisk/socket";
  if (std::system(("mkdir -p " + socket_dir).c_str()) != 0) return 1;
  setenv("SYSCOMMON_ROOT", g_root.c_str(), 1);

  std::fflush(nullptr);
  g_server = fork();
  if (g_server < 0) return 1;
  if (g_server == 0) serve();
  wait_for(socket_path("bench-raw-server"));
  wait_for(socket_path("bench-lib-server"));

  syscommon::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.print_ratio("round trip 2 x 4108 B", "BM_LibraryRoundTrip", "BM_FloorRoundTrip", 1.3);
  benchmark::Shutdown();

  kill(g_server, SIGTERM);
  waitpid(g_server, nullptr, 0);
  std::system(("rm -rf " + g_root).c_str());
  return 0;
}
