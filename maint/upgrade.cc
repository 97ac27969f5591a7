// The firmware upload road: writing a checked image (firmware only, or with the boot
// loader), the boot loader from its file, the version record read back from flash, and the
// services stopped before an upgrade.
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "platform/host.h"
#include "syscommon/maint.h"
#include "syscommon/util.h"
#include "util/buffer.h"
#include "util/format.h"

namespace {

constexpr int kUpgradePriority = 90;
constexpr int kWarmStartFirmwareUpgrade = 39;
// Image offset of the kernel section's last 32 bytes (the section starts after the header).
constexpr int kHeaderOffsetInImage = FW_KERNEL_SIZE;
constexpr uint32_t kCombinedKernelSummed = 0x3FFFE0;  // the kernel area without its header
constexpr const char *kBiosFile = "/etc/u-boot.bos";

FwHeader header_at(const void *image, std::size_t offset) {
  FwHeader header;
  std::memcpy(&header, static_cast<const unsigned char *>(image) + offset, sizeof header);
  header_ntoh(&header);
  return header;
}

unsigned bcd_to_binary(unsigned byte) { return (byte >> 4) * 10 + (byte & 0x0F); }

}  // namespace

extern "C" {

SYSCOMMON_API int Write_Header_To_Flash(const void *header, const char * /*path*/, int count, void *image) {
  if (count > 0)
    std::memcpy(static_cast<unsigned char *>(image) + kHeaderOffsetInImage, header, static_cast<std::size_t>(count));
  return 0;
}

SYSCOMMON_API int Write_Header_To_Flash_tmp(const void *header, const char *path, int count, long base) {
  auto file = syscommon::open_file(path != nullptr ? path : "", "r+");
  if (!file) {
    std::printf("%s fopen error\n", path != nullptr ? path : "");
    return -1;
  }
  if (std::fseek(file.get(), base + kHeaderOffsetInImage, SEEK_SET) == 0 && count > 0)
    std::fwrite(header, 1, static_cast<std::size_t>(count), file.get());
  return 0;
}

SYSCOMMON_API int Ssys_writeProgram(void *image) {
  Ssys_setTaskPriority(getpid(), kUpgradePriority);
  syscommon::run_command(syscommon::format_text(4096, "echo %d > %s", kWarmStartFirmwareUpgrade,
                                                syscommon::rooted("/mnt/log2/WARM_START_LOG").c_str()));
  FwHeader header = header_at(image, 0);
  // The raw header goes into the kernel section's last 32 bytes, where Read_FW_Info finds
  // it (the image check summed the section before this).
  Write_Header_To_Flash(image, nullptr, FW_HEADER_SIZE, image);
  const auto *kernel = static_cast<const unsigned char *>(image) + FW_HEADER_SIZE;
  if (fis_writeBuf(kernel, static_cast<int>(header.kernel_size), FIS_FLAG_VERIFY, 1) != 0) return -4;
  if (fis_writeBuf(kernel + header.kernel_size, static_cast<int>(header.fs_size), FIS_FLAG_VERIFY, 2) != 0) return -5;
  return 0;
}

SYSCOMMON_API int Ssys_write_bios_fw(const void *image) {
  Ssys_setTaskPriority(getpid(), kUpgradePriority);
  const auto *bytes = static_cast<const unsigned char *>(image);
  FwHeader header = header_at(image, FW_COMBINED_HEADER_OFFSET);
  uint32_t kernel_sum = 0, fs_sum = 0;
  file_check_sum(bytes + FW_COMBINED_KERNEL_OFFSET, static_cast<int>(kCombinedKernelSummed), &kernel_sum);
  file_check_sum(bytes + FW_COMBINED_FS_OFFSET, static_cast<int>(header.fs_size), &fs_sum);
  uint32_t total = kernel_sum + fs_sum;
  if (total != header.check_sum) {
    std::printf(" header->check_sum = %d, sum1 = %d\n", static_cast<int>(header.check_sum), static_cast<int>(total));
    return -1;
  }
  std::printf("\nBIOS Upgrade");
  if (fis_writeBuf(bytes, FW_BIOS_SIZE, FIS_FLAG_VERIFY, 0) != 0) {
    std::printf("\nBIOS Upgrade Error");
    return -1;
  }
  std::printf("\nKERNEL Upgrade");
  if (fis_writeBuf(bytes + FW_COMBINED_KERNEL_OFFSET, static_cast<int>(header.kernel_size), FIS_FLAG_VERIFY, 1) != 0) {
    std::printf("\nKERNEL Upgrade Error");
    return -1;
  }
  std::printf("\nFS Upgrade");
  if (fis_writeBuf(bytes + FW_COMBINED_KERNEL_OFFSET + header.kernel_size, static_cast<int>(header.fs_size),
                   FIS_FLAG_VERIFY, 2) != 0) {
    std::printf("\nFS Upgrade Error");
    return -1;
  }
  std::printf("\nUp OK!");
  return 1;
}

SYSCOMMON_API int Ssys_write_bios(void) {
  auto file = syscommon::open_file(syscommon::rooted(kBiosFile), "r");
  if (!file) {
    std::printf("%s fopen error\n", kBiosFile);
    return -1;
  }
  syscommon::ByteBuffer buffer = syscommon::try_buffer(FW_BIOS_SIZE);
  if (!buffer) return -1;
  std::size_t got = std::fread(buffer.get(), 1, FW_BIOS_SIZE, file.get());
  std::printf("----- first 256 bytes -----\r");
  for (int i = 0; i < 256; ++i) {
    if (i % 16 == 0) std::printf("\n");
    std::printf("%02x ", buffer[static_cast<std::size_t>(i)]);
  }
  std::printf("\n%s() buffer size = %d, BIOS Upgrade file size = %d\n", __func__, FW_BIOS_SIZE, static_cast<int>(got));
  if (fis_writeBuf(buffer.get(), FW_BIOS_SIZE, FIS_FLAG_VERIFY, 0) != 0) {
    std::printf("\nBIOS Upgrade Error");
    return -1;
  }
  return 0;
}

SYSCOMMON_API int Read_FW_Info(FwHeader *dst) {
  FwHeader header;
  if (fis_readBuf(-FW_HEADER_SIZE, FW_HEADER_SIZE, 1, &header) != 1) return -1;
  header_ntoh(&header);
  *dst = header;
  return 1;
}

SYSCOMMON_API int Ssys_getFwVersion(uint32_t *version) {
  FwHeader header{};
  Read_FW_Info(&header);
  uint32_t v = 0;
  for (int shift = 24; shift >= 0; shift -= 8) v |= bcd_to_binary((header.fw_version >> shift) & 0xFF) << shift;
  *version = v;
  return 0;
}

SYSCOMMON_API int fwupgrad_funkill(void) {
  for (const char *name : {"snmpd", "dhcpd", "lldpd"}) Ssys_taskKillByName(name);
  return 0;
}

SYSCOMMON_API int Ssys_getCpuFreq(void) {
  auto file = syscommon::open_file(syscommon::rooted("/proc/tarnarm11/cpu_freq"), "r");
  int freq = 0;
  if (!file || std::fscanf(file.get(), "%d", &freq) != 1) return 0;
  return freq;
}

}  // extern "C"
