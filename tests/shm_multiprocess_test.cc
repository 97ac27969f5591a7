// Several processes on one store: whole records are never seen half-written, and a process
// killed inside a critical section does not lock the segment for everybody else.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "support/test_support.h"
#include "syscommon/platform.h"
#include "syscommon/shm.h"

namespace {

class MultiProcessTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

// Waits for `pid` up to `limit`; kills it and returns -1 if it did not finish.
int wait_for(pid_t pid, std::chrono::milliseconds limit) {
  auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (std::chrono::steady_clock::now() < deadline) {
    if (waitpid(pid, &status, WNOHANG) == pid) return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  kill(pid, SIGKILL);
  waitpid(pid, &status, 0);
  return -1;
}

// The web session list is 240 bytes: large enough that an unlocked copy would tear.
bool uniform(const uint8_t *rec, std::size_t n) {
  for (std::size_t i = 1; i < n; ++i)
    if (rec[i] != rec[0]) return false;
  return true;
}

TEST_F(MultiProcessTest, ConcurrentWritersAndReadersNeverSeeATornRecord) {
  constexpr int kRounds = 4000;
  auto writer = [](uint8_t seed) {
    uint8_t rec[SHM_WEB_SESSION_LIST_SIZE];
    for (int i = 0; i < kRounds; ++i) {
      std::memset(rec, uint8_t(seed + i * 2), sizeof rec);
      shm_sysSet_multiSession_List(rec);
      uint8_t back[SHM_WEB_SESSION_LIST_SIZE];
      shm_sysGet_multiSession_List(back);
      if (!uniform(back, sizeof back)) _exit(1);
    }
    _exit(0);
  };
  pid_t a = fork();
  if (a == 0) writer(0);
  pid_t b = fork();
  if (b == 0) writer(1);
  int torn = 0;
  for (int i = 0; i < kRounds; ++i) {
    uint8_t rec[SHM_WEB_SESSION_LIST_SIZE];
    shm_sysGet_multiSession_List(rec);
    if (!uniform(rec, sizeof rec)) ++torn;
  }
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(wait_for(a, std::chrono::seconds(60)), 0);
  EXPECT_EQ(wait_for(b, std::chrono::seconds(60)), 0);
}

TEST_F(MultiProcessTest, ProcessKilledInsideACriticalSectionReleasesTheSegment) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  pid_t holder = fork();
  if (holder == 0) {
    void *ptr = nullptr;
    shm_enterCS(1522, 7906, &ptr, 908);  // and never leaves
    static_cast<uint8_t *>(ptr)[8] = 5;
    (void)!write(ready[1], "x", 1);
    pause();
    _exit(0);
  }
  char c;
  ASSERT_EQ(read(ready[0], &c, 1), 1);
  // While the holder lives, another process blocks on the segment.
  pid_t blocked = fork();
  if (blocked == 0) _exit(shm_sysGet_usercount() == 5 ? 0 : 1);
  EXPECT_EQ(waitpid(blocked, nullptr, WNOHANG), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(waitpid(blocked, nullptr, WNOHANG), 0) << "the segment was not locked";

  kill(holder, SIGKILL);
  waitpid(holder, nullptr, 0);
  EXPECT_EQ(wait_for(blocked, std::chrono::seconds(5)), 0);
  pid_t next = fork();
  if (next == 0) _exit(shm_sysGet_usercount() == 5 ? 0 : 1);
  EXPECT_EQ(wait_for(next, std::chrono::seconds(5)), 0) << "the segment stayed locked";
  close(ready[0]);
  close(ready[1]);
}

TEST_F(MultiProcessTest, BareSemaphoreIsReleasedWhenItsHolderDies) {
  Semaphore_init(1517);
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  pid_t holder = fork();
  if (holder == 0) {
    Semaphore_P(1517);
    (void)!write(ready[1], "x", 1);
    pause();
    _exit(0);
  }
  char c;
  ASSERT_EQ(read(ready[0], &c, 1), 1);
  close(ready[0]);
  close(ready[1]);
  kill(holder, SIGKILL);
  waitpid(holder, nullptr, 0);
  pid_t next = fork();
  if (next == 0) {
    Semaphore_P(1517);
    Semaphore_V(1517);
    _exit(0);
  }
  EXPECT_EQ(wait_for(next, std::chrono::seconds(5)), 0);
}

}  // namespace
