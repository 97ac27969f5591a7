// Interface queries: address, mask, broadcast address, index, hardware address and state
// of a kernel interface, each on a socket of its own.
#include <cstdio>
#include <cstring>

#include "platform/netif.h"
#include "syscommon/netstat.h"

using syscommon::InterfaceQuery;

namespace {

// True when the interface is up; an unknown interface counts as down.
bool up(const InterfaceQuery &q, const char *ifname) {
  const auto f = q.flags(ifname);
  return f && InterfaceQuery::is_up(*f);
}

}  // namespace

int Get_IF_IP_MASK(const char *ifname, uint32_t *ip, uint32_t *mask) {
  *ip = 0;
  *mask = 0;
  const InterfaceQuery q(true);
  if (!q.open() || !up(q, ifname)) return -1;
  *ip = q.address(ifname).value_or(0);
  *mask = q.netmask(ifname).value_or(0);
  return 1;
}

int Get_eth_IP_MASK(const char *ifname, uint32_t *ip, uint32_t *mask) { return Get_IF_IP_MASK(ifname, ip, mask); }

int commGetIfaceIpMask(const char *ifname, uint32_t *ip, uint32_t *mask, int only_if_up) {
  *ip = 0;
  *mask = 0;
  const InterfaceQuery q(true);
  if (only_if_up != 0 && !up(q, ifname)) return 0;
  *ip = q.address(ifname).value_or(0);
  *mask = q.netmask(ifname).value_or(0);
  return 0;
}

int commGetIfaceBcastAddr(const char *ifname, uint32_t *bcast, int only_if_up) {
  *bcast = 0;
  const InterfaceQuery q(true);
  if (only_if_up != 0 && !up(q, ifname)) return 0;
  *bcast = q.broadcast(ifname).value_or(0);
  return 0;
}

int commGetIfaceIdx(const char *ifname, int *index, int only_if_up) {
  *index = -1;
  const InterfaceQuery q(true);
  if (only_if_up != 0 && !up(q, ifname)) return 0;
  *index = q.index(ifname).value_or(-1);
  return 0;
}

int Get_IF_MAC(const char *ifname, uint8_t mac[6]) {
  std::memset(mac, 0, 6);
  const InterfaceQuery q(false);
  if (!q.open()) {
    std::puts(" Open socket error!.");
    return -1;
  }
  if (!q.hardware_address(ifname, mac)) {
    std::memset(mac, 0, 6);
    return -1;
  }
  return 1;
}

int Get_IF_State(const char *ifname) {
  const InterfaceQuery q(true);
  return up(q, ifname) ? 1 : 0;
}
