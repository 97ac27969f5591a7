// syscommon accounts: the shared account list, changed only through the library's account
// operations (whole list read, changed, written back).
#include <cstdio>
#include <cstring>
#include <string>

#include "syscommon/shm.h"
#include "syscommon/util.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

UserAccountList load() {
  UserAccountList list{};
  shm_sysGetUseraccount(&list);
  return list;
}

void save(const UserAccountList &list) { shm_sysSetUseraccount(&list); }

int fail(const std::string &message) {
  std::fprintf(stderr, "syscommon accounts: %s\n", message.c_str());
  return 1;
}

// account_set's authority code for a role word.
int role_code(const std::string &role) {
  if (role == "admin") return ACCOUNT_CODE_SYSTEM_ADMIN;
  if (role == "config") return ACCOUNT_CODE_CONFIG_ADMIN;
  if (role == "user") return ACCOUNT_CODE_USER;
  throw UsageError{"authority must be admin, config or user, not '" + role + "'"};
}

void check_name(const std::string &name) {
  check_text(name, "name", ACCOUNT_NAME_SIZE - 1);
  if (Ssys_CheckString(name.c_str()) != 1 || name.find(' ') != std::string::npos)
    throw UsageError{"name may hold letters, digits and _ @ ! # $ % ^ & * ( ) . / - only"};
}

void check_password(const std::string &password) { check_text(password, "password", ACCOUNT_PASSWORD_SIZE - 1); }

std::string authority_text(uint32_t authority) {
  char text[32] = "";
  if (account_get_authority_description(static_cast<int>(authority), text, sizeof text) != 0)
    return "authority " + std::to_string(authority);
  return text;
}

int count_admins(const UserAccountList &list) {
  int n = 0;
  for (const UserAccount &a : list.account)
    if (a.name[0] != '\0' && a.authority == ACCOUNT_AUTH_SYSTEM_ADMIN) ++n;
  return n;
}

// Explains a result of account_set / account_rm.
int report(int rc, const std::string &name) {
  switch (rc) {
    case 0:
      return 0;
    case ACCOUNT_ERR_RESERVED_NAME:
      return fail("'" + name + "' is a reserved name: 'admin' must be a System admin, 'user' a user");
    case ACCOUNT_ERR_LAST_ADMIN:
      return fail("'" + name + "' is the last System admin and cannot be removed");
    case ACCOUNT_ERR_NOT_FOUND:
      return fail("no account '" + name + "'");
    default:
      return fail("refused (code " + std::to_string(rc) + ")");
  }
}

int cmd_list(const Args &args) {
  expect_args(args, 0, 0);
  UserAccountList list = load();
  std::printf("  %-2s %-31s %-20s %s\n", "#", "name", "authority", "state");
  int shown = 0;
  for (int i = 0; i < ACCOUNT_MAX && list.account[i].name[0] != '\0'; ++i, ++shown) {
    const UserAccount &a = list.account[i];
    std::printf("  %-2d %-31.31s %-20s %s\n", i, a.name, authority_text(a.authority).c_str(),
                a.state == 1 ? "explicit" : a.state == 0 ? "default" : std::to_string(a.state).c_str());
  }
  std::printf("%d of %d accounts\n", shown, ACCOUNT_MAX);
  return 0;
}

int cmd_add(const Args &args) {
  expect_args(args, 2, 3);
  const std::string &name = args[0];
  check_name(name);
  check_password(args[1]);
  int code = args.size() == 3 ? role_code(args[2]) : 0;
  if (account_get_account_list_index(name.c_str()) >= 0) return fail("account '" + name + "' already exists");
  UserAccountList list = load();
  int slot = 0;
  while (slot < ACCOUNT_MAX && list.account[slot].name[0] != '\0') ++slot;
  if (slot == ACCOUNT_MAX) return fail("the account list is full (10 accounts)");
  int rc = account_set(&list.account[slot], args.size() == 3 ? &code : nullptr, name.c_str(), args[1].c_str(), 1);
  if (rc != 0) return report(rc, name);
  save(list);
  std::printf("added '%s' (%s) in slot %d\n", name.c_str(), authority_text(list.account[slot].authority).c_str(),
              slot);
  return 0;
}

int cmd_set(const Args &args) {
  expect_args(args, 3, 3);
  const std::string &name = args[0];
  const bool password_change = args[1] == "password";
  // Every argument is checked before the list is looked at.
  if (password_change)
    check_password(args[2]);
  else if (args[1] != "authority")
    throw UsageError{"set NAME password PASSWORD | set NAME authority admin|config|user"};
  const int code = password_change ? ACCOUNT_CODE_KEEP : role_code(args[2]);
  int index = account_get_account_list_index(name.c_str());
  if (index < 0) return report(ACCOUNT_ERR_NOT_FOUND, name);
  UserAccountList list = load();
  UserAccount &rec = list.account[index];
  int rc = 0;
  if (password_change) {
    rc = account_set(&rec, &code, name.c_str(), args[2].c_str(), 0);
  } else {
    if (code != ACCOUNT_CODE_SYSTEM_ADMIN && rec.authority == ACCOUNT_AUTH_SYSTEM_ADMIN && count_admins(list) == 1)
      return fail("'" + name + "' is the last System admin and must keep that authority");
    std::string password(rec.password, strnlen(rec.password, sizeof rec.password));
    rc = account_set(&rec, &code, name.c_str(), password.c_str(), 0);
  }
  if (rc != 0) return report(rc, name);
  save(list);
  std::printf("'%s' updated (%s)\n", name.c_str(), authority_text(rec.authority).c_str());
  return 0;
}

int cmd_remove(const Args &args) {
  expect_args(args, 1, 1);
  const std::string &name = args[0];
  int index = account_get_account_list_index(name.c_str());
  if (index < 0) return report(ACCOUNT_ERR_NOT_FOUND, name);
  UserAccountList list = load();
  int rc = account_rm(&list, index);
  if (rc != 0) return report(rc, name);
  save(list);
  std::printf("removed '%s'\n", name.c_str());
  return 0;
}

const Registration reg{{"accounts",
                        "Local user accounts in the shared account list.",
                        {
                            {"list", "", "print the accounts with their authority", cmd_list},
                            {"add", "NAME PASSWORD [admin|config|user]",
                             "add an account (no authority: user, marked as default)", cmd_add},
                            {"set", "NAME password PASSWORD | NAME authority admin|config|user",
                             "change an account's password or authority", cmd_set},
                            {"remove", "NAME", "remove an account (never the last System admin)", cmd_remove},
                        }}};

}  // namespace
}  // namespace syscommon::tool
