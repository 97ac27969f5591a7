// PPP peer, interface naming, VRRP state, the raw-socket filter entry, the default gateway
// choice, the local interface of an address and the LLDP neighbour file.
#include "syscommon/netstat.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <string>
#include <tuple>

#include "netstat/test_store.h"
#include "support/test_support.h"

namespace {

using syscommon::testing::read_file;
using syscommon::testing::sim_path;
using syscommon::testing::write_file;

using GatewayTest = syscommon::testing::NetstatStoreTest;

TEST_F(GatewayTest, PppPeerAddress) {
  const std::tuple<std::string, int, std::string> rows[] = {
      {"  inet addr:100.64.0.2  P-t-P:100.64.0.1  Mask:255.255.255.255\n", 1, "100.64.0.1"},
      {"P-t-P-t-P:1.2.3.4", 1, "1.2.3.4"},                  // a match that starts inside a partial one
      {"P-t-P:100.100.100.100.100\n", 1, "100.100.100.100"},  // at most 15 characters
      {"  inet addr:100.64.0.2  Mask:255.255.255.255\n", 0, ""},  // no peer: the end of the listing ends it
      {"", 0, ""},
  };
  for (const auto &[listing, result, peer] : rows) {
    write_file(sim_path("/sim/ifconfig/ppp3"), listing);
    char out[16] = "stale";
    EXPECT_EQ(PPP_IP_DST(3, out), result) << listing;
    EXPECT_EQ(std::string(out), peer) << listing;
  }
  EXPECT_EQ(syscommon::testing::trace_lines().back(),
            "ifconfig ppp3 > " + sim_path("/mnt/ramdisk/ppp_ip_dst3"));
  char out[16];
  EXPECT_EQ(PPP_IP_DST(0, out), 1);  // the simulated root's own listing
  EXPECT_STREQ(out, "100.64.0.1");
}

TEST_F(GatewayTest, PortNamesAndVrrpStates) {
  const std::tuple<const char *, int, const char *> names[] = {
      {"ppp0", 0, "WAN"}, {"eth0.10", 0, "office"}, {"eth0.99", 0, ""}, {"br8001", 0, ""},
      {"vpn0", 0, "vpn0"}, {"tun3", 0, "tun3"},      {"lo", -1, "lo"},   {"Null0", -1, "Null0"},
  };
  for (const auto &[name, result, want] : names) {
    char buf[32];
    std::strcpy(buf, name);
    EXPECT_EQ(Change_IFname_2_Portname(buf), result) << name;
    EXPECT_STREQ(buf, want) << name;
  }
  const std::tuple<std::string, int> states[] = {{"2\n", 2}, {"1", 1}, {"3\n", 0}, {"backup\n", 0}, {"", 0}};
  for (const auto &[content, want] : states) {
    write_file(sim_path("/mnt/ramdisk/vrrp/eth0.10_4"), content);
    EXPECT_EQ(CheckVrrpStatus(10, 0, 4), want) << content;
  }
  EXPECT_EQ(CheckVrrpStatus(10, 0, 5), 0);  // no state file
  EXPECT_EQ(CheckVrrpStatus(1, 0, 1), 2);   // the simulated root's own
  EXPECT_EQ(CheckVrrpStatus(77, 0, 1), 0);  // no interface for the VLAN
}

TEST_F(GatewayTest, RawFilterAndDefaultGateway) {
  const std::string t40(40, 'a'), t41(41, 'a');
  EXPECT_EQ(set_sock_raw_filter(0x0a, 0xff, 1, "eth0.2", t40.c_str()), 1);
  EXPECT_EQ(read_file(sim_path("/proc/sock_raw_filter")), "0a,ff,01,eth0.2," + t40 + "\n");
  EXPECT_EQ(set_sock_raw_filter(1, 2, 3, t41.c_str(), "x"), 0);
  EXPECT_EQ(set_sock_raw_filter(1, 2, 3, "x", t41.c_str()), 0);
  EXPECT_EQ(read_file(sim_path("/proc/sock_raw_filter")), "0a,ff,01,eth0.2," + t40 + "\n");

  EXPECT_EQ(GetNowDefaultGw(), -1);
  for (const auto &[content, want] : {std::pair{"", -1}, {"2\n", 2}, {"1234", 123}, {"x", 0}}) {
    write_file(sim_path("/mnt/ramdisk/DefaultGw"), content);
    EXPECT_EQ(GetNowDefaultGw(), want) << content;
  }
}

TEST_F(GatewayTest, LocalInterfaceOfAnAddress) {
  const auto name_of = [](const char *ip) {
    char out[32];
    std::memset(out, 'x', sizeof out);
    findLocalIfName(inet_addr(ip), out);
    return std::string(out);
  };
  EXPECT_EQ(name_of("192.168.10.77"), "office");
  EXPECT_EQ(name_of("10.0.0.200"), "uplink");
  EXPECT_EQ(name_of("172.16.0.1"), "");
  syscommon::testing::RawSegment sys(7890);
  sys.put_u32(448 + 8, inet_addr("10.0.0.5"));  // WAN record 0: 10.0.0.5/16 comes first
  sys.put_u32(448 + 12, inet_addr("255.255.0.0"));
  EXPECT_EQ(name_of("10.0.9.9"), "WAN");
  EXPECT_EQ(name_of("192.168.1.3"), "lan1");
}

TEST_F(GatewayTest, LldpNeighbours) {
  static LldpNeighbor n[LLDP_MAX_NEIGHBORS];
  std::memset(n, 0, sizeof n);
  EXPECT_EQ(Get_lldpinfo(n), 2);  // the simulated root's file
  EXPECT_EQ(n[1].port, 9);
  EXPECT_STREQ(n[0].nportdesc, "Port 7 uplink");  // trimmed
  EXPECT_STREQ(n[1].ttl, "120");

  const std::string sep = " ----------\n";
  std::string many;
  for (int i = 0; i < 70; ++i) many += sep + "port: " + std::to_string(i) + "\nNSYSTEM: " + std::string(400, 's') + "\n";
  const std::tuple<std::string, int> files[] = {
      {"port: 5\nNID: lost\n" + sep + "NID: a\n", 1},  // keys before the first separator belong to none
      {sep + "NID: a\n" + sep, 2},                     // a trailing separator counts an empty record
      {many, 65},                                      // the 65th separator stops the reading
      {"", 0},
  };
  for (const auto &[content, want] : files) {
    std::memset(n, 0, sizeof n);
    write_file(sim_path("/mnt/ramdisk/lldpinfo2"), content);
    EXPECT_EQ(Get_lldpinfo(n), want);
    if (want != 65) continue;
    EXPECT_EQ(n[63].port, 63);
    EXPECT_EQ(std::strlen(n[63].nsystem), 255u);
  }
  unlink(sim_path("/mnt/ramdisk/lldpinfo2").c_str());
  EXPECT_EQ(syscommon::testing::stdout_of([&] { EXPECT_EQ(Get_lldpinfo(n), 0); }), "Get_lldpinfo, lldp fopen error\n");
}

}  // namespace
