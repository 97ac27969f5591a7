// The interface tables of the system segment as whole arrays, and the small name and
// search helpers shared by the interface, VLAN, bridge and trunk accessors.
#ifndef SYSCOMMON_SHM_IFS_TABLES_H
#define SYSCOMMON_SHM_IFS_TABLES_H

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/segment.h"
#include "shm/layout.h"

namespace syscommon::shm {

inline constexpr int kSwitchPorts = 10;  // ports 0..9 of the switch
inline constexpr int kPlanRecords = 14;  // port VLAN plan records (ports and trunks)

using WanTable = std::array<ShmWanRecord, 2>;
using VlanTable = std::array<ShmVlanIfRecord, SHM_VLAN_IF_COUNT>;
using BridgeTable = std::array<ShmBridgeRecord, SHM_BRIDGE_COUNT>;
using ZoneTable = std::array<ShmZoneBridgeRecord, SHM_ZONE_BRIDGE_COUNT>;
using VlanInfoTable = std::array<ShmVlanInfoRecord, 16>;
using PortPlan = std::array<ShmPortVlanRecord, kPlanRecords>;

static_assert(sizeof(VlanTable) == SHM_VLAN_CONF_SIZE && sizeof(PortPlan) == SHM_VPLAN_CONF_SIZE);
static_assert(sizeof(BridgeTable) == SHM_BRG_CONF_SIZE && sizeof(ZoneTable) == SHM_ZONE_BRG_CONF_SIZE);
static_assert(sizeof(ShmIfsConf) == SHM_IFS_CONF_SIZE);

// Copies of the tables, taken inside an open section of the system segment.
inline WanTable wan_table(const CriticalSection &cs) { return cs.load<WanTable>(SYS_OFF(ifs.wan)); }
inline VlanTable vlan_table(const CriticalSection &cs) { return cs.load<VlanTable>(SYS_OFF(vlan_if)); }
inline BridgeTable bridge_table(const CriticalSection &cs) { return cs.load<BridgeTable>(SYS_OFF(bridge)); }
inline ZoneTable zone_table(const CriticalSection &cs) { return cs.load<ZoneTable>(SYS_OFF(zone)); }
inline PortPlan port_plan(const CriticalSection &cs) { return cs.load<PortPlan>(SYS_OFF(port_vlan)); }

// Offsets of one record of a table (the index is not checked).
inline std::size_t vlan_off(int i) { return SYS_OFF(vlan_if) + sizeof(ShmVlanIfRecord) * static_cast<std::size_t>(i); }
inline std::size_t wan_off(int w) { return SYS_OFF(ifs.wan) + sizeof(ShmWanRecord) * static_cast<std::size_t>(w); }
inline std::size_t bridge_off(int b) { return SYS_OFF(bridge) + sizeof(ShmBridgeRecord) * static_cast<std::size_t>(b); }
inline std::size_t zone_off(int z) {
  return SYS_OFF(zone) + sizeof(ShmZoneBridgeRecord) * static_cast<std::size_t>(z);
}
inline std::size_t plan_off(int p) { return SYS_OFF(port_vlan) + sizeof(ShmPortVlanRecord) * static_cast<std::size_t>(p); }

// A VLAN id given as int, compared as the stored u32.
inline bool same_vid(uint32_t stored, int vid) { return stored == static_cast<uint32_t>(vid); }

// Index of the first element that satisfies `pred`, or -1.
template <class Table, class Pred>
int find_first(const Table &table, Pred pred) {
  for (std::size_t i = 0; i < table.size(); ++i)
    if (pred(table[i])) return static_cast<int>(i);
  return -1;
}

// A stored 32-byte name, up to its NUL or all 32 bytes.
inline std::string_view name_of(const char (&name)[SHM_IFNAME_SIZE]) {
  return {name, strnlen(name, SHM_IFNAME_SIZE)};
}

// Copies a 32-byte name field into a 32-byte buffer as strncpy does: up to the NUL, the
// rest padded with NULs, unterminated when the name fills all 32 bytes.
inline void copy_name(char *out, const char (&name)[SHM_IFNAME_SIZE]) {
  std::size_t n = strnlen(name, SHM_IFNAME_SIZE);
  std::memcpy(out, name, n);
  std::memset(out + n, 0, SHM_IFNAME_SIZE - n);
}

inline void clear_name(char *out) { std::memset(out, 0, SHM_IFNAME_SIZE); }

// User-facing port name "1/%d" of port index p (counted from 0), and the VLAN device
// name "eth0.%d", written into a caller's 32-byte buffer.
void write_port_name(char *out, int p);
void write_vlan_device(char *out, int vid);

// The kernel side learns of each interface through the ifsInfo entry:
// echo "N-KERNELNAME-USERNAME-ID" > /proc/tarn/ifsInfo. Returns system()'s result.
int publish_ifs_info(int number, std::string_view ifname, std::string_view usr_name, int id);

}  // namespace syscommon::shm

#endif
