// Generated log files for the tests and the benchmark: records of every kind built from
// their index, and the lines the log agent writes for them.
#ifndef SYSCOMMON_LOG_TEST_LOGS_H
#define SYSCOMMON_LOG_TEST_LOGS_H

#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

#include "log/records.h"
#include "syscommon/log.h"

namespace syscommon::testing {

// Broken-down time of minute i after 2014-03-05 10:20:30 UTC (records are chronological).
template <class Record>
void put_minute(Record &r, int i) {
  const std::time_t t = 1394014830 + static_cast<std::time_t>(i) * 61;
  std::tm tm{};
  gmtime_r(&t, &tm);
  syscommon::log::put_tm(r, tm);
}

inline SlogSystemRecord system_record(int i) {
  static constexpr struct {
    uint32_t event;
    uint8_t reason;
    const char *text;
  } kEvents[] = {{0, 0, ""}, {13, 35, "admin"}, {9, 14, ""}, {6, 56, ""}, {42, 116, "VLAN"}, {12, 36, "bob"}};
  const auto &ev = kEvents[static_cast<std::size_t>(i) % std::size(kEvents)];
  SlogSystemRecord r{};
  r.event_id = ev.event;
  r.reason_id = ev.reason;
  r.level = static_cast<uint8_t>(i % 8);
  r.bootup = 3;
  put_minute(r, i);
  r.uptime = 100u + static_cast<uint32_t>(i) * 61u;
  std::snprintf(r.text, sizeof r.text, "%s", ev.text);
  return r;
}

inline SlogVpnRecord vpn_record(int i) {
  SlogVpnRecord r{};
  std::snprintf(r.text, sizeof r.text, "tunnel%d %d", i % 4, i % 3 == 0 ? 200102 : 300304);
  r.code = static_cast<uint32_t>(i % SLOG_VPN_LOG_COUNT);
  put_minute(r, i);
  return r;
}

inline SlogLogEntry firewall_entry(int i) {
  static constexpr uint32_t kIds[] = {SLOG_FW_POLICY_HIT, SLOG_FW_SESSION_FULL, SLOG_FW_NULL_SCAN, SLOG_FW_SYN_FLOOD};
  SlogLogEntry e{};
  e.level = i % 8;
  e.log_type = SLOG_TYPE_FIREWALL;
  e.flash = static_cast<uint32_t>(i % 2);
  e.trap = 1;
  put_minute(e, i);
  SlogFirewallRecord &f = e.body.firewall;
  f.id = kIds[static_cast<std::size_t>(i) % std::size(kIds)];
  f.rule_index = static_cast<uint32_t>(i % 16);
  f.target = 1 + static_cast<uint32_t>(i % 2);
  f.proto = i % 3 == 0 ? 1 : 257;
  f.src_ip = 0x6401a8c0u + static_cast<uint32_t>(i % 200) * 0x01000000u;
  f.dst_ip = 0x0100000au;
  f.src_port = f.proto == 1 ? 0 : static_cast<uint32_t>(i % 5) * 1000u;  // ICMP has no ports
  f.dst_port = f.proto == 1 ? 0 : 443;
  for (int b = 0; b < 6; ++b) {
    f.src_mac[b] = static_cast<uint8_t>(0x10 * b + i % 16);
    f.dst_mac[b] = static_cast<uint8_t>(0xa0 + b);
  }
  f.in_vid = 1;
  f.out_vid = 2;
  f.repeat = static_cast<uint32_t>(i % 4 == 0 ? 3 : 0);
  return e;
}

inline std::string vpn_line(const SlogVpnRecord &r) {
  char line[160];
  std::snprintf(line, sizeof line, "[%s] %08x%02x%02x%02x%02x%02x%04x", r.text, r.code, r.sec, r.min, r.hour, r.day,
                r.mon, r.year);
  return line;
}

inline std::string firewall_line(const SlogLogEntry &e) {
  const SlogFirewallRecord &f = e.body.firewall;
  char line[512];
  std::snprintf(line, sizeof line,
                "lv[%1x]id[%5x]idx[%03x]tar[%1x]proto[%04x]ip[%08x]mac[%02x%02x%02x%02x%02x%02x]port[%04x]ifs[%04x]"
                "ip[%08x]mac[%02x%02x%02x%02x%02x%02x]port[%04x]ifs[%04x]sec[%02x]min[%02x]hour[%02x]day[%02x]"
                "mon[%02x]year[%04x]flash[%1x]syslog[%1x]trap[%1x]repeat[%04x]",
                e.level, f.id, f.rule_index, f.target, f.proto, f.src_ip, f.src_mac[0], f.src_mac[1], f.src_mac[2],
                f.src_mac[3], f.src_mac[4], f.src_mac[5], f.src_port, f.in_vid, f.dst_ip, f.dst_mac[0], f.dst_mac[1],
                f.dst_mac[2], f.dst_mac[3], f.dst_mac[4], f.dst_mac[5], f.dst_port, f.out_vid, e.sec, e.min, e.hour,
                e.day, e.mon, e.year, e.flash, e.syslog, e.trap, f.repeat);
  return line;
}

// Lines first..first+count-1 of a generated log of `kind` ("system", "vpn", "firewall").
inline std::vector<std::string> log_lines(const std::string &kind, int first, int count) {
  std::vector<std::string> lines;
  for (int i = first; i < first + count; ++i) {
    if (kind == "system")
      lines.push_back(syscommon::log::format_system_line(system_record(i)));
    else if (kind == "vpn")
      lines.push_back(vpn_line(vpn_record(i)));
    else
      lines.push_back(firewall_line(firewall_entry(i)));
  }
  return lines;
}

inline void write_lines(const std::string &path, const std::vector<std::string> &lines) {
  std::ofstream out(path, std::ios::trunc);
  for (const std::string &l : lines) out << l << '\n';
}

}  // namespace syscommon::testing

#endif
