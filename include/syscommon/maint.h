/*
 * Firmware image check and flash programming.
 *
 * Flash partitions are "/dev/mtd0" (boot loader; only its first 0xA0000 bytes are erased and
 * written), "/dev/mtd1" (kernel; its last 32 bytes hold the firmware header) and "/dev/mtd2"
 * (root filesystem). The functions print progress dots and one diagnostic line per failure
 * site on standard output.
 *
 * Firmware-only image: the 32-byte header (eight big-endian words), the kernel section
 * (kernel_size bytes, always 0x400000), the filesystem section (fs_size bytes).
 * Combined boot-loader image: boot loader at 0, kernel at 0x100000, header at 0x4FFFE0,
 * filesystem at 0x500000.
 *
 * Functions that take an image without a length read and write inside it as its header
 * says; the caller must hand over a buffer that holds everything the header announces.
 */
#ifndef SYSCOMMON_MAINT_H
#define SYSCOMMON_MAINT_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "syscommon/export.h"

SYSCOMMON_BEGIN_DECLS

/* The firmware header: big-endian in the file and in flash, host order after header_ntoh. */
typedef struct FwHeader {
  uint32_t kernel_size; /* must be 0x400000 */
  uint32_t fs_size;     /* a multiple of 4 */
  uint32_t reserved0;
  uint32_t image_id;    /* compared with the value the caller expects */
  uint32_t check_sum;   /* sum of the big-endian words of both sections, modulo 2^32 */
  uint32_t fw_version;  /* major, minor, patch, build (most significant first) */
  uint32_t build_time;  /* four bytes printed as two decimal digits each */
  uint32_t reserved1;
} FwHeader;

SYSCOMMON_STATIC_ASSERT(sizeof(FwHeader) == 32, "firmware header");
SYSCOMMON_STATIC_ASSERT(offsetof(FwHeader, check_sum) == 16, "header check_sum");
SYSCOMMON_STATIC_ASSERT(offsetof(FwHeader, build_time) == 24, "header build_time");

enum {
  FW_HEADER_SIZE = 32,
  FW_KERNEL_SIZE = 0x400000,
  FW_BIOS_SIZE = 0xA0000,
  FW_COMBINED_KERNEL_OFFSET = 0x100000,
  FW_COMBINED_HEADER_OFFSET = 0x4FFFE0,
  FW_COMBINED_FS_OFFSET = 0x500000,
  FIS_FLAG_VERIFY = 2,     /* accepted, not acted on; every caller passes it */
  FIS_FLAG_ERASE_ONLY = 4, /* erase, do not program */
  FIS_PROGRAM_FAILED = 2048
};

/* The firmware version this library belongs to, as a header word and as Get_FW_Ver text. */
SYSCOMMON_API extern const uint32_t Gsys_firmwareVersion;
SYSCOMMON_API extern const char Gsys_firwareVersionString[];

/* Converts the eight words to host order in place; returns 0. */
SYSCOMMON_API int header_ntoh(FwHeader *header);
/* dst[i] = src[n - 1 - i] for i < n. */
SYSCOMMON_API void little_to_big_endian(int n, const uint8_t *src, uint8_t *dst);

/* Sum of the big-endian 32-bit words of data[0, length) modulo 2^32 into *sum; returns 0.
 * A length below 1 sums nothing. Unchecked on purpose: when length is not a multiple of 4
 * the last group is read whole, up to 3 bytes past `length` (so that the sum agrees with
 * the stream checksum over a longer file); the buffer must extend that far. */
SYSCOMMON_API int file_check_sum(const void *data, int length, uint32_t *sum);
/* The same sum read from `stream` in 256-byte chunks: `length` bytes, or to the end of the
 * stream when length is 0xFFFFFFFF. A final partial group is completed with whatever bytes
 * the chunk buffer still holds from the previous chunk (zeros in the first). Returns 0. */
SYSCOMMON_API int file_check_sum_tmp(FILE *stream, uint32_t length, uint32_t *sum);

/* Checks a firmware-only image: 0 valid; -6 fw_version too old for this hardware; -1
 * image_id differs from `image_id`; -2 bad section sizes; -3 checksum differs. `unused` is
 * not examined. The image must hold 32 + kernel_size + fs_size bytes (unchecked: the
 * sizes are only tested for their fixed values; sizes adding up to 2 GiB or more read
 * nothing). */
SYSCOMMON_API int Ssys_firmwareCheck(const void *image, uint32_t image_id, uint32_t unused);
/* Prints "FW version %02d.%02d.%02d\n"; 1 when the hardware version is 2 and fw_version
 * is below 0x05000000, else 0. */
SYSCOMMON_API int Ssys_isFwHwMismatch(uint32_t fw_version);

/* Writes a checked firmware-only image (priority 90 SCHED_RR, warm-start cause 39, raw
 * header copied into the image at 0x400000): 0, -4 kernel write failed, -5 filesystem
 * write failed. The image is changed in place and must hold what its header announces. */
SYSCOMMON_API int Ssys_writeProgram(void *image);
/* Writes a combined image to partitions 0, 1 and 2: 1, or -1 on a checksum mismatch or
 * a failed write. The image must hold 0x500000 + fs_size bytes. */
SYSCOMMON_API int Ssys_write_bios_fw(const void *image);
/* Writes "/etc/u-boot.bos" (at most 0xA0000 bytes, zero-padded) to partition 0: 0 or -1. */
SYSCOMMON_API int Ssys_write_bios(void);

/* Copies `count` header bytes into `image` at 0x400000 (`path` ignored); returns 0. */
SYSCOMMON_API int Write_Header_To_Flash(const void *header, const char *path, int count, void *image);
/* Writes `count` header bytes into the file `path` at base + 0x400000: 0, or -1 with
 * "%s fopen error\n". */
SYSCOMMON_API int Write_Header_To_Flash_tmp(const void *header, const char *path, int count, long base);

/* Erases a partition block by block ("." per block; partition 0 only its first 0xA0000
 * bytes), unlocking each block first when `unlock` is non-zero: 0 or -1. */
SYSCOMMON_API int fis_erase(int fd, int unlock, int partition);
/* Writes `length` bytes in pieces of at most 4096 ("." before each): 0, or -1 on a short
 * write. */
SYSCOMMON_API int fis_program(int fd, const void *buf, int length);
/* Erases partition `partition` and programs `length` bytes of `buf`: 0; -1 open or erase
 * failed; 2048 programming failed. `flags` & 4: erase only. */
SYSCOMMON_API int fis_writeBuf(const void *buf, int length, int flags, int partition);
/* As fis_writeBuf, reading `length` bytes from "/mnt/ramdisk/fwUpload" at `offset`
 * through a 1 MiB buffer. */
SYSCOMMON_API int fis_writeBuf_tmp(int offset, int length, int flags, int partition);
/* Reads `length` bytes at `offset` (negative: from the end) of a partition: 1 or -1. */
SYSCOMMON_API int fis_readBuf(int offset, int length, int partition, void *dst);

/* Reads the header kept in the last 32 bytes of partition 1 into *dst, in host order:
 * 1, or -1 (then *dst is untouched). */
SYSCOMMON_API int Read_FW_Info(FwHeader *dst);
/* The flash header's fw_version with each byte converted from packed BCD; returns 0. */
SYSCOMMON_API int Ssys_getFwVersion(uint32_t *version);
/* "V%x.%x" with the patch and build parts (a non-zero patch and build give the patch digit
 * twice: V1.2.3.4.3); `text` needs 16 bytes. Returns the last formatting call's count. */
SYSCOMMON_API int Get_FW_Ver(const FwHeader *header, char *text);
/* "build %02d%02d%02d%02d." of build_time; `text` needs 20 bytes. */
SYSCOMMON_API int Get_FW_Build_Time(const FwHeader *header, char *text);

/* Reads `count` bytes at `distance` bytes before the end of a partition: bytes read, -1. */
SYSCOMMON_API int Read_from_Flash_From_End(void *dst, int distance, int partition, int count);
/* Rewrites `size` bytes at `distance` before the end of a partition (read-modify-write of
 * the blocks concerned): 1 or -1. */
SYSCOMMON_API int Write_Data_To_Flash_From_End(const void *data, int distance, int partition, int size);
/* The read-modify-write: erases the blocks covering [start, start + length) and programs
 * the head block with `data` laid in at `start`. Returns fis_program's result, or -1. See
 * the function for the exact (lossy) handling of a span over a block boundary. */
SYSCOMMON_API int flash_erase_to_write(int fd, int unlock, int start, int length, const void *data, int size);

/* Stops "snmpd", "dhcpd" and "lldpd", in that order, with Ssys_taskKillByName; returns 0. */
SYSCOMMON_API int fwupgrad_funkill(void);
/* The number in "/proc/tarnarm11/cpu_freq", 0 if it cannot be opened or read. */
SYSCOMMON_API int Ssys_getCpuFreq(void);

SYSCOMMON_END_DECLS

#endif
