// The log readers on generated files: the two-generation merge, the 1000-line limits, the
// skipped-line rule, the VPN level rule, conversion to text entries, and bad files.
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "log/test_logs.h"
#include "support/test_support.h"
#include "syscommon/log.h"
#include "syscommon/platform.h"

namespace {

using syscommon::testing::firewall_entry;
using syscommon::testing::log_lines;
using syscommon::testing::sim_path;
using syscommon::testing::system_record;
using syscommon::testing::vpn_record;
using syscommon::testing::write_file;
using syscommon::testing::write_lines;

const std::string kLog1 = "/mnt/log2/KVR900_LOG1", kLog2 = "/mnt/log2/KVR900_LOG2", kVpn = "/mnt/log2/vpn_log",
                  kFirewall = "/mnt/log2/firewall_log";

std::unique_ptr<SlogLogEntry[]> entries() { return std::make_unique<SlogLogEntry[]>(SLOG_MAX_ENTRIES); }

// -1 lines: no file.
void put_log(const std::string &path, const std::string &kind, int first, int lines) {
  std::remove(sim_path(path).c_str());
  if (lines >= 0) write_lines(sim_path(path), log_lines(kind, first, lines));
}

TEST(LogRead, SystemGenerationsMerge) {
  SYSCOMMON_REQUIRE_ISOLATION();
  // LOG2 holds records numbered from 5000, so each entry shows which file it came from.
  struct Case {
    int log1, log2, want_total, want_from_log1;
  } cases[] = {{600, 900, 900, 600},    {600, -1, 600, 600},    {1000, 900, 1000, 1000}, {1200, -1, 1000, 1000},
               {0, 900, 900, 0},        {-1, 900, 0, 0},        {600, 1500, 1000, 600},  {900, 600, 900, 900}};
  auto got = entries();
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::Message() << c.log1 << " + " << c.log2);
    put_log(kLog1, "system", 0, c.log1);
    put_log(kLog2, "system", 5000, c.log2);
    ASSERT_EQ(Read_systemlogfile(got.get()), c.want_total);
    for (int k = 0; k < c.want_total; ++k) {
      const SlogSystemRecord want = system_record(k < c.want_from_log1 ? k : 5000 + k);
      ASSERT_EQ(std::memcmp(&got[k].body.system, &want, sizeof want), 0) << "entry " << k;
    }
  }
  // The common entry point fills level (low four bits), type and time from the body.
  put_log(kLog1, "system", 0, 10);
  put_log(kLog2, "system", 0, -1);
  ASSERT_EQ(Read_logfile(got.get(), SLOG_TYPE_SYSTEM), 10);
  EXPECT_EQ(got[5].level, 5);
  EXPECT_EQ(got[5].log_type, SLOG_TYPE_SYSTEM);
  EXPECT_EQ(got[5].min, system_record(5).min);
  EXPECT_EQ(got[5].year, 114);
  EXPECT_EQ(Read_logfile(got.get(), 4), 0);
}

TEST(LogRead, FirewallLimitAndSkippedLines) {
  SYSCOMMON_REQUIRE_ISOLATION();
  auto got = entries();
  for (auto [lines, want] : {std::pair{1000, 1000}, {1001, 0}, {0, 0}}) {
    put_log(kFirewall, "firewall", 0, lines);
    EXPECT_EQ(Read_logfile(got.get(), SLOG_TYPE_FIREWALL), want) << lines << " lines";
  }
  // Lines 1 and 3 start with white space: skipped, positions kept, not counted.
  std::vector<std::string> lines = log_lines("firewall", 0, 6);
  lines[1] = " " + lines[1];
  lines[3] = "\t" + lines[3];
  write_lines(sim_path(kFirewall), lines);
  got[1].level = 7;  // must be cleared
  ASSERT_EQ(Read_firewalllogfile(got.get()), 4);
  EXPECT_EQ(got[1].log_type, 0);
  EXPECT_EQ(got[1].level, 0);
  for (int i : {0, 2, 4, 5}) {
    const SlogLogEntry want = firewall_entry(i);
    EXPECT_EQ(std::memcmp(&got[i], &want, sizeof want), 0) << "entry " << i;
  }
}

TEST(LogRead, VpnLevelsAndTime) {
  SYSCOMMON_REQUIRE_ISOLATION();
  put_log(kVpn, "vpn", 0, 40);
  auto got = entries();
  ASSERT_EQ(Read_logfile(got.get(), SLOG_TYPE_VPN), 40);
  for (int i = 0; i < 40; ++i) {
    const SlogVpnRecord want = vpn_record(i);
    EXPECT_EQ(std::memcmp(&got[i].body.vpn, &want, sizeof want), 0) << i;
    // Informational when the text holds "200102"; time and type taken over.
    EXPECT_EQ(std::make_tuple(got[i].level, got[i].log_type, got[i].hour), std::make_tuple(i % 3 == 0 ? 6 : 5, 1, want.hour));
  }
}

// True when `read` had to wait for semaphore `key`, held here for 300 ms.
template <class Read>
bool waits_for(int key, Read read) {
  Semaphore_P(key);
  std::atomic<bool> done = false;
  std::thread reader([&] { read(), done = true; });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  const bool waited = !done;
  Semaphore_V(key);
  reader.join();
  return waited;
}

TEST(LogRead, SemaphoresWhereTheReadersTakeThem) {
  SYSCOMMON_REQUIRE_ISOLATION();
  put_log(kLog1, "system", 0, 3);
  put_log(kVpn, "vpn", 0, 3);
  put_log(kFirewall, "firewall", 0, 3);
  auto got = entries();
  auto vpn = std::make_unique<SlogVpnRecord[]>(SLOG_MAX_ENTRIES);
  EXPECT_TRUE(waits_for(1519, [&] { Read_logfile(got.get(), SLOG_TYPE_SYSTEM); }));
  EXPECT_TRUE(waits_for(1519, [&] { Read_logfile(got.get(), SLOG_TYPE_FIREWALL); }));
  EXPECT_TRUE(waits_for(1517, [&] { Read_ipseclogfile(vpn.get()); }));
  // The caller holds 1519 around these two.
  EXPECT_FALSE(waits_for(1519, [&] { Read_systemlogfile(got.get()); }));
  EXPECT_FALSE(waits_for(1519, [&] { Read_firewalllogfile(got.get()); }));
  EXPECT_FALSE(waits_for(1519, [&] { Read_ipseclogfile(vpn.get()); }));
}

TEST(LogRead, BadFilesGiveWhatParses) {
  SYSCOMMON_REQUIRE_ISOLATION();
  const std::string junk("\x01\x00\xff\n\x7f[]lv[zz\x00\n", 14);
  struct Kind {
    std::string path, kind, overlong;
    int type;
  } kinds[] = {{kLog1, "system", std::string(5000, 'a'), SLOG_TYPE_SYSTEM},
               {kVpn, "vpn", "[" + std::string(5000, 'v') + "] 00000001", SLOG_TYPE_VPN},
               {kFirewall, "firewall", "lv[1]" + std::string(5000, 'z'), SLOG_TYPE_FIREWALL}};
  auto got = entries();
  std::remove(sim_path(kLog2).c_str());
  for (const Kind &k : kinds) {
    const std::string good = log_lines(k.kind, 7, 1)[0];
    const struct {
      const char *what;
      std::string content;  // "-" for no file
      int want;
    } files[] = {{"missing", "-", 0},
                 {"empty", "", 0},
                 {"binary", junk, 0},
                 {"truncated", good + "\n" + good.substr(0, good.size() / 2), 1},
                 {"no newline", good, 1},
                 // The rest of an overlong line must not be read as a line of its own.
                 {"overlong", k.overlong + "\n" + good + "\n", 1}};
    for (const auto &f : files) {
      SCOPED_TRACE(k.kind + " " + f.what);
      std::remove(sim_path(k.path).c_str());
      if (f.content != "-") write_file(sim_path(k.path), f.content);
      EXPECT_EQ(Read_logfile(got.get(), k.type), f.want);
    }
  }
}

TEST(LogRead, TextEntriesWithinLevels) {
  SYSCOMMON_REQUIRE_ISOLATION();
  put_log(kLog1, "system", 0, 16);
  put_log(kVpn, "vpn", 0, 16);
  put_log(kFirewall, "firewall", 0, 16);
  auto texts = std::make_unique<SlogTextEntry[]>(SLOG_MAX_ENTRIES);
  for (int type : {SLOG_TYPE_SYSTEM, SLOG_TYPE_VPN, SLOG_TYPE_FIREWALL}) {
    SCOPED_TRACE(type);
    const int n = Read_tarnlogfile(texts.get(), type, 2, 5);
    auto all = entries();
    const int total = Read_logfile(all.get(), type);
    std::vector<int> kept;  // positions whose level lies in 2..5, in input order
    for (int i = 0; i < total; ++i)
      if (all[i].level >= 2 && all[i].level <= 5) kept.push_back(i);
    ASSERT_EQ(n, static_cast<int>(kept.size()));
    ASSERT_GT(n, 0);
    for (int k = 0; k < n; ++k) {
      const SlogLogEntry &e = all[kept[static_cast<std::size_t>(k)]];
      const SlogTextEntry &t = texts[k];
      EXPECT_EQ(t.year, e.year + 1900);
      EXPECT_EQ(t.month, e.mon + 1);
      EXPECT_EQ(t.level, e.level);
      EXPECT_EQ(t.log_type, type);
      char want[256] = {};
      if (type == SLOG_TYPE_SYSTEM)
        Eventlog_to_Str(e.body.system, want, 1, sizeof want);
      else if (type == SLOG_TYPE_VPN)
        std::snprintf(want, sizeof want, "[%s] %s", e.body.vpn.text, vpn_log_table[e.body.vpn.code].text);
      else
        firewallLog_to_str(&e, want);
      EXPECT_STREQ(t.text, want);
    }
  }
  // A VPN code beyond the table (read from a file) gives an empty description.
  SlogLogEntry e{};
  e.body.vpn.code = 4000000000u;
  std::strcpy(e.body.vpn.text, "x");
  EXPECT_EQ(cpLog2TarnLog(texts.get(), &e, SLOG_TYPE_VPN, 1, 0, 7), 1);
  EXPECT_STREQ(texts[0].text, "[x] ");
}

}  // namespace
