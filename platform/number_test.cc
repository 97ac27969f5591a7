// The device's 32-bit conversions give the same numbers on every host.
#include "platform/number.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "syscommon/log.h"

namespace {

using syscommon::device_strtol;
using syscommon::device_strtoul;

TEST(DeviceNumbers, SaturateAtThirtyTwoBitsAndReportTheTextUsed) {
  struct Row {
    const char *text;
    int base;
    int32_t as_long;
    uint32_t as_unsigned;
    int used;  // characters taken by both conversions
  };
  const Row rows[] = {
      {" +42x", 10, 42, 42, 4},
      {"2147483647", 10, INT32_MAX, 2147483647U, 10},
      {"2147483648", 10, INT32_MAX, 2147483648U, 10},
      {"4294967295", 10, INT32_MAX, UINT32_MAX, 10},
      {"4294967296", 10, INT32_MAX, UINT32_MAX, 10},
      {"-1", 10, -1, UINT32_MAX, 2},
      {"-4294967295", 10, INT32_MIN, 1, 11},
      {"-99999999999999999999999", 10, INT32_MIN, UINT32_MAX, 24},
      {"0x1ffffffff", 16, INT32_MAX, UINT32_MAX, 11},
      {"ffffffff", 16, INT32_MAX, UINT32_MAX, 8},
      {"010", 0, 8, 8, 3},
      {"--1", 10, 0, 0, 0},
      {"- 1", 10, 0, 0, 0},
      {"", 10, 0, 0, 0},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(r.text);
    char *end = nullptr;
    EXPECT_EQ(device_strtol(r.text, &end, r.base), r.as_long);
    EXPECT_EQ(end - r.text, r.used);
    end = nullptr;
    EXPECT_EQ(device_strtoul(r.text, &end, r.base), r.as_unsigned);
    EXPECT_EQ(end - r.text, r.used);
  }
  errno = 0;
  device_strtoul("4294967296", nullptr, 10);
  EXPECT_EQ(errno, ERANGE);
}

TEST(DeviceNumbers, ScanStopsAtTheFirstMissingPiece) {
  uint32_t v[3] = {7, 7, 7};
  EXPECT_EQ(syscommon::scan_numbers("2014-3-x", '-', 3, 10, v), 2);
  EXPECT_EQ(v[0], 2014U);
  EXPECT_EQ(v[1], 3U);
  EXPECT_EQ(v[2], 7U);
  EXPECT_EQ(syscommon::scan_numbers("1:2 :3", ':', 3, 10, v), 2);  // no blank before a separator
  EXPECT_EQ(syscommon::scan_numbers("a:b:c", ':', 3, 16, v), 3);
  EXPECT_EQ(v[2], 0xcU);
  EXPECT_EQ(syscommon::scan_numbers("", ':', 3, 16, v), 0);
}

// atoi on outside text saturates as on the device instead of wrapping.
TEST(DeviceNumbers, LibraryConversionsSaturate) {
  std::string text = "4294967295,-3000000000";
  int a = 0, b = 0;
  EXPECT_EQ(paserTarnlogIdx(text.data(), &a, &b), INT32_MIN);
  EXPECT_EQ(a, INT32_MAX);
}

}  // namespace
