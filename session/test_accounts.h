// An account list for session tests: names at given positions, other records empty.
#ifndef SYSCOMMON_SESSION_TEST_ACCOUNTS_H
#define SYSCOMMON_SESSION_TEST_ACCOUNTS_H

#include <cstring>
#include <initializer_list>
#include <utility>

#include "syscommon/util.h"

namespace syscommon::testing {

inline UserAccountList accounts_named(std::initializer_list<std::pair<int, const char *>> names) {
  UserAccountList list{};
  for (const auto &[slot, name] : names) std::strncpy(list.account[slot].name, name, ACCOUNT_NAME_SIZE - 1);
  return list;
}

}  // namespace syscommon::testing

#endif
