/*
 * Event log: event and reason codes with their description tables, the records of the
 * log files written by the log agent (SendSyslog), and the rendering of those records to
 * the device's message texts.
 *
 * Events are numbers, never texts: a system event id, a reason id and a level. Every
 * table is searched by its id column (ids are not in ascending order; first match wins),
 * never by position, except where a comment says the id equals the position.
 */
#ifndef SYSCOMMON_LOG_H
#define SYSCOMMON_LOG_H

#include <pthread.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "syscommon/export.h"

SYSCOMMON_BEGIN_DECLS

/* ---- Description tables ---- */

/* Entry of event_desc_table, reason_desc_table and vpn_log_table. */
typedef struct SlogDescEntry {
  uint32_t id;     /* event id, reason id or VPN code */
  char text[128];  /* display text, NUL-terminated */
  uint32_t msg_id; /* six-digit message number, 0 where the entry has none */
} SlogDescEntry;

/* Entry of firewall_target_table and firewall_proto_table. */
typedef struct SlogShortEntry {
  uint32_t id;
  char text[64];
} SlogShortEntry;

/* Entry of TarnLog_level_desc_table. */
typedef struct SlogLevelEntry {
  uint32_t level;
  char text[40];
} SlogLevelEntry;

SYSCOMMON_STATIC_ASSERT(sizeof(SlogDescEntry) == 136, "description entry");
SYSCOMMON_STATIC_ASSERT(offsetof(SlogDescEntry, text) == 4 && offsetof(SlogDescEntry, msg_id) == 132,
                        "description entry fields");
SYSCOMMON_STATIC_ASSERT(sizeof(SlogShortEntry) == 68, "short entry");
SYSCOMMON_STATIC_ASSERT(sizeof(SlogLevelEntry) == 44, "level entry");

enum {
  SLOG_EVENT_DESC_COUNT = 35,
  SLOG_REASON_DESC_COUNT = 106,
  SLOG_VPN_LOG_COUNT = 31,
  SLOG_FIREWALL_TARGET_COUNT = 3,
  SLOG_FIREWALL_PROTO_COUNT = 7,
  SLOG_LEVEL_COUNT = 8,
  /* A firewall record's protocol at or above this names firewall_proto_table entry
   * (protocol - SLOG_FIREWALL_PROTO_BASE); below it, it is a raw IP protocol number. */
  SLOG_FIREWALL_PROTO_BASE = 256
};

SYSCOMMON_API extern const SlogDescEntry event_desc_table[SLOG_EVENT_DESC_COUNT];
SYSCOMMON_API extern const SlogDescEntry reason_desc_table[SLOG_REASON_DESC_COUNT];
SYSCOMMON_API extern const SlogDescEntry vpn_log_table[SLOG_VPN_LOG_COUNT];     /* code = position */
SYSCOMMON_API extern const SlogShortEntry firewall_target_table[SLOG_FIREWALL_TARGET_COUNT];
SYSCOMMON_API extern const SlogShortEntry firewall_proto_table[SLOG_FIREWALL_PROTO_COUNT];
SYSCOMMON_API extern const SlogLevelEntry TarnLog_level_desc_table[SLOG_LEVEL_COUNT]; /* level = position */

/* Firewall event ids (the id of a firewall record). */
enum {
  SLOG_FW_POLICY_HIT = 300101,      /* "[R%d] " */
  SLOG_FW_MALFORMED = 300102,       /* "[Malformed] " */
  SLOG_FW_SESSION_FULL = 300103,    /* "[R%d Session full] " */
  SLOG_FW_NULL_SCAN = 300201,
  SLOG_FW_XMAS_SCAN = 300202,
  SLOG_FW_NMAP_XMAS_SCAN = 300203,
  SLOG_FW_SYN_FIN_SCAN = 300204,
  SLOG_FW_FIN_SCAN = 300205,
  SLOG_FW_NMAP_ID_SCAN = 300206,
  SLOG_FW_SYN_RST_SCAN = 300207,
  SLOG_FW_TCP_WITHOUT_SYN_SCAN = 300208,
  SLOG_FW_ICMP_DEATH = 300209,
  SLOG_FW_SYN_FLOOD = 300210,
  SLOG_FW_ARP_FLOOD = 300211,       /* protocol holds the Ethernet type */
  SLOG_FW_TRUSTED_ACCESS = 300401
};

/* ---- Records of the log files ---- */

/* System log record: one line of "/mnt/log2/KVR900_LOG1" / "KVR900_LOG2", as read with
 * "%04x%02x%01x0%08x%02x%02x%02x%02x%02x%04x%08x%255[^\n]". Time fields follow struct tm
 * (mon counted from 0, year since 1900). */
typedef struct SlogSystemRecord {
  uint32_t event_id;  /* key into event_desc_table */
  uint8_t reason_id;  /* key into reason_desc_table */
  uint8_t level;      /* syslog level, low four bits */
  uint8_t reserved[2];
  uint32_t bootup;    /* number of the device start the event happened in */
  int32_t sec, min, hour, day, mon, year;
  uint32_t uptime;    /* seconds since that start */
  char text[256];     /* argument text (port, account, address ...) */
} SlogSystemRecord;

/* VPN log record: one line "[text] " + code, sec, min, hour, day, mon, year in hex. */
typedef struct SlogVpnRecord {
  char text[64];
  int32_t sec, min, hour, day, mon, year;
  uint32_t code;      /* key into vpn_log_table */
} SlogVpnRecord;

/* Firewall record (the firewall body of a log entry). Addresses are 32-bit values whose
 * bytes in memory are the address in network order; a port of 0 means none; interfaces
 * are VLAN ids. */
typedef struct SlogFirewallRecord {
  uint32_t rule_index;
  uint32_t id;        /* firewall event id (SLOG_FW_...) */
  uint32_t target;    /* index into firewall_target_table */
  uint32_t proto;     /* see SLOG_FIREWALL_PROTO_BASE; Ethernet type for ARP-Flood */
  uint32_t src_ip;
  uint32_t dst_ip;
  uint32_t src_port;
  uint8_t src_mac[6];
  uint8_t reserved0[2];
  uint32_t dst_port;
  uint8_t dst_mac[6];
  uint8_t reserved1[2];
  uint32_t in_vid;
  uint32_t out_vid;
  uint32_t repeat;    /* non-zero: the event happened more than once */
} SlogFirewallRecord;

/* Log entry: the in-memory form of one event of any log. */
enum { SLOG_TYPE_VPN = 1, SLOG_TYPE_FIREWALL = 2, SLOG_TYPE_SYSTEM = 3, SLOG_TYPE_KERNEL = 4 };
typedef struct SlogLogEntry {
  int32_t level;      /* 0..7 */
  int32_t log_type;   /* SLOG_TYPE_... */
  /* Destination flags of a firewall line (1 = also written to flash, sent to syslog,
   * sent as a trap); nothing in this library acts on them. */
  uint32_t flash, syslog, trap;
  int32_t sec, min, hour, day, mon, year;
  union {
    SlogSystemRecord system;
    SlogVpnRecord vpn;
    SlogFirewallRecord firewall;
  } body;
} SlogLogEntry;

SYSCOMMON_STATIC_ASSERT(sizeof(SlogSystemRecord) == 296, "system record");
SYSCOMMON_STATIC_ASSERT(offsetof(SlogSystemRecord, bootup) == 8 && offsetof(SlogSystemRecord, sec) == 12 &&
                            offsetof(SlogSystemRecord, uptime) == 36 && offsetof(SlogSystemRecord, text) == 40,
                        "system record fields");
SYSCOMMON_STATIC_ASSERT(sizeof(SlogVpnRecord) == 92 && offsetof(SlogVpnRecord, code) == 88, "VPN record");
SYSCOMMON_STATIC_ASSERT(sizeof(SlogFirewallRecord) == 60, "firewall record");
SYSCOMMON_STATIC_ASSERT(offsetof(SlogFirewallRecord, src_mac) == 28 && offsetof(SlogFirewallRecord, dst_port) == 36 &&
                            offsetof(SlogFirewallRecord, dst_mac) == 40 && offsetof(SlogFirewallRecord, in_vid) == 48 &&
                            offsetof(SlogFirewallRecord, repeat) == 56,
                        "firewall record fields");
SYSCOMMON_STATIC_ASSERT(offsetof(SlogLogEntry, sec) == 20 && offsetof(SlogLogEntry, body) == 44 &&
                            sizeof(SlogLogEntry) == 340,
                        "log entry");

/* ---- Tables and small helpers ---- */

/* Always 35, the number of entries of event_desc_table. */
SYSCOMMON_API uint32_t Slog_getEventDescTableSize(void);
/* Text and message number of the vpn_log_table entry of `code`. The code is the position
 * and is NOT bound-checked: callers pass codes 0..30 read from the VPN log. */
SYSCOMMON_API const char *get_ipsec_event_str(int code);
SYSCOMMON_API uint32_t get_ipsec_event_id(int code);
/* Reports one of the fixed events of put codes 1, 2, 6..9 and 15 by starting
 * "SendSyslog %d %d %d &" (event, reason, 4); other codes of 0..15 do nothing. The put
 * code is NOT range-checked (callers pass only 0..15); the other two arguments are
 * ignored. Returns 0 always. */
SYSCOMMON_API int Slog_put(int put_code, int ignored1, int ignored2);
/* True for the levels 0..7. */
SYSCOMMON_API bool alarm_config_is_severity_valid(uint32_t severity);
/* True for exactly the module masks 0..15 (bit 4 is refused although it lies inside the
 * five-bit field). */
SYSCOMMON_API bool alarm_port_config_is_enable_module_valid(uint32_t mask);

/* ---- Rendering ---- */

/* Renders a system record as "[msg_id] [event] detail ..., Bootup:%d, Startup:%s" (the
 * "[msg_id] " prefix only when show_msg_id is non-zero). Returns 1 when a text was
 * written, 0 when the event id is unknown (nothing written). The text is cut to `size`
 * bytes (terminator included) except for reason 0: then the event text alone is copied
 * WITHOUT a bound, so `out` must hold at least 38 bytes whatever `size` says. */
SYSCOMMON_API int Eventlog_to_Str(SlogSystemRecord record, char *out, int show_msg_id, size_t size);
/* Appends the text of a firewall entry (its firewall body) to the text already in `out`:
 * "[prefix] TARGET SRC_MAC=..., DST_MAC=..., PROTO=..., SRC_IP=..., [SRC_PORT=..., ]IN=...,
 * DST_IP=..., [DST_PORT=..., ]OUT=..." (ARP-Flood stops after "PROTO=0x%X"), then
 * " This event has happened more than once." when repeat is non-zero. Interface names are
 * looked up by VLAN id in the shared store. A target or a protocol (256 and above) beyond
 * its table prints as an empty text. `out` must hold 256 bytes more than its current
 * text; the appended text is cut to 255 characters. A null entry or `out` does nothing. */
SYSCOMMON_API void firewallLog_to_str(const SlogLogEntry *entry, char *out);
/* Transceiver warning for `code` = "%02d%02d" (kind 2..5, port index; indices above 7 are
 * reduced by 8, the port shown is index + 1), cut to `size` bytes. Returns the formatted
 * length; an unknown kind (or a null code) writes nothing and returns 0. */
SYSCOMMON_API int get_ddm_msg(const char *code, char *out, size_t size);
/* Clears `size` bytes of `out` and renders an event from its ids alone (reason: low
 * byte; every other field 0) with the message number, bounded by `size` (reason 0 as in
 * Eventlog_to_Str). Returns the length of the text. */
SYSCOMMON_API int Slog_printArg(char *out, size_t size, int event_id, int reason_id);

/* ---- Log files, parsing and export ---- */

/* Text entry: a log entry turned into text, for sorting and display. Unlike the log
 * entry, month counts from 1 and year is the full year (e.g. 2014). */
typedef struct SlogTextEntry {
  char text[256];
  int32_t sec, min, hour, day, month, year;
  int32_t level;
  int32_t log_type;   /* SLOG_TYPE_..., 4 = kernel */
} SlogTextEntry;

SYSCOMMON_STATIC_ASSERT(sizeof(SlogTextEntry) == 288 && offsetof(SlogTextEntry, sec) == 256 &&
                            offsetof(SlogTextEntry, level) == 280 && offsetof(SlogTextEntry, log_type) == 284,
                        "text entry");

/* Every reader fills at most this many entries; callers provide arrays of this size. */
enum { SLOG_MAX_ENTRIES = 1000 };

/* Readers. Each returns the number of entries filled, 0 when the file cannot be opened.
 * A line longer than the reader's buffer counts as one line; the part beyond the buffer
 * is not read. A line that does not scan gives no entry. */
/* "/mnt/log2/vpn_log" into VPN bodies, under semaphore 1517. */
SYSCOMMON_API int Read_ipseclogfile(SlogVpnRecord *records);
/* "/mnt/log2/firewall_log"; the caller holds semaphore 1519. A file of more than 1000
 * lines gives 0 (not shown until trimmed). A line starting with white space is skipped
 * but keeps its position (an empty entry); the result counts the parsed lines only. */
SYSCOMMON_API int Read_firewalllogfile(SlogLogEntry *entries);
/* "/mnt/log2/KVR900_LOG1", then the lines of "/mnt/log2/KVR900_LOG2" beyond the count
 * read from the first, into system bodies; the caller holds semaphore 1519. */
SYSCOMMON_API int Read_systemlogfile(SlogLogEntry *entries);
/* Common entry: 1 VPN, 2 firewall, 3 system (the semaphore taken here); entries get
 * level, type and time filled. Any other type gives 0. */
SYSCOMMON_API int Read_logfile(SlogLogEntry *entries, int log_type);
/* Read_logfile into a scratch array, then cpLog2TarnLog. */
SYSCOMMON_API int Read_tarnlogfile(SlogTextEntry *texts, int log_type, int min_level, int max_level);
/* Converts the entries whose level lies in min_level..max_level (inclusive, input order)
 * to text entries; returns how many were written. */
SYSCOMMON_API int cpLog2TarnLog(SlogTextEntry *texts, SlogLogEntry *entries, int log_type, int count,
                                int min_level, int max_level);

/* Parses "YYYY-MM-DD hh:mm:ss severity [host] category: word: text" (the line is cut up
 * in place). 1 when parsed, 0 when the line ends early (the entry is then partly
 * filled). */
SYSCOMMON_API int paserTarnlog(char *line, SlogTextEntry *entry);
/* Parses a firewall event in syslog-text form ("<pri>YYYY-MM-DD hh:mm:ss severity [host]
 * category: ID [flags] [Rn] TARGET SRC_MAC=..., ...") back into a log entry (the line is
 * cut up in place). 1 when parsed; 0 after printing the failing step's message. */
SYSCOMMON_API int paserTarnFirewalllog(char *line, SlogLogEntry *entry);
/* Splits "a,b" at its first comma (in place): *a = atoi(a), *b = atoi(b); returns *b.
 * Without a comma *b is 0. */
SYSCOMMON_API int paserTarnlogIdx(char *text, int *a, int *b);
/* Copies what follows `key` in `haystack` (an empty key: the whole haystack) into `out`
 * after clearing its `size` bytes: returns the length copied, 0 when that text is empty
 * or not shorter than `size`, -1 (with a message) when the key is missing. */
SYSCOMMON_API int getVariableFromString(const char *key, const char *haystack, char *out, int size);
/* First alphanumeric character of text, or null. */
SYSCOMMON_API char *getNextChar(char *text);
/* Sort key: ((((year*12+month)*30+day)*24+hour)*60+min)*60+sec in wrapping 32-bit
 * arithmetic, as a double. It orders; it does not measure. */
SYSCOMMON_API double convertDateTime2Sec(const SlogTextEntry *entry);
SYSCOMMON_API void swapData(SlogTextEntry *texts, int i, int j);
/* Sorts texts[lo..hi] newest first (not stable). */
SYSCOMMON_API void quickSort(SlogTextEntry *texts, int lo, int hi);

/* Export writers: fixed-width tables with CR LF line ends into an open file; 0, or -1
 * when a separator line cannot be written. Write_Firewall_Log_File turns each entry's
 * year and month into 1900 + year and month + 1 IN PLACE: an array exported twice is
 * changed twice. */
SYSCOMMON_API int Write_Log_File(FILE *file, int count, const SlogSystemRecord *records);
SYSCOMMON_API int Write_IPsec_Log_File(FILE *file, int count, const SlogVpnRecord *records);
SYSCOMMON_API int Write_Firewall_Log_File(FILE *file, int count, SlogLogEntry *entries);
/* Export makers: "/mnt/ramdisk/TARN_LOG.ini", "TARN_IPSec_LOG.ini", "TARN_Firewall_LOG.ini"
 * and "TARN_Kernel_LOG.ini" (the kernel log copied as it is). Each returns the writer's
 * result (the copy's status for the kernel log), -1 after "%s fopen error". */
SYSCOMMON_API int SytemLogMake(void);
SYSCOMMON_API int IPSecLogMake(void);
SYSCOMMON_API int FirewallLogMake(void);
SYSCOMMON_API int KernelLogMake(void);
/* Packs the three exports made before and the memory-usage record into
 * "TARN_All_LOG.tar.gz" in the CURRENT WORKING DIRECTORY, which must be "/mnt/ramdisk"
 * for the archive to hold anything. Returns the status of the final clean-up. */
SYSCOMMON_API int AllLogMake(void);
/* Line count of a file ("wc -l"); 0 when the command cannot start or prints nothing. */
SYSCOMMON_API int get_tarn_log_lines(const char *path);
/* Mode 1 inserts `text` as the first line of `path`, mode 2 deletes line `line` (through
 * `tmp_path`); then every other file of "/mnt/log2/" named like "firewall_log" is removed.
 * Returns the status of that removal. */
SYSCOMMON_API int doSedForLogFile(const char *path, const char *tmp_path, int line, int mode, const char *text);

/* ---- Event launchers and syslog forwarding ---- */

/* Each launcher starts the log agent in the background through the shell and returns the
 * shell's status (which only says whether the shell started). Texts reach the shell as
 * they are: callers must not pass untrusted text holding shell metacharacters. */
/* "SendSyslog %d %d %d &". */
SYSCOMMON_API int call_SendSyslog_to_log(int event, int reason, int arg);
/* "SendSyslog %d %d %d '%s' &" (no text: the form above), cut to 255 characters. */
SYSCOMMON_API int call_SendSyslog_with_msg_to_log(int event, int reason, int arg, const char *text);
/* Event 30 ("Event log capacity is over threshold.") with reason log_reason, argument 6. */
SYSCOMMON_API int send_log_over_threshold(int log_reason);
/* "SendSyslog %d %d %d %s > /dev/null 2>&1 &": result 16 gives reason 36, 17 and 0 give
 * 35, any other result is the reason. A user "'" or "\"" (or null) becomes
 * "unknown_user"; any other name is placed unquoted. */
SYSCOMMON_API int Lsyscommon_SendLoginResult_with_UserName(int event, int result, int arg, const char *user);
/* Reports event 42 / reason 116 with the text of `reason` through "/sbin/SendSyslog" when
 * that reason exists, waits one second, then runs "conntrack -F"; returns its status. */
SYSCOMMON_API int flush_conntrack_and_log(int reason);

/* Syslog queue: 64 slots, no lock. syslog_send fills the slot at syslog_write_index and
 * advances it (63 wraps to 0); the thread sends slots to syslog, at most two a second. */
enum { SLOG_SYSLOG_SLOTS = 64, SLOG_SYSLOG_TEXT = 256 };
SYSCOMMON_API extern char messages[SLOG_SYSLOG_SLOTS][SLOG_SYSLOG_TEXT];
SYSCOMMON_API extern int32_t priorities[SLOG_SYSLOG_SLOTS];
SYSCOMMON_API extern int32_t syslog_write_index;
SYSCOMMON_API extern int32_t ThreadSyslog;     /* last flag given to syslog_send; not read */
SYSCOMMON_API extern pthread_t syslog_th;
SYSCOMMON_API extern pthread_attr_t syslog_attr;
SYSCOMMON_API extern int32_t syslog_pthred_arg; /* passed to the thread, which ignores it */
/* Starts Syslog_thread (call once per process); pthread_create's result. */
SYSCOMMON_API int startup_syslog_thread(void);
/* Queues one message. A text of 256 characters or more fills its slot and its terminator
 * lands on the first byte of the next slot (kept as the device does; after the last slot
 * it lands on a private byte). A burst of more than 64 overwrites unsent slots. Returns 0. */
SYSCOMMON_API int syslog_send(const char *text, int priority, int flag);
/* The thread body: never returns. */
SYSCOMMON_API void *Syslog_thread(void *arg);

/* Security notification: 72-byte datagram to the notification agent. */
typedef struct SlogSecurityNotification {
  uint32_t log_type;  /* 2 firewall, 3 system */
  uint32_t event_id;
  uint8_t zero[64];
} SlogSecurityNotification;
SYSCOMMON_STATIC_ASSERT(sizeof(SlogSecurityNotification) == 72, "security notification");
/* Sends the entry's type and event id to socket "NET_SECURITY_NOTIFICATION_SENDLOG.SOCKET"
 * through send_agent; -1 for a VPN (or other) entry and for an accepted policy-rule hit. */
SYSCOMMON_API int Send_Security_Notification(const SlogLogEntry *entry);

/* Debug appenders. */
/* File name under "/mnt/ramdisk" that ramdisk_debug appends to (initially "rdfile"). */
SYSCOMMON_API extern const char *rdfile;
/* "echo %s >> /mnt/ramdisk/<rdfile>" (text unquoted); the shell's status. */
SYSCOMMON_API int ramdisk_debug(const char *text);
/* Appends "[uptime] message" (message cut to 255 characters) to
 * "/mnt/ramdisk/tarn_debug_msg"; the shell's status. */
SYSCOMMON_API int tarn_debug_message(const char *format, ...) __attribute__((format(printf, 1, 2)));
SYSCOMMON_API int tarn_vdebug_message(const char *format, va_list args) __attribute__((format(printf, 1, 0)));
/* Writes the `count` numbers of oid as "%ld" joined by points into `out` (NOT bounded:
 * the caller sizes it); returns the length. A count below 1 writes an empty text. */
SYSCOMMON_API int Get_Oid_to_Str(const long *oid, char *out, int count);
/* Four hexadecimal bytes "%2x%2x%2x%2x" as "%u.%u.%u.%u" into out (size bytes), in the
 * order read (order 0) or reversed (order non-zero, for little-endian /proc tables);
 * -1 when hex does not hold four bytes. */
SYSCOMMON_API int ip_hex_to_dquad(const char *hex, char *out, size_t size, int order);

SYSCOMMON_END_DECLS

#endif
