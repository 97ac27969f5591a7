// Multicast table: overwrite-all on a matching MAC, reuse of freed slots, the high-water
// count, a full table, and the get/remove asymmetry for entries stored for any VLAN.
#include <cstring>

#include "support/test_support.h"
#include "syscommon/shm.h"

using syscommon::testing::RawSegment;

namespace {

ShmMcastEntry entry(uint16_t vid, uint8_t last, uint8_t tag = 0) {
  ShmMcastEntry e{};
  e.vid = vid;
  const uint8_t mac[6] = {0x01, 0x00, 0x5e, 0x00, 0x00, last};
  std::memcpy(e.mac, mac, 6);
  std::memset(e.data, tag, sizeof e.data);
  return e;
}

class McastTest : public syscommon::testing::StoreTest {
 protected:
  static int32_t count() { return static_cast<int32_t>(RawSegment(7895).u32(6144)); }
  // VLAN id and payload tag of entry i, read from the raw layout.
  static std::pair<int, int> raw_entry(std::size_t i) {
    RawSegment raw(7895);
    return {raw.u16(24 * i), raw.bytes()[24 * i + 8]};
  }
  static int set(uint16_t vid, uint8_t last, uint8_t tag = 0) {
    ShmMcastEntry e = entry(vid, last, tag);
    return shm_mcast_set(&e);
  }
};

TEST_F(McastTest, AppendsAtCountAndAnyVlanSetOverwritesEveryEntryWithThatMac) {
  ASSERT_EQ(set(10, 5, 1), 0);
  RawSegment raw(7895);
  EXPECT_EQ(raw.bytes()[2], 0x01);  // MAC at +2, payload at +8 to +23
  EXPECT_EQ(raw.bytes()[7], 5);
  EXPECT_EQ(raw.bytes()[23], 1);
  set(10, 6, 3);
  set(20, 5, 2);
  ASSERT_EQ(count(), 3);
  EXPECT_EQ(raw_entry(2), std::make_pair(20, 2));
  ASSERT_EQ(set(0, 5, 9), 0);
  EXPECT_EQ(count(), 3);
  EXPECT_EQ(raw_entry(0), std::make_pair(0, 9));
  EXPECT_EQ(raw_entry(1), std::make_pair(10, 3));
  EXPECT_EQ(raw_entry(2), std::make_pair(0, 9));
  // A VLAN-specific set matches only its VLAN: the entries now stored for 0 differ, so it appends.
  ASSERT_EQ(set(10, 5, 7), 0);
  EXPECT_EQ(count(), 4);
  EXPECT_EQ(raw_entry(3), std::make_pair(10, 7));
}

TEST_F(McastTest, RemovedSlotIsReusedAndCountNeverShrinks) {
  for (uint8_t i = 1; i <= 4; ++i) set(1, i);
  auto second = entry(1, 2), third = entry(0, 3);
  ASSERT_EQ(shm_mcast_remove(&second), 0);
  ASSERT_EQ(shm_mcast_remove(&third), 0);  // VLAN 0 in the request matches any entry
  EXPECT_TRUE(RawSegment(7895).zero(24, 48));
  EXPECT_EQ(count(), 4);
  ASSERT_EQ(set(7, 9), 0);
  EXPECT_EQ(raw_entry(1).first, 7);  // the lowest free slot
  EXPECT_EQ(count(), 4);
  EXPECT_EQ(shm_mcast_remove(&second), -1);
}

TEST_F(McastTest, GetMatchesAnyVlanEntryButRemoveDoesNot) {
  set(0, 8, 0x55);
  set(10, 4, 1);
  set(20, 4, 2);
  struct Case {
    uint16_t vid;
    uint8_t last;
    int result, stored_vid, tag;
  };
  const Case cases[] = {
      {42, 8, 0, 0, 0x55},  // an entry stored for any VLAN answers every VLAN
      {20, 4, 0, 20, 2},    // VLANs are told apart
      {0, 4, 0, 10, 1},     // any VLAN: the first in table order
      {30, 4, -1, 30, 0},
  };
  for (const Case &c : cases) {
    ShmMcastEntry want = entry(c.vid, c.last);
    EXPECT_EQ(shm_mcast_get(&want), c.result) << c.vid;
    EXPECT_EQ(want.vid, c.stored_vid) << c.vid;  // copied out whole
    EXPECT_EQ(want.data[15], c.tag) << c.vid;
  }
  auto rm = entry(42, 8);
  EXPECT_EQ(shm_mcast_remove(&rm), -1);
  auto rm_any = entry(0, 8);
  EXPECT_EQ(shm_mcast_remove(&rm_any), 0);
  EXPECT_EQ(shm_mcast_get(&rm), -1);
}

TEST_F(McastTest, FullTableRefusesANewMacButStillOverwrites) {
  for (int i = 0; i < 256; ++i) {
    ShmMcastEntry e = entry(1, 0xFF);
    e.mac[4] = uint8_t(i);
    e.mac[3] = uint8_t(i >> 8);
    ASSERT_EQ(shm_mcast_set(&e), 0) << i;
  }
  EXPECT_EQ(count(), 256);
  EXPECT_EQ(set(1, 1), -1);
  ShmMcastEntry existing = entry(1, 0xFF, 0x77);
  existing.mac[4] = 200;
  EXPECT_EQ(shm_mcast_set(&existing), 0);
  EXPECT_EQ(raw_entry(200).second, 0x77);
  // Entries beyond the count are never looked at.
  RawSegment(7895).put_u32(6144, 1);
  EXPECT_EQ(shm_mcast_get(&existing), -1);
}

}  // namespace
