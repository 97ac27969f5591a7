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

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

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
enum { SLOG_TYPE_VPN = 1, SLOG_TYPE_FIREWALL = 2, SLOG_TYPE_SYSTEM = 3 };
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

SYSCOMMON_END_DECLS

#endif
