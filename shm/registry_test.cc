// The registry: shm_init creates and zeroes every segment, a second run wipes it, and the
// sub-initialisers reset their own segment; a process killed while creating a semaphore
// leaves it usable.
#include <dlfcn.h>
#include <signal.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <chrono>
#include <functional>

#include "support/test_support.h"
#include "syscommon/shm.h"

using syscommon::testing::RawSegment;
using namespace std::chrono_literals;

namespace {
// When set to a key, the process kills itself right after a semget that may have created
// that key's set: the worst moment for a creator to die.
int die_after_creating = -1;
}  // namespace

extern "C" int semget(key_t key, int nsems, int flags) noexcept {
  using Fn = int (*)(key_t, int, int);
  static const auto real = reinterpret_cast<Fn>(dlsym(RTLD_NEXT, "semget"));
  const int id = real(key, nsems, flags);
  if (id >= 0 && key == die_after_creating && (flags & IPC_CREAT) != 0) raise(SIGKILL);
  return id;
}

namespace {

struct Seg {
  int sem, shm, size;
};
// Keys and sizes as every process of the device expects them.
const Seg kAll[] = {{1492, 7890, 7112}, {1493, 7891, 40},  {1506, 7893, 784}, {1507, 7894, 1112},
                    {1509, 7895, 6148}, {1510, 7896, 4},   {1511, 7897, 4},   {1512, 7898, 128},
                    {1513, 7899, 3},    {1514, 7900, 8},   {1516, 7901, 4},   {1519, 7902, 296},
                    {1520, 7903, 4},    {1521, 7904, 8},   {1522, 7906, 908}, {1503, 7905, 1},
                    {1524, 7907, 464},  {1526, 7908, 160}, {1527, 7909, 4},   {1528, 7910, 24},
                    {1529, 7911, 4},    {1523, -1, 0},     {1525, -1, 0}};  // semaphores of their own

using RegistryTest = syscommon::testing::StoreTest;

TEST_F(RegistryTest, InitCreatesEverySegmentWithItsSizeAndFreeSemaphore) {
  for (const Seg &s : kAll) {
    SCOPED_TRACE(s.sem);
    int sem = semget(s.sem, 1, 0);
    ASSERT_GE(sem, 0);
    EXPECT_EQ(semctl(sem, 0, GETVAL), 1);
    if (s.shm < 0) continue;
    shmid_ds ds{};
    ASSERT_EQ(shmctl(shmget(s.shm, 0, 0), IPC_STAT, &ds), 0);
    EXPECT_EQ(ds.shm_segsz, static_cast<size_t>(s.size));
    EXPECT_TRUE(RawSegment(s.shm).zero(0, s.size));
  }
}

TEST_F(RegistryTest, SecondInitWipesWhatProcessesWrote) {
  for (const Seg &s : kAll)
    if (s.shm >= 0) std::memset(RawSegment(s.shm).bytes(), 0x5A, s.size);
  shm_init();
  for (const Seg &s : kAll)
    if (s.shm >= 0) EXPECT_TRUE(RawSegment(s.shm).zero(0, s.size)) << s.shm;
}

TEST_F(RegistryTest, SubInitialisersResetOnlyTheirSegment) {
  shm_ipMrouteSetMode(5);
  shm_igmpsnoopingSetEnable(1);
  shm_set_reboot_flag(9);
  RawSegment(7898).bytes()[127] = 0x42;
  shm_ipMrouteInit();
  EXPECT_TRUE(RawSegment(7900).zero(0, 8));
  EXPECT_EQ(RawSegment(7898).bytes()[127], 0x42);
  shm_vlanCpuInfoInit();
  EXPECT_TRUE(RawSegment(7898).zero(0, 128));
  EXPECT_EQ(shm_get_reboot_flag(), 9u);
}

TEST_F(RegistryTest, AccessorsRecreateARemovedSegmentAndSemaphore) {
  // A process that runs before start-up (or after someone removed the objects) must
  // neither block nor crash, even with the old identifiers cached.
  shm_set_reboot_flag(3);
  ASSERT_EQ(shmctl(shmget(7890, 0, 0), IPC_RMID, nullptr), 0);
  ASSERT_EQ(semctl(semget(1492, 1, 0), 0, IPC_RMID), 0);
  EXPECT_EQ(shm_get_reboot_flag(), 0u);
  shm_set_reboot_flag(4);
  EXPECT_EQ(RawSegment(7890).u32(20), 4u);
}

TEST_F(RegistryTest, CreatorKilledRightAfterCreatingASemaphoreDoesNotBlockTheNextCaller) {
  const std::pair<int, std::function<bool()>> cases[] = {
      {1492, [] { return shm_set_timezone(7), shm_get_timezone() == 7; }},  // the system segment
      {1513, [] {
         uint8_t fault = 0, master = 0, coupling = 0;
         shm_ledSetMaster(4);
         shm_ledGetAllLedBits(&fault, &master, &coupling);
         return master == 4;
       }},
  };
  for (const auto &[key, use] : cases) {
    SCOPED_TRACE(key);
    ASSERT_EQ(semctl(semget(key, 0, 0), 0, IPC_RMID), 0);
    const pid_t creator = fork();
    if (creator == 0) {
      die_after_creating = key;
      _exit(use() ? 0 : 1);
    }
    ASSERT_EQ(syscommon::testing::wait_for(creator, 5s), 128);
    ASSERT_GE(semget(key, 0, 0), 0) << "the creator did not create the set";
    const pid_t next = fork();
    if (next == 0) _exit(use() ? 0 : 1);
    EXPECT_EQ(syscommon::testing::wait_for(next, 5s), 0) << "the next caller blocked or failed";
  }
}

}  // namespace
