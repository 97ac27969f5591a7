// The port VLAN plan (14 records: ports 0..9, then the trunk ports): port VLAN ids, the
// user-facing port names found by VLAN id, and the port type.
#include "shm/ifs_tables.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

// "1/%d" of the first port with this port VLAN id; port 1/1 when none has it.
int port_name_by_vid(int vid, char *out) {
  CriticalSection cs(kSystem);
  int p = find_first(port_plan(cs), [vid](const ShmPortVlanRecord &r) { return same_vid(r.pvid, vid); });
  write_port_name(out, p < 0 ? 0 : p);
  return 0;
}

}  // namespace

extern "C" {

SYSCOMMON_API int set_shm_port_vlan_id(int p, int vid) {
  if (p < 0 || p > kPlanRecords - 1) return p;
  write_field(kSystem, plan_off(p) + offsetof(ShmPortVlanRecord, pvid), static_cast<uint16_t>(vid));
  return 0;
}

SYSCOMMON_API int get_shm_port_vlan_id(int p) {
  if (p < 0 || p > kSwitchPorts - 1) return 0;
  return read_field<uint16_t>(kSystem, plan_off(p) + offsetof(ShmPortVlanRecord, pvid));
}

SYSCOMMON_API int get_shm_usr_port_name_by_vid(int vid, char *out) { return port_name_by_vid(vid, out); }
SYSCOMMON_API int get_shm_port_number_by_vid(int vid, char *out) { return port_name_by_vid(vid, out); }

SYSCOMMON_API uint8_t shm_check_port_type(int port) {
  CriticalSection cs(kSystem);
  auto rec = cs.load<ShmPortVlanRecord>(plan_off(port - 1));
  if (rec.in_use != 0) return 2;
  for (const ShmZoneBridgeRecord &zone : zone_table(cs)) {
    if (zone.enable == 0) continue;
    for (int32_t member : zone.member_vid)
      if (member == rec.pvid) return 2;
  }
  return same_vid(cs.load<uint32_t>(SYS_OFF(ifs.wan[0].vid)), rec.pvid) ? 0 : 1;
}

}  // extern "C"
