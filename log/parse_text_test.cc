// The syslog-text parsers on real lines, cut at every token, and their text helpers.
#include <cstring>
#include <string>
#include <vector>

#include "log/test_logs.h"
#include "support/test_support.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

int parse(const std::string &line, SlogTextEntry &t) {
  std::vector<char> buf(line.begin(), line.end());
  buf.push_back('\0');
  return paserTarnlog(buf.data(), &t);
}

// Parses a firewall line; returns the result and what was printed.
std::pair<int, std::string> parse_fw(const std::string &line, SlogLogEntry &e) {
  std::vector<char> buf(line.begin(), line.end());
  buf.push_back('\0');
  CaptureStdout();
  const int rc = paserTarnFirewalllog(buf.data(), &e);
  return {rc, GetCapturedStdout()};
}

std::string summary(const SlogTextEntry &t) {
  char b[320];
  std::snprintf(b, sizeof b, "%d-%d-%d %d:%d:%d L%d T%d %s", t.year, t.month, t.day, t.hour, t.min, t.sec, t.level,
                t.log_type, t.text);
  return b;
}

TEST(ParseText, SyslogLines) {
  const std::string day = "2014-01-01 00:00:00 ", q(400, 'q');
  // Severities by prefix ("information", "errors"), categories whole, text to the newline.
  for (const auto &[line, want] : std::vector<std::pair<std::string, std::string>>{
           {"2014-03-05 10:20:30 err [h] tarn_vpn: x: text", "2014-3-5 10:20:30 L3 T1 text"},
           {"2026-11-23 01:02:03 information [r] tarn_system: sc: [Cold Start] x\n", "2026-11-23 1:2:3 L6 T3 Cold Start] x"},
           {"2014-12-31 23:59:59 warning [r1] tarn_kernel: kernel: eth0: up", "2014-12-31 23:59:59 L4 T4 eth0: up"},
           {day + "errors [h] tarn_firewall: fw: DROP", "2014-1-1 0:0:0 L3 T2 DROP"},
           {day + "bogus [h] other: fw: t", "2014-1-1 0:0:0 L7 T2 t"},
           {day + "warn [h] tarn_vpn: fw: t", "2014-1-1 0:0:0 L7 T1 t"},
           {day + "emerg [h] tarn_vpn: fw: t", "2014-1-1 0:0:0 L0 T1 t"},
           {day + "alert [h] tarn_vpn: fw: t", "2014-1-1 0:0:0 L1 T1 t"},
           {day + "critical [h] tarn_vpn: fw: t", "2014-1-1 0:0:0 L2 T1 t"},
           {day + "notice [h] tarn_vpn: fw: t", "2014-1-1 0:0:0 L5 T1 t"},
           {day + "info [h] tarn_vpn: fw: " + q, "2014-1-1 0:0:0 L6 T1 " + q.substr(0, 255)}}) {
    SlogTextEntry t{};
    ASSERT_EQ(parse(line, t), 1) << line;
    EXPECT_EQ(summary(t), want);
  }
}

TEST(ParseText, SyslogLineCutAnywhereGivesZero) {
  const std::string line = "2014-03-05 10:20:30 err [h] tarn_vpn: x: text";
  const std::size_t text_at = line.find("text");
  for (std::size_t n = 0; n < line.size(); ++n) {
    SlogTextEntry t{};
    EXPECT_EQ(parse(line.substr(0, n), t), n > text_at ? 1 : 0) << "cut at " << n;
  }
  EXPECT_EQ(paserTarnlog(nullptr, nullptr), 0);
}

// A firewall syslog-text line: the date prefix and the text the device renders.
std::string fw_line(const SlogLogEntry &e, const std::string &flags) {
  char text[256] = {};
  firewallLog_to_str(&e, text);
  return "<134>2014-03-05 10:20:30 warning [router] tarn_firewall: " + std::to_string(e.body.firewall.id) + " " +
         flags + text;
}

TEST(ParseText, FirewallLinesRenderedByTheLibrary) {
  SYSCOMMON_REQUIRE_ISOLATION();  // interface names come from the shared store
  shm_init();
  for (int i : {0, 1, 2, 3, 5, 7, 8}) {
    SlogLogEntry src = syscommon::testing::firewall_entry(i);
    SlogFirewallRecord &f = src.body.firewall;
    if (i == 5) f.id = SLOG_FW_ARP_FLOOD, f.proto = 0x806;
    if (i == 7) f.proto = 258, f.src_port = 53;  // UDP
    if (i == 8) f.proto = 259;                    // UDPLITE (prefix UDP)
    if (i == 1) f.target = 1;                     // a full session table always drops
    SCOPED_TRACE(fw_line(src, "mflash,mtrap "));
    SlogLogEntry e{};
    auto [rc, out] = parse_fw(fw_line(src, "mflash,mtrap "), e);
    ASSERT_EQ(rc, 1) << out;
    EXPECT_EQ(out, "");
    const SlogFirewallRecord &g = e.body.firewall;
    EXPECT_EQ(e.year, 114);
    EXPECT_EQ(e.mon, 2);
    EXPECT_EQ(e.sec, 30);
    EXPECT_EQ(e.level, 4);
    EXPECT_EQ(e.log_type, 2);
    EXPECT_EQ(e.flash + e.syslog * 2 + e.trap * 4, 5u);
    EXPECT_EQ(g.id, f.id);
    EXPECT_EQ(g.rule_index, f.id == SLOG_FW_POLICY_HIT || f.id == SLOG_FW_SESSION_FULL ? f.rule_index : 0u);
    EXPECT_EQ(g.target, f.id == SLOG_FW_SESSION_FULL ? 2u : f.target);
    EXPECT_EQ(g.proto, f.proto);
    EXPECT_EQ(std::memcmp(g.src_mac, f.src_mac, 6), 0);
    EXPECT_EQ(std::memcmp(g.dst_mac, f.dst_mac, 6), 0);
    const bool arp = f.id == SLOG_FW_ARP_FLOOD;
    EXPECT_EQ(g.src_ip, arp ? 0 : f.src_ip);
    EXPECT_EQ(g.dst_ip, arp ? 0 : f.dst_ip);
    EXPECT_EQ(g.dst_port, arp || f.proto == 1 ? 0 : f.dst_port);
    EXPECT_EQ(g.repeat, f.repeat != 0 && !arp ? 1u : 0u);
  }
}

TEST(ParseText, FirewallLineCutAnywherePrintsItsStep) {
  SYSCOMMON_REQUIRE_ISOLATION();
  shm_init();
  SlogLogEntry src = syscommon::testing::firewall_entry(0);  // policy hit, TCP, with ports
  src.body.firewall.proto = 257;
  src.body.firewall.src_port = 1000;
  src.body.firewall.dst_port = 443;
  src.body.firewall.target = 2;
  const std::string line = fw_line(src, "msyslog ");
  // The message of the step that runs out, by the key whose value the cut falls in front of.
  const std::vector<std::pair<std::string, std::string>> steps = {
      {"warning", "error: can't get severity level."}, {"router", "error: can't get hostname."},
      {"tarn_firewall", "error: can't get category."}, {"300101", "error: can't get ID."},
      {"msyslog", "error: can't get index."},          {"[R", "error: can't get index."},
      {"DROP", "error: can't get target."},            {"SRC_MAC", "error: can't get source mac."},
      {"DST_MAC", "error: can't get destination mac."}, {"PROTO", "error: can't get protocol."},
      {"SRC_IP", "error: Fail to find SRC_IP."},       {"SRC_PORT", "error: can't get source port."},
      {"IN=", "error: can't get input interface."},    {"DST_IP", "error: can't get destination ip."},
      {"DST_PORT", "error: can't get destination port."}, {"OUT", "error: can't get output interface."}};
  for (const auto &[key, message] : steps) {
    const std::size_t at = line.find(key);
    ASSERT_NE(at, std::string::npos) << key;
    SlogLogEntry e{};
    auto [rc, out] = parse_fw(line.substr(0, at), e);
    EXPECT_EQ(rc, 0) << key;
    EXPECT_EQ(out, message + "\n") << key;
  }
  // Every cut ends in 0 without reading past the line, until the (last) output interface
  // has been read.
  const std::size_t complete = line.find("OUT=") + 4;
  for (std::size_t n = 0; n <= line.size(); ++n) {
    SlogLogEntry e{};
    EXPECT_EQ(parse_fw(line.substr(0, n), e).first, n >= complete ? 1 : 0) << n;
  }
  // A wrong key prints its "Fail to find" message; a policy hit without "R" fails silently.
  SlogLogEntry e{};
  std::string wrong = line;
  wrong.replace(wrong.find("DST_MAC"), 7, "DST_MAX");
  EXPECT_EQ(parse_fw(wrong, e), std::make_pair(0, std::string("error: Fail to find DST_MAC.\n")));
  std::string no_rule = line;
  no_rule.replace(no_rule.find("[R"), 2, "[X");
  EXPECT_EQ(parse_fw(no_rule, e), std::make_pair(0, std::string()));
}

TEST(ParseText, Helpers) {
  for (auto [text, a, b] : {std::tuple{"12,34", 12, 34}, {"7,", 7, 0}, {"5", 5, 0}, {",9,1", 0, 9}}) {
    std::string buf = text;
    int ga = -1, gb = -1;
    EXPECT_EQ(paserTarnlogIdx(buf.data(), &ga, &gb), b) << text;
    EXPECT_EQ(ga, a) << text;
    EXPECT_EQ(gb, b) << text;
  }
  char out[8];
  for (auto [key, hay, want, text] : {std::tuple{"id=", "x id=42", 2, "42"},
                                      {"", "whole", 5, "whole"},
                                      {"id=", "id=", 0, ""},
                                      {"id=", "id=1234567", 7, "1234567"},
                                      {"id=", "id=12345678", 0, ""}}) {
    std::memset(out, 'z', sizeof out);
    EXPECT_EQ(getVariableFromString(key, hay, out, sizeof out), want) << hay;
    EXPECT_STREQ(out, text);
  }
  CaptureStdout();
  EXPECT_EQ(getVariableFromString("key", "haystack", out, sizeof out), -1);
  EXPECT_EQ(GetCapturedStdout(), "error: getVariableFromString can't fine keyword \"key\"\n");

  char chars[] = " ,;[a1";
  EXPECT_EQ(getNextChar(chars), chars + 4);
  char none[] = " ,;[]:";
  EXPECT_EQ(getNextChar(none), nullptr);
  EXPECT_EQ(getNextChar(nullptr), nullptr);
}

}  // namespace
