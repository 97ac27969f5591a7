// Firewall lines written the way the log agent writes them, read back and rendered.
#include <cstdio>
#include <cstring>
#include <string>

#include "log/records.h"
#include "shm/layout.h"
#include "support/test_support.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

using syscommon::log::scan_firewall_line;
using syscommon::testing::RawSegment;

struct Fw {
  unsigned id = SLOG_FW_POLICY_HIT, rule = 0, target = 2, proto = 257;
  unsigned src_ip = 0x6401A8C0, src_port = 0, in = 5;  // 192.168.1.100 in network order
  unsigned dst_ip = 0x0100000A, dst_port = 0, out = 2;  // 10.0.0.1
  unsigned repeat = 0;
};

std::string agent_line(const Fw &f) {
  char buf[512];
  std::snprintf(buf, sizeof buf,
                "lv[%01x]id[%05x]idx[%03x]tar[%01x]proto[%04x]ip[%08x]mac[%02x%02x%02x%02x%02x%02x]port[%04x]"
                "ifs[%04x]ip[%08x]mac[%02x%02x%02x%02x%02x%02x]port[%04x]ifs[%04x]sec[%02x]min[%02x]hour[%02x]"
                "day[%02x]mon[%02x]year[%04x]flash[%01x]syslog[%01x]trap[%01x]repeat[%04x]\n",
                4u, f.id, f.rule, f.target, f.proto, f.src_ip, 0x00u, 0x11u, 0x22u, 0x33u, 0x44u, 0x55u, f.src_port, f.in,
                f.dst_ip, 0xaau, 0xbbu, 0xccu, 0xddu, 0xeeu, 0xffu, f.dst_port, f.out, 1u, 2u, 3u, 4u, 5u, 114u, 1u, 1u,
                0u, f.repeat);
  return buf;
}

std::string render(const Fw &f, const std::string &already = "") {
  SlogLogEntry e{};
  EXPECT_TRUE(scan_firewall_line(agent_line(f).c_str(), e));
  char out[1024] = {};
  std::strcpy(out, already.c_str());
  firewallLog_to_str(&e, out);
  return out;
}

const std::string kMacs = "SRC_MAC=00:11:22:33:44:55, DST_MAC=aa:bb:cc:dd:ee:ff, ";

class RenderFirewallTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    using syscommon::shm::SysSegment;
    RawSegment sys(7890);
    ShmWanRecord wan{};
    wan.vid = 2;
    std::memcpy(sys.bytes() + SYS_OFF(ifs.wan[0]), &wan, sizeof wan);
    ShmVlanIfRecord vlan{};
    std::strcpy(vlan.ifname, "eth0.5");
    std::strcpy(vlan.usr_name, "LAN_Office");
    vlan.vid = 5;
    std::memcpy(sys.bytes() + SYS_OFF(vlan_if[0]), &vlan, sizeof vlan);
    ShmBridgeRecord br{};
    std::strcpy(br.usr_name, "BrLan");
    br.id = 9000;
    std::memcpy(sys.bytes() + SYS_OFF(bridge[0]), &br, sizeof br);
    set_zone_id(9001);
  }
  static void set_zone_id(uint32_t id) {
    using syscommon::shm::SysSegment;
    RawSegment sys(7890);
    ShmZoneBridgeRecord zone{};
    std::strcpy(zone.usr_name, "ZoneA");
    zone.id = id;
    std::memcpy(sys.bytes() + SYS_OFF(zone[0]), &zone, sizeof zone);
  }
};

TEST_F(RenderFirewallTest, TcpRuleHitWithoutSourcePortAndRepeated) {
  Fw f;
  f.rule = 4;
  f.dst_port = 80;
  f.repeat = 3;
  EXPECT_EQ(render(f), "[R4] DROP " + kMacs +
                           "PROTO=TCP, SRC_IP=192.168.1.100, IN=LAN_Office, DST_IP=10.0.0.1, DST_PORT=80, OUT=WAN "
                           "This event has happened more than once.");
}

TEST_F(RenderFirewallTest, UdpSessionFullWithBothPorts) {
  Fw f;
  f.id = SLOG_FW_SESSION_FULL;
  f.rule = 7;
  f.target = 1;
  f.proto = 258;
  f.src_port = 5353;
  f.dst_port = 53;
  EXPECT_EQ(render(f), "[R7 Session full] ACCEPT " + kMacs +
                           "PROTO=UDP, SRC_IP=192.168.1.100, SRC_PORT=5353, IN=LAN_Office, DST_IP=10.0.0.1, "
                           "DST_PORT=53, OUT=WAN");
}

TEST_F(RenderFirewallTest, ProtocolNamesAndRawNumbers) {
  struct Case {
    unsigned proto;
    const char *text;
  };
  const Case cases[] = {{256, "PROTO=, "},        {259, "PROTO=UDPLITE, "}, {260, "PROTO=ICMP, "},
                        {261, "PROTO=AH, "},      {262, "PROTO=ESP, "},     {47, "PROTO=0x2F, "},
                        {0, "PROTO=0x0, "},       {255, "PROTO=0xFF, "},    {263, "PROTO=, "}};
  for (const Case &c : cases) {
    Fw f;
    f.id = SLOG_FW_MALFORMED;
    f.proto = c.proto;
    EXPECT_EQ(render(f), "[Malformed] DROP " + kMacs + c.text +
                             "SRC_IP=192.168.1.100, IN=LAN_Office, DST_IP=10.0.0.1, OUT=WAN")
        << c.proto;
  }
}

TEST_F(RenderFirewallTest, ArpFloodCarriesOnlyTheEthernetType) {
  Fw f;
  f.id = SLOG_FW_ARP_FLOOD;
  f.proto = 0x806;
  f.src_port = 9;
  EXPECT_EQ(render(f), "[ARP-Flood] DROP " + kMacs + "PROTO=0x806");
  f.repeat = 1;
  EXPECT_EQ(render(f), "[ARP-Flood] DROP " + kMacs + "PROTO=0x806 This event has happened more than once.");
}

TEST_F(RenderFirewallTest, EveryAttackNameAndUnknownIds) {
  struct Case {
    unsigned id;
    const char *prefix;
  };
  const Case cases[] = {
      {300201, "[Null Scan] "},     {300202, "[Xmas Scan] "},  {300203, "[NMAP-Xmas Scan] "},
      {300204, "[SYN/FIN Scan] "},  {300205, "[FIN Scan] "},   {300206, "[NMAP-ID Scan] "},
      {300207, "[SYN/RST Scan] "},  {300208, "[TCP-Without-SYN Scan] "},
      {300209, "[ICMP-Death] "},    {300210, "[SYN-Flood] "},  {300401, "[TrustedAccess] "},
      {300100, ""},                 {300104, ""},              {300212, ""},
      {300402, ""},                 {0, ""},
  };
  for (const Case &c : cases) {
    Fw f;
    f.id = c.id;
    f.rule = 3;  // only the rule-hit ids show it
    EXPECT_EQ(render(f), std::string(c.prefix) + "DROP " + kMacs +
                             "PROTO=TCP, SRC_IP=192.168.1.100, IN=LAN_Office, DST_IP=10.0.0.1, OUT=WAN")
        << c.id;
  }
}

TEST_F(RenderFirewallTest, AppendsToTheCallersText) {
  Fw f;
  f.target = 0;
  EXPECT_EQ(render(f, "2014/06/05 "), "2014/06/05 [R0]  " + kMacs +
                                          "PROTO=TCP, SRC_IP=192.168.1.100, IN=LAN_Office, DST_IP=10.0.0.1, OUT=WAN");
  f.target = 9;  // beyond the target table: no text
  EXPECT_EQ(render(f), "[R0]  " + kMacs + "PROTO=TCP, SRC_IP=192.168.1.100, IN=LAN_Office, DST_IP=10.0.0.1, OUT=WAN");
}

TEST_F(RenderFirewallTest, InterfaceNamesFollowTheKeptLookupOrder) {
  Fw f;
  f.in = 9000;   // bridge 0, zone bridge 0 differs: the user lookup names it
  f.out = 9001;  // zone bridge 0 only: not "BRG", the user lookup names it
  EXPECT_EQ(render(f), "[R0] DROP " + kMacs +
                           "PROTO=TCP, SRC_IP=192.168.1.100, IN=BrLan, DST_IP=10.0.0.1, OUT=ZoneA");
  set_zone_id(9000);  // bridge 0 and zone bridge 0 share the id: "BRG"
  f.out = 77;         // nothing has this id
  EXPECT_EQ(render(f), "[R0] DROP " + kMacs + "PROTO=TCP, SRC_IP=192.168.1.100, IN=BRG, DST_IP=10.0.0.1, OUT=");
}

TEST_F(RenderFirewallTest, AppendedTextStopsAt255Characters) {
  using syscommon::shm::SysSegment;
  RawSegment sys(7890);
  ShmVlanIfRecord vlan{};
  std::memset(vlan.usr_name, 'n', 31);
  vlan.vid = 5;
  std::memcpy(sys.bytes() + SYS_OFF(vlan_if[0]), &vlan, sizeof vlan);
  Fw f;
  f.id = SLOG_FW_SESSION_FULL;
  f.rule = 0xfff;
  f.proto = 0xffff;
  f.src_ip = f.dst_ip = 0xffffffff;
  f.src_port = f.dst_port = 0xffff;
  f.out = 5;
  f.repeat = 1;
  const std::string head = "[R4095 Session full] DROP " + kMacs +
                           "PROTO=, SRC_IP=255.255.255.255, SRC_PORT=65535, IN=" + std::string(31, 'n') +
                           ", DST_IP=255.255.255.255, DST_PORT=65535, OUT=" + std::string(31, 'n') +
                           " This event has happened more than once.";
  const std::string text = render(f);
  ASSERT_EQ(text.size(), 255u);
  EXPECT_EQ(text, head.substr(0, 255));
  // Exactly 256 bytes of room after the caller's text are enough.
  SlogLogEntry e{};
  ASSERT_TRUE(scan_firewall_line(agent_line(f).c_str(), e));
  std::string room(3 + 256, '\x7f');
  room[0] = 'a';
  room[1] = 'b';
  room[2] = '\0';
  firewallLog_to_str(&e, room.data());
  EXPECT_EQ(std::string(room.c_str()), "ab" + head.substr(0, 255));
}

}  // namespace
