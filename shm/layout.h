// Byte layouts of the shared segments and the registry of their keys. These layouts are
// an inter-process format: every process that maps a segment agrees on every offset.
#ifndef SYSCOMMON_SHM_LAYOUT_H
#define SYSCOMMON_SHM_LAYOUT_H

#include <cstddef>
#include <cstdint>

#include "platform/segment.h"
#include "syscommon/session.h"
#include "syscommon/shm.h"

namespace syscommon::shm {

// System segment (7890). Reserved regions are neither read nor written by the library.
struct SysSegment {
  uint32_t agent_filter;           // 0
  uint8_t reserved0[16];
  uint32_t reboot_flag;            // 20
  uint32_t route_reconf;           // 24
  uint32_t nat_bind_vrrp_ready;    // 28
  uint32_t allow_vrrp_ready;       // 32
  uint8_t reserved1[384];
  // The system data record (shm_sysGetData) runs from here to sfp/process words.
  uint8_t sys_data_head[4];        // 420
  uint32_t device_mode;            // 424
  uint8_t reserved2[4];
  uint32_t droute_idx;             // 432
  uint8_t reserved3[8];
  uint32_t timezone;               // 444
  ShmIfsConf ifs;                  // 448
  ShmVlanIfRecord vlan_if[16];     // 1472
  ShmBridgeRecord bridge[4];       // 2944
  ShmZoneBridgeRecord zone[4];     // 3296
  ShmVlanInfoRecord vlan_info[16]; // 5936
  ShmPortVlanRecord port_vlan[14]; // 6224
  uint32_t port_member[16];        // 6336
  uint32_t port_link_status;       // 6400
  char fiber_speed[2][32];         // 6404
  uint8_t sfp_eeprom[2][128];      // 6468
  uint8_t sfp_eeprom_ddm[2][128];  // 6724
  uint32_t vconfig_process;        // 6980
  uint32_t brg_process;            // 6984
  uint32_t ipclient_process;       // 6988
  uint32_t auth_cert_process;      // 6992 (last word of the system data record)
  uint8_t reserved4[48];
  uint8_t security_config[4];      // 7044
  uint32_t port_trk_grp[10];       // 7048
  uint32_t trk_mem[4];             // 7088
  uint32_t watchdog_webs;          // 7104
  uint32_t agent_state;            // 7108
};

static_assert(sizeof(SysSegment) == 7112);
static_assert(offsetof(SysSegment, reboot_flag) == 20);
static_assert(offsetof(SysSegment, allow_vrrp_ready) == 32);
static_assert(offsetof(SysSegment, sys_data_head) == 420);
static_assert(offsetof(SysSegment, device_mode) == 424);
static_assert(offsetof(SysSegment, droute_idx) == 432);
static_assert(offsetof(SysSegment, timezone) == 444);
static_assert(offsetof(SysSegment, ifs) == 448);
static_assert(offsetof(SysSegment, vlan_if) == 1472);
static_assert(offsetof(SysSegment, bridge) == 2944);
static_assert(offsetof(SysSegment, zone) == 3296);
static_assert(offsetof(SysSegment, vlan_info) == 5936);
static_assert(offsetof(SysSegment, port_vlan) == 6224);
static_assert(offsetof(SysSegment, port_member) == 6336);
static_assert(offsetof(SysSegment, port_link_status) == 6400);
static_assert(offsetof(SysSegment, fiber_speed) == 6404);
static_assert(offsetof(SysSegment, sfp_eeprom) == 6468);
static_assert(offsetof(SysSegment, sfp_eeprom_ddm) == 6724);
static_assert(offsetof(SysSegment, vconfig_process) == 6980);
static_assert(offsetof(SysSegment, auth_cert_process) == 6992);
static_assert(offsetof(SysSegment, security_config) == 7044);
static_assert(offsetof(SysSegment, port_trk_grp) == 7048);
static_assert(offsetof(SysSegment, trk_mem) == 7088);
static_assert(offsetof(SysSegment, watchdog_webs) == 7104);
static_assert(offsetof(SysSegment, agent_state) == 7108);

inline constexpr std::size_t kSysDataOffset = 420;
static_assert(offsetof(SysSegment, reserved4) - kSysDataOffset == SHM_SYS_DATA_SIZE);

// Device identity (7893).
struct IdentitySegment {
  uint8_t eeprom_info[SHM_EEPROM_INFO_SIZE];  // 0
  char model_name[68];                        // 700
  uint8_t modbus_global[SHM_MODBUS_GLOBAL_SIZE];  // 768
  uint8_t reserved[4];
};
static_assert(sizeof(IdentitySegment) == 784 && offsetof(IdentitySegment, modbus_global) == 768);
inline constexpr std::size_t kEepromPortInfoOffset = 380;
inline constexpr std::size_t kEepromPortInfoModuleStride = 516;

// Multicast table (7895).
inline constexpr int kMcastEntries = 256;
struct McastSegment {
  ShmMcastEntry entry[kMcastEntries];
  int32_t count;  // high-water mark of used entries
};
static_assert(sizeof(McastSegment) == 6148 && offsetof(McastSegment, count) == 6144);

// Event-log configuration (7902): only these words are interpreted here.
inline constexpr std::size_t kLogVpnWordOffsets[4] = {0, 32, 48, 64};

// Boot state (7904).
struct BootSegment {
  uint32_t fast_bootup;
  uint32_t port_member_ready;
};
static_assert(sizeof(BootSegment) == 8);

// Login and session data (7906); the records are those of the session code.
struct SessionSegment {
  uint32_t web_max_users;     // 0
  uint32_t con_max_users;     // 4
  uint32_t web_user_count;    // 8
  uint32_t con_user_count;    // 12
  uint32_t sys_timeout;       // 16
  PasswordPolicyConfig pw_policy;                          // 20
  LoginLockoutConfig lockout_config;                       // 28
  uint8_t eventlog_mgmt[SHM_EVENTLOG_MGMT_CONFIG_SIZE];    // 40
  WebSessionList web_sessions;                             // 44
  ConSessionList con_sessions;                             // 284
  LoginLockoutList lockout_list;                           // 668
  CsrfTokenList csrf_tokens;                               // 748
};
static_assert(sizeof(SessionSegment) == 908);
static_assert(offsetof(SessionSegment, pw_policy) == 20 && offsetof(SessionSegment, lockout_config) == 28);
static_assert(offsetof(SessionSegment, eventlog_mgmt) == 40 && offsetof(SessionSegment, web_sessions) == 44);
static_assert(offsetof(SessionSegment, con_sessions) == 284 && offsetof(SessionSegment, lockout_list) == 668);
static_assert(offsetof(SessionSegment, csrf_tokens) == 748);

// Port utilisation (7908): ten 16-byte records, the overload-relay word last in each.
inline constexpr std::size_t kPortUtilRecord = 16;
inline constexpr std::size_t kOverloadRelayWord = 12;

// The registry: semaphore key, shared-memory key, size.
inline constexpr SegmentKeys kSystem{1492, 7890, 7112, true};
inline constexpr SegmentKeys kRedundancy{1493, 7891, 40};
inline constexpr SegmentKeys kIdentity{1506, 7893, 784};
inline constexpr SegmentKeys kAccounts{1507, 7894, 1112};
inline constexpr SegmentKeys kMcast{1509, 7895, 6148};
inline constexpr SegmentKeys kCertGen{1510, 7896, 4};
inline constexpr SegmentKeys kVpnMode{1511, 7897, 4};
inline constexpr SegmentKeys kVlanCpu{1512, 7898, 128};
inline constexpr SegmentKeys kLed{1513, 7899, 3};
inline constexpr SegmentKeys kMroute{1514, 7900, 8};
inline constexpr SegmentKeys kBackup{1516, 7901, 4};
inline constexpr SegmentKeys kLogConfig{1519, 7902, 296};
inline constexpr SegmentKeys kSecurity{1520, 7903, 4};
inline constexpr SegmentKeys kBoot{1521, 7904, 8};
inline constexpr SegmentKeys kSession{1522, 7906, 908};
inline constexpr SegmentKeys kSnmp{1503, 7905, 1};
inline constexpr SegmentKeys kSfpDdm{1524, 7907, 464};
inline constexpr SegmentKeys kPortUtil{1526, 7908, 160};
inline constexpr SegmentKeys kFwEm{1527, 7909, 4};
inline constexpr SegmentKeys kResource{1528, 7910, 24};
inline constexpr SegmentKeys kSessionLogTime{1529, 7911, 4};

// Semaphores without a segment of their own.
inline constexpr int kSemIpsecLog = 1517;    // IPsec log file
inline constexpr int kSemLogFiles = 1519;    // also guards 7902
inline constexpr int kSemReserved1523 = 1523;
inline constexpr int kSemReserved1525 = 1525;

static_assert(sizeof(ShmRedundancy) == kRedundancy.size);
static_assert(sizeof(ShmVlanCpuPortRecord) * 16 == kVlanCpu.size);
static_assert(sizeof(IdentitySegment) == kIdentity.size);
static_assert(sizeof(McastSegment) == kMcast.size);
static_assert(sizeof(SessionSegment) == kSession.size);
static_assert(sizeof(BootSegment) == kBoot.size);
static_assert(2 * SHM_SFP_DDM_SIZE == kSfpDdm.size);

}  // namespace syscommon::shm

#define SYS_OFF(field) offsetof(::syscommon::shm::SysSegment, field)

#endif
