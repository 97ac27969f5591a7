/*
 * Text validation, time zones, accounts, port naming and process controls.
 *
 * All texts are zero-terminated 8-bit strings owned by the caller. Where a function writes
 * into a caller's buffer without a size argument, the minimum size is given beside it.
 */
#ifndef SYSCOMMON_UTIL_H
#define SYSCOMMON_UTIL_H

#include <stddef.h>
#include <stdint.h>

#include "syscommon/export.h"
#include "syscommon/shm.h"

SYSCOMMON_BEGIN_DECLS

/* ==== String validation ==== */

/* 1 when the whole text consists of letters, digits, space and _ @ ! # $ % ^ & * ( ) . / -
 * or backslash (POSIX extended, case-insensitive); -1 otherwise, for null or empty text, or
 * when the pattern does not compile. */
SYSCOMMON_API int Ssys_CheckString(const char *text);
/* As Ssys_CheckString, carriage return and line feed allowed as well. */
SYSCOMMON_API int Ssys_CheckString_banner(const char *text);
/* Host name (a letter, then 1 to 31 letters, digits or hyphens), matched with the GNU
 * regex interface: the number of characters matched (2..32); -1 on no match, null text or
 * a compile failure; -2 on an internal matcher error. The GNU interface lets "$" match
 * before a line feed, so "ab\nanything" rates 2. The syntax bits are process-wide state of
 * the runtime: they are set for the compile and restored after it. */
SYSCOMMON_API int Ssys_CheckStringHostname(const char *text);
/* Compiles `pattern` with *options as regcomp flags (REG_EXTENDED when options is null):
 * 0 on a match, REG_NOMATCH (1) otherwise, regcomp's code when the pattern is invalid
 * (printed to stderr). Null text or pattern: prints "Invalid parameter" to stderr, -1. */
SYSCOMMON_API int Ssys_CheckStringRegex(const char *text, const char *pattern, const int *options);
/* 1 if at least one character of the class occurs in text, else -1 (also for null). The
 * special class is "~!@#$%^&*-_|;:,.<>[]{}()". */
SYSCOMMON_API int Ssys_CheckStringDigit(const char *text);
SYSCOMMON_API int Ssys_CheckStringUppercase(const char *text);
SYSCOMMON_API int Ssys_CheckStringLowercase(const char *text);
SYSCOMMON_API int Ssys_CheckStringSpecialchar(const char *text);
/* 1 for a dotted-decimal IPv4 address as inet_pton(AF_INET) accepts it, else 0. */
SYSCOMMON_API int isValidIpAddress(const char *text);
/* 1 for a non-empty text of decimal digits only, else 0 (also for null). */
SYSCOMMON_API int isNumber(const char *text);
/* 1 if ANY of the first `length` bytes is nonzero; 0 when all are zero, length <= 0 or
 * bytes is null.
 * (The sense is the inverse of the name; callers rely on it.) */
SYSCOMMON_API int isZeroArray(const void *bytes, int length);
/* 1 if the low 8 bits of c are printable ASCII (32..126), else 0. */
SYSCOMMON_API int Lsyscommon_isValidCharacter(int c);
/* Remove leading and trailing spaces (only ' ') / carriage returns and line feeds in
 * place; return the length before trimming (0 for null). */
SYSCOMMON_API int Ssys_stripspace(char *text);
SYSCOMMON_API int Ssys_stripCR(char *text);
/* toupper / tolower of every character in place; return text. */
SYSCOMMON_API char *toUpper(char *text);
SYSCOMMON_API char *toLower(char *text);
/* strtok under the process-wide mutex MutexStrtok. The tokeniser's position is still
 * shared: finish one tokenisation before another thread starts one. */
SYSCOMMON_API char *lock_strtok(char *text, const char *delimiters);
/* Appends text to destination, a buffer of `size` bytes. Nothing is appended when
 * destination already holds `size` or more characters; when the result would reach `size`
 * characters only size - length characters are copied and NO terminator is written.
 * Returns destination. */
SYSCOMMON_API char *append_str(char *destination, const char *text, int size);
/* 1..12 from an English month abbreviation (first three letters at most, any case,
 * decided by the fewest letters: "Axe" gives 8); 0 otherwise. */
SYSCOMMON_API int month_str_to_int(const char *text);

/* ==== Time zones ==== */

/* The 63 zone labels, indexed by the time-zone index (ascending offsets). */
SYSCOMMON_API extern const char *const timezone_str[SHM_TIMEZONE_COUNT];

/* Offset in seconds east of UTC of row `index`. Unchecked: index must be 0..62. */
SYSCOMMON_API int Stimed_getTimeShiftByIndex(int index);
/* First index >= start (negative start counts as 0) with that offset; 63 when none. */
SYSCOMMON_API int Stimed_getTimeIndexByShift(int offset, int start);
/* Label of row index; "" outside 0..62. */
SYSCOMMON_API const char *Stimed_getTimeCityByIndex(int index);
/* First index with that offset whose label contains text, ignoring case; -1 when none. */
SYSCOMMON_API int Stimed_getTimeIndexByCity(int offset, const char *text);
/* Label of row index up to its first ", ", in a process-wide 64-byte buffer overwritten
 * by every call. */
SYSCOMMON_API const char *Stimed_getFirstTimeCityByIndex(int index);
/* Index of the zone hours:minutes east (west nonzero: west) of UTC; minutes of 30 or more
 * count as 30, fewer as 0; the LAST row with that offset; -1 unless 0 <= hours < 14 and
 * 0 <= minutes < 60, or when no row has the offset. */
SYSCOMMON_API int Stimed_getTimeZoneArrayIndex(int west, int hours, int minutes);
/* Seconds since boot (sysinfo); 0 after printing "code error = %d\n" when it fails. */
SYSCOMMON_API long get_uptime(void);
/* Boot counter: the number on the first line of "/mnt/log2/KVR900_BOOTUP_LOG"; 0 when the
 * file cannot be opened ("uptime fopen error") or is empty ("get_bootup get nothing"). */
SYSCOMMON_API int get_bootup(void);
/* "%dd%dh%dm%ds" of seconds into text_out (at least 16 bytes); returns its length. */
SYSCOMMON_API int Uptime_to_str(uint32_t seconds, char *text_out);

/* ==== Accounts ==== */

enum {
  ACCOUNT_MAX = 10,
  ACCOUNT_NAME_SIZE = 32,
  ACCOUNT_PASSWORD_SIZE = 32,
  /* authority values stored in a record */
  ACCOUNT_AUTH_SYSTEM_ADMIN = 0,
  ACCOUNT_AUTH_USER = 16,
  ACCOUNT_AUTH_CONFIG_ADMIN = 17,
  /* authority codes of account_set */
  ACCOUNT_CODE_SYSTEM_ADMIN = 1,
  ACCOUNT_CODE_CONFIG_ADMIN = 2,
  ACCOUNT_CODE_USER = 3,
  ACCOUNT_CODE_KEEP = 4,
  /* results */
  ACCOUNT_ERR_NOT_FOUND = 3,
  ACCOUNT_ERR_LAST_ADMIN = 7,
  ACCOUNT_ERR_RESERVED_NAME = 8,
  ACCOUNT_ERR_BAD_CODE = 11
};

/* One account record (72 bytes). */
typedef struct UserAccount {
  char name[ACCOUNT_NAME_SIZE];         /* zero-terminated; empty = end of the list */
  char password[ACCOUNT_PASSWORD_SIZE]; /* zero-terminated text */
  uint32_t state;     /* 1 = explicit authority given; 0 = created without one */
  uint32_t authority; /* ACCOUNT_AUTH_* */
} UserAccount;

/* The account list (720 bytes, segment 7894), filled from the front. */
typedef struct UserAccountList {
  UserAccount account[ACCOUNT_MAX];
} UserAccountList;

SYSCOMMON_STATIC_ASSERT(sizeof(UserAccount) == 72, "account record");
SYSCOMMON_STATIC_ASSERT(offsetof(UserAccount, state) == 64 && offsetof(UserAccount, authority) == 68,
                        "account fields");
SYSCOMMON_STATIC_ASSERT(sizeof(UserAccountList) == SHM_USER_ACCOUNT_SIZE, "account list");

/* Index 0..9 of the account named exactly `name` in the shared list; -1 for null, unknown,
 * or when an empty record comes first. */
SYSCOMMON_API int account_get_account_list_index(const char *name);
/* The same search; copies the record's 32-byte password field to password_out and
 * returns 0; -1 when absent. */
SYSCOMMON_API int account_get_account_password(const char *name, char *password_out);
/* Fills one record. authority_code (may be null): 1 System admin, 2 Configuration admin,
 * 3 user, 4 keep; any other value gives 11 and changes nothing. Null or 4: an existing
 * record keeps authority and state, a new one gets user (16) with state 0; codes 1..3 set
 * state 1. "admin" must be a System admin and "user" a user (both the given name and, for
 * an existing record, the record's own name are checked): otherwise 8, nothing changed.
 * A new record takes the name; every call stores state, authority and the password (null
 * stores ""). Names and passwords longer than 31 characters are cut. Result 0. */
SYSCOMMON_API int account_set(UserAccount *record, const int *authority_code, const char *name,
                              const char *password, int is_new);
/* Removes record index from list (the caller writes the list back): 3 when index is
 * outside 0..9 or the record is empty, 7 for the only System admin; else later records
 * move up, the last is cleared, 0. */
SYSCOMMON_API int account_rm(UserAccountList *list, int index);
/* Authority text into text_out: "System admin" when size > 5, "user" when size > 4,
 * "Configuration admin" when size > 12, result 0; 1 without writing when size is smaller.
 * The limits are below the bytes copied (13, 5, 20): pass at least 20 bytes. An unknown
 * authority prints "unknown authority: %d, %hhu\n" (authority, size) and gives 1. */
SYSCOMMON_API int account_get_authority_description(int authority, char *text_out, uint8_t size);

/* ==== Ports ==== */
/* Indices: 0..9 physical ports, 10..13 trunk groups 1..4, 14 the CPU port. The hardware
 * queries read the port entries of the device-identity record (syscommon/hw.h); an index
 * outside 0..9 reads as an absent port (type 0). */

/* 0 when index is above 9; else module 0, port index, 1 (a negative index is not refused). */
SYSCOMMON_API int Ssys_port2MdlPort(int index, int *module_out, int *port_out);
SYSCOMMON_API int Ssys_getModuleMaxPort(int module);   /* 10 */
SYSCOMMON_API int Ssc_checkModuleActive(int module);   /* 1 */
SYSCOMMON_API int Ssys_portIs10G(int index);           /* 0 */
SYSCOMMON_API int Ssys_checkPortExist(int index);
SYSCOMMON_API int Ssys_getPortMaxSpeed(int index); /* type bits 0-1 */
SYSCOMMON_API int Ssys_portIsFiber(int index);     /* type bit 2 (value 4) */
SYSCOMMON_API int Ssys_portIsMega(int index);      /* speed bits == 0 */
SYSCOMMON_API int Ssys_portIsGiga(int index);      /* speed bits == 1 */
SYSCOMMON_API int is_cpu_port(int index);          /* index == 14 */
/* 0 for negative; ports 0..9 when present and not trunked; 14 always; other indices when
 * some present port carries that trunk identifier. */
SYSCOMMON_API int Scf_checkPortActive(int index);
/* Label "1".."8", "G1", "G2", "Trk1".."Trk4" ("" otherwise) into text_out (at least 8
 * bytes); returns its length. */
SYSCOMMON_API int Ssys_getModulePortStr(int index, char *text_out);
/* "PORT%d" with index + 1, in a process-wide buffer overwritten by every call. */
SYSCOMMON_API const char *Get_port_name(int index);
/* Description of a port into text_out (at least 32 bytes): for a gigabit fibre port the
 * text of its transceiver slot (slot = number of fibre ports before it), "N/A" when empty or
 * beyond the slots; else the port's description text; "" outside 0..9. Returns the length. */
SYSCOMMON_API int Ssys_getModulePortDesc(int index, char *text_out);
/* 1 when vid occurs among the count entries of the ascending list; 0 when count <= 0 or
 * the last entry is below vid. */
SYSCOMMON_API int Ssc_port_vid_exist(uint16_t vid, const uint16_t *list, int count);
/* Compact text of a port bitmap (bit i = index i) such as "1/1-3,Trk2,"; returns its
 * length. There is no size argument: text_out must hold the longest list the port map can
 * give (128 bytes for the device's map). A range still open after index 13 stays unclosed
 * and the text keeps its final comma. */
SYSCOMMON_API int cli_lib_convBmp2PortNTrkStr(uint32_t bitmap, char *text_out);

/* ==== Process and kernel controls ==== */
/* Names and file names below are placed into shell commands as given: callers pass
 * program names, never user text. */

/* SCHED_RR at `priority` for pid; 0, or sched_setscheduler's result after printing
 * "Ssys_setTaskPriority() rv = %d, error". */
SYSCOMMON_API int Ssys_setTaskPriority(int pid, int priority);
/* tftp get (direction 0) or put (nonzero) of remote_file to/from local_path; the remote
 * name must pass Ssys_CheckString (else 1). Exit status of tftp; 1 when ended by a signal. */
SYSCOMMON_API int tftpTransfer(int direction, const char *server, const char *remote_file,
                               const char *local_path);
/* Ids from "pidof name", at most capacity; -1 when the command cannot be run. */
SYSCOMMON_API int get_pid_by_name(const char *name, int *pids, int capacity);
/* 1 when "ps | grep name | grep -v grep" lists something, else 0. */
SYSCOMMON_API int find_ap_run_in_ps(const char *name);
/* SIGTERM to the first listed process matching name; the shell status. */
SYSCOMMON_API int terminate_porcess(const char *name);
/* SIGKILL to every listed process matching name (case-insensitive) except agent_<name>;
 * for "ipsec" agent_parse_IpsecStatus survives too. Always 0. */
SYSCOMMON_API int Ssys_taskKillByName(const char *name);
/* Writes value to /proc/sys/net/ipv4/conf/all/rp_filter, except 1 (no-op). Always 0. */
SYSCOMMON_API int Ssys_rpfEnable(uint8_t value);
/* Writes count to /proc/sys/net/ipv4/igmp_max_memberships. Always 0. */
SYSCOMMON_API int Ssys_netSetIgmpMaxMemberships(int count);
/* Writes the calling thread's kernel id to /mnt/ramdisk/<file_name>; the shell status. */
SYSCOMMON_API int thread_log(const char *file_name);
/* The number on the first line of /proc/tarn/switch_init; 0 after "Error: Fail To Open"
 * when it cannot be opened. */
SYSCOMMON_API int check_phy_init(void);

SYSCOMMON_END_DECLS

#endif
