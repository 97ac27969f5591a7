// Test-only peer: a bare local datagram socket bound on a path, standing in for a daemon.
// It uses the socket calls directly so that tests see the bytes exactly as they travel.
#ifndef SYSCOMMON_NET_TEST_PEER_H
#define SYSCOMMON_NET_TEST_PEER_H

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace syscommon::net::testing {

// A path under the (simulated) RAM disk.
inline std::string ram(const std::string &rel) { return ::syscommon::testing::sim_path("/mnt/ramdisk/" + rel); }

// Header of a full datagram as text: seq, type, command, count, more, tag, record size.
inline std::string head(unsigned seq, unsigned type, unsigned command, unsigned count, unsigned more, unsigned tag,
                        uint32_t record_size, std::size_t length = 4108, unsigned reserved = 0) {
  char text[128];
  std::snprintf(text, sizeof text, "%zu bytes: seq %u type %u cmd %u count %u more %u res %u tag %u size %u", length,
                seq, type, command, count, more, reserved, tag, record_size);
  return text;
}

struct Datagram {
  std::vector<uint8_t> bytes = std::vector<uint8_t>(4108, 0xff);  // a missing datagram
  std::string from;  // sender's bound path, empty for an unbound sender

  uint8_t seq() const { return bytes.at(0); }
  const uint8_t *data() const { return bytes.data() + 12; }
  std::string head() const {
    uint32_t size = 0;
    if (bytes.size() >= 12) std::memcpy(&size, bytes.data() + 8, 4);
    return testing::head(bytes.at(0), bytes.at(1), bytes.at(2), bytes.at(3), bytes.at(4), bytes.at(7), size,
                         bytes.size(), bytes.at(5) | bytes.at(6));
  }
  // The data area holds `records` and zeros after them.
  bool carries(std::span<const uint8_t> records) const {
    if (bytes.size() != 4108) return false;
    if (!records.empty() && std::memcmp(data(), records.data(), records.size()) != 0) return false;
    for (std::size_t i = 12 + records.size(); i < bytes.size(); ++i)
      if (bytes[i] != 0) return false;
    return true;
  }
};

// A 4108-byte datagram as the daemons build it.
inline std::vector<uint8_t> datagram(uint8_t seq, uint8_t type, uint8_t command, uint8_t count, uint8_t more,
                                     uint32_t record_size, std::span<const uint8_t> data = {}) {
  std::vector<uint8_t> b(4108, 0);
  b[0] = seq;
  b[1] = type;
  b[2] = command;
  b[3] = count;
  b[4] = more;
  std::memcpy(b.data() + 8, &record_size, 4);
  if (!data.empty()) std::memcpy(b.data() + 12, data.data(), data.size() < 4096 ? data.size() : 4096);
  return b;
}

inline std::vector<uint8_t> word(int32_t v) {
  std::vector<uint8_t> b(4);
  std::memcpy(b.data(), &v, 4);
  return b;
}

// Records 0..n-1 of `size` bytes, record i filled with the byte (base + i).
inline std::vector<uint8_t> records(int n, std::size_t size, uint8_t base = 1) {
  std::vector<uint8_t> v(static_cast<std::size_t>(n) * size);
  for (int i = 0; i < n && size != 0; ++i) std::memset(v.data() + i * size, static_cast<uint8_t>(base + i), size);
  return v;
}

using syscommon::testing::stdout_of;

class Peer {
 public:
  // Bound on `path` (any old file removed); an empty path makes an unbound sender.
  explicit Peer(std::string path = {}) : path_(std::move(path)) {
    fd_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (path_.empty()) return;
    ::unlink(path_.c_str());
    sockaddr_un a = address(path_);
    if (::bind(fd_, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0) {
      ::close(fd_);
      fd_ = -1;
    }
  }
  ~Peer() {
    if (fd_ >= 0) ::close(fd_);
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  Peer(const Peer &) = delete;
  Peer &operator=(const Peer &) = delete;

  bool ok() const { return fd_ >= 0; }

  std::optional<Datagram> receive(int timeout_ms = 3000) const {
    pollfd p{fd_, POLLIN, 0};
    if (::poll(&p, 1, timeout_ms) != 1) return std::nullopt;
    Datagram d;
    d.bytes.resize(8192);
    sockaddr_un from{};
    socklen_t len = sizeof from;
    ssize_t n = ::recvfrom(fd_, d.bytes.data(), d.bytes.size(), 0, reinterpret_cast<sockaddr *>(&from), &len);
    if (n < 0) return std::nullopt;
    d.bytes.resize(static_cast<std::size_t>(n));
    if (len > sizeof(sa_family_t)) d.from = from.sun_path;
    return d;
  }
  // The next datagram, or the all-0xff stand-in when none comes.
  Datagram next(int timeout_ms = 3000) const { return receive(timeout_ms).value_or(Datagram{}); }

  bool send(const std::string &to, const std::vector<uint8_t> &bytes) const {
    sockaddr_un a = address(to);
    return ::sendto(fd_, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr *>(&a), sizeof a) ==
           static_cast<ssize_t>(bytes.size());
  }

  static sockaddr_un address(const std::string &path) {
    sockaddr_un a{};
    a.sun_family = AF_UNIX;
    std::strncpy(a.sun_path, path.c_str(), sizeof a.sun_path - 1);
    return a;
  }

 private:
  std::string path_;
  int fd_ = -1;
};

}  // namespace syscommon::net::testing

#endif
