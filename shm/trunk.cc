// Trunk tables (port-to-group words and the four member masks) and the mapping of a
// (virtual trunk) port to the trunk's leading port.
#include "shm/ifs_tables.h"
#include "syscommon/platform.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

using PortGroups = std::array<uint32_t, kSwitchPorts>;
using MemberMasks = std::array<uint32_t, SHM_TRUNK_GROUP_COUNT>;
static_assert(SYS_OFF(trk_mem) == SYS_OFF(port_trk_grp) + sizeof(PortGroups));

bool valid_port(int p) { return p >= 0 && p < kSwitchPorts; }
bool valid_group(int g) { return g >= 1 && g <= SHM_TRUNK_GROUP_COUNT; }

std::size_t member_off(int g) { return SYS_OFF(trk_mem) + 4 * static_cast<std::size_t>(g - 1); }

}  // namespace

extern "C" {

SYSCOMMON_API int set_shm_trk_mem(const uint32_t *arr) {
  PortGroups groups;
  std::memcpy(groups.data(), arr, sizeof groups);
  MemberMasks masks{};
  for (int p = 0; p < kSwitchPorts; ++p) {
    int g = static_cast<int>(groups[p]);
    if (valid_group(g)) masks[g - 1] |= 1u << p;
  }
  CriticalSection cs(kSystem);
  cs.store(SYS_OFF(port_trk_grp), groups);
  cs.store(SYS_OFF(trk_mem), masks);
  return 0;
}

SYSCOMMON_API int get_shm_port_to_trk_grp(int p) {
  if (!valid_port(p)) return 0;
  return static_cast<int>(read_field<uint32_t>(kSystem, SYS_OFF(port_trk_grp) + 4 * static_cast<std::size_t>(p)));
}

SYSCOMMON_API int get_shm_port_to_trk_id(int p) {
  if (!valid_port(p)) return 0;
  int g = get_shm_port_to_trk_grp(p);
  return g != 0 ? 9 + g : p;
}

SYSCOMMON_API int get_shm_trk_mem(int g, uint32_t *out) {
  *out = 0;
  if (valid_group(g)) *out = read_field<uint32_t>(kSystem, member_off(g));
  return 0;
}

SYSCOMMON_API int Ssc_getLeadingPortOfTrunkGroupByGroup(int g) {
  if (!valid_group(g)) return -1;
  uint32_t members = read_field<uint32_t>(kSystem, member_off(g));
  // The link state comes from the switch library, asked after the lock is released.
  uint32_t up = members & Ssc_getPortLinkState();
  for (int p = 0; p < kSwitchPorts; ++p)
    if ((up >> p & 1u) != 0) return p;
  return -1;
}

SYSCOMMON_API int Ssc_virtualTrunkPort2Port(int p) {
  int g = p >= 10 && p <= 13 ? p - 9 : get_shm_port_to_trk_grp(p);
  if (g == 0) return p;
  return Ssc_getLeadingPortOfTrunkGroupByGroup(g);
}

}  // extern "C"
