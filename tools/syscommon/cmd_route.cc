// syscommon route: the routing daemon's selected routes, parsed by the library.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "syscommon/netstat.h"
#include "tools/syscommon/addr_text.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

int cmd_show(const Args &args) {
  expect_args(args, 0, 1);
  char code = 'A';
  if (!args.empty()) {
    code = 0;
    for (const RouteProto *p = string2proto_table; p->code != 0; ++p)
      if (p->name[0] != '\0' && args[0] == p->name) code = p->code;
    if (code == 0) throw UsageError{"protocol must be static, connected, rip, kernel or ospf, not '" + args[0] + "'"};
  }
  RouteRecord *routes = nullptr;
  const int n = Route_Parser(&routes, code);
  if (n < 0) {
    std::fprintf(stderr, "syscommon route: the route listing could not be read (%d)\n", n);
    return 1;
  }
  std::printf("%-10s %-19s %-15s %-15s %s\n", "protocol", "destination", "gateway", "port", "metric");
  for (int i = 0; i < n; ++i)
    std::printf("%-10s %-19s %-15s %-15s %u\n", routes[i].protocol, routes[i].destination,
                dotted(routes[i].gateway).c_str(), routes[i].port, routes[i].metric);
  std::free(routes);
  return 0;
}

const Registration reg{{"route",
                        "Routes selected by the routing daemon (its shell's listing, parsed).",
                        {
                            {"show", "[static|connected|rip|kernel|ospf]",
                             "selected routes (all, or of one protocol) with gateway, user-facing port and metric",
                             cmd_show},
                        }}};

}  // namespace
}  // namespace syscommon::tool
