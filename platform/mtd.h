// MTD flash partitions: the only code that opens "/dev/mtdN" and issues the MTD requests.
//
// A "/dev/mtdN" that resolves to a regular file (as under a simulated root) stands for a
// partition: its size is the file's size, its erase block 65536 bytes, an erase fills the
// blocks with 0xFF and an unlock does nothing. Erases, seeks and writes past the end fail as
// the MTD character device fails them (EINVAL, EINVAL, ENOSPC after a short write), so a
// partition file never grows.
#ifndef SYSCOMMON_PLATFORM_MTD_H
#define SYSCOMMON_PLATFORM_MTD_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace syscommon {

// Erase-block size of a partition that a regular file stands for.
inline constexpr uint32_t kSimulatedEraseBlock = 65536;

struct MtdGeometry {
  uint32_t size = 0;        // partition size in bytes
  uint32_t erase_size = 0;  // erase-block size in bytes
};

// open() of the rooted "/dev/mtd<partition>" with `flags` (close-on-exec added); -1 with
// errno set on failure.
int mtd_open(int partition, int flags);

// MEMGETINFO: 0, or -1 with errno set.
int mtd_geometry(int fd, MtdGeometry &geometry);
// MEMUNLOCK / MEMERASE of [start, start + length): 0, or -1 with errno set.
int mtd_unlock(int fd, uint32_t start, uint32_t length);
int mtd_erase(int fd, uint32_t start, uint32_t length);

// read / write / lseek on the partition, with the device's limits at its end.
ssize_t mtd_read(int fd, void *data, std::size_t length);
ssize_t mtd_write(int fd, const void *data, std::size_t length);
off_t mtd_seek(int fd, off_t offset, int whence);

// Closes a descriptor that mtd_open returned (negative values are ignored).
void mtd_close(int fd);

// An owned partition descriptor.
class MtdDevice {
 public:
  MtdDevice(int partition, int flags) : fd_(mtd_open(partition, flags)) {}
  ~MtdDevice() { mtd_close(fd_); }
  MtdDevice(const MtdDevice &) = delete;
  MtdDevice &operator=(const MtdDevice &) = delete;

  [[nodiscard]] int fd() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_;
};

}  // namespace syscommon

#endif
