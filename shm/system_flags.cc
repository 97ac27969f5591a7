// Single words and small records of the system segment (7890).
#include <unistd.h>

#include <cstring>
#include <string_view>

#include "platform/host.h"
#include "shm/access.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

uint32_t get_word(std::size_t off) { return read_field<uint32_t>(kSystem, off); }

int set_word(std::size_t off, uint32_t value) { return set(kSystem, off, value); }

// The VLAN and bridge daemons read the kernel's interface picture after a process state
// change; the command runs once the section is left.
int set_word_and_show_ifs(std::size_t off, uint32_t value) {
  set_word(off, value);
  run_command("cat " + rooted("/proc/tarn/ifsInfo"));
  return 0;
}

}  // namespace

extern "C" {

SYSCOMMON_API int shm_sysGetData(void *buf) { return copy_out(kSystem, kSysDataOffset, buf, SHM_SYS_DATA_SIZE); }

SYSCOMMON_API uint32_t shm_device_mode(void) { return get_word(SYS_OFF(device_mode)); }
SYSCOMMON_API uint32_t shm_droute_idx(void) { return get_word(SYS_OFF(droute_idx)); }
SYSCOMMON_API uint32_t shm_port_link_status(void) { return get_word(SYS_OFF(port_link_status)); }

SYSCOMMON_API void shm_control_to_send_config_to_agent_filter(uint32_t value) {
  set_word(SYS_OFF(agent_filter), value);
}
SYSCOMMON_API uint32_t shm_check_ok_to_send_config_to_agent_filter(void) { return get_word(SYS_OFF(agent_filter)); }

SYSCOMMON_API int shm_set_reboot_flag(uint32_t value) { return set_word(SYS_OFF(reboot_flag), value); }
SYSCOMMON_API uint32_t shm_get_reboot_flag(void) { return get_word(SYS_OFF(reboot_flag)); }

SYSCOMMON_API int set_shm_route_reconf_flag(uint32_t bits) {
  update_field<uint32_t>(kSystem, SYS_OFF(route_reconf), [bits](uint32_t w) { return w | bits; });
  return 0;
}
SYSCOMMON_API int clear_shm_route_reconf_flag(uint32_t bits) {
  update_field<uint32_t>(kSystem, SYS_OFF(route_reconf), [bits](uint32_t w) { return w & ~bits; });
  return 0;
}
SYSCOMMON_API uint32_t get_shm_route_reconf_flag(void) { return get_word(SYS_OFF(route_reconf)); }

SYSCOMMON_API int shm_set_Flag_nat_bind_vrrp_ready(void) { return set_word(SYS_OFF(nat_bind_vrrp_ready), 1); }
SYSCOMMON_API int shm_clr_Flag_nat_bind_vrrp_ready(void) { return set_word(SYS_OFF(nat_bind_vrrp_ready), 0); }
SYSCOMMON_API uint32_t shm_get_Flag_nat_bind_vrrp_ready(void) { return get_word(SYS_OFF(nat_bind_vrrp_ready)); }
SYSCOMMON_API int shm_set_Flag_allow_vrrp_ready(void) { return set_word(SYS_OFF(allow_vrrp_ready), 1); }
SYSCOMMON_API int shm_clr_Flag_allow_vrrp_ready(void) { return set_word(SYS_OFF(allow_vrrp_ready), 0); }
SYSCOMMON_API uint32_t shm_get_Flag_allow_vrrp_ready(void) { return get_word(SYS_OFF(allow_vrrp_ready)); }

SYSCOMMON_API int shm_set_timezone(int index) { return set_word(SYS_OFF(timezone), static_cast<uint32_t>(index)); }
SYSCOMMON_API int shm_get_timezone(void) { return static_cast<int>(get_word(SYS_OFF(timezone))); }

SYSCOMMON_API int shm_sysSetFilterGlobal(const void *rec) {
  return copy_in(kSystem, SYS_OFF(ifs.filter_global), rec, SHM_FILTER_GLOBAL_SIZE);
}
SYSCOMMON_API int shm_sysGetFilterGlobal(void *rec) {
  return copy_out(kSystem, SYS_OFF(ifs.filter_global), rec, SHM_FILTER_GLOBAL_SIZE);
}
SYSCOMMON_API int shm_sysSetVrrpGlobal(const void *rec) {
  return copy_in(kSystem, SYS_OFF(ifs.vrrp_global), rec, SHM_VRRP_GLOBAL_SIZE);
}
SYSCOMMON_API int shm_sysGetVrrpGlobal(void *rec) {
  return copy_out(kSystem, SYS_OFF(ifs.vrrp_global), rec, SHM_VRRP_GLOBAL_SIZE);
}

SYSCOMMON_API uint32_t shm_get_mgmt_vlan_vid(void) { return get_word(SYS_OFF(vlan_if[0].vid)); }

SYSCOMMON_API int shm_get_fiber_speed(int sfp) {
  // The text fills at most its 32 bytes; one without a NUL is searched to its end.
  char speed[32];
  copy_out(kSystem, index_offset(SYS_OFF(fiber_speed), sizeof speed, sfp), speed, sizeof speed);
  return std::string_view(speed, strnlen(speed, sizeof speed)).find("1G") != std::string_view::npos ? 1 : 0;
}

SYSCOMMON_API int shm_get_sfp_Eeprom(int sfp, void *buf) {
  return copy_out(kSystem, index_offset(SYS_OFF(sfp_eeprom), SHM_SFP_EEPROM_SIZE, sfp), buf, SHM_SFP_EEPROM_SIZE);
}
SYSCOMMON_API int shm_set_sfp_Eeprom_ddm(int sfp, const void *buf) {
  return copy_in(kSystem, index_offset(SYS_OFF(sfp_eeprom_ddm), SHM_SFP_EEPROM_SIZE, sfp), buf, SHM_SFP_EEPROM_SIZE);
}
SYSCOMMON_API int shm_get_sfp_Eeprom_ddm(int sfp, void *buf) {
  return copy_out(kSystem, index_offset(SYS_OFF(sfp_eeprom_ddm), SHM_SFP_EEPROM_SIZE, sfp), buf, SHM_SFP_EEPROM_SIZE);
}

SYSCOMMON_API int set_shm_vconfig_process(uint32_t value) {
  return set_word_and_show_ifs(SYS_OFF(vconfig_process), value);
}
SYSCOMMON_API uint32_t get_shm_vconfig_process(void) { return get_word(SYS_OFF(vconfig_process)); }
SYSCOMMON_API int set_shm_brg_process(uint32_t value) { return set_word_and_show_ifs(SYS_OFF(brg_process), value); }
SYSCOMMON_API uint32_t get_shm_brg_process(void) { return get_word(SYS_OFF(brg_process)); }
SYSCOMMON_API int set_shm_ipclient_process(uint32_t value) { return set_word(SYS_OFF(ipclient_process), value); }
SYSCOMMON_API uint32_t get_shm_ipclient_process(void) { return get_word(SYS_OFF(ipclient_process)); }
SYSCOMMON_API int set_shm_auth_cert_process(uint32_t value) { return set_word(SYS_OFF(auth_cert_process), value); }
SYSCOMMON_API uint32_t get_shm_auth_cert_process(void) { return get_word(SYS_OFF(auth_cert_process)); }

SYSCOMMON_API int shm_set_security_config(uint8_t value, int index) {
  return set(kSystem, index_offset(SYS_OFF(security_config), 1, index), value);
}
SYSCOMMON_API int shm_read_security_config(int index) {
  return read_field<uint8_t>(kSystem, index_offset(SYS_OFF(security_config), 1, index));
}

SYSCOMMON_API int shm_set_whatchdog_webs(int on) {
  // Setting stores the whole word 1; clearing touches bit 0 only.
  update_field<uint32_t>(kSystem, SYS_OFF(watchdog_webs), [on](uint32_t w) { return on != 0 ? 1u : (w & ~1u); });
  return 0;
}
SYSCOMMON_API int shm_get_whatchdog_webs(void) { return static_cast<int>(get_word(SYS_OFF(watchdog_webs)) & 1u); }

SYSCOMMON_API int shm_sysGetAgentState(uint32_t *out) {
  *out = get_word(SYS_OFF(agent_state));
  return 0;
}

SYSCOMMON_API int Ssys_isVconfigDone(void) {
  for (int attempt = 0; attempt < 60; ++attempt) {
    uint32_t state = 0;
    shm_sysGetAgentState(&state);
    if ((state & 1u) != 0) return 1;
    sleep(2);
  }
  return 0;
}

}  // extern "C"
