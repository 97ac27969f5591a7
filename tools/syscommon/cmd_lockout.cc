// syscommon lockout: the login lockout settings and the per-account failure records.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "syscommon/platform.h"
#include "syscommon/session.h"
#include "syscommon/util.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

LoginLockoutConfig settings() {
  LoginLockoutConfig config{};
  shm_sysGet_loginLockout_config(&config);
  return config;
}

void check_name(const std::string &name) { check_text(name, "NAME", ACCOUNT_NAME_SIZE); }

int no_account(const std::string &name) {
  std::fprintf(stderr, "syscommon lockout: no account '%s'\n", name.c_str());
  return 1;
}

void show_slot(int slot, const char *name) {
  int32_t fails = 0;
  uint32_t until = 0;
  _sgl2_loginlockout_failtimes_get(slot, &fails);
  _sgl2_loginlockout_lockouttimer_get(slot, &until);
  const uint32_t now = Ssys_current_secs();
  std::string lock = "no lock";
  if (until != 0)
    lock = until > now ? "locked, " + std::to_string(until - now) + " s left" : "lock over (cleared at the next check)";
  std::printf("  %-2d %-32s %-8d %s\n", slot, name, fails, lock.c_str());
}

int cmd_show(const Args &args) {
  expect_args(args, 0, 1);
  if (args.size() == 1) check_name(args[0]);
  const LoginLockoutConfig c = settings();
  std::printf("lockout %s: %d failed logins lock an account for %d minutes\n", c.enable != 0 ? "on" : "off",
              c.retry_limit, c.lockout_minutes);
  UserAccountList accounts{};
  shm_sysGetUseraccount(&accounts);
  std::printf("  %-2s %-32s %-8s %s\n", "#", "account", "failures", "lock");
  if (args.size() == 1) {
    const int slot = account_get_account_list_index(args[0].c_str());
    if (slot < 0) return no_account(args[0]);
    show_slot(slot, args[0].c_str());
    return 0;
  }
  for (int slot = 0; slot < ACCOUNT_MAX && accounts.account[slot].name[0] != '\0'; ++slot) {
    const std::string name(accounts.account[slot].name, strnlen(accounts.account[slot].name, ACCOUNT_NAME_SIZE));
    show_slot(slot, name.c_str());
  }
  return 0;
}

int cmd_clear(const Args &args) {
  expect_args(args, 0, 1);
  if (args.empty()) {
    Ssgl2_loginlockout_lockoutstatus_initial();
    std::printf("every account's failures and lock cleared\n");
    return 0;
  }
  check_name(args[0]);
  if (_sgl2_loginlockout_failtimes_initial_byname(args[0].c_str()) != 0) return no_account(args[0]);
  _sgl2_loginlockout_lockouttimer_initial_byname(args[0].c_str());
  std::printf("'%s': failures and lock cleared\n", args[0].c_str());
  return 0;
}

int cmd_config(const Args &args) {
  expect_args(args, 3, 3);
  if (args[0] != "on" && args[0] != "off") throw UsageError{"lockout must be on or off, not '" + args[0] + "'"};
  const LoginLockoutConfig c{args[0] == "on" ? 1 : 0, static_cast<int32_t>(parse_number(args[1], "RETRIES", 0, 100)),
                             static_cast<int32_t>(parse_number(args[2], "MINUTES", 0, 1440))};
  shm_sysSet_loginLockout_config(&c);
  std::printf("lockout %s: %d failed logins lock an account for %d minutes\n", args[0].c_str(), c.retry_limit,
              c.lockout_minutes);
  return 0;
}

int cmd_check(const Args &args) {
  expect_args(args, 1, 1);
  check_name(args[0]);
  switch (Ssgl2_loginlockout_lockoutstatus_check(args[0].c_str())) {
    case 0:
      std::printf("'%s' may log in\n", args[0].c_str());
      return 0;
    case -1:
      std::printf("'%s' is locked out\n", args[0].c_str());
      return 1;
    default:
      return no_account(args[0]);
  }
}

int cmd_attempt(const Args &args) {
  expect_args(args, 2, 2);
  check_name(args[0]);
  if (args[1] != "ok" && args[1] != "fail") throw UsageError{"result must be ok or fail, not '" + args[1] + "'"};
  if (Ssgl2_loginlockout_lockoutstatus_update(args[0].c_str(), args[1] == "ok" ? 1 : 0) != 0) {
    std::printf("'%s': attempt not counted (unknown account, or the limit is already reached)\n", args[0].c_str());
    return 1;
  }
  std::printf("'%s': %s login recorded\n", args[0].c_str(), args[1] == "ok" ? "successful" : "failed");
  return 0;
}

const Registration reg{{"lockout",
                        "Login lockout: settings and the failure records of each account slot.",
                        {
                            {"show", "[NAME]", "settings, failures and running locks", cmd_show},
                            {"clear", "[NAME]", "clear the failures and lock of one account or of all", cmd_clear},
                            {"config", "on|off RETRIES MINUTES", "change the lockout settings", cmd_config},
                            {"check", "NAME", "may the account log in now (clears a lock that ran out)", cmd_check},
                            {"attempt", "NAME ok|fail", "record one login attempt", cmd_attempt},
                        }}};

}  // namespace
}  // namespace syscommon::tool
