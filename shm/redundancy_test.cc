// Ring-port tests of the redundancy segment and the time-zone conversions.
#include <cstring>

#include "support/test_support.h"
#include "syscommon/shm.h"

using syscommon::testing::RawSegment;

namespace {

class RedundancyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

TEST_F(RedundancyTest, ConfigLandsAtOffsetFourAndRingPortsAreFound) {
  ShmRl2Config cfg{};
  cfg.enabled = 1;
  cfg.ring[0] = {1, {}, 3, 4};
  cfg.ring[1] = {1, {}, 7, 3};
  cfg.rest[3] = 0x99;
  shm_rl2SetConfig(&cfg);
  RawSegment raw(7891);
  EXPECT_EQ(raw.u32(4), 1u);
  EXPECT_EQ(raw.bytes()[8], 1);    // ring 1 enabled
  EXPECT_EQ(raw.bytes()[16], 3);   // ring 1 first port
  EXPECT_EQ(raw.bytes()[17], 4);   // ring 1 second port
  EXPECT_EQ(raw.bytes()[18], 1);   // ring 2 enabled
  EXPECT_EQ(raw.bytes()[26], 7);
  EXPECT_EQ(raw.bytes()[31], 0x99);

  EXPECT_EQ(Srdndnt_isRedundantPort(3), 1);  // ring 1 wins over ring 2's second port
  EXPECT_EQ(Srdndnt_isRedundantPort(4), 1);
  EXPECT_EQ(Srdndnt_isRedundantPort(7), 2);
  EXPECT_EQ(shm_rdndntIsRl2RingPort(6), 2);  // 0-based port 6 is port 7
  EXPECT_EQ(Srdndnt_isRedundantPort(5), 0);

  raw.bytes()[8] = 0;  // ring 1 disabled: port 3 now found on ring 2
  EXPECT_EQ(Srdndnt_isRedundantPort(3), 2);
  EXPECT_EQ(Srdndnt_isRedundantPort(4), 0);
  raw.put_u32(4, 0);  // Rapid Loop v2 disabled
  EXPECT_EQ(Srdndnt_isRedundantPort(7), 0);

  ShmRedundancy all{};
  shm_rdndntGetAll(&all);
  EXPECT_EQ(all.rl2.ring[1].port1, 7);
  EXPECT_EQ(std::memcmp(&all, raw.bytes(), 40), 0);
}

TEST_F(RedundancyTest, TimeZoneConversionsShiftTheCallersValue) {
  struct Case {
    int index;
    long offset;
  };
  for (Case c : {Case{0, -43200}, Case{16, -12600}, Case{21, 0}, Case{46, 28800}, Case{53, 34200},
                 Case{62, 43200}}) {
    SCOPED_TRACE(c.index);
    shm_set_timezone(c.index);
    time_t t = 1000000;
    struct tm *tm = tarn_localtime(&t);
    EXPECT_EQ(t, 1000000 + c.offset);
    ASSERT_NE(tm, nullptr);
    time_t expect = 1000000 + c.offset;
    EXPECT_EQ(tm->tm_hour, gmtime(&expect)->tm_hour);
    time_t g = 1000000;
    tarn_Gmttime(&g);
    EXPECT_EQ(g, 1000000 - c.offset);
  }
}

}  // namespace
