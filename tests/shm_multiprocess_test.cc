// Several processes on one store: whole records are never seen half-written, and a process
// killed while it holds a segment's lock does not keep it from everybody else.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>

#include "support/test_support.h"
#include "syscommon/platform.h"
#include "syscommon/shm.h"

namespace {

using namespace std::chrono_literals;
using syscommon::testing::read_file;
using syscommon::testing::wait_for;
using syscommon::testing::write_file;

class MultiProcessTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

// The web session list is 240 bytes: large enough that an unlocked copy would tear.
bool torn(const uint8_t (&rec)[SHM_WEB_SESSION_LIST_SIZE]) {
  return std::any_of(rec, rec + sizeof rec, [&](uint8_t b) { return b != rec[0]; });
}

TEST_F(MultiProcessTest, ConcurrentWritersAndReadersNeverSeeATornRecord) {
  constexpr int kRounds = 4000;
  pid_t writers[2];
  for (uint8_t seed = 0; seed < 2; ++seed) {
    writers[seed] = fork();
    if (writers[seed] != 0) continue;
    uint8_t rec[SHM_WEB_SESSION_LIST_SIZE];
    for (int i = 0; i < kRounds; ++i) {
      std::memset(rec, uint8_t(seed + i * 2), sizeof rec);
      shm_sysSet_multiSession_List(rec);
      shm_sysGet_multiSession_List(rec);
      if (torn(rec)) _exit(1);
    }
    _exit(0);
  }
  int torn_reads = 0;
  for (int i = 0; i < kRounds; ++i) {
    uint8_t rec[SHM_WEB_SESSION_LIST_SIZE];
    shm_sysGet_multiSession_List(rec);
    torn_reads += torn(rec) ? 1 : 0;
  }
  EXPECT_EQ(torn_reads, 0);
  for (pid_t w : writers) EXPECT_EQ(wait_for(w, 60s), 0);
}

TEST_F(MultiProcessTest, ProcessKilledHoldingALockReleasesIt) {
  const std::function<void()> take_lock[] = {
      [] {  // an accessor's critical section, never left
        void *ptr = nullptr;
        shm_enterCS(1522, 7906, &ptr, 908);
        static_cast<uint8_t *>(ptr)[8] = 5;  // the web user count
      },
      [] { Semaphore_P(1522); },  // a bare semaphore, as the log readers take theirs
  };
  for (const auto &take : take_lock) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t holder = fork();
    if (holder == 0) {
      take();
      (void)!write(ready[1], "x", 1);
      pause();
      _exit(0);
    }
    char c;
    ASSERT_EQ(read(ready[0], &c, 1), 1);
    close(ready[0]);
    close(ready[1]);
    // While the holder lives, another process blocks on the segment.
    pid_t blocked = fork();
    if (blocked == 0) _exit(shm_sysGet_usercount() == 5 ? 0 : 1);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(waitpid(blocked, nullptr, WNOHANG), 0) << "the segment was not locked";
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    EXPECT_EQ(wait_for(blocked, 5s), 0) << "the segment stayed locked";
  }
}

// With the semaphore and segment tables of the namespace full, the primitives report the
// failures and still hand out a writable pointer (a scratch page): they never leave it
// unset, since no caller checks their results.
TEST_F(MultiProcessTest, FullIpcTablesStillGiveAPointer) {
  const std::string sem_limits = "/proc/sys/kernel/sem", shm_limit = "/proc/sys/kernel/shmmni";
  const std::string saved_sem = read_file(sem_limits), saved_shm = read_file(shm_limit);
  write_file(sem_limits, "32000 1024000000 500 0");  // no further semaphore set
  write_file(shm_limit, "0");                        // no further segment
  testing::internal::CaptureStderr();
  void *ptr = nullptr;
  const int entered = shm_enterCS(4242, 4243, &ptr, 64);
  if (ptr != nullptr) static_cast<uint8_t *>(ptr)[63] = 1;
  const int left = shm_leaveCS(4242, 4243, &ptr);
  const int initialised = Semaphore_init(4242);
  const std::string err = testing::internal::GetCapturedStderr();
  write_file(sem_limits, saved_sem);
  write_file(shm_limit, saved_shm);
  EXPECT_EQ(entered, -1);
  EXPECT_EQ(left, -1);
  EXPECT_EQ(initialised, -1);
  EXPECT_EQ(ptr, nullptr) << "cleared on leaving";
  EXPECT_NE(err.find("syscommon: semget(key 4242) failed: errno 28\n"), std::string::npos) << err;
  EXPECT_NE(err.find("syscommon: shmat(key 4243) failed"), std::string::npos) << err;
}

}  // namespace
