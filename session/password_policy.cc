// The password policy: a minimum length that always applies, and character-class rules
// that apply only when the policy is enabled, checked in a fixed order.
#include <cstring>

#include "session/store.h"
#include "syscommon/util.h"

extern "C" {

SYSCOMMON_API int Ssgl2_pwdpolicy_check(const char *password) {
  if (password == nullptr) password = "";
  const PasswordPolicyConfig policy = syscommon::session::load_password_policy();
  if (std::strlen(password) < policy.min_length) return 1;
  if (policy.enable != 1) return 0;
  if (policy.need_digit != 0 && Ssys_CheckStringDigit(password) != 1) return 2;
  if (policy.need_upper_lower != 0 &&
      (Ssys_CheckStringLowercase(password) != 1 || Ssys_CheckStringUppercase(password) != 1))
    return 3;
  if (policy.need_special != 0 && Ssys_CheckStringSpecialchar(password) != 1) return 4;
  return 0;
}

SYSCOMMON_API int Ssgl2_pwdpolicy_check_byLocalDatabaseUsername(const char *name) {
  // The stored field holds 32 characters at most, not always terminated.
  char password[ACCOUNT_PASSWORD_SIZE + 1] = {};
  // An account whose password cannot be read rates as "no digit", as the pages expect.
  if (account_get_account_password(name, password) != 0) return 2;
  return Ssgl2_pwdpolicy_check(password);
}

}  // extern "C"
