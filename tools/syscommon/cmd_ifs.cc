// syscommon ifs: publish and show the interface picture of the system segment (WAN and
// VLAN interfaces, bridges, zone bridges, port VLAN plan, trunks), and answer lookups
// through the library's own accessors.
#include <arpa/inet.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "platform/segment.h"
#include "shm/ifs_tables.h"
#include "syscommon/platform.h"
#include "syscommon/shm.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

using namespace syscommon::shm;

// ---- Texts for a person

std::string dotted(uint32_t addr) {
  char buf[INET_ADDRSTRLEN] = "";
  in_addr a{};
  a.s_addr = addr;
  inet_ntop(AF_INET, &a, buf, sizeof buf);
  return buf;
}

std::string text32(const char *name) { return std::string(name, strnlen(name, SHM_IFNAME_SIZE)); }
std::string or_dash(const std::string &s) { return s.empty() ? "-" : s; }
std::string up_down(uint32_t link) { return link == 0 ? "down" : link == 1 ? "up" : "up (" + std::to_string(link) + ")"; }

// One bit of a port mask: ports 0..9 are "1/1".."1/10", bits 10..13 the trunk groups.
std::string port_bit_name(int bit) {
  if (bit < kSwitchPorts) return "1/" + std::to_string(bit + 1);
  if (bit < kSwitchPorts + SHM_TRUNK_GROUP_COUNT) return "Trk" + std::to_string(bit - kSwitchPorts + 1);
  return "bit" + std::to_string(bit);
}

// A member mask as port ranges: 0x4f -> "1/1-1/4,1/7".
std::string port_list(uint32_t mask) {
  std::string out;
  for (int bit = 0; bit < 32; ++bit) {
    if ((mask >> bit & 1u) == 0) continue;
    int last = bit;
    while (last + 1 < kSwitchPorts && bit < kSwitchPorts && (mask >> (last + 1) & 1u) != 0) ++last;
    if (!out.empty()) out += ",";
    out += port_bit_name(bit);
    if (last > bit) out += "-" + port_bit_name(last);
    bit = last;
  }
  return out.empty() ? "-" : out;
}

// ---- Arguments

uint32_t parse_ip(const std::string &text) {
  in_addr a{};
  if (inet_pton(AF_INET, text.c_str(), &a) != 1) throw UsageError{"address must look like 192.168.1.1, not '" + text + "'"};
  return a.s_addr;
}

// "A.B.C.D/LEN" -> address and mask, both as stored.
std::pair<uint32_t, uint32_t> parse_prefix(const std::string &text) {
  auto slash = text.find('/');
  if (slash == std::string::npos) throw UsageError{"address must look like 192.168.1.1/24, not '" + text + "'"};
  uint32_t ip = parse_ip(text.substr(0, slash));
  long len = parse_number(text.substr(slash + 1), "prefix length", 0, 32);
  uint32_t host_mask = len == 0 ? 0 : ~uint32_t{0} << (32 - len);
  return {ip, htonl(host_mask)};
}

// "1/5" or "5": a port counted from 1, returned counted from 0.
int parse_port(const std::string &text) {
  std::string digits = text.rfind("1/", 0) == 0 ? text.substr(2) : text;
  return static_cast<int>(parse_number(digits, "port (1/1 to 1/10)", 1, kSwitchPorts)) - 1;
}

// "1/1-1/4,1/7" -> bit mask of ports counted from 0; "none" -> 0.
uint32_t parse_ports(const std::string &text) {
  if (text == "none") return 0;
  uint32_t mask = 0;
  std::size_t at = 0;
  while (at <= text.size()) {
    std::size_t comma = text.find(',', at);
    std::string item = text.substr(at, comma == std::string::npos ? std::string::npos : comma - at);
    std::size_t dash = item.find('-');
    int first = parse_port(item.substr(0, dash));
    int last = dash == std::string::npos ? first : parse_port(item.substr(dash + 1));
    if (last < first) throw UsageError{"port range '" + item + "' runs backwards"};
    for (int p = first; p <= last; ++p) mask |= 1u << p;
    if (comma == std::string::npos) break;
    at = comma + 1;
  }
  return mask;
}

bool parse_on_off(const std::string &text) {
  if (text == "on" || text == "enable") return true;
  if (text == "off" || text == "disable") return false;
  throw UsageError{"state must be on or off, not '" + text + "'"};
}

int parse_vid(const std::string &text) { return static_cast<int>(parse_number(text, "VLAN id", 1, 4094)); }
int parse_bridge_id(const std::string &text) { return static_cast<int>(parse_number(text, "bridge id", 8000, 0x7fffffff)); }

void copy_user_name(char (&field)[SHM_IFNAME_SIZE], const std::string &name) {
  check_text(name, "name", SHM_IFNAME_SIZE - 1);
  if (name.find_first_of("\"'`$\\;&|<> ") != std::string::npos)
    throw UsageError{"name '" + name + "' must not contain blanks or shell characters"};
  std::memset(field, 0, sizeof field);
  std::memcpy(field, name.data(), name.size());
}

// A VLAN interface's user name also travels in the ifsInfo line, whose fields are
// separated by '-'.
void copy_vlan_user_name(char (&field)[SHM_IFNAME_SIZE], const std::string &name) {
  if (name.find('-') != std::string::npos) throw UsageError{"VLAN interface name '" + name + "' must not contain '-'"};
  copy_user_name(field, name);
}

// ---- show

void heading(const char *title) { std::printf("\n%s\n", title); }

void show_wan(const ShmIfsConf &ifs) {
  heading("WAN interfaces");
  std::printf("  %-4s %-5s %-12s %-6s %-16s %-16s %-16s %-5s %s\n", "rec", "name", "kernel", "vlan", "address",
              "mask", "gateway", "type", "link");
  bool any = false;
  for (int w = 0; w < 2; ++w) {
    const ShmWanRecord &r = ifs.wan[w];
    if (r.vid == 0) continue;
    any = true;
    std::printf("  %-4d %-5s %-12s %-6u %-16s %-16s %-16s %-5u %s\n", w, w == 0 ? "WAN" : "LAN",
                or_dash(text32(r.ifname)).c_str(), r.vid, dotted(r.ip).c_str(), dotted(r.mask).c_str(),
                dotted(r.gateway).c_str(), r.conn_type, up_down(r.link).c_str());
  }
  if (!any) std::puts("  (none)");
}

void show_vlans(const VlanTable &vlans) {
  heading("VLAN interfaces");
  std::printf("  %-4s %-12s %-16s %-6s %-16s %-16s %-7s %-6s %-16s %s\n", "rec", "kernel", "user", "vlan", "address",
              "mask", "routing", "attr", "members", "link");
  bool any = false;
  for (int i = 0; i < SHM_VLAN_IF_COUNT; ++i) {
    const ShmVlanIfRecord &r = vlans[i];
    if (r.vid == 0 && r.ifname[0] == '\0') continue;
    any = true;
    std::printf("  %-4d %-12s %-16s %-6u %-16s %-16s %-7s %-6u %-16s %s\n", i, or_dash(text32(r.ifname)).c_str(),
                or_dash(text32(r.usr_name)).c_str(), r.vid, dotted(r.ip).c_str(), dotted(r.mask).c_str(),
                r.routing != 0 ? "on" : "off", r.attribute, port_list(r.member).c_str(), up_down(r.link).c_str());
  }
  if (!any) std::puts("  (none)");
}

// The bulk setters write all four records; one without id, name or enable byte is unused.
template <class Record>
bool bridge_unused(const Record &r) {
  return r.ifname[0] == '\0' || (r.id == 0 && r.usr_name[0] == '\0' && r.enable == 0);
}

void print_unused(bool any, int unused) {
  if (!any) std::puts("  (none)");
  else if (unused > 0) std::printf("  (%d unused)\n", unused);
}

const char *enable_text(uint8_t enable) { return enable == 1 ? "enabled" : enable == 0 ? "disabled" : "enabled?"; }

void show_bridges(const BridgeTable &bridges) {
  static const char *const kModes[] = {"none", "bridge", "zone bridge"};
  int mode = shm_get_brg_mode();
  std::printf("\nBridges (bridge mode: %s)\n", mode >= 0 && mode <= 2 ? kModes[mode] : "?");
  std::printf("  %-4s %-12s %-16s %-8s %-16s %-16s %-9s %s\n", "rec", "kernel", "user", "id", "address", "mask",
              "state", "link");
  bool any = false;
  int unused = 0;
  for (int b = 0; b < SHM_BRIDGE_COUNT; ++b) {
    const ShmBridgeRecord &r = bridges[b];
    if (bridge_unused(r)) {
      ++unused;
      continue;
    }
    any = true;
    std::printf("  %-4d %-12s %-16s %-8u %-16s %-16s %-9s %s\n", b, text32(r.ifname).c_str(),
                or_dash(text32(r.usr_name)).c_str(), r.id, dotted(r.ip).c_str(), dotted(r.mask).c_str(),
                enable_text(r.enable), up_down(r.link).c_str());
  }
  print_unused(any, unused);
}

void show_zones(const ZoneTable &zones) {
  heading("Zone bridges");
  std::printf("  %-4s %-12s %-16s %-8s %-16s %-16s %s\n", "rec", "kernel", "user", "id", "address", "mask", "state");
  bool any = false;
  int unused = 0;
  for (int z = 0; z < SHM_ZONE_BRIDGE_COUNT; ++z) {
    const ShmZoneBridgeRecord &r = zones[z];
    if (bridge_unused(r)) {
      ++unused;
      continue;
    }
    any = true;
    std::printf("  %-4d %-12s %-16s %-8u %-16s %-16s %s\n", z, text32(r.ifname).c_str(),
                or_dash(text32(r.usr_name)).c_str(), r.id, dotted(r.ip).c_str(), dotted(r.mask).c_str(),
                enable_text(r.enable));
    std::string members;
    for (int j = 0; j < SHM_ZONE_MEMBER_COUNT; ++j) {
      if (r.member_vid[j] <= 0) continue;
      if (!members.empty()) members += ", ";
      members += "VLAN " + std::to_string(r.member_vid[j]) + " " + or_dash(text32(r.member_name[j]));
    }
    std::printf("       members: %s\n", members.empty() ? "(none)" : members.c_str());
  }
  print_unused(any, unused);
}

void show_port_plan(const PortPlan &plan, uint32_t link_bits) {
  static const char *const kTypes[] = {"WAN", "LAN", "bridge"};
  heading("Port VLAN plan");
  std::printf("  %-6s %-6s %-7s %-6s %-8s %s\n", "port", "pvid", "in-use", "trunk", "type", "link");
  for (int p = 0; p < kSwitchPorts; ++p) {
    int group = get_shm_port_to_trk_grp(p);
    uint8_t type = shm_check_port_type(p + 1);
    std::printf("  %-6s %-6u %-7u %-6s %-8s %s\n", port_bit_name(p).c_str(), plan[p].pvid, plan[p].in_use,
                group == 0 ? "-" : ("Trk" + std::to_string(group)).c_str(), type <= 2 ? kTypes[type] : "?",
                (link_bits >> p & 1u) != 0 ? "up" : "down");
  }
  for (int p = kSwitchPorts; p < kPlanRecords; ++p)
    if (plan[p].pvid != 0 || plan[p].in_use != 0)
      std::printf("  %-6s %-6u %-7u\n", port_bit_name(p).c_str(), plan[p].pvid, plan[p].in_use);
}

void show_trunks() {
  heading("Trunk groups");
  bool any = false;
  for (int g = 1; g <= SHM_TRUNK_GROUP_COUNT; ++g) {
    uint32_t members = 0;
    get_shm_trk_mem(g, &members);
    if (members == 0) continue;
    any = true;
    int leading = Ssc_getLeadingPortOfTrunkGroupByGroup(g);
    std::printf("  Trk%-3d members %-16s leading port %s\n", g, port_list(members).c_str(),
                leading < 0 ? "none (no member has link)" : port_bit_name(leading).c_str());
  }
  if (!any) std::puts("  (none)");
}

int cmd_show(const Args &args) {
  expect_args(args, 0, 0);
  ShmIfsConf ifs{};
  VlanTable vlans{};
  BridgeTable bridges{};
  ZoneTable zones{};
  PortPlan plan{};
  get_shm_ifs_conf(&ifs);
  get_shm_vlan_conf(vlans.data());
  get_shm_brg_conf(bridges.data());
  get_shm_zone_brg_conf(zones.data());
  get_shm_vplan_conf(plan.data());
  std::printf("Interface picture (system segment)\n");
  show_wan(ifs);
  show_vlans(vlans);
  show_bridges(bridges);
  show_zones(zones);
  show_port_plan(plan, Ssc_getPortLinkState());
  show_trunks();
  return 0;
}

// ---- lookup

void answer(const char *question, const std::string &value) { std::printf("  %-40s %s\n", question, value.c_str()); }

void lookup_vid(int vid) {
  std::printf("VLAN id %d\n", vid);
  char out[SHM_IFNAME_SIZE + 1] = "";
  get_shm_interface_name_by_vid(vid, out);
  answer("kernel interface name", or_dash(text32(out)));
  get_shm_usr_interface_name_by_vid(vid, out);
  answer("user interface name", or_dash(text32(out)));
  answer("address", dotted(get_shm_interface_ip_by_vid(vid)));
  uint32_t ip = 0, mask = 0;
  get_shm_ip_mask_by_vid(vid, &ip, &mask);
  answer("address / mask (WAN 0, then VLANs)", dotted(ip) + " / " + dotted(mask));
  uint32_t link = 0xffffffffu;
  get_shm_interface_link_by_vid(vid, &link);
  answer("link", link == 0xffffffffu ? "-" : up_down(link));
  int idx = get_shm_vconfIdx_by_vid(vid);
  answer("VLAN interface record", idx < 0 ? "-" : std::to_string(idx));
  get_shm_usr_port_name_by_vid(vid, out);
  answer("first port with this port VLAN id", text32(out) + " (1/1 when none)");
  get_shm_zoneBrg_zone_Name_by_vid(vid, out);
  answer("zone-bridge member name", or_dash(text32(out)));
  answer("member of an enabled zone bridge", shm_check_vid_in_zone_brg(vid) != 0 ? "yes" : "no");
  out[0] = '\0';
  int slave = get_slave_interface_in_bridge(vid, out);
  answer("bridge slave interface", slave != 0 ? text32(out) : "-");
}

void lookup_name(const std::string &name) {
  std::printf("Name \"%s\"\n", name.c_str());
  int vid = 0;
  int idx = shm_getVidByUsrIfaceName(name.c_str(), &vid);
  answer("user name, any case", idx < 0 ? "-" : "VLAN " + std::to_string(vid) + ", index " + std::to_string(idx));
  char ifname[SHM_IFNAME_SIZE + 1] = "";
  uint32_t ip = 0, mask = 0;
  idx = shm_getIpMaskByUsrIfaceName(name.c_str(), ifname, &ip, &mask);
  answer("user name or its prefix, exact case",
         idx < 0 ? "-" : text32(ifname) + " " + dotted(ip) + " / " + dotted(mask) + ", index " + std::to_string(idx));
  int kvid = get_shm_vid_by_interface_name(name.c_str());
  answer("kernel interface name", kvid < 0 ? "-" : "VLAN " + std::to_string(kvid));
  char usr[SHM_IFNAME_SIZE + 1] = "";
  get_shm_usr_interface_name_by_interface_name(name.c_str(), usr);
  answer("user name of this kernel name", or_dash(text32(usr)));
  int bvid = 0;
  answer("bridge interface \"BRG\"",
         shm_getVidByBridgeIfName(name.c_str(), &bvid) != 0 ? "bridge id " + std::to_string(bvid) : "-");
}

int cmd_lookup(const Args &args) {
  expect_args(args, 2, 2);
  if (args[0] == "vid") {
    lookup_vid(static_cast<int>(parse_number(args[1], "VLAN id", 0, 0x7fffffff)));
  } else if (args[0] == "name") {
    lookup_name(args[1]);
  } else if (args[0] == "ip") {
    char out[SHM_IFNAME_SIZE + 1] = "";
    uint32_t ip = parse_ip(args[1]);
    get_shm_usr_interface_name_by_ip(ip, out);
    std::printf("Address %s\n", dotted(ip).c_str());
    answer("user interface name", or_dash(text32(out)));
  } else {
    throw UsageError{"lookup by vid, name or ip, not '" + args[0] + "'"};
  }
  return 0;
}

// ---- publishing (the daemons' side of the picture)

// WAN records have no writer in the library (the routing daemon owns them): written
// directly into the segment, link up.
int cmd_set_wan(const Args &args) {
  expect_args(args, 3, 4);
  int w = static_cast<int>(parse_number(args[0], "WAN record", 0, 1));
  ShmWanRecord r{};
  r.vid = static_cast<uint32_t>(parse_vid(args[1]));
  std::tie(r.ip, r.mask) = parse_prefix(args[2]);
  r.gateway = args.size() > 3 ? parse_ip(args[3]) : 0;
  r.link = 1;
  std::snprintf(r.ifname, sizeof r.ifname, "eth0.%u", r.vid);
  write_field(kSystem, wan_off(w), r);
  return 0;
}

// The VLAN daemon's part: VLAN information record and port member word for this VLAN.
void publish_vlan_members(int vid, uint32_t members) {
  CriticalSection cs(kSystem);
  auto info = cs.load<VlanInfoTable>(SYS_OFF(vlan_info));
  int j = find_first(info, [vid](const ShmVlanInfoRecord &r) { return r.vid == vid; });
  if (j < 0) j = find_first(info, [](const ShmVlanInfoRecord &r) { return r.vid == 0; });
  if (j < 0) throw UsageError{"the VLAN information table is full"};
  info[j].vid = static_cast<uint16_t>(vid);
  cs.store(SYS_OFF(vlan_info), info);
  cs.store(SYS_OFF(port_member) + 4 * static_cast<std::size_t>(j), members);
}

int cmd_set_vlan(const Args &args) {
  expect_args(args, 4, 5);
  int i = static_cast<int>(parse_number(args[0], "VLAN record", 0, SHM_VLAN_IF_COUNT - 1));
  ShmVlanIfConfig cfg{};
  cfg.vid = static_cast<uint32_t>(parse_vid(args[1]));
  copy_vlan_user_name(cfg.usr_name, args[2]);
  std::tie(cfg.ip, cfg.mask) = parse_prefix(args[3]);
  cfg.routing = 1;
  uint32_t members = args.size() > 4 ? parse_ports(args[4]) : 0;
  int rc = set_shm_vconf_info(i, "eth0", &cfg);
  if (members != 0) {
    publish_vlan_members(static_cast<int>(cfg.vid), members);
    std::array<ShmVlanIfConfig, SHM_VLAN_IF_COUNT> recs{};
    VlanTable vlans{};
    get_shm_vlan_conf(vlans.data());
    // The update stops at the first record with VLAN id 0: an unused record gets an id
    // that no (16-bit) VLAN information record carries, so records after it are reached.
    for (int k = 0; k < SHM_VLAN_IF_COUNT; ++k) recs[k].vid = vlans[k].vid != 0 ? vlans[k].vid : UINT32_MAX;
    VlanInfoTable info{};
    {
      CriticalSection cs(kSystem);
      info = cs.load<VlanInfoTable>(SYS_OFF(vlan_info));
    }
    shm_vconf_member_update(recs.data(), info.data());
    // The VLAN daemon reports the link of a VLAN that has member ports.
    write_field(kSystem, vlan_off(i) + offsetof(ShmVlanIfRecord, link), uint32_t{1});
  }
  return rc == 0 ? 0 : 1;
}

int cmd_clear_vlan(const Args &args) {
  expect_args(args, 1, 1);
  int i = static_cast<int>(parse_number(args[0], "VLAN record", 0, SHM_VLAN_IF_COUNT - 1));
  return set_shm_vconf_info(i, "eth0", nullptr) == 0 ? 0 : 1;
}

int cmd_set_port(const Args &args) {
  expect_args(args, 2, 3);
  int p = parse_port(args[0]);
  set_shm_port_vlan_id(p, parse_vid(args[1]));
  if (args.size() > 2) {
    auto in_use = static_cast<uint16_t>(parse_number(args[2], "in-use value", 0, 0xffff));
    write_field(kSystem, plan_off(p) + offsetof(ShmPortVlanRecord, in_use), in_use);
  }
  return 0;
}

// Fills the head shared by the caller's bridge and zone-bridge records.
template <class Config>
void fill_bridge_config(Config &cfg, const Args &args) {
  cfg.id = static_cast<uint32_t>(parse_bridge_id(args[1]));
  copy_user_name(cfg.usr_name, args[2]);
  std::tie(cfg.ip, cfg.mask) = parse_prefix(args[3]);
  cfg.enable = parse_on_off(args[4]) ? 1 : 0;
}

template <class Config, class Record>
void keep_bridge_config(Config &cfg, const Record &r) {
  std::memcpy(cfg.usr_name, r.usr_name, sizeof cfg.usr_name);
  cfg.id = r.id;
  cfg.ip = r.ip;
  cfg.mask = r.mask;
  cfg.enable = r.enable;
}

int cmd_set_bridge(const Args &args) {
  expect_args(args, 5, 5);
  int b = static_cast<int>(parse_number(args[0], "bridge record", 0, SHM_BRIDGE_COUNT - 1));
  BridgeTable table{};
  get_shm_brg_conf(table.data());
  std::array<ShmBridgeConfig, SHM_BRIDGE_COUNT> recs{};
  for (int k = 0; k < SHM_BRIDGE_COUNT; ++k) keep_bridge_config(recs[k], table[k]);
  fill_bridge_config(recs[b], args);
  set_shm_brg_info_all("br", recs.data());
  return 0;
}

int cmd_set_zone(const Args &args) {
  if (args.size() < 5) throw UsageError{"missing argument"};
  if (args.size() > 5 + SHM_ZONE_MEMBER_COUNT) throw UsageError{"at most 16 members"};
  int z = static_cast<int>(parse_number(args[0], "zone-bridge record", 0, SHM_ZONE_BRIDGE_COUNT - 1));
  ZoneTable table{};
  get_shm_zone_brg_conf(table.data());
  std::array<ShmZoneBridgeConfig, SHM_ZONE_BRIDGE_COUNT> recs{};
  for (int k = 0; k < SHM_ZONE_BRIDGE_COUNT; ++k) {
    keep_bridge_config(recs[k], table[k]);
    std::memcpy(recs[k].member_vid, table[k].member_vid, sizeof recs[k].member_vid);
    std::memcpy(recs[k].member_name, table[k].member_name, sizeof recs[k].member_name);
  }
  ShmZoneBridgeConfig &cfg = recs[z];
  fill_bridge_config(cfg, args);
  std::memset(cfg.member_vid, 0, sizeof cfg.member_vid);
  std::memset(cfg.member_name, 0, sizeof cfg.member_name);
  for (std::size_t k = 5; k < args.size(); ++k) {
    auto colon = args[k].find(':');
    if (colon == std::string::npos) throw UsageError{"member must look like VID:NAME, not '" + args[k] + "'"};
    cfg.member_vid[k - 5] = parse_vid(args[k].substr(0, colon));
    copy_user_name(cfg.member_name[k - 5], args[k].substr(colon + 1));
  }
  set_shm_zone_brg_info_all("br", recs.data());
  return 0;
}

int cmd_set_trunk(const Args &args) {
  expect_args(args, 2, 2);
  std::string g_text = args[0].rfind("Trk", 0) == 0 ? args[0].substr(3) : args[0];
  auto group = static_cast<uint32_t>(parse_number(g_text, "trunk group", 1, SHM_TRUNK_GROUP_COUNT));
  uint32_t ports = parse_ports(args[1]);
  std::array<uint32_t, kSwitchPorts> groups{};
  for (int p = 0; p < kSwitchPorts; ++p) {
    groups[p] = static_cast<uint32_t>(get_shm_port_to_trk_grp(p));
    if (groups[p] == group) groups[p] = 0;
    if ((ports >> p & 1u) != 0) groups[p] = group;
  }
  set_shm_trk_mem(groups.data());
  return 0;
}

const Registration reg{
    {"ifs",
     "Interfaces, VLANs, bridges, zone bridges, port VLAN plan and trunks: publish, show, look up.",
     {
         {"show", "", "print the interface picture, decoded", cmd_show},
         {"lookup", "vid N | name NAME | ip A.B.C.D",
          "answer through the library's lookups:\n"
          "  vid N      kernel and user names, address, link, ports and zone membership of a VLAN id\n"
          "  name NAME  VLAN id of a user name (\"WAN\", a VLAN interface's name), of a kernel name\n"
          "             (\"eth0.5\", \"br8001\") or of the bridge name \"BRG\"\n"
          "  ip A.B.C.D user name of the interface with this address",
          cmd_lookup},
         {"set-wan", "W VID A.B.C.D/LEN [GATEWAY]",
          "write WAN record W (0 = WAN, 1 = LAN) as the routing daemon does, link up", cmd_set_wan},
         {"set-vlan", "I VID NAME A.B.C.D/LEN [PORTS]",
          "publish VLAN interface record I (kernel name eth0.VID) with set_shm_vconf_info;\n"
          "PORTS (e.g. 1/1-1/4,1/7) become its member mask through shm_vconf_member_update",
          cmd_set_vlan},
         {"clear-vlan", "I", "clear VLAN interface record I with set_shm_vconf_info", cmd_clear_vlan},
         {"set-port", "PORT PVID [IN-USE]", "set a port's VLAN id (and its port-in-use value); PORT is 1/N",
          cmd_set_port},
         {"set-bridge", "B ID NAME A.B.C.D/LEN on|off",
          "publish bridge record B (kernel name brID, ID above 7999) with set_shm_brg_info_all", cmd_set_bridge},
         {"set-zone", "Z ID NAME A.B.C.D/LEN on|off [VID:NAME...]",
          "publish zone-bridge record Z and its members with set_shm_zone_brg_info_all", cmd_set_zone},
         {"set-trunk", "GROUP PORTS", "make PORTS (e.g. 1/5-1/6, or none) trunk group GROUP (1..4 or Trk1..Trk4)",
          cmd_set_trunk},
     }}};

}  // namespace
}  // namespace syscommon::tool
