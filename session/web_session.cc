// The web session table: sessions opened by the web server after a login, refreshed by each
// request, aged out after 30 s of idleness and dropped at logout, with a CSRF entry beside
// each session entry.
#include <cstdio>

#include "session/store.h"
#include "syscommon/platform.h"

using namespace syscommon::session;

namespace {

// The first open entry with this identifier, or -1.
int find_open(const WebSessionList &list, uint32_t session_id) {
  for (int i = 0; i < WEB_SESSION_MAX; ++i)
    if (list.entry[i].in_use == 1 && list.entry[i].session_id == session_id) return i;
  return -1;
}

// The first entry with this identifier whether in use or not, or -1.
int find_any(const WebSessionList &list, uint32_t session_id) {
  for (int i = 0; i < WEB_SESSION_MAX; ++i)
    if (list.entry[i].session_id == session_id) return i;
  return -1;
}

// Clears entry `index` of the local table and writes it, counts the session out and clears
// its CSRF entry in the store.
void drop(WebSessionList &list, int index) {
  list.entry[index] = WebSession{};
  save(list);
  shm_sysSet_usercount(shm_sysGet_usercount() - 1);
  CsrfTokenList csrf = load_csrf();
  csrf.entry[index] = CsrfToken{};
  save(csrf);
}

// Ages entry `index` against `now`: idle for more than the limit (unsigned difference, so a
// clock that went backwards counts as aged) or forced, the entry is dropped and the result
// is 14; otherwise 0 and nothing changes.
int age(WebSessionList &list, int index, uint32_t now, bool force) {
  if (now - list.entry[index].time <= WEB_SESSION_IDLE_MS && !force) return 0;
  drop(list, index);
  return SESSION_AGED;
}

}  // namespace

extern "C" {

SYSCOMMON_API int Ssgl2_webmultisession_initial(void) {
  shm_sysSet_usercount(0);
  for (int i = 0; i < WEB_SESSION_MAX; ++i) std::printf("\r\nInit csrf token index = %d", i);
  save(WebSessionList{});
  save(CsrfTokenList{});
  return 0;
}

SYSCOMMON_API int Ssgl2_webmultisession_session_set(uint32_t session_id, uint32_t user, uint32_t auth_protocol,
                                                     uint32_t login_csrf_token) {
  const uint32_t t0 = Ssys_current_msecs();
  {
    // Stale sessions leave first.
    WebSessionList stale = load_web();
    for (int i = 0; i < WEB_SESSION_MAX; ++i)
      if (stale.entry[i].in_use == 1) age(stale, i, t0, false);
  }
  WebSessionList list = load_web();
  CsrfTokenList csrf = load_csrf();
  uint32_t count = shm_sysGet_usercount();
  const uint32_t max = shm_sysGet_web_multiSession_maxUser();

  // The capacity test is on the index of the first free entry and the duplicate test sees
  // only the entries before it: both as the web server has always relied on.
  int index = 0;
  for (; index < WEB_SESSION_MAX; ++index) {
    const WebSession &e = list.entry[index];
    if (e.in_use == 0) {
      if (static_cast<uint32_t>(index) < max) break;
      std::printf("\r\n%s_%d:session is full.\n", __func__, 476);
      return SESSION_FULL;
    }
    if (e.in_use == 1 && e.session_id == session_id) return SESSION_ALREADY_OPEN;
  }
  if (index < WEB_SESSION_MAX) {
    std::printf("\r\n%s_%d:sessionIndex[%d],sessionID[0x%x],Time[%d]\n", __func__, 480, index, session_id,
                static_cast<int>(t0));
    WebSession &e = list.entry[index];
    e.in_use = 1;
    e.session_id = session_id;
    e.time = Ssys_current_msecs();
    e.user = user;
    e.auth_protocol = auth_protocol;
    e.login_csrf_token = login_csrf_token;
    ++count;
    // The token comes from the identifier and the clock; there is no random source.
    csrf.entry[index] = {session_id, session_id + t0 + Ssys_current_msecs(), login_csrf_token, user};
    const CsrfToken &c = csrf.entry[index];
    std::printf("\r\n[Cookie index = %d] csrf [sessionID = %x] [csrfToken = %x] [LogincsrfToken = %x]\n", index,
                c.session_id, c.csrf_token, c.login_csrf_token);
    std::printf("\r\n[Cookie index = %d] cookie [sessionID = %x] [LogincsrfToken = %x]\n", index, e.session_id,
                e.login_csrf_token);
  }
  save(list);
  shm_sysSet_usercount(count);
  save(csrf);
  if (index == WEB_SESSION_MAX) {
    std::printf("\r\n%s_%d:session(0x%x) not found.\n", __func__, 507, session_id);
    return SESSION_FULL;
  }
  return SESSION_OK;
}

SYSCOMMON_API int Ssgl2_webmultisession_session_verify(uint32_t session_id, uint32_t *user_out) {
  const uint32_t now = Ssys_current_msecs();
  WebSessionList list = load_web();
  if (shm_sysGet_usercount() == 0) return SESSION_NOT_FOUND;
  const int index = find_open(list, session_id);
  if (index < 0) {
    std::printf("\r\n%s_%d:session(0x%x) not found.\n", __func__, 421, session_id);
    return SESSION_NOT_FOUND;
  }
  if (age(list, index, now, false) == SESSION_AGED) {
    std::printf("\r\n%s_%d:session(0x%x) age.\n", __func__, 426, session_id);
    std::printf("\r\n%s_%d:session(0x%x) age.\n", __func__, 427, session_id);
    return SESSION_AGED;
  }
  list.entry[index].time = now;
  if (user_out != nullptr) *user_out = list.entry[index].user;
  save(list);
  return SESSION_OK;
}

SYSCOMMON_API int Ssgl2_update_session_now(uint32_t session_id) {
  const uint32_t now = Ssys_current_msecs();
  WebSessionList list = load_web();
  const int index = find_open(list, session_id);
  if (index < 0) return std::printf("\r\n%s_%d:session(0x%x) not found.\n", __func__, 124, session_id);
  list.entry[index].time = now;
  return save(list);
}

SYSCOMMON_API int Ssgl2_webmultisession_session_forceage(uint32_t session_id) {
  WebSessionList list = load_web();
  const int index = find_open(list, session_id);
  if (index < 0) {
    std::printf("\r\n%s_%d:session(0x%x) not found.", __func__, 287, session_id);
    return SESSION_NOT_FOUND;
  }
  return age(list, index, 0, true);
}

SYSCOMMON_API int Ssgl2_webmultisession_session_remove(uint32_t session_id) {
  if (shm_sysGet_usercount() == 0) return SESSION_NOT_FOUND;
  WebSessionList list = load_web();
  const int index = find_any(list, session_id);
  if (index < 0) return SESSION_NOT_FOUND;
  drop(list, index);
  std::printf("\r\n%s_%d:session(0x%x) remove.\n", __func__, 234, session_id);
  return SESSION_OK;
}

SYSCOMMON_API int Ssgl2_webmultisession_usercount_get(uint32_t *count_out) {
  const uint32_t count = shm_sysGet_usercount();
  if (count_out != nullptr) *count_out = count;
  return 0;
}

SYSCOMMON_API int Ssgl2_webmultisession_maxuser_get(uint32_t *max_out) {
  const uint32_t max = shm_sysGet_web_multiSession_maxUser();
  if (max_out != nullptr) *max_out = max;
  return 0;
}

SYSCOMMON_API int Ssgl2_webmultisession_maxuser_set(int max) {
  // A refused value comes back unchanged, like the current one: callers cannot tell them
  // from the result, as the web pages have always worked.
  if (max < 1 || max > WEB_SESSION_MAX) return max;
  if (static_cast<uint32_t>(max) == shm_sysGet_web_multiSession_maxUser()) return max;
  shm_sysSet_web_multiSession_maxUser(static_cast<uint32_t>(max));
  Ssgl2_webmultisession_initial();
  return 0;
}

SYSCOMMON_API int Ssgl2_webmultisession_maxuser_set_bysession(int max, uint32_t session_id) {
  const WebSessionList list = load_web();
  if (max < 1 || max > WEB_SESSION_MAX) return 1;
  if (static_cast<uint32_t>(max) == shm_sysGet_web_multiSession_maxUser()) return 0;
  shm_sysSet_web_multiSession_maxUser(static_cast<uint32_t>(max));
  const int index = find_open(list, session_id);
  if (index < 0) {
    std::printf("\r\n%s_%d:session(0x%x) not found.", __func__, 387, session_id);
    Ssgl2_webmultisession_initial();
    return 0;
  }
  const WebSession kept = list.entry[index];
  Ssgl2_webmultisession_initial();
  return Ssgl2_webmultisession_session_set(kept.session_id, kept.user, kept.auth_protocol, kept.login_csrf_token);
}

SYSCOMMON_API uint32_t Ssgl2_webmultisession_check_auth_protocol(uint32_t session_id) {
  const WebSessionList list = load_web();
  const int index = find_any(list, session_id);
  return index < 0 ? 0 : list.entry[index].auth_protocol;
}

}  // extern "C"
