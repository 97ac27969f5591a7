// syscommon shm: initialise, set and show the shared settings store.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "platform/segment.h"
#include "shm/layout.h"
#include "syscommon/shm.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

using namespace syscommon::shm;

std::string hhmm(long seconds) {
  char buf[16];
  long a = seconds < 0 ? -seconds : seconds;
  std::snprintf(buf, sizeof buf, "%c%02ld:%02ld", seconds < 0 ? '-' : '+', a / 3600, a % 3600 / 60);
  return buf;
}

std::string bits8(unsigned v) {
  std::string s;
  for (int b = 7; b >= 0; --b) s.push_back((v >> b & 1u) != 0 ? '1' : '0');
  return s;
}

std::string mac_text(const uint8_t *m) {
  char buf[24];
  std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
  return buf;
}

// Six groups of one or two hex digits separated by ':', nothing else.
bool parse_mac(const std::string &text, uint8_t out[6]) {
  const char *p = text.data();
  const char *const end = p + text.size();
  for (int i = 0; i < 6; ++i) {
    if (i > 0 && (p == end || *p++ != ':')) return false;
    unsigned v = 0;
    const auto [stop, error] = std::from_chars(p, std::min(p + 2, end), v, 16);
    if (error != std::errc()) return false;
    out[i] = static_cast<uint8_t>(v);
    p = stop;
  }
  return p == end;
}

void row(const char *label, const std::string &value) { std::printf("  %-34s %s\n", label, value.c_str()); }
void row(const char *label, unsigned long value) { row(label, std::to_string(value)); }

void show_flags() {
  std::puts("Flags and process states");
  uint32_t agent = 0;
  shm_sysGetAgentState(&agent);
  row("agent state", std::to_string(agent) + ((agent & 1u) != 0 ? " (VLAN configuration done)" : ""));
  row("agent-filter send control", shm_check_ok_to_send_config_to_agent_filter());
  row("reboot flag", shm_get_reboot_flag());
  char reconf[16];
  std::snprintf(reconf, sizeof reconf, "0x%08x", get_shm_route_reconf_flag());
  row("route reconfiguration bits", reconf);
  row("NAT-bind-VRRP ready", shm_get_Flag_nat_bind_vrrp_ready());
  row("allow-VRRP ready", shm_get_Flag_allow_vrrp_ready());
  row("web-server watchdog", static_cast<unsigned long>(shm_get_whatchdog_webs()));
  row("device mode", shm_device_mode());
  row("default-route interface index", shm_droute_idx());
  row("VLAN configuration process", get_shm_vconfig_process());
  row("bridge process", get_shm_brg_process());
  row("IP-client process", get_shm_ipclient_process());
  row("auth-certificate process", get_shm_auth_cert_process());
  std::string sec_cfg, sec_status;
  for (int i = 0; i < 4; ++i) {
    sec_cfg += std::to_string(shm_read_security_config(i)) + " ";
    sec_status += std::to_string(shm_read_security_status(i)) + " ";
  }
  row("security configuration [0..3]", sec_cfg);
  row("security status [0..3]", sec_status);
  row("firmware emergency (FwEM)", static_cast<unsigned long>(shm_sysGet_FwEM()));
  row("fast-bootup state", shm_get_fast_bootup_state());
  row("VLAN port members ready", shm_get_vconf_port_member_ready());
  row("certificate-generation check", shm_sysGetCerGenCheckFlag());
  row("VPN mode", shm_sysGetModeVPNFlag());
  row("multicast routing mode", shm_ipMrouteGetMode());
  row("IGMP snooping", shm_igmpsnoopingGetEnable());
  uint8_t snmp = 0, mode = 0, mount = 0, op = 0, import = 0;
  shm_snmpGetResponseStatus(&snmp);
  row("SNMP response status", snmp);
  shm_xbk02GetMode(&mode);
  shm_xbk02GetMount(&mount);
  shm_xbk02GetOp(&op);
  shm_xbk02GetImportState(&import);
  row("USB backup mode/mount/op/import", std::to_string(mode) + "/" + std::to_string(mount) + "/" +
                                             std::to_string(op) + "/" + std::to_string(import));
}

void show_time_zone() {
  std::puts("Time zone");
  int index = shm_get_timezone();
  row("index", static_cast<unsigned long>(index));
  if (index >= 0 && index < SHM_TIMEZONE_COUNT) {
    time_t t = 0;
    tarn_localtime(&t);  // shifts 0 by the zone's offset
    row("offset from GMT", hhmm(static_cast<long>(t)));
  } else {
    row("offset from GMT", "(index out of the table)");
  }
}

void show_leds() {
  std::puts("LEDs");
  uint8_t fault = 0, master = 0, coupling = 0;
  shm_ledGetAllLedBits(&fault, &master, &coupling);
  row("fault", bits8(fault));
  row("master", bits8(master));
  row("coupling", bits8(coupling));
}

void show_redundancy() {
  std::puts("Redundancy");
  ShmRedundancy r{};
  shm_rdndntGetAll(&r);
  row("protocol", r.protocol);
  row("Rapid Loop v2", r.rl2.enabled != 0 ? "enabled" : "disabled");
  for (int i = 0; i < 2; ++i) {
    const ShmRl2Ring &ring = r.rl2.ring[i];
    std::string label = "ring " + std::to_string(i + 1);
    row(label.c_str(), std::string(ring.enabled != 0 ? "enabled" : "disabled") + ", ports 1/" +
                           std::to_string(ring.port1) + " and 1/" + std::to_string(ring.port2));
  }
}

void show_mcast() {
  std::puts("Multicast table");
  CriticalSection cs(kMcast);
  int32_t count = cs.load<int32_t>(offsetof(McastSegment, count));
  row("entries used (high-water mark)", static_cast<unsigned long>(count));
  for (int i = 0; i < count && i < kMcastEntries; ++i) {
    auto e = cs.load<ShmMcastEntry>(offsetof(McastSegment, entry) + sizeof(ShmMcastEntry) * i);
    bool free_slot = std::memcmp(e.mac, "\0\0\0\0\0\0", 6) == 0;
    std::printf("  [%3d] %s  vlan %s\n", i, free_slot ? "(free)           " : mac_text(e.mac).c_str(),
                e.vid == 0 ? "any" : std::to_string(e.vid).c_str());
  }
}

void show_sessions() {
  std::puts("Sessions");
  row("web users (now / limit)",
      std::to_string(shm_sysGet_usercount()) + " / " + std::to_string(shm_sysGet_web_multiSession_maxUser()));
  row("console users (now / limit)",
      std::to_string(shm_sysGet_con_usercount()) + " / " + std::to_string(shm_sysGet_Con_multiSession_maxUser()));
  row("system time-out", shm_sysGet_cf_sys_timeout());
  row("last session-log time", shm_get_last_session_log_time());
}

int cmd_show(const Args &args) {
  expect_args(args, 0, 0);
  show_flags();
  show_time_zone();
  show_leds();
  show_redundancy();
  show_mcast();
  show_sessions();
  return 0;
}

int cmd_init(const Args &args) {
  expect_args(args, 0, 0);
  shm_init();
  std::puts("shared store initialised: every segment created and zeroed");
  return 0;
}

// Settable single values: name, what the value means, how it is stored.
struct Setting {
  const char *name;
  const char *help;
  long long min, max;
  void (*apply)(long long);
};

const Setting kSettings[] = {
    {"timezone", "time-zone index 0..62", 0, SHM_TIMEZONE_COUNT - 1, [](long long v) { shm_set_timezone(int(v)); }},
    {"reboot", "reboot flag", 0, 0xffffffffLL, [](long long v) { shm_set_reboot_flag(uint32_t(v)); }},
    {"agent-state", "agent state word (bit 0: VLAN configuration done)", 0, 0xffffffffLL,
     [](long long v) {
       CriticalSection cs(kSystem);
       cs.store(SYS_OFF(agent_state), uint32_t(v));
     }},
    {"route-reconf", "OR bits into the route reconfiguration word", 0, 0xffffffffLL,
     [](long long v) { set_shm_route_reconf_flag(uint32_t(v)); }},
    {"watchdog", "web-server watchdog (0/1)", 0, 1, [](long long v) { shm_set_whatchdog_webs(int(v)); }},
    {"led-master", "OR bits into the master LED byte", 0, 255, [](long long v) { Ssc_setMasterLed(int(v)); }},
    {"led-coupling", "OR bits into the coupling LED byte", 0, 255, [](long long v) { Ssc_setCouplingLed(int(v)); }},
    {"protocol", "redundancy protocol byte", 0, 255, [](long long v) { shm_rdndntSetProtocol(int(v)); }},
    {"fwem", "firmware emergency flag", 0, 0xffffffffLL, [](long long v) { shm_sysSet_FwEM(uint32_t(v)); }},
    {"web-max-users", "web session limit", 0, 0xffffffffLL,
     [](long long v) { shm_sysSet_web_multiSession_maxUser(uint32_t(v)); }},
    {"con-max-users", "console session limit", 0, 0xffffffffLL,
     [](long long v) { shm_sysSet_Con_multiSession_maxUser(uint32_t(v)); }},
    {"sys-timeout", "system time-out", 0, 0xffffffffLL, [](long long v) { shm_sysSet_cf_sys_timeout(uint32_t(v)); }},
    {"igmp-snooping", "IGMP snooping enable", 0, 0xffffffffLL,
     [](long long v) { shm_igmpsnoopingSetEnable(uint32_t(v)); }},
};

std::string setting_names() {
  std::string text = "set one value; NAME is one of:";
  for (const auto &s : kSettings) text += std::string("\n      ") + s.name + "  (" + s.help + ")";
  return text;
}

int cmd_set(const Args &args) {
  expect_args(args, 2, 2);
  for (const auto &s : kSettings) {
    if (args[0] != s.name) continue;
    s.apply(parse_number(args[1], s.name, s.min, s.max));
    return 0;
  }
  std::string names;
  for (const auto &s : kSettings) names += std::string(" ") + s.name;
  throw UsageError{"unknown setting '" + args[0] + "'; one of:" + names};
}

int cmd_ring(const Args &args) {
  expect_args(args, 3, 3);
  int r = int(parse_number(args[0], "ring", 1, 2));
  ShmRedundancy all{};
  shm_rdndntGetAll(&all);
  ShmRl2Config cfg = all.rl2;
  cfg.enabled = 1;
  cfg.ring[r - 1].enabled = 1;
  cfg.ring[r - 1].port1 = uint8_t(parse_number(args[1], "first port", 1, 10));
  cfg.ring[r - 1].port2 = uint8_t(parse_number(args[2], "second port", 1, 10));
  shm_rl2SetConfig(&cfg);
  return 0;
}

ShmMcastEntry mcast_arg(const Args &args) {
  expect_args(args, 2, 2);
  ShmMcastEntry e{};
  e.vid = uint16_t(parse_number(args[0], "VLAN id", 0, 4095));
  if (!parse_mac(args[1], e.mac)) throw UsageError{"MAC must look like 01:00:5e:00:00:01, not '" + args[1] + "'"};
  return e;
}

int report(int rc, const char *what) {
  if (rc == 0) return 0;
  std::fprintf(stderr, "syscommon shm: %s\n", what);
  return 1;
}

const Registration reg{{"shm",
                        "Shared settings store: initialise, set and show.",
                        {
                            {"init", "", "create and zero every shared segment", cmd_init},
                            {"show", "", "print the decoded store", cmd_show},
                            {"set", "NAME VALUE", setting_names(), cmd_set},
                            {"ring", "RING PORT1 PORT2", "enable Rapid Loop v2 ring 1 or 2 on two ports", cmd_ring},
                            {"mcast-add", "VID MAC", "add or overwrite a multicast entry (VID 0 = any)",
                             [](const Args &a) {
                               auto e = mcast_arg(a);
                               return report(shm_mcast_set(&e), "multicast table full");
                             }},
                            {"mcast-remove", "VID MAC", "remove a multicast entry",
                             [](const Args &a) {
                               auto e = mcast_arg(a);
                               return report(shm_mcast_remove(&e), "no such multicast entry");
                             }},
                        }}};

}  // namespace
}  // namespace syscommon::tool
