// syscommon loginrecord: per-account login records kept by the main management daemon, and
// the daemon's stand-in for the simulated device.
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "net/internal.h"
#include "syscommon/session.h"
#include "syscommon/util.h"
#include "tools/sim/mgmtd.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

int fail(const std::string &message) {
  std::fprintf(stderr, "syscommon loginrecord: %s\n", message.c_str());
  return 1;
}

// Without a daemon on its socket every exchange would wait out its 60 s budget.
bool daemon_listening() { return access(net::ramdisk_path("socket/lumen168-socket").c_str(), F_OK) == 0; }

void check_name(const std::string &name) { check_text(name, "NAME", ACCOUNT_NAME_SIZE); }

// The result of a name-based operation explained.
int explain(int rc, const std::string &name) {
  if (rc == LOGIN_RECORD_NO_ACCOUNT) return fail("no account '" + name + "'");
  if (rc == LOGIN_RECORD_BAD_NAME) return fail("bad account name");
  return rc == 0 ? 0 : fail("refused (code " + std::to_string(rc) + ")");
}

// Times are what the recorder passed; this tool records seconds since the epoch.
std::string when(uint32_t t) {
  const time_t seconds = t;
  char text[40];
  std::tm tm{};
  gmtime_r(&seconds, &tm);
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &tm);
  return std::to_string(t) + " (" + text + ")";
}

int cmd_show(const Args &args) {
  expect_args(args, 1, 1);
  check_name(args[0]);
  if (!daemon_listening()) return fail("no main daemon on socket/lumen168-socket (start 'syscommon loginrecord serve')");
  const char *name = args[0].c_str();
  char text[LOGIN_RECORD_TEXT_LEN + 1];
  uint32_t time = 0;
  const int rc = Ssgl2_sysnotify_lastloginrecord_get(name, text, &time);
  if (rc != 0 && rc != LOGIN_RECORD_NONE) return explain(rc, args[0]);
  std::printf("%s: last login %s\n", name, rc == 0 ? (when(time) + " from " + text).c_str() : "none recorded");
  uint32_t failures = 0;
  Ssgl2_sysnotify_faillogintimes_get(name, &failures);
  std::printf("  failed logins since: %u\n", failures);
  for (int n = 0; n < LOGIN_FAIL_RING; ++n)
    if (Ssgl2_sysnotify_failLoginrecord_get(name, n, text, &time) == 0)
      std::printf("  failure %d: %s from %s\n", n + 1, when(time).c_str(), text);
  return 0;
}

int cmd_record(const Args &args) {
  expect_args(args, 3, 3);
  check_name(args[0]);
  if (args[1] != "ok" && args[1] != "fail") throw UsageError{"result must be ok or fail, not '" + args[1] + "'"};
  check_text(args[2], "FROM", LOGIN_RECORD_TEXT_LEN);
  if (!daemon_listening()) return fail("no main daemon on socket/lumen168-socket (start 'syscommon loginrecord serve')");
  const int rc = Ssgl2_sysnotify_loginrecord_set(args[0].c_str(), args[2].c_str(),
                                                 static_cast<uint32_t>(std::time(nullptr)), args[1] == "ok" ? 1 : 0);
  if (rc == 0) std::printf("%s login of '%s' from %s recorded\n", args[1] == "ok" ? "successful" : "failed",
                           args[0].c_str(), args[2].c_str());
  return explain(rc, args[0]);
}

int cmd_clear(const Args &args) {
  expect_args(args, 1, 1);
  check_name(args[0]);
  if (!daemon_listening()) return fail("no main daemon on socket/lumen168-socket (start 'syscommon loginrecord serve')");
  const int rc = Ssgl2_sysnotify_failLoginrecord_clear(args[0].c_str());
  if (rc == 0) std::printf("'%s': failure records cleared (the count is kept)\n", args[0].c_str());
  return explain(rc, args[0]);
}

int cmd_serve(const Args &args) {
  const Options o = parse_options(args, {"--seconds"});
  expect_args(o.positional, 0, 0);
  const std::string *seconds = o.get("--seconds");
  const int limit = seconds != nullptr ? static_cast<int>(parse_number(*seconds, "--seconds", 1, 86400)) : 0;
  return sim::run_mgmtd(limit);
}

const Registration reg{
    {"loginrecord",
     "Per-account login records kept by the main management daemon.",
     {
         {"show", "NAME", "last login, failure count and the latest three failures", cmd_show},
         {"record", "NAME ok|fail FROM", "record a login (time: now, in seconds since the epoch)", cmd_record},
         {"clear", "NAME", "clear the failure records (the count is kept)", cmd_clear},
         {"serve", "[--seconds N]",
          "run the main daemon's stand-in for the simulated device until SIGTERM/SIGINT or N seconds",
          cmd_serve},
     }}};

}  // namespace
}  // namespace syscommon::tool
