/*
 * Device hardware description shared through the identity segment (7893).
 *
 * The device-identity record (700 bytes at offset 0 of the segment) is filled from the
 * identity EEPROM at start-up and copied whole with shm_sysSetEepromInfo /
 * shm_sysGetEepromInfo; one port's 32-byte entry is read with
 * shm_sysGetEepromInfoPortInfo(buf, 0, port).
 *
 * Layout (little-endian, identical on every process of the device):
 *
 *   offset  size  field
 *        0     4  serial         serial number (the EEPROM's 32-bit value)
 *        4    16  serial_text    full serial-number text, zero-padded
 *       20     6  mac            base MAC address
 *       26     1  hw_version     hardware version (1 or 2)
 *       27     1  port_count     number of described ports (10 on this device)
 *       28    64  sfp_text       transceiver text of each pluggable slot, 2 x 32 bytes,
 *                                zero-terminated; an empty text means no module fitted
 *       92   256  port_name      SHM_PORT_NAME_COUNT port names of 16 characters each,
 *                                zero-padded and NOT terminated when all 16 are used
 *                                (read them with a length bound)
 *      348    32  reserved
 *      380   320  port           10 port entries of 32 bytes (module 0, ports 0..9):
 *                                +0 type byte, +1 presence byte, +2 description text
 *
 * Type byte: bits 0-1 maximum speed (0 = 10/100, 1 = gigabit), bit 2 fibre. A port exists
 * when its type or presence byte is nonzero.
 */
#ifndef SYSCOMMON_HW_H
#define SYSCOMMON_HW_H

#include <stddef.h>
#include <stdint.h>

#include "syscommon/export.h"
#include "syscommon/shm.h"

SYSCOMMON_BEGIN_DECLS

enum {
  SHM_PORT_COUNT = 10,      /* physical ports described by the record */
  SHM_SFP_SLOT_COUNT = 2,   /* pluggable-transceiver slots */
  SHM_PORT_NAME_COUNT = 16, /* entries of the port-name list */
  SHM_PORT_NAME_LEN = 16,   /* characters per port name (no room for a terminator) */
  SHM_PORT_DESC_LEN = 30,   /* bytes of a port's description text */
  SHM_SFP_TEXT_LEN = 32,    /* bytes of a transceiver text */
  SHM_PORT_TYPE_SPEED_MASK = 0x03,
  SHM_PORT_TYPE_FIBER = 0x04
};

/* One port's hardware entry (32 bytes). */
typedef struct ShmEepromPortInfo {
  uint8_t type;                  /* bits 0-1 speed (0 = 10/100, 1 = gigabit), bit 2 fibre */
  uint8_t present;               /* nonzero = port fitted */
  char desc[SHM_PORT_DESC_LEN];  /* description text, zero-terminated unless full */
} ShmEepromPortInfo;

/* The device-identity record (700 bytes). */
typedef struct ShmEepromInfo {
  uint32_t serial;
  char serial_text[16];
  uint8_t mac[6];
  uint8_t hw_version;
  uint8_t port_count;
  char sfp_text[SHM_SFP_SLOT_COUNT][SHM_SFP_TEXT_LEN];
  char port_name[SHM_PORT_NAME_COUNT][SHM_PORT_NAME_LEN];
  uint8_t reserved[32];
  ShmEepromPortInfo port[SHM_PORT_COUNT];
} ShmEepromInfo;

SYSCOMMON_STATIC_ASSERT(sizeof(ShmEepromPortInfo) == SHM_EEPROM_PORT_INFO_SIZE, "port entry");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmEepromPortInfo, desc) == 2, "port description");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmEepromInfo) == SHM_EEPROM_INFO_SIZE, "device-identity record");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmEepromInfo, serial_text) == 4, "serial text");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmEepromInfo, mac) == 20, "MAC");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmEepromInfo, hw_version) == 26, "hardware version");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmEepromInfo, sfp_text) == 28, "transceiver texts");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmEepromInfo, port_name) == 92, "port-name list");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmEepromInfo, port) == 380, "port information block");

/* ==== Device hardware access ====
 *
 * Identity EEPROM ("/proc/tarn/eeprom"): serial number at 32 (4 bytes, little-endian),
 * burn-in time at 64 (4 bytes), end-of-test flag at 80, serial text at 624 (up to 12
 * bytes, a byte of 255 ends it). Bytes past the end of a short EEPROM file read as 255,
 * like erased cells. GPIO outputs are active low: a value written to "/proc/tarn/gpio_clr"
 * switches a LED or relay on, to "/proc/tarn/gpio_set" off.
 */

/* Input bits of power inputs 1 and 2 in the word of Get_gpio_state: 32, 16. */
SYSCOMMON_API extern const uint32_t GPIO_PWR_FLAG[2];

/* Reads `n` bytes at `off` of the EEPROM into buf: fclose's result; -1 after "eeprom fopen
 * error" when the file cannot be opened. */
SYSCOMMON_API int Read_EEPROM(long off, void *buf, int n);
/* Serial number, read once per process; 0 when the EEPROM cannot be opened. */
SYSCOMMON_API uint32_t Get_serno(void);
/* Serial-number text (at most 12 characters), read once per process; the storage belongs to
 * the library. Null when the EEPROM cannot be opened. */
SYSCOMMON_API char *Get_sernofull(void);
/* End-of-test flag byte; 0 when the EEPROM cannot be opened. */
SYSCOMMON_API int Get_EOT_Flag(void);
/* Four burn-in bytes into buf; always 0. */
SYSCOMMON_API int Scf_getBurnHour(void *buf);
/* Writes "EOTSETON" (flag 256) or "EOTSETOF" and the 4-byte minutes 48 bytes before the end
 * of partition 1: 1, or -1 when the flash writer fails. */
SYSCOMMON_API int Ssys_setEOTFlagAndBurnHour(int flag, uint32_t minutes);
/* 1 when "/proc/tarn/hw_version" starts with '0', else 2 (also when it cannot be opened). */
SYSCOMMON_API int Get_HW_version(void);
/* No sensor: -1. */
SYSCOMMON_API int Get_Thermal(void);
/* MAC address of "eth0" into buf (6 bytes): Get_IF_MAC's result. */
SYSCOMMON_API int Get_Mac(uint8_t *buf);

/* Input word of "/proc/tarn/gpio_get" with bits 32 and 16 inverted; 0 when unreadable. */
SYSCOMMON_API uint32_t Get_gpio_state(void);
/* 1 when digital input n (bit 16384 << n, n modulo 256) is clear, else 0. */
SYSCOMMON_API int GetGpio_DI(int n);
/* Digital output n (32768 << n), fault relay (256): on through gpio_clr; return 0. */
SYSCOMMON_API int WriteToGpio_DO(int on, int n);
SYSCOMMON_API int WriteToGpio_FAULT(int on);
/* Status LED: mode 64 or 128 selects a colour; any other mode switches both off. 0. */
SYSCOMMON_API int WriteToGpio_STATUS_LED(int mode);
SYSCOMMON_API int set_default_led_status(void);
/* VPN tunnel LED (131072) on hardware version 2 only: printf's result of "msg = %s\n"
 * with the command; 0 when nothing is done. */
SYSCOMMON_API int led_setVPNTunnelLED(int on);
/* Secured-mode LED (code 0xNCA: LED number, colour, action). The LED file is not known in
 * this version: prints "%s fopen error\n" with an empty name and returns -1. */
SYSCOMMON_API int WriteToI2c_LED(uint32_t code);
/* Watchdog restart: "echo 1 > /proc/tarn/wd_reboot"; system's result. */
SYSCOMMON_API int WD_enable(void);
SYSCOMMON_API int Kernel_reboot(void);
/* "echo 8192 >/sys/devices/platform/octeon-gpio/octeon_gpio_clr"; system's result. */
SYSCOMMON_API int WD_reboot(void);
/* Event bits: power input i: bit i + 2 when its bit is set, else bit i; digital input 0:
 * bit 14 when GetGpio_DI(0) is 1, else bit 15. */
SYSCOMMON_API uint32_t Get_hw_event_flag(void);
/* Fills out[34] from the alarm configuration config[35] (word k of out carries config word
 * k + 1 when its alarm is active, else 0); always 1. */
SYSCOMMON_API int Get_alarm_flag(const uint32_t *config, uint32_t *out);

/* Copies "100M, RJ45" (11 bytes) into out; returns out. */
SYSCOMMON_API char *get_port_media_type(int port, char *out);
/* 0 when the first 7 bytes of an SFP vendor field are "Tarnnet", else -1. */
SYSCOMMON_API int Ssys_MGBIC_checkVenderData(const void *buf);
SYSCOMMON_API int Ssys_getSfpVendorDataSize(void);
/* 1 when byte 96 of SFP port sfp's diagnostic record is not 255, else 0. Unchecked as the
 * store's accessor: sfp must be 0 or 1. */
SYSCOMMON_API int Sddm_isSupportddm(int sfp);
/* Cuts text (a buffer of `size` bytes) down in place to its first line, then to the part
 * from the first of start_chars (if given), then to the part before the first delimiter
 * (if given): 1, or 0 with text emptied when a step finds nothing (0 for null text). */
SYSCOMMON_API int capture_string_only(char *text, int size, const char *start_chars, const char *delimiters);
/* Switch register read / write through "ethsw_diag". */
SYSCOMMON_API int tarn_ethsw_diag_get(int a, int b);
SYSCOMMON_API int tarn_ethsw_diag_set(int a, int b, int c);
/* MAC of the ring's designated master from the n-th "masterId:'" (n from 1) of the
 * "rl2ctrl" report into out[0..5] (out: len bytes, len >= 18); 0, or -1 when the report is
 * empty or unreadable. */
SYSCOMMON_API int SsysGetDesignatedMasterAddr(int n, uint8_t *out, int len);
/* A new zero-filled 25-byte buffer with the 24-character emergency text (caller frees it),
 * or null. */
SYSCOMMON_API char *Ssys_getFwEMU(void);

SYSCOMMON_END_DECLS

#endif
