// The datagram receive paths fed through a real local socket pair: the transfer receive
// (into a buffer of a capacity chosen by the input), the older framing's RecvData, and the
// drain. Input: one option byte, then up to 12 datagrams, each a 2-byte length (modulo the
// 4108-byte datagram size) and its bytes. The harness queues a closing datagram after them
// so that no receive waits: a transfer always ends.
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "net/internal.h"
#include "syscommon/net.h"

namespace {

constexpr int kMaxDatagrams = 12;  // well within the pair's socket buffer

struct Pair {
  int receiver = -1, sender = -1;
  Pair() {
    // The drain's wait is one microsecond: without timer slack it is one, not fifty.
    prctl(PR_SET_TIMERSLACK, 1UL);
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_DGRAM, 0, fds) != 0) __builtin_trap();
    receiver = fds[0];
    sender = fds[1];
  }
};

bool send_all(int fd, const std::vector<std::vector<uint8_t>> &datagrams) {
  for (const auto &d : datagrams)
    if (send(fd, d.data(), d.size(), MSG_DONTWAIT) != static_cast<ssize_t>(d.size())) return false;
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const Pair pair;
  if (size < 1) return 0;
  const uint8_t options = data[0];
  std::vector<std::vector<uint8_t>> datagrams;
  std::size_t at = 1;
  while (at + 2 <= size && datagrams.size() < kMaxDatagrams) {
    const std::size_t length = (data[at] | (data[at + 1] << 8)) % (NET_MSG_SIZE + 1);
    at += 2;
    const std::size_t n = std::min(length, size - at);
    datagrams.emplace_back(data + at, data + at + n);
    at += n;
  }

  // The transfer receive: sequence check on or off, a capacity from the input.
  InterfaceSocket ep{};
  ep.fd = pair.receiver;
  ep.seq = 7;
  ep.seq_check_off = options & 1;
  ep.timeout_sec = 5;  // never reached: the closing datagram is always queued
  net_seq_avoid = (options >> 1) & 1;
  InterfaceMessage closing{};
  closing.seq = ep.seq;
  auto transfer = datagrams;
  transfer.emplace_back(reinterpret_cast<uint8_t *>(&closing), reinterpret_cast<uint8_t *>(&closing) + NET_MSG_HEADER_SIZE);
  if (send_all(pair.sender, transfer)) {
    const std::size_t capacity = static_cast<std::size_t>(options >> 2) * 97;  // 0 .. 6111 bytes
    const auto buffer = std::make_unique<uint8_t[]>(std::max<std::size_t>(capacity, 1));
    const int records = syscommon::net::receive_transfer(&ep, buffer.get(), capacity, nullptr);
    if (records < 0) __builtin_trap();  // nothing can time out here
  }
  ClearSocket(&ep);

  // The older framing: the buffer holds every record the datagrams announce.
  const int record_size = 1 + (options >> 3);  // 1 .. 32 bytes
  int announced = 0;
  for (const auto &d : datagrams) announced += d.empty() ? 0 : d[0];
  datagrams.push_back({0, 0});  // count 0, no more
  if (send_all(pair.sender, datagrams)) {
    std::vector<uint8_t> buffer(static_cast<std::size_t>(std::max(announced, 1)) * record_size);
    sockaddr_un from{};
    socklen_t from_length = sizeof from;
    int fd = pair.receiver;
    const int gathered = RecvData(&fd, 0, &from, &from_length, buffer.data(), record_size, announced);
    if (gathered < 0 || gathered > announced) __builtin_trap();
  }
  ClearSocket(&ep);
  net_seq_avoid = 1;
  return 0;
}
