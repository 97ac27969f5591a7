// syscommon ospf: OSPF status read from the routing daemon's shell.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "syscommon/netstat.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

int failed(int code) {
  std::fprintf(stderr, "syscommon ospf: the routing shell's listing could not be read (%d)\n", code);
  return 1;
}

int cmd_id(const Args &args) {
  expect_args(args, 0, 0);
  char id[32];
  if (getOSPFRouterID(id) != 0) return failed(-1);
  std::printf("router id %s\n", id);
  return 0;
}

int cmd_neighbors(const Args &args) {
  expect_args(args, 0, 0);
  OspfNeighbor *t = nullptr;
  const int n = getOSPFNeighborTable(&t);
  if (n < 0) return failed(n);
  std::printf("%-15s %-4s %-15s %-15s %s\n", "neighbor id", "pri", "state", "address", "port");
  for (int i = 0; i < n; ++i)
    std::printf("%-15s %-4s %-15s %-15s %s\n", t[i].neighbor_id, t[i].priority, t[i].state, t[i].address, t[i].port);
  std::free(t);
  return 0;
}

int cmd_db(const Args &args) {
  expect_args(args, 0, 0);
  OspfDbRecord *t = nullptr;
  const int n = getOSPFDBTable(&t);
  if (n < 0) return failed(n);
  std::printf("%-15s %-10s %-15s %-15s %-6s %s\n", "area", "type", "link id", "adv router", "age", "seq");
  for (int i = 0; i < n; ++i)
    std::printf("%-15s %-10s %-15s %-15s %-6s %s\n", t[i].area, t[i].type, t[i].link_id, t[i].adv_router, t[i].age,
                t[i].seq);
  std::free(t);
  return 0;
}

int cmd_interfaces(const Args &args) {
  expect_args(args, 0, 0);
  // The library fills one record per line the daemon prints and cannot be told the room.
  std::vector<OspfIfState> states(4096);
  if (getOSPFIfState(states.data()) != 0) return failed(-1);
  for (const auto &s : states) {
    if (s.key[0] == '\0') break;
    std::printf("%-20s %s\n", s.key, s.value);
  }
  return 0;
}

const Registration reg{{"ospf",
                        "OSPF status from the routing daemon's shell.",
                        {
                            {"id", "", "the router id", cmd_id},
                            {"neighbors", "", "the neighbour table, ports by user-facing name", cmd_neighbors},
                            {"db", "", "the link-state database", cmd_db},
                            {"interfaces", "", "the interface state (key: value)", cmd_interfaces},
                        }}};

}  // namespace
}  // namespace syscommon::tool
