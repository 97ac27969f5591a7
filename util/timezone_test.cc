// The time-zone list: every lookup with its own tie rule, the uptime text and the boot
// counter file.
#include <cstdio>
#include <cstring>
#include <string>

#include "support/test_support.h"
#include "syscommon/util.h"

using syscommon::testing::sim_path;
using syscommon::testing::write_file;

namespace {

TEST(TimeZones, LabelsSitBesideTheStoreOffsets) {
  EXPECT_STREQ(timezone_str[0], "Eniwetok");
  EXPECT_STREQ(timezone_str[21], "Casablanca");
  EXPECT_STREQ(timezone_str[46], "Beijing");
  EXPECT_STREQ(timezone_str[62], "Fiji");
  EXPECT_EQ(Stimed_getTimeShiftByIndex(16), -12600);
  EXPECT_EQ(Stimed_getTimeShiftByIndex(42), 19800);
  EXPECT_STREQ(Stimed_getTimeCityByIndex(36), "Tehran");
  EXPECT_STREQ(Stimed_getFirstTimeCityByIndex(59), "Vladivostok");  // no label holds ", "
}

TEST(TimeZones, ByShiftWalksForwardsFromStart) {
  struct Row {
    int offset, start, expected;
  };
  const Row rows[] = {
      {3600, 0, 23},   {3600, 24, 24},  {3600, 26, 26}, {3600, 27, 63}, {-43200, 0, 0}, {43200, 0, 61},
      {43200, 62, 62}, {43200, 63, 63}, {1, 0, 63},     {0, -5, 21},    {-25200, 6, 6},
  };
  for (const Row &r : rows)
    EXPECT_EQ(Stimed_getTimeIndexByShift(r.offset, r.start), r.expected) << r.offset << " from " << r.start;
}

TEST(TimeZones, ByCityNeedsOffsetAndLabelIgnoringCase) {
  EXPECT_EQ(Stimed_getTimeIndexByCity(7200, "cairo"), 29);
  EXPECT_EQ(Stimed_getTimeIndexByCity(3600, "cairo"), -1);
  EXPECT_EQ(Stimed_getTimeIndexByCity(-18000, "TIME"), 11);  // first of the group whose label contains it
  EXPECT_EQ(Stimed_getTimeIndexByCity(-18000, ""), 10);      // empty text: first of the group
  EXPECT_EQ(Stimed_getTimeIndexByCity(28800, "pei"), 49);
  EXPECT_EQ(Stimed_getTimeIndexByCity(0, nullptr), -1);
}

TEST(TimeZones, CityByIndexOutsideTheTableIsEmpty) {
  EXPECT_STREQ(Stimed_getTimeCityByIndex(63), "");
  EXPECT_STREQ(Stimed_getTimeCityByIndex(1000), "");
  EXPECT_STREQ(Stimed_getTimeCityByIndex(-1), "");
  EXPECT_STREQ(Stimed_getFirstTimeCityByIndex(63), "");
  const char *first = Stimed_getFirstTimeCityByIndex(5);
  EXPECT_EQ(Stimed_getFirstTimeCityByIndex(6), first);  // one process-wide buffer
  EXPECT_STREQ(first, "Mountain-Time");
}

TEST(TimeZones, ArrayIndexSearchesBackwards) {
  struct Row {
    int west, hours, minutes, expected;
  };
  const Row rows[] = {
      {0, 14, 0, -1}, {0, 12, 0, 62}, {1, 12, 0, 0},  {0, 5, 45, 42}, {1, 3, 30, 16}, {0, 13, 0, -1},
      {0, 8, 0, 49},  {1, 5, 0, 12},  {0, 0, 0, 22},  {1, 0, 0, 22},  {0, 10, 0, 59}, {0, 5, 15, 41},
      {0, 9, 30, 54}, {0, 3, 29, 35}, {0, 3, 60, -1}, {0, -1, 0, -1}, {0, 1, -1, -1}, {1, 13, 0, -1},
      {7, 7, 0, 6},  // any nonzero west
  };
  for (const Row &r : rows)
    EXPECT_EQ(Stimed_getTimeZoneArrayIndex(r.west, r.hours, r.minutes), r.expected)
        << r.west << " " << r.hours << ":" << r.minutes;
}

TEST(Uptime, TextAlwaysHasFourParts) {
  struct Row {
    uint32_t seconds;
    const char *text;
  };
  const Row rows[] = {{0, "0d0h0m0s"},           {5, "0d0h0m5s"},         {90061, "1d1h1m1s"},
                      {86399, "0d23h59m59s"},    {3600, "0d1h0m0s"},      {4294967295u, "49710d6h28m15s"}};
  for (const Row &r : rows) {
    char out[32];
    std::memset(out, 'X', sizeof out);
    EXPECT_EQ(Uptime_to_str(r.seconds, out), static_cast<int>(std::strlen(r.text)));
    EXPECT_STREQ(out, r.text);
  }
  EXPECT_GT(get_uptime(), 0);
}

TEST(Bootup, CounterFileFirstLine) {
  if (syscommon::testing::sim_root().empty()) GTEST_SKIP() << "needs the simulated root of tests/launch.sh";
  const std::string path = sim_path("/mnt/log2/KVR900_BOOTUP_LOG");
  std::remove(path.c_str());
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(get_bootup(), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "uptime fopen error\n");

  write_file(path, "");
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(get_bootup(), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "get_bootup get nothing");

  write_file(path, "42\n17\n");
  EXPECT_EQ(get_bootup(), 42);
  write_file(path, "1234");
  EXPECT_EQ(get_bootup(), 1234);
}

}  // namespace
