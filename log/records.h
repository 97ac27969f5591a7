// Scanners for the lines the log agent writes: one system, VPN or firewall event a line,
// numbers in hexadecimal, read with the fixed formats below.
#ifndef SYSCOMMON_LOG_RECORDS_H
#define SYSCOMMON_LOG_RECORDS_H

#include <string>

#include "syscommon/log.h"

namespace syscommon::log {

// "%04x%02x%01x0%08x%02x%02x%02x%02x%02x%04x%08x%255[^\n]": event, reason, level, a literal
// '0', bootup, sec, min, hour, day, mon, year, uptime, then the argument text (which may
// be missing). True when every number was read; `rec` is cleared first.
bool scan_system_line(const char *line, SlogSystemRecord &rec);

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

}  // namespace syscommon::log

#endif
