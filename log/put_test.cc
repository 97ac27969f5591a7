// Slog_put starts the log agent for the fixed events and nothing for the reserved codes.
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/test_support.h"
#include "syscommon/log.h"

namespace {

using syscommon::testing::clear_trace;
using syscommon::testing::read_file;
using syscommon::testing::sim_path;
using syscommon::testing::trace_lines;
using syscommon::testing::write_stub;

class SlogPutTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    write_stub("SendSyslog", "exit 0\n");
    clear_trace();
  }
};

TEST_F(SlogPutTest, EveryPutCodeStartsItsEventOrNothing) {
  const std::vector<std::string> want = {
      "",  "SendSyslog 0 0 4 &",  "SendSyslog 1 0 4 &", "", "", "", "SendSyslog 12 35 4 &",
      "SendSyslog 15 67 4 &",   "SendSyslog 17 67 4 &", "SendSyslog 16 67 4 &", "", "", "", "", "",
      "SendSyslog 15 104 4 &",
  };
  for (int code = 0; code < 16; ++code) {
    SCOPED_TRACE(code);
    clear_trace();
    EXPECT_EQ(Slog_put(code, 99, -7), 0);
    std::vector<std::string> lines = trace_lines();
    if (want[code].empty()) {
      EXPECT_TRUE(lines.empty());
    } else {
      ASSERT_EQ(lines.size(), 1u);
      EXPECT_EQ(lines[0], want[code]);
    }
  }
}

TEST_F(SlogPutTest, IgnoredArgumentsDoNotReachTheCommandAndTheAgentRuns) {
  write_stub("SendSyslog", "echo \"$@\" >> " + sim_path("/tmp/sendsyslog.args") + "\n");
  EXPECT_EQ(Slog_put(7, 123, 456), 0);
  ASSERT_EQ(trace_lines(), std::vector<std::string>{"SendSyslog 15 67 4 &"});
  // The agent runs in the background: wait for its argument line (an agent started by an
  // earlier test may add its own line too).
  std::string args;
  for (int i = 0; i < 500 && args.find("15 67 4\n") == std::string::npos; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    args = read_file(sim_path("/tmp/sendsyslog.args"));
  }
  EXPECT_NE(args.find("15 67 4\n"), std::string::npos) << args;
  EXPECT_EQ(args.find("123"), std::string::npos) << args;
  EXPECT_EQ(args.find("456"), std::string::npos) << args;
}

TEST_F(SlogPutTest, MissingAgentStillReturnsZero) {
  write_stub("SendSyslog", "exit 127\n");
  EXPECT_EQ(Slog_put(1, 0, 0), 0);
}

}  // namespace
