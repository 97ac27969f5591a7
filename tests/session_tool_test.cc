// The `syscommon` session, lockout, password and loginrecord groups run as programs on the
// simulated device, the login records through the main daemon's stand-in started by the
// tool itself.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <string>
#include <vector>

#include "support/tool_run.h"

namespace {

using syscommon::testing::has;
using syscommon::testing::ProgramRun;
using syscommon::testing::tool;

class SessionToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    ASSERT_EQ(tool({"shm", "init"}).status, 0);
    ASSERT_EQ(tool({"accounts", "add", "bob", "pw"}).status, 0);
  }
};

TEST_F(SessionToolTest, BadArgumentsGetOneLineAndStatusTwo) {
  const std::vector<std::vector<std::string>> bad = {
      {"session", "open", "0x10"},
      {"session", "open", "-1"},
      {"session", "open", "5", "--user", "1", "--user", "2"},
      {"session", "max", "web", "11"},
      {"session", "max", "console", "6"},
      {"session", "max", "tty", "2"},
      {"session", "console-open", "1", "a\nb", "3"},
      {"lockout", "config", "maybe", "3", "5"},
      {"lockout", "attempt", "bob", "perhaps"},
      {"lockout", "show", std::string(33, 'a')},
      {"password", "check", "a\tb"},
      {"password", "policy", "--digit", "yes"},
      {"loginrecord", "record", "bob", "ok", ""},
      {"loginrecord", "serve", "--seconds", "0"},
  };
  syscommon::testing::expect_usage_errors(SYSCOMMON_TOOL, bad);
}

TEST_F(SessionToolTest, SessionsLockoutAndPasswordRating) {
  EXPECT_EQ(tool({"session", "max", "web", "2"}).status, 0);
  EXPECT_TRUE(has(tool({"session", "open", "4000000000", "--user", "7", "--login-token", "4660"}).out, "opened (0)"));
  const std::string list = tool({"session", "list"}).out;
  EXPECT_TRUE(has(list, "4000000000")) << list;
  EXPECT_TRUE(has(list, "******34")) << list;  // the login token 0x1234, masked
  EXPECT_FALSE(has(list, "1234")) << list;
  EXPECT_TRUE(has(tool({"session", "verify", "4000000000"}).out, "valid, user 7"));
  EXPECT_EQ(tool({"session", "kick", "4000000000"}).status, 0);
  const ProgramRun gone = tool({"session", "verify", "4000000000"});
  EXPECT_EQ(gone.status, 1);
  EXPECT_TRUE(has(gone.out, "no such session (15)")) << gone.out;

  EXPECT_EQ(tool({"lockout", "config", "on", "2", "1"}).status, 0);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(tool({"lockout", "attempt", "bob", "fail"}).status, 0);
  EXPECT_EQ(tool({"lockout", "check", "bob"}).status, 1);
  // One minute from the second failure; a slow run may have used a few seconds of it.
  const std::string locked = tool({"lockout", "show", "bob"}).out;
  std::smatch left;
  ASSERT_TRUE(std::regex_search(locked, left, std::regex("locked, ([0-9]+) s left"))) << locked;
  EXPECT_GE(std::stoi(left[1]), 50);
  EXPECT_LE(std::stoi(left[1]), 60);
  EXPECT_EQ(tool({"lockout", "check", "nobody"}).status, 1);
  EXPECT_EQ(tool({"lockout", "clear", "bob"}).status, 0);
  EXPECT_EQ(tool({"lockout", "check", "bob"}).status, 0);

  EXPECT_EQ(tool({"password", "policy", "--min", "8", "--rules", "on", "--special", "on"}).status, 0);
  const ProgramRun weak = tool({"password", "check", "Abc def1"});
  EXPECT_EQ(weak.status, 1);
  EXPECT_EQ(weak.out, "4: none of the special characters ~!@#$%^&*-_|;:,.<>[]{}()\n");
  EXPECT_EQ(tool({"password", "check", "Abc_def1"}).out, "0: acceptable\n");
}

TEST_F(SessionToolTest, LoginRecordsThroughTheStandInStartedByTheTool) {
  EXPECT_EQ(tool({"loginrecord", "show", "bob"}).status, 1);  // no daemon: refused at once
  const pid_t daemon = fork();
  if (daemon == 0) {
    execl(SYSCOMMON_TOOL, SYSCOMMON_TOOL, "loginrecord", "serve", "--seconds", "30", static_cast<char *>(nullptr));
    _exit(127);
  }
  const std::string ready = syscommon::testing::sim_path("/mnt/ramdisk/socket/lumen168-wexe-socket");
  ASSERT_TRUE(syscommon::testing::wait_for_path(ready)) << "stand-in daemon did not start";
  EXPECT_EQ(tool({"loginrecord", "record", "bob", "fail", "10.0.0.7"}).status, 0);
  EXPECT_EQ(tool({"loginrecord", "record", "nobody", "ok", "tty1"}).status, 1);
  const std::string shown = tool({"loginrecord", "show", "bob"}).out;
  EXPECT_TRUE(has(shown, "last login none recorded")) << shown;
  EXPECT_TRUE(has(shown, "failed logins since: 1")) << shown;
  EXPECT_TRUE(has(shown, "failure 1: ")) << shown;
  EXPECT_TRUE(has(shown, " from 10.0.0.7")) << shown;
  kill(daemon, SIGTERM);
  EXPECT_EQ(syscommon::testing::wait_for(daemon, std::chrono::seconds(5)), 0);
  EXPECT_NE(access(ready.c_str(), F_OK), 0);
}

}  // namespace
