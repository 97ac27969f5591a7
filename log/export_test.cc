// The export writers byte for byte, the makers and the archive read back with tar, the
// sort against a brute-force order, and the trimming of log files with the real sed.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "log/test_logs.h"
#include "support/test_support.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

using syscommon::testing::clear_trace;
using syscommon::testing::log_lines;
using syscommon::testing::read_file;
using syscommon::testing::sim_path;
using syscommon::testing::trace_lines;
using syscommon::testing::write_file;
using syscommon::testing::write_lines;

const std::string kDashes = std::string(106, '-') + "\r\n";
const std::string kVpnHeader =
    "Index     Date           Time         Event\r\n"
    "-----     ----------     --------     -----------------------------------------------------------------------\r\n";

// Runs a writer on a fresh file and returns what it wrote.
template <class Write>
std::string written(Write write, int want_rc = 0) {
  const std::string path = sim_path("/tmp/export.out");
  std::FILE *f = std::fopen(path.c_str(), "w+");
  EXPECT_EQ(write(f), want_rc);
  std::fclose(f);
  return read_file(path);
}

TEST(LogExport, WritersByteForByte) {
  SYSCOMMON_REQUIRE_ISOLATION();  // rendering reads the shared store
  shm_init();
  SlogSystemRecord sys[2] = {syscommon::testing::system_record(1), syscommon::testing::system_record(0)};
  EXPECT_EQ(written([&](std::FILE *f) { return Write_Log_File(f, 2, sys); }),
            "Index     Bootup     Date           Time         System Startup Time     Event\r\n"
            "-----     ------     ----------     --------     -------------------     ---------------------------------\r\n"
            "1         3          2014/3/5       10:21:31     0d0h2m41s               "
            "[100014] [Auth Ok, Login Success] Account {admin}, Bootup:3, Startup:0d0h2m41s\r\n" +
                kDashes +
                "2         3          2014/3/5       10:20:30     0d0h1m40s               Cold Start                       \r\n" +
                kDashes);

  SlogVpnRecord vpn[2] = {syscommon::testing::vpn_record(0), syscommon::testing::vpn_record(40)};
  vpn[1].code = 999;  // beyond the table: no description
  EXPECT_EQ(written([&](std::FILE *f) { return Write_IPsec_Log_File(f, 2, vpn); }),
            kVpnHeader + "1         2014/03/05     10:20:30     [tunnel0 200102] DPD: No response from remote peer\r\n" +
                kDashes + "2         2014/03/05     11:01:10     [tunnel0 300304] \r\n" + kDashes);

  SlogLogEntry fw = syscommon::testing::firewall_entry(2);
  char text[256] = {};
  firewallLog_to_str(&fw, text);
  const std::string line = "1         2014/03/05     10:22:32     [2] " + std::string(text) + "\r\n";
  EXPECT_EQ(written([&](std::FILE *f) { return Write_Firewall_Log_File(f, 1, &fw); }), kVpnHeader + line + kDashes);
  // The entry was changed in place: a second export adds 1900 and 1 again.
  EXPECT_EQ(fw.year, 2014);
  EXPECT_NE(written([&](std::FILE *f) { return Write_Firewall_Log_File(f, 1, &fw); }).find("3914/04/05"),
            std::string::npos);

  // A stream that cannot be written fails at the first separator.
  write_file(sim_path("/tmp/ro"), "");
  std::FILE *ro = std::fopen(sim_path("/tmp/ro").c_str(), "r");
  EXPECT_EQ(Write_Log_File(ro, 2, sys), -1);
  EXPECT_EQ(Write_Log_File(ro, 0, sys), 0);
  std::fclose(ro);
}

TEST(LogExport, MakersAndArchive) {
  SYSCOMMON_REQUIRE_ISOLATION();
  shm_init();
  write_lines(sim_path("/mnt/log2/KVR900_LOG1"), log_lines("system", 0, 5));
  write_lines(sim_path("/mnt/log2/vpn_log"), log_lines("vpn", 0, 4));
  write_lines(sim_path("/mnt/log2/firewall_log"), log_lines("firewall", 0, 3));
  write_file(sim_path("/mnt/log2/kernel_log"), "kernel line\r\nbinary \x01\x02\n");
  write_file(sim_path("/mnt/log2/mem_usage.rec"), "mem 1\n");
  const std::string ram = sim_path("/mnt/ramdisk");
  struct {
    int (*make)();
    const char *file;
    int lines;  // CR LF lines written
  } makers[] = {{SytemLogMake, "/TARN_LOG.ini", 2 + 2 * 5},
                {IPSecLogMake, "/TARN_IPSec_LOG.ini", 2 + 2 * 4},
                {FirewallLogMake, "/TARN_Firewall_LOG.ini", 2 + 2 * 3}};
  for (const auto &m : makers) {
    clear_trace();
    EXPECT_EQ(m.make(), 0) << m.file;
    ASSERT_FALSE(trace_lines().empty());
    EXPECT_EQ(trace_lines().front(), "rm  " + ram + m.file + " 2> /dev/null");
    const std::string out = read_file(ram + m.file);
    std::size_t crlf = 0;
    for (std::size_t at = out.find("\r\n"); at != std::string::npos; at = out.find("\r\n", at + 2)) ++crlf;
    EXPECT_EQ(crlf, static_cast<std::size_t>(m.lines)) << m.file;
  }
  EXPECT_EQ(KernelLogMake(), 0);
  EXPECT_EQ(read_file(ram + "/TARN_Kernel_LOG.ini"), read_file(sim_path("/mnt/log2/kernel_log")));

  // The archive lands in the working directory, with relative member names.
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir(ram.c_str()), 0);
  clear_trace();
  EXPECT_EQ(AllLogMake(), 0);
  ASSERT_EQ(chdir(cwd), 0);
  const std::string dir = ram + "/tarn_log_all";
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{
                               "mkdir " + dir + " 2> /dev/null",
                               "cp -f " + ram + "/TARN_Firewall_LOG.ini " + dir + " 2> /dev/null",
                               "cp -f " + ram + "/TARN_IPSec_LOG.ini " + dir + " 2> /dev/null",
                               "cp -f " + ram + "/TARN_LOG.ini " + dir + " 2> /dev/null",
                               "tar -zcf " + dir + "/m_rec " + sim_path("/mnt/log2/mem_usage.rec") + " 2> /dev/null",
                               "tar -zvcf TARN_All_LOG.tar.gz tarn_log_all 2> /dev/null",
                               "rm -rf " + dir + " 2> /dev/null",
                           }));
  EXPECT_NE(access(dir.c_str(), F_OK), 0);
  std::FILE *list = popen(("tar -tzf " + ram + "/TARN_All_LOG.tar.gz | sort").c_str(), "r");
  ASSERT_NE(list, nullptr);
  std::string members;
  for (int c = std::fgetc(list); c != EOF; c = std::fgetc(list)) members.push_back(static_cast<char>(c));
  pclose(list);
  EXPECT_EQ(members,
            "tarn_log_all/\ntarn_log_all/TARN_Firewall_LOG.ini\ntarn_log_all/TARN_IPSec_LOG.ini\n"
            "tarn_log_all/TARN_LOG.ini\ntarn_log_all/m_rec\n");

  // An export that cannot be created is reported and nothing is written.
  ASSERT_EQ(std::system(("rm -f " + ram + "/TARN_LOG.ini && mkdir " + ram + "/TARN_LOG.ini").c_str()), 0);
  EXPECT_EQ(syscommon::testing::stdout_of([] { EXPECT_EQ(SytemLogMake(), -1); }), ram + "/TARN_LOG.ini fopen error\n");
}

TEST(LogExport, TrimmingWithSed) {
  SYSCOMMON_REQUIRE_ISOLATION();
  const std::string log = sim_path("/mnt/log2/firewall_log"), tmp = sim_path("/tmp/fw.tmp");
  write_file(log, "a\nb\nc\n");
  for (const char *other : {"/mnt/log2/firewall_log.1", "/mnt/log2/old_firewall_log", "/mnt/log2/vpn_log"})
    write_file(sim_path(other), "x\n");
  EXPECT_EQ(get_tarn_log_lines(log.c_str()), 3);
  clear_trace();
  EXPECT_EQ(doSedForLogFile(log.c_str(), tmp.c_str(), 0, 1, "new"), 0);
  EXPECT_EQ(read_file(log), "new\na\nb\nc\n");
  EXPECT_EQ(doSedForLogFile(log.c_str(), tmp.c_str(), 3, 2, nullptr), 0);
  EXPECT_EQ(read_file(log), "new\na\nc\n");
  const std::string find = "find " + sim_path("/mnt/log2/") + "|grep firewall_log|grep -v '^" + log +
                           "$'|xargs rm -f > /dev/null 2>&1";
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{"sed -i '1 inew' " + log, find,
                                                     "sed \"3d\" " + log + " > " + tmp, "mv " + tmp + " " + log,
                                                     find}));
  EXPECT_NE(access(sim_path("/mnt/log2/firewall_log.1").c_str(), F_OK), 0);
  EXPECT_NE(access(sim_path("/mnt/log2/old_firewall_log").c_str(), F_OK), 0);
  EXPECT_EQ(access(sim_path("/mnt/log2/vpn_log").c_str(), F_OK), 0);
  EXPECT_EQ(get_tarn_log_lines(sim_path("/mnt/log2/none").c_str()), 0);
  EXPECT_EQ(get_tarn_log_lines(nullptr), 0);
}

SlogTextEntry dated(int year, int month, int day, int hour, int min, int sec) {
  SlogTextEntry t{};
  t.year = year, t.month = month, t.day = day, t.hour = hour, t.min = min, t.sec = sec;
  std::snprintf(t.text, sizeof t.text, "%d-%d-%d %d:%d:%d", year, month, day, hour, min, sec);
  return t;
}

TEST(LogSort, KeyAndNewestFirst) {
  // The key wraps in 32 bits, and every month counts 30 days.
  SlogTextEntry t = dated(2014, 3, 5, 10, 20, 30);
  EXPECT_EQ(convertDateTime2Sec(&t), -1772808210.0);
  // With 30-day months, January 31 and February 1 at one time of day share a key.
  SlogTextEntry jan31 = dated(2014, 1, 31, 6, 0, 0), feb1 = dated(2014, 2, 1, 6, 0, 0);
  EXPECT_EQ(convertDateTime2Sec(&jan31), convertDateTime2Sec(&feb1));

  std::mt19937 rng(7);
  auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  for (int n : {0, 1, 2, 3, 17, 300, 1000}) {
    std::vector<SlogTextEntry> v;
    for (int i = 0; i < n; ++i)  // a narrow span, so equal keys occur
      v.push_back(dated(2014, pick(1, 2), pick(1, 3), pick(0, 1), pick(0, 2), pick(0, 59)));
    if (n == 1000) std::sort(v.begin(), v.end(), [](auto &a, auto &b) { return a.sec < b.sec; });  // near sorted
    // Brute force: the multiset of keys in descending order, and of texts.
    std::vector<double> want_keys;
    std::vector<std::string> want_texts;
    for (const auto &e : v) want_keys.push_back(convertDateTime2Sec(&e)), want_texts.push_back(e.text);
    std::sort(want_keys.rbegin(), want_keys.rend());
    quickSort(v.data(), 0, n - 1);
    std::vector<double> got_keys;
    std::vector<std::string> got_texts;
    for (const auto &e : v) got_keys.push_back(convertDateTime2Sec(&e)), got_texts.push_back(e.text);
    EXPECT_EQ(got_keys, want_keys) << n;
    std::sort(want_texts.begin(), want_texts.end());
    std::sort(got_texts.begin(), got_texts.end());
    EXPECT_EQ(got_texts, want_texts) << n;  // entries move whole
  }
  // Only lo..hi is touched.
  std::vector<SlogTextEntry> v = {dated(2014, 1, 1, 0, 0, 1), dated(2014, 1, 1, 0, 0, 2), dated(2014, 1, 1, 0, 0, 3),
                                  dated(2014, 1, 1, 0, 0, 4)};
  quickSort(v.data(), 1, 2);
  EXPECT_EQ(std::vector<int>({v[0].sec, v[1].sec, v[2].sec, v[3].sec}), std::vector<int>({1, 3, 2, 4}));
}

}  // namespace
