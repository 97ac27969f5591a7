// Login and session data (segment 7906): limits, counters, policy settings and the
// session, lockout and CSRF lists, each moved whole.
#include "shm/access.h"

using namespace syscommon;
using namespace syscommon::shm;

#define SESSION_WORD(setter, getter, field)                                                         \
  SYSCOMMON_API int setter(uint32_t n) { return set(kSession, offsetof(SessionSegment, field), n); } \
  SYSCOMMON_API uint32_t getter(void) { return read_field<uint32_t>(kSession, offsetof(SessionSegment, field)); }

#define SESSION_RECORD(setter, getter, field)                                                              \
  SYSCOMMON_API int setter(const void *rec) {                                                                \
    return copy_in(kSession, offsetof(SessionSegment, field), rec, sizeof(SessionSegment::field));           \
  }                                                                                                          \
  SYSCOMMON_API int getter(void *rec) {                                                                      \
    return copy_out(kSession, offsetof(SessionSegment, field), rec, sizeof(SessionSegment::field));          \
  }

extern "C" {

SESSION_WORD(shm_sysSet_web_multiSession_maxUser, shm_sysGet_web_multiSession_maxUser, web_max_users)
SESSION_WORD(shm_sysSet_Con_multiSession_maxUser, shm_sysGet_Con_multiSession_maxUser, con_max_users)
SESSION_WORD(shm_sysSet_usercount, shm_sysGet_usercount, web_user_count)
SESSION_WORD(shm_sysSet_con_usercount, shm_sysGet_con_usercount, con_user_count)
SESSION_WORD(shm_sysSet_cf_sys_timeout, shm_sysGet_cf_sys_timeout, sys_timeout)

SESSION_RECORD(shm_sysSet_pwPolicy_config, shm_sysGet_pwPolicy_config, pw_policy)
SESSION_RECORD(shm_sysSet_loginLockout_config, shm_sysGet_loginLockout_config, lockout_config)
SESSION_RECORD(shm_sysSet_eventlogMgmt_config, shm_sysGet_eventlogMgmt_config, eventlog_mgmt)
SESSION_RECORD(shm_sysSet_multiSession_List, shm_sysGet_multiSession_List, web_sessions)
SESSION_RECORD(shm_sysSet_con_multiSession_List, shm_sysGet_con_multiSession_List, con_sessions)
SESSION_RECORD(shm_sysSet_login_lockout_List, shm_sysGet_login_lockout_List, lockout_list)
SESSION_RECORD(shm_sysSet_csrf_Token_List, shm_sysGet_csrf_Token_List, csrf_tokens)

}  // extern "C"
