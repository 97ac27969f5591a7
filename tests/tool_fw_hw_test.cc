// The `syscommon fw` and `hw` groups run as programs on the simulated device: an image packed,
// checked, refused when short or foreign, written and read back; the board shown and driven.
#include <string>
#include <vector>

#include "support/tool_run.h"

namespace {

using namespace syscommon::testing;

class FwHwTool : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    reset_flash();
    clear_trace();
    write_file(sim_path("/tmp/k"), std::string(1000, 'k'));
    write_file(sim_path("/tmp/f"), std::string(1001, 'f'));
  }
  const std::string image_ = sim_path("/mnt/ramdisk/fwUpload");
};

TEST_F(FwHwTool, PackCheckWriteAndVersion) {
  ProgramRun r = tool({"fw", "pack", sim_path("/tmp/k"), sim_path("/tmp/f"), image_, "--id", "42", "--version",
                       "5.1.2.3", "--built", "26112301"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(read_file(image_).size(), 32u + 4194304 + 1004);
  r = tool({"fw", "check", image_, "--id", "42"});
  EXPECT_EQ(r.status, 0) << r.out;
  EXPECT_NE(r.out.find("version          V5.1.2.3.2, build 26112301."), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("verdict: valid (0)"), std::string::npos);
  r = tool({"fw", "check", image_, "--id", "43"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("verdict: refused (-1: image id differs)"), std::string::npos);
  std::string full = read_file(image_);
  write_file(sim_path("/tmp/short"), full.substr(0, full.size() - 1));
  r = tool({"fw", "check", sim_path("/tmp/short"), "--id", "42"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("short: the file holds 4195339 of the 4195340 bytes"), std::string::npos) << r.out;
  write_file(sim_path("/tmp/empty"), "");
  EXPECT_EQ(tool({"fw", "write", sim_path("/tmp/empty"), "--id", "42"}).status, 1);
  EXPECT_EQ(tool({"fw", "check", sim_path("/tmp/none"), "--id", "42"}).status, 1);
  EXPECT_TRUE(read_file(sim_path("/proc/tarn/wd_reboot")).empty());

  r = tool({"fw", "write", image_, "--id", "42"});
  EXPECT_EQ(r.status, 0) << r.out << r.err;
  EXPECT_NE(r.out.find("/dev/mtd1: 4194304 bytes read back, identical"), std::string::npos);
  EXPECT_NE(r.out.find("/dev/mtd2: 1004 bytes read back, identical"), std::string::npos);
  EXPECT_EQ(trace_lines().back(), "echo 1 > " + sim_path("/proc/tarn/wd_reboot"));
  r = tool({"fw", "version"});
  EXPECT_NE(r.out.find("version          V5.1.2.3.2, build 26112301. (0x05010203)"), std::string::npos) << r.out;

  for (const std::vector<std::string> &bad : std::vector<std::vector<std::string>>{
           {"fw", "check", image_}, {"fw", "check", image_, "--id", "-1"}, {"fw", "write", "--id", "1"},
           {"fw", "pack", "a", "b", "c", "--id", "1", "--version", "5.1.2"}, {"hw", "do", "3", "on"},
           {"hw", "fault", "maybe"}, {"hw", "led", "status", "blue"}}) {
    r = tool(bad);
    EXPECT_EQ(r.status, 2) << ::testing::PrintToString(bad) << r.out;
  }
}

TEST_F(FwHwTool, ShowAndDrive) {
  ProgramRun r = tool({"hw", "show"});
  EXPECT_EQ(r.status, 0) << r.err;
  for (const char *line : {"serial number    1234567", "serial text      KV9A2611042", "hardware version 2",
                           "power input 1    present", "hardware events 0x400c", "port 1/10 link down"})
    EXPECT_NE(r.out.find(line), std::string::npos) << line << "\n" << r.out;
  EXPECT_EQ(tool({"hw", "do", "2", "on"}).out, "digital output 2: on\n");
  EXPECT_EQ(tool({"hw", "fault", "off"}).status, 0);
  EXPECT_EQ(tool({"hw", "led", "status", "second"}).status, 0);
  EXPECT_EQ(tool({"hw", "led", "vpn", "on"}).status, 0);
  const std::string set = sim_path("/proc/tarn/gpio_set"), clr = sim_path("/proc/tarn/gpio_clr");
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{"echo 65536 > " + clr, "echo 256 > " + set, "echo 128 > " + set,
                                                     "echo 64 > " + clr, "echo 131072 > " + clr}));
}

}  // namespace
