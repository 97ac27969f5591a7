// `syscommon log` run as a program: an event sent through the agent stand-in and shown
// back, the exports it reports, and bad arguments refused with status 2.
#include <sstream>
#include <string>
#include <vector>

#include "support/tool_run.h"

namespace {

// The tool with blank-separated arguments; standard output and error together.
struct ToolRun {
  int status;
  std::string out;
};

ToolRun tool(const std::string &args) {
  std::vector<std::string> words;
  std::istringstream in(args);
  for (std::string w; in >> w;) words.push_back(w);
  const auto r = syscommon::testing::tool(words);
  return {r.status, r.out + r.err};
}

TEST(LogTool, SendShowExport) {
  SYSCOMMON_REQUIRE_ISOLATION();
  ASSERT_EQ(tool("shm init").status, 0);
  ToolRun sent = tool("log send 13 35 4 admin");
  ASSERT_EQ(sent.status, 0) << sent.out;
  EXPECT_NE(sent.out.find("stored"), std::string::npos) << sent.out;
  ASSERT_EQ(tool("log send 0 0 6").status, 0);

  ToolRun all = tool("log show");
  EXPECT_EQ(all.status, 0);
  EXPECT_NE(all.out.find("Warning       system   [100014] [Auth Ok, Login Success] Account {admin}, Bootup:1"),
            std::string::npos)
      << all.out;
  EXPECT_NE(all.out.find("Informational system   Cold Start"), std::string::npos) << all.out;
  ToolRun warnings = tool("log show system --level 0-4");
  EXPECT_EQ(warnings.out.find("Cold Start"), std::string::npos) << warnings.out;
  EXPECT_NE(warnings.out.find("Account {admin}"), std::string::npos) << warnings.out;

  ToolRun exported = tool("log export system");
  EXPECT_EQ(exported.status, 0);
  EXPECT_EQ(exported.out, "system   -> " + syscommon::testing::sim_path("/mnt/ramdisk/TARN_LOG.ini") + "\n");
}

TEST(LogTool, BadArguments) {
  for (const char *args : {"log show daemon", "log show --level 5-2", "log show --level 3", "log show --level 0-8",
                           "log send 13", "log send 13 300", "log send 13 35 4 it's", "log send x 1",
                           "log export all extra"}) {
    ToolRun r = tool(args);
    EXPECT_EQ(r.status, 2) << args << ": " << r.out;
    EXPECT_NE(r.out.find("usage: syscommon log"), std::string::npos) << args;
  }
}

}  // namespace
