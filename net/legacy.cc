// Socket helpers older processes use without the endpoint record: plain bound or
// destination sockets, the 4096-byte framing, and a receive that never gives up.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "net/internal.h"
#include "platform/local_socket.h"

using namespace syscommon;

namespace {

// Creates a local datagram socket, retrying forever with `pause` between attempts.
int socket_retrying(std::chrono::seconds pause) {
  int fd = -1;
  while ((fd = local_dgram_socket()) < 0) {
    std::puts("IPTABLES: cannot open socket ");
    std::this_thread::sleep_for(pause);
  }
  return fd;
}

void fill_address(const char *path, sockaddr_un *address_out, socklen_t *len_out) {
  set_local_address(*address_out, path);
  *len_out = static_cast<socklen_t>(local_path(*address_out).size() + 2);
}

// Clears records [from, to) of a caller's array.
void clear_records(void *buffer, int from, int to, int record_size) {
  if (buffer == nullptr || to <= from || record_size <= 0) return;
  std::memset(static_cast<uint8_t *>(buffer) + static_cast<std::size_t>(from) * record_size, 0,
              static_cast<std::size_t>(to - from) * record_size);
}

}  // namespace

int InitSocket(int *fd_out, const char *path, struct sockaddr_un *address_out, socklen_t *len_out) {
  *fd_out = socket_retrying(std::chrono::seconds(3));
  remove_path(path);
  fill_address(path, address_out, len_out);
  while (local_bind(*fd_out, *address_out, *len_out) < 0) std::this_thread::sleep_for(std::chrono::seconds(3));
  return 1;
}

int InitConnSocket(int *fd_out, const char *path, struct sockaddr_un *address_out, socklen_t *len_out) {
  *fd_out = socket_retrying(std::chrono::seconds(1));
  fill_address(path, address_out, len_out);
  return 1;
}

int RecvData(int *sock, int /*ignored*/, struct sockaddr_un *address, socklen_t *address_length, void *buffer,
             int record_size, int max_records) {
  constexpr std::size_t kDatagram = 4096;
  constexpr std::size_t kHeader = 2;
  uint8_t datagram[kDatagram];
  int position = 0;
  for (;;) {
    std::memset(datagram, 0, sizeof datagram);
    if (local_recvfrom(*sock, datagram, sizeof datagram, address, address_length) < 0) return position;
    const int count = datagram[0];
    clear_records(buffer, position, max_records, record_size);
    if (record_size > 0) {
      const std::size_t bytes = std::min(static_cast<std::size_t>(count) * record_size, kDatagram - kHeader);
      std::memcpy(static_cast<uint8_t *>(buffer) + static_cast<std::size_t>(position) * record_size,
                  datagram + kHeader, bytes);
    }
    position += count;
    if (datagram[1] != 1) return position;
  }
}

int Select_And_Recv_From_Socket(InterfaceSocket *endpoint, void *buffer, int max_records, int record_size,
                                net_timeout_fn on_timeout, int *status_out) {
  int count = -1;
  // Time-outs and failures are retried without limit, so the result -3 (status 2) never
  // comes through.
  while ((count = net_RecvFromInterface1(endpoint, buffer, on_timeout)) < 0) {
  }
  std::printf("ret = %d,ret_idx = %d\n", count, count);
  clear_records(buffer, count, max_records, record_size);
  *status_out = 1;
  return count;
}
