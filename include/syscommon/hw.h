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

SYSCOMMON_END_DECLS

#endif
