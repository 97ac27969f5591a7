// The description tables hold exactly the device's texts, ids and message numbers in the
// stored order; lookups go by id; the small helpers of the tables.
#include <cstring>
#include <initializer_list>
#include <span>
#include <string>
#include <utility>

#include "log/lookup.h"
#include "support/test_support.h"
#include "syscommon/log.h"

namespace {

struct Expected {  // NOLINT(clang-analyzer-optin.performance.Padding): reads as the tables do
  uint32_t id;
  const char *text;
  uint32_t msg_id = 0;
};

// Position by position as the device stores them (13/12, 30/21 and 36/35 crossed).
const Expected kEvents[] = {
    {0, "Cold Start", 100001}, {1, "Warm Start", 100002}, {2, "Power Transition (On -> Off)", 100003},
    {3, "Power Transition (Off -> On)", 100004}, {4, "DI Transition (Off -> On)", 100005},
    {5, "DI Transition (On -> Off)", 100006}, {6, "Configuration Change", 100007}, {7, "Enable", 100008},
    {8, "Disable", 100009}, {9, "Link On", 100010}, {10, "Link Off", 100011}, {11, "IP Change", 100012},
    {13, "Auth Ok, Login Success", 100014}, {12, "Auth Fail", 100013}, {14, "Key/Cert Change", 100015},
    {15, "Topology Change", 100016}, {16, "Master Mismatch", 100017}, {17, "Coupling Topology Changed", 100018},
    {18, "Fimeware Upgrade Fail", 100019}, {19, "Config. Import Fail ", 100020},
    {20, "Config. Export Success ", 100022}, {30, "Event log capacity is over threshold.", 100021},
    {31, "Auth Ok, Session Full", 100023}, {32, "Auth Ok, Lockout", 100024}, {21, "Config. Import Success", 100025},
    {33, "OOM Occurred", 100026}, {34, "Fiber Check Warning", 100027}, {36, "MAC Table Change", 100029},
    {35, "Clear memory cache (syslog agent)", 100028}, {37, "Traffic overload", 100030},
    {38, "Firewall rule terminated", 100031}, {39, "XBK02 config. import fail", 100032}, {40, "DoS Protection", 100033},
    {41, "802.1X Auth. Fail", 100034}, {42, "Session Log", 100035},
};

const Expected kReasons[] = {
    {0, ""}, {1, "DHCP"}, {2, "NTP"}, {3, "SNMP"}, {4, "DDNS"}, {5, "Static Route"}, {6, "System Info"},
    {7, "SNMP Trap"}, {8, "LAN"}, {9, "WAN"}, {10, "WAN2"}, {11, "WAN1"}, {12, "Port"}, {22, "Filter"}, {23, "NAT"},
    {24, "DoS"}, {25, "QoS Bandwith"}, {26, "QoS DownStream"}, {27, "QoS Upstream"}, {28, "WAN Backup"},
    {29, "Password"}, {30, "Power"}, {32, "DI"}, {33, "Syslog"}, {34, "DNS"}, {35, "Admin"}, {36, "User"},
    {37, "Factory Default"}, {38, "System Restart"}, {39, "Firmware Upgrade"}, {40, "Configuration Upgrade"},
    {41, "Trusted Access"}, {42, "Login"}, {43, "IPSec"}, {44, "Debug Log"}, {45, "Static Multicast Route"},
    {68, "IGMP Snooping"}, {46, "DVMRP"}, {47, "L2TP Server"}, {48, "RIP"}, {49, "Setting Check"},
    {50, "Layer2 Filter"}, {51, "Network Mode"}, {52, "Certificate Generate"}, {53, "Local Certificate Upload"},
    {54, "Remote Certificate Upload"}, {55, "L2TP Server"}, {56, "VLAN"}, {58, "802.1Q VLAN Setting"},
    {59, "Configuration Upgrade Fail"}, {57, "VLAN Port Setting"}, {60, "Port Setting"}, {61, "Trunk Setting"},
    {62, "Email Setting"}, {63, "LLDP Setting"}, {64, "Email Event Setting"}, {67, "Rapid Loop V2"}, {104, "STP"},
    {78, "RSTP"}, {75, "Mirror "}, {69, "System Event Type"}, {70, "Port Event Type"}, {76, "User Account"},
    {77, "Age Time Setting"}, {79, "Rate Limit Setting"}, {80, "User Interface Management"}, {65, "SSH"},
    {66, "Web SSL"}, {72, "CoS Mapping"}, {73, "ToS Mapping"}, {74, "QoS classification"}, {81, "OSPF Global Setting"},
    {82, "OSPF Area Setting"}, {83, "OSPF Interface Setting"}, {84, "OSPF Virtual Link Setting"},
    {85, "OSPF Area Aggregation Setting"}, {87, "PIM-SM Setting"}, {88, "PIM-SM RP Setting"},
    {89, "PIM-SM SSM Setting"}, {90, "Multicast Route Global Setting"}, {91, "Broadcast Forwarding Setting"},
    {92, "Configuration Import Setting"}, {93, "OpenVPN Client Setting"}, {94, "OpenVPN Server Setting"},
    {95, "Fast Bootup Setting"}, {96, "Security Notification Setting"}, {99, "Firewall Log"}, {100, "VPN Log"},
    {101, "Sytem Log"}, {71, "Static Multicast MAC Address"}, {102, "success by RADIUS"}, {103, "fail by RADIUS"},
    {86, "MTU"}, {105, "Fiber Check"}, {106, "MAC Table Change"}, {107, "Session Idle Tiemtout"},
    {108, "Force Session Termination"}, {109, "Modbus policy"}, {110, "Limit Ingress Rate"},
    {111, "Resume Ingress Rate"}, {112, "Port-Based Access Control Setting"}, {114, "Session Start"},
    {115, "Session End"}, {116, "All Sessions Ended by Change of"}, {117, "Multicast Routing"}, {113, ""},
};

const Expected kVpn[] = {
    {0, "DPD: No response from remote peer", 300304}, {1, "Disconnection request from remote peer", 300305},
    {2, "Local/Remote subnet or Phase 2 setting mismatch", 300306}, {3, "No response from VPN Server", 300307},
    {4, "VPN client is invalid in IPSec setting list", 300308}, {5, "VPN remote gateway unreachable", 300309},
    {6, "ID, subnet or other settings mismatch", 200208}, {7, "Illegal VPN client ID", 200209},
    {8, "Pre-Shared-Key Exchange Fail", 200210}, {9, "Initiating VPN connection", 200101},
    {10, "VPN connection established", 200102}, {11, "Finish VPN connection (VPN configuration was removed)", 200103},
    {12, "Certificate is not valid or expired", 200201},
    {13, "Local cerificate mismatch to remote certificate", 200202},
    {14, "Remote cerificate mismatch to local certificate", 200203}, {15, "Phase1: Encryption exchange fail", 200206},
    {16, "Phase1: Hash exchane fail", 200207}, {17, "Phase2: Encryption exchange fail", 200204},
    {18, "Phase2: Hash exchane fail", 200205}, {19, "DPD: Restarting Connection", 300302},
    {20, "IKE mode mismatch", 300303}, {21, "Deny WAN IP by remote peer", 300310},
    {22, "Phase 1 setting does not match the remote gateway configuration"},
    {23, "Phase 2 setting does not match the remote gateway configuration"}, {24, "PFS setting does not match"},
    {25, "Issuer CA not found"}, {26, "X.509 certificate expired"}, {27, "Policy does not allow PSK"},
    {28, "Policy doesn't allow RSASIG"}, {29, "Ignore initial Aggr message"}, {30, "Phase 2 Start"},
};

// Every position: id, whole text (trailing blanks count) and message number.
void expect_table(std::span<const SlogDescEntry> table, std::span<const Expected> want) {
  ASSERT_EQ(table.size(), want.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    SCOPED_TRACE("position " + std::to_string(i));
    EXPECT_EQ(table[i].id, want[i].id);
    EXPECT_EQ(std::string(table[i].text), want[i].text);
    EXPECT_EQ(table[i].msg_id, want[i].msg_id);
  }
}

// A table whose id (or level) is its position.
template <typename Entry, std::size_t N>
void expect_positional(const Entry (&table)[N], std::initializer_list<const char *> want) {
  ASSERT_EQ(N, want.size());
  for (uint32_t i = 0; i < N; ++i) {
    const auto &[id, text] = table[i];
    EXPECT_EQ(id, i);
    EXPECT_STREQ(text, want.begin()[i]) << i;
  }
}

TEST(EventTables, DescriptionTablesHoldEveryEntryInStoredOrder) {
  expect_table(event_desc_table, kEvents);
  EXPECT_EQ(Slog_getEventDescTableSize(), 35u);
  expect_table(reason_desc_table, kReasons);
  expect_table(vpn_log_table, kVpn);
  for (const Expected &e : kVpn) {  // the VPN code is the position
    EXPECT_STREQ(get_ipsec_event_str(static_cast<int>(e.id)), e.text);
    EXPECT_EQ(get_ipsec_event_id(static_cast<int>(e.id)), e.msg_id);
  }
  expect_positional(firewall_target_table, {"", "ACCEPT", "DROP"});
  expect_positional(firewall_proto_table, {"", "TCP", "UDP", "UDPLITE", "ICMP", "AH", "ESP"});
  expect_positional(TarnLog_level_desc_table, {"<0> Emergency", "<1> Alert", "<2> CriticalL", "<3> ERROR",
                                               "<4> Warning", "<5> Notice", "<6> Informational", "<7> Debug"});
}

TEST(EventTables, LookupGoesByIdNotPosition) {
  using syscommon::log::find_event;
  using syscommon::log::find_reason;
  EXPECT_EQ(find_event(12) - event_desc_table, 13);
  EXPECT_EQ(find_event(13) - event_desc_table, 12);
  for (uint32_t missing : {22u, 29u, 43u, 0xFFFFFFFFu}) EXPECT_EQ(find_event(missing), nullptr) << missing;
  EXPECT_EQ(find_reason(113) - reason_desc_table, 105);  // the empty text at the very last position
  EXPECT_EQ(find_reason(68) - reason_desc_table, 36);
  EXPECT_EQ(find_reason(55) - reason_desc_table, 46);  // the second "L2TP Server"
  for (uint32_t missing : {13u, 21u, 31u, 97u, 98u, 118u}) EXPECT_EQ(find_reason(missing), nullptr) << missing;
}

TEST(EventTables, Validators) {
  for (uint32_t v = 0; v < 40; ++v) {
    EXPECT_EQ(alarm_config_is_severity_valid(v), v < 8) << v;
    EXPECT_EQ(alarm_port_config_is_enable_module_valid(v), v < 16) << v;
  }
  EXPECT_FALSE(alarm_config_is_severity_valid(static_cast<uint32_t>(-1)));
  for (uint32_t m : {0x100u, 0x10Fu, static_cast<uint32_t>(-1)}) EXPECT_FALSE(alarm_port_config_is_enable_module_valid(m));
}

TEST(EventTables, TransceiverWarnings) {
  const std::pair<const char *, const char *> cases[] = {
      {"0200", "Port G1 low Tx power warning!"},  {"0309", "Port G2 low Rx power warning!"},
      {"0401", "Port G2 high Tx power warning!"}, {"0508", "Port G1 high temperature warning!"},
      {"0207", "Port G8 low Tx power warning!"},  {"0315", "Port G8 low Rx power warning!"},
  };
  for (const auto &[code, text] : cases) {
    char out[64] = {};
    EXPECT_EQ(get_ddm_msg(code, out, sizeof out), static_cast<int>(std::strlen(text))) << code;
    EXPECT_STREQ(out, text);
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
