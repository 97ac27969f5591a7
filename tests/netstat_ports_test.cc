// Port link, port and trunk counters and a port's VLAN list, with the switch's link state
// and counters supplied by the program as the device's switch library does (these
// definitions replace the library's defaults through the dynamic symbol table).
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "support/test_support.h"
#include "syscommon/netstat.h"
#include "syscommon/platform.h"
#include "syscommon/shm.h"

namespace {
uint32_t g_link_bits = 0;
}  // namespace

extern "C" uint32_t Ssc_getPortLinkState(void) { return g_link_bits; }

// Counter k of port p is 1000 p + k.
extern "C" int Ssc_getPortStatsCounter(int port, uint32_t counters[24]) {
  for (int k = 0; k < 24; ++k) counters[k] = static_cast<uint32_t>(1000 * port + k);
  return 0;
}

namespace {

// Trk1: ports 1, 2; Trk3: ports 0, 4, 9; Trk2 and Trk4 empty; port 8 names group 7.
const uint32_t kGroups[10] = {3, 1, 1, 0, 3, 0, 0, 0, 7, 3};

class PortsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    set_shm_trk_mem(kGroups);
  }
};

TEST_F(PortsTest, PortAndTrunkLink) {
  g_link_bits = (1u << 3) | (1u << 9);
  EXPECT_EQ(Link_state(), g_link_bits);
  const std::tuple<int, int> rows[] = {{3, 1}, {9, 1}, {0, 0}, {10, 0}, {11, 0}, {12, 1},
                                       {13, 0}, {14, 0}, {-1, 0}, {1000, 0}};
  for (const auto &[port, want] : rows) EXPECT_EQ(CheckPortLink(port), want) << port;
  g_link_bits = 1u << 2;
  EXPECT_EQ(CheckPortLink(10), 1);
  EXPECT_EQ(CheckPortLink(12), 0);
}

TEST_F(PortsTest, TrunkBlocksSumTheFirstEighteenCounters) {
  static uint32_t stats[PORT_STATS_BLOCKS][PORT_STATS_COUNTERS];
  std::memset(stats, 0, sizeof stats);
  stats[13][20] = 77;  // the last six counters of a group block are not touched
  EXPECT_EQ(Get_Port_Stats(stats), 0);
  for (int p = 0; p < 10; ++p) EXPECT_EQ(stats[p][5], static_cast<uint32_t>(1000 * p + 5)) << p;
  for (int k = 0; k < 24; ++k) {
    const uint32_t summed = k < PORT_STATS_SUMMED ? 1u : 0u;
    EXPECT_EQ(stats[10][k], summed * (1000 + 2000 + 2 * k)) << k;
    EXPECT_EQ(stats[11][k], 0u) << k;
    EXPECT_EQ(stats[12][k], summed * (0 + 4000 + 9000 + 3 * k)) << k;
  }
  EXPECT_EQ(stats[13][20], 77u);
}

TEST(PortVlanTest, MatchingVlanIdsInAscendingOrder) {
  ShmVlanInfoRecord t[17] = {};
  const std::tuple<uint16_t, uint8_t> rows[] = {{10, 2}, {5, 2}, {4095, 2}, {1, 2}, {7, 1}, {5, 2}};
  int i = 0;
  for (const auto &[vid, member] : rows) {
    t[i].vid = vid;
    t[i++].data[3] = member;
  }
  t[7] = {20, {}};  // after the id 0 that ends the table
  t[7].data[3] = 2;
  char out[128] = {};
  EXPECT_EQ(vlan_get_vlan(3, out, t, 2), 7);
  EXPECT_STREQ(out, "1,5,10,");  // 4095 is out of range; the repeated 5 is written once
  EXPECT_EQ(vlan_get_vlan(3, out, t, 1), 9);  // appended
  EXPECT_STREQ(out, "1,5,10,7,");
  for (const int port : {-1, 16}) {
    char none[8] = {};
    EXPECT_EQ(vlan_get_vlan(port, none, t, 0), 0) << port;
  }
}

}  // namespace
