// Port labels, the hardware port queries over the identity record, trunk-aware activity
// and the compact port list.
#include <cstring>
#include <string>

#include "support/test_support.h"
#include "syscommon/hw.h"
#include "syscommon/util.h"
#include "util/identity.h"

namespace {

TEST(PortLabels, LabelsNamesAndFixedAnswers) {
  for (auto [index, label] : {std::pair<int, std::string>{0, "1"}, {7, "8"}, {8, "G1"}, {9, "G2"}, {10, "Trk1"},
                              {13, "Trk4"}, {14, ""}, {-1, ""}}) {
    char out[16] = "#";
    EXPECT_EQ(Ssys_getModulePortStr(index, out), static_cast<int>(label.size()));
    EXPECT_EQ(out, label) << index;
  }
  const char *first = Get_port_name(9);
  EXPECT_STREQ(first, "PORT10");
  EXPECT_EQ(Get_port_name(3), first);  // one process-wide buffer
  EXPECT_STREQ(first, "PORT4");

  int module = -7, port = -7;
  EXPECT_EQ(Ssys_port2MdlPort(10, &module, &port), 0);
  EXPECT_EQ(module, -7);  // untouched
  EXPECT_EQ(Ssys_port2MdlPort(9, &module, &port) * 1000 + module * 100 + port, 1009);
  EXPECT_EQ(Ssys_port2MdlPort(-1, &module, &port) * 1000 + port, 999);  // only the upper bound is checked

  const uint16_t vids[] = {1, 5, 10, 4094};
  for (auto [vid, count, found] : {std::tuple{5, 4, 1}, {4094, 4, 1}, {6, 4, 0}, {4094, 3, 0}, {1, 0, 0}})
    EXPECT_EQ(Ssc_port_vid_exist(static_cast<uint16_t>(vid), vids, count), found) << vid << "/" << count;
}

TEST(PortLabels, IdentityPortNameIsBounded) {
  ShmEepromInfo info{};
  std::memcpy(info.port_name[1], "0123456789abcdefOVERFLOW", SHM_PORT_NAME_LEN);  // full: no terminator
  EXPECT_EQ(syscommon::identity_port_name(info, 1), "0123456789abcdef");
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
  // Ports 0..present-1 fitted; trunk members as (port, group 1..4) pairs.
  static void device(int present, std::initializer_list<std::pair<int, int>> members = {}) {
    ShmEepromInfo info{};
    for (int p = 0; p < present; ++p) info.port[p].present = 1;
    shm_sysSetEepromInfo(&info);
    uint32_t groups[10] = {};
    for (auto [port, trunk] : members) groups[port] = static_cast<uint32_t>(trunk);
    set_shm_trk_mem(groups);
  }
  static std::string list(uint32_t bitmap) {
    char out[128];
    std::memset(out, '#', sizeof out);
    int n = cli_lib_convBmp2PortNTrkStr(bitmap, out);
    std::string text(out, strnlen(out, sizeof out));
    EXPECT_EQ(n, static_cast<int>(text.size()));
    return text;
  }
};

TEST_F(PortStore, HardwareQueriesReadTheBlockAt380) {
  // Port p's entry at 380 + 32 * p of segment 7893: type, presence, description.
  syscommon::testing::RawSegment raw(7893);
  auto entry = [&raw](std::size_t port) { return raw.bytes() + 380 + 32 * port; };
  entry(2)[0] = 0x05;  // gigabit fibre
  entry(4)[1] = 1;     // present, 10/100 copper
  entry(9)[0] = 0x02;  // speed bits 2
  std::memcpy(entry(4) + 2, "uplink", 7);
  // index: exists, speed, fibre, 10/100, gigabit
  for (auto [index, expected] : {std::pair<int, std::string>{2, "11101"}, {4, "10010"}, {3, "00010"},
                                 {9, "12000"}, {10, "00010"}, {-1, "00010"}}) {
    std::string got = std::to_string(Ssys_checkPortExist(index)) + std::to_string(Ssys_getPortMaxSpeed(index)) +
                      std::to_string(Ssys_portIsFiber(index) != 0) + std::to_string(Ssys_portIsMega(index)) +
                      std::to_string(Ssys_portIsGiga(index));
    EXPECT_EQ(got, expected) << index;
  }
  char desc[32];
  EXPECT_EQ(Ssys_getModulePortDesc(4, desc), 6);
  EXPECT_STREQ(desc, "uplink");
}

TEST_F(PortStore, DescriptionOfTransceiverSlots) {
  ShmEepromInfo info{};
  info.port[0].type = SHM_PORT_TYPE_FIBER;  // 100M fibre: no slot of its own, but counted
  std::strcpy(info.port[0].desc, "100FX");
  info.port[8].type = info.port[9].type = 1 | SHM_PORT_TYPE_FIBER;
  std::strcpy(info.sfp_text[1], "SFP-LX 1310nm");
  auto check = [&info](std::initializer_list<std::pair<int, std::string>> rows) {
    shm_sysSetEepromInfo(&info);
    for (auto [index, text] : rows) {
      char out[32];
      EXPECT_EQ(Ssys_getModulePortDesc(index, out), static_cast<int>(text.size()));
      EXPECT_EQ(out, text) << index;
    }
  };
  check({{0, "100FX"}, {8, "SFP-LX 1310nm"}, {9, "N/A"}, {1, ""}, {14, ""}});  // 9 is past the two slots
  info.port[0].type = 0;
  check({{8, "N/A"}, {9, "SFP-LX 1310nm"}});  // slot 0 is empty
}

TEST_F(PortStore, ActivityFollowsPresenceAndTrunks) {
  device(8, {{2, 1}, {3, 1}, {6, 3}});  // ports 8, 9 absent
  for (auto [index, active] : {std::pair{-1, 0}, {0, 1}, {2, 0}, {6, 0}, {7, 1}, {8, 0}, {10, 1}, {11, 0},
                               {12, 1}, {13, 0}, {14, 1}, {15, 0}})
    EXPECT_EQ(Scf_checkPortActive(index), active) << index;
  device(8, {{9, 4}});  // a trunk whose only member is absent
  EXPECT_EQ(Scf_checkPortActive(13), 0);
}

TEST_F(PortStore, CompactList) {
  device(10);
  for (auto [bitmap, text] : {std::pair<uint32_t, const char *>{0x7, "1/1-3,"},  // 1/4 active but clear closes
                              {0xf, "1/1-4,"}, {0x5, "1/1,1/3,"}, {0x0, ""},
                              {0x3ff, "1/1,"},  // a range open at the end is never closed
                              {0x303, "1/1-2,1/9,"}, {0x11d, "1/1,1/3-5,1/9,"}})
    EXPECT_EQ(list(bitmap), text) << std::hex << bitmap;

  // 1/2 and 1/3 are members of Trk1: inactive, so 1/4 follows 1/1 and their bits are ignored.
  device(4, {{1, 1}, {2, 1}});
  EXPECT_EQ(list(0x1 | 0x8 | 0x400), "1/1,1/4,Trk1,");
  EXPECT_EQ(list(0x6), "");
  // 1/4 alone in Trk2: the inactive 1/4 does not end 1/1-3, the active but clear Trk2 does.
  device(4, {{3, 2}});
  EXPECT_EQ(list(0x7), "1/1-3,");
  EXPECT_EQ(list(0xf | 0x800), "1/1-3,Trk2,");
  device(4, {{0, 1}, {1, 2}, {2, 3}});  // adjacent trunks form a range too
  EXPECT_EQ(list(0x400 | 0x800), "Trk1-2,");
  EXPECT_EQ(list(0x400 | 0x800 | 0x1000), "Trk1,");
}

}  // namespace
