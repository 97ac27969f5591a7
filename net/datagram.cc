// One datagram out, one transfer in, and draining a queue.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "net/internal.h"
#include "platform/host.h"
#include "platform/local_socket.h"

namespace syscommon::net {

int receive_transfer(InterfaceSocket *ep, void *buffer, std::size_t capacity, net_timeout_fn on_timeout) {
  InterfaceMessage m;  // cleared below, before every receive
  // One budget for the whole transfer: the wait reduces it round after round. A budget used
  // up to exactly zero makes the next wait unlimited, as it always has.
  timeval budget{ep->timeout_sec, ep->timeout_usec};
  int total = 0;
  ep->addr_len = NET_ADDR_FULL_LEN;
  for (;;) {
    const bool unlimited = budget.tv_sec == 0 && budget.tv_usec == 0;
    const int ready = wait_readable(ep->fd, unlimited ? nullptr : &budget);
    if (ready < 0) {
      std::perror("select()");
      return -2;
    }
    if (ready == 0) {
      if (on_timeout == nullptr) return -1;
      return on_timeout() == 1 ? -3 : -4;
    }
    const ssize_t got = local_recvfrom(ep->fd, &m, sizeof m, &ep->address, &ep->addr_len);
    if (got < 0) {
      std::puts("ERROR: cannot receive data.");
      return total;
    }
    // A short datagram reads as if the buffer had been cleared before the receive.
    std::memset(reinterpret_cast<uint8_t *>(&m) + got, 0, sizeof m - static_cast<std::size_t>(got));
    if (net_seq_avoid == 0 && ep->seq_check_off == 0 && m.seq != ep->seq) {
      std::printf("seq error domain_recv->address.sun_path = %s\n", std::string(local_path(ep->address)).c_str());
      continue;
    }
    ep->last_command = m.command;
    ep->type_offset = m.type;
    ep->seq = m.seq;
    ep->record_size = m.record_size;
    set_seq_num(m.seq);
    if (buffer == nullptr) return total;
    if (m.count != 0) {
      const std::size_t offset = static_cast<std::size_t>(total) * m.record_size;
      std::size_t bytes = std::min<std::size_t>(static_cast<std::size_t>(m.count) * m.record_size, sizeof m.data);
      if (offset < capacity) {
        bytes = std::min(bytes, capacity - offset);
        std::memcpy(static_cast<uint8_t *>(buffer) + offset, m.data, bytes);
      }
      total += m.count;
    }
    if (m.more == 0) return total;
  }
}

std::string redirected_destination(std::string_view destination, uint8_t type) {
  if (type != NET_TYPE_DATA && type != NET_TYPE_DATA_CONFIRM) return {};
  if (!destination.starts_with(rooted("/mnt/ramdisk/socket/lumen168-socket"))) return {};
  return rooted("/mnt/ramdisk/socket/lumen168-wexe-socket");
}

}  // namespace syscommon::net

using namespace syscommon;
using namespace syscommon::net;

int net_SendToInterface(InterfaceSocket *endpoint, InterfaceMessage *message) {
  const std::string_view path = local_path(endpoint->address);
  const std::string companion = redirected_destination(path, message->type);
  sockaddr_un redirected{};
  const sockaddr_un *to = &endpoint->address;
  socklen_t length = 0;
  if (!companion.empty()) {
    set_local_address(redirected, companion);
    length = static_cast<socklen_t>(local_path(redirected).size() + 2);
    to = &redirected;
  } else {
    endpoint->addr_len = static_cast<uint32_t>(path.size() + 2);
    length = endpoint->addr_len;
  }
  message->type = static_cast<uint8_t>(message->type + endpoint->type_offset);
  message->tag = endpoint->tag;
  const ssize_t sent = local_sendto(endpoint->fd, message, sizeof *message, *to, length);
  if (sent < 0)
    std::printf("%s() ERROR: cannot send data to %s.\n", "net_SendToInterface", std::string(path).c_str());
  message->type = static_cast<uint8_t>(message->type - endpoint->type_offset);
  return static_cast<int>(sent);
}

int net_RecvFromInterface1(InterfaceSocket *endpoint, void *buffer, net_timeout_fn on_timeout) {
  return receive_transfer(endpoint, buffer, SIZE_MAX, on_timeout);
}

int ClearSocket(InterfaceSocket *endpoint) {
  const auto scratch = new_message(false);
  if (!scratch) return 0;
  endpoint->addr_len = NET_ADDR_FULL_LEN;
  for (;;) {
    timeval moment{0, 1};
    const int ready = wait_readable(endpoint->fd, &moment);
    if (ready < 0) {
      // An interrupted wait is repeated; a descriptor that is not open ends the drain
      // instead of spinning on it.
      if (errno == EINTR) continue;
      break;
    }
    if (ready == 0) break;
    if (local_recvfrom(endpoint->fd, scratch.get(), sizeof *scratch, &endpoint->address, &endpoint->addr_len) < 0)
      break;
  }
  return 0;
}
