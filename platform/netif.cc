#include "platform/netif.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace syscommon {
namespace {

ifreq request_for(const char *name) {
  ifreq req{};
  // Kernel names have at most IFNAMSIZ - 1 characters; a longer one is cut, not overrun.
  std::strncpy(req.ifr_name, name, IFNAMSIZ - 1);
  return req;
}

}  // namespace

InterfaceQuery::InterfaceQuery(bool packet)
    : fd_(::socket(AF_INET, (packet ? SOCK_PACKET : SOCK_DGRAM) | SOCK_CLOEXEC, 0)) {}

InterfaceQuery::~InterfaceQuery() {
  if (fd_ >= 0) ::close(fd_);
}

std::optional<short> InterfaceQuery::flags(const char *name) const {
  ifreq req = request_for(name);
  if (::ioctl(fd_, SIOCGIFFLAGS, &req) < 0) return std::nullopt;
  return req.ifr_flags;
}

std::optional<uint32_t> InterfaceQuery::inet_request(const char *name, unsigned long request) const {
  ifreq req = request_for(name);
  if (::ioctl(fd_, request, &req) < 0) return std::nullopt;
  sockaddr_in in{};
  std::memcpy(&in, &req.ifr_addr, sizeof in);
  return in.sin_addr.s_addr;
}

std::optional<uint32_t> InterfaceQuery::address(const char *name) const { return inet_request(name, SIOCGIFADDR); }
std::optional<uint32_t> InterfaceQuery::netmask(const char *name) const { return inet_request(name, SIOCGIFNETMASK); }
std::optional<uint32_t> InterfaceQuery::broadcast(const char *name) const {
  return inet_request(name, SIOCGIFBRDADDR);
}

std::optional<int> InterfaceQuery::index(const char *name) const {
  ifreq req = request_for(name);
  if (::ioctl(fd_, SIOCGIFINDEX, &req) < 0) return std::nullopt;
  return req.ifr_ifindex;
}

bool InterfaceQuery::hardware_address(const char *name, uint8_t out[6]) const {
  ifreq req = request_for(name);
  if (::ioctl(fd_, SIOCGIFHWADDR, &req) < 0) return false;
  std::memcpy(out, req.ifr_hwaddr.sa_data, 6);
  return true;
}

bool InterfaceQuery::is_up(short flags) { return (static_cast<unsigned short>(flags) & IFF_UP) != 0; }

}  // namespace syscommon
