// syscommon password: the password policy and the rating of a password against it.
#include <cstdio>
#include <string>

#include "syscommon/session.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

PasswordPolicyConfig policy() {
  PasswordPolicyConfig p{};
  shm_sysGet_pwPolicy_config(&p);
  return p;
}

const char *on_off(uint8_t flag) { return flag != 0 ? "on" : "off"; }

uint8_t parse_flag(const std::string *text, uint8_t current, const char *what) {
  if (text == nullptr) return current;
  if (*text == "on") return 1;
  if (*text == "off") return 0;
  throw UsageError{std::string(what) + " must be on or off, not '" + *text + "'"};
}

int cmd_check(const Args &args) {
  expect_args(args, 1, 1);
  check_text(args[0], "TEXT", 127);
  const PasswordPolicyConfig p = policy();
  const int rc = Ssgl2_pwdpolicy_check(args[0].c_str());
  const std::string reasons[] = {"acceptable", "shorter than " + std::to_string(p.min_length) + " characters",
                                 "no digit", "no lower-case or no upper-case letter",
                                 "none of the special characters ~!@#$%^&*-_|;:,.<>[]{}()"};
  std::printf("%d: %s\n", rc, rc >= 0 && rc <= 4 ? reasons[rc].c_str() : "unexpected result");
  return rc == 0 ? 0 : 1;
}

int cmd_policy(const Args &args) {
  const Options o = parse_options(args, {"--min", "--rules", "--digit", "--case", "--special"});
  expect_args(o.positional, 0, 0);
  PasswordPolicyConfig p = policy();
  if (const std::string *min = o.get("--min"); min != nullptr)
    p.min_length = static_cast<uint32_t>(parse_number(*min, "--min", 0, 127));
  p.enable = parse_flag(o.get("--rules"), p.enable, "--rules");
  p.need_digit = parse_flag(o.get("--digit"), p.need_digit, "--digit");
  p.need_upper_lower = parse_flag(o.get("--case"), p.need_upper_lower, "--case");
  p.need_special = parse_flag(o.get("--special"), p.need_special, "--special");
  if (!o.named.empty()) shm_sysSet_pwPolicy_config(&p);
  std::printf("minimum length %u; character rules %s (digit %s, upper and lower case %s, special %s)\n",
              p.min_length, p.enable == 1 ? "on" : "off", on_off(p.need_digit), on_off(p.need_upper_lower),
              on_off(p.need_special));
  return 0;
}

const Registration reg{{"password",
                        "The password policy.",
                        {
                            {"check", "TEXT", "rate a password: the policy's code and its meaning", cmd_check},
                            {"policy", "[--min N] [--rules on|off] [--digit on|off] [--case on|off] [--special on|off]",
                             "show or change the policy", cmd_policy},
                        }}};

}  // namespace
}  // namespace syscommon::tool
