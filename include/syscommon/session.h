/*
 * Login sessions and account security: the web session table with its CSRF tokens, the
 * console session table, the per-account login records kept by the main management daemon,
 * login lockout and the password policy.
 *
 * The tables live in the session segment of the shared store (key 7906) and are read and
 * written whole through the store's accessors: every change is a read into a local copy, a
 * change and a write back, with no lock held across the sequence. Two processes changing a
 * table at the same moment can therefore lose one change (the last writer wins); the table
 * itself always stays a well-formed copy of one of them.
 *
 * Diagnostics are printed on standard output exactly as the web and console processes
 * expect them (some start with "\r\n", one has no line end); nothing is sent to the event
 * log from here.
 */
#ifndef SYSCOMMON_SESSION_H
#define SYSCOMMON_SESSION_H

#include <stddef.h>
#include <stdint.h>

#include "syscommon/export.h"
#include "syscommon/net.h"
#include "syscommon/shm.h"

SYSCOMMON_BEGIN_DECLS

/* ==== Records of the session segment ==== */

enum {
  WEB_SESSION_MAX = 10,
  WEB_SESSION_IDLE_MS = 30000, /* idle longer than this (unsigned difference): aged out */
  CON_SESSION_ENTRIES = 6,
  CON_SESSION_MAX_USERS = 5, /* largest console maximum; the table has one entry more */
  CON_SESSION_NAME_LEN = 40,
  LOGIN_LOCKOUT_SLOTS = 10,
  LOGIN_RECORD_COUNT = 10,
  LOGIN_RECORD_SIZE = 220,
  LOGIN_RECORD_TEXT_LEN = 40,
  LOGIN_FAIL_RING = 3,
  LOGIN_RECORD_COMMAND = 137,    /* command of the login-record exchange */
  LOGIN_RECORD_TYPE_OFFSET = 104 /* added to every request type of that exchange */
};

/* Result codes of the session tables. */
enum {
  SESSION_OK = 0,
  SESSION_FULL = 13,
  SESSION_AGED = 14,
  SESSION_NOT_FOUND = 15,
  SESSION_ALREADY_OPEN = 16
};

/* Result codes of the name-based login-record operations. */
enum {
  LOGIN_RECORD_NONE = 1,         /* nothing recorded, or index out of range */
  LOGIN_RECORD_NO_ACCOUNT = 3,   /* no account of that name */
  LOGIN_RECORD_BAD_NAME = 6      /* null, empty, or 33 characters or longer */
};

/* One web session (six words); a free entry is all zero. */
typedef struct WebSession {
  uint32_t in_use;           /* 1 = holds a session */
  uint32_t session_id;       /* the cookie value chosen by the web server */
  uint32_t time;             /* last activity, Ssys_current_msecs */
  uint32_t login_csrf_token; /* given at creation */
  uint32_t user;             /* caller's value, handed back by every successful verify */
  uint32_t auth_protocol;    /* caller's value, see Ssgl2_webmultisession_check_auth_protocol */
} WebSession;

typedef struct WebSessionList {
  WebSession entry[WEB_SESSION_MAX];
} WebSessionList;

/* CSRF entry i belongs to web session entry i. */
typedef struct CsrfToken {
  uint32_t session_id;
  uint32_t csrf_token; /* session_id + two clock readings, modulo 2^32 */
  uint32_t login_csrf_token;
  uint32_t user;
} CsrfToken;

typedef struct CsrfTokenList {
  CsrfToken entry[WEB_SESSION_MAX];
} CsrfTokenList;

/* One console session (64 bytes). */
typedef struct ConSession {
  uint32_t session_id;
  uint32_t in_use;      /* 1 = holds a session */
  int32_t session_type; /* caller's type; -1 in a free entry */
  uint8_t reserved0[4]; /* not written */
  uint32_t time;        /* Ssys_current_msecs at creation */
  char name[CON_SESSION_NAME_LEN + 1];
  uint8_t reserved1[3];
} ConSession;

typedef struct ConSessionList {
  ConSession entry[CON_SESSION_ENTRIES];
} ConSessionList;

/* Lockout settings. */
typedef struct LoginLockoutConfig {
  int32_t enable;          /* 0 = lockout off */
  int32_t retry_limit;     /* failed logins that lock the account */
  int32_t lockout_minutes; /* length of the lock */
} LoginLockoutConfig;

/* Lockout record of one account slot. fail_times is compared with the signed retry_limit. */
typedef struct LoginLockoutRecord {
  int32_t fail_times;     /* failed logins counted so far */
  uint32_t lockout_until; /* Ssys_current_secs second the lock ends; 0 = no lock running */
} LoginLockoutRecord;

typedef struct LoginLockoutList {
  LoginLockoutRecord entry[LOGIN_LOCKOUT_SLOTS];
} LoginLockoutList;

/* Password policy: the complexity rules apply only when enable is exactly 1; the length
 * rule always applies. */
typedef struct PasswordPolicyConfig {
  uint32_t min_length;
  uint8_t enable;
  uint8_t need_digit;
  uint8_t need_upper_lower;
  uint8_t need_special;
} PasswordPolicyConfig;

/* One entry of the failure ring (52 bytes). */
typedef struct LoginFailEntry {
  uint32_t next; /* following entry: 0 -> 1 -> 2 -> 0 */
  uint32_t time; /* 0 = empty */
  char text[LOGIN_RECORD_TEXT_LEN + 1];
  uint8_t reserved[3];
} LoginFailEntry;

/* Login record of one account (220 bytes, the daemon's format). */
typedef struct LoginRecord {
  uint32_t fail_head;  /* oldest failure once the ring is full */
  uint32_t fail_next;  /* entry the next failure is written to */
  uint32_t fail_times; /* failed logins since the last successful one */
  LoginFailEntry fail_ring[LOGIN_FAIL_RING];
  uint8_t reserved0[4];
  uint32_t last_login_time; /* 0 = none */
  char last_login_text[LOGIN_RECORD_TEXT_LEN + 1];
  uint8_t reserved1[3];
} LoginRecord;

/* Record i belongs to the account at position i of the account list. */
typedef struct LoginRecordSet {
  LoginRecord record[LOGIN_RECORD_COUNT];
} LoginRecordSet;

SYSCOMMON_STATIC_ASSERT(sizeof(WebSession) == 24, "web session entry");
SYSCOMMON_STATIC_ASSERT(offsetof(WebSession, auth_protocol) == 20, "web session fields");
SYSCOMMON_STATIC_ASSERT(sizeof(WebSessionList) == SHM_WEB_SESSION_LIST_SIZE, "web session list");
SYSCOMMON_STATIC_ASSERT(sizeof(CsrfToken) == 16 && offsetof(CsrfToken, user) == 12, "CSRF entry");
SYSCOMMON_STATIC_ASSERT(sizeof(CsrfTokenList) == SHM_CSRF_TOKEN_LIST_SIZE, "CSRF list");
SYSCOMMON_STATIC_ASSERT(sizeof(ConSession) == 64, "console session entry");
SYSCOMMON_STATIC_ASSERT(offsetof(ConSession, session_type) == 8 && offsetof(ConSession, time) == 16 &&
                            offsetof(ConSession, name) == 20,
                        "console session fields");
SYSCOMMON_STATIC_ASSERT(sizeof(ConSessionList) == SHM_CON_SESSION_LIST_SIZE, "console session list");
SYSCOMMON_STATIC_ASSERT(sizeof(LoginLockoutConfig) == SHM_LOGIN_LOCKOUT_CONFIG_SIZE, "lockout settings");
SYSCOMMON_STATIC_ASSERT(sizeof(LoginLockoutRecord) == 8, "lockout record");
SYSCOMMON_STATIC_ASSERT(sizeof(LoginLockoutList) == SHM_LOCKOUT_LIST_SIZE, "lockout list");
SYSCOMMON_STATIC_ASSERT(sizeof(PasswordPolicyConfig) == SHM_PW_POLICY_CONFIG_SIZE, "password policy");
SYSCOMMON_STATIC_ASSERT(offsetof(PasswordPolicyConfig, need_special) == 7, "password policy flags");
SYSCOMMON_STATIC_ASSERT(sizeof(LoginFailEntry) == 52 && offsetof(LoginFailEntry, text) == 8, "failure entry");
SYSCOMMON_STATIC_ASSERT(offsetof(LoginRecord, fail_ring) == 12, "login record ring");
SYSCOMMON_STATIC_ASSERT(offsetof(LoginRecord, last_login_time) == 172, "login record last time");
SYSCOMMON_STATIC_ASSERT(offsetof(LoginRecord, last_login_text) == 176, "login record last text");
SYSCOMMON_STATIC_ASSERT(sizeof(LoginRecord) == LOGIN_RECORD_SIZE, "login record");
SYSCOMMON_STATIC_ASSERT(sizeof(LoginRecordSet) == 2200, "login record set");

/* ==== Web sessions ==== */

/* Empties both tables (printing "\r\nInit csrf token index = %d" for each entry) and sets
 * the user count to 0. Returns 0. */
SYSCOMMON_API int Ssgl2_webmultisession_initial(void);
/* Opens a session: first ages out stale entries, then takes the first free entry if its
 * index is below the maximum. The duplicate test sees only entries before the first free
 * one, and the capacity test is on that entry's index, not on the number open (both kept
 * so). Returns 0, 13 (full) or 16 (identifier already open). */
SYSCOMMON_API int Ssgl2_webmultisession_session_set(uint32_t session_id, uint32_t user, uint32_t auth_protocol,
                                                     uint32_t login_csrf_token);
/* Checks a request's session: ages it out when idle more than 30000 ms (14), else refreshes
 * its time, hands back its user value (when user_out is not null) and returns 0; 15 when
 * not open or when no session is counted. */
SYSCOMMON_API int Ssgl2_webmultisession_session_verify(uint32_t session_id, uint32_t *user_out);
/* Refreshes the session's time without ageing it. Returns the store write's result (0), or
 * the length of the "not found" line printed. */
SYSCOMMON_API int Ssgl2_update_session_now(uint32_t session_id);
/* Removes the session as if aged: 14, or 15 when it is not open. */
SYSCOMMON_API int Ssgl2_webmultisession_session_forceage(uint32_t session_id);
/* Logout: removes the first entry with this identifier, in use or not. 0, or 15 when none
 * matches or the user count is 0. */
SYSCOMMON_API int Ssgl2_webmultisession_session_remove(uint32_t session_id);
/* Read the counters into *out (ignored when null). Return 0. */
SYSCOMMON_API int Ssgl2_webmultisession_usercount_get(uint32_t *count_out);
SYSCOMMON_API int Ssgl2_webmultisession_maxuser_get(uint32_t *max_out);
/* A maximum outside 1..10 is refused by returning it unchanged, the current maximum is
 * returned as it is; any other value is stored and every web session dropped (0). */
SYSCOMMON_API int Ssgl2_webmultisession_maxuser_set(int max);
/* As above on behalf of a logged-in session, which is opened again (new time and CSRF
 * token): 1 outside 1..10, 0 for the current value; else the reopening's nonzero result or
 * 0. An unknown identifier still empties the table. */
SYSCOMMON_API int Ssgl2_webmultisession_maxuser_set_bysession(int max, uint32_t session_id);
/* auth_protocol of the first entry with this identifier (in use or not), 0 when none. */
SYSCOMMON_API uint32_t Ssgl2_webmultisession_check_auth_protocol(uint32_t session_id);

/* ==== Console sessions ==== */

/* Frees every entry (identifier 0, type -1, empty name), one read-modify-write each. The
 * console user count is left as it is. Returns 0. */
SYSCOMMON_API int Ssgl2_conmultisession_intial(void);
/* The stored maximum, also into *max_out when not null. */
SYSCOMMON_API uint32_t Ssgl2_conmultisession_maxuser_get(uint32_t *max_out);
/* Outside 1..5: the value itself; the current value: returned; else stored, the table
 * emptied, 0. */
SYSCOMMON_API int Ssgl2_conmultisession_maxuser_set(int max);
/* Takes the first free entry when its index is below the maximum (name cut to 40
 * characters; null counts as empty) and counts the session: 0, 13 (full) or 16 (the
 * identifier is open in an entry before the first free one). */
SYSCOMMON_API int Ssgl2_conmultisession_session_set(int32_t session_type, const char *name, uint32_t session_id);
/* Frees the entry below the maximum whose type, identifier and name all match: 1, or 0
 * when none. The user count is not decreased (kept so). */
SYSCOMMON_API int Ssgl2_conmultisession_session_disconnect(int32_t session_type, const char *name,
                                                          uint32_t session_id);
/* Frees every entry of this type (free entries carry -1), decreasing the user count once
 * for each. Returns 0. */
SYSCOMMON_API int Lsyscommon_Ssgl2_remove_session_record_by_session_type(int32_t session_type);

/* ==== Login records, kept by the main management daemon ==== */

/* Opens the request endpoint to "socket/lumen168-socket" (type offset 104) and the reply
 * endpoint on "socket/socket-loginRecord" with a 60 s budget. Returns the reply open's
 * result. */
SYSCOMMON_API int Ssf12_open_socket(InterfaceSocket *send, InterfaceSocket *recv);
/* Closes both descriptors; the reply socket's file is left in place. Returns 0. */
SYSCOMMON_API int Ssf12_close_socket(InterfaceSocket *send, InterfaceSocket *recv);
/* Fetches the whole set (command 137, type 0). Returns the records received; a daemon that
 * does not answer within the 60 s budget gives 0 and an all-zero set. Never stores more
 * than the set's 2200 bytes, whatever the daemon sends. */
SYSCOMMON_API int Ssgl2_get_login_record(LoginRecordSet *set_out);
/* Asks the daemon for its record size (type 5) and sends the set in records of that size
 * (type 7, answered by a confirmation word). Returns the size query's negative result, -1
 * when the size answered is not 1 to 220 (nothing sent), else the confirmed send's result
 * (1 when the daemon answered 0). */
SYSCOMMON_API int Ssgl2_set_login_record(const LoginRecordSet *set);
/* Records a login of the named account: success 1 clears the failure count and sets the
 * last login; any other value counts a failure into the ring of the three latest. Texts are
 * cut to 40 characters (null counts as empty). Returns 0, 3 or 6. */
SYSCOMMON_API int Ssgl2_sysnotify_loginrecord_set(const char *name, const char *text, uint32_t time, int success);
/* Last successful login: time and text (41 bytes); 1 when none. 0, 1, 3 or 6. */
SYSCOMMON_API int Ssgl2_sysnotify_lastloginrecord_get(const char *name, char *text_out, uint32_t *time_out);
/* Failed logins since the last successful one. 0, 3 or 6. */
SYSCOMMON_API int Ssgl2_sysnotify_faillogintimes_get(const char *name, uint32_t *count_out);
/* Failure n of the ring, 0 = the oldest kept (n steps along the ring from fail_head; a
 * negative n takes no step): time and text (41 bytes); 1 when that entry is empty or a ring
 * index read from the daemon is beyond the ring. 0, 1, 3 or 6. */
SYSCOMMON_API int Ssgl2_sysnotify_failLoginrecord_get(const char *name, int n, char *text_out, uint32_t *time_out);
/* Empties the failure ring of the named account; the failure count is kept (kept so). */
SYSCOMMON_API int Ssgl2_sysnotify_failLoginrecord_clear(const char *name);
/* The same by account position: 1 outside 0..9, else 0. */
SYSCOMMON_API int Ssgl2_sysnotify_failLoginrecord_clear_byAccountIndex(int index);

/* Telnet login markers: empty files "/mnt/ramdisk/telnet_login/NUMBER-TEXT", made and
 * removed through the shell. TEXT becomes part of a shell command: callers must not pass
 * user text there. Results are the shell's, unchanged. */
SYSCOMMON_API int create_prefix_of_telnetd_login_result(void);
SYSCOMMON_API int set_telnetd_login_result(int number, const char *text);
/* 1 when the marker exists, else 0. */
SYSCOMMON_API int get_telnetd_login_result(int number, const char *text);
SYSCOMMON_API int remove_telnetd_login_result(int number, const char *text);
/* Ends every process named "tarn_parser" (the console command interpreters). */
SYSCOMMON_API int delete_consol_connect(void);

/* ==== Login lockout ==== */
/* Slot = account list index 0..9; any other slot, a null output or an unknown name gives
 * -1. */

SYSCOMMON_API int _sgl2_loginlockout_failtimes_set(int slot, int32_t value);
SYSCOMMON_API int _sgl2_loginlockout_failtimes_get(int slot, int32_t *out);
SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_set(int slot, uint32_t value);
SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_get(int slot, uint32_t *out);
SYSCOMMON_API void _sgl2_loginlockout_failtimes_initial(void);
SYSCOMMON_API void _sgl2_loginlockout_lockouttimer_initial(void);
/* 0 while fail_times is below retry_limit, -1 once it has reached it. */
SYSCOMMON_API int _sgl2_loginlockout_failtimes_check(int slot);
/* 0 when lockout_until <= Ssys_current_secs (0 counts as expired), -1 while the lock runs. */
SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_check(int slot);
SYSCOMMON_API int _sgl2_loginlockout_failtimes_initial_byname(const char *name);
SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_initial_byname(const char *name);
/* -1 when fail_times already reached retry_limit (left as it is), else one more, 0. */
SYSCOMMON_API int _sgl2_loginlockout_failtimes_increase(const char *name);
/* Starts the lock (now + minutes x 60) when the limit is reached and none runs. */
SYSCOMMON_API int _sgl2_loginlockout_lockouttimer_update(const char *name);
SYSCOMMON_API void Ssgl2_loginlockout_lockoutstatus_initial(void);
/* Records one login attempt (success 1 clears the record, anything else counts a failure
 * and may start the lock): -1 when a step was refused, else 0. Lockout off: 0, no change. */
SYSCOMMON_API int Ssgl2_loginlockout_lockoutstatus_update(const char *name, int success);
/* May the account log in now: 0 yes, -1 locked, -2 unknown name. A lock that has run out
 * is cleared here, giving a full allowance again. */
SYSCOMMON_API int Ssgl2_loginlockout_lockoutstatus_check(const char *name);

/* ==== Password policy ==== */

/* 0 acceptable; 1 shorter than min_length (even with the rules off); 2 no digit; 3 no
 * lower-case or no upper-case letter; 4 none of "~!@#$%^&*-_|;:,.<>[]{}()". A null password
 * counts as empty. */
SYSCOMMON_API int Ssgl2_pwdpolicy_check(const char *password);
/* The local account's password checked; an unreadable one gives 2 (kept so). */
SYSCOMMON_API int Ssgl2_pwdpolicy_check_byLocalDatabaseUsername(const char *name);

SYSCOMMON_END_DECLS

#endif
