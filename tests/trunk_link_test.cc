// The trunk-to-port mapping with the switch's link state supplied by the program, as the
// device's switch library does: this definition replaces the library's default through
// the dynamic symbol table.
#include <gtest/gtest.h>

#include "support/test_support.h"
#include "syscommon/platform.h"
#include "syscommon/shm.h"

namespace {
uint32_t g_link_bits = 0;
}  // namespace

extern "C" uint32_t Ssc_getPortLinkState(void) { return g_link_bits; }

namespace {

class TrunkLinkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    // Trk1: ports 1, 2, 3; Trk2: port 9; Trk3: ports 0, 4; Trk4: empty.
    const uint32_t groups[10] = {3, 1, 1, 1, 3, 0, 0, 0, 0, 2};
    set_shm_trk_mem(groups);
  }
};

TEST_F(TrunkLinkTest, LeadingPortIsTheLowestMemberWithLink) {
  struct Case {
    uint32_t link;
    int group, leading;
  };
  const Case cases[] = {
      {0x00e, 1, 1},  {0x00c, 1, 2},  {0x008, 1, 3},  {0x3f1, 1, -1},  // link on non-members only
      {0x200, 2, 9},  {0x011, 3, 0},  {0x010, 3, 4},  {0x3ff, 4, -1},  // empty group
      {0x3ff, 0, -1}, {0x3ff, 5, -1}, {0x3ff, -1, -1},
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
      {5, 5},  {7, 7},   {14, 14}, {-2, -2}, // ports in no group come back unchanged
  };
  for (const auto &[port, want] : cases) EXPECT_EQ(Ssc_virtualTrunkPort2Port(port), want) << port;
}

}  // namespace
