// syscommon log: show the event logs merged newest first, make the export files, and
// report an event through the log agent.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "syscommon/log.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

// A fixed path of the device under SYSCOMMON_ROOT, as the library roots its own paths.
std::string device_path(const std::string &path) {
  const char *root = std::getenv("SYSCOMMON_ROOT");
  return (root != nullptr ? root : "") + path;
}

struct LogKind {
  const char *name;
  int type;
};
constexpr LogKind kKinds[] = {{"system", SLOG_TYPE_SYSTEM},
                              {"vpn", SLOG_TYPE_VPN},
                              {"firewall", SLOG_TYPE_FIREWALL},
                              {"kernel", SLOG_TYPE_KERNEL}};

// The kinds named by an optional first argument ("all" when absent).
std::vector<LogKind> kinds_of(const Args &a, std::size_t at) {
  const std::string which = a.size() > at ? a[at] : "all";
  if (which == "all") return {std::begin(kKinds), std::end(kKinds)};
  for (const LogKind &k : kKinds)
    if (which == k.name) return {k};
  throw UsageError{"unknown log '" + which + "' (system, vpn, firewall, kernel or all)"};
}

// Kernel log lines in syslog-text form; other lines are counted in `skipped`.
int read_kernel(SlogTextEntry *texts, int room, int min, int max, int &skipped) {
  std::FILE *f = std::fopen(device_path("/mnt/log2/kernel_log").c_str(), "r");
  if (f == nullptr) return 0;
  int n = 0;
  char line[512];
  while (n < room && std::fgets(line, sizeof line, f) != nullptr) {
    SlogTextEntry t{};
    if (paserTarnlog(line, &t) != 1) {
      ++skipped;
      continue;
    }
    if (t.level >= min && t.level <= max) texts[n++] = t;
  }
  std::fclose(f);
  return n;
}

const char *type_word(int type) {
  for (const LogKind &k : kKinds)
    if (k.type == type) return k.name;
  return "?";
}

// The level's word from TarnLog_level_desc_table, without its "<n> " prefix.
const char *level_word(int level) {
  if (level < 0 || level >= SLOG_LEVEL_COUNT) return "?";
  const char *text = TarnLog_level_desc_table[level].text;
  const char *blank = std::strchr(text, ' ');
  return blank != nullptr ? blank + 1 : text;
}

int cmd_show(const Args &a) {
  expect_args(a, 0, 3);
  Args rest;
  int min = 0, max = 7;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] != "--level") {
      rest.push_back(a[i]);
      continue;
    }
    if (i + 1 >= a.size()) throw UsageError{"--level needs MIN-MAX"};
    const std::string &range = a[++i];
    const std::size_t dash = range.find('-');
    if (dash == std::string::npos) throw UsageError{"--level needs MIN-MAX, not '" + range + "'"};
    min = static_cast<int>(parse_number(range.substr(0, dash), "MIN", 0, 7));
    max = static_cast<int>(parse_number(range.substr(dash + 1), "MAX", min, 7));
  }
  expect_args(rest, 0, 1);
  const std::vector<LogKind> kinds = kinds_of(rest, 0);
  const int room = SLOG_MAX_ENTRIES * static_cast<int>(kinds.size());
  auto texts = std::make_unique<SlogTextEntry[]>(static_cast<std::size_t>(room));
  int n = 0, skipped = 0;
  for (const LogKind &k : kinds) {
    if (k.type == SLOG_TYPE_KERNEL)
      n += read_kernel(texts.get() + n, SLOG_MAX_ENTRIES, min, max, skipped);
    else
      n += Read_tarnlogfile(texts.get() + n, k.type, min, max);
  }
  quickSort(texts.get(), 0, n - 1);
  for (int i = 0; i < n; ++i) {
    const SlogTextEntry &t = texts[i];
    std::printf("%04d-%02d-%02d %02d:%02d:%02d  %-13s %-8s %s\n", t.year, t.month, t.day, t.hour, t.min, t.sec,
                level_word(t.level), type_word(t.log_type), t.text);
  }
  if (n == 0) std::puts("(no entries)");
  if (skipped > 0) std::printf("(%d kernel log lines not in syslog-text form left out)\n", skipped);
  return 0;
}

int cmd_export(const Args &a) {
  expect_args(a, 0, 1);
  const std::vector<LogKind> kinds = kinds_of(a, 0);
  const std::string ramdisk = device_path("/mnt/ramdisk");
  int failed = 0;
  for (const LogKind &k : kinds) {
    int rc = 0;
    const char *file = "";
    switch (k.type) {
      case SLOG_TYPE_SYSTEM: rc = SytemLogMake(), file = "TARN_LOG.ini"; break;
      case SLOG_TYPE_VPN: rc = IPSecLogMake(), file = "TARN_IPSec_LOG.ini"; break;
      case SLOG_TYPE_FIREWALL: rc = FirewallLogMake(), file = "TARN_Firewall_LOG.ini"; break;
      default: rc = KernelLogMake(), file = "TARN_Kernel_LOG.ini"; break;
    }
    std::printf("%-8s -> %s/%s%s\n", k.name, ramdisk.c_str(), file, rc == 0 ? "" : "  (failed)");
    failed += rc != 0 ? 1 : 0;
  }
  if (kinds.size() > 1) {
    // The archive is made in the working directory: the RAM disk.
    char cwd[4096];
    if (getcwd(cwd, sizeof cwd) == nullptr || chdir(ramdisk.c_str()) != 0) {
      std::fprintf(stderr, "syscommon: cannot enter %s\n", ramdisk.c_str());
      return 1;
    }
    std::fflush(stdout);
    const int rc = AllLogMake();
    if (chdir(cwd) != 0) return 1;
    std::printf("all      -> %s/TARN_All_LOG.tar.gz%s\n", ramdisk.c_str(), rc == 0 ? "" : "  (failed)");
    failed += rc != 0 ? 1 : 0;
  }
  return failed == 0 ? 0 : 1;
}

// Runs a launcher and, as the agent runs in the background, waits a little for its record.
template <class Launch>
int report_sent(int event, int reason, Launch launch) {
  const std::string log = device_path("/mnt/log2/KVR900_LOG1");
  // Lines in the log so far (`wc -l` would complain about a file not made yet).
  const auto lines = [&log] { return access(log.c_str(), F_OK) == 0 ? get_tarn_log_lines(log.c_str()) : 0; };
  const int before = lines();
  const int rc = launch();
  bool stored = false;
  for (int i = 0; i < 100 && !(stored = lines() > before); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  std::printf("event %d reason %d sent to the log agent (shell status %d), %s\n", event, reason, rc,
              stored ? "stored" : "not stored yet");
  return rc == 0 ? 0 : 1;
}

int cmd_send(const Args &a) {
  expect_args(a, 2, 4);
  const int event = static_cast<int>(parse_number(a[0], "EVENT", 0, 0xFFFF));
  const int reason = static_cast<int>(parse_number(a[1], "REASON", 0, 0xFF));
  const int arg = a.size() > 2 ? static_cast<int>(parse_number(a[2], "ARG", 0, 0x7FFFFFFF)) : 6;
  const char *text = nullptr;
  if (a.size() > 3) {
    for (char c : a[3])
      if (c == '\'' || static_cast<unsigned char>(c) < 0x20)
        throw UsageError{"TEXT may hold no quote (') and no control character"};
    text = a[3].c_str();
  }
  return report_sent(event, reason, [&] { return call_SendSyslog_with_msg_to_log(event, reason, arg, text); });
}

// A login result reported as the management processes report it.
int cmd_login(const Args &a) {
  expect_args(a, 3, 4);
  const int event = static_cast<int>(parse_number(a[0], "EVENT", 0, 0xFFFF));
  const int result = static_cast<int>(parse_number(a[1], "RESULT", 0, 0xFF));
  check_text(a[2], "USER", 31);
  if (a[2].find_first_of(" \"'`$\\;&|<>()*?") != std::string::npos)
    throw UsageError{"USER may hold no blank, quote or shell character"};
  const int arg = a.size() > 3 ? static_cast<int>(parse_number(a[3], "ARG", 0, 0x7FFFFFFF)) : 6;
  const int reason = result == 16 ? 36 : result == 17 || result == 0 ? 35 : result;
  return report_sent(event, reason,
                     [&] { return Lsyscommon_SendLoginResult_with_UserName(event, result, arg, a[2].c_str()); });
}

const Registration reg{{"log",
                        "Event log files: show them merged, make the exports, send an event.",
                        {
                            {"show", "[system|vpn|firewall|kernel|all] [--level MIN-MAX]",
                             "show the logs merged, newest first, one line per entry\n"
                             "Date and time, level word, log and the text rendered by the library.\n"
                             "Kernel log lines are shown when they are in syslog-text form.",
                             cmd_show},
                            {"export", "[system|vpn|firewall|kernel|all]",
                             "write the export files under the RAM disk and say where\n"
                             "'all' (the default) also packs TARN_All_LOG.tar.gz.",
                             cmd_export},
                            {"send", "EVENT REASON [ARG] [TEXT]",
                             "report an event through the log agent (SendSyslog)\n"
                             "ARG defaults to 6; TEXT is passed in single quotes.",
                             cmd_send},
                            {"login", "EVENT RESULT USER [ARG]",
                             "report a login result of USER (Lsyscommon_SendLoginResult_with_UserName): RESULT\n"
                             "16 gives reason 36 (User), 0 and 17 give 35 (Admin), any other is the reason.",
                             cmd_login},
                        }}};

}  // namespace
}  // namespace syscommon::tool
