// syscommon ports: port counters and their trunk-group sums, with link state.
#include <cstdio>
#include <cstring>
#include <string>

#include "syscommon/netstat.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

int cmd_stats(const Args &args) {
  expect_args(args, 0, 0);
  static uint32_t stats[PORT_STATS_BLOCKS][PORT_STATS_COUNTERS];
  std::memset(stats, 0, sizeof stats);
  Get_Port_Stats(stats);
  std::printf("%-6s %-4s counters 0..%d (trunks: sums of 0..%d over their member ports)\n", "port", "link",
              PORT_STATS_COUNTERS - 1, PORT_STATS_SUMMED - 1);
  for (int b = 0; b < PORT_STATS_BLOCKS; ++b) {
    const std::string name = b < 10 ? "1/" + std::to_string(b + 1) : "Trk" + std::to_string(b - 9);
    const int counters = b < 10 ? PORT_STATS_COUNTERS : PORT_STATS_SUMMED;
    std::printf("%-6s %-4s", name.c_str(), CheckPortLink(b) == 1 ? "up" : "down");
    for (int k = 0; k < counters; ++k) std::printf("%s%u", k % 8 == 0 && k > 0 ? "\n            " : " ", stats[b][k]);
    std::printf("\n");
  }
  return 0;
}

const Registration reg{{"ports",
                        "Port and trunk counters from the switch.",
                        {
                            {"stats", "", "counters of ports 1/1..1/10 and the sums of trunk groups Trk1..Trk4",
                             cmd_stats},
                        }}};

}  // namespace
}  // namespace syscommon::tool
