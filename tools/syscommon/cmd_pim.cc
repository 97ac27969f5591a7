// syscommon pim: PIM-SM status asked of the multicast routing daemon. Records are shown in
// the layouts of the simulated daemon (tools/sim/mcast_records.h).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "syscommon/netstat.h"
#include "tools/sim/mcast_records.h"
#include "tools/syscommon/addr_text.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

using namespace syscommon::sim;

int no_answer() {
  std::fprintf(stderr, "syscommon pim: no answer from the PIM-SM daemon\n");
  return 1;
}

// Runs a counted request and prints each record with `print`; -1 count = no answer.
template <class Record, class Request, class Print>
int counted(Request request, const char *heading, Print print) {
  void *array = nullptr;
  int count = -1;
  request(&array, &count);
  if (count < 0) return no_answer();
  std::puts(heading);
  for (int i = 0; i < count; ++i) {
    Record r;
    std::memcpy(&r, static_cast<const char *>(array) + static_cast<std::size_t>(i) * sizeof r, sizeof r);
    print(r);
  }
  std::free(array);
  return 0;
}

int cmd_bsr(const Args &args) {
  expect_args(args, 0, 0);
  PimBsr b{};
  b.priority = ~0u;  // untouched when no answer comes
  getPimSmBsr(&b);
  if (b.priority == ~0u) return no_answer();
  std::printf("bootstrap router %s priority %u\n", dotted(b.address).c_str(), b.priority);
  return 0;
}

int cmd_rp(const Args &args) {
  expect_args(args, 0, 0);
  return counted<PimRp>(getPimSmRp, "group/prefix        rp              priority holdtime", [](const PimRp &r) {
    std::printf("%-19s %-15s %8u %8u\n", (dotted(r.group) + "/" + std::to_string(Mask2Number(r.mask))).c_str(),
                dotted(r.rp).c_str(), r.priority, r.holdtime);
  });
}

int cmd_neighbors(const Args &args) {
  expect_args(args, 0, 0);
  return counted<PimNeighbor>(getPimSmNeighbor, "neighbor        interface    uptime expires dr-priority",
                              [](const PimNeighbor &r) {
                                std::printf("%-15s %-12.31s %6u %7u %11u\n", dotted(r.address).c_str(), r.ifname,
                                            r.uptime, r.expires, r.dr_priority);
                              });
}

int cmd_routes(const Args &args) {
  expect_args(args, 0, 0);
  uint8_t header[PIM_ROUTE_HEADER_SIZE] = {};
  const auto request = [&header](void **array, int *count) { return getPimSmRouting(array, count, header); };
  return counted<PimRoute>(
      request, "source          group           rp              upstream        iif oif-mask   flags",
      [](const PimRoute &r) {
        std::printf("%-15s %-15s %-15s %-15s %3u 0x%08x 0x%x\n", dotted(r.source).c_str(), dotted(r.group).c_str(),
                    dotted(r.rp).c_str(), dotted(r.upstream).c_str(), r.iif, r.oif_mask, r.flags);
      });
}

const Registration reg{{"pim",
                        "PIM-SM status from the multicast routing daemon (3-second waits).",
                        {
                            {"bsr", "", "the bootstrap router", cmd_bsr},
                            {"rp", "", "the rendezvous-point set", cmd_rp},
                            {"neighbors", "", "the PIM neighbours", cmd_neighbors},
                            {"routes", "", "the multicast routes (the daemon's header address is printed first)",
                             cmd_routes},
                        }}};

}  // namespace
}  // namespace syscommon::tool
