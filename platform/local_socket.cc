#include "platform/local_socket.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace syscommon {

int local_dgram_socket() { return ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0); }

int local_bind(int fd, const sockaddr_un &address, socklen_t length) {
  return ::bind(fd, reinterpret_cast<const sockaddr *>(&address), length);
}

ssize_t local_sendto(int fd, const void *data, std::size_t size, const sockaddr_un &to, socklen_t length) {
  return ::sendto(fd, data, size, 0, reinterpret_cast<const sockaddr *>(&to), length);
}

ssize_t local_recvfrom(int fd, void *data, std::size_t size, sockaddr_un *from, socklen_t *length) {
  return ::recvfrom(fd, data, size, 0, reinterpret_cast<sockaddr *>(from), length);
}

void close_descriptor(int fd) { ::close(fd); }

void remove_path(const std::string &path) { ::unlink(path.c_str()); }

namespace {

long long now_usec() {
  timespec ts{};
  ::clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<long long>(ts.tv_sec) * 1000000 + ts.tv_nsec / 1000;
}

}  // namespace

int wait_readable(int fd, timeval *budget) {
  if (fd < 0) {
    errno = EBADF;
    return -1;
  }
  pollfd p{fd, POLLIN, 0};
  int rc = 0;
  if (budget == nullptr) {
    rc = ::ppoll(&p, 1, nullptr, nullptr);
  } else {
    // Whole seconds are carried out of the microseconds first, as select() does; what is
    // still negative after that is malformed.
    const long long sec = static_cast<long long>(budget->tv_sec) + budget->tv_usec / 1000000;
    const long long usec = budget->tv_usec % 1000000;
    if (sec < 0 || usec < 0) {
      errno = EINVAL;
      return -1;
    }
    const long long total = sec * 1000000 + usec;
    const long long start = now_usec();
    const timespec ts{static_cast<time_t>(sec), static_cast<long>(usec * 1000)};
    rc = ::ppoll(&p, 1, &ts, nullptr);
    const int saved = errno;
    long long left = total - (now_usec() - start);
    if (left < 0 || rc == 0) left = 0;
    budget->tv_sec = static_cast<time_t>(left / 1000000);
    budget->tv_usec = static_cast<suseconds_t>(left % 1000000);
    errno = saved;
  }
  if (rc > 0 && (p.revents & POLLNVAL) != 0) {
    errno = EBADF;
    return -1;
  }
  return rc > 0 ? 1 : rc;
}

void set_local_address(sockaddr_un &address, std::string_view path) {
  std::memset(&address, 0, sizeof address);
  address.sun_family = AF_UNIX;
  const std::size_t n = path.size() < sizeof address.sun_path ? path.size() : sizeof address.sun_path - 1;
  std::memcpy(address.sun_path, path.data(), n);
}

std::string_view local_path(const sockaddr_un &address) {
  return {address.sun_path, ::strnlen(address.sun_path, sizeof address.sun_path)};
}

}  // namespace syscommon
