// Trunk tables at their documented offsets and the port-to-trunk accessors (the link
// state of the switch is covered by tests/trunk_link_test.cc).
#include "shm/ifs_test_records.h"
#include "syscommon/shm.h"

using namespace syscommon::testing;

namespace {

class TrunkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

TEST_F(TrunkTest, SetterReplacesBothTablesAndBuildsMemberMasks) {
  SysSegmentWriter seg;
  for (int k = 0; k < 14; ++k) seg.put_u32(kTrunkGroupAt + 4 * k, 0xdead);  // stale tables
  seg.put_u32(kTrunkMaskAt + 16, 0x1234);                                 // word after the masks
  const uint32_t groups[10] = {0, 1, 1, 0, 3, 3, 3, 0, 9, 4};
  EXPECT_EQ(set_shm_trk_mem(groups), 0);
  for (int p = 0; p < 10; ++p) EXPECT_EQ(seg.u32(kTrunkGroupAt + 4 * p), groups[p]) << p;
  EXPECT_EQ(seg.u32(kTrunkMaskAt + 0), 0x006u);
  EXPECT_EQ(seg.u32(kTrunkMaskAt + 4), 0u);
  EXPECT_EQ(seg.u32(kTrunkMaskAt + 8), 0x070u);
  EXPECT_EQ(seg.u32(kTrunkMaskAt + 12), 0x200u);  // group 9 of port 8 belongs to no mask
  EXPECT_EQ(seg.u32(kTrunkMaskAt + 16), 0x1234u);

  const std::tuple<int, int, int> ports[] = {{0, 0, 0}, {2, 1, 10}, {5, 3, 12}, {9, 4, 13},
                                             {10, 0, 0}, {-1, 0, 0}, {7, 0, 7}};
  for (const auto &[p, group, id] : ports) {
    EXPECT_EQ(get_shm_port_to_trk_grp(p), group) << p;
    EXPECT_EQ(get_shm_port_to_trk_id(p), id) << p;
  }
  uint32_t mask = 99;
  get_shm_trk_mem(3, &mask);
  EXPECT_EQ(mask, 0x070u);
  for (int g : {0, 5, -1}) {
    mask = 99;
    get_shm_trk_mem(g, &mask);
    EXPECT_EQ(mask, 0u) << g;
  }
}

TEST_F(TrunkTest, WithoutLinkNoGroupHasALeadingPort) {
  // The host's default link state has no port up.
  const uint32_t groups[10] = {1, 1, 0, 0, 0, 0, 0, 0, 0, 0};
  set_shm_trk_mem(groups);
  EXPECT_EQ(Ssc_getLeadingPortOfTrunkGroupByGroup(1), -1);
  EXPECT_EQ(Ssc_virtualTrunkPort2Port(10), -1);
  EXPECT_EQ(Ssc_virtualTrunkPort2Port(0), -1);
  EXPECT_EQ(Ssc_virtualTrunkPort2Port(3), 3);
}

}  // namespace
