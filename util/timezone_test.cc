// The time-zone list: every lookup with its own tie rule, the uptime text and the boot
// counter file.
#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>

#include "support/test_support.h"
#include "syscommon/util.h"

namespace {

TEST(TimeZones, LabelsAndOffsets) {
  EXPECT_STREQ(timezone_str[21], "Casablanca");
  EXPECT_EQ(Stimed_getTimeShiftByIndex(16), -12600);
  EXPECT_EQ(Stimed_getTimeShiftByIndex(42), 19800);
  for (int index : {63, 1000, -1}) EXPECT_STREQ(Stimed_getTimeCityByIndex(index), "") << index;
  EXPECT_STREQ(Stimed_getTimeCityByIndex(62), "Fiji");
  const char *first = Stimed_getFirstTimeCityByIndex(5);
  EXPECT_EQ(Stimed_getFirstTimeCityByIndex(6), first);  // one process-wide buffer
  EXPECT_STREQ(first, "Mountain-Time");
}

TEST(TimeZones, TieRulesPerLookup) {
  // Forwards by offset from a start index.
  for (auto [offset, start, expected] : {std::tuple{3600, 0, 23}, {3600, 24, 24}, {3600, 27, 63}, {43200, 62, 62},
                                         {43200, 63, 63}, {1, 0, 63}, {0, -5, 21}})
    EXPECT_EQ(Stimed_getTimeIndexByShift(offset, start), expected) << offset << " from " << start;
  // Backwards by hours and minutes: the last row of a group.
  for (auto [west, hours, minutes, expected] :
       {std::tuple{0, 14, 0, -1}, {0, 12, 0, 62}, {1, 12, 0, 0}, {0, 5, 45, 42}, {1, 3, 30, 16}, {0, 13, 0, -1},
        {0, 8, 0, 49}, {1, 5, 0, 12}, {1, 0, 0, 22}, {0, 10, 0, 59}, {0, 5, 15, 41}, {0, 3, 60, -1},
        {0, -1, 0, -1}, {0, 1, -1, -1}, {7, 7, 0, 6}})
    EXPECT_EQ(Stimed_getTimeZoneArrayIndex(west, hours, minutes), expected) << west << " " << hours << ":" << minutes;
  // Forwards by offset and label, ignoring case.
  EXPECT_EQ(Stimed_getTimeIndexByCity(7200, "cairo"), 29);
  EXPECT_EQ(Stimed_getTimeIndexByCity(3600, "cairo"), -1);
  EXPECT_EQ(Stimed_getTimeIndexByCity(-18000, "TIME"), 11);
  EXPECT_EQ(Stimed_getTimeIndexByCity(-18000, ""), 10);
  EXPECT_EQ(Stimed_getTimeIndexByCity(0, nullptr), -1);
}

TEST(Uptime, TextAlwaysHasFourParts) {
  for (auto [seconds, text] : {std::pair<uint32_t, const char *>{5, "0d0h0m5s"}, {90061, "1d1h1m1s"},
                               {86399, "0d23h59m59s"}, {4294967295u, "49710d6h28m15s"}}) {
    char out[32];
    EXPECT_EQ(Uptime_to_str(seconds, out), static_cast<int>(std::strlen(text)));
    EXPECT_STREQ(out, text);
  }
  EXPECT_GT(get_uptime(), 0);
}

TEST(Bootup, CounterFileFirstLine) {
  if (syscommon::testing::sim_root().empty()) GTEST_SKIP() << "needs the simulated root of tests/launch.sh";
  const std::string path = syscommon::testing::sim_path("/mnt/log2/KVR900_BOOTUP_LOG");
  std::remove(path.c_str());
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(get_bootup(), 0);
  syscommon::testing::write_file(path, "");
  EXPECT_EQ(get_bootup(), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "uptime fopen error\nget_bootup get nothing");
  syscommon::testing::write_file(path, "42\n17\n");
  EXPECT_EQ(get_bootup(), 42);
}

}  // namespace
