// Data transfers: an array of records cut into as many datagrams as it needs.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "net/internal.h"
#include "platform/local_socket.h"

namespace syscommon::net {

int records_per_datagram(int count, uint32_t record_size) {
  if (count == 1 || record_size == 0) return 1;
  return static_cast<int>(NET_MSG_DATA_SIZE / record_size);
}

int send_chunks(InterfaceSocket *ep, InterfaceMessage &m, const void *records, uint32_t record_size, int count,
                int per_datagram, bool early_ends) {
  // Below 1 (a record larger than a datagram, or a caller's 0) the loop could never end.
  const int per = std::max(per_datagram, 1);
  const auto *base = static_cast<const uint8_t *>(records);
  int result = 0;
  for (long long chunk = 0;; ++chunk) {
    const long long remaining = static_cast<long long>(count) - chunk * per;
    if (remaining < 0) break;
    long long carried = per;
    if (remaining > per) {
      m.more = 1;
    } else {
      carried = remaining;
      m.more = 0;
      // Never true for a path built by net_OpenSocketToInterface_Send (it is absolute);
      // kept as the daemons' peers have always compared it.
      if (local_path(ep->address) == "socket/lumen168-socket")
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    m.count = static_cast<uint8_t>(carried);
    const std::size_t bytes =
        std::min<std::size_t>(static_cast<std::size_t>(carried) * record_size, sizeof m.data);
    if (bytes != 0)
      std::memcpy(m.data, base + static_cast<std::size_t>(chunk) * static_cast<std::size_t>(per) * record_size, bytes);
    std::memset(m.data + bytes, 0, sizeof m.data - bytes);
    result = net_SendToInterface(ep, &m);
    if (result == 0 || m.more == 0) break;
    if (early_ends && ((chunk + 1) * per == count || per == 1)) break;
  }
  return result;
}

}  // namespace syscommon::net

using namespace syscommon::net;

int net_Web_SendData(InterfaceSocket *endpoint, uint8_t command, const void *records, uint32_t record_size,
                     int count, int /*per_datagram*/) {
  const auto m = new_message(false);
  if (!m) return 0;
  m->seq = endpoint->seq;  // a reply carries the sequence of the request it answers
  m->type = NET_TYPE_DATA;
  m->command = command;
  m->record_size = record_size;
  return send_chunks(endpoint, *m, records, record_size, count, records_per_datagram(count, record_size), false);
}

int send_agent(const char *name, uint32_t type_offset, uint8_t command, const void *records, uint32_t record_size,
               int count, int per_datagram) {
  InterfaceSocket endpoint{};
  if (net_OpenSocketToInterface_Send(&endpoint, name, type_offset) < 0) {
    std::puts("send_agent error");
    return -1;
  }
  const int result = net_Web_SendData(&endpoint, command, records, record_size, count, per_datagram);
  net_CloseSocketToInterface_Send(&endpoint);
  return result;
}
