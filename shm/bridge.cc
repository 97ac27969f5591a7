// Bridge and zone-bridge tables: the bulk setters, the bridge mode, and the lookups of a
// bridge's address, names and members. Tests over whole tables copy them under the lock
// and decide after leaving it.
#include <cstdio>

#include "shm/ifs_tables.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

// The name every bridge interface is shown by.
constexpr char kBridgeUsrName[] = "BRG";

// Kernel name, user name, id, address, mask and enable byte of a bridge or zone-bridge
// record from the caller's record; link state and reserved bytes stay.
template <class Record, class Config>
void fill_bridge_head(Record &rec, const char *prefix, const Config &cfg) {
  std::snprintf(rec.ifname, sizeof rec.ifname, "%s%d", prefix, static_cast<int>(cfg.id));
  copy_name(rec.usr_name, cfg.usr_name);
  rec.id = cfg.id;
  rec.ip = cfg.ip;
  rec.mask = cfg.mask;
  rec.enable = cfg.enable;
}

// Bridges and zone bridges share the numbers 17..20 of the ifsInfo entry.
void publish_bridge(int index, const char (&ifname)[SHM_IFNAME_SIZE], uint32_t id) {
  publish_ifs_info(index + 17, name_of(ifname), kBridgeUsrName, static_cast<int>(id));
}

bool has_member(const ShmZoneBridgeRecord &zone, int vid) {
  for (int32_t member : zone.member_vid)
    if (member == vid) return true;
  return false;
}

ZoneTable zone_copy() {
  CriticalSection cs(kSystem);
  return zone_table(cs);
}

struct BridgeTables {
  BridgeTable bridges;
  ZoneTable zones;
};

BridgeTables bridge_and_zone_copy() {
  CriticalSection cs(kSystem);
  return {bridge_table(cs), zone_table(cs)};
}

// "BRG" when record 0 of a table has this id (only record 0 is compared).
int bridge_name_if_first(std::size_t first_record_id_off, int vid, char *out) {
  clear_name(out);
  if (!same_vid(read_field<uint32_t>(kSystem, first_record_id_off), vid)) return 0;
  std::memcpy(out, kBridgeUsrName, sizeof kBridgeUsrName);
  return 1;
}

}  // namespace

extern "C" {

SYSCOMMON_API int set_shm_brg_info_all(const char *prefix, const ShmBridgeConfig *recs) {
  CriticalSection cs(kSystem);
  for (int b = 0; b < SHM_BRIDGE_COUNT; ++b) {
    auto rec = cs.load<ShmBridgeRecord>(bridge_off(b));
    fill_bridge_head(rec, prefix, recs[b]);
    cs.store(bridge_off(b), rec);
    publish_bridge(b, rec.ifname, rec.id);
  }
  return 0;
}

SYSCOMMON_API int set_shm_zone_brg_info_all(const char *prefix, const ShmZoneBridgeConfig *recs) {
  CriticalSection cs(kSystem);
  for (int z = 0; z < SHM_ZONE_BRIDGE_COUNT; ++z) {
    auto rec = cs.load<ShmZoneBridgeRecord>(zone_off(z));
    fill_bridge_head(rec, prefix, recs[z]);
    std::memcpy(rec.member_vid, recs[z].member_vid, sizeof rec.member_vid);
    std::memcpy(rec.member_name, recs[z].member_name, sizeof rec.member_name);
    cs.store(zone_off(z), rec);
    publish_bridge(z, rec.ifname, rec.id);
  }
  return 0;
}

SYSCOMMON_API int get_shm_brg_interface_name(int b, char *out) {
  copy_name(out, read_field<ShmBridgeRecord>(kSystem, bridge_off(b)).ifname);
  return 0;
}

SYSCOMMON_API uint32_t get_shm_brg_IP_by_index(int b) {
  return read_field<uint32_t>(kSystem, bridge_off(b) + offsetof(ShmBridgeRecord, ip));
}
SYSCOMMON_API int get_shm_brg_enable_status(int b) {
  return read_field<uint8_t>(kSystem, bridge_off(b) + offsetof(ShmBridgeRecord, enable));
}
SYSCOMMON_API int get_shm_zone_brg_enable_status(int z) {
  return read_field<uint8_t>(kSystem, zone_off(z) + offsetof(ShmZoneBridgeRecord, enable));
}
SYSCOMMON_API uint32_t shm_brg_link_state(int b) {
  return read_field<uint32_t>(kSystem, bridge_off(b) + offsetof(ShmBridgeRecord, link));
}

SYSCOMMON_API uint32_t get_shm_brg_IP_by_gid(int id) {
  auto [bridges, zones] = bridge_and_zone_copy();
  auto enabled_with_id = [id](const auto &r) { return r.enable != 0 && same_vid(r.id, id); };
  if (int b = find_first(bridges, enabled_with_id); b >= 0) return bridges[b].ip;
  if (int z = find_first(zones, enabled_with_id); z >= 0) return zones[z].ip;
  return 0;
}

SYSCOMMON_API int get_shm_bridge_UsrName_by_gid(int id, char *out) {
  clear_name(out);
  CriticalSection cs(kSystem);
  for (const ShmBridgeRecord &rec : bridge_table(cs))
    if (same_vid(rec.id, id)) copy_name(out, rec.usr_name);  // the last match wins
  return 0;
}

SYSCOMMON_API int get_shm_brg_interface_name_by_vid(int vid, char *out) {
  return bridge_name_if_first(bridge_off(0) + offsetof(ShmBridgeRecord, id), vid, out);
}

SYSCOMMON_API int get_shm_zone_brg_interface_name_by_vid(int vid, char *out) {
  return bridge_name_if_first(zone_off(0) + offsetof(ShmZoneBridgeRecord, id), vid, out);
}

SYSCOMMON_API int shm_getVidByBridgeIfName(const char *name, int *vid) {
  if (std::string_view(name) != kBridgeUsrName) return 0;
  *vid = static_cast<int>(read_field<uint32_t>(kSystem, bridge_off(0) + offsetof(ShmBridgeRecord, id)));
  return 1;
}

SYSCOMMON_API int get_shm_zoneBrg_zone_Name_by_vid(int vid, char *out) {
  clear_name(out);
  for (const ShmZoneBridgeRecord &zone : zone_copy()) {
    for (int j = 0; j < SHM_ZONE_MEMBER_COUNT; ++j) {
      if (zone.member_vid[j] != vid) continue;
      copy_name(out, zone.member_name[j]);  // a later zone overwrites
      break;
    }
  }
  return 0;
}

SYSCOMMON_API int is_zoneBasebrg_member(int vid) {
  for (const ShmZoneBridgeRecord &zone : zone_copy())
    if (has_member(zone, vid)) return 1;
  return 0;
}

SYSCOMMON_API int shm_check_vid_in_zone_brg(int vid) {
  for (const ShmZoneBridgeRecord &zone : zone_copy())
    if (zone.enable != 0 && has_member(zone, vid)) return 1;
  return 0;
}

SYSCOMMON_API int shm_get_brg_mode(void) {
  auto [bridges, zones] = bridge_and_zone_copy();
  auto enabled = [](const auto &r) { return r.enable == 1; };
  if (find_first(zones, enabled) >= 0) return 2;
  if (find_first(bridges, enabled) >= 0) return 1;
  return 0;
}

SYSCOMMON_API int get_slave_interface_in_bridge(int vid, char *out) {
  CriticalSection cs(kSystem);
  WanTable wan = wan_table(cs);
  if (same_vid(wan[0].vid, vid) || same_vid(wan[1].vid, vid)) return 0;
  if (vid >= 4096) return 0;
  PortPlan plan = port_plan(cs);
  for (int p = 0; p < kSwitchPorts; ++p) {
    if (same_vid(plan[p].pvid, vid) && plan[p].in_use != 0) {
      write_vlan_device(out, vid);
      return 1;
    }
  }
  return 0;
}

SYSCOMMON_API uint8_t check_all_ports_are_bridge_port(void) {
  CriticalSection cs(kSystem);
  uint32_t wan_vid = cs.load<uint32_t>(SYS_OFF(ifs.wan[0].vid));
  PortPlan plan = port_plan(cs);
  for (int p = 0; p < kSwitchPorts; ++p)
    if (plan[p].in_use == 0 && plan[p].pvid != wan_vid) return 0;
  return 1;
}

SYSCOMMON_API int is_all_ports_are_zone_bridge(void) {
  PortPlan plan;
  ZoneTable zones;
  {
    CriticalSection cs(kSystem);
    plan = port_plan(cs);
    zones = zone_table(cs);
  }
  for (int p = 0; p < kSwitchPorts; ++p) {
    int pvid = plan[p].pvid;
    if (pvid == 0) continue;
    bool found = false;
    for (const ShmZoneBridgeRecord &zone : zones)
      if (zone.enable != 0 && has_member(zone, pvid)) found = true;  // pvid > 0: empty slots never match
    if (!found) return 0;
  }
  return 1;
}

}  // extern "C"
