// syscommon tz: the device's time-zone list and its lookups.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "syscommon/util.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

std::string utc_text(int seconds) {
  char buf[16];
  int a = seconds < 0 ? -seconds : seconds;
  std::snprintf(buf, sizeof buf, "%c%02d:%02d", seconds < 0 ? '-' : '+', a / 3600, a % 3600 / 60);
  return buf;
}

void print_zone(int index, const char *note = "") {
  int shift = Stimed_getTimeShiftByIndex(index);
  char line[128];
  std::snprintf(line, sizeof line, "  %2d  UTC%s  %6d  %-14s%s", index, utc_text(shift).c_str(), shift,
                Stimed_getTimeCityByIndex(index), note);
  std::string text(line);
  text.erase(text.find_last_not_of(' ') + 1);
  std::puts(text.c_str());
}

int cmd_list(const Args &args) {
  expect_args(args, 0, 0);
  std::puts(" idx  offset       secs  label");
  for (int i = 0; i < SHM_TIMEZONE_COUNT; ++i) print_zone(i);
  return 0;
}

// "+H:MM", "+HH:MM", "-H:MM" or "-HH:MM" into west/hours/minutes, within the range the
// device's table is searched over (hours 0..13, minutes 0..59). False when the text is no
// offset at all; an offset out of range is a usage error.
bool parse_offset(const std::string &text, int &west, int &hours, int &minutes) {
  const std::size_t colon = text.find(':');
  if (text.size() < 2 || (text[0] != '+' && text[0] != '-') || colon == std::string::npos) return false;
  const std::string h = text.substr(1, colon - 1), m = text.substr(colon + 1);
  if (h.empty() || h.size() > 2 || m.size() != 2)
    throw UsageError{"offset must look like +08:00 or -03:30, not '" + text + "'"};
  west = text[0] == '-' ? 1 : 0;
  hours = static_cast<int>(parse_number(h, "offset hours", 0, 13));
  minutes = static_cast<int>(parse_number(m, "offset minutes", 0, 59));
  return true;
}

int find_by_offset(int west, int hours, int minutes, const std::string &text) {
  int index = Stimed_getTimeZoneArrayIndex(west, hours, minutes);
  if (index < 0) {
    std::fprintf(stderr, "syscommon tz: no zone at %s\n", text.c_str());
    return 1;
  }
  // The device stores the last zone of the group; show the whole group in table order.
  int offset = Stimed_getTimeShiftByIndex(index);
  for (int i = Stimed_getTimeIndexByShift(offset, 0); i < SHM_TIMEZONE_COUNT;
       i = Stimed_getTimeIndexByShift(offset, i + 1))
    print_zone(i, i == index ? "  <- chosen for this offset" : "");
  return 0;
}

int find_by_city(const std::string &text) {
  int found = 0;
  // Labels are searched per offset group; walk each group once, in table order.
  for (int i = 0; i < SHM_TIMEZONE_COUNT; ++i) {
    int offset = Stimed_getTimeShiftByIndex(i);
    if (Stimed_getTimeIndexByShift(offset, 0) != i) continue;
    int index = Stimed_getTimeIndexByCity(offset, text.c_str());
    if (index < 0) continue;
    print_zone(index);
    ++found;
  }
  if (found == 0) {
    std::fprintf(stderr, "syscommon tz: no zone label contains '%s'\n", text.c_str());
    return 1;
  }
  return 0;
}

int cmd_find(const Args &args) {
  expect_args(args, 1, 1);
  if (args[0].empty()) throw UsageError{"expected an offset or a part of a zone label, not ''"};
  int west = 0, hours = 0, minutes = 0;
  if (parse_offset(args[0], west, hours, minutes)) return find_by_offset(west, hours, minutes, args[0]);
  if (args[0][0] == '+' || args[0][0] == '-')
    throw UsageError{"offset must look like +08:00 or -03:30, not '" + args[0] + "'"};
  check_text(args[0], "CITY", 63);
  return find_by_city(args[0]);
}

const Registration reg{{"tz",
                        "The device's time-zone list.",
                        {
                            {"list", "", "print the 63 zones: index, offset from UTC, label", cmd_list},
                            {"find", "+HH:MM|-HH:MM|CITY",
                             "zones at an offset (marking the one the device picks) or whose label contains CITY",
                             cmd_find},
                        }}};

}  // namespace
}  // namespace syscommon::tool
