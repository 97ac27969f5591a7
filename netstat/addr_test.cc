// Address arithmetic: MAC text, mask forms, fixed-width decimal and dotted quads.
#include "syscommon/netstat.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>

namespace {

using Mac = std::array<uint8_t, 6>;

TEST(AddressTest, MacTextParsedAndRewrittenInPlace) {
  const std::tuple<std::string, Mac> rows[] = {
      {"00-90-E8-1A-2B-3C", {0x00, 0x90, 0xe8, 0x1a, 0x2b, 0x3c}},
      {"00:90:e8:01:02:03", {0x00, 0x90, 0xe8, 0x01, 0x02, 0x03}},
      {"0090-e801-0203", {0x00, 0x90, 0xe8, 0x01, 0x02, 0x03}},
      {"0090e8010203", {0x00, 0x90, 0xe8, 0x01, 0x02, 0x03}},
      {"0090e801", {0x00, 0x90, 0xe8, 0x01, 0x00, 0x00}},       // missing digits stay 0
      {"0090e8010203ffff", {0x00, 0x90, 0xe8, 0x01, 0x02, 0x03}},  // 12 digits at most
      {"zz:9", {0x90, 0, 0, 0, 0, 0}},
      {"", {}},
  };
  for (const auto &[text, want] : rows) {
    std::string scratch = text;
    Mac mac;
    mac.fill(0xee);
    EXPECT_EQ(mac_addr(scratch.data(), mac.data()), 1);
    EXPECT_EQ(mac, want) << text;
  }
  std::string scratch = "A:Fg9";
  Mac mac{};
  mac_addr(scratch.data(), mac.data());
  EXPECT_EQ(scratch, std::string({10, ':', 15, 'g', 9}));
}

TEST(AddressTest, MaskForms) {
  const std::tuple<const char *, int, int> masks[] = {
      {"255.255.255.0", 24, 1}, {"255.0.255.0", 24, 0}, {"0.0.0.0", 0, 1},       {"255.255.255.255", 32, 1},
      {"128.0.0.0", 1, 1},      {"0.0.0.1", 32, 0},     {"255.255.254.0", 23, 1}, {"255.255.255.253", 32, 0},
  };
  for (const auto &[text, bits, ok] : masks) {
    EXPECT_EQ(Mask2Number(inet_addr(text)), bits) << text;
    EXPECT_EQ(CheckMask(inet_addr(text)), ok) << text;
  }
  const std::tuple<int, const char *> numbers[] = {{0, "0.0.0.0"},       {-5, "0.0.0.0"},       {1, "128.0.0.0"},
                                                   {23, "255.255.254.0"}, {32, "255.255.255.255"}, {33, "255.255.255.255"}};
  for (const auto &[bits, text] : numbers) EXPECT_STREQ(IP2Dot(Number2Mask(bits)), text) << bits;
}

TEST(AddressTest, FixedWidthDecimalAndDottedQuad) {
  const std::tuple<int, int, std::string> rows[] = {
      {7, 3, "007"}, {7, 1, "7"}, {42, 2, "42"}, {255, 2, "55"}, {0x1ff, 3, "255"}, {-1, 3, "255"}, {7, 0, ""},
      {7, 4, ""},
  };
  for (const auto &[value, width, want] : rows) {
    char out[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(dec2str(value, width, out), 0);
    EXPECT_EQ(std::string(out, 4), want + std::string(4 - want.size(), '\0')) << value << "/" << width;
  }
  char *first = IP2Dot(inet_addr("192.168.1.254"));
  EXPECT_STREQ(first, "192.168.1.254");
  EXPECT_EQ(IP2Dot(inet_addr("10.0.0.1")), first);  // one static buffer, overwritten
  EXPECT_STREQ(first, "10.0.0.1");
}

}  // namespace
