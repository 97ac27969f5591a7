// Ring-port tests of the redundancy segment and the time-zone conversions.
#include <cstring>

#include "support/test_support.h"
#include "syscommon/shm.h"

using syscommon::testing::RawSegment;

namespace {

using RedundancyTest = syscommon::testing::StoreTest;

TEST_F(RedundancyTest, ConfigLandsAtOffsetFourAndRingPortsAreFound) {
  ShmRl2Config cfg{};
  cfg.enabled = 1;
  cfg.ring[0] = {1, {}, 3, 4};
  cfg.ring[1] = {1, {}, 7, 3};
  cfg.rest[3] = 0x99;
  shm_rl2SetConfig(&cfg);
  RawSegment raw(7891);
  // Enabled word at 4; ring records at 8 and 18 (enabled byte, ports at +8 and +9).
  EXPECT_EQ(std::vector<int>({int(raw.u32(4)), raw.bytes()[8], raw.bytes()[16], raw.bytes()[17], raw.bytes()[18],
                              raw.bytes()[26], raw.bytes()[27], raw.bytes()[31]}),
            std::vector<int>({1, 1, 3, 4, 1, 7, 3, 0x99}));
  ShmRedundancy all{};
  shm_rdndntGetAll(&all);
  EXPECT_EQ(std::memcmp(&all, raw.bytes(), 40), 0);

  // Ports counted from 1; shm_rdndntIsRl2RingPort counts from 0.
  EXPECT_EQ(shm_rdndntIsRl2RingPort(6), 2);
  const std::pair<int, int> both_rings[] = {{3, 1}, {4, 1}, {7, 2}, {5, 0}};  // ring 1 is asked first
  for (const auto &[port, ring] : both_rings) EXPECT_EQ(Srdndnt_isRedundantPort(port), ring) << port;
  raw.bytes()[8] = 0;  // ring 1 disabled: port 3 now found on ring 2
  EXPECT_EQ(Srdndnt_isRedundantPort(3), 2);
  EXPECT_EQ(Srdndnt_isRedundantPort(4), 0);
  raw.put_u32(4, 0);  // Rapid Loop v2 disabled
  EXPECT_EQ(Srdndnt_isRedundantPort(7), 0);
}

TEST_F(RedundancyTest, TimeZoneConversionsShiftTheCallersValue) {
  const std::pair<int, long> cases[] = {{0, -43200}, {16, -12600}, {21, 0}, {46, 28800}, {53, 34200}, {62, 43200}};
  for (const auto &[index, offset] : cases) {
    shm_set_timezone(index);
    time_t t = 1000000, g = 1000000;
    struct tm *tm = tarn_localtime(&t);
    EXPECT_EQ(t, 1000000 + offset) << index;
    ASSERT_NE(tm, nullptr);
    EXPECT_EQ(tm->tm_hour, (1000000 + offset) / 3600 % 24) << index;
    tarn_Gmttime(&g);
    EXPECT_EQ(g, 1000000 - offset) << index;
  }
}

}  // namespace
