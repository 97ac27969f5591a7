// Accessors of the small segments: identity, accounts, flags, multicast routing, USB
// backup state, log configuration, security status, boot state, SNMP, SFP diagnostics,
// port utilisation, FwEM, resource usage and the last session-log time.
#include <cstring>

#include "shm/access.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {
constexpr bool valid_security_index(int index) { return index >= 0 && index < 5; }
}  // namespace

extern "C" {

// ---- Device identity (7893)
SYSCOMMON_API int shm_sysSetEepromInfo(const void *rec) { return copy_in(kIdentity, 0, rec, SHM_EEPROM_INFO_SIZE); }
SYSCOMMON_API int shm_sysGetEepromInfo(void *rec) { return copy_out(kIdentity, 0, rec, SHM_EEPROM_INFO_SIZE); }
SYSCOMMON_API int shm_sysGetEepromInfoPortInfo(void *buf, int a, int b) {
  std::size_t off = index_offset(kEepromPortInfoOffset, kEepromPortInfoModuleStride, a);
  return copy_out(kIdentity, index_offset(off, SHM_EEPROM_PORT_INFO_SIZE, b), buf, SHM_EEPROM_PORT_INFO_SIZE);
}
SYSCOMMON_API int shm_sysSetModelName(const char *name, int len) {
  CriticalSection cs(kIdentity);
  std::strncpy(reinterpret_cast<char *>(cs.base()) + offsetof(IdentitySegment, model_name), name,
               static_cast<std::size_t>(len));
  return 0;
}
SYSCOMMON_API int shm_sysGetModelName(char *buf, int len) {
  std::memset(buf, 0, static_cast<std::size_t>(len));
  CriticalSection cs(kIdentity);
  std::strncpy(buf, reinterpret_cast<const char *>(cs.base()) + offsetof(IdentitySegment, model_name),
               static_cast<std::size_t>(len));
  return 0;
}
SYSCOMMON_API int shm_sysSetModbusGlobal(const void *rec) {
  return copy_in(kIdentity, offsetof(IdentitySegment, modbus_global), rec, SHM_MODBUS_GLOBAL_SIZE);
}

// ---- Accounts (7894)
SYSCOMMON_API int shm_sysSetUseraccount(const void *rec) { return copy_in(kAccounts, 0, rec, SHM_USER_ACCOUNT_SIZE); }
SYSCOMMON_API int shm_sysGetUseraccount(void *rec) { return copy_out(kAccounts, 0, rec, SHM_USER_ACCOUNT_SIZE); }

// ---- Certificate-generation and VPN-mode flags: the low 8 bits stored as a word
SYSCOMMON_API int shm_sysSetCerGenCheckFlag(uint32_t flag) { return set<uint32_t>(kCertGen, 0, flag & 0xffu); }
SYSCOMMON_API uint32_t shm_sysGetCerGenCheckFlag(void) { return read_field<uint32_t>(kCertGen, 0); }
SYSCOMMON_API int shm_sysSetModeVPNFlag(uint32_t flag) { return set<uint32_t>(kVpnMode, 0, flag & 0xffu); }
SYSCOMMON_API uint32_t shm_sysGetModeVPNFlag(void) { return read_field<uint32_t>(kVpnMode, 0); }

// ---- Multicast routing (7900)
SYSCOMMON_API int shm_ipMrouteSetMode(uint32_t mode) { return set(kMroute, 0, mode); }
SYSCOMMON_API uint32_t shm_ipMrouteGetMode(void) { return read_field<uint32_t>(kMroute, 0); }
SYSCOMMON_API int shm_igmpsnoopingSetEnable(uint32_t on) { return set(kMroute, 4, on); }
SYSCOMMON_API uint32_t shm_igmpsnoopingGetEnable(void) { return read_field<uint32_t>(kMroute, 4); }

// ---- USB backup accessory (7901): mode, mount, operation, import state
SYSCOMMON_API int shm_xbk02SetMode(const uint8_t *p) { return copy_in(kBackup, 0, p, 1); }
SYSCOMMON_API int shm_xbk02GetMode(uint8_t *p) { return copy_out(kBackup, 0, p, 1); }
SYSCOMMON_API int shm_xbk02SetMount(const uint8_t *p) { return copy_in(kBackup, 1, p, 1); }
SYSCOMMON_API int shm_xbk02GetMount(uint8_t *p) { return copy_out(kBackup, 1, p, 1); }
SYSCOMMON_API int shm_xbk02SetOp(const uint8_t *p) { return copy_in(kBackup, 2, p, 1); }
SYSCOMMON_API int shm_xbk02GetOp(uint8_t *p) { return copy_out(kBackup, 2, p, 1); }
SYSCOMMON_API int shm_xbk02SetImportState(const uint8_t *p) { return copy_in(kBackup, 3, p, 1); }
SYSCOMMON_API int shm_xbk02GetImportState(uint8_t *p) { return copy_out(kBackup, 3, p, 1); }

// ---- Event-log configuration (7902)
SYSCOMMON_API int shm_logSetConfig(const void *rec) { return copy_in(kLogConfig, 0, rec, SHM_LOG_CONFIG_SIZE); }
SYSCOMMON_API int shm_logGetLogConfig(void *rec) { return copy_out(kLogConfig, 0, rec, SHM_LOG_CONFIG_SIZE); }
SYSCOMMON_API int shm_logSetVpn(const uint32_t *rec) {
  CriticalSection cs(kLogConfig);
  for (std::size_t i = 0; i < 4; ++i) cs.store(kLogVpnWordOffsets[i], rec[2 + i]);
  return 0;
}
SYSCOMMON_API int shm_logGetVpn(uint32_t *rec) {
  CriticalSection cs(kLogConfig);
  for (std::size_t i = 0; i < 4; ++i) rec[2 + i] = cs.load<uint32_t>(kLogVpnWordOffsets[i]);
  return 0;
}
SYSCOMMON_API int shm_logGetLogConfigVpnFlash(void) {
  CriticalSection cs(kLogConfig);
  return cs.load<uint32_t>(0) == 1 && cs.load<uint32_t>(64) == 1 ? 1 : 0;
}

// ---- Security status (7903); index 4 is the byte just past the segment, kept as it is
SYSCOMMON_API int shm_set_security_status(int index) {
  if (!valid_security_index(index)) return -1;
  return set<uint8_t>(kSecurity, static_cast<std::size_t>(index), 1);
}
SYSCOMMON_API int shm_clean_security_status(int index) {
  if (!valid_security_index(index)) return -1;
  return set<uint8_t>(kSecurity, static_cast<std::size_t>(index), 0);
}
SYSCOMMON_API int shm_read_security_status(int index) {
  if (!valid_security_index(index)) return -1;
  return read_field<uint8_t>(kSecurity, static_cast<std::size_t>(index));
}
SYSCOMMON_API int shm_clean_all_security_status(void) { return set<uint32_t>(kSecurity, 0, 0); }

// ---- Boot state (7904)
SYSCOMMON_API int shm_set_fast_bootup_state(const uint32_t *p) {
  return set(kBoot, offsetof(BootSegment, fast_bootup), *p);
}
SYSCOMMON_API uint32_t shm_get_fast_bootup_state(void) {
  return read_field<uint32_t>(kBoot, offsetof(BootSegment, fast_bootup));
}
SYSCOMMON_API int shm_set_vconf_port_member_ready(uint32_t value) {
  return set(kBoot, offsetof(BootSegment, port_member_ready), value);
}
SYSCOMMON_API uint32_t shm_get_vconf_port_member_ready(void) {
  // Without a fast boot the port members are ready from the start.
  BootSegment boot = read_field<BootSegment>(kBoot, 0);
  return boot.fast_bootup == 0 ? 1u : boot.port_member_ready;
}

// ---- SNMP response status (7905)
SYSCOMMON_API int shm_snmpSetResponseStatus(const uint8_t *p) { return copy_in(kSnmp, 0, p, 1); }
SYSCOMMON_API int shm_snmpGetResponseStatus(uint8_t *p) { return copy_out(kSnmp, 0, p, 1); }

// ---- SFP diagnostics (7907)
SYSCOMMON_API int shm_set_sfp_ddm(int sfp, const void *rec) {
  return copy_in(kSfpDdm, index_offset(0, SHM_SFP_DDM_SIZE, sfp), rec, SHM_SFP_DDM_SIZE);
}
SYSCOMMON_API int shm_get_sfp_ddm(int sfp, void *rec) {
  return copy_out(kSfpDdm, index_offset(0, SHM_SFP_DDM_SIZE, sfp), rec, SHM_SFP_DDM_SIZE);
}

// ---- Port utilisation and overload relay (7908)
SYSCOMMON_API int shm_set_port_utilization(const void *rec) {
  return copy_in(kPortUtil, 0, rec, SHM_PORT_UTILIZATION_SET_SIZE);
}
SYSCOMMON_API int shm_get_port_utilization(void *buf, int len) {
  return copy_out(kPortUtil, 0, buf, static_cast<std::size_t>(len));
}
SYSCOMMON_API int shm_set_port_overload_relay(const uint32_t *arr, int n) {
  CriticalSection cs(kPortUtil);
  for (int i = 0; i < n; ++i) cs.store(index_offset(kOverloadRelayWord, kPortUtilRecord, i), arr[i]);
  return 0;
}
SYSCOMMON_API int shm_get_port_overload_relay(uint32_t *arr, int n) {
  CriticalSection cs(kPortUtil);
  for (int i = 0; i < n; ++i) arr[i] = cs.load<uint32_t>(index_offset(kOverloadRelayWord, kPortUtilRecord, i));
  return 0;
}

// ---- Firmware emergency flag (7909): normalised to 1 / 0 both ways
SYSCOMMON_API int shm_sysSet_FwEM(uint32_t value) { return set<uint32_t>(kFwEm, 0, value == 1 ? 1u : 0u); }
SYSCOMMON_API int shm_sysGet_FwEM(void) { return read_field<uint32_t>(kFwEm, 0) == 1 ? 1 : 0; }

// ---- Resource usage (7910) and last session-log time (7911)
SYSCOMMON_API int shm_set_resource_usage(const void *rec) { return copy_in(kResource, 0, rec, SHM_RESOURCE_USAGE_SIZE); }
SYSCOMMON_API int shm_get_resource_usage(void *rec) { return copy_out(kResource, 0, rec, SHM_RESOURCE_USAGE_SIZE); }
SYSCOMMON_API int shm_set_last_session_log_time(uint32_t t) { return set(kSessionLogTime, 0, t); }
SYSCOMMON_API uint32_t shm_get_last_session_log_time(void) { return read_field<uint32_t>(kSessionLogTime, 0); }

}  // extern "C"
