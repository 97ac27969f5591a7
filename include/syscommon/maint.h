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
#include <time.h>

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

/* ==== Configuration export and import ==== */
/* The live configuration "/mnt/cfg2" is exported, with a checksum list "CFG_SUM" and a
 * copy of "/mnt/log1", as the gzip tar archive "/mnt/ramdisk/TARN_CFG.ini", staged in
 * "/mnt/ramdisk/cfg_tmp". Every configuration file NAME is packed on its own as NAME.gzip
 * (a name already ending in "gzip" is kept as it is); each CFG_SUM line is the packed
 * file's absolute path, a blank and its checksum (file_check_sum_tmp to the end) plus 1 in
 * lower-case hexadecimal. The staging directory stays in place after export and import. */

/* Builds the archive: 1, or -1 with "%s fopen error\n" when the listing or a packed file
 * cannot be opened. */
SYSCOMMON_API int make_configuration_file(void);
/* Checks every CFG_SUM line: 1 all match (an empty list too); -1 when the list is missing
 * ("check_upconfig_checksum fopen error"), a listed file is missing ("%s fopen error\n"),
 * a line holds no path and hexadecimal value, or a sum differs. A listed path that is not
 * a regular file (a device, a FIFO, a directory) counts as a differing sum: it is not read,
 * so a list naming /dev/zero cannot keep the import reading for ever. */
SYSCOMMON_API int check_upconfig_checksum(void);
/* Unpacks the archive from the working directory "/" (which stays the working directory),
 * checks it, sets *error to 1 on a failed check and reports event 19 (failed) or 21
 * (passed) to the log agent; returns that report's result. Members are written wherever
 * their names point: an archive can overwrite any file the caller may write. */
SYSCOMMON_API int config_Upgrade(int *error);
/* Full import by the configuration parser: its exit status; *error = 1 when non-zero. */
SYSCOMMON_API int configCli_Upgrade(int *error);
/* Partial import by the configuration parser, then the outcome handed to it in the
 * background ("-s 5" or "-s -1"): 0 or -1. */
SYSCOMMON_API int configPartialCli_Upgrade(void);
/* Creates or empties "/mnt/ramdisk/TARN_LOG.ini": 0, or -1 with "%s fopen error\n". */
SYSCOMMON_API int make_log_file(void);
/* The password of "/mnt/ramdisk/cfg/password.CFG" (its first token of letters, digits and
 * '=' without the 4-character key prefix) into `text`: its length; on a missing file
 * "NULL" and -1. `size` is not examined: `text` must hold 124 bytes. */
SYSCOMMON_API int Get_PW(char *text, int size);
/* The boot loader's version ("V" and the word after "MM-Test Ver", without terminator:
 * `text` must be zeroed and hold the word) and build date (year, month, day, hour from the
 * high byte down) read from partition 0: 1 found, 0 otherwise. */
SYSCOMMON_API int Scf_getMMVer_Time_String(char *text, uint32_t *packed_date);

/* Record tables: `count` records of `record_size` bytes; a record is in use when the 32-bit
 * word at `key_offset` is non-zero. The layout is trusted (key_offset + 4 <= record_size). */
/* Moves the records in use to the front, in order; the freed records are zeroed. */
SYSCOMMON_API void readjust_config_sequence(void *table, int record_size, int count, int key_offset);
/* Zeroes every record whose key is in `keys` (at most 16, ended by 0), then compacts:
 * 1 when a record was cleared, else 0. */
SYSCOMMON_API int Delete_And_Fill_CFG_Data_For_VLan_Change(void *table, int record_size, int count, int key_offset,
                                                          const uint32_t *keys);

/* ==== Configuration record field access ==== */

/* A field of a configuration record, as the management programs' descriptor tables hold
 * it (33 words; the words not named here belong to those programs). */
typedef struct CfgFieldDesc {
  uint32_t type;         /* 1..18, see setconfig */
  uint32_t size;         /* bytes of one element; for type 10 the width in bits */
  uint32_t words2_17[16];
  uint32_t bit_position; /* type 10: the field's lowest bit, counted from 1 */
  uint32_t offset;       /* byte offset of the field in the record */
  uint32_t words20_32[13];
} CfgFieldDesc;

SYSCOMMON_STATIC_ASSERT(sizeof(CfgFieldDesc) == 132, "field descriptor: 33 words");
SYSCOMMON_STATIC_ASSERT(offsetof(CfgFieldDesc, size) == 4, "descriptor size word");
SYSCOMMON_STATIC_ASSERT(offsetof(CfgFieldDesc, bit_position) == 72, "descriptor word 18");
SYSCOMMON_STATIC_ASSERT(offsetof(CfgFieldDesc, offset) == 76, "descriptor word 19");

enum {
  CFG_FIELD_INDEX_NONE = -1,  /* count_valid_data: no field, the count is returned as is */
  CFG_BITS_STORAGE_8 = 1,     /* type 10: index argument giving the storage word's width */
  CFG_BITS_STORAGE_16 = 2,
  CFG_BITS_STORAGE_32 = 4
};

/* The text and raw results of readconfig (except types 2 and 9); overwritten by each call. */
SYSCOMMON_API extern char readconfig_msg[128];

/* Stores `value` (text when `text` is non-zero, else raw bytes) into element `index` of the
 * field (for type 10, `index` is the storage width: 1 = 8 bits, 2 = 16, else 32):
 *   1, 8, 17, 18  integer of size 1, 2 or 4 (other sizes: 4), little-endian: atoi / raw
 *   2, 15         text cut to size - 1 and terminated
 *   3, 14         IPv4 in network order: dotted text (inet_addr; "" is 0.0.0.0) / 4 bytes
 *   4             6-byte MAC parsed with mac_addr (text in both modes)
 *   7             4 raw bytes copied
 *   10            bit field: text number / first byte, 16- or 32-bit word by storage width;
 *                 bits cleared, then value << (position - 1) added (not cut to the width)
 * Returns the number stored for integers and bit fields, else 0. Other types, and a bit
 * position of 0 or above 32, leave the record unchanged. Nothing is checked: base,
 * descriptor and index are trusted. */
SYSCOMMON_API int setconfig(void *base, const void *value, const CfgFieldDesc *desc, int text, int index);
/* Fetches element `index` of the field: integers "%d" (2-byte signed) or their bytes;
 * type 2 the stored text itself; 15 "1"/"0" of its first byte; 3, 14 dotted text or the
 * bytes; 4 "%02x:..:%02x" or 6 bytes; 9 the stored 32-bit word as a pointer; 10 "%d" of
 * the field or its 4 bytes. Results other than types 2 and 9 are readconfig_msg (empty for
 * types that cannot be read). Raw copies stop at 128 bytes. Unchecked like setconfig. */
SYSCOMMON_API char *readconfig(const void *base, const CfgFieldDesc *desc, int text, int index);
/* Entries of `table` (`count` of `entry_size` bytes) in use before the first empty one,
 * judged by field `field` of `descs` (type 2: its first byte; else all its bytes zero);
 * `field` -1 returns `count`. Unchecked. */
SYSCOMMON_API int count_valid_data(const CfgFieldDesc *descs, int field, const void *table, int count,
                                   int entry_size);

/* ==== SSH service ==== */

/* Rewrites "/etc/sshd_config" (ClientAlive lines only for an idle limit above 0 minutes):
 * 1, or 0 after "fopen error". */
SYSCOMMON_API int write_sshd_config(int idle_minutes);
/* Stops sshd and removes the SSH console sessions (type 3); when enabled rewrites the
 * configuration and starts "/sbin/sshd -p PORT". Returns 0. */
SYSCOMMON_API int uiMgmt_setSSH(int enable, int port, int idle_minutes);

/* ==== USB configuration backup ==== */
/* The stick is mounted at "/mnt/ramdisk/usb_tarn"; backups go to its "tarn" directory. */

/* Mode 0: mounts the first device "fdisk -ul" lists (when there is one) and waits 1 s;
 * mode 1: unmounts and removes the mount point. */
SYSCOMMON_API void xbk02_run(int mode);
/* Mode 0 mounts `device` (entering or creating the mount point and "tarn"); mode 1
 * unmounts and removes the mount point. Changes the working directory. */
SYSCOMMON_API void USB_Mount(int mode, const char *device);
/* "Sys.ini" and "%02x%02x%02x.ini" (last bytes of eth0's MAC) from the archive; reports
 * event 20 and returns that report's result. */
SYSCOMMON_API int copy_configure_file_to_usb(void);
/* His_ini/MMDDHHMM.ini (local time) from the archive; chdir's result. */
SYSCOMMON_API int copy_configure_file_to_usb_date(void);
/* Moves the system, firewall and VPN log exports to Sys.log, Firewall.log, VPN.log;
 * chdir's result. */
SYSCOMMON_API int copy_log_file_to_usb(void);
/* localtime(*value) after the time zone rules were read again (TZ is left as
 * "/etc/localtime"); localtime's static result. Not thread-safe (setenv). */
SYSCOMMON_API struct tm *tarn_macro_localtime(const time_t *value);

SYSCOMMON_END_DECLS

#endif
