// The device's time-zone list: labels beside the store's offset table, and the lookups
// between index, offset and label. Each lookup has its own tie rule within a group of
// rows sharing an offset: forwards by offset (from a start), forwards by offset and label,
// backwards by hours and minutes.
#include <strings.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "shm/tz_offsets.h"
#include "syscommon/util.h"

namespace {

using syscommon::kTimezoneOffsets;

constexpr int kZoneCount = SHM_TIMEZONE_COUNT;
static_assert(kTimezoneOffsets.size() == kZoneCount);

char g_first_city[64];

bool in_table(int index) { return index >= 0 && index < kZoneCount; }

}  // namespace

extern "C" {

// Exported through its declaration in syscommon/util.h.
const char *const timezone_str[SHM_TIMEZONE_COUNT] = {
    "Eniwetok",      "Midway-Island", "Hawaii",       "Alaska",       "Pacific-Time", "Arizona",
    "Mountain-Time", "Central-Time",  "Mexico-City",  "Saskatchewan", "Bogota",       "Eastern-Time",
    "Indiana",       "Atlantic-Time", "Caracas",      "Santiago",     "Newfoundland", "Brasilia",
    "Buenos-Aires",  "Mid-Atlantic",  "Azores",       "Casablanca",   "Greenwich",    "Amsterdam",
    "Belgrade",      "Brussels",      "Sarajevo",     "Athens",       "Bucharest",    "Cairo",
    "Harare",        "Helsinki",      "Jerusalem",    "Baghdad",      "Moscow",       "Nairobi",
    "Tehran",        "Abu-Dhabi",     "Baku",         "Kabul",        "Ekaterinburg", "Islamabad",
    "Bombay",        "Astana",        "Colombo",      "Bangkok",      "Beijing",      "Perth",
    "Singapore",     "Taipei",        "Osaka",        "Seoul",        "Yakutsk",      "Adelaide",
    "Darwin",        "Brisbane",      "Canberra",     "Guam",         "Hobart",       "Vladivostok",
    "Magadan",       "Auckland",      "Fiji"};

SYSCOMMON_API int Stimed_getTimeShiftByIndex(int index) {
  return kTimezoneOffsets.data()[index];  // unchecked, as documented
}

SYSCOMMON_API int Stimed_getTimeIndexByShift(int offset, int start) {
  for (int i = start < 0 ? 0 : start; i < kZoneCount; ++i)
    if (kTimezoneOffsets[i] == offset) return i;
  return kZoneCount;
}

SYSCOMMON_API const char *Stimed_getTimeCityByIndex(int index) { return in_table(index) ? timezone_str[index] : ""; }

SYSCOMMON_API int Stimed_getTimeIndexByCity(int offset, const char *text) {
  if (text == nullptr) return -1;
  for (int i = 0; i < kZoneCount; ++i)
    if (kTimezoneOffsets[i] == offset && strcasestr(timezone_str[i], text) != nullptr) return i;
  return -1;
}

SYSCOMMON_API const char *Stimed_getFirstTimeCityByIndex(int index) {
  std::string_view label = Stimed_getTimeCityByIndex(index);
  label = label.substr(0, label.find(", "));
  label = label.substr(0, sizeof g_first_city - 1);
  std::memcpy(g_first_city, label.data(), label.size());
  g_first_city[label.size()] = '\0';
  return g_first_city;
}

SYSCOMMON_API int Stimed_getTimeZoneArrayIndex(int west, int hours, int minutes) {
  if (hours < 0 || hours >= 14 || minutes < 0 || minutes >= 60) return -1;
  int offset = hours * 3600 + (minutes >= 30 ? 1800 : 0);
  if (west != 0) offset = -offset;
  for (int i = kZoneCount - 1; i >= 0; --i)
    if (kTimezoneOffsets[i] == offset) return i;
  return -1;
}

}  // extern "C"
