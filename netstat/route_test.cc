// Route listings of the routing shell stand-in parsed into route records.
#include "syscommon/netstat.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "netstat/test_store.h"
#include "support/test_support.h"

namespace {

using syscommon::testing::sim_path;
using syscommon::testing::write_file;

using Routes = std::vector<std::string>;

// Each record as "protocol destination gateway port metric".
Routes parse(char code, int *result = nullptr) {
  RouteRecord *records = nullptr;
  const int n = Route_Parser(&records, code);
  if (result != nullptr) *result = n;
  Routes out;
  for (int i = 0; i < n; ++i) {
    const RouteRecord &r = records[i];
    out.push_back(std::string(r.protocol) + " " + r.destination + " " + inet_ntoa(in_addr{r.gateway}) + " " + r.port +
                  " " + std::to_string(r.metric));
  }
  EXPECT_EQ(records == nullptr, n <= 0);
  std::free(records);
  return out;
}

class RouteTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    syscommon::testing::publish_test_interfaces();
    ASSERT_EQ(std::system("ip link add eth0.2 type veth peer name vp2 && ip addr add 10.0.0.2/24 dev eth0.2 && "
                          "ip link set eth0.2 up"),
              0);
  }
  void TearDown() override {
    if (syscommon::testing::isolated()) std::system("ip link del eth0.2 2>/dev/null");
    unlink(sim_path("/bin/wc").c_str());
  }
};

TEST_F(RouteTest, EveryProtocolOfTheListingWithUnknownInterfacesDropped) {
  const std::string o1 = "ospf 192.168.30.0/24 192.168.10.2 office 20", o2 = "ospf 192.168.40.0/24 192.168.10.2 office 30",
                    s = "static 172.31.0.0/16 192.168.10.2 office 1", r = "rip 192.168.50.0/24 192.168.1.9 lan1 2";
  // The static route to Null0 is dropped, the unselected OSPF route skipped; a connected
  // route's gateway is its interface's own address (none for eth0.1 and eth0.10 here).
  EXPECT_EQ(parse('A'), (Routes{"default 0.0.0.0/0 10.0.0.1 uplink 1", s, "connected 10.0.0.0/24 10.0.0.2 uplink 1",
                                "connected 192.168.1.0/24 0.0.0.0 lan1 1", "connected 192.168.10.0/24 0.0.0.0 office 1",
                                o1, o2, r}));
  EXPECT_EQ(parse('O'), (Routes{o1, o2}));
  EXPECT_EQ(parse('S'), (Routes{s}));
  EXPECT_EQ(parse('R'), (Routes{r}));
  const std::string root = syscommon::testing::sim_root();
  const auto trace = syscommon::testing::trace_lines();
  ASSERT_GE(trace.size(), 2u);
  EXPECT_EQ(trace[trace.size() - 2],
            root + "/usr/quagga/bin/vtysh -c \"show ip route rip\" > " + root + "/mnt/ramdisk/rtable_tmp");
  EXPECT_EQ(trace.back(), "wc -l " + root + "/mnt/ramdisk/rtable_tmp > " + root + "/mnt/ramdisk/rtable_len");
}

TEST_F(RouteTest, OddLinesKernelRoutesAndTheCapacity) {
  const std::string legend = "Codes: K - kernel route, C - connected, S - static\n       > - selected route\n\n";
  write_file(sim_path("/sim/vtysh/route"),
             legend + "K>* 172.16.0.0/16 via 10.0.0.9, eth0.2\n"
                      "C>\n"                                          // missing columns
                      "X>* 10.1.0.0/16 via 10.0.0.1, eth0.2\n"        // unknown code
                      "O>* 10.2.0.0/16 [110/7] via 10.0.0.1, ppp0\n"  // the WAN link
                      "S>* 10.3.0.0/16 via " + std::string(150, 'x') + ", eth0.2\n"  // overlong, split by the reader
                      "O>* 10.4.0.0/16, tun1, 00:00:05\n"             // short: no metric, no gateway
                      "R>* 10.5.0.0/16 [120/1] via 10.0.0.3, eth0.2\n"
                      "R>* 10.6.0.0/16 [120/1] via 10.0.0.3, eth0.2\n");
  EXPECT_EQ(parse('A'), (Routes{"other 172.16.0.0/16 10.0.0.9 uplink 1", "ospf 10.2.0.0/16 10.0.0.1 WAN 7",
                                "ospf 10.4.0.0/16 0.0.0.0 tun1 0", "rip 10.5.0.0/16 10.0.0.3 uplink 1",
                                "rip 10.6.0.0/16 10.0.0.3 uplink 1"}));
  write_file(sim_path("/sim/vtysh/route"), legend.substr(0, legend.size() - 1));
  int n = 99;
  EXPECT_TRUE(parse('A', &n).empty());
  EXPECT_EQ(n, 0);  // fewer than four lines: no array
}

TEST_F(RouteTest, FailureCodes) {
  int n = 0;
  syscommon::testing::write_stub("wc", "true");  // a count that prints nothing
  parse('A', &n);
  EXPECT_EQ(n, -2);
  syscommon::testing::write_stub("wc", "rm -f \"$2\"; echo \"9 $2\"");  // the listing gone
  parse('A', &n);
  EXPECT_EQ(n, -3);
  unlink(sim_path("/bin/wc").c_str());
  ASSERT_EQ(std::system(("rm -rf " + sim_path("/mnt/ramdisk")).c_str()), 0);  // no count file at all
  parse('A', &n);
  EXPECT_EQ(n, -1);
  ASSERT_EQ(std::system(("mkdir -p " + sim_path("/mnt/ramdisk/socket")).c_str()), 0);
}

}  // namespace
