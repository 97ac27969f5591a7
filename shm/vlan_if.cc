// Writers of the VLAN interface table, whole-table copies of the interface tables, and
// the VLAN CPU-port segment (7898).
#include <cstdio>
#include <string>

#include "shm/access.h"
#include "shm/ifs_tables.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

// Fills the caller-supplied fields of a VLAN interface record; member mask and link
// state stay as the VLAN daemon left them.
void fill_vlan_record(ShmVlanIfRecord &rec, const char *prefix, const ShmVlanIfConfig &cfg) {
  std::snprintf(rec.ifname, sizeof rec.ifname, "%s.%d", prefix, static_cast<int>(cfg.vid));
  copy_name(rec.usr_name, cfg.usr_name);
  rec.vid = cfg.vid;
  rec.ip = cfg.ip;
  rec.mask = cfg.mask;
  rec.routing = cfg.routing;
  rec.attribute = cfg.attribute;
}

ShmVlanIfRecord write_vlan_record(CriticalSection &cs, int i, const char *prefix, const ShmVlanIfConfig &cfg) {
  auto rec = cs.load<ShmVlanIfRecord>(vlan_off(i));
  fill_vlan_record(rec, prefix, cfg);
  cs.store(vlan_off(i), rec);
  return rec;
}

// Moves one u32 field of VLAN record i out (get != 0) or in.
void move_vlan_field(CriticalSection &cs, int get, int i, std::size_t field, uint32_t *value) {
  std::size_t off = vlan_off(i) + field;
  if (get != 0)
    *value = cs.load<uint32_t>(off);
  else
    cs.store(off, *value);
}

using CpuPortTable = std::array<ShmVlanCpuPortRecord, 16>;
static_assert(sizeof(CpuPortTable) == static_cast<std::size_t>(kVlanCpu.size));

std::size_t cpu_off(int k) { return sizeof(ShmVlanCpuPortRecord) * static_cast<std::size_t>(k); }

int find_cpu_record(const CpuPortTable &table, int vid) {
  return find_first(table, [vid](const ShmVlanCpuPortRecord &r) { return same_vid(r.vid, vid); });
}

}  // namespace

extern "C" {

SYSCOMMON_API int set_shm_vconf_info_all(const char *prefix, const ShmVlanIfConfig *recs) {
  CriticalSection cs(kSystem);
  for (int i = 0; i < SHM_VLAN_IF_COUNT; ++i) {
    ShmVlanIfRecord rec = write_vlan_record(cs, i, prefix, recs[i]);
    publish_ifs_info(i + 1, name_of(rec.ifname), name_of(rec.usr_name), static_cast<int>(rec.vid));
  }
  return 0;
}

SYSCOMMON_API int set_shm_vconf_info(int i, const char *prefix, const ShmVlanIfConfig *rec) {
  std::string ifname, usr_name;
  int vid = 0;
  {
    CriticalSection cs(kSystem);
    if (rec == nullptr) {
      cs.fill(vlan_off(i), 0, sizeof(ShmVlanIfRecord));
    } else {
      ShmVlanIfRecord stored = write_vlan_record(cs, i, prefix, *rec);
      ifname = name_of(stored.ifname);
      usr_name = name_of(stored.usr_name);
      vid = static_cast<int>(stored.vid);
    }
  }
  return publish_ifs_info(i + 1, ifname, usr_name, vid);
}

SYSCOMMON_API int shm_vconf_info_routing(int get, int i, uint32_t *flag) {
  CriticalSection cs(kSystem);
  move_vlan_field(cs, get, i, offsetof(ShmVlanIfRecord, routing), flag);
  return 0;
}

SYSCOMMON_API int shm_vconf_info_ip_mask(int get, int i, uint32_t *ip, uint32_t *mask) {
  // Both outputs are cleared first, in both directions: a write stores address 0 and
  // mask 0, which is how the callers clear an interface's address.
  *ip = 0;
  *mask = 0;
  CriticalSection cs(kSystem);
  move_vlan_field(cs, get, i, offsetof(ShmVlanIfRecord, ip), ip);
  move_vlan_field(cs, get, i, offsetof(ShmVlanIfRecord, mask), mask);
  return 0;
}

SYSCOMMON_API int shm_vconf_member_update(const ShmVlanIfConfig *recs, const ShmVlanInfoRecord *vinfo) {
  for (int i = 0; i < SHM_VLAN_IF_COUNT && recs[i].vid != 0; ++i) {
    for (int j = 0; j < 16 && vinfo[j].vid != 0; ++j) {
      if (vinfo[j].vid != recs[i].vid) continue;
      CriticalSection cs(kSystem);
      auto member = cs.load<uint32_t>(SYS_OFF(port_member) + 4 * static_cast<std::size_t>(j));
      cs.store(vlan_off(i) + offsetof(ShmVlanIfRecord, member), member);
    }
  }
  return 0;
}

SYSCOMMON_API int get_shm_ifs_conf(void *buf) { return copy_out(kSystem, SYS_OFF(ifs), buf, SHM_IFS_CONF_SIZE); }
SYSCOMMON_API int get_shm_vlan_conf(void *buf) { return copy_out(kSystem, SYS_OFF(vlan_if), buf, SHM_VLAN_CONF_SIZE); }
SYSCOMMON_API int get_shm_vplan_conf(void *buf) {
  return copy_out(kSystem, SYS_OFF(port_vlan), buf, SHM_VPLAN_CONF_SIZE);
}
SYSCOMMON_API int get_shm_brg_conf(void *buf) { return copy_out(kSystem, SYS_OFF(bridge), buf, SHM_BRG_CONF_SIZE); }
SYSCOMMON_API int get_shm_zone_brg_conf(void *buf) {
  return copy_out(kSystem, SYS_OFF(zone), buf, SHM_ZONE_BRG_CONF_SIZE);
}

// ---- VLAN CPU ports (7898)

SYSCOMMON_API int shm_vlanEnableCpuPort(int vid, uint32_t mask) {
  CriticalSection cs(kVlanCpu);
  auto table = cs.load<CpuPortTable>(0);
  int k = find_cpu_record(table, vid);
  if (k < 0) {
    k = find_first(table, [](const ShmVlanCpuPortRecord &r) { return r.vid == 0; });
    if (k < 0) return 0;
    table[k].vid = static_cast<uint32_t>(vid);
  }
  table[k].mask |= mask;
  cs.store(cpu_off(k), table[k]);
  return 0;
}

SYSCOMMON_API int shm_vlanDisableCpuPort(int vid, uint32_t mask) {
  CriticalSection cs(kVlanCpu);
  auto table = cs.load<CpuPortTable>(0);
  int k = find_cpu_record(table, vid);
  if (k < 0) return 0;
  ShmVlanCpuPortRecord rec = table[k];
  rec.mask &= ~mask;
  if (rec.mask != 0) {
    cs.store(cpu_off(k), rec);
    return 0;
  }
  cs.fill(cpu_off(k), 0, sizeof rec);
  return 1;
}

SYSCOMMON_API int shm_vlanGetCpuPortInfo(int vid, ShmVlanCpuPortRecord *out) {
  CriticalSection cs(kVlanCpu);
  auto table = cs.load<CpuPortTable>(0);
  int k = find_cpu_record(table, vid);
  if (k < 0) return 0;
  *out = table[k];
  return 1;
}

}  // extern "C"
