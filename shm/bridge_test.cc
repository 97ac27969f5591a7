// Bridge and zone-bridge tables: the bulk setters' bytes and commands, the bridge mode,
// and the lookups by id, by name and by member.
#include "shm/ifs_test_records.h"
#include "syscommon/shm.h"

using namespace syscommon::testing;

namespace {

using BridgeTest = IfsTest;

template <class Config>
Config bridge_cfg(uint32_t id, const char *usr, uint32_t ip, uint8_t enable) {
  Config c{};
  std::strncpy(c.usr_name, usr, sizeof c.usr_name - 1);
  c.id = id;
  c.ip = ip;
  c.mask = ip4(255, 255, 255, 0);
  c.enable = enable;
  return c;
}

TEST_F(BridgeTest, BridgeSetterFillsRecordsKeepsLinkAndPublishesAsBrg) {
  std::size_t b1 = kBridgeAt + 88;
  seg->put_u32(b1 + 80, 1);  // link of bridge 1, the daemon's
  seg->bytes()[b1 + 84] = 0x77;
  ShmBridgeConfig recs[4]{};
  recs[0] = bridge_cfg<ShmBridgeConfig>(8001, "office-br", ip4(172, 16, 0, 1), 1);
  recs[1] = bridge_cfg<ShmBridgeConfig>(8002, "lab", ip4(172, 16, 1, 1), 0);
  EXPECT_EQ(set_shm_brg_info_all("br", recs), 0);
  EXPECT_EQ(seg->text(kBridgeAt), "br8001");
  EXPECT_EQ(seg->text(kBridgeAt + 32), "office-br");
  EXPECT_EQ(std::vector<uint32_t>({seg->u32(kBridgeAt + 64), seg->u32(kBridgeAt + 68), seg->u32(kBridgeAt + 72),
                                   seg->bytes()[kBridgeAt + 76], seg->bytes()[b1 + 76], seg->u32(b1 + 80),
                                   seg->bytes()[b1 + 84]}),
            std::vector<uint32_t>({8001, ip4(172, 16, 0, 1), ip4(255, 255, 255, 0), 1, 0, 1, 0x77}));
  EXPECT_EQ(seg->text(b1), "br8002");
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{ifs_line("17-br8001-BRG-8001"), ifs_line("18-br8002-BRG-8002"),
                                                     ifs_line("19-br0-BRG-0"), ifs_line("20-br0-BRG-0")}));
}

TEST_F(BridgeTest, ZoneSetterCopiesMembersAndSharesTheNumbers17To20) {
  ShmZoneBridgeConfig recs[4]{};
  recs[2] = bridge_cfg<ShmZoneBridgeConfig>(8100, "zone-a", ip4(172, 20, 0, 1), 1);
  recs[2].member_vid[0] = 10;
  recs[2].member_vid[15] = -1;
  std::strcpy(recs[2].member_name[0], "dmz");
  std::strcpy(recs[2].member_name[15], "last");
  EXPECT_EQ(set_shm_zone_brg_info_all("zbr", recs), 0);
  std::size_t z2 = zone_at(2);
  EXPECT_EQ(seg->text(z2), "zbr8100");
  EXPECT_EQ(seg->text(z2 + 32), "zone-a");
  EXPECT_EQ(std::vector<uint32_t>({seg->u32(z2 + 64), seg->bytes()[z2 + 76], seg->u32(z2 + 84), seg->u32(z2 + 84 + 60)}),
            std::vector<uint32_t>({8100, 1, 10, 0xffffffff}));
  EXPECT_EQ(seg->text(z2 + 148), "dmz");
  EXPECT_EQ(seg->text(z2 + 628), "last");
  std::vector<std::string> lines = trace_lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], ifs_line("17-zbr0-BRG-0"));
  EXPECT_EQ(lines[2], ifs_line("19-zbr8100-BRG-8100"));
}

TEST_F(BridgeTest, BridgeModeZoneWinsOverBridgeAndNeedsEnableByteOne) {
  const std::tuple<uint8_t, uint8_t, int> cases[] = {{0, 0, 0}, {1, 0, 1}, {0, 1, 2}, {1, 1, 2}, {2, 0, 0}, {0, 2, 0}};
  for (const auto &[bridge_enable, zone_enable, mode] : cases) {
    seg->bridge(3, 8001, "br8001", "b", 0, bridge_enable);
    seg->zone(1, 8002, "br8002", "z", 0, zone_enable);
    EXPECT_EQ(shm_get_brg_mode(), mode) << int(bridge_enable) << "/" << int(zone_enable);
  }
}

TEST_F(BridgeTest, AddressByIdSkipsDisabledBridgesAndFallsBackToZones) {
  seg->bridge(0, 8001, "br8001", "a", ip4(1, 1, 1, 1), 0);
  seg->bridge(1, 8001, "br8001", "b", ip4(2, 2, 2, 2), 3);  // any non-zero enable byte
  seg->bridge(2, 8002, "br8002", "c", ip4(3, 3, 3, 3), 0);
  seg->zone(0, 8002, "br8002", "z", ip4(4, 4, 4, 4), 0);
  seg->zone(3, 8002, "br8002", "z", ip4(5, 5, 5, 5), 1);
  EXPECT_EQ(get_shm_brg_IP_by_gid(8001), ip4(2, 2, 2, 2));
  EXPECT_EQ(get_shm_brg_IP_by_gid(8002), ip4(5, 5, 5, 5));
  EXPECT_EQ(get_shm_brg_IP_by_gid(8003), 0u);
  EXPECT_EQ(get_shm_brg_IP_by_index(2), ip4(3, 3, 3, 3));
}

TEST_F(BridgeTest, NamesByIdAndBrgNamesComeFromRecordZeroOnly) {
  seg->bridge(0, 8001, "br8001", "first", 0, 0);
  seg->bridge(2, 8001, "br8001x", "last", 0, 0, 4);
  seg->zone(0, 8005, "br8005", "z", 0, 0);
  seg->zone(1, 8006, "br8006", "z", 0, 1);
  char out[32];
  get_shm_bridge_UsrName_by_gid(8001, out);
  EXPECT_STREQ(out, "last");  // the last match wins, enabled or not
  get_shm_brg_interface_name(1, out);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(shm_brg_link_state(2), 4u);

  using NameByVid = int (*)(int, char *);
  const std::tuple<NameByVid, int, int> brg[] = {
      {get_shm_brg_interface_name_by_vid, 8001, 1},      {get_shm_brg_interface_name_by_vid, 8002, 0},
      {get_shm_zone_brg_interface_name_by_vid, 8005, 1}, {get_shm_zone_brg_interface_name_by_vid, 8006, 0},
  };
  for (const auto &[fn, vid, result] : brg) {
    std::strcpy(out, "x");
    EXPECT_EQ(fn(vid, out), result) << vid;
    EXPECT_STREQ(out, result != 0 ? "BRG" : "") << vid;
  }

  int vid = 0;
  EXPECT_EQ(shm_getVidByBridgeIfName("brg", &vid), 0);
  EXPECT_EQ(shm_getVidByBridgeIfName("BRG1", &vid), 0);
  EXPECT_EQ(vid, 0);
  EXPECT_EQ(shm_getVidByBridgeIfName("BRG", &vid), 1);
  EXPECT_EQ(vid, 8001);
}

TEST_F(BridgeTest, ZoneMembershipTests) {
  seg->zone(0, 8001, "br8001", "z0", 0, 0, {{10, "ten-in-z0"}, {11, "eleven"}});
  seg->zone(1, 8002, "br8002", "z1", 0, 1, {{12, "twelve"}, {10, "ten-in-z1"}, {10, "ten-again"}});
  for (std::size_t j = 0; j < 16; ++j)
    for (int z = 2; z < 4; ++z) seg->put_u32(zone_at(z) + 84 + 4 * j, 0xffffffffu);  // -1: empty
  struct Case {
    int vid;
    const char *name;  // zone member name: first slot of the last zone; enable not looked at
    int any_zone, enabled_zone;
  };
  const Case cases[] = {{10, "ten-in-z1", 1, 1}, {11, "eleven", 1, 0}, {12, "twelve", 1, 1}, {13, "", 0, 0}};
  for (const Case &c : cases) {
    char out[32];
    get_shm_zoneBrg_zone_Name_by_vid(c.vid, out);
    EXPECT_STREQ(out, c.name) << c.vid;
    EXPECT_EQ(is_zoneBasebrg_member(c.vid), c.any_zone) << c.vid;
    EXPECT_EQ(shm_check_vid_in_zone_brg(c.vid), c.enabled_zone) << c.vid;
  }
}

TEST_F(BridgeTest, SlaveInterfaceNeedsAPortInUseAndSkipsWanVlans) {
  seg->wan(0, 2, "eth0.2");
  seg->wan(1, 3, "eth0.3");
  seg->port(0, 5, 0);
  seg->port(6, 5, 1);
  seg->port(1, 2, 1);
  seg->port(2, 3, 1);
  seg->port(11, 6, 1);    // beyond the ten switch ports
  seg->port(4, 4096, 1);  // above the VLAN range: never looked at
  const std::tuple<int, int, const char *> cases[] = {{5, 1, "eth0.5"}, {2, 0, ""}, {3, 0, ""},
                                                      {6, 0, ""},       {4096, 0, ""}, {9, 0, ""}};
  for (const auto &[vid, result, name] : cases) {
    char out[32] = "";
    EXPECT_EQ(get_slave_interface_in_bridge(vid, out), result) << vid;
    EXPECT_STREQ(out, name) << vid;
  }
}

TEST_F(BridgeTest, AllPortsBridgedOrInZones) {
  EXPECT_EQ(is_all_ports_are_zone_bridge(), 1);     // every port has VLAN id 0
  EXPECT_EQ(check_all_ports_are_bridge_port(), 1);  // VLAN id 0 equals the unused WAN's id
  seg->wan(0, 2, "eth0.2");
  for (int p = 0; p < 10; ++p) seg->port(p, p < 5 ? 2 : 0, p < 5 ? 0 : 1);
  seg->port(12, 0, 0);  // not one of the ten ports
  EXPECT_EQ(check_all_ports_are_bridge_port(), 1);
  seg->port(9, 7, 0);
  EXPECT_EQ(check_all_ports_are_bridge_port(), 0);

  for (int p = 0; p < 10; ++p) seg->port(p, 0);
  seg->port(2, 10);
  seg->port(3, 11);
  seg->port(12, 99);  // beyond the ten switch ports
  seg->zone(0, 8001, "br8001", "z", 0, 1, {{10, "a"}});
  seg->zone(1, 8002, "br8002", "z", 0, 0, {{11, "b"}});
  EXPECT_EQ(is_all_ports_are_zone_bridge(), 0);  // VLAN 11 only in a disabled zone
  seg->zone(2, 8003, "br8003", "z", 0, 1, {{11, "b"}});
  EXPECT_EQ(is_all_ports_are_zone_bridge(), 1);
}

}  // namespace
