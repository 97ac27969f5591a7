// Slog_put starts the log agent for the fixed events and nothing for the reserved codes.
#include <algorithm>
#include <chrono>
#include <map>
#include <sstream>
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
  // Event and reason of each used put code; every other code of 0..15 starts nothing.
  const std::map<int, std::string> used = {{1, "0 0"},   {2, "1 0"},   {6, "12 35"},  {7, "15 67"},
                                           {8, "17 67"}, {9, "16 67"}, {15, "15 104"}};
  std::vector<std::string> want_args;
  for (int code = 0; code < 16; ++code) {
    SCOPED_TRACE(code);
    clear_trace();
    EXPECT_EQ(Slog_put(code, 99, -7), 0);  // the last two arguments never reach the agent
    if (used.contains(code)) {
      EXPECT_EQ(trace_lines(), std::vector<std::string>{"SendSyslog " + used.at(code) + " 4 &"});
      want_args.push_back(used.at(code) + " 4");
    } else {
      EXPECT_TRUE(trace_lines().empty());
    }
  }
  // The agents run in the background, in any order: wait until all have written.
  std::vector<std::string> got;
  for (int i = 0; i < 500 && got.size() < want_args.size(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::istringstream text(read_file(args_path));
    got.clear();
    for (std::string line; std::getline(text, line);) got.push_back(line);
  }
  std::sort(got.begin(), got.end());
  std::sort(want_args.begin(), want_args.end());
  EXPECT_EQ(got, want_args);
}

}  // namespace
