// Gateway choice, PPP peer address, interface naming, VRRP state, the raw-socket filter
// entry and the local interface of an address.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "netstat/internal.h"
#include "platform/number.h"
#include "syscommon/netstat.h"
#include "syscommon/shm.h"
#include "util/format.h"

using syscommon::File;
using syscommon::format_text;
using syscommon::open_file;
using syscommon::rooted;
using syscommon::run_command;
using syscommon::netstat::copy_text;

int GetNowDefaultGw(void) {
  File f = open_file(rooted("/mnt/ramdisk/DefaultGw"), "r");
  if (!f) return -1;
  char head[4] = {};
  if (std::fread(head, 1, 3, f.get()) == 0) return -1;
  return syscommon::device_atoi(head);
}

uint32_t GetGWInfo(int w) { return shm_wan_gw(w); }

int PPP_IP_DST(int unit, char *out) {
  out[0] = '\0';
  const std::string path = rooted(format_text(64, "/mnt/ramdisk/ppp_ip_dst%d", unit));
  run_command(format_text(64, "ifconfig ppp%d > ", unit) + path);
  File f = open_file(path, "r");
  if (!f) return 0;
  // The last six characters read, compared with the field name after each one.
  constexpr std::string_view kField = "P-t-P:";
  char window[6] = {};
  while (std::string_view(window, sizeof window) != kField) {
    const int c = std::fgetc(f.get());
    if (c == EOF) return 0;  // no peer in the listing: the link is not up
    std::memmove(window, window + 1, sizeof window - 1);
    window[sizeof window - 1] = static_cast<char>(c);
  }
  int n = 0;
  for (int c = std::fgetc(f.get()); n < 15 && c != EOF && std::isspace(c) == 0; c = std::fgetc(f.get()))
    out[n++] = static_cast<char>(c);
  out[n] = '\0';
  return 1;
}

int Change_IFname_2_Portname(char *name) {
  const std::string_view n(name);
  if (n.starts_with("ppp")) {
    std::strcpy(name, "WAN");
    return 0;
  }
  if (n.starts_with("br") || n.starts_with("eth")) {
    char user[SHM_IFNAME_SIZE + 1] = {};
    get_shm_usr_interface_name_by_interface_name(name, user);
    copy_text({name, SHM_IFNAME_SIZE}, user);
    return 0;
  }
  return n.starts_with("vpn") || n.starts_with("tun") ? 0 : -1;
}

int CheckVrrpStatus(int vid, int /*ignored*/, int vrid) {
  char ifname[SHM_IFNAME_SIZE + 1] = {};
  get_shm_interface_name_by_vid(vid, ifname);
  syscommon::Pipe p = syscommon::open_pipe(
      format_text(128, "cat %s/%s_%d 2> /dev/null", rooted("/mnt/ramdisk/vrrp").c_str(), ifname, vrid), "r");
  char line[64] = "";
  if (!p || std::fgets(line, sizeof line, p.get()) == nullptr) return 0;
  if (std::isdigit(static_cast<unsigned char>(line[0])) == 0) return 0;
  const int state = syscommon::device_atoi(line);
  return state == 3 ? 0 : state;
}

int set_sock_raw_filter(uint8_t b1, uint8_t b2, uint8_t b3, const char *text1, const char *text2) {
  if (std::strlen(text1) > 40 || std::strlen(text2) >= 41) return 0;
  run_command(format_text(160, "echo \"%02x,%02x,%02x,%s,%s\" > ", b1, b2, b3, text1, text2) +
              rooted("/proc/sock_raw_filter"));
  return 1;
}

int findLocalIfName(uint32_t ip, char *out) {
  std::memset(out, 0, SHM_IFNAME_SIZE);
  uint32_t wan_ip = 0, wan_mask = 0;
  shm_wan_ip(0, &wan_ip, &wan_mask);
  if (wan_ip != 0 && wan_mask != 0 && (ip & wan_mask) == (wan_ip & wan_mask)) {
    std::strcpy(out, "WAN");
    return 0;
  }
  ShmVlanIfRecord table[SHM_VLAN_IF_COUNT];
  get_shm_vlan_conf(table);
  for (const ShmVlanIfRecord &r : table) {
    if (r.ip == 0) break;
    if ((ip & r.mask) == (r.ip & r.mask)) {
      copy_text({out, SHM_IFNAME_SIZE}, r.usr_name);  // reads at most 31 bytes of the name
      break;
    }
  }
  return 0;
}
