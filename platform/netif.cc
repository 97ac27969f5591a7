#include "platform/netif.h"

#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace syscommon {

NetifResult interface_hw_address(const char *name, uint8_t mac[6]) {
  int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return NetifResult::no_socket;
  ifreq req{};
  std::strncpy(req.ifr_name, name, IFNAMSIZ - 1);
  int rc = ioctl(fd, SIOCGIFHWADDR, &req);
  close(fd);
  if (rc != 0) return NetifResult::failed;
  std::memcpy(mac, req.ifr_hwaddr.sa_data, 6);
  return NetifResult::ok;
}

}  // namespace syscommon
