// The registry: shm_init creates and zeroes every segment, a second run wipes it, and the
// sub-initialisers reset their own segment.
#include <sys/sem.h>
#include <sys/shm.h>

#include "support/test_support.h"
#include "syscommon/shm.h"

using syscommon::testing::RawSegment;

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

class RegistryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

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

}  // namespace
