// Interface lookups: search order and tie rules where two records could match, the
// not-found values, and the quirks the callers rely on ("WAN"/"LAN", bridge ids above
// 7999, the case and prefix rules of the two user-name searches, the "1/1" default).
#include "shm/ifs_test_records.h"
#include "syscommon/shm.h"

using namespace syscommon::testing;

namespace {

class LookupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
  std::string name32(const char *out) { return std::string(out, strnlen(out, 32)); }
};

// A picture in which several records could answer the same question.
void publish_overlapping(SysSegmentWriter &seg) {
  seg.wan(0, 2, "eth0.2", ip4(10, 0, 0, 2), ip4(255, 255, 255, 0), 1, ip4(10, 0, 0, 1), 3);
  seg.wan(1, 3, "eth0.3", ip4(10, 1, 0, 2), ip4(255, 255, 0, 0), 0, ip4(10, 1, 0, 1), 4);
  seg.vlan(0, 1, "eth0.1", "lan1", ip4(192, 168, 1, 1), ip4(255, 255, 255, 0), 1);
  seg.vlan(1, 2, "eth0.2v", "shadow-of-wan", ip4(192, 168, 2, 1), ip4(255, 255, 255, 0), 5);
  seg.vlan(2, 3, "eth0.3v", "shadow-of-lan", ip4(192, 168, 3, 1), ip4(255, 255, 255, 0), 6);
  seg.vlan(3, 7, "eth0.7", "office", ip4(192, 168, 7, 1), ip4(255, 255, 255, 0), 1);
  seg.vlan(4, 7, "eth0.7b", "office-b", ip4(192, 168, 8, 1), ip4(255, 255, 255, 0), 0);
  seg.vlan(5, 8001, "eth0.8001", "vlan8001", ip4(192, 168, 9, 1), ip4(255, 255, 255, 0), 1);
  seg.bridge(0, 8001, "br8001", "bridge-a", ip4(172, 16, 0, 1), 0);
  seg.bridge(1, 8001, "br8001b", "bridge-b", ip4(172, 16, 1, 1), 1);
  seg.bridge(2, 8002, "br8002", "bridge-c", ip4(172, 16, 2, 1), 1);
  seg.zone(1, 8002, "br8002z", "zone-c", ip4(172, 17, 2, 1), 1);
  seg.zone(2, 8003, "br8003", "zone-d", ip4(172, 17, 3, 1), 0);
}

TEST_F(LookupTest, KernelNameByVidSearchesWanThenVlanOrBridgesThenZonesAbove7999) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  const std::pair<int, const char *> cases[] = {
      {2, "eth0.2"},     // WAN record 0 before VLAN record 1
      {3, "eth0.3"},     // WAN record 1 is searched too
      {7, "eth0.7"},     // the first of two VLAN records
      {8001, "br8001"},  // above 7999 only bridges: the first bridge, never the VLAN record
      {8002, "br8002z"}, // a zone bridge overrides a bridge
      {8003, "br8003"},
      {8004, ""},
      {99, ""},
  };
  for (const auto &[vid, want] : cases) {
    char out[32];
    std::memset(out, 'x', sizeof out);
    get_shm_interface_name_by_vid(vid, out);
    EXPECT_EQ(name32(out), want) << vid;
    EXPECT_TRUE(std::all_of(out + strlen(want), out + 32, [](char c) { return c == 0; })) << vid;
  }
}

TEST_F(LookupTest, UserNameByVidAnswersWanLanVlanThenBridgeOverriddenByZone) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  const std::pair<int, const char *> cases[] = {
      {2, "WAN"}, {3, "LAN"}, {7, "office"}, {1, "lan1"},
      {8001, "vlan8001"},  // a VLAN record answers before the bridges
      {8002, "zone-c"},    // bridge 2 matches, zone 1 overrides
      {8003, "zone-d"},    // a zone bridge answers even when disabled
      {42, ""},
  };
  for (const auto &[vid, want] : cases) {
    char out[32];
    std::memset(out, 'x', sizeof out);
    get_shm_usr_interface_name_by_vid(vid, out);
    EXPECT_EQ(name32(out), want) << vid;
  }
  // VLAN id 0 never answers "WAN" or "LAN", even with an unused WAN record.
  seg.wan(1, 0, "");
  char out[32];
  get_shm_usr_interface_name_by_vid(0, out);
  EXPECT_NE(std::string(out), "WAN");
  EXPECT_NE(std::string(out), "LAN");
}

TEST_F(LookupTest, AddressLinkAndMaskByVid) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  EXPECT_EQ(get_shm_interface_ip_by_vid(2), ip4(10, 0, 0, 2));
  EXPECT_EQ(get_shm_interface_ip_by_vid(3), ip4(10, 1, 0, 2));
  EXPECT_EQ(get_shm_interface_ip_by_vid(7), ip4(192, 168, 7, 1));
  EXPECT_EQ(get_shm_interface_ip_by_vid(99), 0u);

  uint32_t ip = 1, mask = 1;
  get_shm_ip_mask_by_vid(3, &ip, &mask);  // WAN record 1 is skipped: VLAN record 2 answers
  EXPECT_EQ(ip, ip4(192, 168, 3, 1));
  get_shm_ip_mask_by_vid(2, &ip, &mask);
  EXPECT_EQ(ip, ip4(10, 0, 0, 2));
  EXPECT_EQ(mask, ip4(255, 255, 255, 0));
  get_shm_ip_mask_by_vid(99, &ip, &mask);
  EXPECT_EQ(ip, 0u);
  EXPECT_EQ(mask, 0u);

  uint32_t link = 77;
  get_shm_interface_link_by_vid(3, &link);
  EXPECT_EQ(link, 0u);
  get_shm_interface_link_by_vid(7, &link);
  EXPECT_EQ(link, 1u);
  link = 77;
  get_shm_interface_link_by_vid(99, &link);
  EXPECT_EQ(link, 77u);  // untouched when not found
}

TEST_F(LookupTest, UserNameByAddressAndByKernelName) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  char out[32] = "untouched";
  get_shm_usr_interface_name_by_ip(ip4(10, 1, 0, 2), out);
  EXPECT_STREQ(out, "LAN");
  get_shm_usr_interface_name_by_ip(ip4(192, 168, 8, 1), out);
  EXPECT_STREQ(out, "office-b");
  std::strcpy(out, "untouched");
  get_shm_usr_interface_name_by_ip(ip4(1, 1, 1, 1), out);
  EXPECT_STREQ(out, "untouched");

  const std::pair<const char *, const char *> by_name[] = {
      {"eth0.7", "office"}, {"eth0.2", "WAN"}, {"eth1.3", "LAN"},  // the number after the first '.'
      {"br8001", "bridge-b"},                                      // the last bridge with the id wins
      {"8002", "bridge-c"}, {"br9", ""},
  };
  for (const auto &[name, want] : by_name) {
    get_shm_usr_interface_name_by_interface_name(name, out);
    EXPECT_STREQ(out, want) << name;
  }
}

TEST_F(LookupTest, UserNameByIndexAndType) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  seg.port(3, 5, 1);
  seg.port(4, 5, 0);
  struct Case {
    int idx, type, result;
    const char *name;
  };
  const Case cases[] = {{0, 0, 1, "WAN"},  {1, 0, 0, ""},         {3, 1, 1, "office"}, {6, 1, 0, ""},
                        {16, 1, 0, ""},    {-1, 1, 0, ""},        {0, 2, 0, ""},       {1, 2, 1, "bridge-b"},
                        {4, 2, 0, ""},     {3, 3, 1, "1/4"},      {4, 3, 0, ""},       {10, 3, 0, ""},
                        {0, 4, 0, ""}};
  for (const Case &c : cases) {
    char out[32] = "";
    EXPECT_EQ(get_shm_usr_interface_name_by_idx_and_type(c.idx, c.type, out), c.result) << c.idx << "/" << c.type;
    EXPECT_STREQ(out, c.name) << c.idx << "/" << c.type;
  }
  seg.wan(0, 0, "");
  char out[32] = "";
  EXPECT_EQ(get_shm_usr_interface_name_by_idx_and_type(0, 0, out), 0);
}

TEST_F(LookupTest, KernelNamesByIndexAndVidByKernelName) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  // idx 0 is WAN record 0, idx n the VLAN record n - 1 (VLAN record 6 is unused).
  const std::pair<int, const char *> by_index[] = {{0, "eth0.2"}, {4, "eth0.7"}, {7, ""}, {17, ""}, {-1, ""}};
  for (const auto &[idx, want] : by_index) {
    char out[32] = "x";
    get_shm_interface_name(idx, out);
    EXPECT_STREQ(out, want) << idx;
  }

  EXPECT_EQ(get_shm_vid_by_interface_name(""), -1);
  EXPECT_EQ(get_shm_vid_by_interface_name("eth0.2"), 2);
  EXPECT_EQ(get_shm_vid_by_interface_name("eth0.7b"), 7);
  EXPECT_EQ(get_shm_vid_by_interface_name("eth0.7b "), -1);
  EXPECT_EQ(get_shm_vid_by_interface_name("eth0.3"), -1);  // WAN record 1 is not searched
  EXPECT_EQ(get_shm_vconfIdx_by_vid(7), 3);
  EXPECT_EQ(get_shm_vconfIdx_by_vid(4000), -1);
}

TEST_F(LookupTest, VlanInformationRecordsAndDefaultRouteWan) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  seg.put_u16(kVlanInfoAt + 18 * 15, 4000);
  seg.bytes()[kVlanInfoAt + 18 * 15 + 17] = 0x5a;
  EXPECT_EQ(get_shm_vlan_vid_by_index(15), 4000);
  EXPECT_EQ(get_shm_vlan_vid_by_index(16), -1);
  ShmVlanInfoRecord rec{};
  EXPECT_EQ(get_shm_vlan_info_by_vid(4000, &rec), 1);
  EXPECT_EQ(rec.data[15], 0x5a);
  EXPECT_EQ(get_shm_vlan_info_by_vid(11, &rec), 0);

  seg.put_u32(432, 1);  // default route through WAN record 1
  EXPECT_EQ(shm_wan_gw(255), ip4(10, 1, 0, 1));
  EXPECT_EQ(shm_ifs_ip(255), ip4(10, 1, 0, 2));
  uint32_t ip = 0, mask = 0;
  shm_wan_ip(255, &ip, &mask);
  EXPECT_EQ(mask, ip4(255, 255, 0, 0));
  EXPECT_EQ(shm_link_state(0), 1u);  // WAN record 0
  EXPECT_EQ(shm_link_state(3), 6u);  // VLAN record 2
}

TEST_F(LookupTest, VidByUserNameIgnoresCaseAndCountsWanRecordsInUse) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  struct Case {
    const char *name;
    int index, vid;
  };
  const Case cases[] = {
      {"wan", 0, 2},       // "WAN" in any case resolves on WAN record 0
      {"LAN1", 2, 1},      // VLAN record 0 + two WAN records in use
      {"OFFICE", 5, 7},    // the first of two records
      {"office-", -1, 0},  // exact length only
      {"offic", -1, 0},
      {"LAN", -1, 0},      // "LAN" is no user name
  };
  for (const Case &c : cases) {
    int vid = -7;
    EXPECT_EQ(shm_getVidByUsrIfaceName(c.name, &vid), c.index) << c.name;
    EXPECT_EQ(vid, c.index >= 0 ? c.vid : -7) << c.name;
  }
  seg.wan(1, 0, "");
  int vid = 0;
  EXPECT_EQ(shm_getVidByUsrIfaceName("lan1", &vid), 1);
  seg.wan(0, 0, "");
  EXPECT_EQ(shm_getVidByUsrIfaceName("WAN", &vid), -1);  // record 0 unused
  EXPECT_EQ(shm_getVidByUsrIfaceName("lan1", &vid), 0);
}

TEST_F(LookupTest, IpMaskByUserNameIsCaseSensitiveOnAPrefix) {
  SysSegmentWriter seg;
  publish_overlapping(seg);
  struct Case {
    const char *name;
    int index;
    const char *ifname;
    uint32_t ip;
  };
  const Case cases[] = {
      {"WAN", 0, "eth0.2", ip4(10, 0, 0, 2)},
      {"W", 0, "eth0.2", ip4(10, 0, 0, 2)},             // any prefix of "WAN"
      {"wan", -1, "", 0},                               // case-sensitive
      {"lan", 2, "eth0.1", ip4(192, 168, 1, 1)},        // a prefix of "lan1"
      {"office", 5, "eth0.7", ip4(192, 168, 7, 1)},     // also a prefix of "office-b": first wins
      {"office-b", 6, "eth0.7", ip4(192, 168, 8, 1)},
      {"OFFICE", -1, "", 0},
      {"lan12", -1, "", 0},
  };
  for (const Case &c : cases) {
    char ifname[32] = "";
    uint32_t ip = 9, mask = 9;
    EXPECT_EQ(shm_getIpMaskByUsrIfaceName(c.name, ifname, &ip, &mask), c.index) << c.name;
    EXPECT_STREQ(ifname, c.ifname) << c.name;
    EXPECT_EQ(ip, c.ip) << c.name;
    if (c.index < 0) EXPECT_EQ(mask, 0u) << c.name;
  }
  seg.wan(0, 0, "");
  char ifname[32] = "";
  uint32_t ip = 9, mask = 9;
  EXPECT_EQ(shm_getIpMaskByUsrIfaceName("WAN", ifname, &ip, &mask), -1);
  EXPECT_EQ(ip, 0u);
}

TEST_F(LookupTest, PortNameByVidDefaultsToFirstPortAndPortTypeOrder) {
  SysSegmentWriter seg;
  seg.wan(0, 2, "eth0.2");
  seg.port(0, 1);
  seg.port(4, 2);
  seg.port(5, 7);
  seg.port(6, 7);
  seg.port(7, 9, 1);
  seg.port(12, 30);
  seg.zone(0, 8001, "br8001", "z", 0, 1, {{9, "m9"}, {7, "m7"}});
  seg.zone(1, 8002, "br8002", "z2", 0, 0, {{1, "m1"}});
  char out[32];
  const std::pair<int, const char *> names[] = {{7, "1/6"}, {30, "1/13"}, {2, "1/5"}, {4000, "1/1"}, {-1, "1/1"}};
  for (const auto &[vid, want] : names) {
    get_shm_usr_port_name_by_vid(vid, out);
    EXPECT_STREQ(out, want) << vid;
    get_shm_port_number_by_vid(vid, out);
    EXPECT_STREQ(out, want) << vid;
  }
  const std::pair<int, int> types[] = {
      {8, 2},  // port 1/8 in use
      {6, 2},  // VLAN 7 is a member of the enabled zone 0
      {5, 0},  // the WAN VLAN
      {1, 1},  // VLAN 1 is a member of a disabled zone only
      {13, 1},
      {11, 2},  // VLAN id 0 equals the empty member slots of an enabled zone
  };
  for (const auto &[port, want] : types) EXPECT_EQ(shm_check_port_type(port), want) << port;
}

}  // namespace
