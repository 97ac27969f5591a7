// Flash programming on the MTD partitions: erase, program, read back, and the
// read-modify-write of small records near a partition's end.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/host.h"
#include "platform/mtd.h"
#include "syscommon/maint.h"
#include "util/buffer.h"

namespace {

using syscommon::MtdDevice;
using syscommon::MtdGeometry;

constexpr std::size_t kProgramPiece = 4096;
constexpr std::size_t kTransferBuffer = 0x100000;
constexpr const char *kUploadPath = "/mnt/ramdisk/fwUpload";

void progress_dot() {
  std::printf(".");
  std::fflush(stdout);
}

int fail_line(const char *function, int line) {
  std::printf("%s line %d\n", function, line);
  return -1;
}

// Erases `count` blocks of `erase_size` from `start`, a dot per block, unlocking first when
// asked. 0, or -1 after the failure line of `function`.
int erase_blocks(int fd, bool unlock, uint32_t start, uint32_t count, uint32_t erase_size, const char *function) {
  for (uint32_t i = 0; i < count; ++i) {
    progress_dot();
    uint32_t at = start + i * erase_size;
    if (unlock && syscommon::mtd_unlock(fd, at, erase_size) != 0) return fail_line(function, __LINE__);
    if (syscommon::mtd_erase(fd, at, erase_size) != 0) return fail_line(function, __LINE__);
  }
  return 0;
}

// Reads exactly `n` bytes at `at`; false on a seek failure or a short read.
bool read_at(int fd, off_t at, unsigned char *dst, std::size_t n) {
  return syscommon::mtd_seek(fd, at, SEEK_SET) == at && syscommon::mtd_read(fd, dst, n) == static_cast<ssize_t>(n);
}

}  // namespace

extern "C" {

SYSCOMMON_API int fis_erase(int fd, int unlock, int partition) {
  MtdGeometry geometry;
  if (syscommon::mtd_geometry(fd, geometry) != 0 || geometry.erase_size == 0) return fail_line(__func__, __LINE__);
  // Partition 0 holds more than the boot loader: only its first 0xA0000 bytes are erased.
  uint32_t span = partition == 0 ? static_cast<uint32_t>(FW_BIOS_SIZE) : geometry.size;
  return erase_blocks(fd, unlock != 0, 0, span / geometry.erase_size, geometry.erase_size, __func__);
}

SYSCOMMON_API int fis_program(int fd, const void *buf, int length) {
  const auto *p = static_cast<const unsigned char *>(buf);
  for (std::size_t done = 0; static_cast<long>(done) < length;) {
    std::size_t piece = std::min(kProgramPiece, static_cast<std::size_t>(length) - done);
    progress_dot();
    if (syscommon::mtd_write(fd, p + done, piece) != static_cast<ssize_t>(piece)) return -1;
    done += piece;
  }
  return 0;
}

SYSCOMMON_API int fis_writeBuf(const void *buf, int length, int flags, int partition) {
  MtdDevice dev(partition, O_WRONLY);
  if (!dev) return fail_line(__func__, __LINE__);
  if (fis_erase(dev.fd(), 0, partition) != 0) return -1;
  if ((flags & FIS_FLAG_ERASE_ONLY) != 0) return 0;
  return fis_program(dev.fd(), buf, length) == 0 ? 0 : FIS_PROGRAM_FAILED;
}

SYSCOMMON_API int fis_writeBuf_tmp(int offset, int length, int flags, int partition) {
  auto upload = syscommon::open_file(syscommon::rooted(kUploadPath), "r");
  if (!upload || std::fseek(upload.get(), offset, SEEK_SET) != 0) {
    std::printf("%s fopen error\n", kUploadPath);
    return -1;
  }
  MtdDevice dev(partition, O_WRONLY);
  if (!dev) {
    std::printf("%s open error err=%d\n", ("/dev/mtd" + std::to_string(partition)).c_str(), errno);
    return fail_line(__func__, __LINE__);
  }
  if (fis_erase(dev.fd(), 0, partition) != 0) return -1;
  if ((flags & FIS_FLAG_ERASE_ONLY) != 0) return 0;
  syscommon::ByteBuffer buffer = syscommon::try_buffer(kTransferBuffer);
  if (!buffer) {
    std::printf("cannot alloc memory for fis_writeBuf ");
    return 0;  // reported as success, as the device always did
  }
  for (long remaining = length; remaining > 0;) {
    std::size_t got = std::fread(buffer.get(), 1, kTransferBuffer, upload.get());
    if (got == 0) break;
    auto count = static_cast<int>(std::min<long>(static_cast<long>(got), remaining));
    if (fis_program(dev.fd(), buffer.get(), count) != 0) return FIS_PROGRAM_FAILED;
    remaining -= count;
  }
  return 0;
}

SYSCOMMON_API int fis_readBuf(int offset, int length, int partition, void *dst) {
  if (length < 0) return -1;
  MtdDevice dev(partition, O_RDONLY);
  if (!dev) return -1;
  if (syscommon::mtd_seek(dev.fd(), offset, offset >= 0 ? SEEK_SET : SEEK_END) < 0) return -1;
  return syscommon::mtd_read(dev.fd(), dst, static_cast<std::size_t>(length)) == length ? 1 : -1;
}

SYSCOMMON_API int Read_from_Flash_From_End(void *dst, int distance, int partition, int count) {
  if (count < 0) return -1;
  MtdDevice dev(partition, O_RDONLY);
  if (!dev || syscommon::mtd_seek(dev.fd(), -static_cast<off_t>(distance), SEEK_END) < 0) return -1;
  auto got = syscommon::mtd_read(dev.fd(), dst, static_cast<std::size_t>(count));
  return got < 0 ? -1 : static_cast<int>(got);
}

SYSCOMMON_API int Write_Data_To_Flash_From_End(const void *data, int distance, int partition, int size) {
  if (size < 0) return -1;
  syscommon::ByteBuffer scratch = syscommon::try_buffer(static_cast<std::size_t>(size));
  if (!scratch) return -1;
  int rc = -1;
  {
    MtdDevice dev(partition, O_RDWR);
    if (!dev) return fail_line(__func__, __LINE__);
    off_t position = syscommon::mtd_seek(dev.fd(), -static_cast<off_t>(distance), SEEK_END);
    if (position < 0) return -1;
    syscommon::mtd_seek(dev.fd(), 0, SEEK_SET);
    rc = flash_erase_to_write(dev.fd(), 0, static_cast<int>(position), distance, data, size);
  }
  if (rc != 0) return -1;
  Read_from_Flash_From_End(scratch.get(), distance, partition, size);  // read back, not compared
  return 1;
}

// Exactly as the device does it: the head block is kept, the data laid in; when the span
// runs past the head block, only (end of data) mod E bytes of the following block are
// restored, taken from that block at the same remainder and placed right after the data.
// The rest of the buffer past the head block is 0xFF, as erased flash reads. Bytes that
// would fall outside the buffer or the tail block are not copied; data that does not fit
// the counted blocks is refused with -1 before anything is erased.
SYSCOMMON_API int flash_erase_to_write(int fd, int unlock, int start, int length, const void *data, int size) {
  MtdGeometry geometry;
  if (syscommon::mtd_geometry(fd, geometry) != 0 || geometry.erase_size == 0) return fail_line(__func__, __LINE__);
  if (start < 0 || length < 0 || size < 0) return fail_line(__func__, __LINE__);
  const std::size_t e = geometry.erase_size;
  const std::size_t s = static_cast<std::size_t>(start) / e * e;
  std::printf("start = %d, erase.start = %d\n", start, static_cast<int>(s));
  const std::size_t span = static_cast<std::size_t>(start) + static_cast<std::size_t>(length) - s;
  std::size_t count = span > e ? span / e : 1;

  syscommon::ByteBuffer head = syscommon::try_buffer(e), tail = syscommon::try_buffer(e, 0xFF);
  if (!head || !tail || !read_at(fd, static_cast<off_t>(s), head.get(), e)) return fail_line(__func__, __LINE__);
  if (span > e && span % e != 0) {
    if (!read_at(fd, static_cast<off_t>(s + e), tail.get(), e)) return fail_line(__func__, __LINE__);
    ++count;
  }
  const std::size_t data_at = static_cast<std::size_t>(start) - s;
  const std::size_t data_end = data_at + static_cast<std::size_t>(size);
  const std::size_t length_all = count * e;
  syscommon::ByteBuffer buffer = syscommon::try_buffer(length_all, 0xFF);
  if (!buffer || data_end > length_all) return fail_line(__func__, __LINE__);

  if (erase_blocks(fd, unlock != 0, static_cast<uint32_t>(s), static_cast<uint32_t>(count), geometry.erase_size,
                   __func__) != 0)
    return -1;
  std::memcpy(buffer.get(), head.get(), e);
  if (size > 0) std::memcpy(buffer.get() + data_at, data, static_cast<std::size_t>(size));
  if (span > e) {
    std::size_t rem = data_end % e;
    std::size_t piece = std::min({rem, length_all - data_end, e - rem});
    std::memcpy(buffer.get() + data_end, tail.get() + rem, piece);
  }
  std::printf("count = %d,erase.start = %d\n", static_cast<int>(count), static_cast<int>(s));
  auto ret = syscommon::mtd_seek(fd, static_cast<off_t>(s), SEEK_SET);
  std::printf("ret = %d\n", static_cast<int>(ret));
  int rc = fis_program(fd, buffer.get(), static_cast<int>(length_all));
  std::printf("ret = %d\n", rc);
  return rc;
}

}  // extern "C"
