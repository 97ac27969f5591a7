// LLDP neighbours from the LLDP daemon's neighbour file.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

#include "netstat/internal.h"
#include "platform/number.h"
#include "syscommon/netstat.h"
#include "syscommon/util.h"

namespace syscommon::netstat {

int read_lldp(std::FILE *file, LldpNeighbor neighbors[LLDP_MAX_NEIGHBORS]) {
  // Keys in the order they are looked for; the first found anywhere in a line is taken.
  static constexpr const char *kKeys[] = {"port:",    "NID:",     "NPort:", "NPORTDESC:",
                                          "NSYSTEM:", "NSYSDESC:", "TIME:", "TTL:"};
  int index = -1;
  char line[512];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (std::strncmp(line, " ----------", 11) == 0) {
      if (++index >= LLDP_MAX_NEIGHBORS) break;  // a 65th separator ends the reading
      continue;
    }
    if (index < 0) continue;  // before the first separator there is no record to fill
    LldpNeighbor &n = neighbors[index];
    std::span<char> texts[] = {n.nid, n.nport, n.nportdesc, n.nsystem, n.nsysdesc, n.time, n.ttl};
    for (std::size_t k = 0; k < std::size(kKeys); ++k) {
      char *at = std::strstr(line, kKeys[k]);
      if (at == nullptr) continue;
      char *value = at + std::strlen(kKeys[k]);
      Ssys_stripCR(value);
      Ssys_stripspace(value);
      if (k == 0)
        n.port = syscommon::device_atoi(value);
      else
        copy_text(texts[k - 1], value);
      break;
    }
  }
  return index + 1;
}

}  // namespace syscommon::netstat

int Get_lldpinfo(LldpNeighbor neighbors[LLDP_MAX_NEIGHBORS]) {
  using namespace syscommon;
  File f = open_file(rooted("/mnt/ramdisk/lldpinfo2"), "r");
  if (!f) {
    std::printf("%s, lldp fopen error\n", __func__);
    return 0;
  }
  return netstat::read_lldp(f.get(), neighbors);
}
