// Interface queries against real interfaces created in the test's own network namespace.
#include "syscommon/netstat.h"

#include <arpa/inet.h>
#include <net/if.h>

#include <array>
#include <cstdlib>
#include <string>

#include "support/test_support.h"

namespace {

int sh(const std::string &command) { return std::system(command.c_str()); }

uint32_t addr(const char *text) { return inet_addr(text); }

class InterfaceQueryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    ASSERT_EQ(sh("ip link add eth0.7 type veth peer name vpeer0 && "
                 "ip addr add 10.20.30.40/24 broadcast 10.20.30.255 dev eth0.7 && "
                 "ip link set eth0.7 address 00:90:e8:1a:2b:3c && ip link set eth0.7 up && ip link set vpeer0 up"),
              0);
  }
  void TearDown() override {
    if (syscommon::testing::isolated()) sh("ip link del eth0.7 2>/dev/null");
  }
};

struct Expect {
  int if_ip_mask;
  uint32_t ip, mask, bcast;
  int index;
  int state;
};

void expect_queries(const char *name, int only_if_up, const Expect &e) {
  SCOPED_TRACE(std::string(name) + " only_if_up=" + std::to_string(only_if_up));
  uint32_t ip = 1, mask = 1, bcast = 1;
  int index = 7;
  EXPECT_EQ(Get_IF_IP_MASK(name, &ip, &mask), e.if_ip_mask);
  if (e.if_ip_mask < 0) EXPECT_EQ(ip | mask, 0u);
  EXPECT_EQ(commGetIfaceIpMask(name, &ip, &mask, only_if_up), 0);
  EXPECT_EQ(ip, e.ip);
  EXPECT_EQ(mask, e.mask);
  EXPECT_EQ(commGetIfaceBcastAddr(name, &bcast, only_if_up), 0);
  EXPECT_EQ(bcast, e.bcast);
  EXPECT_EQ(commGetIfaceIdx(name, &index, only_if_up), 0);
  EXPECT_EQ(index, e.index);
  EXPECT_EQ(Get_IF_State(name), e.state);
}

TEST_F(InterfaceQueryTest, UpDownUnknownAndAddresslessInterfaces) {
  const int idx = static_cast<int>(if_nametoindex("eth0.7"));
  const int peer = static_cast<int>(if_nametoindex("vpeer0"));
  const uint32_t ip = addr("10.20.30.40"), mask = addr("255.255.255.0"), bcast = addr("10.20.30.255");
  expect_queries("eth0.7", 1, {1, ip, mask, bcast, idx, 1});
  expect_queries("vpeer0", 1, {1, 0, 0, 0, peer, 1});  // up without an address
  expect_queries("nosuch0", 0, {-1, 0, 0, 0, -1, 0});
  expect_queries("a-name-far-longer-than-the-kernel-allows", 0, {-1, 0, 0, 0, -1, 0});

  ASSERT_EQ(sh("ip link set eth0.7 down"), 0);
  expect_queries("eth0.7", 1, {-1, 0, 0, 0, -1, 0});         // only-if-up: zeroed without asking
  expect_queries("eth0.7", 0, {-1, ip, mask, bcast, idx, 0});  // the address stays on a down link
}

TEST_F(InterfaceQueryTest, HardwareAddress) {
  std::array<uint8_t, 6> mac{};
  EXPECT_EQ(Get_IF_MAC("eth0.7", mac.data()), 1);
  EXPECT_EQ(mac, (std::array<uint8_t, 6>{0x00, 0x90, 0xe8, 0x1a, 0x2b, 0x3c}));
  mac.fill(0xff);
  EXPECT_EQ(Get_IF_MAC("nosuch0", mac.data()), -1);
  EXPECT_EQ(mac, (std::array<uint8_t, 6>{}));
}

}  // namespace
