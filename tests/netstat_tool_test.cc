// The network status groups of the `syscommon` tool run as a program against a real
// interface in the test's namespace and the stand-ins of the simulated root.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/tool_run.h"

namespace {

using syscommon::testing::ProgramRun;
using syscommon::testing::sim_path;
using syscommon::testing::write_file;

using syscommon::testing::has;
using syscommon::testing::tool;
constexpr auto &ok = syscommon::testing::tool_ok;

class NetstatToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    ok({"shm", "init"});
    ok({"ifs", "set-wan", "0", "2", "10.0.0.2/24", "10.0.0.1"});
    ok({"ifs", "set-vlan", "0", "10", "office", "192.168.10.1/24"});
  }
};

TEST_F(NetstatToolTest, DecodedViews) {
  ASSERT_EQ(std::system("ip link add eth0.10 type veth peer name pv && ip link set eth0.10 address 00:90:e8:00:00:0a "
                        "&& ip addr add 192.168.10.1/24 broadcast + dev eth0.10 && ip link set eth0.10 up"),
            0);
  const std::string shown = ok({"if", "show", "eth0.10"});
  EXPECT_TRUE(has(shown, "\neth0.10      up   192.168.10.1/24    192.168.10.255  ") &&
              has(shown, "  00:90:e8:00:00:0a  office\n"))
      << shown;
  EXPECT_EQ(tool({"if", "show", "nosuch0"}).status, 1);
  EXPECT_TRUE(has(ok({"route", "show"}), "default    0.0.0.0/0           10.0.0.1        WAN             1\n"));
  EXPECT_TRUE(has(ok({"route", "show", "ospf"}), "ospf       192.168.40.0/24     192.168.10.2    office          30\n"));
  EXPECT_TRUE(has(ok({"ospf", "neighbors"}), "192.168.40.1    1    Full/Backup     192.168.10.3    office\n"));
  EXPECT_TRUE(has(ok({"lldp", "show"}), "local port 1/3: 00:90:e8:11:22:33 port 1/7 (Port 7 uplink)\n"));
  EXPECT_TRUE(has(ok({"ports", "stats"}), "\nTrk4   down 0 "));
  write_file(sim_path("/tmp/old"), "# running\nplant 8001 172.16.0.1/16 on\ncells 8100 172.20.0.1/24 on\n");
  write_file(sim_path("/tmp/new"), "plant 8001 172.16.0.1/16 off\n");
  EXPECT_EQ(ok({"diff", "bridge", sim_path("/tmp/old"), sim_path("/tmp/new")}),
            "2 bridge(s) of the old table:\n"
            "  plant                           both     enable\n"
            "  cells                           old only gone from the new table\n");

  // The PIM-SM daemon stand-in, ready once its request socket exists.
  ASSERT_EQ(std::system(("mkdir -p " + sim_path("/sim/pim")).c_str()), 0);
  write_file(sim_path("/sim/pim/rp"), "239.1.0.0 255.255.0.0 192.168.30.1 10 150\n");
  const pid_t daemon = fork();
  if (daemon == 0) {
    execl(SYSCOMMON_SIM_MCASTD, SYSCOMMON_SIM_MCASTD, "pim", sim_path("/sim/pim").c_str(), "2", nullptr);
    _exit(127);
  }
  ASSERT_TRUE(syscommon::testing::wait_for_path(sim_path("/mnt/ramdisk/UI2PIM")));
  EXPECT_TRUE(has(ok({"pim", "rp"}), "239.1.0.0/16        192.168.30.1          10      150\n"));
  EXPECT_EQ(ok({"pim", "neighbors"}), "neighbor        interface    uptime expires dr-priority\n");  // count 0
  EXPECT_EQ(syscommon::testing::wait_for(daemon, std::chrono::seconds(5)), 0);
}

TEST_F(NetstatToolTest, BadArgumentsGetOneLineAndStatusTwo) {
  write_file(sim_path("/tmp/bad"), "lan1 1 192.168.1.1\n");
  write_file(sim_path("/tmp/good"), "lan1 1 192.168.1.1/24\n");
  const std::vector<std::vector<std::string>> bad = {
      {"route", "show", "bgp"},
      {"route", "show", "ospf", "more"},
      {"if", "show", "eth0\n1"},
      {"if", "show", "a-name-longer-than-fifteen"},
      {"ospf", "id", "x"},
      {"diff", "vlan", sim_path("/tmp/good")},
      {"diff", "vlan", sim_path("/tmp/missing"), sim_path("/tmp/good")},
      {"diff", "vlan", sim_path("/tmp/bad"), sim_path("/tmp/good")},
      {"diff", "bridge", sim_path("/tmp/good"), sim_path("/tmp/good")},
  };
  for (const auto &args : bad) {
    const ProgramRun r = tool(args);
    EXPECT_EQ(r.status, 2) << ::testing::PrintToString(args) << r.out << r.err;
    EXPECT_TRUE(r.out.empty()) << r.out;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
  }
}

}  // namespace
