// Firewall entries rendered to their one-line texts.
#include <cstring>
#include <string>

#include "shm/layout.h"
#include "support/test_support.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

using syscommon::shm::SysSegment;

struct Fw {
  uint32_t id = SLOG_FW_POLICY_HIT, rule = 0, target = 2, proto = 257;
  uint32_t src_ip = 0x6401A8C0, src_port = 0, in = 5;  // 192.168.1.100 in network order
  uint32_t dst_ip = 0x0100000A, dst_port = 0, out = 2;  // 10.0.0.1
  uint32_t repeat = 0;
};

SlogLogEntry entry_of(const Fw &f) {
  SlogLogEntry e{};
  e.log_type = SLOG_TYPE_FIREWALL;
  SlogFirewallRecord &r = e.body.firewall;
  r = {f.rule, f.id, f.target, f.proto, f.src_ip, f.dst_ip, f.src_port, {0x00, 0x11, 0x22, 0x33, 0x44, 0x55}, {},
       f.dst_port, {0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff}, {}, f.in, f.out, f.repeat};
  return e;
}

std::string render(const Fw &f, const std::string &already = "") {
  const SlogLogEntry e = entry_of(f);
  char out[1024] = {};
  std::strcpy(out, already.c_str());
  firewallLog_to_str(&e, out);
  return out;
}

const std::string kMacs = "SRC_MAC=00:11:22:33:44:55, DST_MAC=aa:bb:cc:dd:ee:ff, ";
const std::string kAddrs = "SRC_IP=192.168.1.100, IN=LAN_Office, DST_IP=10.0.0.1, OUT=WAN";

// WAN 0 has VLAN 2, VLAN record 0 has VLAN 5, bridge 0 has id 9000, zone bridge 0 `zone_id`.
void set_interfaces(uint32_t zone_id, const std::string &vlan_name = "LAN_Office") {
  syscommon::testing::RawSegment sys(7890);
  auto &seg = *reinterpret_cast<SysSegment *>(sys.bytes());
  seg.ifs.wan[0] = ShmWanRecord{};
  seg.ifs.wan[0].vid = 2;
  seg.vlan_if[0] = ShmVlanIfRecord{};
  std::strncpy(seg.vlan_if[0].usr_name, vlan_name.c_str(), sizeof seg.vlan_if[0].usr_name - 1);
  seg.vlan_if[0].vid = 5;
  seg.bridge[0] = ShmBridgeRecord{};
  std::strcpy(seg.bridge[0].usr_name, "BrLan");
  seg.bridge[0].id = 9000;
  seg.zone[0] = ShmZoneBridgeRecord{};
  std::strcpy(seg.zone[0].usr_name, "ZoneA");
  seg.zone[0].id = zone_id;
}

class RenderFirewallTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    set_interfaces(9001);
  }
};

TEST_F(RenderFirewallTest, RuleHitsPortsAndRepeat) {
  EXPECT_EQ(render({.rule = 4, .dst_port = 80, .repeat = 3}),
            "[R4] DROP " + kMacs +
                "PROTO=TCP, SRC_IP=192.168.1.100, IN=LAN_Office, DST_IP=10.0.0.1, DST_PORT=80, OUT=WAN "
                "This event has happened more than once.");
  EXPECT_EQ(render({.id = SLOG_FW_SESSION_FULL, .rule = 7, .target = 1, .proto = 258, .src_port = 5353, .dst_port = 53}),
            "[R7 Session full] ACCEPT " + kMacs +
                "PROTO=UDP, SRC_IP=192.168.1.100, SRC_PORT=5353, IN=LAN_Office, DST_IP=10.0.0.1, DST_PORT=53, OUT=WAN");
  // The caller's text stays in front; a target beyond its table has no text.
  EXPECT_EQ(render({.target = 0}, "2014/06/05 "), "2014/06/05 [R0]  " + kMacs + "PROTO=TCP, " + kAddrs);
  EXPECT_EQ(render({.target = 9}), "[R0]  " + kMacs + "PROTO=TCP, " + kAddrs);
}

TEST_F(RenderFirewallTest, ProtocolNamesAndRawNumbers) {
  const std::pair<uint32_t, const char *> cases[] = {{256, "PROTO=, "},    {259, "PROTO=UDPLITE, "}, {260, "PROTO=ICMP, "},
                                                     {261, "PROTO=AH, "},  {262, "PROTO=ESP, "},     {47, "PROTO=0x2F, "},
                                                     {0, "PROTO=0x0, "},   {255, "PROTO=0xFF, "},    {263, "PROTO=, "}};
  const std::string head = "[Malformed] DROP " + kMacs;
  for (const auto &[proto, text] : cases)
    EXPECT_EQ(render({.id = SLOG_FW_MALFORMED, .proto = proto}), (head + text).append(kAddrs)) << proto;
}

TEST_F(RenderFirewallTest, ArpFloodCarriesOnlyTheEthernetType) {
  EXPECT_EQ(render({.id = SLOG_FW_ARP_FLOOD, .proto = 0x806, .src_port = 9}), "[ARP-Flood] DROP " + kMacs + "PROTO=0x806");
  EXPECT_EQ(render({.id = SLOG_FW_ARP_FLOOD, .proto = 0x86DD, .repeat = 1}),
            "[ARP-Flood] DROP " + kMacs + "PROTO=0x86DD This event has happened more than once.");
}

TEST_F(RenderFirewallTest, EveryAttackNameAndUnknownIds) {
  const std::pair<uint32_t, const char *> cases[] = {
      {300201, "[Null Scan] "},      {300202, "[Xmas Scan] "},    {300203, "[NMAP-Xmas Scan] "}, {300204, "[SYN/FIN Scan] "},
      {300205, "[FIN Scan] "},       {300206, "[NMAP-ID Scan] "}, {300207, "[SYN/RST Scan] "},
      {300208, "[TCP-Without-SYN Scan] "}, {300209, "[ICMP-Death] "}, {300210, "[SYN-Flood] "},
      {300401, "[TrustedAccess] "},  {300104, ""},                {300212, ""},                  {0, ""}};
  const std::string rest = "DROP " + kMacs + "PROTO=TCP, " + kAddrs;
  for (const auto &[id, prefix] : cases)  // the rule shows only with the rule-hit ids
    EXPECT_EQ(render({.id = id, .rule = 3}), prefix + rest) << id;
}

TEST_F(RenderFirewallTest, InterfaceNamesFollowTheKeptLookupOrder) {
  // in: bridge 0 only, so the user lookup names it; out: zone bridge 0 only, never "BRG".
  EXPECT_EQ(render({.in = 9000, .out = 9001}),
            "[R0] DROP " + kMacs + "PROTO=TCP, SRC_IP=192.168.1.100, IN=BrLan, DST_IP=10.0.0.1, OUT=ZoneA");
  set_interfaces(9000);  // bridge 0 and zone bridge 0 share the id: "BRG"; nothing has id 77
  EXPECT_EQ(render({.in = 9000, .out = 77}),
            "[R0] DROP " + kMacs + "PROTO=TCP, SRC_IP=192.168.1.100, IN=BRG, DST_IP=10.0.0.1, OUT=");
}

TEST_F(RenderFirewallTest, AppendedTextStopsAt255Characters) {
  set_interfaces(9001, std::string(31, 'n'));
  const Fw f{.id = SLOG_FW_SESSION_FULL, .rule = 0xfff, .proto = 0xffff, .src_ip = 0xffffffff, .src_port = 0xffff,
             .dst_ip = 0xffffffff, .dst_port = 0xffff, .out = 5, .repeat = 1};
  const std::string head = "[R4095 Session full] DROP " + kMacs + "PROTO=, SRC_IP=255.255.255.255, SRC_PORT=65535, IN=" +
                           std::string(31, 'n') + ", DST_IP=255.255.255.255, DST_PORT=65535, OUT=" +
                           std::string(31, 'n') + " This event has happened more than once.";
  // The caller's buffer has room for 256 bytes after its own text.
  EXPECT_EQ(render(f, "a"), "a" + head.substr(0, 255));
}

}  // namespace
