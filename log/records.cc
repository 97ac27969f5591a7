#include "log/records.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace syscommon::log {

static_assert(sizeof(SlogSystemRecord{}.text) == 256, "the scan width 255 below leaves the terminator");
static_assert(sizeof(SlogVpnRecord{}.text) == 64, "the scan width 63 below leaves the terminator");

namespace {
// Stores the scanned time fields (month 0-based, year since 1900) in any record that has them.
template <class Record>
void put_time(Record &rec, unsigned sec, unsigned min, unsigned hour, unsigned day, unsigned mon, unsigned year) {
  rec.sec = static_cast<int32_t>(sec);
  rec.min = static_cast<int32_t>(min);
  rec.hour = static_cast<int32_t>(hour);
  rec.day = static_cast<int32_t>(day);
  rec.mon = static_cast<int32_t>(mon);
  rec.year = static_cast<int32_t>(year);
}
}  // namespace

bool scan_system_line(const char *line, SlogSystemRecord &rec) {
  rec = SlogSystemRecord{};
  unsigned ev = 0, reason = 0, level = 0, bootup = 0, sec = 0, min = 0, hour = 0, day = 0, mon = 0, year = 0,
           uptime = 0;
  int n = std::sscanf(line, "%04x%02x%01x0%08x%02x%02x%02x%02x%02x%04x%08x%255[^\n]", &ev, &reason, &level, &bootup,
                      &sec, &min, &hour, &day, &mon, &year, &uptime, rec.text);
  if (n < 11) return false;
  rec.event_id = ev;
  rec.reason_id = static_cast<uint8_t>(reason);
  rec.level = static_cast<uint8_t>(level);
  rec.bootup = bootup;
  put_time(rec, sec, min, hour, day, mon, year);
  rec.uptime = uptime;
  return true;
}

std::string format_system_line(const SlogSystemRecord &rec) {
  char line[128 + sizeof rec.text];
  std::snprintf(line, sizeof line, "%04x%02x%01x0%08x%02x%02x%02x%02x%02x%04x%08x%.255s", rec.event_id & 0xFFFFu,
                static_cast<unsigned>(rec.reason_id), rec.level & 0xFu, rec.bootup, static_cast<unsigned>(rec.sec) & 0xFFu,
                static_cast<unsigned>(rec.min) & 0xFFu, static_cast<unsigned>(rec.hour) & 0xFFu,
                static_cast<unsigned>(rec.day) & 0xFFu, static_cast<unsigned>(rec.mon) & 0xFFu,
                static_cast<unsigned>(rec.year) & 0xFFFFu, rec.uptime, rec.text);
  return line;
}

bool scan_vpn_line(const char *line, SlogVpnRecord &rec) {
  rec = SlogVpnRecord{};
  if (std::sscanf(line, "[%63[^]]]", rec.text) != 1) return false;
  unsigned code = 0, sec = 0, min = 0, hour = 0, day = 0, mon = 0, year = 0;
  if (std::sscanf(line, "%*[^]]] %08x%02x%02x%02x%02x%02x%04x\n", &code, &sec, &min, &hour, &day, &mon, &year) != 7)
    return false;
  rec.code = code;
  put_time(rec, sec, min, hour, day, mon, year);
  return true;
}

bool scan_firewall_line(const char *line, SlogLogEntry &entry) {
  entry = SlogLogEntry{};
  unsigned lv = 0, id = 0, idx = 0, tar = 0, proto = 0, sip = 0, sport = 0, sifs = 0, dip = 0, dport = 0, difs = 0;
  unsigned sec = 0, min = 0, hour = 0, day = 0, mon = 0, year = 0, flash = 0, syslog = 0, trap = 0, repeat = 0;
  unsigned smac[6] = {}, dmac[6] = {};
  int n = std::sscanf(line,
                      "lv[%1x]id[%5x]idx[%3x]tar[%1x]proto[%4x]ip[%8x]mac[%2x%2x%2x%2x%2x%2x]port[%4x]ifs[%4x]"
                      "ip[%8x]mac[%2x%2x%2x%2x%2x%2x]port[%4x]ifs[%4x]sec[%2x]min[%2x]hour[%2x]day[%2x]mon[%2x]"
                      "year[%4x]flash[%1x]syslog[%1x]trap[%1x]repeat[%4x]",
                      &lv, &id, &idx, &tar, &proto, &sip, &smac[0], &smac[1], &smac[2], &smac[3], &smac[4], &smac[5],
                      &sport, &sifs, &dip, &dmac[0], &dmac[1], &dmac[2], &dmac[3], &dmac[4], &dmac[5], &dport, &difs,
                      &sec, &min, &hour, &day, &mon, &year, &flash, &syslog, &trap, &repeat);
  if (n != 33) return false;
  entry.level = static_cast<int32_t>(lv);
  entry.log_type = SLOG_TYPE_FIREWALL;
  entry.flash = flash;
  entry.syslog = syslog;
  entry.trap = trap;
  put_time(entry, sec, min, hour, day, mon, year);
  SlogFirewallRecord &fw = entry.body.firewall;
  fw.rule_index = idx;
  fw.id = id;
  fw.target = tar;
  fw.proto = proto;
  fw.src_ip = sip;
  fw.dst_ip = dip;
  fw.src_port = sport;
  fw.dst_port = dport;
  fw.in_vid = sifs;
  fw.out_vid = difs;
  fw.repeat = repeat;
  for (int i = 0; i < 6; ++i) {
    fw.src_mac[i] = static_cast<uint8_t>(smac[i]);
    fw.dst_mac[i] = static_cast<uint8_t>(dmac[i]);
  }
  return true;
}

}  // namespace syscommon::log
