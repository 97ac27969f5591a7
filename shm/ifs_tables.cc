#include "shm/ifs_tables.h"

#include <cstdio>
#include <string>

#include "platform/host.h"

namespace syscommon::shm {

void write_port_name(char *out, int p) { std::snprintf(out, SHM_IFNAME_SIZE, "1/%d", p + 1); }

void write_vlan_device(char *out, int vid) { std::snprintf(out, SHM_IFNAME_SIZE, "eth0.%d", vid); }

int publish_ifs_info(int number, std::string_view ifname, std::string_view usr_name, int id) {
  std::string cmd = "echo \"" + std::to_string(number) + "-";
  cmd.append(ifname).append("-").append(usr_name);
  cmd += "-" + std::to_string(id) + "\" > " + rooted("/proc/tarn/ifsInfo");
  return run_command(cmd);
}

}  // namespace syscommon::shm
