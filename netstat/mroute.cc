// PIM-SM and DVMRP status asked of the multicast routing daemons: a one-byte request on
// their local request socket, binary answers on the answer socket, passed through.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "netstat/internal.h"
#include "platform/local_socket.h"
#include "syscommon/net.h"
#include "syscommon/netstat.h"

namespace {

using namespace syscommon;

constexpr int kWaitSeconds = 3;
// Counted answers are waited for again after a time-out while the daemon is busy with
// another caller, but not for ever: three silent waits in a row end the exchange.
constexpr int kSilentWaits = 3;
// An answer travels in one datagram, so a count beyond this is no real answer.
constexpr long long kMaxAnswerBytes = 64LL << 20;

enum class Wait { once, counted };

// The two endpoints of one exchange, closed on every path.
class Exchange {
 public:
  Exchange(const char *request_name, const char *answer_name) {
    if (net_OpenSocketToInterface_Send(&send_, request_name, 0) < 0) return;
    if (net_OpenSocketToInterface_Recv(&recv_, answer_name) < 0) return;
    ready_ = true;
  }
  ~Exchange() { close(); }
  Exchange(const Exchange &) = delete;
  Exchange &operator=(const Exchange &) = delete;

  // Sends the request code; the address length is the socket path's length plus 2. A
  // failed send is not looked at: the wait for the answer that follows decides.
  bool request(uint8_t code) {
    if (ready_) local_sendto(send_.fd, &code, 1, send_.address, send_.addr_len);
    return ready_;
  }

  // One datagram of at most `size` bytes into `into`; false when none came.
  bool receive(void *into, std::size_t size, Wait wait) {
    for (int silent = 0; silent < (wait == Wait::once ? 1 : kSilentWaits);) {
      timeval budget{kWaitSeconds, 0};
      const int rc = wait_readable(recv_.fd, &budget);
      if (rc > 0) return local_recvfrom(recv_.fd, into, size, nullptr, nullptr) >= 0;
      if (rc < 0 && errno != EINTR) return false;
      if (rc == 0) ++silent;
    }
    return false;
  }

  int close() {
    net_CloseSocketToInterface_Send(&send_);
    return net_CloseSocketToInterface_Recv(&recv_);
  }

 private:
  InterfaceSocket send_{};
  InterfaceSocket recv_{};
  bool ready_ = false;
};

// Codes 2, 3 and 4: a count, then (code 4) the header, then the records.
int counted(uint8_t code, std::size_t record_size, void **records, int *count, void *header = nullptr) {
  Exchange x("UI2PIM", "PIM2UI");
  int32_t n = 0;
  if (!x.request(code) || !x.receive(&n, sizeof n, Wait::counted)) return x.close();
  if (n == 0) {
    *count = 0;
    return x.close();
  }
  const long long bytes = static_cast<long long>(n) * static_cast<long long>(record_size);
  void *array = bytes > 0 && bytes <= kMaxAnswerBytes ? std::calloc(static_cast<std::size_t>(n), record_size) : nullptr;
  if (array == nullptr) {
    *count = 0;
    return x.close();
  }
  *records = array;
  *count = n;
  if (code == 4) {
    uint8_t scratch[PIM_ROUTE_HEADER_SIZE] = {};
    if (header == nullptr) header = scratch;  // a caller without room still gets its records
    if (!x.receive(header, PIM_ROUTE_HEADER_SIZE, Wait::counted)) return x.close();
    uint32_t ip = 0;
    std::memcpy(&ip, header, sizeof ip);
    std::printf("showIp = %s\n", netstat::dotted(ip).c_str());
  }
  x.receive(array, static_cast<std::size_t>(bytes), Wait::counted);
  return x.close();
}

}  // namespace

int getPimSmBsr(void *bsr) {
  Exchange x("UI2PIM", "PIM2UI");
  if (x.request(1)) x.receive(bsr, PIM_BSR_SIZE, Wait::once);
  return x.close();
}

int getPimSmRp(void **records, int *count) { return counted(2, PIM_RP_RECORD_SIZE, records, count); }

int getPimSmNeighbor(void **records, int *count) {
  return counted(3, PIM_NEIGHBOR_RECORD_SIZE, records, count);
}

int getPimSmRouting(void **records, int *count, void *header) {
  return counted(4, PIM_ROUTE_RECORD_SIZE, records, count, header);
}

int getDvmrpRouting(void *buffer, int *count, int code) {
  Exchange x("UI2MROUTED", "MROUTED2UI");
  const std::size_t size = code == 100 ? DVMRP_ROUTE_RECORD_SIZE : DVMRP_VIF_RECORD_SIZE;
  const std::size_t bytes = *count > 0 ? static_cast<std::size_t>(*count) * size : 0;
  if (x.request(static_cast<uint8_t>(code))) x.receive(buffer, bytes, Wait::once);
  return x.close();
}
