// OSPF status through the routing shell stand-in: router id, interface states, neighbour
// and database tables with their skipped lines and failure codes.
#include "syscommon/netstat.h"

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "netstat/test_store.h"
#include "support/test_support.h"

namespace {

using syscommon::testing::sim_path;
using syscommon::testing::write_file;

using OspfTest = syscommon::testing::NetstatStoreTest;

std::vector<std::string> neighbors() {
  OspfNeighbor *t = nullptr;
  const int n = getOSPFNeighborTable(&t);
  std::vector<std::string> rows;
  for (int i = 0; i < n; ++i)
    rows.push_back(std::string(t[i].neighbor_id) + "|" + t[i].priority + "|" + t[i].state + "|" + t[i].address + "|" +
                   t[i].port);
  EXPECT_EQ(t == nullptr, n <= 0);
  std::free(t);
  if (n < 0) rows.push_back("error " + std::to_string(n));
  return rows;
}

TEST_F(OspfTest, RouterIdAndInterfaceStates) {
  char id[32];
  EXPECT_EQ(getOSPFRouterID(id), 0);
  EXPECT_STREQ(id, "192.168.10.1");
  write_file(sim_path("/sim/vtysh/ospf"), "OSPF not enabled\r\n");  // no colon: the preset stays
  EXPECT_EQ(getOSPFRouterID(id), 0);
  EXPECT_STREQ(id, "0.0.0.0");

  write_file(sim_path("/sim/vtysh/ospf-interface"), "State:DR\r\nCost:10\nA-very-long-key-beyond-32-characters-x:v\n");
  OspfIfState s[3] = {};
  EXPECT_EQ(getOSPFIfState(s), 0);
  EXPECT_STREQ(s[0].key, "State");
  EXPECT_STREQ(s[0].value, "DR");
  EXPECT_STREQ(s[1].value, "10");
  EXPECT_EQ(std::strlen(s[2].key), 31u);
  EXPECT_EQ(syscommon::testing::trace_lines().back(),
            sim_path("/usr/quagga/bin/vtysh") + " -c \"show ip ospf interface_tarn\"");
}

TEST_F(OspfTest, NeighborTable) {
  EXPECT_EQ(neighbors(), (std::vector<std::string>{"192.168.30.1|1|Full/DR|192.168.10.2|office",
                                                   "192.168.40.1|1|Full/Backup|192.168.10.3|office"}));
  const std::string head = "\n    Neighbor ID Pri State Dead Time Address Interface\n";
  write_file(sim_path("/sim/vtysh/ospf-neighbor"),
             head + "10.0.0.9 1 Full/DR 30.0s 10.0.0.9 eth0.2:10.0.0.2 0 0 0\n"
                    "10.0.0.8 1\n"  // missing columns: what was read
                    + std::string(40, 'n') + " 123456789 " + std::string(300, 's') + "\n");
  EXPECT_EQ(neighbors(), (std::vector<std::string>{"10.0.0.9|1|Full/DR|10.0.0.9|uplink", "10.0.0.8|1|||",
                                                   std::string(31, 'n') + "|1234567|" + std::string(31, 's') + "||"}));
  // (the rest of the overlong line is beyond the capacity the line count gave)
  write_file(sim_path("/sim/vtysh/ospf-neighbor"), head);
  EXPECT_TRUE(neighbors().empty());  // heading only: nothing allocated
  syscommon::testing::write_stub("wc", "true");
  EXPECT_EQ(neighbors(), (std::vector<std::string>{"error -2"}));
  syscommon::testing::write_stub("wc", "rm -f \"$2\"; echo \"5 $2\"");
  EXPECT_EQ(neighbors(), (std::vector<std::string>{"error -3"}));
}

TEST_F(OspfTest, DatabaseTableNeverReadsTheLastLine) {
  OspfDbRecord *t = nullptr;
  ASSERT_EQ(getOSPFDBTable(&t), 3);
  EXPECT_STREQ(t[0].area, "0.0.0.0");
  EXPECT_STREQ(t[2].type, "Network");
  EXPECT_STREQ(t[2].link_id, "192.168.10.2");
  EXPECT_STREQ(t[2].adv_router, "192.168.30.1");
  EXPECT_STREQ(t[2].age, "298");
  EXPECT_STREQ(t[2].seq, "0x80000001");
  std::free(t);
  EXPECT_EQ(syscommon::testing::trace_lines().back(),
            "wc -l " + sim_path("/mnt/ramdisk/ospf_dt_tmp") + " > " + sim_path("/mnt/ramdisk/ospf_dt_len"));
  write_file(sim_path("/sim/vtysh/ospf-db"), "a\nb\nc\nlast 1 2 3 4 5\n");
  t = reinterpret_cast<OspfDbRecord *>(1);
  EXPECT_EQ(getOSPFDBTable(&t), 0);
  EXPECT_EQ(t, nullptr);
}

}  // namespace
