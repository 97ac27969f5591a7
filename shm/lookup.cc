// Interface lookups over the WAN and VLAN interface tables: user-facing names ("WAN",
// "LAN", a user's VLAN interface name) to kernel names, VLAN ids, addresses and links.
// Every lookup holds the system segment's lock from its first comparison to its last copy.
#include <cctype>
#include <cstdlib>
#include <optional>

#include "platform/number.h"
#include "shm/ifs_tables.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

constexpr char kWanName[] = "WAN";  // WAN record 0
constexpr char kLanName[] = "LAN";  // WAN record 1

void put_wan_lan_name(char *out, int w) {
  const char *text = w == 0 ? kWanName : kLanName;
  std::memcpy(out, text, sizeof kWanName);
}

// What the VLAN-id lookups need of the interface they found.
struct Found {
  uint32_t ip, mask, link;
  std::array<char, SHM_IFNAME_SIZE> ifname;
};

template <class Record>
Found found(const Record &r) {
  Found f{r.ip, r.mask, r.link, {}};
  std::memcpy(f.ifname.data(), r.ifname, SHM_IFNAME_SIZE);
  return f;
}

// The first of WAN records 0..wans-1, then of VLAN records 0..15, with this VLAN id.
std::optional<Found> find_by_vid(const CriticalSection &cs, int vid, int wans) {
  WanTable wan = wan_table(cs);
  for (int w = 0; w < wans; ++w)
    if (same_vid(wan[w].vid, vid)) return found(wan[w]);
  VlanTable vlan = vlan_table(cs);
  int i = find_first(vlan, [vid](const ShmVlanIfRecord &r) { return same_vid(r.vid, vid); });
  if (i >= 0) return found(vlan[i]);
  return std::nullopt;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k)
    if (std::tolower(static_cast<unsigned char>(a[k])) != std::tolower(static_cast<unsigned char>(b[k]))) return false;
  return true;
}

// The search shared by the two user-name lookups. When `wan_named` holds, WAN record 0
// alone decides: index 0, or -1 when it is unused. Otherwise the first used VLAN record
// whose user name `matches` gives index i + the number of WAN records in use.
struct UsrMatch {
  int index = -1;
  uint32_t vid = 0, ip = 0, mask = 0;
};

template <class Matches>
UsrMatch search_usr_name(bool wan_named, Matches matches) {
  CriticalSection cs(kSystem);
  WanTable wan = wan_table(cs);
  if (wan_named) {
    if (wan[0].vid == 0) return {};
    return {0, wan[0].vid, wan[0].ip, wan[0].mask};
  }
  int wans = (wan[0].vid != 0 ? 1 : 0) + (wan[1].vid != 0 ? 1 : 0);
  VlanTable vlan = vlan_table(cs);
  int i = find_first(vlan, [&](const ShmVlanIfRecord &r) { return r.vid != 0 && matches(name_of(r.usr_name)); });
  if (i < 0) return {};
  return {i + wans, vlan[i].vid, vlan[i].ip, vlan[i].mask};
}

int leading_number(const char *text) { return syscommon::device_atoi(text); }

uint32_t wan_word(int w, bool follow_droute, std::size_t field) {
  CriticalSection cs(kSystem);
  if (follow_droute && w == 255) w = static_cast<int>(cs.load<uint32_t>(SYS_OFF(droute_idx)));
  return cs.load<uint32_t>(wan_off(w) + field);
}

}  // namespace

extern "C" {

SYSCOMMON_API int get_shm_interface_name(int idx, char *out) {
  out[0] = '\0';
  if (idx == 0)
    copy_name(out, read_field<ShmWanRecord>(kSystem, wan_off(0)).ifname);
  else if (idx >= 1 && idx <= SHM_VLAN_IF_COUNT)
    copy_name(out, read_field<ShmVlanIfRecord>(kSystem, vlan_off(idx - 1)).ifname);  // "" when unused
  return 0;
}

SYSCOMMON_API int get_shm_vlan_interface_name(int i, char *out) {
  copy_name(out, read_field<ShmVlanIfRecord>(kSystem, vlan_off(i)).ifname);
  return 0;
}

SYSCOMMON_API int get_shm_interface_name_by_vid(int vid, char *out) {
  clear_name(out);
  CriticalSection cs(kSystem);
  if (vid > 7999) {
    // Bridge ids live above the VLAN id range; a zone bridge overrides a bridge.
    auto id_is = [vid](const auto &r) { return same_vid(r.id, vid); };
    BridgeTable bridges = bridge_table(cs);
    if (int b = find_first(bridges, id_is); b >= 0) copy_name(out, bridges[b].ifname);
    ZoneTable zones = zone_table(cs);
    if (int z = find_first(zones, id_is); z >= 0) copy_name(out, zones[z].ifname);
    return 0;
  }
  if (auto f = find_by_vid(cs, vid, 2)) std::memcpy(out, f->ifname.data(), SHM_IFNAME_SIZE);
  return 0;
}

SYSCOMMON_API uint32_t get_shm_interface_ip_by_vid(int vid) {
  CriticalSection cs(kSystem);
  auto f = find_by_vid(cs, vid, 2);
  return f ? f->ip : 0;
}

SYSCOMMON_API int get_shm_ip_mask_by_vid(int vid, uint32_t *ip, uint32_t *mask) {
  *ip = 0;
  *mask = 0;
  CriticalSection cs(kSystem);
  if (auto f = find_by_vid(cs, vid, 1)) {
    *ip = f->ip;
    *mask = f->mask;
  }
  return 0;
}

SYSCOMMON_API int get_shm_interface_link_by_vid(int vid, uint32_t *link) {
  CriticalSection cs(kSystem);
  if (auto f = find_by_vid(cs, vid, 2)) *link = f->link;
  return 0;
}

SYSCOMMON_API int get_shm_usr_interface_name_by_vid(int vid, char *out) {
  clear_name(out);
  CriticalSection cs(kSystem);
  WanTable wan = wan_table(cs);
  for (int w = 0; w < 2; ++w) {
    if (vid != 0 && same_vid(wan[w].vid, vid)) {
      put_wan_lan_name(out, w);
      return 0;
    }
  }
  VlanTable vlan = vlan_table(cs);
  if (int i = find_first(vlan, [vid](const ShmVlanIfRecord &r) { return same_vid(r.vid, vid); }); i >= 0) {
    copy_name(out, vlan[i].usr_name);
    return 0;
  }
  auto id_is = [vid](const auto &r) { return same_vid(r.id, vid); };
  BridgeTable bridges = bridge_table(cs);
  if (int b = find_first(bridges, id_is); b >= 0) copy_name(out, bridges[b].usr_name);
  ZoneTable zones = zone_table(cs);
  if (int z = find_first(zones, id_is); z >= 0) copy_name(out, zones[z].usr_name);
  return 0;
}

SYSCOMMON_API int get_shm_usr_interface_name_by_ip(uint32_t ip, char *out) {
  CriticalSection cs(kSystem);
  WanTable wan = wan_table(cs);
  for (int w = 0; w < 2; ++w) {
    if (wan[w].ip == ip) {
      put_wan_lan_name(out, w);
      return 0;
    }
  }
  VlanTable vlan = vlan_table(cs);
  if (int i = find_first(vlan, [ip](const ShmVlanIfRecord &r) { return r.ip == ip; }); i >= 0)
    copy_name(out, vlan[i].usr_name);
  return 0;
}

SYSCOMMON_API int get_shm_usr_interface_name_by_interface_name(const char *name, char *out) {
  if (const char *dot = std::strchr(name, '.')) return get_shm_usr_interface_name_by_vid(leading_number(dot + 1), out);
  const char *gid = std::strncmp(name, "br", 2) == 0 ? name + 2 : name;
  return get_shm_bridge_UsrName_by_gid(leading_number(gid), out);
}

SYSCOMMON_API int get_shm_usr_interface_name_by_idx_and_type(int idx, int type, char *out) {
  // Each type's index range is checked before the segment is entered.
  switch (type) {
    case 0:
      if (idx != 0 || read_field<ShmWanRecord>(kSystem, wan_off(0)).vid == 0) return 0;
      put_wan_lan_name(out, 0);
      return 1;
    case 1: {
      if (idx < 0 || idx >= SHM_VLAN_IF_COUNT) return 0;
      const auto rec = read_field<ShmVlanIfRecord>(kSystem, vlan_off(idx));
      if (rec.vid == 0) return 0;
      copy_name(out, rec.usr_name);
      return 1;
    }
    case 2: {
      if (idx < 0 || idx >= SHM_BRIDGE_COUNT) return 0;
      const auto rec = read_field<ShmBridgeRecord>(kSystem, bridge_off(idx));
      if (rec.enable != 1) return 0;
      copy_name(out, rec.usr_name);
      return 1;
    }
    case 3:
      if (idx < 0 || idx >= kSwitchPorts || read_field<ShmPortVlanRecord>(kSystem, plan_off(idx)).in_use == 0)
        return 0;
      write_port_name(out, idx);
      return 1;
    default:
      return 0;
  }
}

SYSCOMMON_API int get_shm_vid_by_interface_name(const char *name) {
  std::string_view wanted(name);
  if (wanted.empty()) return -1;
  CriticalSection cs(kSystem);
  auto wan0 = cs.load<ShmWanRecord>(wan_off(0));
  if (name_of(wan0.ifname) == wanted) return static_cast<int>(wan0.vid);
  VlanTable vlan = vlan_table(cs);
  int i = find_first(vlan, [wanted](const ShmVlanIfRecord &r) { return name_of(r.ifname) == wanted; });
  return i < 0 ? -1 : static_cast<int>(vlan[i].vid);
}

SYSCOMMON_API int get_shm_vconfIdx_by_vid(int vid) {
  CriticalSection cs(kSystem);
  return find_first(vlan_table(cs), [vid](const ShmVlanIfRecord &r) { return same_vid(r.vid, vid); });
}

SYSCOMMON_API int get_shm_vlan_vid_by_index(int i) {
  if (i < 0 || i > 15) return -1;
  return read_field<uint16_t>(kSystem, SYS_OFF(vlan_info) + sizeof(ShmVlanInfoRecord) * static_cast<std::size_t>(i));
}

SYSCOMMON_API int get_shm_vlan_info_by_vid(int vid, ShmVlanInfoRecord *out) {
  CriticalSection cs(kSystem);
  auto info = cs.load<VlanInfoTable>(SYS_OFF(vlan_info));
  int j = find_first(info, [vid](const ShmVlanInfoRecord &r) { return same_vid(r.vid, vid); });
  if (j < 0) return 0;
  if (out != nullptr) *out = info[j];
  return 1;
}

SYSCOMMON_API uint32_t get_shm_vconf_link(int i) {
  return read_field<uint32_t>(kSystem, vlan_off(i) + offsetof(ShmVlanIfRecord, link));
}

SYSCOMMON_API int get_shm_wan_interface_vid(void) { return static_cast<int>(read_field<uint32_t>(kSystem, SYS_OFF(ifs.wan[0].vid))); }

SYSCOMMON_API uint32_t shm_link_state(int idx) {
  std::size_t off = idx < 1 ? wan_off(idx) + offsetof(ShmWanRecord, link)
                            : vlan_off(idx - 1) + offsetof(ShmVlanIfRecord, link);
  return read_field<uint32_t>(kSystem, off);
}

SYSCOMMON_API uint32_t shm_wan_gw(int w) { return wan_word(w, true, offsetof(ShmWanRecord, gateway)); }
SYSCOMMON_API uint32_t shm_ifs_ip(int w) { return wan_word(w, true, offsetof(ShmWanRecord, ip)); }
SYSCOMMON_API uint32_t shm_get_wan_ConnType(int w) { return wan_word(w, false, offsetof(ShmWanRecord, conn_type)); }

SYSCOMMON_API int shm_wan_ip(int w, uint32_t *ip, uint32_t *mask) {
  CriticalSection cs(kSystem);
  if (w == 255) w = static_cast<int>(cs.load<uint32_t>(SYS_OFF(droute_idx)));
  auto rec = cs.load<ShmWanRecord>(wan_off(w));
  *ip = rec.ip;
  *mask = rec.mask;
  return 0;
}

SYSCOMMON_API int shm_lan_ip(uint32_t *ip, uint32_t *mask) {
  auto rec = read_field<ShmVlanIfRecord>(kSystem, vlan_off(0));
  *ip = rec.ip;
  *mask = rec.mask;
  return 0;
}

SYSCOMMON_API int shm_getVidByUsrIfaceName(const char *name, int *vid) {
  std::string_view wanted(name);
  UsrMatch m = search_usr_name(equal_ignoring_case(wanted, kWanName),
                               [wanted](std::string_view stored) { return equal_ignoring_case(stored, wanted); });
  if (m.index >= 0) *vid = static_cast<int>(m.vid);
  return m.index;
}

SYSCOMMON_API int shm_getIpMaskByUsrIfaceName(const char *name, char *ifname, uint32_t *ip, uint32_t *mask) {
  // Case-sensitive and on the first strlen(name) characters only: `name` may be a
  // prefix of the stored name (and any prefix of "WAN" selects the WAN record).
  std::string_view wanted(name);
  *ip = 0;
  *mask = 0;
  UsrMatch m = search_usr_name(std::string_view(kWanName).starts_with(wanted),
                               [wanted](std::string_view stored) { return stored.starts_with(wanted); });
  if (m.index < 0) return -1;
  *ip = m.ip;
  *mask = m.mask;
  write_vlan_device(ifname, static_cast<int>(m.vid));
  return m.index;
}

}  // extern "C"
