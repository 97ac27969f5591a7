/*
 * Shared state store: the registry of System V segments and their typed accessors.
 *
 * Every accessor locks the segment's semaphore, attaches, copies, detaches and unlocks
 * inside one call. All integers in the segments are little-endian (the device and the
 * development hosts are). Unless a comment says otherwise, setters and record copies
 * return 0, getters return the stored value unchanged, and no length, pointer or index is
 * checked: a caller's buffer must hold at least the record's size.
 */
#ifndef SYSCOMMON_SHM_H
#define SYSCOMMON_SHM_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#include "syscommon/export.h"

SYSCOMMON_BEGIN_DECLS

/* ---- Records kept in the segments (layouts shared by every process) ---- */

/* WAN interface record (system segment, 2 at offset 448). */
typedef struct ShmWanRecord {
  uint32_t conn_type;
  uint32_t link;
  uint32_t ip;
  uint32_t mask;
  uint32_t gateway;
  uint32_t vid; /* 0 = record unused */
  char ifname[32];
  uint8_t reserved[8];
} ShmWanRecord;

/* Interface configuration block (system segment offset 448, 1024 bytes). */
typedef struct ShmIfsConf {
  ShmWanRecord wan[2];
  uint8_t reserved0[168];
  uint8_t filter_global[24]; /* segment offset 744 */
  uint8_t reserved1[12];
  uint8_t vrrp_global[4]; /* segment offset 780 */
  uint8_t reserved2[688];
} ShmIfsConf;

/* VLAN interface record (16 at offset 1472). */
typedef struct ShmVlanIfRecord {
  char ifname[32];     /* kernel name "eth0.5"; first byte 0 = unused */
  char usr_name[32];   /* name shown to users */
  uint32_t vid;        /* 0 = unused */
  uint32_t ip;
  uint32_t mask;
  uint32_t routing;
  uint32_t member;     /* port member mask */
  uint32_t link;
  uint32_t attribute;
} ShmVlanIfRecord;

/* Bridge record (4 at offset 2944). */
typedef struct ShmBridgeRecord {
  char ifname[32];
  char usr_name[32];
  uint32_t id;
  uint32_t ip;
  uint32_t mask;
  uint8_t enable; /* 1 = enabled */
  uint8_t reserved0[3];
  uint32_t link;
  uint8_t reserved1[4];
} ShmBridgeRecord;

/* Zone-bridge record (4 at offset 3296). */
typedef struct ShmZoneBridgeRecord {
  char ifname[32];
  char usr_name[32];
  uint32_t id;
  uint32_t ip;
  uint32_t mask;
  uint8_t enable;
  uint8_t reserved0[7];
  int32_t member_vid[16]; /* 0 or negative = empty slot */
  char member_name[16][32];
} ShmZoneBridgeRecord;

/* VLAN information record (16 at offset 5936): VLAN id, then the VLAN daemon's bytes. */
typedef struct ShmVlanInfoRecord {
  uint16_t vid; /* 0 ends the list */
  uint8_t data[16];
} ShmVlanInfoRecord;

/* Port VLAN plan record (14 at offset 6224). */
typedef struct ShmPortVlanRecord {
  uint16_t pvid;
  uint8_t reserved[4];
  uint16_t in_use;
} ShmPortVlanRecord;

/* VLAN CPU-port record (segment 7898: 16 of them). */
typedef struct ShmVlanCpuPortRecord {
  uint32_t vid; /* 0 = free */
  uint32_t mask;
} ShmVlanCpuPortRecord;

/* Multicast entry (segment 7895: 256 of them, then an int32 high-water count). */
typedef struct ShmMcastEntry {
  uint16_t vid;      /* 0 = any VLAN */
  uint8_t mac[6];    /* all zero = free slot */
  uint8_t data[16];  /* owned by the multicast code */
} ShmMcastEntry;

/* Ring record inside the Rapid Loop v2 configuration; ports are counted from 1. */
typedef struct ShmRl2Ring {
  uint8_t enabled;
  uint8_t reserved[7];
  uint8_t port1;
  uint8_t port2;
} ShmRl2Ring;

/* Rapid Loop v2 configuration (redundancy segment offset 4, 28 bytes). */
typedef struct ShmRl2Config {
  uint32_t enabled;
  ShmRl2Ring ring[2];
  uint8_t rest[4];
} ShmRl2Config;

/* Whole redundancy segment (7891, 40 bytes) as copied by shm_rdndntGetAll. */
typedef struct ShmRedundancy {
  uint8_t protocol;
  uint8_t reserved0[3];
  ShmRl2Config rl2;
  uint8_t reserved1[8];
} ShmRedundancy;

/* Sizes of the records that this library copies without interpreting them. */
enum {
  SHM_SYS_DATA_SIZE = 6576,         /* shm_sysGetData */
  SHM_EEPROM_INFO_SIZE = 700,       /* device-identity record */
  SHM_EEPROM_PORT_INFO_SIZE = 32,
  SHM_MODBUS_GLOBAL_SIZE = 12,
  SHM_USER_ACCOUNT_SIZE = 720,
  SHM_FILTER_GLOBAL_SIZE = 24,
  SHM_VRRP_GLOBAL_SIZE = 4,
  SHM_SFP_EEPROM_SIZE = 128,
  SHM_LOG_CONFIG_SIZE = 296,
  SHM_SFP_DDM_SIZE = 232,
  SHM_PORT_UTILIZATION_SET_SIZE = 1600, /* what shm_set_port_utilization copies */
  SHM_PORT_UTILIZATION_RECORD_SIZE = 16,
  SHM_RESOURCE_USAGE_SIZE = 24,
  SHM_PW_POLICY_CONFIG_SIZE = 8,
  SHM_LOGIN_LOCKOUT_CONFIG_SIZE = 12,
  SHM_EVENTLOG_MGMT_CONFIG_SIZE = 4,
  SHM_WEB_SESSION_LIST_SIZE = 240,
  SHM_CON_SESSION_LIST_SIZE = 384,
  SHM_LOCKOUT_LIST_SIZE = 80,
  SHM_CSRF_TOKEN_LIST_SIZE = 160,
  SHM_TIMEZONE_COUNT = 63
};

SYSCOMMON_STATIC_ASSERT(sizeof(ShmWanRecord) == 64, "WAN record");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmWanRecord, vid) == 20 && offsetof(ShmWanRecord, ifname) == 24, "WAN");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmIfsConf) == 1024, "interface block");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmIfsConf, filter_global) == 744 - 448, "filter global");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmIfsConf, vrrp_global) == 780 - 448, "VRRP global");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmVlanIfRecord) == 92, "VLAN interface record");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmVlanIfRecord, vid) == 64 && offsetof(ShmVlanIfRecord, attribute) == 88, "VLAN");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmBridgeRecord) == 88, "bridge record");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmBridgeRecord, enable) == 76 && offsetof(ShmBridgeRecord, link) == 80, "bridge");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmZoneBridgeRecord) == 660, "zone-bridge record");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmZoneBridgeRecord, member_vid) == 84, "zone members");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmZoneBridgeRecord, member_name) == 148, "zone member names");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmVlanInfoRecord) == 18, "VLAN information record");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmPortVlanRecord) == 8 && offsetof(ShmPortVlanRecord, in_use) == 6, "port plan");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmVlanCpuPortRecord) == 8, "CPU port record");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmMcastEntry) == 24 && offsetof(ShmMcastEntry, data) == 8, "multicast entry");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmRl2Ring) == 10 && offsetof(ShmRl2Ring, port1) == 8, "ring record");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmRl2Config) == 28 && offsetof(ShmRl2Config, ring) == 4, "RL2 config");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmRl2Config, rest) == 24, "RL2 config rest");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmRedundancy) == 40 && offsetof(ShmRedundancy, rl2) == 4, "redundancy");

/* ---- Registry ---- */

/* Creates every semaphore and zeroes every segment (run once at system start; running it
 * again wipes all shared state). It sets every semaphore but the system segment's free, as
 * start-up requires: run while another process holds one of those locks, it frees that
 * lock under the holder. Returns what the last shm_leaveCS returned. */
SYSCOMMON_API int shm_init(void);
/* Creates and zeroes the VLAN CPU-port segment (7898). */
SYSCOMMON_API int shm_vlanCpuInfoInit(void);
/* Creates and zeroes the multicast routing segment (7900). */
SYSCOMMON_API int shm_ipMrouteInit(void);

/* ---- System segment (7890) ---- */

/* Copies the 6576-byte system data record (segment offsets 420..6995). */
SYSCOMMON_API int shm_sysGetData(void *buf);
SYSCOMMON_API uint32_t shm_device_mode(void);
SYSCOMMON_API uint32_t shm_droute_idx(void);
SYSCOMMON_API uint32_t shm_port_link_status(void);

SYSCOMMON_API void shm_control_to_send_config_to_agent_filter(uint32_t value);
SYSCOMMON_API uint32_t shm_check_ok_to_send_config_to_agent_filter(void);
SYSCOMMON_API int shm_set_reboot_flag(uint32_t value);
SYSCOMMON_API uint32_t shm_get_reboot_flag(void);
SYSCOMMON_API int set_shm_route_reconf_flag(uint32_t bits);   /* ORs bits in */
SYSCOMMON_API int clear_shm_route_reconf_flag(uint32_t bits); /* clears bits */
SYSCOMMON_API uint32_t get_shm_route_reconf_flag(void);
SYSCOMMON_API int shm_set_Flag_nat_bind_vrrp_ready(void);
SYSCOMMON_API int shm_clr_Flag_nat_bind_vrrp_ready(void);
SYSCOMMON_API uint32_t shm_get_Flag_nat_bind_vrrp_ready(void);
SYSCOMMON_API int shm_set_Flag_allow_vrrp_ready(void);
SYSCOMMON_API int shm_clr_Flag_allow_vrrp_ready(void);
SYSCOMMON_API uint32_t shm_get_Flag_allow_vrrp_ready(void);
/* Time-zone index (0..62); not range-checked. */
SYSCOMMON_API int shm_set_timezone(int index);
SYSCOMMON_API int shm_get_timezone(void);
SYSCOMMON_API int shm_sysSetFilterGlobal(const void *rec); /* 24 bytes */
SYSCOMMON_API int shm_sysGetFilterGlobal(void *rec);
SYSCOMMON_API int shm_sysSetVrrpGlobal(const void *rec); /* 4 bytes */
SYSCOMMON_API int shm_sysGetVrrpGlobal(void *rec);
SYSCOMMON_API uint32_t shm_get_mgmt_vlan_vid(void);
/* 1 if SFP port `sfp`'s speed text contains "1G", else 0 (`sfp` unchecked). */
SYSCOMMON_API int shm_get_fiber_speed(int sfp);
SYSCOMMON_API int shm_get_sfp_Eeprom(int sfp, void *buf);      /* 128 bytes */
SYSCOMMON_API int shm_set_sfp_Eeprom_ddm(int sfp, const void *buf);
SYSCOMMON_API int shm_get_sfp_Eeprom_ddm(int sfp, void *buf);
/* The two setters below run "cat /proc/tarn/ifsInfo" after leaving the section. */
SYSCOMMON_API int set_shm_vconfig_process(uint32_t value);
SYSCOMMON_API uint32_t get_shm_vconfig_process(void);
SYSCOMMON_API int set_shm_brg_process(uint32_t value);
SYSCOMMON_API uint32_t get_shm_brg_process(void);
SYSCOMMON_API int set_shm_ipclient_process(uint32_t value);
SYSCOMMON_API uint32_t get_shm_ipclient_process(void);
SYSCOMMON_API int set_shm_auth_cert_process(uint32_t value);
SYSCOMMON_API uint32_t get_shm_auth_cert_process(void);
/* One byte per index at 7044; the index is not checked. */
SYSCOMMON_API int shm_set_security_config(uint8_t value, int index);
SYSCOMMON_API int shm_read_security_config(int index);
/* on != 0 stores the whole word 1; on == 0 clears only bit 0; the getter returns bit 0. */
SYSCOMMON_API int shm_set_whatchdog_webs(int on);
SYSCOMMON_API int shm_get_whatchdog_webs(void);
SYSCOMMON_API int shm_sysGetAgentState(uint32_t *out);
/* Polls the agent-state word up to 60 times, 2 s apart, for bit 0 (VLAN configuration
 * done): 1 as soon as it is set, 0 after the 60th clear read. */
SYSCOMMON_API int Ssys_isVconfigDone(void);

/* ---- Redundancy (7891) ---- */
SYSCOMMON_API int shm_rdndntSetProtocol(int protocol); /* stores the low byte */
SYSCOMMON_API int shm_rdndntGetProtocol(void);
SYSCOMMON_API int shm_rdndntGetAll(void *buf);        /* 40 bytes (ShmRedundancy) */
SYSCOMMON_API int shm_rl2SetConfig(const void *cfg);  /* 28 bytes (ShmRl2Config) */
/* Ring (1 or 2) whose enabled record names port `port` (counted from 0), else 0. */
SYSCOMMON_API int shm_rdndntIsRl2RingPort(int port);
/* The same for a port counted from 1. */
SYSCOMMON_API int Srdndnt_isRedundantPort(int port);

/* ---- Device identity (7893) ---- */
SYSCOMMON_API int shm_sysSetEepromInfo(const void *rec); /* 700 bytes */
SYSCOMMON_API int shm_sysGetEepromInfo(void *rec);
/* Copies the 32 bytes at 380 + 516 * a + 32 * b; a and b are not checked. */
SYSCOMMON_API int shm_sysGetEepromInfoPortInfo(void *buf, int a, int b);
/* Bounded copies of at most `len` bytes of the model name at offset 700; the getter zeroes
 * `len` bytes first and leaves the name unterminated when it fills `len`. `len` is not
 * checked against the room in the segment. */
SYSCOMMON_API int shm_sysSetModelName(const char *name, int len);
SYSCOMMON_API int shm_sysGetModelName(char *buf, int len);
SYSCOMMON_API int shm_sysSetModbusGlobal(const void *rec); /* 12 bytes */

/* ---- Accounts (7894) ---- */
SYSCOMMON_API int shm_sysSetUseraccount(const void *rec); /* 720 bytes */
SYSCOMMON_API int shm_sysGetUseraccount(void *rec);

/* ---- Multicast table (7895): 0 on success, -1 otherwise ---- */
SYSCOMMON_API int shm_mcast_set(const void *entry);   /* ShmMcastEntry */
SYSCOMMON_API int shm_mcast_get(void *entry);         /* in: vid + mac; out: whole entry */
SYSCOMMON_API int shm_mcast_remove(const void *entry);

/* ---- Small flag segments ---- */
SYSCOMMON_API int shm_sysSetCerGenCheckFlag(uint32_t flag); /* stores the low 8 bits */
SYSCOMMON_API uint32_t shm_sysGetCerGenCheckFlag(void);
SYSCOMMON_API int shm_sysSetModeVPNFlag(uint32_t flag);     /* stores the low 8 bits */
SYSCOMMON_API uint32_t shm_sysGetModeVPNFlag(void);

/* ---- LEDs (7899): byte 0 fault, 1 master, 2 coupling ---- */
SYSCOMMON_API int shm_ledGetAllLedBits(uint8_t *fault, uint8_t *master, uint8_t *coupling);
SYSCOMMON_API int shm_ledSetMaster(uint8_t bits);
SYSCOMMON_API int shm_ledClearMaster(uint8_t bits);
SYSCOMMON_API int shm_ledSetCoupling(uint8_t bits);
SYSCOMMON_API int shm_ledClearCoupling(uint8_t bits);
SYSCOMMON_API void Ssc_setMasterLed(int bits);
SYSCOMMON_API void Ssc_clearMasterLed(int bits);
SYSCOMMON_API void Ssc_setCouplingLed(int bits);
SYSCOMMON_API void Ssc_clearCouplingLed(int bits);
/* The fault LED byte is never written by this library: these do nothing. */
SYSCOMMON_API void Ssc_setFaultLed(int bits);
SYSCOMMON_API void Ssc_clearFaultLed(int bits);

/* ---- Multicast routing (7900) ---- */
SYSCOMMON_API int shm_ipMrouteSetMode(uint32_t mode);
SYSCOMMON_API uint32_t shm_ipMrouteGetMode(void);
SYSCOMMON_API int shm_igmpsnoopingSetEnable(uint32_t on);
SYSCOMMON_API uint32_t shm_igmpsnoopingGetEnable(void);

/* ---- USB backup accessory state (7901): one byte each through a pointer ---- */
SYSCOMMON_API int shm_xbk02SetMode(const uint8_t *p);
SYSCOMMON_API int shm_xbk02GetMode(uint8_t *p);
SYSCOMMON_API int shm_xbk02SetMount(const uint8_t *p);
SYSCOMMON_API int shm_xbk02GetMount(uint8_t *p);
SYSCOMMON_API int shm_xbk02SetOp(const uint8_t *p);
SYSCOMMON_API int shm_xbk02GetOp(uint8_t *p);
SYSCOMMON_API int shm_xbk02SetImportState(const uint8_t *p);
SYSCOMMON_API int shm_xbk02GetImportState(uint8_t *p);

/* ---- Event-log configuration (7902, 296 bytes) ---- */
SYSCOMMON_API int shm_logSetConfig(const void *rec);
SYSCOMMON_API int shm_logGetLogConfig(void *rec);
/* Move the caller's words 2, 3, 4, 5 to / from the segment's words at 0, 32, 48, 64. */
SYSCOMMON_API int shm_logSetVpn(const uint32_t *rec);
SYSCOMMON_API int shm_logGetVpn(uint32_t *rec);
/* 1 if the words at 0 and 64 both equal 1, else 0. */
SYSCOMMON_API int shm_logGetLogConfigVpnFlash(void);

/* ---- Security status (7903): valid index 0..4 (4 is the byte past the segment, kept
 * as it is); any other index returns -1 without entering the section ---- */
SYSCOMMON_API int shm_set_security_status(int index);
SYSCOMMON_API int shm_clean_security_status(int index);
SYSCOMMON_API int shm_read_security_status(int index);
SYSCOMMON_API int shm_clean_all_security_status(void);

/* ---- Boot state (7904) ---- */
SYSCOMMON_API int shm_set_fast_bootup_state(const uint32_t *p);
SYSCOMMON_API uint32_t shm_get_fast_bootup_state(void);
SYSCOMMON_API int shm_set_vconf_port_member_ready(uint32_t value);
/* 1 whenever the fast-bootup word is 0, else the stored word. */
SYSCOMMON_API uint32_t shm_get_vconf_port_member_ready(void);

/* ---- SNMP response status (7905) ---- */
SYSCOMMON_API int shm_snmpSetResponseStatus(const uint8_t *p);
SYSCOMMON_API int shm_snmpGetResponseStatus(uint8_t *p);

/* ---- Login and session data (7906) ---- */
SYSCOMMON_API int shm_sysSet_web_multiSession_maxUser(uint32_t n);
SYSCOMMON_API uint32_t shm_sysGet_web_multiSession_maxUser(void);
SYSCOMMON_API int shm_sysSet_Con_multiSession_maxUser(uint32_t n);
SYSCOMMON_API uint32_t shm_sysGet_Con_multiSession_maxUser(void);
SYSCOMMON_API int shm_sysSet_usercount(uint32_t n);
SYSCOMMON_API uint32_t shm_sysGet_usercount(void);
SYSCOMMON_API int shm_sysSet_con_usercount(uint32_t n);
SYSCOMMON_API uint32_t shm_sysGet_con_usercount(void);
SYSCOMMON_API int shm_sysSet_cf_sys_timeout(uint32_t n);
SYSCOMMON_API uint32_t shm_sysGet_cf_sys_timeout(void);
SYSCOMMON_API int shm_sysSet_pwPolicy_config(const void *rec);     /* 8 bytes */
SYSCOMMON_API int shm_sysGet_pwPolicy_config(void *rec);
SYSCOMMON_API int shm_sysSet_loginLockout_config(const void *rec); /* 12 bytes */
SYSCOMMON_API int shm_sysGet_loginLockout_config(void *rec);
SYSCOMMON_API int shm_sysSet_eventlogMgmt_config(const void *rec); /* 4 bytes */
SYSCOMMON_API int shm_sysGet_eventlogMgmt_config(void *rec);
SYSCOMMON_API int shm_sysSet_multiSession_List(const void *rec);   /* 240 bytes */
SYSCOMMON_API int shm_sysGet_multiSession_List(void *rec);
SYSCOMMON_API int shm_sysSet_con_multiSession_List(const void *rec); /* 384 bytes */
SYSCOMMON_API int shm_sysGet_con_multiSession_List(void *rec);
SYSCOMMON_API int shm_sysSet_login_lockout_List(const void *rec);  /* 80 bytes */
SYSCOMMON_API int shm_sysGet_login_lockout_List(void *rec);
SYSCOMMON_API int shm_sysSet_csrf_Token_List(const void *rec);     /* 160 bytes */
SYSCOMMON_API int shm_sysGet_csrf_Token_List(void *rec);

/* ---- SFP diagnostics (7907): 232 bytes at 232 * sfp; sfp (0 or 1) not checked ---- */
SYSCOMMON_API int shm_set_sfp_ddm(int sfp, const void *rec);
SYSCOMMON_API int shm_get_sfp_ddm(int sfp, void *rec);

/* ---- Port utilisation (7908): 10 records of 16 bytes ---- */
/* Copies 1600 bytes from `rec` to the start of the 160-byte segment: that is what the
 * management processes expect, and the copy stays within the segment's mapped page.
 * `rec` must hold 1600 bytes. */
SYSCOMMON_API int shm_set_port_utilization(const void *rec);
SYSCOMMON_API int shm_get_port_utilization(void *buf, int len); /* len not checked */
/* Move arr[i] to / from the last word of port record i, for i < n (n not checked). */
SYSCOMMON_API int shm_set_port_overload_relay(const uint32_t *arr, int n);
SYSCOMMON_API int shm_get_port_overload_relay(uint32_t *arr, int n);

/* ---- Firmware emergency flag (7909): stored and read back as 1 or 0 ---- */
SYSCOMMON_API int shm_sysSet_FwEM(uint32_t value);
SYSCOMMON_API int shm_sysGet_FwEM(void);

/* ---- Resource usage (7910, 24 bytes) and last session-log time (7911) ---- */
SYSCOMMON_API int shm_set_resource_usage(const void *rec);
SYSCOMMON_API int shm_get_resource_usage(void *rec);
SYSCOMMON_API int shm_set_last_session_log_time(uint32_t t);
SYSCOMMON_API uint32_t shm_get_last_session_log_time(void);

/* ---- Time zone conversions ---- */
/* Shift *t in place by the offset of the stored time-zone index (local adds it, Gmt
 * subtracts it) and return gmtime(t). The index is not checked against the 63 entries. */
SYSCOMMON_API struct tm *tarn_localtime(time_t *t);
SYSCOMMON_API struct tm *tarn_Gmttime(time_t *t);

/* ---- Interfaces, VLANs, bridges and zone bridges (system segment 7890) ----
 *
 * VLAN ids are passed as int and compared with the stored words as the stored type
 * (a u32 field matches (uint32_t)vid, a u16 port VLAN id never matches a negative vid).
 * IPv4 addresses and masks are uint32_t as stored (network byte order, as in s_addr).
 * Name outputs are caller buffers of SHM_IFNAME_SIZE (32) bytes; a stored name that fills
 * all 32 bytes is copied without a terminating NUL. Unless a comment says otherwise,
 * indices are not checked: an index outside the table reads or writes past it.
 *
 * The bulk setters tell the kernel side about every interface with the shell command
 * echo "N-KERNELNAME-USERNAME-ID" > /proc/tarn/ifsInfo; names go into that command as
 * given (the caller must not pass shell metacharacters in them). */

enum {
  SHM_IFNAME_SIZE = 32,
  SHM_IFS_CONF_SIZE = 1024,      /* get_shm_ifs_conf */
  SHM_VLAN_CONF_SIZE = 1472,     /* get_shm_vlan_conf: 16 ShmVlanIfRecord */
  SHM_VPLAN_CONF_SIZE = 112,     /* get_shm_vplan_conf: 14 ShmPortVlanRecord */
  SHM_BRG_CONF_SIZE = 352,       /* get_shm_brg_conf: 4 ShmBridgeRecord */
  SHM_ZONE_BRG_CONF_SIZE = 2640, /* get_shm_zone_brg_conf: 4 ShmZoneBridgeRecord */
  SHM_VLAN_IF_COUNT = 16,
  SHM_BRIDGE_COUNT = 4,
  SHM_ZONE_BRIDGE_COUNT = 4,
  SHM_ZONE_MEMBER_COUNT = 16,
  SHM_TRUNK_GROUP_COUNT = 4
};

/* Caller's VLAN interface record: input of set_shm_vconf_info_all, set_shm_vconf_info and
 * shm_vconf_member_update (76 bytes, nineteen u32 words; the unnamed words are the
 * caller's own). */
typedef struct ShmVlanIfConfig {
  uint32_t reserved0[2];
  uint32_t attribute; /* word 2, stored at +88 of the VLAN interface record */
  uint32_t vid;       /* word 3 */
  uint32_t ip;        /* word 4 */
  uint32_t mask;      /* word 5 */
  uint32_t reserved1[2];
  uint32_t routing;   /* word 8 */
  uint32_t reserved2[2];
  char usr_name[32];  /* byte 44: user interface name, NUL-terminated */
} ShmVlanIfConfig;

/* Caller's bridge record: input of set_shm_brg_info_all (56 bytes). */
typedef struct ShmBridgeConfig {
  char usr_name[32];
  uint8_t enable; /* 1 = enabled */
  uint8_t reserved0[3];
  uint32_t ip;
  uint32_t mask;
  uint32_t id;
  uint8_t reserved1[8];
} ShmBridgeConfig;

/* Caller's zone-bridge record: input of set_shm_zone_brg_info_all (632 bytes). */
typedef struct ShmZoneBridgeConfig {
  char usr_name[32];
  uint8_t enable;
  uint8_t reserved0[3];
  uint32_t ip;
  uint32_t mask;
  uint32_t id;
  uint8_t reserved1[8];
  int32_t member_vid[16]; /* 0 or negative = empty slot */
  char member_name[16][32];
} ShmZoneBridgeConfig;

SYSCOMMON_STATIC_ASSERT(sizeof(ShmVlanIfConfig) == 76, "caller VLAN record");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmVlanIfConfig, attribute) == 8 && offsetof(ShmVlanIfConfig, vid) == 12,
                        "caller VLAN record words 2, 3");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmVlanIfConfig, mask) == 20 && offsetof(ShmVlanIfConfig, routing) == 32,
                        "caller VLAN record words 5, 8");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmVlanIfConfig, usr_name) == 44, "caller VLAN record name");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmBridgeConfig) == 56 && offsetof(ShmBridgeConfig, enable) == 32, "caller bridge");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmBridgeConfig, ip) == 36 && offsetof(ShmBridgeConfig, id) == 44,
                        "caller bridge fields");
SYSCOMMON_STATIC_ASSERT(sizeof(ShmZoneBridgeConfig) == 632 && offsetof(ShmZoneBridgeConfig, id) == 44,
                        "caller zone bridge");
SYSCOMMON_STATIC_ASSERT(offsetof(ShmZoneBridgeConfig, member_vid) == 56 &&
                            offsetof(ShmZoneBridgeConfig, member_name) == 120,
                        "caller zone bridge members");

/* -- Writers of the VLAN interface table -- */

/* For i = 0..15: fills VLAN record i from recs[i] (kernel name "%s.%d" of prefix and VLAN
 * id, user name, VLAN id, address, mask, routing flag, attribute; member mask and link
 * are kept) and runs echo "i+1-KERNEL-USER-VID" > /proc/tarn/ifsInfo before the next
 * record, all inside the system segment's lock. Returns 0. */
SYSCOMMON_API int set_shm_vconf_info_all(const char *prefix, const ShmVlanIfConfig *recs);
/* The same for record i alone (i not checked). A null rec zeroes the 92-byte record and
 * the command carries i+1, two empty names and 0. The command runs after the lock is
 * released; returns system()'s result. */
SYSCOMMON_API int set_shm_vconf_info(int i, const char *prefix, const ShmVlanIfConfig *rec);
/* get != 0: *flag = record i's routing flag; get == 0: stores *flag. Returns 0. */
SYSCOMMON_API int shm_vconf_info_routing(int get, int i, uint32_t *flag);
/* Sets *ip and *mask to 0 first in both directions, so get == 0 always writes address 0
 * and mask 0 into record i (this is how callers clear an address). Returns 0. */
SYSCOMMON_API int shm_vconf_info_ip_mask(int get, int i, uint32_t *ip, uint32_t *mask);
/* For each caller record (at most 16, ending at VLAN id 0) and each VLAN information record
 * of vinfo (at most 16, ending at VLAN id 0) with the same VLAN id, copies the segment's
 * port member word of that information record into the VLAN record's member mask.
 * Returns 0. */
SYSCOMMON_API int shm_vconf_member_update(const ShmVlanIfConfig *recs, const ShmVlanInfoRecord *vinfo);

/* -- Port VLAN plan (14 records) and trunk tables -- */

/* Port p above 13 (or negative) returns p without writing; else stores the low 16 bits
 * of vid as the port VLAN id and returns 0. */
SYSCOMMON_API int set_shm_port_vlan_id(int p, int vid);
/* Port VLAN id of port p; 0 for p above 9 (or negative). */
SYSCOMMON_API int get_shm_port_vlan_id(int p);
/* Zeroes both trunk tables, stores arr[0..9] as the port-to-group table, and sets bit p of
 * group g's member mask for each port p with group g in 1..4 (other non-zero values are
 * stored in the port table but belong to no member mask). Returns 0. */
SYSCOMMON_API int set_shm_trk_mem(const uint32_t *arr);
/* Trunk group (0 = none) of port p; 0 for p above 9 (or negative). */
SYSCOMMON_API int get_shm_port_to_trk_grp(int p);
/* 9 + group for a trunked port, else p; 0 for p above 9 (or negative). */
SYSCOMMON_API int get_shm_port_to_trk_id(int p);
/* *out = 0, then the member mask of group g when g is 1..4. Returns 0. */
SYSCOMMON_API int get_shm_trk_mem(int g, uint32_t *out);
/* Lowest port (0..9) of group g whose link is up (Ssc_getPortLinkState); -1 when g is
 * outside 1..4, the group is empty or no member has link. */
SYSCOMMON_API int Ssc_getLeadingPortOfTrunkGroupByGroup(int g);
/* Virtual trunk ports 10..13 stand for groups 1..4; any other port for its own group.
 * A port in no group comes back unchanged; else the group's leading port, or -1. */
SYSCOMMON_API int Ssc_virtualTrunkPort2Port(int p);

/* -- Whole-table copies -- */
SYSCOMMON_API int get_shm_ifs_conf(void *buf);      /* SHM_IFS_CONF_SIZE bytes */
SYSCOMMON_API int get_shm_vlan_conf(void *buf);     /* SHM_VLAN_CONF_SIZE bytes */
SYSCOMMON_API int get_shm_vplan_conf(void *buf);    /* SHM_VPLAN_CONF_SIZE bytes */
SYSCOMMON_API int get_shm_brg_conf(void *buf);      /* SHM_BRG_CONF_SIZE bytes */
SYSCOMMON_API int get_shm_zone_brg_conf(void *buf); /* SHM_ZONE_BRG_CONF_SIZE bytes */

/* -- VLAN CPU-port segment (7898) -- */
/* ORs mask into the record of vid, or claims the first free record (VLAN id 0) for it;
 * with no free record nothing changes. Returns 0. */
SYSCOMMON_API int shm_vlanEnableCpuPort(int vid, uint32_t mask);
/* Clears mask bits in the record of vid; when its mask becomes 0 the record is zeroed and
 * the result is 1. Otherwise (also when vid has no record) 0. */
SYSCOMMON_API int shm_vlanDisableCpuPort(int vid, uint32_t mask);
/* 1 and the 8-byte record of vid copied to *out; 0 (out untouched) when none. */
SYSCOMMON_API int shm_vlanGetCpuPortInfo(int vid, ShmVlanCpuPortRecord *out);

/* -- Interface lookups. All return 0 unless stated. -- */

/* idx 0: WAN record 0's kernel name; idx 1..16: VLAN record idx-1's kernel name when it is
 * non-empty; anything else (other idx included) leaves out as "". */
SYSCOMMON_API int get_shm_interface_name(int idx, char *out);
/* Kernel name of VLAN record i, "" when unused. */
SYSCOMMON_API int get_shm_vlan_interface_name(int i, char *out);
/* Zeroes 32 bytes of out. vid above 7999: the first bridge with that id, then the first
 * zone bridge with that id (a zone-bridge match overrides a bridge match). Otherwise the
 * first of WAN records 0..1, then VLAN records 0..15, with that VLAN id. out stays empty
 * when nothing matches. */
SYSCOMMON_API int get_shm_interface_name_by_vid(int vid, char *out);
/* Address of the first WAN record (0..1), then VLAN record, with this VLAN id; 0 if none. */
SYSCOMMON_API uint32_t get_shm_interface_ip_by_vid(int vid);
/* Zeroes *ip and *mask, then copies those of WAN record 0 or else the first VLAN record
 * with this VLAN id (WAN record 1 is not searched). */
SYSCOMMON_API int get_shm_ip_mask_by_vid(int vid, uint32_t *ip, uint32_t *mask);
/* Link state of the first WAN record (0..1), then VLAN record, with this VLAN id;
 * *link is untouched when none. */
SYSCOMMON_API int get_shm_interface_link_by_vid(int vid, uint32_t *link);
/* Zeroes 32 bytes of out. vid != 0 matching WAN record 0 or 1 gives "WAN" or "LAN"; else
 * the first VLAN record with the id gives its user name; else the first bridge with the
 * id, overridden by the first zone bridge with the id, gives that user name. out stays
 * empty when nothing matches. */
SYSCOMMON_API int get_shm_usr_interface_name_by_vid(int vid, char *out);
/* WAN records 0..1 by address give "WAN" / "LAN" (an unused record has address 0, so ip 0
 * gives "WAN"); else the first VLAN record with the address gives its user name. out is
 * untouched when nothing matches. */
SYSCOMMON_API int get_shm_usr_interface_name_by_ip(uint32_t ip, char *out);
/* "eth0.5": the number after the first '.' is a VLAN id for
 * get_shm_usr_interface_name_by_vid; otherwise a leading "br" is skipped and the rest is a
 * bridge id for get_shm_bridge_UsrName_by_gid (numbers read as atoi does). */
SYSCOMMON_API int get_shm_usr_interface_name_by_interface_name(const char *name, char *out);
/* type 0: "WAN" when idx is 0 and WAN record 0 is in use; type 1: user name of VLAN record
 * idx (< 16) when in use; type 2: user name of bridge idx (< 4) whose enable byte is 1;
 * type 3: "1/%d" (idx + 1) for port idx (<= 9) whose port-in-use value is non-zero.
 * Returns 1 when a name was written, else 0 (out untouched). */
SYSCOMMON_API int get_shm_usr_interface_name_by_idx_and_type(int idx, int type, char *out);
/* "1/%d" of the first port (0..13) of the port VLAN plan with this port VLAN id; "1/1"
 * when no port has it (the callers' default). The two functions are the same. */
SYSCOMMON_API int get_shm_usr_port_name_by_vid(int vid, char *out);
SYSCOMMON_API int get_shm_port_number_by_vid(int vid, char *out);
/* VLAN id of WAN record 0, then of the first VLAN record, whose kernel name equals name;
 * -1 for an empty name or no match. */
SYSCOMMON_API int get_shm_vid_by_interface_name(const char *name);
/* Index of the first VLAN record with this VLAN id; -1 if none. */
SYSCOMMON_API int get_shm_vconfIdx_by_vid(int vid);
/* VLAN id of VLAN information record i; -1 for i outside 0..15. */
SYSCOMMON_API int get_shm_vlan_vid_by_index(int i);
/* 1 and the first VLAN information record with this VLAN id copied to *out (when out is
 * not null); 0 if none. */
SYSCOMMON_API int get_shm_vlan_info_by_vid(int vid, ShmVlanInfoRecord *out);
SYSCOMMON_API uint32_t get_shm_vconf_link(int i);
/* VLAN id of WAN record 0 (the WAN VLAN). */
SYSCOMMON_API int get_shm_wan_interface_vid(void);
/* idx below 1: link state of WAN record idx; else of VLAN record idx-1. */
SYSCOMMON_API uint32_t shm_link_state(int idx);
/* Fields of WAN record w; w = 255 stands for the record named by the default-route index
 * (except for shm_get_wan_ConnType). */
SYSCOMMON_API uint32_t shm_wan_gw(int w);
SYSCOMMON_API uint32_t shm_ifs_ip(int w);
SYSCOMMON_API uint32_t shm_get_wan_ConnType(int w);
SYSCOMMON_API int shm_wan_ip(int w, uint32_t *ip, uint32_t *mask);
/* Address and mask of VLAN record 0 (the LAN). */
SYSCOMMON_API int shm_lan_ip(uint32_t *ip, uint32_t *mask);
/* port counted from 1 (plan record port-1, port not checked): 2 when the port is in use
 * or its port VLAN id is a member id of an enabled zone bridge (empty slots hold 0, so a
 * port VLAN id 0 matches them), else 0 when the port VLAN id is the WAN VLAN id, else 1. */
SYSCOMMON_API uint8_t shm_check_port_type(int port);
/* "WAN" (any case) resolves on WAN record 0: -1 when it is unused, else *vid and 0.
 * Otherwise the first used VLAN record whose user name equals name ignoring case gives
 * *vid and the index i + number of WAN records in use. -1 when nothing matches. */
SYSCOMMON_API int shm_getVidByUsrIfaceName(const char *name, int *vid);
/* Zeroes *ip and *mask, then the same search compared case-sensitively on the first
 * strlen(name) characters only: any prefix of "WAN" ("" included) selects WAN record 0
 * (-1 when unused, else 0), and name may be a prefix of a VLAN record's user name. A
 * match stores address and mask and writes "eth0.%d" with its VLAN id into ifname. */
SYSCOMMON_API int shm_getIpMaskByUsrIfaceName(const char *name, char *ifname, uint32_t *ip, uint32_t *mask);

/* -- Bridges and zone bridges -- */

/* For b = 0..3: kernel name "%s%d" of prefix and bridge id, user name, id, address, mask
 * and enable byte from recs[b] (link state kept), then echo "b+17-KERNEL-BRG-ID" >
 * /proc/tarn/ifsInfo, all inside the system segment's lock. Returns 0. */
SYSCOMMON_API int set_shm_brg_info_all(const char *prefix, const ShmBridgeConfig *recs);
/* The same for the zone bridges, members included; the commands also number z + 17. */
SYSCOMMON_API int set_shm_zone_brg_info_all(const char *prefix, const ShmZoneBridgeConfig *recs);
/* Kernel name of bridge b, "" when unused. */
SYSCOMMON_API int get_shm_brg_interface_name(int b, char *out);
SYSCOMMON_API uint32_t get_shm_brg_IP_by_index(int b);
SYSCOMMON_API int get_shm_brg_enable_status(int b);
SYSCOMMON_API int get_shm_zone_brg_enable_status(int z);
SYSCOMMON_API uint32_t shm_brg_link_state(int b);
/* Address of the first enabled bridge with this id, else of the first enabled zone bridge
 * with it; 0 if none. */
SYSCOMMON_API uint32_t get_shm_brg_IP_by_gid(int id);
/* Zeroes 32 bytes of out; the user name of the last bridge with this id, enabled or not. */
SYSCOMMON_API int get_shm_bridge_UsrName_by_gid(int id, char *out);
/* Zero 32 bytes of out; 1 and "BRG" when record 0 (only) of the bridge / zone-bridge
 * table has this id, else 0. */
SYSCOMMON_API int get_shm_brg_interface_name_by_vid(int vid, char *out);
SYSCOMMON_API int get_shm_zone_brg_interface_name_by_vid(int vid, char *out);
/* 1 and *vid = bridge 0's id when name is exactly "BRG" (case-sensitive); else 0. */
SYSCOMMON_API int shm_getVidByBridgeIfName(const char *name, int *vid);
/* Zeroes 32 bytes of out; for each zone in turn the name of its first member slot with
 * this VLAN id, a later zone overwriting an earlier one; enable bytes are not looked at. */
SYSCOMMON_API int get_shm_zoneBrg_zone_Name_by_vid(int vid, char *out);
/* 1 if a member slot of any zone bridge (enabled or not) holds vid, else 0. Empty slots
 * hold 0, so vid 0 matches them. */
SYSCOMMON_API int is_zoneBasebrg_member(int vid);
/* 1 if a member slot of a zone bridge with a non-zero enable byte holds vid, else 0. */
SYSCOMMON_API int shm_check_vid_in_zone_brg(int vid);
/* 2 when a zone bridge's enable byte is 1, else 1 when a bridge's is, else 0. */
SYSCOMMON_API int shm_get_brg_mode(void);
/* 0 for the VLAN id of WAN record 0 or 1, or a vid of 4096 or more; else 1 and "eth0.%d"
 * written to out when a port (0..9) with this port VLAN id is in use. */
SYSCOMMON_API int get_slave_interface_in_bridge(int vid, char *out);
/* 0 when some port (0..9) is not in use and its port VLAN id is not the WAN VLAN id;
 * else 1. */
SYSCOMMON_API uint8_t check_all_ports_are_bridge_port(void);
/* 1 when every port (0..9) with a non-zero port VLAN id is a positive member id of an
 * enabled zone bridge; else 0. */
SYSCOMMON_API int is_all_ports_are_zone_bridge(void);

SYSCOMMON_END_DECLS

#endif
