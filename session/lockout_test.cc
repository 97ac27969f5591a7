// Login lockout timelines on the second clock, and the password rules in their order.
#include <cstring>
#include <tuple>

#include "session/test_accounts.h"
#include "session/test_clock.h"
#include "support/test_support.h"
#include "syscommon/session.h"
#include "syscommon/util.h"

using syscommon::testing::g_secs;

namespace {

class LockoutTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    UserAccountList accounts = syscommon::testing::accounts_named({{0, "admin"}, {1, "bob"}});
    std::strcpy(accounts.account[1].password, "Abcdefg1");
    shm_sysSetUseraccount(&accounts);
    configure(1, 3, 5);
    g_secs = 10000;
  }
  static void configure(int32_t enable, int32_t retry_limit, int32_t minutes) {
    const LoginLockoutConfig config{enable, retry_limit, minutes};
    shm_sysSet_loginLockout_config(&config);
  }
  static LoginLockoutRecord bob() {
    LoginLockoutList list{};
    shm_sysGet_login_lockout_List(&list);
    return list.entry[1];
  }
};

TEST_F(LockoutTest, ThirdFailureLocksUntilTheLockRunsOut) {
  for (int i = 0; i < 2; ++i) EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 0), 0);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("bob"), 0);
  EXPECT_EQ(bob().lockout_until, 0u);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 0), 0);
  EXPECT_EQ(bob().fail_times, 3);
  EXPECT_EQ(bob().lockout_until, 10300u);

  g_secs = 10100;  // a fourth failure during the lock is refused and does not extend it
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 0), -1);
  EXPECT_EQ(bob().lockout_until, 10300u);
  EXPECT_EQ(bob().fail_times, 3);
  g_secs = 10299;
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("bob"), -1);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("admin"), 0);
  g_secs = 10300;  // the first check at the lock's end clears the record
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("bob"), 0);
  EXPECT_EQ(bob().fail_times, 0);
  EXPECT_EQ(bob().lockout_until, 0u);

  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 0), 0);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 1), 0);  // success clears
  EXPECT_EQ(bob().fail_times, 0);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("nobody", 0), -1);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("nobody", 1), -1);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("nobody"), -2);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check(nullptr), -2);
}

TEST_F(LockoutTest, RetryLimitZeroNeverLocksAndLockoutOffChangesNothing) {
  configure(1, 0, 5);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 0), -1);
    EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("bob"), 0);
  }
  EXPECT_EQ(bob().fail_times, 0);
  EXPECT_EQ(bob().lockout_until, 0u);

  configure(0, 3, 5);
  _sgl2_loginlockout_failtimes_set(1, 7);
  _sgl2_loginlockout_lockouttimer_set(1, 99999);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 0), 0);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_update("bob", 1), 0);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("bob"), 0);
  EXPECT_EQ(Ssgl2_loginlockout_lockoutstatus_check("nobody"), -2);  // mapped before enable is read
  EXPECT_EQ(bob().fail_times, 7);
  EXPECT_EQ(bob().lockout_until, 99999u);

  Ssgl2_loginlockout_lockoutstatus_initial();
  EXPECT_TRUE(syscommon::testing::RawSegment(7906).zero(668, 80));
}

TEST_F(LockoutTest, SlotOperationsRefuseSlotsOutsideTheList) {
  int32_t times = 0;
  uint32_t until = 0;
  for (const int slot : {-1, 10, 1 << 30}) {
    EXPECT_EQ(_sgl2_loginlockout_failtimes_set(slot, 1), -1);
    EXPECT_EQ(_sgl2_loginlockout_failtimes_get(slot, &times), -1);
    EXPECT_EQ(_sgl2_loginlockout_lockouttimer_set(slot, 1), -1);
    EXPECT_EQ(_sgl2_loginlockout_lockouttimer_get(slot, &until), -1);
    EXPECT_EQ(_sgl2_loginlockout_failtimes_check(slot), -1);
    EXPECT_EQ(_sgl2_loginlockout_lockouttimer_check(slot), -1);
  }
  EXPECT_EQ(_sgl2_loginlockout_failtimes_get(1, nullptr), -1);
  EXPECT_TRUE(syscommon::testing::RawSegment(7906).zero(668, 80));
  EXPECT_EQ(_sgl2_loginlockout_lockouttimer_check(9), 0);  // 0 counts as run out
}

TEST_F(LockoutTest, PasswordRulesApplyInTheirOrder) {
  // min_length, enable, digit, upper/lower, special; password; result.
  const std::tuple<uint32_t, uint8_t, uint8_t, uint8_t, uint8_t, const char *, int> rows[] = {
      {8, 0, 0, 0, 0, "abcde", 1},        // the length rule applies with the rules off
      {8, 2, 1, 1, 1, "abcdefgh", 0},     // enable must be exactly 1
      {8, 1, 1, 1, 0, "Abcdefg1", 0},
      {8, 1, 1, 1, 1, "Abcdefg1", 4},
      {8, 1, 1, 1, 1, "Abc def1", 4},     // a space is not special
      {8, 1, 1, 1, 1, "Abc+def1", 4},
      {8, 1, 1, 1, 1, "Abc_def1", 0},
      {8, 1, 1, 1, 1, "abcdefgh", 2},     // digit before case
      {8, 1, 0, 1, 1, "ABCDEFG!", 3},     // no lower case
      {8, 1, 0, 1, 1, "abcdefg!", 3},     // no upper case
      {0, 1, 1, 0, 0, "", 2},
      {0, 1, 0, 0, 0, nullptr, 0},
      {1, 1, 0, 0, 0, nullptr, 1},
  };
  for (const auto &[min_length, enable, digit, upper_lower, special, password, result] : rows) {
    const PasswordPolicyConfig policy{min_length, enable, digit, upper_lower, special};
    shm_sysSet_pwPolicy_config(&policy);
    EXPECT_EQ(Ssgl2_pwdpolicy_check(password), result) << (password != nullptr ? password : "(null)");
  }
  const PasswordPolicyConfig policy{8, 1, 1, 1, 1};
  shm_sysSet_pwPolicy_config(&policy);
  EXPECT_EQ(Ssgl2_pwdpolicy_check_byLocalDatabaseUsername("bob"), 4);
  EXPECT_EQ(Ssgl2_pwdpolicy_check_byLocalDatabaseUsername("nobody"), 2);  // unreadable rates as "no digit"
}

}  // namespace
