// The description tables hold exactly the device's texts, ids and message numbers in the
// stored order; lookups go by id; the small helpers of the tables.
#include <cstring>
#include <string>
#include <vector>

#include "log/lookup.h"
#include "support/test_support.h"
#include "syscommon/log.h"

namespace {

struct Expected {  // NOLINT(clang-analyzer-optin.performance.Padding): reads as the tables do
  uint32_t id;
  const char *text;
  uint32_t msg_id;
};

// Position by position as the device stores them (13/12, 30/21 and 36/35 crossed).
const Expected kEvents[] = {
    {0, "Cold Start", 100001},
    {1, "Warm Start", 100002},
    {2, "Power Transition (On -> Off)", 100003},
    {3, "Power Transition (Off -> On)", 100004},
    {4, "DI Transition (Off -> On)", 100005},
    {5, "DI Transition (On -> Off)", 100006},
    {6, "Configuration Change", 100007},
    {7, "Enable", 100008},
    {8, "Disable", 100009},
    {9, "Link On", 100010},
    {10, "Link Off", 100011},
    {11, "IP Change", 100012},
    {13, "Auth Ok, Login Success", 100014},
    {12, "Auth Fail", 100013},
    {14, "Key/Cert Change", 100015},
    {15, "Topology Change", 100016},
    {16, "Master Mismatch", 100017},
    {17, "Coupling Topology Changed", 100018},
    {18, "Fimeware Upgrade Fail", 100019},
    {19, "Config. Import Fail ", 100020},
    {20, "Config. Export Success ", 100022},
    {30, "Event log capacity is over threshold.", 100021},
    {31, "Auth Ok, Session Full", 100023},
    {32, "Auth Ok, Lockout", 100024},
    {21, "Config. Import Success", 100025},
    {33, "OOM Occurred", 100026},
    {34, "Fiber Check Warning", 100027},
    {36, "MAC Table Change", 100029},
    {35, "Clear memory cache (syslog agent)", 100028},
    {37, "Traffic overload", 100030},
    {38, "Firewall rule terminated", 100031},
    {39, "XBK02 config. import fail", 100032},
    {40, "DoS Protection", 100033},
    {41, "802.1X Auth. Fail", 100034},
    {42, "Session Log", 100035},
};

const Expected kReasons[] = {
    {0, "", 0}, {1, "DHCP", 0}, {2, "NTP", 0}, {3, "SNMP", 0}, {4, "DDNS", 0}, {5, "Static Route", 0},
    {6, "System Info", 0}, {7, "SNMP Trap", 0}, {8, "LAN", 0}, {9, "WAN", 0}, {10, "WAN2", 0},
    {11, "WAN1", 0}, {12, "Port", 0},
    {22, "Filter", 0}, {23, "NAT", 0}, {24, "DoS", 0}, {25, "QoS Bandwith", 0}, {26, "QoS DownStream", 0},
    {27, "QoS Upstream", 0}, {28, "WAN Backup", 0}, {29, "Password", 0}, {30, "Power", 0}, {32, "DI", 0},
    {33, "Syslog", 0}, {34, "DNS", 0}, {35, "Admin", 0}, {36, "User", 0}, {37, "Factory Default", 0},
    {38, "System Restart", 0}, {39, "Firmware Upgrade", 0}, {40, "Configuration Upgrade", 0},
    {41, "Trusted Access", 0}, {42, "Login", 0}, {43, "IPSec", 0}, {44, "Debug Log", 0},
    {45, "Static Multicast Route", 0}, {68, "IGMP Snooping", 0}, {46, "DVMRP", 0}, {47, "L2TP Server", 0},
    {48, "RIP", 0}, {49, "Setting Check", 0}, {50, "Layer2 Filter", 0}, {51, "Network Mode", 0},
    {52, "Certificate Generate", 0}, {53, "Local Certificate Upload", 0}, {54, "Remote Certificate Upload", 0},
    {55, "L2TP Server", 0}, {56, "VLAN", 0}, {58, "802.1Q VLAN Setting", 0},
    {59, "Configuration Upgrade Fail", 0}, {57, "VLAN Port Setting", 0}, {60, "Port Setting", 0},
    {61, "Trunk Setting", 0}, {62, "Email Setting", 0}, {63, "LLDP Setting", 0}, {64, "Email Event Setting", 0},
    {67, "Rapid Loop V2", 0}, {104, "STP", 0}, {78, "RSTP", 0}, {75, "Mirror ", 0},
    {69, "System Event Type", 0}, {70, "Port Event Type", 0}, {76, "User Account", 0},
    {77, "Age Time Setting", 0}, {79, "Rate Limit Setting", 0}, {80, "User Interface Management", 0},
    {65, "SSH", 0}, {66, "Web SSL", 0}, {72, "CoS Mapping", 0}, {73, "ToS Mapping", 0},
    {74, "QoS classification", 0}, {81, "OSPF Global Setting", 0}, {82, "OSPF Area Setting", 0},
    {83, "OSPF Interface Setting", 0}, {84, "OSPF Virtual Link Setting", 0},
    {85, "OSPF Area Aggregation Setting", 0}, {87, "PIM-SM Setting", 0}, {88, "PIM-SM RP Setting", 0},
    {89, "PIM-SM SSM Setting", 0}, {90, "Multicast Route Global Setting", 0},
    {91, "Broadcast Forwarding Setting", 0}, {92, "Configuration Import Setting", 0},
    {93, "OpenVPN Client Setting", 0}, {94, "OpenVPN Server Setting", 0}, {95, "Fast Bootup Setting", 0},
    {96, "Security Notification Setting", 0}, {99, "Firewall Log", 0}, {100, "VPN Log", 0},
    {101, "Sytem Log", 0}, {71, "Static Multicast MAC Address", 0}, {102, "success by RADIUS", 0},
    {103, "fail by RADIUS", 0}, {86, "MTU", 0}, {105, "Fiber Check", 0}, {106, "MAC Table Change", 0},
    {107, "Session Idle Tiemtout", 0}, {108, "Force Session Termination", 0}, {109, "Modbus policy", 0},
    {110, "Limit Ingress Rate", 0}, {111, "Resume Ingress Rate", 0},
    {112, "Port-Based Access Control Setting", 0}, {114, "Session Start", 0}, {115, "Session End", 0},
    {116, "All Sessions Ended by Change of", 0}, {117, "Multicast Routing", 0}, {113, "", 0},
};

const Expected kVpn[] = {
    {0, "DPD: No response from remote peer", 300304},
    {1, "Disconnection request from remote peer", 300305},
    {2, "Local/Remote subnet or Phase 2 setting mismatch", 300306},
    {3, "No response from VPN Server", 300307},
    {4, "VPN client is invalid in IPSec setting list", 300308},
    {5, "VPN remote gateway unreachable", 300309},
    {6, "ID, subnet or other settings mismatch", 200208},
    {7, "Illegal VPN client ID", 200209},
    {8, "Pre-Shared-Key Exchange Fail", 200210},
    {9, "Initiating VPN connection", 200101},
    {10, "VPN connection established", 200102},
    {11, "Finish VPN connection (VPN configuration was removed)", 200103},
    {12, "Certificate is not valid or expired", 200201},
    {13, "Local cerificate mismatch to remote certificate", 200202},
    {14, "Remote cerificate mismatch to local certificate", 200203},
    {15, "Phase1: Encryption exchange fail", 200206},
    {16, "Phase1: Hash exchane fail", 200207},
    {17, "Phase2: Encryption exchange fail", 200204},
    {18, "Phase2: Hash exchane fail", 200205},
    {19, "DPD: Restarting Connection", 300302},
    {20, "IKE mode mismatch", 300303},
    {21, "Deny WAN IP by remote peer", 300310},
    {22, "Phase 1 setting does not match the remote gateway configuration", 0},
    {23, "Phase 2 setting does not match the remote gateway configuration", 0},
    {24, "PFS setting does not match", 0},
    {25, "Issuer CA not found", 0},
    {26, "X.509 certificate expired", 0},
    {27, "Policy does not allow PSK", 0},
    {28, "Policy doesn't allow RSASIG", 0},
    {29, "Ignore initial Aggr message", 0},
    {30, "Phase 2 Start", 0},
};

// Every position: id, whole text (trailing blanks count) and message number.
void expect_table(const SlogDescEntry *table, std::size_t n, const Expected *want, std::size_t wn) {
  ASSERT_EQ(n, wn);
  for (std::size_t i = 0; i < n; ++i) {
    SCOPED_TRACE("position " + std::to_string(i));
    EXPECT_EQ(table[i].id, want[i].id);
    EXPECT_EQ(std::string(table[i].text), want[i].text);
    EXPECT_EQ(table[i].msg_id, want[i].msg_id);
    // The 128-byte text field is zero after the text, so no stray bytes reach a reader.
    for (std::size_t k = std::strlen(table[i].text); k < sizeof table[i].text; ++k) ASSERT_EQ(table[i].text[k], 0);
  }
}

TEST(EventTables, EventTableHasEveryTextAndMessageNumberInStoredOrder) {
  expect_table(event_desc_table, std::size(event_desc_table), kEvents, std::size(kEvents));
  EXPECT_EQ(Slog_getEventDescTableSize(), 35u);
}

TEST(EventTables, ReasonTableHasEveryTextInStoredOrder) {
  expect_table(reason_desc_table, std::size(reason_desc_table), kReasons, std::size(kReasons));
}

TEST(EventTables, VpnTableHasCodeEqualToPositionAndItsMessageNumbers) {
  expect_table(vpn_log_table, std::size(vpn_log_table), kVpn, std::size(kVpn));
  for (const Expected &e : kVpn) {
    SCOPED_TRACE(e.id);
    EXPECT_STREQ(get_ipsec_event_str(static_cast<int>(e.id)), e.text);
    EXPECT_EQ(get_ipsec_event_id(static_cast<int>(e.id)), e.msg_id);
  }
}

TEST(EventTables, FirewallAndLevelTables) {
  const char *targets[] = {"", "ACCEPT", "DROP"};
  ASSERT_EQ(std::size(firewall_target_table), 3u);
  for (uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(firewall_target_table[i].id, i);
    EXPECT_STREQ(firewall_target_table[i].text, targets[i]);
  }
  const char *protos[] = {"", "TCP", "UDP", "UDPLITE", "ICMP", "AH", "ESP"};
  ASSERT_EQ(std::size(firewall_proto_table), 7u);
  for (uint32_t i = 0; i < 7; ++i) {
    EXPECT_EQ(firewall_proto_table[i].id, i);
    EXPECT_STREQ(firewall_proto_table[i].text, protos[i]);
  }
  const char *levels[] = {"<0> Emergency", "<1> Alert",  "<2> CriticalL",      "<3> ERROR",
                          "<4> Warning",   "<5> Notice", "<6> Informational", "<7> Debug"};
  ASSERT_EQ(std::size(TarnLog_level_desc_table), 8u);
  for (uint32_t i = 0; i < 8; ++i) {
    EXPECT_EQ(TarnLog_level_desc_table[i].level, i);
    EXPECT_STREQ(TarnLog_level_desc_table[i].text, levels[i]);
  }
}

TEST(EventTables, LookupGoesByIdNotPosition) {
  using syscommon::log::find_event;
  using syscommon::log::find_reason;
  ASSERT_NE(find_event(12), nullptr);
  EXPECT_STREQ(find_event(12)->text, "Auth Fail");
  EXPECT_EQ(find_event(12) - event_desc_table, 13);
  EXPECT_EQ(find_event(13) - event_desc_table, 12);
  EXPECT_EQ(find_event(21)->msg_id, 100025u);
  EXPECT_EQ(find_event(35)->msg_id, 100028u);
  for (uint32_t missing : {22u, 25u, 29u, 43u, 0xFFFFFFFFu}) EXPECT_EQ(find_event(missing), nullptr) << missing;

  // 113 is the empty text at the very last position; 47 and 55 both say "L2TP Server".
  ASSERT_NE(find_reason(113), nullptr);
  EXPECT_EQ(find_reason(113) - reason_desc_table, 105);
  EXPECT_STREQ(find_reason(113)->text, "");
  EXPECT_STREQ(find_reason(47)->text, "L2TP Server");
  EXPECT_STREQ(find_reason(55)->text, "L2TP Server");
  EXPECT_EQ(find_reason(68) - reason_desc_table, 36);
  for (uint32_t missing : {13u, 17u, 21u, 31u, 97u, 98u, 118u, 255u})
    EXPECT_EQ(find_reason(missing), nullptr) << missing;
}

TEST(EventTables, SeverityValidator) {
  for (uint32_t s = 0; s < 8; ++s) EXPECT_TRUE(alarm_config_is_severity_valid(s)) << s;
  for (uint32_t s : {8u, 9u, 255u, static_cast<uint32_t>(-1)}) EXPECT_FALSE(alarm_config_is_severity_valid(s)) << s;
}

TEST(EventTables, ModuleMaskValidatorTakesExactlyZeroToFifteen) {
  for (uint32_t m = 0; m <= 15; ++m) EXPECT_TRUE(alarm_port_config_is_enable_module_valid(m)) << m;
  for (uint32_t m : {16u, 17u, 31u, 32u, 48u, 0x100u, static_cast<uint32_t>(-1)})
    EXPECT_FALSE(alarm_port_config_is_enable_module_valid(m)) << m;
}

TEST(EventTables, TransceiverWarnings) {
  struct Case {
    const char *code;
    const char *text;
  };
  const Case cases[] = {
      {"0200", "Port G1 low Tx power warning!"},    {"0309", "Port G2 low Rx power warning!"},
      {"0401", "Port G2 high Tx power warning!"},   {"0508", "Port G1 high temperature warning!"},
      {"0207", "Port G8 low Tx power warning!"},    {"0315", "Port G8 low Rx power warning!"},
  };
  for (const Case &c : cases) {
    char out[64] = {};
    EXPECT_EQ(get_ddm_msg(c.code, out, sizeof out), static_cast<int>(std::strlen(c.text))) << c.code;
    EXPECT_STREQ(out, c.text);
  }
  for (const char *unknown : {"0109", "0600", "", "xx"}) {
    char out[8] = "keep";
    EXPECT_EQ(get_ddm_msg(unknown, out, sizeof out), 0) << unknown;
    EXPECT_STREQ(out, "keep");
  }
  char small[10];
  EXPECT_EQ(get_ddm_msg("0309", small, sizeof small), 29);  // the full length, the text cut
  EXPECT_STREQ(small, "Port G2 l");
}

}  // namespace
