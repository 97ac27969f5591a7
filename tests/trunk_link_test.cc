// Trunk tables and the trunk-to-port mapping, with the switch's link state supplied by the
// program as the device's switch library does: this definition replaces the library's
// default through the dynamic symbol table.
#include <gtest/gtest.h>

#include <tuple>

#include "support/test_support.h"
#include "syscommon/platform.h"
#include "syscommon/shm.h"

namespace {
uint32_t g_link_bits = 0;
}  // namespace

extern "C" uint32_t Ssc_getPortLinkState(void) { return g_link_bits; }

namespace {

using syscommon::testing::RawSegment;

// Trk1: ports 1, 2, 3; Trk2: port 9; Trk3: ports 0, 4; Trk4: empty; port 8 names group 7.
const uint32_t kGroups[10] = {3, 1, 1, 1, 3, 0, 0, 0, 7, 2};

class TrunkLinkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    RawSegment sys(7890);
    for (int k = 0; k < 14; ++k) sys.put_u32(7048 + 4 * k, 0xdead);  // stale tables
    sys.put_u32(7104, 0x1234);                                      // the word after them
    ASSERT_EQ(set_shm_trk_mem(kGroups), 0);
  }
};

TEST_F(TrunkLinkTest, SetterReplacesBothTablesAndBuildsMemberMasks) {
  RawSegment sys(7890);
  for (int p = 0; p < 10; ++p) EXPECT_EQ(sys.u32(7048 + 4 * p), kGroups[p]) << p;
  EXPECT_EQ(std::vector<uint32_t>({sys.u32(7088), sys.u32(7092), sys.u32(7096), sys.u32(7100), sys.u32(7104)}),
            std::vector<uint32_t>({0x00e, 0x200, 0x011, 0, 0x1234}));  // group 7 belongs to no mask

  const std::tuple<int, int, int> ports[] = {{0, 3, 12}, {2, 1, 10}, {9, 2, 11}, {7, 0, 7}, {10, 0, 0}, {-1, 0, 0}};
  for (const auto &[p, group, id] : ports) {
    EXPECT_EQ(get_shm_port_to_trk_grp(p), group) << p;
    EXPECT_EQ(get_shm_port_to_trk_id(p), id) << p;
  }
  for (const auto &[g, want] : {std::pair{3, 0x011u}, {0, 0u}, {5, 0u}, {-1, 0u}}) {
    uint32_t mask = 99;
    get_shm_trk_mem(g, &mask);
    EXPECT_EQ(mask, want) << g;
  }
}

TEST_F(TrunkLinkTest, LeadingPortIsTheLowestMemberWithLink) {
  struct Case {
    uint32_t link;
    int group, leading;
  };
  const Case cases[] = {
      {0x00e, 1, 1},  {0x00c, 1, 2},  {0x008, 1, 3},  {0x3f1, 1, -1},  // link on non-members only
      {0x000, 1, -1}, {0x200, 2, 9},  {0x011, 3, 0},  {0x010, 3, 4},   // no link at all
      {0x3ff, 4, -1}, {0x3ff, 0, -1}, {0x3ff, 5, -1}, {0x3ff, -1, -1}, // empty group, no group
  };
  for (const Case &c : cases) {
    g_link_bits = c.link;
    EXPECT_EQ(Ssc_getLeadingPortOfTrunkGroupByGroup(c.group), c.leading) << c.group << " link 0x" << std::hex << c.link;
  }
}

TEST_F(TrunkLinkTest, VirtualTrunkPortsAndMemberPortsMapToTheLeadingPort) {
  g_link_bits = 0x01c;  // ports 2, 3, 4
  const std::pair<int, int> cases[] = {
      {10, 2}, {11, -1}, {12, 4}, {13, -1},  // virtual ports of groups 1..4
      {1, 2},  {0, 4},   {9, -1},            // members map to their group's leading port
      {5, 5},  {14, 14}, {-2, -2},           // ports in no group come back unchanged
  };
  for (const auto &[port, want] : cases) EXPECT_EQ(Ssc_virtualTrunkPort2Port(port), want) << port;
}

}  // namespace
