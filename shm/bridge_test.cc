// Bridge and zone-bridge tables: the bulk setters' bytes and commands, the bridge mode,
// and the lookups by id, by name and by member.
#include "shm/ifs_test_records.h"
#include "syscommon/shm.h"

using namespace syscommon::testing;

namespace {

class BridgeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    clear_trace();
  }
};

std::string ifs_line(const std::string &text) { return "echo \"" + text + "\" > " + sim_path("/proc/tarn/ifsInfo"); }

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
  SysSegmentWriter seg;
  seg.put_u32(kBridgeAt + 88 + 80, 1);  // link of bridge 1, the daemon's
  seg.bytes()[kBridgeAt + 88 + 84] = 0x77;
  ShmBridgeConfig recs[4] = {bridge_cfg<ShmBridgeConfig>(8001, "office-br", ip4(172, 16, 0, 1), 1),
                             bridge_cfg<ShmBridgeConfig>(8002, "lab", ip4(172, 16, 1, 1), 0),
                             bridge_cfg<ShmBridgeConfig>(0, "", 0, 0), bridge_cfg<ShmBridgeConfig>(0, "", 0, 0)};
  EXPECT_EQ(set_shm_brg_info_all("br", recs), 0);
  std::size_t b1 = kBridgeAt + 88;
  EXPECT_EQ(seg.text(kBridgeAt), "br8001");
  EXPECT_EQ(seg.text(kBridgeAt + 32), "office-br");
  EXPECT_EQ(seg.u32(kBridgeAt + 64), 8001u);
  EXPECT_EQ(seg.u32(kBridgeAt + 68), ip4(172, 16, 0, 1));
  EXPECT_EQ(seg.u32(kBridgeAt + 72), ip4(255, 255, 255, 0));
  EXPECT_EQ(seg.bytes()[kBridgeAt + 76], 1);
  EXPECT_EQ(seg.text(b1), "br8002");
  EXPECT_EQ(seg.bytes()[b1 + 76], 0);
  EXPECT_EQ(seg.u32(b1 + 80), 1u);
  EXPECT_EQ(seg.bytes()[b1 + 84], 0x77);
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{ifs_line("17-br8001-BRG-8001"), ifs_line("18-br8002-BRG-8002"),
                                                     ifs_line("19-br0-BRG-0"), ifs_line("20-br0-BRG-0")}));
  EXPECT_EQ(read_file(sim_path("/proc/tarn/ifsInfo")), "20-br0-BRG-0\n");
}

TEST_F(BridgeTest, ZoneSetterCopiesMembersAndSharesTheNumbers17To20) {
  SysSegmentWriter seg;
  ShmZoneBridgeConfig recs[4]{};
  recs[2] = bridge_cfg<ShmZoneBridgeConfig>(8100, "zone-a", ip4(172, 20, 0, 1), 1);
  recs[2].member_vid[0] = 10;
  recs[2].member_vid[15] = -1;
  std::strcpy(recs[2].member_name[0], "dmz");
  std::strcpy(recs[2].member_name[15], "last");
  EXPECT_EQ(set_shm_zone_brg_info_all("zbr", recs), 0);
  std::size_t z2 = kZoneAt + 660 * 2;
  EXPECT_EQ(seg.text(z2), "zbr8100");
  EXPECT_EQ(seg.text(z2 + 32), "zone-a");
  EXPECT_EQ(seg.u32(z2 + 64), 8100u);
  EXPECT_EQ(seg.bytes()[z2 + 76], 1);
  EXPECT_EQ(seg.u32(z2 + 84), 10u);
  EXPECT_EQ(seg.u32(z2 + 84 + 60), 0xffffffffu);
  EXPECT_EQ(seg.text(z2 + 148), "dmz");
  EXPECT_EQ(seg.text(z2 + 148 + 32 * 15), "last");
  std::vector<std::string> lines = trace_lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], ifs_line("17-zbr0-BRG-0"));
  EXPECT_EQ(lines[2], ifs_line("19-zbr8100-BRG-8100"));
}

TEST_F(BridgeTest, BridgeModeZoneWinsOverBridgeAndNeedsEnableByteOne) {
  struct Case {
    uint8_t bridge_enable, zone_enable;
    int mode;
  };
  const Case cases[] = {{0, 0, 0}, {1, 0, 1}, {0, 1, 2}, {1, 1, 2}, {2, 0, 0}, {0, 2, 0}};
  for (const Case &c : cases) {
    shm_init();
    SysSegmentWriter seg;
    seg.bridge(3, 8001, "br8001", "b", 0, c.bridge_enable);
    seg.zone(1, 8002, "br8002", "z", 0, c.zone_enable);
    EXPECT_EQ(shm_get_brg_mode(), c.mode) << int(c.bridge_enable) << "/" << int(c.zone_enable);
  }
}

TEST_F(BridgeTest, AddressByIdSkipsDisabledBridgesAndFallsBackToZones) {
  SysSegmentWriter seg;
  seg.bridge(0, 8001, "br8001", "a", ip4(1, 1, 1, 1), 0);
  seg.bridge(1, 8001, "br8001", "b", ip4(2, 2, 2, 2), 3);  // any non-zero enable byte
  seg.bridge(2, 8002, "br8002", "c", ip4(3, 3, 3, 3), 0);
  seg.zone(0, 8002, "br8002", "z", ip4(4, 4, 4, 4), 0);
  seg.zone(3, 8002, "br8002", "z", ip4(5, 5, 5, 5), 1);
  EXPECT_EQ(get_shm_brg_IP_by_gid(8001), ip4(2, 2, 2, 2));
  EXPECT_EQ(get_shm_brg_IP_by_gid(8002), ip4(5, 5, 5, 5));
  EXPECT_EQ(get_shm_brg_IP_by_gid(8003), 0u);
}

TEST_F(BridgeTest, NamesByIdAndBrgNamesComeFromRecordZeroOnly) {
  SysSegmentWriter seg;
  seg.bridge(0, 8001, "br8001", "first", 0, 0);
  seg.bridge(2, 8001, "br8001x", "last", 0, 0, 4);
  seg.zone(0, 8005, "br8005", "z", 0, 0);
  seg.zone(1, 8006, "br8006", "z", 0, 1);
  char out[32];
  get_shm_bridge_UsrName_by_gid(8001, out);
  EXPECT_STREQ(out, "last");
  get_shm_brg_interface_name(1, out);
  EXPECT_STREQ(out, "");

  EXPECT_EQ(get_shm_brg_interface_name_by_vid(8001, out), 1);
  EXPECT_STREQ(out, "BRG");
  std::strcpy(out, "x");
  EXPECT_EQ(get_shm_brg_interface_name_by_vid(8002, out), 0);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(get_shm_zone_brg_interface_name_by_vid(8005, out), 1);
  EXPECT_STREQ(out, "BRG");
  EXPECT_EQ(get_shm_zone_brg_interface_name_by_vid(8006, out), 0);  // record 1 is not compared

  int vid = 0;
  EXPECT_EQ(shm_getVidByBridgeIfName("brg", &vid), 0);
  EXPECT_EQ(shm_getVidByBridgeIfName("BRG1", &vid), 0);
  EXPECT_EQ(vid, 0);
  EXPECT_EQ(shm_getVidByBridgeIfName("BRG", &vid), 1);
  EXPECT_EQ(vid, 8001);
}

TEST_F(BridgeTest, ZoneMembershipTests) {
  SysSegmentWriter seg;
  seg.zone(0, 8001, "br8001", "z0", 0, 0, {{10, "ten-in-z0"}, {11, "eleven"}});
  seg.zone(1, 8002, "br8002", "z1", 0, 1, {{12, "twelve"}, {10, "ten-in-z1"}, {10, "ten-again"}});
  for (int j = 0; j < 16; ++j)
    for (int z = 2; z < 4; ++z) seg.put_u32(kZoneAt + 660 * z + 84 + 4 * j, 0xffffffffu);  // -1: empty
  char out[32];
  get_shm_zoneBrg_zone_Name_by_vid(10, out);
  EXPECT_STREQ(out, "ten-in-z1");  // first slot of the later zone
  get_shm_zoneBrg_zone_Name_by_vid(11, out);
  EXPECT_STREQ(out, "eleven");  // enable byte not looked at
  get_shm_zoneBrg_zone_Name_by_vid(13, out);
  EXPECT_STREQ(out, "");

  EXPECT_EQ(is_zoneBasebrg_member(11), 1);
  EXPECT_EQ(is_zoneBasebrg_member(13), 0);
  EXPECT_EQ(shm_check_vid_in_zone_brg(11), 0);  // zone 0 is disabled
  EXPECT_EQ(shm_check_vid_in_zone_brg(12), 1);
  EXPECT_EQ(shm_check_vid_in_zone_brg(10), 1);
}

TEST_F(BridgeTest, SlaveInterfaceNeedsAPortInUseAndSkipsWanVlans) {
  SysSegmentWriter seg;
  seg.wan(0, 2, "eth0.2");
  seg.wan(1, 3, "eth0.3");
  seg.port(0, 5, 0);
  seg.port(6, 5, 1);
  seg.port(1, 2, 1);
  seg.port(2, 3, 1);
  seg.port(11, 6, 1);  // beyond the ten switch ports
  struct Case {
    int vid, result;
    const char *name;
  };
  const Case cases[] = {{5, 1, "eth0.5"}, {2, 0, ""}, {3, 0, ""}, {6, 0, ""}, {4096, 0, ""}, {9, 0, ""}};
  for (const Case &c : cases) {
    char out[32] = "";
    EXPECT_EQ(get_slave_interface_in_bridge(c.vid, out), c.result) << c.vid;
    EXPECT_STREQ(out, c.name) << c.vid;
  }
  seg.port(4, 4096, 1);
  char out[32] = "";
  EXPECT_EQ(get_slave_interface_in_bridge(4096, out), 0);
}

TEST_F(BridgeTest, AllPortsBridgedOrInZones) {
  SysSegmentWriter seg;
  EXPECT_EQ(is_all_ports_are_zone_bridge(), 1);  // every port has VLAN id 0
  EXPECT_EQ(check_all_ports_are_bridge_port(), 1);  // VLAN id 0 equals the unused WAN's id
  seg.wan(0, 2, "eth0.2");
  for (int p = 0; p < 10; ++p) seg.port(p, p < 5 ? 2 : 0, p < 5 ? 0 : 1);
  EXPECT_EQ(check_all_ports_are_bridge_port(), 1);
  seg.port(9, 7, 0);
  EXPECT_EQ(check_all_ports_are_bridge_port(), 0);
  seg.port(12, 0, 0);  // not one of the ten ports
  seg.port(9, 7, 1);
  EXPECT_EQ(check_all_ports_are_bridge_port(), 1);

  for (int p = 0; p < 10; ++p) seg.port(p, 0);
  seg.port(2, 10);
  seg.port(3, 11);
  seg.zone(0, 8001, "br8001", "z", 0, 1, {{10, "a"}});
  seg.zone(1, 8002, "br8002", "z", 0, 0, {{11, "b"}});
  EXPECT_EQ(is_all_ports_are_zone_bridge(), 0);  // VLAN 11 only in a disabled zone
  seg.zone(2, 8003, "br8003", "z", 0, 1, {{11, "b"}});
  EXPECT_EQ(is_all_ports_are_zone_bridge(), 1);
  seg.port(12, 99);  // beyond the ten switch ports
  EXPECT_EQ(is_all_ports_are_zone_bridge(), 1);
}

}  // namespace
