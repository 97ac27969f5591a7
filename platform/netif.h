// Interface requests (ioctls) on a socket of the caller's choice: the only place the
// library asks the kernel about network interfaces.
#ifndef SYSCOMMON_PLATFORM_NETIF_H
#define SYSCOMMON_PLATFORM_NETIF_H

#include <cstdint>
#include <optional>

namespace syscommon {

// One socket for the requests of one query, closed when the query ends.
class InterfaceQuery {
 public:
  // packet: AF_INET of type SOCK_PACKET (the kernel treats it as a packet socket, which
  // needs CAP_NET_RAW); otherwise an AF_INET datagram socket.
  explicit InterfaceQuery(bool packet);
  ~InterfaceQuery();
  InterfaceQuery(const InterfaceQuery &) = delete;
  InterfaceQuery &operator=(const InterfaceQuery &) = delete;

  [[nodiscard]] bool open() const { return fd_ >= 0; }
  // SIOCGIFFLAGS.
  std::optional<short> flags(const char *name) const;
  // SIOCGIFADDR, SIOCGIFNETMASK, SIOCGIFBRDADDR: the IPv4 address as s_addr.
  std::optional<uint32_t> address(const char *name) const;
  std::optional<uint32_t> netmask(const char *name) const;
  std::optional<uint32_t> broadcast(const char *name) const;
  // SIOCGIFINDEX.
  std::optional<int> index(const char *name) const;
  // SIOCGIFHWADDR: the first six bytes of the hardware address.
  bool hardware_address(const char *name, uint8_t out[6]) const;

  static bool is_up(short flags);

 private:
  std::optional<uint32_t> inet_request(const char *name, unsigned long request) const;
  int fd_ = -1;
};

}  // namespace syscommon

#endif
