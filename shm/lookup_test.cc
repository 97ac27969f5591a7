// Interface lookups: search order and tie rules where two records could match, the
// not-found values, and the quirks the callers rely on ("WAN"/"LAN", bridge ids above
// 7999, the case and prefix rules of the two user-name searches, the "1/1" default).
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "shm/ifs_test_records.h"
#include "syscommon/platform.h"

using namespace syscommon::testing;

namespace {

// A picture in which several records could answer the same question.
class LookupTest : public IfsTest {
 protected:
  void SetUp() override {
    IfsTest::SetUp();
    if (IsSkipped()) return;
    const uint32_t m24 = ip4(255, 255, 255, 0);
    seg->wan(0, 2, "eth0.2", ip4(10, 0, 0, 2), m24, 1, ip4(10, 0, 0, 1), 3);
    seg->wan(1, 3, "eth0.3", ip4(10, 1, 0, 2), ip4(255, 255, 0, 0), 0, ip4(10, 1, 0, 1), 4);
    seg->vlan(0, 1, "eth0.1", "lan1", ip4(192, 168, 1, 1), m24, 1);
    seg->vlan(1, 2, "eth0.2v", "shadow-of-wan", ip4(192, 168, 2, 1), m24, 5);
    seg->vlan(2, 3, "eth0.3v", "shadow-of-lan", ip4(192, 168, 3, 1), m24, 6);
    seg->vlan(3, 7, "eth0.7", "office", ip4(192, 168, 7, 1), m24, 1);
    seg->vlan(4, 7, "eth0.7b", "office-b", ip4(192, 168, 8, 1), m24, 0);
    seg->vlan(5, 8001, "eth0.8001", "vlan8001", ip4(192, 168, 9, 1), m24, 1);
    seg->bridge(0, 8001, "br8001", "bridge-a", ip4(172, 16, 0, 1), 0);
    seg->bridge(1, 8001, "br8001b", "bridge-b", ip4(172, 16, 1, 1), 1);
    seg->bridge(2, 8002, "br8002", "bridge-c", ip4(172, 16, 2, 1), 1);
    seg->zone(1, 8002, "br8002z", "zone-c", ip4(172, 17, 2, 1), 1);
    seg->zone(2, 8003, "br8003", "zone-d", ip4(172, 17, 3, 1), 0);
  }
};

// The text a lookup leaves in a 32-byte buffer that held `before`.
template <class Lookup>
std::string text(Lookup lookup, const char *before = "untouched") {
  char out[32] = {};
  std::strcpy(out, before);
  lookup(out);
  return {out, strnlen(out, sizeof out)};
}

// The name a by-VLAN-id lookup finds; it must have zeroed the 32 bytes first.
std::string by_vid(int (*lookup)(int, char *), int vid) {
  char out[32];
  std::memset(out, 'x', sizeof out);
  lookup(vid, out);
  std::size_t n = strnlen(out, 32);
  EXPECT_TRUE(std::all_of(out + n, out + 32, [](char c) { return c == 0; })) << vid;
  return {out, n};
}

TEST_F(LookupTest, NamesByVidSearchWanThenVlanOrBridgesThenZonesAbove7999) {
  struct Case {
    int vid;
    const char *kernel, *user;
  };
  const Case cases[] = {
      {2, "eth0.2", "WAN"},          // WAN record 0 before VLAN record 1
      {3, "eth0.3", "LAN"},          // WAN record 1 is searched too
      {7, "eth0.7", "office"},       // the first of two VLAN records
      {8001, "br8001", "vlan8001"},  // kernel: above 7999 only bridges, the first one; user: VLANs first
      {8002, "br8002z", "zone-c"},   // a zone bridge overrides a bridge
      {8003, "br8003", "zone-d"},    // a zone bridge answers even when disabled
      {99, "", ""},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(by_vid(get_shm_interface_name_by_vid, c.vid), c.kernel) << c.vid;
    EXPECT_EQ(by_vid(get_shm_usr_interface_name_by_vid, c.vid), c.user) << c.vid;
  }
  seg->wan(1, 0, "");  // VLAN id 0 never answers "WAN" or "LAN", even with an unused WAN record
  EXPECT_EQ(by_vid(get_shm_usr_interface_name_by_vid, 0), "");
}

TEST_F(LookupTest, AddressLinkAndMaskByVid) {
  auto ip_mask = [](int vid) {
    uint32_t ip = 1, mask = 1;
    get_shm_ip_mask_by_vid(vid, &ip, &mask);
    return std::pair{ip, mask};
  };
  auto link = [](int vid) {
    uint32_t value = 77;  // untouched when not found
    get_shm_interface_link_by_vid(vid, &value);
    return value;
  };
  EXPECT_EQ(get_shm_interface_ip_by_vid(3), ip4(10, 1, 0, 2));
  EXPECT_EQ(get_shm_interface_ip_by_vid(7), ip4(192, 168, 7, 1));
  EXPECT_EQ(get_shm_interface_ip_by_vid(99), 0u);
  EXPECT_EQ(ip_mask(2), std::pair(ip4(10, 0, 0, 2), ip4(255, 255, 255, 0)));
  EXPECT_EQ(ip_mask(3), std::pair(ip4(192, 168, 3, 1), ip4(255, 255, 255, 0)));  // WAN record 1 is skipped
  EXPECT_EQ(ip_mask(99), std::pair(0u, 0u));
  EXPECT_EQ(std::vector<uint32_t>({link(2), link(3), link(7), link(99)}), std::vector<uint32_t>({1, 0, 1, 77}));
}

TEST_F(LookupTest, UserNameByAddressKernelNameAndIndexAndType) {
  EXPECT_EQ(text([](char *o) { get_shm_usr_interface_name_by_ip(ip4(10, 1, 0, 2), o); }), "LAN");
  EXPECT_EQ(text([](char *o) { get_shm_usr_interface_name_by_ip(ip4(192, 168, 8, 1), o); }), "office-b");
  EXPECT_EQ(text([](char *o) { get_shm_usr_interface_name_by_ip(ip4(1, 1, 1, 1), o); }), "untouched");
  const std::pair<const char *, const char *> by_name[] = {
      {"eth0.7", "office"}, {"eth0.2", "WAN"}, {"eth1.3", "LAN"},  // the number after the first '.'
      {"br8001", "bridge-b"},                                      // the last bridge with the id wins
      {"8002", "bridge-c"},  {"br9", ""},
  };
  for (const auto &[name, want] : by_name)
    EXPECT_EQ(text([name = name](char *o) { get_shm_usr_interface_name_by_interface_name(name, o); }), want) << name;

  seg->port(3, 5, 1);
  seg->port(4, 5, 0);
  const std::tuple<int, int, const char *> by_type[] = {  // "" : result 0 and out untouched
      {0, 0, "WAN"}, {1, 0, ""}, {3, 1, "office"}, {6, 1, ""}, {16, 1, ""}, {-1, 1, ""}, {0, 2, ""},
      {1, 2, "bridge-b"}, {4, 2, ""}, {3, 3, "1/4"}, {4, 3, ""}, {10, 3, ""}, {0, 4, ""}};
  for (const auto &[idx, type, want] : by_type) {
    int result = -1;
    EXPECT_EQ(text([&, i = idx, t = type](char *o) { result = get_shm_usr_interface_name_by_idx_and_type(i, t, o); },
                   ""),
              want)
        << idx << "/" << type;
    EXPECT_EQ(result, *want != '\0' ? 1 : 0) << idx << "/" << type;
  }
  seg->wan(0, 0, "");
  char out[32] = "";
  EXPECT_EQ(get_shm_usr_interface_name_by_idx_and_type(0, 0, out), 0);
}

TEST_F(LookupTest, OutOfRangeIndexNeverEntersTheSegment) {
  // With the system segment locked here, a child's lookup that entered it would block.
  Semaphore_P(1492);
  const pid_t child = fork();
  if (child == 0) {
    char out[32];
    for (const int idx : {-1, 17}) get_shm_interface_name(idx, out);
    for (const auto &[idx, type] : {std::pair{1, 0}, {-1, 1}, {16, 1}, {-1, 2}, {4, 2}, {-1, 3}, {10, 3}, {0, 4}})
      get_shm_usr_interface_name_by_idx_and_type(idx, type, out);
    _exit(0);
  }
  const int status = wait_for(child, std::chrono::seconds(2));
  Semaphore_V(1492);
  EXPECT_EQ(status, 0);
}

TEST_F(LookupTest, KernelNamesByIndexAndVidByKernelName) {
  // idx 0 is WAN record 0, idx n the VLAN record n - 1 (VLAN record 6 is unused).
  for (const auto &[idx, want] : {std::pair{0, "eth0.2"}, {4, "eth0.7"}, {7, ""}, {17, ""}, {-1, ""}})
    EXPECT_EQ(text([i = idx](char *o) { get_shm_interface_name(i, o); }), want) << idx;
  EXPECT_EQ(text([](char *o) { get_shm_vlan_interface_name(6, o); }), "");
  for (const auto &[name, vid] : {std::pair{"", -1}, {"eth0.2", 2}, {"eth0.7b", 7}, {"eth0.7b ", -1}, {"eth0.3", -1}})
    EXPECT_EQ(get_shm_vid_by_interface_name(name), vid) << name;  // WAN record 1 is not searched
  EXPECT_EQ(get_shm_vconfIdx_by_vid(7), 3);
  EXPECT_EQ(get_shm_vconfIdx_by_vid(4000), -1);
}

TEST_F(LookupTest, VlanInformationRecordsAndDefaultRouteWan) {
  seg->put_u16(kVlanInfoAt + 270, 4000);  // information record 15
  seg->bytes()[kVlanInfoAt + 270 + 17] = 0x5a;
  EXPECT_EQ(get_shm_vlan_vid_by_index(15), 4000);
  EXPECT_EQ(get_shm_vlan_vid_by_index(16), -1);
  ShmVlanInfoRecord rec{};
  EXPECT_EQ(get_shm_vlan_info_by_vid(4000, &rec), 1);
  EXPECT_EQ(rec.data[15], 0x5a);
  EXPECT_EQ(get_shm_vlan_info_by_vid(11, &rec), 0);

  seg->put_u32(432, 1);  // default route through WAN record 1
  uint32_t ip = 0, mask = 0, lan_ip = 0, lan_mask = 0;
  shm_wan_ip(255, &ip, &mask);
  shm_lan_ip(&lan_ip, &lan_mask);
  EXPECT_EQ(std::vector<uint32_t>({shm_wan_gw(255), shm_ifs_ip(255), mask, shm_get_wan_ConnType(1), lan_ip,
                                   shm_link_state(0), shm_link_state(3)}),  // WAN record 0, VLAN record 2
            std::vector<uint32_t>({ip4(10, 1, 0, 1), ip4(10, 1, 0, 2), ip4(255, 255, 0, 0), 4,
                                   ip4(192, 168, 1, 1), 1, 6}));
}

TEST_F(LookupTest, VidByUserNameIgnoresCaseAndCountsWanRecordsInUse) {
  auto index = [](const char *name, int want_vid) {
    int vid = -7;
    int result = shm_getVidByUsrIfaceName(name, &vid);
    EXPECT_EQ(vid, result >= 0 ? want_vid : -7) << name;
    return result;
  };
  EXPECT_EQ(index("wan", 2), 0);   // "WAN" in any case resolves on WAN record 0
  EXPECT_EQ(index("LAN1", 1), 2);  // VLAN record 0 + two WAN records in use
  EXPECT_EQ(index("OFFICE", 7), 5);  // the first of two records
  for (const char *none : {"office-", "offic", "LAN"}) EXPECT_EQ(index(none, 0), -1);  // exact length; no "LAN"
  seg->wan(1, 0, "");
  EXPECT_EQ(index("lan1", 1), 1);
  seg->wan(0, 0, "");
  EXPECT_EQ(index("WAN", 0), -1);  // record 0 unused
  EXPECT_EQ(index("lan1", 1), 0);
}

TEST_F(LookupTest, IpMaskByUserNameIsCaseSensitiveOnAPrefix) {
  struct Case {
    const char *name, *ifname;
    int index;
    uint32_t ip;
  };
  const Case cases[] = {
      {"WAN", "eth0.2", 0, ip4(10, 0, 0, 2)},
      {"W", "eth0.2", 0, ip4(10, 0, 0, 2)},          // any prefix of "WAN"
      {"wan", "", -1, 0},                            // case-sensitive
      {"lan", "eth0.1", 2, ip4(192, 168, 1, 1)},     // a prefix of "lan1"
      {"office", "eth0.7", 5, ip4(192, 168, 7, 1)},  // also a prefix of "office-b": first wins
      {"office-b", "eth0.7", 6, ip4(192, 168, 8, 1)},
      {"OFFICE", "", -1, 0},
      {"lan12", "", -1, 0},
  };
  for (const Case &c : cases) {
    char ifname[32] = "";
    uint32_t ip = 9, mask = 9;
    EXPECT_EQ(shm_getIpMaskByUsrIfaceName(c.name, ifname, &ip, &mask), c.index) << c.name;
    EXPECT_STREQ(ifname, c.ifname) << c.name;
    EXPECT_EQ(ip, c.ip) << c.name;
    if (c.index < 0) EXPECT_EQ(mask, 0u) << c.name;
  }
  seg->wan(0, 0, "");
  char ifname[32] = "";
  uint32_t ip = 9, mask = 9;
  EXPECT_EQ(shm_getIpMaskByUsrIfaceName("WAN", ifname, &ip, &mask), -1);
  EXPECT_EQ(ip, 0u);
}

TEST_F(LookupTest, PortNameByVidDefaultsToFirstPortAndPortTypeOrder) {
  for (auto [p, pvid, in_use] : {std::tuple{0, 1, 0}, {4, 2, 0}, {5, 7, 0}, {6, 7, 0}, {7, 9, 1}, {12, 30, 0}})
    seg->port(p, uint16_t(pvid), uint16_t(in_use));
  seg->zone(0, 8001, "br8001", "z", 0, 1, {{9, "m9"}, {7, "m7"}});
  seg->zone(1, 8002, "br8002", "z2", 0, 0, {{1, "m1"}});
  for (const auto &[vid, want] : {std::pair{7, "1/6"}, {30, "1/13"}, {2, "1/5"}, {4000, "1/1"}, {-1, "1/1"}}) {
    EXPECT_EQ(text([v = vid](char *o) { get_shm_usr_port_name_by_vid(v, o); }), want) << vid;
    EXPECT_EQ(text([v = vid](char *o) { get_shm_port_number_by_vid(v, o); }), want) << vid;
  }
  const std::pair<int, int> types[] = {
      {8, 2},   // port 1/8 in use
      {6, 2},   // VLAN 7 is a member of the enabled zone 0
      {5, 0},   // the WAN VLAN
      {1, 1},   // VLAN 1 is a member of a disabled zone only
      {13, 1},  // VLAN 30
      {11, 2},  // VLAN id 0 equals the empty member slots of an enabled zone
  };
  for (const auto &[port, want] : types) EXPECT_EQ(shm_check_port_type(port), want) << port;
}

}  // namespace
