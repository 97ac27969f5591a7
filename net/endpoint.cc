// Endpoints and process-wide state: opening and closing send and receive endpoints,
// sequence numbers and the static socket-name buffer.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <new>
#include <thread>

#include "net/internal.h"
#include "platform/host.h"
#include "platform/local_socket.h"

uint8_t net_seq_counter = 0;
uint8_t net_last_seq = 0;
uint8_t net_seq_avoid = 1;
uint8_t net_ctl_busy = 0;

namespace syscommon::net {
namespace {

constexpr int kRecvLine = 593;
constexpr int kRecvTOLine = 647;

int open_receive(InterfaceSocket *ep, const char *name, const char *function, int line, bool full_length,
                 int32_t budget_sec, int32_t budget_usec) {
  int fd = -1;
  for (int attempt = 0; attempt < 5; ++attempt) {
    fd = local_dgram_socket();
    if (fd >= 0) break;
    if (attempt < 4) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ep->fd = fd;
  if (fd < 0) {
    std::printf("%s() %d open socket error\n", function, line);
    return -1;
  }
  set_local_address(ep->address, ramdisk_path(name));
  remove_path(std::string(local_path(ep->address)));
  // The plain form binds with the whole address structure, the time-out form with the
  // path's own length; both are what the daemons have always used.
  ep->addr_len = full_length ? NET_ADDR_FULL_LEN : static_cast<uint32_t>(local_path(ep->address).size() + 2);
  const int rc = local_bind(fd, ep->address, ep->addr_len);
  if (rc < 0) std::puts("ERROR: cannot bind port");
  ep->seq = 0;
  ep->seq_check_off = 1;
  ep->timeout_sec = budget_sec;
  ep->timeout_usec = budget_usec;
  return rc;
}

}  // namespace

std::string ramdisk_path(const char *name) { return rooted("/mnt/ramdisk") + "/" + name; }

uint8_t next_request_seq() {
  net_seq_counter = static_cast<uint8_t>(net_seq_counter % 255 + 1);
  return net_seq_counter;
}

std::unique_ptr<InterfaceMessage> new_message(bool clear_data) {
  if (clear_data) return std::unique_ptr<InterfaceMessage>(new (std::nothrow) InterfaceMessage{});
  std::unique_ptr<InterfaceMessage> m(new (std::nothrow) InterfaceMessage);
  if (m) std::memset(m.get(), 0, NET_MSG_HEADER_SIZE);
  return m;
}

// A plain test-then-set, as the callers expect: it keeps the threads of one process from
// overlapping in the common case and is no lock. atomic_ref only keeps the compiler honest.
void take_request_flag() {
  std::atomic_ref<uint8_t> busy(net_ctl_busy);
  while (busy.load(std::memory_order_relaxed) != 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  busy.store(1, std::memory_order_relaxed);
}

void release_request_flag() { std::atomic_ref<uint8_t>(net_ctl_busy).store(0, std::memory_order_relaxed); }

}  // namespace syscommon::net

using namespace syscommon;
using namespace syscommon::net;

int net_OpenSocketToInterface_Send(InterfaceSocket *endpoint, const char *name, uint32_t type_offset) {
  endpoint->fd = local_dgram_socket();
  if (endpoint->fd < 0) {
    std::puts("socket fail");
    return -1;
  }
  set_local_address(endpoint->address, ramdisk_path(name));
  endpoint->addr_len = static_cast<uint32_t>(local_path(endpoint->address).size() + 2);
  endpoint->type_offset = type_offset;
  endpoint->timeout_sec = 10;
  endpoint->timeout_usec = 0;
  return 1;
}

int net_OpenSocketToInterface_Recv(InterfaceSocket *endpoint, const char *name) {
  return open_receive(endpoint, name, "net_OpenSocketToInterface_Recv", kRecvLine, true, 10, 0);
}

int net_OpenSocketToInterface_RecvTO(InterfaceSocket *endpoint, const char *name, const struct timeval *timeout) {
  return open_receive(endpoint, name, "net_OpenSocketToInterface_RecvTO", kRecvTOLine, false,
                      static_cast<int32_t>(timeout->tv_sec), static_cast<int32_t>(timeout->tv_usec));
}

int net_CloseSocketToInterface_Send(InterfaceSocket *endpoint) {
  if (endpoint->fd >= 1) {
    close_descriptor(endpoint->fd);
    endpoint->fd = -1;
  }
  return 0;
}

int net_CloseSocketToInterface_Recv(InterfaceSocket *endpoint) {
  if (endpoint->fd >= 1) {
    // After a receive `address` names the last sender, and that is the file removed.
    remove_path(std::string(local_path(endpoint->address)));
    close_descriptor(endpoint->fd);
    endpoint->fd = -1;
  }
  return 0;
}

char *sock_path(const char *name) {
  static char buffer[128];
  std::snprintf(buffer, sizeof buffer, "%s/%s", "socket", name);
  return buffer;
}

int set_seq_num(uint8_t value) {
  net_last_seq = value;
  return value;
}

void set_seq_avoid(void) { net_seq_avoid = 1; }
