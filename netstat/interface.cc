// Interface queries.
#include <cstdio>
#include <cstring>

#include "platform/netif.h"
#include "syscommon/netstat.h"
#include "syscommon/platform.h"

extern "C" {

SYSCOMMON_API int Get_IF_MAC(const char *name, uint8_t *mac) {
  uint8_t found[6] = {};
  auto rc = syscommon::interface_hw_address(name != nullptr ? name : "", found);
  if (rc == syscommon::NetifResult::no_socket) std::printf(" Open socket error!.");
  if (rc != syscommon::NetifResult::ok) std::memset(found, 0, sizeof found);
  std::memcpy(mac, found, sizeof found);
  return rc == syscommon::NetifResult::ok ? 1 : -1;
}

SYSCOMMON_API uint32_t Link_state(void) { return Ssc_getPortLinkState(); }

}  // extern "C"
