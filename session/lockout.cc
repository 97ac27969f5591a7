// Login lockout: failed logins counted per account slot, a lock of the configured minutes
// once the retry limit is reached, cleared by a successful login or by the first check
// after the lock has run out. Nothing runs in the background.
#include "session/store.h"
#include "syscommon/platform.h"
#include "syscommon/util.h"

using namespace syscommon::session;

namespace {

bool valid_slot(int slot) { return slot >= 0 && slot < LOGIN_LOCKOUT_SLOTS; }

// Read-modify-write of one slot's record: -1 for a slot outside 0..9.
template <class F>
int change_slot(int slot, F &&change) {
  if (!valid_slot(slot)) return -1;
  LoginLockoutList list = load_lockout();
  change(list.entry[slot]);
  save(list);
  return 0;
}

// One slot's record into `rec`: -1 for a slot outside 0..9.
int read_slot(int slot, LoginLockoutRecord &rec) {
  if (!valid_slot(slot)) return -1;
  rec = load_lockout().entry[slot];
  return 0;
}

void clear_all(void (*clear)(LoginLockoutRecord &)) {
  LoginLockoutList list = load_lockout();
  for (LoginLockoutRecord &rec : list.entry) clear(rec);
  save(list);
}

}  // namespace

extern "C" {

SYSCOMMON_API int _sgl2_loginlockout_failtimes_set(int slot, int32_t value) {
  return change_slot(slot, [value](LoginLockoutRecord &r) { r.fail_times = value; });
}

SYSCOMMON_API int _sgl2_loginlockout_failtimes_get(int slot, int32_t *out) {
  LoginLockoutRecord rec{};
  if (out == nullptr || read_slot(slot, rec) != 0) return -1;
  *out = rec.fail_times;
  return 0;
}

SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_set(int slot, uint32_t value) {
  return change_slot(slot, [value](LoginLockoutRecord &r) { r.lockout_until = value; });
}

SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_get(int slot, uint32_t *out) {
  LoginLockoutRecord rec{};
  if (out == nullptr || read_slot(slot, rec) != 0) return -1;
  *out = rec.lockout_until;
  return 0;
}

SYSCOMMON_API void _sgl2_loginlockout_failtimes_initial(void) {
  clear_all([](LoginLockoutRecord &r) { r.fail_times = 0; });
}

SYSCOMMON_API void _sgl2_loginlockout_lockouttimer_initial(void) {
  clear_all([](LoginLockoutRecord &r) { r.lockout_until = 0; });
}

SYSCOMMON_API int _sgl2_loginlockout_failtimes_check(int slot) {
  int32_t fail_times = 0;
  if (_sgl2_loginlockout_failtimes_get(slot, &fail_times) != 0) return -1;
  return fail_times < load_lockout_config().retry_limit ? 0 : -1;
}

SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_check(int slot) {
  uint32_t until = 0;
  if (_sgl2_loginlockout_lockouttimer_get(slot, &until) != 0) return -1;
  return until <= Ssys_current_secs() ? 0 : -1;
}

SYSCOMMON_API int _sgl2_loginlockout_failtimes_initial_byname(const char *name) {
  return _sgl2_loginlockout_failtimes_set(account_get_account_list_index(name), 0);
}

SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_initial_byname(const char *name) {
  return _sgl2_loginlockout_lockouttimer_set(account_get_account_list_index(name), 0);
}

SYSCOMMON_API int _sgl2_loginlockout_failtimes_increase(const char *name) {
  const int slot = account_get_account_list_index(name);
  int32_t fail_times = 0;
  if (_sgl2_loginlockout_failtimes_get(slot, &fail_times) != 0) return -1;
  if (fail_times >= load_lockout_config().retry_limit) return -1;
  return _sgl2_loginlockout_failtimes_set(slot, fail_times + 1);
}

SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_update(const char *name) {
  const int slot = account_get_account_list_index(name);
  int32_t fail_times = 0;
  uint32_t until = 0;
  if (_sgl2_loginlockout_failtimes_get(slot, &fail_times) != 0 ||
      _sgl2_loginlockout_lockouttimer_get(slot, &until) != 0)
    return -1;
  const LoginLockoutConfig config = load_lockout_config();
  if (fail_times < config.retry_limit || until != 0) return 0;
  // Unsigned arithmetic: a settings word out of range wraps instead of overflowing.
  return _sgl2_loginlockout_lockouttimer_set(
      slot, Ssys_current_secs() + static_cast<uint32_t>(config.lockout_minutes) * 60u);
}

SYSCOMMON_API void Ssgl2_loginlockout_lockoutstatus_initial(void) {
  clear_all([](LoginLockoutRecord &r) { r = LoginLockoutRecord{}; });
}

SYSCOMMON_API int Ssgl2_loginlockout_lockoutstatus_update(const char *name, int success) {
  if (load_lockout_config().enable == 0) return 0;
  // A failure refused by the increase (limit already reached) does not touch the lock.
  const bool refused = success == 1 ? (_sgl2_loginlockout_failtimes_initial_byname(name) != 0 ||
                                       _sgl2_loginlockout_lockouttimer_initial_byname(name) != 0)
                                    : (_sgl2_loginlockout_failtimes_increase(name) != 0 ||
                                       _sgl2_loginlockout_lockouttimer_update(name) != 0);
  if (refused) return -1;
  Ssgl2_loginlockout_lockoutstatus_check(name);  // clears a lock that has run out
  return 0;
}

SYSCOMMON_API int Ssgl2_loginlockout_lockoutstatus_check(const char *name) {
  const LoginLockoutConfig config = load_lockout_config();
  const int slot = account_get_account_list_index(name);
  if (slot < 0) return -2;
  if (config.enable == 0) return 0;
  const int limit_reached = _sgl2_loginlockout_failtimes_check(slot);
  const int locked = _sgl2_loginlockout_lockouttimer_check(slot);
  if (limit_reached == -1 && locked == -1) return -1;
  if (limit_reached != -1) return 0;
  // The limit was reached and the lock is over (or never started): a full allowance again.
  _sgl2_loginlockout_failtimes_initial_byname(name);
  _sgl2_loginlockout_lockouttimer_initial_byname(name);
  return 0;
}

}  // extern "C"
