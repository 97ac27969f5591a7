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

TEST(LogRecords, SystemLineEveryFieldAtItsWidth) {
  // event 0x0d, reason 0x24, level 6, '0', bootup 0x2a, 05:04:03 on day 2 of month 0x0b,
  // year 0x7e (2026), uptime 0x15180, argument "admin".
  SlogSystemRecord r{};
  ASSERT_TRUE(scan_system_line("000d24600000002a030405020b007e00015180admin\n", r));
  EXPECT_EQ(r.event_id, 13u);
  EXPECT_EQ(r.reason_id, 36);
  EXPECT_EQ(r.level, 6);
  EXPECT_EQ(r.bootup, 42u);
  EXPECT_EQ(r.sec, 3);
  EXPECT_EQ(r.min, 4);
  EXPECT_EQ(r.hour, 5);
  EXPECT_EQ(r.day, 2);
  EXPECT_EQ(r.mon, 11);
  EXPECT_EQ(r.year, 126);
  EXPECT_EQ(r.uptime, 86400u);
  EXPECT_STREQ(r.text, "admin");
}

TEST(LogRecords, SystemLineWithoutTextOrWithLongText) {
  SlogSystemRecord r{};
  std::memset(r.text, 'x', sizeof r.text);
  // event 9, reason 0x10, level 0, bootup 1, time all 0, year 0x76, uptime 5, no text.
  ASSERT_TRUE(scan_system_line("0009" "10" "0" "0" "00000001" "0000000000" "0076" "00000005" "\n", r));
  EXPECT_EQ(r.event_id, 9u);
  EXPECT_EQ(r.reason_id, 16);
  EXPECT_STREQ(r.text, "");  // cleared, not left from before

  std::string line = "0026" "00" "0" "0" "00000001" "0000000000" "0076" "00000005" + std::string(300, 'y');
  ASSERT_TRUE(scan_system_line(line.c_str(), r));
  EXPECT_EQ(std::strlen(r.text), 255u);

  EXPECT_FALSE(scan_system_line("000d24610000002a", r));  // cut short
  EXPECT_FALSE(scan_system_line("000d24610000002a030405020b007e", r));  // no uptime
}

TEST(LogRecords, VpnLine) {
  SlogVpnRecord r{};
  ASSERT_TRUE(scan_vpn_line("[tunnel1 200102] 0000000a1e1f0c05020072\n", r));
  EXPECT_STREQ(r.text, "tunnel1 200102");
  EXPECT_EQ(r.code, 10u);
  EXPECT_EQ(r.sec, 30);
  EXPECT_EQ(r.min, 31);
  EXPECT_EQ(r.hour, 12);
  EXPECT_EQ(r.day, 5);
  EXPECT_EQ(r.mon, 2);
  EXPECT_EQ(r.year, 114);
  EXPECT_FALSE(scan_vpn_line("no brackets 0000000a", r));
  EXPECT_FALSE(scan_vpn_line("[text] 0000", r));
}

TEST(LogRecords, FirewallLine) {
  // The agent writes every number zero-padded to its width.
  char line[512];
  std::snprintf(line, sizeof line,
                "lv[%01x]id[%05x]idx[%03x]tar[%01x]proto[%04x]ip[%08x]mac[%02x%02x%02x%02x%02x%02x]port[%04x]"
                "ifs[%04x]ip[%08x]mac[%02x%02x%02x%02x%02x%02x]port[%04x]ifs[%04x]sec[%02x]min[%02x]hour[%02x]"
                "day[%02x]mon[%02x]year[%04x]flash[%01x]syslog[%01x]trap[%01x]repeat[%04x]\n",
                4u, 300101u, 4u, 2u, 257u, 0x6401A8C0u, 0u, 0x11u, 0x22u, 0x33u, 0x44u, 0x55u, 0u, 5u, 0x0100000Au,
                0xAAu, 0xBBu, 0xCCu, 0xDDu, 0xEEu, 0xFFu, 443u, 2u, 1u, 2u, 3u, 4u, 5u, 114u, 1u, 0u, 1u, 3u);
  SlogLogEntry e{};
  ASSERT_TRUE(scan_firewall_line(line, e));
  const SlogFirewallRecord &f = e.body.firewall;
  EXPECT_EQ(e.level, 4);
  EXPECT_EQ(e.log_type, SLOG_TYPE_FIREWALL);
  EXPECT_EQ(f.id, 300101u);
  EXPECT_EQ(f.rule_index, 4u);
  EXPECT_EQ(f.target, 2u);
  EXPECT_EQ(f.proto, 257u);
  EXPECT_EQ(f.src_ip, 0x6401A8C0u);
  const uint8_t smac[6] = {0, 0x11, 0x22, 0x33, 0x44, 0x55};
  const uint8_t dmac[6] = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
  EXPECT_EQ(std::memcmp(f.src_mac, smac, 6), 0);
  EXPECT_EQ(std::memcmp(f.dst_mac, dmac, 6), 0);
  EXPECT_EQ(f.src_port, 0u);
  EXPECT_EQ(f.in_vid, 5u);
  EXPECT_EQ(f.dst_ip, 0x0100000Au);
  EXPECT_EQ(f.dst_port, 443u);
  EXPECT_EQ(f.out_vid, 2u);
  EXPECT_EQ(e.sec, 1);
  EXPECT_EQ(e.min, 2);
  EXPECT_EQ(e.hour, 3);
  EXPECT_EQ(e.day, 4);
  EXPECT_EQ(e.mon, 5);
  EXPECT_EQ(e.year, 114);
  EXPECT_EQ(e.flash, 1u);
  EXPECT_EQ(e.syslog, 0u);
  EXPECT_EQ(e.trap, 1u);
  EXPECT_EQ(f.repeat, 3u);

  line[std::strlen(line) - 6] = '\0';  // repeat value cut off
  EXPECT_FALSE(scan_firewall_line(line, e));
}

}  // namespace
