// Port link state, port and trunk counters, and the VLAN list of a port.
#include <array>
#include <cstdio>
#include <cstring>

#include "syscommon/netstat.h"
#include "syscommon/platform.h"
#include "syscommon/shm.h"

uint32_t Link_state(void) { return Ssc_getPortLinkState(); }

int CheckPortLink(int port) {
  if (port >= 0 && port <= 9) return static_cast<int>((Link_state() >> port) & 1u);
  if (port < 10 || port > 9 + SHM_TRUNK_GROUP_COUNT) return 0;
  uint32_t members = 0;
  get_shm_trk_mem(port - 9, &members);  // read under the system segment's lock
  return (members & Link_state()) != 0 ? 1 : 0;
}

int Get_Port_Stats(uint32_t stats[PORT_STATS_BLOCKS][PORT_STATS_COUNTERS]) {
  std::array<std::array<int, 10>, SHM_TRUNK_GROUP_COUNT> members{};
  std::array<int, SHM_TRUNK_GROUP_COUNT> count{};
  for (int p = 0; p < 10; ++p) {
    Ssc_getPortStatsCounter(p, stats[p]);
    const int g = get_shm_port_to_trk_grp(p);
    if (g >= 1 && g <= SHM_TRUNK_GROUP_COUNT) members[g - 1][count[g - 1]++] = p;
  }
  for (int g = 0; g < SHM_TRUNK_GROUP_COUNT; ++g)
    for (int m = 0; m < count[g]; ++m)
      for (int k = 0; k < PORT_STATS_SUMMED; ++k) stats[10 + g][k] += stats[members[g][m]][k];
  return 0;
}

int vlan_get_vlan(int port, char *out, const ShmVlanInfoRecord *table, int value) {
  constexpr int kEntries = 16;
  std::array<int, kEntries> ids{};
  int n = 0;
  for (int j = 0; j < kEntries && port >= 0 && port < kEntries && table[j].vid != 0; ++j)
    if (table[j].vid <= 4094 && table[j].data[port] == value) ids[n++] = table[j].vid;
  // Each id goes to the place given by how many collected ids are smaller.
  std::array<int, kEntries> placed{};
  for (int i = 0; i < n; ++i) {
    int rank = 0;
    for (int k = 0; k < n; ++k) rank += ids[k] < ids[i] ? 1 : 0;
    placed[rank] = ids[i];
  }
  std::size_t len = std::strlen(out);
  for (int i = 0; i < n; ++i)
    if (placed[i] != 0) len += static_cast<std::size_t>(std::sprintf(out + len, "%d,", placed[i]));
  return static_cast<int>(len);
}
