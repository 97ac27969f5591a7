#include "platform/mtd.h"

#include <fcntl.h>
#include <mtd/mtd-user.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

#include "platform/host.h"

namespace syscommon {

namespace {

// The size of the partition file behind `fd`, or -1 when `fd` is not a regular file (a real
// MTD device, or a failed fstat, which the ioctl then reports).
off_t simulated_size(int fd) {
  struct stat st {};
  if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) return -1;
  return st.st_size;
}

// The checks MEMERASE makes: inside the partition and aligned to the erase block.
bool valid_erase(off_t size, uint32_t start, uint32_t length) {
  return size >= 0 && uint64_t{start} + length <= static_cast<uint64_t>(size) &&
         start % kSimulatedEraseBlock == 0 &&
         length % kSimulatedEraseBlock == 0;
}

int fill_erased(int fd, uint32_t start, uint32_t length) {
  static const std::array<unsigned char, kSimulatedEraseBlock> erased = [] {
    std::array<unsigned char, kSimulatedEraseBlock> b{};
    b.fill(0xFF);
    return b;
  }();
  for (uint32_t done = 0; done < length;) {
    std::size_t n = std::min<std::size_t>(erased.size(), length - done);
    ssize_t w = pwrite(fd, erased.data(), n, static_cast<off_t>(start) + done);
    if (w <= 0) return -1;
    done += static_cast<uint32_t>(w);
  }
  return 0;
}

}  // namespace

int mtd_open(int partition, int flags) {
  std::string path = rooted("/dev/mtd" + std::to_string(partition));
  return ::open(path.c_str(), flags | O_CLOEXEC);
}

int mtd_geometry(int fd, MtdGeometry &geometry) {
  off_t size = simulated_size(fd);
  if (size >= 0) {
    geometry.size = static_cast<uint32_t>(size);
    geometry.erase_size = kSimulatedEraseBlock;
    return 0;
  }
  mtd_info_user info{};
  if (ioctl(fd, MEMGETINFO, &info) != 0) return -1;
  geometry.size = info.size;
  geometry.erase_size = info.erasesize;
  return 0;
}

int mtd_unlock(int fd, uint32_t start, uint32_t length) {
  off_t size = simulated_size(fd);
  if (size >= 0) return 0;
  erase_info_user range{start, length};
  return ioctl(fd, MEMUNLOCK, &range);
}

int mtd_erase(int fd, uint32_t start, uint32_t length) {
  off_t size = simulated_size(fd);
  if (size < 0) {
    erase_info_user range{start, length};
    return ioctl(fd, MEMERASE, &range);
  }
  if ((fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDONLY) {
    errno = EBADF;
    return -1;
  }
  if (!valid_erase(size, start, length)) {
    errno = EINVAL;
    return -1;
  }
  return fill_erased(fd, start, length);
}

ssize_t mtd_read(int fd, void *data, std::size_t length) { return ::read(fd, data, length); }

ssize_t mtd_write(int fd, const void *data, std::size_t length) {
  off_t size = simulated_size(fd);
  if (size < 0) return ::write(fd, data, length);
  off_t at = lseek(fd, 0, SEEK_CUR);
  if (at < 0) return -1;
  if (at >= size) {
    errno = ENOSPC;
    return -1;
  }
  return ::write(fd, data, std::min<std::size_t>(length, static_cast<std::size_t>(size - at)));
}

off_t mtd_seek(int fd, off_t offset, int whence) {
  off_t size = simulated_size(fd);
  if (size < 0) return lseek(fd, offset, whence);
  off_t base = whence == SEEK_SET ? 0 : whence == SEEK_END ? size : lseek(fd, 0, SEEK_CUR);
  if (base < 0) return -1;
  off_t target = base + offset;
  if (target < 0 || target > size || (whence != SEEK_SET && whence != SEEK_CUR && whence != SEEK_END)) {
    errno = EINVAL;
    return -1;
  }
  return lseek(fd, target, SEEK_SET);
}

void mtd_close(int fd) {
  if (fd >= 0) ::close(fd);
}

}  // namespace syscommon
