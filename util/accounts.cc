// Operations on the shared account list and the authority texts.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "syscommon/util.h"

namespace {

// Zero-terminated copy of at most size - 1 characters into a fixed field.
template <std::size_t N>
void put_text(char (&field)[N], const char *text) {
  std::memset(field, 0, N);
  if (text != nullptr) std::memcpy(field, text, strnlen(text, N - 1));
}

bool is_empty(const UserAccount &rec) { return rec.name[0] == '\0'; }

std::string_view name_of(const UserAccount &rec) { return {rec.name, strnlen(rec.name, sizeof rec.name)}; }

// The record of the shared list named exactly `name`, searched up to the first empty one.
int find_account(const UserAccountList &list, const char *name) {
  if (name == nullptr) return -1;
  for (int i = 0; i < ACCOUNT_MAX; ++i) {
    const UserAccount &rec = list.account[i];
    if (is_empty(rec)) return -1;
    if (name_of(rec) == name) return i;
  }
  return -1;
}

UserAccountList shared_list() {
  UserAccountList list{};
  shm_sysGetUseraccount(&list);
  return list;
}

// "admin" may only be a System admin and "user" only a user.
bool breaks_reserved_name(std::string_view name, uint32_t authority) {
  if (name == "admin") return authority != ACCOUNT_AUTH_SYSTEM_ADMIN;
  if (name == "user") return authority != ACCOUNT_AUTH_USER;
  return false;
}

}  // namespace

extern "C" {

SYSCOMMON_API int account_get_account_list_index(const char *name) { return find_account(shared_list(), name); }

SYSCOMMON_API int account_get_account_password(const char *name, char *password_out) {
  UserAccountList list = shared_list();
  int i = find_account(list, name);
  if (i < 0) return -1;
  std::memcpy(password_out, list.account[i].password, ACCOUNT_PASSWORD_SIZE);
  return 0;
}

SYSCOMMON_API int account_set(UserAccount *record, const int *authority_code, const char *name,
                              const char *password, int is_new) {
  int code = authority_code != nullptr ? *authority_code : ACCOUNT_CODE_KEEP;
  uint32_t state = 0;
  uint32_t authority = ACCOUNT_AUTH_USER;
  switch (code) {
    case ACCOUNT_CODE_SYSTEM_ADMIN:
      state = 1;
      authority = ACCOUNT_AUTH_SYSTEM_ADMIN;
      break;
    case ACCOUNT_CODE_CONFIG_ADMIN:
      state = 1;
      authority = ACCOUNT_AUTH_CONFIG_ADMIN;
      break;
    case ACCOUNT_CODE_USER:
      state = 1;
      authority = ACCOUNT_AUTH_USER;
      break;
    case ACCOUNT_CODE_KEEP:
      if (is_new == 0) {
        state = record->state;
        authority = record->authority;
      }
      break;
    default:
      return ACCOUNT_ERR_BAD_CODE;
  }
  if (name != nullptr && breaks_reserved_name(name, authority)) return ACCOUNT_ERR_RESERVED_NAME;
  if (is_new == 0 && breaks_reserved_name(name_of(*record), authority)) return ACCOUNT_ERR_RESERVED_NAME;
  if (is_new != 0) put_text(record->name, name);
  record->state = state;
  record->authority = authority;
  put_text(record->password, password);
  return 0;
}

SYSCOMMON_API int account_rm(UserAccountList *list, int index) {
  if (index < 0 || index >= ACCOUNT_MAX || is_empty(list->account[index])) return ACCOUNT_ERR_NOT_FOUND;
  std::span<UserAccount> all(list->account);
  if (all[index].authority == ACCOUNT_AUTH_SYSTEM_ADMIN) {
    auto admins = std::count_if(all.begin(), all.end(), [](const UserAccount &rec) {
      return !is_empty(rec) && rec.authority == ACCOUNT_AUTH_SYSTEM_ADMIN;
    });
    if (admins == 1) return ACCOUNT_ERR_LAST_ADMIN;
  }
  std::copy(all.begin() + index + 1, all.end(), all.begin() + index);
  all.back() = UserAccount{};
  return 0;
}

SYSCOMMON_API int account_get_authority_description(int authority, char *text_out, uint8_t size) {
  const char *text = nullptr;
  unsigned limit = 0;  // size must be above this
  switch (authority) {
    case ACCOUNT_AUTH_SYSTEM_ADMIN:
      text = "System admin";
      limit = 5;
      break;
    case ACCOUNT_AUTH_USER:
      text = "user";
      limit = 4;
      break;
    case ACCOUNT_AUTH_CONFIG_ADMIN:
      text = "Configuration admin";
      limit = 12;
      break;
    default:
      std::printf("unknown authority: %d, %hhu\n", authority, size);
      return 1;
  }
  if (size <= limit) return 1;
  std::memcpy(text_out, text, std::strlen(text) + 1);  // may exceed size (kept; see header)
  return 0;
}

}  // extern "C"
