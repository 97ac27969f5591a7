// Whole-table moves between the session segment and a local copy, through the store's
// accessors: every operation of the session code reads a table, changes the copy and writes
// it back.
#ifndef SYSCOMMON_SESSION_STORE_H
#define SYSCOMMON_SESSION_STORE_H

#include "syscommon/session.h"
#include "syscommon/shm.h"

namespace syscommon::session {

inline WebSessionList load_web() {
  WebSessionList list{};
  shm_sysGet_multiSession_List(&list);
  return list;
}
inline int save(const WebSessionList &list) { return shm_sysSet_multiSession_List(&list); }

inline CsrfTokenList load_csrf() {
  CsrfTokenList list{};
  shm_sysGet_csrf_Token_List(&list);
  return list;
}
inline int save(const CsrfTokenList &list) { return shm_sysSet_csrf_Token_List(&list); }

inline ConSessionList load_console() {
  ConSessionList list{};
  shm_sysGet_con_multiSession_List(&list);
  return list;
}
inline int save(const ConSessionList &list) { return shm_sysSet_con_multiSession_List(&list); }

inline LoginLockoutList load_lockout() {
  LoginLockoutList list{};
  shm_sysGet_login_lockout_List(&list);
  return list;
}
inline int save(const LoginLockoutList &list) { return shm_sysSet_login_lockout_List(&list); }

inline LoginLockoutConfig load_lockout_config() {
  LoginLockoutConfig config{};
  shm_sysGet_loginLockout_config(&config);
  return config;
}

inline PasswordPolicyConfig load_password_policy() {
  PasswordPolicyConfig policy{};
  shm_sysGet_pwPolicy_config(&policy);
  return policy;
}

}  // namespace syscommon::session

#endif
