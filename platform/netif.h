// Interface requests on a kernel socket: the only code that issues the SIOCGIF* ioctls.
#ifndef SYSCOMMON_PLATFORM_NETIF_H
#define SYSCOMMON_PLATFORM_NETIF_H

#include <cstdint>

namespace syscommon {

enum class NetifResult { ok, failed, no_socket };

// SIOCGIFHWADDR on an AF_INET datagram socket: the interface's six-byte hardware address.
NetifResult interface_hw_address(const char *name, uint8_t mac[6]);

}  // namespace syscommon

#endif
