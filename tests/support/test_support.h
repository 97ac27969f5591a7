// Helpers for tests that run under tests/launch.sh (private namespaces, simulated root).
#ifndef SYSCOMMON_TESTS_SUPPORT_H
#define SYSCOMMON_TESTS_SUPPORT_H

#include <gtest/gtest.h>

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "syscommon/shm.h"

namespace syscommon::testing {

// True when the launcher gave this process private IPC/PID/net/mount namespaces.
bool isolated();

// The simulated device root (SYSCOMMON_ROOT) and paths under it.
std::string sim_root();
std::string sim_path(const std::string &absolute);

// Commands the library handed to the shell since the last clear_trace().
std::vector<std::string> trace_lines();
void clear_trace();

std::string read_file(const std::string &path);
void write_file(const std::string &path, const std::string &content);
// Starts a copy of sleep installed as $SYSCOMMON_ROOT/bin/NAME, with argv[0] NAME, for 300
// seconds: a process to be found by name. -1 when it cannot be started.
pid_t start_named_sleep(const std::string &name);
// Installs a "ps" that lists every process of the namespace as the device's ps does: PID
// right-aligned in the first five columns, then the command line.
void install_device_ps();
// Recreates the simulated flash partitions "/dev/mtd0..2" as tools/mksimroot.sh lays them
// out (1 MiB, 4 MiB, 8 MiB, all bytes 0).
void reset_flash();
// Waits for child `pid` up to `limit`: its exit status, 128 when a signal ended it, or -1
// when it did not finish in time (it is then killed and reaped).
int wait_for(pid_t pid, std::chrono::milliseconds limit);
// Waits up to `limit` for `path` to exist (a peer's socket file): true once it does.
bool wait_for_path(const std::string &path, std::chrono::milliseconds limit = std::chrono::seconds(5));

// What a program run to its end left: exit status (128 when a signal ended it, -1 when it
// overran its deadline and was killed), standard output and standard error.
struct ProgramRun {
  int status = -1;
  std::string out, err;
};
// Runs `path` with `args` (no shell), standard input empty, for at most `limit`.
ProgramRun run_program(const std::string &path, const std::vector<std::string> &args,
                       std::chrono::milliseconds limit = std::chrono::seconds(10));

// Runs `path` with each argument list and expects what a bad argument gets: exit status 2,
// nothing on standard output and one line on standard error.
void expect_usage_errors(const std::string &path, const std::vector<std::vector<std::string>> &bad);

// What `f` prints on standard output.
template <class F>
std::string stdout_of(F &&f) {
  ::testing::internal::CaptureStdout();
  f();
  return ::testing::internal::GetCapturedStdout();
}

// Installs an executable shell script as $SYSCOMMON_ROOT/bin/NAME (first on PATH).
void write_stub(const std::string &name, const std::string &script);

// A segment attached directly with shmget/shmat, bypassing the library, so that tests
// check the bytes at the documented offsets.
class RawSegment {
 public:
  explicit RawSegment(int shm_key);
  ~RawSegment();
  RawSegment(const RawSegment &) = delete;
  RawSegment &operator=(const RawSegment &) = delete;

  uint8_t *bytes() const { return base_; }
  uint32_t u32(std::size_t off) const {
    uint32_t v;
    std::memcpy(&v, base_ + off, 4);
    return v;
  }
  uint16_t u16(std::size_t off) const {
    uint16_t v;
    std::memcpy(&v, base_ + off, 2);
    return v;
  }
  void put_u32(std::size_t off, uint32_t v) { std::memcpy(base_ + off, &v, 4); }
  void put_u16(std::size_t off, uint16_t v) { std::memcpy(base_ + off, &v, 2); }
  std::string text(std::size_t off) const { return reinterpret_cast<const char *>(base_ + off); }
  // True when every byte of [off, off + n) is zero.
  bool zero(std::size_t off, std::size_t n) const;

 private:
  uint8_t *base_ = nullptr;
};

}  // namespace syscommon::testing

// Skips the current test unless it runs inside the launcher's private namespaces: such a
// test creates IPC objects, processes or network settings that must never reach the host.
#define SYSCOMMON_REQUIRE_ISOLATION()                                                         \
  do {                                                                                        \
    if (!::syscommon::testing::isolated())                                                    \
      GTEST_SKIP() << "needs private namespaces: run through tests/launch.sh as root";        \
  } while (0)

namespace syscommon::testing {

// A test of a freshly initialised shared store, run only inside the private namespaces.
class StoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

}  // namespace syscommon::testing

#endif
