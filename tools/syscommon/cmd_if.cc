// syscommon if: the kernel's network interfaces as the library's interface queries see
// them, with the user-facing name of each.
#include <net/if.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "syscommon/netstat.h"
#include "tools/syscommon/addr_text.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

std::string mac_text(const uint8_t *m) {
  char buf[18];
  std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
  return buf;
}

void show(const std::string &name) {
  uint32_t ip = 0, mask = 0, bcast = 0;
  int index = -1;
  uint8_t mac[6];
  commGetIfaceIpMask(name.c_str(), &ip, &mask, 0);
  commGetIfaceBcastAddr(name.c_str(), &bcast, 0);
  commGetIfaceIdx(name.c_str(), &index, 0);
  const bool has_mac = Get_IF_MAC(name.c_str(), mac) == 1;
  char user[32] = {};
  std::strncpy(user, name.c_str(), sizeof user - 1);
  const bool named = Change_IFname_2_Portname(user) == 0 && user[0] != '\0';
  std::printf("%-12s %-4s %-18s %-15s %5d  %-17s  %s\n", name.c_str(), Get_IF_State(name.c_str()) == 1 ? "up" : "down",
              ip == 0 ? "-" : (dotted(ip) + "/" + std::to_string(Mask2Number(mask))).c_str(),
              bcast == 0 ? "-" : dotted(bcast).c_str(), index, has_mac ? mac_text(mac).c_str() : "-",
              named ? user : "-");
}

int cmd_show(const Args &args) {
  expect_args(args, 0, 1);
  std::vector<std::string> names;
  if (!args.empty()) {
    check_text(args[0], "NAME", IF_NAMESIZE - 1);
    names.push_back(args[0]);
  } else if (struct if_nameindex *all = if_nameindex(); all != nullptr) {
    for (const struct if_nameindex *p = all; p->if_index != 0; ++p) names.emplace_back(p->if_name);
    if_freenameindex(all);
  }
  if (!args.empty()) {
    int index = -1;
    commGetIfaceIdx(names[0].c_str(), &index, 0);
    if (index < 0) {
      std::fprintf(stderr, "syscommon if: no interface '%s'\n", names[0].c_str());
      return 1;
    }
  }
  std::printf("%-12s %-4s %-18s %-15s %5s  %-17s  %s\n", "interface", "link", "address", "broadcast", "index", "mac",
              "user name");
  for (const auto &n : names) show(n);
  return 0;
}

const Registration reg{{"if",
                        "Network interfaces through the library's interface queries.",
                        {
                            {"show", "[NAME]",
                             "address/prefix, broadcast, index, MAC, up/down and user-facing name of every kernel\n"
                             "interface, or of NAME",
                             cmd_show},
                        }}};

}  // namespace
}  // namespace syscommon::tool
