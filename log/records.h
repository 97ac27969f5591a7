// Scanners for the lines the log agent writes: one system, VPN or firewall event a line,
// numbers in hexadecimal, read with the fixed formats below.
#ifndef SYSCOMMON_LOG_RECORDS_H
#define SYSCOMMON_LOG_RECORDS_H

#include <cstdio>
#include <ctime>
#include <string>

#include "syscommon/log.h"

namespace syscommon::log {

// "%04x%02x%01x0%08x%02x%02x%02x%02x%02x%04x%08x%255[^\n]": event, reason, level, a literal
// '0', bootup, sec, min, hour, day, mon, year, uptime, then the argument text (which may
// be missing). True when every number was read; `rec` is cleared first.
bool scan_system_line(const char *line, SlogSystemRecord &rec);

// Copies the six time fields (sec, min, hour, day, mon, year) between records and entries.
template <class To, class From>
void copy_time(To &to, const From &from) {
  to.sec = from.sec;
  to.min = from.min;
  to.hour = from.hour;
  to.day = from.day;
  to.mon = from.mon;
  to.year = from.year;
}

// A broken-down time (month from 0, year since 1900, as the records keep it) into a record.
template <class Record>
void put_tm(Record &rec, const std::tm &tm) {
  rec.sec = tm.tm_sec;
  rec.min = tm.tm_min;
  rec.hour = tm.tm_hour;
  rec.day = tm.tm_mday;
  rec.mon = tm.tm_mon;
  rec.year = tm.tm_year;
}

// The line the log agent writes for `rec` (without its newline), in the form above: the
// level in one digit (low four bits), the text up to its terminator.
std::string format_system_line(const SlogSystemRecord &rec);

// "[text] " then code (8), sec, min, hour, day, mon (2 each), year (4). True when the
// text and every number were read; `rec` is cleared first.
bool scan_vpn_line(const char *line, SlogVpnRecord &rec);

// "lv[%1x]id[%5x]idx[%3x]tar[%1x]proto[%4x]ip[%8x]mac[...]port[%4x]ifs[%4x]ip[...]...
// repeat[%4x]" into a firewall log entry (log_type 2, time in the entry). True when all
// 33 fields were read; `entry` is cleared first.
bool scan_firewall_line(const char *line, SlogLogEntry &entry);

// The readers' loops over an open log file (lines cut to each reader's buffer, at most
// SLOG_MAX_ENTRIES lines and entries). System lines: those numbered `first_line` or later
// are appended after entries[0..count); returns the new count. VPN lines: the records
// scanned. Firewall lines: each entry at its line's position, a line starting with white
// space left empty; returns the lines parsed.
int read_system_lines(std::FILE *file, SlogLogEntry *entries, int count, int first_line);
int read_vpn_lines(std::FILE *file, SlogVpnRecord *records);
int read_firewall_lines(std::FILE *file, SlogLogEntry *entries);

}  // namespace syscommon::log

#endif
