// Record layouts of the simulated PIM-SM and DVMRP daemons (sizes as the library expects;
// the fields are this simulator's own choice, the real daemons define theirs). Shared by
// the daemon stand-in, which builds them, and the `syscommon pim`/`dvmrp` views.
#ifndef SYSCOMMON_TOOLS_SIM_MCAST_RECORDS_H
#define SYSCOMMON_TOOLS_SIM_MCAST_RECORDS_H

#include <cstdint>

namespace syscommon::sim {

struct PimBsr {  // code 1
  uint32_t address;
  uint32_t priority;
};
struct PimRp {  // code 2
  uint32_t group, mask, rp, priority, holdtime;
};
struct PimNeighbor {  // code 3
  uint32_t address;
  char ifname[32];
  uint32_t uptime, expires, dr_priority;
};
struct PimRoute {  // code 4, after a 128-byte header whose first word is an address
  uint32_t source, group, rp, upstream, iif, oif_mask, flags;
};
struct DvmrpRoute {  // code 100
  uint32_t origin, mask, gateway, metric, uptime, vif;
};
struct DvmrpVif {  // code 101
  uint32_t local, remote, metric, flags;
};

static_assert(sizeof(PimBsr) == 8 && sizeof(PimRp) == 20 && sizeof(PimNeighbor) == 48);
static_assert(sizeof(PimRoute) == 28 && sizeof(DvmrpRoute) == 24 && sizeof(DvmrpVif) == 16);

}  // namespace syscommon::sim

#endif
