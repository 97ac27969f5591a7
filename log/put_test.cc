// Slog_put starts the log agent for the fixed events and nothing for the reserved codes.
#include <algorithm>
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

TEST(SlogPut, EveryPutCodeStartsItsEventOrNothing) {
  SYSCOMMON_REQUIRE_ISOLATION();
  // The agent is written once: rewriting it while a background agent is still being
  // started could fail with "text file busy".
  const std::string args_path = sim_path("/tmp/sendsyslog.args");
  syscommon::testing::write_stub("SendSyslog", "echo \"$@\" >> " + args_path + "\n");
  const std::vector<std::string> want = {
      "",  "SendSyslog 0 0 4 &",  "SendSyslog 1 0 4 &", "", "", "", "SendSyslog 12 35 4 &",
      "SendSyslog 15 67 4 &",   "SendSyslog 17 67 4 &", "SendSyslog 16 67 4 &", "", "", "", "", "",
      "SendSyslog 15 104 4 &",
  };
  std::vector<std::string> want_args;
  for (int code = 0; code < 16; ++code) {
    SCOPED_TRACE(code);
    clear_trace();
    EXPECT_EQ(Slog_put(code, 99, -7), 0);  // the last two arguments never reach the agent
    const std::vector<std::string> lines = trace_lines();
    if (want[code].empty()) {
      EXPECT_TRUE(lines.empty());
    } else {
      EXPECT_EQ(lines, std::vector<std::string>{want[code]});
      want_args.push_back(want[code].substr(11, want[code].size() - 13));  // "15 67 4"
    }
  }
  // The agents run in the background, in any order: wait until all have written.
  std::vector<std::string> got;
  for (int i = 0; i < 500 && got.size() < want_args.size(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::string text = read_file(args_path);
    got.clear();
    for (std::size_t b = 0, e; (e = text.find('\n', b)) != std::string::npos; b = e + 1)
      got.push_back(text.substr(b, e - b));
  }
  std::sort(got.begin(), got.end());
  std::sort(want_args.begin(), want_args.end());
  EXPECT_EQ(got, want_args);
}

}  // namespace
