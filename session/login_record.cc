// Per-account login records: the main management daemon keeps the set of ten records and
// hands it out over its request socket; every change here is fetch the set, change one
// record, store the set. Each exchange opens its two sockets and closes them again.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "net/internal.h"
#include "session/login_record.h"
#include "syscommon/util.h"

namespace {

constexpr uint8_t kTypeRecordSize = 5;
constexpr std::size_t kMaxNameLength = 32;

// Account position of `name`: 0 with `slot` set, or the result code for a bad or unknown
// name. Every one of the ten records is compared, empty ones included.
int find_account(const char *name, int &slot) {
  if (name == nullptr || name[0] == '\0' || strnlen(name, kMaxNameLength + 1) > kMaxNameLength)
    return LOGIN_RECORD_BAD_NAME;
  UserAccountList list{};
  shm_sysGetUseraccount(&list);
  for (int i = 0; i < ACCOUNT_MAX; ++i) {
    const UserAccount &a = list.account[i];
    if (std::string_view(a.name, strnlen(a.name, sizeof a.name)) == name) {
      slot = i;
      return 0;
    }
  }
  return LOGIN_RECORD_NO_ACCOUNT;
}

// Up to 40 characters of `text` and a terminating zero into a 41-byte field.
void put_text(char (&field)[LOGIN_RECORD_TEXT_LEN + 1], const char *text) {
  std::memset(field, 0, sizeof field);
  if (text != nullptr) std::memcpy(field, text, strnlen(text, LOGIN_RECORD_TEXT_LEN));
}

// The same out of a stored field into a caller's 41 bytes (ignored when null).
void get_text(char *out, const char (&field)[LOGIN_RECORD_TEXT_LEN + 1]) {
  if (out == nullptr) return;
  const std::size_t n = strnlen(field, LOGIN_RECORD_TEXT_LEN);
  std::memcpy(out, field, n);
  out[n] = '\0';
}

bool in_ring(uint32_t index) { return index < LOGIN_FAIL_RING; }

// One failed login: written at fail_next, which moves on along the ring; once the ring is
// full fail_head follows, so it always names the oldest of the three kept. A ring index
// beyond the ring (a set the daemon did not link) is written as entry 0.
void record_failure(LoginRecord &r, const char *text, uint32_t time) {
  ++r.fail_times;
  const uint32_t at = in_ring(r.fail_next) ? r.fail_next : 0;
  r.fail_ring[at].time = time;
  put_text(r.fail_ring[at].text, text);
  r.fail_next = r.fail_ring[at].next;
  if (in_ring(r.fail_next) && in_ring(r.fail_head) && r.fail_ring[r.fail_next].time != 0 &&
      r.fail_next == r.fail_ring[r.fail_head].next)
    r.fail_head = r.fail_next;
}

// The ring entry n steps after fail_head, or null when an index leaves the ring. The ring
// has three entries, so after two steps the walk is on a cycle whose length divides 6.
const LoginFailEntry *fail_entry(const LoginRecord &r, int n) {
  if (n > 8) n = 2 + (n - 2) % 6;
  uint32_t at = r.fail_head;
  for (int step = 0; step < n && in_ring(at); ++step) at = r.fail_ring[at].next;
  return in_ring(at) ? &r.fail_ring[at] : nullptr;
}

// The named account's record from the daemon's set: 0 with `rec` filled, or the lookup's
// code.
int fetch_record(const char *name, LoginRecord &rec) {
  int slot = 0;
  if (const int rc = find_account(name, slot); rc != 0) return rc;
  LoginRecordSet set{};
  Ssgl2_get_login_record(&set);
  rec = set.record[slot];
  return 0;
}

}  // namespace

void syscommon::session::reset_ring(LoginRecord &r) {
  r.fail_head = 0;
  r.fail_next = 0;
  for (uint32_t i = 0; i < LOGIN_FAIL_RING; ++i) {
    r.fail_ring[i].next = (i + 1) % LOGIN_FAIL_RING;
    r.fail_ring[i].time = 0;
    std::memset(r.fail_ring[i].text, 0, sizeof r.fail_ring[i].text);
  }
}

extern "C" {

SYSCOMMON_API int Ssf12_open_socket(InterfaceSocket *send, InterfaceSocket *recv) {
  net_OpenSocketToInterface_Send(send, "socket/lumen168-socket", LOGIN_RECORD_TYPE_OFFSET);
  const timeval budget{60, 0};
  return net_OpenSocketToInterface_RecvTO(recv, "socket/socket-loginRecord", &budget);
}

SYSCOMMON_API int Ssf12_close_socket(InterfaceSocket *send, InterfaceSocket *recv) {
  // Only the descriptors: the reply socket's file stays for the next exchange.
  net_CloseSocketToInterface_Send(send);
  net_CloseSocketToInterface_Send(recv);
  return 0;
}

SYSCOMMON_API int Ssgl2_get_login_record(LoginRecordSet *set_out) {
  if (set_out == nullptr) return 0;
  std::memset(set_out, 0, sizeof *set_out);
  InterfaceSocket send{};
  InterfaceSocket recv{};
  Ssf12_open_socket(&send, &recv);
  const int records =
      syscommon::net::ctl_send_and_recv_data(&send, &recv, LOGIN_RECORD_COMMAND, set_out, sizeof *set_out);
  Ssf12_close_socket(&send, &recv);
  // The wrapper reports a failed or timed-out exchange as 0 records, so in practice this
  // line is never printed; the console processes still look for it.
  if (records == -1) {
    std::fputs("System is over loaded. CLI will be terminated.\r", stdout);
    return -1;
  }
  return records;
}

SYSCOMMON_API int Ssgl2_set_login_record(const LoginRecordSet *set) {
  if (set == nullptr) return -1;
  InterfaceSocket send{};
  InterfaceSocket recv{};
  Ssf12_open_socket(&send, &recv);
  int32_t record_size = 0;
  int rc = syscommon::net::ctl_send_and_recv_info(kTypeRecordSize, &send, &recv, LOGIN_RECORD_COMMAND, &record_size,
                                                  sizeof record_size);
  if (rc >= 0) {
    // A size that would read past the set (or divide by zero) is not sent.
    if (record_size <= 0 || record_size > LOGIN_RECORD_SIZE)
      rc = -1;
    else
      rc = net_Web_SendData_And_Recv_Confirm(&send, &recv, LOGIN_RECORD_COMMAND, set,
                                             static_cast<uint32_t>(record_size), LOGIN_RECORD_COUNT,
                                             NET_MSG_DATA_SIZE / record_size);
  }
  Ssf12_close_socket(&send, &recv);
  return rc;
}

SYSCOMMON_API int Ssgl2_sysnotify_loginrecord_set(const char *name, const char *text, uint32_t time, int success) {
  int slot = 0;
  if (const int rc = find_account(name, slot); rc != 0) return rc;
  LoginRecordSet set{};
  Ssgl2_get_login_record(&set);
  LoginRecord &r = set.record[slot];
  if (success == 1) {
    r.fail_times = 0;  // the failure ring is kept
    r.last_login_time = time;
    put_text(r.last_login_text, text);
  } else {
    record_failure(r, text, time);
  }
  Ssgl2_set_login_record(&set);
  return 0;
}

SYSCOMMON_API int Ssgl2_sysnotify_lastloginrecord_get(const char *name, char *text_out, uint32_t *time_out) {
  LoginRecord r{};
  if (const int rc = fetch_record(name, r); rc != 0) return rc;
  if (r.last_login_time == 0) return LOGIN_RECORD_NONE;
  if (time_out != nullptr) *time_out = r.last_login_time;
  get_text(text_out, r.last_login_text);
  return 0;
}

SYSCOMMON_API int Ssgl2_sysnotify_faillogintimes_get(const char *name, uint32_t *count_out) {
  LoginRecord r{};
  if (const int rc = fetch_record(name, r); rc != 0) return rc;
  if (count_out != nullptr) *count_out = r.fail_times;
  return 0;
}

SYSCOMMON_API int Ssgl2_sysnotify_failLoginrecord_get(const char *name, int n, char *text_out, uint32_t *time_out) {
  LoginRecord r{};
  if (const int rc = fetch_record(name, r); rc != 0) return rc;
  const LoginFailEntry *e = fail_entry(r, n);
  if (e == nullptr || e->time == 0) return LOGIN_RECORD_NONE;
  if (time_out != nullptr) *time_out = e->time;
  get_text(text_out, e->text);
  return 0;
}

SYSCOMMON_API int Ssgl2_sysnotify_failLoginrecord_clear(const char *name) {
  int slot = 0;
  if (const int rc = find_account(name, slot); rc != 0) return rc;
  return Ssgl2_sysnotify_failLoginrecord_clear_byAccountIndex(slot);
}

SYSCOMMON_API int Ssgl2_sysnotify_failLoginrecord_clear_byAccountIndex(int index) {
  if (index < 0 || index >= LOGIN_RECORD_COUNT) return LOGIN_RECORD_NONE;
  LoginRecordSet set{};
  Ssgl2_get_login_record(&set);
  syscommon::session::reset_ring(set.record[index]);  // fail_times is kept
  Ssgl2_set_login_record(&set);
  return 0;
}

}  // extern "C"
