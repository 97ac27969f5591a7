// The console session table: serial console, telnet and SSH command-line sessions, limited
// by a configured maximum of 1 to 5.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "session/store.h"
#include "syscommon/platform.h"

using namespace syscommon::session;

namespace {

std::string_view name_of(const ConSession &e) { return {e.name, strnlen(e.name, sizeof e.name)}; }

void free_entry(ConSession &e) {
  e.session_id = 0;
  e.in_use = 0;
  e.session_type = -1;
  std::memset(e.name, 0, sizeof e.name);
}

}  // namespace

extern "C" {

SYSCOMMON_API int Ssgl2_conmultisession_intial(void) {
  // One entry at a time, each a whole read-modify-write, as the console processes do it.
  for (int i = 0; i < CON_SESSION_ENTRIES; ++i) {
    ConSessionList list = load_console();
    free_entry(list.entry[i]);
    save(list);
  }
  return 0;
}

SYSCOMMON_API uint32_t Ssgl2_conmultisession_maxuser_get(uint32_t *max_out) {
  const uint32_t max = shm_sysGet_Con_multiSession_maxUser();
  if (max_out != nullptr) *max_out = max;
  return max;
}

SYSCOMMON_API int Ssgl2_conmultisession_maxuser_set(int max) {
  if (max < 1 || max > CON_SESSION_MAX_USERS) return max;
  if (static_cast<uint32_t>(max) == shm_sysGet_Con_multiSession_maxUser()) return max;
  shm_sysSet_Con_multiSession_maxUser(static_cast<uint32_t>(max));
  Ssgl2_conmultisession_intial();
  return 0;
}

SYSCOMMON_API int Ssgl2_conmultisession_session_set(int32_t session_type, const char *name, uint32_t session_id) {
  ConSessionList list = load_console();
  int index = 0;
  for (; index < CON_SESSION_ENTRIES; ++index) {
    const ConSession &e = list.entry[index];
    if (e.in_use == 0) break;
    if (e.in_use == 1 && e.session_id == session_id) return SESSION_ALREADY_OPEN;
  }
  if (index == CON_SESSION_ENTRIES || static_cast<uint32_t>(index) >= shm_sysGet_Con_multiSession_maxUser())
    return SESSION_FULL;
  ConSession &e = list.entry[index];
  e.in_use = 1;
  e.session_id = session_id;
  e.time = Ssys_current_msecs();
  e.session_type = session_type;
  std::memset(e.name, 0, sizeof e.name);
  if (name != nullptr) std::memcpy(e.name, name, strnlen(name, CON_SESSION_NAME_LEN));
  save(list);
  shm_sysSet_con_usercount(shm_sysGet_con_usercount() + 1);
  return SESSION_OK;
}

SYSCOMMON_API int Ssgl2_conmultisession_session_disconnect(int32_t session_type, const char *name,
                                                          uint32_t session_id) {
  const std::string_view wanted = name != nullptr ? name : "";
  ConSessionList list = load_console();
  // A stored maximum beyond the table is held to the table.
  const uint32_t max = std::min<uint32_t>(shm_sysGet_Con_multiSession_maxUser(), CON_SESSION_ENTRIES);
  for (uint32_t i = 0; i < max; ++i) {
    ConSession &e = list.entry[i];
    if (e.session_type == session_type && e.session_id == session_id && name_of(e) == wanted) {
      // The user count stays as it is: the console processes count down by type.
      free_entry(e);
      save(list);
      return 1;
    }
  }
  return 0;
}

SYSCOMMON_API int Lsyscommon_Ssgl2_remove_session_record_by_session_type(int32_t session_type) {
  ConSessionList list = load_console();
  uint32_t count = shm_sysGet_con_usercount();
  for (ConSession &e : list.entry) {
    if (e.session_type != session_type) continue;
    free_entry(e);
    --count;
  }
  save(list);
  shm_sysSet_con_usercount(count);
  return 0;
}

}  // extern "C"
