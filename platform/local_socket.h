// Local (AF_UNIX) datagram socket primitives: the only place the messaging layer reaches
// the socket system calls. Thin wrappers that keep the calls' own results and errno.
#ifndef SYSCOMMON_PLATFORM_LOCAL_SOCKET_H
#define SYSCOMMON_PLATFORM_LOCAL_SOCKET_H

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/un.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace syscommon {

// A new local datagram socket (close-on-exec), or -1.
int local_dgram_socket();

int local_bind(int fd, const sockaddr_un &address, socklen_t length);
ssize_t local_sendto(int fd, const void *data, std::size_t size, const sockaddr_un &to, socklen_t length);
// recvfrom with flags 0; `from`/`length` may be null.
ssize_t local_recvfrom(int fd, void *data, std::size_t size, sockaddr_un *from, socklen_t *length);
void close_descriptor(int fd);
// Removes a file (a socket's name); errors are ignored, as a missing file is the normal case.
void remove_path(const std::string &path);

// Waits until `fd` is readable, as select() does for one descriptor on Linux: `budget` (null
// = no limit) may hold a second or more in its microseconds (carried over, as select()
// does), is reduced by the time spent and left normalised, down to zero when it runs out.
// Works for any descriptor number. Returns 1 readable, 0 budget spent, -1 failure with errno
// set (EBADF for a descriptor that is not open, EINVAL for a budget still negative once
// normalised).
int wait_readable(int fd, timeval *budget);

// The family and path of a local address; the path without a terminator is taken whole.
void set_local_address(sockaddr_un &address, std::string_view path);
std::string_view local_path(const sockaddr_un &address);

}  // namespace syscommon

#endif
