// The three line formats of the log agent read back into records.
#include <cstdio>
#include <cstring>
#include <string>

#include "log/records.h"
#include "support/test_support.h"

namespace {

using syscommon::log::scan_firewall_line;
using syscommon::log::scan_system_line;
using syscommon::log::scan_vpn_line;

// Every field in record order, so one comparison shows which one landed wrong.
std::string fields(const SlogSystemRecord &r) {
  char buf[512];
  std::snprintf(buf, sizeof buf, "%u %u %u %u %d %d %d %d %d %d %u '%s'", r.event_id, r.reason_id, r.level, r.bootup,
                r.sec, r.min, r.hour, r.day, r.mon, r.year, r.uptime, r.text);
  return buf;
}

TEST(LogRecords, SystemLine) {
  SlogSystemRecord r{};
  // event 0x0d, reason 0x24, level 6, '0', bootup 0x2a, sec 3, min 4, hour 5, day 2,
  // month 0x0b, year 0x7e, uptime 0x15180, argument "admin".
  ASSERT_TRUE(scan_system_line("000d24600000002a030405020b007e00015180admin\n", r));
  EXPECT_EQ(fields(r), "13 36 6 42 3 4 5 2 11 126 86400 'admin'");

  std::memset(r.text, 'x', sizeof r.text);
  ASSERT_TRUE(scan_system_line("00091000000000010000000000007600000005\n", r));
  EXPECT_EQ(fields(r), "9 16 0 1 0 0 0 0 0 118 5 ''");  // the text is cleared, not left from before

  const std::string line = "00260000000000010000000000007600000005" + std::string(300, 'y');
  ASSERT_TRUE(scan_system_line(line.c_str(), r));
  EXPECT_EQ(std::strlen(r.text), 255u);

  EXPECT_FALSE(scan_system_line("000d24610000002a", r));                // cut short
  EXPECT_FALSE(scan_system_line("000d24610000002a030405020b007e", r));  // no uptime
}

TEST(LogRecords, SystemLineWrittenAsTheAgentDoes) {
  SlogSystemRecord r{};
  r.event_id = 0x2a;
  r.reason_id = 0xff;
  r.level = 0x16;  // one digit: the low four bits
  r.bootup = 0xdeadbeef;
  r.sec = 59, r.min = 7, r.hour = 23, r.day = 31, r.mon = 11, r.year = 126;
  r.uptime = 0x12345678;
  std::strcpy(r.text, "VLAN 5");
  const std::string line = syscommon::log::format_system_line(r);
  EXPECT_EQ(line, "002aff60deadbeef3b07171f0b007e12345678VLAN 5");
  SlogSystemRecord back{};
  ASSERT_TRUE(scan_system_line(line.c_str(), back));
  r.level = 6;
  EXPECT_EQ(fields(back), fields(r));
}

TEST(LogRecords, VpnLine) {
  SlogVpnRecord r{};
  ASSERT_TRUE(scan_vpn_line("[tunnel1 200102] 0000000a1e1f0c05020072\n", r));
  EXPECT_STREQ(r.text, "tunnel1 200102");
  const int want[] = {10, 30, 31, 12, 5, 2, 114};
  const int got[] = {static_cast<int>(r.code), r.sec, r.min, r.hour, r.day, r.mon, r.year};
  EXPECT_EQ(std::memcmp(want, got, sizeof want), 0);
  ASSERT_TRUE(scan_vpn_line(("[" + std::string(70, 't') + "] 0000000a1e1f0c05020072").c_str(), r));
  EXPECT_EQ(std::strlen(r.text), 63u);
  EXPECT_FALSE(scan_vpn_line("no brackets 0000000a", r));
  EXPECT_FALSE(scan_vpn_line("[text] 0000", r));
}

TEST(LogRecords, FirewallLine) {
  // The agent writes every number zero-padded to its width.
  char line[] =
      "lv[4]id[49445]idx[004]tar[2]proto[0101]ip[6401a8c0]mac[001122334455]port[0000]ifs[0005]ip[0100000a]"
      "mac[aabbccddeeff]port[01bb]ifs[0002]sec[01]min[02]hour[03]day[04]mon[05]year[0072]flash[1]syslog[0]trap[1]"
      "repeat[0003]\n";
  SlogLogEntry e{};
  ASSERT_TRUE(scan_firewall_line(line, e));
  const SlogFirewallRecord &f = e.body.firewall;
  char got[512];
  std::snprintf(got, sizeof got,
                "%d %d | %u %u %u %u | %x %02x:%02x:%02x:%02x:%02x:%02x %u %u | %x %02x:%02x:%02x:%02x:%02x:%02x %u %u"
                " | %d %d %d %d %d %d | %u %u %u %u",
                e.level, e.log_type, f.id, f.rule_index, f.target, f.proto, f.src_ip, f.src_mac[0], f.src_mac[1],
                f.src_mac[2], f.src_mac[3], f.src_mac[4], f.src_mac[5], f.src_port, f.in_vid, f.dst_ip, f.dst_mac[0],
                f.dst_mac[1], f.dst_mac[2], f.dst_mac[3], f.dst_mac[4], f.dst_mac[5], f.dst_port, f.out_vid, e.sec,
                e.min, e.hour, e.day, e.mon, e.year, e.flash, e.syslog, e.trap, f.repeat);
  EXPECT_STREQ(got,
               "4 2 | 300101 4 2 257 | 6401a8c0 00:11:22:33:44:55 0 5 | 100000a aa:bb:cc:dd:ee:ff 443 2"
               " | 1 2 3 4 5 114 | 1 0 1 3");

  line[std::strlen(line) - 6] = '\0';  // repeat value cut off
  EXPECT_FALSE(scan_firewall_line(line, e));
}

}  // namespace
