// Port labels, the hardware port queries over the identity record, trunk-aware activity
// and the compact port list.
#include <cstring>
#include <string>

#include "support/test_support.h"
#include "syscommon/hw.h"
#include "syscommon/util.h"
#include "util/identity.h"

using syscommon::testing::RawSegment;

namespace {

TEST(PortLabels, ModulePortStrAndPortName) {
  struct Row {
    int index;
    const char *label;
  };
  const Row rows[] = {{0, "1"},     {7, "8"},     {8, "G1"}, {9, "G2"}, {10, "Trk1"},
                      {13, "Trk4"}, {14, ""},     {-1, ""},  {99, ""}};
  for (const Row &r : rows) {
    char out[16];
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(Ssys_getModulePortStr(r.index, out), static_cast<int>(std::strlen(r.label))) << r.index;
    EXPECT_STREQ(out, r.label) << r.index;
  }
  const char *first = Get_port_name(0);
  EXPECT_STREQ(first, "PORT1");
  EXPECT_STREQ(Get_port_name(9), "PORT10");
  EXPECT_EQ(Get_port_name(3), first);  // one process-wide buffer
  EXPECT_STREQ(first, "PORT4");
}

TEST(PortLabels, FixedModuleAnswers) {
  int module = -1, port = -1;
  EXPECT_EQ(Ssys_port2MdlPort(9, &module, &port), 1);
  EXPECT_EQ(module, 0);
  EXPECT_EQ(port, 9);
  module = port = -7;
  EXPECT_EQ(Ssys_port2MdlPort(10, &module, &port), 0);
  EXPECT_EQ(Ssys_port2MdlPort(-1, &module, &port), 0);
  EXPECT_EQ(module, -7);  // untouched
}

TEST(PortLabels, VidInSortedList) {
  const uint16_t vids[] = {1, 5, 10, 4094};
  EXPECT_EQ(Ssc_port_vid_exist(5, vids, 4), 1);
  EXPECT_EQ(Ssc_port_vid_exist(4094, vids, 4), 1);
  EXPECT_EQ(Ssc_port_vid_exist(6, vids, 4), 0);
  EXPECT_EQ(Ssc_port_vid_exist(4094, vids, 3), 0);  // last entry below the vid
  EXPECT_EQ(Ssc_port_vid_exist(1, vids, 0), 0);
  EXPECT_EQ(Ssc_port_vid_exist(1, nullptr, 0), 0);
}

TEST(Identity, PortNameHelperIsBounded) {
  ShmEepromInfo info{};
  std::memcpy(info.port_name[0], "WAN", 3);
  std::memcpy(info.port_name[1], "0123456789abcdefOVERFLOW", SHM_PORT_NAME_LEN);  // full: no terminator
  std::memcpy(info.port_name[2], "next", 4);
  EXPECT_EQ(syscommon::identity_port_name(info, 0), "WAN");
  EXPECT_EQ(syscommon::identity_port_name(info, 1), "0123456789abcdef");
  EXPECT_EQ(syscommon::identity_port_name(info, 15), "");
  EXPECT_EQ(syscommon::identity_port_name(info, 16), "");
  EXPECT_EQ(syscommon::identity_port_name(info, -1), "");
}

// Ports with hardware entries and trunk groups in the shared store.
class PortStore : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
  // Every port present (copper 10/100 for 0..7, gigabit fibre for 8 and 9) unless told.
  static ShmEepromInfo device(int present_ports = SHM_PORT_COUNT) {
    ShmEepromInfo info{};
    for (int p = 0; p < present_ports; ++p) {
      info.port[p].present = 1;
      info.port[p].type = p >= 8 ? (1 | SHM_PORT_TYPE_FIBER) : 0;
      std::snprintf(info.port[p].desc, sizeof info.port[p].desc, "copper %d", p + 1);
    }
    return info;
  }
  static void publish(ShmEepromInfo info) { shm_sysSetEepromInfo(&info); }
  static void trunks(std::initializer_list<std::pair<int, int>> port_group) {
    uint32_t groups[10] = {};
    for (auto [port, group] : port_group) groups[port] = static_cast<uint32_t>(group);
    set_shm_trk_mem(groups);
  }
  static std::string list(uint32_t bitmap) {
    char out[128];
    std::memset(out, '#', sizeof out);
    int n = cli_lib_convBmp2PortNTrkStr(bitmap, out);
    EXPECT_EQ(n, static_cast<int>(std::strlen(out)));
    return out;
  }
};

TEST_F(PortStore, HardwareQueriesReadTheBlockAt380) {
  // Written raw at the documented place: port p's entry at 380 + 32 * p of segment 7893.
  RawSegment raw(7893);
  auto entry = [&raw](std::size_t port) { return raw.bytes() + 380 + 32 * port; };
  entry(2)[0] = 0x05;  // port 2: gigabit fibre
  entry(4)[1] = 1;     // port 4: present, 10/100 copper
  entry(9)[0] = 0x02;  // port 9: speed bits 2
  std::memcpy(entry(4) + 2, "uplink", 7);

  EXPECT_EQ(Ssys_checkPortExist(2), 1);
  EXPECT_EQ(Ssys_checkPortExist(4), 1);
  EXPECT_EQ(Ssys_checkPortExist(3), 0);
  EXPECT_EQ(Ssys_checkPortExist(10), 0);
  EXPECT_EQ(Ssys_checkPortExist(-1), 0);
  EXPECT_EQ(Ssys_getPortMaxSpeed(2), 1);
  EXPECT_EQ(Ssys_getPortMaxSpeed(9), 2);
  EXPECT_NE(Ssys_portIsFiber(2), 0);
  EXPECT_EQ(Ssys_portIsFiber(4), 0);
  EXPECT_EQ(Ssys_portIsGiga(2), 1);
  EXPECT_EQ(Ssys_portIsMega(2), 0);
  EXPECT_EQ(Ssys_portIsMega(4), 1);
  EXPECT_EQ(Ssys_portIsGiga(9), 0);
  EXPECT_EQ(Ssys_portIsMega(9), 0);
  EXPECT_EQ(Ssys_portIsMega(12), 1);  // outside the ports: absent, type 0

  char desc[32];
  EXPECT_EQ(Ssys_getModulePortDesc(4, desc), 6);
  EXPECT_STREQ(desc, "uplink");

  // The struct view of the record agrees with the raw offsets.
  ShmEepromInfo info = syscommon::identity_record();
  EXPECT_EQ(info.port[2].type, 0x05);
  EXPECT_STREQ(info.port[4].desc, "uplink");
}

TEST_F(PortStore, DescriptionOfTransceiverSlots) {
  ShmEepromInfo info = device();
  info.port[5].type = 1 | SHM_PORT_TYPE_FIBER;  // a third gigabit fibre port: no slot left
  info.port[3].type = SHM_PORT_TYPE_FIBER;      // 100M fibre: not a transceiver slot
  std::snprintf(info.port[3].desc, sizeof info.port[3].desc, "100FX");
  std::snprintf(info.sfp_text[0], sizeof info.sfp_text[0], "SFP-LX 1310nm");
  shm_sysSetEepromInfo(&info);

  struct Row {
    int index;
    const char *text;
  };
  const Row rows[] = {{0, "copper 1"}, {3, "100FX"}, {5, "SFP-LX 1310nm"}, {8, "N/A"}, {9, "N/A"}, {14, ""}};
  for (const Row &r : rows) {
    char out[32];
    EXPECT_EQ(Ssys_getModulePortDesc(r.index, out), static_cast<int>(std::strlen(r.text))) << r.index;
    EXPECT_STREQ(out, r.text) << r.index;
  }
  std::snprintf(info.sfp_text[1], sizeof info.sfp_text[1], "SFP-SX");
  shm_sysSetEepromInfo(&info);
  char out[32];
  Ssys_getModulePortDesc(8, out);
  EXPECT_STREQ(out, "SFP-SX");  // port 8 is the second gigabit fibre port
}

TEST_F(PortStore, ActivityFollowsPresenceAndTrunks) {
  publish(device(8));  // ports 8, 9 absent
  trunks({{2, 1}, {3, 1}, {6, 3}});

  struct Row {
    int index, active;
  };
  const Row rows[] = {{-1, 0}, {0, 1},  {2, 0},  {3, 0},  {6, 0},  {7, 1},  {8, 0},
                      {10, 1}, {11, 0}, {12, 1}, {13, 0}, {14, 1}, {15, 0}, {100, 0}};
  for (const Row &r : rows) EXPECT_EQ(Scf_checkPortActive(r.index), r.active) << r.index;

  // A trunk whose only member is absent is not active.
  trunks({{9, 4}});
  EXPECT_EQ(Scf_checkPortActive(13), 0);
}

TEST_F(PortStore, CompactListRanges) {
  publish(device());
  EXPECT_EQ(list(0x7), "1/1-3,");        // 1/4 active but clear closes the range
  EXPECT_EQ(list(0xf), "1/1-4,");
  EXPECT_EQ(list(0x1), "1/1,");
  EXPECT_EQ(list(0x5), "1/1,1/3,");
  EXPECT_EQ(list(0x3ff), "1/1,");       // never closed: ports 1/1..1/10 all set
  EXPECT_EQ(list(0x0), "");
  EXPECT_EQ(list(0x303), "1/1-2,1/9,");  // 1/9-10 stays open at the end
  EXPECT_EQ(list(0x1 | 0x4 | 0x8 | 0x10 | 0x100), "1/1,1/3-5,1/9,");
}

TEST_F(PortStore, CompactListSkipsInactivePortsAndNamesTrunks) {
  // Only ports 0..3 exist; 1 and 2 form trunk 1.
  publish(device(4));
  trunks({{1, 1}, {2, 1}});
  // 1/1 and 1/4 are the only active physical ports (1/2, 1/3 are trunk members), so 1/4
  // follows 1/1 without closing anything; Trk1 (index 10) is active.
  EXPECT_EQ(list(0x1 | 0x8), "1/1,1/4,");
  EXPECT_EQ(list(0x1 | 0x8 | 0x400), "1/1,1/4,Trk1,");
  EXPECT_EQ(list(0x400), "Trk1,");
  EXPECT_EQ(list(0x6), "");  // bits of trunk members are ignored
  // Now 1/4 is the only member of trunk 2: the inactive 1/4 does not end the range
  // 1/1-3, the active but clear Trk2 does.
  trunks({{3, 2}});
  EXPECT_EQ(list(0x1 | 0x2 | 0x4), "1/1-3,");
  EXPECT_EQ(list(0x1 | 0x2 | 0x4 | 0x800), "1/1-3,Trk2,");
  EXPECT_EQ(list(0x1 | 0x2 | 0x4 | 0x8 | 0x800), "1/1-3,Trk2,");  // the member's own bit is ignored

  // Absent ports do not close a range either: with only 1/1 and 1/2 present it stays open.
  publish(device(2));
  trunks({});
  EXPECT_EQ(list(0x3), "1/1,");
}

}  // namespace
