// Configuration comparison: the generic table comparison and the change lists of VLAN
// interfaces, bridges and the WAN address client, before and after realistic changes.
#include "syscommon/netstat.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "netstat/test_store.h"
#include "support/test_support.h"

namespace {

ShmVlanIfConfig vlan(const char *name, uint32_t vid, const char *ip, int bits, uint32_t attribute = 0) {
  ShmVlanIfConfig r{.attribute = attribute, .vid = vid, .ip = inet_addr(ip), .mask = Number2Mask(bits)};
  std::strcpy(r.usr_name, name);
  return r;
}

ShmBridgeConfig bridge(const char *name, uint8_t enable, const char *ip, int bits) {
  ShmBridgeConfig r{.enable = enable, .ip = inet_addr(ip), .mask = Number2Mask(bits), .id = 8001};
  std::strcpy(r.usr_name, name);
  return r;
}

using Entries = std::vector<std::string>;

// Each change entry as "name presence changes".
template <class List>
Entries entries(const List &l) {
  Entries out;
  for (uint32_t i = 0; i < l.count; ++i)
    out.push_back(std::string(l.entry[i].name) + " " + std::to_string(l.entry[i].presence) + " " +
                  std::to_string(l.entry[i].changes));
  return out;
}

TEST(CompareTest, GenericTableComparison) {
  struct Rec {
    uint16_t key;
    uint8_t value;
    uint8_t tail;  // beyond the compared bytes
  };
  const ConfCmpParams p{sizeof(Rec), 3, 2, 0};
  const Rec old_t[5] = {{1, 10, 0}, {2, 20, 0}, {3, 30, 0}, {4, 40, 0}, {0, 0, 0}};
  const Rec same[5] = {{1, 10, 9}, {2, 20, 9}, {3, 30, 9}, {4, 40, 9}, {0, 0, 0}};
  std::array<uint8_t, 5> flags;
  flags.fill(0xf0);
  EXPECT_EQ(two_conf_cmp(old_t, same, 5, flags.data(), &p), 0);
  EXPECT_EQ(flags, (std::array<uint8_t, 5>{1, 1, 1, 1, 0}));
  // 2 changed, 3 removed, 5 added, the unused record ends the new table before 1 is seen.
  const Rec changed[5] = {{2, 21, 0}, {4, 40, 0}, {5, 50, 0}, {0, 0, 0}, {1, 10, 0}};
  EXPECT_EQ(two_conf_cmp(old_t, changed, 5, flags.data(), &p), 0);
  EXPECT_EQ(flags, (std::array<uint8_t, 5>{2, 2 | 1, 2, 0, 0}));  // old 0..2 gone; new 1 (key 4) kept
}

TEST(CompareDeathTest, BadKeyWidthStopsTheProcess) {
  const ConfCmpParams p{4, 4, 3, 0};
  uint8_t rec[4] = {1}, flags[1];
  EXPECT_DEATH(two_conf_cmp(rec, rec, 1, flags, &p), "common:[0-9]+: two_conf_cmp: Assertion");
}

TEST(CompareTest, VlanInterfacesRenamedReaddressedRemovedAdded) {
  const ShmVlanIfConfig old_t[4] = {vlan("lan1", 1, "192.168.1.254", 24), vlan("office", 10, "192.168.10.1", 24),
                                    vlan("lab", 20, "192.168.20.1", 24), vlan("", 0, "0.0.0.0", 0)};
  const ShmVlanIfConfig new_t[4] = {vlan("lan1", 1, "192.168.1.254", 16),      // subnet only
                                    vlan("offices", 10, "192.168.10.1", 24),   // renamed
                                    vlan("lab", 21, "192.168.20.9", 24, 7),    // vid, attribute
                                    vlan("new", 30, "192.168.30.1", 24)};      // added: no entry
  ConfChangeList list;
  std::memset(&list, 0xff, sizeof list);
  EXPECT_EQ(two_conf_cmpVconfig(old_t, new_t, 4, &list), 3);
  EXPECT_EQ(entries(list), (Entries{"lan1 1 2", "office 2 128", "lab 1 5"}));
  EXPECT_EQ(std::memcmp(list.entry[2].old_settings, &old_t[2], 32), 0);
  EXPECT_EQ(std::memcmp(list.entry[2].new_settings, &new_t[2], 32), 0);
  EXPECT_EQ(list.entry[1].new_settings[0], 0);  // nothing copied for a removed interface
}

TEST(CompareTest, BridgesAndTheAddressClient) {
  const ShmBridgeConfig old_b[2] = {bridge("plant", 1, "172.16.0.1", 16), bridge("cells", 1, "172.20.0.1", 24)};
  const ShmBridgeConfig new_b[2] = {bridge("plant", 0, "172.16.9.9", 16), bridge("", 0, "0.0.0.0", 0)};
  ConfBrgChangeList bl;
  EXPECT_EQ(two_conf_cmpBrg(old_b, new_b, 2, &bl), 2);
  EXPECT_EQ(entries(bl), (Entries{"plant 1 4", "cells 2 128"}));
  EXPECT_EQ(std::memcmp(bl.entry[0].new_record, &new_b[0], 56), 0);

  const WanClientConfig o{
      .flags = 0x10003, .setting2 = 5, .ip = inet_addr("10.0.0.2"), .mask = Number2Mask(24), .setting1 = 2};
  WanClientConfig n = o;
  n.flags = 0x00003;  // only bit 16 differs
  ConfChangeList l;
  EXPECT_EQ(two_conf_cmpIpclient(&o, &n, &l), 1);
  EXPECT_EQ(entries(l), (Entries{"WAN 0 0"}));
  const uint32_t words[6] = {0x3, 0, 5, 2, o.ip, o.mask};
  EXPECT_EQ(std::memcmp(l.entry[0].old_settings, words, sizeof words), 0);
  n = {.flags = 0x4, .setting2 = 6, .ip = inet_addr("10.0.1.2"), .mask = o.mask, .setting1 = 3};
  EXPECT_EQ(two_conf_cmpIpclient(&o, &n, &l), 1);
  EXPECT_EQ(entries(l), (Entries{"WAN 0 15"}));
  n.setting1 = 0;
  EXPECT_EQ(two_conf_cmpIpclient(&o, &n, &l), 1);
  EXPECT_EQ(entries(l), (Entries{"WAN 0 128"}));
  EXPECT_EQ(l.entry[0].new_settings[8], 0);
}

TEST(CompareTest, WanStateChange) {
  SYSCOMMON_REQUIRE_ISOLATION();
  syscommon::testing::publish_test_interfaces();
  ASSERT_EQ(std::system("ip link add eth0.2 type veth peer name vp2 && ip addr add 10.0.0.2/24 dev eth0.2"), 0);
  syscommon::testing::RawSegment sys(7890);
  sys.put_u32(448 + 20, 2);  // the WAN is VLAN 2 (eth0.2, down: its address still counts)
  std::memcpy(sys.bytes() + 448 + 24, "eth0.2", 7);
  uint32_t saved[3] = {};
  EXPECT_EQ(cmpWANInfo(nullptr, saved), 1);
  EXPECT_EQ(std::vector<uint32_t>(saved, saved + 3), (std::vector<uint32_t>{2, inet_addr("10.0.0.2"), Number2Mask(24)}));
  EXPECT_EQ(cmpWANInfo(nullptr, saved), 0);
  ASSERT_EQ(std::system("ip addr flush dev eth0.2 && ip addr add 10.0.5.2/16 dev eth0.2"), 0);
  EXPECT_EQ(cmpWANInfo(nullptr, saved), 1);
  EXPECT_EQ(saved[2], inet_addr("255.255.0.0"));
  std::system("ip link del eth0.2");
}

}  // namespace
