// syscommon lldp: the LLDP daemon's neighbours as the library reads them.
#include <cstdio>
#include <vector>

#include "syscommon/netstat.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

int cmd_show(const Args &args) {
  expect_args(args, 0, 0);
  std::vector<LldpNeighbor> n(LLDP_MAX_NEIGHBORS);
  const int count = Get_lldpinfo(n.data());
  // A trailing separator counts an empty record and a 65th stops the reading at 64.
  const int shown = count > LLDP_MAX_NEIGHBORS ? LLDP_MAX_NEIGHBORS : count;
  std::printf("%d neighbour record(s)\n", count);
  for (int i = 0; i < shown; ++i) {
    const LldpNeighbor &r = n[static_cast<std::size_t>(i)];
    std::printf("local port 1/%d: %s port %s (%s)\n  system %s: %s\n  seen %s, ttl %s\n", r.port, r.nid, r.nport,
                r.nportdesc, r.nsystem, r.nsysdesc, r.time, r.ttl);
  }
  return 0;
}

const Registration reg{{"lldp",
                        "LLDP neighbours from the LLDP daemon's neighbour file.",
                        {
                            {"show", "", "every neighbour: local port, id, port, system, time and time to live",
                             cmd_show},
                        }}};

}  // namespace
}  // namespace syscommon::tool
