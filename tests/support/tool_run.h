// Runs the `syscommon` tool as a program (tests that define SYSCOMMON_TOOL, the built tool's
// path: the cross-cutting tests under tests/).
#ifndef SYSCOMMON_TESTS_TOOL_RUN_H
#define SYSCOMMON_TESTS_TOOL_RUN_H

#include <string>
#include <vector>

#include "support/test_support.h"

namespace syscommon::testing {

inline ProgramRun tool(const std::vector<std::string> &args) { return run_program(SYSCOMMON_TOOL, args); }

// Standard output of a run that must succeed.
inline std::string tool_ok(const std::vector<std::string> &args) {
  const ProgramRun r = tool(args);
  EXPECT_EQ(r.status, 0) << ::testing::PrintToString(args) << r.err;
  return r.out;
}

inline bool has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

}  // namespace syscommon::testing

#endif
